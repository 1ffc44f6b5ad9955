#include "sample_jobs.h"

#include <array>
#include <random>

namespace rlx::bench {

namespace {

constexpr int kLinesPerPage = 60;

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

std::string mixed_line() {
  std::string line;
  while (line.size() < 90) {
    for (std::size_t i = number(2, 6); i > 0; --i) {
      line += byte_between(0xe3, 0xe9);
      line += byte_between(0x80, 0xbf);
      line += byte_between(0x80, 0xbf);
    }
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

std::string framed(std::string_view text) {
  std::string frames;
  for (; text.size() >= kFrameBytes; text.remove_prefix(kFrameBytes)) {
    frames += "4096CNT_PRN_DAT";
    frames += '\0';
    frames += text.substr(0, kFrameBytes);
  }
  return frames;
}

using LineMaker = std::string (*)();

LineMaker line_maker(std::string_view kind) {
  if (kind == "plain" || kind == "framed") {
    return plain_line;
  }
  if (kind == "mixed") {
    return mixed_line;
  }
  if (kind == "sequences") {
    return sequences_line;
  }
  return kind == "invalid" ? invalid_line : nullptr;
}

}  // namespace

std::string sample_job(std::string_view kind, std::size_t least) {
  generator.seed(kSeed);
  const LineMaker line = line_maker(kind);
  if (line == nullptr) {
    return {};
  }
  const std::string text = pages(line, least);
  return kind == "framed" ? framed(text) : text;
}

}  // namespace rlx::bench
