#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>

#include "job/command_record.h"

namespace rlx {

/// A set of command codes, known at compile time. Each step of the main loop is for such a set.
class CodeSet {
 public:
  consteval CodeSet(std::initializer_list<std::uint32_t> codes) {
    for (const std::uint32_t code : codes) {
      insert(code);
    }
  }

  static consteval CodeSet all() {
    CodeSet set{};
    for (std::uint32_t code = 0; code <= kHighestCommandCode; ++code) {
      set.insert(code);
    }
    return set;
  }

  /// All codes but those of another set.
  static consteval CodeSet all_but(const CodeSet& others) {
    CodeSet set = all();
    for (std::size_t i = 0; i < set.words_.size(); ++i) {
      set.words_[i] &= ~others.words_[i];
    }
    return set;
  }

  /// Calls `visit` with each code of the set.
  template <typename Visitor>
  constexpr void for_each(Visitor visit) const {
    for (std::uint32_t i = 0; i < words_.size(); ++i) {
      for (std::uint64_t rest = words_[i]; rest != 0; rest &= rest - 1) {
        visit(i * 64 + static_cast<std::uint32_t>(std::countr_zero(rest)));
      }
    }
  }

  constexpr bool contains(std::uint32_t code) const {
    return code <= kHighestCommandCode && ((words_[code / 64] >> (code % 64)) & 1) != 0;
  }

 private:
  constexpr void insert(std::uint32_t code) {
    words_[code / 64] |= std::uint64_t{1} << (code % 64);
  }

  std::array<std::uint64_t, kHighestCommandCode / 64 + 1> words_{};
};

}  // namespace rlx
