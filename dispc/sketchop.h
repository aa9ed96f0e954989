// The typed view of a sketch's bytes: the operation header common to every
// record (kc_UISketchOpHeader), one payload class per opcode
// (kc_UISketchOpData and its subclasses), the factory and the parsers.
//
// Record layout. A record is an optional 22-byte properties record (byte 40,
// version byte 0, the 20 bytes of kcGraphicProps' sketch record), the 8-byte
// operation header (opcode as a signed byte, layer byte 0 to 2, the 6-byte
// colour of kfStoreSketchColor: r, g, b and the index in 32 bits, then the
// flags in 16) and the payload. Everything is little-endian
// and unaligned.
//
// Payloads are written field by field, in the order of each class's one
// transfer routine (sketchop_*.cpp), which also reads them, sizes them and
// dumps them, so writer and reader cannot disagree. Points and vectors are two
// 64-bit floats (x, y); angles are radians as 64-bit floats; a transform is
// its matrix row by row and then its translation (six 64-bit floats); counts
// and enumerations are 32-bit; flags are one byte, 0 or 1. Where a shape's
// fields take fewer bytes than its record has always had, zero bytes fill the
// rest (a reader refuses anything else there), so the sizes stay those of the
// opcode table below:
//
//   0, 1, 20, 21  point                                  16
//   2   start, end                                       32
//   3   point, direction                                 32
//   4, 29  centre, radius                                24
//   5, 30  transform                                     48
//   6   transform, start, span; zeros                   192
//   7   radii, rotation, centre, inner scale, start, span; zeros   552
//   8, 31  transform, round x, round y; zeros           152
//   9   the general rectangle as 8, inner scale; zeros  360
//   10  transform                                        48
//   27  transform; zeros                                232
//   37  centre, arm length, rotation                     32
//   32, 47  origin, size                                 32
//   42  four control points; zeros                       96
//   45  radius x, radius y, rotation, centre             40
//   46  as 45, a zero byte, start, span, a zero float    65
//
// and variable ones: 28 (count n, n points), 43 (count n, n Bezier points),
// 44 (count n, n points, closed flag), 11 and 35 (position, background
// colour, font id and alignment, the text as 8- or 16-bit units and a zero
// unit), 12, 14, 15, 16, 18, 19, 22, 23, 25, 26, 33, 34/38/41 and 39 as their
// value types below say.
//
// Parsing is a loader of untrusted bytes: every read is bounds-checked, and a
// short record, an unknown opcode, a malformed properties record, a layer
// above 2, a colour without index or triple, bytes that are not 0 or 1 where
// a flag or a zero is due, or a shape its class refuses all throw
// kcUIError::InvalidUISketch. A record that parses writes back the same bytes.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "dispc/classes.h"
#include "dispc/color.h"
#include "dispc/dispprop.h"
#include "dispc/uirect.h"
#include "dispc/uisketch.h"
#include "dispc/uistring.h"
#include "dispc/wrfm/genpoly.h"
#include "dispc/wrfm/wirefrm.h"
#include "foundation/handle.h"
#include "foundation/pelbuffer.h"
#include "foundation/rlebuffer.h"
#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/coordaxes.h"
#include "foundation/shapes/cross.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipseannulussection.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/line.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/point.h"
#include "foundation/shapes/polygon.h"
#include "foundation/shapes/polyline.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/spline.h"

class kcUITablet;

// --- the header ---

class kc_UISketchOpHeader : public virtual kcPersistent, public virtual kcRepBase {
 public:
  KC_DECLARE_PERSISTENT(kc_UISketchOpHeader);

  // Bytes of the header alone, and of a properties record before it.
  static constexpr long kSize = 8;
  static constexpr long kPropsSize = 22;

  kc_UISketchOpHeader() = default;
  kc_UISketchOpHeader(const kc_UISketchOpHeader&) = default;
  kc_UISketchOpHeader& operator=(const kc_UISketchOpHeader&) = default;
  // A header without properties record.
  kc_UISketchOpHeader(long opcode, long layer, const kcColor& color);
  ~kc_UISketchOpHeader() override;

