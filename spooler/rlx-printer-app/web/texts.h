#pragma once

#include <span>
#include <string>

namespace rlx::printer_app {

struct Translation {
  const char* english;
  const char* japanese;
};

/// All texts of our pages.
std::span<const Translation> translations();

/// The same as PAPPL reads them: lines of "english" = "japanese";
std::string japanese_strings();

}  // namespace rlx::printer_app
