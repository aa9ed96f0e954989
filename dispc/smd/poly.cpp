#include "dispc/smd/poly.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include "dispc/smd/polyindex_p.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/uierror.h"

namespace {
constexpr const char* kSource = "dispc/smd/poly";
constexpr unsigned char kVersion = 1;
}  // namespace

// --- errors ---

KC_DEFINE_EXCEPTION(kcSMDGDPoly::invalidVertices, 0x11000360, kcSMDGDPoly::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDPoly::crossingSegments, 0x11000361, kcSMDGDPoly::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDPoly::invalidIndex, 0x11000362, kcSMDGDPoly::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDPoly::invalidRounding, 0x11000363, kcSMDGDPoly::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDPoly::noPelBuffer, 0x11000364, kcSMDGDPoly::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDPoly::badSubModel, 0x11000365, kcSMDGDPoly::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDPoly::notClosed, 0x11000366, kcSMDGDPoly::Errors);

void kcSMDGDPoly::invalidVertices::message_(std::wostream& out) const { out << L"Invalid poly vertices."; }
void kcSMDGDPoly::crossingSegments::message_(std::wostream& out) const {
  out << L"Two or more poly segments cross.";
}
void kcSMDGDPoly::invalidIndex::message_(std::wostream& out) const {
  out << L"Invalid index for poly vertex or segment.";
}
void kcSMDGDPoly::invalidRounding::message_(std::wostream& out) const {
  out << L"Invalid radius for poly vertex rounding.";
}
void kcSMDGDPoly::noPelBuffer::message_(std::wostream& out) const { out << L"No pel buffer to draw on."; }
void kcSMDGDPoly::badSubModel::message_(std::wostream& out) const {
  out << L"The specified sub-model is not 2D";
}
void kcSMDGDPoly::notClosed::message_(std::wostream& out) const {
  out << L"An operation was performed which requires a closed poly.";
}

KC_DEFINE_PERSISTENT(kcSMDGDPoly);

// --- what an edit changed ---

// Enough to put an edit back: the vertex it inserted, erased or replaced, the
// label list where the edit rebuilt it, and every rounding cache entry as it
// was before validation first changed it.
struct kcSMDGDPoly::Undo {
  struct Rounding {
    int v;
    kcVector<2> start, end;
    double span;
  };
  int inserted = -1;
  int erased = -1;
  int replaced = -1;
  kcSMDGDPolyVertex vertex;
  Rounding erasedRounding{};
  std::size_t labelCount = 0;
  std::vector<std::int32_t> labels;
  bool labelsSaved = false;
  std::vector<Rounding> roundings;
};

// Runs change, then lets its validation throw: on a kcException everything
// the edit did is put back and the exception goes on unchanged.
template <class Edit>
void kcSMDGDPoly::edit_(Edit&& change, Undo& undo) {
  undo.labelCount = labels_.size();
  undo_ = &undo;
  try {
    change();
    undo_ = nullptr;
  } catch (const kcException&) {
    undo_ = nullptr;
    for (auto r = undo.roundings.rbegin(); r != undo.roundings.rend(); ++r) {
      roundStart_[r->v] = r->start;
      roundEnd_[r->v] = r->end;
      roundSpan_[r->v] = r->span;
    }
    if (undo.inserted >= 0) {
      vertices_.erase(vertices_.begin() + undo.inserted);
      roundStart_.erase(roundStart_.begin() + undo.inserted);
      roundEnd_.erase(roundEnd_.begin() + undo.inserted);
      roundSpan_.erase(roundSpan_.begin() + undo.inserted);
    }
    if (undo.erased >= 0) {
      vertices_.insert(vertices_.begin() + undo.erased, undo.vertex);
      roundStart_.insert(roundStart_.begin() + undo.erased, undo.erasedRounding.start);
      roundEnd_.insert(roundEnd_.begin() + undo.erased, undo.erasedRounding.end);
      roundSpan_.insert(roundSpan_.begin() + undo.erased, undo.erasedRounding.span);
    }
    if (undo.replaced >= 0) vertices_[undo.replaced] = undo.vertex;
    if (undo.labelsSaved)
      labels_ = std::move(undo.labels);
    else
      labels_.resize(undo.labelCount);
    if (spatial_) spatial_->invalidate();
    throw;
  }
}

