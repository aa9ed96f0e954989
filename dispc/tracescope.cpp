#include "dispc/tracescope.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>

#include "dispc/tablet_p.h"

namespace {

// One trace line, built argument by argument.
class Line {
 public:
  explicit Line(const char* member) : text_(member) {}

  Line& num(double v) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, " %.17g", v);
    text_ += buffer;
    return *this;
  }
  Line& integer(long long v) {
    text_ += ' ' + std::to_string(v);
    return *this;
  }
  Line& flag(bool v) {
    text_ += v ? " true" : " false";
    return *this;
  }
  Line& vec(const kcVector<2>& v) { return num(v.x()).num(v.y()); }
  Line& xform(const kcXform<2>& x) {
    const kcMatrix<2>& m = x.matrix();
    return num(m.element(0, 0)).num(m.element(0, 1)).num(m.element(1, 0)).num(m.element(1, 1)).vec(x.trans());
  }
  Line& color(const kcColor& c) {
    // Both forms a colour may hold, so that an index colour and its RGB twin differ.
    text_ += " colour(";
    if (c.isStockColor()) text_ += "stock ";
    if (c.isIndexColor()) text_ += "index " + std::to_string(c.index());
    if (c.isIndexColor() && c.isRGBColor()) text_ += ' ';
    if (c.isRGBColor()) {
      const kcRGB& rgb = c.rgbStruct();
      text_ +=
          "rgb " + std::to_string(rgb.r()) + ' ' + std::to_string(rgb.g()) + ' ' + std::to_string(rgb.b());
    }
    text_ += ')';
    return *this;
  }
  Line& props(const kcGraphicProps& p) {
    color(p.penColor());
    text_ += " width " + std::to_string(p.penWidth()) + " style " + std::to_string(p.penStyle()) + " join " +
             std::to_string(p.penJoin()) + " cap " + std::to_string(p.penEndCap());
    text_ += p.fill() ? " fill" : " nofill";
    text_ += p.arrowHead() ? (p.arrowHeadForward() ? " arrow" : " arrowback") : " noarrow";
    if (p.showVertex()) text_ += " vertices";
    return *this;
  }
  Line& rect(const kcUIRect& r) {
    return integer(r.left()).integer(r.top()).integer(r.width()).integer(r.height());
  }
  Line& rect(const kcRect& r) { return vec(r.origin()).vec(r.size()); }
  Line& arc(const kcEllipseArc& a) {
    return xform(a.ellipse().xform()).num(a.angleStart().toDouble()).num(a.angleSpan().toDouble());
  }
  Line& word(const char* w) {
    text_ += ' ';
    text_ += w;
    return *this;
  }
  // Text as its character codes where they are not plain ASCII.
  Line& wide(const std::wstring& s) {
    text_ += " \"";
    for (wchar_t c : s) {
      if (c >= 0x20 && c < 0x7f && c != '"' && c != '\\') {
        text_ += static_cast<char>(c);
      } else {
        char buffer[16];
        std::snprintf(buffer, sizeof buffer, "\\u%04lx", static_cast<unsigned long>(c));
        text_ += buffer;
      }
    }
    text_ += '"';
    return *this;
  }
  Line& hashWord(std::uint64_t hash) {
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, " #%016" PRIx64, hash);
    text_ += buffer;
    return *this;
  }
  [[nodiscard]] const std::string& str() const noexcept { return text_; }

 private:
  std::string text_;
};

// Bytes as a 64-bit FNV-1a hash: equal traces mean equal images.
constexpr std::uint64_t kHashStart = 0xcbf29ce484222325ull;
void hashBytes(const unsigned char* p, std::size_t n, std::uint64_t& hash) {
  for (std::size_t i = 0; i < n; ++i) hash = (hash ^ p[i]) * 0x100000001b3ull;
}

}  // namespace

kcUITraceScope::~kcUITraceScope() = default;

// --- state ---

void kcUITraceScope::lockScreenUpdatesPush(bool lock) {
  kcUIScope::lockScreenUpdatesPush(lock);
  lines_.push_back(Line("lockScreenUpdatesPush").flag(lock).str());
}

