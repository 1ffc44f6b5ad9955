#include "sample_jobs.h"

#include <array>
#include <random>

namespace rlx::bench {

namespace {

constexpr int kLinesPerPage = 60;

constexpr std::size_t kRunBytes = 4096;

constexpr std::mt19937::result_type kSeed = 20261120;

std::mt19937 generator(kSeed);

/// A number from `low` to `high`, the same on every machine.
std::size_t number(std::size_t low, std::size_t high) {
  return low + generator() % (high - low + 1);
}

char byte_between(int low, int high) {
  return static_cast<char>(number(static_cast<std::size_t>(low), static_cast<std::size_t>(high)));
}

void add_words(std::string& line, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    line += number(0, 5) == 0 ? ' ' : byte_between(0x21, 0x7e);
  }
}

std::string plain_line() {
  std::string line;
  add_words(line, number(80, 100));
  return line;
}

/// A character of the double-byte set, of three bytes.
std::string kanji() {
  return {byte_between(0xe3, 0xe9), byte_between(0x80, 0xbf), byte_between(0x80, 0xbf)};
}

/// A letter of two bytes: a lead byte, and one of a range.
std::string two_bytes(int lead, int low, int high) {
  return {static_cast<char>(lead), byte_between(low, high)};
}

/// `count` times what `unit` gives.
std::string several(std::size_t count, std::string (*unit)()) {
  std::string text;
  for (; count > 0; --count) {
    text += unit();
  }
  return text;
}

std::string mixed_line() {
  std::string line;
  while (line.size() < 90) {
    line += several(number(2, 6), kanji);
    add_words(line, number(2, 6));
  }
  return line;
}

/// What stands before and behind the number of a sequence.
struct Sequence {
  std::string_view front;
  std::string_view back;
};

constexpr std::array kSequences{
    Sequence{"\x1b[", "`"},  Sequence{"\x1b[", "a"},  Sequence{"\x1b[", "e"},
    Sequence{"\x1b[", " E"}, Sequence{"\x1bQ", " y"}, Sequence{"\x1bQ", "!f"},
    Sequence{"\x1bQ", "/E"}, Sequence{"\x1bQ", "!b"}, Sequence{"\x1bQ", "!q"},
    Sequence{"\x1c%!", "p"}, Sequence{"\x1c\"", "q"}, Sequence{"\x1c(`", "p"},
    Sequence{"\x1c(a", "p"}, Sequence{"\x1c&", "p"},
};
/// Those without a number.
constexpr std::array<std::string_view, 3> kShortSequences{"\x1b(H", "\x1cJ", "\x1cK"};

void add_sequence(std::string& line) {
  const std::size_t chosen = number(0, kSequences.size() + kShortSequences.size() - 1);
  if (chosen >= kSequences.size()) {
    line += kShortSequences[chosen - kSequences.size()];
    return;
  }
  line += kSequences[chosen].front;
  line += std::to_string(number(0, 199));
  line += kSequences[chosen].back;
}

std::string sequences_line() {
  std::string line;
  while (line.size() < 90) {
    add_sequence(line);
    add_words(line, number(1, 4));
  }
  return line;
}

/// Any byte but text, lead bytes, LF, FF and what begins a sequence.
char strange_byte() {
  switch (number(0, 3)) {
    case 0:
      return byte_between(0x00, 0x09);
    case 1:
      return byte_between(0x0d, 0x1a);
    case 2:
      return byte_between(0x80, 0xbf);
    default:
      return byte_between(0xfe, 0xff);
  }
}

std::string invalid_line() {
  std::string line;
  for (std::size_t i = 0; i < 90; ++i) {
    line += number(0, 7) == 0 ? '\x7f' : strange_byte();
  }
  return line;
}

std::string double_line() {
  return several(30, kanji);
}

std::string accented_line() {
  return several(80, [] {
    return number(0, 11) == 0 ? two_bytes(0xc3, 0xa0, 0xbf)
                              : std::string(1, byte_between('a', 'z'));
  });
}

std::string cyrillic_word() {
  return several(number(3, 10), [] { return two_bytes(0xd0, 0xb0, 0xbf); }) + ' ';
}

std::string cyrillic_line() {
  return several(6, cyrillic_word);
}

std::string kana_word() {
  return several(number(3, 8), [] { return std::string("\xe3\x81") + byte_between(0x81, 0xbf); }) +
         ' ';
}

std::string kana_line() {
  return several(5, kana_word);
}

/// Characters of two to four bytes, every second one cut short.
std::string cut_character() {
  std::string text = kanji();
  if (number(0, 2) == 0) {
    text = two_bytes(0xd0, 0x80, 0xbf);
  } else if (number(0, 2) == 0) {
    text.insert(text.begin(), '\xf0');
  }
  if (number(0, 1) == 0) {
    text.resize(number(1, text.size()));
  }
  return text;
}

std::string cut_line() {
  return several(40, cut_character);
}

std::string shifted_line() {
  return several(45, [] { return std::string("\x8e") + byte_between(0xa1, 0xbf); });
}

std::string bare_sequences_line() {
  std::string line;
  for (int i = 0; i < 12; ++i) {
    add_sequence(line);
  }
  return line;
}

std::string tabs_line() {
  return several(45, [] {
    return number(0, 1) == 0 ? std::string("\t_") : std::string("\b") + byte_between('a', 'z');
  });
}

std::string short_line() {
  std::string line;
  add_words(line, 6);
  return line;
}

std::string one_line_page() {
  return short_line() + plain_line() + "\n\f";
}

/// A sequence with as many data as a count can say.
std::string counted_data() {
  std::string text = "\x1bQ1;9999999!a";
  text.append(9999999, 'A');
  return text;
}

/// Whole pages.
std::string pages(std::string (*line)(), std::size_t least) {
  std::string text;
  while (text.size() < least) {
    for (int i = 0; i < kLinesPerPage; ++i) {
      text += line();
      text += '\n';
    }
    text += '\f';
  }
  return text;
}

/// The same unit again and again.
std::string repeated(std::string (*unit)(), std::size_t least) {
  std::string text;
  while (text.size() < least) {
    text += unit();
  }
  return text;
}

std::string framed(std::string_view text) {
  std::string frames;
  for (; text.size() >= kFrameBytes; text.remove_prefix(kFrameBytes)) {
    frames += "4096CNT_PRN_DAT";
    frames += '\0';
    frames += text.substr(0, kFrameBytes);
  }
  return frames;
}

struct Kind {
  std::string_view name;
  std::string (*make)(std::string (*unit)(), std::size_t least);
  std::string (*unit)();
};

constexpr std::array kKinds{
    Kind{"plain", pages, plain_line},
    Kind{"mixed", pages, mixed_line},
    Kind{"sequences", pages, sequences_line},
    Kind{"framed", pages, plain_line},
    Kind{"framed_mixed", pages, mixed_line},
    Kind{"invalid", pages, invalid_line},
    Kind{"double", pages, double_line},
    Kind{"accents", pages, accented_line},
    Kind{"cyrillic", pages, cyrillic_line},
    Kind{"kana", pages, kana_line},
    Kind{"cut", pages, cut_line},
    Kind{"shifted", pages, shifted_line},
    Kind{"bare_sequences", pages, bare_sequences_line},
    Kind{"tabs", pages, tabs_line},
    Kind{"short_lines", pages, short_line},
    Kind{"endless_lines", repeated, [] { return short_line() + '\n'; }},
    Kind{"one_line_pages", repeated, one_line_page},
    Kind{"positions", repeated, [] { return std::string("\x1b[10`"); }},
    Kind{"states", repeated, [] { return std::string("\x1bQ100;100!H"); }},
    Kind{"one_line", repeated, plain_line},
    Kind{"form_feeds", repeated, [] { return std::string(kRunBytes, '\f'); }},
    Kind{"line_feeds", repeated, [] { return std::string(kRunBytes, '\n'); }},
    Kind{"escapes", repeated, [] { return std::string(kRunBytes, '\x1b'); }},
    Kind{"digits", repeated, [] { return std::string(kRunBytes, '1'); }},
    Kind{"counted_data", repeated, counted_data},
};

}  // namespace

std::string sample_job(std::string_view kind, std::size_t least) {
  generator.seed(kSeed);
  for (const Kind& known : kKinds) {
    if (known.name == kind) {
      const std::string text = known.make(known.unit, least);
      return kind.substr(0, 6) == "framed" ? framed(text) : text;
    }
  }
  return {};
}

}  // namespace rlx::bench
