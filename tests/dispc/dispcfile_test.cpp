#include "dispc/dispcfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "dispc/tablet.h"
#include "foundation/archive.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

kcSMDGDPoly square() {
  kcSMDGDPoly p(L"pad");
  for (const kcVector<2>& v : {kcVector<2>(0, 0), kcVector<2>(2, 0), kcVector<2>(2, 2), kcVector<2>(0, 2)})
    p << kcSMDGDPolyVertex(v, 0.25, kcDegree(0), 0.5, 0.5, 3, kcDimTol());
  p.close();
  return p;
}

// One content of every kind.
std::vector<kcDispcFileContent> everyKind() {
  kcUITablet recorder;
  recorder.recordOn() = true;
  recorder.draw(kcCircle({5, 5}, 3), kcGraphicProps(), kcUITablet::mainLayer);
  kcGraphicList list;
  list.append(kcGraphic::makeShapeGraphic(kcLineSeg({0, 0}, {4, 3}), kcGraphicProps()));
  kcSMDGDModel model(L"part");
  model << square();
  return {recorder.sketch(), list, square(), model};
}

bool sameContent(const kcDispcFileContent& a, const kcDispcFileContent& b) {
  // The stored bytes say it all, graphics and names included.
  return kfSaveBytes(a) == kfSaveBytes(b);
}

TEST(DispcFile, EveryKindComesBackThroughBytesAndFiles) {
  const std::string path = (std::filesystem::temp_directory_path() / "dispcfile_test.dispc").string();
  for (const kcDispcFileContent& content : everyKind()) {
    SCOPED_TRACE(kfKindName(kfKind(content)));
    const Bytes bytes = kfSaveBytes(content);
    ASSERT_GT(bytes.size(), 10u);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 8), Bytes(kDispcFileMagic.begin(), kDispcFileMagic.end()));
    EXPECT_EQ(bytes[8], kDispcFileVersion);
    EXPECT_EQ(bytes[9], static_cast<std::uint8_t>(kfKind(content)));
    const kcDispcFileContent back = kfLoadBytes(bytes);
    EXPECT_EQ(back.index(), content.index());
    EXPECT_TRUE(sameContent(back, content));
    kfSave(path, content);
    EXPECT_TRUE(sameContent(kfLoad(path), content));
  }
  std::filesystem::remove(path);
  EXPECT_EQ(std::get<kcSMDGDModel>(everyKind()[3]).name(), L"part");
}

TEST(DispcFile, DamagedFilesAreRefusedWhole) {
  const Bytes good = kfSaveBytes(everyKind()[3]);
  const auto refused = [](Bytes bytes) {
    try {
      (void)kfLoadBytes(bytes);
    } catch (const kcArchive::UnknownVersion&) {
      return std::string("version");
    } catch (const kcArchive::Corrupt&) {
      return std::string("corrupt");
    } catch (const kcException& e) {
      return std::string("other: ") + e.what();
    }
    return std::string("accepted");
  };
  Bytes magic = good;
  magic[1] = 'd';
  EXPECT_EQ(refused(magic), "corrupt");
  Bytes version = good;
  version[8] = 2;
  EXPECT_EQ(refused(version), "version");
  Bytes kind = good;
  kind[9] = 9;
  EXPECT_EQ(refused(kind), "corrupt");
  Bytes longer = good;
  longer.push_back(0);
  EXPECT_EQ(refused(longer), "corrupt");
  // A sketch file read as a model, and every cut of a good file.
  Bytes other = kfSaveBytes(everyKind()[0]);
  other[9] = static_cast<std::uint8_t>(keDispcFileKind::model);
  EXPECT_NE(refused(other), "accepted");
  for (std::size_t n = 0; n < good.size(); ++n)
    ASSERT_EQ(refused(Bytes(good.begin(), good.begin() + static_cast<long>(n))), "corrupt") << n << " bytes";
}

TEST(DispcFile, PathsThatCannotBeUsedNameThemselves) {
  const std::string missing = "/nonexistent-folder/part.dispc";
  for (const auto& use : {std::function<void()>([&] { (void)kfLoad(missing); }),
                          std::function<void()>([&] { kfSave(missing, everyKind()[2]); })}) {
    try {
      use();
      ADD_FAILURE() << "no error";
    } catch (const kcArchive::FileError& e) {
      EXPECT_NE(std::string(e.what()).find(missing), std::string::npos) << e.what();
    }
  }
}

}  // namespace
