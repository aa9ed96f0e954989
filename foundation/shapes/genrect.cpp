#include "foundation/shapes/genrect.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

namespace {
constexpr double kHalfPi = 0.5 * std::numbers::pi;
// The unit square's corners in boundary order.
constexpr kcVector<2> kUnitCorners[4] = {{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}};
}  // namespace

KC_DEFINE_PERSISTENT(kcGenRect);

// --- construction and fields ---

void kcGenRect::check_(const kcXform<2>& x, double roundX, double roundY) {
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) kfCheckFinite(x.matrix().element(r, c));
  }
  kfCheckFinite(x.trans());
  kfCheckFinite(roundX);
  kfCheckFinite(roundY);
  if (roundX < 0.0 || roundX > 1.0 || roundY < 0.0 || roundY > 1.0) throw kcShapesError::BadParams();
  if (x.matrix().determinant() == 0.0) throw kcShapesError::DegenerateShape();
}

kcGenRect::kcGenRect(const kcXform<2>& xform, double roundX, double roundY)
    : xform_(xform), roundX_(roundX), roundY_(roundY) {
  check_(xform_, roundX_, roundY_);
}

kcGenRect::kcGenRect(const kcVector<2>& centre, const kcVector<2>& size, const kcRadian& angle, double roundX,
                     double roundY)
    : roundX_(roundX), roundY_(roundY) {
  kfCheckFinite(centre);
  kfCheckFinite(size);
  kfCheckFinite(angle.toDouble());
  if (!(size.x() > 0.0) || !(size.y() > 0.0)) throw kcShapesError::DegenerateShape();
  kcMatrix<2> m = kcMatrix<2>::rotation(angle) * kcMatrix<2>::scale(size.x(), size.y());
  xform_ = kcXform<2>(m, centre - m * kcVector<2>(0.5, 0.5));
  check_(xform_, roundX_, roundY_);
}

kcGenRect::kcGenRect(const kcRect& r) {
  if (r.isEmpty()) throw kcShapesError::DegenerateShape();
  xform_ = kcXform<2>(kcMatrix<2>::scale(r.width(), r.height()), r.origin());
  check_(xform_, 0.0, 0.0);
}

void kcGenRect::xform(const kcXform<2>& x) {
  check_(x, roundX_, roundY_);
  mutating_();
  xform_ = x;
}

void kcGenRect::roundX(double f) {
  check_(xform_, f, roundY_);
  mutating_();
  roundX_ = f;
}

void kcGenRect::roundY(double f) {
  check_(xform_, roundX_, f);
  mutating_();
  roundY_ = f;
}

kcVector<2> kcGenRect::corner(int i) const {
  if (i < 0 || i > 3) throw kcShapesError::BadParams();
  return xform_ * kUnitCorners[i];
}

// --- images ---

kcGenRect kcGenRect::map(const kcXform<2>& x) const { return kcGenRect(x * xform_, roundX_, roundY_); }

kcShapePtr kcGenRect::clone() const { return kfMakeHandle<kcGenRect>(*this); }

kcShapePtr kcGenRect::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcGenRect>(map(x)); }

// --- boundary ---

std::vector<kcGenRect::Piece> kcGenRect::pieces_() const {
  double ha = isRounded() ? 0.5 * roundX_ : 0.0;
  double hb = isRounded() ? 0.5 * roundY_ : 0.0;
  // In the unit square: side i runs from the end of corner i's rounding to
  // the start of corner i + 1's; corner k's ellipse is centred at ck.
  const kcVector<2> sideFrom[4] = {{ha, 0.0}, {1.0, hb}, {1.0 - ha, 1.0}, {0.0, 1.0 - hb}};
  const kcVector<2> sideTo[4] = {{1.0 - ha, 0.0}, {1.0, 1.0 - hb}, {ha, 1.0}, {0.0, hb}};
  const kcVector<2> centres[4] = {{1.0 - ha, hb}, {1.0 - ha, 1.0 - hb}, {ha, 1.0 - hb}, {ha, hb}};
  std::vector<Piece> pieces;
  kcVector<2> u = xform_.mapVector(kcVector<2>(ha, 0.0));
  kcVector<2> v = xform_.mapVector(kcVector<2>(0.0, hb));
  for (int i = 0; i < 4; ++i) {
    if (sideFrom[i] != sideTo[i]) {
      Piece side;
      side.a = xform_ * sideFrom[i];
      side.b = xform_ * sideTo[i];
      pieces.push_back(side);
    }
    if (ha > 0.0) {
      Piece arc;
      arc.arc = true;
      arc.c = xform_ * centres[i];
      arc.u = u;
      arc.v = v;
      arc.t0 = (i - 1) * kHalfPi;  // the corner after side i: from -90 degrees on
      pieces.push_back(arc);
    }
  }
  return pieces;
}

