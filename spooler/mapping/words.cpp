#include "mapping/words.h"

#include <algorithm>
#include <charconv>

namespace rlx::spooler {

namespace {

char lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

}  // namespace

bool same_word(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

std::vector<std::string> divide(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) {
      pieces.emplace_back(text.substr(0, end));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return pieces;
}

std::optional<unsigned> whole_number(std::string_view text, unsigned most) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  if (text.empty() || text.front() < '0' || text.front() > '9') {
    return std::nullopt;
  }
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || number > most) {
    return std::nullopt;
  }
  return number;
}

}  // namespace rlx::spooler
