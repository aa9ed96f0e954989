// The Cairo device: each layer a list of drawing calls, played onto a raster
// for pels and PNG, onto a vector surface for SVG and PDF.
#include "scopes/cairo/cairoscope.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

#include "dispc/uierror.h"
#include "foundation/bytes.h"
#include "imageio/imageio_p.h"

namespace {

constexpr long kMaxSide = 32767;
constexpr unsigned char kPassSlot = 243;
// Arrow head arms, off the shaft.
constexpr double kArrowArmAngle = std::numbers::pi / 6.0;

struct Rgba {
  double r = 0.0, g = 0.0, b = 0.0, a = 0.0;
};

// Owns a Cairo surface or context.
struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const noexcept { cairo_surface_destroy(s); }
};
struct ContextDeleter {
  void operator()(cairo_t* c) const noexcept { cairo_destroy(c); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using SharedSurface = std::shared_ptr<cairo_surface_t>;
using Context = std::unique_ptr<cairo_t, ContextDeleter>;

SharedSurface shared(cairo_surface_t* s) { return SharedSurface(s, SurfaceDeleter()); }

// --- colours ---

Rgba opaque(unsigned char r, unsigned char g, unsigned char b) {
  return {r / 255.0, g / 255.0, b / 255.0, 1.0};
}

const kcColor* const kStock[] = {&kcColor::black,  &kcColor::dkGrey, &kcColor::grey,    &kcColor::ltGrey,
                                 &kcColor::white,  &kcColor::red,    &kcColor::dkRed,   &kcColor::orange,
                                 &kcColor::yellow, &kcColor::green,  &kcColor::dkGreen, &kcColor::cyan,
                                 &kcColor::blue,   &kcColor::purple, &kcColor::magenta};

Rgba slot(unsigned index) {
  if (index == kPassSlot) return {};
  for (const kcColor* stock : kStock)
    if (stock->index() == index)
      return opaque(stock->rgbStruct().r(), stock->rgbStruct().g(), stock->rgbStruct().b());
  const auto grey = static_cast<unsigned char>(index);
  return opaque(grey, grey, grey);
}

Rgba rgba(const kcColor& c) {
  if (c.isIndexColor()) return slot(c.index());
  const kcRGB& rgb = c.rgbStruct();
  return opaque(rgb.r(), rgb.g(), rgb.b());
}

std::uint32_t argb(const Rgba& c) {
  // Premultiplied, as Cairo keeps its pels; only opaque or clear here.
  if (c.a == 0.0) return 0;
  const auto byte = [](double v) { return static_cast<std::uint32_t>(std::lround(v * 255.0)); };
  return 0xff000000u | byte(c.r) << 16 | byte(c.g) << 8 | byte(c.b);
}

void source(cairo_t* cr, const Rgba& c) { cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a); }

// --- pens ---

double penWidth(const kcGraphicProps& p) { return std::max(1.0, static_cast<double>(p.penWidth())); }

void setPen(cairo_t* cr, const kcGraphicProps& p) {
  cairo_set_line_width(cr, penWidth(p));
  switch (p.penEndCap()) {
    case kcGraphicProps::capSquare:
      cairo_set_line_cap(cr, CAIRO_LINE_CAP_SQUARE);
      break;
    case kcGraphicProps::capFlat:
      cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
      break;
    default:
      cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  }
  switch (p.penJoin()) {
    case kcGraphicProps::joinBevel:
      cairo_set_line_join(cr, CAIRO_LINE_JOIN_BEVEL);
      break;
    case kcGraphicProps::joinMiter:
      cairo_set_line_join(cr, CAIRO_LINE_JOIN_MITER);
      break;
    default:
      cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  }
  source(cr, rgba(p.penColor()));
}

// A style's dashes, on and off alternately, in pen widths; none for solid.
std::vector<double> dashesOf(const kcGraphicProps& p) {
  switch (p.penStyle()) {
    case kcGraphicProps::penDash:
      return {3, 1};
    case kcGraphicProps::penDot:
      return {1, 1};
    case kcGraphicProps::penDashDot:
      return {3, 1, 1, 1};
    case kcGraphicProps::penDashDotDot:
      return {3, 1, 1, 1, 1, 1};
    default:
      return {};
  }
}

// Strokes the current path dash by dash: each sub-path starts the pattern
// anew. Cairo dashes only smoothed lines, and without smoothing it also
// merges the sub-paths of one stroke (but with mitre joins), so each dash is
// a stroke of its own.
void strokeDashes(cairo_t* cr, const std::vector<double>& dashes) {
  cairo_path_t* flat = cairo_copy_path_flat(cr);
  cairo_new_path(cr);
  std::size_t k = 0;
  double left = 0.0;
  double x = 0.0, y = 0.0, startX = 0.0, startY = 0.0;
  const auto lineTo = [&](double tx, double ty) {
    double length = std::hypot(tx - x, ty - y);
    const double dx = length > 0.0 ? (tx - x) / length : 0.0;
    const double dy = length > 0.0 ? (ty - y) / length : 0.0;
    while (length > 0.0) {
      const double step = std::min(left, length);
      x += dx * step;
      y += dy * step;
      if (k % 2 == 0) cairo_line_to(cr, x, y);
      length -= step;
      left -= step;
      if (left <= 0.0) {
        // A dash ends (it is stroked) or a gap does (the next dash begins).
        if (k % 2 == 0) cairo_stroke(cr);
        k = (k + 1) % dashes.size();
        left = dashes[k];
        if (k % 2 == 0) cairo_move_to(cr, x, y);
      }
    }
    x = tx;
    y = ty;
  };
  for (int i = 0; i < flat->num_data; i += flat->data[i].header.length) {
    const cairo_path_data_t* d = &flat->data[i];
    switch (d->header.type) {
      case CAIRO_PATH_MOVE_TO:
        cairo_stroke(cr);
        x = startX = d[1].point.x;
        y = startY = d[1].point.y;
        k = 0;
        left = dashes[0];
        cairo_move_to(cr, x, y);
        break;
      case CAIRO_PATH_LINE_TO:
        lineTo(d[1].point.x, d[1].point.y);
        break;
      case CAIRO_PATH_CLOSE_PATH:
        lineTo(startX, startY);
        break;
      case CAIRO_PATH_CURVE_TO:  // none in a flattened path
        break;
    }
  }
  cairo_stroke(cr);
  cairo_path_destroy(flat);
}

// Outlines the current path with the pen.
void strokePath(cairo_t* cr, const kcGraphicProps& p) {
  if (p.penStyle() == kcGraphicProps::penNull) {
    cairo_new_path(cr);
    return;
  }
  setPen(cr, p);
  std::vector<double> dashes = dashesOf(p);
  if (dashes.empty()) {
    cairo_stroke(cr);
    return;
  }
  for (double& d : dashes) d *= penWidth(p);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
  strokeDashes(cr, dashes);
}

// Fills the current path with the pen colour, or outlines it.
void fillAndStroke(cairo_t* cr, const kcGraphicProps& p, bool fill) {
  if (!fill) return strokePath(cr, p);
  source(cr, rgba(p.penColor()));
  cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_fill(cr);
}

// --- geometry ---

cairo_matrix_t matrixOf(const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  cairo_matrix_t c;
  cairo_matrix_init(&c, m.element(0, 0), m.element(1, 0), m.element(0, 1), m.element(1, 1), x.trans().x(),
                    x.trans().y());
  return c;
}

// The unit circle's arc from t0 by span (radians) under x, added to the
// path; the transform shapes the path only, not the pen that strokes it.
void arcPath(cairo_t* cr, const kcXform<2>& x, double t0, double span) {
  const cairo_matrix_t m = matrixOf(x);
  cairo_save(cr);
  cairo_transform(cr, &m);
  if (span >= 0.0)
    cairo_arc(cr, 0.0, 0.0, 1.0, t0, t0 + span);
  else
    cairo_arc_negative(cr, 0.0, 0.0, 1.0, t0, t0 + span);
  cairo_restore(cr);
}

enum class SubPaths { all, closed, open };

void piecesPath(cairo_t* cr, const kcUIPath& p, SubPaths which) {
  // Sub-paths one by one, so that a fill takes the closed ones only.
  const std::vector<kcUIPath::Piece>& pieces = p.pieces();
  std::size_t begin = 0;
  while (begin < pieces.size()) {
    std::size_t end = begin + 1;
    while (end < pieces.size() && pieces[end].kind != kcUIPath::Kind::move) ++end;
    const bool closed = pieces[end - 1].kind == kcUIPath::Kind::close;
    if (which == SubPaths::all || closed == (which == SubPaths::closed)) {
      cairo_new_sub_path(cr);
      for (std::size_t i = begin; i < end; ++i) {
        const kcUIPath::Piece& piece = pieces[i];
        switch (piece.kind) {
          case kcUIPath::Kind::move:
            cairo_move_to(cr, piece.to.x(), piece.to.y());
            break;
          case kcUIPath::Kind::line:
            cairo_line_to(cr, piece.to.x(), piece.to.y());
            break;
          case kcUIPath::Kind::arc: {
            const kcEllipseArc& a = p.arcs()[piece.arc];
            arcPath(cr, a.ellipse().xform(), a.angleStart().toDouble(), a.angleSpan().toDouble());
            break;
          }
          case kcUIPath::Kind::bezier:
            cairo_curve_to(cr, piece.c1.x(), piece.c1.y(), piece.c2.x(), piece.c2.y(), piece.to.x(),
                           piece.to.y());
            break;
          case kcUIPath::Kind::close:
            cairo_close_path(cr);
            break;
        }
      }
    }
    begin = end;
  }
}

void rectPath(cairo_t* cr, const kcUIRect& r) {
  cairo_rectangle(cr, static_cast<double>(r.left()), static_cast<double>(r.top()),
                  static_cast<double>(r.width()), static_cast<double>(r.height()));
}

// Paints pels over r with the operator (SOURCE sets them, CLEAR makes them clear).
void paintRect(cairo_t* cr, const kcUIRect& r, const Rgba& c, cairo_operator_t op) {
  cairo_set_operator(cr, op);
  source(cr, c);
  rectPath(cr, r);
  cairo_fill(cr);
}

// --- text ---

struct Font {
  const char* family;
  cairo_font_weight_t weight;
  double size;
};

Font fontOf(long id) {
  static constexpr Font kFonts[] = {{"DejaVu Sans", CAIRO_FONT_WEIGHT_NORMAL, 13.0},
                                    {"DejaVu Sans Mono", CAIRO_FONT_WEIGHT_NORMAL, 13.0},
                                    {"DejaVu Serif", CAIRO_FONT_WEIGHT_NORMAL, 13.0},
                                    {"DejaVu Sans", CAIRO_FONT_WEIGHT_BOLD, 13.0},
                                    {"DejaVu Sans", CAIRO_FONT_WEIGHT_NORMAL, 20.0}};
  constexpr long n = static_cast<long>(std::size(kFonts));
  return kFonts[id < 0 ? 0 : id % n];
}

void selectFont(cairo_t* cr, long id) {
  const Font f = fontOf(id);
  cairo_select_font_face(cr, f.family, CAIRO_FONT_SLANT_NORMAL, f.weight);
  cairo_set_font_size(cr, f.size);
}

// Where text goes: its rectangle and the baseline's start.
struct TextPlace {
  kcUIRect box;
  double x = 0.0, baseline = 0.0;
};

long pelOf(double v) {
  // Held to what a long and a device can take; NaN at 0.
  if (std::isnan(v)) return 0;
  return static_cast<long>(std::floor(std::clamp(v, -1e9, 1e9)));
}

}  // namespace

