#include "dispc/smd/model.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>

#include "dispc/smd/modelprivate.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/uierror.h"
#include "dispc/wrfm/wirefrm.h"

namespace {
constexpr const char* kSource = "dispc/smd/model";
constexpr unsigned char kVersion = 0;

using P = kcSMDGDPolyPrivate;

// The fewest bytes a stored poly takes: one without name or vertices in the
// form without a weight (version 0). A count of polys is checked against it
// before any poly is made.
std::uint64_t minStoredPolyBytes() {
  static const std::uint64_t bytes = [] {
    kcSMDGDPoly empty(L"");
    kcMemArchive ar;
    ar || empty;
    return static_cast<std::uint64_t>(ar.bytes().size() - sizeof(double));
  }();
  return bytes;
}

bool finite(const kc2Rigid& r) {
  return std::isfinite(r.angle().toDouble()) && std::isfinite(r.trans().x()) && std::isfinite(r.trans().y());
}
}  // namespace

// --- errors ---

KC_DEFINE_EXCEPTION(kcSMDGDModel::invalidIndex, 0x11000370, kcSMDGDModel::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDModel::crossingPolys, 0x11000371, kcSMDGDModel::Errors);
KC_DEFINE_EXCEPTION(kcSMDGDModel::nestedPolys, 0x11000372, kcSMDGDModel::Errors);

void kcSMDGDModel::invalidIndex::message_(std::wostream& out) const {
  out << L"Invalid poly index specified.";
}
void kcSMDGDModel::crossingPolys::message_(std::wostream& out) const {
  out << L"At least two polys intersect.";
}
void kcSMDGDModel::nestedPolys::message_(std::wostream& out) const {
  out << L"At least one of the polys is nested.";
}

KC_DEFINE_PERSISTENT(kcSMDGDModel);

// --- construction ---

kcSMDGDModel::kcSMDGDModel() = default;

kcSMDGDModel::kcSMDGDModel(const std::wstring& name) : kcSMDGeometricDescription(name) {}

kcSMDGDModel::kcSMDGDModel(const kcSMDGDModel& other)
    : kcPersistent(other),
      kcRepBase(other),
      kcSMDGeometricDescription(other),
      polys_(other.polys_),
      labels_(other.labels_),
      placement_(other.placement_) {}

kcSMDGDModel& kcSMDGDModel::operator=(const kcSMDGDModel& other) {
  if (this == &other) return *this;
  // Copies first, so that a failing copy leaves this model as it was.
  std::vector<kcSMDGDPoly> polys(other.polys_);
  std::vector<std::int32_t> labels(other.labels_);
  mutating_();
  kcSMDGeometricDescription::operator=(other);
  polys_.swap(polys);
  labels_.swap(labels);
  placement_ = other.placement_;
  return *this;
}

kcSMDGDModel::~kcSMDGDModel() = default;

// --- building ---

kcSMDGDModel& kcSMDGDModel::operator<<(const kcSMDGDPoly& poly) {
  mutating_();
  polys_.push_back(poly);
  // poly may have been one of ours, moved by the push: read the copy.
  addPolyLabels_(polys_.back());
  return *this;
}

kcSMDGDModel& kcSMDGDModel::operator<<(const kcSMDGDModel& other) {
  const std::vector<kcSMDGDPoly> added(other.polys_);  // other may be this model
  for (const kcSMDGDPoly& p : added) *this << p;
  return *this;
}

// All polys are made before the first is added, so a wireframe that carries
// no poly leaves the model as it was.
kcSMDGDModel& kcSMDGDModel::operator<<(const std::vector<kc2Wireframe>& wireframes) {
  std::vector<kcSMDGDPoly> made;
  made.reserve(wireframes.size());
  for (const kc2Wireframe& w : wireframes) made.emplace_back(w, L"poly");
  for (const kcSMDGDPoly& p : made) *this << p;
  return *this;
}

void kcSMDGDModel::addPolyLabels_(const kcSMDGDPoly& poly) {
  for (std::int32_t label : poly.subModelLabels())
    if (std::find(labels_.begin(), labels_.end(), label) == labels_.end()) labels_.push_back(label);
}

void kcSMDGDModel::rebuildLabels_() {
  labels_.clear();
  for (const kcSMDGDPoly& p : polys_) addPolyLabels_(p);
}

// --- queries ---

