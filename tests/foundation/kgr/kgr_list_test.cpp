#include "foundation/kgr/kgr_list.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using XY = std::pair<double, double>;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const kgr_color kColor = kgr_color_rgb(250, 125, 50);

using List = std::unique_ptr<kgr_list, decltype(&kgr_list_free)>;
List adopt(kgr_list* l) { return List(l, kgr_list_free); }

// Little-endian bytes, written independently of the library.
struct Writer {
  Bytes b;
  Writer& le(std::uint64_t v, int n) {
    for (int i = 0; i < n; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
    return *this;
  }
  Writer& u32(std::uint32_t v) { return le(v, 4); }
  Writer& u64(std::uint64_t v) { return le(v, 8); }
  Writer& f32(float v) { return u32(std::bit_cast<std::uint32_t>(v)); }
  Writer& f64(double v) { return u64(std::bit_cast<std::uint64_t>(v)); }
  Writer& pt(double x, double y) { return f64(x).f64(y); }
};

XY xy(kgr_point p) { return {p.x, p.y}; }
Bytes recordsOf(const kgr_list* l) { return Bytes(l->records, l->records + l->size); }

Bytes streamOf(const kgr_list* l) {
  Bytes out(kgr_list_byteSize(l));
  EXPECT_EQ(kgr_list_toBytes(l, out.data(), out.size()), KGR_OK);
  return out;
}

const kgr_xform kX{1, 2, 3, 4, 5, 6};
const kmath_ellipse kEllipse{1, 2, 3, 4, 0.5};

// One record of every type, types 0 to 10 in order.
List everyRecord() {
  List l = adopt(kgr_list_create());
  const kmath_shapeAffineRect rect{{{1, 1}, {4, 2}, {5, 6}, {2, 5}}};
  const kgr_point poly[2] = {{1, 2}, {3, 4}};
  const kgr_segment segs[1] = {{{1, 2}, {3, 4}}};
  EXPECT_EQ(kgr_list_appendPoint(l.get(), kColor, {1.5, -2}), KGR_OK);
  EXPECT_EQ(kgr_list_appendLineSeg(l.get(), 5, {1, 2}, {3, 4}), KGR_OK);
  EXPECT_EQ(kgr_list_appendLineDirPoint(l.get(), 5, {1, 2}, {0, 1}), KGR_OK);
  EXPECT_EQ(kgr_list_appendRect(l.get(), 5, {1, 2}, {10, 20}), KGR_OK);
  EXPECT_EQ(kgr_list_appendGenRect(l.get(), 5, &kX, 0.25, 0.5), KGR_OK);
  EXPECT_EQ(kgr_list_appendCircle(l.get(), 5, {1, 2}, 3), KGR_OK);
  EXPECT_EQ(kgr_list_appendEllipse(l.get(), 5, &kEllipse, &kX), KGR_OK);
  EXPECT_EQ(kgr_list_appendPolyline(l.get(), 5, 2, poly), KGR_OK);
  EXPECT_EQ(kgr_list_appendShapeAffineRect(l.get(), 5, &rect), KGR_OK);
  EXPECT_EQ(kgr_list_appendTextEx(l.get(), 5, L"A\U0001F600", 2, {1, 2}, 12, {-1, 4}, {3, 4}), KGR_OK);
  EXPECT_EQ(kgr_list_appendLineSegSet(l.get(), 5, 1, segs), KGR_OK);
  return l;
}

// Every record type against its byte layout, written by hand; the stream is
// the count, then the records.
TEST(KgrList, RecordLayouts) {
  EXPECT_TRUE(kgr_color_isRGB(kColor) && !kgr_color_isRGB(KGR_COLOR_PASS) && kgr_color_green(kColor) == 125);
  List empty = adopt(kgr_list_create());
  EXPECT_EQ(streamOf(empty.get()), Bytes(4, 0));
  Writer w;
  w.u32(11).u32(0).u32(0xFA7D3280u).pt(1.5, -2);  // the count, then a point
  w.u32(1).u32(5).pt(1, 2).pt(3, 4);
  w.u32(2).u32(5).pt(1, 2).pt(0, 1);
  w.u32(3).u32(5).pt(1, 2).pt(10, 20);
  w.u32(4).u32(5).pt(1, 2).pt(3, 4).pt(5, 6).f32(0.25f).f32(0.5f);
  w.u32(5).u32(5).pt(1, 2).f64(3);
  w.u32(6).u32(5).pt(1, 2).pt(3, 4).f64(0.5).pt(1, 2).pt(3, 4).pt(5, 6).u64(0).u64(0);
  w.u32(7).u32(5).u64(2).pt(1, 2).pt(3, 4);
  w.u32(8).u32(5).pt(1, 1).pt(4, 2).pt(2, 5);
  w.u32(9).u32(5).pt(1, 2).pt(3, 4).u32(12).u32(0xFFFFFFFFu).u32(4).u32(3);  // then UTF-16 units
  w.le(0x41, 2).le(0xD83D, 2).le(0xDE00, 2);
  w.u32(10).u32(5).u64(1).pt(1, 2).pt(3, 4);
  List l = everyRecord();
  EXPECT_EQ(l->count, 11);
  EXPECT_EQ(streamOf(l.get()), w.b);
  EXPECT_EQ(recordsOf(l.get()), Bytes(w.b.begin() + 4, w.b.end()));
  EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK);
}

