#include "dispc/smd/poly.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "dispc/smd/polyprivate.h"
#include "tests/dispc/archive_checks.h"
#include "tests/dispc/smd/outlines.h"

namespace {

using V = kcVector<2>;
using Poly = kcSMDGDPoly;
using P = kcSMDGDPolyPrivate;
using Vertex = kcSMDGDPolyVertex;
using dispc_test::Bytes;

Vertex at(double x, double y, double radius = 0.0, long label = -1) {
  return Vertex(V(x, y), radius, 0.5, 0.5, label);
}

Vertex arcTo(double x, double y, double span) {
  return Vertex(V(x, y), 0.0, kcDegree(span), 0.5, 0.5, -1, kcDimTol(-1, -1, -1, kcDimTol::eOffsets));
}

Poly closed(const std::vector<Vertex>& vs) {
  Poly p;
  for (const Vertex& v : vs) p << v;
  p.close();
  return p;
}

// Everything a poly shows, as bytes: vertices, labels, caches, flags, colours.
Bytes state(const Poly& p) { return dispc_test::stored(p); }

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << a.x() << "," << a.y();
}

// --- construction and factories ---

TEST(SMDPoly, FactoriesGiveTheStatedVertices) {
  const Poly t = Poly::triangle(6, 3, V(1, 1));
  ASSERT_EQ(t.numVertices(), 3);
  expectNear(t.vertices()[0].point(), V(1, 3));
  expectNear(t.vertices()[1].point(), V(-2, 0));
  expectNear(t.vertices()[2].point(), V(4, 0));
  EXPECT_TRUE(t.isClosed());
  EXPECT_EQ(t.subModelLabels(), (std::vector<std::int32_t>{0, 1, 2}));
  const Poly r = Poly::rectangle(4, 2, V());
  ASSERT_EQ(r.numVertices(), 4);
  EXPECT_EQ(r.vertices()[0].point(), V(2, 1));
  EXPECT_EQ(r.vertices()[3].point(), V(2, -1));
  EXPECT_EQ(r.numSegments(), 4);
  EXPECT_TRUE(r.isDirectionPositive());
  const Poly c = Poly::circle(2, V(1, 0));
  ASSERT_EQ(c.numVertices(), 2);
  EXPECT_EQ(c.vertices()[0].point(), V(-1, 0));
  EXPECT_EQ(c.vertices()[1].segmentAngleSpan().toDouble(), 180);
  EXPECT_EQ(c.subModelLabels(), std::vector<std::int32_t>{0});
  EXPECT_TRUE(c.isDirectionPositive());
  const kcRect box = c.boundingBox(kcXform<2>());
  expectNear(box.origin(), V(-1, -2));
  expectNear(box.size(), V(4, 4));
  const Poly fresh(L"lead");
  EXPECT_EQ(fresh.name(), L"lead");
  EXPECT_TRUE(fresh.isOpen() && fresh.weight() == 1.0 && !fresh.isDirectionReversed());
  EXPECT_EQ(fresh.positiveArrowColor(), kcColor::greenColor());
  EXPECT_EQ(Poly().name(), L"poly");
}

TEST(SMDPoly, IndexHelpersKeepTheirArithmetic) {
  const Poly r = Poly::rectangle(4, 2, V());
  EXPECT_EQ(P::vertexIndex_(r, -4, true), 4);  // not 0
  EXPECT_EQ(P::vertexIndex_(r, -1, true), 3);
  EXPECT_EQ(P::vertexIndex_(r, 4, true), 0);
  EXPECT_THROW((void)P::vertexIndex_(r, 4, false), Poly::invalidIndex);
  EXPECT_THROW((void)P::vertexIndex_(Poly(), 0, true), Poly::invalidIndex);
  Poly open;
  open << at(0, 0) << at(1, 0) << at(1, 1);
  EXPECT_EQ(open.numSegments(), 2);
  EXPECT_EQ(P::previousSegmentIndex_(open, 0), -1);
  EXPECT_EQ(P::nextSegmentIndex_(open, 2), -1);
  EXPECT_THROW((void)P::nextVertexIndex_(open, 0), Poly::invalidIndex);
  EXPECT_THROW((void)P::segmentIndex_(open, 0, false), Poly::invalidIndex);
  EXPECT_TRUE(P::isEndVertex(open, 0) && P::isEndVertex(open, 2) && !P::isEndVertex(open, 1));
  EXPECT_THROW((void)open.isDirectionPositive(), Poly::notClosed);
}

