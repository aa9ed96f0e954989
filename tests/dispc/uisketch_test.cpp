#include "dispc/uisketch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <vector>

#include "dispc/uierror.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const kcUISketch& s) {
  if (s.length() == 0) return {};
  return Bytes(s.data(), s.data() + s.length());
}

Bytes counting(int n, int from = 0) {
  Bytes b;
  for (int i = 0; i < n; ++i) b.push_back(static_cast<std::uint8_t>(from + i));
  return b;
}

kcGraphicProps wideProps() { return kcGraphicProps(kcColor::red, 4, kcGraphicProps::penDash, true); }

// --- buffer ---

TEST(UISketchBuffer, NewSketchHoldsNothing) {
  const kcUISketch s;
  EXPECT_EQ(s.data(), nullptr);
  EXPECT_EQ(s.length(), 0);
  EXPECT_EQ(s.capacity(), 0);
  EXPECT_TRUE(s.isNull());
}

TEST(UISketchBuffer, GrowthAllocatesExactlyFirstThenAtLeastDoubles) {
  kcUISketch s;
  struct Step {
    long n;
    long length;
    long capacity;
  };
  // capacity = max(length + n, 2 * capacity) whenever length + n passes it.
  const Step steps[] = {{10, 10, 10}, {1, 11, 20}, {9, 20, 20}, {15, 35, 40}, {100, 135, 135}, {0, 135, 135}};
  for (const Step& step : steps) {
    const long before = s.length();
    unsigned char* p = s.append(step.n);
    EXPECT_EQ(s.length(), step.length) << step.n;
    EXPECT_EQ(s.capacity(), step.capacity) << step.n;
    EXPECT_EQ(p, s.data() + before) << step.n;
  }
}

TEST(UISketchBuffer, AppendFromItselfSurvivesTheBlockMoving) {
  kcUISketch s;
  const Bytes a = counting(16);
  s.append(a.data(), 16);
  ASSERT_EQ(s.capacity(), 16);
  s.append(s.data(), s.length());  // must grow: the source block moves
  Bytes expected = a;
  expected.insert(expected.end(), a.begin(), a.end());
  EXPECT_EQ(bytesOf(s), expected);
  const Bytes b = counting(7, 100);
  s.append(b.data(), 7);
  expected.insert(expected.end(), b.begin(), b.end());
  EXPECT_EQ(bytesOf(s), expected);
}

TEST(UISketchBuffer, BadSizesThrowAndChangeNothing) {
  kcUISketch empty;
  EXPECT_EQ(empty.append(0), nullptr);
  empty.append(nullptr, 0);
  EXPECT_EQ(empty.data(), nullptr);
  EXPECT_EQ(empty.capacity(), 0);

  kcUISketch s;
  const Bytes a = counting(3);
  s.append(a.data(), 3);
  EXPECT_THROW(s.append(-1), kcUIError::BadParams);
  // Past the 32-bit length: refused before anything is allocated.
  EXPECT_THROW(s.append(2147483647L), std::bad_alloc);
  EXPECT_EQ(bytesOf(s), a);
  EXPECT_EQ(s.capacity(), 3);
}

TEST(UISketchBuffer, CopyHasSameBytesAndCapacityButDefaultProps) {
  kcUISketch s;
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  s.append(5);
  const kcUISketch copy(s);
  EXPECT_EQ(bytesOf(copy), bytesOf(s));
  EXPECT_EQ(copy.capacity(), s.capacity());
  EXPECT_NE(copy.data(), s.data());

  // The original remembers wideProps; the copy does not.
  kcUISketch fresh(s);
  const long length = fresh.length();
  fresh.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(fresh.length(), length + 22);
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(s.length(), length);

  const kcUISketch empty;
  const kcUISketch emptyCopy(empty);
  EXPECT_EQ(emptyCopy.data(), nullptr);
  EXPECT_EQ(emptyCopy.capacity(), 0);
}

TEST(UISketchBuffer, AssignmentCopiesBytesAndKeepsTheTargetsProps) {
  kcUISketch source;
  const Bytes a = counting(10);
  source.append(a.data(), 10);

  kcUISketch small;
  small.append(4);
  small = source;
  EXPECT_EQ(bytesOf(small), a);
  EXPECT_EQ(small.capacity(), 10);  // max(10, 2 * 4)

  kcUISketch roomy;
  roomy.append(8);
  roomy = source;
  EXPECT_EQ(roomy.capacity(), 16);  // max(10, 2 * 8)

  kcUISketch large;
  large.append(40);
  large = source;
  EXPECT_EQ(bytesOf(large), a);
  EXPECT_EQ(large.capacity(), 40);

  // Props stay with the target.
  kcUISketch target;
  target.opcode(kcUISketch::kPropsOpcode, wideProps());
  target = source;
  target.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(bytesOf(target), a);

  kcUISketch& alias = source;
  source = alias;
  EXPECT_EQ(bytesOf(source), a);
}

TEST(UISketchBuffer, EraseKeepsTheBlockEraseAndDeleteFreesIt) {
  kcUISketch s;
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  s.append(10);
  const long capacity = s.capacity();
  s.erase();
  EXPECT_TRUE(s.isNull());
  EXPECT_EQ(s.length(), 0);
  EXPECT_EQ(s.capacity(), capacity);
  EXPECT_NE(s.data(), nullptr);
  // Props are default again: recording wideProps writes a record.
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(s.length(), 22);

  s.eraseAndDelete();
  EXPECT_EQ(s.data(), nullptr);
  EXPECT_EQ(s.length(), 0);
  EXPECT_EQ(s.capacity(), 0);
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(s.length(), 22);
  EXPECT_EQ(s.capacity(), 22);
}

// --- properties records ---

TEST(UISketchProps, RecordIsOpcodeThenTheTwentyOneByteRecord) {
  kcUISketch s;
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  const Bytes expected = {40, 0, 1, 4, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0};
  EXPECT_EQ(bytesOf(s), expected);
}

TEST(UISketchProps, WrittenOnlyWhenSomethingButTheColourChanges) {
  kcUISketch s;
  // Default props equal the new sketch's: nothing to write.
  s.opcode(kcUISketch::kPropsOpcode, kcGraphicProps());
  EXPECT_EQ(s.length(), 0);

  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(s.length(), 22);
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(s.length(), 22);

  kcGraphicProps recoloured = wideProps();
  recoloured.penColor(kcColor::blue);
  s.opcode(kcUISketch::kPropsOpcode, recoloured);
  EXPECT_EQ(s.length(), 22);

  kcGraphicProps thinner = recoloured;
  thinner.penWidth(1);
  s.opcode(kcUISketch::kPropsOpcode, thinner);
  ASSERT_EQ(s.length(), 44);
  EXPECT_EQ(s.data()[22], 40);
  EXPECT_EQ(s.data()[25], 1);  // the new width's low byte

  kcGraphicProps vertices = thinner;
  vertices.showVertex(true);
  s.opcode(kcUISketch::kPropsOpcode, vertices);
  ASSERT_EQ(s.length(), 66);
  EXPECT_EQ(s.data()[65], 1);
}

}  // namespace
