#include "dispc/glist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "dispc/tracescope.h"
#include "foundation/archive.h"
#include "foundation/shapes/shapetree.h"
#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;
using L = kcUITablet::Layers;
using P = kcGraphicProps;
using V = kcVector<2>;
using X = kcXform<2>;
using M = kcMatrix<2>;
using Lines = std::vector<std::string>;
using Items = std::vector<kcGraphicPtr>;

const X kMove(M(2, 0, 0, 2), V(3, -2));  // keeps circles circles and rectangles axis-parallel
const X kShear(M(2, 0.5, -0.25, 1.5), V(30, 40));
const std::vector<V> kProbes{V(0, 0), V(57.5, -13), V(3, 3.5)};
const kcEllipseAnnulusSection kSection(kcEllipseAnnulus(kcEllipse2(30, 20, kcRadian(0.5), V(200, 150)), 0.5),
                                       kcRadian(0.25), kcRadian(2.0));

// A tablet drawing on two trace devices.
struct Traced {
  kcUITraceScope main;
  kcUITraceScope overlay;
  kcUITablet tablet{&main, &overlay};
};

// Props compared with ==, and shown field by field when they differ.
std::string describe(const P& p) {
  const kcColor& c = p.penColor();
  std::ostringstream out;
  out << "{colour " << (c.isIndexColor() ? std::to_string(c.index()) : "rgb") << ", width " << p.penWidth()
      << ", style " << p.penStyle() << ", fill " << p.fill() << ", join " << p.penJoin() << ", cap "
      << p.penEndCap() << ", arrow " << p.arrowHead() << p.arrowHeadForward() << ", vertex " << p.showVertex()
      << "}";
  return out.str();
}
testing::AssertionResult sameProps(const char* a, const char* b, const P& pa, const P& pb) {
  if (pa == pb) return testing::AssertionSuccess();
  return testing::AssertionFailure() << a << " is " << describe(pa) << "\n" << b << " is " << describe(pb);
}
#define EXPECT_PROPS(a, b) EXPECT_PRED_FORMAT2(sameProps, a, b)

// Every field away from its default; filled.
P unusualProps() {
  P p(kcColor::red, 3, P::penDash, true);
  p.penJoin(P::joinMiter);
  p.penEndCap(P::capFlat);
  p.arrowHead(false);
  p.showVertex(true);
  return p;
}

// The geometry a graphic holds, whichever class holds it.
const kcShape* shapeOf(const kcGraphic& g) {
#define DISPC_TEST_SHAPE_OF_(T) \
  if (const auto* b = dynamic_cast<const kcGraphicBuiltin<T>*>(&g)) return &b->item();
  DISPC_GRAPHIC_BUILTIN_SHAPES(DISPC_TEST_SHAPE_OF_)
#undef DISPC_TEST_SHAPE_OF_
  if (const auto* c = dynamic_cast<const kcGraphicCross*>(&g)) return &c->item();
  if (const auto* i = dynamic_cast<const kcGraphicPointIcon*>(&g)) return &i->item();
  if (const auto* s = dynamic_cast<const kcGraphicEllipseAnnulusSection*>(&g)) return &s->item();
  return nullptr;
}

void expectSameGraphic(const kcGraphic& a, const kcGraphic& b) {
  EXPECT_EQ(std::string(a.className()), b.className());
  EXPECT_PROPS(a.props(), b.props()) << a.className();
  ASSERT_TRUE(shapeOf(a) && shapeOf(b)) << a.className();
  EXPECT_TRUE(*shapeOf(a) == *shapeOf(b)) << a.className();
}

// What the graphic stores of itself (no handle tag or class name).
Bytes bodyOf(kcGraphic& g) {
  kcMemArchive out;
  g.dispatchSerialize(out);
  return out.bytes();
}

Bytes storedHandle(kcGraphicPtr g) {
  kcMemArchive out;
  out || g;
  return out.bytes();
}

kcGraphicPtr loadedHandle(const Bytes& bytes) {
  kcMemArchive in(bytes);
  kcGraphicPtr g;
  in || g;
  EXPECT_TRUE(in.atEnd());
  return g;
}

// Where the body (the own version byte) of a handle's new object starts.
std::size_t bodyAt(const Bytes& b) {
  std::uint32_t n = 0;
  std::memcpy(&n, b.data() + 1, 4);
  return 5 + n;
}

// Loading the stored graphic with one version byte replaced (at the body
// start plus at) throws UnknownVersion naming file and line.
void expectVersionRefused(kcGraphicPtr g, std::size_t at, std::uint8_t version, const std::string& file,
                          int line) {
  Bytes bytes = storedHandle(g);
  bytes[bodyAt(bytes) + at] = version;
  try {
    kcMemArchive in(bytes);
    kcGraphicPtr target;
    in || target;
    ADD_FAILURE() << g->className() << ": version " << int(version) << " accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), file);
    EXPECT_EQ(e.line(), line);
  }
}

Lines traceOf(const kcGraphicList& list, L layer) {
  Traced d;
  list.draw(d.tablet, layer);
  Lines lines = d.main.lines();
  lines.insert(lines.end(), d.overlay.lines().begin(), d.overlay.lines().end());
  return lines;
}

kcPtrHandle<kcGraphicGroup> group(const Items& items) {
  auto g = kfMakeHandle<kcGraphicGroup>();
  g->items(items);
  return g;
}

