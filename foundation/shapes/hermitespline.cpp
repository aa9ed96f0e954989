#include "foundation/shapes/hermitespline.h"

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcHermiteSpline);

// --- construction ---

kcHermiteSpline::kcHermiteSpline()
    : kcHermiteSpline({kcVector<2>(0.0, 0.0), kcVector<2>(1.0, 0.0)},
                      {kcVector<2>(1.0, 0.0), kcVector<2>(1.0, 0.0)}) {}

kcHermiteSpline::kcHermiteSpline(std::vector<kcVector<2>> points, std::vector<kcVector<2>> tangents)
    : kcCubicSpline(bezierFrom_(points, tangents)),
      points_(std::move(points)),
      tangents_(std::move(tangents)) {}

void kcHermiteSpline::pointsAndTangents(std::vector<kcVector<2>> points, std::vector<kcVector<2>> tangents) {
  bezierPoints_(bezierFrom_(points, tangents));
  points_ = std::move(points);
  tangents_ = std::move(tangents);
}

std::vector<kcVector<2>> kcHermiteSpline::bezierFrom_(const std::vector<kcVector<2>>& q,
                                                      const std::vector<kcVector<2>>& t) {
  if (q.size() < 2 || t.size() != q.size()) throw kcShapesError::BadParams();
  for (const kcVector<2>& p : q) kfCheckFinite(p);
  for (const kcVector<2>& v : t) kfCheckFinite(v);
  const std::size_t n = q.size() - 1;
  std::vector<kcVector<2>> bezier;
  bezier.reserve(3 * n + 1);
  for (std::size_t i = 0; i < n; ++i) {
    bezier.push_back(q[i]);
    bezier.push_back(q[i] + t[i] / 3.0);
    bezier.push_back(q[i + 1] - t[i + 1] / 3.0);
  }
  bezier.push_back(q[n]);
  return bezier;
}

kcHermiteSpline kcHermiteSpline::map(const kcXform<2>& x) const {
  std::vector<kcVector<2>> points, tangents;
  points.reserve(points_.size());
  tangents.reserve(tangents_.size());
  for (const kcVector<2>& p : points_) points.push_back(x.mapPoint(p));
  for (const kcVector<2>& v : tangents_) tangents.push_back(x.mapVector(v));
  return kcHermiteSpline(std::move(points), std::move(tangents));
}

// --- kcShape ---

kcShapePtr kcHermiteSpline::clone() const { return kfMakeHandle<kcHermiteSpline>(*this); }

kcShapePtr kcHermiteSpline::mapShape(const kcXform<2>& x) const {
  return kfMakeHandle<kcHermiteSpline>(map(x));
}

kcShapePtr kcHermiteSpline::reverse() const {
  std::vector<kcVector<2>> points(points_.rbegin(), points_.rend());
  std::vector<kcVector<2>> tangents;
  tangents.reserve(tangents_.size());
  for (auto it = tangents_.rbegin(); it != tangents_.rend(); ++it) tangents.push_back(-*it);
  return kfMakeHandle<kcHermiteSpline>(std::move(points), std::move(tangents));
}

bool kcHermiteSpline::equal_(const kcShape& other) const {
  const auto& h = static_cast<const kcHermiteSpline&>(other);
  return points_ == h.points_ && tangents_ == h.tangents_;
}

// --- archive ---

void kcHermiteSpline::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcHermiteSpline::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/hermitespline", __LINE__);
  kcShape::serialize_(ar, version);
  std::vector<kcVector<2>> points = points_, tangents = tangents_;
  kfTransferPoints_(ar, points);
  kfTransferPoints_(ar, tangents);
  if (ar.isLoading()) {
    kcHermiteSpline loaded;
    try {
      loaded = kcHermiteSpline(std::move(points), std::move(tangents));
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"Hermite spline with bad counts or a single point");
    }
    mutating_();
    *this = loaded;
  }
}
