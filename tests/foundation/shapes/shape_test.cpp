// The contract every kcShape keeps, checked over sample instances of every
// class: archive round trips by handle keeping the class, refused bad data,
// refused non-finite input, misuse errors of the base, and geometry against
// the outline written out from each shape's definition.
#include "foundation/shapes/shape.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <typeinfo>

#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/annulus.h"
#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/coordaxes.h"
#include "foundation/shapes/cross.h"
#include "foundation/shapes/deboorspline.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipseannulus.h"
#include "foundation/shapes/ellipseannulussection.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/hermitespline.h"
#include "foundation/shapes/interpspline.h"
#include "foundation/shapes/line.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/linesegset.h"
#include "foundation/shapes/point.h"
#include "foundation/shapes/pointset.h"
#include "foundation/shapes/polygon.h"
#include "foundation/shapes/polyline.h"
#include "foundation/shapes/shapetree.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using M = kcMatrix<2>;
using X = kcXform<2>;

constexpr std::size_t kNoCount = ~std::size_t(0);

// One sample instance. make(1) builds it; make(v) puts v as a factor into one
// of its coordinates, so make(NaN) must be refused.
struct Row {
  const char* name;
  const char* file;  // the source file its UnknownVersion names
  std::function<kcShapePtr(double)> make;
  std::vector<Piece> ref;            // its outline from the definition; none: straight, its own samples serve
  std::size_t body;                  // bytes after the version byte (0: not checked)
  std::vector<std::size_t> doubles;  // body offsets of stored doubles
  std::vector<std::pair<std::size_t, double>> spoil;  // patches that leave a degenerate shape
  std::size_t count;                                  // body offset of a stored count
  const char* sheared;                                // class of the image under a shear, if another
  bool similarOnly;                                   // mapShape is the exact image only under similarities
};
Row row(const char* name, const char* file, std::function<kcShapePtr(double)> make,
        std::vector<Piece> ref = {}, std::size_t body = 0, std::vector<std::size_t> doubles = {},
        std::vector<std::pair<std::size_t, double>> spoil = {}, std::size_t count = kNoCount,
        const char* sheared = nullptr, bool similarOnly = false) {
  return {name, file, make, ref, body, doubles, spoil, count, sheared, similarOnly};
}
void PrintTo(const Row& r, std::ostream* os) { *os << r.name; }

std::vector<std::size_t> run(std::size_t first, std::size_t n) {
  std::vector<std::size_t> out;
  for (std::size_t i = 0; i < n; ++i) out.push_back(first + 8 * i);
  return out;
}
// pts with the first x multiplied by v.
std::vector<V> firstX(std::vector<V> pts, double v) {
  pts[0] = V(pts[0].x() * v, pts[0].y());
  return pts;
}
template <class... P>
std::vector<V> pts(P... p) {
  return {p...};
}
X withX(const X& x, double v) { return X(x.matrix(), V(x.trans().x() * v, x.trans().y())); }

#define MAKE(expr) [=](double v) -> kcShapePtr { return kcShapePtr(new expr); }

Piece circlePiece(V c, double r) { return {ellipseCurve(c, r, r, 0.0), 0.0, 2 * kPi}; }

// The outline of a kcGenRect from genrect.h: sides and corner quarters of
// the unit square, mapped.
std::vector<Piece> genRectRef(const X& x, double roundX, double roundY) {
  bool round = roundX > 0 && roundY > 0;
  double rx = round ? roundX / 2 : 0.0, ry = round ? roundY / 2 : 0.0;
  const V centres[] = {V(1 - rx, ry), V(1 - rx, 1 - ry), V(rx, 1 - ry), V(rx, ry)};
  std::vector<Piece> out;
  V from(rx, 0);
  for (int k = 0; k < 4; ++k) {
    double a = -kPi / 2 + k * kPi / 2;
    out.push_back(segmentPiece(x * from, x * (centres[k] + V(rx * std::cos(a), ry * std::sin(a)))));
    if (round)
      out.push_back({ellipseCurve(x * centres[k], x.mapVector(V(rx, 0)), x.mapVector(V(0, ry))), a, kPi / 2});
    from = centres[k] + V(rx * std::cos(a + kPi / 2), ry * std::sin(a + kPi / 2));
  }
  return out;
}

