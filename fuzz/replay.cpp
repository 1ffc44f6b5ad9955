// Replays a corpus as an ordinary test: `replay NAME FOLDER...` puts every file of the folders once
// through the fuzz target NAME. A fault ends the process, and so does a filter that exits where a
// target does not expect it: then with status 1. All is told on standard error, because the targets
// replace standard output.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

// The build says which targets there are: RLX_ALL_REPLAYED is RLX_REPLAYED(NAME) for each of them.
#define RLX_REPLAYED(name) extern "C" int replay_##name(const std::uint8_t* data, std::size_t size);
RLX_ALL_REPLAYED
#undef RLX_REPLAYED

namespace {

struct Target {
  std::string_view name;
  int (*run)(const std::uint8_t* data, std::size_t size);
};

#define RLX_REPLAYED(name) Target{#name, replay_##name},
constexpr Target kTargets[] = {RLX_ALL_REPLAYED};
#undef RLX_REPLAYED

bool running = false;

void catch_exit() {
  if (running) {
    std::fputs("the filter ended the process\n", stderr);
    std::_Exit(1);
  }
}

void replay(const Target& target, const std::filesystem::path& file) {
  std::fprintf(stderr, "%s\n", file.c_str());
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  running = true;
  target.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  running = false;
}

const Target* find_target(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kTargets), std::end(kTargets),
                                         [&](const Target& target) { return target.name == name; });
  return found == std::end(kTargets) ? nullptr : found;
}

}  // namespace

int main(int argc, char** argv) {
  const Target* const target = argc < 2 ? nullptr : find_target(argv[1]);
  if (target == nullptr) {
    std::fputs("usage: replay TARGET FOLDER...\n", stderr);
    return 2;
  }
  std::atexit(catch_exit);
  std::size_t inputs = 0;
  for (int i = 2; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      replay(*target, entry.path());
      ++inputs;
    }
  }
  std::fprintf(stderr, "%zu inputs replayed\n", inputs);
  return inputs == 0 ? 1 : 0;
}
