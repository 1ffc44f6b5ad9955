#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/descriptors.h"

namespace rlx::testing {

// The stand-in font library (standin/font_library.cpp), seen from the tests. It does what the file
// "sandbox/standin/description" says at the moment of each call and logs every call in
// "sandbox/standin/log", both relative to the current directory.
//
// Lines of the description (a later line wins). STYLE is 1 mincho or 2 gothic, SET is 2 for G1 or 4
// for G3, DOTS and LETTER are the font's and the letter's size, CODE is the library's code of a
// character in hexadecimal, CLASS and DETAIL the error that the library then reports:
//   every-font                                  all queries find a font (see standin_font_id)
//   font STYLE SET DOTS LETTER ID               this query finds this font
//   no-font STYLE SET DOTS LETTER               this query finds none
//   open-error STYLE SET DOTS LETTER CLASS DETAIL
//   missing-list                                every query returns a list of missed fonts
//   undefined CODE                              the fonts do not have this character
//   undefined-with-pattern CODE                 the same, but a pattern is returned all the same
//   read-error CODE CLASS DETAIL                the read returns the error value
//   read-null CODE CLASS DETAIL                 the read returns null
// Without a description there are no fonts. All patterns are made of glyph_dot.
//
// Lines of the log: "load", "open <query> LANG=... FAL_LANG=... -> ID[ list N]", "free-list N",
// "read ID CODE WIDTHxHEIGHT", "close ID", "unload".

/// Puts the stand-in where the program looks for the font library, and makes its log possible.
void install_font_library();

/// The same with a stand-in that lacks one of its seven entry points.
void install_font_library_without(std::string_view entry_point);

/// Replaces the description.
void describe_fonts(std::string_view lines);

/// The calls since the last time, one line each.
std::vector<std::string> take_font_calls();

/// The identifier of a font that "every-font" provides: its digits are those of the query.
constexpr int standin_font_id(int style, int code_set, int dots, int letter) {
  return style * 100000 + code_set * 10000 + dots * 100 + letter;
}

/// A scratch directory, and the font folder's modules in the state of a fresh process.
class FontLibraryTest : public ::testing::Test {
 protected:
  FontLibraryTest();
  ~FontLibraryTest() override;

  /// Installs the stand-in and loads it as the program does at its start.
  static void load(std::string_view description);

 private:
  ScratchDirectory scratch_;
};

}  // namespace rlx::testing