  [[nodiscard]] long opcode() const noexcept { return opcode_; }
  // 0 main, 1 overlay, 2 both.
  [[nodiscard]] long layer() const noexcept { return layer_; }
  void layer(long l);
  [[nodiscard]] const kcColor& color() const noexcept { return color_; }
  // A properties record came before this header (when parsed), or will be
  // written before it (populateSketch).
  [[nodiscard]] bool hasProps() const noexcept { return hasProps_; }
  // The properties in force for this record, its colour being the header's.
  [[nodiscard]] const kcGraphicProps& props() const noexcept { return props_; }
  [[nodiscard]] signed char propsVersion() const noexcept { return propsVersion_; }
  // Sets the properties and hasProps.
  void props(const kcGraphicProps& p);

  // Reads a header (with the properties record before it, if any) from the
  // start of bytes; returns the bytes read (8 or 30). Without a properties
  // record the properties of the previous header stay. InvalidUISketch for
  // anything malformed; nothing changes then.
  long parseByteStream(std::span<const unsigned char> bytes);
  // Appends the properties record (when hasProps) and the 8 header bytes.
  void populateSketch(kcUISketch& sketch) const;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  long opcode_ = 0;
  long layer_ = 0;
  kcColor color_;
  bool hasProps_ = false;
  signed char propsVersion_ = 0;
  kcGraphicProps props_;
};

// --- payloads ---

class kc_UISketchOpData : public virtual kcPersistent, public virtual kcRepBase {
 public:
  ~kc_UISketchOpData() override;

  // Reads the payload at the start of bytes (those left in the stream) and
  // returns how many it took. InvalidUISketch for a payload that is short or
  // malformed; the object is unchanged then.
  virtual long parseByteStream(std::span<const unsigned char> bytes) = 0;
  // The same for a stream of the older layout; only the wireframe block differs.
  virtual long parseVersion0ByteStream(std::span<const unsigned char> bytes) {
    return parseByteStream(bytes);
  }
  // Appends the payload in the current layout.
  virtual void populateSketch(kcUISketch& sketch) const = 0;
  // The payload's fields as "name=value" words.
  virtual void dump(std::ostream& out) const = 0;
  // Draws the record on a tablet through the call that records it, with the
  // header's properties and layer (playback).
  virtual void draw(kcUITablet& tablet, const kc_UISketchOpHeader& header) const = 0;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  kc_UISketchOpData() = default;
  kc_UISketchOpData(const kc_UISketchOpData&) = default;
  kc_UISketchOpData& operator=(const kc_UISketchOpData&) = default;
  void serialize_(kcArchive& ar, unsigned char version);
};

using kcUISketchOpHeaderPtr = kcPtrHandle<kc_UISketchOpHeader>;
using kcUISketchOpDataPtr = kcPtrHandle<kc_UISketchOpData>;

// The payload classes that hold one value: the value is read and written by
// its transfer routine, archived by its own archive transfer.
template <class Self, class V>
class kc_UISketchOpOf : public kc_UISketchOpData {
 public:
  using Value = V;

  kc_UISketchOpOf() = default;
  explicit kc_UISketchOpOf(const V& value) : value_(value) {}

  [[nodiscard]] const V& value() const noexcept { return value_; }
  void value(const V& v) { value_ = v; }

  long parseByteStream(std::span<const unsigned char> bytes) override;
  void populateSketch(kcUISketch& sketch) const override;
  void dump(std::ostream& out) const override;
  void draw(kcUITablet& tablet, const kc_UISketchOpHeader& header) const override;
  void dispatchSerialize(kcArchive& ar) override;

  // Appends the payload of v: what a recording tablet writes after the header.
  static void write(kcUISketch& sketch, const V& v);
  // Appends a whole record: the properties record when props changed, the
  // header (opcode, layer, the props' colour) and the payload of v.
  static void record(kcUISketch& sketch, signed char opcode, signed char layer, const kcGraphicProps& props,
                     const V& v);