using Disc = kcGraphicWithFill<kcCircle, kcEllipse2>;
kcPtrHandle<Disc> disc(const P& p = unusualProps()) { return kfMakeHandle<Disc>(kcCircle(V(50, 50), 20), p); }
kcGraphicPtr seg(const P& p = P()) {
  return kfMakeHandle<kcGraphicSimple<kcLineSeg>>(kcLineSeg(V(0, 0), V(100, -50)), p);
}

kcGraphicPtr text(const std::wstring& s, const kcColor& c) {
  return kfMakeHandle<kcGraphicText>(s, kcPoint(10, 20), c, kcColor::black, kcUIFormat(2, kcUIFormat::center),
                                     V(2.7, -1.9));
}

// --- the template instances ---

// One instance with the tablet call and the maps it must agree with.
struct Instance {
  std::string name;
  kcGraphicPtr graphic;  // over shape, with unusualProps()
  kcShapePtr shape;
  std::function<void(kcUITablet&, const P&, L)> draw;
  std::function<kcShapePtr(const X&)> typedMap;  // simple graphics only
  // Filled: the image's class under kMove and kShear ("kcGraphicWithFill<>" for DegenerateShape).
  std::string moved, sheared;
};

template <class T>
Instance simple(const std::string& t, const T& s) {
  return {"kcGraphicSimple<" + t + ">",
          kfMakeHandle<kcGraphicSimple<T>>(s, unusualProps()),
          kfMakeHandle<T>(s),
          [s](kcUITablet& tablet, const P& p, L l) { tablet.draw(s, p, l); },
          [s](const X& x) -> kcShapePtr { return kfMakeHandle<T>(s.map(x)); },
          {},
          {}};
}

// moved and sheared name the image's template arguments; null: this class's.
template <class T, class U>
Instance filled(const std::string& tu, const T& s, const char* moved = nullptr,
                const char* sheared = nullptr) {
  const auto name = [&](const char* args) { return "kcGraphicWithFill<" + (args ? args : tu) + ">"; };
  return {name(nullptr),
          kfMakeHandle<kcGraphicWithFill<T, U>>(s, unusualProps()),
          kfMakeHandle<T>(s),
          [s](kcUITablet& tablet, const P& p, L l) { tablet.draw(s, p, l); },
          nullptr,
          name(moved),
          name(sheared)};
}

std::vector<Instance> instances() {
  const kcEllipse2 e2(30, 20, kcRadian(0.5), V(200, 150));
  const kcGenRect genRect(X(M(4, 1, 0.5, 2), V(1, -2)), 0.4, 0.6);
  const std::vector<V> zigzag{V(0, 0), V(1, 2), V(2, -1), V(3, 3), V(4, 0), V(5, 1)};
  return {
      simple("kc2Point", kc2Point(1.5, -2.5)),
      simple("kc2Wireframe", kc2Wireframe(kcGenPoly(kcRect(V(1, 2), V(30, 20))))),
      simple("kcAffineRectangle", kcAffineRectangle(X(M(3, -1, 1, 2), V(1, 1)))),
      simple("kcBezierCurve", kcBezierCurve(V(0, 0), V(10, 20), V(30, 20), V(40, 0))),
      simple("kcCoordAxes", kcCoordAxes(X(M(20, 0, 0, 20), V(5, 5)))),
      simple("kcDeBoorSpline", kcDeBoorSpline(zigzag)),
      simple("kcEllipseArc2", kcEllipseArc2(e2, kcRadian(-1), kcRadian(1.5))),
      simple("kcEllipseArc", kcEllipseArc(kcEllipse(kShear), kcRadian(0.5), kcRadian(-2))),
      simple("kcFLine", kcFLine(V(1, 2), kcRadian(0.5))),
      simple("kcGenAnnulus", kcGenAnnulus(genRect, 0.5)),
      simple("kcGenPoly", kcGenPoly(kcCircle(V(5, 5), 3))),
      simple("kcHermiteSpline", kcHermiteSpline({V(0, 0), V(3, 1), V(8, 0)}, {V(0, 6), V(4, 0), V(2, 5)})),
      simple("kcInterpSpline", kcInterpSpline(zigzag)),
      simple("kcLine", kcLine(V(10, 10), V(1, 2))),
      simple("kcLineSeg", kcLineSeg(V(0, 0), V(100, 50))),
      simple("kcLineSegSet", kcLineSegSet({kcLineSeg(V(1, 1), V(2, 3)), kcLineSeg(V(4, 4), V(9, 1))})),
      simple("kcPoint", kcPoint(33.3, 44.4)),
      simple("kcPointSet", kcPointSet({V(3, 4), V(5, 6)})),
      simple("kcPolygon", kcPolygon({V(0, 0), V(40, 0), V(40, 30), V(10, 20)})),
      simple("kcPolyline", kcPolyline({V(0, 0), V(4, 0), V(4, 3)})),
      filled<kcAnnulus, kcGenAnnulus>("kcAnnulus, kcGenAnnulus", kcAnnulus(V(100, 100), 10, 20), nullptr,
                                      "kcGenAnnulus, kcGenAnnulus"),
      filled<kcCircle, kcEllipse2>("kcCircle, kcEllipse2", kcCircle(V(50, 50), 20), nullptr,
                                   "kcEllipse2, kcEllipse2"),
      // A sheared circle is a kcEllipse2, neither a kcCircle nor a kcEllipse.
      filled<kcCircle, kcEllipse>("kcCircle, kcEllipse", kcCircle(V(50, 50), 20), nullptr, ""),
      filled<kcEllipse2, kcEllipse2>("kcEllipse2, kcEllipse2", e2),
      filled<kcEllipse, kcEllipse>("kcEllipse, kcEllipse", kcEllipse(kShear)),
      filled<kcEllipseAnnulus, kcEllipseAnnulus>("kcEllipseAnnulus, kcEllipseAnnulus",
                                                 kcEllipseAnnulus(e2, 0.5)),
      filled<kcGenAnnulus, kcGenAnnulus>("kcGenAnnulus, kcGenAnnulus", kcGenAnnulus(genRect, 0.5)),
      filled<kcGenRect, kcGenRect>("kcGenRect, kcGenRect", kcGenRect(kShear, 0.25, 0.5)),
      filled<kcRect, kcGenRect>("kcRect, kcGenRect", kcRect(V(5, 6), V(70, 80)), nullptr,
                                "kcGenRect, kcGenRect"),
  };
}

