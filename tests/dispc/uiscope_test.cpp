#include "dispc/uiscope.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "dispc/teescope.h"
#include "dispc/tracescope.h"

namespace {

using Lines = std::vector<std::string>;

TEST(UIPath, PiecesJoinAndClose) {
  kcUIPath p;
  EXPECT_TRUE(p.empty());
  p.lineTo({1, 1});  // no sub-path yet: starts one
  p.lineTo({4, 1});
  // A quarter circle from (5, 1): joined to (4, 1) by a line.
  p.arcTo(
      kcEllipseArc(kcEllipse(kcXform<2>::translation({4, 1})), kcRadian(0.0), kcRadian(1.5707963267948966)));
  p.bezierTo({3, 3}, {2, 3}, {1, 2});
  p.close();
  p.close();  // nothing open: nothing more
  const std::vector<kcUIPath::Kind> kinds = {kcUIPath::Kind::move,   kcUIPath::Kind::line,
                                             kcUIPath::Kind::line,   kcUIPath::Kind::arc,
                                             kcUIPath::Kind::bezier, kcUIPath::Kind::close};
  ASSERT_EQ(p.pieces().size(), kinds.size());
  for (std::size_t i = 0; i < kinds.size(); ++i) EXPECT_EQ(p.pieces()[i].kind, kinds[i]) << i;
  EXPECT_EQ(p.pieces()[2].to, kcVector<2>(5, 1));
  EXPECT_EQ(p.arcs().size(), 1u);
  EXPECT_EQ(p.currentPoint(), kcVector<2>(1, 1));  // back at the start

  // An arc that starts where the path is needs no joining line.
  kcUIPath q;
  q.moveTo({5, 1});
  q.arcTo(kcEllipseArc(kcEllipse(kcXform<2>::translation({4, 1})), kcRadian(0.0), kcRadian(1.0)));
  EXPECT_EQ(q.pieces().size(), 2u);
}

TEST(UIScope, UpdateLocksNest) {
  kcUITraceScope s;
  EXPECT_FALSE(s.screenUpdatesLocked());
  s.lockScreenUpdatesPush(false);
  EXPECT_FALSE(s.screenUpdatesLocked());
  s.lockScreenUpdatesPush(true);
  s.lockScreenUpdatesPush(false);
  EXPECT_TRUE(s.screenUpdatesLocked());
  s.lockScreenUpdatesPop();
  s.lockScreenUpdatesPop();
  EXPECT_FALSE(s.screenUpdatesLocked());
  s.lockScreenUpdatesPop();
  s.lockScreenUpdatesPop();  // one pop too many: ignored
  EXPECT_FALSE(s.screenUpdatesLocked());
  EXPECT_EQ(s.lines().front(), "lockScreenUpdatesPush false");
}

TEST(TraceScope, WritesEveryCallWithItsArguments) {
  kcUITraceScope s;
  const kcGraphicProps props(kcColor::red, 2, kcGraphicProps::penDash, true);
  s.lineSeg({0.1, 2}, {3, 4}, props);
  s.pixel(kcPair<long>(3, -4), kcColor(7));
  s.ellipse(kcEllipse(kcXform<2>::scale(2, 1)), kcGraphicProps());
  s.text(L"A\u00e9", {1, 2}, kcColor::white, kcColor(10, 20, 30), kcUIFormat(3, kcUIFormat::center));
  s.moveTo({1, 1});
  s.lineRelPels(2, -1, props);
  const Lines expected = {
      "lineSeg 0.10000000000000001 2 3 4 colour(stock index 249 rgb 255 0 0) width 2 style 1 join 0 cap 0 "
      "fill "
      "arrow",
      "pixel 3 -4 colour(index 7)",
      "ellipse 2 0 0 1 0 0 colour(stock index 254 rgb 0 255 255) width 1 style 0 join 0 cap 0 nofill arrow",
      "text \"A\\u00e9\" 1 2 colour(stock index 255 rgb 255 255 255) colour(rgb 10 20 30) 3 4",
      "moveTo 1 1",
      "lineRelPels 2 -1 colour(stock index 249 rgb 255 0 0) width 2 style 1 join 0 cap 0 fill arrow",
  };
  EXPECT_EQ(s.lines(), expected);
  EXPECT_EQ(s.penPosition(), kcVector<2>(3, 0));
  s.clear();
  EXPECT_TRUE(s.lines().empty());
}

TEST(TraceScope, ImagesAreTracedByTheirPels) {
  kcPelBuffer<unsigned char> a(3, 2);
  kcPelBuffer<unsigned char> b(3, 2);
  b.put(2, 1, 1);
  kcUITraceScope s;
  s.image(a, {0, 0}, {}, false, 0);
  s.image(a, {0, 0}, {}, false, 0);
  s.image(b, {0, 0}, {}, false, 0);
  ASSERT_EQ(s.lines().size(), 3u);
  EXPECT_EQ(s.lines()[0], s.lines()[1]);
  EXPECT_NE(s.lines()[0], s.lines()[2]);
  s.image(kcRLEBuffer(a), {0, 0}, {1, 2}, true, 243);
  EXPECT_EQ(s.lines().back().rfind("imageRLE 3 2 #", 0), 0u);
}

TEST(TraceScope, TextRectsFollowTheAlignment) {
  kcUITraceScope s;
  const kcUIRect r = s.textRect(L"abcd", {10.5, 20}, kcUIFormat(0, kcUIFormat::bottomRight));
  EXPECT_EQ(r, kcUIRect(10 - 32, 20 - 16, 32, 16));
}

TEST(TeeScope, HandsEveryCallOnInOrder) {
  kcUITraceScope first;
  kcUITraceScope second;
  kcUITeeScope tee({&first, &second});
  tee.lockScreenUpdatesPush(true);
  tee.point({1, 2}, kcGraphicProps());
  tee.fill(kcPair<long>(1, 1), kcColor(3), kcColor(4), fillSameColor);
  tee.lockScreenUpdatesPop();
  EXPECT_EQ(first.lines().size(), 4u);
  EXPECT_EQ(first.lines(), second.lines());
  EXPECT_EQ(first.lines()[2], "fill 1 1 colour(index 3) colour(index 4) 1");

  (void)tee.textRect(L"x", {0, 0}, kcUIFormat(0, kcUIFormat::topLeft));
  EXPECT_EQ(second.lines().back().rfind("textRect", 0), 0u);  // every scope is asked

  const std::unique_ptr<kcUIScope> sub(tee.makeSubScope(kcUIRect(0, 0, 10, 10)));
  ASSERT_NE(sub, nullptr);
  sub->set(kcColor(1));  // reaches the sub-scopes, not the scopes themselves
  EXPECT_EQ(first.lines().back(), "makeSubScope 0 0 10 10");
  EXPECT_EQ(static_cast<kcUITeeScope&>(*sub).scopes().size(), 2u);
}

}  // namespace
