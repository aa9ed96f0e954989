// Graphic lists and the graphics-list library: records written from graphics,
// and records read back as graphics or drawn straight on a tablet.
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dispc/glist.h"
#include "dispc/glist_p.h"
#include "foundation/kmath/kmath_shape.h"

namespace {

kgr_point toKgr(const kcVector<2>& v) { return {v.x(), v.y()}; }
kcVector<2> fromKgr(const kgr_point& p) { return {p.x, p.y}; }

// --- graphics to records ---

kgr_xform toKgr(const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  return {m.element(0, 0), m.element(0, 1), m.element(1, 0), m.element(1, 1), x.trans().x(), x.trans().y()};
}

// Every class tested is final, so the cast matches the exact class only.
template <class G>
const G* as(const kcGraphic& g) {
  return dynamic_cast<const G*>(&g);
}

long appendPolyline(kgr_list* out, kgr_color color, const kcPolyline& p) {
  std::vector<kgr_point> vertices;
  vertices.reserve(p.size() + 1);
  for (const kcVector<2>& v : p.vertices()) vertices.push_back(toKgr(v));
  // The record has no closed flag: a closed outline repeats its first vertex.
  if (p.closed() && !vertices.empty()) vertices.push_back(vertices.front());
  return kgr_list_appendPolyline(out, color, static_cast<long>(vertices.size()), vertices.data());
}

long appendLineSegSet(kgr_list* out, kgr_color color, const kcLineSegSet& s) {
  std::vector<kgr_segment> segments;
  segments.reserve(s.size());
  for (const kcLineSeg& seg : s.segments()) segments.push_back({toKgr(seg.p1()), toKgr(seg.p2())});
  return kgr_list_appendLineSegSet(out, color, static_cast<long>(segments.size()), segments.data());
}

long appendText(kgr_list* out, kgr_color color, const kcGraphicText& g) {
  const kcUIFormat format = g.format();
  // A record holds a 32-bit font id; cutting a wider one would name another font.
  if (format.fontId() < std::numeric_limits<std::int32_t>::min() ||
      format.fontId() > std::numeric_limits<std::int32_t>::max())
    throw kcGraphic::BadParams(L"Font id does not fit a graphics-list record");
  const kgr_textFormat f{static_cast<std::int32_t>(format.fontId()), format.alignment()};
  const std::wstring& text = g.text();
  return kgr_list_appendTextEx(out, color, text.data(), static_cast<long>(text.size()),
                               toKgr(g.location().point()), kfColor(g.backgroundColor()), f,
                               toKgr(g.offset()));
}

// Appends the record of one graphic: KGR_OK without appending for a class
// the library has no record for, else the library's code. Only the pen
// colour of the props crosses over.
long appendRecord(kgr_list* out, const kcGraphic& g) {
  const kgr_color color = kfColor(g.color());
  if (const auto* icon = as<kcGraphicPointIcon>(g))
    return kgr_list_appendPoint(out, color, toKgr(icon->item().point()));
  if (const auto* seg = as<kcGraphicSimple<kcLineSeg>>(g))
    return kgr_list_appendLineSeg(out, color, toKgr(seg->item().p1()), toKgr(seg->item().p2()));
  if (const auto* line = as<kcGraphicSimple<kcLine>>(g))
    return kgr_list_appendLineDirPoint(out, color, toKgr(line->item().point()),
                                       toKgr(line->item().direction()));
  if (const auto* rect = as<kcGraphicWithFill<kcRect, kcGenRect>>(g))
    return kgr_list_appendRect(out, color, toKgr(rect->item().origin()), toKgr(rect->item().size()));
  if (const auto* gen = as<kcGraphicWithFill<kcGenRect, kcGenRect>>(g)) {
    const kgr_xform x = toKgr(gen->item().xform());
    return kgr_list_appendGenRect(out, color, &x, gen->item().roundX(), gen->item().roundY());
  }
  if (const auto* affine = as<kcGraphicSimple<kcAffineRectangle>>(g)) {
    kmath_shapeAffineRect corners{};
    kfThrowExceptionOnFailure(kmath_shapeAffineRect_initPoints(&corners, affine->item()));
    return kgr_list_appendShapeAffineRect(out, color, &corners);
  }
  if (const auto* poly = as<kcGraphicSimple<kcPolyline>>(g)) return appendPolyline(out, color, poly->item());
  if (const auto* set = as<kcGraphicSimple<kcLineSegSet>>(g))
    return appendLineSegSet(out, color, set->item());
  if (const auto* text = as<kcGraphicText>(g)) return appendText(out, color, *text);
  return KGR_OK;
}

// --- records to shapes ---
//
// The library writes degenerate geometry (a zero-length segment, a zero
// direction, a singular rectangle, an ellipse without an image, corners so
// far apart that the sides overflow) and leaves the judgement to the reader. Such a record is skipped, alone,
// on both paths: the list is well formed, so the records beside it are drawn, as a sketch skips a record
// without an image under its map. The decoders below give nothing for it.

// The shape make builds, or nothing when its class refuses the geometry:
// degenerate, or derived numbers past the range of doubles (the sides of an
// affine rectangle whose corners lie 1e308 apart).
template <class Make>
auto unlessRefused(Make&& make) -> std::optional<decltype(make())> {
  try {
    return make();
  } catch (const kcShapesError::DegenerateShape&) {
  } catch (const kcShapesError::BadParams&) {
  } catch (const kcShapesError::BadGeom&) {
  } catch (const kcShapesError::BadRadius&) {
  }
  return std::nullopt;
}

// The whole list has been validated, so a decoder fails only for want of memory.
void check(long code) { kfThrowExceptionOnFailure(code); }

std::optional<kcLineSeg> lineSegOf(const kgr_record& rec) {
  kgr_point a{}, b{};
  check(kgr_record_lineSeg(&rec, &a, &b));
  return unlessRefused([&] { return kcLineSeg(fromKgr(a), fromKgr(b)); });
}

std::optional<kcLine> lineOf(const kgr_record& rec) {
  kgr_point point{}, direction{};
  check(kgr_record_line(&rec, &point, &direction));
  return unlessRefused([&] { return kcLine(fromKgr(point), fromKgr(direction)); });
}

// Never degenerate: a negative size is the empty rectangle, as kcRect has it.
std::optional<kcRect> rectOf(const kgr_record& rec) {
  kgr_point origin{}, size{};
  check(kgr_record_rect(&rec, &origin, &size));
  return kcRect(fromKgr(origin), fromKgr(size));
}

std::optional<kcGenRect> genRectOf(const kgr_record& rec) {
  kgr_xform x{};
  double roundX = 0, roundY = 0;
  check(kgr_record_genRect(&rec, &x, &roundX, &roundY));
  const kcXform<2> xform(kcMatrix<2>(x.a00, x.a01, x.a10, x.a11), kcVector<2>(x.tx, x.ty));
  return unlessRefused([&] { return kcGenRect(xform, roundX, roundY); });
}

// Circles and ellipses under a transform alike, as the image to draw.
std::optional<kcEllipse2> ellipseOf(const kgr_record& rec) {
  kmath_ellipse e{};
  const long code = kgr_record_ellipseImage(&rec, &e);
  // No image: a radius not > 0, a collapsing map, or one that overflows.
  if (code == KGR_ERR_BAD_GEOMETRY || code == KGR_ERR_NOT_FINITE) return std::nullopt;
  check(code);
  return unlessRefused([&] {
    return kcEllipse2(e.radiusX, e.radiusY, kcRadian(e.rotation), kcVector<2>(e.centreX, e.centreY));
  });
}

// A polyline of four or more vertices whose last repeats its first is read
// as closed without the repeat: that is how a closed one is written, so
// every closed polyline comes back as it was (one whose own vertices end
// where they start gains and loses the same repeat). An open polyline
// written that way comes back closed, the same outline. Fewer vertices stay
// open: three with the first repeated would close to two, which is no outline.
std::optional<kcPolyline> polylineOf(const kgr_record& rec) {
  std::vector<kgr_point> read;
  check(kgr_record_polyline(&rec, &read));
  std::vector<kcVector<2>> vertices;
  vertices.reserve(read.size());
  for (const kgr_point& p : read) vertices.push_back(fromKgr(p));
  constexpr std::size_t kMinClosedRecord = 4;
  const bool closed = vertices.size() >= kMinClosedRecord && vertices.front() == vertices.back();
  if (closed) vertices.pop_back();
  return unlessRefused([&] { return kcPolyline(std::move(vertices), closed); });
}

// The corners 0, 1 and 3 give the origin and the two sides.
std::optional<kcAffineRectangle> affineRectOf(const kgr_record& rec) {
  kmath_shapeAffineRect r{};
  check(kgr_record_affineRect(&rec, &r));
  const kcVector<2> c0(r.corners[0].x, r.corners[0].y), c1(r.corners[1].x, r.corners[1].y),
      c3(r.corners[3].x, r.corners[3].y);
  return unlessRefused([&] { return kcAffineRectangle(c0, c1 - c0, c3 - c0); });
}

// One degenerate segment skips the whole set, as it would any other record.
std::optional<kcLineSegSet> lineSegSetOf(const kgr_record& rec) {
  std::vector<kgr_segment> read;
  check(kgr_record_lineSegSet(&rec, &read));
  return unlessRefused([&] {
    std::vector<kcLineSeg> segments;
    segments.reserve(read.size());
    for (const kgr_segment& s : read) segments.emplace_back(fromKgr(s.p1), fromKgr(s.p2));
    return kcLineSegSet(std::move(segments));
  });
}

// Text has no geometry to refuse; it is built as its graphic on both paths
// (see TabletSink::text).
kcPtrHandle<kcGraphicText> textOf(const kgr_record& rec, const kcColor& color) {
  kgr_text t;
  check(kgr_record_text(&rec, &t));
  // The reader hands over a lone surrogate as it stands, which no writer
  // takes back: it becomes the replacement character.
  for (wchar_t& c : t.text)
    if ((c >= 0xd800 && c <= 0xdfff) || static_cast<std::uint32_t>(c) > 0x10ffff) c = 0xfffd;
  // The alignment is kept as read; one outside 0 to 8 aligns nothing, as
  // kcUIFormat treats it.
  const kcUIFormat format(t.format.fontId, static_cast<kcUIFormat::Alignment>(t.format.alignment));
  return kfMakeHandle<kcGraphicText>(t.text, kcPoint(fromKgr(t.location)), color, kfColor(t.background),
                                     format, fromKgr(t.offset));
}

// --- the record walker ---

// Makes the graphics, handing them to the list only once every record has
// made its own, so that a failure appends nothing.
class GraphicSink {
 public:
  template <class G, class T>
  void shape(const T& s, const kcGraphicProps& props) {
    items_.push_back(kfMakeHandle<G>(s, props));
  }
  void pointIcon(const kcPoint& p, const kcGraphicProps& props) {
    items_.push_back(kfMakeHandle<kcGraphicPointIcon>(p, props));
  }
  void text(kcGraphicPtr g) { items_.push_back(std::move(g)); }

