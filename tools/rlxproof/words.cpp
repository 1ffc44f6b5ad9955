#include "rlxproof/words.h"

#include <algorithm>

namespace rlx::proof {

namespace {

constexpr std::string_view kBlanks = " \t\n";
constexpr std::string_view kEscapedInQuotes = "\"\\$`";

/// Reads one word after the other.
class WordReader {
 public:
  explicit WordReader(std::string_view text) : rest_(text) {}

  /// @return false when nothing but blanks is left.
  bool more() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
    return !rest_.empty();
  }

  /// @return nothing when the word does not end.
  std::optional<std::string> word() {
    std::string word;
    while (!rest_.empty() && kBlanks.find(rest_.front()) == std::string_view::npos) {
      if (!part(word)) {
        return std::nullopt;
      }
    }
    return word;
  }

 private:
  char next() {
    const char character = rest_.front();
    rest_.remove_prefix(1);
    return character;
  }

  bool part(std::string& word) {
    const char character = next();
    switch (character) {
      case '\'':
        return plain_quotes(word);
      case '"':
        return quotes(word);
      case '\\':
        return escaped(word);
      default:
        word += character;
        return true;
    }
  }

  bool escaped(std::string& word) {
    if (rest_.empty()) {
      return false;
    }
    word += next();
    return true;
  }

  bool plain_quotes(std::string& word) {
    const std::size_t end = rest_.find('\'');
    if (end == std::string_view::npos) {
      return false;
    }
    word += rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return true;
  }

  bool quotes(std::string& word) {
    while (!rest_.empty()) {
      const char character = next();
      if (character == '"') {
        return true;
      }
      const bool escape = character == '\\' && !rest_.empty() &&
                          kEscapedInQuotes.find(rest_.front()) != std::string_view::npos;
      word += escape ? next() : character;
    }
    return false;
  }

  std::string_view rest_;
};

}  // namespace

std::optional<std::vector<std::string>> split_words(std::string_view text) {
  std::vector<std::string> words;
  WordReader reader(text);
  while (reader.more()) {
    auto word = reader.word();
    if (!word) {
      return std::nullopt;
    }
    words.push_back(std::move(*word));
  }
  return words;
}

}  // namespace rlx::proof
