#include "support/job_generator.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "support/descriptors.h"

namespace rlx::testing {

namespace {

constexpr std::array<std::string_view, 30> kSequences{
    "\x1b$@",
    "\x1b(H",
    "\x1b"
    "c",
    "\x1b[12a",
    "\x1b[3 E",
    "\x1b[5`",
    "\x1c%!\" p",
    "\x1c$!$$p",
    "\x1c(`q",
    "\x1c(ap",
    "\x1c& 'p",
    "\x1cJ",
    "\x1cK",
    "\x1bQ1;7200!C",
    "\x1bQ2 y",
    "\x1bQ1 y",
    "\x1bQ240!A",
    "\x1bQ0;0720/G",
    "\x1bQ1;!f",
    "\x1bQ5!I",
    "\x1bQ1;5!aABCDE",
    "\x1bQ12!R",
    "\x1bQ1;7 oab\fde",
    "\x1bQ6;8 oo\x01"
    "12345",
    "\x1bQ100;100!H",
    "\x1bQ1!@",
    "\x1bQ2!W",
    "\x1bQ1!x",
    "\x1bQ3!z",
    "\x1bQ1/|",
};

constexpr std::array<std::string_view, 14> kBrokenSequences{
    "\x1bx",
    "\x1b%12A",
    "\x1b$A",
    "\x1b(x",
    "\x1c\x7f",
    "\x1c 1A",
    "\x1bQ12 C",
    "\x1bQa",
    "\x1bQ1;12345678!a",
    "\x1bQ1;x!a",
    "\x1b[1E",
    "\x1b\x7f"
    "abcd",
    "\x1bQ!\x7f",
    "\x1bQ\x7f"
    "1!C",
};

constexpr std::array<std::string_view, 8> kCharacters{
    "\xc3\xa9",
    "\xe3\x81\x82",
    "\xe6\xbc\xa2",
    "\xf0\xa0\x80\x8b",
    "\xf8\x88\x80\x80\x80",
    "\xfc\x84\x80\x80\x80\x80",
    "\xe3\x41\x42",
    "\x8e\xb1",
};

constexpr std::array<std::string_view, 34> kOddCharacters{
    // Ended by a FF, or with one inside.
    "\xe3\x81\x0c",
    "\xc3\x0c",
    "\x8e\x0c",
    "\x8e\xe3\x81\x0c",
    "\xe3\x0c\x82",
    "\xf0\xa0\x80\x0c",
    // 0x8e before every class of byte.
    "\x8e\xe3\x81\x82",
    "\x8e\x8e",
    "\x8e\xb1",
    "\x8e"
    "A",
    "\x8e\x0a",
    "\x8e\x1b",
    "\x8e\xff",
    "\x8e\xc3\xa9",
    "\x8e\xf8\x88\x80\x80\x80",
    "\x8e",
    // Bytes that lack a lead byte, and the other way round.
    "\x80",
    "\xbf",
    "\xfe",
    "\xff",
    "\xc3",
    "\xe3",
    "\xe3\x81",
    "\xf0",
    "\xf0\xa0",
    "\xf0\xa0\x80",
    "\xf8\x88",
    "\xfc\x84\x80\x80",
    "\xe3\x81\xe3",
    "\xe3\x0a",
    "\xe3\x1b",
    "\xf0\x1c\x0a",
    "\xc3\x8e",
    "\xe3\x8e\x8e",
};

/// Bytes that are odd among the parameters of a sequence.
constexpr std::array<std::string_view, 9> kOddParameters{
    "\x1b", "\x1c", "\n", "\x0c", "\x8e", "\x81", "\xff", "\xe3\x81\x82", "\x7f",
};

constexpr std::array<std::string_view, 3> kForms{"six", "mixd", "shrt"};

}  // namespace

void write_generator_forms() {
  write_file("forms/fcbe/six", "print 1 79200\nlpi 1200 66\n");
  write_file("forms/fcbe/mixd", "print 3\nlpi 1200 20\nlpi 900 20\nlpi 2400 4\n");
  write_file("forms/fcbe/shrt", "print 1 7200\nlpi 2400 3\n");
}

std::size_t JobGenerator::number(std::size_t low, std::size_t high) {
  return low + static_cast<std::size_t>(random_() % (high - low + 1));
}

std::string JobGenerator::text(std::size_t length) {
  std::string line(length, ' ');
  std::generate(line.begin(), line.end(), [this] { return static_cast<char>(number(0x20, 0x7e)); });
  return line;
}

std::string JobGenerator::characters(std::size_t count) {
  std::string all;
  for (; count > 0; --count) {
    all += one_of(kCharacters);
  }
  return all;
}

std::string JobGenerator::characters_and_text() {
  std::string all = characters(number(1, 4));
  all += text(number(1, 6));
  return all;
}

std::string JobGenerator::any_bytes(std::size_t count) {
  std::string all(count, ' ');
  std::generate(all.begin(), all.end(), [this] { return static_cast<char>(number(0, 255)); });
  return all;
}

std::string JobGenerator::sequence() {
  if (chance(1)) {
    return "\x1bQ0;0000000000/`";
  }
  return chance(75) ? one_of(kSequences) : one_of(kBrokenSequences);
}

/// A sequence of many parameter bytes, now and then more than the fast road looks at together.
std::string JobGenerator::long_sequence() {
  constexpr std::array<std::string_view, 4> kFronts{"\x1b[", "\x1c%", "\x1c(`", "\x1bQ"};
  constexpr std::array<std::string_view, 4> kEnds{"a", "p", "q", "!H"};
  const std::size_t kind = number(0, kFronts.size() - 1);
  std::string all(kFronts[kind]);
  const std::size_t oddness = chance(50) ? 0 : number(1, 20);
  const std::size_t length = chance(70) ? number(0, 30) : number(30, 130);
  for (std::size_t i = 0; i < length; ++i) {
    all += chance(oddness) ? one_of(kOddParameters) : std::to_string(number(0, 9));
  }
  return all + std::string(kEnds[kind]);
}

/// Characters of both sets, sequences, odd characters and control bytes, close to one another.
std::string JobGenerator::mixture(std::size_t count) {
  constexpr std::array<std::string_view, 7> kBetween{"x", "yz", "\n", "\r", "\t", "\x7f", "\xff"};
  const std::size_t oddness = chance(50) ? 2 : number(0, 40);
  std::string all;
  for (; count > 0; --count) {
    if (chance(oddness)) {
      all += one_of(kOddCharacters);
    } else if (chance(15)) {
      all += chance(30) ? long_sequence() : one_of(kSequences);
    } else {
      all += chance(50) ? one_of(kCharacters) : one_of(kBetween);
    }
  }
  return all;
}

/// Short lines, some of them of both sets.
std::string JobGenerator::lines(std::size_t count) {
  std::string all;
  for (; count > 0; --count) {
    all += chance(70) ? text(number(0, 12)) : characters_and_text();
    all += "\n";
  }
  return all;
}

/// A print-condition command, sometimes with a form name; now and then a form name command.
std::string JobGenerator::record() {
  if (chance(20)) {
    return "\x1bQ2;20 n..0       NAME1234..";
  }
  constexpr std::array<std::string_view, 4> kNames{"six ", "mixd", "shrt", "    "};
  std::string data(100, ' ');
  data[2] = '0';
  data.replace(13, 4, one_of(kNames));
  data.replace(59, 2, chance(50) ? "P " : "L ");
  data.replace(61, 3, chance(50) ? "A4 " : "LTR");
  data.replace(64, 2, chance(50) ? "P2" : "P ");
  data.replace(68, 1, chance(50) ? "B" : "S");
  return "\x1bQ1;100 n" + data;
}

std::string JobGenerator::piece() {
  switch (number(0, 18)) {
    case 0:
    case 1:
    case 2:
      return text(number(1, 40));
    case 3:
      return text(number(40, 300)) + "\n";
    case 4:
    case 5:
      return characters(number(1, 8));
    case 6:
      return characters_and_text();
    case 7:
      return std::string(number(1, 4), '\n');
    case 8:
      return chance(50) ? "\r\n" : "\r";
    case 9:
      return chance(30) ? "\f" : "\n";
    case 10:
      return any_bytes(number(1, 12));
    case 11:
      return one_of(kOddCharacters);
    case 12:
    case 13:
      return sequence();
    case 14:
      return mixture(number(1, 30));
    case 15:
      return chance(40) ? lines(number(1, 30)) : mixture(number(1, 8));
    case 16:
      return long_sequence();
    case 17:
      return chance(15) ? record() : text(3);
    default:
      return chance(5) ? text(number(2000, 9000)) : characters(number(1, 300));
  }
}

std::vector<std::string> JobGenerator::make_options(bool framed) {
  std::vector<std::string> options{"-p", "forms"};
  if (framed) {
    options.emplace_back("-d");
  }
  if (chance(40)) {
    options.insert(options.end(), {"-n", one_of(kForms)});
  }
  if (chance(30)) {
    const std::size_t lines_per_page = chance(60) ? number(0, 5) : chance(50) ? 60 : 66;
    options.insert(options.end(), {"-L", std::to_string(lines_per_page)});
    if (chance(70)) {
      options.insert(options.end(), {"-l", "6"});
    }
  }
  constexpr std::array<std::string_view, 8> kModes{"-q", "-B", "-C", "-E",
                                                   "-N", "-R", "-A", "-c12"};
  if (chance(40)) {
    options.push_back(one_of(kModes));
  }
  return options;
}

/// Cuts data into frames of random length, some of them empty, the last one an END frame.
std::string JobGenerator::in_frames(std::string_view data) {
  std::string framed;
  bool last = false;
  while (!last) {
    const std::size_t wanted = chance(10) ? 0 : chance(50) ? number(1, 40) : number(1, 9999);
    const std::size_t count = std::min(wanted, data.size());
    last = count == data.size() && chance(70);
    std::array<char, 8> digits{};
    std::snprintf(digits.data(), digits.size(), "%04zu", count);
    framed += digits.data();
    framed += last ? "END_PRN_DAT" : "CNT_PRN_DAT";
    framed += '\0';
    framed += data.substr(0, count);
    data.remove_prefix(count);
  }
  return framed;
}

GeneratedJob JobGenerator::next() {
  const bool framed = chance(30);
  GeneratedJob job;
  job.options = make_options(framed);
  const std::size_t longest = chance(3) ? 150000 : chance(15) ? 20000 : 400;
  const std::size_t length = number(0, longest);
  while (job.input.size() < length) {
    job.input += piece();
  }
  if (framed) {
    job.input = in_frames(job.input);
  }
  return job;
}

}  // namespace rlx::testing