Row genRect(const char* name, X x, double roundX, double roundY) {
  return row(name, "genrect", MAKE(kcGenRect(withX(x, v), roundX, roundY)), genRectRef(x, roundX, roundY), 64,
             run(0, 8), {{56, 1.5}});
}
Row ellipse(const char* name, X x) {
  return row(name, "ellipse", MAKE(kcEllipse(withX(x, v))), {{ellipseCurve(x), 0, 2 * kPi}}, 48, run(0, 6),
             {{0, 0.0}, {8, 0.0}});
}
Row ellipse2(const char* name, double rx, double ry, double rot, V c) {
  return row(name, "ellipse2", MAKE(kcEllipse2(rx, ry, kcRadian(rot), V(c.x() * v, c.y()))),
             {{ellipseCurve(c, rx, ry, rot), 0, 2 * kPi}}, 40, run(0, 5), {{8, -1.0}});
}
Row arc(const char* name, X x, double start, double span) {
  return row(name, "ellipsearc", MAKE(kcEllipseArc(kcEllipse(withX(x, v)), kcRadian(start), kcRadian(span))),
             {{ellipseCurve(x), start, span}}, 65, run(1, 8), {{57, 7.0}});
}
Row arc2(const char* name, double rx, double ry, double rot, V c, double start, double span) {
  return row(name, "ellipsearc2",
             MAKE(kcEllipseArc2(kcEllipse2(rx, ry, kcRadian(rot), V(c.x() * v, c.y())), kcRadian(start),
                                kcRadian(span))),
             {{ellipseCurve(c, rx, ry, rot), start, span}}, 57, run(1, 7), {{49, 0.0}});
}
Row section(const char* name, double rx, double ry, double rot, double scale, double start, double span) {
  const V c(1, -1);
  Curve outer = ellipseCurve(c, rx, ry, rot), inner = ellipseCurve(c, scale * rx, scale * ry, rot);
  std::vector<Piece> ref{{outer, start, span}, {inner, start, span}};
  if (std::fabs(span) < 2 * kPi) {
    ref.push_back(segmentPiece(inner(start), outer(start)));
    ref.push_back(segmentPiece(inner(start + span), outer(start + span)));
  }
  return row(
      name, "ellipseannulussection",
      MAKE(kcEllipseAnnulusSection(kcEllipseAnnulus(kcEllipse2(rx, ry, kcRadian(rot), V(v, -1)), scale),
                                   kcRadian(start), kcRadian(span))),
      ref, 66, run(2, 8), {{58, 0.0}});
}
Row bezier(const char* name, std::vector<V> c) {
  std::vector<std::pair<std::size_t, double>> same;  // every point on the first
  for (std::size_t i = 2; i < 8; ++i) same.emplace_back(8 * i, i % 2 ? c[0].y() : c[0].x());
  return row(name, "bezier", MAKE(kcBezierCurve(firstX(c, v)[0], c[1], c[2], c[3])), bezierPieces(c), 64,
             run(0, 8), same);
}

const std::vector<V> kWavy{V(0, 0),  V(1, 3),  V(4, 3), V(5, 0), V(6, -3),
                           V(2, -4), V(1, -1), V(3, 2), V(7, 2), V(6, -2)};
const std::vector<V> kDeBoor{V(0, 0), V(2, 3), V(5, 4), V(7, 0), V(9, -2), V(12, 1), V(13, 4)};
const std::vector<V> kHermite{V(0, 0), V(3, 1), V(5, -2), V(8, 0)};
const std::vector<V> kTangents{V(0, 6), V(4, 0), V(0, -3), V(2, 5)};
const std::vector<V> kZigzag{V(0, 0), V(1, 2), V(2, -1), V(3, 3), V(4, 0), V(5, 1)};
const std::vector<V> kEll{V(0, 0), V(2, 0), V(2, 1), V(1, 1), V(1, 2), V(0, 2)};  // an L, counter-clockwise
const std::vector<V> kArch{V(0, 4), V(1, 6), V(3, 6), V(4, 4)};
const X kShear(M(3, 1, 0.5, 2), V(1, -2));

