#include "dispc/wrfm/wirefrm.h"

#include <gtest/gtest.h>

#include <tuple>
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
// Limits that no segment of these outlines fits.
const kcDimTol kMisfit(-1, 10, 20, kcDimTol::eLimits);

// A rectangle 4 by 2 from the origin, counter-clockwise.
kcGenPoly box() { return kcGenPoly(kcRect(V(0, 0), V(4, 2))); }

// The lower offset of segment i's tolerance (-1 for none).
double lowerTol(const kc2Wireframe& w, long i) { return w.segmentLengthTol(i).minTol(); }

// Counts the notifications of polarity(), and shows the equality hook.
class Probe : public kc2Wireframe {
 public:
  using kc2Wireframe::equal_;
  using kc2Wireframe::kc2Wireframe;
  std::vector<bool> calls;

 protected:
  void polarityChanged_(bool reversed) override { calls.push_back(reversed); }
};

// The class of the shape a handle holds.
const std::type_info& classOf(const kcShapePtr& h) {
  const kcShape& shape = *h;
  return typeid(shape);
}

TEST(Wireframe, ToleranceOnEverySegmentAlsoWhenMapped) {
  const kc2Wireframe w(box(), kTol);
  const kcDimTol read = w.segmentLengthTol(1);
  EXPECT_EQ(read.tolType(), kcDimTol::eOffsets);
  EXPECT_NEAR(read.nomDim(), 2.0, 1e-15);
  EXPECT_NEAR(read.minTol(), 0.1, 1e-12);
  EXPECT_NEAR(read.maxTol(), 0.2, 1e-12);
  // Segment i's tolerance lives in the vertex at its end.
  EXPECT_EQ(w.polygonData().vertices()[0].segmentLengthTol(), kTol);
  // A mapped polygon takes them and stays mapped.
  const kc2Wireframe m(box().map(kcXform<2>::scale(2, 1)), kTol);
  EXPECT_FALSE(m.isEditable());
  EXPECT_NEAR(lowerTol(m, 3), 0.1, 1e-12);
  // Nothing to set on a lone vertex.
  kcGenPoly lone;
  lone.insertVertex(V(1, 1), 0.0, kcRadian(0.0));
  EXPECT_EQ(kc2Wireframe(lone, kTol), kc2Wireframe(lone));
  // Reading never throws: a segment that is not there has no tolerance.
  kc2Wireframe open(box());
  open.open();
  for (long i : {-1L, 3L, 1000L})
    EXPECT_EQ(open.segmentLengthTol(i), kcDimTol(-1, -1, -1, kcDimTol::eLimits));
}

TEST(Wireframe, RefusedTolerancesChangeNothing) {
  kc2Wireframe w(box(), kTol);
  const Bytes before = stored(w);
  EXPECT_THROW(w.segmentLengthTol(0, kMisfit), kcShapesError::BadGeom);
  EXPECT_THROW(w.segmentLengthTol(7, kTol), kcShapesError::BadCoef);
  EXPECT_EQ(stored(w), before);
  kc2Wireframe m = w.map(kcXform<2>::translation(V(1, 1)));
  EXPECT_THROW(m.segmentLengthTol(0, kOther), kcShapesError::BadGeom);
  EXPECT_THROW(m.insertVertex(V(5, 5), 0.0, kcRadian(0.0), kOther), kcShapesError::BadGeom);
  // The vertex's own error is a bad geometry; the others as for any polygon.
  kcSMDGDPolyVertex::invalidSegmentLength length;
  kcSMDGDPoly::invalidRounding rounding;
  kcSMDGDPoly::noPelBuffer other;
  EXPECT_THROW(w.remapAndThrowError_(length), kcShapesError::BadGeom);
  EXPECT_THROW(w.remapAndThrowError_(rounding), kcShapesError::BadRadius);
  EXPECT_THROW(w.remapAndThrowError_(other), kcSMDGDPoly::noPelBuffer);
}

