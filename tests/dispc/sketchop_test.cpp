#include "dispc/sketchop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "dispc/uierror.h"
#include "foundation/archive.h"
#include "fuzz/sketch_samples.h"

namespace {

using namespace sketchsamples;
using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const kcUISketch& s) { return Bytes(s.bytes().begin(), s.bytes().end()); }
kcUISketch sketchOf(const Bytes& b) {
  kcUISketch s;
  s.append(b.data(), static_cast<long>(b.size()));
  return s;
}

// --- tests ---

TEST(SketchOps, EveryOpcodeWritesParsesAndWritesBackTheSameBytes) {
  for (const kcUISketchOps::Entry& e : kcUISketchOps::kTable) {
    kcUISketch s;
    appendSample(s, e.opcode, 2);
    kcUISketchParser records(s);
    ASSERT_TRUE(records.next()) << e.name;
    EXPECT_EQ(records.header().opcode(), e.opcode);
    EXPECT_EQ(records.header().layer(), 2);
    EXPECT_EQ(records.header().color(), kcColor(static_cast<unsigned char>(e.opcode)));
    EXPECT_EQ(std::string(records.data().className()), std::string("kc_UISketchOp") + e.name);
    if (e.size != kcUISketchOps::kVariable) {
      EXPECT_EQ(s.length(), kc_UISketchOpHeader::kSize + e.size) << e.name;
    }
    EXPECT_EQ(records.offset(), s.length()) << e.name;
    EXPECT_FALSE(records.next());

    kcUISketch again;
    records.header().populateSketch(again);
    records.data().populateSketch(again);
    EXPECT_EQ(bytesOf(again), bytesOf(s)) << e.name;
  }
}

TEST(SketchOps, RecordWritesWhatTheThreeStepsWrite) {
  const kcGraphicProps wide(kcColor::red, 3, kcGraphicProps::penDash, true);
  kcGraphicProps blue(wide);
  blue.penColor(kcColor::blue);
  kcUISketch steps;
  kcUISketch records;
  for (const kcGraphicProps* p : std::vector<const kcGraphicProps*>{&wide, &blue, &wide}) {
    steps.opcode(kcUISketch::kPropsOpcode, *p);
    steps.opcode(44, 1, p->penColor());
    kc_UISketchOpPolyline::write(steps, Sample<kcPolyline>::make());
    kc_UISketchOpPolyline::record(records, 44, 1, *p, Sample<kcPolyline>::make());
  }
  EXPECT_EQ(bytesOf(records), bytesOf(steps));
  EXPECT_EQ(records.length(), 22 + 3 * (8 + 4 + 3 * 16 + 1));  // one properties record
}

TEST(SketchOps, ParsedValuesEqualTheWrittenOnes) {
  auto check = [](auto op, const auto& value) {
    kcUISketch s;
    decltype(op)::write(s, value);
    decltype(op) parsed;
    EXPECT_EQ(parsed.parseByteStream(s.bytes()), s.length());
    EXPECT_TRUE(parsed.value() == value) << parsed.className();
  };
  check(kc_UISketchOpEllipseArc(), Sample<kcEllipseArc>::make());
  check(kc_UISketchOpGenAnn(), Sample<kcGenAnnulus>::make());
  check(kc_UISketchOpPelBuf8(), Sample<kc_UISketchImage>::make());
  check(kc_UISketchOpRleBuf(), Sample<kc_UISketchRleImage>::make());
  check(kc_UISketchOpUnicodeString(), Sample<kc_UISketchText<char16_t>>::make());
  check(kc_UISketchOpEllipseAnnSectArrowheadFlag(), Sample<kc_UISketchArrowSection>::make());
  check(kc_UISketchOpSketch(), Sample<kc_UISketchNested>::make());
  check(kc_UISketchOpGenShape(), Sample<kc_UISketchGenShape>::make());
  check(kc_UISketchOpOutline3d(), Sample<kc_UISketchOutline3d>::make());

  kcUISketch s;
  kc_UISketchOpWireframe::write(s, Sample<kc2Wireframe>::make());
  kc_UISketchOpWireframe parsed;
  parsed.parseByteStream(s.bytes());
  EXPECT_TRUE(kfRealEq(parsed.value().polygonData(), samplePoly(), 0.0));
  EXPECT_EQ(parsed.value().polygonData().vertices()[1].segmentLengthTol(),
            kcDimTol(10, 9.5, 10.5, kcDimTol::eLimits));
  EXPECT_EQ(parsed.value().polygonData().vertices()[2].percentNextSegment(), 0.75);
}