std::vector<Row> rows() {
  std::vector<Piece> hermiteRef = bezierPieces(kcHermiteSpline(kHermite, kTangents).bezierPoints());
  std::vector<Piece> treeRef = bezierPieces(kArch);
  treeRef.push_back(circlePiece(V(0, 0), 1));
  treeRef.push_back(segmentPiece(V(5, 0), V(7, 0)));
  std::vector<Piece> annulusRef{circlePiece(V(1, -1), 1), circlePiece(V(1, -1), 3)};
  // The ring's inner rectangle: the outer one scaled by 0.5 about its centre.
  const X ring(M(4, 1, 0.5, 2), V(1, -2));
  const V centre = ring * V(0.5, 0.5);
  std::vector<Piece> genAnnulusRef = genRectRef(ring, 0.4, 0.6);
  for (const Piece& p :
       genRectRef(X(ring.matrix() * M::scale(0.5, 0.5), centre + (ring.trans() - centre) * 0.5), 0.4, 0.6))
    genAnnulusRef.push_back(p);
  std::vector<std::size_t> hermiteDoubles = run(4, 8);
  for (std::size_t at : run(72, 8)) hermiteDoubles.push_back(at);  // the tangents after their count
  std::vector<Row> out{
      row("point", "point", MAKE(kcPoint(v, -3)), {}, 16, run(0, 2)),
      row("point2", "point", MAKE(kc2Point(0, 9 * v)), {}, 16, run(0, 2)),
      row("pointset", "pointset", MAKE(kcPointSet({V(0, 0), V(4, 0), V(2, 3 * v), V(4, 0)})), {}, 68,
          run(4, 8), {}, 0),
      row("line", "line", MAKE(kcLine(V(-2, v), V(0, 3))), {}, 32, run(0, 4), {{24, 0.0}}),
      row("fline", "fline", MAKE(kcFLine(V(1, v), kcRadian(0.5))), {}, 24, run(0, 3)),
      row("lineseg", "lineseg", MAKE(kcLineSeg(V(v, -1), V(0.5, 7))), {}, 32, run(0, 4),
          {{16, 1.0}, {24, -1.0}}),
      row("linesegset", "linesegset",
          MAKE(kcLineSegSet({kcLineSeg(V(0, 0), V(2 * v, 0)), kcLineSeg(V(5, 1), V(5, 4))})), {}, 68,
          run(4, 8), {{20, 0.0}}, 0),
      row("coordaxes", "coordaxes", MAKE(kcCoordAxes(X(M(1, 0.5, 0, 2), V(3, v)))), {}, 48, run(0, 6),
          {{0, 1.0}, {8, 1.0}, {16, 1.0}, {24, 1.0}}),
      row("cross", "cross", MAKE(kcCross(V(v, 2), 3, kcRadian(0.3))), {}, 32, run(0, 4), {{16, 0.0}},
          kNoCount, nullptr, true),
      row("rect", "rect", MAKE(kcRect(V(1.5 * v, -2), V(3, 0.25))), {}, 32, run(0, 4), {}, kNoCount,
          "kcGenRect"),
      genRect("genrect", X(M::rotation(kcRadian(0.3)) * M::scale(4, 2), V(1, 1)), 0, 0),
      genRect("genrect_sheared_rounded", kShear, 0.3, 0.6),
      genRect("genrect_ellipse", kShear, 1.0, 1.0),
      genRect("genrect_mirrored", X(M(-2, 0, 0, 1), V(1, 0)), 1.0, 0.2),
      genRect("genrect_thin", X(M::scale(10, 0.1), V(1, 0)), 0.9, 0.9),
      row("affinerect", "affinerect", MAKE(kcAffineRectangle(V(v, 1), V(3, 1), V(-1, 2))), {}, 48, run(0, 6),
          {{8, 0.0}, {24, 0.0}}),
      row("affinerect_mirrored", "affinerect", MAKE(kcAffineRectangle(X(M(-2, 0, 0, 1), V(v, 0))))),
      row("polygon", "polygon", MAKE(kcPolygon(firstX(kEll, v))), {}, 100, run(4, 12), {}, 0),
      row("polyline", "polyline", MAKE(kcPolyline(firstX(kZigzag, v))), {}, 101, run(4, 12), {}, 0),
      row("polyline_closed", "polyline",
          MAKE(kcPolyline(firstX({V(0, 0), V(2, 1), V(1, 3), V(-1, 2)}, v), true))),
      row("circle", "circle", MAKE(kcCircle(V(v, -2), 2.5)), {circlePiece(V(1, -2), 2.5)}, 24, run(0, 3),
          {{16, 0.0}}, kNoCount, "kcEllipse2"),
      row("annulus", "annulus", MAKE(kcAnnulus(V(v, -1), 1, 3)), annulusRef, 32, run(0, 4), {{16, 3.0}},
          kNoCount, "kcGenAnnulus"),
      row("genannulus", "genannulus",
          MAKE(kcGenAnnulus(kcGenRect(X(M(4, 1, 0.5, 2), V(v, -2)), 0.4, 0.6), 0.5)), genAnnulusRef, 73,
          run(1, 9), {{65, 1.0}}),
      row("ellipseannulus", "ellipseannulus",
          MAKE(kcEllipseAnnulus(kcEllipse2(3, 1.5, kcRadian(0.5), V(v, 2)), 0.4)),
          {{ellipseCurve(V(1, 2), 3, 1.5, 0.5), 0, 2 * kPi},
           {ellipseCurve(V(1, 2), 1.2, 0.6, 0.5), 0, 2 * kPi}},
          49, run(1, 6), {{41, 0.0}}),
      section("section_quarter", 3, 2, 0.3, 0.5, 0.2, kPi / 2),
      section("section_backwards_across_zero", 2, 3, -0.4, 0.3, 0.5, -2.0),
      section("section_more_than_half", 4, 1, 1.0, 0.6, 2.0, 4.5),
      section("section_full_turn_backwards", 3, 2, 0.3, 0.5, 1.0, -2 * kPi),
      ellipse("ellipse_shear", X(M(2, 1.5, 0, 1), V(1, -1))),
      ellipse("ellipse_mirror", X(M(-3, 0, 0, 1), V(1, 2))),
      ellipse("ellipse_nearly_circular", X(M::rotation(kcRadian(0.3)) * M::scale(1, 1 + 1e-12), V(1, 0))),
      ellipse("ellipse_thin", X(M(50, 0, 50, 0.05), V(1, 1))),
      ellipse2("ellipse2", 3, 1, 0.6, V(-1, 2)),
      ellipse2("ellipse2_nearly_circular", 1 + 1e-10, 1, 0.2, V(5, 5)),
      ellipse2("ellipse2_thin", 100, 0.1, 1.1, V(3, -3)),
      ellipse2("ellipse2_rotation_beyond_a_turn", 2, 1, 9.0, V(1, 1)),
      arc("arc_clockwise_across_zero", X(M::scale(3, 1), V(1, 1)), 0.5, -1.5),
      arc("arc_sheared_across_pi", X(M(2, 1.5, 0, 1), V(1, 2)), 2.5, 1.5),
      arc("arc_mirrored", X(M(-3, 0, 0, 1), V(1, 2)), 1.0, 2.0),
      arc("arc_mirrored_clockwise", X(M(1, 2, 3, 1), V(-2, 0)), -1.0, -4.0),
      arc("arc_full_turn", X(M::scale(2, 1), V(1, 0)), 1.0, 2 * kPi),
      arc("arc_full_turn_backwards", X(M(0, 1, 1, 0), V(1, 0)), 0.0, -2 * kPi),
      arc("arc_nearly_full_turn", X(M::scale(2, 1), V(1, 0)), 0.0, 2 * kPi - 1e-3),
      arc("arc_tiny_span", X(M::scale(2, 1), V(1, 0)), 0.3, 1e-6),
      arc("arc_thin", X(M(50, 0, 50, 0.05), V(1, 1)), 0.2, 2.0),
      arc("arc_start_beyond_a_turn", X(M::scale(2, 1), V(1, 0)), 13.0, -2.0),
      arc2("arc2_quarter", 3, 1, 0.4, V(1, 1), 0.0, kPi / 2),
      arc2("arc2_tall_backwards", 1, 3, -0.2, V(1, 0), 2.0, -3.0),
      arc2("arc2_full_turn", 2, 1, 1.0, V(1, 1), -1.0, 2 * kPi),
      arc2("arc2_thin", 40, 0.2, 0.3, V(2, 2), 3.0, 2.0),
      bezier("bezier_arch", {V(0, 0), V(1, 3), V(4, 3), V(5, 0)}),
      bezier("bezier_loop", {V(0, 0), V(6, 4), V(-2, 4), V(4, 0)}),
      bezier("bezier_cusp", {V(0, 0), V(4, 3), V(0, 3), V(4, 0)}),
      bezier("bezier_closed", {V(1, 1), V(5, 6), V(-3, 6), V(1, 1)}),
      bezier("bezier_straight", {V(0, 0), V(1, 1), V(2, 2), V(3, 3)}),
      bezier("bezier_doubled_back", {V(0, 0), V(3, 0), V(-1, 0), V(2, 0)}),
      bezier("bezier_first_legs_zero", {V(2, 2), V(2, 2), V(2, 2), V(5, -1)}),
      bezier("bezier_last_leg_zero", {V(0, 0), V(2, 0), V(3, -1), V(3, -1)}),
      bezier("bezier_tiny_far",
             {V(1e6, 1e6), V(1e6 + 1e-3, 1e6 + 2e-3), V(1e6 + 3e-3, 1e6), V(1e6 + 4e-3, 1e6 + 1e-3)}),
      row("spline", "spline", MAKE(kcCubicSpline(firstX(kWavy, v))), bezierPieces(kWavy), 164, run(4, 20), {},
          0),
      row("deboorspline", "deboorspline", MAKE(kcDeBoorSpline(firstX(kDeBoor, v))),
          bezierPieces(kcDeBoorSpline(kDeBoor).bezierPoints()), 116, run(4, 14), {}, 0),
      row("hermitespline", "hermitespline", MAKE(kcHermiteSpline(firstX(kHermite, v), kTangents)), hermiteRef,
          136, hermiteDoubles, {}, 0),
      row("interpspline", "interpspline", MAKE(kcInterpSpline(firstX(kZigzag, v))),
          bezierPieces(kcInterpSpline(kZigzag).bezierPoints()), 100, run(4, 12), {}, 0),
      row("genshape_curve", "genshape",
          MAKE(kcGenShape(kcBezierCurve(firstX(kArch, v)[0], kArch[1], kArch[2], kArch[3]))),
          bezierPieces(kArch)),
      row("genshape_circle", "genshape", MAKE(kcGenShape(kcCircle(V(2 * v, 2), 3.0))),
          {circlePiece(V(2, 2), 3)}),
      row("shapetree", "shapetree",
          MAKE(kcShapeTree({kfMakeHandle<kcCircle>(V(0, 0), v), kfMakeHandle<kcLineSeg>(V(5, 0), V(7, 0)),
                            kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{
                                kfMakeHandle<kcBezierCurve>(kArch[0], kArch[1], kArch[2], kArch[3])})})),
          treeRef, 0, {}, {}, 0),
  };
  return out;
}

