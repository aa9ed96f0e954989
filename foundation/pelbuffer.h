// Pel buffers: rectangular windows onto a shared block of pels (picture
// elements).
//
// The image is the whole block allocated by kcPelBuffer(width, height); its
// pels are addressed in image coordinates, (0, 0) at its first pel, x to the
// right along a row, y down the rows. A buffer shows a window of the image:
// offsetX() and offsetY() place the window's origin in image coordinates, and
// get, put and row take window coordinates. Copies and windows share the pels,
// as handles share an object: a put through one is seen through all. The
// block lives as long as any buffer onto it.
//
// Each buffer value also carries the transform from client coordinates (those
// of the geometry drawn into it) to image coordinates; it is the identity by
// default, and a window starts with the transform of the buffer it was cut from.
//
// Reading or writing outside the window is harmless: get returns T{}, put
// writes nothing. Cutting a window that does not lie inside this one, asking
// for a row outside it, a negative or unaddressable size or a NaN point throw
// kcShapesError::BadParams. A default buffer is null: 0 x 0, no pels, and it
// allocates nothing. A buffer of zero width or height is empty but not null.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <vector>

#include "foundation/exception.h"
#include "foundation/handle.h"
#include "foundation/pair.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

// The shared block of pels, row after row without padding.
template <class T>
class kc_PelBlock : public kcRepBase {
 public:
  kc_PelBlock(long width, long height)
      : width_(width), pels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

  [[nodiscard]] long width() const noexcept { return width_; }
  [[nodiscard]] T* at(long x, long y) noexcept {
    return pels_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + x;
  }

 private:
  long width_;
  std::vector<T> pels_;
};

template <class T>
class kcPelBuffer {
  static_assert(std::is_trivially_copyable_v<T>, "pels are plain values");

 public:
  // A null buffer.
  kcPelBuffer() noexcept = default;
  // A new image of width x height pels, all zero.
  kcPelBuffer(long width, long height);

  [[nodiscard]] bool isNull() const noexcept { return block_.isNull(); }
  [[nodiscard]] long width() const noexcept { return width_; }
  [[nodiscard]] long height() const noexcept { return height_; }
  // The window's origin in image coordinates.
  [[nodiscard]] long offsetX() const noexcept { return x_; }
  [[nodiscard]] long offsetY() const noexcept { return y_; }

  // The w x h window at (x, y) of this window, sharing the pels.
  [[nodiscard]] kcPelBuffer window(long x, long y, long w, long h) const;

  // Pel (x, y) of the window; T{} outside it.
  [[nodiscard]] T get(long x, long y) const noexcept { return inside_(x, y) ? *pel_(x, y) : T{}; }
  // Sets pel (x, y) of the window; does nothing outside it.
  void put(long x, long y, const T& value) noexcept {
    if (inside_(x, y)) *pel_(x, y) = value;
  }
  // The first pel of row y of the window; its width() pels follow.
  [[nodiscard]] T* row(long y) { return checkedRow_(y); }
  [[nodiscard]] const T* row(long y) const { return checkedRow_(y); }
  // Sets every pel of the window.
  void fill(const T& value) noexcept;

  // Maps client coordinates to image coordinates.
  [[nodiscard]] const kcXform<2>& imageFromClientXform() const noexcept { return imageFromClient_; }
  void imageFromClientXform(const kcXform<2>& x) noexcept { imageFromClient_ = x; }
  // The image pel holding image point p: the floor of each coordinate,
  // saturated to the range of long.
  [[nodiscard]] static kcPair<long> pointToPel(const kcVector<2>& p);

 private:
  [[nodiscard]] bool inside_(long x, long y) const noexcept {
    return x >= 0 && y >= 0 && x < width_ && y < height_;
  }
  [[nodiscard]] T* pel_(long x, long y) const noexcept { return block_->at(x_ + x, y_ + y); }
  [[nodiscard]] T* checkedRow_(long y) const {
    if (y < 0 || y >= height_) throw kcShapesError::BadParams();
    return pel_(0, y);
  }
  [[nodiscard]] static long floorToLong_(double v);

