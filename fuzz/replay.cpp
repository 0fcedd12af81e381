// Feeds files to the chosen fuzz target, for builds without a fuzzer.
// usage: TARN_FUZZ_TARGET=NAME tarn_fuzz FILE_OR_DIRECTORY...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** arguments) {
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  for (int i = 1; i < count; ++i) {
    const fs::path path = arguments[i];
    if (fs::is_directory(path)) {
      std::copy(fs::directory_iterator(path), fs::directory_iterator(), std::back_inserter(files));
    } else {
      files.push_back(path);
    }
  }
  std::sort(files.begin(), files.end());
  for (const fs::path& path : files) {
    std::ifstream file(path, std::ios::binary);
    const std::string input((std::istreambuf_iterator<char>(file)), {});
    if (!file) {
      std::fprintf(stderr, "cannot read %s\n", path.c_str());
      return 1;
    }
    // Whoever reads of a crash wants to know where to look.
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  if (files.empty()) {
    std::fputs("there is nothing to feed\n", stderr);
  }
  return files.empty() ? 1 : 0;
}
