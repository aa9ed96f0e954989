#include "scopes/cairo/cairoscope.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "dispc/tablet.h"
#include "dispc/uierror.h"

namespace {

using L = kcUITablet::Layers;
using Props = kcGraphicProps;
using Pels = std::vector<std::uint32_t>;
// What a pel should hold, by its position.
using Expected = std::function<std::uint32_t(long x, long y)>;

constexpr std::uint32_t kRed = 0xff0000;
constexpr std::uint32_t kGreen = 0x00ff00;
constexpr std::uint32_t kBlue = 0x0000ff;

std::uint32_t grey(unsigned v) { return v << 16 | v << 8 | v; }
std::uint32_t at(const Pels& pels, long width, long x, long y) {
  return pels[static_cast<std::size_t>(y * width + x)];
}

// colour inside r, black elsewhere.
Expected inRect(const kcUIRect& r, std::uint32_t colour) {
  return [=](long x, long y) { return r.within({x, y}) ? colour : 0u; };
}

// The first few pels that differ from what is expected, or "".
std::string mismatches(const kcUICairoScope& d, const Expected& expected) {
  const Pels pels = d.pels();
  std::ostringstream out;
  int shown = 0;
  for (long y = 0; y < d.height(); ++y)
    for (long x = 0; x < d.width(); ++x)
      if (const std::uint32_t seen = at(pels, d.width(), x, y); seen != expected(x, y) && shown++ < 6)
        out << '(' << x << ',' << y << ")=" << std::hex << seen << std::dec << ' ';
  return out.str();
}

// No arrow heads, so that only the shape itself lands.
Props pen(const kcColor& c, long width = 1, Props::kePenStyle style = Props::penSolid, bool fill = false) {
  Props p(c, width, style, fill);
  p.arrowHead(false);
  return p;
}
Props flat(Props p) {
  p.penEndCap(Props::capFlat);
  return p;
}

// --- areas, lines and pens ---

TEST(CairoScopeShapes, FilledRectanglesCoverExactlyTheirPels) {
  const kcUIRect area(10, 10, 20, 15);
  const std::pair<const char*, std::function<void(kcUICairoScope&, kcUITablet&)>> cases[] = {
      {"set", [&](kcUICairoScope& d, kcUITablet&) { d.set(area, kcColor::red); }},
      // A fill holds the pels whose centres lie inside it.
      {"corners around the edge pels' centres",
       [](kcUICairoScope&, kcUITablet& t) {
         t.draw(kcPolygon({{10.2, 10.2}, {29.8, 10.2}, {29.8, 24.8}, {10.2, 24.8}}),
                pen(kcColor::red, 1, Props::penSolid, true), L::mainLayer);
       }},
      // No outline grows the fill on two sides only.
      {"corners on pel edges",
       [](kcUICairoScope&, kcUITablet& t) {
         t.draw(kcRect({10, 10}, {20, 15}), pen(kcColor::red, 1, Props::penSolid, true), L::mainLayer);
       }},
      {"null pen: filled, never outlined", [](kcUICairoScope& d, kcUITablet& t) {
         const Props none = pen(kcColor::red, 3, Props::penNull);
         t.draw(kcRect({10, 10}, {20, 15}), pen(kcColor::red, 3, Props::penNull, true), L::mainLayer);
         d.polyline({{2, 2}, {30, 2}, {30, 30}}, true, none);
         d.lineSeg({1, 32}, {38, 32}, none);
       }}};
  for (const auto& [what, draw] : cases) {
    kcUICairoScope d(40, 35);
    kcUITablet t(&d, &d.overlay());
    draw(d, t);
    EXPECT_EQ(mismatches(d, inRect(area, kRed)), "") << what;
  }
}

TEST(CairoScopeShapes, StraightLinesLightTheirRowOrColumn) {
  struct Case {
    const char* what;
    kcVector<2> a, b;
    Props props;
    kcUIRect lit;
  };
  const Case cases[] = {
      {"round caps reach the end pels' edges", {2.5, 5.5}, {10.5, 5.5}, pen(kcColor::red), {2, 5, 9, 1}},
      {"flat caps end on pel edges", {2, 5.5}, {11, 5.5}, flat(pen(kcColor::red)), {2, 5, 9, 1}},
      {"width 0 draws as 1", {2, 5.5}, {11, 5.5}, flat(pen(kcColor::red, 0)), {2, 5, 9, 1}},
      {"vertical", {7.5, 3.5}, {7.5, 12.5}, pen(kcColor::red), {7, 3, 1, 10}},
      {"width 3: a 3-pel band", {2, 10.5}, {20, 10.5}, flat(pen(kcColor::red, 3)), {2, 9, 18, 3}},
  };
  for (const Case& c : cases) {
    kcUICairoScope d(24, 16);
    d.lineSeg(c.a, c.b, c.props);
    EXPECT_EQ(mismatches(d, inRect(c.lit, kRed)), "") << c.what;
  }
}

TEST(CairoScopeShapes, DiagonalLinesLightThePelsNearTheirCentreLine) {
  const kcVector<2> a(2.5, 3.5), b(40.5, 20.5), ab = b - a;
  kcUICairoScope d(48, 26);
  d.lineSeg(a, b, pen(kcColor::red));
  const Pels pels = d.pels();
  int lit = 0;
  for (long y = 0; y < d.height(); ++y)
    for (long x = 0; x < d.width(); ++x) {
      // The distance from the pel's centre to the segment.
      const kcVector<2> p(x + 0.5, y + 0.5);
      const kcVector<2> off = p - (a + ab * std::clamp((p - a).dot(ab) / ab.dot(ab), 0.0, 1.0));
      const double dist = std::hypot(off.x(), off.y());
      const bool on = at(pels, d.width(), x, y) == kRed;
      lit += on;
      EXPECT_TRUE(!on || dist <= 0.75) << x << ',' << y << " lit " << dist << " away";
      EXPECT_TRUE(on || dist > 0.25) << x << ',' << y << " dark " << dist << " away";
    }
  EXPECT_GE(lit, 38);
}

// Dashes keep their gaps without smoothing too, whatever the caps (the
// device cuts the dashes itself).
TEST(CairoScopeShapes, DashedStylesLeaveGaps) {
  const auto draw = [](const Props& props) {
    auto d = std::make_unique<kcUICairoScope>(48, 26);
    d->lineSeg({2.2, 3.5}, {45.2, 3.5}, props);
    d->lineSeg({2.2, 8.2}, {45.2, 22.7}, props);
    return d;
  };
  const auto solid = std::ranges::count(draw(flat(pen(kcColor::red)))->pels(), kRed);
  for (const auto style : {Props::penDash, Props::penDot, Props::penDashDot, Props::penDashDotDot})
    for (const Props& props : {pen(kcColor::red, 1, style), flat(pen(kcColor::red, 1, style))}) {
      const Pels pels = draw(props)->pels();
      EXPECT_LT(std::ranges::count(pels, kRed), solid * 4 / 5) << style << " cap " << props.penEndCap();
      // Some gap along the straight line's run.
      EXPECT_NE(std::count(pels.begin() + 3 * 48 + 4, pels.begin() + 3 * 48 + 44, 0u), 0) << style;
    }
}

// --- layers and colours ---

TEST(CairoScopeLayers, TheOverlayCoversAndErasingUncovers) {
  kcPelBuffer<unsigned char> background(30, 20);
  for (long y = 0; y < 20; ++y)
    for (long x = 0; x < 30; ++x) background.put(x, y, 77);
  kcUICairoScope d{kcPelBuffer_const<unsigned char>(background)};
  const kcUIRect outer(2, 2, 20, 12), inner(6, 5, 8, 4);
  d.set(outer, kcColor::red);
  d.overlay().set(inner, kcColor::blue);
  EXPECT_EQ(d.pel(7, 6), kBlue);
  EXPECT_EQ(d.pel(3, 3), kRed);
  EXPECT_EQ(d.pel(25, 17), grey(77));
  EXPECT_EQ(d.coverage(7, 6, true), 255);
  EXPECT_EQ(d.coverage(3, 3, true), 0);

  d.overlay().erase(inner);
  EXPECT_EQ(d.coverage(7, 6, true), 0);
  EXPECT_EQ(d.pel(7, 6), kRed);
  d.erase(outer);
  EXPECT_EQ(d.coverage(7, 6, false), 0);
  EXPECT_EQ(mismatches(d, [](long, long) { return grey(77); }), "");
  EXPECT_THROW(kcUICairoScope(0, 5), kcUIError::BadParams);
  EXPECT_THROW(kcUICairoScope(5, 32768), kcUIError::BadParams);
}

TEST(CairoScopeColours, IndexAndRGBFormsOfAColourDrawAlike) {
  const std::pair<kcColor, std::uint32_t> cases[] = {
      {kcColor::red, kRed},
      {kcColor(kcColor::red.rgbStruct()), kRed},
      {kcColor(kcColor::red.index()), kRed},
      {kcColor(kcColor::purple.index()), 0xa014c8},
      {kcColor(100), grey(100)},  // no stock colour's slot: its own grey
      {kcColor(12, 34, 56), 0x0c2238},
  };
  for (const auto& [colour, rgb] : cases) {
    kcUICairoScope d(12, 8);
    d.set(kcUIRect(2, 2, 5, 3), colour);
    d.lineSeg({1, 6.5}, {11, 6.5}, flat(pen(colour)));
    EXPECT_EQ(d.pel(4, 3), rgb);
    EXPECT_EQ(d.pel(9, 6), rgb);
  }

  // The pass colour draws nothing, whatever draws it.
  kcUICairoScope d(60, 30);
  d.set(kcUIRect(0, 0, 60, 20), kcColor::blue);
  const Pels before = d.pels();
  const Props pass = pen(kcColor::pass, 3, Props::penSolid, true);
  d.lineSeg({1, 1}, {50, 15}, pass);
  d.polyline({{5, 5}, {30, 5}, {30, 18}}, true, pass);
  d.ellipse(kcEllipse(kcXform<2>({8, 0, 0, 5}, {40, 10})), pass);
  d.point({3, 3}, pass);
  d.text(L"Pass", {2, 2}, kcColor::pass, kcColor::pass, kcUIFormat(0, kcUIFormat::topLeft));
  d.overlay().lineSeg({1, 1}, {50, 15}, pass);
  EXPECT_EQ(d.pels(), before);
}

// --- text and images ---

// The rectangle holds the ink: a leading 'j' reaches left of the pen, a
// trailing 'f' past its advance.
TEST(CairoScopeText, GlyphsStayInsideTheReportedRectangle) {
  const std::wstring s = L"jWg|y_Q(}f";
  const kcVector<2> anchor(100.4, 40.7);
  for (long font = 0; font < 5; ++font)
    for (const auto align : {kcUIFormat::topLeft, kcUIFormat::center, kcUIFormat::bottomRight}) {
      SCOPED_TRACE(testing::Message() << "font " << font << " alignment " << align);
      const kcUIFormat format(font, align);
      kcUICairoScope d(200, 80);
      const kcUIRect box = d.textRect(s, anchor, format);
      // The anchor's pel is the corner, the middle or past the end.
      const long anchorX = align == kcUIFormat::topLeft  ? box.left()
                           : align == kcUIFormat::center ? box.left() + box.width() / 2
                                                         : box.right();
      EXPECT_EQ(anchorX, 100);
      d.text(s, anchor, kcColor::white, kcColor::pass, format);
      const Pels ink = d.pels();
      EXPECT_GT(std::ranges::count_if(ink, [](std::uint32_t v) { return v != 0; }), 40);
      EXPECT_EQ(mismatches(d,
                           [&](long x, long y) {
                             return box.within({x, y}) ? at(ink, 200, x, y) : 0u;
                           }),
                "");
    }
}

TEST(CairoScopeImages, GreyLevelsPassValuesAndThePointIcon) {
  kcPelBuffer<unsigned char> image(6, 4);
  for (long y = 0; y < 4; ++y)
    for (long x = 0; x < 6; ++x) image.put(x, y, static_cast<unsigned char>(x * 40 + y * 3));
  image.put(2, 1, 7);
  kcUICairoScope d(20, 12);
  d.set(kcColor::red);
  d.image(kcPelBuffer_const<unsigned char>(image), {3.6, 5.2}, {}, true, 7);
  EXPECT_EQ(mismatches(d,
                       [&](long x, long y) {
                         const long ix = x - 3, iy = y - 5;
                         if (ix < 0 || iy < 0 || ix >= 6 || iy >= 4 || (ix == 2 && iy == 1)) return kRed;
                         return grey(image.get(ix, iy));
                       }),
            "");
  // Through a colour map to palette slots; a value beyond the map is its own slot.
  d.image(kcRLEBuffer(image), {0, 0}, {kcColor::red.index()}, false, 0);
  EXPECT_EQ(d.pel(0, 0), kRed);
  EXPECT_EQ(d.pel(2, 1), 0xc0c0c0u);  // 7: the slot of the stock light grey
  EXPECT_EQ(d.pel(1, 0), grey(40));

  // The icon's '0' pels in the pen colour, centred on the point's pel.
  kcUICairoScope icon(30, 30);
  kcUITablet t(&icon, &icon.overlay());
  t.drawPointIcon(kcPoint(14.3, 15.8), pen(kcColor::red), L::mainLayer);
  EXPECT_EQ(icon.pel(14, 15), kRed);
  EXPECT_EQ(icon.pel(8, 9), 0u);
  EXPECT_EQ(mismatches(icon,
                       [](long x, long y) {
                         const long ix = x - 8, iy = y - 9;
                         if (ix < 0 || iy < 0 || ix >= 13 || iy >= 13) return 0u;
                         return kcUITablet::kPointIconPattern[1 + iy * 14 + ix] == L'0' ? kRed : 0u;
                       }),
            "");
}

// --- flood fills, clipping and sub-scopes ---

TEST(CairoScopeFill, FillsStopAtTheBoundaryOrTheSeedsColour) {
  kcUICairoScope d(40, 30);
  // A ring on the pels x 10..29, y 10..24.
  d.polyline({{10.5, 10.5}, {29.5, 10.5}, {29.5, 24.5}, {10.5, 24.5}}, true, pen(kcColor::red));
  d.fill({15, 15}, kcColor::green, kcColor::red, fillToBoundary);
  const kcUIRect ring(10, 10, 20, 15), hole(11, 11, 18, 13);
  EXPECT_EQ(mismatches(d,
                       [&](long x, long y) {
                         return hole.within({x, y}) ? kGreen : inRect(ring, kRed)(x, y);
                       }),
            "");

  kcUICairoScope same(40, 30);
  same.set(kcUIRect(0, 0, 20, 10), kcColor::blue);
  same.set(kcUIRect(20, 0, 10, 10), kcColor::red);
  same.set(kcUIRect(0, 20, 20, 10), kcColor::blue);  // apart from the seed's
  same.fill({3, 3}, kcColor::green, kcColor::red, fillSameColor);
  EXPECT_EQ(same.pel(19, 9), kGreen);
  EXPECT_EQ(same.pel(20, 0), kRed);
  EXPECT_EQ(same.pel(5, 25), kBlue);
  EXPECT_EQ(same.pel(35, 15), 0u);
}

TEST(CairoScopeClip, NothingLandsOutsideTheClipRectangle) {
  kcUICairoScope d(30, 20);
  d.clipRect(kcRect({5, 4}, {10, 8}));
  d.set(kcColor::red);
  d.lineSeg({0, 15.5}, {30, 15.5}, pen(kcColor::blue, 3));
  d.fill({0, 0}, kcColor::blue, kcColor::red, fillSameColor);
  EXPECT_EQ(mismatches(d, inRect({5, 4, 10, 8}, kRed)), "");

  // A clip rectangle off the pel grid holds whole pels, none half covered.
  kcUICairoScope half(30, 20);
  half.clipRect(kcRect({5.5, 4.5}, {10, 8}));
  half.set(kcColor::red);
  for (long x = 0; x < 30; ++x) {
    const unsigned char c = half.coverage(x, 8, false);
    EXPECT_TRUE(c == 0 || c == 255) << x << ": " << int{c};
  }
}

TEST(CairoScopeClip, SubScopesDrawMovedAndClippedToTheirArea) {
  auto d = std::make_unique<kcUICairoScope>(40, 30);
  const kcUIRect area(10, 8, 12, 6);
  std::unique_ptr<kcUIScope> sub(d->makeSubScope(area));
  ASSERT_NE(sub, nullptr);
  sub->set(kcUIRect(-5, -5, 100, 100), kcColor::red);
  sub->lineSeg({-20, 2.5}, {60, 2.5}, pen(kcColor::blue));
  sub->pixel({0, 0}, kcColor::green);
  sub->fill({11, 5}, kcColor::green, kcColor::blue, fillToBoundary);
  const auto expected = [&](long x, long y) {
    if (!area.within({x, y})) return 0u;
    if (y == 10) return kBlue;
    return (x == 10 && y == 8) || y > 10 ? kGreen : kRed;
  };
  EXPECT_EQ(mismatches(*d, expected), "");
  // A sub-scope's own sub-scope is held to its parent's area.
  std::unique_ptr<kcUIScope>(sub->makeSubScope(kcUIRect(4, 2, 30, 30)))->set(kcColor::red);
  EXPECT_EQ(mismatches(*d,
                       [&](long x, long y) {
                         return area.within({x, y}) && x >= 14 && y >= 10 ? kRed : expected(x, y);
                       }),
            "");

  // A clip rectangle in a sub-scope is in the sub-scope's pels.
  sub->clipRect(kcRect({1, 1}, {2, 1}));
  sub->set(kcColor::white);
  EXPECT_EQ(d->pel(11, 9), 0xffffffu);
  EXPECT_EQ(d->pel(13, 9), kRed);
  // The sub-scope may outlive its device.
  d.reset();
  sub->set(kcColor::red);
}

// --- files ---

std::string scratch(const char* name) { return (std::filesystem::temp_directory_path() / name).string(); }

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

long occurrences(const std::string& s, const std::string& what) {
  long n = 0;
  for (std::size_t i = s.find(what); i != std::string::npos; i = s.find(what, i + 1)) ++n;
  return n;
}

// A little of everything: a grey background, shapes, text, a fill, the overlay.
std::unique_ptr<kcUICairoScope> sample() {
  kcPelBuffer<unsigned char> background(64, 48);
  for (long y = 0; y < 48; ++y)
    for (long x = 0; x < 64; ++x) background.put(x, y, static_cast<unsigned char>(x + 3 * y));
  auto d = std::make_unique<kcUICairoScope>(kcPelBuffer_const<unsigned char>(background));
  d->ellipse(kcEllipse(kcXform<2>({20, 0, 0, 12}, {32, 24})), pen(kcColor::red, 2));
  d->fill({32, 24}, kcColor::yellow, kcColor::red, fillToBoundary);
  d->text(L"ok", {5, 5}, kcColor::blue, kcColor::pass, kcUIFormat(0, kcUIFormat::topLeft));
  d->overlay().lineSeg({0, 47}, {63, 0}, pen(kcColor::green, 3));
  return d;
}

TEST(CairoScopeFiles, PngReadsBackSvgIsXmlPdfHasOnePage) {
  const auto d = sample();
  const std::string png = scratch("dispc_cairoscope_test.png");
  const std::string svgPath = scratch("dispc_cairoscope_test.svg");
  const std::string pdfPath = scratch("dispc_cairoscope_test.pdf");
  d->writePng(png);
  d->writeSvg(svgPath);
  d->writePdf(pdfPath);

  cairo_surface_t* back = cairo_image_surface_create_from_png(png.c_str());
  ASSERT_EQ(cairo_image_surface_get_width(back), 64);
  ASSERT_EQ(cairo_image_surface_get_height(back), 48);
  Pels read;
  for (int y = 0; y < 48; ++y) {
    const unsigned char* row = cairo_image_surface_get_data(back) + y * cairo_image_surface_get_stride(back);
    for (int x = 0; x < 64; ++x) read.push_back(reinterpret_cast<const std::uint32_t*>(row)[x] & 0xffffffu);
  }
  cairo_surface_destroy(back);
  EXPECT_EQ(read, d->pels());

  std::string svg = readFile(svgPath);
  svg.erase(svg.find_last_not_of(" \t\r\n") + 1);
  EXPECT_TRUE(svg.starts_with("<?xml"));
  EXPECT_TRUE(svg.ends_with("</svg>"));
  EXPECT_NE(svg.find("<path"), std::string::npos);
  // As many start tags as end tags (closing ones and self-closing ones).
  const long starts =
      occurrences(svg, "<") - occurrences(svg, "<?") - occurrences(svg, "<!") - occurrences(svg, "</");
  EXPECT_EQ(starts, occurrences(svg, "</") + occurrences(svg, "/>"));

  const std::string pdf = readFile(pdfPath);
  EXPECT_TRUE(pdf.starts_with("%PDF-"));
  EXPECT_EQ(occurrences(pdf, "/Type /Page") - occurrences(pdf, "/Type /Pages"), 1);
  for (const std::string& p : {png, svgPath, pdfPath}) std::remove(p.c_str());

  // A folder that does not exist: refused by name, by every writer.
  const std::string missing = scratch("dispc_no_such_folder/picture");
  const std::function<void()> writers[] = {[&] { d->writePng(missing); }, [&] { d->writeSvg(missing); },
                                           [&] { d->writePdf(missing); }};
  for (const auto& write : writers) {
    try {
      write();
      ADD_FAILURE() << "wrote into a missing folder";
    } catch (const kcExceptionWithString& e) {
      EXPECT_EQ(e.text().rfind(L"cannot write " + std::wstring(missing.begin(), missing.end()) + L": ", 0),
                0u);
    }
  }
}

// --- the tablet's scene ---

// Most drawing calls, on both layers, with the main layer left in sight.
void drawScene(kcUITablet& t) {
  const Props thin(kcColor::red, 1, Props::penSolid, false);
  const Props wide(kcColor(12, 34, 56), 3, Props::penDash, true);
  const kcXform<2> sheared(kcMatrix<2>(2.0, 0.5, -0.25, 1.5), kcVector<2>(30.0, 40.0));
  const kcEllipse2 e2(30, 20, kcRadian(0.5), {200, 150});
  t.set(kcRect({1, 2}, {30, 40}), kcColor(5), L::mainLayer);
  t.setComplement(kcUIRect(3, 4, 250, 200), kcColor(7), L::mainLayer);
  t.draw(kcLineSeg({0, 0}, {100, 50}), thin, L::mainLayer);
  t.draw(kcCircle({50, 50}, 20), wide, L::overlayLayer);
  t.draw(kcEllipse(sheared), wide, L::mainLayer);
  t.draw(kcEllipseArc(kcEllipse(sheared), kcRadian(0.5), kcRadian(-2.0)), thin, L::mainLayer);
  t.draw(kcEllipseAnnulusSection(kcEllipseAnnulus(e2, 0.5), kcRadian(0.25), kcRadian(2.0)), thin,
         L::mainLayer);
  t.draw(kcGenAnnulus(kcGenRect(sheared, 0.25, 0.5), 0.5), thin, L::overlayLayer);
  t.draw(kcCubicSpline({{0, 0}, {1, 2}, {3, 2}, {4, 0}, {5, -2}, {7, -2}, {8, 0}}), thin, L::overlayLayer);
  t.draw(kcAnnulus({100, 100}, 10, 20), thin, L::mainLayer);
  t.drawPointIcon(kcPoint(33.3, 44.4), thin, L::overlayLayer);
  t.drawStart(kcPoint(5, 5), L::mainLayer);
  t.drawTo(kcPoint(50, 5), thin, L::mainLayer);
  t.arrowHead(kcPoint(20, 20), {1, 1}, 7.5f, thin, L::overlayLayer);
  t.fill(kcPoint(100.5, 100.5), kcColor(9), kcColor::red, kcUITablet::FillType::fillToBoundary, L::mainLayer);
  t.outline3D(kcUIRect(3, 4, 50, 60), kcColor::white, kcColor::dkGrey, 1, L::overlayLayer);
  t.draw(std::wstring(L"Pad \u00c5 1"), kcPoint(10, 20), kcColor::white, kcColor::black,
         kcUIFormat(2, kcUIFormat::center), L::mainLayer);
  kcPelBuffer<unsigned char> image(5, 4);
  for (long y = 0; y < 4; ++y)
    for (long x = 0; x < 5; ++x) image.put(x, y, static_cast<unsigned char>(x * 40 + y));
  t.draw(kcPelBuffer_const<unsigned char>(image), kcPoint(7, 8), true, 243, false, L::mainLayer);
  t.draw(kcRLEBuffer(image), kcPoint(9, 9), {1, 2, 3}, false, 0, true, L::overlayLayer);
  kcUITablet inner;
  inner.recordOn() = true;
  inner.draw(kcLineSeg({0, 0}, {6, 6}), wide, L::bothLayers);
  t.draw(inner.sketch(), kcPoint(-10, 5), L::bothLayers);
}

TEST(CairoScopeDifferential, ARecordedScenePlaysBackPelForPel) {
  kcUICairoScope direct(320, 240);
  kcUITablet drawn(&direct, &direct.overlay());
  drawScene(drawn);
  kcUITablet recorder;
  recorder.recordOn() = true;
  drawScene(recorder);
  kcUICairoScope replayed(320, 240);
  kcUITablet player(&replayed, &replayed.overlay());
  player.draw(recorder.sketch(), kcPoint(0, 0), L::bothLayers);
  const Pels pels = direct.pels();
  EXPECT_GT(std::ranges::count(pels, kRed), 300);
  EXPECT_EQ(mismatches(replayed, [&](long x, long y) { return at(pels, 320, x, y); }), "");
}

}  // namespace
