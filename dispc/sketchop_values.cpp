// Sketch payloads that are not a single foundation shape: areas, fills, pen
// moves, frames, arrows, text, images, general shapes, annulus sections with
// arrow-head flags, nested sketches and the wireframe block.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "dispc/sketchio_p.h"
#include "dispc/smd/polyprivate.h"

namespace {

using kcSketchIO::Reader;

// The pel values of records are 32-bit; a larger one cannot be recorded.
std::int32_t narrow(long v) {
  if (v < std::numeric_limits<std::int32_t>::min() || v > std::numeric_limits<std::int32_t>::max())
    throw kcUIError::BadParams();
  return static_cast<std::int32_t>(v);
}

// Record size of a client rectangle and the bytes its fields take.
constexpr std::size_t kRectBytes = 88;
constexpr std::size_t kRectFields = 32;
constexpr std::size_t kPointBytes = 16;
// A transform of an image record takes 56 bytes.
constexpr std::size_t kImageXformPad = 8;
// Vertex entries of the wireframe block: point, radius, span, tolerance; then
// the two points and the label of the arrays.
constexpr std::size_t kVertexBytes = 64 + 16 + 16 + 8;
constexpr std::size_t kBlockStatePad = 5;
constexpr std::size_t kTolerancePad = 4;

// Nesting depth of the nested sketch being parsed on this thread.
thread_local int gNestedDepth = 0;

template <class IO>
void transferArea(IO& io, kc_UISketchArea& v) {
  bool pels = v.pels;
  io("pels", pels);
  if (pels) {
    std::int32_t d[4] = {narrow(v.pelRect.left()), narrow(v.pelRect.top()), narrow(v.pelRect.width()),
                         narrow(v.pelRect.height())};
    io("left", d[0]);
    io("top", d[1]);
    io("width", d[2]);
    io("height", d[3]);
    if constexpr (IO::kLoading) {
      v.pelRect = kcUIRect(d[0], d[1], d[2], d[3]);
      // A rectangle that normalises to another would not write back as read.
      if (v.pelRect.left() != d[0] || v.pelRect.top() != d[1] || v.pelRect.width() != d[2] ||
          v.pelRect.height() != d[3])
        Reader::invalid();
    }
  } else {
    kcVector<2> origin = v.rect.origin();
    kcVector<2> size = v.rect.size();
    io("origin", origin);
    io("size", size);
    io.zeros(kRectBytes - kRectFields);
    if constexpr (IO::kLoading) {
      v.rect = kcRect(origin, size);
      if (!kcSketchIO::sameBits(v.rect.origin(), origin) || !kcSketchIO::sameBits(v.rect.size(), size))
        Reader::invalid();
    }
  }
  if constexpr (IO::kLoading) v.pels = pels;
}

template <class IO>
void transferFormat(IO& io, kcUIFormat& f) {
  std::int32_t font = narrow(f.fontId());
  std::int32_t alignment = f.alignment();
  io("font", font);
  io("alignment", alignment);
  if constexpr (IO::kLoading) f = kcUIFormat(font, static_cast<kcUIFormat::Alignment>(alignment));
}

// Units up to a zero unit: the text, which holds none, then the zero.
template <class IO, class Char>
void transferText(IO& io, std::basic_string<Char>& text) {
  using Unit = std::conditional_t<sizeof(Char) == 1, std::uint8_t, std::uint16_t>;
  if constexpr (IO::kLoading) {
    text.clear();
    for (Unit u = 0;;) {
      io("text", u);
      if (u == 0) break;
      text.push_back(static_cast<Char>(u));
    }
  } else if constexpr (std::is_same_v<IO, kcSketchIO::Dumper>) {
    std::ostream& out = io.out();
    out << " text=\"";
    for (Char c : text) {
      const auto u = static_cast<unsigned>(static_cast<Unit>(c));
      if (u >= 0x20 && u < 0x7f && u != '"' && u != '\\')
        out << static_cast<char>(u);
      else
        out << "\\u" << std::hex << u << std::dec;
    }
    out << '"';
  } else {
    if (text.find(Char{}) != std::basic_string<Char>::npos) throw kcUIError::BadParams();
    for (Char c : text) {
      const Unit u = static_cast<Unit>(c);
      io("text", u);
    }
    const Unit zero = 0;
    io("text", zero);
  }
}

// Bytes under a 32-bit count.
template <class IO>
void transferBytes(IO& io, const char* name, std::vector<unsigned char>& bytes) {
  std::uint32_t n = static_cast<std::uint32_t>(bytes.size());
  io.count(name, n, 1);
  if constexpr (IO::kLoading) bytes.resize(n);
  io.units(name, bytes.data(), bytes.size());
}

// A shape's archive bytes.
std::vector<std::uint8_t> archived(const kcGenShape& s) {
  kcMemArchive ar;
  kcShapePtr held = s.shape();
  ar || held;
  return ar.bytes();
}

}  // namespace

