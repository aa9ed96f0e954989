#include "foundation/kgr/kgr_list.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "foundation/exception.h"

namespace {

using Bytes = std::vector<unsigned char>;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

struct ListDeleter {
  void operator()(kgr_list* l) const { kgr_list_free(l); }
};
using List = std::unique_ptr<kgr_list, ListDeleter>;

List newList() {
  List l(kgr_list_create());
  EXPECT_NE(l, nullptr);
  return l;
}

// Little-endian bytes, written independently of the library.
struct Writer {
  Bytes b;
  Writer& u32(std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
    return *this;
  }
  Writer& u64(std::uint64_t v) {
    for (int i = 0; i < 8; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
    return *this;
  }
  Writer& f64(double v) { return u64(std::bit_cast<std::uint64_t>(v)); }
  Writer& f32(float v) { return u32(std::bit_cast<std::uint32_t>(v)); }
  Writer& pt(double x, double y) { return f64(x).f64(y); }
  Writer& u16(std::uint16_t v) {
    b.push_back(static_cast<unsigned char>(v));
    b.push_back(static_cast<unsigned char>(v >> 8));
    return *this;
  }
};

Bytes recordsOf(const kgr_list* l) { return Bytes(l->records, l->records + l->size); }

Bytes streamOf(const kgr_list* l) {
  Bytes out(kgr_list_byteSize(l));
  EXPECT_EQ(kgr_list_toBytes(l, out.data(), out.size()), KGR_OK);
  return out;
}

const kgr_color kColor = kgr_color_rgb(250, 125, 50);

TEST(KgrColor, Packing) {
  EXPECT_EQ(kColor, static_cast<kgr_color>(0xFA7D3280u));
  EXPECT_TRUE(kgr_color_isRGB(kColor));
  EXPECT_FALSE(kgr_color_isRGB(KGR_COLOR_PASS));
  EXPECT_EQ(kgr_color_red(kColor), 250);
  EXPECT_EQ(kgr_color_green(kColor), 125);
  EXPECT_EQ(kgr_color_blue(kColor), 50);
}

TEST(KgrList, EmptyList) {
  List l = newList();
  EXPECT_EQ(l->count, 0);
  EXPECT_EQ(l->size, 0u);
  EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK);
  EXPECT_EQ(streamOf(l.get()), Bytes(4, 0));
  kgr_list_free(nullptr);  // allowed
}

// Every record type against its byte layout, written by hand.
TEST(KgrList, RecordLayouts) {
  struct Row {
    const char* name;
    long (*append)(kgr_list*);
    Bytes expected;
  };
  static const kgr_xform sx{1, 2, 3, 4, 5, 6};
  static const kmath_ellipse se{1, 2, 3, 4, 0.5};
  static const kmath_shapeAffineRect sr{{{1, 1}, {4, 2}, {5, 6}, {2, 5}}};
  static const kgr_point poly[2] = {{1, 2}, {3, 4}};
  static const kgr_segment segs[1] = {{{1, 2}, {3, 4}}};
  Row rows[] = {
      {"point",
       [](kgr_list* l) {
         return kgr_list_appendPoint(l, kColor, {1.5, -2});
       },
       Writer().u32(0).u32(0xFA7D3280u).pt(1.5, -2).b},
      {"lineseg",
       [](kgr_list* l) {
         return kgr_list_appendLineSeg(l, 5, {1, 2}, {3, 4});
       },
       Writer().u32(1).u32(5).pt(1, 2).pt(3, 4).b},
      {"line",
       [](kgr_list* l) {
         return kgr_list_appendLineDirPoint(l, 5, {1, 2}, {0, 1});
       },
       Writer().u32(2).u32(5).pt(1, 2).pt(0, 1).b},
      {"rect",
       [](kgr_list* l) {
         return kgr_list_appendRect(l, 5, {1, 2}, {10, 20});
       },
       Writer().u32(3).u32(5).pt(1, 2).pt(10, 20).b},
      {"genrect", [](kgr_list* l) { return kgr_list_appendGenRect(l, 5, &sx, 0.25, 0.5); },
       Writer().u32(4).u32(5).f64(1).f64(2).f64(3).f64(4).f64(5).f64(6).f32(0.25f).f32(0.5f).b},
      {"circle",
       [](kgr_list* l) {
         return kgr_list_appendCircle(l, 5, {1, 2}, 3);
       },
       Writer().u32(5).u32(5).pt(1, 2).f64(3).b},
      {"ellipse", [](kgr_list* l) { return kgr_list_appendEllipse(l, 5, &se, &sx); },
       Writer()
           .u32(6)
           .u32(5)
           .f64(1)
           .f64(2)
           .f64(3)
           .f64(4)
           .f64(0.5)
           .f64(1)
           .f64(2)
           .f64(3)
           .f64(4)
           .f64(5)
           .f64(6)
           .u64(0)
           .u64(0)
           .b},
      {"polyline", [](kgr_list* l) { return kgr_list_appendPolyline(l, 5, 2, poly); },
       Writer().u32(7).u32(5).u64(2).pt(1, 2).pt(3, 4).b},
      {"affinerect", [](kgr_list* l) { return kgr_list_appendShapeAffineRect(l, 5, &sr); },
       Writer().u32(8).u32(5).pt(1, 1).pt(4, 2).pt(2, 5).b},
      {"text",
       [](kgr_list* l) {
         return kgr_list_appendTextEx(l, 5, L"A\U0001F600", 2, {1, 2}, 12, kgr_textFormat{-1, 4}, {3, 4});
       },
       Writer()
           .u32(9)
           .u32(5)
           .pt(1, 2)
           .pt(3, 4)
           .u32(12)
           .u32(0xFFFFFFFFu)
           .u32(4)
           .u32(3)
           .u16(0x41)
           .u16(0xD83D)
           .u16(0xDE00)
           .b},
      {"linesegset", [](kgr_list* l) { return kgr_list_appendLineSegSet(l, 5, 1, segs); },
       Writer().u32(10).u32(5).u64(1).pt(1, 2).pt(3, 4).b},
  };
  for (const Row& r : rows) {
    List l = newList();
    ASSERT_EQ(r.append(l.get()), KGR_OK) << r.name;
    EXPECT_EQ(l->count, 1) << r.name;
    EXPECT_EQ(recordsOf(l.get()), r.expected) << r.name;
    EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK) << r.name;
  }
  // The fixed payload sizes.
  EXPECT_EQ(rows[4].expected.size(), 8 + 56u);
  EXPECT_EQ(rows[5].expected.size(), 8 + 24u);
  EXPECT_EQ(rows[6].expected.size(), 8 + 104u);
  EXPECT_EQ(rows[8].expected.size(), 8 + 48u);
}