 protected:
  V value_;
};

// --- payload values that are not shapes ---

// Opcodes 16 and 18: a rectangle in client (kcRect) or pel (kcUIRect)
// coordinates. Layout: form byte (0 client, 1 pels), then origin and size
// with 56 zero bytes (88 bytes), or left, top, width, height as 32-bit values.
struct kc_UISketchArea {
  bool pels = false;
  kcRect rect;
  kcUIRect pelRect;
  [[nodiscard]] bool operator==(const kc_UISketchArea&) const;
};

// Opcode 19: a flood fill. Layout: form byte, the seed (a point, or two
// 32-bit pel coordinates), the boundary colour, the fill type (32-bit). The
// header colour is the fill colour.
struct kc_UISketchFill {
  bool pels = false;
  kcVector<2> seed;
  std::int32_t pelX = 0;
  std::int32_t pelY = 0;
  kcColor boundary;
  std::int32_t fillType = 0;
  [[nodiscard]] bool operator==(const kc_UISketchFill&) const;
};

// Opcodes 22 and 23: an offset in pels, two 32-bit values.
struct kc_UISketchPelOffset {
  std::int32_t dx = 0;
  std::int32_t dy = 0;
  [[nodiscard]] bool operator==(const kc_UISketchPelOffset&) const = default;
};

// Opcode 25: a raised or sunken frame. Layout: the area as for 16, the light
// and the dark colour, the width (signed 32-bit).
struct kc_UISketchOutline3d {
  kc_UISketchArea area;
  kcColor light;
  kcColor dark;
  std::int32_t width = 1;
  [[nodiscard]] bool operator==(const kc_UISketchOutline3d&) const;
};

// Opcode 26: an arrow head. Layout: tip, direction, arm length (32-bit float).
struct kc_UISketchArrow {
  kcVector<2> tip;
  kcVector<2> direction;
  float length = 0;
  [[nodiscard]] bool operator==(const kc_UISketchArrow&) const = default;
};

// Opcodes 11 and 35: text at a position. Layout: position, background
// colour, font id and alignment (32-bit each), the text's units (8-bit for
// 11, UTF-16 for 35) and a zero unit; the text holds no zero unit. The
// header colour is the text colour.
template <class Char>
struct kc_UISketchText {
  kcVector<2> position;
  kcColor background;
  kcUIFormat format;
  std::basic_string<Char> text;
  [[nodiscard]] bool operator==(const kc_UISketchText&) const = default;
};

// Opcode 12: an 8-bit image. Layout: position, passThrough and passColor
// bytes, the image-from-client transform and 8 zero bytes, the window's
// offset in its image (two 32-bit values), width and height (32-bit), the
// mapped byte, then the pels row by row; an image without pels is 0 x 0.
// The header colour is colour 0.
struct kc_UISketchImage {
  kcVector<2> position;
  bool passThrough = false;
  unsigned char passColor = 0;
  bool mapped = false;
  std::int32_t offsetX = 0;
  std::int32_t offsetY = 0;
  // Its window's pels; its transform is the one recorded.
  kcPelBuffer<unsigned char> image;
  [[nodiscard]] bool operator==(const kc_UISketchImage&) const;
};

// Opcode 14: a run-length image. Layout: position, passThrough, passColor and
// mapped bytes, colour-table length n (32-bit) and n bytes, width and height
// (32-bit; 0 x 0 for an image without pels), the 16-bit units up to and
// including the terminating zero unit.
struct kc_UISketchRleImage {
  kcVector<2> position;
  bool passThrough = false;
  unsigned char passColor = 0;
  bool mapped = false;
  std::vector<unsigned char> colorTable;
  kcRLEBuffer image;
  [[nodiscard]] bool operator==(const kc_UISketchRleImage&) const;
};

