#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "fonts/font_sets.h"
#include "support/standin_font_library.h"

namespace rlx::testing {

/// A font variant and resolution, and its class.
struct Variant {
  int font_variant;
  int high_resolution_fonts;
  FontClass font_class;
};

inline constexpr Variant kFixedVariant{kFixedFont, 0, kFixedClass};
inline constexpr Variant kFixedHighVariant{kFixedFont, 1, kFixedClass};
inline constexpr Variant kLowVariant{kAllFonts, 0, kLowClass};
inline constexpr Variant kHighVariant{kAllFonts, 1, kHighClass};
inline constexpr Variant kFineVariant{kFineFonts, 1, kFineClass};

inline constexpr Variant kVariants[] = {kFixedVariant, kFixedHighVariant, kLowVariant, kHighVariant,
                                        kFineVariant};
/// One variant of each class.
inline constexpr Variant kClasses[] = {kFixedVariant, kLowVariant, kHighVariant, kFineVariant};

/// One size that a class opens.
struct OpenedSize {
  std::size_t index;
  int dots;
  int letter;
  int offset;
};

/// The sizes that a class opens, in their order.
const std::vector<OpenedSize>& opened_sizes(const Variant& variant);

/// The call of the stand-in's log that asks for one size of a set, up to its answer.
std::string open_call(int style, int code_set, const OpenedSize& size);

/// The calls that ask for all sizes of a set when every font is there.
void append_open_calls(std::vector<std::string>& calls, const Variant& variant, int style,
                       int code_set);

/// A line of the stand-in's description about one size of a set.
std::string description_line(const char* keyword, int style, int code_set, const OpenedSize& size,
                             const char* rest = "");

/// The set of a typeface and a code set that are in range.
FontSet& set_of(int typeface, int code_set);

/// The library's number of a typeface.
int style_of(int typeface);
/// The library's number of a code set.
int library_set_of(int code_set);

void expect_unopened(const FontSize& size);
void expect_font(const FontSize& size, int font_id, int enlarged);
void expect_same(const FontSize& left, const FontSize& right);

/// Opens and closes fonts of the stand-in font library.
class FontSetsTest : public FontLibraryTest {
 protected:
  static Status open(const Variant& variant, int second_typeface = 1);

  /// Opens the fonts of a description as a fresh process does.
  void load_and_open(const std::string& description, const Variant& variant,
                     int second_typeface = 1);

  Status status_{99};    ///< of `load_and_open`
  std::string message_;  ///< what it wrote to standard error
};

}  // namespace rlx::testing
