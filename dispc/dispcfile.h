// The dispc file: one stored object (a sketch, a graphic list, an SMD poly or
// an SMD model) as applications write it and the dispc tool reads it.
//
// Layout:
//   bytes 0-7  the magic 0x89 'D' 'I' 'S' 'P' 'C' '\r' '\n' (the high byte
//              and the line ends show a transfer that treated it as text)
//   byte 8     the format version, 1
//   byte 9     the kind: 1 sketch, 2 graphic list, 3 SMD poly, 4 SMD model
//   then       the object in its class's archive form (kcArchive), to the
//              end of the file
//
// Loading checks all of it before it hands anything back: another magic, or
// an unknown kind, or bytes after the object, is kcArchive::Corrupt; another
// format version is kcArchive::UnknownVersion ("dispc/dispcfile"); a damaged
// object is what its loader throws (kcArchive::Corrupt for the archive,
// kcUIError::InvalidUISketch for a sketch's records). A file that cannot be
// read or written is kcArchive::FileError naming the path.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "dispc/glist.h"
#include "dispc/smd/model.h"
#include "dispc/smd/poly.h"
#include "dispc/uisketch.h"

enum class keDispcFileKind : std::uint8_t {
  sketch = 1,
  graphicList = 2,
  poly = 3,
  model = 4,
};

// What a dispc file holds, as its kind says.
using kcDispcFileContent = std::variant<kcUISketch, kcGraphicList, kcSMDGDPoly, kcSMDGDModel>;

inline constexpr std::array<std::uint8_t, 8> kDispcFileMagic = {0x89, 'D', 'I', 'S', 'P', 'C', '\r', '\n'};
inline constexpr std::uint8_t kDispcFileVersion = 1;

[[nodiscard]] keDispcFileKind kfKind(const kcDispcFileContent& content) noexcept;
// "sketch", "graphic list", "poly", "model".
[[nodiscard]] const char* kfKindName(keDispcFileKind kind) noexcept;

// The file's bytes, and the content back from them.
[[nodiscard]] std::vector<std::uint8_t> kfSaveBytes(const kcDispcFileContent& content);
[[nodiscard]] kcDispcFileContent kfLoadBytes(std::span<const std::uint8_t> bytes);

// Writes path whole or not at all (a file half written is removed).
void kfSave(const std::string& path, const kcDispcFileContent& content);
[[nodiscard]] kcDispcFileContent kfLoad(const std::string& path);
