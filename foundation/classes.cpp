// The list of the foundation's persistent classes. Naming each exemplar here
// links its class into any program that loads archives, static builds included.
#include "foundation/archive.h"
#include "foundation/exception.h"
#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/annulus.h"
#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/coordaxes.h"
#include "foundation/shapes/cross.h"
#include "foundation/shapes/deboorspline.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipseannulus.h"
#include "foundation/shapes/ellipseannulussection.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/hermitespline.h"
#include "foundation/shapes/interpspline.h"
#include "foundation/shapes/line.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/linesegset.h"
#include "foundation/shapes/point.h"
#include "foundation/shapes/pointset.h"
#include "foundation/shapes/polygon.h"
#include "foundation/shapes/polyline.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shapetree.h"
#include "foundation/shapes/spline.h"
#include "foundation/xform.h"

namespace {
constexpr const kcPersistenceRegistry::Exemplar* kClasses[] = {
    // exceptions
    &kcExceptionWithString::sExemplar,
    &kcBadPointer::sExemplar,
    &kcMathError::Singular::sExemplar,
    &kcShapesError::BadGeom::sExemplar,
    &kcShapesError::BadRadius::sExemplar,
    &kcShapesError::BadCoef::sExemplar,
    &kcShapesError::DegenerateShape::sExemplar,
    &kcShapesError::EmptyShape::sExemplar,
    &kcShapesError::NotOpenContour::sExemplar,
    &kcShapesError::NotRegion::sExemplar,
    &kcShapesError::NoTangent::sExemplar,
    &kcShapesError::BadParams::sExemplar,
    &kcFoundationError::LibraryFailure::sExemplar,
    &kcArchive::UnknownVersion::sExemplar,
    &kcArchive::Corrupt::sExemplar,
    &kcArchive::ValueOutOfRange::sExemplar,
    &kcArchive::FileError::sExemplar,
    // transforms
    &kc2XformLinear::sExemplar,
    // shapes
    &kcPoint::sExemplar,
    &kc2Point::sExemplar,
    &kcPointSet::sExemplar,
    &kcLineSeg::sExemplar,
    &kcLineSegSet::sExemplar,
    &kcLine::sExemplar,
    &kcFLine::sExemplar,
    &kcRect::sExemplar,
    &kcAffineRectangle::sExemplar,
    &kcGenRect::sExemplar,
    &kcCircle::sExemplar,
    &kcEllipse::sExemplar,
    &kcEllipse2::sExemplar,
    &kcEllipseArc::sExemplar,
    &kcEllipseArc2::sExemplar,
    &kcAnnulus::sExemplar,
    &kcGenAnnulus::sExemplar,
    &kcEllipseAnnulus::sExemplar,
    &kcEllipseAnnulusSection::sExemplar,
    &kcPolygon::sExemplar,
    &kcPolyline::sExemplar,
    &kcBezierCurve::sExemplar,
    &kcCubicSpline::sExemplar,
    &kcDeBoorSpline::sExemplar,
    &kcInterpSpline::sExemplar,
    &kcHermiteSpline::sExemplar,
    &kcCoordAxes::sExemplar,
    &kcCross::sExemplar,
    &kcShapeTree::sExemplar,
    &kcGenShape::sExemplar,
};
}  // namespace

std::span<const kcPersistenceRegistry::Exemplar* const> kfFoundationClasses() { return kClasses; }
