#include "foundation/shapes/ellipseannulussection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

// Distance from p to the segment a-b, written out.
double segmentDistance(V a, V b, V p) {
  V d = b - a;
  double t = std::clamp((p - a).dot(d) / d.lenSq(), 0.0, 1.0);
  return p.distance(a + d * t);
}

struct SectionCase {
  std::string why;
  double rx, ry, rotation, scale, start, span;
};

class SectionGeometry : public ::testing::TestWithParam<SectionCase> {
 protected:
  V center() const { return V(1, -1); }
  kcEllipseAnnulusSection section() const {
    const SectionCase& c = GetParam();
    return kcEllipseAnnulusSection(
        kcEllipseAnnulus(kcEllipse2(c.rx, c.ry, kcRadian(c.rotation), center()), c.scale), kcRadian(c.start),
        kcRadian(c.span));
  }
  // The point of the region at polar position (rho, t), from the definition.
  V at(double rho, double t) const {
    const SectionCase& c = GetParam();
    return ellipse_testing::ellipseCurve(center(), rho * c.rx, rho * c.ry, c.rotation)(t);
  }
  // Distance to the boundary pieces, computed independently.
  double bruteDistance(V p) const {
    const SectionCase& c = GetParam();
    auto outer = ellipse_testing::ellipseCurve(center(), c.rx, c.ry, c.rotation);
    auto inner = ellipse_testing::ellipseCurve(center(), c.scale * c.rx, c.scale * c.ry, c.rotation);
    double d = std::min(ellipse_testing::bruteDistance(outer, c.start, c.span, p),
                        ellipse_testing::bruteDistance(inner, c.start, c.span, p));
    if (std::fabs(c.span) < 2 * kPi) {
      d = std::min(d, segmentDistance(at(c.scale, c.start), at(1, c.start), p));
      d = std::min(d, segmentDistance(at(c.scale, c.start + c.span), at(1, c.start + c.span), p));
    }
    return d;
  }
};

TEST_P(SectionGeometry, WithinFollowsThePolarDefinition) {
  const SectionCase& c = GetParam();
  kcEllipseAnnulusSection s = section();
  bool full = std::fabs(c.span) >= 2 * kPi;
  for (double f : {0.02, 0.5, 0.98}) {
    double t = c.start + f * c.span;
    EXPECT_TRUE(s.within(at(0.5 * (1 + c.scale), t))) << c.why << " f " << f;
    EXPECT_TRUE(s.within(at(1.0, t))) << c.why;
    EXPECT_FALSE(s.within(at(c.scale * 0.98, t))) << c.why;
    EXPECT_FALSE(s.within(at(1.02, t))) << c.why;
  }
  // Outside the span, and on the edges.
  double mid = 0.5 * (1 + c.scale);
  EXPECT_EQ(s.within(at(mid, c.start - 0.01 * c.span)), full) << c.why;
  EXPECT_EQ(s.within(at(mid, c.start + 1.01 * c.span)), full) << c.why;
  EXPECT_TRUE(s.within(at(mid, c.start))) << c.why;
  EXPECT_TRUE(s.within(at(mid, c.start + c.span))) << c.why;
  EXPECT_FALSE(s.within(center()));
}

TEST_P(SectionGeometry, DistancesMatchBruteForce) {
  const SectionCase& c = GetParam();
  kcEllipseAnnulusSection s = section();
  double size = std::max(c.rx, c.ry);
  for (V p : ellipse_testing::probes(center(), 1.5 * size)) {
    double brute = bruteDistance(p);
    EXPECT_NEAR(s.distanceToPoint(p), brute, 1e-9 * size) << c.why << " probe " << p.x() << "," << p.y();
    EXPECT_NEAR(s.nearestPoint(p).distance(p), brute, 1e-9 * size) << c.why;
    EXPECT_EQ(s.distToPoint(p), s.distanceToPoint(p));
  }
}

TEST_P(SectionGeometry, BoxSamplesAndPieces) {
  const SectionCase& c = GetParam();
  kcEllipseAnnulusSection s = section();
  double size = std::max(c.rx, c.ry);
  kcRect scan;
  for (int i = 0; i <= 100000; ++i) {
    double t = c.start + c.span * i / 100000.0;
    scan.enclose(at(1, t));
    scan.enclose(at(c.scale, t));
  }
  kcRect box = s.encloseRect();
  EXPECT_NEAR(box.xMin(), scan.xMin(), 1e-8 * size) << c.why;
  EXPECT_NEAR(box.yMin(), scan.yMin(), 1e-8 * size) << c.why;
  EXPECT_NEAR(box.xMax(), scan.xMax(), 1e-8 * size) << c.why;
  EXPECT_NEAR(box.yMax(), scan.yMax(), 1e-8 * size) << c.why;
  expectSampleSpacing(s, 0.01 * size);
  for (const V& p : samples(s, 0.01 * size)) EXPECT_LT(s.distanceToPoint(p), 1e-9 * size) << c.why;
  std::vector<kcShapePtr> pieces = s.decompose();
  if (std::fabs(c.span) >= 2 * kPi) {
    ASSERT_EQ(pieces.size(), 2u);
    return;
  }
  // Outer arc, end edge, inner arc backwards, start edge: a closed chain.
  ASSERT_EQ(pieces.size(), 4u);
  EXPECT_NE(kfDynamicCast<kcEllipseArc2>(pieces[0]), nullptr);
  EXPECT_NE(kfDynamicCast<kcLineSeg>(pieces[1]), nullptr);
  EXPECT_NE(kfDynamicCast<kcEllipseArc2>(pieces[2]), nullptr);
  EXPECT_NE(kfDynamicCast<kcLineSeg>(pieces[3]), nullptr);
  for (std::size_t i = 0; i < 4; ++i) {
    V end = pieces[i]->endPoint();
    V next = pieces[(i + 1) % 4]->startPoint();
    EXPECT_LT(end.distance(next), 1e-13 * size) << c.why << " piece " << i;
  }
  std::vector<V> pts = samples(s, 0.01 * size);
  EXPECT_EQ(pts.front(), pts.back());
  EXPECT_EQ(pts.front(), s.outerArc().startPoint());
}

