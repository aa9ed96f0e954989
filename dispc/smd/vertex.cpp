#include "dispc/smd/vertex.h"

#include <cmath>
#include <cstdint>
#include <ostream>

#include "foundation/archive.h"

namespace {
constexpr unsigned char kVertexVersion = 2;

bool near(double a, double b, double tol) { return std::fabs(a - b) <= tol; }
}  // namespace

// --- errors ---

KC_DEFINE_EXCEPTION(kcSMDGDPolyVertex::invalidSegmentLength, 0x11000350, kcSMDGDPolyVertex::Errors);

void kcSMDGDPolyVertex::invalidSegmentLength::message_(std::wostream& out) const {
  out << L"Invalid poly segment length specified at vertex.";
}

// --- construction ---

KC_DEFINE_PERSISTENT(kcSMDGDPolyVertex);

kcSMDGDPolyVertex::kcSMDGDPolyVertex(const kcVector<2>& point, double vertexRadius,
                                     const kcDegree& segmentAngleSpan, double percentPrev, double percentNext,
                                     long subModelLabel, const kcDimTol& segmentLengthTol)
    : point_(point),
      vertexRadius_(vertexRadius),
      segmentAngleSpan_(segmentAngleSpan),
      percentPrevSegment_(percentPrev),
      percentNextSegment_(percentNext),
      subModelLabel_(subModelLabel),
      segmentLengthTol_(segmentLengthTol) {
  checkPercent_(percentPrev);
  checkPercent_(percentNext);
}

kcSMDGDPolyVertex::kcSMDGDPolyVertex(const kcVector<2>& point, double percentPrev, double percentNext,
                                     long subModelLabel)
    : kcSMDGDPolyVertex(point, 0, kcDegree(0), percentPrev, percentNext, subModelLabel,
                        kcDimTol(-1, -1, -1, kcDimTol::eOffsets)) {}

kcSMDGDPolyVertex::kcSMDGDPolyVertex(const kcVector<2>& point, double vertexRadius, double percentPrev,
                                     double percentNext, long subModelLabel)
    : kcSMDGDPolyVertex(point, vertexRadius, kcDegree(0), percentPrev, percentNext, subModelLabel,
                        kcDimTol(-1, -1, -1, kcDimTol::eOffsets)) {}

kcSMDGDPolyVertex::~kcSMDGDPolyVertex() = default;

void kcSMDGDPolyVertex::checkPercent_(double p) {
  // Written so that NaN fails too.
  if (!(p >= kMinPercent && p <= kMaxPercent)) throw invalidSegmentLength();
}

// --- accessors ---

void kcSMDGDPolyVertex::point(const kcVector<2>& p) {
  mutating_();
  point_ = p;
}

void kcSMDGDPolyVertex::vertexRadius(double r) {
  mutating_();
  vertexRadius_ = r;
}

void kcSMDGDPolyVertex::segmentAngleSpan(const kcDegree& span) {
  mutating_();
  segmentAngleSpan_ = span;
}

void kcSMDGDPolyVertex::percentPrevSegment(double p) {
  checkPercent_(p);
  mutating_();
  percentPrevSegment_ = p;
}

void kcSMDGDPolyVertex::percentNextSegment(double p) {
  checkPercent_(p);
  mutating_();
  percentNextSegment_ = p;
}

void kcSMDGDPolyVertex::subModelLabel(long label) {
  mutating_();
  subModelLabel_ = label;
}

void kcSMDGDPolyVertex::segmentLengthTol(const kcDimTol& tol) {
  mutating_();
  segmentLengthTol_ = tol;
}

void kcSMDGDPolyVertex::forwardPercExtension(double p) {
  mutating_();
  forwardPercExtension_ = p;
}

void kcSMDGDPolyVertex::backwardPercExtension(double p) {
  mutating_();
  backwardPercExtension_ = p;
}

// --- comparison ---

