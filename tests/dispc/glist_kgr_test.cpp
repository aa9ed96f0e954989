#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

#include "dispc/glist.h"
#include "dispc/tracescope.h"

namespace {

using L = kcUITablet::Layers;

// A list of the graphics-list library, freed with the scope.
struct Kgr {
  Kgr() = default;
  Kgr(const Kgr&) = delete;
  Kgr& operator=(const Kgr&) = delete;
  ~Kgr() { kgr_list_free(list); }
  kgr_list* list = kgr_list_create();
};

kcGraphicList readBack(const kgr_list* in) {
  kcGraphicList out;
  kfGraphicListAppend(out, in);
  return out;
}

template <class G>
const G& itemAs(const kcGraphicList& l, std::size_t i) {
  return dynamic_cast<const G&>(*l.items().at(i));
}

// The code of the LibraryFailure f raises, 0 when it raises none.
long failureCode(const std::function<void()>& f) {
  try {
    f();
  } catch (const kcFoundationError::LibraryFailure& e) {
    return e.code();
  }
  return 0;
}

std::vector<std::string> traceOfDrawing(const kcGraphicList& l) {
  kcUITraceScope scope;
  kcUITablet t(&scope);
  l.draw(t, L::mainLayer);
  return scope.lines();
}

std::vector<std::string> traceOfRecords(const kgr_list* in) {
  kcUITraceScope scope;
  kcUITablet t(&scope);
  kfUITabletDraw(t, in, L::mainLayer);
  return scope.lines();
}

const kcColor kRGB(12, 34, 56);
const kcXform<2> kSheared(kcMatrix<2>(2.0, 0.5, -0.25, 1.5), kcVector<2>(30.0, 40.0));

// One graphic of every class that has a record, in an RGB or a stock pen.
kcGraphicList everyConvertible() {
  kcGraphicList l;
  // Only the pen colour of these props crosses over.
  l.append(kfMakeHandle<kcGraphicPointIcon>(kcPoint(1, 2),
                                            kcGraphicProps(kRGB, 3, kcGraphicProps::penDash, true)));
  l.append(kfMakeHandle<kcGraphicSimple<kcLineSeg>>(kcLineSeg({0, 0}, {3, 4}), kcColor::magenta));
  l.append(kfMakeHandle<kcGraphicSimple<kcLine>>(kcLine({1, 1}, {0, 2}), kRGB));
  l.append(kfMakeHandle<kcGraphicWithFill<kcRect, kcGenRect>>(kcRect({5, 6}, {7, 8}), kcColor::red, true));
  l.append(kfMakeHandle<kcGraphicWithFill<kcGenRect, kcGenRect>>(kcGenRect(kSheared, 0.25, 0.5), kRGB));
  l.append(kfMakeHandle<kcGraphicSimple<kcAffineRectangle>>(kcAffineRectangle(kSheared), kcColor::blue));
  l.append(kfMakeHandle<kcGraphicSimple<kcPolyline>>(kcPolyline({{0, 0}, {4, 0}, {4, 3}}, true), kRGB));
  l.append(kfMakeHandle<kcGraphicSimple<kcPolyline>>(kcPolyline({{0, 0}, {4, 0}, {4, 3}, {1, 5}}), kRGB));
  l.append(kfMakeHandle<kcGraphicSimple<kcLineSegSet>>(
      kcLineSegSet({kcLineSeg({1, 1}, {2, 3}), kcLineSeg({4, 4}, {9, 1})}), kcColor::green));
  l.append(kfMakeHandle<kcGraphicText>(L"Pad \u00e9 1", kcPoint(7, 8), kcColor::yellow, kRGB,
                                       kcUIFormat(3, kcUIFormat::bottomRight), kcVector<2>(4.75, -2.5)));
  return l;
}

template <class G>
bool sameShape(const kcGraphicList& a, const kcGraphicList& b, std::size_t i) {
  return itemAs<G>(a, i).item() == itemAs<G>(b, i).item();
}

}  // namespace

