#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "dispc/tablet.h"
#include "dispc/tracescope.h"
#include "dispc/uierror.h"
#include "foundation/exception.h"

namespace {

using Log = std::vector<std::string>;

// Writes "name hook" into a shared log for every notification hook.
class LogTablet : public kcUITablet {
 public:
  LogTablet(Log& log, std::string name, kcUIScope* main = nullptr, kcUIScope* overlay = nullptr)
      : kcUITablet(main, overlay), log_(log), name_(std::move(name)) {}

 protected:
  void move_() override { log_.push_back(name_ + " move_"); }
  void newParentTablet(kcUITablet*) override { log_.push_back(name_ + " newParentTablet"); }
  void parentMapChanged() override { log_.push_back(name_ + " parentMapChanged"); }
  void redraw_() override { log_.push_back(name_ + " redraw_"); }
  void resize_() override { log_.push_back(name_ + " resize_"); }

 private:
  Log& log_;
  std::string name_;
};

// A trace scope whose sub-scopes count their deletions.
class CountingScope : public kcUITraceScope {
 public:
  explicit CountingScope(int& deaths) : deaths_(deaths) {}
  ~CountingScope() override { ++deaths_; }
  kcUIScope* makeSubScope(const kcUIRect& area) override {
    delete kcUITraceScope::makeSubScope(area);  // keeps the trace line
    return new CountingScope(deaths_);
  }

