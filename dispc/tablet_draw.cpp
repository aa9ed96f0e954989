// The tablet's drawing calls. Each checks its layer, draws the mapped shape
// on the layer's scope when it may, and records its one record when the top
// of recordOn() is true.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <typeinfo>

#include "dispc/sketchshapes_p.h"
#include "dispc/tablet.h"
#include "dispc/tablet_p.h"
#include "dispc/uierror.h"
#include "dispc/wrfm/genpoly_p.h"
#include "foundation/bytes.h"

namespace {

using Layers = kcUITablet::Layers;

// The view an infinite line is clipped to when the tablet has no area.
constexpr double kNoAreaExtent = 1e6;
// Shapes drawn through samples: points at most this many pels apart.
constexpr double kSamplePels = 1.0;
// Arrow arms: at least this many pels, and this many pen widths.

// Pushes a flag for the lifetime of the object.
class Pushed {
 public:
  Pushed(kcFlagStack& stack, bool flag) : stack_(stack) { stack_.push(flag); }
  ~Pushed() { stack_.pop(); }
  Pushed(const Pushed&) = delete;
  Pushed& operator=(const Pushed&) = delete;

 private:
  kcFlagStack& stack_;
};

// An update lock held on one scope for the lifetime of the object.
kcVector<2> direction(const kcRadian& a) { return {std::cos(a.toDouble()), std::sin(a.toDouble())}; }

// The props of a call that takes a colour: that colour, the defaults else.
kcGraphicProps colored(const kcColor& c) {
  kcGraphicProps p;
  p.penColor(c);
  return p;
}

// The smallest pel rectangle holding the points.
kcUIRect pelBox(const std::array<kcVector<2>, 4>& points) {
  double x0 = std::numeric_limits<double>::infinity();
  double y0 = x0;
  double x1 = -x0;
  double y1 = -x0;
  for (const kcVector<2>& p : points) {
    x0 = std::min(x0, p.x());
    y0 = std::min(y0, p.y());
    x1 = std::max(x1, p.x());
    y1 = std::max(y1, p.y());
  }
  const long left = kfTabletPel(std::floor(x0));
  const long top = kfTabletPel(std::floor(y0));
  return kcUIRect(left, top, kfTabletPel(std::ceil(x1)) - left, kfTabletPel(std::ceil(y1)) - top);
}

// Writes a 32-bit value of an image record.
std::int32_t pelValue(long v) {
  if (v < std::numeric_limits<std::int32_t>::min() || v > std::numeric_limits<std::int32_t>::max())
    throw kcUIError::BadParams();
  return static_cast<std::int32_t>(v);
}

}  // namespace

// --- points and lines ---

void kcUITablet::draw(const kcPoint& p, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->point(scaledMap_ * p.point(), props);
  if (recording_()) kc_UISketchOpPoint::record(sketch_, 0, static_cast<signed char>(layer), props, p);
}

void kcUITablet::draw(const kc2Point& p, const kcGraphicProps& props, Layers layer) {
  draw(kcPoint(p.point()), props, layer);
}

void kcUITablet::draw(const kcPointSet& s, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  for (const kcVector<2>& p : s.points()) draw(kcPoint(p), props, layer);
}

void kcUITablet::draw(const kcLineSeg& seg, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcLineSeg m = seg.map(scaledMap_);
    s->lineSeg(m.p1(), m.p2(), props);
    kfDrawArrowHead(*s, m, props);
  }
  if (recording_()) kc_UISketchOpLineSeg::record(sketch_, 2, static_cast<signed char>(layer), props, seg);
}

void kcUITablet::draw(const kcLineSegSet& set, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  for (const kcLineSeg& seg : set.segments()) draw(seg, props, layer);
}