// Even-odd membership among closed polylines.
bool evenOdd(const std::vector<std::vector<V>>& lines, const V& p) {
  bool in = false;
  for (const auto& l : lines) {
    for (std::size_t i = 0; i + 1 < l.size(); ++i) {
      V a = l[i], b = l[i + 1];
      if ((a.y() > p.y()) != (b.y() > p.y()) &&
          a.x() + (p.y() - a.y()) * (b.x() - a.x()) / (b.y() - a.y()) > p.x())
        in = !in;
    }
  }
  return in;
}

class EveryShape : public ::testing::TestWithParam<Row> {
 protected:
  void SetUp() override {
    shape_ = GetParam().make(1.0);
    // Lines have no box: they are probed around the origin.
    box_ = shape_->isFinite() ? shape_->encloseRect() : kcRect(V(-5, -5), V(10, 10));
    size_ = std::max({box_.width(), box_.height()});
    if (size_ == 0.0) size_ = 1.0;
    double extent = std::max(
        {std::fabs(box_.xMin()), std::fabs(box_.xMax()), std::fabs(box_.yMin()), std::fabs(box_.yMax())});
    tol_ = 1e-9 * size_ + 1e-14 * extent;
    if (!shape_->isFinite()) return;
    const std::vector<Piece>& ref = GetParam().ref;
    // The outline as polylines: the reference traced, or the shape's own samples.
    for (const Piece& c : ref) outline_.push_back(trace(c));
    if (ref.empty())
      for (const kcShapePtr& piece : shape_->decompose()) outline_.push_back(samples(*piece, size_ * 1e-3));
  }
  // Distance to the outline.
  double truth(const V& p) const {
    const std::vector<Piece>& ref = GetParam().ref;
    double best = kInf;
    for (std::size_t k = 0; k < outline_.size(); ++k)
      best = std::min(best,
                      ref.empty() ? polylineDistance(outline_[k], p) : pieceDistance(ref[k], outline_[k], p));
    return best;
  }
  std::vector<V> probes() const {
    std::vector<V> out = probeGrid(box_, 0.4 * size_, 5);
    V c = box_.center();
    for (V d : {V(0, 0), V(0.013, 1e-9), V(-1e-12, 0.31)}) out.push_back(c + d * size_);
    return out;
  }

