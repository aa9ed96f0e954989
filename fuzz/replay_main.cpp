// Runs a fuzz target over saved inputs without libFuzzer, so a corpus replays
// as an ordinary test in every build:
//   <target>_replay <file or folder>...
// A folder stands for every regular file below it, in name order. Fails when
// no input was found, so a mistyped corpus path cannot pass quietly.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

namespace {

bool readFile(const fs::path& path, std::vector<std::uint8_t>& bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s <file or folder>...\n", argv[0]);
    return 2;
  }
  std::vector<fs::path> inputs;
  for (int i = 1; i < argc; ++i) {
    fs::path arg(argv[i]);
    std::error_code ec;
    if (fs::is_directory(arg, ec)) {
      for (const auto& entry : fs::recursive_directory_iterator(arg))
        if (entry.is_regular_file()) inputs.push_back(entry.path());
    } else if (fs::is_regular_file(arg, ec)) {
      inputs.push_back(arg);
    } else {
      std::fprintf(stderr, "%s: no such file or folder\n", argv[i]);
      return 2;
    }
  }
  std::sort(inputs.begin(), inputs.end());
  if (inputs.empty()) {
    std::fprintf(stderr, "no inputs found\n");
    return 2;
  }
  std::vector<std::uint8_t> bytes;
  for (const auto& path : inputs) {
    if (!readFile(path, bytes)) {
      std::fprintf(stderr, "%s: cannot read\n", path.c_str());
      return 2;
    }
    // A crash or a sanitizer report ends the run here, naming the input.
    std::fprintf(stderr, "replaying %s (%zu bytes)\n", path.c_str(), bytes.size());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  std::printf("replayed %zu inputs\n", inputs.size());
  return 0;
}