TEST(KgrList, RecordsReadBack) {
  List l = newList();
  const kgr_point poly[3] = {{0, 0}, {1, 1}, {2, 0}};
  const kgr_segment segs[2] = {{{0, 0}, {1, 0}}, {{2, 2}, {3, 3}}};
  const kgr_xform gx{2, 0.5, -1, 3, 10, 20};
  const kmath_ellipse ell{1, 2, 3, 1, 0.5};
  const kgr_xform shear{1, 1, 0, 1, 0, 0};
  kmath_shapeAffineRect corners{};
  ASSERT_EQ(kmath_shapeAffineRect_initPoints(&corners, kcXform<2>(kcMatrix<2>(2, 1, -1, 3), {5, 7})),
            KMATH_OK);
  ASSERT_EQ(kgr_list_appendLineSeg(l.get(), 1, {1, 2}, {3, 4}), KGR_OK);
  ASSERT_EQ(kgr_list_appendPolyline(l.get(), 2, 3, poly), KGR_OK);
  ASSERT_EQ(kgr_list_appendGenRect(l.get(), 3, &gx, 0.3, 0.25), KGR_OK);
  ASSERT_EQ(kgr_list_appendEllipse(l.get(), 4, &ell, &shear), KGR_OK);
  ASSERT_EQ(kgr_list_appendShapeAffineRect(l.get(), 5, &corners), KGR_OK);
  ASSERT_EQ(kgr_list_appendTextEx(l.get(), 6, L"h\u00e9\U00010348", 3, {7, 8}, kColor, {3, 8}, {-1.5, 2}),
            KGR_OK);
  ASSERT_EQ(kgr_list_appendLineSegSet(l.get(), 7, 2, segs), KGR_OK);
  ASSERT_EQ(kgr_list_appendCircle(l.get(), 8, {1, 1}, 2), KGR_OK);
  ASSERT_EQ(l->count, 8);
  ASSERT_EQ(kgr_list_validate(l.get()), KGR_OK);

  std::size_t offset = 0;
  kgr_record rec{};
  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  kgr_point a{}, b{};
  ASSERT_EQ(kgr_record_lineSeg(&rec, &a, &b), KGR_OK);
  EXPECT_EQ(rec.color, 1);
  EXPECT_EQ(a.x, 1);
  EXPECT_EQ(b.y, 4);
  EXPECT_EQ(kgr_record_line(&rec, &a, &b), KGR_ERR_WRONG_TYPE);

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  std::vector<kgr_point> v;
  ASSERT_EQ(kgr_record_polyline(&rec, &v), KGR_OK);
  ASSERT_EQ(v.size(), 3u);
  EXPECT_EQ(v[1].x, 1);
  EXPECT_EQ(v[2].y, 0);

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  kgr_xform gotX{};
  double rx = 0, ry = 0;
  ASSERT_EQ(kgr_record_genRect(&rec, &gotX, &rx, &ry), KGR_OK);
  EXPECT_EQ(std::memcmp(&gotX, &gx, sizeof gx), 0);  // the transform travels exactly
  EXPECT_NEAR(rx, 0.3, 6e-8);                        // the rounding as a float
  EXPECT_EQ(ry, 0.25);

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  kmath_ellipse raw{}, image{}, expected{};
  ASSERT_EQ(kgr_record_ellipse(&rec, &raw, &gotX), KGR_OK);
  EXPECT_EQ(raw.radiusX, 3);
  EXPECT_EQ(gotX.a01, 1);
  ASSERT_EQ(kgr_record_ellipseImage(&rec, &image), KGR_OK);
  ASSERT_EQ(kmath_ellipse_transform(&expected, &ell, kcXform<2>(kcMatrix<2>(1, 1, 0, 1), {0, 0})), KMATH_OK);
  EXPECT_EQ(std::memcmp(&image, &expected, sizeof image), 0);

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  kmath_shapeAffineRect gotCorners{};
  ASSERT_EQ(kgr_record_affineRect(&rec, &gotCorners), KGR_OK);
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(gotCorners.corners[i].x, corners.corners[i].x, 1e-14);
    EXPECT_NEAR(gotCorners.corners[i].y, corners.corners[i].y, 1e-14);
  }

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  kgr_text text{};
  ASSERT_EQ(kgr_record_text(&rec, &text), KGR_OK);
  EXPECT_EQ(text.text, L"h\u00e9\U00010348");
  EXPECT_EQ(rec.payloadSize, 48 + 2 * 4u);  // the last character takes two units
  EXPECT_EQ(text.location.x, 7);
  EXPECT_EQ(text.offset.x, -1.5);
  EXPECT_EQ(text.background, kColor);
  EXPECT_EQ(text.format.fontId, 3);
  EXPECT_EQ(text.format.alignment, 8);

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  std::vector<kgr_segment> s;
  ASSERT_EQ(kgr_record_lineSegSet(&rec, &s), KGR_OK);
  ASSERT_EQ(s.size(), 2u);
  EXPECT_EQ(s[1].p2.x, 3);

  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  ASSERT_EQ(kgr_record_ellipseImage(&rec, &image), KGR_OK);
  EXPECT_EQ(image.radiusX, 2);
  EXPECT_EQ(image.radiusY, 2);
  EXPECT_EQ(image.rotation, 0);
  EXPECT_EQ(offset, l->size);
  EXPECT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_ERR_CORRUPT);  // past the end
}