void kcSMDGDPoly::setRounding_(int v, const kcVector<2>& start, const kcVector<2>& end, double span) {
  if (roundStart_[v] == start && roundEnd_[v] == end && roundSpan_[v] == span) return;
  if (undo_) undo_->roundings.push_back({v, roundStart_[v], roundEnd_[v], roundSpan_[v]});
  roundStart_[v] = start;
  roundEnd_[v] = end;
  roundSpan_[v] = span;
  if (spatial_) {
    // The rounding of v trims the segments on either side of it.
    spatial_->touch(v);
    spatial_->touch(v + 1 < numVertices() ? v + 1 : 0);
  }
}

kcSMDGDPolyIndex_& kcSMDGDPoly::index_() const {
  if (!spatial_) spatial_ = std::make_unique<kcSMDGDPolyIndex_>();
  return *spatial_;
}

// --- construction ---

kcSMDGDPoly::kcSMDGDPoly() : kcSMDGDPoly(L"poly") {}

kcSMDGDPoly::kcSMDGDPoly(const std::wstring& name)
    : kcSMDGeometricDescription(name),
      colors_(kcColor::greenColor(), kcColor::ltGreyColor(), kcColor::dkGreyColor()),
      positiveArrow_(kcColor::greenColor()),
      negativeArrow_(kcColor::greenColor()) {}

kcSMDGDPoly::kcSMDGDPoly(const kcSMDGDPoly& other)
    : kcPersistent(other),
      kcRepBase(other),
      kcSMDGeometricDescription(other),
      vertices_(other.vertices_),
      labels_(other.labels_),
      roundStart_(other.roundStart_),
      roundEnd_(other.roundEnd_),
      roundSpan_(other.roundSpan_),
      open_(other.open_),
      reversed_(other.reversed_),
      colors_(other.colors_),
      positiveArrow_(other.positiveArrow_),
      negativeArrow_(other.negativeArrow_),
      weight_(other.weight_) {}

kcSMDGDPoly& kcSMDGDPoly::operator=(const kcSMDGDPoly& other) {
  if (this == &other) return *this;
  mutating_();
  kcSMDGeometricDescription::operator=(other);
  vertices_ = other.vertices_;
  labels_ = other.labels_;
  roundStart_ = other.roundStart_;
  roundEnd_ = other.roundEnd_;
  roundSpan_ = other.roundSpan_;
  open_ = other.open_;
  reversed_ = other.reversed_;
  colors_ = other.colors_;
  positiveArrow_ = other.positiveArrow_;
  negativeArrow_ = other.negativeArrow_;
  weight_ = other.weight_;
  if (spatial_) spatial_->invalidate();
  return *this;
}

kcSMDGDPoly::~kcSMDGDPoly() = default;

namespace {
kcSMDGDPolyVertex sharp(const kcVector<2>& p, long label) { return {p, 0.0, 0.5, 0.5, label}; }
}  // namespace

kcSMDGDPoly kcSMDGDPoly::triangle(double base, double height, const kcVector<2>& centre) {
  kcSMDGDPoly p;
  p << sharp(centre + kcVector<2>(0, 2 * height / 3), 0)
    << sharp(centre + kcVector<2>(-base / 2, -height / 3), 1)
    << sharp(centre + kcVector<2>(base / 2, -height / 3), 2);
  p.close();
  return p;
}

kcSMDGDPoly kcSMDGDPoly::rectangle(double width, double height, const kcVector<2>& centre) {
  kcSMDGDPoly p;
  const double w = width / 2, h = height / 2;
  p << sharp(centre + kcVector<2>(w, h), 0) << sharp(centre + kcVector<2>(-w, h), 1)
    << sharp(centre + kcVector<2>(-w, -h), 2) << sharp(centre + kcVector<2>(w, -h), 3);
  p.close();
  return p;
}

kcSMDGDPoly kcSMDGDPoly::circle(double radius, const kcVector<2>& centre) {
  kcSMDGDPoly p;
  const kcDimTol none(-1, -1, -1, kcDimTol::eOffsets);
  p << kcSMDGDPolyVertex(centre - kcVector<2>(radius, 0), 0.0, kcDegree(180), 0.5, 0.5, 0, none)
    << kcSMDGDPolyVertex(centre + kcVector<2>(radius, 0), 0.0, kcDegree(180), 0.5, 0.5, 0, none);
  p.close();
  return p;
}

// --- queries ---

long kcSMDGDPoly::numSegments() const noexcept {
  const long n = numVertices();
  if (n < 2) return 0;
  return open_ ? n - 1 : n;
}

