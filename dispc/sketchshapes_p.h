// The sketch transfers of the payloads that hold one foundation shape: each
// shape's fields in record order, with the zero bytes that keep its record
// at its table size. In a header so that a recorder (the tablet) writes
// these records inline; sketchop_shapes.cpp instantiates them for the
// payload classes.
#pragma once

#include <cstdint>
#include <vector>

#include "dispc/sketchio_p.h"

namespace kcSketchShapes {

// Where a point list's bounds come from: two 64-bit floats a point.
inline constexpr std::size_t kPointBytes = 16;

template <class IO>
void transferAngle(IO& io, const char* name, kcRadian& a) {
  double value = a.toDouble();
  io(name, value);
  if constexpr (IO::kLoading) a = kcRadian(value);
}

// A count and the points it counts: written from points, or read into it.
template <class IO>
void transferPoints(IO& io, const char* name, std::vector<kcVector<2>>& points) {
  std::uint32_t n = static_cast<std::uint32_t>(points.size());
  io.count(name, n, kPointBytes);
  if constexpr (IO::kLoading) points.resize(n);
  for (kcVector<2>& p : points) io(name, p);
}

// The points of a shape that holds a list of them.
template <class IO, class Shape>
std::vector<kcVector<2>> transferShapePoints(IO& io, const char* name, const Shape& v,
                                             const std::vector<kcVector<2>>& (Shape::*points)() const) {
  std::vector<kcVector<2>> loaded;
  if constexpr (IO::kLoading)
    transferPoints(io, name, loaded);
  else
    transferPoints(io, name, const_cast<std::vector<kcVector<2>>&>((v.*points)()));  // read only
  return loaded;
}

// The fields of a kcEllipse2, shared by 7, 39, 45 and 46.
template <class IO>
void transferEllipse2(IO& io, kcEllipse2& e) {
  double rx = e.radiusX();
  double ry = e.radiusY();
  kcRadian rotation = e.rotation();
  kcVector<2> centre = e.center();
  io("rx", rx);
  io("ry", ry);
  transferAngle(io, "rotation", rotation);
  io("centre", centre);
  if constexpr (IO::kLoading) e = kcEllipse2(rx, ry, rotation, centre);
}

// The fields of a kcGenRect, shared by 8, 31 and 9.
template <class IO>
void transferGenRectFields(IO& io, kcGenRect& r) {
  kcXform<2> x = r.xform();
  double roundX = r.roundX();
  double roundY = r.roundY();
  io("xform", x);
  io("roundX", roundX);
  io("roundY", roundY);
  if constexpr (IO::kLoading) r = kcGenRect(x, roundX, roundY);
}

// The fields of an annulus section, without its padding (7 and 39).
template <class IO>
void transferSectionFields(IO& io, kcEllipseAnnulusSection& s) {
  kcEllipse2 outer = s.annulus().outer();
  double scale = s.annulus().innerScale();
  kcRadian start = s.angleStart();
  kcRadian span = s.angleSpan();
  transferEllipse2(io, outer);
  io("innerScale", scale);
  transferAngle(io, "start", start);
  transferAngle(io, "span", span);
  if constexpr (IO::kLoading) s = kcEllipseAnnulusSection(kcEllipseAnnulus(outer, scale), start, span);
}

// Record sizes of the padded shapes.
inline constexpr std::size_t kEllipseArcBytes = 192;
inline constexpr std::size_t kSectionBytes = 552;
inline constexpr std::size_t kGenRectBytes = 152;
inline constexpr std::size_t kGenAnnulusBytes = 360;
inline constexpr std::size_t kAffineRectBytes = 232;
inline constexpr std::size_t kBezierBytes = 96;
// The fields' own sizes.
inline constexpr std::size_t kEllipseArcFields = 64;
inline constexpr std::size_t kSectionFields = 64;
inline constexpr std::size_t kGenRectFields = 64;
inline constexpr std::size_t kGenAnnulusFields = 72;
inline constexpr std::size_t kAffineRectFields = 48;
inline constexpr std::size_t kBezierFields = 64;

}  // namespace kcSketchShapes

template <class IO>
void sketchTransfer(IO& io, kcPoint& v) {
  kcVector<2> p = v.point();
  io("at", p);
  if constexpr (IO::kLoading) v = kcPoint(p);
}

template <class IO>
void sketchTransfer(IO& io, kcLineSeg& v) {
  kcVector<2> p1 = v.p1();
  kcVector<2> p2 = v.p2();
  io("p1", p1);
  io("p2", p2);
  if constexpr (IO::kLoading) v = kcLineSeg(p1, p2);
}

template <class IO>
void sketchTransfer(IO& io, kcLine& v) {
  kcVector<2> point = v.point();
  kcVector<2> direction = v.direction();
  io("point", point);
  io("direction", direction);
  if constexpr (IO::kLoading) v = kcLine(point, direction);
}

template <class IO>
void sketchTransfer(IO& io, kcCircle& v) {
  kcVector<2> centre = v.center();
  double radius = v.radius();
  io("centre", centre);
  io("radius", radius);
  if constexpr (IO::kLoading) v = kcCircle(centre, radius);
}