  kcShapePtr shape_;
  kcRect box_;
  double size_ = 1.0, tol_ = 0.0;
  std::vector<std::vector<V>> outline_;
};

TEST_P(EveryShape, ArchiveRoundTripAndBadData) {
  const Row& r = GetParam();
  const kcShape& s = *shape_;
  Bytes bytes = storeByHandle(s);
  kcShapePtr back = loadByHandle(bytes);
  ASSERT_FALSE(back.isNull());
  const kcShape& loaded = *back;
  EXPECT_EQ(typeid(loaded), typeid(s));
  EXPECT_STREQ(back->className(), s.className());
  EXPECT_TRUE(*back == s);
  if (r.body) {
    EXPECT_EQ(bytes.size(), bodyOffset(s) + r.body);
  }
  Bytes later = bytes;
  later.at(versionOffset(s)) = 1;
  try {
    (void)loadByHandle(later);
    ADD_FAILURE() << "no UnknownVersion";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), std::string("foundation/shapes/") + r.file);
    EXPECT_GT(e.line(), 0);
  }
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    EXPECT_THROW((void)loadByHandle(Bytes(bytes.begin(), bytes.begin() + std::ptrdiff_t(n))),
                 kcArchive::Corrupt)
        << "cut at " << n;
  }
  for (std::size_t at : r.doubles) {
    for (double bad : {kNaN, -kInf}) {
      Bytes b = bytes;
      patchDouble(b, bodyOffset(s) + at, bad);
      EXPECT_THROW((void)loadByHandle(b), kcArchive::Corrupt) << bad << " at " << at;
    }
  }
  if (!r.spoil.empty()) {
    Bytes b = bytes;
    for (auto [at, value] : r.spoil) patchDouble(b, bodyOffset(s) + at, value);
    EXPECT_THROW((void)loadByHandle(b), kcArchive::Corrupt) << "degenerate";
  }
  if (r.count != kNoCount) {  // a count beyond the data is refused before allocating
    Bytes b = bytes;
    b.at(bodyOffset(s) + r.count + 3) = 0x7f;
    EXPECT_THROW((void)loadByHandle(b), kcArchive::Corrupt);
  }
}

TEST_P(EveryShape, RefusesNonFiniteInput) {
  for (double bad : {kNaN, kInf, -kInf})
    EXPECT_THROW((void)GetParam().make(bad), kcShapesError::BadParams) << bad;
  std::vector<V> out;
  if (!shape_->isFinite()) {
    EXPECT_THROW(shape_->sample(1.0, out), kcShapesError::BadGeom);
    EXPECT_TRUE(shape_->encloseRect().isEmpty());
    return;
  }
  for (double bad : {0.0, -1.0, kNaN, kInf})
    EXPECT_THROW(shape_->sample(bad, out), kcShapesError::BadParams) << bad;
  // A shape whose samples depend on the spacing refuses one needing too many.
  if (samples(*shape_, size_ / 4).size() > samples(*shape_, size_).size()) {
    EXPECT_THROW(shape_->sample(1e-300, out), kcShapesError::BadParams);
  }
}