const kcSMDGDPolyVertex& kcSMDGDPoly::vertex(long index, bool wrap) const {
  return vertices_[vertexIndex_(static_cast<int>(index), wrap)];
}

bool kcSMDGDPoly::operator==(const kcSMDGDPoly& o) const {
  if (vertices_.size() != o.vertices_.size() || open_ != o.open_) return false;
  for (std::size_t i = 0; i < vertices_.size(); ++i)
    if (!(vertices_[i] == o.vertices_[i])) return false;
  return reversed_ == o.reversed_ && colors_ == o.colors_ && positiveArrow_ == o.positiveArrow_ &&
         negativeArrow_ == o.negativeArrow_ && std::fabs(weight_ - o.weight_) <= kZeroTol;
}

bool kfRealEq(const kcSMDGDPoly& a, const kcSMDGDPoly& b, double tol) {
  if (a.vertices_.size() != b.vertices_.size() || a.open_ != b.open_) return false;
  for (std::size_t i = 0; i < a.vertices_.size(); ++i)
    if (!kfRealEq(a.vertices_[i], b.vertices_[i], tol)) return false;
  return a.reversed_ == b.reversed_ && a.colors_ == b.colors_ && a.positiveArrow_ == b.positiveArrow_ &&
         a.negativeArrow_ == b.negativeArrow_ && std::fabs(a.weight_ - b.weight_) <= tol;
}

// --- indices ---

int kcSMDGDPoly::segmentIndex_(int i, bool wrap) const {
  const int s = vertexIndex_(i, wrap);
  if (s == 0 && open_) throw invalidIndex();
  return s;
}

int kcSMDGDPoly::nextSegmentIndex_(int v) const {
  if (open_ && v == lastVertexIndex_()) return -1;
  const int s = vertexIndex_(v + 1, true);
  if (s == 0 && open_) throw invalidIndex();
  return s;
}

int kcSMDGDPoly::previousSegmentIndex_(int v) const {
  if (open_ && v == 0) return -1;
  return v;
}

int kcSMDGDPoly::lastSegmentIndex_() const {
  return open_ ? previousSegmentIndex_(lastVertexIndex_()) : nextSegmentIndex_(lastVertexIndex_());
}

void kcSMDGDPoly::addVertexLabel_(const kcSMDGDPolyVertex& v) {
  const long label = v.subModelLabel();
  if (label == -1 || std::find(labels_.begin(), labels_.end(), label) != labels_.end()) return;
  labels_.push_back(static_cast<std::int32_t>(label));
}

void kcSMDGDPoly::rebuildLabels_() {
  if (undo_ && !undo_->labelsSaved) {
    undo_->labels = labels_;
    undo_->labelsSaved = true;
  }
  labels_.clear();
  for (const kcSMDGDPolyVertex& v : vertices_) addVertexLabel_(v);
}

// --- edits ---

void kcSMDGDPoly::insertVertex(int index, const kcSMDGDPolyVertex& v) {
  mutating_();
  if (index < -1 || index >= numVertices()) throw invalidIndex();
  const int at = index + 1;
  Undo undo;
  edit_(
      [&] {
        vertices_.insert(vertices_.begin() + at, v);
        roundStart_.insert(roundStart_.begin() + at, kcVector<2>());
        roundEnd_.insert(roundEnd_.begin() + at, kcVector<2>());
        roundSpan_.insert(roundSpan_.begin() + at, 0.0);
        undo.inserted = at;
        if (spatial_) {
          if (at == lastVertexIndex_())
            spatial_->grow();
          else
            spatial_->invalidate();
        }
        addVertexLabel_(v);
        validateReplacement_(at);
      },
      undo);
}

kcSMDGDPoly& kcSMDGDPoly::operator<<(const kcSMDGDPolyVertex& v) {
  insertVertex(static_cast<int>(numVertices()) - 1, v);
  return *this;
}

void kcSMDGDPoly::deleteVertex(int index) {
  mutating_();
  if (index < 0 || index >= numVertices()) throw invalidIndex();
  Undo undo;
  edit_(
      [&] {
        undo.vertex = vertices_[index];
        undo.erasedRounding = {index, roundStart_[index], roundEnd_[index], roundSpan_[index]};
        vertices_.erase(vertices_.begin() + index);
        roundStart_.erase(roundStart_.begin() + index);
        roundEnd_.erase(roundEnd_.begin() + index);
        roundSpan_.erase(roundSpan_.begin() + index);
        undo.erased = index;
        if (spatial_) spatial_->invalidate();
        rebuildLabels_();
        validateDeletion_(index);
      },
      undo);
}

