// kcUIScope: the output device a tablet draws through, and kcUIPath, the
// outline of several pieces that some drawing calls hand it.
//
// The tablet maps every drawing call from client coordinates into the
// scope's pel coordinates and calls one or more primitives here; a device
// draws them on a display, into an image or a file, or writes them down. A
// pel (x, y) covers [x, x + 1) x [y, y + 1), so its centre is (x + 0.5,
// y + 0.5). Props are the call's kcGraphicProps; widths are in pels.
// Index colours name entries of the device's 256-entry palette (stock colours
// in their stock slots, slot 243 the transparent pass colour); RGB colours
// are used as they are.
//
// Whoever attaches a scope to a tablet owns it; a tablet deletes only the
// sub-scopes it made for itself. The primitives are abstract; the state
// members have the defaults of a device that can always draw and has nothing
// to hold back: no forced-drawing flag, update locks only kept track of, no
// sub-scopes, batches and hints ignored.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "dispc/color.h"
#include "dispc/dispprop.h"
#include "dispc/uirect.h"
#include "dispc/uistring.h"
#include "foundation/pair.h"
#include "foundation/pelbuffer.h"
#include "foundation/rlebuffer.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/rect.h"
#include "foundation/vector.h"

// How a flood fill spreads (kcUITablet::FillType).
enum keFillType : std::int32_t {
  // Up to the pels of the boundary colour.
  fillToBoundary = 0,
  // Over the connected pels that have the seed's colour.
  fillSameColor = 1,
};

class kcUIPath {
 public:
  enum class Kind { move, line, arc, bezier, close };
  // One piece: where it ends, and the arc or the two control points it
  // takes on the way.
  struct Piece {
    Kind kind;
    kcVector<2> to;
    // Index into arcs() for an arc.
    std::size_t arc = 0;
    kcVector<2> c1;
    kcVector<2> c2;
  };

  // Starts a sub-path at p.
  void moveTo(const kcVector<2>& p);
  // A line from the current point.
  void lineTo(const kcVector<2>& p);
  // An elliptical arc, joined to the current point by a line when its start
  // is elsewhere (farther than rounding, 1e-9 of the coordinates), or
  // starting the sub-path when there is none.
  void arcTo(const kcEllipseArc& a);
  // A cubic Bezier curve from the current point.
  void bezierTo(const kcVector<2>& c1, const kcVector<2>& c2, const kcVector<2>& p);
  // Closes the sub-path back to its first point.
  void close();

  [[nodiscard]] const std::vector<Piece>& pieces() const noexcept { return pieces_; }
  [[nodiscard]] const std::vector<kcEllipseArc>& arcs() const noexcept { return arcs_; }
  [[nodiscard]] bool empty() const noexcept { return pieces_.empty(); }
  // The end of the last piece; (0, 0) for an empty path.
  [[nodiscard]] kcVector<2> currentPoint() const noexcept { return current_; }

 private:
  std::vector<Piece> pieces_;
  std::vector<kcEllipseArc> arcs_;
  kcVector<2> current_;
  kcVector<2> start_;
  bool open_ = false;  // a sub-path has begun
};

class kcUIScope;

// Holds one screen-update lock on a device while it lives.
class kcUIScopeLock {
 public:
  explicit kcUIScopeLock(kcUIScope& scope);
  ~kcUIScopeLock();
  kcUIScopeLock(const kcUIScopeLock&) = delete;
  kcUIScopeLock& operator=(const kcUIScopeLock&) = delete;

 private:
  kcUIScope& scope_;
};

// Devices draw no arrow heads of their own: whoever draws an open curve with
// props.arrowHead() adds one, arms of kfArrowArmLength(props) pels, no
// shorter than 6 and three pen widths.
[[nodiscard]] double kfArrowArmLength(const kcGraphicProps& props);
// The arrow head props give an open curve given in device pels: at its end
// along the direction of travel, or at its start pointing back when
// arrowHeadForward() is false; nothing without arrowHead().
void kfDrawArrowHead(kcUIScope& scope, const kcShape& curve, const kcGraphicProps& props);

class kcUIScope {
 public:
  // stateFlags(): draw even while canDrawNow() is false.
  static constexpr unsigned long kForceDraw = 8;

