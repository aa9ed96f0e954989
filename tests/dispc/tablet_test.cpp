#include "dispc/tablet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "dispc/glist.h"
#include "dispc/sketchop.h"
#include "dispc/tracescope.h"
#include "dispc/uierror.h"
#include "foundation/archive.h"
#include "foundation/shapes/deboorspline.h"
#include "foundation/shapes/shapetree.h"

namespace {

using Lines = std::vector<std::string>;
using L = kcUITablet::Layers;

// A tablet drawing on two trace devices.
struct Traced {
  kcUITraceScope main;
  kcUITraceScope overlay;
  kcUITablet tablet{&main, &overlay};
};

kcSMDGDPoly roundedPad() {
  kcSMDGDPoly p(L"pad");
  p.vertices({kcSMDGDPolyVertex({0, 0}, 1.0, kcDegree(0), 0.5, 0.5, -1, kcDimTol()),
              kcSMDGDPolyVertex({10, 0}, 0.0, kcDegree(30), 0.5, 0.5, -1, kcDimTol()),
              kcSMDGDPolyVertex({10, 8}, 2.0, kcDegree(0), 0.5, 0.5, -1, kcDimTol()),
              kcSMDGDPolyVertex({0, 8}, 0.0, kcDegree(0), 0.5, 0.5, -1, kcDimTol())});
  p.close();
  return p;
}

// Every drawing call that records, on both layers, filled and outlined.
void drawScene(kcUITablet& t) {
  kcGraphicProps thin(kcColor::red, 1, kcGraphicProps::penSolid, false);
  kcGraphicProps wide(kcColor(12, 34, 56), 3, kcGraphicProps::penDash, true);
  kcGraphicProps back = thin;
  back.arrowHeadForward(false);
  kcGraphicProps marked = thin;
  marked.showVertex(true);
  const kcXform<2> sheared(kcMatrix<2>(2.0, 0.5, -0.25, 1.5), kcVector<2>(30.0, 40.0));
  const kcEllipse2 e2(30, 20, kcRadian(0.5), {200, 150});
  const kcEllipseAnnulusSection section(kcEllipseAnnulus(e2, 0.5), kcRadian(0.25), kcRadian(2.0));

  t.draw(kcPoint(1.5, 2.5), thin, L::mainLayer);
  t.draw(kcPointSet({{3, 4}, {5, 6}}), wide, L::overlayLayer);
  t.draw(kcLineSeg({0, 0}, {100, 50}), thin, L::mainLayer);
  t.draw(kcLineSeg({0, 0}, {100, 50}), back, L::overlayLayer);
  t.draw(kcLineSegSet({kcLineSeg({1, 1}, {2, 3}), kcLineSeg({4, 4}, {9, 1})}), thin, L::mainLayer);
  t.draw(kcLine({10, 10}, {1, 2}), thin, L::mainLayer);
  t.draw(kcCircle({50, 50}, 20), thin, L::mainLayer);
  t.draw(kcCircle({50, 50}, 20), wide, L::overlayLayer);
  t.draw(kcEllipse(sheared), wide, L::mainLayer);
  t.draw(kcEllipseArc(kcEllipse(sheared), kcRadian(0.5), kcRadian(-2.0)), thin, L::mainLayer);
  t.draw(section, thin, L::mainLayer);
  t.draw(section, {1, 0}, {0, 1}, wide, L::overlayLayer);
  t.draw(kcGenRect(sheared, 0.25, 0.5), thin, L::mainLayer);
  t.draw(kcGenRect(sheared, 0.25, 0.5), wide, L::mainLayer);
  t.draw(kcGenAnnulus(kcGenRect(sheared, 0.25, 0.5), 0.5), thin, L::overlayLayer);
  t.draw(kcCoordAxes(kcXform<2>({20, 0, 0, 20}, {5, 5})), thin, L::mainLayer);
  t.draw(kcAffineRectangle(sheared), thin, L::mainLayer);
  t.draw(kcPolygon({{0, 0}, {40, 0}, {40, 30}, {10, 20}}), wide, L::mainLayer);
  t.draw(kcRect({5, 6}, {70, 80}), thin, L::overlayLayer);
  t.draw(kcGenShape(kcCircle({9, 9}, 4)), kcColor::green, thin, L::mainLayer);
  t.draw(kcGenPoly(roundedPad()), thin, L::mainLayer);
  t.draw(kcGenPoly(roundedPad()), marked, L::overlayLayer);
  t.draw(kcCross({60, 70}, 5, kcRadian(0.3)), thin, L::mainLayer);
  t.draw(kc2Wireframe(kcGenPoly(roundedPad())), wide, L::mainLayer);
  t.draw(kcBezierCurve({0, 0}, {10, 20}, {30, 20}, {40, 0}), thin, L::mainLayer);
  t.draw(kcCubicSpline({{0, 0}, {1, 2}, {3, 2}, {4, 0}, {5, -2}, {7, -2}, {8, 0}}), thin, L::overlayLayer);
  t.draw(kcPolyline({{0, 0}, {4, 0}, {4, 3}}, false), thin, L::mainLayer);
  t.draw(kcPolyline({{0, 0}, {4, 0}, {4, 3}}, true), wide, L::mainLayer);
  t.draw(e2, wide, L::mainLayer);
  t.draw(kcEllipseArc2(e2, kcRadian(-1), kcRadian(1.5)), back, L::overlayLayer);
  t.draw(kcAnnulus({100, 100}, 10, 20), thin, L::mainLayer);
  t.drawPointIcon(kcPoint(33.3, 44.4), thin, L::overlayLayer);

  t.drawStart(kcPoint(5, 5), L::mainLayer);
  t.drawTo(kcPoint(50, 5), thin, L::mainLayer);
  t.drawToRelPels(3, -4, kcColor::blue, L::mainLayer);
  t.drawToRelPels(kcVector<2>(1, 1), 10.0f, kcColor::blue, L::mainLayer);
  t.moveToRelPels(7, 8, L::mainLayer);
  t.arrowHead(kcPoint(20, 20), {1, 1}, 7.5f, thin, L::overlayLayer);

  t.set(kcColor::black, L::overlayLayer);
  t.set(kcRect({1, 2}, {30, 40}), kcColor(5), L::mainLayer);
  t.set(kcUIRect(3, 4, 50, 60), kcColor(6), L::mainLayer);
  t.setComplement(kcRect({1, 2}, {30, 40}), kcColor(7), L::mainLayer);
  t.setComplement(kcUIRect(3, 4, 50, 60), kcColor(8), L::overlayLayer);
  t.fill(kcPoint(12.5, 13.5), kcColor(9), kcColor(10), kcUITablet::FillType::fillToBoundary, L::mainLayer);
  t.fill(kcPair<long>(3, 4), kcColor(9), kcColor(10), kcUITablet::FillType::fillSameColor, L::mainLayer);
  t.outline3D(kcRect({1, 2}, {30, 40}), kcColor::white, kcColor::dkGrey, 2, L::mainLayer);
  t.outline3D(kcUIRect(3, 4, 50, 60), kcColor::white, kcColor::dkGrey, 1, L::overlayLayer);

  t.draw(std::wstring(L"Pad \u00c5 1"), kcPoint(10, 20), kcColor::white, kcColor::black,
         kcUIFormat(2, kcUIFormat::center), L::mainLayer);
  t.draw(std::string("narrow"), kcPoint(10, 40), kcColor::white, kcColor::black,
         kcUIFormat(1, kcUIFormat::topLeft), L::overlayLayer);
  kcPelBuffer<unsigned char> image(5, 4);
  for (long y = 0; y < 4; ++y)
    for (long x = 0; x < 5; ++x) image.put(x, y, static_cast<unsigned char>(x * 40 + y));
  t.draw(kcPelBuffer_const<unsigned char>(image), kcPoint(7, 8), true, 243, false, L::mainLayer);
  t.draw(kcRLEBuffer(image), kcPoint(9, 9), {1, 2, 3}, false, 0, true, L::overlayLayer);

  // Layer 2 records, draws nothing directly.
  t.draw(kcLineSeg({1, 2}, {3, 4}), thin, L::bothLayers);

  // A nested sketch, recorded on a tablet of its own.
  kcUITablet inner;
  inner.recordOn() = true;
  inner.draw(kcCircle({5, 5}, 3), thin, L::mainLayer);
  inner.draw(kcLineSeg({0, 0}, {6, 6}), wide, L::bothLayers);
  t.draw(inner.sketch(), kcPoint(100, 200), L::mainLayer);
  t.draw(inner.sketch(), kcPoint(-10, 5), L::bothLayers);
  t.drawClipRect(kcRect({0, 0}, {640, 480}), L::bothLayers);
}

// The scene drawn directly, between the calls a playback on both layers makes.
void drawSceneAsPlayed(Traced& d) {
  d.tablet.lockScreenUpdatesPush(true, L::bothLayers);
  d.main.batchStart();
  d.overlay.batchStart();
  drawScene(d.tablet);
  d.main.batchEnd();
  d.overlay.batchEnd();
  d.tablet.lockScreenUpdatesPop(L::bothLayers);
}

kcUISketch recordedScene() {
  kcUITablet t;
  t.recordOn() = true;
  drawScene(t);
  return t.sketch();
}

void expectSameTraces(const Traced& a, const Traced& b) {
  EXPECT_EQ(a.main.lines(), b.main.lines());
  EXPECT_EQ(a.overlay.lines(), b.overlay.lines());
}

TEST(TabletDifferential, DirectRecordedAndArchivedDrawAlike) {
  Traced direct;
  drawSceneAsPlayed(direct);
  ASSERT_GT(direct.main.lines().size(), 60u);
  ASSERT_GT(direct.overlay.lines().size(), 25u);

  const kcUISketch sketch = recordedScene();
  Traced replayed;
  replayed.tablet.draw(sketch, kcPoint(0, 0), L::bothLayers);
  expectSameTraces(direct, replayed);

  // The scene has a nested sketch, which an archive does not take: archive
  // all but those records.
  kcUISketch storable;
  for (kcUISketchParser records(sketch); records.next();) {
    if (records.header().opcode() == 15) continue;
    records.header().populateSketch(storable);
    records.data().populateSketch(storable);
  }
  kcMemArchive out;
  out || storable;
  kcMemArchive in(out.bytes());
  kcUISketch reloaded;
  in || reloaded;
  Traced fromArchive;
  fromArchive.tablet.draw(reloaded, kcPoint(0, 0), L::bothLayers);
  Traced storableReplayed;
  storableReplayed.tablet.draw(storable, kcPoint(0, 0), L::bothLayers);
  expectSameTraces(storableReplayed, fromArchive);
  EXPECT_GT(fromArchive.main.lines().size(), 50u);
}

TEST(TabletDifferential, ReplayAtAnOffsetAndUnderAScale) {
  const kcUISketch sketch = recordedScene();
  for (const kcPair<double> factors :
       {kcPair<double>(1.0, 1.0), kcPair<double>(2.0, 3.0), kcPair<double>(0.5, 0.25)}) {
    Traced direct;
    direct.tablet.baseMap(kcXform<2>::translation({12.5, -7.0}));
    direct.tablet.scaleExact(factors);
    drawSceneAsPlayed(direct);
    Traced replayed;
    replayed.tablet.scaleExact(factors);
    replayed.tablet.draw(sketch, kcPoint(12.5, -7.0), L::bothLayers);
    SCOPED_TRACE(factors.x());
    expectSameTraces(direct, replayed);
  }
}

TEST(TabletDifferential, OneLayerPlaysItsOwnAndTheBothLayerRecords) {
  kcUITablet rec;
  rec.recordOn() = true;
  const kcGraphicProps props(kcColor::red, 1, kcGraphicProps::penSolid, false);
  rec.draw(kcPoint(1, 1), props, L::mainLayer);
  rec.draw(kcPoint(2, 2), props, L::overlayLayer);
  rec.draw(kcPoint(3, 3), props, L::bothLayers);
  Traced t;
  t.tablet.draw(rec.sketch(), kcPoint(0, 0), L::overlayLayer);
  const Lines overlay = {
      "lockScreenUpdatesPush true",
      "optimizeDrawing true",
      "point 2 2 colour(stock index 249 rgb 255 0 0) width 1 style 0 join 0 cap 0 nofill arrow",
      "point 3 3 colour(stock index 249 rgb 255 0 0) width 1 style 0 join 0 cap 0 nofill arrow",
      "optimizeDrawing false",
      "lockScreenUpdatesPop"};
  EXPECT_EQ(t.overlay.lines(), overlay);
  EXPECT_TRUE(t.main.lines().empty());
}

// --- the scene as graphics ---

// One scene entry: a graphic, its layer, and the tablet call it stands for.
struct GraphicEntry {
  kcGraphicPtr graphic;
  L layer;
  std::function<void(kcUITablet&)> direct;
};

// A graphic of every kind, each beside the tablet call that draws the same.
std::vector<GraphicEntry> graphicScene() {
  kcGraphicProps thin(kcColor::red, 1, kcGraphicProps::penSolid, false);
  kcGraphicProps wide(kcColor(12, 34, 56), 3, kcGraphicProps::penDash, true);
  kcGraphicProps back = thin;
  back.arrowHeadForward(false);
  const kcXform<2> sheared(kcMatrix<2>(2.0, 0.5, -0.25, 1.5), kcVector<2>(30.0, 40.0));
  const kcEllipse2 e2(30, 20, kcRadian(0.5), {200, 150});
  std::vector<GraphicEntry> scene;
  // Shapes: each as the graphic its class makes, or the instance built by hand
  // for the classes makeShapeGraphic leaves out.
  const auto shape = [&](kcShapePtr s, const kcGraphicProps& props, L layer, kcGraphicPtr g = {}) {
    if (!g) g = kcGraphic::makeShapeGraphic(s, props);
    scene.push_back({g, layer, [s, props, layer](kcUITablet& t) { t.draw(*s, props, layer); }});
  };
  shape(kfMakeHandle<kc2Point>(1.5, 2.5), thin, L::mainLayer);
  shape(kfMakeHandle<kcLineSeg>(kcVector<2>(0, 0), kcVector<2>(100, 50)), back, L::overlayLayer);
  shape(kfMakeHandle<kcLine>(kcVector<2>(10, 10), kcVector<2>(1, 2)), thin, L::mainLayer);
  shape(kfMakeHandle<kcFLine>(kcVector<2>(10, 10), kcRadian(0.25)), thin, L::mainLayer);
  shape(kfMakeHandle<kcRect>(kcVector<2>(5, 6), kcVector<2>(70, 80)), wide, L::overlayLayer);
  shape(kfMakeHandle<kcCircle>(kcVector<2>(50, 50), 20), wide, L::mainLayer);
  shape(kfMakeHandle<kcAnnulus>(kcVector<2>(100, 100), 10, 20), thin, L::mainLayer);
  shape(kfMakeHandle<kcEllipseArc2>(e2, kcRadian(-1), kcRadian(1.5)), back, L::overlayLayer);
  shape(kfMakeHandle<kcEllipse2>(e2), wide, L::mainLayer);
  shape(kfMakeHandle<kcGenRect>(sheared, 0.25, 0.5), wide, L::mainLayer);
  shape(kfMakeHandle<kcGenAnnulus>(kcGenRect(sheared, 0.25, 0.5), 0.5), thin, L::overlayLayer);
  shape(kfMakeHandle<kcPolyline>(std::vector<kcVector<2>>{{0, 0}, {4, 0}, {4, 3}}, false), thin,
        L::mainLayer);
  shape(kfMakeHandle<kcGenPoly>(roundedPad()), thin, L::mainLayer);
  shape(kfMakeHandle<kcAffineRectangle>(sheared), thin, L::mainLayer);
  shape(kfMakeHandle<kcBezierCurve>(kcVector<2>(0, 0), kcVector<2>(10, 20), kcVector<2>(30, 20),
                                    kcVector<2>(40, 0)),
        thin, L::mainLayer);
  shape(kfMakeHandle<kcDeBoorSpline>(std::vector<kcVector<2>>{{0, 0}, {10, 10}, {20, 0}, {30, 10}}), thin,
        L::overlayLayer);
  shape(kfMakeHandle<kcInterpSpline>(std::vector<kcVector<2>>{{0, 0}, {10, 10}, {20, 0}}), thin,
        L::mainLayer);
  shape(kfMakeHandle<kcHermiteSpline>(std::vector<kcVector<2>>{{0, 0}, {10, 10}},
                                      std::vector<kcVector<2>>{{1, 0}, {0, 1}}),
        thin, L::mainLayer);
  shape(kfMakeHandle<kcEllipseAnnulus>(e2, 0.5), wide, L::overlayLayer);
  shape(kfMakeHandle<kcLineSegSet>(
            std::vector<kcLineSeg>{kcLineSeg({1, 1}, {2, 3}), kcLineSeg({4, 4}, {9, 1})}),
        thin, L::mainLayer);
  const auto point = kfMakeHandle<kcPoint>(3, 4);
  shape(point, thin, L::mainLayer, kfMakeHandle<kcGraphicSimple<kcPoint>>(*point, thin));
  const auto axes = kfMakeHandle<kcCoordAxes>(kcXform<2>({20, 0, 0, 20}, {5, 5}));
  shape(axes, thin, L::overlayLayer, kfMakeHandle<kcGraphicSimple<kcCoordAxes>>(*axes, thin));
  const auto polygon = kfMakeHandle<kcPolygon>(std::vector<kcVector<2>>{{0, 0}, {40, 0}, {40, 30}, {10, 20}});
  shape(polygon, wide, L::mainLayer, kfMakeHandle<kcGraphicSimple<kcPolygon>>(*polygon, wide));
  const auto ellipse = kfMakeHandle<kcEllipse>(sheared);
  shape(ellipse, wide, L::mainLayer, kfMakeHandle<kcGraphicWithFill<kcEllipse, kcEllipse>>(*ellipse, wide));

  // The graphics with data of their own.
  const kcEllipseAnnulusSection section(kcEllipseAnnulus(e2, 0.5), kcRadian(0.25), kcRadian(2.0));
  scene.push_back({kfMakeHandle<kcGraphicEllipseAnnulusSection>(section, thin), L::mainLayer,
                   [=](kcUITablet& t) { t.draw(section, thin, L::mainLayer); }});
  scene.push_back({kfMakeHandle<kcGraphicCross>(kcCross({60, 70}, 5, kcRadian(0.3)), thin), L::overlayLayer,
                   [=](kcUITablet& t) {
                     t.draw(kcCross({60, 70}, 5, kcRadian(0.3)), thin, L::overlayLayer);
                   }});
  scene.push_back({kfMakeHandle<kcGraphicPointIcon>(kcPoint(33.3, 44.4), thin), L::mainLayer,
                   [=](kcUITablet& t) { t.drawPointIcon(kcPoint(33.3, 44.4), thin, L::mainLayer); }});
  const kcUIFormat format(2, kcUIFormat::center);
  scene.push_back({kfMakeHandle<kcGraphicText>(L"Pad 1", kcPoint(10, 20), kcColor::white, kcColor::black,
                                               format, kcVector<2>(2.75, -3.5)),
                   L::overlayLayer, [=](kcUITablet& t) {
                     t.drawStart(kcPoint(10, 20), L::overlayLayer);
                     t.moveToRelPels(2, -3, L::overlayLayer);
                     // Where the pen is now, under the identity map.
                     t.draw(std::wstring(L"Pad 1"), kcPoint(12, 17), kcColor::white, kcColor::black, format,
                            L::overlayLayer);
                   }});
  // A group draws its members with the group's props.
  auto group = kfMakeHandle<kcGraphicGroup>();
  group->items(std::vector<kcGraphicPtr>{kcGraphic::makeShapeGraphic(kcCircle({9, 9}, 4), thin),
                                         kcGraphicPtr(),
                                         kcGraphic::makeShapeGraphic(kcLineSeg({0, 0}, {9, 9}), thin)});
  group->props(wide);
  scene.push_back({group, L::mainLayer, [=](kcUITablet& t) {
                     t.draw(kcCircle({9, 9}, 4), wide, L::mainLayer);
                     t.draw(kcLineSeg({0, 0}, {9, 9}), wide, L::mainLayer);
                   }});
  return scene;
}

// The scene's graphics of one layer.
kcGraphicList graphicsOn(const std::vector<GraphicEntry>& scene, L layer) {
  kcGraphicList list;
  for (const GraphicEntry& e : scene)
    if (e.layer == layer) list.append(e.graphic);
  return list;
}

TEST(TabletDifferential, GraphicListsAndTheirSketchesDrawAlike) {
  const std::vector<GraphicEntry> scene = graphicScene();
  Traced direct;
  for (const GraphicEntry& e : scene) e.direct(direct.tablet);
  ASSERT_GT(direct.main.lines().size(), 25u);
  // The text lands where its pen went: the anchor moved by whole pels.
  EXPECT_NE(std::find_if(direct.overlay.lines().begin(), direct.overlay.lines().end(),
                         [](const std::string& l) { return l.rfind("text \"Pad 1\" 12 17 ", 0) == 0; }),
            direct.overlay.lines().end());

  const kcGraphicList onMain = graphicsOn(scene, L::mainLayer);
  const kcGraphicList onOverlay = graphicsOn(scene, L::overlayLayer);
  Traced listed;
  onMain.draw(listed.tablet, L::mainLayer);
  onOverlay.draw(listed.tablet, L::overlayLayer);
  expectSameTraces(direct, listed);

  // A sketch plays inside an update lock and a long-run hint; drawn as the
  // lists, between the same calls, the traces must agree.
  const auto played = [](Traced& t, const kcUISketch& s, L layer) { t.tablet.draw(s, kcPoint(0, 0), layer); };
  Traced sketched;
  played(sketched, onMain.sketch(L::mainLayer), L::mainLayer);
  played(sketched, onOverlay.sketch(L::overlayLayer), L::overlayLayer);
  Traced bracketed;
  for (const auto& [list, layer] :
       {std::pair(&onMain, L::mainLayer), std::pair(&onOverlay, L::overlayLayer)}) {
    bracketed.tablet.lockScreenUpdatesPush(true, layer);
    bracketed.tablet.optimizeDrawing(true, layer);
    list->draw(bracketed.tablet, layer);
    bracketed.tablet.optimizeDrawing(false, layer);
    bracketed.tablet.lockScreenUpdatesPop(layer);
  }
  expectSameTraces(bracketed, sketched);

  // Archived and reloaded, the lists draw the same again.
  kcGraphicList mainCopy = onMain;
  kcGraphicList overlayCopy = onOverlay;
  kcMemArchive out;
  out || mainCopy || overlayCopy;
  kcMemArchive in(out.bytes());
  kcGraphicList mainBack;
  kcGraphicList overlayBack;
  in || mainBack || overlayBack;
  Traced reloaded;
  mainBack.draw(reloaded.tablet, L::mainLayer);
  overlayBack.draw(reloaded.tablet, L::overlayLayer);
  expectSameTraces(direct, reloaded);
}

// --- drawing and recording ---

TEST(Tablet, RecordsOnlyWhenAskedAndDrawsBothLayers) {
  Traced t;
  EXPECT_FALSE(t.tablet.recordOn());
  t.tablet.draw(kcPoint(1, 1), kcGraphicProps(), L::mainLayer);
  t.tablet.draw(kcPoint(1, 1), kcGraphicProps(), L::overlayLayer);
  EXPECT_TRUE(t.tablet.sketch().isNull());
  EXPECT_EQ(t.main.lines().size(), 1u);
  EXPECT_EQ(t.overlay.lines().size(), 1u);

  // Off the drawing switch: one record, nothing drawn.
  t.tablet.recordOn() = true;
  t.tablet.drawOn().push(false);
  t.tablet.draw(kcLineSeg({0, 0}, {1, 1}), kcGraphicProps(), L::mainLayer);
  t.tablet.drawOn().pop();
  EXPECT_EQ(t.main.lines().size(), 1u);
  EXPECT_EQ(t.tablet.sketch().length(), 8 + 32);  // default props: no properties record
}

TEST(Tablet, CirclesRecordAsCirclesAndDrawAsEllipses) {
  Traced t;
  t.tablet.recordOn() = true;
  kcGraphicProps filled;
  filled.fill(true);
  t.tablet.draw(kcCircle({1, 2}, 3), kcGraphicProps(), L::mainLayer);
  t.tablet.draw(kcCircle({1, 2}, 3), filled, L::mainLayer);
  ASSERT_EQ(t.main.lines().size(), 2u);
  EXPECT_EQ(t.main.lines()[0].rfind("ellipse 3 0 0 3 1 2 ", 0), 0u) << t.main.lines()[0];
  kcUISketchParser records(t.tablet.sketch());
  ASSERT_TRUE(records.next());
  EXPECT_EQ(records.header().opcode(), 4);
  ASSERT_TRUE(records.next());
  EXPECT_EQ(records.header().opcode(), 29);
  EXPECT_TRUE(records.header().hasProps());
  EXPECT_FALSE(records.next());
}

TEST(Tablet, LayersAndSwitches) {
  Traced t;
  t.tablet.recordOn() = true;
  t.tablet.draw(kcPoint(1, 1), kcGraphicProps(), L::bothLayers);
  EXPECT_TRUE(t.main.lines().empty());
  EXPECT_TRUE(t.overlay.lines().empty());
  kcUISketchParser records(t.tablet.sketch());
  ASSERT_TRUE(records.next());
  EXPECT_EQ(records.header().layer(), 2);

  EXPECT_THROW(t.tablet.draw(kcPoint(1, 1), kcGraphicProps(), static_cast<L>(3)), kcUIError::BadLayer);
  EXPECT_THROW(t.tablet.optimizeDrawing(true, L::bothLayers), kcUIError::BadLayer);
  EXPECT_THROW(t.tablet.drawPointIcon(kcPoint(1, 1), kcGraphicProps(), L::bothLayers), kcUIError::BadLayer);

  t.tablet.drawOnOverlay() = false;
  t.tablet.draw(kcPoint(1, 1), kcGraphicProps(), L::overlayLayer);
  EXPECT_TRUE(t.overlay.lines().empty());

  // A layer without a scope still records.
  kcUITablet bare;
  bare.recordOn() = true;
  bare.draw(kcPoint(1, 1), kcGraphicProps(), L::mainLayer);
  EXPECT_EQ(bare.sketch().length(), 8 + 16);

  // Flag stacks hold 32 flags.
  for (int i = 1; i < 32; ++i) t.tablet.drawOn().push(true);
  EXPECT_THROW(t.tablet.drawOn().push(true), kcUIError::FlagStackOverflow);
  kcUITablet fresh;
  EXPECT_THROW(fresh.recordOn().pop(), kcUIError::FlagStackUnderflow);
}

// A device that cannot draw now, unless its flags force it.
class Busy : public kcUITraceScope {
 public:
  unsigned long flags = 0;
  [[nodiscard]] bool canDrawNow() const override { return false; }
  [[nodiscard]] unsigned long stateFlags() const override { return flags; }
};

TEST(Tablet, BusyDevicesAndTimeStamps) {
  Busy busy;
  kcUITablet t(&busy);
  t.draw(kcPoint(1, 1), kcGraphicProps(), L::mainLayer);
  EXPECT_TRUE(busy.lines().empty());
  busy.flags = kcUIScope::kForceDraw;
  t.draw(kcPoint(1, 1), kcGraphicProps(), L::mainLayer);
  EXPECT_EQ(busy.lines().size(), 1u);

  // Draws on one tablet share a stamp; a draw elsewhere moves it on.
  const unsigned long first = t.timeStamp();
  t.draw(kcPoint(2, 2), kcGraphicProps(), L::mainLayer);
  EXPECT_EQ(t.timeStamp(), first);
  kcUITraceScope other;
  kcUITablet u(&other);
  u.draw(kcPoint(1, 1), kcGraphicProps(), L::mainLayer);
  t.draw(kcPoint(3, 3), kcGraphicProps(), L::mainLayer);
  EXPECT_GT(t.timeStamp(), u.timeStamp());
}

TEST(Tablet, OpenCurvesGetTheirArrowHeads) {
  Traced t;
  kcGraphicProps props(kcColor::red, 4, kcGraphicProps::penSolid, false);
  t.tablet.draw(kcLineSeg({0, 0}, {10, 0}), props, L::mainLayer);
  props.arrowHeadForward(false);
  t.tablet.draw(kcLineSeg({0, 0}, {10, 0}), props, L::mainLayer);
  props.arrowHead(false);
  t.tablet.draw(kcLineSeg({0, 0}, {10, 0}), props, L::mainLayer);
  ASSERT_EQ(t.main.lines().size(), 5u);
  EXPECT_EQ(t.main.lines()[1].rfind("arrowHead 10 0 1 0 12 ", 0), 0u) << t.main.lines()[1];
  EXPECT_EQ(t.main.lines()[3].rfind("arrowHead 0 0 -1 -0 12 ", 0), 0u) << t.main.lines()[3];
}

TEST(Tablet, ShapesByTheirClassAndTheTextRect) {
  Traced t;
  t.tablet.recordOn() = true;
  const kcGraphicProps props(kcColor::red, 2, kcGraphicProps::penSolid, false);
  // Calls with the same props: one properties record.
  const kcShapePtr circle(new kcCircle({1, 2}, 3));
  t.tablet.draw(*circle, props, L::mainLayer);
  const kcShapeTree tree({kcShapePtr(new kcLineSeg({0, 0}, {1, 0})), kcShapePtr(new kcPoint(5, 5))});
  t.tablet.draw(tree, props, L::mainLayer);  // no call of its own: its pieces
  t.tablet.draw(kcDeBoorSpline({{0, 0}, {10, 10}, {20, 0}, {30, 10}}), props, L::mainLayer);
  kcUISketchParser records(t.tablet.sketch());
  std::vector<long> opcodes;
  int withProps = 0;
  while (records.next()) {
    opcodes.push_back(records.header().opcode());
    withProps += records.header().hasProps();
  }
  ASSERT_GE(opcodes.size(), 4u);
  EXPECT_EQ(opcodes[0], 4);
  EXPECT_EQ(opcodes[1], 2);
  EXPECT_EQ(opcodes[2], 0);
  EXPECT_EQ(opcodes.back(), 43);  // a de Boor spline's piece is a cubic spline
  EXPECT_EQ(withProps, 1);
  ASSERT_GE(t.main.lines().size(), 4u);
  EXPECT_EQ(t.main.lines()[0].rfind("ellipse ", 0), 0u);
  EXPECT_EQ(t.main.lines()[t.main.lines().size() - 2].rfind("path M ", 0), 0u);

  kcUIRect r;
  t.tablet.scaleExact(kcPair<double>(2.0, 2.0));
  t.tablet.textRect(L"ab", kcPoint(5, 5), kcUIFormat(0, kcUIFormat::topLeft), r, L::mainLayer);
  EXPECT_EQ(r, kcUIRect(10, 10, 16, 16));
  kcUITablet bare;
  bare.textRect(L"ab", kcPoint(5, 5), kcUIFormat(0, kcUIFormat::topLeft), r, L::mainLayer);
  EXPECT_TRUE(r.isNull());
}

// Shapes the device has no primitive for reach it converted, each at once: a
// rectangle under a turn as its four mapped corners, axes as two lines inside
// one update lock, a general annulus as one path of both rims.
TEST(Tablet, ConvertedShapesReachTheDeviceAtOnce) {
  Traced t;
  // (x, y) -> (100 - y, x)
  t.tablet.baseMap(kcXform<2>(kcMatrix<2>(0.0, -1.0, 1.0, 0.0), kcVector<2>(100.0, 0.0)));
  kcGraphicProps props(kcColor::red, 1, kcGraphicProps::penSolid, false);
  props.arrowHead(false);
  kcGraphicProps filled = props;
  filled.fill(true);
  t.tablet.draw(kcRect({1, 2}, {3, 4}), filled, L::mainLayer);
  t.tablet.draw(kcCoordAxes(kcXform<2>::translation({5, 6})), props, L::mainLayer);
  t.tablet.draw(kcGenAnnulus(kcGenRect(kcXform<2>::translation({5, 6})), 0.5), props, L::mainLayer);
  const std::string pen = " colour(stock index 249 rgb 255 0 0) width 1 style 0 join 0 cap 0 ";
  EXPECT_EQ(t.main.lines(), (Lines{"polyline 4 98 1 98 4 94 4 94 1 closed" + pen + "fill noarrow",
                                   "lockScreenUpdatesPush true", "lineSeg 94 5 94 6" + pen + "nofill noarrow",
                                   "lineSeg 94 5 93 5" + pen + "nofill noarrow", "lockScreenUpdatesPop",
                                   "path M 93.75 5.25 L 93.75 5.75 L 93.25 5.75 L 93.25 5.25 L 93.75 5.25 Z "
                                   "M 94 5 L 94 6 L 93 6 L 93 5 L 94 5 Z" +
                                       pen + "nofill noarrow"}));
}

// --- playback ---

TEST(TabletPlayback, RecordsTheWholeReplayAsOneRecord) {
  kcUITablet source;
  source.recordOn() = true;
  source.draw(kcPoint(1, 1), kcGraphicProps(), L::mainLayer);
  Traced t;
  t.tablet.recordOn() = true;
  t.tablet.draw(source.sketch(), kcPoint(5, 6), L::mainLayer);
  kcUISketchParser records(t.tablet.sketch());
  ASSERT_TRUE(records.next());
  EXPECT_EQ(records.header().opcode(), 15);
  const auto& nested = static_cast<const kc_UISketchOpSketch&>(records.data());
  EXPECT_EQ(nested.value().offset, kcVector<2>(5, 6));
  EXPECT_TRUE(nested.value().sketch == source.sketch());
  EXPECT_FALSE(records.next());
  EXPECT_EQ(t.main.lines()[2].rfind("point 6 7 ", 0), 0u);  // the point, moved by the offset
}

TEST(TabletPlayback, AMalformedSketchLeavesTheTabletAsItWas) {
  kcUISketch bad = recordedScene();
  kcUISketch good = bad;
  unsigned char* last = bad.append(3);  // a header cut short
  last[0] = 2;
  last[1] = 0;
  last[2] = 4;
  Traced t;
  t.tablet.scaleExact(kcPair<double>(2.0, 2.0));
  const kcXform<2> map = t.tablet.scaledMap();
  t.tablet.recordOn() = true;
  EXPECT_THROW(t.tablet.draw(bad, kcPoint(1, 1), L::bothLayers), kcUIError::InvalidUISketch);
  EXPECT_TRUE(t.tablet.scaledMap() == map);
  EXPECT_EQ(t.tablet.recordOn().depth(), 1);
  EXPECT_TRUE(t.tablet.recordOn());
  EXPECT_FALSE(t.tablet.screenUpdatesLocked(L::bothLayers));
  EXPECT_TRUE(t.tablet.sketch().isNull());  // nothing recorded
  EXPECT_EQ(t.main.lines().back(), "lockScreenUpdatesPop");

  // Not drawn but recording: checked all the same.
  t.tablet.drawOn() = false;
  EXPECT_THROW(t.tablet.draw(bad, kcPoint(1, 1), L::mainLayer), kcUIError::InvalidUISketch);
  EXPECT_TRUE(t.tablet.sketch().isNull());
  t.tablet.draw(good, kcPoint(1, 1), L::mainLayer);
  EXPECT_FALSE(t.tablet.sketch().isNull());
}

TEST(TabletPlayback, EncloseRectCoversWhatIsDrawn) {
  kcUITablet source;
  source.recordOn() = true;
  const kcGraphicProps props(kcColor::red, 1, kcGraphicProps::penSolid, false);
  source.draw(kcCircle({50, 60}, 10), props, L::mainLayer);
  source.draw(kcPoint(200, 10), props, L::overlayLayer);
  kcUITablet t;
  EXPECT_EQ(t.encloseRect(source.sketch(), kcPoint(0, 0), L::mainLayer), kcUIRect(39, 49, 22, 22));
  EXPECT_EQ(t.encloseRect(source.sketch(), kcPoint(0, 0), L::bothLayers), kcUIRect(39, 9, 162, 62));
  EXPECT_EQ(t.encloseRect(source.sketch(), kcPoint(10, 0), L::mainLayer), kcUIRect(49, 49, 22, 22));
  EXPECT_TRUE(t.encloseRect(kcUISketch(), kcPoint(0, 0), L::mainLayer).isNull());
}

TEST(TabletPlayback, ClipRectanglesReachTheirLayers) {
  Traced t;
  t.tablet.scaleExact(kcPair<double>(2.0, 2.0));
  t.tablet.drawClipRect(kcRect({1, 2}, {10, 20}), L::overlayLayer);
  EXPECT_TRUE(t.main.lines().empty());
  EXPECT_EQ(t.overlay.lines().back(), "clipRect 2 4 20 40");
  t.tablet.drawClipRect(kcRect(), L::bothLayers);
  EXPECT_TRUE(t.main.clipRect().isEmpty());
  EXPECT_THROW(t.tablet.drawClipRect(kcRect(), static_cast<L>(3)), kcUIError::BadLayer);
}

}  // namespace