// Opcode 33: a general shape with a second colour. Layout: the colour, 16
// zero bytes, byte count n (32-bit), and n bytes: the archive of the held
// shape (which must be the one that shape stores).
struct kc_UISketchGenShape {
  kcColor color;
  kcGenShape shape;
  [[nodiscard]] bool operator==(const kc_UISketchGenShape&) const;
};

// Opcode 39: an annulus section with arrow-head flags. Layout: the section
// as 7, count n (32-bit), then the second flag block and the first, n bytes
// each.
struct kc_UISketchArrowSection {
  kcEllipseAnnulusSection section;
  std::vector<unsigned char> first;
  std::vector<unsigned char> second;
  [[nodiscard]] bool operator==(const kc_UISketchArrowSection&) const;
};

// Opcode 17 has no payload.
struct kc_UISketchNothing {
  [[nodiscard]] bool operator==(const kc_UISketchNothing&) const = default;
};

// Opcode 15: a nested sketch drawn at an offset. Layout: offset point, byte
// length (32-bit), the nested stream, which must parse whole (nesting at
// most kMaxDepth deep).
struct kc_UISketchNested {
  static constexpr int kMaxDepth = 16;
  kcVector<2> offset;
  kcUISketch sketch;
  [[nodiscard]] bool operator==(const kc_UISketchNested&) const;
};

kcArchive& operator||(kcArchive& ar, kc_UISketchArea& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchFill& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchPelOffset& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchOutline3d& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchArrow& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchText<char>& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchText<char16_t>& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchImage& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchRleImage& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchGenShape& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchArrowSection& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchNothing& v);
kcArchive& operator||(kcArchive& ar, kc_UISketchNested& v);

// --- the payload classes ---

// Each payload class and the value it holds: those that hold one foundation
// shape (their transfers in sketchshapes_p.h), the others (sketchop_values.cpp),
// and all of them but the wireframe block's two.
#define DISPC_SKETCH_SHAPE_PAYLOADS(X)       \
  X(Point, kcPoint)                          \
  X(PointIcon, kcPoint)                      \
  X(LineSeg, kcLineSeg)                      \
  X(Line, kcLine)                            \
  X(Circle, kcCircle)                        \
  X(Ellipse, kcEllipse)                      \
  X(EllipseArc, kcEllipseArc)                \
  X(EllipseAnnSect, kcEllipseAnnulusSection) \
  X(GenRect, kcGenRect)                      \
  X(GenAnn, kcGenAnnulus)                    \
  X(CoordAxes, kcCoordAxes)                  \
  X(DrawStart, kcPoint)                      \
  X(DrawTo, kcPoint)                         \
  X(AffineRect, kcAffineRectangle)           \
  X(Polygon, kcPolygon)                      \
  X(Rect, kcRect)                            \
  X(Cross, kcCross)                          \
  X(BezierCurve, kcBezierCurve)              \
  X(CubicSpline, kcCubicSpline)              \
  X(Polyline, kcPolyline)                    \
  X(Ellipse2, kcEllipse2)                    \
  X(EllipseArc2, kcEllipseArc2)              \
  X(ClipRect, kcRect)

#define DISPC_SKETCH_VALUE_PAYLOADS(X)        \
  X(String, kc_UISketchText<char>)            \
  X(PelBuf8, kc_UISketchImage)                \
  X(RleBuf, kc_UISketchRleImage)              \
  X(Sketch, kc_UISketchNested)                \
  X(Set, kc_UISketchArea)                     \
  X(SetAll, kc_UISketchNothing)               \
  X(SetComp, kc_UISketchArea)                 \
  X(Fill, kc_UISketchFill)                    \
  X(DrawToRelPels, kc_UISketchPelOffset)      \
  X(MoveToRelPels, kc_UISketchPelOffset)      \
  X(Outline3d, kc_UISketchOutline3d)          \
  X(Arrow, kc_UISketchArrow)                  \
  X(GenShape, kc_UISketchGenShape)            \
  X(UnicodeString, kc_UISketchText<char16_t>) \
  X(EllipseAnnSectArrowheadFlag, kc_UISketchArrowSection)

