#include "dispc/flagstack.h"

#include <gtest/gtest.h>

#include <vector>

#include "dispc/uierror.h"

namespace {

// Against a plain vector model: flag i below the top, pops give the pushes back.
TEST(FlagStack, PushPopAndIndexFollowAStack) {
  kcFlagStack s(true);
  std::vector<bool> model = {true};
  for (int i = 1; i < 32; ++i) {
    s.push(i % 3 == 0);
    model.push_back(i % 3 == 0);
    ASSERT_EQ(s.depth(), static_cast<long>(model.size()));
    for (long k = 0; k < s.depth(); ++k)
      EXPECT_EQ(s[k], model[model.size() - 1 - static_cast<std::size_t>(k)]);
  }
  const kcFlagStack full = s;
  EXPECT_THROW(s.push(false), kcUIError::FlagStackOverflow);  // a 33rd flag
  EXPECT_EQ(s, full);
  EXPECT_THROW((void)s[32], kcUIError::FlagStackOutOfRange);
  EXPECT_THROW((void)s[-1], kcUIError::FlagStackOutOfRange);
  for (int i = 31; i >= 1; --i) EXPECT_EQ(s.pop(), i % 3 == 0) << i;
  EXPECT_THROW(s.pop(), kcUIError::FlagStackUnderflow);
  EXPECT_EQ(s, kcFlagStack(true));
}

TEST(FlagStack, AssigningABoolReplacesOnlyTheTop) {
  kcFlagStack s(true);
  s.push(false);
  EXPECT_TRUE(!s[0] && s[1] && !s);
  EXPECT_THROW((void)s[2], kcUIError::FlagStackOutOfRange);
  s = true;
  EXPECT_TRUE(s && s.depth() == 2);
  s = false;
  EXPECT_TRUE(s[1] && !s.pop() && s);
}

}  // namespace
