#include "foundation/exception.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/archive.h"

namespace {

// Each class is made by its registered name, which is also the name it is
// archived under.
TEST(Exception, FoundationErrorNumbers) {
  std::vector<std::pair<std::string, long>> rows = {
      {"kcBadPointer", 0x10000001},          {"kcExceptionWithString", 0x10000002},
      {"kcMathError::Singular", 0x10000101}, {"kcArchive::UnknownVersion", 0x10000301},
      {"kcArchive::Corrupt", 0x10000302},    {"kcArchive::ValueOutOfRange", 0x10000303},
      {"kcArchive::FileError", 0x10000304},  {"kcFoundationError::LibraryFailure", 0x10000401}};
  const std::pair<std::string, long> shapes[] = {
      {"kcShapesError::BadGeom", 0x10000201},    {"kcShapesError::BadRadius", 0x10000202},
      {"kcShapesError::BadCoef", 0x10000203},    {"kcShapesError::DegenerateShape", 0x10000204},
      {"kcShapesError::EmptyShape", 0x10000205}, {"kcShapesError::NotOpenContour", 0x10000206},
      {"kcShapesError::NotRegion", 0x10000207},  {"kcShapesError::NoTangent", 0x10000208},
      {"kcShapesError::BadParams", 0x10000209}};
  rows.insert(rows.end(), std::begin(shapes), std::end(shapes));
  for (const auto& [name, number] : rows) {
    std::unique_ptr<kcPersistent> made(kcPersistenceRegistry::make(name));
    ASSERT_NE(made, nullptr) << name;
    EXPECT_EQ(made->className(), name);
    EXPECT_EQ(dynamic_cast<kcException&>(*made).errorNumber(), number) << name;
  }
}

TEST(Exception, WhatIsUtf8OfTheMessage) {
  kcExceptionWithString e(L"caf\u00e9 \u20ac");
  EXPECT_STREQ(e.what(), "caf\xc3\xa9 \xe2\x82\xac");
  EXPECT_EQ(e.message(), L"caf\u00e9 \u20ac");
}

TEST(Exception, ThrowOnFailureOnlyForNegativeCodes) {
  EXPECT_NO_THROW(kfThrowExceptionOnFailure(0));
  EXPECT_NO_THROW(kfThrowExceptionOnFailure(3));
  try {
    kfThrowExceptionOnFailure(-7);
    FAIL() << "no exception";
  } catch (const kcFoundationError::LibraryFailure& e) {
    EXPECT_TRUE(e.code() == -7 && e.message() == L"library call failed with code -7");
  }
}

// An exception made on the heap by an archive rethrows itself as its own class.
TEST(Exception, CrossesAnArchiveAndRethrows) {
  kcMemArchive out;
  kcArchive::UnknownVersion sent("dispc/wrfm/arc", 147);
  kcPersistent* p = &sent;
  out.transferObject(p);

  kcMemArchive in(out.bytes());
  kcPersistent* loaded = nullptr;
  in.transferObject(loaded);
  auto* error = dynamic_cast<kcException*>(loaded);
  ASSERT_TRUE(error != nullptr && in.atEnd());
  try {
    error->suicideAndRethrow();
    FAIL() << "no exception";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_TRUE(e.file() == "dispc/wrfm/arc" && e.line() == 147);
  }
  kcExceptionWithString text(L"kept");
  EXPECT_THROW(static_cast<kcException&>(text).rethrow(), kcExceptionWithString);
}

TEST(Exception, ErrorVersionOtherThanZeroIsUnknown) {
  kcMemArchive in(std::vector<std::uint8_t>{3,   22,  0,   0,   0,   'k', 'c', 'S', 'h', 'a',
                                            'p', 'e', 's', 'E', 'r', 'r', 'o', 'r', ':', ':',
                                            'B', 'a', 'd', 'G', 'e', 'o', 'm', 1});
  kcPersistent* loaded = nullptr;
  try {
    in.transferObject(loaded);
    FAIL() << "no exception";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_TRUE(e.file() == "kcShapesError::BadGeom" && e.line() == 0);
  }
  EXPECT_EQ(loaded, nullptr);
}

}  // namespace
