#pragma once

#include <string>
#include <string_view>

#include "tools/read_job.h"

namespace rlx::testing {

inline const std::string kFixedText{"%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n"};
inline const std::string kJobStartPayload{"\x1b\x7f\0\0\x01\x06", 6};
inline const std::string kJobEndPayload{"\x1b\x63\x1b\x7f\0\0\x01\0", 8};
inline const std::string kSetup = "\x1bQ1;7200!C";
inline const std::string kSettings = "\x1c(`q\x1c(ap\x1c%!\" p\x1bQ1 y";

/// What stands in front of the first page.
inline std::string first_header() {
  return rlx_parameters(kFixedText) + rlx_block('9', kJobStartPayload) +
         rlx_block('8', "\x1bQ240!A") + rlx_block('7', "\x1bQ0;4;1;1!@") + rlx_block('9', kSetup);
}

inline std::string job_end() {
  return rlx_block('0', kJobEndPayload);
}

/// Two pages, of two blocks and of one.
inline std::string job_of_two_pages() {
  return first_header() + rlx_block('2', kSettings + "FIRST\n") + rlx_block('6', kSettings) +
         rlx_block('0', "MORE\n\f") + rlx_block('6', kSettings) + rlx_block('9', kSetup) +
         rlx_block('2', "SECOND\n\f") + job_end();
}

/// A page that a form feed of its own ends, and parameters behind the job end.
inline std::string job_with_final_form_feed() {
  return first_header() + rlx_block('2', kSettings + "ALONE") + rlx_block('0', "\f") + job_end() +
         rlx_parameters(kFixedText);
}

/// Pages without carried settings, one with nothing but a FF.
inline std::string job_of_short_pages() {
  return first_header() + rlx_block('2', "A\f") + rlx_parameters(kFixedText) +
         rlx_block('9', kSetup) + rlx_block('2', "\f") + rlx_block('9', kSetup) +
         rlx_block('2', "\x1bQ1;5!aAB\fDE\n\f") + job_end();
}

}  // namespace rlx::testing
