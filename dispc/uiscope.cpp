#include "dispc/uiscope.h"

#include <algorithm>
#include <cmath>

// --- paths ---

namespace {
// Gaps this small, relative to the coordinates, are rounding, not a join.
constexpr double kJoinTol = 1e-9;
}  // namespace

void kcUIPath::moveTo(const kcVector<2>& p) {
  pieces_.push_back({Kind::move, p, 0, {}, {}});
  current_ = p;
  start_ = p;
  open_ = true;
}

void kcUIPath::lineTo(const kcVector<2>& p) {
  if (!open_) {
    moveTo(p);
    return;
  }
  pieces_.push_back({Kind::line, p, 0, {}, {}});
  current_ = p;
}

void kcUIPath::arcTo(const kcEllipseArc& a) {
  const kcVector<2> from = a.startPoint();
  // An arc computed to start where the path is may miss it in the last bits:
  // no join for a gap that is only rounding.
  const double scale = std::max({1.0, std::abs(from.x()), std::abs(from.y())});
  if (!open_)
    moveTo(from);
  else if (from.distance(current_) > kJoinTol * scale)
    lineTo(from);
  arcs_.push_back(a);
  pieces_.push_back({Kind::arc, a.endPoint(), arcs_.size() - 1, {}, {}});
  current_ = a.endPoint();
}

void kcUIPath::bezierTo(const kcVector<2>& c1, const kcVector<2>& c2, const kcVector<2>& p) {
  if (!open_) moveTo(current_);
  pieces_.push_back({Kind::bezier, p, 0, c1, c2});
  current_ = p;
}

void kcUIPath::close() {
  if (!open_) return;
  pieces_.push_back({Kind::close, start_, 0, {}, {}});
  current_ = start_;
  open_ = false;
}

// --- scopes ---

kcUIScope::~kcUIScope() = default;

void kcUIScope::lockScreenUpdatesPush(bool lock) { locks_.push_back(lock); }

// A pop without a push is ignored.
void kcUIScope::lockScreenUpdatesPop() {
  if (!locks_.empty()) locks_.pop_back();
}

bool kcUIScope::screenUpdatesLocked() const {
  for (bool lock : locks_)
    if (lock) return true;
  return false;
}

// --- what every drawer shares ---

kcUIScopeLock::kcUIScopeLock(kcUIScope& scope) : scope_(scope) { scope_.lockScreenUpdatesPush(true); }

kcUIScopeLock::~kcUIScopeLock() { scope_.lockScreenUpdatesPop(); }

namespace {
constexpr double kArrowMinArm = 6.0;
constexpr double kArrowArmPerWidth = 3.0;

kcVector<2> unitAt(const kcRadian& a) { return {std::cos(a.toDouble()), std::sin(a.toDouble())}; }
}  // namespace

double kfArrowArmLength(const kcGraphicProps& props) {
  return std::max(kArrowMinArm, kArrowArmPerWidth * static_cast<double>(props.penWidth()));
}

void kfDrawArrowHead(kcUIScope& scope, const kcShape& curve, const kcGraphicProps& props) {
  if (!props.arrowHead()) return;
  const double arm = kfArrowArmLength(props);
  if (props.arrowHeadForward())
    scope.arrowHead(curve.endPoint(), unitAt(curve.endAngle()), arm, props);
  else
    scope.arrowHead(curve.startPoint(), -unitAt(curve.startAngle()), arm, props);
}
