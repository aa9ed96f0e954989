// Synthetic images of polys, models and general polygons.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <variant>
#include <vector>

#include "dispc/smd/model.h"
#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/wrfm/genpoly.h"
#include "dispc/wrfm/raster.h"

namespace {

using V = kcVector<2>;
using Buffer = kcPelBuffer<unsigned char>;
using Poly = kcSMDGDPoly;
using Vertex = kcSMDGDPolyVertex;
const kcXform<2> kIdentity;

long count(const Buffer& b, unsigned char value) {
  long n = 0;
  for (long y = 0; y < b.height(); ++y)
    for (long x = 0; x < b.width(); ++x) n += b.get(x, y) == value;
  return n;
}

Poly roundedBox(double w, double h, double r, const V& at) {
  Poly p(L"pad");
  p << Vertex(at, r, 0.5, 0.5, -1) << Vertex(at + V(w, 0), r, 0.5, 0.5, -1)
    << Vertex(at + V(w, h), r, 0.5, 0.5, -1) << Vertex(at + V(0, h), r, 0.5, 0.5, -1);
  p.close();
  return p;
}

TEST(SMDSynthetic, FillsThenOutlinesInTheSyntheticGrey) {
  const Poly p = Poly::rectangle(4, 2, V(10, 10));
  const unsigned char grey = kcSMDColors::colorToGrayScale(p.colors().syntheticDefaultColor());
  EXPECT_EQ(grey, 150);
  Buffer b(20, 20);
  p.drawSynthetic(kIdentity, b);
  // The fill takes the centres of [8, 12) x [9, 11); the outline adds the
  // pels that hold the right and lower edges.
  for (long y = 0; y < 20; ++y)
    for (long x = 0; x < 20; ++x) EXPECT_EQ(b.get(x, y), x >= 8 && x <= 12 && y >= 9 && y <= 11 ? grey : 0);
  // Without the outline, the fill alone.
  Buffer fill(20, 20);
  kcSMDGDPolyPrivate::drawSynthetic(p, kIdentity, fill, 7, true, false);
  EXPECT_EQ(count(fill, 7), 8);
}

TEST(SMDSynthetic, MapsThroughTheGivenTransformAndTheBuffersOwn) {
  const Poly p = Poly::rectangle(4, 2, V(2, 1));
  Buffer image(40, 40);
  image.imageFromClientXform(kcXform<2>::scale(2, 2));
  Buffer window = image.window(4, 6, 20, 20);
  // The rectangle [0, 4] x [0, 2], moved by (10, 10) and doubled, is image
  // [20, 28) x [20, 24); the window ends at image x 24.
  kcSMDGDPolyPrivate::drawSynthetic(p, kcXform<2>(kcMatrix<2>(), V(10, 10)), window, 9, true, false);
  EXPECT_EQ(count(image, 9), 4 * 4);
  EXPECT_EQ(image.get(20, 20), 9);
  EXPECT_EQ(image.get(23, 23), 9);
  EXPECT_EQ(image.get(24, 20), 0);
  EXPECT_EQ(image.get(19, 20), 0);
}

TEST(SMDSynthetic, AreasStayWithinThePerimeter) {
  for (double r : {0.3, 1.0, 2.5, 4.9}) {
    const Poly p = roundedBox(12.3, 10.1, r, V(3.3, 2.6));
    Buffer b(24, 24);
    p.drawSynthetic(kIdentity, b);
    const double area = 12.3 * 10.1 - (4 - std::numbers::pi) * r * r;
    EXPECT_LE(std::fabs(count(b, 150) - area), 2 * (12.3 + 10.1)) << "r " << r;
  }
}

TEST(SMDSynthetic, OpenPolysAreOutlinedOnly) {
  Poly open(L"lead");
  open << Vertex(V(2, 2), 0.5, 0.5, -1) << Vertex(V(12, 2), 0.5, 0.5, -1) << Vertex(V(12, 12), 0.5, 0.5, -1);
  Buffer b(16, 16);
  open.drawSynthetic(kIdentity, b);
  EXPECT_EQ(b.get(8, 6), 0);
  EXPECT_EQ(b.get(7, 2), 150);
  EXPECT_LE(count(b, 150), 22);
  // Filled as if closed, when asked.
  Buffer closed(16, 16);
  kcSMDGDPolyPrivate::drawSynthetic(open, kIdentity, closed, 150, false, false);
  EXPECT_EQ(closed.get(9, 5), 150);
  EXPECT_EQ(closed.get(5, 9), 0);
}

TEST(SMDSynthetic, ModelsDrawTheirPolysInOrder) {
  Poly body = Poly::rectangle(10, 10, V(10, 10));
  Poly pad = Poly::rectangle(2, 2, V(10, 10));
  pad.colors(kcSMDColors(kcColor::green, kcColor::white, kcColor::black));
  kcSMDGDModel m(L"m");
  m << body << pad;
  Buffer b(20, 20);
  m.drawSynthetic(kIdentity, b);
  EXPECT_EQ(b.get(7, 7), 150);
  EXPECT_EQ(b.get(10, 10), 250);
  EXPECT_EQ(count(b, 250), 9);
  // Through a shared transform, and not at all through an empty one.
  Buffer moved(40, 40);
  m.drawSynthetic(kcPtrHandle_const<kc2XformBase>(new kc2XformLinear(kcXform<2>(kcMatrix<2>(), V(15, 15)))),
                  moved);
  EXPECT_EQ(moved.get(25, 25), 250);
  Buffer untouched(4, 4);
  EXPECT_THROW(m.drawSynthetic(kcPtrHandle_const<kc2XformBase>(), untouched), kcBadPointer);
}

TEST(SMDSynthetic, GeneralPolygonsFillTheirClientShape) {
  // An ellipse keeps its shape in the polygon's transform.
  const kcEllipse2 e(14.0, 6.0, kcRadian(0.5), V(20, 16));
  const kcGenPoly g(e);
  Buffer b(40, 32);
  kfDrawSynthetic(g, kIdentity, b, 77);
  const kcXform<2> back = e.xform().inverse();
  for (long y = 0; y < 32; ++y)
    for (long x = 0; x < 40; ++x) {
      const double d = back.mapPoint(V(x + 0.5, y + 0.5)).len();
      if (d < 1 - 1e-9) {
        EXPECT_EQ(b.get(x, y), 77) << x << "," << y;
      } else if (d > 1.2) {
        EXPECT_EQ(b.get(x, y), 0) << x << "," << y;
      }
    }
  EXPECT_THROW(kfDrawSynthetic(kcGenPoly(kcLineSeg(V(1, 1), V(5, 5))), kIdentity, b, 77),
               kcShapesError::BadGeom);
  EXPECT_THROW(kfDrawSynthetic(g, kcPtrHandle_const<kc2XformBase>(), b, 77), kcBadPointer);
}

// The poly's outline read from its caches draws exactly what the public
// rasterisers draw from its pieces as segment objects: the fill of the
// pieces, then each line and arc outlined on its own.
// The pieces of p as segment objects, filled and outlined one by one.
void drawPieces(const Poly& p, const kcXform<2>& x, Buffer& b) {
  std::vector<kc2SegmentLine> lines;
  std::vector<kc2SegmentArc> arcs;
  for (const kcSMDPiece_& piece : kfOutlinePieces_(p)) {
    if (const auto* l = std::get_if<kc2SegmentLine>(&piece))
      lines.push_back(*l);
    else
      arcs.push_back(std::get<kc2SegmentArc>(piece));
  }
  kfFillPelBuf(b, lines, arcs, x, 9);
  for (const kc2SegmentLine& l : lines) drawLinePelBuf(b, l, x, 9, 1);
  for (const kc2SegmentArc& a : arcs) drawArcPelBuf(b, a, x, 9, 1, nullptr, nullptr, nullptr, nullptr);
}

TEST(SMDSynthetic, PolysDrawWhatTheirPiecesDraw) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  for (int trial = 0; trial < 40; ++trial) {
    const int n = 3 + trial % 9;
    std::vector<Vertex> vs;
    for (int i = 0; i < n; ++i) {
      const double a = 2 * std::numbers::pi * i / n;
      const double r = 14 * (1 + 0.3 * unit(rng));
      vs.emplace_back(V(r * std::cos(a), r * std::sin(a)), trial % 4 == 0 ? 0.0 : 1.5 + unit(rng), 0.5, 0.5,
                      -1);
    }
    // Every third outline has an arc segment.
    if (trial % 3 == 1) vs[1].segmentAngleSpan(kcDegree(-30 + 20 * unit(rng)));
    Poly p(L"p");
    p.vertices(vs);
    p.close();
    const double turn = 3 * unit(rng);
    const kcXform<2> x(kcMatrix<2>(std::cos(turn), -std::sin(turn) + 0.3 * unit(rng), std::sin(turn),
                                   std::cos(turn) * (1 + 0.5 * unit(rng))),
                       V(24 + 8 * unit(rng), 24 + 8 * unit(rng)));
    // Every fifth outline is a billion pels across, the middle of its
    // straight segment 0 in the middle of the window: coordinates past the
    // range where pel indices are truncated.
    const V middle = x * ((vs.back().point() + vs.front().point()) / 2);
    const kcXform<2> at = trial % 5 == 4
                              ? kcXform<2>(kcMatrix<2>(), V(24, 24)) * kcXform<2>::scale(7e7, 7e7) *
                                    kcXform<2>(kcMatrix<2>(), -middle)
                              : kcXform<2>();
    Buffer drawn(48, 48), pieces(48, 48);
    kcSMDGDPolyPrivate::drawSynthetic(p, at * x, drawn, 9, true, true);
    drawPieces(p, at * x, pieces);
    long set = 0;
    for (long y = 0; y < 48; ++y)
      for (long xx = 0; xx < 48; ++xx) {
        ASSERT_EQ(drawn.get(xx, y), pieces.get(xx, y)) << "trial " << trial << " at " << xx << "," << y;
        set += drawn.get(xx, y) != 0;
      }
    EXPECT_GT(set, 0) << "trial " << trial;
  }
}

