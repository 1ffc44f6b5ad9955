#pragma once

#include <cstdint>

#include "job/print_conditions.h"

namespace rlx {

/// The values that the printer was sent last, for the whole run; all start empty or 0.
struct SentCopies {
  std::int32_t resolution = 0;
  std::int32_t form_length_tenths = 0;
  /// Copies of the condition fields of the same names. The offsets' copies deliberately do not
  /// always hold what was sent; see append_offsets in page_format.cpp.
  PrintConditions conditions;
};

/// True for a text that must be sent: it is given, and not the one sent last.
template <typename Text>
bool text_changed(const Text& value, const Text& copy) {
  return value[0] != '\0' && value != copy;
}

}  // namespace rlx
