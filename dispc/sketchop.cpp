#include "dispc/sketchop.h"

#include <memory>
#include <ostream>
#include <string>

#include "dispc/sketchio_p.h"
#include "dispc/uierror.h"

namespace {
[[noreturn]] void invalid() { throw kcUIError::InvalidUISketch(); }

constexpr unsigned char kHeaderVersion = 0;
constexpr int kHeaderVersionLine = 112;
constexpr unsigned char kDataVersion = 0;
constexpr int kDataVersionLine = 143;
constexpr long kMaxLayer = 2;

// Where the flag bytes of a properties record lie (the opcode 40 at 0, the
// version at 1); each must be 0 or 1, so that the record writes back as it was.
constexpr int kPropsFlagsAt[] = {2, 19, 20, 21};
// Where the 20 bytes kcGraphicProps reads begin.
constexpr int kPropsBodyAt = 2;
}  // namespace

// --- the header ---

kc_UISketchOpHeader::kc_UISketchOpHeader(long opcode, long layer, const kcColor& color)
    : opcode_(opcode), color_(color) {
  this->layer(layer);
  props_.penColor(color);
}

kc_UISketchOpHeader::~kc_UISketchOpHeader() = default;

void kc_UISketchOpHeader::layer(long l) {
  if (l < 0 || l > kMaxLayer) throw kcUIError::BadLayer();
  mutating_();
  layer_ = l;
}

void kc_UISketchOpHeader::props(const kcGraphicProps& p) {
  mutating_();
  props_ = p;
  props_.penColor(color_);
  hasProps_ = true;
  propsVersion_ = 0;
}

long kc_UISketchOpHeader::parseByteStream(std::span<const unsigned char> bytes) {
  if (!bytes.empty() && bytes[0] == static_cast<unsigned char>(kcUISketch::kPropsOpcode)) {
    // Read into a copy: the record and the header after it are taken together.
    if (bytes.size() < kPropsSize + kSize) invalid();
    if (bytes[1] != 0) invalid();  // the only properties version
    for (int i : kPropsFlagsAt)
      if (bytes[i] > 1) invalid();
    kcGraphicProps props = props_;
    try {
      kcGraphicProps::opcode(&props, bytes.data() + kPropsBodyAt);
    } catch (const kcGraphicProps::BadParams&) {
      invalid();
    }
    // Two properties records in a row are malformed.
    if (bytes[kPropsSize] == static_cast<unsigned char>(kcUISketch::kPropsOpcode)) invalid();
    kc_UISketchOpHeader header(*this);
    header.props_ = props;
    header.parseByteStream(bytes.subspan(kPropsSize));
    *this = header;
    hasProps_ = true;
    propsVersion_ = 0;
    return kPropsSize + kSize;
  }
  if (bytes.size() < kSize) invalid();
  const unsigned char* h = bytes.data();
  kcColor color;
  if (h[1] > kMaxLayer || !kfLoadSketchColor(h + 2, color)) invalid();
  opcode_ = static_cast<signed char>(h[0]);
  layer_ = h[1];
  color_ = color;
  hasProps_ = false;
  props_.penColor_ = color;
  return kSize;
}

void kc_UISketchOpHeader::populateSketch(kcUISketch& sketch) const {
  if (hasProps_) sketch.propsRecord_(props_);
  sketch.opcode(static_cast<signed char>(opcode_), static_cast<signed char>(layer_), color_);
}

void kc_UISketchOpHeader::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kHeaderVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kc_UISketchOpHeader::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kHeaderVersion) throw kcArchive::UnknownVersion("dispc/sketchop", kHeaderVersionLine);
  // Read whole into a copy, so that a refused header changes nothing.
  kc_UISketchOpHeader h(*this);
  ar || h.hasProps_;
  if (h.hasProps_) ar || h.propsVersion_ || h.props_;
  std::int32_t layer = static_cast<std::int32_t>(h.layer_);
  std::int32_t opcode = static_cast<std::int32_t>(h.opcode_);
  ar || layer || h.color_ || opcode;
  if (ar.isStoring()) return;
  if (h.hasProps_ && h.propsVersion_ != 0)
    throw kcArchive::Corrupt(L"sketch properties of an unknown version");
  if (layer < 0 || layer > kMaxLayer) throw kcArchive::Corrupt(L"sketch record on no layer");
  if (!kcUISketchOps::find(opcode)) throw kcArchive::Corrupt(L"sketch record with no such opcode");
  mutating_();
  opcode_ = opcode;
  layer_ = layer;
  color_ = h.color_;
  hasProps_ = h.hasProps_;
  propsVersion_ = h.propsVersion_;
  props_ = h.props_;
  props_.penColor(color_);
}

KC_DEFINE_PERSISTENT(kc_UISketchOpHeader)