template <class IO>
void sketchTransfer(IO& io, kcEllipse& v) {
  kcXform<2> x = v.xform();
  io("xform", x);
  if constexpr (IO::kLoading) v = kcEllipse(x);
}

template <class IO>
void sketchTransfer(IO& io, kcEllipseArc& v) {
  kcXform<2> x = v.ellipse().xform();
  kcRadian start = v.angleStart();
  kcRadian span = v.angleSpan();
  io("xform", x);
  kcSketchShapes::transferAngle(io, "start", start);
  kcSketchShapes::transferAngle(io, "span", span);
  io.zeros(kcSketchShapes::kEllipseArcBytes - kcSketchShapes::kEllipseArcFields);
  if constexpr (IO::kLoading) v = kcEllipseArc(kcEllipse(x), start, span);
}

template <class IO>
void sketchTransfer(IO& io, kcEllipseAnnulusSection& v) {
  kcSketchShapes::transferSectionFields(io, v);
  io.zeros(kcSketchShapes::kSectionBytes - kcSketchShapes::kSectionFields);
}

template <class IO>
void sketchTransfer(IO& io, kcGenRect& v) {
  kcSketchShapes::transferGenRectFields(io, v);
  io.zeros(kcSketchShapes::kGenRectBytes - kcSketchShapes::kGenRectFields);
}

template <class IO>
void sketchTransfer(IO& io, kcGenAnnulus& v) {
  kcGenRect outer = v.outer();
  double scale = v.innerScale();
  kcSketchShapes::transferGenRectFields(io, outer);
  io("innerScale", scale);
  io.zeros(kcSketchShapes::kGenAnnulusBytes - kcSketchShapes::kGenAnnulusFields);
  if constexpr (IO::kLoading) v = kcGenAnnulus(outer, scale);
}

template <class IO>
void sketchTransfer(IO& io, kcCoordAxes& v) {
  kcXform<2> x = v.xform();
  io("xform", x);
  if constexpr (IO::kLoading) v = kcCoordAxes(x);
}

template <class IO>
void sketchTransfer(IO& io, kcAffineRectangle& v) {
  kcXform<2> x = v.xform();
  io("xform", x);
  io.zeros(kcSketchShapes::kAffineRectBytes - kcSketchShapes::kAffineRectFields);
  if constexpr (IO::kLoading) v = kcAffineRectangle(x);
}

template <class IO>
void sketchTransfer(IO& io, kcPolygon& v) {
  std::vector<kcVector<2>> points =
      kcSketchShapes::transferShapePoints(io, "vertices", v, &kcPolygon::vertices);
  if constexpr (IO::kLoading) v = kcPolygon(std::move(points));
}

template <class IO>
void sketchTransfer(IO& io, kcRect& v) {
  kcVector<2> origin = v.origin();
  kcVector<2> size = v.size();
  io("origin", origin);
  io("size", size);
  if constexpr (IO::kLoading) {
    v = kcRect(origin, size);
    // An empty rectangle comes back as the empty one, which writes other bytes.
    if (!kcSketchIO::sameBits(v.origin(), origin) || !kcSketchIO::sameBits(v.size(), size))
      kcSketchIO::Reader::invalid();
  }
}

template <class IO>
void sketchTransfer(IO& io, kcCross& v) {
  kcVector<2> centre = v.centre();
  double arm = v.armLength();
  kcRadian rotation = v.rotation();
  io("centre", centre);
  io("arm", arm);
  kcSketchShapes::transferAngle(io, "rotation", rotation);
  if constexpr (IO::kLoading) v = kcCross(centre, arm, rotation);
}

template <class IO>
void sketchTransfer(IO& io, kcBezierCurve& v) {
  kcBezierCurve::ControlPoints points = v.controlPoints();
  for (kcVector<2>& p : points) io("control", p);
  io.zeros(kcSketchShapes::kBezierBytes - kcSketchShapes::kBezierFields);
  if constexpr (IO::kLoading) v = kcBezierCurve(points);
}

template <class IO>
void sketchTransfer(IO& io, kcCubicSpline& v) {
  std::vector<kcVector<2>> points =
      kcSketchShapes::transferShapePoints(io, "bezier", v, &kcCubicSpline::bezierPoints);
  if constexpr (IO::kLoading) v = kcCubicSpline(std::move(points));
}

template <class IO>
void sketchTransfer(IO& io, kcPolyline& v) {
  std::vector<kcVector<2>> points =
      kcSketchShapes::transferShapePoints(io, "vertices", v, &kcPolyline::vertices);
  bool closed = v.closed();
  io("closed", closed);
  if constexpr (IO::kLoading) v = kcPolyline(std::move(points), closed);
}

template <class IO>
void sketchTransfer(IO& io, kcEllipse2& v) {
  kcSketchShapes::transferEllipse2(io, v);
}

template <class IO>
void sketchTransfer(IO& io, kcEllipseArc2& v) {
  kcEllipse2 e = v.ellipse();
  kcRadian start = v.angleStart();
  kcRadian span = v.angleSpan();
  kcSketchShapes::transferEllipse2(io, e);
  io.zeros(1);
  kcSketchShapes::transferAngle(io, "start", start);
  kcSketchShapes::transferAngle(io, "span", span);
  io.zeros(8);
  if constexpr (IO::kLoading) v = kcEllipseArc2(e, start, span);
}