TEST(KgrList, AppendErrorsLeaveTheListAsItWas) {
  List l = newList();
  ASSERT_EQ(kgr_list_appendPoint(l.get(), 0, {1, 1}), KGR_OK);
  const Bytes before = recordsOf(l.get());
  const kgr_point p{0, 0};
  const kgr_xform ok{1, 0, 0, 1, 0, 0};
  const kgr_xform flat{1, 0, 0, 0, 0, 0};
  const kmath_ellipse ell{0, 0, 2, 1, 0};
  const kmath_shapeAffineRect notParallel{{{0, 0}, {1, 0}, {1, 1.5}, {0, 1}}};
  const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800)};
  const wchar_t tooLarge[] = {static_cast<wchar_t>(0x110000)};
  struct Row {
    const char* why;
    long code;
    long expected;
  } rows[] = {
      {"null list", kgr_list_appendPoint(nullptr, 0, p), KGR_ERR_NULL},
      {"NaN point", kgr_list_appendPoint(l.get(), 0, {kNaN, 0}), KGR_ERR_NOT_FINITE},
      {"infinite end", kgr_list_appendLineSeg(l.get(), 0, p, {0, HUGE_VAL}), KGR_ERR_NOT_FINITE},
      {"null transform", kgr_list_appendGenRect(l.get(), 0, nullptr, 0, 0), KGR_ERR_NULL},
      {"rounding above 1", kgr_list_appendGenRect(l.get(), 0, &ok, 1.5, 0), KGR_ERR_BAD_GEOMETRY},
      {"negative rounding", kgr_list_appendGenRect(l.get(), 0, &ok, 0, -0.1), KGR_ERR_BAD_GEOMETRY},
      {"NaN rounding", kgr_list_appendGenRect(l.get(), 0, &ok, kNaN, 0), KGR_ERR_NOT_FINITE},
      {"NaN radius", kgr_list_appendCircle(l.get(), 0, p, kNaN), KGR_ERR_NOT_FINITE},
      {"ellipse collapses", kgr_list_appendEllipse(l.get(), 0, &ell, &flat), KGR_ERR_BAD_GEOMETRY},
      {"null ellipse", kgr_list_appendEllipse(l.get(), 0, nullptr, nullptr), KGR_ERR_NULL},
      {"negative count", kgr_list_appendPolyline(l.get(), 0, -1, &p), KGR_ERR_BAD_COUNT},
      {"null vertices", kgr_list_appendPolyline(l.get(), 0, 2, nullptr), KGR_ERR_NULL},
      {"huge count", kgr_list_appendPolyline(l.get(), 0, 1L << 40, &p), KGR_ERR_TOO_LARGE},
      {"not a parallelogram", kgr_list_appendShapeAffineRect(l.get(), 0, &notParallel), KGR_ERR_BAD_GEOMETRY},
      {"null rectangle", kgr_list_appendShapeAffineRect(l.get(), 0, nullptr), KGR_ERR_NULL},
      {"lone surrogate", kgr_list_appendTextEx(l.get(), 0, surrogate, 2, p, 0, {0, 0}, p), KGR_ERR_BAD_TEXT},
      {"beyond unicode", kgr_list_appendTextEx(l.get(), 0, tooLarge, 1, p, 0, {0, 0}, p), KGR_ERR_BAD_TEXT},
      {"negative length", kgr_list_appendTextEx(l.get(), 0, L"x", -1, p, 0, {0, 0}, p), KGR_ERR_BAD_COUNT},
      {"null text", kgr_list_appendTextEx(l.get(), 0, nullptr, 3, p, 0, {0, 0}, p), KGR_ERR_NULL},
      {"NaN offset", kgr_list_appendTextEx(l.get(), 0, L"x", 1, p, 0, {0, 0}, {kNaN, 0}), KGR_ERR_NOT_FINITE},
      {"negative segments", kgr_list_appendLineSegSet(l.get(), 0, -3, nullptr), KGR_ERR_BAD_COUNT},
      {"null segments", kgr_list_appendLineSegSet(l.get(), 0, 1, nullptr), KGR_ERR_NULL},
  };
  for (const Row& r : rows) EXPECT_EQ(r.code, r.expected) << r.why;
  EXPECT_EQ(l->count, 1);
  EXPECT_EQ(recordsOf(l.get()), before);
  // Empty polylines, segment sets and texts are records like any other.
  EXPECT_EQ(kgr_list_appendPolyline(l.get(), 0, 0, nullptr), KGR_OK);
  EXPECT_EQ(kgr_list_appendLineSegSet(l.get(), 0, 0, nullptr), KGR_OK);
  EXPECT_EQ(kgr_list_appendTextEx(l.get(), 0, nullptr, 0, p, 0, {0, 0}, p), KGR_OK);
  EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK);
  // A negative code becomes the foundation's library failure.
  try {
    kfThrowExceptionOnFailure(kgr_list_appendPoint(l.get(), 0, {kNaN, kNaN}));
    FAIL() << "no exception";
  } catch (const kcFoundationError::LibraryFailure& e) {
    EXPECT_EQ(e.code(), KGR_ERR_NOT_FINITE);
  }
  EXPECT_NO_THROW(kfThrowExceptionOnFailure(kgr_list_appendPoint(l.get(), 0, p)));
}