void kcUITraceScope::lockScreenUpdatesPop() {
  kcUIScope::lockScreenUpdatesPop();
  lines_.push_back(Line("lockScreenUpdatesPop").str());
}

void kcUITraceScope::optimizeDrawing(bool on) { lines_.push_back(Line("optimizeDrawing").flag(on).str()); }
void kcUITraceScope::batchStart() { lines_.push_back(Line("batchStart").str()); }
void kcUITraceScope::batchEnd() { lines_.push_back(Line("batchEnd").str()); }

kcUIScope* kcUITraceScope::makeSubScope(const kcUIRect& area) {
  lines_.push_back(Line("makeSubScope").rect(area).str());
  return new kcUITraceScope();
}

void kcUITraceScope::settle() { lines_.push_back(Line("settle").str()); }
void kcUITraceScope::releaseUpdates() { lines_.push_back(Line("releaseUpdates").str()); }

void kcUITraceScope::clipRect(const kcRect& r) {
  clip_ = r;
  lines_.push_back(Line("clipRect").rect(r).str());
}

// --- primitives ---

void kcUITraceScope::point(const kcVector<2>& p, const kcGraphicProps& props) {
  lines_.push_back(Line("point").vec(p).props(props).str());
}

void kcUITraceScope::pixel(const kcPair<long>& pel, const kcColor& color) {
  lines_.push_back(Line("pixel").integer(pel.x()).integer(pel.y()).color(color).str());
}

void kcUITraceScope::lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) {
  lines_.push_back(Line("lineSeg").vec(a).vec(b).props(props).str());
}

void kcUITraceScope::polyline(const std::vector<kcVector<2>>& v, bool closed, const kcGraphicProps& props) {
  Line line("polyline");
  line.integer(static_cast<long long>(v.size()));
  for (const kcVector<2>& p : v) line.vec(p);
  lines_.push_back(line.word(closed ? "closed" : "open").props(props).str());
}

void kcUITraceScope::ellipse(const kcEllipse& e, const kcGraphicProps& props) {
  lines_.push_back(Line("ellipse").xform(e.xform()).props(props).str());
}

void kcUITraceScope::ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) {
  lines_.push_back(Line("ellipseArc").arc(a).props(props).str());
}

void kcUITraceScope::bezier(const std::array<kcVector<2>, 4>& c, const kcGraphicProps& props) {
  lines_.push_back(Line("bezier").vec(c[0]).vec(c[1]).vec(c[2]).vec(c[3]).props(props).str());
}

void kcUITraceScope::path(const kcUIPath& p, const kcGraphicProps& props) {
  Line line("path");
  for (const kcUIPath::Piece& piece : p.pieces()) {
    switch (piece.kind) {
      case kcUIPath::Kind::move:
        line.word("M").vec(piece.to);
        break;
      case kcUIPath::Kind::line:
        line.word("L").vec(piece.to);
        break;
      case kcUIPath::Kind::arc:
        line.word("A").arc(p.arcs()[piece.arc]);
        break;
      case kcUIPath::Kind::bezier:
        line.word("C").vec(piece.c1).vec(piece.c2).vec(piece.to);
        break;
      case kcUIPath::Kind::close:
        line.word("Z");
        break;
    }
  }
  lines_.push_back(line.props(props).str());
}

void kcUITraceScope::arrowHead(const kcVector<2>& tip, const kcVector<2>& direction, double length,
                               const kcGraphicProps& props) {
  lines_.push_back(Line("arrowHead").vec(tip).vec(direction).num(length).props(props).str());
}

void kcUITraceScope::text(const std::wstring& s, const kcVector<2>& at, const kcColor& fg, const kcColor& bg,
                          const kcUIFormat& f) {
  lines_.push_back(
      Line("text").wide(s).vec(at).color(fg).color(bg).integer(f.fontId()).integer(f.alignment()).str());
}

