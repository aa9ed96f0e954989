#include "dispc/uisketch.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>
#include <vector>

#include "dispc/uierror.h"
#include "foundation/archive.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const kcUISketch& s) { return s.length() ? Bytes(s.data(), s.data() + s.length()) : Bytes(); }

kcGraphicProps wideProps() { return kcGraphicProps(kcColor::red, 4, kcGraphicProps::penDash, true); }

TEST(UISketchBuffer, GrowthAllocatesExactlyFirstThenAtLeastDoubles) {
  kcUISketch s;
  EXPECT_TRUE(s.data() == nullptr && s.capacity() == 0 && s.isNull());
  // {n, length, capacity}: capacity = max(length + n, 2 * capacity) whenever length + n passes it.
  const long steps[][3] = {{10, 10, 10}, {1, 11, 20},     {9, 20, 20},
                           {15, 35, 40}, {100, 135, 135}, {0, 135, 135}};
  for (const auto& step : steps) {
    const long before = s.length();
    const unsigned char* end = s.append(step[0]);
    EXPECT_EQ(end, s.data() + before) << step[0];
    EXPECT_EQ(s.length(), step[1]) << step[0];
    EXPECT_EQ(s.capacity(), step[2]) << step[0];
  }
  EXPECT_THROW(s.append(-1), kcUIError::BadParams);
  EXPECT_THROW(s.append(2147483647L), std::bad_alloc);  // past the 32-bit length
  EXPECT_TRUE(s.length() == 135 && s.capacity() == 135);
  kcUISketch self;
  self.append(Bytes{1, 2, 3, 4}.data(), 4);
  self.append(self.data(), self.length());  // must grow: the source block moves
  EXPECT_EQ(bytesOf(self), (Bytes{1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST(UISketchBuffer, CopiesTakeTheBytesButNotTheProps) {
  kcUISketch s;
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  s.append(5);
  kcUISketch copy(s);
  EXPECT_EQ(bytesOf(copy), bytesOf(s));
  EXPECT_EQ(copy.capacity(), s.capacity());
  copy.opcode(kcUISketch::kPropsOpcode, wideProps());  // the copy's props are default
  EXPECT_EQ(copy.length(), s.length() + 22);
  s.opcode(kcUISketch::kPropsOpcode, wideProps());  // the original remembers
  EXPECT_EQ(s.length(), 27);

  // Assignment grows by the growth rule and keeps the target's props.
  const Bytes ten(10, 7);
  kcUISketch source;
  source.append(ten.data(), 10);
  for (auto [had, capacity] : {std::pair{4L, 10L}, {8L, 16L}, {40L, 40L}}) {
    kcUISketch target;
    target.append(had);
    target = source;
    EXPECT_EQ(bytesOf(target), ten);
    EXPECT_EQ(target.capacity(), capacity) << had;
  }
  kcUISketch target;
  target.opcode(kcUISketch::kPropsOpcode, wideProps());
  target = source;
  target.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(bytesOf(target), ten);
}

TEST(UISketchBuffer, EraseKeepsTheBlockEraseAndDeleteFreesIt) {
  kcUISketch s;
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  s.append(10);
  const long capacity = s.capacity();
  s.erase();
  EXPECT_TRUE(s.isNull() && s.length() == 0 && s.capacity() == capacity && s.data() != nullptr);
  s.opcode(kcUISketch::kPropsOpcode, wideProps());  // props are default again
  EXPECT_EQ(s.length(), 22);
  s.eraseAndDelete();
  EXPECT_TRUE(s.data() == nullptr && s.length() == 0 && s.capacity() == 0);
}

TEST(UISketchProps, RecordWrittenOnlyWhenSomethingButTheColourChanges) {
  kcUISketch s;
  s.opcode(kcUISketch::kPropsOpcode, kcGraphicProps());  // equal to the new sketch's
  EXPECT_EQ(s.length(), 0);
  s.opcode(kcUISketch::kPropsOpcode, wideProps());
  EXPECT_EQ(bytesOf(s), (Bytes{40, 0, 1, 4, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0}));
  kcGraphicProps p = wideProps();
  p.penColor(kcColor::blue);
  s.opcode(kcUISketch::kPropsOpcode, p);
  EXPECT_EQ(s.length(), 22);
  p.showVertex(true);
  s.opcode(kcUISketch::kPropsOpcode, p);
  ASSERT_EQ(s.length(), 44);
  EXPECT_EQ(s.data()[22], 40);
  EXPECT_EQ(s.data()[43], 1);
}

// A sketch holding the bytes first, first + 1, ..., first + n - 1.
kcUISketch counting(int first, int n) {
  kcUISketch s;
  for (int i = 0; i < n; ++i) *s.append(1) = static_cast<unsigned char>(first + i);
  return s;
}

TEST(UISketchMarks, CutInsertAndAppend) {
  kcUISketch s = counting(0, 4);
  const kcUISketchMark two = [] {
    kcUISketch s2 = counting(0, 2);
    return s2.mark();  // a mark is a position, good for any sketch
  }();
  const kcUISketchMark end = s.mark();
  EXPECT_TRUE(s.subSketch(two, two).isNull());
  EXPECT_TRUE(s.subSketch(end, two).isNull());
  EXPECT_EQ(bytesOf(s.subSketch(two, end)), (Bytes{2, 3}));
  s.remove(two, two);
  s.remove(end, two);
  EXPECT_EQ(bytesOf(s), (Bytes{0, 1, 2, 3}));

  kcUISketch inserted = s;
  inserted.insert(counting(7, 2), two);
  EXPECT_EQ(bytesOf(inserted), (Bytes{0, 1, 7, 8, 2, 3}));
  inserted.insert(inserted, kcUISketchMark());  // itself, at the front
  EXPECT_EQ(bytesOf(inserted), (Bytes{0, 1, 7, 8, 2, 3, 0, 1, 7, 8, 2, 3}));

  kcUISketch atEnd = s;
  atEnd.insert(counting(9, 3), atEnd.mark());
  kcUISketch appended = s;
  appended += counting(9, 3);
  EXPECT_EQ(bytesOf(atEnd), bytesOf(appended));

  s.remove(kcUISketchMark(), two);
  EXPECT_EQ(bytesOf(s), (Bytes{2, 3}));
  const kcUISketch sum = counting(1, 2) + counting(5, 1);
  EXPECT_EQ(bytesOf(sum), (Bytes{1, 2, 5}));
  EXPECT_EQ(sum.capacity(), 3);
  s += s;
  EXPECT_EQ(bytesOf(s), (Bytes{2, 3, 2, 3}));
}

TEST(UISketchMarks, ArchiveAsTheirPosition) {
  const kcUISketchMark m = counting(0, 5).mark();
  kcMemArchive out;
  kcUISketchMark copy = m;
  out || copy;
  EXPECT_EQ(out.bytes(), (Bytes{5, 0, 0, 0}));
  kcMemArchive in(out.bytes());
  kcUISketchMark back;
  in || back;
  EXPECT_EQ(back, m);
}

}  // namespace