TEST(KgrList, GrowsAndKeepsEveryRecord) {
  List l = newList();
  std::vector<kgr_point> pts;
  for (int i = 0; i < 3000; ++i) {
    pts.push_back({double(i), double(-i)});
    ASSERT_EQ(kgr_list_appendPolyline(l.get(), i, static_cast<long>(pts.size() % 7), pts.data()), KGR_OK);
  }
  ASSERT_EQ(kgr_list_validate(l.get()), KGR_OK);
  std::size_t offset = 0;
  for (int i = 0; i < 3000; ++i) {
    kgr_record rec{};
    std::vector<kgr_point> v;
    ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
    ASSERT_EQ(kgr_record_polyline(&rec, &v), KGR_OK);
    EXPECT_EQ(rec.color, i);
    EXPECT_EQ(v.size(), static_cast<std::size_t>((i + 1) % 7));
  }
}

// --- the byte stream and its reader ---

Bytes sampleStream() {
  List l = newList();
  const kgr_point poly[2] = {{1, 2}, {3, 4}};
  const kgr_segment segs[1] = {{{1, 2}, {3, 4}}};
  const kgr_xform gx{1, 0, 0, 1, 5, 5};
  EXPECT_EQ(kgr_list_appendPoint(l.get(), 1, {1, 1}), KGR_OK);
  EXPECT_EQ(kgr_list_appendPolyline(l.get(), 2, 2, poly), KGR_OK);
  EXPECT_EQ(kgr_list_appendGenRect(l.get(), 3, &gx, 0.5, 0.5), KGR_OK);
  EXPECT_EQ(kgr_list_appendTextEx(l.get(), 4, L"ok", 2, {0, 0}, 0, {1, 2}, {0, 0}), KGR_OK);
  EXPECT_EQ(kgr_list_appendLineSegSet(l.get(), 5, 1, segs), KGR_OK);
  return streamOf(l.get());
}

