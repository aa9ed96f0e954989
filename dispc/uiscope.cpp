#include "dispc/uiscope.h"

// --- paths ---

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
  if (!open_)
    moveTo(from);
  else if (!(from == current_))
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