TEST(Wireframe, InsertingGivesTheToleranceToTheSecondHalf) {
  kc2Wireframe w(box(), kTol);
  w.insertVertex(0, V(2, 0), 0.0, kcRadian(0.0), kOther);
  EXPECT_EQ(lowerTol(w, 0), -1.0);          // (0,0) to the new vertex
  EXPECT_NEAR(lowerTol(w, 1), 0.3, 1e-12);  // the new vertex on to (4,0)
  EXPECT_NEAR(lowerTol(w, 2), 0.1, 1e-12);  // the others keep theirs
  // Appending to a closed outline splits its closing segment.
  w.insertVertex(V(0, 1), 0.0, kcRadian(0.0), kOther);
  EXPECT_EQ(lowerTol(w, 4), -1.0);
  EXPECT_NEAR(lowerTol(w, 5), 0.3, 1e-12);
  // Appending to an open chain gives the new segment the tolerance; at the front nothing is set.
  kc2Wireframe chain;
  for (const V& p : {V(0, 0), V(3, 0), V(3, 3)}) chain.insertVertex(p, 0.0, kcRadian(0.0), kTol);
  chain.insertVertex(-1, V(-2, 0), 0.0, kcRadian(0.0), kOther);
  EXPECT_EQ(lowerTol(chain, 0), -1.0);
  EXPECT_NEAR(lowerTol(chain, 1), 0.1, 1e-12);
  EXPECT_NEAR(lowerTol(chain, 2), 0.1, 1e-12);
  // Refused: a crossing, a tolerance the second half does not fit, an index.
  const Bytes before = stored(w);
  EXPECT_THROW(w.insertVertex(0, V(2, 5), 0.0, kcRadian(0.0), kOther), kcShapesError::BadGeom);
  EXPECT_THROW(w.insertVertex(0, V(1, 0), 0.0, kcRadian(0.0), kMisfit), kcShapesError::BadGeom);
  EXPECT_THROW(w.insertVertex(6, V(1, 0), 0.0, kcRadian(0.0), kOther), kcShapesError::BadCoef);
  EXPECT_EQ(stored(w), before);
}

TEST(Wireframe, ClosingGivesTheClosingSegmentItsTolerance) {
  kc2Wireframe w;
  for (const V& p : {V(0, 0), V(4, 0), V(4, 3)}) w.insertVertex(p, 0.0, kcRadian(0.0), kTol);
  w.close(kcRadian(0.0), kOther);
  EXPECT_NEAR(lowerTol(w, 2), 0.3, 1e-12);
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
  EXPECT_THROW(w.close(kcRadian(0.0), kMisfit), kcShapesError::BadGeom);
  EXPECT_EQ(stored(w), open);
}

TEST(WireframePolarity, SettingWhatIsThereChangesNothing) {
  Probe w(box());
  w.track(true);
  w.polarity(w.isPolarityReversed());
  w.insidePolarity(w.isInsidePositive());
  EXPECT_FALSE(w.changed());
  EXPECT_TRUE(w.calls.empty());
  w.polarity(true);
  EXPECT_TRUE(w.changed());
  EXPECT_FALSE(w.isInsidePositive());
  EXPECT_EQ(w.calls, std::vector<bool>{true});
  w.insidePolarity(true);  // flips the flag back, without a notification
  EXPECT_FALSE(w.isPolarityReversed());
  EXPECT_EQ(w.calls.size(), 1u);
  kc2Wireframe open(box());
  open.open();
  EXPECT_THROW((void)open.isInsidePositive(), kcShapesError::BadGeom);
}

TEST(WireframePolarity, AMirrorInvertsTheInsideNotTheFlag) {
  const kc2Wireframe w(box());
  for (const kcXform<2>& mirror : {kcXform<2>::scale(-1, 1), kcXform<2>(kcMatrix<2>(1, 2, 1, -1), V())}) {
    const kc2Wireframe m = w.map(mirror);
    EXPECT_FALSE(m.isInsidePositive());
    EXPECT_FALSE(m.isPolarityReversed());
  }
  EXPECT_TRUE(w.map(kcXform<2>(kcMatrix<2>(1, 2, 0, 1), V())).isInsidePositive());
  // A clockwise outline is negative until its polarity is reversed.
  kc2Wireframe cw(kcGenPoly(kcPolygon({V(0, 0), V(0, 2), V(3, 2), V(3, 0)})));
  EXPECT_FALSE(cw.isInsidePositive());
  cw.insidePolarity(true);
  EXPECT_TRUE(cw.isPolarityReversed());
}

