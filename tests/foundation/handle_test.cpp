#include "foundation/handle.h"

#include <gtest/gtest.h>

#include <thread>
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
    EXPECT_EQ(a->refCount(), 1);
    {
      kcPtrHandle<Counted> b = a;
      kcPtrHandle<Counted> c;
      c = b;
      EXPECT_EQ(a->refCount(), 3);
      EXPECT_TRUE(a == c);
    }
    EXPECT_EQ(a->refCount(), 1);
    kcPtrHandle<Counted> moved = std::move(a);
    EXPECT_TRUE(a.isNull());
    EXPECT_EQ(moved->refCount(), 1);
    EXPECT_EQ(Counted::alive, 1);
  }
  EXPECT_EQ(Counted::alive, 0);
}

TEST(PtrHandle, SelfAssignmentKeepsObject) {
  kcPtrHandle<Counted> a(new Counted(3));
  auto& same = a;
  a = same;
  EXPECT_EQ(a->value, 3);
  EXPECT_EQ(a->refCount(), 1);
}

TEST(PtrHandle, NullDereferenceThrowsBadPointer) {
  kcPtrHandle<Counted> none;
  EXPECT_FALSE(none);
  EXPECT_THROW((void)none->value, kcBadPointer);
  EXPECT_THROW((void)*none, kcBadPointer);
  kcPtrHandle_const<Counted> cnone;
  EXPECT_THROW((void)cnone->value, kcBadPointer);
}

TEST(PtrHandle, CopiedObjectStartsUnshared) {
  kcPtrHandle<Counted> a(new Counted(1));
  kcPtrHandle<Counted> b = a;
  kcPtrHandle<Counted> copy(new Counted(*a));
  EXPECT_EQ(copy->refCount(), 1);
  EXPECT_EQ(a->refCount(), 2);
}

TEST(PtrHandle, ConversionsAndDynamicCast) {
  kcPtrHandle<Derived> d(new Derived(5));
  kcPtrHandle<Counted> base = d;
  kcPtrHandle_const<Counted> cbase = d;
  EXPECT_EQ(base.get(), d.get());
  EXPECT_EQ(cbase->value, 5);
  EXPECT_EQ(d->refCount(), 3);

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
      for (int i = 0; i < 10000; ++i) {
        kcPtrHandle<Counted> copy = shared;
        (void)copy;
      }
    });
  for (auto& t : threads) t.join();
  EXPECT_EQ(shared->refCount(), 1);
}

}  // namespace