void kcSMDGDPoly::replaceVertex(int index, const kcSMDGDPolyVertex& v) {
  mutating_();
  if (index < 0 || index >= numVertices()) throw invalidIndex();
  Undo undo;
  edit_(
      [&] {
        undo.vertex = vertices_[index];
        undo.replaced = index;
        vertices_[index] = v;
        if (spatial_) {
          spatial_->touch(index);
          spatial_->touch(index + 1 < numVertices() ? index + 1 : 0);
        }
        rebuildLabels_();
        validateReplacement_(index);
      },
      undo);
}

// The whole chain changes and is validated whole; what it replaces is kept
// aside to put back.
void kcSMDGDPoly::vertices(const std::vector<kcSMDGDPolyVertex>& list) {
  mutating_();
  std::vector<kcSMDGDPolyVertex> fresh(list);  // list may be this poly's own
  std::vector<kcSMDGDPolyVertex> vertices = std::move(vertices_);
  std::vector<std::int32_t> labels = std::move(labels_);
  std::vector<kcVector<2>> roundStart = std::move(roundStart_);
  std::vector<kcVector<2>> roundEnd = std::move(roundEnd_);
  std::vector<double> roundSpan = std::move(roundSpan_);
  try {
    vertices_ = std::move(fresh);
    roundStart_.assign(vertices_.size(), kcVector<2>());
    roundEnd_.assign(vertices_.size(), kcVector<2>());
    roundSpan_.assign(vertices_.size(), 0.0);
    if (spatial_) spatial_->invalidate();
    rebuildLabels_();
    validate_();
  } catch (const kcException&) {
    vertices_ = std::move(vertices);
    labels_ = std::move(labels);
    roundStart_ = std::move(roundStart);
    roundEnd_ = std::move(roundEnd);
    roundSpan_ = std::move(roundSpan);
    if (spatial_) spatial_->invalidate();
    throw;
  }
}

void kcSMDGDPoly::close() {
  mutating_();
  const bool wasOpen = open_;
  Undo undo;
  try {
    edit_(
        [&] {
          open_ = false;
          if (spatial_) spatial_->touch(0);
          validateClose_();
        },
        undo);
  } catch (const kcException&) {
    open_ = wasOpen;
    if (spatial_) spatial_->invalidate();
    throw;
  }
}

void kcSMDGDPoly::open() {
  mutating_();
  open_ = true;
  if (spatial_) spatial_->touch(0);
  validateReplacement_(0);
}

void kcSMDGDPoly::toggleDirection() {
  mutating_();
  reversed_ = !reversed_;
}

void kcSMDGDPoly::reset() { *this = kcSMDGDPoly(); }

void kcSMDGDPoly::reInit() {
  mutating_();
  vertices_.clear();
  labels_.clear();
  roundStart_.clear();
  roundEnd_.clear();
  roundSpan_.clear();
  open_ = true;
  if (spatial_) spatial_->invalidate();
}

void kcSMDGDPoly::colors(const kcSMDColors& c) {
  mutating_();
  colors_ = c;
}

void kcSMDGDPoly::positiveArrowColor(const kcColor& c) {
  mutating_();
  positiveArrow_ = c;
}

void kcSMDGDPoly::negativeArrowColor(const kcColor& c) {
  mutating_();
  negativeArrow_ = c;
}

void kcSMDGDPoly::weight(double w) {
  // A weight that is not a number would make the poly unequal to itself.
  if (!std::isfinite(w)) throw kcShapesError::BadParams();
  mutating_();
  weight_ = w;
}

// --- validation ---

namespace {
// The percent check: two vertices of one sub-model may not take more than the
// whole of the segment between them.
bool percentsExceed(long label, long otherLabel, double share, double otherShare) {
  return label != -1 && label == otherLabel && share + otherShare > 1.0;
}
}  // namespace

