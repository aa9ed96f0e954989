// The four passes over a sketch payload: sizing, writing, reading and
// dumping. Each payload value has one transfer routine,
//
//   template <class IO> void sketchTransfer(IO& io, kcCross& v);
//
// that hands its fields to io in record order: io("name", field) for a
// number, a flag, a point, a transform or a colour; io.zeros(n) for unused
// bytes; io.count(...) and io.units(...) for what a count governs. When
// IO::kLoading is set the fields hold what was read and the routine builds
// the value from them (so the value's own checks run); otherwise they hold
// the value's and the routine only passes them on.
#pragma once

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <span>
#include <string>
#include <utility>

#include "dispc/sketchop.h"
#include "dispc/uierror.h"
#include "foundation/bytes.h"

namespace kcSketchIO {

// A transform as six numbers: the matrix row by row, then the translation.
inline void flatten(const kcXform<2>& x, double (&d)[6]) {
  const kcMatrix<2>& m = x.matrix();
  d[0] = m.element(0, 0);
  d[1] = m.element(0, 1);
  d[2] = m.element(1, 0);
  d[3] = m.element(1, 1);
  d[4] = x.trans().x();
  d[5] = x.trans().y();
}
inline kcXform<2> unflatten(const double (&d)[6]) {
  return {kcMatrix<2>(d[0], d[1], d[2], d[3]), kcVector<2>(d[4], d[5])};
}

// The same bits: what a value must give back to write what was read.
inline bool sameBits(const kcVector<2>& a, const kcVector<2>& b) noexcept {
  return std::bit_cast<std::uint64_t>(a.x()) == std::bit_cast<std::uint64_t>(b.x()) &&
         std::bit_cast<std::uint64_t>(a.y()) == std::bit_cast<std::uint64_t>(b.y());
}

// Counts the bytes a payload takes.
class Sizer {
 public:
  static constexpr bool kLoading = false;
  template <kcWireScalar T>
  void operator()(const char*, const T&) noexcept {
    size_ += sizeof(T);
  }
  void operator()(const char*, const kcVector<2>&) noexcept { size_ += 16; }
  void operator()(const char*, const kcXform<2>&) noexcept { size_ += 48; }
  void operator()(const char*, const kcColor&) noexcept { size_ += kSketchColorSize; }
  void zeros(std::size_t n) noexcept { size_ += n; }
  // A count of elements of at least minSize bytes each.
  void count(const char*, std::uint32_t&, std::size_t) noexcept { size_ += 4; }
  void units(const char*, const void*, std::size_t n) noexcept { size_ += n; }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

 private:
  std::size_t size_ = 0;
};

// Writes a payload into bytes already reserved for it.
class Writer {
 public:
  static constexpr bool kLoading = false;
  explicit Writer(unsigned char* at) noexcept : at_(at) {}
  template <kcWireScalar T>
  void operator()(const char*, const T& v) noexcept {
    if constexpr (std::is_same_v<T, bool>)
      *at_ = v ? 1 : 0;
    else
      kfStoreLE(at_, v);
    at_ += sizeof(T);
  }
  void operator()(const char* name, const kcVector<2>& v) noexcept {
    (*this)(name, v.x());
    (*this)(name, v.y());
  }
  void operator()(const char* name, const kcXform<2>& x) {
    double d[6];
    flatten(x, d);
    for (double e : d) (*this)(name, e);
  }
  void operator()(const char*, const kcColor& c) noexcept {
    kfStoreSketchColor(at_, c);
    at_ += kSketchColorSize;
  }
  void zeros(std::size_t n) noexcept {
    std::memset(at_, 0, n);
    at_ += n;
  }
  void count(const char* name, std::uint32_t& n, std::size_t) noexcept { (*this)(name, n); }
  void units(const char*, const void* p, std::size_t n) noexcept {
    if (n) std::memcpy(at_, p, n);
    at_ += n;
  }

