#include "foundation/archive.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "foundation/shapes/circle.h"
#include "foundation/shapes/lineseg.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

template <class T>
Bytes store(T value) {
  kcMemArchive ar;
  ar || value;
  return ar.bytes();
}

template <class T>
T load(Bytes bytes) {
  kcMemArchive ar(std::move(bytes));
  T value{};
  ar || value;
  EXPECT_TRUE(ar.atEnd());
  return value;
}

// A small persistent graph node: a value, a name and shared children.
class TestNode : public virtual kcPersistent, public virtual kcRepBase {
 public:
  KC_DECLARE_PERSISTENT(TestNode);
  static constexpr unsigned char kVersion = 1;

  TestNode() = default;
  TestNode(std::int32_t v, std::string n) : value(v), name(std::move(n)) {}

  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
  }
  void setValue(std::int32_t v) {
    mutating_();
    value = v;
  }

  std::int32_t value = 0;
  std::string name;
  std::vector<kcPtrHandle<TestNode>> children;
  int dispatches = 0;
  bool failAfterChildren = false;  // storing throws once the children are written

 protected:
  void serialize_(kcArchive& ar, unsigned char version) {
    if (version > kVersion) throw kcArchive::UnknownVersion("tests/foundation/archive_test", 42);
    ++dispatches;
    ar || value || name || children;
    if (failAfterChildren) throw kcArchive::ValueOutOfRange();
  }
};
KC_DEFINE_PERSISTENT(TestNode);

// Persistent but not a TestNode: for wrong-class loads.
class OtherNode : public virtual kcPersistent, public virtual kcRepBase {
 public:
  KC_DECLARE_PERSISTENT(OtherNode);
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 0, [](unsigned char) {});
  }
};
KC_DEFINE_PERSISTENT(OtherNode);

Bytes storeGraph() {
  kcPtrHandle<TestNode> root(new TestNode(1, "root"));
  kcPtrHandle<TestNode> leaf(new TestNode(2, "leaf"));
  root->children = {leaf, leaf, nullptr};
  kcMemArchive ar;
  ar || root;
  return ar.bytes();
}

