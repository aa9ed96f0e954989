#include "dispc/dispprop.h"

#include <limits>
#include <ostream>

#include "dispc/uisketch.h"
#include "foundation/archive.h"
#include "foundation/bytes.h"

namespace {
// Where the archive reports an unknown version of the record.
constexpr const char* kSource = "dispc/dispprop";
constexpr int kVersionLine = 49;

constexpr long kMaxPenWidth = std::numeric_limits<std::int32_t>::max();

// Offsets inside the sketch record (the reader sees them less one, as it
// starts after the record code).
constexpr int kFillAt = 1;
constexpr int kWidthAt = 2;
constexpr int kStyleAt = 6;
constexpr int kJoinAt = 10;
constexpr int kCapAt = 14;
constexpr int kArrowAt = 18;
constexpr int kForwardAt = 19;
constexpr int kVertexAt = 20;
}  // namespace

// --- error ---

KC_DEFINE_EXCEPTION(kcGraphicProps::BadParams, 0x10004513, kcException);

void kcGraphicProps::BadParams::message_(std::wostream& out) const {
  out << L"bad graphic properties: the pen width must be 0 to 2147483647";
}

// --- construction ---

KC_DEFINE_PERSISTENT(kcGraphicProps);

kcGraphicProps::kcGraphicProps(const kcColor& penColor, long penWidth, kePenStyle penStyle, bool fill)
    : penColor_(penColor), penWidth_(penWidth), penStyle_(penStyle), fill_(fill) {
  checkWidth_(penWidth_);
}

kcGraphicProps::~kcGraphicProps() = default;

void kcGraphicProps::checkWidth_(long w) {
  if (w < 0 || w > kMaxPenWidth) throw BadParams();
}

// --- setters ---

void kcGraphicProps::penColor(const kcColor& c) {
  mutating_();
  penColor_ = c;
}

void kcGraphicProps::penWidth(long w) {
  checkWidth_(w);
  mutating_();
  penWidth_ = w;
}

void kcGraphicProps::penStyle(kePenStyle s) {
  mutating_();
  penStyle_ = s;
}

void kcGraphicProps::penJoin(kePenJoin j) {
  mutating_();
  penJoin_ = j;
}

void kcGraphicProps::penEndCap(kePenEndCap c) {
  mutating_();
  penEndCap_ = c;
}

void kcGraphicProps::fill(bool f) {
  mutating_();
  fill_ = f;
}

void kcGraphicProps::arrowHead(bool a) {
  mutating_();
  arrowHead_ = a;
}

void kcGraphicProps::arrowHeadForward(bool f) {
  mutating_();
  arrowHeadForward_ = f;
}

void kcGraphicProps::showVertex(bool s) {
  mutating_();
  showVertex_ = s;
}

// --- comparison ---

bool kcGraphicProps::operator==(const kcGraphicProps& o) const noexcept {
  return penColor_ == o.penColor_ && penWidth_ == o.penWidth_ && penStyle_ == o.penStyle_ &&
         fill_ == o.fill_ && penJoin_ == o.penJoin_ && penEndCap_ == o.penEndCap_ &&
         arrowHead_ == o.arrowHead_ && arrowHeadForward_ == o.arrowHeadForward_ &&
         showVertex_ == o.showVertex_;
}

// --- archive ---

void kcGraphicProps::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGraphicProps::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, kVersionLine);
  // The persistent base has no fields of its own, so nothing is transferred
  // for it. The fields go through locals: the enumerations travel as plain
  // 32-bit integers, and a load commits only once the whole record is read.
  kcColor color = penColor_;
  long width = penWidth_;
  std::int32_t style = penStyle_;
  bool fill = fill_;
  std::int32_t join = penJoin_;
  std::int32_t cap = penEndCap_;
  bool arrow = arrowHead_;
  bool forward = arrowHeadForward_;
  bool vertex = showVertex_;
  ar || color || width || style || fill || join || cap || arrow || forward || vertex;
  if (!ar.isLoading()) return;
  checkWidth_(width);
  mutating_();
  penColor_ = color;
  penWidth_ = width;
  penStyle_ = static_cast<kePenStyle>(style);
  fill_ = fill;
  penJoin_ = static_cast<kePenJoin>(join);
  penEndCap_ = static_cast<kePenEndCap>(cap);
  arrowHead_ = arrow;
  arrowHeadForward_ = forward;
  showVertex_ = vertex;
}

// --- sketch record ---

long kcGraphicProps::opcode(kcUISketch* sketch, const kcGraphicProps& p) {
  if (!sketch) return 0;
  unsigned char* out = sketch->append(kRecordSize);
  out[0] = kRecordCode;
  out[kFillAt] = p.fill_ ? 1 : 0;
  // The width always fits: every way in checks it.
  kfStoreLE(out + kWidthAt, static_cast<std::int32_t>(p.penWidth_));
  kfStoreLE<std::int32_t>(out + kStyleAt, p.penStyle_);
  kfStoreLE<std::int32_t>(out + kJoinAt, p.penJoin_);
  kfStoreLE<std::int32_t>(out + kCapAt, p.penEndCap_);
  out[kArrowAt] = p.arrowHead_ ? 1 : 0;
  out[kForwardAt] = p.arrowHeadForward_ ? 1 : 0;
  out[kVertexAt] = p.showVertex_ ? 1 : 0;
  return kRecordSize;
}

long kcGraphicProps::opcode(kcGraphicProps* target, const unsigned char* bytes) {
  if (!target || !bytes) return 0;
  // bytes starts after the record code, so record offset k is bytes[k - 1].
  auto in = [bytes](int k) { return bytes + (k - 1); };
  const long width = kfLoadLE<std::int32_t>(in(kWidthAt));
  // Checked before anything is set, so a bad record changes nothing.
  checkWidth_(width);
  // The flags are read as bytes, not as bool, so that any non-zero byte is true.
  target->fill(*in(kFillAt) != 0);
  target->penWidth(width);
  target->penStyle(static_cast<kePenStyle>(kfLoadLE<std::int32_t>(in(kStyleAt))));
  target->penJoin(static_cast<kePenJoin>(kfLoadLE<std::int32_t>(in(kJoinAt))));
  target->penEndCap(static_cast<kePenEndCap>(kfLoadLE<std::int32_t>(in(kCapAt))));
  target->arrowHead(*in(kArrowAt) != 0);
  target->arrowHeadForward(*in(kForwardAt) != 0);
  target->showVertex(*in(kVertexAt) != 0);
  return kRecordBodySize;
}
