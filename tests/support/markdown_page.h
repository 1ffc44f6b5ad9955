#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace rlx::testing {

// The tables and command lines of a page of documentation in Markdown, for tests that compare it
// with the code.

/// A row of a table: its cells by the headings of their columns.
struct MarkdownRow {
  int line = 0;
  std::map<std::string, std::string> cells{};

  bool has(const std::string& column) const { return cells.contains(column); }
  /// A cell without the marks of a code span; "-" when there is no such column.
  std::string cell(const std::string& column) const;
  /// The bytes of a cell in the escaped form (support/escaped_bytes.h).
  std::string bytes(const std::string& column) const;
  /// The pieces of a cell that commas divide, each without the marks of a code span.
  std::vector<std::string> list(const std::string& column) const;
  /// The number that a cell is.
  std::uint32_t number(const std::string& column) const;
  /// The numbers of a cell such as "1, 3-5", in decimal or with 0x.
  std::vector<std::uint32_t> numbers(const std::string& column) const;
  /// Where the row stands, for messages.
  std::string place() const { return "line " + std::to_string(line) + " of the page"; }
};

/// A command that the page shows after a "$" in an indented block, as far as the line that runs
/// ./run.sh, and what the page shows below it, in lines.
struct ShellExample {
  int line = 0;
  std::string command{};
  std::vector<std::string> output{};
};

struct MarkdownPage {
  std::vector<MarkdownRow> rows;
  std::vector<ShellExample> examples;

  /// The rows of all tables that have a column; the test fails when there is none.
  std::vector<MarkdownRow> rows_with(const std::string& column) const;
};

/// Reads a file; the test fails when it cannot be read or a row lacks cells of its table.
MarkdownPage read_markdown(const std::string& path);

/// What the printf commands of a command line print, one after the other. Their formats stand
/// between single quotes and hold no conversions.
std::string printed_by(const std::string& command);

/// The arguments of ./run.sh in a command line, up to the bar behind them.
std::vector<std::string> run_arguments(const std::string& command);

}  // namespace rlx::testing
