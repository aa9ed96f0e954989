#include "dispc/classes.h"

#include "dispc/dimtol.h"
#include "dispc/dispprop.h"
#include "dispc/glist.h"
#include "dispc/sketchop.h"
#include "dispc/smd/model.h"
#include "dispc/smd/modelprivate.h"
#include "dispc/smd/poly.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/smd/vertex.h"
#include "dispc/uierror.h"
#include "dispc/wrfm/colors.h"
#include "dispc/wrfm/genpoly.h"
#include "dispc/wrfm/wirefrm.h"

namespace {
constexpr const kcPersistenceRegistry::Exemplar* kClasses[] = {
    // errors
    &kcUIError::BadLayer::sExemplar,
    &kcUIError::BadIconPattern::sExemplar,
    &kcUIError::FlagStackUnderflow::sExemplar,
    &kcUIError::FlagStackOverflow::sExemplar,
    &kcUIError::FlagStackOutOfRange::sExemplar,
    &kcUIError::NotAvailable::sExemplar,
    &kcUIError::NotEnabled::sExemplar,
    &kcUIError::BadKeyValue::sExemplar,
    &kcUIError::InvalidColorMapSize::sExemplar,
    &kcUIError::NotImplemented::sExemplar,
    &kcUIError::BadParams::sExemplar,
    &kcUIError::NotRGBColor::sExemplar,
    &kcUIError::NotIndexColor::sExemplar,
    &kcUIError::NoLongerSupported::sExemplar,
    &kcUIError::InvalidUISketch::sExemplar,
    &kcUIError::InitFailed::sExemplar,
    &kcGraphicProps::BadParams::sExemplar,
    &kcGraphic::BadParams::sExemplar,
    &kcGraphic::NoGraphicForShape::sExemplar,
    &kcSMDDimension::badDimensionValue::sExemplar,
    &kcSMDGDPolyVertex::invalidSegmentLength::sExemplar,
    &kcSMDGDPoly::invalidVertices::sExemplar,
    &kcSMDGDPoly::crossingSegments::sExemplar,
    &kcSMDGDPoly::invalidIndex::sExemplar,
    &kcSMDGDPoly::invalidRounding::sExemplar,
    &kcSMDGDPoly::noPelBuffer::sExemplar,
    &kcSMDGDPoly::badSubModel::sExemplar,
    &kcSMDGDPoly::notClosed::sExemplar,
    &kcSMDGDModel::invalidIndex::sExemplar,
    &kcSMDGDModel::crossingPolys::sExemplar,
    &kcSMDGDModel::nestedPolys::sExemplar,
    // values
    &kcGraphicProps::sExemplar,
    &kcSMDGDPolyVertex::sExemplar,
    &kcSMDColors::sExemplar,
    &kcSMDGDPoly::sExemplar,
    &kcSMDGDPolyPrivate::sExemplar,
    &kcSMDGDModel::sExemplar,
    &kcSMDGDModelPrivate::sExemplar,
    &kcGenPoly::sExemplar,
    &kc2Wireframe::sExemplar,
// graphics
#define DISPC_GRAPHIC_SIMPLE_EXEMPLAR_(T) &kcGraphicSimple<T>::sExemplar,
#define DISPC_GRAPHIC_FILLED_EXEMPLAR_(T, U) &kcGraphicWithFill<T, U>::sExemplar,
    DISPC_GRAPHIC_SIMPLE_SHAPES(DISPC_GRAPHIC_SIMPLE_EXEMPLAR_)
            DISPC_GRAPHIC_FILLED_SHAPES(DISPC_GRAPHIC_FILLED_EXEMPLAR_)
#undef DISPC_GRAPHIC_FILLED_EXEMPLAR_
#undef DISPC_GRAPHIC_SIMPLE_EXEMPLAR_
        & kcGraphicText::sExemplar,
    &kcGraphicCross::sExemplar,
    &kcGraphicPointIcon::sExemplar,
    &kcGraphicEllipseAnnulusSection::sExemplar,
    &kcGraphicGroup::sExemplar,
    // sketch records
    &kc_UISketchOpHeader::sExemplar,
#define DISPC_SKETCH_EXEMPLAR_(Name, Value) &kc_UISketchOp##Name::sExemplar,
    DISPC_SKETCH_PAYLOADS(DISPC_SKETCH_EXEMPLAR_)
#undef DISPC_SKETCH_EXEMPLAR_
        & kc_UISketchOpGenPoly::sExemplar,
    &kc_UISketchOpWireframe::sExemplar,
};
}  // namespace

std::span<const kcPersistenceRegistry::Exemplar* const> kfDispcClasses() { return kClasses; }