TEST(SketchOps, FactoryAndTableAgree) {
  long count = 0;
  for (long op = -2; op < kcUISketchOps::kCount + 3; ++op) {
    const kcUISketchOps::Entry* e = kcUISketchOps::find(op);
    if (!e) {
      EXPECT_THROW((void)kfCreateUISketchOpData(op), kcUIError::InvalidUISketch) << op;
      continue;
    }
    ++count;
    const std::unique_ptr<kc_UISketchOpData> data(kfCreateUISketchOpData(op));
    EXPECT_EQ(std::string(data->className()), std::string("kc_UISketchOp") + e->name);
  }
  EXPECT_EQ(count, 44);  // 48 opcodes less the holes 13, 24, 36 and the properties record 40
  for (long hole : {13, 24, 36, 40}) EXPECT_EQ(kcUISketchOps::find(hole), nullptr);
  // Shared classes: the opcode alone tells outline from filled.
  EXPECT_STREQ(kcUISketchOps::find(4)->name, kcUISketchOps::find(29)->name);
  EXPECT_STREQ(kcUISketchOps::find(34)->name, kcUISketchOps::find(38)->name);
}

TEST(SketchOps, PropertiesCarryFromHeaderToHeader) {
  kcUISketch s;
  const kcGraphicProps wide(kcColor::red, 3, kcGraphicProps::penDash, true);
  appendSample(s, 2, 0, &wide);
  kcGraphicProps green(wide);
  green.penColor(kcColor::green);
  s.opcode(kcUISketch::kPropsOpcode, green);  // only the colour changed: no record
  appendSample(s, 0, 0);
  EXPECT_EQ(s.length(), 22 + 8 + 32 + 8 + 16);

  kcUISketchParser records(s);
  ASSERT_TRUE(records.next());
  EXPECT_TRUE(records.header().hasProps());
  EXPECT_EQ(records.header().props().penWidth(), 3);
  EXPECT_EQ(records.header().props().penColor(), kcColor(2));  // the header's colour
  ASSERT_TRUE(records.next());
  EXPECT_FALSE(records.header().hasProps());
  EXPECT_EQ(records.header().props().penWidth(), 3);
  EXPECT_EQ(records.header().props().penColor(), kcColor(0));
}

TEST(SketchOps, MalformedStreamsAreRefused) {
  kcUISketch good;
  const kcGraphicProps wide(kcColor::red, 3, kcGraphicProps::penDash, true);
  appendSample(good, 5, 0, &wide);
  const Bytes bytes = bytesOf(good);
  auto refused = [](const Bytes& b) {
    const kcUISketch s = sketchOf(b);
    kcUISketchParser records(s);
    EXPECT_THROW(while (records.next()){}, kcUIError::InvalidUISketch);
  };
  // Every cut short of the end.
  for (std::size_t n = 1; n < bytes.size(); ++n) refused(Bytes(bytes.begin(), bytes.begin() + n));

  // {byte, value, why}
  const struct {
    std::size_t at;
    std::uint8_t value;
    const char* why;
  } cases[] = {
      {1, 1, "properties version 1"},
      {2, 2, "a fill flag that is neither 0 nor 1"},
      {3, 0x80 | 0, "a width that is not a width"},
      {22, 40, "two properties records in a row"},
      {22, 13, "a hole in the opcodes"},
      {22, 48, "an opcode past the table"},
      {22, 0xff, "a negative opcode"},
      {23, 3, "layer 3"},
      {28, 0x08, "a colour flag bit that means nothing"},
      {28, 0x01, "a colour with neither index nor triple"},
  };
  for (const auto& c : cases) {
    Bytes b = bytes;
    if (c.at == 3) {
      b[6] = 0x80;  // the width's top byte: negative
    } else {
      b[c.at] = c.value;
    }
    SCOPED_TRACE(c.why);
    refused(b);
  }
}

TEST(SketchOps, PaddingAndCanonicalFormsAreChecked) {
  kcUISketch arc;
  kc_UISketchOpEllipseArc::write(arc, Sample<kcEllipseArc>::make());
  Bytes b = bytesOf(arc);
  b[100] = 1;  // in the zeros after the fields
  kc_UISketchOpEllipseArc op;
  EXPECT_THROW(op.parseByteStream(b), kcUIError::InvalidUISketch);

  // A shape its class refuses: a circle of radius 0.
  kcUISketch circle;
  kc_UISketchOpCircle::write(circle, kcCircle({0, 0}, 1));
  Bytes c = bytesOf(circle);
  std::memset(c.data() + 16, 0, 8);
  kc_UISketchOpCircle circleOp;
  EXPECT_THROW(circleOp.parseByteStream(c), kcUIError::InvalidUISketch);
  EXPECT_EQ(circleOp.value(), kcCircle());  // unchanged

  // A pel rectangle of negative width would come back normalised.
  kcUISketch area;
  kc_UISketchOpSet::write(area, kc_UISketchArea{true, {}, kcUIRect(0, 0, 5, 5)});
  Bytes a = bytesOf(area);
  a[12] = 0xff;  // the width's top byte: negative
  kc_UISketchOpSet areaOp;
  EXPECT_THROW(areaOp.parseByteStream(a), kcUIError::InvalidUISketch);

  // Text holds no zero unit; written text cannot either.
  kcUISketch text;
  EXPECT_THROW(
      kc_UISketchOpString::write(
          text, kc_UISketchText<char>{{}, {}, kcUIFormat(0, kcUIFormat::topLeft), std::string("a\0b", 3)}),
      kcUIError::BadParams);
  EXPECT_TRUE(text.isNull());  // sized before anything is appended
}