void kcUITablet::draw(const kcLine& l, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcLine m = l.map(scaledMap_);
    // The part inside the view (Liang-Barsky on point + t direction).
    const bool area = !scopeRect_.isNull();
    const double lo[2] = {area ? 0.0 : -kNoAreaExtent, area ? 0.0 : -kNoAreaExtent};
    const double hi[2] = {area ? static_cast<double>(scopeRect_.width()) : kNoAreaExtent,
                          area ? static_cast<double>(scopeRect_.height()) : kNoAreaExtent};
    const double p[2] = {m.point().x(), m.point().y()};
    const double d[2] = {m.direction().x(), m.direction().y()};
    double t0 = -std::numeric_limits<double>::infinity();
    double t1 = std::numeric_limits<double>::infinity();
    bool visible = true;
    for (int k = 0; k < 2 && visible; ++k) {
      if (d[k] == 0.0) {
        visible = p[k] >= lo[k] && p[k] <= hi[k];
        continue;
      }
      double a = (lo[k] - p[k]) / d[k];
      double b = (hi[k] - p[k]) / d[k];
      if (a > b) std::swap(a, b);
      t0 = std::max(t0, a);
      t1 = std::min(t1, b);
    }
    if (visible && t0 < t1) s->lineSeg(m.point() + t0 * m.direction(), m.point() + t1 * m.direction(), props);
  }
  if (recording_()) kc_UISketchOpLine::record(sketch_, 3, static_cast<signed char>(layer), props, l);
}

// --- ellipses ---

void kcUITablet::draw(const kcCircle& c, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  {
    // Drawn as the ellipse it is; recorded as the circle.
    const Pushed quiet(recordOn_, false);
    draw(kcEllipse(c), props, layer);
  }
  if (recording_())
    kc_UISketchOpCircle::record(sketch_, props.fill() ? 29 : 4, static_cast<signed char>(layer), props, c);
}

void kcUITablet::draw(const kcEllipse& e, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->ellipse(e.map(scaledMap_), props);
  if (recording_())
    kc_UISketchOpEllipse::record(sketch_, props.fill() ? 30 : 5, static_cast<signed char>(layer), props, e);
}

void kcUITablet::draw(const kcEllipse2& e, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->ellipse(kcEllipse(e).map(scaledMap_), props);
  if (recording_()) kc_UISketchOpEllipse2::record(sketch_, 45, static_cast<signed char>(layer), props, e);
}

void kcUITablet::draw(const kcEllipseArc& a, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcEllipseArc m = a.map(scaledMap_);
    s->ellipseArc(m, props);
    kfDrawArrowHead(*s, m, props);
  }
  if (recording_()) kc_UISketchOpEllipseArc::record(sketch_, 6, static_cast<signed char>(layer), props, a);
}

void kcUITablet::draw(const kcEllipseArc2& a, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcEllipseArc m = kcEllipseArc(a).map(scaledMap_);
    s->ellipseArc(m, props);
    kfDrawArrowHead(*s, m, props);
  }
  if (recording_()) kc_UISketchOpEllipseArc2::record(sketch_, 46, static_cast<signed char>(layer), props, a);
}

namespace {
// The outline of an annulus section (a full ring: the two ellipses) as a
// path; pieces, in order: outer arc, end edge, inner arc, start edge.
kcUIPath sectionPath(const kcEllipseAnnulusSection& s, const kcXform<2>& x) {
  const kcEllipseAnnulusSection m = s.map(x);
  const kcEllipse outer(m.annulus().outer());
  const kcEllipse inner(m.annulus().inner());
  const kcRadian start = m.angleStart();
  const kcRadian span = m.angleSpan();
  kcUIPath path;
  if (m.isFullTurn()) {
    path.arcTo(kcEllipseArc(outer, start, span));
    path.close();
    path.arcTo(kcEllipseArc(inner, start, span));
    path.close();
    return path;
  }
  path.arcTo(kcEllipseArc(outer, start, span));
  path.arcTo(kcEllipseArc(inner, kcRadian(start.toDouble() + span.toDouble()), kcRadian(-span.toDouble())));
  path.close();
  return path;
}
}  // namespace

void kcUITablet::draw(const kcEllipseAnnulusSection& sec, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->path(sectionPath(sec, scaledMap_), props);
  if (recording_())
    kc_UISketchOpEllipseAnnSect::record(sketch_, 7, static_cast<signed char>(layer), props, sec);
}

