// Playback: a sketch drawn on a tablet record by record, each through the
// drawing call that recorded it; the pel box a sketch would touch; the clip
// rectangle.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "dispc/sketchshapes_p.h"
#include "dispc/tablet.h"
#include "dispc/tablet_p.h"
#include "dispc/uierror.h"

namespace {

using Layers = kcUITablet::Layers;

Layers layerOf(const kc_UISketchOpHeader& h) { return static_cast<Layers>(h.layer()); }

// The header's props with the fill that the opcode stands for.
kcGraphicProps filled(const kc_UISketchOpHeader& h, bool fill) {
  kcGraphicProps p = h.props();
  p.fill(fill);
  return p;
}

}  // namespace

// --- one record ---

void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcPoint& v) {
  switch (h.opcode()) {
    case 1:
      // An icon for both layers draws on neither (the icon call takes one
      // layer; a stream may say anything).
      if (h.layer() > kcUITablet::overlayLayer) return;
      return t.drawPointIcon(v, h.props(), layerOf(h));
    case 20:
      return t.drawStart(v, layerOf(h));
    case 21:
      return t.drawTo(v, h.props(), layerOf(h));
    default:
      return t.draw(v, h.props(), layerOf(h));
  }
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcLineSeg& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcLine& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcCircle& v) {
  t.draw(v, filled(h, h.opcode() == 29), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcEllipse& v) {
  t.draw(v, filled(h, h.opcode() == 30), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcEllipseArc& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcEllipseAnnulusSection& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcGenRect& v) {
  t.draw(v, filled(h, h.opcode() == 31), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcGenAnnulus& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcCoordAxes& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchText<char>& v) {
  t.draw(v.text, kcPoint(v.position), h.color(), v.background, v.format, layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchText<char16_t>& v) {
  t.draw(kfFromUtf16(v.text), kcPoint(v.position), h.color(), v.background, v.format, layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchImage& v) {
  t.draw(kcPelBuffer_const<unsigned char>(v.image), kcPoint(v.position), v.passThrough, v.passColor, v.mapped,
         layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchRleImage& v) {
  t.draw(v.image, kcPoint(v.position), v.colorTable, v.passThrough, v.passColor, v.mapped, layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchNested& v) {
  t.draw(v.sketch, kcPoint(v.offset), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchArea& v) {
  const bool complement = h.opcode() == 18;
  if (v.pels)
    complement ? t.setComplement(v.pelRect, h.color(), layerOf(h)) : t.set(v.pelRect, h.color(), layerOf(h));
  else
    complement ? t.setComplement(v.rect, h.color(), layerOf(h)) : t.set(v.rect, h.color(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchNothing&) {
  t.set(h.color(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchFill& v) {
  const auto type = static_cast<kcUITablet::FillType>(v.fillType);
  if (v.pels)
    t.fill(kcPair<long>(v.pelX, v.pelY), h.color(), v.boundary, type, layerOf(h));
  else
    t.fill(kcPoint(v.seed), h.color(), v.boundary, type, layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchPelOffset& v) {
  if (h.opcode() == 23)
    t.moveToRelPels(v.dx, v.dy, layerOf(h));
  else
    t.drawToRelPels(v.dx, v.dy, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchOutline3d& v) {
  if (v.area.pels)
    t.outline3D(v.area.pelRect, v.light, v.dark, v.width, layerOf(h));
  else
    t.outline3D(v.area.rect, v.light, v.dark, v.width, layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchArrow& v) {
  t.arrowHead(kcPoint(v.tip), v.direction, v.length, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcAffineRectangle& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcPolygon& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcRect& v) {
  if (h.opcode() == 47)
    t.drawClipRect(v, layerOf(h));
  else
    t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchGenShape& v) {
  t.draw(v.shape, v.color, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcGenPoly& v) {
  kcGraphicProps p = h.props();
  p.showVertex(h.opcode() == 38);
  t.draw(v, p, layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcCross& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc_UISketchArrowSection& v) {
  t.draw(v.section, v.first, v.second, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kc2Wireframe& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcBezierCurve& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcCubicSpline& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcPolyline& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcEllipse2& v) {
  t.draw(v, h.props(), layerOf(h));
}
void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const kcEllipseArc2& v) {
  t.draw(v, h.props(), layerOf(h));
}

// --- playing a sketch ---

namespace {

// Puts a value back when it goes out of scope.
template <class T>
class Restored {
 public:
  explicit Restored(T& value) : value_(value), saved_(value) {}
  ~Restored() { value_ = saved_; }
  Restored(const Restored&) = delete;
  Restored& operator=(const Restored&) = delete;

 private:
  T& value_;
  T saved_;
};

}  // namespace

// The part of playback that needs the tablet's inside.
class kcUITabletPlayer_ {
 public:
  // A record whose geometry has no image under the tablet's map (a radius
  // that vanishes in pels, a singular map, a shape out of the numbers' range)
  // draws nothing, and the rest of the sketch plays on.
  static void drawRecord(kcUITablet& t, const kc_UISketchOpData& data, const kc_UISketchOpHeader& h) {
    try {
      data.draw(t, h);
    } catch (const kcShapesError::DegenerateShape&) {
    } catch (const kcShapesError::BadGeom&) {
    } catch (const kcShapesError::BadParams&) {
    } catch (const kcShapesError::NoTangent&) {
    } catch (const kcShapesError::EmptyShape&) {
    } catch (const kcShapesError::BadRadius&) {
    } catch (const kcShapesError::BadCoef&) {
    } catch (const kcShapesError::NotOpenContour&) {
    } catch (const kcShapesError::NotRegion&) {
    } catch (const kcMathError::Singular&) {
    }
  }

  // Draws every record of s whose layer matches on t (moved by offset).
  static void play(kcUITablet& t, const kcUISketch& s, const kcPoint& offset, Layers layer) {
    const Restored<kcXform<2>> transform(t.scaledMap_);
    t.scaledMap_ = t.scaledMap_ * kcXform<2>::translation(offset.point());
    t.recordOn_.push(false);
    struct PopRecording {
      kcFlagStack& stack;
      ~PopRecording() { stack.pop(); }
    } popRecording{t.recordOn_};
    t.lockScreenUpdatesPush(true, layer);
    struct Unlock {
      kcUITablet& t;
      Layers layer;
      ~Unlock() { t.lockScreenUpdatesPop(layer); }
    } unlock{t, layer};
    // A batch on both scopes, or the long-run hint on one.
    const auto start = [&] {
      if (layer == kcUITablet::bothLayers) {
        for (kcUIScope* sc : t.scopes_)
          if (sc) sc->batchStart();
      } else {
        t.optimizeDrawing(true, layer);
      }
    };
    const auto end = [&]() noexcept {
      if (layer == kcUITablet::bothLayers) {
        for (kcUIScope* sc : t.scopes_)
          if (sc) sc->batchEnd();
      } else if (kcUIScope* sc = t.scopes_[layer]) {
        sc->optimizeDrawing(false);
      }
    };
    start();
    try {
      for (kcUISketchParser records(s); records.next();) {
        const kc_UISketchOpHeader& h = records.header();
        if (h.layer() == kcUITablet::bothLayers && layer != kcUITablet::bothLayers) {
          // A record for both layers draws on the one played.
          kc_UISketchOpHeader on(h);
          on.layer(layer);
          drawRecord(t, records.data(), on);
        } else if (layer == kcUITablet::bothLayers || h.layer() == layer) {
          drawRecord(t, records.data(), h);
        }
      }
    } catch (...) {
      end();
      throw;
    }
    end();
  }

  static void recordNested(kcUITablet& t, const kcUISketch& s, const kcPoint& offset, Layers layer) {
    kc_UISketchOpSketch::record(t.sketch_, 15, static_cast<signed char>(layer), kcGraphicProps(),
                                kc_UISketchNested{offset.point(), s});
  }
};

void kcUITablet::draw(const kcUISketch& s, const kcPoint& offset, Layers layer) {
  checkLayer_(layer);
  if (s.isNull()) return;
  if (drawOn_) {
    kcUITabletPlayer_::play(*this, s, offset, layer);
  } else if (recording_()) {
    // Not drawn: checked all the same, so that no malformed stream is recorded.
    for (kcUISketchParser records(s); records.next();) {
    }
  }
  if (recording_()) kcUITabletPlayer_::recordNested(*this, s, offset, layer);
}

// --- the box a sketch touches ---

namespace {

// A device that draws nothing and gathers the pel box of everything it is
// given.
class kcBoundsScope_ final : public kcUIScope {
 public:
  [[nodiscard]] kcUIRect box() const {
    if (!any_) return {};
    const long left = kfTabletPel(std::floor(x0_));
    const long top = kfTabletPel(std::floor(y0_));
    return kcUIRect(left, top, kfTabletPel(std::ceil(x1_)) - left, kfTabletPel(std::ceil(y1_)) - top);
  }

  void clipRect(const kcRect& r) override { clip_ = r; }
  [[nodiscard]] kcRect clipRect() const override { return clip_; }

  void point(const kcVector<2>& p, const kcGraphicProps& props) override { add(p, props); }
  void pixel(const kcPair<long>& pel, const kcColor&) override {
    add(kcVector<2>(static_cast<double>(pel.x()), static_cast<double>(pel.y())), 0.0);
    add(kcVector<2>(static_cast<double>(pel.x() + 1), static_cast<double>(pel.y() + 1)), 0.0);
  }
  void lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) override {
    add(a, props);
    add(b, props);
  }
  void polyline(const std::vector<kcVector<2>>& v, bool, const kcGraphicProps& props) override {
    for (const kcVector<2>& p : v) add(p, props);
  }
  void ellipse(const kcEllipse& e, const kcGraphicProps& props) override { add(e.encloseRect(), props); }
  void ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) override {
    add(a.encloseRect(), props);
  }
  void bezier(const std::array<kcVector<2>, 4>& c, const kcGraphicProps& props) override {
    // The control polygon holds the curve.
    for (const kcVector<2>& p : c) add(p, props);
  }
  void path(const kcUIPath& p, const kcGraphicProps& props) override {
    for (const kcUIPath::Piece& piece : p.pieces()) {
      add(piece.to, props);
      if (piece.kind == kcUIPath::Kind::bezier) {
        add(piece.c1, props);
        add(piece.c2, props);
      }
    }
    for (const kcEllipseArc& a : p.arcs()) add(a.encloseRect(), props);
  }
  void arrowHead(const kcVector<2>& tip, const kcVector<2>&, double length,
                 const kcGraphicProps& props) override {
    add(tip - kcVector<2>(length, length), props);
    add(tip + kcVector<2>(length, length), props);
  }
  void text(const std::wstring&, const kcVector<2>& at, const kcColor&, const kcColor&,
            const kcUIFormat&) override {
    add(at, 0.0);
  }
  [[nodiscard]] kcUIRect textRect(const std::wstring&, const kcVector<2>& at, const kcUIFormat&) override {
    return kcUIRect(kfTabletPel(std::floor(at.x())), kfTabletPel(std::floor(at.y())), 0, 0);
  }
  void set(const kcColor&) override {}
  void set(const kcUIRect& r, const kcColor&) override { add(r); }
  void setComplement(const kcUIRect&, const kcColor&) override {}
  void erase(const kcUIRect&) override {}
  void fill(const kcPair<long>&, const kcColor&, const kcColor&, keFillType) override {}
  void outline3D(const kcUIRect& r, const kcColor&, const kcColor&, long) override { add(r); }
  void image(const kcPelBuffer_const<unsigned char>& image, const kcVector<2>& at,
             const std::vector<unsigned char>&, bool, unsigned char) override {
    add(at, 0.0);
    add(at + kcVector<2>(static_cast<double>(image.width()), static_cast<double>(image.height())), 0.0);
  }
  void image(const kcRLEBuffer& image, const kcVector<2>& at, const std::vector<unsigned char>&, bool,
             unsigned char) override {
    add(at, 0.0);
    add(at + kcVector<2>(static_cast<double>(image.width()), static_cast<double>(image.height())), 0.0);
  }
  void moveTo(const kcVector<2>& p) override { pen_ = p; }
  void lineTo(const kcVector<2>& p, const kcGraphicProps& props) override {
    add(pen_, props);
    add(p, props);
    pen_ = p;
  }
  void moveRelPels(long dx, long dy) override {
    pen_ = pen_ + kcVector<2>(static_cast<double>(dx), static_cast<double>(dy));
  }
  void lineRelPels(long dx, long dy, const kcGraphicProps& props) override {
    add(pen_, props);
    moveRelPels(dx, dy);
    add(pen_, props);
  }
  [[nodiscard]] kcVector<2> penPosition() const override { return pen_; }

 private:
  // A point, widened by half the pen.
  void add(const kcVector<2>& p, const kcGraphicProps& props) {
    add(p, 0.5 * static_cast<double>(std::max(1L, props.penWidth())));
  }
  void add(const kcVector<2>& p, double half) {
    if (!std::isfinite(p.x()) || !std::isfinite(p.y())) return;
    x0_ = std::min(x0_, p.x() - half);
    y0_ = std::min(y0_, p.y() - half);
    x1_ = std::max(x1_, p.x() + half);
    y1_ = std::max(y1_, p.y() + half);
    any_ = true;
  }
  void add(const kcRect& r, const kcGraphicProps& props) {
    if (r.isEmpty()) return;
    add(r.origin(), props);
    add(r.origin() + r.size(), props);
  }
  void add(const kcUIRect& r) {
    if (r.isNull()) return;
    add(kcVector<2>(static_cast<double>(r.left()), static_cast<double>(r.top())), 0.0);
    add(kcVector<2>(static_cast<double>(r.right()), static_cast<double>(r.bottom())), 0.0);
  }

  double x0_ = std::numeric_limits<double>::infinity();
  double y0_ = std::numeric_limits<double>::infinity();
  double x1_ = -std::numeric_limits<double>::infinity();
  double y1_ = -std::numeric_limits<double>::infinity();
  bool any_ = false;
  kcRect clip_;
  kcVector<2> pen_;
};

}  // namespace

kcUIRect kcUITablet::encloseRect(const kcUISketch& s, const kcPoint& offset, Layers layer) {
  checkLayer_(layer);
  kcBoundsScope_ bounds;
  kcUITablet probe(&bounds, &bounds);
  probe.scaledMap_ = scaledMap_;
  probe.scopeRect_ = scopeRect_;
  probe.timeStampOff(true);
  probe.draw(s, offset, layer);
  return bounds.box();
}

// --- the clip rectangle ---

void kcUITablet::drawClipRect(const kcRect& r, Layers layer) {
  checkLayer_(layer);
  // The pel box of the mapped rectangle (an empty one clips nothing).
  kcRect pels;
  if (!r.isEmpty()) {
    const auto c = kfMappedCorners(r, scaledMap_);
    kcVector<2> lo = c[0];
    kcVector<2> hi = c[0];
    for (const kcVector<2>& p : c) {
      lo = kcVector<2>(std::min(lo.x(), p.x()), std::min(lo.y(), p.y()));
      hi = kcVector<2>(std::max(hi.x(), p.x()), std::max(hi.y(), p.y()));
    }
    pels = kcRect(lo, hi - lo);
  }
  for (long l = mainLayer; l <= overlayLayer; ++l)
    if ((layer == bothLayers || layer == l) && scopes_[l]) scopes_[l]->clipRect(pels);
  if (recording_())
    kc_UISketchOpClipRect::record(sketch_, 47, static_cast<signed char>(layer), kcGraphicProps(), r);
}
