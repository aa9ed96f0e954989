// A sample value of every sketch payload class, with no field at its
// default, and sketches made of them: shared by the sketch tests, the seed
// writer of the sketch fuzz targets and the sketch benchmark.
#pragma once

#include <type_traits>
#include <utility>

#include "dispc/sketchop.h"

namespace sketchsamples {

template <class V>
struct Sample;

#define SAMPLE_(Type, ...)                     \
  template <>                                  \
  struct Sample<Type> {                        \
    static Type make() { return __VA_ARGS__; } \
  }

inline const kcXform<2> kSheared(kcMatrix<2>(2.0, 0.5, -0.25, 1.5), kcVector<2>(3.0, -4.0));

SAMPLE_(kcPoint, kcPoint(1.5, -2.25));
SAMPLE_(kcLineSeg, kcLineSeg({1, 2}, {-3, 4.5}));
SAMPLE_(kcLine, kcLine({1, 2}, {0.5, -1}));
SAMPLE_(kcCircle, kcCircle({7, 8}, 2.5));
SAMPLE_(kcEllipse, kcEllipse(kSheared));
SAMPLE_(kcEllipseArc, kcEllipseArc(kcEllipse(kSheared), kcRadian(0.25), kcRadian(-2.0)));
SAMPLE_(kcEllipseAnnulusSection,
        kcEllipseAnnulusSection(kcEllipseAnnulus(kcEllipse2(3, 2, kcRadian(0.5), {1, 1}), 0.4), kcRadian(1.0),
                                kcRadian(2.0)));
SAMPLE_(kcGenRect, kcGenRect(kSheared, 0.25, 0.5));
SAMPLE_(kcGenAnnulus, kcGenAnnulus(kcGenRect(kSheared, 0.25, 0.5), 0.3));
SAMPLE_(kcCoordAxes, kcCoordAxes(kSheared));
SAMPLE_(kcAffineRectangle, kcAffineRectangle(kSheared));
SAMPLE_(kcPolygon, kcPolygon({{0, 0}, {4, 0}, {4, 3}, {1, 2}}));
SAMPLE_(kcRect, kcRect({1, 2}, {30, 40}));
SAMPLE_(kcCross, kcCross({5, 6}, 3.0, kcRadian(0.3)));
SAMPLE_(kcBezierCurve, kcBezierCurve({0, 0}, {1, 2}, {3, 2}, {4, 0}));
SAMPLE_(kcCubicSpline, kcCubicSpline({{0, 0}, {1, 2}, {3, 2}, {4, 0}, {5, -2}, {7, -2}, {8, 0}}));
SAMPLE_(kcPolyline, kcPolyline({{0, 0}, {4, 0}, {4, 3}}, true));
SAMPLE_(kcEllipse2, kcEllipse2(3, 2, kcRadian(0.75), {-1, 5}));
SAMPLE_(kcEllipseArc2, kcEllipseArc2(kcEllipse2(3, 2, kcRadian(0.75), {-1, 5}), kcRadian(-1), kcRadian(1.5)));
SAMPLE_(kc_UISketchArea, kc_UISketchArea{true, {}, kcUIRect(3, 4, 50, 60)});
SAMPLE_(kc_UISketchFill, kc_UISketchFill{false, {2.5, 3.5}, 0, 0, kcColor(10, 20, 30), 1});
SAMPLE_(kc_UISketchPelOffset, kc_UISketchPelOffset{-7, 9});
SAMPLE_(kc_UISketchOutline3d, kc_UISketchOutline3d{kc_UISketchArea{false, kcRect({1, 2}, {3, 4}), {}},
                                                   kcColor::white, kcColor(5), 3});
SAMPLE_(kc_UISketchArrow, kc_UISketchArrow{{1, 2}, {0.6, 0.8}, 7.5f});
SAMPLE_(kc_UISketchText<char>,
        kc_UISketchText<char>{{10, 20}, kcColor::blue, kcUIFormat(3, kcUIFormat::center), "Pin 1"});
SAMPLE_(kc_UISketchText<char16_t>,
        kc_UISketchText<char16_t>{{10, 20}, kcColor::blue, kcUIFormat(2, kcUIFormat::bottomRight), u"Ω pad"});
SAMPLE_(kc_UISketchNothing, kc_UISketchNothing{});
SAMPLE_(kc_UISketchGenShape, kc_UISketchGenShape{kcColor::orange, kcGenShape(kcCircle({1, 1}, 2))});
SAMPLE_(kc_UISketchArrowSection,
        kc_UISketchArrowSection{Sample<kcEllipseAnnulusSection>::make(), {1, 0, 1}, {0, 1, 1}});

#undef SAMPLE_

template <>
struct Sample<kc_UISketchImage> {
  static kc_UISketchImage make() {
    kc_UISketchImage v;
    v.position = {4, 5};
    v.passThrough = true;
    v.passColor = 243;
    v.mapped = true;
    v.offsetX = 2;
    v.offsetY = 1;
    v.image = kcPelBuffer<unsigned char>(3, 2);
    for (long y = 0; y < 2; ++y)
      for (long x = 0; x < 3; ++x) v.image.put(x, y, static_cast<unsigned char>(10 * y + x));
    v.image.imageFromClientXform(kSheared);
    return v;
  }
};

template <>
struct Sample<kc_UISketchRleImage> {
  static kc_UISketchRleImage make() {
    kcPelBuffer<unsigned char> image(4, 2);
    image.put(1, 1, 9);
    kc_UISketchRleImage v;
    v.position = {1, 1};
    v.passColor = 7;
    v.colorTable = {0, 9, 200};
    v.image = kcRLEBuffer(image);
    return v;
  }
};

inline kcSMDGDPoly samplePoly() {
  kcSMDGDPoly p(L"pad");
  p.vertices(
      {kcSMDGDPolyVertex({0, 0}, 1.0, kcDegree(0), 0.5, 0.5, 2, kcDimTol()),
       kcSMDGDPolyVertex({10, 0}, 0.0, kcDegree(30), 0.5, 0.5, 2, kcDimTol(10, 9.5, 10.5, kcDimTol::eLimits)),
       kcSMDGDPolyVertex({10, 8}, 2.0, kcDegree(0), 0.25, 0.75, -1, kcDimTol()),
       kcSMDGDPolyVertex({0, 8}, 0.0, kcDegree(0), 0.5, 0.5, -1,
                         kcDimTol(0.5, 0.1, 0.2, kcDimTol::eOffsets))});
  p.close();
  return p;
}

template <>
struct Sample<kcGenPoly> {
  static kcGenPoly make() { return kcGenPoly(samplePoly(), kSheared, false); }
};
template <>
struct Sample<kc2Wireframe> {
  static kc2Wireframe make() { return kc2Wireframe(kcGenPoly(samplePoly())); }
};

template <>
struct Sample<kc_UISketchNested> {
  static kc_UISketchNested make() {
    kc_UISketchNested v;
    v.offset = {100, 200};
    v.sketch.opcode(2, 0, kcColor::red);
    kc_UISketchOpLineSeg::write(v.sketch, Sample<kcLineSeg>::make());
    return v;
  }
};

// --- one record of every opcode ---

// Appends a record of opcode op (with a properties record before it when
// props is given) holding the sample value of its class.
inline void appendSample(kcUISketch& s, long op, long layer = 1, const kcGraphicProps* props = nullptr) {
  if (props) s.opcode(kcUISketch::kPropsOpcode, *props);
  s.opcode(static_cast<signed char>(op), static_cast<signed char>(layer),
           kcColor(static_cast<unsigned char>(op)));
  switch (op) {
#define SAMPLE_CASE_(code, Name, size)                                                                  \
  case code:                                                                                            \
    kc_UISketchOp##Name::write(                                                                         \
        s, Sample<std::remove_cvref_t<decltype(std::declval<kc_UISketchOp##Name>().value())>>::make()); \
    break;
    DISPC_SKETCH_OPCODES(SAMPLE_CASE_)
#undef SAMPLE_CASE_
    default:
      break;
  }
}

inline kcUISketch everyOpcode() {
  kcUISketch s;
  const kcGraphicProps wide(kcColor::red, 3, kcGraphicProps::penDash, true);
  for (const kcUISketchOps::Entry& e : kcUISketchOps::kTable)
    appendSample(s, e.opcode, e.opcode % 3, e.opcode % 5 == 0 ? &wide : nullptr);
  return s;
}

}  // namespace sketchsamples