// --- the device ---

struct kcUICairoScope::Op {
  std::function<void(cairo_t*)> draw;
};

struct kcUICairoScope::Device {
  long width = 0;
  long height = 0;
  bool antialias = false;
  // Grey pels, row by row; none: black.
  SharedSurface background;
  std::vector<std::function<void(cairo_t*)>> layers[2];
  // Each layer played so far onto a raster, kept for pels and fills.
  Surface raster[2];
  std::size_t played[2] = {0, 0};
  Surface seen;
  std::size_t seenCalls = 0;
  // Measures text.
  Surface scratch;
  Context measure;

  Device(long w, long h) : width(w), height(h) {
    if (w < 1 || h < 1 || w > kMaxSide || h > kMaxSide) throw kcUIError::BadParams();
    scratch.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1));
    measure.reset(cairo_create(scratch.get()));
  }

  // A layer's raster, with every call played.
  cairo_surface_t* layer(int i) {
    if (!raster[i]) raster[i].reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    if (played[i] < layers[i].size()) {
      const Context cr(cairo_create(raster[i].get()));
      for (; played[i] < layers[i].size(); ++played[i]) layers[i][played[i]](cr.get());
    }
    cairo_surface_flush(raster[i].get());
    return raster[i].get();
  }

  void paintBackground(cairo_t* cr) const {
    if (background) {
      cairo_set_source_surface(cr, background.get(), 0.0, 0.0);
      cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    } else {
      cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
    }
    cairo_paint(cr);
  }

  // Background and main layer, and the overlay over them when asked.
  // The whole picture, made again only after new calls.
  cairo_surface_t* picture() {
    const std::size_t calls = layers[0].size() + layers[1].size();
    if (!seen || seenCalls != calls) {
      seen = composite(true);
      seenCalls = calls;
    }
    return seen.get();
  }

  Surface composite(bool withOverlay) {
    Surface out(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    const Context cr(cairo_create(out.get()));
    paintBackground(cr.get());
    for (int i = 0; i < (withOverlay ? 2 : 1); ++i) {
      cairo_set_source_surface(cr.get(), layer(i), 0.0, 0.0);
      cairo_paint(cr.get());
    }
    cairo_surface_flush(out.get());
    return out;
  }

  // The calls themselves onto a vector surface, each layer a group of its own.
  void playVector(cairo_t* cr) const {
    paintBackground(cr);
    for (const auto& calls : layers) {
      cairo_push_group(cr);
      for (const auto& call : calls) call(cr);
      cairo_pop_group_to_source(cr);
      cairo_paint(cr);
    }
  }

  TextPlace place(const std::string& s, const kcVector<2>& at, const kcUIFormat& f) {
    cairo_t* cr = measure.get();
    selectFont(cr, f.fontId());
    cairo_text_extents_t text;
    cairo_font_extents_t font;
    cairo_text_extents(cr, s.c_str(), &text);
    cairo_font_extents(cr, &font);
    // The advance and the font's height, widened to every glyph's ink (a
    // 'j' reaches left of the pen, an italic 'f' past its advance).
    const double left = std::min(0.0, text.x_bearing);
    const double right = std::max(text.x_advance, text.x_bearing + text.width);
    const double above = std::max(font.ascent, -text.y_bearing);
    const double below = std::max(font.descent, text.y_bearing + text.height);
    const auto w = static_cast<long>(std::ceil(right - left));
    const auto h = static_cast<long>(std::ceil(above + below));
    TextPlace p;
    p.box = f.alignRect(kcUIRect(pelOf(at.x()), pelOf(at.y()), w, h));
    p.x = static_cast<double>(p.box.left()) - left;
    p.baseline = static_cast<double>(p.box.top()) + above;
    return p;
  }
};

