// kcUITablet: the drawing surface every graphic draws on.
//
// A tablet rasterises nothing. Each drawing call, given in client
// coordinates, is (a) mapped through the tablet's client transform (the
// scaled map) and handed to the kcUIScope attached to the addressed layer,
// and (b) when the top of recordOn() is true, appended to the tablet's sketch
// as one record, so that the same drawing can be played again on any tablet.
// The two halves are independent: a call can draw without recording, record
// without drawing, do both or neither.
//
// Layers: 0 the main layer, 1 the overlay, 2 both (a call on layer 2 is
// recorded with layer 2 and never drawn directly; played back, it draws on
// the layer the sketch is played on). A call may draw when the tablet is
// attached, the top of drawOn() is true, for the overlay the top of
// drawOnOverlay() is true, the layer has a scope, and the scope can draw now
// (or its state flags force drawing). Calls on a layer without a scope still
// record. A layer value above 2 in a recording call, or above 1 where one
// scope is addressed, is kcUIError::BadLayer.
//
// What reaches a scope: shapes the scope has a primitive for arrive mapped
// (a circle as an ellipse, an elliptical arc of either form as a kcEllipseArc,
// polygons and rectangles under a turn as closed polylines); the others as a
// kcUIPath or several primitives between an update lock push and pop
// (general rectangles, annuli and sections, general polygons and wireframes,
// splines, coordinate axes, crosses), so that a device shows them at once.
// Filled shapes arrive with props.fill() set; an open curve drawn with
// props.arrowHead() is followed by an arrowHead() at its end (start, when
// arrowHeadForward() is false) along the direction of travel, arms of
// kfArrowArmLength(props) pels: devices draw no arrow heads of their own.
//
// Coordinates: the client transform is the base map followed by the scale
// (scaleMode() 0 none, 1 multiply by the factors, 2 divide by factors above
// one and multiply by the others). A change of map reaches every child
// tablet (parentMapChanged()) before the tablet redraws.
//
// Ownership: scopes handed to a tablet stay the caller's; sub-scopes a tablet
// makes for itself from its parent's scopes (setParent) are its own and are
// deleted when it is re-parented or destroyed. Kids and parent are not owned.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "dispc/color.h"
#include "dispc/dispprop.h"
#include "dispc/flagstack.h"
#include "dispc/uirect.h"
#include "dispc/uiscope.h"
#include "dispc/uisketch.h"
#include "dispc/uistring.h"
#include "dispc/wrfm/genpoly.h"
#include "dispc/wrfm/wirefrm.h"
#include "foundation/pair.h"
#include "foundation/pelbuffer.h"
#include "foundation/rlebuffer.h"
#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/annulus.h"
#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/coordaxes.h"
#include "foundation/shapes/cross.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipseannulussection.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/line.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/linesegset.h"
#include "foundation/shapes/point.h"
#include "foundation/shapes/pointset.h"
#include "foundation/shapes/polygon.h"
#include "foundation/shapes/polyline.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/spline.h"
#include "foundation/xform.h"

class kcUITablet {
 public:
  enum Layers : std::int32_t {
    mainLayer = 0,
    overlayLayer = 1,
    // Recorded as is; drawn on whichever layer a sketch is played on.
    bothLayers = 2,
  };
  using FillType = keFillType;
  enum ScaleModes : std::int32_t {
    scaleNone = 0,
    scaleMagnify = 1,
    // Factors above one divide, the others multiply.
    scaleReduce = 2,
  };

  // No scopes: the tablet records only.
  kcUITablet();
  // The scopes of the main layer and the overlay (either may be null); not owned.
  explicit kcUITablet(kcUIScope* main, kcUIScope* overlay = nullptr);
  // A detached tablet: it draws nothing until setParent attaches it. parent
  // is not joined yet; rect becomes the scope rectangle.
  kcUITablet(kcUITablet& parent, const kcUIRect& rect);
  kcUITablet(const kcUITablet&) = delete;
  kcUITablet& operator=(const kcUITablet&) = delete;
  // Leaves the parent, deletes the sub-scopes it made, and leaves its kids
  // without a parent.
  virtual ~kcUITablet();

  // --- scopes and switches ---

  // The scope of layer 0 or 1 (BadLayer otherwise); null when there is none.
  [[nodiscard]] kcUIScope* scope(Layers layer) const;
  // Attaches a scope the caller keeps owning (null detaches); a sub-scope the
  // tablet made for that layer is deleted.
  void scope(Layers layer, kcUIScope* s);
  // Whether an overlay layer exists at all.
  [[nodiscard]] static bool overlaySupported() noexcept { return true; }

