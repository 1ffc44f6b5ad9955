#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rlx_reader/byte_input.h"

namespace rlx::proof {

/// Counts what a sheet does not show, by kind: characters first, then what stands between them.
class Note {
 public:
  /// Kinds of others than characters. Those past them are counted together.
  static constexpr std::size_t kMostKinds = 24;

  struct Entry {
    std::string what;
    std::uint64_t count = 0;
  };

  void add(const std::string& what, std::uint64_t count = 1);

  /// Counts a character that is cut, or cannot be drawn. The kinds of these are few; each of them
  /// has its own count, however many others there are.
  void add_character(const std::string& what, std::uint64_t count = 1);

  /// Characters, then others, each in the order in which the kinds came first.
  const std::vector<Entry>& entries() const { return entries_; }
  bool empty() const { return entries_.empty(); }

 private:
  bool count_known(const std::string& what, std::uint64_t count);

  std::vector<Entry> entries_;
  std::size_t character_kinds_ = 0;  ///< so many entries at the front
};

/// What a sequence is called in a note: its shape without its parameters, such as ESC Q..!z.
std::string shape_of(reader::Bytes sequence);

/// A note as one line: "3 x ESC Q..!z, 12 x control byte".
std::string text_of(const Note& note);

}  // namespace rlx::proof
