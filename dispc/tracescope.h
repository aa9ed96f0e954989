// kcUITraceScope: an output device that draws nothing and writes down every
// call it receives, one line of text a call, starting with the member's name
// and followed by its arguments (doubles with 17 significant digits, so that
// two lines are equal exactly when the arguments are). Tests compare the
// traces of drawing done directly and of the same drawing recorded and
// played back; users read them to see what a tablet sent.
//
// It can always draw, keeps the clip rectangle and the pen position it is
// given, answers textRect with a rectangle of 8 by 16 pels a character placed
// by the format's alignment, and makes trace sub-scopes (each with lines of
// its own).
#pragma once

#include <string>
#include <vector>

#include "dispc/uiscope.h"

class kcUITraceScope : public kcUIScope {
 public:
  kcUITraceScope() = default;
  ~kcUITraceScope() override;

  [[nodiscard]] const std::vector<std::string>& lines() const noexcept { return lines_; }
  void clear() noexcept { lines_.clear(); }

  // --- state ---
  void lockScreenUpdatesPush(bool lock) override;
  void lockScreenUpdatesPop() override;
  void optimizeDrawing(bool on) override;
  void batchStart() override;
  void batchEnd() override;
  [[nodiscard]] kcUIScope* makeSubScope(const kcUIRect& area) override;
  void settle() override;
  void releaseUpdates() override;
  void clipRect(const kcRect& r) override;
  [[nodiscard]] kcRect clipRect() const override { return clip_; }

  // --- primitives ---
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

  // --- the pen ---
  void moveTo(const kcVector<2>& p) override;
  void lineTo(const kcVector<2>& p, const kcGraphicProps& props) override;
  void moveRelPels(long dx, long dy) override;
  void lineRelPels(long dx, long dy, const kcGraphicProps& props) override;
  [[nodiscard]] kcVector<2> penPosition() const override { return pen_; }

  // Pels a character takes in textRect.
  static constexpr long kCharWidth = 8;
  static constexpr long kCharHeight = 16;

 private:
  std::vector<std::string> lines_;
  kcRect clip_;
  kcVector<2> pen_;
};