  kcPtrHandle<kc_PelBlock<T>> block_;
  long x_ = 0;
  long y_ = 0;
  long width_ = 0;
  long height_ = 0;
  kcXform<2> imageFromClient_;
};

// A read-only view of a pel buffer: the same window, client transform and
// errors, without the operations that write pels.
template <class T>
class kcPelBuffer_const {
 public:
  kcPelBuffer_const() noexcept = default;
  kcPelBuffer_const(const kcPelBuffer<T>& buffer) noexcept : buffer_(buffer) {}

  [[nodiscard]] bool isNull() const noexcept { return buffer_.isNull(); }
  [[nodiscard]] long width() const noexcept { return buffer_.width(); }
  [[nodiscard]] long height() const noexcept { return buffer_.height(); }
  [[nodiscard]] long offsetX() const noexcept { return buffer_.offsetX(); }
  [[nodiscard]] long offsetY() const noexcept { return buffer_.offsetY(); }
  [[nodiscard]] kcPelBuffer_const window(long x, long y, long w, long h) const {
    return kcPelBuffer_const(buffer_.window(x, y, w, h));
  }
  [[nodiscard]] T get(long x, long y) const noexcept { return buffer_.get(x, y); }
  [[nodiscard]] const T* row(long y) const { return buffer_.row(y); }
  [[nodiscard]] const kcXform<2>& imageFromClientXform() const noexcept {
    return buffer_.imageFromClientXform();
  }
  void imageFromClientXform(const kcXform<2>& x) noexcept { buffer_.imageFromClientXform(x); }
  [[nodiscard]] static kcPair<long> pointToPel(const kcVector<2>& p) { return kcPelBuffer<T>::pointToPel(p); }

 private:
  // Holding a writable buffer inside keeps one implementation; nothing here
  // hands out write access.
  kcPelBuffer<T> buffer_;
};

// --- kcPelBuffer<T> ---

template <class T>
kcPelBuffer<T>::kcPelBuffer(long width, long height) {
  if (width < 0 || height < 0) throw kcShapesError::BadParams();
  if (width > 0 &&
      static_cast<std::size_t>(height) > std::vector<T>().max_size() / static_cast<std::size_t>(width))
    throw kcShapesError::BadParams();
  block_ = kfMakeHandle<kc_PelBlock<T>>(width, height);
  width_ = width;
  height_ = height;
}

template <class T>
kcPelBuffer<T> kcPelBuffer<T>::window(long x, long y, long w, long h) const {
  // Written so that no sum can overflow: x + w <= width_ as w <= width_ - x.
  if (x < 0 || y < 0 || w < 0 || h < 0 || x > width_ || y > height_ || w > width_ - x || h > height_ - y)
    throw kcShapesError::BadParams();
  kcPelBuffer sub(*this);
  sub.x_ = x_ + x;
  sub.y_ = y_ + y;
  sub.width_ = w;
  sub.height_ = h;
  return sub;
}

template <class T>
void kcPelBuffer<T>::fill(const T& value) noexcept {
  for (long y = 0; y < height_; ++y) std::fill_n(pel_(0, y), width_, value);
}

template <class T>
kcPair<long> kcPelBuffer<T>::pointToPel(const kcVector<2>& p) {
  return {floorToLong_(p.x()), floorToLong_(p.y())};
}

// Converting a double outside the range of long is undefined, so the bounds
// are tested first; -2^63 is exact as a double, 2^63 is the first value above.
template <class T>
long kcPelBuffer<T>::floorToLong_(double v) {
  if (std::isnan(v)) throw kcShapesError::BadParams();
  constexpr double kLimit = -static_cast<double>(std::numeric_limits<long>::min());
  double f = std::floor(v);
  if (f >= kLimit) return std::numeric_limits<long>::max();
  if (f < -kLimit) return std::numeric_limits<long>::min();
  return static_cast<long>(f);
}