TEST(GraphicListKgrRoundTrip, EveryConvertibleClassComesBackAlike) {
  const kcGraphicList in = everyConvertible();
  Kgr k;
  kfGraphicListAppend(k.list, in);
  const kcGraphicList back = readBack(k.list);
  ASSERT_EQ(back.items().size(), in.items().size());
  for (std::size_t i = 0; i < in.items().size(); ++i) {
    SCOPED_TRACE(i);
    const kcGraphic& original = *in.items()[i];
    const kcGraphic& copy = *back.items()[i];
    EXPECT_EQ(std::string(typeid(copy).name()), typeid(original).name());
    EXPECT_EQ(copy.props(), kcGraphicProps(original.color(), 1, kcGraphicProps::penSolid, false));
  }
  EXPECT_EQ(itemAs<kcGraphicPointIcon>(back, 0).item(), kcPoint(1, 2));
  EXPECT_TRUE(sameShape<kcGraphicSimple<kcLineSeg>>(back, in, 1));
  EXPECT_TRUE(sameShape<kcGraphicSimple<kcLine>>(back, in, 2));
  EXPECT_TRUE((sameShape<kcGraphicWithFill<kcRect, kcGenRect>>(back, in, 3)));
  EXPECT_TRUE((sameShape<kcGraphicWithFill<kcGenRect, kcGenRect>>(back, in, 4)));
  EXPECT_TRUE(sameShape<kcGraphicSimple<kcAffineRectangle>>(back, in, 5));
  EXPECT_TRUE(sameShape<kcGraphicSimple<kcPolyline>>(back, in, 6));
  EXPECT_TRUE(sameShape<kcGraphicSimple<kcPolyline>>(back, in, 7));
  EXPECT_TRUE(sameShape<kcGraphicSimple<kcLineSegSet>>(back, in, 8));
  const auto& text = itemAs<kcGraphicText>(back, 9);
  EXPECT_EQ(text.text(), L"Pad \u00e9 1");
  EXPECT_EQ(text.location(), kcPoint(7, 8));
  EXPECT_EQ(text.backgroundColor(), kRGB);
  EXPECT_EQ(text.format(), kcUIFormat(3, kcUIFormat::bottomRight));
  EXPECT_EQ(text.offset(), kcVector<2>(4.75, -2.5));
  EXPECT_TRUE(back.items()[1]->color().isStockColor());
}

TEST(GraphicListToKgr, ClassesWithoutRecordAppendNothing) {
  kcGraphicList in;
  in.append(kfMakeHandle<kcGraphicSimple<kcGenPoly>>());
  in.append(kfMakeHandle<kcGraphicWithFill<kcCircle, kcEllipse2>>(kcCircle({1, 1}, 2), kRGB, false));
  auto group = kfMakeHandle<kcGraphicGroup>();
  group->items(std::vector<kcGraphicPtr>{kfMakeHandle<kcGraphicPointIcon>(kcPoint(1, 2), kRGB)});
  in.append(group);
  Kgr k;
  kfGraphicListAppend(k.list, in);
  EXPECT_EQ(k.list->count, 0);
  EXPECT_EQ(k.list->size, 0u);
}

TEST(GraphicListToKgr, FailuresKeepTheRecordsBefore) {
  kcGraphicList in;
  in.append(kfMakeHandle<kcGraphicPointIcon>(kcPoint(1, 2), kRGB));
  in.append(kcGraphicPtr());
  Kgr k;
  EXPECT_THROW(kfGraphicListAppend(k.list, in), kcBadPointer);
  EXPECT_EQ(k.list->count, 1);

  // A lone surrogate is text the library refuses.
  in.items()[1] = kfMakeHandle<kcGraphicText>(std::wstring(1, wchar_t{0xD800}), kcPoint(), kRGB, kRGB,
                                              kcUIFormat(), kcVector<2>());
  EXPECT_EQ(failureCode([&] { kfGraphicListAppend(k.list, in); }), KGR_ERR_BAD_TEXT);
  EXPECT_EQ(k.list->count, 2);
  EXPECT_EQ(failureCode([&] { kfGraphicListAppend(nullptr, in); }), KGR_ERR_NULL);
}

TEST(KgrToGraphicList, UnknownTypesAndCirclesMakeIconsAndEllipses) {
  Kgr k;
  ASSERT_EQ(kgr_list_appendPoint(k.list, KGR_COLOR_ORANGE, {3, 4}), KGR_OK);
  k.list->records[0] = 42;  // the low byte of the u32 type
  ASSERT_EQ(kgr_list_appendCircle(k.list, KGR_COLOR_RED, {5, 6}, 3), KGR_OK);
  const kcGraphicList back = readBack(k.list);
  ASSERT_EQ(back.items().size(), 2u);
  EXPECT_EQ(itemAs<kcGraphicPointIcon>(back, 0).item(), kcPoint(3, 4));
  EXPECT_EQ(back.items()[0]->color(), kcColor::orange);
  using G = kcGraphicWithFill<kcEllipse2, kcEllipse2>;
  EXPECT_EQ(itemAs<G>(back, 1).item(), kcEllipse2(3, 3, kcRadian(0), {5, 6}));
  EXPECT_FALSE(itemAs<G>(back, 1).fill());
}

TEST(KgrToGraphicList, PolylineEndingAtItsStartClosesFromFourVertices) {
  Kgr k;
  const kgr_point loop[] = {{0, 0}, {4, 0}, {0, 0}};
  const kgr_point square[] = {{0, 0}, {4, 0}, {4, 4}, {0, 0}};
  ASSERT_EQ(kgr_list_appendPolyline(k.list, KGR_COLOR_RED, 3, loop), KGR_OK);
  ASSERT_EQ(kgr_list_appendPolyline(k.list, KGR_COLOR_RED, 4, square), KGR_OK);
  const kcGraphicList back = readBack(k.list);
  using G = kcGraphicSimple<kcPolyline>;
  EXPECT_EQ(itemAs<G>(back, 0).item(), kcPolyline({{0, 0}, {4, 0}, {0, 0}}, false));
  EXPECT_EQ(itemAs<G>(back, 1).item(), kcPolyline({{0, 0}, {4, 0}, {4, 4}}, true));
}

