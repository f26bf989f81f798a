// Runs a fuzz target over files instead of under libFuzzer: every argument is a file, or a folder
// whose files are taken in the order of their names. A folder without files is a failure, so that
// a corpus that went astray does not pass for a good run.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::fprintf(stderr, "cannot read %s\n", path.string().c_str());
    return false;
  }
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  const bool allRead = std::all_of(files.begin(), files.end(), replay);
  std::printf("%zu files\n", files.size());
  return allRead && !files.empty() ? 0 : 1;
}
