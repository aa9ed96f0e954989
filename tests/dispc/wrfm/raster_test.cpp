#include "dispc/wrfm/raster.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

using V = kcVector<2>;
using Buffer = kcPelBuffer<unsigned char>;
using Pel = std::pair<long, long>;
constexpr signed char kGrey = 100;
const kcXform<2> kIdentity;

// The pels set to a non-zero value, in (x, y) order.
std::set<Pel> marked(const Buffer& b) {
  std::set<Pel> out;
  for (long y = 0; y < b.height(); ++y)
    for (long x = 0; x < b.width(); ++x)
      if (b.get(x, y) != 0) out.insert({x, y});
  return out;
}

std::set<Pel> extentsOf(const V& a, const V& b, long size = 8) {
  Buffer buffer(size, size);
  drawHorizontalExtentsPelBuf(buffer, kc2SegmentLine(a, b), kIdentity, kGrey);
  return marked(buffer);
}

TEST(Raster, RoundingTreatsAHairOffAWholeNumberAsThatNumber) {
  EXPECT_EQ(floorTol(3.0 - 1e-12), 3);
  EXPECT_EQ(floorTol(-3.0 - 1e-12), -3);
  EXPECT_EQ(floorTol(2.5), 2);
  EXPECT_EQ(floorTol(-2.5), -3);
  EXPECT_EQ(ceilTol(3.0 + 1e-12), 3);
  EXPECT_EQ(ceilTol(-3.0 + 1e-12), -3);
  EXPECT_EQ(ceilTol(2.5), 3);
  EXPECT_EQ(floorTol(3.0 - 1e-9), 2);
  // Far-off and meaningless coordinates saturate instead of overflowing.
  EXPECT_EQ(floorTol(1e300), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(ceilTol(-1e300), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(floorTol(std::nan("")), std::numeric_limits<std::int32_t>::min());
}

TEST(Raster, LineExtentsMarkWhereRowCentresAreCrossed) {
  // On the centre of row 2: its two end pels.
  EXPECT_EQ(extentsOf(V(1.0, 2.5), V(4.0, 2.5)), (std::set<Pel>{{1, 2}, {3, 2}}));
  // Down the centre of column 0: one pel per row.
  EXPECT_EQ(extentsOf(V(0.5, 0.5), V(0.5, 3.5)), (std::set<Pel>{{0, 0}, {0, 1}, {0, 2}, {0, 3}}));
  // Between two row centres: nothing.
  EXPECT_TRUE(extentsOf(V(0.0, 1.0), V(4.0, 1.0 + 1e-12)).empty());
  // A slant, either way round: x at each row centre, floored.
  const std::set<Pel> slant{{1, 1}, {2, 2}, {3, 3}};
  EXPECT_EQ(extentsOf(V(0.5, 0.5), V(4.5, 4.5)), (std::set<Pel>{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}}));
  EXPECT_EQ(extentsOf(V(4.0, 4.0), V(1.0, 1.0)), slant);
  EXPECT_THROW(extentsOf(V(2, 2), V(2, 2)), kcShapesError::DegenerateShape);
}

TEST(Raster, ExtentsOfAClosedOutlineComeInPairsPerRow) {
  // A diamond through the pel grid: every row it covers gets two marks.
  Buffer buffer(20, 20);
  const V corners[4] = {V(10, 1.3), V(18.2, 10), V(10, 18.7), V(1.6, 10)};
  for (int k = 0; k < 4; ++k)
    drawHorizontalExtentsPelBuf(buffer, kc2SegmentLine(corners[k], corners[(k + 1) % 4]), kIdentity, kGrey);
  for (long y = 0; y < 20; ++y) {
    int marks = 0;
    for (long x = 0; x < 20; ++x) marks += buffer.get(x, y) != 0;
    const bool covered = y + 0.5 > 1.3 && y + 0.5 < 18.7;
    EXPECT_EQ(marks, covered ? 2 : 0) << "row " << y;
  }
}

TEST(Raster, ArcsAreCutIntoFiveDegreeChords) {
  EXPECT_EQ(kfArcChords(kcDegree(90)), 19);
  EXPECT_EQ(kfArcChords(kcDegree(4)), 1);
  EXPECT_EQ(kfArcChords(kcDegree(-360)), 73);
  // The bounds grow by the chord ends only: the start point at (30, 20)
  // does not widen max x, the end point at (20, 30) sets max y.
  const double inf = std::numeric_limits<double>::infinity();
  double minX = inf, maxX = -inf, minY = inf, maxY = -inf;
  Buffer buffer(40, 40);
  const kc2SegmentArc quarter(V(20, 20), 10.0, kcDegree(0), kcDegree(90));
  drawHorizontalExtentsPelBuf(buffer, quarter, kIdentity, kGrey, &minX, &maxX, &minY, &maxY);
  EXPECT_NEAR(maxX, 20 + 10 * std::cos(90.0 / 19 * std::numbers::pi / 180), 1e-12);
  EXPECT_NEAR(minX, 20.0, 1e-12);
  EXPECT_NEAR(maxY, 30.0, 1e-12);
  EXPECT_NEAR(minY, 20 + 10 * std::sin(90.0 / 19 * std::numbers::pi / 180), 1e-12);
  // Every row the quarter spans is marked, each mark within a pel of the
  // circle (a chord within one row marks both its ends).
  std::set<long> rows;
  for (const auto& [x, y] : marked(buffer)) {
    EXPECT_NEAR(V(x + 0.5, y + 0.5).distance(V(20, 20)), 10.0, 1.0);
    rows.insert(y);
  }
  EXPECT_EQ(rows.size(), 10u);
  EXPECT_EQ(*rows.begin(), 20);
  // Null bounds are skipped; the transform applies to the chords.
  Buffer doubled(80, 80);
  drawHorizontalExtentsPelBuf(doubled, quarter, kcXform<2>::scale(2, 2), kGrey, nullptr, nullptr, nullptr,
                              nullptr);
  rows.clear();
  for (const auto& [x, y] : marked(doubled)) rows.insert(y);
  EXPECT_EQ(rows.size(), 20u);
}

TEST(Raster, LinesAreThinAndEightConnected) {
  Buffer buffer(16, 16);
  drawLinePelBuf(buffer, kc2SegmentLine(V(1.2, 2.7), V(13.9, 7.1)), kIdentity, kGrey, 1);
  const std::set<Pel> pels = marked(buffer);
  // One pel per column between the end pels, which are set as well: a
  // chain of touching pels from (1, 2) to (13, 7).
  std::map<long, int> perColumn;
  for (const auto& [x, y] : pels) ++perColumn[x];
  EXPECT_EQ(perColumn.begin()->first, 1);
  EXPECT_EQ(perColumn.rbegin()->first, 13);
  for (long x = 2; x < 13; ++x) EXPECT_EQ(perColumn[x], 1) << "column " << x;
  EXPECT_TRUE(pels.count({1, 2}));
  EXPECT_TRUE(pels.count({13, 7}));
  for (auto it = pels.begin(); std::next(it) != pels.end(); ++it) {
    EXPECT_LE(std::next(it)->first - it->first, 1);
    EXPECT_LE(std::abs(std::next(it)->second - it->second), 1);
  }
  // A line shorter than a pel still shows its end pels.
  Buffer tiny(4, 4);
  drawLinePelBuf(tiny, kc2SegmentLine(V(1.1, 1.1), V(1.3, 1.2)), kIdentity, kGrey, 1);
  EXPECT_EQ(marked(tiny), (std::set<Pel>{{1, 1}}));
  EXPECT_THROW(drawLinePelBuf(tiny, kc2SegmentLine(), kIdentity, kGrey, 1), kcShapesError::DegenerateShape);
}

TEST(Raster, LinesDrawTheSamePelsWhicheverWayTheyRun) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> at(-3.0, 19.0);
  for (int trial = 0; trial < 200; ++trial) {
    const V a(at(rng), at(rng)), b(at(rng), at(rng));
    const signed char width = trial % 2 ? 1 : 3;
    Buffer forth(16, 16), back(16, 16);
    drawLinePelBuf(forth, kc2SegmentLine(a, b), kIdentity, kGrey, width);
    drawLinePelBuf(back, kc2SegmentLine(b, a), kIdentity, kGrey, width);
    ASSERT_EQ(marked(forth), marked(back)) << "trial " << trial;
  }
}

