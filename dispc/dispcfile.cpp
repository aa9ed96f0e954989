// The dispc file: magic, version, kind, then the object's archive form.
#include "dispc/dispcfile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "foundation/archive.h"

namespace {

constexpr const char* kSource = "dispc/dispcfile";
constexpr int kVersionLine = 1;
constexpr std::size_t kHeaderSize = kDispcFileMagic.size() + 2;

std::wstring wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }

[[noreturn]] void fileError(const std::string& what, const std::string& path) {
  throw kcArchive::FileError(wide(what + " " + path + ": " + std::strerror(errno)));
}

template <class T>
T loadObject(kcMemArchive& in) {
  T value;
  in || value;
  return value;
}

}  // namespace

keDispcFileKind kfKind(const kcDispcFileContent& content) noexcept {
  return static_cast<keDispcFileKind>(content.index() + 1);
}

const char* kfKindName(keDispcFileKind kind) noexcept {
  switch (kind) {
    case keDispcFileKind::sketch:
      return "sketch";
    case keDispcFileKind::graphicList:
      return "graphic list";
    case keDispcFileKind::poly:
      return "poly";
    case keDispcFileKind::model:
      return "model";
  }
  return "unknown";
}

std::vector<std::uint8_t> kfSaveBytes(const kcDispcFileContent& content) {
  kcMemArchive out;
  // Storing reads the object only; the archive's operator takes it by reference.
  std::visit([&](const auto& value) { out || const_cast<std::remove_cvref_t<decltype(value)>&>(value); },
             content);
  std::vector<std::uint8_t> bytes(kDispcFileMagic.begin(), kDispcFileMagic.end());
  bytes.push_back(kDispcFileVersion);
  bytes.push_back(static_cast<std::uint8_t>(kfKind(content)));
  bytes.insert(bytes.end(), out.bytes().begin(), out.bytes().end());
  return bytes;
}

kcDispcFileContent kfLoadBytes(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeaderSize ||
      !std::equal(kDispcFileMagic.begin(), kDispcFileMagic.end(), bytes.begin()))
    throw kcArchive::Corrupt(L"not a dispc file");
  if (bytes[kDispcFileMagic.size()] != kDispcFileVersion)
    throw kcArchive::UnknownVersion(kSource, kVersionLine);
  const std::uint8_t kind = bytes[kDispcFileMagic.size() + 1];
  kcMemArchive in(std::vector<std::uint8_t>(bytes.begin() + kHeaderSize, bytes.end()));
  kcDispcFileContent content;
  switch (static_cast<keDispcFileKind>(kind)) {
    case keDispcFileKind::sketch:
      content = loadObject<kcUISketch>(in);
      break;
    case keDispcFileKind::graphicList:
      content = loadObject<kcGraphicList>(in);
      break;
    case keDispcFileKind::poly:
      content = loadObject<kcSMDGDPoly>(in);
      break;
    case keDispcFileKind::model:
      content = loadObject<kcSMDGDModel>(in);
      break;
    default:
      throw kcArchive::Corrupt(L"unknown kind of dispc file");
  }
  if (!in.atEnd()) throw kcArchive::Corrupt(L"bytes after the object");
  return content;
}

void kfSave(const std::string& path, const kcDispcFileContent& content) {
  const std::vector<std::uint8_t> bytes = kfSaveBytes(content);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) fileError("cannot write", path);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) {
    const int error = errno;
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    errno = error;
    fileError("cannot write", path);
  }
}

kcDispcFileContent kfLoad(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fileError("cannot read", path);
  const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                        std::istreambuf_iterator<char>());
  if (in.bad()) fileError("cannot read", path);
  return kfLoadBytes(bytes);
}
