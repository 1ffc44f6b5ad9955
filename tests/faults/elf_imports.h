#pragma once

#include <set>
#include <string>

namespace rlx::testing {

/// The names that a program takes from shared libraries, without the weak ones, which may be
/// missing.
std::set<std::string> imported_names(const std::string& program);

/// The names that a shared library offers.
std::set<std::string> exported_names(const std::string& library);

}  // namespace rlx::testing