void kcUITablet::draw(const kcEllipseAnnulusSection& sec, const std::vector<unsigned char>& first,
                      const std::vector<unsigned char>& second, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (first.size() != second.size()) throw kcUIError::BadParams();
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcUIScopeLock locked(*s);
    s->path(sectionPath(sec, scaledMap_), props);
    // first[0] / second[0]: an arrow head at the end / the start of the outer
    // arc; first[1] / second[1]: the same for the inner arc.
    const kcEllipseAnnulusSection m = sec.map(scaledMap_);
    const kcEllipseArc outer(kcEllipse(m.annulus().outer()), m.angleStart(), m.angleSpan());
    const kcEllipseArc inner(kcEllipse(m.annulus().inner()), m.angleStart(), m.angleSpan());
    const double arm = kfArrowArmLength(props);
    const kcEllipseArc* arcs[2] = {&outer, &inner};
    for (std::size_t i = 0; i < std::min<std::size_t>(first.size(), 2); ++i) {
      if (first[i]) s->arrowHead(arcs[i]->endPoint(), direction(arcs[i]->endAngle()), arm, props);
      if (second[i]) s->arrowHead(arcs[i]->startPoint(), -direction(arcs[i]->startAngle()), arm, props);
    }
  }
  if (recording_())
    kc_UISketchOpEllipseAnnSectArrowheadFlag::record(sketch_, 39, static_cast<signed char>(layer), props,
                                                     kc_UISketchArrowSection{sec, first, second});
}

void kcUITablet::draw(const kcAnnulus& a, const kcGraphicProps& props, Layers layer) {
  const kcEllipse2 outer(a.outerRadius(), a.outerRadius(), kcRadian(0.0), a.center());
  draw(kcEllipseAnnulusSection(kcEllipseAnnulus(outer, a.innerRadius() / a.outerRadius()), kcRadian(0.0),
                               kcRadian(2.0 * std::numbers::pi)),
       props, layer);
}

// --- rectangles and general shapes ---

void kcUITablet::draw(const kcGenRect& r, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->path(kfGenPolyPath(kcGenPoly(r), scaledMap_), props);
  if (recording_())
    kc_UISketchOpGenRect::record(sketch_, props.fill() ? 31 : 8, static_cast<signed char>(layer), props, r);
}

void kcUITablet::draw(const kcGenAnnulus& a, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    // Both outlines in one path: the even-odd rule leaves the hole.
    kcUIPath path;
    for (const kcGenPoly& p : kcGenPoly::convert(a)) path = kfGenPolyPath(p, scaledMap_, std::move(path));
    s->path(path, props);
  }
  if (recording_()) kc_UISketchOpGenAnn::record(sketch_, 9, static_cast<signed char>(layer), props, a);
}

void kcUITablet::draw(const kcCoordAxes& a, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcCoordAxes m = a.map(scaledMap_);
    const kcUIScopeLock locked(*s);
    for (const kcShapePtr& axis : m.decompose()) {
      const auto& seg = static_cast<const kcLineSeg&>(*axis);
      s->lineSeg(seg.p1(), seg.p2(), props);
      kfDrawArrowHead(*s, seg, props);
    }
  }
  if (recording_()) kc_UISketchOpCoordAxes::record(sketch_, 10, static_cast<signed char>(layer), props, a);
}

void kcUITablet::draw(const kcAffineRectangle& r, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const auto c = r.map(scaledMap_).corners();
    s->polyline({c.begin(), c.end()}, true, props);
  }
  if (recording_()) kc_UISketchOpAffineRect::record(sketch_, 27, static_cast<signed char>(layer), props, r);
}

void kcUITablet::draw(const kcPolygon& p, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->polyline(p.map(scaledMap_).vertices(), true, props);
  if (recording_()) kc_UISketchOpPolygon::record(sketch_, 28, static_cast<signed char>(layer), props, p);
}

void kcUITablet::draw(const kcRect& r, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer); s && !r.isEmpty()) {
    // The four corners, mapped: a rectangle under any affine map.
    const auto c = kfMappedCorners(r, scaledMap_);
    s->polyline({c.begin(), c.end()}, true, props);
  }
  if (recording_()) kc_UISketchOpRect::record(sketch_, 32, static_cast<signed char>(layer), props, r);
}