// --- editing ---

TEST(SMDPoly, EditsCheckIndicesAndCounts) {
  Poly p;
  EXPECT_THROW(p.insertVertex(0, at(0, 0)), Poly::invalidIndex);
  p.insertVertex(-1, at(0, 0));
  EXPECT_EQ(p.numVertices(), 1);
  EXPECT_TRUE(p.isOpen());
  Poly empty;
  EXPECT_THROW(empty.close(), Poly::invalidVertices);
  EXPECT_TRUE(empty.isOpen());
  // A one-vertex chain cannot be closed: its only segment would run from
  // the vertex to itself, and is refused as a refused edit is, whether the
  // vertex is sharp, rounded or ends an arc (the sanitizers see that nothing
  // past the vertex is read).
  for (const Vertex& v : {at(1, 2), Vertex(V(1, 2), 1.0, 0.5, 0.5, -1),
                          Vertex(V(1, 2), 1.0, kcDegree(90), 0.5, 0.5, -1, kcDimTol())}) {
    Poly one;
    one << v;
    EXPECT_THROW(one.close(), kcException);
    EXPECT_TRUE(one.isOpen());
  }
  Poly two = closed({at(0, 0), at(1, 0)});
  const Bytes before = state(two);
  EXPECT_THROW(two.deleteVertex(0), Poly::invalidVertices);
  EXPECT_EQ(state(two), before);
  EXPECT_THROW(two.deleteVertex(2), Poly::invalidIndex);
  EXPECT_THROW(two.replaceVertex(-1, at(0, 0)), Poly::invalidIndex);
  two.toggleDirection();
  two.toggleDirection();
  EXPECT_FALSE(two.isDirectionReversed());
}

TEST(SMDPoly, FailedEditsLeaveThePolyAsItWas) {
  Poly square = closed({at(0, 0, 0.2, 1), at(4, 0, 0.2, 1), at(4, 4, 0.2, 2), at(0, 4, 0.2, 2)});
  square.weight(2.5);
  const Bytes before = state(square);
  const std::vector<std::int32_t> labels = square.subModelLabels();
  // A vertex that makes the outline cross itself, a rounding too large for
  // its segments, a point on top of its neighbour.
  EXPECT_THROW(square.insertVertex(1, at(2, 6, 0, 7)), Poly::crossingSegments);
  EXPECT_THROW(square.replaceVertex(2, at(4, 4, 3.0)), Poly::invalidRounding);
  EXPECT_THROW(square.insertVertex(0, at(0, 0)), kcShapesError::DegenerateShape);
  EXPECT_THROW(square.vertices({at(0, 0), at(2, 2), at(2, 0), at(0, 2)}), Poly::crossingSegments);
  EXPECT_EQ(state(square), before);
  EXPECT_EQ(square.subModelLabels(), labels);
  // A poly handed its own vertices keeps them.
  square.vertices(square.vertices());
  EXPECT_EQ(state(square), before);
  EXPECT_EQ(square.weight(), 2.5);
  // A bow tie cannot be closed; the chain stays open.
  Poly bow;
  bow << at(0, 0) << at(2, 0) << at(0, 2) << at(2, 2);
  EXPECT_THROW(bow.close(), Poly::crossingSegments);
  EXPECT_TRUE(bow.isOpen());
  // Successful edits keep the caches in step.
  square.deleteVertex(1);
  EXPECT_EQ(square.numVertices(), 3);
  square.insertVertex(0, at(4, 0, 0.2, 1));
  EXPECT_EQ(state(square), before);
}