TEST(KgrList, RecordsReadBack) {
  List l = everyRecord();
  std::size_t offset = 0;
  kgr_record rec{};
  auto next = [&] {
    EXPECT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
    return &rec;
  };
  for (int i = 0; i < 4; ++i) next();  // the point and the two-point records
  kgr_xform x{};
  double rx = 0, ry = 0;
  ASSERT_EQ(kgr_record_genRect(next(), &x, &rx, &ry), KGR_OK);
  EXPECT_TRUE(std::memcmp(&x, &kX, sizeof x) == 0 && rx == 0.25 && ry == 0.5);
  kmath_ellipse e{}, expected{};
  ASSERT_EQ(kgr_record_ellipseImage(next(), &e), KGR_OK);  // a circle
  EXPECT_TRUE(e.centreX == 1 && e.centreY == 2 && e.radiusX == 3 && e.radiusY == 3 && e.rotation == 0);
  ASSERT_EQ(kgr_record_ellipseImage(next(), &e), KGR_OK);
  ASSERT_EQ(kmath_ellipse_transform(&expected, &kEllipse, kcXform<2>(kcMatrix<2>(1, 2, 3, 4), {5, 6})),
            KMATH_OK);
  EXPECT_EQ(std::memcmp(&e, &expected, sizeof e), 0);
  std::vector<kgr_point> v;
  ASSERT_EQ(kgr_record_polyline(next(), &v), KGR_OK);
  EXPECT_TRUE(v.size() == 2 && xy(v[1]) == XY(3, 4));
  kmath_shapeAffineRect corners{};
  ASSERT_EQ(kgr_record_affineRect(next(), &corners), KGR_OK);
  EXPECT_TRUE(corners.corners[2].x == 5 && corners.corners[2].y == 6);  // completed
  kgr_text text{};
  ASSERT_EQ(kgr_record_text(next(), &text), KGR_OK);
  EXPECT_EQ(text.text, L"A\U0001F600");
  EXPECT_TRUE(xy(text.location) == XY(1, 2) && xy(text.offset) == XY(3, 4));
  EXPECT_TRUE(text.background == 12 && text.format.fontId == -1 && text.format.alignment == 4);
  std::vector<kgr_segment> s;
  ASSERT_EQ(kgr_record_lineSegSet(next(), &s), KGR_OK);
  EXPECT_TRUE(s.size() == 1 && xy(s[0].p2) == XY(3, 4));
  EXPECT_EQ(offset, l->size);
  EXPECT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_ERR_CORRUPT);  // past the end
}