kcUICairoScope::kcUICairoScope(long width, long height)
    : device_(std::make_shared<Device>(width, height)), area_(0, 0, width, height), visible_(area_) {
  overlay_.reset(new kcUICairoScope(device_, 1, area_, visible_));
}

kcUICairoScope::kcUICairoScope(const kcPelBuffer_const<unsigned char>& background)
    : kcUICairoScope(background.width(), background.height()) {
  const long w = background.width();
  const long h = background.height();
  cairo_surface_t* grey = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
  unsigned char* data = cairo_image_surface_get_data(grey);
  const int stride = cairo_image_surface_get_stride(grey);
  for (long y = 0; y < h; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(data + y * stride);
    for (long x = 0; x < w; ++x) {
      const std::uint32_t v = background.get(x, y);
      row[x] = 0xff000000u | v << 16 | v << 8 | v;
    }
  }
  cairo_surface_mark_dirty(grey);
  device_->background = shared(grey);
}

kcUICairoScope::kcUICairoScope(std::shared_ptr<Device> device, int layer, const kcUIRect& area,
                               const kcUIRect& visible)
    : device_(std::move(device)), layer_(layer), area_(area), visible_(visible) {}

kcUICairoScope::~kcUICairoScope() = default;

kcUIScope& kcUICairoScope::overlay() {
  if (!overlay_) throw kcUIError::NotAvailable();
  return *overlay_;
}

