// Graphics: displayable objects, each a piece of geometry and the props it
// is drawn with, shared through kcPtrHandle<kcGraphic> and persistent.
//
// Most graphics wrap one foundation shape: kcGraphicSimple<T> for shapes that
// are only stroked, kcGraphicWithFill<T, U> for closed shapes that may be
// filled (U being what a T turns into under a general transform: a circle an
// ellipse, a rectangle a general rectangle). Every instance draws through the
// tablet call for T, passing its props unchanged. The family is closed: the
// instances are the ones listed below, each registered for persistence under
// its C++ name ("kcGraphicWithFill<kcCircle, kcEllipse2>").
//
// Four graphics have data of their own: text, a cross marker, the point icon
// and an annulus section with its own arrow flags. A group is a graphic made
// of graphics; a list is a plain sequence of them that draws in order, turns
// into a sketch, and exchanges records with the graphics-list library.
//
// Archive form of every graphic: its own version byte, then the graphic
// record (version byte 1, the props as a persistent record; version 0, read
// only, holds a colour alone and comes back as a 1-pel unfilled pen of it),
// then the fields of its class. A load that fails leaves the graphic as it was.
#pragma once

#include <string>
#include <vector>

#include "dispc/color.h"
#include "dispc/dispprop.h"
#include "dispc/tablet.h"
#include "dispc/uisketch.h"
#include "dispc/uistring.h"
#include "dispc/wrfm/genpoly.h"
#include "dispc/wrfm/wirefrm.h"
#include "foundation/exception.h"
#include "foundation/handle.h"
#include "foundation/kgr/kgr_list.h"
#include "foundation/persistent.h"
#include "foundation/shapes/deboorspline.h"
#include "foundation/shapes/ellipseannulus.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/hermitespline.h"
#include "foundation/shapes/interpspline.h"
#include "foundation/xform.h"

class kcGraphic;
using kcGraphicPtr = kcPtrHandle<kcGraphic>;
using kcGraphicConstPtr = kcPtrHandle_const<kcGraphic>;

class kcGraphic : public virtual kcPersistent, public virtual kcRepBase {
 public:
  class Errors : public kcExceptionWithString {
   public:
    using kcExceptionWithString::kcExceptionWithString;

   protected:
    void serialize_(kcArchive& ar, unsigned char version) { kcExceptionWithString::serialize_(ar, version); }
  };
  class BadParams : public Errors {
   public:
    KC_DECLARE_EXCEPTION(BadParams);
    using Errors::Errors;
  };
  class NoGraphicForShape : public Errors {
   public:
    KC_DECLARE_EXCEPTION(NoGraphicForShape);
    using Errors::Errors;
  };

  // A cyan 1-pel pen.
  kcGraphic() = default;
  // A 1-pel solid unfilled pen of the colour.
  explicit kcGraphic(const kcColor& color);
  explicit kcGraphic(const kcGraphicProps& props) : props_(props) {}
  kcGraphic(const kcGraphic&) = default;
  kcGraphic& operator=(const kcGraphic&) = default;
  ~kcGraphic() override;

  // The image under x, with the same props.
  [[nodiscard]] virtual kcGraphicPtr map(const kcXform<2>& x) const = 0;
  [[nodiscard]] virtual kcGraphicPtr clone() const = 0;
  // In client coordinates.
  [[nodiscard]] virtual kcRect encloseRect() const = 0;
  [[nodiscard]] virtual double distToPoint(const kcVector<2>& p) const = 0;
  // Draws nothing.
  [[nodiscard]] virtual bool isNull() const { return false; }

  kcGraphicProps& props() noexcept { return props_; }
  [[nodiscard]] const kcGraphicProps& props() const noexcept { return props_; }
  void props(const kcGraphicProps& p);
  [[nodiscard]] const kcColor& color() const noexcept { return props_.penColor(); }
  // Sets the pen colour, then hands the whole props to setProps_.
  void color(const kcColor& c);

