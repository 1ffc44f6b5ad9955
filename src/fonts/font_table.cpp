#include "fonts/font_table.h"

namespace rlx {

FontSets font_sets;

FontSet* find_font_set(int typeface, int code_set) {
  if (typeface < 0 || typeface >= kTypefaces || code_set < 0 || code_set >= kCodeSets) {
    return nullptr;
  }
  const int second_of_typeface = code_set == kCodeSetG1 ? 0 : 1;
  return &font_sets.sets[static_cast<std::size_t>(typeface * kCodeSets + second_of_typeface)];
}

const FontSize* find_font(int typeface, int code_set, int size_index) {
  const FontSet* const set = find_font_set(typeface, code_set);
  if (set == nullptr || size_index < 0 || size_index >= static_cast<int>(kFontSizes)) {
    return nullptr;
  }
  return &set->sizes[static_cast<std::size_t>(size_index)];
}

}  // namespace rlx