void kcUITablet::draw(const kcGenShape& g, const kcColor& color, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (g.shape()) {
    kcGraphicProps p = props;
    p.penColor(color);
    const Pushed quiet(recordOn_, false);
    draw(*g.shape(), p, layer);
  }
  if (recording_())
    kc_UISketchOpGenShape::record(sketch_, 33, static_cast<signed char>(layer), props,
                                  kc_UISketchGenShape{color, g});
}

void kcUITablet::draw(const kcGenPoly& p, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) kfDrawGenPoly(*s, p, scaledMap_, props);
  if (recording_())
    kc_UISketchOpGenPoly::record(sketch_, props.showVertex() ? 38 : 34, static_cast<signed char>(layer),
                                 props, p);
}

void kcUITablet::draw(const kc2Wireframe& w, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) kfDrawGenPoly(*s, w, scaledMap_, props);
  if (recording_()) kc_UISketchOpWireframe::record(sketch_, 41, static_cast<signed char>(layer), props, w);
}

void kcUITablet::draw(const kcCross& c, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcCross m = c.map(scaledMap_);
    const kcUIScopeLock locked(*s);
    for (const kcShapePtr& bar : m.decompose()) {
      const auto& seg = static_cast<const kcLineSeg&>(*bar);
      s->lineSeg(seg.p1(), seg.p2(), props);
    }
  }
  if (recording_()) kc_UISketchOpCross::record(sketch_, 37, static_cast<signed char>(layer), props, c);
}

// --- curves ---

void kcUITablet::draw(const kcBezierCurve& b, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcBezierCurve m = b.map(scaledMap_);
    s->bezier(m.controlPoints(), props);
    kfDrawArrowHead(*s, m, props);
  }
  if (recording_()) kc_UISketchOpBezierCurve::record(sketch_, 42, static_cast<signed char>(layer), props, b);
}

void kcUITablet::draw(const kcCubicSpline& c, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcCubicSpline m = c.map(scaledMap_);
    const std::vector<kcVector<2>>& b = m.bezierPoints();
    kcUIPath path;
    path.moveTo(b[0]);
    for (std::size_t i = 1; i + 2 < b.size(); i += 3) path.bezierTo(b[i], b[i + 1], b[i + 2]);
    s->path(path, props);
    kfDrawArrowHead(*s, m, props);
  }
  if (recording_()) kc_UISketchOpCubicSpline::record(sketch_, 43, static_cast<signed char>(layer), props, c);
}

void kcUITablet::draw(const kcPolyline& p, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) {
    const kcPolyline m = p.map(scaledMap_);
    s->polyline(m.vertices(), m.closed(), props);
    if (!m.closed() && m.vertices().size() >= 2) kfDrawArrowHead(*s, m, props);
  }
  if (recording_()) kc_UISketchOpPolyline::record(sketch_, 44, static_cast<signed char>(layer), props, p);
}

void kcUITablet::draw(const kcShape& shape, const kcGraphicProps& props, Layers layer) {
  // The most derived classes first (a wireframe is a general polygon).
  if (const auto* w = dynamic_cast<const kc2Wireframe*>(&shape)) return draw(*w, props, layer);
  if (const auto* g = dynamic_cast<const kcGenPoly*>(&shape)) return draw(*g, props, layer);
  if (const auto* p = dynamic_cast<const kcPoint*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kc2Point*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcPointSet*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcLineSeg*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcLineSegSet*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcLine*>(&shape)) return draw(*p, props, layer);
  // A line given by a point and an angle is the same line.
  if (const auto* p = dynamic_cast<const kcFLine*>(&shape))
    return draw(kcLine(p->point(), p->direction()), props, layer);
  if (const auto* p = dynamic_cast<const kcCircle*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcEllipse*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcEllipse2*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcEllipseArc*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcEllipseArc2*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcEllipseAnnulusSection*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcAnnulus*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcGenRect*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcGenAnnulus*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcCoordAxes*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcAffineRectangle*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcPolygon*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcRect*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcGenShape*>(&shape))
    return draw(*p, props.penColor(), props, layer);
  if (const auto* p = dynamic_cast<const kcCross*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcBezierCurve*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcCubicSpline*>(&shape)) return draw(*p, props, layer);
  if (const auto* p = dynamic_cast<const kcPolyline*>(&shape)) return draw(*p, props, layer);
  drawOther_(shape, props, layer);
}