  // The graphic for a shape of the run-time class list below (a shape tree as
  // a group of its children's graphics, nested alike); a null handle for a
  // null shape; NoGraphicForShape for any other class.
  [[nodiscard]] static kcGraphicPtr makeShapeGraphic(const kcShape* shape, const kcGraphicProps& props);
  [[nodiscard]] static kcGraphicPtr makeShapeGraphic(const kcShape& shape, const kcGraphicProps& props);
  [[nodiscard]] static kcGraphicPtr makeShapeGraphic(kcPtrHandle_const<kcShape> shape,
                                                     const kcGraphicProps& props);

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  friend class kcGraphicList;
  friend class kcGraphicGroup;

  // An untyped drawing hook; no graphic of this library uses it.
  virtual void draw(void*) const {}
  virtual void draw(kcUITablet& t, kcUITablet::Layers layer) const = 0;
  // Called after the props have been replaced.
  virtual void setProps_(const kcGraphicProps&) {}
  void serialize_(kcArchive& ar, unsigned char version);
  [[nodiscard]] bool builtin() const noexcept { return builtin_; }

 private:
  static constexpr unsigned char kVersion = 1;

  kcGraphicProps props_;
  bool builtin_ = true;
};

// --- graphics over one shape ---

// Holds the shape; measures it.
template <class T>
class kcGraphicBuiltin : public kcGraphic {
 public:
  kcGraphicBuiltin() = default;
  kcGraphicBuiltin(const T& shape, const kcColor& color) : kcGraphic(color), shape_(shape) {}
  kcGraphicBuiltin(const T& shape, const kcGraphicProps& props) : kcGraphic(props), shape_(shape) {}
  kcGraphicBuiltin(const kcGraphicBuiltin&) = default;

  T& item() noexcept { return shape_; }
  [[nodiscard]] const T& item() const noexcept { return shape_; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const override;

 protected:
  void draw(kcUITablet& t, kcUITablet::Layers layer) const override;
  // The builtin layer: the graphic record, then the shape.
  void serialize_(kcArchive& ar, unsigned char version);

  T shape_;
};

// A shape that is only stroked.
template <class T>
class kcGraphicSimple final : public kcGraphicBuiltin<T> {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicSimple<T>);
  using kcGraphicBuiltin<T>::kcGraphicBuiltin;

  // The image of the shape under its own typed map.
  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);
};

// A closed shape, filled when props().fill() is set.
template <class T, class U>
class kcGraphicWithFill final : public kcGraphicBuiltin<T> {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicWithFill<T, U>);
  using kcGraphicBuiltin<T>::kcGraphicBuiltin;
  kcGraphicWithFill(const T& shape, const kcColor& color, bool fill);

  [[nodiscard]] bool fill() const noexcept { return this->props().fill(); }
  void fill(bool f) { this->props().fill(f); }

  // A kcGraphicWithFill<U, U> when the image is a U, else one like this when
  // it is a T; DegenerateShape otherwise.
  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);
};

// The instances, each defined once in the library. Which of them
// makeShapeGraphic builds is in the source.
// clang-format off
#define DISPC_GRAPHIC_SIMPLE_SHAPES(X) \
  X(kc2Point)                          \
  X(kc2Wireframe)                      \
  X(kcAffineRectangle)                 \
  X(kcBezierCurve)                     \
  X(kcCoordAxes)                       \
  X(kcDeBoorSpline)                    \
  X(kcEllipseArc2)                     \
  X(kcEllipseArc)                      \
  X(kcFLine)                           \
  X(kcGenAnnulus)                      \
  X(kcGenPoly)                         \
  X(kcHermiteSpline)                   \
  X(kcInterpSpline)                    \
  X(kcLine)                            \
  X(kcLineSeg)                         \
  X(kcLineSegSet)                      \
  X(kcPoint)                           \
  X(kcPointSet)                        \
  X(kcPolygon)                         \
  X(kcPolyline)