void kcSMDGDPoly::validateReplacement_(int i) {
  const int n = static_cast<int>(vertices_.size());
  if (n == 0) return;
  if (i < 0 || i > n - 1) throw invalidIndex();
  computeVertexRoundings_(i);
  if (vertexIntersectsPoly_(i, -1)) throw crossingSegments();
  const int p = wrappedIndex_(i - 1);
  const int q = vertexIndex_(i + 1, true);
  const long label = vertexLabel_(i);
  const bool incoming = !(open_ && i == 0);
  if (incoming) {
    if (segmentIntersectsPoly_(i, -1)) throw crossingSegments();
    if (vertexIntersectsPoly_(p, -1)) throw crossingSegments();
    if (percentsExceed(label, vertexLabel_(p), percentPrevSegment_(i), percentNextSegment_(p)))
      throw crossingSegments();
    (void)segmentDimension(i);
  }
  const int out = nextSegmentIndex_(i);
  if (out < 0) return;
  if (segmentIntersectsPoly_(out, -1)) throw crossingSegments();
  if (vertexIntersectsPoly_(q, -1)) throw crossingSegments();
  // The previous vertex's label decides here too, as it always has.
  if (percentsExceed(label, vertexLabel_(p), percentNextSegment_(i), percentPrevSegment_(q)))
    throw crossingSegments();
  (void)segmentDimension(out);
}

void kcSMDGDPoly::validateDeletion_(int i) {
  if (!open_ && numVertices() < 2) throw invalidVertices();
  if (numVertices() == 0) return;
  validateReplacement_(vertexIndex_(i - 1, true));
  validateReplacement_(vertexIndex_(i, true));
}

void kcSMDGDPoly::validateClose_() {
  if (vertices_.empty()) throw invalidVertices();
  validateReplacement_(0);
}

// Validation visits every vertex in order and tests its pieces against every
// piece before it, then its labels and length. Here the index hands over the
// pairs that can meet all at once, and the visits as written start at the
// first vertex that a meeting pair or its other checks may fail: they throw
// exactly what the plain order throws there.
void kcSMDGDPoly::validate_() {
  const int n = static_cast<int>(vertices_.size());
  if (!open_ && n < 2) throw invalidVertices();
  if (n == 0) return;
  const bool indexed = n >= kcSMDGDPolyIndex_::kMinVertices;
  int first = indexed ? n : 0;
  for (int v = 0; v < n; ++v) {
    computeVertexRounding_(v);
    if (first == n && segmentExists_(v) && !segmentChecksPass_(v)) first = v;
  }
  if (n == 1) return;
  if (indexed) {
    index_().pairs(*this, first, [&](int j, int k) {
      try {
        // What the visit to k tests against element j.
        if ((vertexIsRounded_(k) && roundingMeetsElement_(k, j)) ||
            (segmentExists_(k) && segmentMeetsElement_(k, j)))
          first = std::min(first, k);
      } catch (const kcException&) {
        first = std::min(first, k);
      }
    });
  }
  for (int v = first; v < n; ++v) validateVertex_(v);
}

void kcSMDGDPoly::validateVertex_(int v) {
  if (vertexIntersectsPoly_(v, v)) throw crossingSegments();
  if (!segmentExists_(v)) return;
  if (segmentIntersectsPoly_(v, v)) throw crossingSegments();
  const int p = wrappedIndex_(v - 1);
  if (percentsExceed(vertexLabel_(v), vertexLabel_(p), percentPrevSegment_(v), percentNextSegment_(p)))
    throw crossingSegments();
  (void)segmentDimension(v);
}

// A straight segment of positive length whose tolerance is unset has a valid
// dimension: the common case needs no dimension built.
bool kcSMDGDPoly::segmentChecksPass_(int v) const {
  const int p = wrappedIndex_(v - 1);
  if (percentsExceed(vertexLabel_(v), vertexLabel_(p), percentPrevSegment_(v), percentNextSegment_(p)))
    return false;
  const kcDimTol& tol = vertices_[v].segmentLengthTol();
  const kcVector<2>& a = vertices_[p].point();
  const kcVector<2>& b = vertices_[v].point();
  if (tol.minTol() == -1.0 && tol.maxTol() == -1.0 && !isArcSegment_(v) && a != b && std::isfinite(a.x()) &&
      std::isfinite(a.y()) && std::isfinite(b.x()) && std::isfinite(b.y()))
    return true;
  try {
    (void)segmentDimension(v);
  } catch (const kcException&) {
    return false;
  }
  return true;
}

