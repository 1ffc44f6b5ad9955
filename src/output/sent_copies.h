#pragma once

#include <cstdint>

#include "job/print_conditions.h"

namespace rlx {

/// The values that the printer was sent last, for the whole run; all start empty or 0.
struct SentCopies {
  std::int32_t resolution = 0;
  std::int32_t form_length_tenths = 0;
  /// Copies of the condition fields of the same names. The offsets' copies deliberately do not
  /// always hold what was sent; see build_page_setup.
  PrintConditions conditions;
};

extern SentCopies sent_copies;

/// True for a text that is given and is not the one sent last.
template <typename Text>
bool text_changed(const Text& value, const Text& copy) {
  return value[0] != '\0' && value != copy;
}

// Which of the compound values must be sent: given, and not the one sent last. The orientation,
// the paper size, the form length and the tray are looked at twice: their copies are only updated
// with the page format, after the parameter text.

inline bool orientation_changed() {
  return text_changed(print_conditions.condition_code_2, sent_copies.conditions.condition_code_2);
}

inline bool paper_size_changed() {
  return text_changed(print_conditions.condition_code_3, sent_copies.conditions.condition_code_3);
}

inline bool tray_changed() {
  return text_changed(print_conditions.condition_code_2b, sent_copies.conditions.condition_code_2b);
}

/// True when a form length is given and is not the one sent last.
bool form_length_changed();

/// True when duplex is given, and it or one of the binding values that go with it is not the one
/// sent last.
bool duplex_changed();

}  // namespace rlx