 private:
  unsigned char* at_;
};

// Reads a payload from the bytes left in the stream; anything short or
// malformed is InvalidUISketch.
class Reader {
 public:
  static constexpr bool kLoading = true;
  explicit Reader(std::span<const unsigned char> bytes) noexcept : in_(bytes) {}

  [[noreturn]] static void invalid() { throw kcUIError::InvalidUISketch(); }

  template <kcWireScalar T>
  void operator()(const char*, T& v) {
    if constexpr (std::is_same_v<T, bool>) {
      // A flag is 0 or 1, so that it writes back as it was.
      unsigned char b = 0;
      if (!in_.read(b) || b > 1) invalid();
      v = b != 0;
    } else if (!in_.read(v)) {
      invalid();
    }
  }
  void operator()(const char* name, kcVector<2>& v) {
    double x = 0;
    double y = 0;
    (*this)(name, x);
    (*this)(name, y);
    v = kcVector<2>(x, y);
  }
  void operator()(const char* name, kcXform<2>& x) {
    double d[6];
    for (double& e : d) (*this)(name, e);
    x = unflatten(d);
  }
  void operator()(const char*, kcColor& c) {
    const auto bytes = in_.take(kSketchColorSize);
    if (!bytes || !kfLoadSketchColor(bytes->data(), c)) invalid();
  }
  void zeros(std::size_t n) {
    const auto bytes = in_.take(n);
    if (!bytes) invalid();
    for (unsigned char b : *bytes)
      if (b) invalid();
  }
  // Refuses a count that more elements of minSize bytes than remain would need.
  void count(const char* name, std::uint32_t& n, std::size_t minSize) {
    (*this)(name, n);
    if (minSize && n > in_.remaining() / minSize) invalid();
  }
  void units(const char*, void* p, std::size_t n) {
    if (!in_.readBytes(p, n)) invalid();
  }
  [[nodiscard]] std::size_t position() const noexcept { return in_.position(); }
  [[nodiscard]] std::size_t remaining() const noexcept { return in_.remaining(); }
  [[nodiscard]] const unsigned char* here() const noexcept { return in_.here(); }

 private:
  kcByteReader in_;
};

// Writes " name=value" for every field.
class Dumper {
 public:
  static constexpr bool kLoading = false;
  explicit Dumper(std::ostream& out) noexcept : out_(out) {}
  template <kcWireScalar T>
  void operator()(const char* name, const T& v) {
    out_ << ' ' << name << '=';
    put(v);
  }
  void operator()(const char* name, const kcVector<2>& v) {
    out_ << ' ' << name << "=(";
    put(v.x());
    out_ << ", ";
    put(v.y());
    out_ << ')';
  }
  void operator()(const char* name, const kcXform<2>& x) {
    double d[6];
    flatten(x, d);
    out_ << ' ' << name << "=[";
    for (int i = 0; i < 6; ++i) {
      if (i) out_ << (i == 4 ? "; " : ", ");
      put(d[i]);
    }
    out_ << ']';
  }
  void operator()(const char* name, const kcColor& c) { out_ << ' ' << name << '=' << text(c); }
  void zeros(std::size_t) noexcept {}
  void count(const char* name, std::uint32_t& n, std::size_t) { (*this)(name, n); }
  void units(const char* name, const void*, std::size_t n) { out_ << ' ' << name << "=<" << n << " bytes>"; }
  std::ostream& out() noexcept { return out_; }

  // A colour as "index 5", "rgb(1,2,3)" or "stock 249 rgb(255,0,0)".
  [[nodiscard]] static std::string text(const kcColor& c);

 private:
  template <class T>
  void put(const T& v) {
    if constexpr (std::is_same_v<T, bool>) {
      out_ << (v ? "true" : "false");
    } else if constexpr (std::is_floating_point_v<T>) {
      // The shortest form that reads back as the same number.
      char buffer[32];
      const auto end = std::to_chars(buffer, buffer + sizeof buffer, v).ptr;
      out_.write(buffer, end - buffer);
    } else if constexpr (sizeof(T) == 1) {
      out_ << static_cast<int>(v);
    } else {
      out_ << v;
    }
  }
  std::ostream& out_;
};

}  // namespace kcSketchIO

