// Threads: a process-wide mutex, a scoped lock and the interlocked counters
// that reference counts go through.
#pragma once

#include <atomic>
#include <mutex>

// A recursive mutex, so that code holding the global lock may call code that
// takes it again.
class kcMutex {
 public:
  kcMutex() = default;
  kcMutex(const kcMutex&) = delete;
  kcMutex& operator=(const kcMutex&) = delete;

  // The one mutex shared by the whole process (made on first use).
  static kcMutex& global();

  void lock() { mutex_.lock(); }
  void unlock() { mutex_.unlock(); }

 private:
  std::recursive_mutex mutex_;
};

// Holds a kcMutex for its lifetime.
class kcLock {
 public:
  explicit kcLock(kcMutex& mutex) : mutex_(mutex) { mutex_.lock(); }
  ~kcLock() { mutex_.unlock(); }
  kcLock(const kcLock&) = delete;
  kcLock& operator=(const kcLock&) = delete;

 private:
  kcMutex& mutex_;
};

// Atomic increment and decrement; each returns the new value.
inline long kfInterlockedIncrement(std::atomic<long>& value) noexcept { return ++value; }
inline long kfInterlockedDecrement(std::atomic<long>& value) noexcept { return --value; }