TEST(GraphicShapes, EveryInstanceDrawsMeasuresAndClonesAsItsShape) {
  const std::vector<Instance> all = instances();
  ASSERT_EQ(all.size(), 29u);
  for (const Instance& c : all) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(std::string(c.graphic->className()), c.name);
    for (L layer : {L::mainLayer, L::overlayLayer}) {
      Traced viaList, direct;
      kcGraphicList list;
      list.append(c.graphic);
      list.draw(viaList.tablet, layer);
      c.draw(direct.tablet, unusualProps(), layer);
      EXPECT_TRUE(!direct.main.lines().empty() || !direct.overlay.lines().empty());
      EXPECT_EQ(viaList.main.lines(), direct.main.lines());
      EXPECT_EQ(viaList.overlay.lines(), direct.overlay.lines());
    }
    EXPECT_TRUE(c.graphic->encloseRect() == c.shape->encloseRect());
    for (const V& p : kProbes) EXPECT_EQ(c.graphic->distToPoint(p), c.shape->distanceToPoint(p));
    EXPECT_FALSE(c.graphic->isNull());
    const kcGraphicPtr copy = c.graphic->clone();
    EXPECT_NE(copy.get(), c.graphic.get());
    expectSameGraphic(*copy, *c.graphic);
  }
}

TEST(GraphicShapes, SimpleMapsByTheTypedMapAndFilledByTheShapeItBecomes) {
  for (const Instance& c : instances()) {
    SCOPED_TRACE(c.name);
    if (c.typedMap) {
      const kcGraphicPtr image = c.graphic->map(kShear);
      EXPECT_EQ(std::string(image->className()), c.name);
      EXPECT_PROPS(image->props(), unusualProps());
      EXPECT_TRUE(*shapeOf(*image) == *c.typedMap(kShear));
      continue;
    }
    for (const auto& [x, expected] : {std::pair(kMove, c.moved), std::pair(kShear, c.sheared)}) {
      if (expected == "kcGraphicWithFill<>") {
        EXPECT_THROW((void)c.graphic->map(x), kcShapesError::DegenerateShape);
        continue;
      }
      const kcGraphicPtr image = c.graphic->map(x);
      EXPECT_EQ(std::string(image->className()), expected);
      EXPECT_PROPS(image->props(), unusualProps());  // fill included
      EXPECT_TRUE(*shapeOf(*image) == *c.shape->mapShape(x));
    }
  }
}

TEST(GraphicShapes, ColourConstructorsGiveAOnePelSolidPen) {
  EXPECT_PROPS(kcGraphicSimple<kcLineSeg>().props(), P());
  EXPECT_EQ(P().penColor(), kcColor::cyan);
  EXPECT_PROPS(kcGraphicSimple<kcLineSeg>(kcLineSeg(), kcColor::green).props(),
               P(kcColor::green, 1, P::penSolid, false));
  const kcGraphicWithFill<kcCircle, kcEllipse2> disc(kcCircle(V(1, 2), 3), kcColor::blue, true);
  EXPECT_TRUE(disc.fill());
  EXPECT_PROPS(disc.props(), P(kcColor::blue, 1, P::penSolid, true));
  const kcGraphicEllipseAnnulusSection section(kcEllipseAnnulusSection(), kcColor::red, false, true);
  EXPECT_FALSE(section.drawArrowHead());
  EXPECT_TRUE(section.drawArrowHeadForward());
  EXPECT_EQ(section.props().penWidth(), 1);
}

// --- archive ---

TEST(GraphicArchive, EveryInstanceRoundTripsInItsLayout) {
  const Bytes props = dispc_test::stored(unusualProps());
  const Bytes colour = dispc_test::stored(kcColor::red);
  for (const Instance& c : instances()) {
    SCOPED_TRACE(c.name);
    const Bytes bytes = storedHandle(c.graphic);
    const long at = static_cast<long>(bodyAt(bytes));
    ASSERT_EQ(std::string(bytes.begin() + 5, bytes.begin() + at), c.name);
    // Own version 0, graphic record version 1 and the props, then the shape.
    const auto record = bytes.begin() + at + 1, shape = record + 1 + static_cast<long>(props.size());
    EXPECT_EQ(bytes[at], 0);
    EXPECT_EQ(*record, 1);
    EXPECT_EQ(Bytes(record + 1, shape), props);
    kcMemArchive alone;
    c.shape->dispatchSerialize(alone);
    EXPECT_EQ(Bytes(shape, bytes.end()), alone.bytes());
    const kcGraphicPtr back = loadedHandle(bytes);
    expectSameGraphic(*back, *c.graphic);
    EXPECT_EQ(storedHandle(back), bytes);
    expectVersionRefused(c.graphic, 0, 1, c.name, 0);
    expectVersionRefused(c.graphic, 1, 2, "dispc/glist", 29);

    // A version 0 graphic record holds the colour alone.
    Bytes old(bytes.begin(), record);
    old.push_back(0);
    old.insert(old.end(), colour.begin(), colour.end());
    old.insert(old.end(), shape, bytes.end());
    const kcGraphicPtr fromOld = loadedHandle(old);
    EXPECT_PROPS(fromOld->props(), P(kcColor::red, 1, P::penSolid, false));
    EXPECT_TRUE(*shapeOf(*fromOld) == *c.shape);
  }
}