  kcUIScope() = default;
  kcUIScope(const kcUIScope&) = delete;
  kcUIScope& operator=(const kcUIScope&) = delete;
  virtual ~kcUIScope();

  // --- state ---

  [[nodiscard]] virtual unsigned long stateFlags() const { return 0; }
  [[nodiscard]] virtual bool canDrawNow() const { return true; }
  // Nested update locks: while locked a device may hold back what it draws
  // and show it all at the last pop.
  virtual void lockScreenUpdatesPush(bool lock);
  virtual void lockScreenUpdatesPop();
  [[nodiscard]] virtual bool screenUpdatesLocked() const;
  // A long run of calls follows (on) or has ended (off).
  virtual void optimizeDrawing(bool) {}
  virtual void batchStart() {}
  virtual void batchEnd() {}
  // A new scope over area of this one, owned by the caller; null when the
  // device has none.
  [[nodiscard]] virtual kcUIScope* makeSubScope(const kcUIRect&) { return nullptr; }
  // After re-parenting: finish pending work, show held updates.
  virtual void settle() {}
  virtual void releaseUpdates() {}
  // In pels; an empty rectangle means no clipping.
  virtual void clipRect(const kcRect& r) = 0;
  [[nodiscard]] virtual kcRect clipRect() const = 0;

  // --- primitives ---

  virtual void point(const kcVector<2>& p, const kcGraphicProps& props) = 0;
  virtual void pixel(const kcPair<long>& pel, const kcColor& color) = 0;
  virtual void lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) = 0;
  // A closed polyline is filled when props.fill().
  virtual void polyline(const std::vector<kcVector<2>>& v, bool closed, const kcGraphicProps& props) = 0;
  // Circles arrive as ellipses; filled when props.fill().
  virtual void ellipse(const kcEllipse& e, const kcGraphicProps& props) = 0;
  virtual void ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) = 0;
  virtual void bezier(const std::array<kcVector<2>, 4>& c, const kcGraphicProps& props) = 0;
  // Closed sub-paths are filled together by the even-odd rule when props.fill().
  virtual void path(const kcUIPath& p, const kcGraphicProps& props) = 0;
  // Arms of the given length in pels.
  virtual void arrowHead(const kcVector<2>& tip, const kcVector<2>& direction, double length,
                         const kcGraphicProps& props) = 0;
  // Anchored at a pel point by the format's alignment.
  virtual void text(const std::wstring& s, const kcVector<2>& at, const kcColor& fg, const kcColor& bg,
                    const kcUIFormat& f) = 0;
  // The pels that text would cover.
  [[nodiscard]] virtual kcUIRect textRect(const std::wstring& s, const kcVector<2>& at,
                                          const kcUIFormat& f) = 0;
  // The whole layer.
  virtual void set(const kcColor& color) = 0;
  virtual void set(const kcUIRect& r, const kcColor& color) = 0;
  virtual void setComplement(const kcUIRect& r, const kcColor& color) = 0;
  // Back to the layer's background (transparent on an overlay).
  virtual void erase(const kcUIRect& r) = 0;
  virtual void fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary,
                    keFillType type) = 0;
  virtual void outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width) = 0;
  // Upper-left pel at at; values through colourMap (empty: grey levels); with
  // passThrough, pels of passColour are not drawn.
  virtual void image(const kcPelBuffer_const<unsigned char>& image, const kcVector<2>& at,
                     const std::vector<unsigned char>& colourMap, bool passThrough,
                     unsigned char passColour) = 0;
  virtual void image(const kcRLEBuffer& image, const kcVector<2>& at,
                     const std::vector<unsigned char>& colourMap, bool passThrough,
                     unsigned char passColour) = 0;

  // --- the pen ---

  virtual void moveTo(const kcVector<2>& p) = 0;
  virtual void lineTo(const kcVector<2>& p, const kcGraphicProps& props) = 0;
  virtual void moveRelPels(long dx, long dy) = 0;
  virtual void lineRelPels(long dx, long dy, const kcGraphicProps& props) = 0;
  [[nodiscard]] virtual kcVector<2> penPosition() const = 0;

 private:
  // The pushes not yet popped, the last one at the back.
  std::vector<bool> locks_;
};
