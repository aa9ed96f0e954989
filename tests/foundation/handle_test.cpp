#include "foundation/handle.h"

#include <gtest/gtest.h>

#include <thread>
#include <type_traits>
#include <vector>

#include "foundation/exception.h"

namespace {

// Counts live instances so tests can see when the last handle deletes.
struct Counted : kcRepBase {
  static inline int alive = 0;
  int value = 0;
  explicit Counted(int v = 0) : value(v) { ++alive; }
  Counted(const Counted& o) : kcRepBase(o), value(o.value) { ++alive; }
  ~Counted() override { --alive; }
};
struct Derived : Counted {
  using Counted::Counted;
};

TEST(PtrHandle, LastReleaseDeletes) {
  {
    kcPtrHandle<Counted> a(new Counted(7));
    {
      kcPtrHandle<Counted> b = a, c;
      c = b;
      EXPECT_TRUE(a->refCount() == 3 && a == c);
      kcPtrHandle<Counted> copy(new Counted(*a));  // a copied object starts unshared
      EXPECT_TRUE(copy->refCount() == 1 && Counted::alive == 2);
    }
    EXPECT_TRUE(a->refCount() == 1 && Counted::alive == 1);
    kcPtrHandle<Counted> moved = std::move(a);
    auto& same = moved;
    moved = same;  // self-assignment keeps the object
    EXPECT_TRUE(a.isNull() && moved->value == 7 && moved->refCount() == 1);
  }
  EXPECT_EQ(Counted::alive, 0);
}

// A raw pointer becomes an owning handle only when asked: the address of a
// member or a stack object must never slip into one.
static_assert(!std::is_convertible_v<Counted*, kcPtrHandle<Counted>>);
static_assert(std::is_constructible_v<kcPtrHandle<Counted>, Counted*>);
static_assert(!std::is_convertible_v<const Counted*, kcPtrHandle_const<Counted>>);

TEST(PtrHandle, NullDereferenceConversionsAndDynamicCast) {
  kcPtrHandle<Counted> none;
  EXPECT_FALSE(none);
  EXPECT_THROW((void)none->value, kcBadPointer);
  EXPECT_THROW((void)*none, kcBadPointer);
  kcPtrHandle_const<Counted> cnone;
  EXPECT_THROW((void)cnone->value, kcBadPointer);
  kcPtrHandle<Derived> d(new Derived(5));
  kcPtrHandle<Counted> base = d;
  kcPtrHandle_const<Counted> cbase = d;
  EXPECT_TRUE(base.get() == d.get() && cbase.get() == d.get() && d->refCount() == 3);
  EXPECT_EQ(kfDynamicCast<Derived>(base).get(), d.get());
  EXPECT_EQ(kfDynamicCast<Derived>(cbase).get(), d.get());
  kcPtrHandle<Counted> plain(new Counted(1));
  EXPECT_TRUE(kfDynamicCast<Derived>(plain).isNull());
}

TEST(PtrHandle, CountsSurviveConcurrentCopies) {
  kcPtrHandle<Counted> shared(new Counted(0));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([shared] {
      for (int i = 0; i < 10000; ++i) (void)kcPtrHandle<Counted>(shared);
    });
  for (auto& t : threads) t.join();
  EXPECT_EQ(shared->refCount(), 1);
}

}  // namespace