TEST(KgrList, AppendErrorsLeaveTheListAsItWas) {
  List l = everyRecord();
  const Bytes before = recordsOf(l.get());
  const kgr_point p{0, 0};
  const kgr_xform ok{1, 0, 0, 1, 0, 0}, flat{1, 0, 0, 0, 0, 0};
  const kmath_ellipse ell{0, 0, 2, 1, 0};
  const kmath_shapeAffineRect notParallel{{{0, 0}, {1, 0}, {1, 1.5}, {0, 1}}};
  const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800)};
  const wchar_t tooLarge[] = {static_cast<wchar_t>(0x110000)};
  const std::tuple<const char*, long, long> rows[] = {
      {"null list", kgr_list_appendPoint(nullptr, 0, p), KGR_ERR_NULL},
      {"NaN point", kgr_list_appendPoint(l.get(), 0, {kNaN, 0}), KGR_ERR_NOT_FINITE},
      {"null transform", kgr_list_appendGenRect(l.get(), 0, nullptr, 0, 0), KGR_ERR_NULL},
      {"rounding above 1", kgr_list_appendGenRect(l.get(), 0, &ok, 1.5, 0), KGR_ERR_BAD_GEOMETRY},
      {"ellipse collapses", kgr_list_appendEllipse(l.get(), 0, &ell, &flat), KGR_ERR_BAD_GEOMETRY},
      {"negative count", kgr_list_appendPolyline(l.get(), 0, -1, &p), KGR_ERR_BAD_COUNT},
      {"huge count", kgr_list_appendPolyline(l.get(), 0, 1L << 40, &p), KGR_ERR_TOO_LARGE},
      {"not a parallelogram", kgr_list_appendShapeAffineRect(l.get(), 0, &notParallel), KGR_ERR_BAD_GEOMETRY},
      {"lone surrogate", kgr_list_appendTextEx(l.get(), 0, surrogate, 2, p, 0, {0, 0}, p), KGR_ERR_BAD_TEXT},
      {"beyond unicode", kgr_list_appendTextEx(l.get(), 0, tooLarge, 1, p, 0, {0, 0}, p), KGR_ERR_BAD_TEXT},
      {"negative length", kgr_list_appendTextEx(l.get(), 0, L"x", -1, p, 0, {0, 0}, p), KGR_ERR_BAD_COUNT},
      {"NaN offset", kgr_list_appendTextEx(l.get(), 0, L"x", 1, p, 0, {0, 0}, {kNaN, 0}), KGR_ERR_NOT_FINITE},
      {"negative segments", kgr_list_appendLineSegSet(l.get(), 0, -3, nullptr), KGR_ERR_BAD_COUNT},
  };
  for (const auto& [why, code, expected] : rows) EXPECT_EQ(code, expected) << why;
  EXPECT_EQ(l->count, 11);
  EXPECT_EQ(recordsOf(l.get()), before);
  // Empty polylines, segment sets and texts are records like any other.
  EXPECT_EQ(kgr_list_appendPolyline(l.get(), 0, 0, nullptr), KGR_OK);
  EXPECT_EQ(kgr_list_appendLineSegSet(l.get(), 0, 0, nullptr), KGR_OK);
  EXPECT_EQ(kgr_list_appendTextEx(l.get(), 0, nullptr, 0, p, 0, {0, 0}, p), KGR_OK);
  EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK);
}

TEST(KgrList, GrowsAndKeepsEveryRecord) {
  List l = adopt(kgr_list_create());
  std::vector<kgr_point> pts;
  Writer w;
  for (int i = 0; i < 3000; ++i) {
    pts.push_back({double(i), double(-i)});
    const long n = static_cast<long>(pts.size() % 7);
    ASSERT_EQ(kgr_list_appendPolyline(l.get(), i, n, pts.data()), KGR_OK);
    w.u32(7).u32(i).u64(n);
    for (long k = 0; k < n; ++k) w.pt(double(k), double(-k));
  }
  EXPECT_EQ(l->count, 3000);
  EXPECT_EQ(recordsOf(l.get()), w.b);
}

long load(const Bytes& bytes) {
  kgr_list* out = nullptr;
  long code = kgr_list_fromBytes(bytes.data(), bytes.size(), &out);
  EXPECT_EQ(code == KGR_OK, out != nullptr);
  kgr_list_free(out);
  return code;
}