TEST(Raster, WidthWidensAcrossTheMajorAxis) {
  for (const auto& [width, rows] : std::vector<std::pair<signed char, std::set<long>>>{
           {3, {4, 5, 6}}, {2, {5, 6}}, {0, {5}}, {-7, {5}}}) {
    Buffer buffer(12, 12);
    drawLinePelBuf(buffer, kc2SegmentLine(V(1.5, 5.5), V(9.5, 5.5)), kIdentity, kGrey, width);
    std::set<long> seen;
    for (const auto& [x, y] : marked(buffer)) seen.insert(y);
    EXPECT_EQ(seen, rows) << "width " << int(width);
  }
  // A steep line widens along x.
  Buffer steep(12, 12);
  drawLinePelBuf(steep, kc2SegmentLine(V(5.5, 1.5), V(5.5, 9.5)), kIdentity, kGrey, 3);
  std::set<long> columns;
  for (const auto& [x, y] : marked(steep)) columns.insert(x);
  EXPECT_EQ(columns, (std::set<long>{4, 5, 6}));
}

TEST(Raster, GreyValuesKeepTheirEightBits) {
  Buffer buffer(4, 4);
  drawLinePelBuf(buffer, kc2SegmentLine(V(0.5, 1.5), V(3.5, 1.5)), kIdentity, static_cast<signed char>(-6),
                 1);
  EXPECT_EQ(buffer.get(2, 1), 250);
}

