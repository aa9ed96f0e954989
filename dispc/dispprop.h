// kcGraphicProps: the drawing attributes every graphic carries and every
// tablet drawing call receives (pen colour, width, style, join, end cap, fill,
// arrow heads, vertex marks).
//
// The defaults draw a 1-pel cyan solid outline without fill, with an arrow
// head pointing forward, so a directed shape shows its direction unless the
// caller turns that off.
//
// The pen width is never negative and always fits the 32 bits it has in an
// archive or a sketch: a width outside 0 to 2147483647 throws BadParams,
// whether it comes through the constructor, the setter, a sketch record or an
// archive. The three enumerations are stored as given, never range-checked.
//
// Archive form: an unsigned version byte (0); the persistent base (which has
// no fields of its own); the 7-byte kcColor record; penWidth (32-bit);
// penStyle (32-bit); fill (1 byte); penJoin, penEndCap (32-bit each);
// arrowHead, arrowHeadForward, showVertex (1 byte each): 28 bytes in all.
// Another version is kcArchive::UnknownVersion ("dispc/dispprop", line 49).
// A record is read whole before the target changes, so a failed load leaves
// the target as it was.
//
// Sketch record (21 bytes, little-endian, no colour: the sketch writes the
// colour into each operation header): record code 0; fill; penWidth;
// penStyle; penJoin; penEndCap; arrowHead; arrowHeadForward; showVertex.
// On reading, any nonzero flag byte means true.
#pragma once

#include <cstdint>
#include <cstring>
#include <iosfwd>

#include "dispc/classes.h"
#include "dispc/color.h"
#include "foundation/exception.h"
#include "foundation/persistent.h"

class kcUISketch;
class kc_UISketchOpHeader;

class kcGraphicProps : public virtual kcPersistent {
 public:
  KC_DECLARE_PERSISTENT(kcGraphicProps);

  // Line pattern. The values follow the usual pen-style numbering of display
  // systems; the tablet and the sketch playback give them their meaning.
  enum kePenStyle : std::int32_t {
    penSolid = 0,
    penDash = 1,
    penDot = 2,
    penDashDot = 3,
    penDashDotDot = 4,
    penNull = 5,
  };
  // How the segments of a wide line meet.
  enum kePenJoin : std::int32_t {
    joinRound = 0,
    joinBevel = 1,
    joinMiter = 2,
  };
  // How the open ends of a wide line are finished.
  enum kePenEndCap : std::int32_t {
    capRound = 0,
    capSquare = 1,
    capFlat = 2,
  };

  // A pen width outside 0 to 2147483647.
  class BadParams : public kcException {
   public:
    KC_DECLARE_EXCEPTION(BadParams);
    void message_(std::wostream& out) const override;
  };

  // Cyan, width 1, solid, no fill, round join and cap, arrow head on and
  // forward, vertices not marked.
  kcGraphicProps() = default;
  kcGraphicProps(const kcGraphicProps&) = default;
  // The other fields get their defaults. Throws BadParams for a bad width.
  kcGraphicProps(const kcColor& penColor, long penWidth, kePenStyle penStyle, bool fill);
  kcGraphicProps& operator=(const kcGraphicProps&) = default;
  ~kcGraphicProps() override;

  [[nodiscard]] const kcColor& penColor() const noexcept { return penColor_; }
  // In screen pels.
  [[nodiscard]] long penWidth() const noexcept { return penWidth_; }
  [[nodiscard]] kePenStyle penStyle() const noexcept { return penStyle_; }
  [[nodiscard]] kePenJoin penJoin() const noexcept { return penJoin_; }
  [[nodiscard]] kePenEndCap penEndCap() const noexcept { return penEndCap_; }
  // Closed shapes are filled rather than outlined.
  [[nodiscard]] bool fill() const noexcept { return fill_; }
  // Open curves get an arrow head ...
  [[nodiscard]] bool arrowHead() const noexcept { return arrowHead_; }
  // ... at their end (true) or at their start (false).
  [[nodiscard]] bool arrowHeadForward() const noexcept { return arrowHeadForward_; }
  // Vertices of polygonal shapes are marked.
  [[nodiscard]] bool showVertex() const noexcept { return showVertex_; }

  void penColor(const kcColor& c);
  // Throws BadParams, keeping the old width, for a width outside 0 to 2147483647.
  void penWidth(long w);
  void penStyle(kePenStyle s);
  void penJoin(kePenJoin j);
  void penEndCap(kePenEndCap c);
  void fill(bool f);
  void arrowHead(bool a);
  void arrowHeadForward(bool f);
  void showVertex(bool s);

  // Colours compare by kcColor::operator== (a stock colour equals its index
  // and its triple); every other field exactly.
  [[nodiscard]] bool operator==(const kcGraphicProps& o) const noexcept;
  [[nodiscard]] bool operator!=(const kcGraphicProps& o) const noexcept { return !(*this == o); }

  void dispatchSerialize(kcArchive& ar) override;

  // Bytes of the sketch record, and of the part after its record code.
  static constexpr long kRecordSize = 21;
  static constexpr long kRecordBodySize = 20;
  static constexpr unsigned char kRecordCode = 0;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  friend class kcUISketch;
  friend class kc_UISketchOpHeader;
  // Unit tests reach the sketch-record operations through this class.
  friend class kc_GraphicPropsRecordPeer;

  // Appends the 21-byte record of p to the sketch; returns 21, or 0 (and
  // appends nothing) for a null sketch.
  static long opcode(kcUISketch* sketch, const kcGraphicProps& p);
  // Reads the 20 bytes after a record code into target; returns 20, or 0
  // (and reads nothing) for a null target or null bytes. A bad width throws
  // BadParams and leaves target unchanged.
  static long opcode(kcGraphicProps* target, const unsigned char* bytes);

  // Throws BadParams unless w is a valid pen width.
  static void checkWidth_(long w);

  static constexpr unsigned char kVersion = 0;

  kcColor penColor_ = kcColor::cyanColor();
  // The fields of the sketch record, in one run of bytes without padding
  // (see sameRecord_), so that a recording sketch compares them at once.
  long penWidth_ = 1;
  kePenStyle penStyle_ = penSolid;
  kePenJoin penJoin_ = joinRound;
  kePenEndCap penEndCap_ = capRound;
  bool fill_ = false;
  bool arrowHead_ = true;
  bool arrowHeadForward_ = true;
  bool showVertex_ = false;

  struct RecordLayout_ {
    long width;
    std::int32_t style, join, cap;
    bool fill, arrow, forward, vertex;
  };
  static_assert(sizeof(RecordLayout_) == sizeof(long) + 3 * 4 + 4, "the record fields hold no padding");

  // True when a and b write the same sketch record (the colour aside).
  [[nodiscard]] static bool sameRecord_(const kcGraphicProps& a, const kcGraphicProps& b) noexcept {
    return std::memcmp(&a.penWidth_, &b.penWidth_, sizeof(RecordLayout_)) == 0;
  }
};
