#include "foundation/shapes/linesegset.h"

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcLineSegSet);

// --- fields ---

void kcLineSegSet::segments(std::vector<kcLineSeg> segments) {
  mutating_();
  segments_ = std::move(segments);
}

void kcLineSegSet::append(const kcLineSeg& s) {
  mutating_();
  segments_.push_back(s);
}

// --- images and pieces ---

kcLineSegSet kcLineSegSet::map(const kcXform<2>& x) const {
  std::vector<kcLineSeg> mapped;
  mapped.reserve(segments_.size());
  for (const kcLineSeg& s : segments_) mapped.push_back(s.map(x));
  return kcLineSegSet(std::move(mapped));
}

kcShapePtr kcLineSegSet::clone() const { return kfMakeHandle<kcLineSegSet>(*this); }

kcShapePtr kcLineSegSet::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcLineSegSet>(map(x)); }

std::vector<kcShapePtr> kcLineSegSet::decompose() const {
  std::vector<kcShapePtr> pieces;
  for (const kcLineSeg& s : segments_) pieces.push_back(s.clone());
  return pieces;
}

// --- measures ---

kcRect kcLineSegSet::encloseRect() const {
  kcRect box;
  for (const kcLineSeg& s : segments_) box.enclose(s.encloseRect());
  return box;
}

kcVector<2> kcLineSegSet::nearestPoint(const kcVector<2>& p) const {
  if (segments_.empty()) throw kcShapesError::EmptyShape();
  kcVector<2> best = segments_.front().nearestPoint(p);
  for (const kcLineSeg& s : segments_) {
    kcVector<2> q = s.nearestPoint(p);
    if (q.distance(p) < best.distance(p)) best = q;
  }
  return best;
}

void kcLineSegSet::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  for (const kcLineSeg& s : segments_) s.sample(spacing, out);
}

bool kcLineSegSet::equal_(const kcShape& other) const {
  const auto& o = static_cast<const kcLineSegSet&>(other);
  if (segments_.size() != o.segments_.size()) return false;
  for (std::size_t i = 0; i < segments_.size(); ++i) {
    if (!(segments_[i] == o.segments_[i])) return false;
  }
  return true;
}

// --- archive ---

void kcLineSegSet::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcLineSegSet::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/linesegset", __LINE__);
  kcShape::serialize_(ar, version);
  // The end points as one list, two per segment.
  std::vector<kcVector<2>> ends;
  if (ar.isStoring()) {
    for (const kcLineSeg& s : segments_) {
      ends.push_back(s.p1());
      ends.push_back(s.p2());
    }
    if (segments_.size() > UINT32_MAX) throw kcArchive::ValueOutOfRange();
  }
  std::uint32_t count = static_cast<std::uint32_t>(segments_.size());
  ar || count;
  if (ar.isStoring()) {
    for (kcVector<2>& p : ends) ar || p;
    return;
  }
  ar.checkCount(count, 32);
  std::vector<kcLineSeg> loaded;
  loaded.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    kcVector<2> p1, p2;
    ar || p1 || p2;
    kfCheckLoadedFinite(p1);
    kfCheckLoadedFinite(p2);
    if (p1 == p2) throw kcArchive::Corrupt(L"line segment with coincident end points");
    loaded.emplace_back(p1, p2);
  }
  mutating_();
  segments_ = std::move(loaded);
}