long kcUICairoScope::width() const noexcept { return area_.width(); }
long kcUICairoScope::height() const noexcept { return area_.height(); }
void kcUICairoScope::antialias(bool on) { device_->antialias = on; }

void kcUICairoScope::emit(Op op) {
  const double ox = static_cast<double>(area_.left());
  const double oy = static_cast<double>(area_.top());
  const kcUIRect visible = visible_;
  const kcRect clip = clip_;
  const cairo_antialias_t aa = device_->antialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE;
  device_->layers[layer_].push_back([=, draw = std::move(op.draw)](cairo_t* cr) {
    cairo_save(cr);
    // Before the clips, so that they too take whole pels.
    cairo_set_antialias(cr, aa);
    rectPath(cr, visible);
    cairo_clip(cr);
    cairo_translate(cr, ox, oy);
    if (!clip.isEmpty()) {
      cairo_rectangle(cr, clip.xMin(), clip.yMin(), clip.width(), clip.height());
      cairo_clip(cr);
    }
    draw(cr);
    cairo_restore(cr);
  });
}

// --- reading the picture ---

std::vector<std::uint32_t> kcUICairoScope::pels() const {
  cairo_surface_t* picture = device_->picture();
  const unsigned char* data = cairo_image_surface_get_data(picture);
  const int stride = cairo_image_surface_get_stride(picture);
  std::vector<std::uint32_t> out;
  out.reserve(static_cast<std::size_t>(device_->width * device_->height));
  for (long y = 0; y < device_->height; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(data + y * stride);
    for (long x = 0; x < device_->width; ++x) out.push_back(row[x] & 0xffffffu);
  }
  return out;
}