long load(const Bytes& bytes) {
  kgr_list* out = nullptr;
  long code = kgr_list_fromBytes(bytes.data(), bytes.size(), &out);
  EXPECT_EQ(code == KGR_OK, out != nullptr);
  kgr_list_free(out);
  return code;
}

TEST(KgrListStream, RoundTrip) {
  Bytes bytes = sampleStream();
  kgr_list* out = nullptr;
  ASSERT_EQ(kgr_list_fromBytes(bytes.data(), bytes.size(), &out), KGR_OK);
  List l(out);
  EXPECT_EQ(l->count, 5);
  EXPECT_EQ(streamOf(l.get()), bytes);
  // A list read from bytes can be appended to.
  EXPECT_EQ(kgr_list_appendPoint(l.get(), 0, {9, 9}), KGR_OK);
  EXPECT_EQ(kgr_list_validate(l.get()), KGR_OK);
  Bytes small(3);
  EXPECT_EQ(kgr_list_toBytes(l.get(), small.data(), small.size()), KGR_ERR_BAD_COUNT);
  EXPECT_EQ(kgr_list_toBytes(nullptr, small.data(), small.size()), KGR_ERR_NULL);
  EXPECT_EQ(kgr_list_fromBytes(bytes.data(), bytes.size(), nullptr), KGR_ERR_NULL);
}

TEST(KgrListStream, EveryTruncationIsCorrupt) {
  Bytes bytes = sampleStream();
  for (std::size_t n = 0; n < bytes.size(); ++n)
    EXPECT_EQ(load(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n))), KGR_ERR_CORRUPT)
        << n;
}

