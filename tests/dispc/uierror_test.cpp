#include "dispc/uierror.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "dispc/uibitmap.h"
#include "tests/dispc/archive_checks.h"

namespace {

// Offsets from 0x10002B00; the gaps are deliberate.
const std::map<std::string, long> kUIErrors = {
    {"BadLayer", 0x00},          {"BadIconPattern", 0x01},      {"FlagStackUnderflow", 0x02},
    {"FlagStackOverflow", 0x03}, {"FlagStackOutOfRange", 0x04}, {"NotAvailable", 0x06},
    {"NotEnabled", 0x07},        {"BadKeyValue", 0x08},         {"InvalidColorMapSize", 0x09},
    {"NotImplemented", 0x12},    {"BadParams", 0x13},           {"NotRGBColor", 0x14},
    {"NotIndexColor", 0x15},     {"NoLongerSupported", 0x16},   {"InvalidUISketch", 0x17},
    {"InitFailed", 0x18}};

// Every registered UI error is in the table (so none fills a gap), and each
// crosses an archive and rethrows as itself.
TEST(UIError, ExactlyTheTableAndPersistent) {
  std::size_t registered = 0;
  for (const std::string& name : kcPersistenceRegistry::names()) {
    if (!name.starts_with("kcUIError::")) continue;
    const std::string shortName = name.substr(11);
    ++registered;
    SCOPED_TRACE(name);
    ASSERT_TRUE(kUIErrors.contains(shortName));
    std::unique_ptr<kcPersistent> original(kcPersistenceRegistry::make(name));
    kcMemArchive out;
    kcPersistent* p = original.get();
    out.transferObject(p);
    kcMemArchive in(out.bytes());
    kcPersistent* loaded = nullptr;
    in.transferObject(loaded);
    try {
      dynamic_cast<kcException&>(*loaded).suicideAndRethrow();
      ADD_FAILURE() << "no rethrow";
    } catch (const kcUIError::Errors& e) {
      EXPECT_EQ(e.errorNumber(), 0x10002B00 + kUIErrors.at(shortName));
      EXPECT_STREQ(e.className(), name.c_str());
    }
  }
  EXPECT_EQ(registered, kUIErrors.size());
  EXPECT_EQ(kcUIError::BadLayer().errorNumber(), 268446464);
  EXPECT_EQ(kcUIError::InitFailed().errorNumber(), 268446488);
}

TEST(UIError, UnknownVersionNamesTheClass) {
  EXPECT_EQ(dispc_test::stored(kcUIError::NotRGBColor()), dispc_test::Bytes{0});
  dispc_test::expectUnknownVersion(dispc_test::Bytes{1}, kcUIError::NotRGBColor(), "kcUIError::NotRGBColor",
                                   0);
}

TEST(UIBitmap, InitOnlyWithPels) {
  kcUIBitmap b;
  EXPECT_TRUE(!b.isInit() && b.colorMap().empty() && !b.passThrough() && b.passColor() == 0);
  b.rleBuf(kcRLEBuffer(3, 2, {0x0201, 0x0102, 0x0303, 0}));  // 1 1 2 / 3 3 3
  EXPECT_TRUE(b.isInit());
  b.rleBuf(kcRLEBuffer(0, 4, {0}));
  EXPECT_FALSE(b.isInit());
}

}  // namespace
