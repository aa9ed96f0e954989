#include "dispc/teescope.h"

kcUITeeScope::~kcUITeeScope() = default;

// --- state ---

unsigned long kcUITeeScope::stateFlags() const {
  unsigned long flags = 0;
  for (const kcUIScope* s : scopes_) flags |= s->stateFlags();
  return flags;
}

bool kcUITeeScope::canDrawNow() const { return scopes_.empty() || scopes_.front()->canDrawNow(); }

void kcUITeeScope::lockScreenUpdatesPush(bool lock) {
  kcUIScope::lockScreenUpdatesPush(lock);
  each_([&](kcUIScope& s) { s.lockScreenUpdatesPush(lock); });
}

void kcUITeeScope::lockScreenUpdatesPop() {
  kcUIScope::lockScreenUpdatesPop();
  each_([&](kcUIScope& s) { s.lockScreenUpdatesPop(); });
}

bool kcUITeeScope::screenUpdatesLocked() const {
  return scopes_.empty() ? kcUIScope::screenUpdatesLocked() : scopes_.front()->screenUpdatesLocked();
}

void kcUITeeScope::optimizeDrawing(bool on) {
  each_([&](kcUIScope& s) { s.optimizeDrawing(on); });
}
void kcUITeeScope::batchStart() {
  each_([](kcUIScope& s) { s.batchStart(); });
}
void kcUITeeScope::batchEnd() {
  each_([](kcUIScope& s) { s.batchEnd(); });
}

kcUIScope* kcUITeeScope::makeSubScope(const kcUIRect& area) {
  auto tee = std::make_unique<kcUITeeScope>();
  for (kcUIScope* s : scopes_) {
    std::unique_ptr<kcUIScope> sub(s->makeSubScope(area));
    if (!sub) continue;
    tee->add(sub.get());
    tee->owned_.push_back(std::move(sub));
  }
  return tee.release();
}

void kcUITeeScope::settle() {
  each_([](kcUIScope& s) { s.settle(); });
}
void kcUITeeScope::releaseUpdates() {
  each_([](kcUIScope& s) { s.releaseUpdates(); });
}

void kcUITeeScope::clipRect(const kcRect& r) {
  each_([&](kcUIScope& s) { s.clipRect(r); });
}
kcRect kcUITeeScope::clipRect() const { return scopes_.empty() ? kcRect() : scopes_.front()->clipRect(); }

// --- primitives ---

void kcUITeeScope::point(const kcVector<2>& p, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.point(p, props); });
}
void kcUITeeScope::pixel(const kcPair<long>& pel, const kcColor& color) {
  each_([&](kcUIScope& s) { s.pixel(pel, color); });
}
void kcUITeeScope::lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.lineSeg(a, b, props); });
}
void kcUITeeScope::polyline(const std::vector<kcVector<2>>& v, bool closed, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.polyline(v, closed, props); });
}
void kcUITeeScope::ellipse(const kcEllipse& e, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.ellipse(e, props); });
}
void kcUITeeScope::ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.ellipseArc(a, props); });
}
void kcUITeeScope::bezier(const std::array<kcVector<2>, 4>& c, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.bezier(c, props); });
}
void kcUITeeScope::path(const kcUIPath& p, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.path(p, props); });
}
void kcUITeeScope::arrowHead(const kcVector<2>& tip, const kcVector<2>& direction, double length,
                             const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.arrowHead(tip, direction, length, props); });
}
void kcUITeeScope::text(const std::wstring& str, const kcVector<2>& at, const kcColor& fg, const kcColor& bg,
                        const kcUIFormat& f) {
  each_([&](kcUIScope& s) { s.text(str, at, fg, bg, f); });
}
kcUIRect kcUITeeScope::textRect(const std::wstring& str, const kcVector<2>& at, const kcUIFormat& f) {
  // Every scope is asked (a trace writes the call down); the first answers.
  kcUIRect first;
  for (std::size_t i = 0; i < scopes_.size(); ++i) {
    const kcUIRect r = scopes_[i]->textRect(str, at, f);
    if (i == 0) first = r;
  }
  return first;
}
void kcUITeeScope::set(const kcColor& color) {
  each_([&](kcUIScope& s) { s.set(color); });
}
void kcUITeeScope::set(const kcUIRect& r, const kcColor& color) {
  each_([&](kcUIScope& s) { s.set(r, color); });
}
void kcUITeeScope::setComplement(const kcUIRect& r, const kcColor& color) {
  each_([&](kcUIScope& s) { s.setComplement(r, color); });
}
void kcUITeeScope::erase(const kcUIRect& r) {
  each_([&](kcUIScope& s) { s.erase(r); });
}
void kcUITeeScope::fill(const kcPair<long>& seed, const kcColor& fill, const kcColor& boundary,
                        keFillType type) {
  each_([&](kcUIScope& s) { s.fill(seed, fill, boundary, type); });
}
void kcUITeeScope::outline3D(const kcUIRect& r, const kcColor& light, const kcColor& dark, long width) {
  each_([&](kcUIScope& s) { s.outline3D(r, light, dark, width); });
}
void kcUITeeScope::image(const kcPelBuffer_const<unsigned char>& image, const kcVector<2>& at,
                         const std::vector<unsigned char>& colourMap, bool passThrough,
                         unsigned char passColour) {
  each_([&](kcUIScope& s) { s.image(image, at, colourMap, passThrough, passColour); });
}
void kcUITeeScope::image(const kcRLEBuffer& image, const kcVector<2>& at,
                         const std::vector<unsigned char>& colourMap, bool passThrough,
                         unsigned char passColour) {
  each_([&](kcUIScope& s) { s.image(image, at, colourMap, passThrough, passColour); });
}

// --- the pen ---

void kcUITeeScope::moveTo(const kcVector<2>& p) {
  each_([&](kcUIScope& s) { s.moveTo(p); });
}
void kcUITeeScope::lineTo(const kcVector<2>& p, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.lineTo(p, props); });
}
void kcUITeeScope::moveRelPels(long dx, long dy) {
  each_([&](kcUIScope& s) { s.moveRelPels(dx, dy); });
}
void kcUITeeScope::lineRelPels(long dx, long dy, const kcGraphicProps& props) {
  each_([&](kcUIScope& s) { s.lineRelPels(dx, dy, props); });
}
kcVector<2> kcUITeeScope::penPosition() const {
  return scopes_.empty() ? kcVector<2>() : scopes_.front()->penPosition();
}