  kcFlagStack& drawOn() noexcept { return drawOn_; }
  kcFlagStack& recordOn() noexcept { return recordOn_; }
  kcFlagStack& drawOnOverlay() noexcept { return drawOnOverlay_; }
  kcUISketch& sketch() noexcept { return sketch_; }
  [[nodiscard]] const kcUISketch& sketch() const noexcept { return sketch_; }
  // Attached to a parent, or made without one.
  [[nodiscard]] bool isDetached() const noexcept { return detached_; }
  // When set, drawing takes no time stamp.
  void timeStampOff(bool off) noexcept { timeStampOff_ = off; }
  // The stamp of the last draw on this tablet (~0 before the first).
  [[nodiscard]] unsigned long timeStamp() const noexcept { return stamp_; }

  // Forwarded to the scope of the layer; layer 2: to both, main first.
  void lockScreenUpdatesPush(bool lock, Layers layer);
  void lockScreenUpdatesPop(Layers layer);
  [[nodiscard]] bool screenUpdatesLocked(Layers layer) const;
  // One layer only (BadLayer for 2).
  void optimizeDrawing(bool on, Layers layer);

  // --- shapes ---

  void draw(const kcPoint& p, const kcGraphicProps& props, Layers layer);
  void draw(const kc2Point& p, const kcGraphicProps& props, Layers layer);
  void draw(const kcPointSet& s, const kcGraphicProps& props, Layers layer);
  void draw(const kcLineSeg& s, const kcGraphicProps& props, Layers layer);
  void draw(const kcLineSegSet& s, const kcGraphicProps& props, Layers layer);
  // Clipped to the tablet's area (scopeRect()), or to a large square around
  // the origin when the area is null.
  void draw(const kcLine& l, const kcGraphicProps& props, Layers layer);
  void draw(const kcCircle& c, const kcGraphicProps& props, Layers layer);
  void draw(const kcEllipse& e, const kcGraphicProps& props, Layers layer);
  void draw(const kcEllipse2& e, const kcGraphicProps& props, Layers layer);
  void draw(const kcEllipseArc& a, const kcGraphicProps& props, Layers layer);
  void draw(const kcEllipseArc2& a, const kcGraphicProps& props, Layers layer);
  // Arrow heads at the ends of the outer arc as the props say (opcode 7).
  void draw(const kcEllipseAnnulusSection& s, const kcGraphicProps& props, Layers layer);
  // With a flag a piece for arrow heads (opcode 39): first the ends of the
  // outer arc, second those of the inner one; the blocks are equally long.
  void draw(const kcEllipseAnnulusSection& s, const std::vector<unsigned char>& first,
            const std::vector<unsigned char>& second, const kcGraphicProps& props, Layers layer);
  // A full-turn section of a kcEllipseAnnulus (recorded as opcode 7).
  void draw(const kcAnnulus& a, const kcGraphicProps& props, Layers layer);
  void draw(const kcGenRect& r, const kcGraphicProps& props, Layers layer);
  void draw(const kcGenAnnulus& a, const kcGraphicProps& props, Layers layer);
  void draw(const kcCoordAxes& a, const kcGraphicProps& props, Layers layer);
  void draw(const kcAffineRectangle& r, const kcGraphicProps& props, Layers layer);
  void draw(const kcPolygon& p, const kcGraphicProps& props, Layers layer);
  void draw(const kcRect& r, const kcGraphicProps& props, Layers layer);
  // The held shape in the given colour (the props' other fields kept).
  void draw(const kcGenShape& s, const kcColor& color, const kcGraphicProps& props, Layers layer);
  void draw(const kcGenPoly& p, const kcGraphicProps& props, Layers layer);
  void draw(const kcCross& c, const kcGraphicProps& props, Layers layer);
  void draw(const kc2Wireframe& w, const kcGraphicProps& props, Layers layer);
  void draw(const kcBezierCurve& b, const kcGraphicProps& props, Layers layer);
  void draw(const kcCubicSpline& s, const kcGraphicProps& props, Layers layer);
  void draw(const kcPolyline& p, const kcGraphicProps& props, Layers layer);
  // Any shape, by its run-time class; a class without a call of its own as
  // its pieces (or points along it).
  void draw(const kcShape& s, const kcGraphicProps& props, Layers layer);

  // The point icon, its upper-left pel 6 pels left of and above the mapped
  // point, in the pen colour (opcode 1).
  void drawPointIcon(const kcPoint& p, const kcGraphicProps& props, Layers layer);
  // One pel in a colour (not recorded).
  void drawPixel(const kcPoint& p, const kcColor& color, Layers layer);

  // --- the pen ---