kcSMDDimension kcSMDGDPoly::segmentDimension(long segment) const {
  const int s = segmentIndex_(static_cast<int>(segment), false);
  kcDimTol tol = vertices_[s].segmentLengthTol();
  tol.nomDim(segmentLength_(s));
  return kcSMDDimension(tol);
}

std::vector<long> kcSMDGDPoly::segmentsOutOfTolerance(const kcXform<2>& a, const kcXform<2>& b) const {
  std::vector<long> out;
  const int n = static_cast<int>(vertices_.size());
  for (int s = 0; s < n; ++s) {
    if (!segmentExists_(s)) continue;
    const kcSMDDimension d = segmentDimension(s);
    if (d.min() < 0.0 && d.max() < 0.0) continue;
    auto lengthUnder = [&](const kcXform<2>& x) {
      const kcVector<2> p = vertices_[wrappedIndex_(s - 1)].point();
      const kcVector<2> q = vertices_[s].point();
      if (isArcSegment_(s)) return (x * kc2SegmentArc(p, q, vertices_[s].segmentAngleSpan())).length();
      return kc2SegmentLine(x * p, x * q).length();
    };
    if (!d.withinTolerance(lengthUnder(a), lengthUnder(b) / d.nominal())) out.push_back(s);
  }
  return out;
}

// --- transforms ---

kcSMDGDPoly operator*(double s, const kcSMDGDPoly& p) {
  kcSMDGDPoly out(p);
  std::vector<kcSMDGDPolyVertex> scaled;
  scaled.reserve(p.vertices_.size());
  for (const kcSMDGDPolyVertex& v : p.vertices_) scaled.push_back(s * v);
  out.vertices(scaled);
  return out;
}

kcSMDGDPoly operator*(const kc2Rigid& r, const kcSMDGDPoly& p) {
  kcSMDGDPoly out(p);
  std::vector<kcSMDGDPolyVertex> moved;
  moved.reserve(p.vertices_.size());
  for (const kcSMDGDPolyVertex& v : p.vertices_) moved.push_back(r * v);
  out.vertices(moved);
  return out;
}

// --- drawing ---

// Outlines come with the tablet they draw on.
void kcSMDGDPoly::drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer) const {
  kcSMDGDPolyPrivate::drawSynthetic(
      *this, xform, pelBuffer, kcSMDColors::colorToGrayScale(colors_.syntheticDefaultColor()), true, true);
}

// --- archive ---

void kcSMDGDPoly::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

// Loads into a fresh poly, validates it whole, and only then takes it over.
void kcSMDGDPoly::serialize_(kcArchive& ar, unsigned char version) {
  if (version > kVersion) throw kcArchive::UnknownVersion(kSource, __LINE__);
  if (ar.isStoring()) {
    kcSMDGeometricDescription::dispatchSerialize(ar);
    ar || vertices_ || labels_ || roundStart_ || roundEnd_ || roundSpan_ || open_ || reversed_ || colors_ ||
        positiveArrow_ || negativeArrow_ || weight_;
    return;
  }
  kcSMDGDPoly loaded;
  loaded.kcSMDGeometricDescription::dispatchSerialize(ar);
  ar || loaded.vertices_ || loaded.labels_ || loaded.roundStart_ || loaded.roundEnd_ || loaded.roundSpan_ ||
      loaded.open_ || loaded.reversed_ || loaded.colors_ || loaded.positiveArrow_ || loaded.negativeArrow_;
  if (version >= 1) ar || loaded.weight_;
  if (!std::isfinite(loaded.weight_)) throw kcArchive::Corrupt(L"poly weight that is not a finite number");
  const std::size_t n = loaded.vertices_.size();
  if (loaded.roundStart_.size() != n || loaded.roundEnd_.size() != n || loaded.roundSpan_.size() != n)
    throw kcArchive::Corrupt(L"poly rounding caches of the wrong length");
  const std::vector<std::int32_t> labels = loaded.labels_;
  try {
    loaded.rebuildLabels_();
    loaded.validate_();
  } catch (const kcException& e) {
    // Named, and where a fresh edit would be refused, so a reader can find it.
    const std::wstring where = kcSMDGDPolyPrivate::rebuildRefusal(loaded);
    throw kcArchive::Corrupt(L"poly \"" + loaded.name() + L"\" does not validate" +
                             (where.empty() ? L": " + e.message() : L" " + where));
  }
  if (loaded.labels_ != labels) throw kcArchive::Corrupt(L"poly labels that do not match its vertices");
  *this = loaded;
}