TEST(GraphicArchive, ShortRecordLeavesTheTargetAsItWas) {
  Items all{kfMakeHandle<kcGraphicEllipseAnnulusSection>(kSection, unusualProps()),
            kfMakeHandle<kcGraphicCross>(kcCross(V(60, 70), 5), unusualProps()),
            kfMakeHandle<kcGraphicPointIcon>(kcPoint(3, 4), unusualProps()), text(L"abc", kcColor::red),
            group({text(L"abc", kcColor::red)})};
  for (const Instance& c : instances()) all.push_back(c.graphic);
  for (const kcGraphicPtr& g : all) {
    SCOPED_TRACE(g->className());
    const kcGraphicPtr target(dynamic_cast<kcGraphic*>(kcPersistenceRegistry::make(g->className())));
    ASSERT_TRUE(target);
    const Bytes before = bodyOf(*target);
    // Everything but the last field is read, the props included.
    const Bytes whole = bodyOf(*g);
    kcMemArchive in(Bytes(whole.begin(), whole.end() - 1));
    EXPECT_THROW(target->dispatchSerialize(in), kcArchive::Corrupt);
    EXPECT_EQ(bodyOf(*target), before);
  }
}

TEST(GraphicArchive, SpecialGraphicsRoundTripAndRefuseUnknownVersions) {
  const auto section = kfMakeHandle<kcGraphicEllipseAnnulusSection>(kSection, kcColor::green, true, false);
  const auto cross = kfMakeHandle<kcGraphicCross>(kcCross(V(60, 70), 5, kcRadian(0.3)), unusualProps());
  const auto icon = kfMakeHandle<kcGraphicPointIcon>(kcPoint(33.3, 44.4), unusualProps());
  const auto label =
      kfMakeHandle<kcGraphicText>(L"Pad \u00c5", kcPoint(-1.5, 7), kcColor::blue, kcColor(12, 34, 56),
                                  kcUIFormat(3, kcUIFormat::center), V(-4.25, 9.5));
  label->props(unusualProps());
  for (const kcGraphicPtr& g : Items{section, cross, icon, label}) {
    SCOPED_TRACE(g->className());
    const Bytes bytes = storedHandle(g);
    EXPECT_EQ(bytes[bodyAt(bytes)], g.get() == section.get() ? 1 : 0);
    const kcGraphicPtr back = loadedHandle(bytes);
    EXPECT_EQ(std::string(back->className()), g->className());
    EXPECT_PROPS(back->props(), g->props());
    // The bytes hold every field, so equal bytes mean equal fields.
    EXPECT_EQ(storedHandle(back), bytes);
  }
  EXPECT_EQ(dynamic_cast<const kcGraphicText&>(*loadedHandle(storedHandle(label))).text(), L"Pad \u00c5");
  expectVersionRefused(section, 0, 2, "dispc/glist", 473);
  expectVersionRefused(cross, 0, 1, "dispc/glist", 430);
  expectVersionRefused(icon, 0, 1, "dispc/glist", 389);
  expectVersionRefused(label, 0, 1, "dispc/glist", 338);
  expectVersionRefused(group({cross}), 0, 1, "dispc/glist", 325);

  // Version 0 kept the arrow flags after the section.
  Bytes old = storedHandle(section);
  old[bodyAt(old)] = 0;
  old.push_back(0);
  old.push_back(1);
  const auto back = loadedHandle(old);
  const auto& loaded = dynamic_cast<const kcGraphicEllipseAnnulusSection&>(*back);
  EXPECT_FALSE(loaded.drawArrowHead());
  EXPECT_TRUE(loaded.drawArrowHeadForward());
  EXPECT_TRUE(loaded.item() == kSection);
  EXPECT_EQ(loaded.color(), kcColor::green);
}

// --- special graphics ---

TEST(GraphicSpecial, TextArrivesAtTheMappedAnchorPlusWholePels) {
  const X base(M(2, 0, 0, 2), V(100, 50));
  const V anchor = base * V(10, 20);
  const struct {
    V offset;
    long dx, dy;
  } rows[] = {{V(2.7, -1.9), 2, -1}, {V(-0.5, 0.99), 0, 0}, {V(-3.2, 5), -3, 5}};
  for (const auto& row : rows) {
    auto t = kfMakeHandle<kcGraphicText>(L"Pad", kcPoint(10, 20), kcColor::white, kcColor::black,
                                         kcUIFormat(2, kcUIFormat::center), row.offset);
    Traced d;
    d.tablet.baseMap(base);
    kcGraphicList list;
    list.append(t);
    list.draw(d.tablet, L::mainLayer);
    kcUITraceScope expected;
    expected.text(L"Pad", anchor + V(double(row.dx), double(row.dy)), kcColor::white, kcColor::black,
                  kcUIFormat(2, kcUIFormat::center));
    ASSERT_FALSE(d.main.lines().empty());
    EXPECT_EQ(d.main.lines().back(), expected.lines().back()) << row.offset.x();
  }
}