#define DISPC_SKETCH_PAYLOADS(X) DISPC_SKETCH_SHAPE_PAYLOADS(X) DISPC_SKETCH_VALUE_PAYLOADS(X)

// Every opcode once: its number, its payload class and its payload size in
// bytes (kVariable: read from the payload). It drives the factory, the
// parsers, the dump and the tests.
#define DISPC_SKETCH_OPCODES(X)                 \
  X(0, Point, 16)                               \
  X(1, PointIcon, 16)                           \
  X(2, LineSeg, 32)                             \
  X(3, Line, 32)                                \
  X(4, Circle, 24)                              \
  X(5, Ellipse, 48)                             \
  X(6, EllipseArc, 192)                         \
  X(7, EllipseAnnSect, 552)                     \
  X(8, GenRect, 152)                            \
  X(9, GenAnn, 360)                             \
  X(10, CoordAxes, 48)                          \
  X(11, String, kVariable)                      \
  X(12, PelBuf8, kVariable)                     \
  X(14, RleBuf, kVariable)                      \
  X(15, Sketch, kVariable)                      \
  X(16, Set, kVariable)                         \
  X(17, SetAll, 0)                              \
  X(18, SetComp, kVariable)                     \
  X(19, Fill, kVariable)                        \
  X(20, DrawStart, 16)                          \
  X(21, DrawTo, 16)                             \
  X(22, DrawToRelPels, 8)                       \
  X(23, MoveToRelPels, 8)                       \
  X(25, Outline3d, kVariable)                   \
  X(26, Arrow, 36)                              \
  X(27, AffineRect, 232)                        \
  X(28, Polygon, kVariable)                     \
  X(29, Circle, 24)                             \
  X(30, Ellipse, 48)                            \
  X(31, GenRect, 152)                           \
  X(32, Rect, 32)                               \
  X(33, GenShape, kVariable)                    \
  X(34, GenPoly, kVariable)                     \
  X(35, UnicodeString, kVariable)               \
  X(37, Cross, 32)                              \
  X(38, GenPoly, kVariable)                     \
  X(39, EllipseAnnSectArrowheadFlag, kVariable) \
  X(41, Wireframe, kVariable)                   \
  X(42, BezierCurve, 96)                        \
  X(43, CubicSpline, kVariable)                 \
  X(44, Polyline, kVariable)                    \
  X(45, Ellipse2, 40)                           \
  X(46, EllipseArc2, 65)                        \
  X(47, ClipRect, 32)

#define DISPC_SKETCH_DECLARE_PAYLOAD_(Name, Value)                                       \
  class kc_UISketchOp##Name final : public kc_UISketchOpOf<kc_UISketchOp##Name, Value> { \
   public:                                                                               \
    KC_DECLARE_PERSISTENT(kc_UISketchOp##Name);                                          \
    using kc_UISketchOpOf::kc_UISketchOpOf;                                              \
  };
DISPC_SKETCH_PAYLOADS(DISPC_SKETCH_DECLARE_PAYLOAD_)
#undef DISPC_SKETCH_DECLARE_PAYLOAD_

// The wireframe block (opcodes 34, 38 and 41): the transform (six 64-bit
// floats), the editable, open and direction-reversed flags and five zero
// bytes (56 bytes of state); a 32-bit flag, 1 when the block holds a
// wireframe; the vertex count n; per vertex its point, rounding radius and
// span (degrees) and the 32-byte length tolerance (nominal, minimum,
// maximum, the type as 32-bit, four zero bytes); then n points (the shares
// of the previous and next segment), n points (the forward and backward
// extensions) and n 64-bit floats (the labels); and a closing 32-bit flag,
// 1. In the older layout a tolerance is three 64-bit floats and the type,
// as the four-argument kcDimTol constructor takes them; nothing else
// differs.
template <class Self, class V>
class kc_UISketchOpBlock : public kc_UISketchOpOf<Self, V> {
 public:
  using kc_UISketchOpOf<Self, V>::kc_UISketchOpOf;
  long parseVersion0ByteStream(std::span<const unsigned char> bytes) override;
};