#define DISPC_GRAPHIC_FILLED_SHAPES(X)  \
  X(kcAnnulus, kcGenAnnulus)            \
  X(kcCircle, kcEllipse2)               \
  X(kcCircle, kcEllipse)                \
  X(kcEllipse2, kcEllipse2)             \
  X(kcEllipse, kcEllipse)               \
  X(kcEllipseAnnulus, kcEllipseAnnulus) \
  X(kcGenAnnulus, kcGenAnnulus)         \
  X(kcGenRect, kcGenRect)               \
  X(kcRect, kcGenRect)
// Every shape of an instance above (kcGraphicBuiltin<T>).
#define DISPC_GRAPHIC_BUILTIN_SHAPES(X) \
  X(kc2Point)                           \
  X(kc2Wireframe)                       \
  X(kcAffineRectangle)                  \
  X(kcAnnulus)                          \
  X(kcBezierCurve)                      \
  X(kcCircle)                           \
  X(kcCoordAxes)                        \
  X(kcDeBoorSpline)                     \
  X(kcEllipse2)                         \
  X(kcEllipse)                          \
  X(kcEllipseAnnulus)                   \
  X(kcEllipseArc2)                      \
  X(kcEllipseArc)                       \
  X(kcFLine)                            \
  X(kcGenAnnulus)                       \
  X(kcGenPoly)                          \
  X(kcGenRect)                          \
  X(kcHermiteSpline)                    \
  X(kcInterpSpline)                     \
  X(kcLine)                             \
  X(kcLineSeg)                          \
  X(kcLineSegSet)                       \
  X(kcPoint)                            \
  X(kcPointSet)                         \
  X(kcPolygon)                          \
  X(kcPolyline)                         \
  X(kcRect)
// clang-format on

// The persistence members of one instance are defined with the instance.
#define DISPC_GRAPHIC_DECLARE_INSTANCE_(...)                    \
  template <>                                                   \
  __VA_ARGS__* __VA_ARGS__::make();                             \
  template <>                                                   \
  const char* __VA_ARGS__::className() const;                   \
  template <>                                                   \
  const kcPersistenceRegistry::Exemplar __VA_ARGS__::sExemplar; \
  extern template class __VA_ARGS__;
#define DISPC_GRAPHIC_DECLARE_BUILTIN_(T) extern template class kcGraphicBuiltin<T>;
#define DISPC_GRAPHIC_DECLARE_SIMPLE_(T) DISPC_GRAPHIC_DECLARE_INSTANCE_(kcGraphicSimple<T>)
#define DISPC_GRAPHIC_DECLARE_FILLED_(T, U) DISPC_GRAPHIC_DECLARE_INSTANCE_(kcGraphicWithFill<T, U>)
DISPC_GRAPHIC_BUILTIN_SHAPES(DISPC_GRAPHIC_DECLARE_BUILTIN_)
DISPC_GRAPHIC_SIMPLE_SHAPES(DISPC_GRAPHIC_DECLARE_SIMPLE_)
DISPC_GRAPHIC_FILLED_SHAPES(DISPC_GRAPHIC_DECLARE_FILLED_)
#undef DISPC_GRAPHIC_DECLARE_FILLED_
#undef DISPC_GRAPHIC_DECLARE_SIMPLE_
#undef DISPC_GRAPHIC_DECLARE_BUILTIN_

// --- graphics with data of their own ---