TEST(GraphicSpecial, TextMeasuresNothingAndMapsItsAnchorOnly) {
  auto t = kfMakeHandle<kcGraphicText>(L"Pad", kcPoint(10, 20), kcColor::white, kcColor::black,
                                       kcUIFormat(2, kcUIFormat::center), V(2.7, -1.9));
  EXPECT_EQ(t->distToPoint(V(10, 20)), 1e308);
  EXPECT_TRUE(t->encloseRect().isEmpty());
  EXPECT_FALSE(t->isNull());
  EXPECT_TRUE(kcGraphicText().isNull());
  t->props(unusualProps());
  const auto image = t->map(kShear);
  const auto* mapped = dynamic_cast<const kcGraphicText*>(image.get());
  ASSERT_NE(mapped, nullptr);
  EXPECT_EQ(mapped->location().point(), kShear * V(10, 20));
  EXPECT_EQ(mapped->offset(), V(0, 0));
  EXPECT_EQ(mapped->text(), L"Pad");
  EXPECT_EQ(mapped->format(), t->format());
  EXPECT_EQ(mapped->backgroundColor(), kcColor::black);
  EXPECT_PROPS(mapped->props(), unusualProps());
}

TEST(GraphicSpecial, CrossAndPointIconMeasures) {
  const kcGraphicCross cross(kcCross(V(60, 70), 5, kcRadian(0.3)), kcColor::red);
  EXPECT_EQ(cross.distToPoint(V(63, 74)), 5.0);
  EXPECT_TRUE(cross.encloseRect().isEmpty());
  const auto icon = kfMakeHandle<kcGraphicPointIcon>(kcPoint(33.5, 44.5), unusualProps());
  EXPECT_TRUE(icon->encloseRect() == kcRect(V(33.5, 44.5), V(1, 1)));
  EXPECT_EQ(icon->distToPoint(V(36.5, 48.5)), 5.0);
  Traced viaList, direct;
  kcGraphicList list;
  list.append(icon);
  list.draw(viaList.tablet, L::overlayLayer);
  direct.tablet.drawPointIcon(kcPoint(33.5, 44.5), unusualProps(), L::overlayLayer);
  ASSERT_FALSE(direct.overlay.lines().empty());
  EXPECT_EQ(viaList.overlay.lines(), direct.overlay.lines());
  EXPECT_TRUE(viaList.main.lines().empty());
}

// --- groups ---

TEST(GraphicGroup, PropsComeFromTheFirstMemberThatDraws) {
  const P a(kcColor::red, 2, P::penSolid, false), b(kcColor::green, 4, P::penDot, true);
  auto emptyText = text(L"", kcColor::red);
  emptyText->props(a);
  const auto circle = disc(b);
  const auto otherText = text(L"", kcColor::blue);
  const struct {
    const char* why;
    Items items;
    P props;
    bool isNull;
  } rows[] = {
      {"first non-null member", {nullptr, emptyText, circle, text(L"x", kcColor::blue)}, b, false},
      {"no member draws: the first present", {nullptr, emptyText, otherText}, a, true},
      {"only null handles: its own", {nullptr, nullptr}, unusualProps(), true},
      {"no members: its own", {}, unusualProps(), true},
  };
  for (const auto& row : rows) {
    auto g = kfMakeHandle<kcGraphicGroup>();
    g->props(unusualProps());
    g->items(row.items);
    EXPECT_PROPS(g->props(), row.props) << row.why;
    EXPECT_EQ(g->isNull(), row.isNull) << row.why;
    EXPECT_EQ(g->numItems(), static_cast<long>(row.items.size())) << row.why;
  }
}

TEST(GraphicGroup, NullGroupAndItemIndex) {
  const auto g = group({nullptr, nullptr});
  EXPECT_TRUE(g->isNull());
  EXPECT_TRUE(g->encloseRect().isEmpty());
  EXPECT_EQ(g->distToPoint(V(1, 2)), std::numeric_limits<double>::infinity());
  kcGraphicList list;
  list.append(g);
  EXPECT_TRUE(traceOf(list, L::mainLayer).empty());
  EXPECT_TRUE(g->item(1).isNull());
  for (long i : {-1L, g->numItems()}) {
    try {
      (void)g->item(i);
      ADD_FAILURE() << i;
    } catch (const kcGraphic::BadParams& e) {
      EXPECT_EQ(e.text(), L"Item index out of range");
    }
  }
}

TEST(GraphicGroup, CannotContainItself) {
  const auto line = seg();
  auto outer = kfMakeHandle<kcGraphicGroup>();
  auto inner = group({line});
  outer->items(Items{inner});
  EXPECT_THROW(outer->items(Items{line, outer}), kcGraphic::BadParams);
  EXPECT_EQ(outer->item(0), kcGraphicConstPtr(inner));
  EXPECT_THROW(inner->items(Items{line, outer}), kcGraphic::BadParams);
  ASSERT_EQ(inner->numItems(), 1);
  EXPECT_EQ(inner->item(0), kcGraphicConstPtr(line));
  outer->items(Items{});  // breaks any cycle a faulty check let in, so that no leak hides it
}

TEST(GraphicGroup, PropsAndColourReachEveryNestedMember) {
  const auto line = seg(), label = text(L"x", kcColor::red);
  const auto filled = disc(P());
  const auto inner = group({filled, nullptr, label});
  const auto outer = group({line, inner});
  outer->props(unusualProps());
  EXPECT_TRUE(filled->fill());
  for (const kcGraphicPtr& g : Items{line, filled, label, inner}) EXPECT_PROPS(g->props(), unusualProps());
  // The colour goes down as the whole props, not the colour alone.
  filled->props(P(kcColor::blue, 9, P::penSolid, false));
  outer->color(kcColor::green);
  P expected = unusualProps();
  expected.penColor(kcColor::green);
  EXPECT_PROPS(outer->props(), expected);
  for (const kcGraphicPtr& g : Items{line, filled, label, inner}) EXPECT_PROPS(g->props(), expected);
}