// --- the transfer routines, one per payload value ---

#define DISPC_SKETCH_TRANSFER_(Name, Value) \
  template <class IO>                       \
  void sketchTransfer(IO& io, Value& v);
DISPC_SKETCH_PAYLOADS(DISPC_SKETCH_TRANSFER_)
DISPC_SKETCH_TRANSFER_(GenPoly, kcGenPoly)
DISPC_SKETCH_TRANSFER_(Wireframe, kc2Wireframe)
#undef DISPC_SKETCH_TRANSFER_

// The wireframe block in either layout.
template <class IO, class V>
void sketchTransferBlock(IO& io, V& v, bool version0);

// A payload value's archive transfer: its own, except that the wireframe
// block also carries what its vertices hold beyond their archive form (the
// extension percentages).
template <class V>
void sketchArchive(kcArchive& ar, V& v) {
  ar || v;
}
void sketchArchive(kcArchive& ar, kcGenPoly& v);
void sketchArchive(kcArchive& ar, kc2Wireframe& v);

// Playback: draws a record's value on a tablet through the call that
// recorded it, the opcode telling apart the calls that share a value
// (tablet_play.cpp).
#define DISPC_SKETCH_DRAW_(Name, Value) \
  void sketchDraw(kcUITablet& t, const kc_UISketchOpHeader& h, const Value& v);
DISPC_SKETCH_PAYLOADS(DISPC_SKETCH_DRAW_)
DISPC_SKETCH_DRAW_(GenPoly, kcGenPoly)
DISPC_SKETCH_DRAW_(Wireframe, kc2Wireframe)
#undef DISPC_SKETCH_DRAW_

// A value read from bytes: InvalidUISketch for anything its own checks refuse.
template <class V, class Read>
V sketchLoad(Read&& read) {
  try {
    V v;
    read(v);
    return v;
  } catch (const kcUIError::InvalidUISketch&) {
    throw;
  } catch (const kcException&) {
    kcSketchIO::Reader::invalid();
  }
}

// --- the payload classes' members ---

// A shape's transfer reads every field before it builds the shape, so it
// may read straight into the value it replaces: a refused record leaves it
// as it was. Other values are read into a fresh one.
template <class V>
inline constexpr bool kSketchReadsInPlace = std::is_base_of_v<kcShape, V>;

template <class Self, class V>
long kc_UISketchOpOf<Self, V>::parseByteStream(std::span<const unsigned char> bytes) {
  kcSketchIO::Reader in(bytes);
  if constexpr (kSketchReadsInPlace<V>) {
    try {
      sketchTransfer(in, value_);
    } catch (const kcUIError::InvalidUISketch&) {
      throw;
    } catch (const kcException&) {
      kcSketchIO::Reader::invalid();
    }
  } else {
    value_ = sketchLoad<V>([&](V& v) { sketchTransfer(in, v); });
  }
  return static_cast<long>(in.position());
}

template <class Self, class V>
void kc_UISketchOpOf<Self, V>::write(kcUISketch& sketch, const V& v) {
  V& value = const_cast<V&>(v);  // writing reads the fields only
  kcSketchIO::Sizer sizer;
  sketchTransfer(sizer, value);
  kcSketchIO::Writer out(sketch.append(static_cast<long>(sizer.size())));
  sketchTransfer(out, value);
}

