// Replays a corpus as an ordinary test: every file of the folders named on the command line goes
// once through the fuzz target that this main is linked with. A fault ends the process, and so does
// a filter that exits where a target does not expect it: then with status 1. All is told on
// standard error, because the targets replace standard output.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool running = false;

void catch_exit() {
  if (running) {
    std::fputs("the filter ended the process\n", stderr);
    std::_Exit(1);
  }
}

void replay(const std::filesystem::path& file) {
  std::fprintf(stderr, "%s\n", file.c_str());
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  running = true;
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  running = false;
}

}  // namespace

int main(int argc, char** argv) {
  std::atexit(catch_exit);
  std::size_t inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      replay(entry.path());
      ++inputs;
    }
  }
  std::fprintf(stderr, "%zu inputs replayed\n", inputs);
  return inputs == 0 ? 1 : 0;
}