// A label anchored at a client point and moved from it by whole screen pels.
// Its extent is in pels, so it reports an empty enclosing rectangle and a
// distance of 1e308 from every point (a search never picks it); mapping moves
// the anchor, drops the pel offset and keeps everything else.
class kcGraphicText final : public kcGraphic {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicText);

  kcGraphicText() = default;
  // The pen colour is the glyphs' colour.
  kcGraphicText(const std::wstring& text, const kcPoint& location, const kcColor& penColor,
                const kcColor& backgroundColor, const kcUIFormat& format, const kcVector<2>& offset);

  [[nodiscard]] const std::wstring& text() const noexcept { return text_; }
  void text(const std::wstring& t);
  [[nodiscard]] kcPoint location() const { return location_; }
  void location(const kcPoint& p);
  // Screen pels from the anchor.
  [[nodiscard]] kcVector<2> offset() const noexcept { return offset_; }
  void offset(const kcVector<2>& d);
  [[nodiscard]] kcUIFormat format() const noexcept { return format_; }
  void format(const kcUIFormat& f);
  [[nodiscard]] kcColor backgroundColor() const noexcept { return backgroundColor_; }
  void backgroundColor(const kcColor& c);

  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  [[nodiscard]] kcRect encloseRect() const override { return {}; }
  [[nodiscard]] double distToPoint(const kcVector<2>&) const override { return kFar; }
  // An empty text.
  [[nodiscard]] bool isNull() const override { return text_.empty(); }
  void dispatchSerialize(kcArchive& ar) override;

  static constexpr double kFar = 1e308;

 protected:
  // The pen goes to the anchor, moves by the offset truncated to whole pels,
  // and the text is drawn where the pen is.
  void draw(kcUITablet& t, kcUITablet::Layers layer) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  std::wstring text_;
  kcPoint location_;
  kcColor backgroundColor_;
  kcUIFormat format_;
  kcVector<2> offset_;
};

// A cross marker; a decoration, so its enclosing rectangle is empty. Its
// distance is its centre's.
class kcGraphicCross final : public kcGraphic {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicCross);

  kcGraphicCross() = default;
  kcGraphicCross(const kcCross& cross, const kcColor& color) : kcGraphic(color), cross_(cross) {}
  kcGraphicCross(const kcCross& cross, const kcGraphicProps& props) : kcGraphic(props), cross_(cross) {}

  kcCross& item() noexcept { return cross_; }
  [[nodiscard]] const kcCross& item() const noexcept { return cross_; }

  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  [[nodiscard]] kcRect encloseRect() const override { return {}; }
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void draw(kcUITablet& t, kcUITablet::Layers layer) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  kcCross cross_;
};

// The tablet's 13 x 13 point icon centred on a point; its enclosing rectangle
// is the unit square at the point, whatever the icon's size on screen.
class kcGraphicPointIcon final : public kcGraphic {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicPointIcon);

  kcGraphicPointIcon() = default;
  kcGraphicPointIcon(const kcPoint& point, const kcColor& color) : kcGraphic(color), point_(point) {}
  kcGraphicPointIcon(const kcPoint& point, const kcGraphicProps& props) : kcGraphic(props), point_(point) {}

  kcPoint& item() noexcept { return point_; }
  [[nodiscard]] const kcPoint& item() const noexcept { return point_; }

  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const override { return point_.distToPoint(p); }
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void draw(kcUITablet& t, kcUITablet::Layers layer) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  kcPoint point_;
};

// A section of an elliptical annulus whose arrow heads are switched apart
// from its other props (they live in props().arrowHead and arrowHeadForward).
class kcGraphicEllipseAnnulusSection final : public kcGraphic {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicEllipseAnnulusSection);

  kcGraphicEllipseAnnulusSection() = default;
  kcGraphicEllipseAnnulusSection(const kcEllipseAnnulusSection& section, const kcColor& color, bool arrowHead,
                                 bool arrowHeadForward);
  kcGraphicEllipseAnnulusSection(const kcEllipseAnnulusSection& section, const kcGraphicProps& props)
      : kcGraphic(props), section_(section) {}

  kcEllipseAnnulusSection& item() noexcept { return section_; }
  [[nodiscard]] const kcEllipseAnnulusSection& item() const noexcept { return section_; }
  void drawArrowHead(bool arrowHead, bool forward);
  [[nodiscard]] bool drawArrowHead() const noexcept { return props().arrowHead(); }
  [[nodiscard]] bool drawArrowHeadForward() const noexcept { return props().arrowHeadForward(); }

  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  [[nodiscard]] kcRect encloseRect() const override { return section_.encloseRect(); }
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void draw(kcUITablet& t, kcUITablet::Layers layer) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 1;

  kcEllipseAnnulusSection section_;
};

// --- groups and lists ---

