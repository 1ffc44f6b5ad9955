// The annotated dump of docs/rlx.md, compared with what the program prints.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/descriptors.h"
#include "support/tested_filter.h"

namespace rlx::testing {
namespace {

const std::string kProject = std::string(RLX_SOURCE_DIRECTORY) + "/../";

/// What the program prints of the sample invoice on its form.
std::string printed_invoice() {
  const std::string forms = kProject + "examples/forms";
  const StandardInput job(read_file(kProject + "examples/invoice.txt"));
  const CaptureDescriptor output(STDOUT_FILENO);
  const pid_t child = fork();
  if (child == 0) {
    execl(tested_filter().c_str(), "filter", "-p", forms.c_str(), "-n", "INVOICE", nullptr);
    _exit(99);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  return output.text();
}

std::string hex(std::size_t value, std::size_t digits) {
  std::string text;
  for (; digits > 0; --digits, value /= 16) {
    text.insert(text.begin(), "0123456789abcdef"[value % 16]);
  }
  return text;
}

std::string hex_bytes(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += (text.empty() ? "" : " ") + hex(static_cast<unsigned char>(byte), 2);
  }
  return text;
}

/// A byte that is no text in the notation of the page.
std::string name_of(char byte) {
  constexpr std::array<std::pair<char, const char*>, 7> kNames{{{'\0', "NUL"},
                                                                {'\n', "LF"},
                                                                {'\f', "FF"},
                                                                {'\r', "CR"},
                                                                {'\x1b', "ESC"},
                                                                {'\x1c', "FS"},
                                                                {'\x7f', "DEL"}}};
  for (const auto& [named, name] : kNames) {
    if (named == byte) {
      return name;
    }
  }
  return hex(static_cast<unsigned char>(byte), 2);
}

/// Bytes in the notation of the page: ESC "Q1 y".
std::string notation(std::string_view bytes) {
  std::string text;
  bool quoted = false;
  for (const char byte : bytes) {
    const bool printable = byte >= ' ' && byte <= '~';
    text += quoted && !printable ? "\"" : "";
    text += text.empty() || (quoted && printable) ? "" : " ";
    text += printable && !quoted ? "\"" : "";
    text += printable && (byte == '"' || byte == '\\') ? "\\" : "";
    text += printable ? std::string(1, byte) : name_of(byte);
    quoted = printable;
  }
  return text + (quoted ? "\"" : "");
}

constexpr std::string_view kBlockStart = "```hex";

/// The lines of the page's code blocks that are marked as hex, with the marks.
std::vector<std::string> dump_lines() {
  std::vector<std::string> lines;
  std::istringstream page(read_file(kProject + "docs/rlx.md"));
  bool inside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("```")) {
      inside = line == kBlockStart;
    }
    if (inside) {
      lines.push_back(line);
    }
  }
  return lines;
}

/// A line of the dump as it must begin: offset, bytes, notation.
std::string dump_line(std::size_t offset, std::string_view bytes) {
  constexpr std::size_t kBytesWidth = 47;
  std::string text = hex_bytes(bytes);
  text.resize(std::max(text.size(), kBytesWidth), ' ');
  return hex(offset, 4) + ": " + text + "  " + notation(bytes);
}

/// How many bytes a line of the dump shows.
std::size_t bytes_shown(const std::string& line) {
  constexpr std::size_t kBytesColumn = 6;
  const std::size_t end = line.find("  ", kBytesColumn);
  return end == std::string::npos ? 0 : (end - kBytesColumn + 1) / 3;
}

TEST(RlxPage, DumpIsWhatTheProgramPrints) {
  const std::string output = printed_invoice();
  std::size_t offset = 0;
  bool gap = false;
  for (const std::string& line : dump_lines()) {
    if (line == kBlockStart || line == "...") {
      gap = offset != 0;
      continue;
    }
    if (gap) {
      ASSERT_GE(std::stoul(line, nullptr, 16), offset) << line;
      offset = std::stoul(line, nullptr, 16);
    }
    const std::size_t count = bytes_shown(line);
    ASSERT_GT(count, 0U) << line;
    ASSERT_LE(offset + count, output.size()) << line;
    const std::string expected = dump_line(offset, std::string_view(output).substr(offset, count));
    EXPECT_EQ(line.substr(0, expected.size()), expected);
    EXPECT_NE(line.find_first_not_of(' ', expected.size()), std::string::npos) << "no meaning";
    offset += count;
    gap = false;
  }
  EXPECT_EQ(offset, output.size()) << "the dump must show the job's end";
}

}  // namespace
}  // namespace rlx::testing
