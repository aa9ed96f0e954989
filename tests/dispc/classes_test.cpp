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
                                          "kcGraphic::BadParams",
                                          "kcGraphic::NoGraphicForShape",
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
                                          "kc2Wireframe",
                                          "kcGraphicSimple<kc2Point>",
                                          "kcGraphicSimple<kc2Wireframe>",
                                          "kcGraphicSimple<kcAffineRectangle>",
                                          "kcGraphicSimple<kcBezierCurve>",
                                          "kcGraphicSimple<kcCoordAxes>",
                                          "kcGraphicSimple<kcDeBoorSpline>",
                                          "kcGraphicSimple<kcEllipseArc2>",
                                          "kcGraphicSimple<kcEllipseArc>",
                                          "kcGraphicSimple<kcFLine>",
                                          "kcGraphicSimple<kcGenAnnulus>",
                                          "kcGraphicSimple<kcGenPoly>",
                                          "kcGraphicSimple<kcHermiteSpline>",
                                          "kcGraphicSimple<kcInterpSpline>",
                                          "kcGraphicSimple<kcLine>",
                                          "kcGraphicSimple<kcLineSeg>",
                                          "kcGraphicSimple<kcLineSegSet>",
                                          "kcGraphicSimple<kcPoint>",
                                          "kcGraphicSimple<kcPointSet>",
                                          "kcGraphicSimple<kcPolygon>",
                                          "kcGraphicSimple<kcPolyline>",
                                          "kcGraphicWithFill<kcAnnulus, kcGenAnnulus>",
                                          "kcGraphicWithFill<kcCircle, kcEllipse2>",
                                          "kcGraphicWithFill<kcCircle, kcEllipse>",
                                          "kcGraphicWithFill<kcEllipse2, kcEllipse2>",
                                          "kcGraphicWithFill<kcEllipse, kcEllipse>",
                                          "kcGraphicWithFill<kcEllipseAnnulus, kcEllipseAnnulus>",
                                          "kcGraphicWithFill<kcGenAnnulus, kcGenAnnulus>",
                                          "kcGraphicWithFill<kcGenRect, kcGenRect>",
                                          "kcGraphicWithFill<kcRect, kcGenRect>",
                                          "kcGraphicText",
                                          "kcGraphicCross",
                                          "kcGraphicPointIcon",
                                          "kcGraphicEllipseAnnulusSection",
                                          "kcGraphicGroup",
                                          "kc_UISketchOpHeader",
                                          "kc_UISketchOpPoint",
                                          "kc_UISketchOpPointIcon",
                                          "kc_UISketchOpLineSeg",
                                          "kc_UISketchOpLine",
                                          "kc_UISketchOpCircle",
                                          "kc_UISketchOpEllipse",
                                          "kc_UISketchOpEllipseArc",
                                          "kc_UISketchOpEllipseAnnSect",
                                          "kc_UISketchOpGenRect",
                                          "kc_UISketchOpGenAnn",
                                          "kc_UISketchOpCoordAxes",
                                          "kc_UISketchOpString",
                                          "kc_UISketchOpPelBuf8",
                                          "kc_UISketchOpRleBuf",
                                          "kc_UISketchOpSketch",
                                          "kc_UISketchOpSet",
                                          "kc_UISketchOpSetAll",
                                          "kc_UISketchOpSetComp",
                                          "kc_UISketchOpFill",
                                          "kc_UISketchOpDrawStart",
                                          "kc_UISketchOpDrawTo",
                                          "kc_UISketchOpDrawToRelPels",
                                          "kc_UISketchOpMoveToRelPels",
                                          "kc_UISketchOpOutline3d",
                                          "kc_UISketchOpArrow",
                                          "kc_UISketchOpAffineRect",
                                          "kc_UISketchOpPolygon",
                                          "kc_UISketchOpRect",
                                          "kc_UISketchOpGenShape",
                                          "kc_UISketchOpUnicodeString",
                                          "kc_UISketchOpCross",
                                          "kc_UISketchOpEllipseAnnSectArrowheadFlag",
                                          "kc_UISketchOpBezierCurve",
                                          "kc_UISketchOpCubicSpline",
                                          "kc_UISketchOpPolyline",
                                          "kc_UISketchOpEllipse2",
                                          "kc_UISketchOpEllipseArc2",
                                          "kc_UISketchOpClipRect",
                                          "kc_UISketchOpGenPoly",
                                          "kc_UISketchOpWireframe"};
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
