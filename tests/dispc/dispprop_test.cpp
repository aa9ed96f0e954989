#include "dispc/dispprop.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "dispc/uisketch.h"
#include "foundation/archive.h"

// Reaches the sketch-record operations, which only the sketch uses.
class kc_GraphicPropsRecordPeer {
 public:
  static long write(kcUISketch* sketch, const kcGraphicProps& p) { return kcGraphicProps::opcode(sketch, p); }
  static long read(kcGraphicProps* target, const unsigned char* bytes) {
    return kcGraphicProps::opcode(target, bytes);
  }
};

namespace {

using Bytes = std::vector<std::uint8_t>;
using Peer = kc_GraphicPropsRecordPeer;

Bytes le32(std::int32_t v) {
  auto u = static_cast<std::uint32_t>(v);
  return {static_cast<std::uint8_t>(u), static_cast<std::uint8_t>(u >> 8), static_cast<std::uint8_t>(u >> 16),
          static_cast<std::uint8_t>(u >> 24)};
}

void append(Bytes& out, const Bytes& more) { out.insert(out.end(), more.begin(), more.end()); }

Bytes colorRecord(kcColor c) {
  kcMemArchive ar;
  ar || c;
  return ar.bytes();
}

// Every field away from its default.
kcGraphicProps unusualProps() {
  kcGraphicProps p(kcColor::red, 7, kcGraphicProps::penDot, true);
  p.penJoin(kcGraphicProps::joinMiter);
  p.penEndCap(kcGraphicProps::capFlat);
  p.arrowHead(false);
  p.arrowHeadForward(false);
  p.showVertex(true);
  return p;
}

void expectSameFields(const kcGraphicProps& a, const kcGraphicProps& b) {
  EXPECT_EQ(a.penWidth(), b.penWidth());
  EXPECT_EQ(a.penStyle(), b.penStyle());
  EXPECT_EQ(a.fill(), b.fill());
  EXPECT_EQ(a.penJoin(), b.penJoin());
  EXPECT_EQ(a.penEndCap(), b.penEndCap());
  EXPECT_EQ(a.arrowHead(), b.arrowHead());
  EXPECT_EQ(a.arrowHeadForward(), b.arrowHeadForward());
  EXPECT_EQ(a.showVertex(), b.showVertex());
}

// --- values ---

TEST(GraphicProps, DefaultsDrawCyanOnePelOutlineWithForwardArrow) {
  const kcGraphicProps p;
  EXPECT_EQ(p.penColor(), kcColor::cyan);
  EXPECT_TRUE(p.penColor().isStockColor());
  EXPECT_EQ(p.penWidth(), 1);
  EXPECT_EQ(p.penStyle(), 0);
  EXPECT_EQ(p.penJoin(), 0);
  EXPECT_EQ(p.penEndCap(), 0);
  EXPECT_FALSE(p.fill());
  EXPECT_TRUE(p.arrowHead());
  EXPECT_TRUE(p.arrowHeadForward());
  EXPECT_FALSE(p.showVertex());

  std::unique_ptr<kcPersistent> made(kcPersistenceRegistry::make("kcGraphicProps"));
  ASSERT_NE(made, nullptr);
  auto* props = dynamic_cast<kcGraphicProps*>(made.get());
  ASSERT_NE(props, nullptr);
  EXPECT_EQ(*props, p);
  EXPECT_STREQ(props->className(), "kcGraphicProps");
}

TEST(GraphicProps, FourArgumentConstructorDefaultsTheRest) {
  const kcGraphicProps p(kcColor(10, 20, 30), 0, kcGraphicProps::penDash, true);
  EXPECT_EQ(p.penColor(), kcColor(10, 20, 30));
  EXPECT_EQ(p.penWidth(), 0);
  EXPECT_EQ(p.penStyle(), kcGraphicProps::penDash);
  EXPECT_TRUE(p.fill());
  EXPECT_EQ(p.penJoin(), 0);
  EXPECT_EQ(p.penEndCap(), 0);
  EXPECT_TRUE(p.arrowHead());
  EXPECT_TRUE(p.arrowHeadForward());
  EXPECT_FALSE(p.showVertex());
}

TEST(GraphicProps, BadWidthIsRejectedEverywhereItEnters) {
  EXPECT_THROW(kcGraphicProps(kcColor::red, -1, kcGraphicProps::penSolid, false), kcGraphicProps::BadParams);
  EXPECT_THROW(kcGraphicProps(kcColor::red, 2147483648L, kcGraphicProps::penSolid, false),
               kcGraphicProps::BadParams);
  EXPECT_NO_THROW(kcGraphicProps(kcColor::red, 2147483647L, kcGraphicProps::penSolid, false));

  kcGraphicProps p;
  p.penWidth(0);
  EXPECT_EQ(p.penWidth(), 0);
  p.penWidth(5);
  EXPECT_THROW(p.penWidth(-1), kcGraphicProps::BadParams);
  EXPECT_EQ(p.penWidth(), 5);
  EXPECT_THROW(p.penWidth(2147483648L), kcGraphicProps::BadParams);
  EXPECT_EQ(p.penWidth(), 5);
}

// Each row changes one field of unusualProps(), through its setter.
TEST(GraphicProps, SettersChangeOneFieldEqualityNoticesEach) {
  using Change = std::function<void(kcGraphicProps&)>;
  const std::vector<Change> changes = {
      [](kcGraphicProps& p) { p.penColor(kcColor::green); },
      [](kcGraphicProps& p) { p.penWidth(8); },
      [](kcGraphicProps& p) { p.penStyle(static_cast<kcGraphicProps::kePenStyle>(-7)); },
      [](kcGraphicProps& p) { p.fill(false); },
      [](kcGraphicProps& p) { p.penJoin(static_cast<kcGraphicProps::kePenJoin>(1000)); },
      [](kcGraphicProps& p) { p.penEndCap(kcGraphicProps::capRound); },
      [](kcGraphicProps& p) { p.arrowHead(true); },
      [](kcGraphicProps& p) { p.arrowHeadForward(true); },
      [](kcGraphicProps& p) { p.showVertex(false); },
  };
  const kcGraphicProps base = unusualProps();
  for (std::size_t i = 0; i < changes.size(); ++i) {
    kcGraphicProps tracked = base;
    tracked.track(true);
    changes[i](tracked);
    EXPECT_TRUE(tracked.changed()) << i;
    EXPECT_NE(tracked, base) << i;
    EXPECT_FALSE(tracked == base) << i;
    // Only that field: changing it in a second copy gives an equal object.
    kcGraphicProps untracked = base;
    changes[i](untracked);
    EXPECT_FALSE(untracked.changed()) << i;
    EXPECT_EQ(untracked, tracked) << i;
  }
  kcGraphicProps rejected;
  rejected.track(true);
  EXPECT_THROW(rejected.penWidth(-4), kcGraphicProps::BadParams);
  EXPECT_FALSE(rejected.changed());
}

TEST(GraphicProps, ColoursCompareByColourEquality) {
  const kcGraphicProps stock(kcColor::red, 2, kcGraphicProps::penSolid, false);
  EXPECT_EQ(stock, kcGraphicProps(kcColor(255, 0, 0), 2, kcGraphicProps::penSolid, false));
  EXPECT_EQ(stock, kcGraphicProps(kcColor(249), 2, kcGraphicProps::penSolid, false));
  // Colour equality is not transitive, and props inherit that.
  EXPECT_NE(kcGraphicProps(kcColor(249), 2, kcGraphicProps::penSolid, false),
            kcGraphicProps(kcColor(255, 0, 0), 2, kcGraphicProps::penSolid, false));

  kcGraphicProps assigned;
  assigned = unusualProps();
  EXPECT_EQ(assigned, unusualProps());
  expectSameFields(assigned, unusualProps());
}

// --- error ---

TEST(GraphicProps, BadParamsIsAPersistentNumberedError) {
  const kcGraphicProps::BadParams e;
  EXPECT_EQ(e.errorNumber(), 0x10004513);
  EXPECT_STREQ(e.className(), "kcGraphicProps::BadParams");
  EXPECT_NE(e.message().find(L"pen width"), std::wstring::npos);
  std::unique_ptr<kcPersistent> made(kcPersistenceRegistry::make("kcGraphicProps::BadParams"));
  ASSERT_NE(dynamic_cast<kcGraphicProps::BadParams*>(made.get()), nullptr);
  EXPECT_THROW((new kcGraphicProps::BadParams())->suicideAndRethrow(), kcGraphicProps::BadParams);

  // Its record is the version byte alone; another version names the class.
  kcMemArchive out;
  kcGraphicProps::BadParams(e).dispatchSerialize(out);
  EXPECT_EQ(out.bytes(), Bytes{0});
  kcMemArchive in(Bytes{1});
  try {
    kcGraphicProps::BadParams().dispatchSerialize(in);
    FAIL() << "no exception";
  } catch (const kcArchive::UnknownVersion& v) {
    EXPECT_EQ(v.file(), "kcGraphicProps::BadParams");
    EXPECT_EQ(v.line(), 0);
  }
}

// --- archive ---

TEST(GraphicProps, ArchiveFormIsFieldByField) {
  kcGraphicProps p = unusualProps();
  p.arrowHeadForward(true);
  p.penStyle(static_cast<kcGraphicProps::kePenStyle>(-2));
  kcMemArchive out;
  out || p;
  out || p;  // already visited in this pass: nothing more

  Bytes expected{0};
  append(expected, colorRecord(kcColor::red));
  append(expected, le32(7));
  append(expected, le32(-2));
  expected.push_back(1);  // fill
  append(expected, le32(kcGraphicProps::joinMiter));
  append(expected, le32(kcGraphicProps::capFlat));
  append(expected, {0, 1, 1});  // arrowHead, arrowHeadForward, showVertex
  EXPECT_EQ(out.bytes(), expected);
  EXPECT_EQ(out.bytes().size(), 28u);

  kcMemArchive in(out.bytes());
  kcGraphicProps loaded;
  loaded.track(true);
  in || loaded;
  EXPECT_TRUE(loaded.changed());
  EXPECT_TRUE(in.atEnd());
  EXPECT_EQ(loaded, p);
  expectSameFields(loaded, p);
  EXPECT_TRUE(loaded.penColor().isStockColor());
}

TEST(GraphicProps, BadArchiveRecordsLeaveTheTargetUnchanged) {
  kcMemArchive out;
  kcGraphicProps source = unusualProps();
  out || source;
  const Bytes good = out.bytes();

  Bytes badVersion = good;
  badVersion[0] = 1;
  Bytes negativeWidth = good;
  const Bytes minusOne = le32(-1);
  std::copy(minusOne.begin(), minusOne.end(), negativeWidth.begin() + 8);
  const Bytes truncated(good.begin(), good.end() - 1);

  {
    kcMemArchive in(badVersion);
    kcGraphicProps target;
    try {
      in || target;
      FAIL() << "no exception";
    } catch (const kcArchive::UnknownVersion& e) {
      EXPECT_EQ(e.file(), "dispc/dispprop");
      EXPECT_EQ(e.line(), 49);
    }
    EXPECT_EQ(target, kcGraphicProps());
  }
  {
    kcMemArchive in(negativeWidth);
    kcGraphicProps target;
    EXPECT_THROW(in || target, kcGraphicProps::BadParams);
    EXPECT_EQ(target, kcGraphicProps());
    EXPECT_EQ(target.penWidth(), 1);
  }
  {
    kcMemArchive in(truncated);
    kcGraphicProps target;
    EXPECT_THROW(in || target, kcArchive::Corrupt);
    EXPECT_EQ(target, kcGraphicProps());
  }
}

// --- sketch record ---

TEST(GraphicProps, SketchRecordLayout) {
  kcGraphicProps p = unusualProps();
  p.penWidth(0x01020304);
  p.penStyle(static_cast<kcGraphicProps::kePenStyle>(-3));
  kcUISketch sketch;
  ASSERT_EQ(Peer::write(&sketch, p), 21);
  ASSERT_EQ(sketch.length(), 21);

  Bytes expected{0, 1};
  append(expected, le32(0x01020304));
  append(expected, le32(-3));
  append(expected, le32(kcGraphicProps::joinMiter));
  append(expected, le32(kcGraphicProps::capFlat));
  append(expected, {0, 0, 1});
  EXPECT_EQ(Bytes(sketch.data(), sketch.data() + sketch.length()), expected);

  EXPECT_EQ(Peer::write(nullptr, p), 0);
}

TEST(GraphicProps, SketchRecordReadsBackEverythingButTheColour) {
  const std::vector<kcGraphicProps> cases = {
      kcGraphicProps(), unusualProps(),
      kcGraphicProps(kcColor::blue, 2147483647L, static_cast<kcGraphicProps::kePenStyle>(-1), true)};
  for (const kcGraphicProps& p : cases) {
    kcUISketch sketch;
    Peer::write(&sketch, p);
    kcGraphicProps target(kcColor::green, 9, kcGraphicProps::penDot, false);
    target.arrowHead(!p.arrowHead());
    target.track(true);
    ASSERT_EQ(Peer::read(&target, sketch.data() + 1), 20);
    expectSameFields(target, p);
    EXPECT_EQ(target.penColor(), kcColor::green);
    EXPECT_TRUE(target.changed());
  }
}

TEST(GraphicProps, SketchRecordReaderEdgeCases) {
  kcUISketch sketch;
  Peer::write(&sketch, unusualProps());
  Bytes bytes(sketch.data(), sketch.data() + sketch.length());

  kcGraphicProps target;
  EXPECT_EQ(Peer::read(nullptr, bytes.data() + 1), 0);
  EXPECT_EQ(Peer::read(&target, nullptr), 0);
  EXPECT_EQ(target, kcGraphicProps());

  // Any nonzero flag byte reads as true.
  Bytes flags = bytes;
  flags[1] = 2;
  flags[20] = 0xff;
  ASSERT_EQ(Peer::read(&target, flags.data() + 1), 20);
  EXPECT_TRUE(target.fill());
  EXPECT_TRUE(target.showVertex());

  // A negative width throws and leaves the target as it was.
  Bytes negative = bytes;
  const Bytes minusOne = le32(-1);
  std::copy(minusOne.begin(), minusOne.end(), negative.begin() + 2);
  kcGraphicProps untouched;
  EXPECT_THROW(Peer::read(&untouched, negative.data() + 1), kcGraphicProps::BadParams);
  EXPECT_EQ(untouched, kcGraphicProps());
  EXPECT_FALSE(untouched.fill());
}

}  // namespace