// Shapes without a call of their own (shape trees, other splines, ellipse
// rings, lines in other forms): their pieces, each through its own call; a
// shape that is its own only piece, as a polyline through points a pel or
// less apart.
void kcUITablet::drawOther_(const kcShape& shape, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (shape.isEmpty()) return;
  const std::vector<kcShapePtr> pieces = shape.decompose();
  const kcShape* only = pieces.size() == 1 ? pieces.front().get() : nullptr;
  if (!only || typeid(*only) != typeid(shape)) {
    for (const kcShapePtr& piece : pieces)
      if (piece) draw(*piece, props, layer);
    return;
  }
  if (!shape.isFinite()) return;
  const double scale = std::sqrt(std::abs(scaledMap_.matrix().determinant()));
  if (!(scale > 0.0) || !std::isfinite(scale)) return;
  std::vector<kcVector<2>> points;
  shape.sample(kSamplePels / scale, points);
  if (points.size() < 2) return;
  draw(kcPolyline(std::move(points), shape.isRegion()), props, layer);
}

// --- icons and pels ---

void kcUITablet::drawPointIcon(const kcPoint& p, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (layer > overlayLayer) throw kcUIError::BadLayer();
  const unsigned char pass = kcColor::passColor().index();  // NotIndexColor when it has none
  if (kcUIScope* s = drawingScope_(layer)) {
    // The icon's digit 0 in the pen colour (palette entry 0 for a colour
    // without an index).
    const std::vector<unsigned char> colours = {
        props.penColor().isIndexColor() ? props.penColor().index() : static_cast<unsigned char>(0)};
    const kcVector<2> at = scaledMap_ * p.point();
    s->image(pointIcon(), {std::floor(at.x()) - 6.0, std::floor(at.y()) - 6.0}, colours, true, pass);
  }
  if (recording_()) kc_UISketchOpPointIcon::record(sketch_, 1, static_cast<signed char>(layer), props, p);
}

void kcUITablet::drawPixel(const kcPoint& p, const kcColor& color, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->pixel(scopeCoords(p), color);
}

// --- the pen ---

void kcUITablet::drawStart(const kcPoint& p, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->moveTo(scaledMap_ * p.point());
  if (recording_())
    kc_UISketchOpDrawStart::record(sketch_, 20, static_cast<signed char>(layer), kcGraphicProps(), p);
}

void kcUITablet::drawTo(const kcPoint& p, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->lineTo(scaledMap_ * p.point(), props);
  if (recording_()) kc_UISketchOpDrawTo::record(sketch_, 21, static_cast<signed char>(layer), props, p);
}

void kcUITablet::drawToRelPels(long dx, long dy, const kcColor& color, Layers layer) {
  drawToRelPels(dx, dy, colored(color), layer);
}

void kcUITablet::drawToRelPels(long dx, long dy, const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  const kc_UISketchPelOffset d{pelValue(dx), pelValue(dy)};
  if (kcUIScope* s = drawingScope_(layer)) s->lineRelPels(dx, dy, props);
  if (recording_())
    kc_UISketchOpDrawToRelPels::record(sketch_, 22, static_cast<signed char>(layer), props, d);
}

void kcUITablet::drawToRelPels(const kcVector<2>& dir, float length, const kcColor& color, Layers layer) {
  const double norm = std::hypot(dir.x(), dir.y());
  if (!(norm > 0.0) || !std::isfinite(norm) || !std::isfinite(length)) throw kcUIError::BadParams();
  drawToRelPels(std::lround(dir.x() / norm * length), std::lround(dir.y() / norm * length), color, layer);
}

void kcUITablet::moveToRelPels(long dx, long dy, Layers layer) {
  checkLayer_(layer);
  const kc_UISketchPelOffset d{pelValue(dx), pelValue(dy)};
  if (kcUIScope* s = drawingScope_(layer)) s->moveRelPels(dx, dy);
  if (recording_())
    kc_UISketchOpMoveToRelPels::record(sketch_, 23, static_cast<signed char>(layer), kcGraphicProps(), d);
}