std::uint32_t kcUICairoScope::pel(long x, long y) const {
  if (x < 0 || y < 0 || x >= device_->width || y >= device_->height) return 0;
  cairo_surface_t* picture = device_->picture();
  const unsigned char* row =
      cairo_image_surface_get_data(picture) + y * cairo_image_surface_get_stride(picture);
  return reinterpret_cast<const std::uint32_t*>(row)[x] & 0xffffffu;
}

unsigned char kcUICairoScope::coverage(long x, long y, bool overlayLayer) const {
  if (x < 0 || y < 0 || x >= device_->width || y >= device_->height) return 0;
  cairo_surface_t* layer = device_->layer(overlayLayer ? 1 : 0);
  const unsigned char* data = cairo_image_surface_get_data(layer);
  const auto* row = reinterpret_cast<const std::uint32_t*>(data + y * cairo_image_surface_get_stride(layer));
  return static_cast<unsigned char>(row[x] >> 24);
}

// --- files ---

namespace {
cairo_status_t toFile(void* file, const unsigned char* data, unsigned int length) {
  return std::fwrite(data, 1, length, static_cast<std::FILE*>(file)) == length ? CAIRO_STATUS_SUCCESS
                                                                               : CAIRO_STATUS_WRITE_ERROR;
}
}  // namespace

void kcUICairoScope::writePng(const std::string& path) const {
  cairo_surface_t* picture = device_->picture();
  kfWriteImageFile_(path, [&](std::FILE* f) {
    return cairo_surface_write_to_png_stream(picture, toFile, f) == CAIRO_STATUS_SUCCESS;
  });
}

namespace {
template <class Create>
void writeVector(const std::string& path, const kcUICairoScope::Device& device, Create&& create) {
  kfWriteImageFile_(path, [&](std::FILE* f) {
    const Surface surface(create(f));
    {
      const Context cr(cairo_create(surface.get()));
      device.playVector(cr.get());
    }
    cairo_surface_finish(surface.get());
    return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS;
  });
}
}  // namespace

void kcUICairoScope::writeSvg(const std::string& path) const {
  const auto w = static_cast<double>(device_->width);
  const auto h = static_cast<double>(device_->height);
  writeVector(path, *device_,
              [&](std::FILE* f) { return cairo_svg_surface_create_for_stream(toFile, f, w, h); });
}

void kcUICairoScope::writePdf(const std::string& path) const {
  const auto w = static_cast<double>(device_->width);
  const auto h = static_cast<double>(device_->height);
  writeVector(path, *device_,
              [&](std::FILE* f) { return cairo_pdf_surface_create_for_stream(toFile, f, w, h); });
}

// --- state ---

kcUIScope* kcUICairoScope::makeSubScope(const kcUIRect& area) {
  const kcUIRect inLayer(area_.left() + area.left(), area_.top() + area.top(), area.width(), area.height());
  const long left = std::max(inLayer.left(), visible_.left());
  const long top = std::max(inLayer.top(), visible_.top());
  const long right = std::min(inLayer.right(), visible_.right());
  const long bottom = std::min(inLayer.bottom(), visible_.bottom());
  const kcUIRect visible(left, top, std::max(0L, right - left), std::max(0L, bottom - top));
  return new kcUICairoScope(device_, layer_, inLayer, visible);
}