TEST(GraphicGroup, MapsMeasuresAndDrawsItsMembers) {
  const kcGraphicPtr filled = disc(), line = seg();
  const auto cross = kfMakeHandle<kcGraphicCross>(kcCross(V(-60, 70), 5), kcColor::red);
  const auto inner = group({line, cross});
  const auto outer = group({filled, nullptr, inner});
  kcRect box = filled->encloseRect();
  box.enclose(line->encloseRect());
  EXPECT_TRUE(outer->encloseRect() == box);
  for (const V& p : kProbes)
    EXPECT_EQ(outer->distToPoint(p),
              std::min({filled->distToPoint(p), line->distToPoint(p), cross->distToPoint(p)}));

  const auto image = outer->map(kShear);
  const auto& mapped = dynamic_cast<const kcGraphicGroup&>(*image);
  ASSERT_EQ(mapped.numItems(), 3);
  expectSameGraphic(*mapped.item(0), *filled->map(kShear));
  EXPECT_TRUE(mapped.item(1).isNull());
  const auto& mappedInner = dynamic_cast<const kcGraphicGroup&>(*mapped.item(2));
  expectSameGraphic(*mappedInner.item(0), *line->map(kShear));
  expectSameGraphic(*mappedInner.item(1), *cross->map(kShear));
  expectSameGraphic(*inner->item(0), *line);  // the original is untouched

  kcGraphicList whole, members;
  whole.append(outer);
  for (const kcGraphicPtr& g : Items{filled, line, cross}) members.append(g);
  EXPECT_EQ(traceOf(whole, L::overlayLayer), traceOf(members, L::overlayLayer));
}

TEST(GraphicArchive, NestedGroupKeepsSharingAndRefusesItself) {
  const kcGraphicPtr shared = seg(unusualProps()), filled = disc(P());
  const auto outer = group({shared, nullptr, group({filled, shared})});
  const Bytes bytes = storedHandle(outer);
  const auto back = loadedHandle(bytes);
  const auto& g = dynamic_cast<const kcGraphicGroup&>(*back);
  ASSERT_EQ(g.numItems(), 3);
  EXPECT_PROPS(g.props(), unusualProps());
  EXPECT_TRUE(g.item(1).isNull());
  const auto& inner = dynamic_cast<const kcGraphicGroup&>(*g.item(2));
  expectSameGraphic(*inner.item(0), *filled);
  expectSameGraphic(*g.item(0), *shared);
  EXPECT_EQ(inner.item(1).get(), g.item(0).get());
  EXPECT_EQ(storedHandle(back), bytes);

  // An empty group whose one item is a reference back to itself (id 1).
  Bytes self = storedHandle(kfMakeHandle<kcGraphicGroup>());
  self.resize(self.size() - 5);  // the item count and isNull
  self.insert(self.end(), {1, 0, 0, 0, 2, 1, 0, 0, 0, 0});
  kcMemArchive in(self);
  kcGraphicPtr target;
  EXPECT_THROW(in || target, kcArchive::Corrupt);
  EXPECT_TRUE(target.isNull());
}

TEST(GraphicArchive, UnknownClassesAndRefusedShapesAreCorrupt) {
  kcGraphicList list;
  list.append(seg(P()));
  kcMemArchive out;
  out || list;
  Bytes stored = out.bytes();
  // The segment's end points, the last 32 bytes, made one point.
  Bytes same = stored;
  std::copy(same.end() - 32, same.end() - 16, same.end() - 16);
  // A class name no program registers.
  Bytes unknown = stored;
  unknown[4 + 1 + 4] = 'x';
  for (const Bytes& bad : {same, unknown}) {
    kcMemArchive in(bad);
    kcGraphicList target;
    target.append(seg(P()));
    const kcGraphicList before = target;
    EXPECT_THROW(in || target, kcArchive::Corrupt);
    EXPECT_EQ(target, before);
  }
}

// --- shapes to graphics ---

