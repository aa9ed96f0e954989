#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dispc/wrfm/raster.h"

namespace {

using V = kcVector<2>;
using Buffer = kcPelBuffer<unsigned char>;
using Lines = std::vector<kc2SegmentLine>;
using Arcs = std::vector<kc2SegmentArc>;
constexpr unsigned char kGrey = 200;
constexpr double kPi = std::numbers::pi;
const kcXform<2> kIdentity;

Lines polygon(const std::vector<V>& corners) {
  Lines out;
  for (std::size_t k = 0; k < corners.size(); ++k)
    out.emplace_back(corners[k], corners[(k + 1) % corners.size()]);
  return out;
}

Lines box(double x0, double y0, double x1, double y1) {
  return polygon({V(x0, y0), V(x1, y0), V(x1, y1), V(x0, y1)});
}

Arcs circle(const V& c, double r) {
  return {kc2SegmentArc(c, r, kcDegree(0), kcDegree(180)), kc2SegmentArc(c, r, kcDegree(180), kcDegree(180))};
}

// A w x h rectangle at (x, y) with corners rounded by r, as lines and quarter arcs.
void roundedBox(double x, double y, double w, double h, double r, Lines& lines, Arcs& arcs) {
  lines.emplace_back(V(x + r, y), V(x + w - r, y));
  lines.emplace_back(V(x + w, y + r), V(x + w, y + h - r));
  lines.emplace_back(V(x + w - r, y + h), V(x + r, y + h));
  lines.emplace_back(V(x, y + h - r), V(x, y + r));
  arcs.emplace_back(V(x + w - r, y + r), r, kcDegree(270), kcDegree(90));
  arcs.emplace_back(V(x + w - r, y + h - r), r, kcDegree(0), kcDegree(90));
  arcs.emplace_back(V(x + r, y + h - r), r, kcDegree(90), kcDegree(90));
  arcs.emplace_back(V(x + r, y + r), r, kcDegree(180), kcDegree(90));
}

long count(const Buffer& b, unsigned char value = kGrey) {
  long n = 0;
  for (long y = 0; y < b.height(); ++y)
    for (long x = 0; x < b.width(); ++x) n += b.get(x, y) == value;
  return n;
}

Buffer filled(long size, const Lines& lines, const Arcs& arcs = {}, const kcXform<2>& x = kIdentity) {
  Buffer b(size, size);
  kfFillPelBuf(b, lines, arcs, x, kGrey);
  return b;
}

TEST(RasterFill, SquaresTakeThePelsWhoseCentresTheyHoldLeftAndTopInclusive) {
  for (const double at : {2.0, 2.5}) {
    const Buffer b = filled(12, box(at, at + 1, at + 4, at + 5));
    EXPECT_EQ(count(b), 16) << at;
    // At whole numbers the centres 2.5..5.5 lie inside; at halves the centre
    // on the left edge is in and the one on the right edge is out.
    for (long y = 0; y < 12; ++y)
      for (long x = 0; x < 12; ++x) {
        const bool in = x >= 2 && x <= 5 && y >= 3 && y <= 6;
        EXPECT_EQ(b.get(x, y) == kGrey, in) << at << ": " << x << "," << y;
      }
  }
  // Travelled either way round, the same pels.
  Lines reversed = box(2, 3, 6, 7);
  std::reverse(reversed.begin(), reversed.end());
  for (kc2SegmentLine& l : reversed) l = kc2SegmentLine(l.p2(), l.p1());
  EXPECT_EQ(count(filled(12, reversed)), 16);
}

TEST(RasterFill, ArcsFillAsCirclesNotAsChords) {
  // Every pel centre strictly inside the circle and none outside, far
  // tighter than 5-degree chords would give (their sagitta at r = 100 is 0.1).
  const V c(100.3, 99.8);
  const double r = 97.25;
  const Buffer b = filled(200, {}, circle(c, r));
  for (long y = 0; y < 200; ++y)
    for (long x = 0; x < 200; ++x) {
      const double d = V(x + 0.5, y + 0.5).distance(c);
      if (std::fabs(d - r) < 1e-9) continue;
      EXPECT_EQ(b.get(x, y) == kGrey, d < r) << x << "," << y;
    }
}

TEST(RasterFill, SheeredCirclesFillAsEllipses) {
  const kcXform<2> shear(kcMatrix<2>(1.5, 0.7, -0.2, 0.8), V(30, 20));
  const Buffer b = filled(120, {}, circle(V(20, 30), 25), shear);
  const kcXform<2> back = shear.inverse();
  for (long y = 0; y < 120; ++y)
    for (long x = 0; x < 120; ++x) {
      const double d = back.mapPoint(V(x + 0.5, y + 0.5)).distance(V(20, 30));
      if (std::fabs(d - 25) < 1e-9) continue;
      EXPECT_EQ(b.get(x, y) == kGrey, d < 25) << x << "," << y;
    }
}

TEST(RasterFill, AreasOfCirclesAndRoundedRectanglesWithinTheirPerimeter) {
  for (double r = 0.7; r < 60; r *= 1.37) {
    const double c = 64.0 + r / 7;
    const long pels = count(filled(130, {}, circle(V(c, c + 0.31), r)));
    EXPECT_LE(std::fabs(pels - kPi * r * r), 2 * kPi * r) << "r " << r;
  }
  for (double r = 0.5; r < 20; r *= 1.6) {
    Lines lines;
    Arcs arcs;
    const double w = 2 * r + 13.3, h = 2 * r + 7.9;
    roundedBox(3.2, 4.7, w, h, r, lines, arcs);
    const long pels = count(filled(64, lines, arcs));
    const double area = w * h - (4 - kPi) * r * r;
    EXPECT_LE(std::fabs(pels - area), 2 * (w + h)) << "r " << r;
  }
}

TEST(RasterFill, OutlinesSharingAnEdgeSetEveryPelOnce) {
  // A slanted straight edge and a shared arc, each travelled both ways.
  const Lines left = polygon({V(3.1, 2.2), V(21.7, 4.9), V(14.2, 27.3), V(2.6, 25.1)});
  const Lines right = polygon({V(21.7, 4.9), V(29.4, 3.3), V(28.8, 29.1), V(14.2, 27.3)});
  const Lines whole =
      polygon({V(3.1, 2.2), V(21.7, 4.9), V(29.4, 3.3), V(28.8, 29.1), V(14.2, 27.3), V(2.6, 25.1)});
  const kc2SegmentArc bow(V(21.7, 4.9), V(14.2, 27.3), kcDegree(40));
  const kc2SegmentArc back(V(14.2, 27.3), V(21.7, 4.9), kcDegree(-40));
  struct Case {
    Lines a, b;
    Arcs arcsA, arcsB;
  };
  Lines leftOpen = left, rightOpen = right;
  leftOpen.erase(leftOpen.begin() + 1);
  rightOpen.erase(rightOpen.begin() + 3);
  for (const Case& k : {Case{left, right, {}, {}}, Case{leftOpen, rightOpen, {bow}, {back}}}) {
    const Buffer a = filled(32, k.a, k.arcsA), b = filled(32, k.b, k.arcsB), all = filled(32, whole);
    for (long y = 0; y < 32; ++y)
      for (long x = 0; x < 32; ++x) {
        EXPECT_FALSE(a.get(x, y) && b.get(x, y)) << "twice at " << x << "," << y;
        EXPECT_EQ(a.get(x, y) || b.get(x, y), all.get(x, y) != 0) << x << "," << y;
      }
  }
}

TEST(RasterFill, OnlyTheWindowIsWritten) {
  Buffer image(40, 40);
  Buffer window = image.window(10, 10, 10, 10);
  // Half inside the window's left edge, and one wholly outside it.
  kfFillPelBuf(window, box(-5, 2, 5, 6), {}, kIdentity, kGrey);
  kfFillPelBuf(window, box(-30, -30, -20, -20), {}, kIdentity, kGrey);
  kfFillPelBuf(window, box(12, 2, 25, 6), {}, kIdentity, kGrey);
  EXPECT_EQ(count(image), 5 * 4);
  for (long y = 12; y < 16; ++y)
    for (long x = 10; x < 15; ++x) EXPECT_EQ(image.get(x, y), kGrey);
  // One that reaches in over the window's top left corner.
  Buffer other = Buffer(40, 40).window(10, 10, 10, 10);
  kfFillPelBuf(other, box(-5, -5, 3, 2), {}, kIdentity, kGrey);
  EXPECT_EQ(count(other), 3 * 2);
  EXPECT_EQ(other.get(2, 1), kGrey);
  // An empty window, and nothing to fill, are fine.
  kfFillPelBuf(image.window(0, 0, 0, 0), box(0, 0, 5, 5), {}, kIdentity, kGrey);
  kfFillPelBuf(image, {}, {}, kIdentity, kGrey);
  EXPECT_EQ(count(image), 20);
}

}  // namespace