bool kfRealEq(const kcSMDGDPolyVertex& a, const kcSMDGDPolyVertex& b, double tol) {
  // Spans are compared as directions, so 0 and 360 degrees (or -90 and 270)
  // are the same span.
  const kcRadian spanA(a.segmentAngleSpan_);
  const kcRadian spanB(b.segmentAngleSpan_);
  return near(a.point_.x(), b.point_.x(), tol) && near(a.point_.y(), b.point_.y(), tol) &&
         near(a.vertexRadius_, b.vertexRadius_, tol) && near(sin(spanA), sin(spanB), tol) &&
         near(cos(spanA), cos(spanB), tol) && near(a.percentPrevSegment_, b.percentPrevSegment_, tol) &&
         near(a.percentNextSegment_, b.percentNextSegment_, tol) && a.subModelLabel_ == b.subModelLabel_ &&
         a.segmentLengthTol_ == b.segmentLengthTol_ &&
         near(a.forwardPercExtension_, b.forwardPercExtension_, tol) &&
         near(a.backwardPercExtension_, b.backwardPercExtension_, tol);
}

int kcSMDGDPolyVertex::operator==(const kcSMDGDPolyVertex& o) const {
  return kfRealEq(*this, o, kEqualTol) ? 1 : 0;
}

// --- transforms ---

kcSMDGDPolyVertex operator*(const kc2Rigid& r, const kcSMDGDPolyVertex& v) {
  kcSMDGDPolyVertex mapped(v);
  mapped.point(r * v.point());
  return mapped;
}

kcSMDGDPolyVertex operator*(double s, const kcSMDGDPolyVertex& v) {
  kcSMDGDPolyVertex scaled(v.point_ * s, v.vertexRadius_ * s, v.segmentAngleSpan_, v.percentPrevSegment_,
                           v.percentNextSegment_, v.subModelLabel_, s * v.segmentLengthTol_);
  scaled.forwardPercExtension_ = v.forwardPercExtension_;
  scaled.backwardPercExtension_ = v.backwardPercExtension_;
  return scaled;
}

// --- drawing ---

void kcSMDGDPolyVertex::drawWireframe(const kcXform<2>&, kcUITablet&) const {}

void kcSMDGDPolyVertex::drawSynthetic(const kcXform<2>&, kcPelBuffer<unsigned char>&) const {}

// --- archive ---

void kcSMDGDPolyVertex::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVertexVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcSMDGDPolyVertex::serialize_(kcArchive& ar, unsigned char version) {
  if (version > kVertexVersion) throw kcArchive::UnknownVersion(nullptr, 0);
  kcSMDGeometricDescription::dispatchSerialize(ar);

  kcVector<2> point = point_;
  double radius = vertexRadius_;
  kcDegree span = segmentAngleSpan_;
  double percentPrev = percentPrevSegment_;
  double percentNext = percentNextSegment_;
  long label = subModelLabel_;
  ar || point || radius || span || percentPrev || percentNext || label;

  kcDimTol tol = segmentLengthTol_;
  switch (version) {
    case 0:
      // No tolerance was stored.
      tol = kcDimTol();
      break;
    case 1: {
      // The lower and upper offsets and an unused word.
      double lower = tol.minTol();
      double upper = tol.maxTol();
      std::uint32_t unused = 0;
      ar || lower || upper || unused;
      if (ar.isLoading()) tol = kcDimTol(segmentLengthTol_.nomDim(), lower, upper, kcDimTol::eOffsets);
      break;
    }
    default:
      ar || tol;
      break;
  }

  if (ar.isLoading()) {
    // A number that is not finite makes a vertex unequal to itself.
    if (!std::isfinite(point.x()) || !std::isfinite(point.y()) || !std::isfinite(radius) ||
        !std::isfinite(span.toDouble()))
      throw kcArchive::Corrupt(L"vertex number that is not finite");
    checkPercent_(percentPrev);
    checkPercent_(percentNext);
    mutating_();
    point_ = point;
    vertexRadius_ = radius;
    segmentAngleSpan_ = span;
    percentPrevSegment_ = percentPrev;
    percentNextSegment_ = percentNext;
    subModelLabel_ = label;
    segmentLengthTol_ = tol;
  }
}
