#include "foundation/exception.h"

#include <gtest/gtest.h>

#include <memory>

#include "foundation/archive.h"

namespace {

TEST(Exception, FoundationErrorNumbers) {
  struct Row {
    std::unique_ptr<kcException> error;
    long number;
  };
  Row rows[] = {
      {std::make_unique<kcBadPointer>(), 0x10000001},
      {std::make_unique<kcMathError::Singular>(), 0x10000101},
      {std::make_unique<kcShapesError::BadGeom>(), 0x10000201},
      {std::make_unique<kcShapesError::BadRadius>(), 0x10000202},
      {std::make_unique<kcShapesError::BadCoef>(), 0x10000203},
      {std::make_unique<kcShapesError::DegenerateShape>(), 0x10000204},
      {std::make_unique<kcShapesError::EmptyShape>(), 0x10000205},
      {std::make_unique<kcShapesError::NotOpenContour>(), 0x10000206},
      {std::make_unique<kcShapesError::NotRegion>(), 0x10000207},
      {std::make_unique<kcShapesError::NoTangent>(), 0x10000208},
      {std::make_unique<kcShapesError::BadParams>(), 0x10000209},
      {std::make_unique<kcArchive::UnknownVersion>(), 0x10000301},
      {std::make_unique<kcArchive::Corrupt>(), 0x10000302},
      {std::make_unique<kcArchive::ValueOutOfRange>(), 0x10000303},
      {std::make_unique<kcFoundationError::LibraryFailure>(), 0x10000401},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.error->errorNumber(), row.number) << row.error->className();
    EXPECT_FALSE(row.error->message().empty()) << row.error->className();
    // Every class can be made again by its registered name.
    std::unique_ptr<kcPersistent> made(kcPersistenceRegistry::make(row.error->className()));
    ASSERT_NE(made, nullptr) << row.error->className();
    EXPECT_EQ(dynamic_cast<kcException&>(*made).errorNumber(), row.number);
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
    EXPECT_EQ(e.code(), -7);
    EXPECT_EQ(e.message(), L"library call failed with code -7");
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
  EXPECT_TRUE(in.atEnd());
  auto* error = dynamic_cast<kcException*>(loaded);
  ASSERT_NE(error, nullptr);
  try {
    error->suicideAndRethrow();
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "dispc/wrfm/arc");
    EXPECT_EQ(e.line(), 147);
  }
}

TEST(Exception, RethrowKeepsTheDynamicClass) {
  kcExceptionWithString text(L"kept");
  kcException& base = text;
  try {
    base.rethrow();
  } catch (const kcExceptionWithString& e) {
    EXPECT_EQ(e.text(), L"kept");
  }
}

TEST(Exception, ErrorVersionOtherThanZeroIsUnknown) {
  kcMemArchive in(std::vector<std::uint8_t>{3, 22, 0, 0, 0, 'k', 'c', 'S', 'h', 'a', 'p', 'e', 's', 'E',
                                            'r', 'r', 'o', 'r', ':', ':', 'B', 'a', 'd', 'G', 'e', 'o', 'm', 1});
  kcPersistent* loaded = nullptr;
  try {
    in.transferObject(loaded);
    FAIL() << "no exception";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "kcShapesError::BadGeom");
    EXPECT_EQ(e.line(), 0);
  }
  EXPECT_EQ(loaded, nullptr);
}

}  // namespace