TEST(SMDSynthetic, OnlyTheWindowIsWrittenAndWhatItShowsIsTheWholeImages) {
  const Poly p = roundedBox(30.3, 20.7, 3.5, V(-9.2, -6.4));
  Buffer whole(64, 64);
  const kcXform<2> x(kcMatrix<2>(), V(12, 10));
  p.drawSynthetic(x, whole);
  // The window at (8, 6) sees the poly moved by (-8, -6): pel for pel what
  // the whole image holds there, nothing outside it.
  Buffer image(64, 64);
  Buffer window = image.window(8, 6, 20, 10);
  p.drawSynthetic(x, window);
  for (long y = 0; y < 64; ++y)
    for (long xx = 0; xx < 64; ++xx) {
      const bool in = xx >= 8 && xx < 28 && y >= 6 && y < 16;
      EXPECT_EQ(image.get(xx, y), in ? whole.get(xx, y) : 0) << xx << "," << y;
    }
  EXPECT_GT(count(image, 150), 0);
  // Wholly outside, on every side: nothing.
  for (const V& away : {V(-80, 0), V(80, 0), V(0, -80), V(0, 80)}) {
    Buffer none(64, 64);
    p.drawSynthetic(kcXform<2>(kcMatrix<2>(), away) * x, none);
    EXPECT_EQ(count(none, 0), 64 * 64);
  }
}

}  // namespace
