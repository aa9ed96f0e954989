#include "foundation/shapes/ellipse_p.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "foundation/exception.h"
#include "foundation/shapes/ellipse2.h"

namespace {

constexpr double kPi = std::numbers::pi;

kcMatrix<2> rebuild(const kcEllipseFactors_& f) {
  kcMatrix<2> q = kcMatrix<2>::rotation(kcRadian(f.param.shift));
  if (f.param.mirrored) q = kcMatrix<2>::scale(1.0, -1.0) * q;
  return kcMatrix<2>::rotation(kcRadian(f.rotation)) * kcMatrix<2>::scale(f.radiusX, f.radiusY) * q;
}

kcMatrix<2> rot(double a) { return kcMatrix<2>::rotation(kcRadian(a)); }
// rot(a) scaled by k.
kcMatrix<2> rot(double a, double k) { return kcMatrix<2>::rotation(kcRadian(a)) * kcMatrix<2>::scale(k, k); }

double maxAbs(const kcMatrix<2>& m) {
  double v = 0.0;
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c) v = std::max(v, std::fabs(m.element(r, c)));
  return v;
}

struct FactorCase {
  std::string why;
  kcMatrix<2> m;
  bool circle;
};

class FactorEllipse : public ::testing::TestWithParam<FactorCase> {};