  void drawStart(const kcPoint& p, Layers layer);
  void drawTo(const kcPoint& p, const kcGraphicProps& props, Layers layer);
  void drawToRelPels(long dx, long dy, const kcColor& color, Layers layer);
  void drawToRelPels(long dx, long dy, const kcGraphicProps& props, Layers layer);
  // length pels along direction, rounded to whole pels before it is recorded.
  void drawToRelPels(const kcVector<2>& direction, float length, const kcColor& color, Layers layer);
  void moveToRelPels(long dx, long dy, Layers layer);
  void arrowHead(const kcPoint& tip, const kcVector<2>& direction, float length, const kcGraphicProps& props,
                 Layers layer);

  // --- areas and frames ---

  void set(const kcColor& color, Layers layer);
  void set(const kcRect& r, const kcColor& color, Layers layer);
  void set(const kcUIRect& r, const kcColor& color, Layers layer);
  void setComplement(const kcRect& r, const kcColor& color, Layers layer);
  void setComplement(const kcUIRect& r, const kcColor& color, Layers layer);
  void fill(const kcPoint& seed, const kcColor& fill, const kcColor& boundary, FillType type, Layers layer);
  void fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary, FillType type,
            Layers layer);
  // Not recorded.
  void erase(const kcUIRect& r, Layers layer);
  // Not recorded: a frame of the given width inside r.
  void outline(const kcUIRect& r, const kcColor& color, long width, Layers layer);
  void outline3D(const kcRect& r, const kcColor& light, const kcColor& dark, long width, Layers layer);
  void outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width, Layers layer);

  // --- text and images ---

  // Text with its anchor at the mapped point (at the pen, for the sentinel
  // drawPointArg_, which is recorded as it is and so means the pen again
  // when played).
  void draw(const std::wstring& s, const kcPoint& at, const kcColor& fg, const kcColor& bg,
            const kcUIFormat& f, Layers layer);
  void draw(const std::string& s, const kcPoint& at, const kcColor& fg, const kcColor& bg,
            const kcUIFormat& f, Layers layer);
  // The pels the text would cover, asked of the layer's scope (the null
  // rectangle without one).
  void textRect(const std::wstring& s, const kcPoint& at, const kcUIFormat& f, kcUIRect& out, Layers layer);
  // An image with its upper-left pel at the mapped point; pels of passColor
  // are not drawn with passThrough; mapped: the colour table (none here)
  // applies.
  void draw(const kcPelBuffer_const<unsigned char>& image, const kcPoint& at, bool passThrough,
            unsigned char passColor, bool mapped, Layers layer);
  void draw(const kcRLEBuffer& image, const kcPoint& at, const std::vector<unsigned char>& colorTable,
            bool passThrough, unsigned char passColor, bool mapped, Layers layer);

  // --- sketches ---

  // Plays a sketch moved by offset (client units); records it as one
  // opcode-15 record when recording. InvalidUISketch for a malformed sketch,
  // with the transform, the switches and the locks as they were (records
  // before the fault are drawn). A record whose geometry has no image under
  // the map (a radius that vanishes in pels, a singular map) is skipped.
  void draw(const kcUISketch& s, const kcPoint& offset, Layers layer);
  // The pels that playing the sketch would touch (the null rectangle for
  // none).
  [[nodiscard]] kcUIRect encloseRect(const kcUISketch& s, const kcPoint& offset, Layers layer);
  // The clip rectangle of layer 0, 1 or 2 (both), mapped to pels (its
  // bounding box under a turn); recorded as opcode 47.
  void drawClipRect(const kcRect& r, Layers layer);

  // --- maps and coordinates ---

  [[nodiscard]] const kcXform<2>& baseMap() const noexcept { return baseMap_; }
  kcUITablet& baseMap(const kcXform<2>& map);
  // Whole factors; the mode is kept.
  kcUITablet& scale(const kcPair<long>& factors);
  // Each factor s as the whole part of s when s >= 1, else of 1 / s.
  [[nodiscard]] kcPair<long> scale() const;
  // Sets the mode from the first factor alone: 0 when |1 - x| <= 1e-6, 1 when
  // x > 1, else 2.
  kcUITablet& scaleExact(const kcPair<double>& factors);
  [[nodiscard]] kcPair<double> scaleExact() const noexcept { return factors_; }
  kcUITablet& scaleMode(ScaleModes mode);
  [[nodiscard]] ScaleModes scaleMode() const noexcept { return mode_; }
  // The client transform.
  [[nodiscard]] const kcXform<2>& scaledMap() const noexcept { return scaledMap_; }

  // The scope pel that holds a client point: each coordinate raised by
  // 1e-11 of its size, then rounded down.
  [[nodiscard]] kcPair<long> scopeCoords(const kcPoint& p) const;
  // scopeCoords plus the scope origin.
  [[nodiscard]] kcPair<long> screenCoords(const kcPoint& p) const;
  // The client point of a scope pel (kcMathError::Singular for a singular map).
  [[nodiscard]] kcPoint tabletCoords(const kcPair<long>& p) const;

  [[nodiscard]] const kcUIRect& scopeRect() const noexcept { return scopeRect_; }
  void scopeRect(const kcUIRect& r);
  [[nodiscard]] kcPair<long> scopeOrg() const noexcept { return scopeRect_.ul(); }
  // The area on the screen: the scope origin and the area's size.
  [[nodiscard]] kcUIRect absRect() const;
  kcUITablet& moveAbs(const kcPair<long>& p);
  kcUITablet& moveRel(const kcPair<long>& d);

  // --- parent and kids ---

  [[nodiscard]] kcUITablet* parent() const noexcept { return parent_; }
  [[nodiscard]] kcUITablet* firstKid() const noexcept;
  [[nodiscard]] kcUITablet* lastKid() const noexcept;
  // Null past either end of the parent's list, and without a parent.
  [[nodiscard]] kcUITablet* nextSib() const noexcept;
  [[nodiscard]] kcUITablet* prevSib() const noexcept;
  [[nodiscard]] long numKids() const noexcept { return static_cast<long>(kids_.size()); }
  // Attaches this tablet to parent over rect: its scopes become sub-scopes of
  // the parent's, its kids are attached again under them.
  void setParent(kcUITablet& parent, const kcUIRect& rect);

  // Runs redraw_() (when this tablet draws); fullDraw also every kid's.
  void redraw(Layers layer);
  void fullDraw(Layers layer);

  // --- point icons ---

  // The point icon's pattern (13 x 13 pels in rows ended by '/').
  static const wchar_t* const kPointIconPattern;
  // A pattern as a run-length image: digits d drawn in colours[d] (index d
  // when colours is shorter), ' ', '.' and '+' in the pass colour's index.
  // BadIconPattern for another character or rows of different widths.
  [[nodiscard]] static kcRLEBuffer makeIcon(const wchar_t* pattern,
                                            const std::vector<unsigned char>& colours);
  // The point icon, made once.
  [[nodiscard]] static const kcRLEBuffer& pointIcon();
  // Whether a point d pels from the icon's centre touches it ('+' pels do,
  // '.' and ' ' pels do not).
  [[nodiscard]] static bool pointIconTouched(const kcPair<long>& d);

 protected:
  // Notification hooks for a display component; all empty here.
  virtual void clipped_() {}
  virtual void move_() {}
  virtual void newParentTablet(kcUITablet* oldParent) { (void)oldParent; }
  virtual void parentMapChanged() {}
  virtual void redraw_() {}
  virtual void resize_() {}

 private:
  // Whether a call on layer may draw now (and the time stamp).
  bool okToDraw(long layer);
  // The scope a call on layer draws on, or null.
  kcUIScope* drawingScope_(long layer);
  // BadLayer for a recording call's layer above 2 (or below 0).
  static void checkLayer_(long layer);
  // draw(kcShape) for the classes without a call of their own.
  void drawOther_(const kcShape& s, const kcGraphicProps& props, Layers layer);
  [[nodiscard]] bool recording_() const noexcept { return recordOn_; }

  // setMap and what follows a change of map.
  void setMap_();
  void newMap_();

  kcUIScope* scopes_[2] = {nullptr, nullptr};
  // The sub-scopes this tablet made for itself (setParent), or null.
  kcUIScope* ownScopes_[2] = {nullptr, nullptr};
  kcFlagStack drawOn_{true};
  kcFlagStack recordOn_{false};
  kcFlagStack drawOnOverlay_{true};
  kcUISketch sketch_;
  bool detached_ = false;
  bool timeStampOff_ = false;
  // No stamp yet: a value the process-wide counter does not take before it wraps.
  unsigned long stamp_ = ~0ul;

  kcXform<2> baseMap_;
  kcXform<2> scaledMap_;
  ScaleModes mode_ = scaleNone;
  kcPair<double> factors_{1.0, 1.0};
  kcUIRect scopeRect_;
  kcUITablet* parent_ = nullptr;
  std::list<kcUITablet*> kids_;
  int updateNesting_ = 0;

  // The text anchor that stands for the pen position: a point no client
  // draws text at.
  static const kcPoint drawPointArg_;
  // Where text anchored at at lands on scope s.
  [[nodiscard]] kcVector<2> textAnchor_(const kcUIScope& s, const kcPoint& at) const;

  friend class kcUITabletPlayer_;
  friend class kcGraphicText;
};
