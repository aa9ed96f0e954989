// The graphics with data of their own: text, cross, point icon and the
// annulus section with its arrow flags.
#include <algorithm>
#include <cmath>

#include "dispc/glist.h"
#include "dispc/glist_p.h"
#include "foundation/archive.h"

KC_DEFINE_PERSISTENT(kcGraphicText);
KC_DEFINE_PERSISTENT(kcGraphicCross);
KC_DEFINE_PERSISTENT(kcGraphicPointIcon);
KC_DEFINE_PERSISTENT(kcGraphicEllipseAnnulusSection);

namespace {

// Loads with body and puts the props back when it fails, so that a failed
// load leaves the graphic as it was (body commits its own fields last).
template <class Body>
void loadingWhole(kcArchive& ar, kcGraphicProps& props, Body&& body) {
  if (!ar.isLoading()) return body();
  const kcGraphicProps saved = props;
  try {
    body();
  } catch (...) {
    props = saved;
    throw;
  }
}

// A pel offset as whole pels, truncated toward zero; held within the range a
// device can take, and 0 for a number that is not one.
long wholePels(double d) {
  constexpr double kMaxPels = 1 << 30;
  if (std::isnan(d)) return 0;
  return static_cast<long>(std::clamp(d, -kMaxPels, kMaxPels));
}

}  // namespace

// --- text ---

kcGraphicText::kcGraphicText(const std::wstring& text, const kcPoint& location, const kcColor& penColor,
                             const kcColor& backgroundColor, const kcUIFormat& format,
                             const kcVector<2>& offset)
    : kcGraphic(penColor),
      text_(text),
      location_(location),
      backgroundColor_(backgroundColor),
      format_(format),
      offset_(offset) {}

void kcGraphicText::text(const std::wstring& t) {
  mutating_();
  text_ = t;
}

void kcGraphicText::location(const kcPoint& p) {
  mutating_();
  location_ = p;
}

void kcGraphicText::offset(const kcVector<2>& d) {
  mutating_();
  offset_ = d;
}

void kcGraphicText::format(const kcUIFormat& f) {
  mutating_();
  format_ = f;
}

void kcGraphicText::backgroundColor(const kcColor& c) {
  mutating_();
  backgroundColor_ = c;
}

kcGraphicPtr kcGraphicText::map(const kcXform<2>& x) const {
  auto image = kfMakeHandle<kcGraphicText>(*this);
  image->location_ = kcPoint(x.mapPoint(location_.point()));
  // The offset is in screen pels, which a client transform does not reach.
  image->offset_ = kcVector<2>(0.0, 0.0);
  return image;
}

kcGraphicPtr kcGraphicText::clone() const { return kfMakeHandle<kcGraphicText>(*this); }

void kcGraphicText::draw(kcUITablet& t, kcUITablet::Layers layer) const {
  t.drawStart(location_, layer);
  t.moveToRelPels(wholePels(offset_.x()), wholePels(offset_.y()), layer);
  t.draw(text_, kcUITablet::drawPointArg_, props().penColor(), backgroundColor_, format_, layer);
}

void kcGraphicText::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGraphicText::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(kGlistSource, kTextVersionLine);
  loadingWhole(ar, props(), [&] {
    kcGraphic::dispatchSerialize(ar);
    std::wstring text = text_;
    kcPoint location = location_;
    kcColor background = backgroundColor_;
    kcUIFormat format = format_;
    kcVector<2> offset = offset_;
    ar || text || location || background || format || offset;
    if (!ar.isLoading()) return;
    if (!std::isfinite(offset.x()) || !std::isfinite(offset.y()))
      throw kcArchive::Corrupt(L"text offset that is not a finite number");
    mutating_();
    text_ = std::move(text);
    location_ = location;
    backgroundColor_ = background;
    format_ = format;
    offset_ = offset;
  });
}

// --- cross ---