// Graphics drawn, mapped, measured and archived as one. An entry may be a
// null handle: numItems() counts it, everything else skips it. The group's
// props are its first non-null member's (failing that, its first member's);
// setting the group's props sets every member's, through nested groups.
// Copies share the members. A group may not contain itself, and groups nest
// at most kMaxLoadDepth deep in an archive.
class kcGraphicGroup final : public kcGraphic {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicGroup);

  static constexpr int kMaxLoadDepth = 256;

  kcGraphicGroup() = default;
  kcGraphicGroup(const kcGraphicGroup& other) = default;
  kcGraphicGroup& operator=(const kcGraphicGroup& other);

  // BadParams, the group unchanged, when a member is or holds this group.
  void items(const std::vector<kcGraphicPtr>& items);
  void items(const std::vector<kcGraphicConstPtr>& items);
  void getItems(std::vector<kcGraphicConstPtr>& out) const;
  [[nodiscard]] long numItems() const noexcept { return static_cast<long>(items_.size()); }
  // BadParams "Item index out of range" outside [0, numItems()).
  [[nodiscard]] kcGraphicConstPtr item(long i) const;

  [[nodiscard]] kcGraphicPtr map(const kcXform<2>& x) const override;
  [[nodiscard]] kcGraphicPtr clone() const override;
  // The union of the members' rectangles; empty for a null group.
  [[nodiscard]] kcRect encloseRect() const override;
  // The least of the members' distances; +infinity for a null group.
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const override;
  // No member draws anything (as last worked out by itemsChanged_).
  [[nodiscard]] bool isNull() const override { return isNull_; }
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void draw(kcUITablet& t, kcUITablet::Layers layer) const override;
  void setProps_(const kcGraphicProps& p) override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  void itemsChanged_();
  void assign_(const kcGraphicGroup& other);
  [[nodiscard]] bool holds_(const kcGraphic* g) const;

  std::vector<kcGraphicPtr> items_;
  bool isNull_ = true;
};

// Graphics in drawing order; copies share the graphics.
class kcGraphicList {
 public:
  std::vector<kcGraphicPtr>& items() noexcept { return items_; }
  [[nodiscard]] const std::vector<kcGraphicPtr>& items() const noexcept { return items_; }

  void append(kcGraphicPtr g) { items_.push_back(std::move(g)); }
  // other's handles at the end, in order; without keep, other ends empty
  // (appending a list to itself without keep leaves it as it was).
  void append(kcGraphicList& other, bool keep);
  void append(const kcGraphicList& other);
  void reset() noexcept { items_.clear(); }

  // Each item in order; kcBadPointer at a null handle (the items before it
  // are drawn).
  void draw(kcUITablet& t, kcUITablet::Layers layer) const;
  // What a recording tablet records of the list drawn on the layer.
  [[nodiscard]] kcUISketch sketch(kcUITablet::Layers layer) const;

  friend bool operator==(const kcGraphicList&, const kcGraphicList&) = default;

 private:
  std::vector<kcGraphicPtr> items_;
};

// The items as a vector of handles (null ones included).
kcArchive& operator||(kcArchive& ar, kcGraphicList& list);

// --- the graphics-list library ---

// Appends a record for each item of a class the library has a record for
// (point icons, line segments, lines, rectangles, general and affine
// rectangles, polylines, segment sets, text), in the pen colour alone; other
// items are skipped. A closed polyline repeats its first vertex. kcBadPointer
// at a null item; kcGraphic::BadParams for a font id beyond 32 bits;
// LibraryFailure for a code the library returns (the records before it stay
// appended).
void kfGraphicListAppend(kgr_list* out, const kcGraphicList& in);
// Appends one graphic per record of in, drawn with a 1-pel solid unfilled pen
// of the record's colour (arrow heads as the props' defaults have them). A
// record whose geometry its shape refuses (a segment of no length, a
// rectangle without area) is skipped; a polyline of four or more vertices
// whose last repeats its first comes back closed. LibraryFailure for a list
// that does not read back whole, before anything is appended.
void kfGraphicListAppend(kcGraphicList& out, const kgr_list* in);
// Draws each record of in on t as the graphic appended for it would draw.
void kfUITabletDraw(kcUITablet& t, const kgr_list* in, kcUITablet::Layers layer);
