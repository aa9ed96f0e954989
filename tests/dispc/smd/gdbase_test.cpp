#include "dispc/smd/gdbase.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/archive.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A description that records the transforms it is asked to draw with.
class SMDTestDescription : public kcSMDGeometricDescription {
 public:
  KC_DECLARE_PERSISTENT(SMDTestDescription);
  explicit SMDTestDescription(std::wstring name = L"") : kcSMDGeometricDescription(std::move(name)) {}
  void drawWireframe(const kcXform<2>&, kcUITablet&) const override {}
  using kcSMDGeometricDescription::drawSynthetic;
  void drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>&) const override {
    drawn.push_back(xform);
  }
  mutable std::vector<kcXform<2>> drawn;
};
KC_DEFINE_PERSISTENT(SMDTestDescription);

TEST(GeometricDescription, ArchivePrefixKeepsTheName) {
  SMDTestDescription pad(L"pad");
  kcMemArchive out;
  pad.kcSMDGeometricDescription::dispatchSerialize(out);
  EXPECT_EQ(out.bytes(), (Bytes{0, 3, 0, 0, 0, 'p', 0, 'a', 0, 'd', 0}));
  for (const wchar_t* name : {L"lead \u00e9", L""}) {
    SMDTestDescription source(name), target(L"old");
    kcMemArchive ar;
    source.kcSMDGeometricDescription::dispatchSerialize(ar);
    kcMemArchive in(ar.bytes());
    target.kcSMDGeometricDescription::dispatchSerialize(in);
    EXPECT_EQ(target.name(), name);
  }
  SMDTestDescription target(L"old");
  kcMemArchive wrong(Bytes{1, 0, 0, 0, 0});
  EXPECT_THROW(target.kcSMDGeometricDescription::dispatchSerialize(wrong), kcArchive::UnknownVersion);
  kcMemArchive cut(Bytes{0, 3, 0, 0, 0, 'p', 0});
  EXPECT_THROW(target.kcSMDGeometricDescription::dispatchSerialize(cut), kcArchive::Corrupt);
  EXPECT_EQ(target.name(), L"old");
}

TEST(GeometricDescription, HandleOverloadOfDrawSynthetic) {
  SMDTestDescription d;
  kcPelBuffer<unsigned char> buffer(4, 4);
  EXPECT_THROW(d.drawSynthetic(kcPtrHandle_const<kc2XformBase>(), buffer), kcBadPointer);
  EXPECT_TRUE(d.drawn.empty());
  const kcXform<2> xform = kcXform<2>::translation(kcVector<2>(2, 3)) * kcXform<2>::scale(2, 5);
  d.drawSynthetic(kcPtrHandle_const<kc2XformBase>(new kc2XformLinear(xform)), buffer);
  ASSERT_EQ(d.drawn.size(), 1u);
  EXPECT_TRUE(d.drawn[0] == xform);
}

}  // namespace
