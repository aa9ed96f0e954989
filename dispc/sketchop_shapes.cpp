// The payload classes that hold one foundation shape (their transfers are in
// sketchshapes_p.h).
#include "dispc/sketchshapes_p.h"

// Opcode 39's record starts with opcode 7's (sketchop_values.cpp).
template void sketchTransfer(kcSketchIO::Sizer&, kcEllipseAnnulusSection&);
template void sketchTransfer(kcSketchIO::Writer&, kcEllipseAnnulusSection&);
template void sketchTransfer(kcSketchIO::Reader&, kcEllipseAnnulusSection&);
template void sketchTransfer(kcSketchIO::Dumper&, kcEllipseAnnulusSection&);

#define DISPC_SKETCH_SHAPES_(X)              \
  X(Point, kcPoint)                          \
  X(PointIcon, kcPoint)                      \
  X(LineSeg, kcLineSeg)                      \
  X(Line, kcLine)                            \
  X(Circle, kcCircle)                        \
  X(Ellipse, kcEllipse)                      \
  X(EllipseArc, kcEllipseArc)                \
  X(EllipseAnnSect, kcEllipseAnnulusSection) \
  X(GenRect, kcGenRect)                      \
  X(GenAnn, kcGenAnnulus)                    \
  X(CoordAxes, kcCoordAxes)                  \
  X(DrawStart, kcPoint)                      \
  X(DrawTo, kcPoint)                         \
  X(AffineRect, kcAffineRectangle)           \
  X(Polygon, kcPolygon)                      \
  X(Rect, kcRect)                            \
  X(Cross, kcCross)                          \
  X(BezierCurve, kcBezierCurve)              \
  X(CubicSpline, kcCubicSpline)              \
  X(Polyline, kcPolyline)                    \
  X(Ellipse2, kcEllipse2)                    \
  X(EllipseArc2, kcEllipseArc2)              \
  X(ClipRect, kcRect)

#define DISPC_SKETCH_DEFINE_(Name, Value)                     \
  template class kc_UISketchOpOf<kc_UISketchOp##Name, Value>; \
  KC_DEFINE_PERSISTENT(kc_UISketchOp##Name)
DISPC_SKETCH_SHAPES_(DISPC_SKETCH_DEFINE_)
#undef DISPC_SKETCH_DEFINE_
