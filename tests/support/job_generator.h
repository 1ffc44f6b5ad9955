#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::testing {

/// A job and the options it runs with.
struct GeneratedJob {
  std::vector<std::string> options;
  std::string input;
};

/// Makes jobs of all kinds out of a seed: text of both character sets, broken characters, control
/// bytes, known, unknown, malformed and long sequences, records, data; plain or in frames; with
/// forms and page-length emulation; short ones, and ones that cross blocks, buffers and frames. The
/// same seed makes the same jobs everywhere. The forms they name are in the directory "forms"
/// (write_generator_forms).
class JobGenerator {
 public:
  explicit JobGenerator(std::uint64_t seed) : random_(seed) {}

  GeneratedJob next();

 private:
  /// A number from `low` to `high`, both included.
  std::size_t number(std::size_t low, std::size_t high);
  bool chance(std::size_t percent) { return number(1, 100) <= percent; }
  template <typename List>
  std::string one_of(const List& list) {
    return std::string(list[number(0, list.size() - 1)]);
  }

  std::string text(std::size_t length);
  std::string characters(std::size_t count);
  std::string characters_and_text();
  std::string any_bytes(std::size_t count);
  std::string sequence();
  std::string long_sequence();
  std::string mixture(std::size_t count);
  std::string lines(std::size_t count);
  std::string record();
  std::string piece();
  std::vector<std::string> make_options(bool framed);
  std::string in_frames(std::string_view data);

  std::mt19937_64 random_;
};

/// Writes the forms that the generated jobs name into "forms/fcbe" of the current directory.
void write_generator_forms();

}  // namespace rlx::testing