TEST_P(EveryShape, KindProtocol) {
  const kcShape& s = *shape_;
  if (!s.isRegion()) {
    EXPECT_THROW((void)s.within(V()), kcShapesError::NotRegion);
  }
  if (!s.isOpenContour()) {
    EXPECT_THROW((void)s.startPoint(), kcShapesError::NotOpenContour);
    EXPECT_THROW((void)s.endPoint(), kcShapesError::NotOpenContour);
    EXPECT_THROW((void)s.startAngle(), kcShapesError::NotOpenContour);
    EXPECT_THROW((void)s.reverse(), kcShapesError::NotOpenContour);
    return;
  }
  std::vector<V> pts = samples(s, size_ * 1e-4);
  ASSERT_GE(pts.size(), 2u);
  EXPECT_EQ(pts.front(), s.startPoint());
  EXPECT_EQ(pts.back(), s.endPoint());
  // Directions of travel against the first and last chords of 1e-3 of the size.
  auto chord = [&](auto from, auto to) {
    auto q = std::find_if(from, to, [&](const V& p) { return p.distance(*from) > 1e-3 * size_; });
    return (*q - *from).angle();
  };
  auto near = [](kcRadian a, kcRadian b) { return std::fabs(kcRadian(a - b).signedNorm().toDouble()); };
  EXPECT_LT(near(s.startAngle(), chord(pts.begin(), pts.end())), 0.02);
  EXPECT_LT(near(s.endAngle() + kcRadian(kPi), chord(pts.rbegin(), pts.rend())), 0.02);
  kcShapePtr r = s.reverse();
  const kcShape& back = *r;
  EXPECT_EQ(typeid(back), typeid(s));
  EXPECT_LT(back.startPoint().distance(s.endPoint()), tol_);
  EXPECT_LT(back.endPoint().distance(s.startPoint()), tol_);
  EXPECT_LT(near(back.startAngle(), s.endAngle() + kcRadian(kPi)), 1e-9);
  EXPECT_LT(near(back.endAngle(), s.startAngle() + kcRadian(kPi)), 1e-9);
}

TEST_P(EveryShape, GeometryMatchesTheOutline) {
  const kcShape& s = *shape_;
  if (!s.isFinite()) return;  // lines: see their own tests
  for (const V& p : probes()) {
    double d = s.distanceToPoint(p), want = truth(p);
    V q = s.nearestPoint(p);
    EXPECT_NEAR(d, want, tol_) << "probe " << p.x() << "," << p.y();
    EXPECT_NEAR(p.distance(q), d, tol_);
    EXPECT_LE(truth(q), tol_) << "nearest point off the curve";
    // Regions: inside by even-odd among the outline's loops, away from it.
    if (s.isRegion() && want > 1e-3 * size_) {
      EXPECT_EQ(s.within(p), evenOdd(outline_, p));
    }
  }
  kcRect scan;  // extremes of a fine scan of the reference, or of the own samples
  for (const Piece& c : GetParam().ref) {
    for (int i = 0; i <= 20000; ++i) scan.enclose(c.at(c.t0 + c.span * i / 20000));
  }
  if (GetParam().ref.empty()) {
    for (const auto& l : outline_)
      for (const V& p : l) scan.enclose(p);
  }
  kcRect box = s.encloseRect();
  EXPECT_NEAR(box.xMin(), scan.xMin(), 1e-7 * size_ + tol_);
  EXPECT_NEAR(box.yMin(), scan.yMin(), 1e-7 * size_ + tol_);
  EXPECT_NEAR(box.xMax(), scan.xMax(), 1e-7 * size_ + tol_);
  EXPECT_NEAR(box.yMax(), scan.yMax(), 1e-7 * size_ + tol_);
  // The same curve both ways: the outline lies on the shape, its samples on the outline.
  for (const auto& l : outline_)
    for (std::size_t i = 0; i < l.size(); i += 40) EXPECT_LE(s.distanceToPoint(l[i]), tol_);
  for (const V& p : samples(s, size_ / 10)) EXPECT_LE(truth(p), tol_);
  // Samples of every piece are no more than spacing apart.
  for (const kcShapePtr& piece : s.decompose()) {
    std::vector<V> pts = samples(*piece, size_ / 23);
    for (std::size_t i = 1; i < pts.size(); ++i)
      EXPECT_LE(pts[i].distance(pts[i - 1]), size_ / 23 * (1 + 1e-9));
  }
  if (!s.isRegion()) return;
  for (const V& p : samples(s, size_ / 20)) EXPECT_TRUE(s.within(p)) << "boundary " << p.x() << "," << p.y();
}

TEST_P(EveryShape, MapShapeIsTheImage) {
  const Row& r = GetParam();
  const kcShape& s = *shape_;
  const X maps[] = {X(M(1, 0.5, -0.3, 2), V(2, -1)), X(M(-1, 0, 0, 1), V(3, 0)), X(M(1, 2, 3, 1), V(-2, 1))};
  for (const X& x : maps) {
    if (r.similarOnly && !kcCircle::isSimilarity(x)) continue;
    kcShapePtr image = s.mapShape(x);
    ASSERT_FALSE(image.isNull());
    const kcShape& m = *image;
    if (&x == &maps[0]) {
      EXPECT_STREQ(m.className(), r.sheared ? r.sheared : s.className());
    }
    X inv = x.inverse();
    double tol = 8 * tol_;
    for (const V& p : probes()) {
      EXPECT_LE(m.distanceToPoint(x * s.nearestPoint(p)), tol);
      EXPECT_LE(s.distanceToPoint(inv * m.nearestPoint(p)), tol);
      if (s.isRegion() && s.distanceToPoint(p) > 1e-6 * size_) {
        EXPECT_EQ(m.within(x * p), s.within(p));
      }
    }
    if (!s.isFinite()) continue;
    for (const V& p : samples(s, size_ / 20)) EXPECT_LE(m.distanceToPoint(x * p), tol);
    for (const V& p : samples(m, size_ / 20)) EXPECT_LE(s.distanceToPoint(inv * p), tol);
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, EveryShape, ::testing::ValuesIn(rows()),
                         [](const auto& info) { return std::string(info.param.name); });

// Shapes without geometry: sets and composites with nothing in them, the empty rect.
TEST(EmptyShape, HasNoGeometryAndRoundTrips) {
  kcShapePtr hollow = kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>(1, kfMakeHandle<kcPointSet>()));
  for (kcShapePtr e :
       {kcShapePtr(new kcPointSet()), kcShapePtr(new kcLineSegSet()), kcShapePtr(new kcPolygon()),
        kcShapePtr(new kcPolyline()), kcShapePtr(new kcGenShape()), kcShapePtr(new kcShapeTree()), hollow,
        kcShapePtr(new kcRect())}) {
    SCOPED_TRACE(e->className());
    EXPECT_TRUE(e->isEmpty());
    EXPECT_TRUE(e->encloseRect().isEmpty());
    EXPECT_THROW((void)e->nearestPoint(V()), kcShapesError::EmptyShape);
    EXPECT_THROW((void)e->distanceToPoint(V()), kcShapesError::EmptyShape);
    EXPECT_TRUE(samples(*e, 1.0).empty());
    std::vector<V> out;
    EXPECT_THROW(e->sample(0.0, out), kcShapesError::BadParams);
    EXPECT_FALSE(e->isOpenContour());
    EXPECT_TRUE(*loadByHandle(storeByHandle(*e)) == *e);
  }
  EXPECT_FALSE(kcPoint(1, 2) == kc2Point(1, 2));  // equality needs the same class
}