TEST(SMDPoly, PercentagesOfOneSubModelMayFillTheSegment) {
  Poly p;
  p << Vertex(V(0, 0), 0.5, 0.5, 3) << Vertex(V(1, 0), 0.5, 0.5, 3);
  EXPECT_EQ(p.numVertices(), 2);
  Poly q;
  q << Vertex(V(0, 0), 0.5, std::nextafter(std::nextafter(0.5, 1.0), 1.0),
              3);  // the sum is the double after 1
  EXPECT_THROW(q << Vertex(V(1, 0), 0.5, 0.5, 3), Poly::crossingSegments);
  EXPECT_EQ(q.numVertices(), 1);
  q << Vertex(V(1, 0), 0.5, 0.5, 4);  // another sub-model: no check
}

TEST(SMDPoly, ResetAndReInit) {
  Poly p = Poly::rectangle(2, 2, V());
  p.weight(3);
  p.toggleDirection();
  p.reInit();
  EXPECT_TRUE(p.numVertices() == 0 && p.isOpen() && p.subModelLabels().empty());
  EXPECT_TRUE(p.weight() == 3 && p.isDirectionReversed());
  p.reset();
  EXPECT_TRUE(p.weight() == 1 && !p.isDirectionReversed() && p == Poly());
}

// --- roundings ---

TEST(SMDPoly, RightAngleRoundingTouchesAtTheRadius) {
  const Poly p = closed({at(0, 0), at(10, 0), at(10, 10, 2.0), at(0, 10)});
  expectNear(P::roundStart_(p, 2), V(10, 8));
  expectNear(P::roundEnd_(p, 2), V(8, 10));
  EXPECT_NEAR(std::fabs(P::roundSpan_(p, 2)), 90, 1e-12);
  expectNear(P::roundPoint(p, 2), V(8, 8));
  EXPECT_NEAR(P::vertexAngle(p, 2).toDouble(), 90, 1e-12);
  // A concave corner rounds on its own side.
  const Poly notch = closed({at(0, 0), at(10, 0), at(10, 10), at(5, 5, 1.0), at(0, 10)});
  EXPECT_LT(P::vertexAngle(notch, 3).toDouble(), 0);
  EXPECT_GT(P::roundPoint(notch, 3).y(), 5);  // outside, beyond the notch
  // 1e-16 is no rounding at all.
  const Poly sharp = closed({at(0, 0), at(10, 0), at(10, 10, 1e-16), at(0, 10)});
  EXPECT_EQ(P::roundStart_(sharp, 2), V(10, 10));
  EXPECT_EQ(P::roundSpan_(sharp, 2), 0.0);
}

TEST(SMDPoly, RadiusLimitedByHalfSegmentsExceptAtOpenEnds) {
  // Radius 6 needs 6 of each leg; an interior leg of 10 lends only 5.
  EXPECT_THROW(closed({at(0, 0), at(10, 0), at(10, 10, 6.0), at(0, 10)}), Poly::invalidRounding);
  Poly open;
  open << at(10, 0) << at(10, 10, 6.0) << at(0, 10);
  EXPECT_EQ(open.numVertices(), 3);
  expectNear(P::roundStart_(open, 1), V(10, 4));
}

TEST(SMDPoly, ArcSegmentsAndTheirRoundings) {
  // A D shape: a straight side and a half circle, rounded where they meet.
  const Poly d = closed({at(0, -2, 0.5), arcTo(0, 2, 180)});
  EXPECT_TRUE(P::isArcSegment_(d, 1) && !P::isArcSegment_(d, 0));
  EXPECT_GT(P::roundSpan_(d, 0), 0);
  EXPECT_NEAR(P::roundStart_(d, 0).x(), 0.0, 1e-12);              // on the line
  EXPECT_NEAR(P::roundEnd_(d, 0).distance(V(0, 0)), 2.0, 1e-12);  // on the arc
  EXPECT_TRUE(d.isDirectionPositive());
}

// --- lengths and extensions ---

