#pragma once

#include <cstdint>
#include <string>

namespace rlx::testing {

/// A form file for tests, the same for the same number on every machine: a valid form, left as it
/// is or damaged in one to three places, so that about half of them are refused.
std::string generated_form(std::uint32_t number);

}  // namespace rlx::testing
