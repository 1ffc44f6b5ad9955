#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "rlxproof/page_range.h"

namespace rlx::proof {

/// What the command line asks for.
struct Options {
  std::string job = "-";  ///< "-" is standard input
  std::optional<std::string>
      pdf;  ///< "-" is standard output; none when only pictures are asked for
  std::optional<std::string> pictures;  ///< folder
  PageRange pages;
  std::vector<std::string> filter_options;
};

/// Reads the command line. Help and version go to standard output, what is wrong to standard error.
/// @return the options, or the status with which the program is to end.
std::variant<Options, int> read_options(int argc, char** argv);

/// Exit statuses.
inline constexpr int kGood = 0;
inline constexpr int kBadInput = 1;
inline constexpr int kWrongUse = 2;

}  // namespace rlx::proof
