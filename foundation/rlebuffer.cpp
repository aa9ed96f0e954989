#include "foundation/rlebuffer.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "foundation/archive.h"
#include "foundation/exception.h"

namespace {

constexpr unsigned kRunShift = 8;
constexpr std::uint16_t kEndUnit = 0;

// Why units do not encode a width x height image, or null when they do. The
// size is tested against the number of units first, so a huge claimed size
// is refused before anything walks or allocates for it.
const wchar_t* unitsProblem(long width, long height, const std::vector<std::uint16_t>& units) {
  if (width < 0 || height < 0) return L"negative image size";
  if (units.empty()) return width == 0 && height == 0 ? nullptr : L"no units for a non-empty size";
  if (units.back() != kEndUnit) return L"units do not end with a zero unit";
  // Each row takes at least one unit, and each unit at most kMaxRun pels.
  const std::uint64_t runs = units.size() - 1;
  const auto w = static_cast<std::uint64_t>(width);
  const auto h = static_cast<std::uint64_t>(height);
  if (w == 0 || h == 0) return runs == 0 ? nullptr : L"runs in an image without pels";
  if (h > runs || w > kcRLEBuffer::kMaxRun * runs / h) return L"too few units for the image size";
  std::uint64_t row = 0;
  std::uint64_t column = 0;
  for (std::size_t i = 0; i < runs; ++i) {
    const unsigned run = units[i] >> kRunShift;
    if (run == 0) return L"zero-length run inside the image";
    if (row == h) return L"units after the last row";
    column += run;
    if (column > w) return L"run crosses the end of a row";
    if (column == w) {
      ++row;
      column = 0;
    }
  }
  return row == h ? nullptr : L"units end before the last row";
}

}  // namespace

// --- construction ---

kcRLEBuffer::kcRLEBuffer(long width, long height, std::vector<std::uint16_t> units) {
  if (unitsProblem(width, height, units)) throw kcShapesError::BadParams();
  width_ = width;
  height_ = height;
  units_ = std::move(units);
}

// --- encoding ---

void kcRLEBuffer::encode(const kcPelBuffer_const<unsigned char>& image) {
  std::vector<std::uint16_t> units;
  if (!image.isNull()) {
    for (long y = 0; y < image.height(); ++y) {
      const unsigned char* pels = image.row(y);
      long x = 0;
      while (x < image.width()) {
        const unsigned char value = pels[x];
        long run = 1;
        while (x + run < image.width() && run < static_cast<long>(kMaxRun) && pels[x + run] == value) ++run;
        units.push_back(static_cast<std::uint16_t>((run << kRunShift) | value));
        x += run;
      }
    }
    units.push_back(kEndUnit);
  }
  width_ = image.width();
  height_ = image.height();
  units_ = std::move(units);
}

kcPelBuffer<unsigned char> kcRLEBuffer::decode() const {
  if (isNull()) return {};
  kcPelBuffer<unsigned char> image(width_, height_);
  // The units were checked when they came in: rows fill up exactly.
  long x = 0;
  long y = 0;
  for (std::size_t i = 0; i + 1 < units_.size(); ++i) {
    const long run = units_[i] >> kRunShift;
    std::fill_n(image.row(y) + x, run, static_cast<unsigned char>(units_[i] & 0xFF));
    x += run;
    if (x == width_) {
      x = 0;
      ++y;
    }
  }
  return image;
}

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcRLEBuffer& buffer) {
  if (ar.isStoring()) return ar || buffer.width_ || buffer.height_ || buffer.units_;
  long width = 0;
  long height = 0;
  std::vector<std::uint16_t> units;
  ar || width || height || units;
  if (const wchar_t* problem = unitsProblem(width, height, units))
    throw kcArchive::Corrupt(std::wstring(L"run-length image: ") + problem);
  buffer.width_ = width;
  buffer.height_ = height;
  buffer.units_ = std::move(units);
  return ar;
}