kcUIRect kcUITraceScope::textRect(const std::wstring& s, const kcVector<2>& at, const kcUIFormat& f) {
  lines_.push_back(Line("textRect").wide(s).vec(at).integer(f.fontId()).integer(f.alignment()).str());
  const kcUIRect box(kfTabletPel(std::floor(at.x())), kfTabletPel(std::floor(at.y())),
                     kCharWidth * static_cast<long>(s.size()), kCharHeight);
  return f.alignRect(box);
}

void kcUITraceScope::set(const kcColor& color) { lines_.push_back(Line("set").color(color).str()); }

void kcUITraceScope::set(const kcUIRect& r, const kcColor& color) {
  lines_.push_back(Line("set").rect(r).color(color).str());
}

void kcUITraceScope::setComplement(const kcUIRect& r, const kcColor& color) {
  lines_.push_back(Line("setComplement").rect(r).color(color).str());
}

void kcUITraceScope::erase(const kcUIRect& r) { lines_.push_back(Line("erase").rect(r).str()); }

void kcUITraceScope::fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary,
                          keFillType type) {
  lines_.push_back(
      Line("fill").integer(seed.x()).integer(seed.y()).color(fill).color(boundary).integer(type).str());
}

void kcUITraceScope::outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width) {
  lines_.push_back(Line("outline3D").rect(r).color(light).color(dark).integer(width).str());
}

namespace {
// An image call: size, the hash of the pels, position, colour map, pass colour.
std::string imageLine(const char* member, long width, long height, std::uint64_t pels, const kcVector<2>& at,
                      const std::vector<unsigned char>& colourMap, bool passThrough,
                      unsigned char passColour) {
  std::uint64_t map = kHashStart;
  hashBytes(colourMap.data(), colourMap.size(), map);
  return Line(member)
      .integer(width)
      .integer(height)
      .hashWord(pels)
      .vec(at)
      .integer(static_cast<long long>(colourMap.size()))
      .hashWord(map)
      .flag(passThrough)
      .integer(passColour)
      .str();
}
}  // namespace

void kcUITraceScope::image(const kcPelBuffer_const<unsigned char>& image, const kcVector<2>& at,
                           const std::vector<unsigned char>& colourMap, bool passThrough,
                           unsigned char passColour) {
  std::uint64_t pels = kHashStart;
  for (long y = 0; y < image.height(); ++y)
    hashBytes(image.row(y), static_cast<std::size_t>(image.width()), pels);
  lines_.push_back(
      imageLine("image", image.width(), image.height(), pels, at, colourMap, passThrough, passColour));
}

void kcUITraceScope::image(const kcRLEBuffer& image, const kcVector<2>& at,
                           const std::vector<unsigned char>& colourMap, bool passThrough,
                           unsigned char passColour) {
  std::uint64_t units = kHashStart;
  for (std::uint16_t u : image.units()) {
    const unsigned char two[2] = {static_cast<unsigned char>(u), static_cast<unsigned char>(u >> 8)};
    hashBytes(two, 2, units);
  }
  lines_.push_back(
      imageLine("imageRLE", image.width(), image.height(), units, at, colourMap, passThrough, passColour));
}

// --- the pen ---

void kcUITraceScope::moveTo(const kcVector<2>& p) {
  pen_ = p;
  lines_.push_back(Line("moveTo").vec(p).str());
}

void kcUITraceScope::lineTo(const kcVector<2>& p, const kcGraphicProps& props) {
  pen_ = p;
  lines_.push_back(Line("lineTo").vec(p).props(props).str());
}

void kcUITraceScope::moveRelPels(long dx, long dy) {
  pen_ = pen_ + kcVector<2>(static_cast<double>(dx), static_cast<double>(dy));
  lines_.push_back(Line("moveRelPels").integer(dx).integer(dy).str());
}

void kcUITraceScope::lineRelPels(long dx, long dy, const kcGraphicProps& props) {
  pen_ = pen_ + kcVector<2>(static_cast<double>(dx), static_cast<double>(dy));
  lines_.push_back(Line("lineRelPels").integer(dx).integer(dy).props(props).str());
}
