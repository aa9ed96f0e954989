#include "dispc/wrfm/wirefrm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <typeinfo>
#include <vector>

#include "dispc/smd/polyprivate.h"
#include "tests/dispc/archive_checks.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using V = kcVector<2>;
using dispc_test::Bytes;
using dispc_test::stored;

const kcDimTol kTol(-1, 0.1, 0.2, kcDimTol::eOffsets);
const kcDimTol kOther(-1, 0.3, 0.4, kcDimTol::eOffsets);
const kcDimTol kMisfit(-1, 10, 20, kcDimTol::eLimits);  // limits no segment here fits
const kcRadian kStraight(0.0);

// A rectangle 4 by 2 from the origin, counter-clockwise.
kcGenPoly box() { return kcGenPoly(kcRect(V(0, 0), V(4, 2))); }

// The lower offset of every segment's tolerance (-1 for none), to 1e-9.
std::vector<double> lowerTols(const kc2Wireframe& w) {
  std::vector<double> out;
  for (long i = 0; i < w.numSegments(); ++i)
    out.push_back(std::round(w.segmentLengthTol(i).minTol() * 1e9) / 1e9);
  return out;
}

// Records the notifications of polarity(), and shows the equality hook.
class Probe : public kc2Wireframe {
 public:
  using kc2Wireframe::equal_;
  using kc2Wireframe::kc2Wireframe;
  std::vector<bool> calls;

 protected:
  void polarityChanged_(bool reversed) override { calls.push_back(reversed); }
};

const std::type_info& classOf(const kcShapePtr& h) {
  const kcShape& shape = *h;
  return typeid(shape);
}

// --- length tolerances ---

TEST(Wireframe, ToleranceOnEverySegmentAlsoWhenMapped) {
  const kc2Wireframe w(box(), kTol);
  EXPECT_EQ(lowerTols(w), (std::vector<double>{0.1, 0.1, 0.1, 0.1}));
  EXPECT_NEAR(w.segmentLengthTol(1).nomDim(), 2.0, 1e-15);  // the segment's length
  const kc2Wireframe m(box().map(kcXform<2>::scale(2, 1)), kTol);
  EXPECT_FALSE(m.isEditable());
  EXPECT_EQ(lowerTols(m), (std::vector<double>{0.1, 0.1, 0.1, 0.1}));
  // Reading never throws: a segment that is not there has no tolerance.
  kc2Wireframe open(box());
  open.open();
  for (long i : {-1L, 3L}) EXPECT_EQ(open.segmentLengthTol(i), kcDimTol(-1, -1, -1, kcDimTol::eLimits)) << i;
}

TEST(Wireframe, RefusedTolerancesChangeNothing) {
  kc2Wireframe w(box(), kTol);
  const Bytes before = stored(w);
  EXPECT_THROW(w.segmentLengthTol(0, kMisfit), kcShapesError::BadGeom);
  EXPECT_THROW(w.segmentLengthTol(7, kTol), kcShapesError::BadCoef);
  EXPECT_EQ(stored(w), before);
  kc2Wireframe m = w.map(kcXform<2>::translation(V(1, 1)));
  EXPECT_THROW(m.segmentLengthTol(0, kOther), kcShapesError::BadGeom);
  EXPECT_THROW(m.insertVertex(V(5, 5), 0.0, kStraight, kOther), kcShapesError::BadGeom);
  kcSMDGDPoly::invalidRounding rounding;
  EXPECT_THROW(w.remapAndThrowError_(rounding), kcShapesError::BadRadius);  // as for any polygon
}

TEST(Wireframe, InsertingGivesTheToleranceToTheSecondHalf) {
  kc2Wireframe w(box(), kTol);
  w.segmentLengthTol(0, kcDimTol(-1, 3.9, 4.1, kcDimTol::eLimits));  // the whole side fits, no half would
  w.insertVertex(0, V(2, 0), 0.0, kStraight, kOther);
  // None from (0,0) to the new vertex, kOther on to (4,0); the others keep theirs.
  EXPECT_EQ(lowerTols(w), (std::vector<double>{-1, 0.3, 0.1, 0.1, 0.1}));
  // Appending to a closed outline splits its closing segment.
  w.insertVertex(V(0, 1), 0.0, kStraight, kOther);
  EXPECT_EQ(lowerTols(w), (std::vector<double>{-1, 0.3, 0.1, 0.1, -1, 0.3}));
  // Appending to an open chain gives the new segment the tolerance; at the front nothing is set.
  kc2Wireframe chain;
  for (const V& p : {V(0, 0), V(3, 0), V(3, 3)}) chain.insertVertex(p, 0.0, kStraight, kTol);
  chain.insertVertex(-1, V(-2, 0), 0.0, kStraight, kOther);
  EXPECT_EQ(lowerTols(chain), (std::vector<double>{-1, 0.1, 0.1}));
  // Refused: a crossing, a tolerance the second half does not fit, an index.
  const Bytes before = stored(w);
  EXPECT_THROW(w.insertVertex(0, V(2, 5), 0.0, kStraight, kOther), kcShapesError::BadGeom);
  EXPECT_THROW(w.insertVertex(0, V(1, 0), 0.0, kStraight, kMisfit), kcShapesError::BadGeom);
  EXPECT_THROW(w.insertVertex(6, V(1, 0), 0.0, kStraight, kOther), kcShapesError::BadCoef);
  EXPECT_EQ(stored(w), before);
}