TEST(SMDPolyGeometry, PerimeterAndExtensions) {
  struct Access : Poly {
    using Poly::extensionPerimeter_;
    using Poly::perimeter_;
    using Poly::Poly;
    using Poly::setExtensions_;
  };
  Access square;
  square.vertices({at(0, 0), at(3, 0), at(3, 3), at(0, 3)});
  square.close();
  EXPECT_NEAR(square.perimeter_(0.0), 12, 1e-12);
  EXPECT_EQ(square.perimeter_(3.0), 0.0);
  EXPECT_NEAR(square.perimeter_(kcXform<2>::scale(2, 2)), 24, 1e-12);
  EXPECT_EQ(Access().perimeter_(0.0), 0.0);
  // A straight vertex, a 135-degree corner and a 136-degree one.
  const double a136 = 136 * std::numbers::pi / 180;
  Access chain;
  chain.vertices({at(0, 0), at(1, 0), at(2, 0),
                  at(2 + std::cos(std::numbers::pi / 4), std::sin(std::numbers::pi / 4)),
                  at(2 + std::cos(std::numbers::pi / 4) - std::cos(a136 - std::numbers::pi / 4),
                     std::sin(std::numbers::pi / 4) + std::sin(a136 - std::numbers::pi / 4))});
  chain.setExtensions_(0.25);
  EXPECT_NEAR(P::vertexAngle(chain, 2).toDouble(), 135, 1e-9);
  EXPECT_EQ(chain.vertices()[1].forwardPercExtension(), 0.0);  // straight on
  EXPECT_EQ(chain.vertices()[2].forwardPercExtension(), 0.25);
  EXPECT_EQ(chain.vertices()[2].backwardPercExtension(), 0.25);
  EXPECT_EQ(chain.vertices()[3].forwardPercExtension(), 0.0);
  EXPECT_EQ(chain.vertices()[0].backwardPercExtension(), 0.0);  // a free end
  EXPECT_NEAR(chain.extensionPerimeter_() - chain.perimeter_(0.0), 0.5, 1e-12);
}

TEST(SMDPolyGeometry, ExtensionsStopShortOfAnotherOutline) {
  struct Access : Poly {
    using Poly::checkExtensions_;
    using Poly::Poly;
    using Poly::setExtensions_;
  };
  // A square whose right side, extended by half its length beyond each
  // corner, would reach a pad 1 to the right of its top corner; the pad far
  // below stops nothing.
  Access body;
  body.vertices({at(0, 0), at(2, 0), at(2, 2), at(0, 2)});
  body.close();
  body.setExtensions_(0.5);
  Access pad;
  pad.vertices({at(1.5, 2.5), at(3, 2.5), at(3, 3.5), at(1.5, 3.5)});
  pad.close();
  body.checkExtensions_(pad, 0.1, kcDegree(10), 0.01, false);
  const double up = body.vertices()[2].forwardPercExtension();  // segment 2 runs up the right side
  EXPECT_GT(up, 0.0);
  EXPECT_LT(up, 0.5);
  EXPECT_EQ(body.vertices()[1].backwardPercExtension(), 0.5);  // segment 2 downwards, clear of the pad
  Access far;
  far.vertices({at(10, -10), at(11, -10), at(11, -9)});
  far.close();
  far.setExtensions_(0.5);
  Access again;
  again.vertices(body.vertices());
  again.close();
  again.setExtensions_(0.5);
  again.checkExtensions_(far, 0.1, kcDegree(10), 0.01, true);
  EXPECT_EQ(again.vertices()[2].forwardPercExtension(), 0.5);
  EXPECT_EQ(far.vertices()[0].forwardPercExtension(), 0.5);  // the other one's own, checked back
}