TEST(KgrListStream, MalformedStreams) {
  const Bytes good = sampleStream();
  auto patched = [&](std::size_t at, const Bytes& with) {
    Bytes b = good;
    std::copy(with.begin(), with.end(), b.begin() + static_cast<std::ptrdiff_t>(at));
    return b;
  };
  const std::size_t polyCount = 4 + 8 + 16 + 8;  // the polyline record's vertex count
  struct Row {
    const char* why;
    Bytes bytes;
  } rows[] = {
      {"trailing byte",
       [&] {
         Bytes b = good;
         b.push_back(0);
         return b;
       }()},
      {"count too high", patched(0, Writer().u32(6).b)},
      {"count too low", patched(0, Writer().u32(4).b)},
      {"negative count", patched(0, Writer().u32(0xFFFFFFFFu).b)},
      {"huge vertex count", patched(polyCount, Writer().u64(0x1000000000000000ull).b)},
      {"vertex count off by one", patched(polyCount, Writer().u64(3).b)},
      {"NaN vertex", patched(polyCount + 8, Writer().f64(kNaN).b)},
      {"NaN point", patched(4 + 8, Writer().f64(kNaN).b)},
  };
  for (const Row& r : rows) EXPECT_EQ(load(r.bytes), KGR_ERR_CORRUPT) << r.why;
  // A rounding outside [0, 1]: the general rectangle's floats follow its transform.
  const std::size_t rounding = 4 + (8 + 16) + (8 + 8 + 32) + 8 + 48;
  EXPECT_EQ(load(patched(rounding, Writer().f32(1.5f).b)), KGR_ERR_CORRUPT);
  EXPECT_EQ(load(patched(rounding, Writer().f32(std::numeric_limits<float>::quiet_NaN()).b)),
            KGR_ERR_CORRUPT);
}

TEST(KgrListStream, UnknownTypesArePoints) {
  Bytes b = Writer().u32(2).u32(42).u32(7).pt(3, 4).u32(0xFFFFFFFFu).u32(8).pt(5, 6).b;
  kgr_list* out = nullptr;
  ASSERT_EQ(kgr_list_fromBytes(b.data(), b.size(), &out), KGR_OK);
  List l(out);
  std::size_t offset = 0;
  kgr_record rec{};
  kgr_point p{};
  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  EXPECT_EQ(rec.type, 42u);
  ASSERT_EQ(kgr_record_point(&rec, &p), KGR_OK);
  EXPECT_EQ(p.x, 3);
  ASSERT_EQ(kgr_list_readRecord(l.get(), &offset, &rec), KGR_OK);
  ASSERT_EQ(kgr_record_point(&rec, &p), KGR_OK);
  EXPECT_EQ(p.y, 6);
}

TEST(KgrListStream, DecodersCheckTheirRecord) {
  kgr_record rec{KGR_POLYLINE, 0, nullptr, 8};
  std::vector<kgr_point> v;
  EXPECT_EQ(kgr_record_polyline(&rec, &v), KGR_ERR_CORRUPT);  // no payload bytes
  Bytes payload = Writer().u64(2).pt(0, 0).b;                 // claims 2, holds 1
  rec = kgr_record{KGR_POLYLINE, 0, payload.data(), payload.size()};
  EXPECT_EQ(kgr_record_polyline(&rec, &v), KGR_ERR_CORRUPT);
  EXPECT_EQ(kgr_record_polyline(nullptr, &v), KGR_ERR_NULL);
  EXPECT_EQ(kgr_record_polyline(&rec, nullptr), KGR_ERR_NULL);
  Bytes circle = Writer().pt(0, 0).f64(0).b;
  rec = kgr_record{KGR_CIRCLE, 0, circle.data(), circle.size()};
  kmath_ellipse e{};
  EXPECT_EQ(kgr_record_ellipseImage(&rec, &e), KGR_ERR_BAD_GEOMETRY);  // radius 0
  rec.type = KGR_RECT;
  EXPECT_EQ(kgr_record_ellipseImage(&rec, &e), KGR_ERR_WRONG_TYPE);
}

}  // namespace
