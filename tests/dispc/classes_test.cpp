#include "dispc/classes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

// What a program linked with the display core can bring back from an archive:
// a static link must keep every one of these.
TEST(Registry, HoldsTheDisplayCoreClasses) {
  const std::vector<std::string> dispc = {"kcUIError::BadLayer",
                                          "kcUIError::BadIconPattern",
                                          "kcUIError::FlagStackUnderflow",
                                          "kcUIError::FlagStackOverflow",
                                          "kcUIError::FlagStackOutOfRange",
                                          "kcUIError::NotAvailable",
                                          "kcUIError::NotEnabled",
                                          "kcUIError::BadKeyValue",
                                          "kcUIError::InvalidColorMapSize",
                                          "kcUIError::NotImplemented",
                                          "kcUIError::BadParams",
                                          "kcUIError::NotRGBColor",
                                          "kcUIError::NotIndexColor",
                                          "kcUIError::NoLongerSupported",
                                          "kcUIError::InvalidUISketch",
                                          "kcUIError::InitFailed",
                                          "kcGraphicProps::BadParams",
                                          "kcSMDDimension::badDimensionValue",
                                          "kcSMDGDPolyVertex::invalidSegmentLength",
                                          "kcSMDGDPoly::invalidVertices",
                                          "kcSMDGDPoly::crossingSegments",
                                          "kcSMDGDPoly::invalidIndex",
                                          "kcSMDGDPoly::invalidRounding",
                                          "kcSMDGDPoly::noPelBuffer",
                                          "kcSMDGDPoly::badSubModel",
                                          "kcSMDGDPoly::notClosed",
                                          "kcSMDGDModel::invalidIndex",
                                          "kcSMDGDModel::crossingPolys",
                                          "kcSMDGDModel::nestedPolys",
                                          "kcGraphicProps",
                                          "kcSMDGDPolyVertex",
                                          "kcSMDColors",
                                          "kcSMDGDPoly",
                                          "kcSMDGDPolyPrivate",
                                          "kcSMDGDModel",
                                          "kcSMDGDModelPrivate",
                                          "kcGenPoly",
                                          "kc2Wireframe"};
  std::vector<std::string> expected = dispc;
  for (const auto* exemplar : kfFoundationClasses()) expected.push_back(exemplar->name());
  expected.push_back("SMDTestDescription");  // this test program's own
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(kcPersistenceRegistry::names(), expected);

  ASSERT_EQ(kfDispcClasses().size(), dispc.size());
  for (const auto* exemplar : kfDispcClasses()) {
    std::unique_ptr<kcPersistent> made(exemplar->factory()());
    EXPECT_STREQ(made->className(), exemplar->name());
  }
}

}  // namespace
