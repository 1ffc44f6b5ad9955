#pragma once

#include <cstdint>

namespace rlx {

// What the printer can do, as the spooler tells it with option -G: tokens split by "!", such as
// "D240!D400!f2!g". A token that is none of these is skipped:
//
//   D<number>           a resolution in dots per inch; 24 are kept, in order, the rest is dropped
//   F..., g...          first letter only
//   Jja_JP              sets job_settings.japanese_locale
//   sA3 sa3 m70 m75 isub Sfront Sboth L1 L2 L3 L4 f0 f1 f2 f10   whole token

/// The sets that printer_has() looks at, named after their tokens.
enum CapabilityKind : int {
  kHasA3 = 1,          ///< sA3 and sa3: 0x1
  kHasM = 2,           ///< m70: 0x10, m75: 0x20
  kHasIsub = 3,        ///< isub: 0x100
  kHasS = 4,           ///< Sfront: 0x1000, Sboth: 0x2000
  kHasL = 5,           ///< L1 to L4: 0x10000, 0x20000, 0x40000, 0x80000
  kHasResolution = 6,  ///< the list of the D tokens
  kHasFonts = 7,       ///< f0, f1, f2 (kPrinterClassF0 to F2), f10: 0x800000
  kHasLowerG = 8,      ///< g
  kHasUpperF = 9,      ///< F
};

/// printer_resolution() of a resolution that the printer does not have.
inline constexpr std::uint32_t kUnknownResolution = 0xFFFFFFFF;

/// Adds the tokens of one -G argument to the sets. A NUL-terminated text of any length. "D" takes
/// the decimal number after it, whatever that is: a stored 0 ("D0", "Dx") ends the list for every
/// search, though later entries still take their places.
void parse_capabilities(const char* text);

/// Asks for a capability.
/// @param kind   a CapabilityKind; any other number answers 0.
/// @param value  bits of that kind's set: 1 when all of them are in the set (bits of another kind
///               never are); 0 asks whether the set has any. For kHasResolution a resolution: 1
///               when it is listed; 0 answers the first one listed, 0 without a list. Not looked at
///               for kHasLowerG and kHasUpperF.
std::uint32_t printer_has(int kind, std::uint32_t value);

/// The resolution of a text: its decimal value when it is listed, otherwise kUnknownResolution. The
/// first one listed for a null text; 0 when none is listed.
std::uint32_t printer_resolution(const char* text);

/// Settles job_settings.resolution once the options are read: the one of -e when it is listed, else
/// the first one listed, else what -B or the default made it.
void choose_resolution();

/// Fills printer_class (the highest of f1 and f2, else f0), capability_F and capability_g in the
/// job settings.
void query_printer();

/// Forgets all capabilities.
void reset_capabilities();

}  // namespace rlx
