#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rlx_reader/byte_input.h"

namespace rlx::proof {

/// Counts what a sheet does not show, by kind. Kinds past kMostKinds are counted together.
class Note {
 public:
  static constexpr std::size_t kMostKinds = 24;

  struct Entry {
    std::string what;
    std::uint64_t count = 0;
  };

  void add(const std::string& what, std::uint64_t count = 1);

  /// In the order in which the kinds came first.
  const std::vector<Entry>& entries() const { return entries_; }
  bool empty() const { return entries_.empty(); }

 private:
  std::vector<Entry> entries_;
};

/// What a sequence is called in a note: its shape without its parameters, such as ESC Q..!z.
std::string shape_of(reader::Bytes sequence);

/// A note as one line: "3 x ESC Q..!z, 12 x control byte".
std::string text_of(const Note& note);

}  // namespace rlx::proof