TEST(Wireframe, ClosingGivesTheClosingSegmentItsTolerance) {
  kc2Wireframe w;
  for (const V& p : {V(0, 0), V(4, 0), V(4, 3)}) w.insertVertex(p, 0.0, kStraight, kTol);
  w.close(kStraight, kOther);
  EXPECT_EQ(lowerTols(w), (std::vector<double>{0.1, 0.1, 0.3}));
  EXPECT_NEAR(w.segmentLengthTol(2).nomDim(), 5.0, 1e-12);
  // Closed already: nothing changes, not even the tolerance.
  w.track(true);
  const Bytes closed = stored(w);
  w.close(kcRadian(0.5), kTol);
  EXPECT_EQ(stored(w), closed);
  EXPECT_FALSE(w.changed());
  // A refused tolerance leaves the chain open.
  w.open();
  const Bytes open = stored(w);
  EXPECT_THROW(w.close(kStraight, kMisfit), kcShapesError::BadGeom);
  EXPECT_EQ(stored(w), open);
}

// --- polarity ---

TEST(WireframePolarity, TheFlagTheInsideAndMirrors) {
  Probe w(box());
  w.track(true);
  w.polarity(w.isPolarityReversed());
  w.insidePolarity(w.isInsidePositive());
  EXPECT_FALSE(w.changed());  // setting what is there changes nothing
  EXPECT_TRUE(w.calls.empty());
  w.polarity(true);
  EXPECT_FALSE(w.isInsidePositive());
  EXPECT_EQ(w.calls, std::vector<bool>{true});
  w.insidePolarity(true);  // flips the flag back, without a notification
  EXPECT_FALSE(w.isPolarityReversed());
  EXPECT_EQ(w.calls.size(), 1u);
  // A mirror inverts the inside, not the flag; a shear that keeps the sense keeps it.
  const kc2Wireframe mirrored = w.map(kcXform<2>(kcMatrix<2>(1, 2, 1, -1), V()));
  EXPECT_FALSE(mirrored.isInsidePositive());
  EXPECT_FALSE(mirrored.isPolarityReversed());
  EXPECT_TRUE(w.map(kcXform<2>(kcMatrix<2>(1, 2, 0, 1), V())).isInsidePositive());
  w.open();
  EXPECT_THROW((void)w.isInsidePositive(), kcShapesError::BadGeom);
}

// --- shapes and polys ---

TEST(WireframeShape, CopiesAndImagesStayWireframes) {
  const kc2Wireframe w(box(), kTol);
  EXPECT_EQ(classOf(w.clone()), typeid(kc2Wireframe));
  EXPECT_EQ(classOf(w.reverse()), typeid(kc2Wireframe));
  const kcShapePtr mapped = w.mapShape(kcXform<2>::rotation(kcRadian(0.5)));
  ASSERT_EQ(classOf(mapped), typeid(kc2Wireframe));
  EXPECT_FALSE(static_cast<const kc2Wireframe&>(*mapped).isEditable());
  // Not equal to a plain polygon of the same data.
  const Probe probe(w);
  EXPECT_FALSE(probe.equal_(kcGenPoly(w)));
  EXPECT_TRUE(probe.equal_(w));
}

TEST(WireframePoly, PolysComeAndGoUnderSimilarities) {
  const kcSMDGDPoly source = kcSMDGDPoly::rectangle(4, 2, V(1, 1));
  const kc2Wireframe w = kcSMDGDPolyPrivate::wireframe(source);
  const kcSMDGDPoly back(w, L"pad");
  EXPECT_EQ(back, source);
  EXPECT_EQ(back.name(), L"pad");
  // A turn, a scale and a mirror: the poly holds the client geometry, and
  // its direction answers what the wireframe's inside polarity does.
  const kc2Wireframe mirrored = w.map(kc2Rigid(kcRadian(0.5), V(3, -1)), 2.0).map(kcXform<2>::scale(-1, 1));
  const kcSMDGDPoly image(mirrored, L"image");
  EXPECT_EQ(image.isDirectionPositive(), mirrored.isInsidePositive());
  for (long i = 0; i < 4; ++i)
    EXPECT_LE(image.vertices()[i].point().distance(mirrored.vertexPoint(i)), 1e-12);
  EXPECT_THROW(kcSMDGDPoly(w.map(kcXform<2>(kcMatrix<2>(1, 1, 0, 1), V())), L"x"), kcShapesError::BadGeom);
}

// --- archive ---

TEST(WireframeArchive, RoundTripsByValueAndByHandle) {
  kc2Wireframe w(box(), kTol);
  w.polarity(true);
  for (const kc2Wireframe& x : {kc2Wireframe(), w, w.map(kcXform<2>(kcMatrix<2>(1, 1, 0, 2), V(1, 0)))}) {
    const Bytes bytes = stored(x);
    // The wireframe's version byte, then the polygon's form.
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(Bytes(bytes.begin() + 1, bytes.end()), stored(static_cast<const kcGenPoly&>(x)));
    EXPECT_EQ(dispc_test::loaded(bytes, kc2Wireframe()), x);
    const kcShapePtr h = shape_testing::loadByHandle(shape_testing::storeByHandle(x));
    EXPECT_EQ(classOf(h), typeid(kc2Wireframe));
    EXPECT_TRUE(*h == x);
  }
}

TEST(WireframeArchive, VersionsAreCheckedOnBothPaths) {
  const kc2Wireframe target(box(), kTol);
  kc2Wireframe w(box()), loaded = target;
  const Bytes bytes = stored(w);
  Bytes wrong = bytes;
  wrong[0] = 1;
  dispc_test::expectUnknownVersion(wrong, target, "dispc/wrfm/wirefrm", 148);
  // The simple path moves the same bytes and reads the version as a signed byte.
  kcMemArchive out;
  w.loadSimple(out);
  EXPECT_EQ(out.bytes(), bytes);
  wrong[0] = 0xFF;
  dispc_test::expectSimpleUnknownVersion(wrong, loaded, "dispc/wrfm/wirefrm", 131);
}

}  // namespace