TEST(SketchOps, CountsCannotRunPastTheEnd) {
  kcUISketch s;
  kc_UISketchOpPolygon::write(s, Sample<kcPolygon>::make());
  Bytes b = bytesOf(s);
  b[3] = 0x7f;  // a count near 2^31 with 64 bytes behind it
  kc_UISketchOpPolygon op;
  EXPECT_THROW(op.parseByteStream(b), kcUIError::InvalidUISketch);

  kcUISketch image;
  kc_UISketchOpPelBuf8::write(image, Sample<kc_UISketchImage>::make());
  Bytes i = bytesOf(image);
  // Width and height follow position (16), two bytes, transform (56), offset (8).
  const std::size_t heightAt = 16 + 2 + 56 + 8 + 4;
  i[heightAt + 3] = 0x40;
  kc_UISketchOpPelBuf8 imageOp;
  EXPECT_THROW(imageOp.parseByteStream(i), kcUIError::InvalidUISketch);
}

TEST(SketchOps, NestedSketchesParseWholeAndOnlySoDeep) {
  auto nest = [](int depth) {
    kcUISketch s;
    s.opcode(0, 0, kcColor());
    kc_UISketchOpPoint::write(s, kcPoint(1, 1));
    for (int i = 0; i < depth; ++i) {
      kcUISketch outer;
      outer.opcode(15, 2, kcColor());
      kc_UISketchOpSketch::write(outer, kc_UISketchNested{{1, 2}, s});
      s = outer;
    }
    return s;
  };
  auto parses = [](const kcUISketch& s) {
    kcUISketchParser records(s);
    while (records.next()) {
    }
  };
  EXPECT_NO_THROW(parses(nest(kc_UISketchNested::kMaxDepth)));
  EXPECT_THROW(parses(nest(kc_UISketchNested::kMaxDepth + 1)), kcUIError::InvalidUISketch);

  // A nested stream that is cut short inside is refused as a whole.
  kcUISketch s = nest(1);
  Bytes b = bytesOf(s);
  b.pop_back();
  b[8 + 16] -= 1;  // the nested length, one shorter
  EXPECT_THROW(parses(sketchOf(b)), kcUIError::InvalidUISketch);
}

TEST(SketchOps, ParseOneRecordHandsThePayloadOver) {
  const kcUISketch s = everyOpcode();
  kc_UISketchOpHeader header;
  long offset = 0;
  int records = 0;
  while (offset < s.length()) {
    kc_UISketchOpData* data = nullptr;
    offset += kfParseUISketch(s, offset, header, &data);
    ASSERT_NE(data, nullptr);
    EXPECT_STREQ(data->className(),
                 (std::string("kc_UISketchOp") + kcUISketchOps::find(header.opcode())->name).c_str());
    delete data;
    ++records;
  }
  EXPECT_EQ(offset, s.length());
  EXPECT_EQ(records, 44);
  EXPECT_THROW(kfParseUISketch(s, s.length(), header, nullptr), kcUIError::InvalidUISketch);
  EXPECT_THROW(kfParseUISketch(s, -1, header, nullptr), kcUIError::InvalidUISketch);
}

TEST(SketchOps, DumpWritesOneLineARecord) {
  const kcUISketch s = everyOpcode();
  std::ostringstream out;
  kfDumpUISketch(s, out);
  const std::string text = out.str();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 44);
  EXPECT_NE(text.find("0: 0 Point layer=0 colour=index 0 props{width=3 style=1"), std::string::npos) << text;
  EXPECT_NE(text.find("LineSeg layer=2 colour=index 2 | p1=(1, 2) p2=(-3, 4.5)"), std::string::npos) << text;
  EXPECT_NE(text.find("text=\"Pin 1\""), std::string::npos);
}

// --- archive ---

