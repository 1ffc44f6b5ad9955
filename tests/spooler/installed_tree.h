#pragma once

#include <string>

namespace rlx::testing {

/// A folder of the test run's own that everybody may enter, removed at its end.
const std::string& run_directory();

/// What is tested, installed below run_directory() as `cmake --install` does it; once a run.
/// @return the prefix.
const std::string& installed_tree();

/// Makes a fresh folder below run_directory().
std::string make_directory(const std::string& name);

}  // namespace rlx::testing
