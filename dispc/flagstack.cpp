#include "dispc/flagstack.h"

#include "dispc/uierror.h"

kcFlagStack& kcFlagStack::operator=(bool flag) noexcept {
  bits_ = (bits_ & ~1u) | (flag ? 1u : 0u);
  return *this;
}

void kcFlagStack::push(bool flag) {
  if (depth_ >= kMaxDepth) throw kcUIError::FlagStackOverflow();
  // With fewer than 32 flags the top bit is free, so nothing is shifted out.
  bits_ = (bits_ << 1) | (flag ? 1u : 0u);
  ++depth_;
}

bool kcFlagStack::pop() {
  if (depth_ < 2) throw kcUIError::FlagStackUnderflow();
  const bool top = (bits_ & 1u) != 0;
  bits_ >>= 1;
  --depth_;
  return top;
}

bool kcFlagStack::operator[](long i) const {
  if (i < 0 || i >= static_cast<long>(depth_)) throw kcUIError::FlagStackOutOfRange();
  return ((bits_ >> i) & 1u) != 0;
}