TEST(WireframeShape, CopiesAndImagesStayWireframes) {
  const kc2Wireframe w(box(), kTol);
  EXPECT_EQ(classOf(w.clone()), typeid(kc2Wireframe));
  EXPECT_EQ(classOf(w.reverse()), typeid(kc2Wireframe));
  const kcShapePtr mapped = w.mapShape(kcXform<2>::rotation(kcRadian(0.5)));
  ASSERT_EQ(classOf(mapped), typeid(kc2Wireframe));
  EXPECT_FALSE(static_cast<const kc2Wireframe&>(*mapped).isEditable());
  EXPECT_EQ(w.map(kc2Rigid(kcRadian(0.5), V(1, 2)), 2.0).xform(),
            kc2Rigid(kcRadian(0.5), V(1, 2)).xform() * kcXform<2>::scale(2, 2));
  // Not equal to a plain polygon of the same data.
  const Probe probe(w);
  EXPECT_FALSE(probe.equal_(kcGenPoly(w)));
  EXPECT_TRUE(probe.equal_(w));
}

TEST(WireframePoly, PolysComeAndGoUnderSimilarities) {
  const kcSMDGDPoly source = kcSMDGDPoly::rectangle(4, 2, V(1, 1));
  const kc2Wireframe w = kcSMDGDPolyPrivate::wireframe(source);
  EXPECT_TRUE(w.isEditable());
  EXPECT_TRUE(w.xform().isIdentity());
  const kcSMDGDPoly back(w, L"pad");
  EXPECT_EQ(back, source);
  EXPECT_EQ(back.name(), L"pad");
  // A turn, a scale and a mirror: the poly holds the client geometry, and
  // its direction answers what the wireframe's polarity does.
  const kcXform<2> similar(kcMatrix<2>(0, 2, 2, 0), V(3, -1));
  const kc2Wireframe mirrored = w.map(similar);
  const kcSMDGDPoly image(mirrored, L"image");
  EXPECT_EQ(image.isDirectionPositive(), mirrored.isInsidePositive());
  for (long i = 0; i < 4; ++i)
    EXPECT_LE(image.vertices()[i].point().distance(mirrored.vertexPoint(i)), 1e-12);
  EXPECT_THROW(kcSMDGDPoly(w.map(kcXform<2>(kcMatrix<2>(1, 1, 0, 1), V())), L"x"), kcShapesError::BadGeom);
}

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
  const Bytes bytes = stored(kc2Wireframe(box()));
  Bytes wrong = bytes;
  wrong[0] = 1;
  dispc_test::expectUnknownVersion(wrong, target, "dispc/wrfm/wirefrm", 148);
  wrong = bytes;
  wrong[1] = 1;
  dispc_test::expectUnknownVersion(wrong, target, "dispc/wrfm/genpoly", 751);
  // The simple path moves the same bytes, and names its own lines.
  kc2Wireframe w(box());
  kcMemArchive out;
  w.loadSimple(out);
  EXPECT_EQ(out.bytes(), bytes);
  for (const auto& [at, file, line] :
       {std::tuple<std::size_t, const char*, int>{0, "dispc/wrfm/wirefrm", 131},
        std::tuple<std::size_t, const char*, int>{1, "dispc/wrfm/genpoly", 741}}) {
    Bytes bad = bytes;
    bad[at] = 0xFF;
    kc2Wireframe loaded = target;
    try {
      kcMemArchive in(bad);
      loaded.loadSimple(in);
      ADD_FAILURE() << "version accepted";
    } catch (const kcArchive::UnknownVersion& e) {
      EXPECT_EQ(e.file(), file);
      EXPECT_EQ(e.line(), line);
    }
    EXPECT_EQ(loaded, target);
  }
  kc2Wireframe back;
  kcMemArchive in(out.bytes());
  back.loadSimple(in);
  EXPECT_EQ(back, w);
}

}  // namespace