TEST_P(SectionGeometry, MapsKeepTheRegion) {
  kcEllipseAnnulusSection s = section();
  double size = std::max(GetParam().rx, GetParam().ry);
  for (kcXform<2> x :
       {kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(2, 2)), kcXform<2>(kcMatrix<2>(2, 0.5, 0, 1), V()),
        kcXform<2>(kcMatrix<2>::rotation(kcRadian(2.0)), V(1, 0))}) {
    kcEllipseAnnulusSection image = s.map(x);
    EXPECT_LT(image.outerArc().startPoint().distance(x * s.outerArc().startPoint()), 1e-12 * size);
    EXPECT_LT(image.innerArc().endPoint().distance(x * s.innerArc().endPoint()), 1e-12 * size);
    expectMapMatchesSamples(s, x, 0.02 * size, 1e-8 * size);
    for (V p : probeGrid(s.encloseRect(), 0.5, 10)) {
      if (s.distanceToPoint(p) > 1e-6) {
        EXPECT_EQ(image.within(x * p), s.within(p)) << p.x() << "," << p.y();
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sections, SectionGeometry,
                         ::testing::Values(SectionCase{"quarter", 3, 2, 0.3, 0.5, 0.2, kPi / 2},
                                           SectionCase{"backwards across zero", 2, 3, -0.4, 0.3, 0.5, -2.0},
                                           SectionCase{"more than half", 4, 1, 1.0, 0.6, 2.0, 4.5},
                                           SectionCase{"circular", 2, 2, 0.0, 0.5, -1.0, 1.0},
                                           SectionCase{"full turn", 3, 2, 0.3, 0.5, 1.0, 2 * kPi},
                                           SectionCase{"full turn backwards", 3, 2, 0.3, 0.5, 1.0, -2 * kPi}),
                         [](const auto& info) { return "case" + std::to_string(info.index); });

TEST(EllipseAnnulusSection, ConstructorAndDefaults) {
  kcEllipseAnnulus ring;
  EXPECT_THROW(kcEllipseAnnulusSection(ring, kcRadian(0), kcRadian(0)), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcEllipseAnnulusSection(ring, kcRadian(0), kcRadian(-6.3)), kcShapesError::BadParams);
  EXPECT_THROW(kcEllipseAnnulusSection(ring, kcRadian(std::nan("")), kcRadian(1)), kcShapesError::BadParams);
  kcEllipseAnnulusSection s(ring, kcRadian(1), kcRadian(2));
  EXPECT_THROW(s.angleSpan(kcRadian(0)), kcShapesError::DegenerateShape);
  EXPECT_EQ(s.angleEnd().toDouble(), 3.0);
  EXPECT_FALSE(s.isFullTurn());
  kcEllipseAnnulusSection d;
  EXPECT_TRUE(d.isFullTurn());
  EXPECT_EQ(d, kcEllipseAnnulusSection(kcEllipseAnnulus(), kcRadian(0), kcRadian(2 * kPi)));
  EXPECT_TRUE(d.isRegion());
  EXPECT_THROW((void)d.startPoint(), kcShapesError::NotOpenContour);
}

TEST(EllipseAnnulusSection, TiesGoToTheEarlierPiece) {
  // The upper right quarter of the circular ring between radii 1 and 2.
  kcEllipseAnnulusSection s(kcEllipseAnnulus(kcEllipse2(2, 2, kcRadian(0), V()), 0.5), kcRadian(0),
                            kcRadian(kPi / 2));
  // (3, -1) is nearest to the corner (2, 0), which both the outer arc (its
  // start) and the start edge (its end) reach: the outer arc comes first.
  EXPECT_EQ(s.nearestPoint(V(3, -1)), s.outerArc().startPoint());
  // Inside, equally far from the outer arc and the inner arc: the outer one.
  V q = s.nearestPoint(V(1.5 * std::cos(0.7), 1.5 * std::sin(0.7)));
  EXPECT_NEAR(q.len(), 2.0, 1e-14);
}

TEST(EllipseAnnulusSection, Archive) {
  kcEllipseAnnulusSection s(kcEllipseAnnulus(kcEllipse2(3, 2, kcRadian(0.3), V(1, -1)), 0.5), kcRadian(0.2),
                            kcRadian(-2.0));
  expectRoundTrip(s);
  expectUnknownVersion(s, "foundation/shapes/ellipseannulussection");
  expectTruncationCorrupt(s);
  // Body: version 0, the annulus (version 0, the ellipse, the scale), start, span.
  Bytes bytes = storeByHandle(s);
  ASSERT_EQ(bytes.size(), bodyOffset(s) + 1 + (1 + 40 + 8) + 16);
  std::size_t angles = bodyOffset(s) + 1 + 49;
  expectNaNCorrupt(s, angles);
  expectNaNCorrupt(s, angles + 8);
  patchDouble(bytes, angles + 8, 0.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  bytes = storeByHandle(s);
  bytes[bodyOffset(s) + 1] = 3;  // the nested ellipse's version
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::UnknownVersion);
}

}  // namespace
