#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "foundation/exception.h"
#include "imageio/imageio_p.h"

void kfImageWriteError_(const std::string& path, const std::string& reason) {
  const std::string text = "cannot write " + path + ": " + reason;
  throw kcExceptionWithString(std::wstring(text.begin(), text.end()));
}

void kfWriteImageFile_(const std::string& path, const std::function<bool(std::FILE*)>& write) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) kfImageWriteError_(path, std::strerror(errno));
  errno = 0;
  const bool written = write(f);
  const int writeError = errno;
  const bool closed = std::fclose(f) == 0;
  const int closeError = errno;
  if (written && closed) return;
  // Only what this call left half written goes; a device stays.
  std::error_code ignored;
  if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
  const int error = written ? closeError : writeError;
  kfImageWriteError_(path, error != 0 ? std::strerror(error) : "the write failed");
}