  void appendTo(kcGraphicList& out) {
    std::vector<kcGraphicPtr>& items = out.items();
    // Only the reserve can throw; copying handles cannot.
    items.reserve(items.size() + items_.size());
    items.insert(items.end(), items_.begin(), items_.end());
  }

 private:
  std::vector<kcGraphicPtr> items_;
};

// Draws each shape with the tablet call for its class, as its graphic would.
class TabletSink {
 public:
  TabletSink(kcUITablet& t, kcUITablet::Layers layer) : t_(t), layer_(layer) {}

  template <class G, class T>
  void shape(const T& s, const kcGraphicProps& props) {
    t_.draw(s, props, layer_);
  }
  void pointIcon(const kcPoint& p, const kcGraphicProps& props) { t_.drawPointIcon(p, props, layer_); }
  // Text with an offset draws through the pen and a pen anchor only the text
  // graphic reaches; drawing the graphic keeps this path and a drawn list alike.
  void text(kcGraphicPtr g) {
    kcGraphicList one;
    one.append(std::move(g));
    one.draw(t_, layer_);
  }

 private:
  kcUITablet& t_;
  kcUITablet::Layers layer_;
};

template <class G, class Sink, class T>
void emit(Sink& sink, const std::optional<T>& shape, const kcGraphicProps& props) {
  if (shape) sink.template shape<G>(*shape, props);
}

template <class Sink>
void walkRecord(const kgr_record& rec, Sink& sink) {
  const kcColor color = kfColor(rec.color);
  const kcGraphicProps props = kfGraphicPen(color);
  switch (rec.type) {
    case KGR_LINESEG:
      return emit<kcGraphicSimple<kcLineSeg>>(sink, lineSegOf(rec), props);
    case KGR_LINE:
      return emit<kcGraphicSimple<kcLine>>(sink, lineOf(rec), props);
    case KGR_RECT:
      return emit<kcGraphicWithFill<kcRect, kcGenRect>>(sink, rectOf(rec), props);
    case KGR_GENRECT:
      return emit<kcGraphicWithFill<kcGenRect, kcGenRect>>(sink, genRectOf(rec), props);
    case KGR_CIRCLE:
    case KGR_ELLIPSE:
      return emit<kcGraphicWithFill<kcEllipse2, kcEllipse2>>(sink, ellipseOf(rec), props);
    case KGR_POLYLINE:
      return emit<kcGraphicSimple<kcPolyline>>(sink, polylineOf(rec), props);
    case KGR_AFFINERECT:
      return emit<kcGraphicSimple<kcAffineRectangle>>(sink, affineRectOf(rec), props);
    case KGR_TEXT:
      return sink.text(textOf(rec, color));
    case KGR_LINESEGSET:
      return emit<kcGraphicSimple<kcLineSegSet>>(sink, lineSegSetOf(rec), props);
    default: {
      // Type 0, and every type the library does not know, is a point marker.
      kgr_point p{};
      check(kgr_record_point(&rec, &p));
      return sink.pointIcon(kcPoint(fromKgr(p)), props);
    }
  }
}

// Validates the whole list before the first record reaches the sink, so a
// count or length that runs past the end is refused with nothing done.
template <class Sink>
void walkRecords(const kgr_list* in, Sink& sink) {
  // No records to read, whatever the block holds.
  if (!in || in->count < 1) return;
  kfThrowExceptionOnFailure(kgr_list_validate(in));
  std::size_t offset = 0;
  for (std::int32_t i = 0; i < in->count; ++i) {
    kgr_record rec{};
    check(kgr_list_readRecord(in, &offset, &rec));
    walkRecord(rec, sink);
  }
}

}  // namespace

// --- the graphics-list library ---

void kfGraphicListAppend(kgr_list* out, const kcGraphicList& in) {
  for (const kcGraphicPtr& item : in.items()) {
    if (!item) throw kcBadPointer();
    kfThrowExceptionOnFailure(appendRecord(out, *item));
  }
}

void kfGraphicListAppend(kcGraphicList& out, const kgr_list* in) {
  GraphicSink sink;
  walkRecords(in, sink);
  sink.appendTo(out);
}

void kfUITabletDraw(kcUITablet& t, const kgr_list* in, kcUITablet::Layers layer) {
  TabletSink sink(t, layer);
  walkRecords(in, sink);
}