void kcUITablet::arrowHead(const kcPoint& tip, const kcVector<2>& dir, float length,
                           const kcGraphicProps& props, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer))
    s->arrowHead(scaledMap_ * tip.point(), scaledMap_.mapVector(dir), length, props);
  if (recording_())
    kc_UISketchOpArrow::record(sketch_, 26, static_cast<signed char>(layer), props,
                               kc_UISketchArrow{tip.point(), dir, length});
}

// --- areas and frames ---

namespace {
kcUIRect pelRect(const kcRect& r, const kcXform<2>& x) { return pelBox(kfMappedCorners(r, x)); }
}  // namespace

void kcUITablet::set(const kcColor& color, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->set(color);
  if (recording_())
    kc_UISketchOpSetAll::record(sketch_, 17, static_cast<signed char>(layer), colored(color),
                                kc_UISketchNothing{});
}

void kcUITablet::set(const kcRect& r, const kcColor& color, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer); s && !r.isEmpty()) s->set(pelRect(r, scaledMap_), color);
  if (recording_())
    kc_UISketchOpSet::record(sketch_, 16, static_cast<signed char>(layer), colored(color),
                             kc_UISketchArea{false, r, {}});
}

void kcUITablet::set(const kcUIRect& r, const kcColor& color, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->set(r, color);
  if (recording_())
    kc_UISketchOpSet::record(sketch_, 16, static_cast<signed char>(layer), colored(color),
                             kc_UISketchArea{true, {}, r});
}

void kcUITablet::setComplement(const kcRect& r, const kcColor& color, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer))
    s->setComplement(r.isEmpty() ? kcUIRect() : pelRect(r, scaledMap_), color);
  if (recording_())
    kc_UISketchOpSetComp::record(sketch_, 18, static_cast<signed char>(layer), colored(color),
                                 kc_UISketchArea{false, r, {}});
}

void kcUITablet::setComplement(const kcUIRect& r, const kcColor& color, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->setComplement(r, color);
  if (recording_())
    kc_UISketchOpSetComp::record(sketch_, 18, static_cast<signed char>(layer), colored(color),
                                 kc_UISketchArea{true, {}, r});
}

void kcUITablet::fill(const kcPoint& seed, const kcColor& fill, const kcColor& boundary, FillType type,
                      Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->fill(scopeCoords(seed), fill, boundary, type);
  if (recording_())
    kc_UISketchOpFill::record(sketch_, 19, static_cast<signed char>(layer), colored(fill),
                              kc_UISketchFill{false, seed.point(), 0, 0, boundary, type});
}

void kcUITablet::fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary, FillType type,
                      Layers layer) {
  checkLayer_(layer);
  const kc_UISketchFill v{true, {}, pelValue(seed.x()), pelValue(seed.y()), boundary, type};
  if (kcUIScope* s = drawingScope_(layer)) s->fill(seed, fill, boundary, type);
  if (recording_()) kc_UISketchOpFill::record(sketch_, 19, static_cast<signed char>(layer), colored(fill), v);
}

void kcUITablet::outline(const kcUIRect& r, const kcColor& color, long width, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->outline3D(r, color, color, width);
}

void kcUITablet::outline3D(const kcRect& r, const kcColor& light, const kcColor& dark, long width,
                           Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer); s && !r.isEmpty())
    s->outline3D(pelRect(r, scaledMap_), light, dark, width);
  if (recording_())
    kc_UISketchOpOutline3d::record(
        sketch_, 25, static_cast<signed char>(layer), colored(light),
        kc_UISketchOutline3d{kc_UISketchArea{false, r, {}}, light, dark, pelValue(width)});
}

void kcUITablet::outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width,
                           Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->outline3D(r, light, dark, width);
  if (recording_())
    kc_UISketchOpOutline3d::record(
        sketch_, 25, static_cast<signed char>(layer), colored(light),
        kc_UISketchOutline3d{kc_UISketchArea{true, {}, r}, light, dark, pelValue(width)});
}

