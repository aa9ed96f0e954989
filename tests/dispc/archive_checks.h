// Checks shared by the display-core tests: archive forms, round trips, and
// rejected records that leave their target as it was.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "foundation/archive.h"

namespace dispc_test {

using Bytes = std::vector<std::uint8_t>;

// The bytes of a value stored into a fresh archive.
template <class T>
Bytes stored(T value) {
  kcMemArchive ar;
  ar || value;
  return ar.bytes();
}

// `target` loaded from the bytes, which must be read to the end.
template <class T>
T loaded(const Bytes& bytes, T target) {
  kcMemArchive in(bytes);
  in || target;
  EXPECT_TRUE(in.atEnd());
  return target;
}

// A version byte followed by doubles, as the archive stores them on a little-endian host.
inline Bytes doubles(std::uint8_t version, std::vector<double> values) {
  Bytes b(1 + 8 * values.size(), version);
  std::memcpy(b.data() + 1, values.data(), 8 * values.size());
  return b;
}

// Loading the bytes into `target` throws UnknownVersion naming the file and line; `target` keeps its bytes.
template <class T>
void expectUnknownVersion(const Bytes& bytes, T target, std::string_view file, int line) {
  const Bytes before = stored(target);
  try {
    kcMemArchive in(bytes);
    in || target;
    ADD_FAILURE() << "unknown version accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), file);
    EXPECT_EQ(e.line(), line);
  }
  EXPECT_EQ(stored(target), before);
}

// Loading the bytes into `target` throws Error; `target` keeps its bytes.
template <class Error, class T>
void expectRefused(const Bytes& bytes, T target) {
  const Bytes before = stored(target);
  kcMemArchive in(bytes);
  EXPECT_THROW(in || target, Error);
  EXPECT_EQ(stored(target), before);
}

// Loading the bytes through target.loadSimple throws UnknownVersion naming
// the file and line; target is unchanged.
template <class T>
void expectSimpleUnknownVersion(const Bytes& bytes, T& target, std::string_view file, int line) {
  const T before = target;
  try {
    kcMemArchive in(bytes);
    target.loadSimple(in);
    ADD_FAILURE() << "unknown version accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), file);
    EXPECT_EQ(e.line(), line);
  }
  EXPECT_EQ(target, before);
}

}  // namespace dispc_test
