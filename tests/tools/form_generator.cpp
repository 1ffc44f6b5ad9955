#include "tools/form_generator.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <string_view>
#include <vector>

#include "job/units.h"

namespace rlx::testing {

namespace {

/// Numbers that are the same with every library, unlike those of the library's distributions.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) {}

  /// A number from 0 to count - 1.
  std::size_t below(std::size_t count) { return engine_() % count; }
  std::int32_t between(std::int32_t least, std::int32_t most) {
    return least + static_cast<std::int32_t>(below(static_cast<std::size_t>(most - least + 1)));
  }
  bool chance(std::size_t one_in) { return below(one_in) == 0; }

  template <typename List>
  auto one_of(const List& list) {
    return list[below(list.size())];
  }

 private:
  std::mt19937 engine_;
};

/// A valid form.
class ValidForm {
 public:
  explicit ValidForm(Dice& dice) : dice_(dice) {}

  std::string text() {
    choose_length();
    add_runs();
    add_print();
    add_comments();
    std::string all;
    for (const std::string& line : lines_) {
      all += line + "\n";
    }
    if (dice_.chance(5) && !all.empty()) {
      all.pop_back();
    }
    return all;
  }

 private:
  void choose_length() {
    if (dice_.chance(3)) {
      return;
    }
    constexpr std::array kUsual{79200, 86400, 79201, 79300, 100800, 144000, 43200, 30000};
    length_ = dice_.chance(2) ? dice_.one_of(kUsual) : dice_.between(25200, 144000);
    length_given_ = true;
  }

  void add_runs() {
    if (dice_.chance(4)) {
      count_ = 6 * (length_ / kUnitsPerInch);
      return;
    }
    std::int32_t left = length_;
    for (int runs = dice_.between(1, 6); runs > 0; --runs) {
      const std::int32_t pitch = dice_.one_of(kLinePitches).height;
      const std::int32_t most = std::min(left / pitch, 255 - count_);
      const std::int32_t count = dice_.chance(3) ? most : dice_.between(0, most);
      lines_.push_back("lpi" + blanks() + number(pitch) + blanks() + number(count) + end());
      left -= count * pitch;
      count_ += count;
    }
  }

  void add_print() {
    const std::int32_t lines = std::max(count_ == 0 ? 6 * (length_ / kUnitsPerInch) : count_, 1);
    if (!length_given_ && lines >= 4 && dice_.chance(2)) {
      return;
    }
    std::string line = "print" + blanks() + number(dice_.between(1, std::min(lines, 255)));
    if (length_given_) {
      line += blanks() + number(length_);
    }
    insert(line + end());
  }

  void add_comments() {
    constexpr std::array<std::string_view, 6> kNothing{
        "", "# form", "   ", "\t# indented", "#lpi 600 5", "#"};
    for (int comments = dice_.between(0, 3); comments > 0; --comments) {
      insert(std::string(dice_.one_of(kNothing)));
    }
  }

  void insert(const std::string& line) {
    const auto at = static_cast<std::ptrdiff_t>(dice_.below(lines_.size() + 1));
    lines_.insert(lines_.begin() + at, line);
  }

  std::string blanks() {
    constexpr std::array<std::string_view, 4> kBlanks{" ", "  ", "\t", " \t "};
    return std::string(dice_.one_of(kBlanks));
  }

  std::string number(std::int32_t value) {
    return (dice_.chance(10) ? "00" : "") + std::to_string(value);
  }

  std::string end() {
    constexpr std::array<std::string_view, 6> kEnds{"", "", " ", "# why", "\t# why", " \r"};
    return std::string(dice_.one_of(kEnds));
  }

  Dice& dice_;
  std::vector<std::string> lines_;
  std::int32_t length_ = 11 * kUnitsPerInch;
  bool length_given_ = false;
  std::int32_t count_ = 0;
};

/// Where the lines of a text begin.
std::vector<std::size_t> line_starts(const std::string& text) {
  std::vector<std::size_t> starts{0};
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] == '\n') {
      starts.push_back(i + 1);
    }
  }
  return starts;
}

std::string line_from(const std::string& text, std::size_t start) {
  const std::size_t end = text.find('\n', start);
  return text.substr(start, end == std::string::npos ? end : end + 1 - start);
}

void change_byte(Dice& dice, std::string& text) {
  constexpr std::string_view kBytes = "0123456789 \t\n\r#lpirntLPI-+.x";
  text[dice.below(text.size())] = dice.chance(12) ? '\0' : dice.one_of(kBytes);
}

void insert_byte(Dice& dice, std::string& text) {
  constexpr std::string_view kBytes = "0123456789 \t\n\r#lx";
  text.insert(dice.below(text.size() + 1), 1, dice.one_of(kBytes));
}

void remove_byte(Dice& dice, std::string& text) {
  text.erase(dice.below(text.size()), 1);
}

void repeat_line(Dice& dice, std::string& text) {
  const std::string line = line_from(text, dice.one_of(line_starts(text)));
  text.insert(dice.one_of(line_starts(text)), line);
}

void remove_line(Dice& dice, std::string& text) {
  const std::size_t start = dice.one_of(line_starts(text));
  text.erase(start, line_from(text, start).size());
}

void replace_number(Dice& dice, std::string& text) {
  constexpr std::string_view kDigits = "0123456789";
  constexpr std::array<std::string_view, 16> kNumbers{
      "0",    "1", "255",   "256",   "600",    "601",    "900",    "1200",
      "2400", "3", "79200", "79201", "144000", "144001", "100800", "18446744073709551617"};
  const std::size_t start = text.find_first_of(kDigits, dice.below(text.size()));
  if (start == std::string::npos) {
    return;
  }
  const std::size_t end = std::min(text.find_first_not_of(kDigits, start), text.size());
  text.replace(start, end - start, dice.one_of(kNumbers));
}

void stretch_line(Dice& dice, std::string& text) {
  const auto count = static_cast<std::size_t>(dice.between(480, 520));
  text.insert(dice.one_of(line_starts(text)), count, dice.chance(2) ? ' ' : '#');
}

void damage(Dice& dice, std::string& text) {
  constexpr auto kDamages =
      std::to_array({change_byte, change_byte, insert_byte, remove_byte, repeat_line, remove_line,
                     replace_number, replace_number, stretch_line});
  if (!text.empty()) {
    dice.one_of(kDamages)(dice, text);
  }
}

}  // namespace

std::string generated_form(std::uint32_t number) {
  Dice dice(number);
  std::string text = ValidForm(dice).text();
  for (int damages = dice.between(0, 3); damages > 0; --damages) {
    damage(dice, text);
  }
  return text;
}

}  // namespace rlx::testing
