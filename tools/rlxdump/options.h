#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::dump {

/// What rlxdump is asked for.
struct Options {
  enum class Mode : std::uint8_t { text, pages, json, check, diff, help, version };
  enum class Color : std::uint8_t { automatic, always, never };

  Mode mode = Mode::text;
  Color color = Color::automatic;
  /// One, or two with Mode::diff. "-" is standard input.
  std::vector<std::string> files;
};

/// Reads a command line.
/// @param words  without the program's name.
/// @param complaint  what is wrong with it, when nothing is returned.
std::optional<Options> parse_options(const std::vector<std::string>& words, std::string& complaint);

/// What --help prints.
std::string_view help_text();

}  // namespace rlx::dump
