#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "fonts/gaiji.h"
#include "support/standin_font_library.h"

namespace rlx::testing {

/// What stands before and behind the pattern of a download.
struct DownloadFrame {
  std::string before;
  std::string after;
};

/// The pattern of an output; fails the test when the rest of it is not as told.
std::string pattern_in(const std::string& output, const DownloadFrame& frame);

/// Puts user-defined characters with the stand-in font library.
class GaijiTest : public FontLibraryTest {
 protected:
  /// Opens the fonts of a description for a job with these settings. The single-byte set is
  /// selected, and nothing is downloaded.
  void start(int font_variant, int high_resolution_fonts, int second_typeface = 0,
             std::string_view description = "every-font\n");

  /// gaiji_put of a record with these bytes; what becomes of it.
  std::string put(std::string_view bytes, UndefinedGaijiRule rule = UndefinedGaijiRule::space);

  void expect_state(int set, int designation) const;

  CharacterSetState state_;
  Status status_{99};    ///< of the last `put`
  std::string message_;  ///< what the last `put` wrote to standard error
  CommandRecord record_{};
  OutputBuffer out_{};
};

}  // namespace rlx::testing