// --- text and images ---

const kcPoint kcUITablet::drawPointArg_(std::numeric_limits<double>::lowest(),
                                        std::numeric_limits<double>::lowest());

kcVector<2> kcUITablet::textAnchor_(const kcUIScope& s, const kcPoint& at) const {
  return at.point() == drawPointArg_.point() ? s.penPosition() : scaledMap_ * at.point();
}

void kcUITablet::draw(const std::wstring& text, const kcPoint& at, const kcColor& fg, const kcColor& bg,
                      const kcUIFormat& f, Layers layer) {
  checkLayer_(layer);
  const std::optional<std::u16string> units = kfToUtf16(text, keSurrogates::keep);
  if (!units || units->find(u'\0') != std::u16string::npos) throw kcUIError::BadParams();
  if (kcUIScope* s = drawingScope_(layer)) s->text(text, textAnchor_(*s, at), fg, bg, f);
  if (recording_())
    kc_UISketchOpUnicodeString::record(sketch_, 35, static_cast<signed char>(layer), colored(fg),
                                       kc_UISketchText<char16_t>{at.point(), bg, f, *units});
}

void kcUITablet::draw(const std::string& text, const kcPoint& at, const kcColor& fg, const kcColor& bg,
                      const kcUIFormat& f, Layers layer) {
  checkLayer_(layer);
  if (text.find('\0') != std::string::npos) throw kcUIError::BadParams();
  if (kcUIScope* s = drawingScope_(layer)) {
    // The bytes as the first 256 characters.
    std::wstring wide;
    for (char c : text) wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
    s->text(wide, textAnchor_(*s, at), fg, bg, f);
  }
  if (recording_())
    kc_UISketchOpString::record(sketch_, 11, static_cast<signed char>(layer), colored(fg),
                                kc_UISketchText<char>{at.point(), bg, f, text});
}

void kcUITablet::textRect(const std::wstring& text, const kcPoint& at, const kcUIFormat& f, kcUIRect& out,
                          Layers layer) {
  if (layer < mainLayer || layer > overlayLayer) throw kcUIError::BadLayer();
  out = scopes_[layer] ? scopes_[layer]->textRect(text, scaledMap_ * at.point(), f) : kcUIRect();
}

void kcUITablet::draw(const kcPelBuffer_const<unsigned char>& image, const kcPoint& at, bool passThrough,
                      unsigned char passColor, bool mapped, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer))
    s->image(image, scaledMap_ * at.point(), {}, passThrough, passColor);
  if (recording_()) {
    kc_UISketchImage v;
    v.position = at.point();
    v.passThrough = passThrough;
    v.passColor = passColor;
    v.mapped = mapped;
    v.offsetX = pelValue(image.offsetX());
    v.offsetY = pelValue(image.offsetY());
    // The window's pels, copied: the record keeps them as they are now (an
    // image without pels as 0 x 0).
    const bool empty = image.width() == 0 || image.height() == 0;
    v.image = kcPelBuffer<unsigned char>(empty ? 0 : image.width(), empty ? 0 : image.height());
    for (long y = 0; y < v.image.height(); ++y)
      std::copy(image.row(y), image.row(y) + image.width(), v.image.row(y));
    v.image.imageFromClientXform(image.imageFromClientXform());
    kc_UISketchOpPelBuf8::record(sketch_, 12, static_cast<signed char>(layer), colored(kcColor(0)), v);
  }
}

void kcUITablet::draw(const kcRLEBuffer& image, const kcPoint& at,
                      const std::vector<unsigned char>& colorTable, bool passThrough, unsigned char passColor,
                      bool mapped, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer))
    s->image(image, scaledMap_ * at.point(), mapped ? colorTable : std::vector<unsigned char>(), passThrough,
             passColor);
  if (recording_())
    kc_UISketchOpRleBuf::record(
        sketch_, 14, static_cast<signed char>(layer), colored(kcColor(0)),
        kc_UISketchRleImage{at.point(), passThrough, passColor, mapped, colorTable,
                            image.width() == 0 || image.height() == 0 ? kcRLEBuffer() : image});
}