TEST_P(FactorEllipse, RebuildsTheMatrixWithOrderedRadiiAndNormalRotation) {
  const FactorCase& c = GetParam();
  kcEllipseFactors_ f = kfFactorEllipse_(c.m);
  kcMatrix<2> back = rebuild(f);
  double scale = maxAbs(c.m);
  for (int r = 0; r < 2; ++r)
    for (int k = 0; k < 2; ++k) EXPECT_NEAR(back.element(r, k), c.m.element(r, k), 4e-15 * scale) << c.why;
  EXPECT_GE(f.radiusX, f.radiusY) << c.why;
  EXPECT_GT(f.radiusY, 0.0) << c.why;
  EXPECT_GE(f.rotation, -kPi / 2) << c.why;
  EXPECT_LT(f.rotation, kPi / 2) << c.why;
  EXPECT_EQ(f.param.mirrored, c.m.determinant() < 0.0) << c.why;
  if (c.circle) {
    EXPECT_EQ(f.rotation, 0.0) << c.why;
    EXPECT_EQ(f.radiusX, f.radiusY) << c.why;
  }
  // The parameter change names the same point on both forms.
  for (double t : {0.0, 0.7, 2.0, -2.5}) {
    kcVector<2> direct = c.m * kcVector<2>(std::cos(t), std::sin(t));
    double u = f.param.apply(t);
    kcVector<2> canon = kcMatrix<2>::rotation(kcRadian(f.rotation)) *
                        kcVector<2>(f.radiusX * std::cos(u), f.radiusY * std::sin(u));
    EXPECT_NEAR(direct.distance(canon), 0.0, 1e-14 * scale) << c.why << " t " << t;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Matrices, FactorEllipse,
    ::testing::Values(FactorCase{"identity", kcMatrix<2>(), true},
                      FactorCase{"axis-aligned, x longer", kcMatrix<2>::scale(3, 2), false},
                      FactorCase{"axis-aligned, y longer: radii swap", kcMatrix<2>::scale(2, 3), false},
                      FactorCase{"rotated ellipse", rot(2.5) * kcMatrix<2>::scale(5, 1), false},
                      FactorCase{"rotation near -pi/2", rot(-kPi / 2 - 1e-9) * kcMatrix<2>::scale(5, 1),
                                 false},
                      FactorCase{"shear", kcMatrix<2>(1, 2, 0, 1), false},
                      FactorCase{"mirror", kcMatrix<2>::scale(2, -1), false},
                      FactorCase{"mirrored shear", kcMatrix<2>(1, 2, 3, 1), false},
                      FactorCase{"pure rotation is a circle", rot(2.0, 3.0), true},
                      FactorCase{"mirrored circle", kcMatrix<2>(0, 2, 2, 0), true},
                      FactorCase{"mirrored circle, turned", rot(1.1) * kcMatrix<2>::scale(4, -4), true},
                      FactorCase{"nearly circular", rot(0.3) * kcMatrix<2>::scale(1 + 1e-9, 1), false},
                      FactorCase{"thin", rot(0.4) * kcMatrix<2>::scale(1e6, 1e-6), false},
                      FactorCase{"large values", kcMatrix<2>(3e200, 1e200, -2e200, 5e200), false}),
    [](const auto& info) { return "case" + std::to_string(info.index); });

TEST(FactorEllipse, KeepsTheSmallRadiusOfThinEllipsesAccurate) {
  // q - r would lose every digit of 1e-9 next to 1e3; |det| / radiusX does not.
  kcEllipseFactors_ f = kfFactorEllipse_(rot(0.7) * kcMatrix<2>::scale(1e3, 1e-9));
  EXPECT_NEAR(f.radiusX, 1e3, 1e-12);
  EXPECT_NEAR(f.radiusY, 1e-9, 1e-22);
}

TEST(SimilarityTest, AcceptsScaledRotationsAndMirrorsWithinTolerance) {
  kcMatrix<2> composed;
  for (int i = 0; i < 50; ++i) composed = rot(0.1 + i * 0.37) * composed;
  struct Row {
    const char* why;
    kcMatrix<2> m;
    bool similar;
  } rows[] = {
      {"identity", kcMatrix<2>(), true},
      {"scaled rotation", rot(1.0, 2.5), true},
      {"scaled mirror", kcMatrix<2>(0, -3, -3, 0), true},
      {"fifty composed rotations", composed, true},
      {"scale off by 1e-13", kcMatrix<2>::scale(1, 1 + 1e-13), true},
      {"scale off by 1e-9", kcMatrix<2>::scale(1, 1 + 1e-9), false},
      {"shear", kcMatrix<2>(1, 1e-6, 0, 1), false},
      {"singular", kcMatrix<2>(1, 1, 1, 1), false},
      {"zero", kcMatrix<2>(0, 0, 0, 0), false},
  };
  for (const Row& r : rows) EXPECT_EQ(kfIsSimilarity_(r.m, 1e-12), r.similar) << r.why;
  EXPECT_NEAR(kfSimilarityScale_(rot(1.0, 2.5)), 2.5, 1e-15);
  EXPECT_NEAR(kfSimilarityScale_(kcMatrix<2>(0, -3, -3, 0)), 3.0, 1e-15);
}

TEST(ArcParameters, OffsetsRunInTheSpansDirectionModuloATurn) {
  EXPECT_NEAR(kfArcOffset_(1.0, 0.5, 1.0), 0.5, 1e-15);
  EXPECT_NEAR(kfArcOffset_(0.0, 0.5, -1.0), 0.5, 1e-15);
  EXPECT_NEAR(kfArcOffset_(0.0, 0.5, 1.0), 2 * kPi - 0.5, 1e-15);
  EXPECT_NEAR(kfArcOffset_(0.1 + 4 * kPi, 0.0, 1.0), 0.1, 1e-14);
}

TEST(ArcParameters, SpanChecks) {
  EXPECT_THROW(kfCheckArcSpan_(0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kfCheckArcSpan_(-0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kfCheckArcSpan_(std::nan("")), kcShapesError::BadParams);
  EXPECT_THROW(kfCheckArcSpan_(HUGE_VAL), kcShapesError::BadParams);
  EXPECT_THROW(kfCheckArcSpan_(2 * kPi + 1e-9), kcShapesError::BadParams);
  EXPECT_THROW(kfCheckArcSpan_(-2 * kPi - 1e-9), kcShapesError::BadParams);
  EXPECT_NO_THROW(kfCheckArcSpan_(360.0 * 0.017453292519943295));
  EXPECT_NO_THROW(kfCheckArcSpan_(-2 * kPi * (1 + 1e-13)));
  EXPECT_NO_THROW(kfCheckArcSpan_(1e-300));
}

// The image of an ellipse and the parameter change: the point of parameter t
// maps onto the image's point of parameter change.apply(t).
TEST(MapEllipse2, ParameterChangeFollowsThePoints) {
  kcEllipse2 e(3.0, 1.5, kcRadian(0.4), kcVector<2>(1, -2));
  struct Row {
    const char* why;
    kcXform<2> x;
    bool mirrored;
  } rows[] = {
      {"translation", kcXform<2>::translation({5, 6}), false},
      {"rotation and scale", kcXform<2>(rot(2.0, 2.0), {1, 1}), false},
      {"mirror", kcXform<2>(kcMatrix<2>::scale(-2, 2), {0, 3}), true},
      {"turned mirror", kcXform<2>(kcMatrix<2>(0, 1, 1, 0), {}), true},
      {"shear", kcXform<2>(kcMatrix<2>(1, 0.5, 0, 1), {2, 0}), false},
      {"mirroring shear", kcXform<2>(kcMatrix<2>(1, 2, 3, 1), {2, 0}), true},
  };
  for (const Row& r : rows) {
    kcParamChange_ change;
    kcEllipse2 image = kfMapEllipse2_(e, r.x, change);
    EXPECT_EQ(change.mirrored, r.mirrored) << r.why;
    for (double t : {0.0, 1.0, 2.5, -1.3}) {
      kcVector<2> want = r.x * e.point(kcRadian(t));
      EXPECT_NEAR(image.point(kcRadian(change.apply(t))).distance(want), 0.0, 1e-13) << r.why << " t " << t;
    }
  }
}

TEST(MapEllipse2, SimilaritiesKeepTheRadiiInOrder) {
  kcEllipse2 e(1.0, 2.0, kcRadian(0.25), kcVector<2>());
  kcParamChange_ change;
  kcEllipse2 turned = kfMapEllipse2_(e, kcXform<2>(rot(1.0, 3.0), {}), change);
  EXPECT_DOUBLE_EQ(turned.radiusX(), 3.0);
  EXPECT_DOUBLE_EQ(turned.radiusY(), 6.0);
  EXPECT_DOUBLE_EQ(turned.rotation().toDouble(), 1.25);
  EXPECT_EQ(change.shift, 0.0);
  kcEllipse2 mirrored = kfMapEllipse2_(e, kcXform<2>(kcMatrix<2>::scale(1, -1), {}), change);
  EXPECT_DOUBLE_EQ(mirrored.radiusY(), 2.0);
  EXPECT_DOUBLE_EQ(mirrored.rotation().toDouble(), -0.25);
  EXPECT_TRUE(change.mirrored);
  EXPECT_THROW((void)kfMapEllipse2_(e, kcXform<2>(kcMatrix<2>(1, 2, 2, 4), {}), change),
               kcMathError::Singular);
}

}  // namespace