TEST(Raster, ArcOutlinesFollowTheCircleAndReportTheirBounds) {
  Buffer buffer(64, 64);
  const double inf = std::numeric_limits<double>::infinity();
  double minX = inf, maxX = -inf, minY = inf, maxY = -inf;
  for (const double start : {180.0, 0.0})
    drawArcPelBuf(buffer, kc2SegmentArc(V(32, 32), 20.0, kcDegree(start), kcDegree(180)), kIdentity, kGrey, 1,
                  &minX, &maxX, &minY, &maxY);
  EXPECT_NEAR(minX, 12.0, 1e-12);
  EXPECT_NEAR(maxX, 52.0, 1e-12);
  // 37 chords of a half turn miss the top and bottom by their sagitta.
  const double sagitta = 20.0 * (1.0 - std::cos(180.0 / 37 / 2 * std::numbers::pi / 180));
  EXPECT_NEAR(minY, 12.0 + sagitta, 1e-12);
  EXPECT_NEAR(maxY, 52.0 - sagitta, 1e-12);
  const std::set<Pel> pels = marked(buffer);
  // About one pel per pel of circumference, every one near the circle.
  EXPECT_GT(pels.size(), 100u);
  EXPECT_LT(pels.size(), 140u);
  for (const auto& [x, y] : pels) EXPECT_NEAR(V(x + 0.5, y + 0.5).distance(V(32, 32)), 20.0, 1.0);
}

TEST(Raster, FarOffSegmentsWriteNothingAndCostNoLoop) {
  Buffer image(32, 32);
  Buffer window = image.window(8, 8, 8, 8);
  // A line from far outside crosses the window: only the window's pels change.
  drawLinePelBuf(window, kc2SegmentLine(V(-1e9, -1e9), V(1e9, 1e9)), kIdentity, kGrey, 1);
  drawHorizontalExtentsPelBuf(window, kc2SegmentLine(V(-1e9, -1e9), V(1e9, 1e9)), kIdentity, kGrey);
  for (const auto& [x, y] : marked(image)) {
    EXPECT_GE(x, 8);
    EXPECT_LT(x, 16);
    EXPECT_EQ(x, y);
  }
  EXPECT_EQ(marked(image).size(), 8u);
}

}  // namespace