TEST(GraphicMake, EachShapeClassGivesItsGraphicOrIsRefused) {
  // By the shape's class.
  const std::map<std::string, std::string> made = {
      {"kc2Point", "kcGraphicSimple<kc2Point>"},
      {"kcLineSeg", "kcGraphicSimple<kcLineSeg>"},
      {"kcLine", "kcGraphicSimple<kcLine>"},
      {"kcFLine", "kcGraphicSimple<kcFLine>"},
      {"kcRect", "kcGraphicWithFill<kcRect, kcGenRect>"},
      {"kcCircle", "kcGraphicWithFill<kcCircle, kcEllipse2>"},
      {"kcAnnulus", "kcGraphicWithFill<kcAnnulus, kcGenAnnulus>"},
      {"kcEllipseArc2", "kcGraphicSimple<kcEllipseArc2>"},
      {"kcEllipse2", "kcGraphicWithFill<kcEllipse2, kcEllipse2>"},
      {"kcGenRect", "kcGraphicWithFill<kcGenRect, kcGenRect>"},
      {"kcGenAnnulus", "kcGraphicSimple<kcGenAnnulus>"},
      {"kcPolyline", "kcGraphicSimple<kcPolyline>"},
      {"kcGenPoly", "kcGraphicSimple<kcGenPoly>"},
      {"kc2Wireframe", "kcGraphicSimple<kcGenPoly>"},  // a general polygon, which comes first
      {"kcAffineRectangle", "kcGraphicSimple<kcAffineRectangle>"},
      {"kcBezierCurve", "kcGraphicSimple<kcBezierCurve>"},
      {"kcDeBoorSpline", "kcGraphicSimple<kcDeBoorSpline>"},
      {"kcInterpSpline", "kcGraphicSimple<kcInterpSpline>"},
      {"kcHermiteSpline", "kcGraphicSimple<kcHermiteSpline>"},
      {"kcEllipseAnnulus", "kcGraphicWithFill<kcEllipseAnnulus, kcEllipseAnnulus>"},
      {"kcEllipseAnnulusSection", "kcGraphicEllipseAnnulusSection"},
      {"kcLineSegSet", "kcGraphicSimple<kcLineSegSet>"},
  };
  const std::set<std::string> refused{"kcPoint",      "kcPointSet",  "kcPolygon", "kcEllipse",
                                      "kcEllipseArc", "kcCoordAxes", "kcCross",   "kcGenShape"};
  std::vector<kcShapePtr> shapes{kfMakeHandle<kcEllipseAnnulusSection>(kSection),
                                 kfMakeHandle<kcCross>(V(1, 2), 3),
                                 kfMakeHandle<kcGenShape>(kcCircle(V(0, 0), 1))};
  for (const Instance& c : instances()) shapes.push_back(c.shape);
  std::set<std::string> seen;
  for (const kcShapePtr& shape : shapes) {
    const std::string name = shape->className();
    SCOPED_TRACE(name);
    ASSERT_EQ(made.count(name) + refused.count(name), 1u);
    seen.insert(name);
    if (refused.count(name)) {
      EXPECT_THROW((void)kcGraphic::makeShapeGraphic(*shape, P()), kcGraphic::NoGraphicForShape);
      continue;
    }
    const kcGraphicPtr g = kcGraphic::makeShapeGraphic(shape, unusualProps());
    ASSERT_TRUE(g);
    EXPECT_EQ(std::string(g->className()), made.at(name));
    EXPECT_PROPS(g->props(), unusualProps());
    const kcShape& held = *shapeOf(*g);
    // A wireframe is held as the general polygon it is.
    if (held.className() == name) {
      EXPECT_TRUE(held == *shape);
    }
    EXPECT_TRUE(held.encloseRect() == shape->encloseRect());
  }
  EXPECT_EQ(seen.size(), made.size() + refused.size());
  EXPECT_TRUE(kcGraphic::makeShapeGraphic(static_cast<const kcShape*>(nullptr), P()).isNull());
  EXPECT_TRUE(kcGraphic::makeShapeGraphic(kcPtrHandle_const<kcShape>(), P()).isNull());
}

TEST(GraphicMake, TreesBecomeNestedGroups) {
  const kcShapePtr circle = kfMakeHandle<kcCircle>(V(0, 0), 1);
  const kcShapePtr segment = kfMakeHandle<kcLineSeg>(V(5, 0), V(7, 0));
  const kcShapePtr inner =
      kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{segment, kfMakeHandle<kcShapeTree>()});
  const kcShapeTree tree({circle, inner});
  const kcGraphicPtr g = kcGraphic::makeShapeGraphic(tree, unusualProps());
  const auto* outer = dynamic_cast<const kcGraphicGroup*>(g.get());
  ASSERT_NE(outer, nullptr);
  ASSERT_EQ(outer->numItems(), 2);
  EXPECT_EQ(std::string(outer->item(0)->className()), "kcGraphicWithFill<kcCircle, kcEllipse2>");
  const auto* nested = dynamic_cast<const kcGraphicGroup*>(outer->item(1).get());
  ASSERT_NE(nested, nullptr);
  ASSERT_EQ(nested->numItems(), 2);
  EXPECT_TRUE(*shapeOf(*nested->item(0)) == *segment);
  const auto* empty = dynamic_cast<const kcGraphicGroup*>(nested->item(1).get());
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->numItems(), 0);
  EXPECT_TRUE(empty->isNull());
  EXPECT_PROPS(empty->props(), unusualProps());
  EXPECT_PROPS(outer->props(), unusualProps());
}

TEST(GraphicMake, TreeNestingIsBoundedAsAGroupLoadIs) {
  kcShapePtr tree = kfMakeHandle<kcLineSeg>(V(0, 0), V(1, 1));
  for (int depth = 0; depth < kcGraphicGroup::kMaxLoadDepth; ++depth)
    tree = kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{tree});
  const kcGraphicPtr deepest = kcGraphic::makeShapeGraphic(*tree, P());
  ASSERT_TRUE(deepest);
  // As deep as an archive takes.
  const kcGraphicPtr back = loadedHandle(storedHandle(deepest));
  EXPECT_TRUE(back->encloseRect() == deepest->encloseRect());
  tree = kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{tree});
  EXPECT_THROW((void)kcGraphic::makeShapeGraphic(*tree, P()), kcGraphic::BadParams);
}