Bytes archived(kcUISketch s) {
  kcMemArchive ar;
  ar || s;
  return ar.bytes();
}

kcUISketch reloaded(const Bytes& bytes) {
  kcMemArchive ar(bytes);
  kcUISketch s;
  ar || s;
  EXPECT_TRUE(ar.atEnd());
  return s;
}

TEST(SketchArchive, EveryRecordComesBackByteForByte) {
  kcUISketch s = everyOpcode();
  // The nested sketch cannot be archived; take it out.
  kcUISketch without;
  for (kcUISketchParser records(s); records.next();) {
    if (records.header().opcode() == 15) continue;
    records.header().populateSketch(without);
    records.data().populateSketch(without);
  }
  EXPECT_EQ(bytesOf(reloaded(archived(without))), bytesOf(without));
}

TEST(SketchArchive, RecordsOfOneOpcodeTravelAsObjectsOfTheirOwn) {
  kcUISketch s;
  for (int i = 0; i < 5; ++i) {
    s.opcode(2, 0, kcColor(static_cast<unsigned char>(i)));
    kc_UISketchOpLineSeg::write(s, kcLineSeg({0.0 + i, 1}, {2, 3.0 * i + 1}));
  }
  const kcUISketch back = reloaded(archived(s));
  EXPECT_EQ(bytesOf(back), bytesOf(s));
}

TEST(SketchArchive, EmptySketchesAndVersions) {
  EXPECT_EQ(archived(kcUISketch()), (Bytes{1, 0, 0, 0, 0}));
  EXPECT_TRUE(reloaded(Bytes{1, 0, 0, 0, 0}).isNull());
  EXPECT_TRUE(reloaded(Bytes{0, 0, 0, 0, 0}).isNull());  // version 0, no bytes

  kcMemArchive ar(Bytes{2, 0, 0, 0, 0});
  kcUISketch s;
  try {
    ar || s;
    FAIL();
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "dispc/uisketch");
    EXPECT_EQ(e.line(), 286);
  }
}

TEST(SketchArchive, VersionZeroStreamsLoadIntoTheCurrentLayout) {
  kcUISketch current;
  const kcGraphicProps wide(kcColor::red, 3, kcGraphicProps::penDash, true);
  appendSample(current, 41, 0, &wide);
  appendSample(current, 2, 1);
  Bytes raw = bytesOf(current);
  // The older writers left the word after each tolerance as it was.
  const std::size_t firstPad = 22 + 8 + 56 + 4 + 4 + 16 + 16 + 24 + 4;
  raw[firstPad] = 0xab;
  Bytes v0{0};
  const auto n = static_cast<std::uint32_t>(raw.size());
  for (int i = 0; i < 4; ++i) v0.push_back(static_cast<std::uint8_t>(n >> (8 * i)));
  v0.insert(v0.end(), raw.begin(), raw.end());
  EXPECT_EQ(bytesOf(reloaded(v0)), bytesOf(current));
  // The current layout refuses what the older one let pass.
  EXPECT_THROW(kcUISketchParser(raw).next(), kcUIError::InvalidUISketch);
}

TEST(SketchArchive, NestedSketchesAreNotArchived) {
  kcUISketch s;
  appendSample(s, 2);
  appendSample(s, 15);
  kcMemArchive ar;
  EXPECT_THROW(ar || s, kcUIError::NotImplemented);
  EXPECT_TRUE(ar.bytes().empty());  // taken back
}

TEST(SketchArchive, DamagedArchivesLeaveTheSketchAsItWas) {
  kcUISketch s;
  appendSample(s, 4);
  appendSample(s, 37);
  const Bytes good = archived(s);
  kcUISketch target;
  appendSample(target, 0);
  const Bytes before = bytesOf(target);
  for (std::size_t n = 0; n < good.size(); ++n) {
    kcMemArchive ar(Bytes(good.begin(), good.begin() + n));
    EXPECT_THROW(ar || target, kcException) << n;
    EXPECT_EQ(bytesOf(target), before);
  }
  // A payload object of another class than its opcode names: DrawStart and
  // PointIcon both hold a point and have names of one length.
  kcUISketch wrong;
  appendSample(wrong, 20);
  Bytes bytes = archived(wrong);
  const std::string from = "kc_UISketchOpDrawStart";
  const std::string to = "kc_UISketchOpPointIcon";
  const auto at = std::search(bytes.begin(), bytes.end(), from.begin(), from.end());
  ASSERT_NE(at, bytes.end());
  std::copy(to.begin(), to.end(), at);
  kcMemArchive ar(bytes);
  EXPECT_THROW(ar || target, kcArchive::Corrupt);
  EXPECT_EQ(bytesOf(target), before);
}

}  // namespace