void kcSMDGDModel::polys(const std::vector<kcSMDGDPoly>& list) {
  kcSMDGDModel fresh;
  fresh.polys_ = list;  // list may be our own
  fresh.rebuildLabels_();
  mutating_();
  polys_.swap(fresh.polys_);
  labels_.swap(fresh.labels_);
}

const kcSMDGDPoly& kcSMDGDModel::poly(int index) const {
  if (index < 0 || index >= numPolys()) throw invalidIndex();
  return polys_[index];
}

long kcSMDGDModel::numVertices() const noexcept {
  long n = 0;
  for (const kcSMDGDPoly& p : polys_) n += p.numVertices();
  return n;
}

void kcSMDGDModel::placement(const kc2Rigid& p) {
  mutating_();
  placement_ = p;
}

bool kcSMDGDModel::isOpen() const noexcept {
  return std::any_of(polys_.begin(), polys_.end(), [](const kcSMDGDPoly& p) { return p.isOpen(); });
}

kcSMDGDModel kcSMDGDModel::flip() const {
  kcSMDGDModel out(L"");
  for (const kcSMDGDPoly& p : polys_) out << kcSMDGDPolyPrivate::flip(p);
  return out;
}

// The sub-polys are gathered apart, so a run that is no outline
// (badSubModel) leaves out as it was; a label that no vertex carries adds
// nothing and leaves out's placement alone.
void kcSMDGDModel::subModel(long label, kcSMDGDModel& out) const {
  kcSMDGDModel taken(L"");
  for (const kcSMDGDPoly& p : polys_) kcSMDGDPolyPrivate::subModel(p, label, taken);
  if (taken.polys_.empty()) return;
  const kc2Rigid pose = kcSMDGDModelPrivate::normalizedPosition(taken);
  out << taken;
  out.placement(pose);
}

std::vector<long> kcSMDGDModel::polysOutOfTolerance(const kcXform<2>& a, const kcXform<2>& b) const {
  std::vector<long> out;
  for (int i = 0; i < numPolys(); ++i)
    if (!polys_[i].segmentsOutOfTolerance(a, b).empty()) out.push_back(i);
  return out;
}

kcRect kcSMDGDModel::boundingBox(const kcXform<2>& xform) const {
  kcRect box;
  for (const kcSMDGDPoly& p : polys_) box.enclose(p.boundingBox(xform));
  return box;
}

void kcSMDGDModel::colors(const kcSMDColors& c) {
  mutating_();
  for (kcSMDGDPoly& p : polys_) p.colors(c);
}

void kcSMDGDModel::positiveArrowColor(const kcColor& c) {
  mutating_();
  for (kcSMDGDPoly& p : polys_) p.positiveArrowColor(c);
}

void kcSMDGDModel::negativeArrowColor(const kcColor& c) {
  mutating_();
  for (kcSMDGDPoly& p : polys_) p.negativeArrowColor(c);
}

bool kcSMDGDModel::operator==(const kcSMDGDModel& other) const {
  return kcSMDGDModelPrivate::equivalent(*this, other) && placement_ == other.placement_;
}

// --- editing ---

void kcSMDGDModel::rebuild_(int index, const kcSMDGDPoly* replacement) {
  if (index < 0 || index >= numPolys()) throw invalidIndex();
  kcSMDGDModel fresh(name());
  fresh.polys_.reserve(polys_.size());
  for (int i = 0; i < numPolys(); ++i) {
    if (i != index)
      fresh << polys_[i];
    else if (replacement)
      fresh << *replacement;
  }
  mutating_();
  polys_.swap(fresh.polys_);
  labels_.swap(fresh.labels_);
}

void kcSMDGDModel::replacePoly(int index, const kcSMDGDPoly& poly) { rebuild_(index, &poly); }

void kcSMDGDModel::deletePoly(int index) { rebuild_(index, nullptr); }

void kcSMDGDModel::deleteAllPolys() {
  mutating_();
  polys_.clear();
  labels_.clear();
}

void kcSMDGDModel::reset() {
  deleteAllPolys();
  placement_ = kc2Rigid();
}

// The placement, like the name, is read over what is kept here.
void kcSMDGDModel::reInit() { deleteAllPolys(); }

// --- geometry over all polys ---

kcDegree kcSMDGDModel::orientation_() const {
  if (polys_.empty()) return kcDegree(0);
  return kcDegree(kcSMDGDPolyPrivate::position(polys_.front()).angle());
}