template <class Self, class V>
void kc_UISketchOpOf<Self, V>::record(kcUISketch& sketch, signed char opcode, signed char layer,
                                      const kcGraphicProps& props, const V& v) {
  sketch.opcode(kcUISketch::kPropsOpcode, props);
  V& value = const_cast<V&>(v);
  kcSketchIO::Sizer sizer;
  sketchTransfer(sizer, value);
  // One append for header and payload: the bytes go out in one run.
  unsigned char* out = sketch.append(kcUISketch::kHeaderSize + static_cast<long>(sizer.size()));
  // The header as one store: opcode, layer, then the colour's 6 bytes.
  kfStoreLE(out, static_cast<std::uint64_t>(static_cast<unsigned char>(opcode)) |
                     (static_cast<std::uint64_t>(static_cast<unsigned char>(layer)) << 8) |
                     (kfSketchColorBits(props.penColor()) << 16));
  kcSketchIO::Writer payload(out + kcUISketch::kHeaderSize);
  sketchTransfer(payload, value);
}

template <class Self, class V>
void kc_UISketchOpOf<Self, V>::populateSketch(kcUISketch& sketch) const {
  write(sketch, value_);
}

template <class Self, class V>
void kc_UISketchOpOf<Self, V>::draw(kcUITablet& tablet, const kc_UISketchOpHeader& header) const {
  sketchDraw(tablet, header, value_);
}

template <class Self, class V>
void kc_UISketchOpOf<Self, V>::dump(std::ostream& out) const {
  kcSketchIO::Dumper dumper(out);
  sketchTransfer(dumper, const_cast<V&>(value_));
}

// Payload objects are version 0; another version names the shared transfer.
inline constexpr int kSketchOpVersionLine = 214;

template <class Self, class V>
void kc_UISketchOpOf<Self, V>::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, static_cast<Self*>(this), 0, [&](unsigned char version) {
    if (version != 0) throw kcArchive::UnknownVersion("dispc/sketchop", kSketchOpVersionLine);
    kc_UISketchOpData::dispatchSerialize(ar);
    if (ar.isStoring()) {
      sketchArchive(ar, value_);
      return;
    }
    // Read whole before the object changes.
    V loaded;
    sketchArchive(ar, loaded);
    // What an archive brings must be a record a stream can hold: written
    // and read again, it gives the same bytes.
    thread_local kcUISketch scratch;
    scratch.erase();
    try {
      write(scratch, loaded);
      kcSketchIO::Reader in(scratch.bytes());
      const V back = sketchLoad<V>([&](V& v) { sketchTransfer(in, v); });
      if (in.remaining() != 0) kcSketchIO::Reader::invalid();
      const std::size_t n = static_cast<std::size_t>(scratch.length());
      write(scratch, back);
      if (static_cast<std::size_t>(scratch.length()) != 2 * n ||
          (n > 0 && std::memcmp(scratch.data(), scratch.data() + n, n) != 0))
        kcSketchIO::Reader::invalid();
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"sketch payload that no sketch stream can hold");
    }
    value_ = std::move(loaded);
  });
}

template <class Self, class V>
long kc_UISketchOpBlock<Self, V>::parseVersion0ByteStream(std::span<const unsigned char> bytes) {
  kcSketchIO::Reader in(bytes);
  this->value_ = sketchLoad<V>([&](V& v) { sketchTransferBlock(in, v, true); });
  return static_cast<long>(in.position());
}

// The payloads whose transfers live in sketchop_values.cpp are instantiated
// there only; users of this header call the instantiated members.
#define DISPC_SKETCH_EXTERN_(Name, Value) extern template class kc_UISketchOpOf<kc_UISketchOp##Name, Value>;
DISPC_SKETCH_VALUE_PAYLOADS(DISPC_SKETCH_EXTERN_)
DISPC_SKETCH_EXTERN_(GenPoly, kcGenPoly)
DISPC_SKETCH_EXTERN_(Wireframe, kc2Wireframe)
#undef DISPC_SKETCH_EXTERN_
extern template class kc_UISketchOpBlock<kc_UISketchOpGenPoly, kcGenPoly>;
extern template class kc_UISketchOpBlock<kc_UISketchOpWireframe, kc2Wireframe>;