// --- areas, fills, pens, frames, arrows ---

template <class IO>
void sketchTransfer(IO& io, kc_UISketchArea& v) {
  transferArea(io, v);
}

template <class IO>
void sketchTransfer(IO& io, kc_UISketchFill& v) {
  bool pels = v.pels;
  io("pels", pels);
  if (pels) {
    io("x", v.pelX);
    io("y", v.pelY);
  } else {
    io("seed", v.seed);
  }
  io("boundary", v.boundary);
  io("type", v.fillType);
  if constexpr (IO::kLoading) v.pels = pels;
}

template <class IO>
void sketchTransfer(IO& io, kc_UISketchPelOffset& v) {
  io("dx", v.dx);
  io("dy", v.dy);
}

template <class IO>
void sketchTransfer(IO& io, kc_UISketchOutline3d& v) {
  transferArea(io, v.area);
  io("light", v.light);
  io("dark", v.dark);
  io("width", v.width);
}

template <class IO>
void sketchTransfer(IO& io, kc_UISketchArrow& v) {
  io("tip", v.tip);
  io("direction", v.direction);
  io("length", v.length);
}

template <class IO>
void sketchTransfer(IO&, kc_UISketchNothing&) {}

// --- text ---

namespace {
template <class IO, class Char>
void transferTextRecord(IO& io, kc_UISketchText<Char>& v) {
  io("at", v.position);
  io("background", v.background);
  transferFormat(io, v.format);
  transferText(io, v.text);
}
}  // namespace

template <class IO>
void sketchTransfer(IO& io, kc_UISketchText<char>& v) {
  transferTextRecord(io, v);
}

template <class IO>
void sketchTransfer(IO& io, kc_UISketchText<char16_t>& v) {
  transferTextRecord(io, v);
}

// --- images ---