kcVector<2> kcSMDGDModel::centerOfMass_() const noexcept {
  kcVector<2> sum;
  long n = 0;
  for (const kcSMDGDPoly& p : polys_)
    for (const kcSMDGDPolyVertex& v : p.vertices()) {
      sum = sum + v.point();
      ++n;
    }
  return n == 0 ? kcVector<2>() : sum / static_cast<double>(n);
}

double kcSMDGDModel::perimeter_(double minLength) const {
  double sum = 0.0;
  for (const kcSMDGDPoly& p : polys_) sum += P::perimeter_(p, minLength);
  return sum;
}

double kcSMDGDModel::extensionPerimeter_() const {
  double sum = 0.0;
  for (const kcSMDGDPoly& p : polys_) sum += P::extensionPerimeter_(p);
  return sum;
}

// Works on copies and swaps them in last. Every pair is checked once, each
// poly against the other both ways, so the result does not depend on which
// of two neighbours comes first.
void kcSMDGDModel::setExtensions_(double p, const kcDegree& angle, double distance, double minPercent) {
  std::vector<kcSMDGDPoly> work(polys_);
  for (kcSMDGDPoly& poly : work) P::setExtensions_(poly, p);
  for (std::size_t i = 0; i < work.size(); ++i)
    for (std::size_t j = i + 1; j < work.size(); ++j)
      P::checkExtensions_(work[i], work[j], distance, angle, minPercent, true);
  mutating_();
  polys_.swap(work);
}

// --- transforms ---

kcSMDGDModel operator*(const kc2Rigid& r, const kcSMDGDModel& m) {
  kcSMDGDModel out(m.name());
  for (const kcSMDGDPoly& p : m.polys_) out << r * p;
  out.placement_ = r * m.placement_;
  return out;
}

// A negative factor turns the polys by half a turn about the origin (each
// vertex goes to s p); the placement turns with them, so it stays the pose
// of the same polys.
kcSMDGDModel operator*(double s, const kcSMDGDModel& m) {
  kcSMDGDModel out(m.name());
  for (const kcSMDGDPoly& p : m.polys_) out << s * p;
  const kcRadian turn(s < 0.0 ? std::numbers::pi : 0.0);
  out.placement_ = kc2Rigid(m.placement_.angle() + turn, s * m.placement_.trans());
  return out;
}

// --- drawing ---

// Outlines come with the tablet they draw on.
// Every poly in order, each in its own grey: a later poly covers an earlier one.
void kcSMDGDModel::drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer) const {
  for (const kcSMDGDPoly& p : polys_) p.drawSynthetic(xform, pelBuffer);
}

// --- archive ---

void kcSMDGDModel::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

// Loads into a fresh model and checks it whole (each poly validates itself
// as it loads) before taking it over.
void kcSMDGDModel::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, __LINE__);
  if (ar.isStoring()) {
    kcSMDGeometricDescription::dispatchSerialize(ar);
    ar || polys_ || labels_ || placement_;
    return;
  }
  kcSMDGDModel loaded;
  loaded.kcSMDGeometricDescription::dispatchSerialize(ar);
  std::uint32_t count = 0;
  ar || count;
  ar.checkCount(count, minStoredPolyBytes());
  for (std::uint32_t i = 0; i < count; ++i) {
    loaded.polys_.emplace_back();
    try {
      ar || loaded.polys_.back();
    } catch (const kcArchive::Corrupt& e) {
      throw kcArchive::Corrupt(L"model poly " + std::to_wstring(i) + L": " + e.text());
    }
  }
  ar || loaded.labels_ || loaded.placement_;
  const std::vector<std::int32_t> labels = loaded.labels_;
  loaded.rebuildLabels_();
  if (loaded.labels_ != labels) throw kcArchive::Corrupt(L"model labels that are not those of its polys");
  if (!finite(loaded.placement_)) throw kcArchive::Corrupt(L"model placement that is not finite");
  *this = loaded;
}

// --- the sub-polys of one poly ---

void kcSMDGDPolyPrivate::subModel(const kcSMDGDPoly& p, long label, kcSMDGDModel& out) {
  const int n = static_cast<int>(p.numVertices());
  for (int v = 0; v < n; ++v) {
    if (p.vertexLabel_(v) != label) continue;
    // Only the first vertex of a run starts a sub-poly.
    if (v > 0 && p.vertexLabel_(v - 1) == label) continue;
    out << subPoly(p, v, false);
  }
}