TEST(SMDPolyGeometry, SegmentsOutOfTolerance) {
  Poly p;
  const kcDimTol tight(1, 0.01, 0.01, kcDimTol::eOffsets);
  p << at(0, 0) << Vertex(V(1, 0), 0.0, kcDegree(0), 0.5, 0.5, -1, tight) << at(1, 1);
  EXPECT_TRUE(p.segmentsOutOfTolerance(kcXform<2>(), kcXform<2>()).empty());
  EXPECT_EQ(p.segmentsOutOfTolerance(kcXform<2>::scale(1.03, 1.03), kcXform<2>()), std::vector<long>{1});
  EXPECT_NEAR(p.segmentDimension(1).nominal(), 1.0, 1e-15);
  EXPECT_THROW((void)p.segmentDimension(0), Poly::invalidIndex);
}

// --- direction, inside, box ---

TEST(SMDPolyGeometry, DirectionOfConvexConcaveArcAndRoundedOutlines) {
  const std::vector<Vertex> star = {at(0, -5), at(1, -1), at(5, 0),  at(1, 1, 0.2),
                                    at(0, 5),  at(-1, 1), at(-5, 0), at(-1, -1, 0.3)};
  std::vector<Vertex> reversed(star.rbegin(), star.rend());
  for (const auto& [outline, ccw] : std::vector<std::pair<std::vector<Vertex>, bool>>{
           {{at(0, 0), at(1, 0), at(1, 1)}, true},
           {{at(0, 0), at(1, 1), at(1, 0)}, false},
           {star, true},
           {reversed, false},
           {{arcTo(-2, 0, 90), arcTo(2, 0, 90)}, true},  // a lens
           {{at(0, 0), at(4, 0), arcTo(4, 4, -120), at(0, 4, 1.0)}, true}}) {
    Poly p = closed(outline);
    EXPECT_EQ(p.isDirectionPositive(), ccw);
    EXPECT_EQ(p.isDirectionNegative(), !ccw);
    p.toggleDirection();
    EXPECT_EQ(p.isDirectionPositive(), !ccw);
  }
}

TEST(SMDPolyGeometry, InsideAndBox) {
  struct Access : Poly {
    using Poly::inside_;
    using Poly::Poly;
  };
  Access notch;
  notch.vertices({at(0, 0), at(10, 0), at(10, 10, 1.0), at(5, 5), at(0, 10)});
  notch.close();
  EXPECT_TRUE(notch.inside_(V(2, 2)));
  EXPECT_TRUE(notch.inside_(V(5, 0)));  // on the outline
  EXPECT_FALSE(notch.inside_(V(5, 8)));
  EXPECT_FALSE(notch.inside_(V(9.9, 9.9)));  // cut off by the rounding
  EXPECT_FALSE(notch.inside_(V(-1, 5)));
  const kcRect box = notch.boundingBox(kcXform<2>());
  expectNear(box.origin(), V(0, 0));
  expectNear(box.size(), V(10, 10));
  const kcRect moved = notch.boundingBox(kcXform<2>(kcMatrix<2>(2, 0, 0, 2), V(1, 1)));
  expectNear(moved.origin(), V(1, 1));
  EXPECT_TRUE(Poly().boundingBox(kcXform<2>()).isEmpty());
}

// --- equality, transforms, archive ---

TEST(SMDPoly, EqualityIgnoresNamesNotWeights) {
  Poly a(L"a"), b(L"b");
  a << at(0, 0) << at(1, 0);
  b << at(0, 0) << at(1, 0);
  EXPECT_TRUE(a == b);
  b.weight(1 + 2e-15);
  EXPECT_TRUE(a != b);
  EXPECT_TRUE(kfRealEq(a, b, 1e-14));
  const Poly moved = kc2Rigid(kcDegree(90), V(1, 0)) * Poly::rectangle(2, 2, V());
  expectNear(moved.vertices()[0].point(), V(0, 1));
  const Poly doubled = 2.0 * Poly::circle(1, V());
  EXPECT_EQ(doubled.vertices()[1].point(), V(2, 0));
  EXPECT_THROW((void)(0.0 * Poly::rectangle(2, 2, V())), kcException);
}