void kcUICairoScope::clipRect(const kcRect& r) { clip_ = r; }
kcRect kcUICairoScope::clipRect() const { return clip_; }

// --- primitives ---

void kcUICairoScope::point(const kcVector<2>& p, const kcGraphicProps& props) {
  // A square of the pen's width, on the pel that holds p for a 1-pel pen.
  const long w = static_cast<long>(penWidth(props));
  const kcUIRect square(pelOf(p.x()) - (w - 1) / 2, pelOf(p.y()) - (w - 1) / 2, w, w);
  const Rgba c = rgba(props.penColor());
  emit({[=](cairo_t* cr) { paintRect(cr, square, c, CAIRO_OPERATOR_OVER); }});
}

void kcUICairoScope::pixel(const kcPair<long>& pel, const kcColor& color) {
  const kcUIRect one(pel.x(), pel.y(), 1, 1);
  const Rgba c = rgba(color);
  emit({[=](cairo_t* cr) { paintRect(cr, one, c, CAIRO_OPERATOR_SOURCE); }});
}

void kcUICairoScope::lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) {
  emit({[=](cairo_t* cr) {
    cairo_move_to(cr, a.x(), a.y());
    cairo_line_to(cr, b.x(), b.y());
    fillAndStroke(cr, props, false);
  }});
}

void kcUICairoScope::polyline(const std::vector<kcVector<2>>& v, bool closed, const kcGraphicProps& props) {
  if (v.empty()) return;
  emit({[=](cairo_t* cr) {
    for (const kcVector<2>& p : v) cairo_line_to(cr, p.x(), p.y());
    if (closed) cairo_close_path(cr);
    fillAndStroke(cr, props, closed && props.fill());
  }});
}

void kcUICairoScope::ellipse(const kcEllipse& e, const kcGraphicProps& props) {
  const kcXform<2> x = e.xform();
  emit({[=](cairo_t* cr) {
    cairo_new_sub_path(cr);
    arcPath(cr, x, 0.0, 2.0 * std::numbers::pi);
    cairo_close_path(cr);
    fillAndStroke(cr, props, props.fill());
  }});
}

void kcUICairoScope::ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) {
  const kcXform<2> x = a.ellipse().xform();
  const double t0 = a.angleStart().toDouble();
  const double span = a.angleSpan().toDouble();
  emit({[=](cairo_t* cr) {
    cairo_new_sub_path(cr);
    arcPath(cr, x, t0, span);
    fillAndStroke(cr, props, false);
  }});
}

void kcUICairoScope::bezier(const std::array<kcVector<2>, 4>& c, const kcGraphicProps& props) {
  emit({[=](cairo_t* cr) {
    cairo_move_to(cr, c[0].x(), c[0].y());
    cairo_curve_to(cr, c[1].x(), c[1].y(), c[2].x(), c[2].y(), c[3].x(), c[3].y());
    fillAndStroke(cr, props, false);
  }});
}

void kcUICairoScope::path(const kcUIPath& p, const kcGraphicProps& props) {
  if (p.empty()) return;
  emit({[=](cairo_t* cr) {
    if (props.fill()) {
      piecesPath(cr, p, SubPaths::closed);
      fillAndStroke(cr, props, true);
    }
    piecesPath(cr, p, props.fill() ? SubPaths::open : SubPaths::all);
    strokePath(cr, props);
  }});
}

void kcUICairoScope::arrowHead(const kcVector<2>& tip, const kcVector<2>& direction, double length,
                               const kcGraphicProps& props) {
  const double n = std::hypot(direction.x(), direction.y());
  if (!(n > 0.0) || !std::isfinite(n) || !(length > 0.0)) return;
  const double back = std::atan2(-direction.y(), -direction.x());
  emit({[=](cairo_t* cr) {
    for (const double turn : {kArrowArmAngle, -kArrowArmAngle}) {
      cairo_move_to(cr, tip.x(), tip.y());
      cairo_line_to(cr, tip.x() + length * std::cos(back + turn), tip.y() + length * std::sin(back + turn));
    }
    fillAndStroke(cr, props, false);
  }});
}