TEST(KgrListStream, RoundTripAndMalformedStreams) {
  const Bytes good = streamOf(everyRecord().get());
  kgr_list* out = nullptr;
  ASSERT_EQ(kgr_list_fromBytes(good.data(), good.size(), &out), KGR_OK);
  List l = adopt(out);
  EXPECT_EQ(streamOf(l.get()), good);
  EXPECT_EQ(kgr_list_appendPoint(l.get(), 0, {9, 9}), KGR_OK);  // a list read from bytes grows
  EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK);
  Bytes small(3);
  EXPECT_EQ(kgr_list_toBytes(l.get(), small.data(), small.size()), KGR_ERR_BAD_COUNT);
  EXPECT_EQ(kgr_list_toBytes(nullptr, small.data(), small.size()), KGR_ERR_NULL);
  EXPECT_EQ(kgr_list_fromBytes(good.data(), good.size(), nullptr), KGR_ERR_NULL);

  for (std::size_t n = 0; n < good.size(); ++n)
    EXPECT_EQ(load(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n))), KGR_ERR_CORRUPT) << n;
  Bytes trailing = good;
  trailing.push_back(0);
  EXPECT_EQ(load(trailing), KGR_ERR_CORRUPT);
  // Where the general rectangle's rounding and the polyline's count lie.
  const std::size_t rounding = 4 + 24 + 3 * 40 + 8 + 48, polyline = 4 + 24 + 3 * 40 + 64 + 32 + 112 + 8;
  const std::tuple<const char*, std::size_t, Bytes> rows[] = {
      {"count too high", 0, Writer().u32(12).b},
      {"negative count", 0, Writer().u32(0xFFFFFFFFu).b},
      {"NaN point", 4 + 8, Writer().f64(kNaN).b},
      {"rounding above 1", rounding, Writer().f32(1.5f).b},
      {"NaN rounding", rounding + 4, Writer().f32(std::numeric_limits<float>::quiet_NaN()).b},
      {"huge vertex count", polyline, Writer().u64(0x1000000000000000ull).b},
      {"vertex count off by one", polyline, Writer().u64(3).b},
      {"NaN vertex", polyline + 8, Writer().f64(kNaN).b},
  };
  for (const auto& [why, at, with] : rows) {
    Bytes b = good;
    std::copy(with.begin(), with.end(), b.begin() + static_cast<std::ptrdiff_t>(at));
    EXPECT_EQ(load(b), KGR_ERR_CORRUPT) << why;
  }
}

// Every type above 10 reads as a point; here in a list filled by hand.
TEST(KgrListStream, UnknownTypesArePoints) {
  Bytes b = Writer().u32(42).u32(7).pt(3, 4).u32(0xFFFFFFFFu).u32(8).pt(5, 6).b;
  const kgr_list hand{2, b.data(), b.size(), 0};
  ASSERT_EQ(kgr_list_validate(&hand), KGR_OK);
  std::size_t offset = 0;
  kgr_record rec{};
  kgr_point p{};
  for (XY expected : {XY(3, 4), XY(5, 6)}) {
    ASSERT_EQ(kgr_list_readRecord(&hand, &offset, &rec), KGR_OK);
    ASSERT_EQ(kgr_record_point(&rec, &p), KGR_OK);
    EXPECT_EQ(xy(p), expected);
  }
}

TEST(KgrListStream, DecodersCheckTheirRecord) {
  kgr_record rec{KGR_POLYLINE, 0, nullptr, 8};
  std::vector<kgr_point> v;
  EXPECT_EQ(kgr_record_polyline(&rec, &v), KGR_ERR_CORRUPT);  // no payload bytes
  const Bytes payload = Writer().u64(2).pt(0, 0).b;           // claims 2, holds 1
  rec = kgr_record{KGR_POLYLINE, 0, payload.data(), payload.size()};
  EXPECT_EQ(kgr_record_polyline(&rec, &v), KGR_ERR_CORRUPT);
  EXPECT_EQ(kgr_record_polyline(nullptr, &v), KGR_ERR_NULL);
  const Bytes circle = Writer().pt(0, 0).f64(0).b;
  rec = kgr_record{KGR_CIRCLE, 0, circle.data(), circle.size()};
  kmath_ellipse e{};
  EXPECT_EQ(kgr_record_ellipseImage(&rec, &e), KGR_ERR_BAD_GEOMETRY);  // radius 0
  rec.type = KGR_RECT;
  EXPECT_EQ(kgr_record_ellipseImage(&rec, &e), KGR_ERR_WRONG_TYPE);
}

}  // namespace