TEST(SMDPolyArchive, RoundTripVersionsAndCheckedLoads) {
  Poly p = closed({at(0, 0, 0, 1), at(4, 0, 0.5, 2), at(4, 4), arcTo(0, 4, 30)});
  p.weight(2);
  const Bytes bytes = state(p);
  const Poly back = dispc_test::loaded(bytes, Poly());
  EXPECT_TRUE(back == p);
  EXPECT_EQ(state(back), bytes);
  // Version 0: no weight.
  Bytes v0(bytes.begin(), bytes.end() - 8);
  v0[0] = 0;
  EXPECT_EQ(dispc_test::loaded(v0, Poly()).weight(), 1.0);
  Bytes v2 = bytes;
  v2[0] = 2;
  EXPECT_THROW(dispc_test::loaded(v2, Poly()), kcArchive::UnknownVersion);
  // A stored bow tie is refused, and the target keeps what it had.
  Poly open;
  open << at(0, 0) << at(2, 0) << at(0, 2) << at(2, 2);
  Bytes bow = state(open);
  const std::size_t openFlag = bow.size() - 8 - 7 - 7 - 22 - 2;
  ASSERT_EQ(bow[openFlag], 1);
  bow[openFlag] = 0;
  dispc_test::expectRefused<kcArchive::Corrupt>(bow, p);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.end() - 3), p);
  // A weight that is not a number (the last 8 bytes) would make the poly
  // unequal to itself: refused when stored and when set.
  Bytes nan = bytes;
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  std::memcpy(nan.data() + nan.size() - 8, &notANumber, 8);
  dispc_test::expectRefused<kcArchive::Corrupt>(nan, p);
  Poly weighed;
  EXPECT_THROW(weighed.weight(notANumber), kcShapesError::BadParams);
  EXPECT_THROW(weighed.weight(std::numeric_limits<double>::infinity()), kcShapesError::BadParams);
  EXPECT_EQ(weighed.weight(), 1.0);
}

// --- validation against the plain all-pairs loop ---

// The whole validation as written, every pair tested: the reference for the
// indexed one.
struct Reference : Poly {
  using Poly::Poly;
  void validateAllPairs() {
    const int n = static_cast<int>(numVertices());
    if (isClosed() && n < 2) throw invalidVertices();
    for (int v = 0; v < n; ++v) computeVertexRounding_(v);
    for (int v = 0; v < n && n > 1; ++v) {
      for (int j = 0; j <= v; ++j)
        if (vertexIsRounded_(v) && ((j != v && vertexIntersectsVertex_(v, j)) ||
                                    (segmentExists_(j) && segmentIntersectsVertex_(j, v))))
          throw crossingSegments();
      if (isOpen() && v == 0) continue;
      for (int j = 0; j <= v; ++j)
        if (segmentIntersectsVertex_(v, j) ||
            (segmentExists_(j) && j != v && segmentIntersectsSegment_(v, j)))
          throw crossingSegments();
      const int p = vertexIndex_(v - 1, true);
      if (vertexLabel_(v) != -1 && vertexLabel_(v) == vertexLabel_(p) &&
          percentPrevSegment_(v) + percentNextSegment_(p) > 1.0)
        throw crossingSegments();
      (void)segmentDimension(v);
    }
  }
};

const char* verdict(auto&& run) {
  try {
    run();
    return "valid";
  } catch (const kcException& e) {
    return typeid(e).name();
  }
}

TEST(SMDPolyValidation, IndexedAgreesWithAllPairsOnRandomOutlines) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int valid = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 40 + static_cast<int>(unit(rng) * 60);
    const std::vector<Vertex> vs = dispc_test::wobblyRing(rng, n);
    Poly indexed;
    P::assignVertices_(indexed, {}, false);
    const std::string got = verdict([&] { indexed.vertices(vs); });
    Reference ref;
    P::assignVertices_(ref, vs, false);
    const std::string want = verdict([&] { ref.validateAllPairs(); });
    EXPECT_EQ(got, want) << "trial " << trial;
    valid += got == "valid";
  }
  EXPECT_GT(valid, 30);
  EXPECT_LT(valid, 270);
}

}  // namespace
