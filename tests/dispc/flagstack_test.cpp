#include "dispc/flagstack.h"

#include <gtest/gtest.h>

#include <vector>

#include "dispc/uierror.h"

namespace {

TEST(FlagStack, NewStackHoldsOneFlag) {
  const kcFlagStack on(true);
  EXPECT_TRUE(on);
  EXPECT_EQ(on.depth(), 1);
  EXPECT_TRUE(on[0]);
  const kcFlagStack off;
  EXPECT_FALSE(off);
  EXPECT_EQ(off.depth(), 1);
}

TEST(FlagStack, PushAndPopFollowAStack) {
  // Against a plain vector model: pushes then pops give back the pattern.
  const std::vector<bool> pattern = {true, false, false, true, true, false, true};
  kcFlagStack s(false);
  std::vector<bool> model = {false};
  for (bool f : pattern) {
    s.push(f);
    model.push_back(f);
    EXPECT_EQ(static_cast<bool>(s), f);
    ASSERT_EQ(s.depth(), static_cast<long>(model.size()));
    for (long i = 0; i < s.depth(); ++i)
      EXPECT_EQ(s[i], model[model.size() - 1 - static_cast<std::size_t>(i)]);
  }
  for (auto it = pattern.rbegin(); it != pattern.rend(); ++it) {
    EXPECT_EQ(s.pop(), *it);
    model.pop_back();
    EXPECT_EQ(static_cast<bool>(s), static_cast<bool>(model.back()));
  }
  EXPECT_EQ(s, kcFlagStack(false));
}

TEST(FlagStack, AssigningABoolReplacesOnlyTheTop) {
  kcFlagStack s(true);
  s.push(false);
  s = true;
  EXPECT_TRUE(s);
  EXPECT_EQ(s.depth(), 2);
  EXPECT_TRUE(s[1]);
  s = false;
  EXPECT_FALSE(s);
  EXPECT_TRUE(s[1]);
  EXPECT_TRUE(s.pop() == false);
  EXPECT_TRUE(s);
}

TEST(FlagStack, IndexCountsDownFromTheTop) {
  kcFlagStack s(true);
  s.push(false);
  EXPECT_FALSE(s[0]);
  EXPECT_TRUE(s[1]);
  EXPECT_THROW((void)s[2], kcUIError::FlagStackOutOfRange);
  EXPECT_THROW((void)s[-1], kcUIError::FlagStackOutOfRange);
}

TEST(FlagStack, ThirtyTwoFlagsFitTheThirtyThirdOverflows) {
  kcFlagStack s(true);
  for (int i = 1; i < 32; ++i) s.push(i % 3 == 0);
  EXPECT_EQ(s.depth(), 32);
  const kcFlagStack full = s;
  EXPECT_THROW(s.push(false), kcUIError::FlagStackOverflow);
  EXPECT_EQ(s, full);
  // The bottom flag survived 31 shifts.
  EXPECT_TRUE(s[31]);
  EXPECT_THROW((void)s[32], kcUIError::FlagStackOutOfRange);
  for (int i = 31; i >= 1; --i) EXPECT_EQ(s.pop(), i % 3 == 0) << i;
  EXPECT_TRUE(s);
}

TEST(FlagStack, TheLastFlagCannotBePopped) {
  kcFlagStack s(true);
  EXPECT_THROW(s.pop(), kcUIError::FlagStackUnderflow);
  EXPECT_EQ(s, kcFlagStack(true));
  s.push(false);
  s.pop();
  EXPECT_THROW(s.pop(), kcUIError::FlagStackUnderflow);
  EXPECT_TRUE(s);
}

TEST(FlagStack, CopiesAreIndependent) {
  kcFlagStack a(true);
  a.push(false);
  kcFlagStack b(false);
  b = a;
  EXPECT_EQ(b, a);
  b.pop();
  EXPECT_EQ(a.depth(), 2);
  EXPECT_NE(b, a);
}

}  // namespace
