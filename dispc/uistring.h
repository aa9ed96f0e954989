// kcUIFormat: the font and the alignment of a piece of text.
//
// The alignment names the point of the text's rectangle that lies at the
// anchor (the position the text is drawn at), in reading order of a 3 by 3
// grid: 0 top left ... 4 centre ... 8 bottom right. Values outside 0 to 8 can
// be stored and mean top left. What a font id selects is up to the renderer
// behind the tablet.
//
// The process-wide default font id starts as -1. Its cell is made on the
// first call to defaultFontId() (read or write) under the foundation's global
// mutex, tested again inside the lock so concurrent first calls make it
// once; later calls use it without locking. The cell is atomic, so reads and
// writes from several threads are not data races, but they are not ordered
// with anything else either.
//
// Archive form: an unsigned version byte (0), then fontId and alignment as
// 32-bit values. Another version is kcArchive::UnknownVersion
// ("dispc/uistring", line 77); the target is left unchanged by a failed load.
#pragma once

#include <cstdint>

#include "dispc/uirect.h"
#include "foundation/archive.h"

class kcUIFormat {
 public:
  enum Alignment : std::int32_t {
    topLeft = 0,
    topCenter = 1,
    topRight = 2,
    middleLeft = 3,
    center = 4,
    middleRight = 5,
    bottomLeft = 6,
    bottomCenter = 7,
    bottomRight = 8,
  };

  kcUIFormat(long fontId, Alignment alignment) noexcept : fontId_(fontId), alignment_(alignment) {}
  // The font is the process-wide default at the time of construction.
  explicit kcUIFormat(Alignment alignment = topLeft);

  [[nodiscard]] long fontId() const noexcept { return fontId_; }
  void fontId(long id) noexcept { fontId_ = id; }
  [[nodiscard]] Alignment alignment() const noexcept { return alignment_; }
  void alignment(Alignment a) noexcept { alignment_ = a; }

  [[nodiscard]] static long defaultFontId();
  static void defaultFontId(long id);

  // r moved so that the pel its upper-left corner names becomes the anchor
  // point given by the alignment: for a centred column the corner moves left
  // by width / 2, for a right column by the width, and likewise upwards for
  // the middle and bottom rows (integer halves). Normalised, so an empty size
  // gives the null rectangle; an alignment outside 0 to 8 moves nothing.
  [[nodiscard]] kcUIRect alignRect(const kcUIRect& r) const noexcept;

  [[nodiscard]] bool operator==(const kcUIFormat& o) const noexcept = default;

 private:
  friend kcArchive& operator||(kcArchive& ar, kcUIFormat& f);

  long fontId_;
  Alignment alignment_;
};

kcArchive& operator||(kcArchive& ar, kcUIFormat& f);
