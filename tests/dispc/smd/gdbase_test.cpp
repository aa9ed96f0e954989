#include "dispc/smd/gdbase.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;

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
  using dispc_test::stored;
  EXPECT_EQ(stored(SMDTestDescription(L"pad")), (Bytes{0, 3, 0, 0, 0, 'p', 0, 'a', 0, 'd', 0}));
  for (const wchar_t* name : {L"lead \u00e9", L""})
    EXPECT_EQ(dispc_test::loaded(stored(SMDTestDescription(name)), SMDTestDescription(L"old")).name(), name);
  dispc_test::expectRefused<kcArchive::UnknownVersion>(Bytes{1, 0, 0, 0, 0}, SMDTestDescription(L"old"));
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes{0, 3, 0, 0, 0, 'p', 0}, SMDTestDescription(L"old"));
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
