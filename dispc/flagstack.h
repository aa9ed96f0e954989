// kcFlagStack: a stack of 1 to 32 booleans packed into one word, used by the
// tablet for its drawing and recording switches, so that a caller can turn a
// switch off for a while (push) and then restore what was there (pop).
//
// Bit 0 of the word is the top of the stack, bit 1 the flag below it, and so
// on; bits at and above the depth are always 0. A stack is never empty: it
// is made with one flag and its last flag cannot be popped. A failed push,
// pop or index throws the kcUIError named below and leaves the stack as it
// was.
#pragma once

#include <cstdint>

class kcFlagStack {
 public:
  static constexpr long kMaxDepth = 32;

  // One flag (false by default).
  constexpr explicit kcFlagStack(bool flag = false) noexcept : bits_(flag ? 1u : 0u) {}

  // The top flag.
  [[nodiscard]] constexpr operator bool() const noexcept { return (bits_ & 1u) != 0; }
  // Replaces the top flag; the depth stays.
  kcFlagStack& operator=(bool flag) noexcept;
  kcFlagStack(const kcFlagStack&) = default;
  kcFlagStack& operator=(const kcFlagStack&) = default;

  // Puts a flag on top; the 33rd throws kcUIError::FlagStackOverflow.
  void push(bool flag);
  // Removes the top flag and returns it; popping the last one throws
  // kcUIError::FlagStackUnderflow.
  bool pop();
  // The flag i places below the top (0 is the top); i outside 0 to
  // depth() - 1 throws kcUIError::FlagStackOutOfRange.
  [[nodiscard]] bool operator[](long i) const;

  // Number of flags on the stack, 1 to 32.
  [[nodiscard]] constexpr long depth() const noexcept { return depth_; }

  // Same flags, same depth.
  [[nodiscard]] bool operator==(const kcFlagStack& o) const noexcept = default;

 private:
  std::uint32_t bits_;
  std::uint32_t depth_ = 1;
};