 private:
  int& deaths_;
};

bool hasLine(const kcUIScope* s, const std::string& line) {
  const auto& lines = dynamic_cast<const kcUITraceScope&>(*s).lines();
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

kcVector<2> mapped(const kcUITablet& t, double x, double y) { return t.scaledMap().mapPoint({x, y}); }

// --- scaling ---

TEST(TabletScale, ModeComesFromFirstFactorOnly) {
  kcUITablet t;
  t.baseMap(kcXform<2>::translation({5, 7}));
  t.scaleExact({1.0000005, 3});
  EXPECT_EQ(t.scaleMode(), kcUITablet::scaleNone);
  EXPECT_EQ(t.scaledMap(), t.baseMap());
  EXPECT_EQ(t.scaleExact(), kcPair<double>(1.0000005, 3));
  t.scaleExact({4, 0.5});
  EXPECT_EQ(t.scaleMode(), kcUITablet::scaleMagnify);
  t.scaleExact({0.5, 0.5});
  EXPECT_EQ(t.scaleMode(), kcUITablet::scaleReduce);
  // The base map applies first, then the halving.
  EXPECT_EQ(mapped(t, 4, 6), kcVector<2>(4.5, 6.5));
}

TEST(TabletScale, ReduceDividesOnlyWhenBothFactorsExceedOne) {
  kcUITablet t;
  t.scaleMode(kcUITablet::scaleReduce);
  t.scale({2, 2});
  EXPECT_EQ(mapped(t, 4, 6), kcVector<2>(2, 3));
  t.scale({3, 1});
  EXPECT_EQ(mapped(t, 4, 6), kcVector<2>(12, 6));
  EXPECT_EQ(t.scaleMode(), kcUITablet::scaleReduce);  // whole factors keep the mode
  EXPECT_EQ(t.scale(), kcPair<long>(3, 1));
  t.scaleExact({0.25, 0.5});
  EXPECT_EQ(t.scale(), kcPair<long>(4, 2));
}

// --- coordinates ---

TEST(TabletCoords, RaisedBeforeTheFloor) {
  kcUITablet t;
  EXPECT_EQ(t.scopeCoords({99.9999999999, -0.5}), kcPair<long>(100, -1));
  EXPECT_EQ(t.scopeCoords({99.9999, 0}), kcPair<long>(99, 0));
  t.scopeRect(kcUIRect(10, 20, 5, 5));
  EXPECT_EQ(t.screenCoords({2.5, 3}), kcPair<long>(12, 23));
}

TEST(TabletCoords, TabletCoordsInvertsTheScaledMap) {
  kcUITablet t;
  t.baseMap(kcXform<2>::translation({3, -1}));
  t.scaleExact({2, 4});
  EXPECT_EQ(t.scopeCoords({1.3, 2.2}), kcPair<long>(8, 4));
  EXPECT_EQ(t.tabletCoords(t.scopeCoords({1.3, 2.2})).point(), kcVector<2>(1, 2));
  t.scaleExact({0, 1});
  EXPECT_THROW((void)t.tabletCoords({1, 1}), kcMathError::Singular);
}

TEST(TabletCoords, MovesAndResizesCallTheirHooks) {
  Log log;
  LogTablet t(log, "t");
  t.scopeRect(kcUIRect(1, 2, 30, 40));
  EXPECT_EQ(log, (Log{"t resize_", "t move_"}));
  log.clear();
  t.moveRel({4, 5});
  EXPECT_EQ(t.absRect(), kcUIRect(5, 7, 30, 40));
  t.moveAbs({5, 7});  // the same place: nothing to tell
  EXPECT_EQ(log, (Log{"t move_"}));
}

// --- parent and kids ---

TEST(TabletKids, ListOrderAndSiblingWalks) {
  kcUITablet p;
  kcUITablet a(p, {});
  kcUITablet b(p, {});
  kcUITablet c(p, {});
  EXPECT_EQ(a.nextSib(), nullptr);  // no parent yet
  for (kcUITablet* k : {&a, &b, &c}) k->setParent(p, {});
  b.setParent(p, {});  // re-joining moves b to the end
  EXPECT_EQ(p.numKids(), 3);
  EXPECT_EQ(p.firstKid(), &a);
  EXPECT_EQ(p.lastKid(), &b);
  EXPECT_EQ(a.nextSib(), &c);
  EXPECT_EQ(c.nextSib(), &b);
  EXPECT_EQ(b.nextSib(), nullptr);
  EXPECT_EQ(b.prevSib(), &c);
  EXPECT_EQ(a.prevSib(), nullptr);
  EXPECT_FALSE(a.isDetached());
}

TEST(TabletKids, MapChangeReachesKidsBeforeParentRedraws) {
  Log log;
  kcUITraceScope screen;
  LogTablet p(log, "p", &screen);
  LogTablet a(log, "a");
  LogTablet b(log, "b");
  a.setParent(p, {});
  b.setParent(p, {});
  log.clear();
  p.baseMap(kcXform<2>::translation({1, 1}));
  EXPECT_EQ(log, (Log{"a parentMapChanged", "b parentMapChanged", "p redraw_"}));
}

TEST(TabletKids, CannotBecomeItsOwnDescendant) {
  kcUITablet p;
  kcUITablet a;
  a.setParent(p, {});
  EXPECT_THROW(a.setParent(a, {}), kcUIError::BadParams);
  EXPECT_THROW(p.setParent(a, {}), kcUIError::BadParams);
  EXPECT_EQ(p.parent(), nullptr);
  EXPECT_EQ(p.firstKid(), &a);
  EXPECT_EQ(a.numKids(), 0);
}

TEST(TabletParent, SubScopesFollowTheParentAndCallerScopesSurvive) {
  int deaths = 0;
  int callerDeaths = 0;
  CountingScope screen1(deaths);
  CountingScope screen2(deaths);
  CountingScope overlay1(deaths);
  auto caller = std::make_unique<CountingScope>(callerDeaths);
  Log log;
  LogTablet p1(log, "p1", &screen1, &overlay1);
  LogTablet p2(log, "p2", &screen2);
  LogTablet kid(log, "kid", caller.get());
  LogTablet grandkid(log, "grandkid");

  kid.setParent(p1, kcUIRect(1, 2, 30, 40));
  EXPECT_TRUE(hasLine(&screen1, "makeSubScope 1 2 30 40"));
  EXPECT_TRUE(hasLine(&overlay1, "makeSubScope 1 2 30 40"));
  ASSERT_NE(kid.scope(kcUITablet::mainLayer), nullptr);
  EXPECT_NE(kid.scope(kcUITablet::mainLayer), caller.get());
  grandkid.setParent(kid, kcUIRect(3, 4, 5, 6));
  EXPECT_TRUE(hasLine(kid.scope(kcUITablet::mainLayer), "makeSubScope 3 4 5 6"));

  kid.sketch().append("x", 1);
  kid.recordOn().push(true);
  log.clear();
  kid.setParent(p2, kcUIRect(7, 8, 9, 10));
  EXPECT_EQ(deaths, 4);  // both of kid's old sub-scopes and both of grandkid's
  EXPECT_EQ(callerDeaths, 0);
  EXPECT_TRUE(kid.sketch().isNull());
  EXPECT_EQ(kid.scope(kcUITablet::overlayLayer), nullptr);  // p2 has no overlay
  kcUIScope* main = kid.scope(kcUITablet::mainLayer);
  EXPECT_TRUE(hasLine(&screen2, "makeSubScope 7 8 9 10"));
  EXPECT_TRUE(hasLine(main, "makeSubScope 3 4 5 6"));
  EXPECT_TRUE(hasLine(main, "settle"));
  EXPECT_TRUE(hasLine(main, "releaseUpdates"));
  EXPECT_EQ(kid.scopeRect(), kcUIRect(7, 8, 9, 10));
  // The grandkid draws when re-attached and again in the kid's full draw.
  EXPECT_EQ(log, (Log{"kid newParentTablet", "grandkid newParentTablet", "grandkid redraw_", "kid resize_",
                      "kid move_", "kid redraw_", "grandkid redraw_"}));
}

// --- point icons ---

TEST(TabletIcon, PatternImage) {
  const kcPelBuffer<unsigned char> icon = kcUITablet::makeIcon(kcUITablet::kPointIconPattern, {0}).decode();
  ASSERT_EQ(icon.width(), 13);
  ASSERT_EQ(icon.height(), 13);
  for (long x = 0; x < 13; ++x) EXPECT_EQ(icon.get(x, 6), 0) << x;
  for (long c : {0, 12}) {
    EXPECT_EQ(icon.get(c, 0), 243);
    EXPECT_EQ(icon.get(c, 12), 243);
  }
  EXPECT_EQ(&kcUITablet::pointIcon(), &kcUITablet::pointIcon());
  EXPECT_EQ(kcUITablet::pointIcon(), kcUITablet::makeIcon(kcUITablet::kPointIconPattern, {0}));
}

TEST(TabletIcon, PatternSyntax) {
  // Any separator; the last row may end with the string; digits past the
  // colour vector are their own index.
  const kcPelBuffer<unsigned char> icon = kcUITablet::makeIcon(L"|03|+.", {7}).decode();
  EXPECT_EQ(icon.width(), 2);
  EXPECT_EQ(icon.height(), 2);
  EXPECT_EQ(icon.get(0, 0), 7);
  EXPECT_EQ(icon.get(1, 0), 3);
  EXPECT_EQ(icon.get(0, 1), 243);
  // A stray character, ragged rows, an empty row, a pel as separator, nothing.
  for (const wchar_t* bad : {L"/0x/", L"/00/0/", L"/0//", L"0000", L""})
    EXPECT_THROW((void)kcUITablet::makeIcon(bad, {}), kcUIError::BadIconPattern) << bad;
}

TEST(TabletIcon, Touched) {
  EXPECT_TRUE(kcUITablet::pointIconTouched({0, 0}));
  EXPECT_TRUE(kcUITablet::pointIconTouched({6, 0}));
  EXPECT_TRUE(kcUITablet::pointIconTouched({1, 1}));
  EXPECT_FALSE(kcUITablet::pointIconTouched({6, 6}));
  EXPECT_FALSE(kcUITablet::pointIconTouched({7, 0}));
  EXPECT_FALSE(kcUITablet::pointIconTouched({0, -7}));
}

}  // namespace