TEST(KgrToGraphicList, DegenerateRecordIsSkippedAlone) {
  const kgr_point p{1, 1}, zero{0, 0};
  const kgr_xform flat{1, 2, 2, 4, 0, 0};
  const kmath_shapeAffineRect collinear{{{0, 0}, {1, 0}, {2, 0}, {1, 0}}};
  const kgr_point same[] = {{2, 2}, {2, 2}, {2, 2}};
  const kgr_segment segs[] = {{{0, 0}, {1, 1}}, {{3, 3}, {3, 3}}};
  const struct {
    const char* why;
    std::function<long(kgr_list*)> append;
  } rows[] = {
      {"zero-length segment", [&](kgr_list* l) { return kgr_list_appendLineSeg(l, 0, p, p); }},
      {"zero direction", [&](kgr_list* l) { return kgr_list_appendLineDirPoint(l, 0, p, zero); }},
      {"singular general rectangle", [&](kgr_list* l) { return kgr_list_appendGenRect(l, 0, &flat, 0, 0); }},
      {"zero radius", [&](kgr_list* l) { return kgr_list_appendCircle(l, 0, p, 0); }},
      {"collinear corners", [&](kgr_list* l) { return kgr_list_appendShapeAffineRect(l, 0, &collinear); }},
      {"one polyline vertex", [&](kgr_list* l) { return kgr_list_appendPolyline(l, 0, 1, same); }},
      {"coincident polyline vertices", [&](kgr_list* l) { return kgr_list_appendPolyline(l, 0, 3, same); }},
      {"zero-length segment in a set", [&](kgr_list* l) { return kgr_list_appendLineSegSet(l, 0, 2, segs); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    Kgr k;
    ASSERT_EQ(row.append(k.list), KGR_OK);
    ASSERT_EQ(kgr_list_appendPoint(k.list, KGR_COLOR_RED, {5, 5}), KGR_OK);
    const kcGraphicList back = readBack(k.list);
    ASSERT_EQ(back.items().size(), 1u);
    EXPECT_EQ(itemAs<kcGraphicPointIcon>(back, 0).item(), kcPoint(5, 5));
    EXPECT_EQ(traceOfRecords(k.list), traceOfDrawing(back));
  }
}

TEST(KgrToGraphicList, CorruptListIsRefusedWithNothingAppendedOrDrawn) {
  Kgr k;
  ASSERT_EQ(kgr_list_appendLineSeg(k.list, KGR_COLOR_RED, {0, 0}, {1, 1}), KGR_OK);
  const kgr_point v[] = {{0, 0}, {4, 0}, {4, 3}};
  ASSERT_EQ(kgr_list_appendPolyline(k.list, KGR_COLOR_RED, 3, v), KGR_OK);
  std::vector<unsigned char> bytes(kgr_list_byteSize(k.list));
  ASSERT_EQ(kgr_list_toBytes(k.list, bytes.data(), bytes.size()), KGR_OK);
  std::vector<unsigned char> moreRecords = bytes, longPolyline = bytes;
  moreRecords[0] = 3;
  // The polyline's u64 count follows the 4-byte stream count, the segment
  // record and the polyline's own header.
  longPolyline[4 + 8 + 32 + 8] = 4;
  for (std::vector<unsigned char>* b : {&moreRecords, &longPolyline}) {
    const kgr_list view{(*b)[0], b->data() + 4, b->size() - 4, 0};
    kcGraphicList out;
    out.append(kfMakeHandle<kcGraphicPointIcon>(kcPoint(), kRGB));
    EXPECT_EQ(failureCode([&] { kfGraphicListAppend(out, &view); }), KGR_ERR_CORRUPT);
    EXPECT_EQ(out.items().size(), 1u);
    kcUITraceScope scope;
    kcUITablet t(&scope);
    EXPECT_EQ(failureCode([&] { kfUITabletDraw(t, &view, L::mainLayer); }), KGR_ERR_CORRUPT);
    EXPECT_TRUE(scope.lines().empty());
  }
}

TEST(KgrTabletDraw, DrawingRecordsTracesAsDrawingTheirGraphics) {
  const kgr_xform shear{2.0, 0.5, -0.25, 1.5, 30.0, 40.0};
  Kgr k;
  kfGraphicListAppend(k.list, everyConvertible());
  const kmath_ellipse e{10, 20, 4, 2, 0.5};
  ASSERT_EQ(kgr_list_appendEllipse(k.list, KGR_COLOR_RED, &e, &shear), KGR_OK);
  ASSERT_EQ(kgr_list_appendLineSeg(k.list, KGR_COLOR_RED, {1, 1}, {1, 1}), KGR_OK);
  const std::vector<std::string> direct = traceOfRecords(k.list);
  EXPECT_EQ(direct, traceOfDrawing(readBack(k.list)));
  // The text keeps its pel offset, which only the pen carries.
  EXPECT_TRUE(std::any_of(direct.begin(), direct.end(),
                          [](const std::string& s) { return s.rfind("moveRelPels 4 -2", 0) == 0; }));
}
