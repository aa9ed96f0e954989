// Reference-counted objects and the intrusive handles that share them.
//
// An object derived from kcRepBase is deleted when the last handle to it lets
// go. Counts change only through the interlocked operations, so handles to one
// object may be copied and dropped on several threads; the object itself is
// used by one thread at a time.
#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <utility>

#include "foundation/mutex.h"

class kcRepBase {
 public:
  kcRepBase() noexcept = default;
  // A copy is a new object: it starts with no handles of its own.
  kcRepBase(const kcRepBase&) noexcept {}
  kcRepBase& operator=(const kcRepBase&) noexcept { return *this; }
  virtual ~kcRepBase() = default;

  // Number of handles holding this object.
  [[nodiscard]] long refCount() const noexcept { return count_.load(); }

  void addRef_() const noexcept { kfInterlockedIncrement(count_); }
  void release_() const noexcept {
    if (kfInterlockedDecrement(count_) == 0) delete this;
  }

 private:
  mutable std::atomic<long> count_{0};
};

// A handle of From converts to a handle of To when the pointers do.
template <class From, class To>
concept kcPointsTo = std::convertible_to<From*, To*>;

// Throws kcBadPointer; kept out of line so this header needs no exceptions.
[[noreturn]] void kfThrowBadPointer();

template <class T>
class kcPtrHandle {
 public:
  using element_type = T;

  kcPtrHandle() noexcept = default;
  kcPtrHandle(std::nullptr_t) noexcept {}
  // Takes a reference to p (which may be null). Explicit: a handle owns what it
  // holds, and the address of a member or a stack object must never slip into one.
  explicit kcPtrHandle(T* p) noexcept : p_(p) { acquire_(); }
  kcPtrHandle(const kcPtrHandle& other) noexcept : p_(other.p_) { acquire_(); }
  kcPtrHandle(kcPtrHandle&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  template <kcPointsTo<T> U>
  kcPtrHandle(const kcPtrHandle<U>& other) noexcept : p_(other.get()) {
    acquire_();
  }
  ~kcPtrHandle() { releaseNow_(); }

  kcPtrHandle& operator=(kcPtrHandle other) noexcept {
    std::swap(p_, other.p_);
    return *this;
  }

  [[nodiscard]] T* get() const noexcept { return p_; }
  [[nodiscard]] bool isNull() const noexcept { return p_ == nullptr; }
  explicit operator bool() const noexcept { return p_ != nullptr; }
  T* operator->() const { return checked_(); }
  T& operator*() const { return *checked_(); }

  friend bool operator==(const kcPtrHandle& a, const kcPtrHandle& b) noexcept { return a.p_ == b.p_; }

 private:
  T* checked_() const {
    if (!p_) kfThrowBadPointer();
    return p_;
  }
  void acquire_() noexcept {
    if (p_) static_cast<const kcRepBase*>(p_)->addRef_();
  }
  void releaseNow_() noexcept {
    if (p_) static_cast<const kcRepBase*>(p_)->release_();
  }

  T* p_ = nullptr;
};

// The same handle over a const object.
template <class T>
class kcPtrHandle_const {
 public:
  using element_type = const T;

  kcPtrHandle_const() noexcept = default;
  kcPtrHandle_const(std::nullptr_t) noexcept {}
  explicit kcPtrHandle_const(const T* p) noexcept : h_(const_cast<T*>(p)) {}
  template <kcPointsTo<T> U>
  kcPtrHandle_const(const kcPtrHandle<U>& other) noexcept : h_(other) {}
  template <kcPointsTo<T> U>
  kcPtrHandle_const(const kcPtrHandle_const<U>& other) noexcept : h_(const_cast<U*>(other.get())) {}

  [[nodiscard]] const T* get() const noexcept { return h_.get(); }
  [[nodiscard]] bool isNull() const noexcept { return h_.isNull(); }
  explicit operator bool() const noexcept { return !h_.isNull(); }
  const T* operator->() const { return h_.operator->(); }
  const T& operator*() const { return *h_; }

  friend bool operator==(const kcPtrHandle_const& a, const kcPtrHandle_const& b) noexcept {
    return a.get() == b.get();
  }

 private:
  // Holding a mutable handle inside keeps one reference-counting path.
  kcPtrHandle<T> h_;
};

// A new T held by a handle: the usual way to make a reference-counted object.
template <class T, class... Args>
[[nodiscard]] kcPtrHandle<T> kfMakeHandle(Args&&... args) {
  return kcPtrHandle<T>(new T(std::forward<Args>(args)...));
}

// A handle of U to the same object, or null when it is not a U.
template <class U, class T>
[[nodiscard]] kcPtrHandle<U> kfDynamicCast(const kcPtrHandle<T>& h) {
  return kcPtrHandle<U>(dynamic_cast<U*>(h.get()));
}
template <class U, class T>
[[nodiscard]] kcPtrHandle_const<U> kfDynamicCast(const kcPtrHandle_const<T>& h) {
  return kcPtrHandle_const<U>(dynamic_cast<const U*>(h.get()));
}