class kc_UISketchOpGenPoly final : public kc_UISketchOpBlock<kc_UISketchOpGenPoly, kcGenPoly> {
 public:
  KC_DECLARE_PERSISTENT(kc_UISketchOpGenPoly);
  using kc_UISketchOpBlock::kc_UISketchOpBlock;
};

class kc_UISketchOpWireframe final : public kc_UISketchOpBlock<kc_UISketchOpWireframe, kc2Wireframe> {
 public:
  KC_DECLARE_PERSISTENT(kc_UISketchOpWireframe);
  using kc_UISketchOpBlock::kc_UISketchOpBlock;
};

// --- the opcode table ---

namespace kcUISketchOps {
// A payload whose size is read from its bytes.
inline constexpr long kVariable = -1;
// Opcodes run from 0 to kCount - 1.
inline constexpr long kCount = 48;

struct Entry {
  long opcode;
  // The payload class's name, without its "kc_UISketchOp" prefix.
  const char* name;
  long size;
};

// The opcodes that head a payload, in order.
inline constexpr Entry kTable[] = {
#define DISPC_SKETCH_ENTRY_(op, Name, size) {op, #Name, size},
    DISPC_SKETCH_OPCODES(DISPC_SKETCH_ENTRY_)
#undef DISPC_SKETCH_ENTRY_
};

// The entry of an opcode, or null for a hole (13, 24, 36), 40 or a value
// outside 0 to 47.
[[nodiscard]] const Entry* find(long opcode) noexcept;
}  // namespace kcUISketchOps

// A new payload object for opcode, owned by the caller. InvalidUISketch for
// an opcode that heads no payload (13, 24, 36, 40, or outside 0 to 47).
[[nodiscard]] kc_UISketchOpData* kfCreateUISketchOpData(long opcode);

// Parses one record at offset: the header (and any properties record before
// it) into header, then the payload into a new object of the opcode's class,
// handed over through data when data is not null (deleted otherwise).
// Returns the bytes the record took. InvalidUISketch for a malformed record
// or an offset outside the stream.
long kfParseUISketch(const kcUISketch& sketch, long offset, kc_UISketchOpHeader& header,
                     kc_UISketchOpData** data);

// Walks a sketch record by record with one header and one payload object per
// opcode, made once: what playback, the archive and the dump use.
class kcUISketchParser {
 public:
  // version0: payloads in the older layout.
  explicit kcUISketchParser(std::span<const unsigned char> bytes, bool version0 = false);
  explicit kcUISketchParser(const kcUISketch& sketch) : kcUISketchParser(sketch.bytes()) {}

  // Parses the next record; false at the end of the stream. InvalidUISketch
  // for a malformed record, and then the parser stays where it was.
  bool next();

  // The record last parsed: its header, its payload and where it started.
  [[nodiscard]] const kc_UISketchOpHeader& header() const noexcept { return header_; }
  [[nodiscard]] kc_UISketchOpData& data() const noexcept { return *data_; }
  [[nodiscard]] long recordOffset() const noexcept { return recordAt_; }
  [[nodiscard]] long offset() const noexcept { return at_; }

 private:
  std::span<const unsigned char> bytes_;
  bool version0_;
  long at_ = 0;
  long recordAt_ = 0;
  kc_UISketchOpHeader header_;
  kc_UISketchOpData* data_ = nullptr;
  std::array<kcUISketchOpDataPtr, kcUISketchOps::kCount> cache_;
};

// Writes one line per record: offset, opcode and class, layer, colour, any
// properties record, the payload's fields. InvalidUISketch, after the lines of
// the records before it, for a malformed record.
void kfDumpUISketch(const kcUISketch& sketch, std::ostream& out);