// --- payloads ---

kc_UISketchOpData::~kc_UISketchOpData() = default;

void kc_UISketchOpData::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kDataVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kc_UISketchOpData::serialize_(kcArchive&, unsigned char version) {
  if (version != kDataVersion) throw kcArchive::UnknownVersion("dispc/sketchop", kDataVersionLine);
}

// --- the opcode table ---

namespace {
using Make = kc_UISketchOpData* (*)();

struct Slot {
  const kcUISketchOps::Entry* entry = nullptr;
  Make make = nullptr;
};

// The table indexed by opcode; holes stay empty.
constexpr std::array<Slot, kcUISketchOps::kCount> makeSlots() {
  std::array<Slot, kcUISketchOps::kCount> slots{};
  std::size_t i = 0;
#define DISPC_SKETCH_SLOT_(op, Name, size) \
  slots[op] = {&kcUISketchOps::kTable[i++], []() -> kc_UISketchOpData* { return new kc_UISketchOp##Name(); }};
  DISPC_SKETCH_OPCODES(DISPC_SKETCH_SLOT_)
#undef DISPC_SKETCH_SLOT_
  return slots;
}
constexpr std::array<Slot, kcUISketchOps::kCount> kSlots = makeSlots();
}  // namespace

const kcUISketchOps::Entry* kcUISketchOps::find(long opcode) noexcept {
  return opcode >= 0 && opcode < kCount ? kSlots[static_cast<std::size_t>(opcode)].entry : nullptr;
}

kc_UISketchOpData* kfCreateUISketchOpData(long opcode) {
  if (!kcUISketchOps::find(opcode)) invalid();
  return kSlots[static_cast<std::size_t>(opcode)].make();
}

// --- parsing ---

long kfParseUISketch(const kcUISketch& sketch, long offset, kc_UISketchOpHeader& header,
                     kc_UISketchOpData** data) {
  const std::span<const unsigned char> bytes = sketch.bytes();
  if (offset < 0 || static_cast<std::size_t>(offset) >= bytes.size()) invalid();
  const std::span<const unsigned char> rest = bytes.subspan(static_cast<std::size_t>(offset));
  kc_UISketchOpHeader parsed(header);
  const long headerBytes = parsed.parseByteStream(rest);
  // The caller's once parsed (a new payload object holds no handle yet).
  std::unique_ptr<kc_UISketchOpData> payload(kfCreateUISketchOpData(parsed.opcode()));
  const long payloadBytes = payload->parseByteStream(rest.subspan(static_cast<std::size_t>(headerBytes)));
  header = parsed;
  if (data) *data = payload.release();
  return headerBytes + payloadBytes;
}

kcUISketchParser::kcUISketchParser(std::span<const unsigned char> bytes, bool version0)
    : bytes_(bytes), version0_(version0) {}

bool kcUISketchParser::next() {
  if (static_cast<std::size_t>(at_) >= bytes_.size()) return false;
  const std::span<const unsigned char> rest = bytes_.subspan(static_cast<std::size_t>(at_));
  const long headerBytes = header_.parseByteStream(rest);
  const long opcode = header_.opcode();
  if (!kcUISketchOps::find(opcode)) invalid();
  kcUISketchOpDataPtr& slot = cache_[static_cast<std::size_t>(opcode)];
  if (!slot) slot = kcUISketchOpDataPtr(kSlots[static_cast<std::size_t>(opcode)].make());
  const std::span<const unsigned char> payload = rest.subspan(static_cast<std::size_t>(headerBytes));
  const long payloadBytes =
      version0_ ? slot->parseVersion0ByteStream(payload) : slot->parseByteStream(payload);
  data_ = slot.get();
  recordAt_ = at_;
  at_ += headerBytes + payloadBytes;
  return true;
}

// --- dump ---

std::string kcSketchIO::Dumper::text(const kcColor& c) { return kfColorText(c); }

void kfDumpUISketch(const kcUISketch& sketch, std::ostream& out) {
  for (kcUISketchParser records(sketch); records.next();) {
    const kc_UISketchOpHeader& h = records.header();
    out << records.recordOffset() << ": " << h.opcode() << ' ' << kcUISketchOps::find(h.opcode())->name
        << " layer=" << h.layer() << " colour=" << kcSketchIO::Dumper::text(h.color());
    if (h.hasProps()) {
      const kcGraphicProps& p = h.props();
      out << " props{width=" << p.penWidth() << " style=" << p.penStyle() << " join=" << p.penJoin()
          << " cap=" << p.penEndCap() << " fill=" << p.fill() << " arrow=" << p.arrowHead()
          << " forward=" << p.arrowHeadForward() << " vertices=" << p.showVertex() << '}';
    }
    out << " |";
    records.data().dump(out);
    out << '\n';
  }
}