TEST(Archive, ScalarsAreLittleEndianWithStatedWidths) {
  EXPECT_EQ(store<std::int32_t>(0x01020304), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(store<std::uint16_t>(0xABCD), (Bytes{0xCD, 0xAB}));
  EXPECT_EQ(store<long>(-2), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(store<unsigned long>(5), (Bytes{5, 0, 0, 0}));
  EXPECT_EQ(store<long long>(1), (Bytes{1, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(store(true), (Bytes{1}));
  EXPECT_EQ(store(1.0), (Bytes{0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  EXPECT_EQ(store(1.0f), (Bytes{0, 0, 0x80, 0x3F}));
  EXPECT_EQ(load<long>({0xFE, 0xFF, 0xFF, 0xFF}), -2);
  EXPECT_EQ(load<double>(store(-0.1)), -0.1);
}

TEST(Archive, OutOfRangeLongsAndBadBools) {
  kcMemArchive ar;
  long big = 1L << 40;
  unsigned long ubig = 1UL << 33;
  EXPECT_THROW(ar || big, kcArchive::ValueOutOfRange);
  EXPECT_THROW(ar || ubig, kcArchive::ValueOutOfRange);
  EXPECT_TRUE(ar.bytes().empty());
  EXPECT_THROW(load<bool>({2}), kcArchive::Corrupt);
  EXPECT_FALSE(load<bool>({0}));
}

TEST(Archive, StringsAndVectorsRoundTrip) {
  EXPECT_EQ(store(std::string("ab")), (Bytes{2, 0, 0, 0, 'a', 'b'}));
  EXPECT_EQ(store(std::wstring(L"A")), (Bytes{1, 0, 0, 0, 'A', 0}));
  std::wstring wide = L"x\u00e9\u20ac\U0001F600";
  Bytes bytes = store(wide);
  EXPECT_EQ(bytes.size(), 4u + 2 * 5);  // the last character takes a surrogate pair
  EXPECT_EQ(load<std::wstring>(bytes), wide);
  EXPECT_EQ(load<std::string>(store(std::string())), "");
  EXPECT_EQ(load<std::vector<double>>(store(std::vector<double>{1.5, 3e100})),
            (std::vector<double>{1.5, 3e100}));
  std::vector<bool> flags{true, false, true};
  EXPECT_EQ(store(flags), (Bytes{3, 0, 0, 0, 1, 0, 1}));
  EXPECT_EQ(load<std::vector<bool>>(store(flags)), flags);
  std::vector<std::string> names{"a", "", "ccc"};
  EXPECT_EQ(load<std::vector<std::string>>(store(names)), names);
}

TEST(Archive, ImpossibleCountsAreCorruptBeforeAllocating) {
  // 2^31 elements announced in a 10-byte archive.
  Bytes huge{0x00, 0x00, 0x00, 0x80, 1, 2, 3, 4, 5, 6};
  EXPECT_THROW(load<std::vector<std::uint8_t>>(huge), kcArchive::Corrupt);
  EXPECT_THROW(load<std::string>(huge), kcArchive::Corrupt);
  EXPECT_THROW(load<std::wstring>(huge), kcArchive::Corrupt);
  EXPECT_THROW(load<std::vector<kcPtrHandle<TestNode>>>(huge), kcArchive::Corrupt);
  // Two doubles announced, one present.
  Bytes shortDoubles{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
  EXPECT_THROW(load<std::vector<double>>(shortDoubles), kcArchive::Corrupt);
}

TEST(Archive, FailedLoadLeavesTargetUnchanged) {
  std::vector<std::int32_t> target{9, 9};
  kcMemArchive ar(Bytes{3, 0, 0, 0, 1, 0, 0, 0});
  EXPECT_THROW(ar || target, kcArchive::Corrupt);
  EXPECT_EQ(target, (std::vector<std::int32_t>{9, 9}));
}

template <class T>
void expectCorruptWhenCut(const Bytes& full) {
  for (std::size_t n = 0; n < full.size(); ++n) {
    kcMemArchive ar(Bytes(full.begin(), full.begin() + static_cast<long>(n)));
    T value{};
    EXPECT_THROW(ar || value, kcArchive::Corrupt) << "cut at " << n;
  }
}

TEST(Archive, TruncationAtEveryByteIsCorrupt) {
  expectCorruptWhenCut<kcPtrHandle<TestNode>>(storeGraph());
  expectCorruptWhenCut<std::wstring>(store(std::wstring(L"wide\U0001F600")));
  expectCorruptWhenCut<std::vector<std::string>>(store(std::vector<std::string>{"one", "two"}));
}

TEST(Archive, SharedObjectsComeBackShared) {
  kcPtrHandle<TestNode> root;
  {
    kcMemArchive in(storeGraph());
    in || root;
    EXPECT_TRUE(in.atEnd());
  }
  ASSERT_TRUE(root && root->children.size() == 3);
  EXPECT_EQ(root->name, "root");
  EXPECT_TRUE(root->children[0].get() == root->children[1].get() && root->children[2].isNull());
  EXPECT_TRUE(root->children[0]->value == 2 && root->children[0]->dispatches == 1);
  EXPECT_EQ(root->children[0]->refCount(), 2);
}

TEST(Archive, ObjectWireFormat) {
  kcPtrHandle<TestNode> leaf(new TestNode(2, ""));
  std::vector<kcPtrHandle<TestNode>> pair{leaf, leaf};
  // Vector count; new-object tag, class name, version; value, name, children;
  // back-reference to object 1.
  Bytes expected{2, 0, 0, 0, 1, 8, 0, 0, 0, 'T', 'e', 's', 't', 'N', 'o', 'd', 'e', 1};
  expected.insert(expected.end(), {2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  expected.insert(expected.end(), {2, 1, 0, 0, 0});
  EXPECT_EQ(store(pair), expected);
}

Bytes nodeHeader() {
  return {1, 8, 0, 0, 0, 'T', 'e', 's', 't', 'N', 'o', 'd', 'e', 1, 0, 0, 0, 0, 0, 0, 0, 0};
}

TEST(Archive, BadObjectDataIsCorrupt) {
  auto childRef = [](std::uint8_t id) {  // one child, a back-reference
    Bytes b = nodeHeader();
    b.insert(b.end(), {1, 0, 0, 0, 2, id, 0, 0, 0});
    return b;
  };
  const std::pair<const char*, Bytes> cases[] = {
      {"object that contains itself", childRef(1)},
      {"back-reference to an id never given", childRef(9)},
      {"back-reference to id 0", childRef(0)},
      {"unknown class name", {1, 3, 0, 0, 0, 'F', 'o', 'o'}},
      {"empty class name", {1, 0, 0, 0, 0}},
      {"class name longer than the data", {1, 0xFF, 0xFF, 0, 0, 'T'}},
      {"unknown tag", {7}},
      {"raw-object tag where a shared one is expected",
       {3, 8, 0, 0, 0, 'T', 'e', 's', 't', 'N', 'o', 'd', 'e'}},
      {"object of another class", {1, 9, 0, 0, 0, 'O', 't', 'h', 'e', 'r', 'N', 'o', 'd', 'e', 0}},
      {"shared object of a class without handles",
       {1, 12, 0, 0, 0, 'k', 'c', 'B', 'a', 'd', 'P', 'o', 'i', 'n', 't', 'e', 'r', 0}},
  };
  for (const auto& [why, bytes] : cases) {
    kcMemArchive ar(bytes);
    kcPtrHandle<TestNode> node;
    EXPECT_THROW(ar || node, kcArchive::Corrupt) << why;
    EXPECT_TRUE(node.isNull()) << why;
  }
}

TEST(Archive, UnknownVersionNamesItsSource) {
  Bytes bytes = nodeHeader();
  bytes[13] = 9;  // version byte
  bytes.insert(bytes.end(), {0, 0, 0, 0});
  kcMemArchive ar(bytes);
  kcPtrHandle<TestNode> node;
  try {
    ar || node;
    FAIL() << "no exception";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_TRUE(e.file() == "tests/foundation/archive_test" && e.line() == 42);
  }
}

TEST(Archive, StoringTheSameObjectTwiceWritesItTwice) {
  const kcCircle circle(kcVector<2>(1, 2), 3);
  const Bytes once = store(circle);
  kcMemArchive out;
  out << circle << circle;
  Bytes twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(out.bytes(), twice);
  kcMemArchive in(out.bytes());
  kcCircle first, second;
  in || first || second;
  EXPECT_EQ(first, circle);
  EXPECT_EQ(second, circle);
  EXPECT_TRUE(in.atEnd());
}

// One object reused for record after record, as a sketch's archive form does.
TEST(Archive, AReusedObjectCarriesEachRecord) {
  TestNode record;
  kcMemArchive out;
  for (std::int32_t i = 0; i < 4; ++i) {
    record.setValue(i);
    out || record;
  }
  EXPECT_EQ(record.dispatches, 4);
  kcMemArchive in(out.bytes());
  for (std::int32_t i = 0; i < 4; ++i) {
    TestNode back;
    in || back;
    EXPECT_EQ(back.value, i);
  }
  EXPECT_TRUE(in.atEnd());
}

TEST(Archive, TheSameHandleTwiceIsABackReference) {
  auto node = kfMakeHandle<TestNode>(5, "n");
  kcMemArchive out;
  out || node || node;
  kcMemArchive in(out.bytes());
  kcPtrHandle<TestNode> a, b;
  in || a || b;
  EXPECT_EQ(a.get(), b.get());
  EXPECT_EQ(a->dispatches, 1);
  const Bytes& bytes = out.bytes();
  EXPECT_EQ(Bytes(bytes.end() - 5, bytes.end()), (Bytes{2, 1, 0, 0, 0}));
}

// Each temporary is freed before the next is made, so the allocator hands
// out the same address again: it must never pass for the object before.
TEST(Archive, TemporariesStoredByHandleStayDistinct) {
  kcMemArchive out;
  for (int i = 0; i < 5; ++i) {
    kcPtrHandle<kcShape> segment = kfMakeHandle<kcLineSeg>(kcVector<2>(i, 0), kcVector<2>(i, 1));
    out || segment;
  }
  kcMemArchive in(out.bytes());
  for (int i = 0; i < 5; ++i) {
    kcPtrHandle<kcShape> back;
    in || back;
    auto segment = kfDynamicCast<kcLineSeg>(back);
    ASSERT_TRUE(segment);
    EXPECT_EQ(segment->p1(), kcVector<2>(i, 0));
  }
  EXPECT_TRUE(in.atEnd());
}

TEST(Archive, AFailedTopLevelStoreTakesBackWhatItWrote) {
  auto shared = kfMakeHandle<TestNode>(1, "shared");
  auto failing = kfMakeHandle<TestNode>(2, "failing");
  failing->children = {shared};
  failing->failAfterChildren = true;
  kcMemArchive out;
  std::int32_t before = 7;
  out || before;
  std::vector<kcPtrHandle<TestNode>> both{shared, failing};
  EXPECT_THROW(out || both, kcArchive::ValueOutOfRange);
  EXPECT_THROW(out || failing, kcArchive::ValueOutOfRange);
  EXPECT_EQ(out.bytes(), store(before));
  // The id the shared node had in the failed store is taken back with it, so
  // it travels in full now rather than as a reference to bytes that are gone.
  out || shared;
  kcMemArchive in(out.bytes());
  std::int32_t n = 0;
  kcPtrHandle<TestNode> back;
  in || n || back;
  EXPECT_EQ(n, 7);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->name, "shared");
  EXPECT_TRUE(in.atEnd());
}

TEST(Archive, AFailedStoreIntoAFileLeavesTheFileReadable) {
  auto path = (std::filesystem::temp_directory_path() / "dispc_archive_rollback.bin").string();
  auto failing = kfMakeHandle<TestNode>(2, "failing");
  failing->failAfterChildren = true;
  {
    kcFileArchive out(path, kcArchive::Mode::store);
    std::string text = "kept";
    out || text;
    EXPECT_THROW(out || failing, kcArchive::ValueOutOfRange);
  }
  kcFileArchive in(path, kcArchive::Mode::load);
  std::string text;
  in || text;
  EXPECT_EQ(text, "kept");
  EXPECT_TRUE(in.atEnd());
  std::filesystem::remove(path);
}

TEST(Persistent, MutatingMarksChangedOnlyWhileTracking) {
  TestNode node;
  node.setValue(1);
  EXPECT_FALSE(node.changed());
  node.track(true);
  node.setValue(2);
  EXPECT_TRUE(node.changed());
  node.clearChanged();
  EXPECT_FALSE(node.changed());
  EXPECT_TRUE(kcPersistenceRegistry::knows("TestNode"));
  EXPECT_EQ(kcPersistenceRegistry::make("NoSuchClass"), nullptr);
}

TEST(FileArchive, RoundTripsAndReportsMissingFiles) {
  auto path = (std::filesystem::temp_directory_path() / "dispc_archive_test.bin").string();
  std::string text = "file";
  std::int32_t n = 12;
  {
    kcFileArchive out(path, kcArchive::Mode::store);
    out || text || n;
  }
  kcFileArchive in(path, kcArchive::Mode::load);
  std::string loadedText;
  std::int32_t loadedN = 0;
  in || loadedText || loadedN;
  EXPECT_TRUE(loadedText == "file" && loadedN == 12 && in.atEnd());
  EXPECT_THROW(in || n, kcArchive::Corrupt);
  std::filesystem::remove(path);
  EXPECT_THROW(kcFileArchive(path, kcArchive::Mode::load), kcArchive::FileError);
}

}  // namespace
