#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// Of exactly its size, so that a look behind the end is seen.
using Input = std::vector<std::uint8_t>;

void run(Input input) {
  input.shrink_to_fit();
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

Input repeated(const Input& input, std::size_t size) {
  Input result;
  result.reserve(size);
  while (!input.empty() && result.size() + input.size() <= size)
    result.insert(result.end(), input.begin(), input.end());
  return result;
}

}  // namespace

/// Runs a target over each file of a directory, as it is and repeated until it is 64 KiB long,
/// which shows what takes time by the square of a length. A directory without files is a failure.
int main(int argumentCount, char** arguments) {
  constexpr std::size_t longest = 64 * 1024;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[argumentCount - 1])) {
    std::printf("%s\n", entry.path().c_str());
    std::fflush(stdout);
    std::ifstream file(entry.path(), std::ios::binary);
    const Input input{std::istreambuf_iterator<char>(file), {}};
    run(input);
    run(repeated(input, longest));
    ++count;
  }
  std::printf("%d inputs\n", count);
  return count > 0 ? 0 : 1;
}
