#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>

namespace rlx::testing {

/// Chances that come out the same for the same seed and number.
class Chance {
 public:
  Chance(std::uint64_t seed, std::uint64_t number) : bits_(seed * 0x9e3779b97f4a7c15U + number) {}

  /// 0 to `end` - 1; 0 when that is nothing.
  std::size_t below(std::size_t end) { return end == 0 ? 0 : bits_() % end; }
  /// True once in so many times.
  bool once_in(std::size_t times) { return below(times) == 0; }
  char byte() { return static_cast<char>(below(256)); }
  std::string bytes(std::size_t count) {
    std::string all(count, '\0');
    for (char& one : all) {
      one = byte();
    }
    return all;
  }
  template <typename Sequence>
  const auto& of(const Sequence& sequence) {
    return *(std::begin(sequence) + static_cast<std::ptrdiff_t>(below(std::size(sequence))));
  }

 private:
  std::mt19937_64 bits_;
};

/// Changes some bytes: turned bits, bytes put in, taken out and written twice, lengths, ends.
void spoil(std::string& bytes, Chance& chance);

/// A text that a program may not expect: empty, long, no UTF-8, with NUL, a path, a format.
std::string odd_text(Chance& chance);

/// A name that leads out of a folder, where it is followed. What is made under it is found by
/// kMark.
std::string path_out(Chance& chance);

inline constexpr std::string_view kMark = "rlxfuzzmark";

}  // namespace rlx::testing