template <class IO>
void sketchTransfer(IO& io, kc_UISketchImage& v) {
  io("at", v.position);
  io("passThrough", v.passThrough);
  io("passColor", v.passColor);
  kcXform<2> x = v.image.imageFromClientXform();
  io("xform", x);
  io.zeros(kImageXformPad);
  io("offsetX", v.offsetX);
  io("offsetY", v.offsetY);
  std::int32_t width = narrow(v.image.width());
  std::int32_t height = narrow(v.image.height());
  io("width", width);
  io("height", height);
  io("mapped", v.mapped);
  if constexpr (IO::kLoading) {
    // Checked before the image is allocated: the pels must follow, and an
    // image without pels is 0 x 0 (a size of no pels would only cost rows to
    // walk).
    if (width < 0 || height < 0 || (width == 0) != (height == 0)) Reader::invalid();
    if (width > 0 && static_cast<std::size_t>(height) > io.remaining() / static_cast<std::size_t>(width))
      Reader::invalid();
    v.image = kcPelBuffer<unsigned char>(width, height);
    v.image.imageFromClientXform(x);
    if (width > 0)
      for (long y = 0; y < height; ++y) io.units("pels", v.image.row(y), static_cast<std::size_t>(width));
  } else if constexpr (std::is_same_v<IO, kcSketchIO::Dumper>) {
    io.units("pels", nullptr, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  } else if (width > 0) {
    for (long y = 0; y < height; ++y) io.units("pels", v.image.row(y), static_cast<std::size_t>(width));
  }
}

template <class IO>
void sketchTransfer(IO& io, kc_UISketchRleImage& v) {
  io("at", v.position);
  io("passThrough", v.passThrough);
  io("passColor", v.passColor);
  io("mapped", v.mapped);
  transferBytes(io, "colors", v.colorTable);
  std::int32_t width = narrow(v.image.width());
  std::int32_t height = narrow(v.image.height());
  io("width", width);
  io("height", height);
  std::vector<std::uint16_t> units = v.image.units();
  if constexpr (IO::kLoading) {
    units.clear();
    for (std::uint16_t u = 1; u != 0;) {
      io("unit", u);
      units.push_back(u);
    }
    // An image without pels is 0 x 0, as for opcode 12.
    if ((width == 0) != (height == 0)) Reader::invalid();
    v.image = kcRLEBuffer(width, height, std::move(units));
  } else if constexpr (std::is_same_v<IO, kcSketchIO::Dumper>) {
    io.units("units", nullptr, units.size());
  } else {
    // A null buffer still ends in the zero unit.
    if (units.empty()) units.push_back(0);
    for (std::uint16_t& u : units) io("unit", u);
  }
}

// --- general shapes ---

template <class IO>
void sketchTransfer(IO& io, kc_UISketchGenShape& v) {
  io("color", v.color);
  io.zeros(kPointBytes);
  std::vector<unsigned char> bytes;
  if constexpr (!IO::kLoading) bytes = archived(v.shape);
  transferBytes(io, "shape", bytes);
  if constexpr (IO::kLoading) {
    kcMemArchive ar(bytes);
    kcShapePtr held;
    ar || held;
    if (!ar.atEnd()) Reader::invalid();
    v.shape = held ? kcGenShape(held) : kcGenShape();
    // Only the bytes the shape itself stores write back as they were read.
    if (archived(v.shape) != bytes) Reader::invalid();
  }
}

// --- annulus sections with arrow-head flags ---

template <class IO>
void sketchTransfer(IO& io, kc_UISketchArrowSection& v) {
  sketchTransfer(io, v.section);
  if (v.first.size() != v.second.size()) throw kcUIError::BadParams();
  std::uint32_t n = static_cast<std::uint32_t>(v.first.size());
  io.count("flags", n, 2);
  if constexpr (IO::kLoading) {
    v.first.resize(n);
    v.second.resize(n);
  }
  io.units("second", v.second.data(), n);
  io.units("first", v.first.data(), n);
}

// --- nested sketches ---

template <class IO>
void sketchTransfer(IO& io, kc_UISketchNested& v) {
  io("offset", v.offset);
  std::uint32_t n = static_cast<std::uint32_t>(v.sketch.length());
  io.count("bytes", n, 1);
  if constexpr (IO::kLoading) {
    if (gNestedDepth >= kc_UISketchNested::kMaxDepth) Reader::invalid();
    kcUISketch nested;
    io.units("sketch", nested.append(static_cast<long>(n)), n);
    // The nested stream must parse whole.
    ++gNestedDepth;
    try {
      for (kcUISketchParser records(nested); records.next();) {
      }
    } catch (...) {
      --gNestedDepth;
      throw;
    }
    --gNestedDepth;
    v.sketch = nested;
  } else {
    io.units("sketch", v.sketch.data(), n);
  }
}

// --- the wireframe block ---

template <class IO, class V>
void sketchTransferBlock(IO& io, V& v, bool version0) {
  const kcSMDGDPoly& data = v.polygonData();
  kcXform<2> x = v.xform();
  bool editable = v.isEditable();
  bool open = data.isOpen();
  bool reversed = data.isDirectionReversed();
  io("xform", x);
  io("editable", editable);
  io("open", open);
  io("reversed", reversed);
  io.zeros(kBlockStatePad);
  constexpr bool kWireframe = std::is_same_v<V, kc2Wireframe>;
  std::int32_t wireframe = kWireframe ? 1 : 0;
  io("wireframe", wireframe);
  if constexpr (IO::kLoading)
    if (wireframe != (kWireframe ? 1 : 0)) Reader::invalid();

  std::vector<kcSMDGDPolyVertex> vertices = data.vertices();
  std::uint32_t n = static_cast<std::uint32_t>(vertices.size());
  io.count("vertices", n, kVertexBytes);
  if constexpr (IO::kLoading) vertices.resize(n);
  // Read into plain fields first: the vertex's own checks run at the end.
  struct Fields {
    kcVector<2> point, shares, extensions;
    double radius = 0, span = 0, label = -1;
    double nom = -1, min = -1, max = -1;
    std::uint32_t type = 0;
  };
  std::vector<Fields> fields(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    const kcSMDGDPolyVertex& s = vertices[i];
    Fields& f = fields[i];
    if constexpr (!IO::kLoading) {
      f = {s.point(),
           kcVector<2>(s.percentPrevSegment(), s.percentNextSegment()),
           kcVector<2>(s.forwardPercExtension(), s.backwardPercExtension()),
           s.vertexRadius(),
           s.segmentAngleSpan().toDouble(),
           static_cast<double>(s.subModelLabel()),
           s.segmentLengthTol().nomDim(),
           s.segmentLengthTol().minTol(),
           s.segmentLengthTol().maxTol(),
           s.segmentLengthTol().tolType()};
    }
    io("point", f.point);
    io("radius", f.radius);
    io("span", f.span);
    io("nominal", f.nom);
    io("min", f.min);
    io("max", f.max);
    io("tolType", f.type);
    // The older layout left these bytes as they happened to be.
    if constexpr (IO::kLoading) {
      if (version0) {
        std::uint32_t unused = 0;
        io("unused", unused);
      } else {
        io.zeros(kTolerancePad);
      }
    } else {
      io.zeros(kTolerancePad);
    }
  }
  for (Fields& f : fields) io("shares", f.shares);
  for (Fields& f : fields) io("extensions", f.extensions);
  for (Fields& f : fields) io("label", f.label);
  std::int32_t end = 1;
  io("end", end);
  if constexpr (IO::kLoading) {
    if (end != 1) Reader::invalid();
    for (std::uint32_t i = 0; i < n; ++i) {
      const Fields& f = fields[i];
      // A label is a whole 32-bit number, written as a float; -0 would not
      // write back as read.
      // The numbers an archive would refuse are refused here too.
      const double numbers[] = {f.point.x(),     f.point.y(), f.radius,     f.span,       f.nom,
                                f.min,           f.max,       f.shares.x(), f.shares.y(), f.extensions.x(),
                                f.extensions.y()};
      for (double d : numbers)
        if (!std::isfinite(d)) Reader::invalid();
      const bool whole = f.label == std::trunc(f.label) && !(f.label == 0 && std::signbit(f.label));
      if (!whole || f.label < std::numeric_limits<std::int32_t>::min() ||
          f.label > std::numeric_limits<std::int32_t>::max())
        Reader::invalid();
      kcSMDGDPolyVertex vertex(f.point, f.radius, kcDegree(f.span), f.shares.x(), f.shares.y(),
                               static_cast<long>(f.label),
                               kcDimTol(f.nom, f.min, f.max, static_cast<kcDimTol::TolType>(f.type)));
      vertex.forwardPercExtension(f.extensions.x());
      vertex.backwardPercExtension(f.extensions.y());
      vertices[i] = vertex;
    }
    kcSMDGDPoly poly;
    kcSMDGDPolyPrivate::assignVertices_(poly, std::move(vertices), open);
    poly.vertices(poly.vertices());  // validated whole
    if (reversed) poly.toggleDirection();
    const kcGenPoly loaded(poly, x, editable);
    if constexpr (kWireframe)
      v = kc2Wireframe(loaded);
    else
      v = loaded;
  }
}

template <class IO>
void sketchTransfer(IO& io, kcGenPoly& v) {
  sketchTransferBlock(io, v, false);
}

template <class IO>
void sketchTransfer(IO& io, kc2Wireframe& v) {
  sketchTransferBlock(io, v, false);
}

// --- comparisons ---

bool kc_UISketchArea::operator==(const kc_UISketchArea& o) const {
  return pels == o.pels && (pels ? pelRect == o.pelRect : rect == o.rect);
}

bool kc_UISketchFill::operator==(const kc_UISketchFill& o) const {
  if (pels != o.pels || !(boundary == o.boundary) || fillType != o.fillType) return false;
  return pels ? pelX == o.pelX && pelY == o.pelY : seed == o.seed;
}

bool kc_UISketchOutline3d::operator==(const kc_UISketchOutline3d& o) const {
  return area == o.area && light == o.light && dark == o.dark && width == o.width;
}

bool kc_UISketchImage::operator==(const kc_UISketchImage& o) const {
  if (!(position == o.position) || passThrough != o.passThrough || passColor != o.passColor ||
      mapped != o.mapped || offsetX != o.offsetX || offsetY != o.offsetY ||
      image.width() != o.image.width() || image.height() != o.image.height() ||
      !(image.imageFromClientXform() == o.image.imageFromClientXform()))
    return false;
  for (long y = 0; y < image.height(); ++y)
    if (!std::equal(image.row(y), image.row(y) + image.width(), o.image.row(y))) return false;
  return true;
}

bool kc_UISketchRleImage::operator==(const kc_UISketchRleImage& o) const {
  return position == o.position && passThrough == o.passThrough && passColor == o.passColor &&
         mapped == o.mapped && colorTable == o.colorTable && image == o.image;
}

bool kc_UISketchGenShape::operator==(const kc_UISketchGenShape& o) const {
  return color == o.color && archived(shape) == archived(o.shape);
}

bool kc_UISketchArrowSection::operator==(const kc_UISketchArrowSection& o) const {
  return section == o.section && first == o.first && second == o.second;
}

bool kc_UISketchNested::operator==(const kc_UISketchNested& o) const {
  return offset == o.offset && sketch == o.sketch;
}

// --- archive transfers ---

kcArchive& operator||(kcArchive& ar, kc_UISketchArea& v) {
  ar || v.pels;
  if (v.pels) return ar || v.pelRect;
  return ar || v.rect;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchFill& v) {
  ar || v.pels;
  if (v.pels)
    ar || v.pelX || v.pelY;
  else
    ar || v.seed;
  return ar || v.boundary || v.fillType;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchPelOffset& v) { return ar || v.dx || v.dy; }

kcArchive& operator||(kcArchive& ar, kc_UISketchOutline3d& v) {
  return ar || v.area || v.light || v.dark || v.width;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchArrow& v) { return ar || v.tip || v.direction || v.length; }

namespace {
template <class Char>
kcArchive& transferTextValue(kcArchive& ar, kc_UISketchText<Char>& v) {
  ar || v.position || v.background || v.format;
  if constexpr (sizeof(Char) == 1) {
    ar || v.text;
  } else {
    std::vector<std::uint16_t> units(v.text.begin(), v.text.end());
    ar || units;
    if (ar.isLoading()) v.text.assign(units.begin(), units.end());
  }
  if (ar.isLoading() && v.text.find(Char{}) != std::basic_string<Char>::npos)
    throw kcArchive::Corrupt(L"sketch text holding a zero unit");
  return ar;
}
}  // namespace

kcArchive& operator||(kcArchive& ar, kc_UISketchText<char>& v) { return transferTextValue(ar, v); }
kcArchive& operator||(kcArchive& ar, kc_UISketchText<char16_t>& v) { return transferTextValue(ar, v); }

kcArchive& operator||(kcArchive& ar, kc_UISketchImage& v) {
  // The record's own bytes: they are checked as a stream is.
  kcUISketch bytes;
  std::vector<unsigned char> record;
  if (ar.isStoring()) {
    kc_UISketchOpPelBuf8::write(bytes, v);
    record.assign(bytes.data(), bytes.data() + bytes.length());
  }
  ar || record;
  if (ar.isLoading()) {
    try {
      kcSketchIO::Reader in(record);
      kc_UISketchImage loaded =
          sketchLoad<kc_UISketchImage>([&](kc_UISketchImage& i) { sketchTransfer(in, i); });
      if (in.remaining() != 0) throw kcArchive::Corrupt(L"sketch image with bytes to spare");
      v = loaded;
    } catch (const kcUIError::InvalidUISketch&) {
      throw kcArchive::Corrupt(L"sketch image that does not parse");
    }
  }
  return ar;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchRleImage& v) {
  ar || v.position || v.passThrough || v.passColor || v.mapped || v.colorTable || v.image;
  return ar;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchGenShape& v) {
  kcShapePtr held = v.shape.shape();
  ar || v.color || held;
  if (ar.isLoading()) {
    try {
      v.shape = held ? kcGenShape(held) : kcGenShape();
    } catch (const kcException& e) {
      throw kcArchive::Corrupt(L"general shape refused: " + e.message());
    }
  }
  return ar;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchArrowSection& v) {
  ar || v.section || v.first || v.second;
  if (ar.isLoading() && v.first.size() != v.second.size())
    throw kcArchive::Corrupt(L"arrow-head flag blocks of different lengths");
  return ar;
}

kcArchive& operator||(kcArchive& ar, kc_UISketchNothing&) { return ar; }

// A nested sketch is not archived: its records would need a transfer of their own.
kcArchive& operator||(kcArchive&, kc_UISketchNested&) { throw kcUIError::NotImplemented(); }

namespace {
// The polygon's archive form, then the vertices' extension percentages.
template <class V>
void archiveBlock(kcArchive& ar, V& v) {
  std::vector<double> extensions;
  for (const kcSMDGDPolyVertex& vertex : v.polygonData().vertices()) {
    extensions.push_back(vertex.forwardPercExtension());
    extensions.push_back(vertex.backwardPercExtension());
  }
  ar || v || extensions;
  if (ar.isStoring()) return;
  std::vector<kcSMDGDPolyVertex> vertices = v.polygonData().vertices();
  if (extensions.size() != 2 * vertices.size()) throw kcArchive::Corrupt(L"extensions of the wrong count");
  try {
    for (std::size_t i = 0; i < vertices.size(); ++i) {
      vertices[i].forwardPercExtension(extensions[2 * i]);
      vertices[i].backwardPercExtension(extensions[2 * i + 1]);
    }
    kcSMDGDPoly poly(v.polygonData());
    kcSMDGDPolyPrivate::assignVertices_(poly, std::move(vertices), v.isOpen());
    poly.vertices(poly.vertices());
    const kcGenPoly loaded(poly, v.xform(), v.isEditable());
    if constexpr (std::is_same_v<V, kc2Wireframe>)
      v = kc2Wireframe(loaded);
    else
      v = loaded;
  } catch (const kcArchive::Corrupt&) {
    throw;
  } catch (const kcException& e) {
    throw kcArchive::Corrupt(L"extension percentages refused: " + e.message());
  }
}
}  // namespace

void sketchArchive(kcArchive& ar, kcGenPoly& v) { archiveBlock(ar, v); }
void sketchArchive(kcArchive& ar, kc2Wireframe& v) { archiveBlock(ar, v); }

// --- the payload classes ---

#define DISPC_SKETCH_DEFINE_(Name, Value)                     \
  template class kc_UISketchOpOf<kc_UISketchOp##Name, Value>; \
  KC_DEFINE_PERSISTENT(kc_UISketchOp##Name)
DISPC_SKETCH_VALUE_PAYLOADS(DISPC_SKETCH_DEFINE_)
DISPC_SKETCH_DEFINE_(GenPoly, kcGenPoly)
DISPC_SKETCH_DEFINE_(Wireframe, kc2Wireframe)
#undef DISPC_SKETCH_DEFINE_

template class kc_UISketchOpBlock<kc_UISketchOpGenPoly, kcGenPoly>;
template class kc_UISketchOpBlock<kc_UISketchOpWireframe, kc2Wireframe>;
