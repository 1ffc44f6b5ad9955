#include "support/markdown_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>

#include "support/descriptors.h"
#include "support/escaped_bytes.h"

namespace rlx::testing {

namespace {

constexpr std::string_view kIndent = "    ";
constexpr std::string_view kRun = "./run.sh";

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos
             ? ""
             : std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

/// A text without the marks of a code span that it may be.
std::string without_marks(const std::string& text) {
  const std::size_t marks = std::min(text.find_first_not_of('`'), text.size() / 2);
  const std::string inside = text.substr(marks, text.size() - 2 * marks);
  return marks > 1 ? trimmed(inside) : inside;
}

std::uint32_t number_of(const std::string& text) {
  return static_cast<std::uint32_t>(std::stoul(text, nullptr, 0));
}

/// The cells of a table's line. A bar with a backslash before it divides nothing.
std::vector<std::string> split_cells(std::string_view line) {
  std::vector<std::string> cells;
  std::string cell;
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '|') {
      cells.push_back(trimmed(cell));
      cell.clear();
    } else {
      i += line.substr(i, 2) == "\\|" ? 1U : 0U;
      cell += line[i];
    }
  }
  return cells;
}

class PageReader {
 public:
  MarkdownPage read(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      ++line_;
      take_table_line(line);
      take_example_line(line);
    }
    return std::move(page_);
  }

 private:
  enum class Part { none, command, output };

  void take_table_line(const std::string& line) {
    if (!line.starts_with('|')) {
      headings_.clear();
    } else if (headings_.empty()) {
      headings_ = split_cells(line);
    } else if (!line.starts_with("| ---")) {
      add_row(split_cells(line));
    }
  }

  void add_row(const std::vector<std::string>& cells) {
    MarkdownRow row{.line = line_};
    EXPECT_EQ(cells.size(), headings_.size()) << row.place();
    for (std::size_t i = 0; i < std::min(cells.size(), headings_.size()); ++i) {
      row.cells[headings_[i]] = cells[i];
    }
    page_.rows.push_back(row);
  }

  void take_example_line(const std::string& line) {
    if (!line.starts_with(kIndent)) {
      part_ = Part::none;
      return;
    }
    const std::string text = line.substr(kIndent.size());
    if (text.starts_with("$ ")) {
      page_.examples.push_back({.line = line_});
      part_ = Part::command;
    }
    if (part_ == Part::command) {
      page_.examples.back().command += text + "\n";
      part_ = text.find(kRun) == std::string::npos ? Part::command : Part::output;
    } else if (part_ == Part::output) {
      page_.examples.back().output.push_back(text);
    }
  }

  MarkdownPage page_;
  std::vector<std::string> headings_;
  int line_ = 0;
  Part part_ = Part::none;
};

/// What printf makes of a format.
std::string printed(const std::string& format) {
  static const std::map<char, char> named{{'n', '\n'}, {'f', '\f'}, {'r', '\r'}, {'\\', '\\'}};
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char next = i + 1 < format.size() ? format[i + 1] : '\0';
    if (format[i] == '%') {
      EXPECT_EQ(next, '%') << format;
      ++i;
      text += '%';
    } else if (format[i] != '\\') {
      text += format[i];
    } else if (const auto byte = named.find(next); byte != named.end()) {
      ++i;
      text += byte->second;
    } else {
      text += static_cast<char>(std::stoi(format.substr(i + 1, 3), nullptr, 8));
      i += 3;
    }
  }
  return text;
}

}  // namespace

std::string MarkdownRow::cell(const std::string& column) const {
  const auto found = cells.find(column);
  return found == cells.end() ? "-" : without_marks(found->second);
}

std::string MarkdownRow::bytes(const std::string& column) const {
  const auto decoded = decode_escaped(cell(column));
  EXPECT_TRUE(decoded) << place();
  return decoded.value_or("");
}

std::vector<std::string> MarkdownRow::list(const std::string& column) const {
  std::vector<std::string> pieces;
  const auto found = cells.find(column);
  std::istringstream text(found == cells.end() ? "" : found->second);
  for (std::string piece; std::getline(text, piece, ',');) {
    pieces.push_back(without_marks(trimmed(piece)));
  }
  return pieces;
}

std::uint32_t MarkdownRow::number(const std::string& column) const {
  return number_of(cell(column));
}

std::vector<std::uint32_t> MarkdownRow::numbers(const std::string& column) const {
  std::vector<std::uint32_t> all;
  for (const std::string& piece : list(column)) {
    const std::uint32_t first = number_of(piece);
    const std::size_t hyphen = piece.find('-');
    const std::uint32_t last =
        hyphen == std::string::npos ? first : number_of(piece.substr(hyphen + 1));
    for (std::uint32_t number = first; number <= last; ++number) {
      all.push_back(number);
    }
  }
  return all;
}

std::vector<MarkdownRow> MarkdownPage::rows_with(const std::string& column) const {
  std::vector<MarkdownRow> found;
  std::ranges::copy_if(rows, std::back_inserter(found),
                       [&](const MarkdownRow& row) { return row.has(column); });
  EXPECT_FALSE(found.empty()) << "no table has a column " << column;
  return found;
}

MarkdownPage read_markdown(const std::string& path) {
  return PageReader().read(read_file(path));
}

std::string printed_by(const std::string& command) {
  constexpr std::string_view kPrint = "printf '";
  std::string text;
  std::size_t found = command.find(kPrint);
  while (found != std::string::npos) {
    const std::size_t first = found + kPrint.size();
    const std::size_t end = command.find('\'', first);
    text += printed(command.substr(first, end - first));
    found = command.find(kPrint, end);
  }
  return text;
}

std::vector<std::string> run_arguments(const std::string& command) {
  const std::size_t first = command.find(kRun) + kRun.size();
  std::istringstream words(command.substr(first, command.find('|', first) - first));
  std::vector<std::string> arguments;
  for (std::string word; words >> word;) {
    arguments.push_back(word);
  }
  return arguments;
}

}  // namespace rlx::testing