kcRect kcGenRect::encloseRect() const {
  kcRect box;
  for (const Piece& piece : pieces_()) {
    if (piece.arc) {
      box.enclose(kfEllipseArcBox_(piece.c, piece.u, piece.v, piece.t0, kHalfPi));
    } else {
      box.enclose(piece.a);
      box.enclose(piece.b);
    }
  }
  return box;
}

kcVector<2> kcGenRect::nearestPoint(const kcVector<2>& p) const {
  kcVector<2> best;
  double bestDist = INFINITY;
  for (const Piece& piece : pieces_()) {
    kcVector<2> q = piece.arc ? kfNearestOnEllipseArc_(piece.c, piece.u, piece.v, piece.t0, kHalfPi, p).point
                              : kfNearestOnSegment_(piece.a, piece.b, p);
    double d = q.distance(p);
    if (d < bestDist) {
      bestDist = d;
      best = q;
    }
  }
  return best;
}

bool kcGenRect::within(const kcVector<2>& p) const {
  // In the unit square, where kWithinTol_ is relative to the size.
  kcVector<2> q = xform_.invMapPoint(p);
  double lo = -kWithinTol_;
  double hi = 1.0 + kWithinTol_;
  if (q.x() < lo || q.x() > hi || q.y() < lo || q.y() > hi) return false;
  if (!isRounded()) return true;
  // Only the four corner boxes outside their ellipses are out.
  double ha = 0.5 * roundX_;
  double hb = 0.5 * roundY_;
  double dx = q.x() < ha ? ha - q.x() : q.x() > 1.0 - ha ? q.x() - (1.0 - ha) : 0.0;
  double dy = q.y() < hb ? hb - q.y() : q.y() > 1.0 - hb ? q.y() - (1.0 - hb) : 0.0;
  dx = std::max(0.0, dx - kWithinTol_) / ha;
  dy = std::max(0.0, dy - kWithinTol_) / hb;
  return dx * dx + dy * dy <= 1.0;
}

void kcGenRect::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  std::size_t first = out.size();
  for (const Piece& piece : pieces_()) {
    if (piece.arc)
      kfSampleEllipseArc_(piece.c, piece.u, piece.v, piece.t0, kHalfPi, spacing, false, out);
    else
      kfSampleSegment(piece.a, piece.b, spacing, false, out);
  }
  kcVector<2> start = out[first];  // copied: push_back may move the elements
  out.push_back(start);
}

bool kcGenRect::equal_(const kcShape& other) const {
  const auto& r = static_cast<const kcGenRect&>(other);
  return xform_ == r.xform_ && roundX_ == r.roundX_ && roundY_ == r.roundY_;
}

// --- archive ---

void kcGenRect::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGenRect::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/genrect", __LINE__);
  kcShape::serialize_(ar, version);
  kcXform<2> x = xform_;
  double rx = roundX_;
  double ry = roundY_;
  ar || x || rx || ry;
  if (ar.isLoading()) {
    try {
      check_(x, rx, ry);
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"general rectangle: bad transform or rounding");
    }
    mutating_();
    xform_ = x;
    roundX_ = rx;
    roundY_ = ry;
  }
}