kcGraphicPtr kcGraphicCross::map(const kcXform<2>& x) const {
  return kfMakeHandle<kcGraphicCross>(cross_.map(x), props());
}

kcGraphicPtr kcGraphicCross::clone() const { return kfMakeHandle<kcGraphicCross>(*this); }

double kcGraphicCross::distToPoint(const kcVector<2>& p) const {
  return kcPoint(cross_.centre()).distToPoint(p);
}

void kcGraphicCross::draw(kcUITablet& t, kcUITablet::Layers layer) const { t.draw(cross_, props(), layer); }

void kcGraphicCross::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGraphicCross::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(kGlistSource, kCrossVersionLine);
  loadingWhole(ar, props(), [&] {
    kcGraphic::dispatchSerialize(ar);
    kcCross cross = cross_;
    ar || cross;
    if (ar.isLoading()) cross_ = cross;
  });
}

// --- point icon ---

kcGraphicPtr kcGraphicPointIcon::map(const kcXform<2>& x) const {
  return kfMakeHandle<kcGraphicPointIcon>(kcPoint(x.mapPoint(point_.point())), props());
}

kcGraphicPtr kcGraphicPointIcon::clone() const { return kfMakeHandle<kcGraphicPointIcon>(*this); }

kcRect kcGraphicPointIcon::encloseRect() const { return kcRect(point_.point(), kcVector<2>(1.0, 1.0)); }

void kcGraphicPointIcon::draw(kcUITablet& t, kcUITablet::Layers layer) const {
  t.drawPointIcon(point_, props(), layer);
}

void kcGraphicPointIcon::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGraphicPointIcon::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(kGlistSource, kPointIconVersionLine);
  loadingWhole(ar, props(), [&] {
    kcGraphic::dispatchSerialize(ar);
    kcPoint point = point_;
    ar || point;
    if (ar.isLoading()) point_ = point;
  });
}

// --- annulus section ---

kcGraphicEllipseAnnulusSection::kcGraphicEllipseAnnulusSection(const kcEllipseAnnulusSection& section,
                                                               const kcColor& color, bool arrowHead,
                                                               bool arrowHeadForward)
    : kcGraphic(color), section_(section) {
  drawArrowHead(arrowHead, arrowHeadForward);
}

void kcGraphicEllipseAnnulusSection::drawArrowHead(bool arrowHead, bool forward) {
  props().arrowHead(arrowHead);
  props().arrowHeadForward(forward);
}

kcGraphicPtr kcGraphicEllipseAnnulusSection::map(const kcXform<2>& x) const {
  return kfMakeHandle<kcGraphicEllipseAnnulusSection>(section_.map(x), props());
}

kcGraphicPtr kcGraphicEllipseAnnulusSection::clone() const {
  return kfMakeHandle<kcGraphicEllipseAnnulusSection>(*this);
}

double kcGraphicEllipseAnnulusSection::distToPoint(const kcVector<2>& p) const {
  return section_.distToPoint(p);
}

void kcGraphicEllipseAnnulusSection::draw(kcUITablet& t, kcUITablet::Layers layer) const {
  t.draw(section_, props(), layer);
}

void kcGraphicEllipseAnnulusSection::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGraphicEllipseAnnulusSection::serialize_(kcArchive& ar, unsigned char version) {
  if (version > kVersion) throw kcArchive::UnknownVersion(kGlistSource, kSectionVersionLine);
  loadingWhole(ar, props(), [&] {
    kcGraphic::dispatchSerialize(ar);
    kcEllipseAnnulusSection section = section_;
    ar || section;
    // Version 0 kept the arrow flags beside the section; version 1 keeps
    // them in the props.
    bool arrow = false;
    bool forward = false;
    if (version == 0) ar || arrow || forward;
    if (!ar.isLoading()) return;
    section_ = section;
    if (version == 0) drawArrowHead(arrow, forward);
  });
}