void kcUICairoScope::text(const std::wstring& s, const kcVector<2>& at, const kcColor& fg, const kcColor& bg,
                          const kcUIFormat& f) {
  const std::string bytes = kfToUtf8(s);
  const TextPlace place = device_->place(bytes, at, f);
  const Rgba ink = rgba(fg);
  const Rgba back = rgba(bg);
  const long font = f.fontId();
  emit({[=](cairo_t* cr) {
    if (back.a > 0.0) paintRect(cr, place.box, back, CAIRO_OPERATOR_OVER);
    selectFont(cr, font);
    // Glyphs are smoothed whatever the shapes are.
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_DEFAULT);
    source(cr, ink);
    cairo_move_to(cr, place.x, place.baseline);
    cairo_show_text(cr, bytes.c_str());
  }});
}

kcUIRect kcUICairoScope::textRect(const std::wstring& s, const kcVector<2>& at, const kcUIFormat& f) {
  return device_->place(kfToUtf8(s), at, f).box;
}

void kcUICairoScope::set(const kcColor& color) {
  const Rgba c = rgba(color);
  emit({[=](cairo_t* cr) {
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    source(cr, c);
    cairo_paint(cr);
  }});
}

void kcUICairoScope::set(const kcUIRect& r, const kcColor& color) {
  const Rgba c = rgba(color);
  emit({[=](cairo_t* cr) { paintRect(cr, r, c, CAIRO_OPERATOR_SOURCE); }});
}

void kcUICairoScope::setComplement(const kcUIRect& r, const kcColor& color) {
  const Rgba c = rgba(color);
  const kcUIRect all(0, 0, area_.width(), area_.height());
  emit({[=](cairo_t* cr) {
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    source(cr, c);
    rectPath(cr, all);
    rectPath(cr, r);
    cairo_fill(cr);
  }});
}

void kcUICairoScope::erase(const kcUIRect& r) {
  emit({[=](cairo_t* cr) { paintRect(cr, r, Rgba{}, CAIRO_OPERATOR_CLEAR); }});
}

void kcUICairoScope::outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width) {
  if (width < 1 || r.width() < 1 || r.height() < 1) return;
  const long w = std::min({width, r.width(), r.height()});
  const Rgba lit = rgba(light);
  const Rgba shade = rgba(dark);
  emit({[=](cairo_t* cr) {
    // Raised: light from the top left, the shade on the far sides over it.
    paintRect(cr, kcUIRect(r.left(), r.top(), r.width(), w), lit, CAIRO_OPERATOR_OVER);
    paintRect(cr, kcUIRect(r.left(), r.top(), w, r.height()), lit, CAIRO_OPERATOR_OVER);
    paintRect(cr, kcUIRect(r.left(), r.bottom() - w, r.width(), w), shade, CAIRO_OPERATOR_OVER);
    paintRect(cr, kcUIRect(r.right() - w, r.top(), w, r.height()), shade, CAIRO_OPERATOR_OVER);
  }});
}

namespace {
// An 8-bit image as Cairo pels through the colour map and the palette.
SharedSurface imageSurface(const kcPelBuffer_const<unsigned char>& image,
                           const std::vector<unsigned char>& map, bool passThrough,
                           unsigned char passColour) {
  const long w = image.width();
  const long h = image.height();
  cairo_surface_t* s =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(w), static_cast<int>(h));
  std::uint32_t colour[256];
  for (unsigned v = 0; v < 256; ++v) {
    if (passThrough && v == passColour)
      colour[v] = 0;
    else if (map.empty())
      colour[v] = argb(opaque(static_cast<unsigned char>(v), static_cast<unsigned char>(v),
                              static_cast<unsigned char>(v)));
    else
      colour[v] = argb(slot(v < map.size() ? map[v] : v));
  }
  unsigned char* data = cairo_image_surface_get_data(s);
  const int stride = cairo_image_surface_get_stride(s);
  for (long y = 0; y < h; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(data + y * stride);
    for (long x = 0; x < w; ++x) row[x] = colour[image.get(x, y)];
  }
  cairo_surface_mark_dirty(s);
  return shared(s);
}
}  // namespace

void kcUICairoScope::image(const kcPelBuffer_const<unsigned char>& image, const kcVector<2>& at,
                           const std::vector<unsigned char>& colourMap, bool passThrough,
                           unsigned char passColour) {
  if (image.width() < 1 || image.height() < 1) return;
  if (image.width() > kMaxSide || image.height() > kMaxSide) throw kcUIError::BadParams();
  const SharedSurface pels = imageSurface(image, colourMap, passThrough, passColour);
  const auto x = static_cast<double>(pelOf(at.x()));
  const auto y = static_cast<double>(pelOf(at.y()));
  emit({[=](cairo_t* cr) {
    cairo_set_source_surface(cr, pels.get(), x, y);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    cairo_paint(cr);
  }});
}

