#pragma once

#include <string>
#include <vector>

namespace rlx::dump {

/// Exit statuses.
inline constexpr int kGood = 0;
inline constexpr int kWrongInput = 1;
inline constexpr int kWrongUse = 2;

/// The whole program: reads files or standard input, writes to standard output, and complains on
/// standard error.
/// @param words  the command line without the program's name.
/// @return the exit status.
int run(const std::vector<std::string>& words);

}  // namespace rlx::dump
