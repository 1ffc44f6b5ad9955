#include "rlxproof/note.h"

#include <algorithm>

namespace rlx::proof {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kDel = 0x7f;

std::string spelled(std::uint8_t byte) {
  constexpr const char* kDigits = "0123456789abcdef";
  if (byte == kDel) {
    return "DEL";
  }
  if (byte > ' ' && byte < kDel) {
    return std::string(1, static_cast<char>(byte));
  }
  return byte == ' ' ? "SP" : std::string{kDigits[byte >> 4U], kDigits[byte & 0xfU]};
}

std::string shape_of_q(reader::Bytes sequence) {
  std::string separator = spelled(sequence[sequence.size() - 2]);
  if (separator == "SP") {
    separator = " SP ";
  }
  return "ESC Q.." + separator + spelled(sequence.back());
}

}  // namespace

/// @return false when the kind is new.
bool Note::count_known(const std::string& what, std::uint64_t count) {
  const auto known = std::find_if(entries_.begin(), entries_.end(),
                                  [&what](const Entry& entry) { return entry.what == what; });
  if (known != entries_.end()) {
    known->count += count;
  }
  return known != entries_.end();
}

void Note::add(const std::string& what, std::uint64_t count) {
  if (count_known(what, count)) {
    return;
  }
  const std::size_t kinds = entries_.size() - character_kinds_;
  if (kinds > kMostKinds) {
    entries_.back().count += count;
  } else {
    entries_.push_back({kinds == kMostKinds ? "something else" : what, count});
  }
}

void Note::add_character(const std::string& what, std::uint64_t count) {
  if (!count_known(what, count)) {
    entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(character_kinds_),
                    {what, count});
    ++character_kinds_;
  }
}

std::string shape_of(reader::Bytes sequence) {
  if (sequence.size() < 2) {
    return "ESC or FS alone";
  }
  const std::string lead = sequence[0] == kEsc ? "ESC " : "FS ";
  const std::string second = spelled(sequence[1]);
  if (sequence.size() >= 4 && lead == "ESC " && second == "Q") {
    return shape_of_q(sequence);
  }
  if (lead == "ESC " && second == "[") {
    return "ESC [.." + spelled(sequence.back());
  }
  if (lead == "ESC " && sequence.size() == 3) {
    return lead + second + spelled(sequence[2]);
  }
  return lead + second;
}

std::string text_of(const Note& note) {
  std::string text;
  for (const Note::Entry& entry : note.entries()) {
    text += (text.empty() ? "" : ", ") + std::to_string(entry.count) + " x " + entry.what;
  }
  return text;
}

}  // namespace rlx::proof
