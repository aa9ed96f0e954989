// The file handling both image writers share.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

// Throws kcExceptionWithString: "cannot write <path>: <reason>".
[[noreturn]] void kfImageWriteError_(const std::string& path, const std::string& reason);
// Opens path for writing and hands the file to write, which returns false when
// a write failed; any failure removes the file and throws kfImageWriteError_.
void kfWriteImageFile_(const std::string& path, const std::function<bool(std::FILE*)>& write);
