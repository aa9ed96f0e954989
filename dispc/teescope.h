// kcUITeeScope: an output device that hands every call on to several others,
// in the order they were added (to show a drawing and trace it at once, or
// to draw it on two devices). It owns none of them, only the tee sub-scopes
// it makes (each over the sub-scopes of its scopes, which it owns in turn).
// Queries answer from the first scope: canDrawNow, the clip rectangle, the
// text rectangle, the pen position; stateFlags are those of all scopes
// together. With no scope at all it draws nothing and answers defaults.
#pragma once

#include <memory>
#include <vector>

#include "dispc/uiscope.h"

class kcUITeeScope : public kcUIScope {
 public:
  kcUITeeScope() = default;
  explicit kcUITeeScope(std::vector<kcUIScope*> scopes) : scopes_(std::move(scopes)) {}
  ~kcUITeeScope() override;

  void add(kcUIScope* scope) { scopes_.push_back(scope); }
  [[nodiscard]] const std::vector<kcUIScope*>& scopes() const noexcept { return scopes_; }

  // --- state ---
  [[nodiscard]] unsigned long stateFlags() const override;
  [[nodiscard]] bool canDrawNow() const override;
  void lockScreenUpdatesPush(bool lock) override;
  void lockScreenUpdatesPop() override;
  [[nodiscard]] bool screenUpdatesLocked() const override;
  void optimizeDrawing(bool on) override;
  void batchStart() override;
  void batchEnd() override;
  [[nodiscard]] kcUIScope* makeSubScope(const kcUIRect& area) override;
  void settle() override;
  void releaseUpdates() override;
  void clipRect(const kcRect& r) override;
  [[nodiscard]] kcRect clipRect() const override;

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
  [[nodiscard]] kcVector<2> penPosition() const override;

 private:
  template <class F>
  void each_(F&& f) {
    for (kcUIScope* s : scopes_) f(*s);
  }

  std::vector<kcUIScope*> scopes_;
  // Sub-scopes of the scopes, made for a tee sub-scope of this one.
  std::vector<std::unique_ptr<kcUIScope>> owned_;
};