void kcUICairoScope::image(const kcRLEBuffer& image, const kcVector<2>& at,
                           const std::vector<unsigned char>& colourMap, bool passThrough,
                           unsigned char passColour) {
  if (image.isNull()) return;
  const kcPelBuffer<unsigned char> pels = image.decode();
  this->image(kcPelBuffer_const<unsigned char>(pels), at, colourMap, passThrough, passColour);
}

void kcUICairoScope::fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary,
                          keFillType type) {
  // The pels the fill reaches, worked out on the layer as it is seen now.
  const long w = device_->width;
  const long h = device_->height;
  const long sx = area_.left() + seed.x();
  const long sy = area_.top() + seed.y();
  // Within the layer, the part this scope may touch and its clip rectangle
  // (the pels whose centres it holds).
  long x0 = std::max(0L, visible_.left()), y0 = std::max(0L, visible_.top());
  long x1 = std::min(w, visible_.right()), y1 = std::min(h, visible_.bottom());
  if (!clip_.isEmpty()) {
    x0 = std::max(x0, area_.left() + pelOf(std::ceil(clip_.xMin() - 0.5)));
    y0 = std::max(y0, area_.top() + pelOf(std::ceil(clip_.yMin() - 0.5)));
    x1 = std::min(x1, area_.left() + pelOf(std::ceil(clip_.xMax() - 0.5)));
    y1 = std::min(y1, area_.top() + pelOf(std::ceil(clip_.yMax() - 0.5)));
  }
  if (sx < x0 || sy < y0 || sx >= x1 || sy >= y1) return;
  const Surface seen =
      layer_ == 0 ? device_->composite(false) : Surface(cairo_surface_reference(device_->layer(1)));
  const unsigned char* data = cairo_image_surface_get_data(seen.get());
  const int stride = cairo_image_surface_get_stride(seen.get());
  const auto at = [&](long x, long y) {
    return reinterpret_cast<const std::uint32_t*>(data + y * stride)[x];
  };
  const std::uint32_t start = at(sx, sy);
  const std::uint32_t wall = argb(rgba(boundary));
  const auto inside = [&](std::uint32_t v) { return type == fillSameColor ? v == start : v != wall; };
  if (!inside(start)) return;

  cairo_surface_t* mask =
      cairo_image_surface_create(CAIRO_FORMAT_A8, static_cast<int>(w), static_cast<int>(h));
  unsigned char* m = cairo_image_surface_get_data(mask);
  const int mstride = cairo_image_surface_get_stride(mask);
  std::vector<std::pair<long, long>> todo{{sx, sy}};
  m[sy * mstride + sx] = 0xff;
  while (!todo.empty()) {
    const auto [x, y] = todo.back();
    todo.pop_back();
    const std::pair<long, long> next[] = {{x + 1, y}, {x - 1, y}, {x, y + 1}, {x, y - 1}};
    for (const auto& [nx, ny] : next) {
      if (nx < x0 || ny < y0 || nx >= x1 || ny >= y1 || m[ny * mstride + nx] || !inside(at(nx, ny))) continue;
      m[ny * mstride + nx] = 0xff;
      todo.emplace_back(nx, ny);
    }
  }
  cairo_surface_mark_dirty(mask);
  const SharedSurface region = shared(mask);
  const Rgba c = rgba(fill);
  const double ox = static_cast<double>(-area_.left());
  const double oy = static_cast<double>(-area_.top());
  emit({[=](cairo_t* cr) {
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    source(cr, c);
    cairo_mask_surface(cr, region.get(), ox, oy);
  }});
}

// --- the pen ---

void kcUICairoScope::moveTo(const kcVector<2>& p) { pen_ = p; }

void kcUICairoScope::lineTo(const kcVector<2>& p, const kcGraphicProps& props) {
  lineSeg(pen_, p, props);
  pen_ = p;
}

void kcUICairoScope::moveRelPels(long dx, long dy) {
  pen_ = pen_ + kcVector<2>(static_cast<double>(dx), static_cast<double>(dy));
}

void kcUICairoScope::lineRelPels(long dx, long dy, const kcGraphicProps& props) {
  lineTo(pen_ + kcVector<2>(static_cast<double>(dx), static_cast<double>(dy)), props);
}
