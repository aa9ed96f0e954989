#include "dispc/dispprop.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "dispc/uisketch.h"
#include "tests/dispc/archive_checks.h"

// Reaches the sketch-record operations, which only the sketch uses.
class kc_GraphicPropsRecordPeer {
 public:
  static long write(kcUISketch* sketch, const kcGraphicProps& p) { return kcGraphicProps::opcode(sketch, p); }
  static long read(kcGraphicProps* target, const unsigned char* bytes) {
    return kcGraphicProps::opcode(target, bytes);
  }
};

namespace {

using dispc_test::Bytes;
using Peer = kc_GraphicPropsRecordPeer;
using P = kcGraphicProps;

// Every field away from its default.
P unusualProps() {
  P p(kcColor::red, 7, P::penDot, true);
  p.penJoin(P::joinMiter);
  p.penEndCap(P::capFlat);
  p.arrowHead(false);
  p.arrowHeadForward(false);
  p.showVertex(true);
  return p;
}

TEST(GraphicProps, DefaultsAndWidthCheck) {
  for (const P& p : {P(), P(kcColor(10, 20, 30), 0, P::penDash, true)})
    EXPECT_TRUE(p.penJoin() == 0 && p.penEndCap() == 0 && p.arrowHead() && p.arrowHeadForward() &&
                !p.showVertex());
  const P p;
  EXPECT_TRUE(p.penColor() == kcColor::cyan && p.penColor().isStockColor());
  EXPECT_TRUE(p.penWidth() == 1 && p.penStyle() == 0 && !p.fill());
  EXPECT_THROW(P(kcColor::red, -1, P::penSolid, false), P::BadParams);
  EXPECT_THROW(P(kcColor::red, 2147483648L, P::penSolid, false), P::BadParams);  // beyond 32 bits
  P zero = p;
  zero.penWidth(0);
  zero.track(true);
  EXPECT_THROW(zero.penWidth(-1), P::BadParams);
  EXPECT_TRUE(zero.penWidth() == 0 && !zero.changed());
}

TEST(GraphicProps, EachSetterChangesOneFieldAndEqualityNoticesIt) {
  const std::vector<std::function<void(P&)>> changes = {
      [](P& p) { p.penColor(kcColor::green); },
      [](P& p) { p.penWidth(8); },
      [](P& p) { p.penStyle(static_cast<P::kePenStyle>(-7)); },  // never range-checked
      [](P& p) { p.fill(false); },
      [](P& p) { p.penJoin(static_cast<P::kePenJoin>(1000)); },
      [](P& p) { p.penEndCap(P::capRound); },
      [](P& p) { p.arrowHead(true); },
      [](P& p) { p.arrowHeadForward(true); },
      [](P& p) { p.showVertex(false); },
  };
  const P base = unusualProps();
  for (std::size_t i = 0; i < changes.size(); ++i) {
    P tracked = base, untracked = base;
    tracked.track(true);
    changes[i](tracked);
    changes[i](untracked);
    EXPECT_TRUE(tracked.changed()) << i;
    EXPECT_TRUE(tracked != base && !(tracked == base)) << i;
    EXPECT_EQ(untracked, tracked) << i;
  }
  // Pen colours compare by colour equality, which is not transitive.
  EXPECT_EQ(P(kcColor::red, 2, P::penSolid, false), P(kcColor(255, 0, 0), 2, P::penSolid, false));
  EXPECT_EQ(P(kcColor::red, 2, P::penSolid, false), P(kcColor(249), 2, P::penSolid, false));
  EXPECT_NE(P(kcColor(249), 2, P::penSolid, false), P(kcColor(255, 0, 0), 2, P::penSolid, false));
}

TEST(GraphicProps, BadParamsIsAPersistentNumberedError) {
  EXPECT_EQ(P::BadParams().errorNumber(), 0x10004513);
  EXPECT_THROW((new P::BadParams())->suicideAndRethrow(), P::BadParams);
  EXPECT_EQ(dispc_test::stored(P::BadParams()), Bytes{0});
  dispc_test::expectUnknownVersion(Bytes{1}, P::BadParams(), "kcGraphicProps::BadParams", 0);
}

TEST(GraphicPropsArchive, FormRoundTripAndBadRecords) {
  P p = unusualProps();
  p.arrowHeadForward(true);
  kcMemArchive out;
  out || p;
  const Bytes good = out.bytes();
  // Version, the colour record, width, style, fill, join, cap, the arrow flags and showVertex.
  EXPECT_EQ(good,
            (Bytes{0, 0, 7, 249, 0, 255, 0, 0, 7, 0, 0, 0, 2, 0, 0, 0, 1, 2, 0, 0, 0, 2, 0, 0, 0, 0, 1, 1}));
  const P loaded = dispc_test::loaded(good, P());
  EXPECT_TRUE(loaded == p && loaded.penColor().isStockColor());
  Bytes badVersion = good, negativeWidth = good;
  badVersion[0] = 1;
  negativeWidth[8] = negativeWidth[9] = negativeWidth[10] = negativeWidth[11] = 0xff;
  dispc_test::expectUnknownVersion(badVersion, P(), "dispc/dispprop", 49);
  dispc_test::expectRefused<P::BadParams>(negativeWidth, P());
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(good.begin(), good.end() - 1), P());
}

TEST(GraphicPropsSketchRecord, LayoutAndReadBack) {
  P p = unusualProps();
  p.penWidth(0x01020304);
  kcUISketch sketch;
  ASSERT_EQ(Peer::write(&sketch, p), 21);
  const Bytes bytes(sketch.data(), sketch.data() + sketch.length());
  EXPECT_EQ(bytes, (Bytes{0, 1, 4, 3, 2, 1, 2, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(Peer::write(nullptr, p), 0);
  // Everything but the pen colour comes back.
  for (const P& source : {P(), p}) {
    kcUISketch s;
    Peer::write(&s, source);
    P target(kcColor::green, 9, P::penDash, !source.fill());
    ASSERT_EQ(Peer::read(&target, s.data() + 1), 20);
    EXPECT_EQ(target.penColor(), kcColor::green);
    target.penColor(source.penColor());
    EXPECT_EQ(target, source);
  }
  P target;
  EXPECT_EQ(Peer::read(nullptr, bytes.data() + 1), 0);
  EXPECT_EQ(Peer::read(&target, nullptr), 0);
  Bytes negative = bytes;
  negative[2] = negative[3] = negative[4] = negative[5] = 0xff;
  EXPECT_THROW(Peer::read(&target, negative.data() + 1), P::BadParams);
  EXPECT_EQ(target, P());
}

}  // namespace