enum Outcome { kFine, kBadParams, kDegenerate };

// Constructor arguments beyond the coordinates EveryShape feeds NaN into.
TEST(ShapeConstruction, RefusesBadArguments) {
  const kcEllipse e;
  const kcEllipse2 e2(2, 1, kcRadian(0), V());
  const kcEllipseAnnulus ring;
  const std::vector<V> same(7, V(2, 3)), two = pts(V(0, 0), V(1, 0)), at = pts(V(2, 2), V(2, 2));
  const V p(3, 0);
  const double big = 1.7e308;
  struct Case {
    const char* why;
    std::function<void()> make;
    Outcome outcome;
  } cases[] = {
      {"line without direction", [] { kcLine(V(), V(0, 0)); }, kDegenerate},
      {"segment of one point", [] { kcLineSeg(V(1, 1), V(1, 1)); }, kDegenerate},
      {"line through one point", [] { (void)kcFLine::through(V(1, 1), V(1, 1)); }, kDegenerate},
      {"line at a NaN angle", [] { kcFLine(V(), kcRadian(kNaN)); }, kBadParams},
      {"axes of a singular transform", [] { kcCoordAxes(X(M(1, 2, 2, 4), V())); }, kDegenerate},
      {"cross without arms", [] { kcCross(V(), 0); }, kDegenerate},
      {"cross of NaN arms", [] { kcCross(V(), kNaN); }, kBadParams},
      {"rect of NaN size", [] { kcRect(V(), V(1, kNaN)); }, kBadParams},
      {"rect from an infinite corner", [] { (void)kcRect::fromCorners(V(), V(-kInf, 1)); }, kBadParams},
      {"genrect rounding above 1", [] { kcGenRect(X(), 1.5, 0.5); }, kBadParams},
      {"genrect NaN rounding", [] { kcGenRect(X(), kNaN, 0.5); }, kBadParams},
      {"genrect of a singular transform", [] { kcGenRect(X(M(1, 2, 2, 4), V())); }, kDegenerate},
      {"genrect of no width", [] { kcGenRect(V(), V(0, 1), kcRadian(0)); }, kDegenerate},
      {"genrect of the empty rect", [] { kcGenRect{kcRect()}; }, kDegenerate},
      {"genrect of a flat rect", [] { kcGenRect(kcRect(V(), V(1, 0))); }, kDegenerate},
      {"affine rect of parallel sides", [] { kcAffineRectangle(V(0, 0), V(1, 1), V(2, 2)); }, kDegenerate},
      {"polygon of two vertices", [] { kcPolygon(pts(V(0, 0), V(1, 0))); }, kDegenerate},
      {"polygon of one place", [] { kcPolygon(pts(V(1, 1), V(1, 1), V(1, 1))); }, kDegenerate},
      {"polygon of no area", [] { kcPolygon(pts(V(0, 0), V(1, 0), V(2, 0))); }, kFine},
      {"polyline of one place", [] { kcPolyline(pts(V(1, 1), V(1, 1))); }, kDegenerate},
      {"open polyline of two points", [] { kcPolyline(pts(V(0, 0), V(1, 0))); }, kFine},
      {"closed polyline of two points", [] { kcPolyline(pts(V(0, 0), V(1, 0)), true); }, kDegenerate},
      {"circle of radius 0", [] { kcCircle(V(), 0.0); }, kDegenerate},
      {"circle of infinite radius", [] { kcCircle(V(), kInf); }, kBadParams},
      {"annulus of NaN inner radius", [] { kcAnnulus(V(), kNaN, 1); }, kBadParams},
      {"annulus of infinite outer radius", [] { kcAnnulus(V(), 1, kInf); }, kBadParams},
      {"annulus of inner radius 0", [] { kcAnnulus(V(), 0, 1); }, kDegenerate},
      {"annulus of equal radii", [] { kcAnnulus(V(), 1, 1); }, kDegenerate},
      {"annulus inside out", [] { kcAnnulus(V(), 2, 1); }, kDegenerate},
      {"genannulus of scale 0", [] { kcGenAnnulus(kcGenRect(), 0.0); }, kDegenerate},
      {"genannulus of scale 1", [] { kcGenAnnulus(kcGenRect(), 1.0); }, kDegenerate},
      {"genannulus of NaN scale", [] { kcGenAnnulus(kcGenRect(), kNaN); }, kBadParams},
      {"ellipse annulus of scale 0", [] { kcEllipseAnnulus(kcEllipse2(), 0.0); }, kDegenerate},
      {"ellipse annulus of infinite scale", [] { kcEllipseAnnulus(kcEllipse2(), kInf); }, kBadParams},
      {"ellipse of a singular transform", [] { kcEllipse(X(M(1, 2, 2, 4), V())); }, kDegenerate},
      {"ellipse2 of NaN radius", [] { kcEllipse2(kNaN, 1, kcRadian(0), V()); }, kBadParams},
      {"ellipse2 of NaN rotation", [] { kcEllipse2(1, 1, kcRadian(kNaN), V()); }, kBadParams},
      {"ellipse2 of radius 0", [] { kcEllipse2(1, 0, kcRadian(0), V()); }, kDegenerate},
      {"arc of span 0", [&] { kcEllipseArc(e, kcRadian(1), kcRadian(0)); }, kDegenerate},
      {"arc of NaN span", [&] { kcEllipseArc(e, kcRadian(1), kcRadian(kNaN)); }, kBadParams},
      {"arc of infinite start", [&] { kcEllipseArc(e, kcRadian(kInf), kcRadian(1)); }, kBadParams},
      {"arc of more than a turn", [&] { kcEllipseArc(e, kcRadian(0), kcRadian(7)); }, kBadParams},
      {"arc of 360 degrees", [&] { kcEllipseArc(e, kcRadian(0), kcDegree(360.0)); }, kFine},
      {"arc2 of span 0", [&] { kcEllipseArc2(e2, kcRadian(0), kcRadian(0)); }, kDegenerate},
      {"arc2 of more than a turn", [&] { kcEllipseArc2(e2, kcRadian(0), kcRadian(6.3)); }, kBadParams},
      {"arc2 of NaN start", [&] { kcEllipseArc2(e2, kcRadian(kNaN), kcRadian(1)); }, kBadParams},
      {"section of span 0", [&] { kcEllipseAnnulusSection(ring, kcRadian(0), kcRadian(0)); }, kDegenerate},
      {"section beyond minus a turn", [&] { kcEllipseAnnulusSection(ring, kcRadian(0), kcRadian(-6.3)); },
       kBadParams},
      {"bezier of one place", [] { kcBezierCurve(V(1, 1), V(1, 1), V(1, 1), V(1, 1)); }, kDegenerate},
      {"bezier, inner points on an end", [] { kcBezierCurve(V(1, 1), V(1, 1), V(1, 1), V(2, 1)); }, kFine},
      {"spline of one place", [&] { kcCubicSpline{same}; }, kDegenerate},
      {"spline of 5 points", [&] { kcCubicSpline(pts(V(0, 0), V(1, 0), V(2, 1), p, V(4, 4))); }, kBadParams},
      {"spline of no points", [] { kcCubicSpline(std::vector<V>{}); }, kBadParams},
      {"spline with a piece at one place",
       [&] { kcCubicSpline(pts(V(0, 0), V(1, 1), V(2, 1), V(3, 0), p, p, p)); }, kFine},
      {"de Boor spline of one point", [] { kcDeBoorSpline(pts(V(1, 1))); }, kBadParams},
      {"de Boor spline of one place", [&] { kcDeBoorSpline{same}; }, kDegenerate},
      {"de Boor spline whose Bezier form overflows",
       [&] { kcDeBoorSpline(pts(V(-big, 0), V(big, 0), V(-big, 0))); }, kBadParams},
      {"Hermite spline of one point", [] { kcHermiteSpline(pts(V(0, 0)), pts(V(1, 0))); }, kBadParams},
      {"Hermite spline short of tangents", [&] { kcHermiteSpline(two, pts(V(1, 0))); }, kBadParams},
      {"Hermite spline of NaN tangent", [&] { kcHermiteSpline(two, pts(V(kNaN, 0), V(1, 0))); }, kBadParams},
      {"Hermite spline of one place", [&] { kcHermiteSpline(at, pts(V(0, 0), V(0, 0))); }, kDegenerate},
      {"Hermite loop at one place", [&] { kcHermiteSpline(at, pts(V(3, 0), V(0, 3))); }, kFine},
      {"interpolating spline of one place", [&] { kcInterpSpline{same}; }, kDegenerate},
  };
  for (const Case& r : cases) {
    try {
      r.make();
      EXPECT_EQ(r.outcome, kFine) << r.why;
    } catch (const kcShapesError::BadParams&) {
      EXPECT_EQ(r.outcome, kBadParams) << r.why;
    } catch (const kcShapesError::DegenerateShape&) {
      EXPECT_EQ(r.outcome, kDegenerate) << r.why;
    }
  }
}

}  // namespace