TEST(GraphicArchive, GroupsNestNoDeeperThanALoadAccepts) {
  kcGraphicPtr chain = kcGraphic::makeShapeGraphic(kcLineSeg(V(0, 0), V(1, 1)), P());
  for (int depth = 0; depth < kcGraphicGroup::kMaxLoadDepth; ++depth) {
    auto group = kfMakeHandle<kcGraphicGroup>();
    group->items(Items{chain});
    chain = group;
  }
  const Bytes deepest = storedHandle(chain);
  auto deeper = kfMakeHandle<kcGraphicGroup>();
  deeper->items(Items{chain});
  // A store never writes what a load refuses, and takes back what it began.
  kcMemArchive refused;
  kcGraphicPtr tooDeep = deeper;
  EXPECT_THROW(refused || tooDeep, kcArchive::ValueOutOfRange);
  EXPECT_TRUE(refused.bytes().empty());
  // The same nesting made by hand: an empty group's record whose one item is
  // the deepest chain.
  Bytes bytes = storedHandle(kfMakeHandle<kcGraphicGroup>());
  const std::uint8_t isNull = bytes.back();
  bytes.resize(bytes.size() - 5);
  bytes.insert(bytes.end(), {1, 0, 0, 0});
  bytes.insert(bytes.end(), deepest.begin(), deepest.end());
  bytes.push_back(isNull);
  kcMemArchive in(bytes);
  kcGraphicPtr loaded;
  EXPECT_THROW(in || loaded, kcArchive::Corrupt);
  EXPECT_FALSE(loaded);
}

// --- lists ---

TEST(GraphicList, AppendMovesOrCopiesHandles) {
  const auto a = text(L"a", kcColor::red), b = text(L"b", kcColor::red), c = text(L"c", kcColor::red);
  kcGraphicList first, second;
  first.append(a);
  second.append(b);
  second.append(nullptr);
  second.append(c);
  const kcGraphicList before = second;
  first.append(second);
  EXPECT_EQ(second, before);
  first.append(second, true);
  EXPECT_EQ(second, before);
  first.append(second, false);
  EXPECT_TRUE(second.items().empty());
  EXPECT_EQ(first.items(), (Items{a, b, nullptr, c, b, nullptr, c, b, nullptr, c}));

  kcGraphicList self;
  self.append(a);
  self.append(b);
  self.append(self, false);
  EXPECT_EQ(self.items(), (Items{a, b}));
  self.append(self, true);
  EXPECT_EQ(self.items(), (Items{a, b, a, b}));
}

TEST(GraphicList, NullHandleStopsDrawingAfterTheItemsBeforeIt) {
  kcGraphicList list, head;
  list.append(disc());
  list.append(nullptr);
  list.append(seg());
  head.append(list.items()[0]);
  Traced d;
  EXPECT_THROW(list.draw(d.tablet, L::mainLayer), kcBadPointer);
  EXPECT_EQ(d.main.lines(), traceOf(head, L::mainLayer));
}

TEST(GraphicList, SketchPlaysAsTheListDraws) {
  kcGraphicList list;
  list.append(disc());
  list.append(text(L"label", kcColor::white));
  list.append(group({kfMakeHandle<kcGraphicCross>(kcCross(V(60, 70), 5), kcColor::red),
                     kfMakeHandle<kcGraphicPointIcon>(kcPoint(3, 4), kcColor::blue)}));
  list.append(kfMakeHandle<kcGraphicEllipseAnnulusSection>(kSection, kcColor::green, true, false));
  list.append(seg(P(kcColor::red, 2, P::penSolid, false)));
  for (L layer : {L::mainLayer, L::overlayLayer}) {
    const kcUISketch sketch = list.sketch(layer);
    Traced played, direct;
    played.tablet.draw(sketch, kcPoint(0, 0), layer);
    // What playing on one layer puts around the records.
    direct.tablet.lockScreenUpdatesPush(true, layer);
    direct.tablet.optimizeDrawing(true, layer);
    list.draw(direct.tablet, layer);
    (layer == L::mainLayer ? direct.main : direct.overlay).optimizeDrawing(false);
    direct.tablet.lockScreenUpdatesPop(layer);
    EXPECT_GT(direct.main.lines().size() + direct.overlay.lines().size(), 10u);
    EXPECT_EQ(played.main.lines(), direct.main.lines());
    EXPECT_EQ(played.overlay.lines(), direct.overlay.lines());
  }
}

TEST(GraphicList, RecordedTextFollowsThePenWhenPlayed) {
  kcGraphicList list;
  list.append(kfMakeHandle<kcGraphicText>(L"A", kcPoint(10, 20), kcColor::red, kcColor::black, kcUIFormat(),
                                          V(3.5, 4)));
  Traced t;
  t.tablet.draw(list.sketch(L::mainLayer), kcPoint(100, 0), L::mainLayer);
  EXPECT_EQ(std::count_if(t.main.lines().begin(), t.main.lines().end(),
                          [](const std::string& l) { return l.rfind("text \"A\" 113 24 ", 0) == 0; }),
            1);
}

TEST(GraphicArchive, ListRoundTripsWithNullHandlesAndSharing) {
  const auto filled = disc();
  kcGraphicList list;
  list.append(nullptr);
  list.append(filled);
  list.append(text(L"label", kcColor::white));
  list.append(filled);
  kcMemArchive out;
  out || list;
  const Bytes bytes = out.bytes();
  kcMemArchive in(bytes);
  kcGraphicList back;
  back.append(filled);  // replaced, not appended to
  in || back;
  EXPECT_TRUE(in.atEnd());
  ASSERT_EQ(back.items().size(), 4u);
  EXPECT_TRUE(back.items()[0].isNull());
  expectSameGraphic(*back.items()[1], *filled);
  EXPECT_EQ(back.items()[3], back.items()[1]);
  EXPECT_EQ(std::string(back.items()[2]->className()), "kcGraphicText");
  kcMemArchive again;
  again || back;
  EXPECT_EQ(again.bytes(), bytes);
}

}  // namespace
