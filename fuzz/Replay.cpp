#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs a target over each file of a directory, as it is and repeated until it is 64 KiB long,
/// which shows what takes time by the square of a length. A directory without files is a failure.
int main(int argumentCount, char** arguments) {
  constexpr std::size_t longest = 64 * 1024;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[argumentCount - 1])) {
    std::printf("%s\n", entry.path().c_str());
    std::fflush(stdout);
    std::ifstream file(entry.path(), std::ios::binary);
    // Of exactly its size, so that a look behind the end is seen.
    std::vector<std::uint8_t> input{std::istreambuf_iterator<char>(file), {}};
    input.shrink_to_fit();
    LLVMFuzzerTestOneInput(input.data(), input.size());
    std::vector<std::uint8_t> repeated;
    while (!input.empty() && repeated.size() + input.size() <= longest)
      repeated.insert(repeated.end(), input.begin(), input.end());
    repeated.shrink_to_fit();
    LLVMFuzzerTestOneInput(repeated.data(), repeated.size());
    ++count;
  }
  std::printf("%d inputs\n", count);
  return count > 0 ? 0 : 1;
}
