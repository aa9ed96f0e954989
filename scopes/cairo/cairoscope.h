// kcUICairoScope: an output device that draws through Cairo, for pictures a
// person looks at (PNG) and drawings a person prints or zooms (SVG, PDF).
//
// The device has two layers: the main layer, which is this object, and the
// overlay, overlay(). A tablet draws on both:
//
//   kcUICairoScope device(640, 480);
//   kcUITablet tablet(&device, &device.overlay());
//   ... draw ...
//   device.writePng("picture.png");
//
// Each layer keeps the calls it received, in order, as Cairo drawing; a
// picture is made by playing them. Under the main layer lies the background:
// black, or an 8-bit image shown as grey at one pel per image pel (the
// camera image an inspection overlays); the overlay is composited over the
// main layer. PNG output plays the calls onto a raster; SVG and PDF play the
// same calls onto a vector surface, so lines, arcs and text stay vectors
// there (the background image and flood fills, which are pels by nature,
// stay images).
//
// Pels: a pel (x, y) covers [x, x + 1) x [y, y + 1). Shapes are drawn
// without anti-aliasing by default, so every pel is either drawn or not, as
// an inspection display shows it; antialias(true) smooths them for pictures.
// Text is always smoothed.
//
// Pens: the width in pels (0 draws as 1), the five dash styles scaled by the
// width (dash 3 on 1 off, dot 1 on 1 off, dash-dot, dash-dot-dot, the
// dashes cut square; style 5 draws no outline), the joins and caps of
// kcGraphicProps at the ends. A filled shape is filled with the pen colour,
// covering the pels whose centres it holds (an outline in the same colour
// would only add pels outside it); paths and closed polylines fill by the
// even-odd rule, and a path's open sub-paths are outlined. Arrow heads are
// two arms at 30 degrees to the shaft.
//
// Colours: RGB colours as they are; index colours through the palette:
// 256 slots, the stock slots holding the stock colours, slot 243 (the pass
// colour) transparent, every other slot i the grey (i, i, i). Image values
// go through the colour map given with the image (a value beyond the map is
// its own slot); an empty map shows values as grey levels.
//
// Text: DejaVu (Debian's fonts-dejavu-core), 13 pels high; the font id picks
// 0 Sans, 1 Sans Mono, 2 Serif, 3 Sans Bold, 4 Sans 20 pels high (others
// modulo 5, negative ones as 0). The text's rectangle holds every glyph's
// ink and the font's full height; a background colour other than the pass
// colour fills it first.
//
// Flood fills look at the layer as it is seen (on the main layer with the
// background beneath) and paint the pels they reach.
//
// Sub-scopes (makeSubScope) draw into the same layers, moved to the area's
// corner and clipped to it and to every scope they were made from; a
// sub-scope may outlive the device it came from. A clip rectangle holds the
// pels whose centres lie in it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "dispc/uiscope.h"
#include "foundation/pelbuffer.h"

class kcUICairoScope final : public kcUIScope {
 public:
  // A device of width x height pels over a black background.
  // kcUIError::BadParams unless both are 1 to 32767.
  kcUICairoScope(long width, long height);
  // A device the size of background, shown as grey under the main layer.
  explicit kcUICairoScope(const kcPelBuffer_const<unsigned char>& background);
  ~kcUICairoScope() override;

  // The overlay layer, owned by the device.
  [[nodiscard]] kcUIScope& overlay();
  [[nodiscard]] long width() const noexcept;
  [[nodiscard]] long height() const noexcept;
  // Smooth edges for pictures (off: every pel drawn or not).
  void antialias(bool on);

  // The picture as seen: background, main layer, overlay. Pels packed as
  // 0xRRGGBB, row by row.
  [[nodiscard]] std::vector<std::uint32_t> pels() const;
  // One pel of the picture; 0 outside it.
  [[nodiscard]] std::uint32_t pel(long x, long y) const;
  // The opacity (0 to 255) of a layer's own pel: 0 where nothing covers it.
  [[nodiscard]] unsigned char coverage(long x, long y, bool overlayLayer) const;

  // The picture as a file. kcExceptionWithString "cannot write <path>:
  // <reason>" when it cannot be written (a file half written is removed).
  void writePng(const std::string& path) const;
  void writeSvg(const std::string& path) const;
  void writePdf(const std::string& path) const;

  // --- kcUIScope ---
  [[nodiscard]] kcUIScope* makeSubScope(const kcUIRect& area) override;
  void clipRect(const kcRect& r) override;
  [[nodiscard]] kcRect clipRect() const override;
  void point(const kcVector<2>& p, const kcGraphicProps& props) override;
  void pixel(const kcPair<long>& pel, const kcColor& color) override;
  void lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) override;
  void polyline(const std::vector<kcVector<2>>& v, bool closed, const kcGraphicProps& props) override;
  void ellipse(const kcEllipse& e, const kcGraphicProps& props) override;
  void ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) override;
  void bezier(const std::array<kcVector<2>, 4>& c, const kcGraphicProps& props) override;
  void path(const kcUIPath& p, const kcGraphicProps& props) override;
  void arrowHead(const kcVector<2>& tip, const kcVector<2>& direction, double length,
                 const kcGraphicProps& props) override;
  void text(const std::wstring& s, const kcVector<2>& at, const kcColor& fg, const kcColor& bg,
            const kcUIFormat& f) override;
  [[nodiscard]] kcUIRect textRect(const std::wstring& s, const kcVector<2>& at, const kcUIFormat& f) override;
  void set(const kcColor& color) override;
  void set(const kcUIRect& r, const kcColor& color) override;
  void setComplement(const kcUIRect& r, const kcColor& color) override;
  void erase(const kcUIRect& r) override;
  void fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary, keFillType type) override;
  void outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width) override;
  void image(const kcPelBuffer_const<unsigned char>& image, const kcVector<2>& at,
             const std::vector<unsigned char>& colourMap, bool passThrough,
             unsigned char passColour) override;
  void image(const kcRLEBuffer& image, const kcVector<2>& at, const std::vector<unsigned char>& colourMap,
             bool passThrough, unsigned char passColour) override;
  void moveTo(const kcVector<2>& p) override;
  void lineTo(const kcVector<2>& p, const kcGraphicProps& props) override;
  void moveRelPels(long dx, long dy) override;
  void lineRelPels(long dx, long dy, const kcGraphicProps& props) override;
  [[nodiscard]] kcVector<2> penPosition() const override { return pen_; }

  struct Device;

 private:
  struct Op;
  kcUICairoScope(std::shared_ptr<Device> device, int layer, const kcUIRect& area, const kcUIRect& visible);
  // Adds one drawing call to the layer, placed and clipped as this scope is.
  void emit(Op op);

  std::shared_ptr<Device> device_;
  int layer_ = 0;
  // This scope's place in the layer: its pel (0, 0) and size, and the part
  // of the layer it may touch (within every scope it was made from).
  kcUIRect area_;
  kcUIRect visible_;
  kcRect clip_;
  kcVector<2> pen_;
  std::unique_ptr<kcUICairoScope> overlay_;
};
