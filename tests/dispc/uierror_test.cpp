#include "dispc/uierror.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "dispc/uibitmap.h"
#include "foundation/archive.h"

namespace {

const std::map<std::string, long> kUIErrors = {
    {"kcUIError::BadLayer", 0x10002B00},
    {"kcUIError::BadIconPattern", 0x10002B01},
    {"kcUIError::FlagStackUnderflow", 0x10002B02},
    {"kcUIError::FlagStackOverflow", 0x10002B03},
    {"kcUIError::FlagStackOutOfRange", 0x10002B04},
    {"kcUIError::NotAvailable", 0x10002B06},
    {"kcUIError::NotEnabled", 0x10002B07},
    {"kcUIError::BadKeyValue", 0x10002B08},
    {"kcUIError::InvalidColorMapSize", 0x10002B09},
    {"kcUIError::NotImplemented", 0x10002B12},
    {"kcUIError::BadParams", 0x10002B13},
    {"kcUIError::NotRGBColor", 0x10002B14},
    {"kcUIError::NotIndexColor", 0x10002B15},
    {"kcUIError::NoLongerSupported", 0x10002B16},
    {"kcUIError::InvalidUISketch", 0x10002B17},
    {"kcUIError::InitFailed", 0x10002B18},
};

// Every registered UI error is in the table (so none fills a gap), and each
// crosses an archive and rethrows as itself.
TEST(UIError, ExactlyTheTableAndPersistent) {
  std::size_t registered = 0;
  for (const std::string& name : kcPersistenceRegistry::names()) {
    if (!name.starts_with("kcUIError::")) continue;
    ++registered;
    SCOPED_TRACE(name);
    ASSERT_TRUE(kUIErrors.contains(name));
    std::unique_ptr<kcPersistent> original(kcPersistenceRegistry::make(name));
    kcMemArchive out;
    kcPersistent* p = original.get();
    out.transferObject(p);
    kcMemArchive in(out.bytes());
    kcPersistent* loaded = nullptr;
    in.transferObject(loaded);
    try {
      dynamic_cast<kcException&>(*loaded).suicideAndRethrow();
    } catch (const kcUIError::Errors& e) {
      EXPECT_EQ(e.errorNumber(), kUIErrors.at(name));
      EXPECT_STREQ(e.className(), name.c_str());
    }
  }
  EXPECT_EQ(registered, kUIErrors.size());
  EXPECT_EQ(kcUIError::InvalidUISketch().errorNumber(), 0x10002B17);
  EXPECT_EQ(kcUIError::BadLayer().errorNumber(), 268446464);
  EXPECT_EQ(kcUIError::InitFailed().errorNumber(), 268446488);
}

TEST(UIError, UnknownVersionNamesTheClass) {
  kcUIError::NotRGBColor error;
  kcMemArchive out;
  error.dispatchSerialize(out);
  EXPECT_EQ(out.bytes(), std::vector<std::uint8_t>{0});
  kcMemArchive in(std::vector<std::uint8_t>{1});
  try {
    error.dispatchSerialize(in);
    FAIL() << "version 1 accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "kcUIError::NotRGBColor");
    EXPECT_EQ(e.line(), 0);
  }
}

TEST(UIBitmap, InitOnlyWithPels) {
  kcUIBitmap b;
  EXPECT_FALSE(b.isInit());
  EXPECT_TRUE(b.colorMap().empty() && !b.passThrough() && b.passColor() == 0);
  b.rleBuf(kcRLEBuffer(3, 2, {0x0201, 0x0102, 0x0303, 0}));  // 1 1 2 / 3 3 3
  EXPECT_TRUE(b.isInit());
  b.rleBuf(kcRLEBuffer(0, 4, {0}));
  EXPECT_FALSE(b.isInit());
  const kcUIBitmap full(kcRLEBuffer(2, 1, {0x0207, 0}), {10, 20}, true, 7);
  EXPECT_EQ(full.rleBuf().units(), (std::vector<std::uint16_t>{0x0207, 0}));
  EXPECT_EQ(full.colorMap(), (std::vector<unsigned char>{10, 20}));
  EXPECT_TRUE(full.passThrough() && full.passColor() == 7);
}

}  // namespace
