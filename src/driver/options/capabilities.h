#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "job/settings.h"

namespace rlx {

// What the printer can do, as the spooler tells it with option -G: tokens split by "!", such as
// "D240!D400!f2!g". A token that is none of these is skipped:
//
//   D<number>           a resolution in dots per inch; 24 are kept, in order, the rest is dropped
//   F..., g...          first letter only
//   sA3 sa3 m70 m75 isub Sfront Sboth L1 L2 L3 L4 f0 f1 f2 f10   whole token

/// The sets that printer_has() looks at, named after their tokens. Nothing asks for the first five
/// today: they are what spoolers tell besides, kept so that a rule that needs one finds it read.
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

/// The most resolutions that are kept.
inline constexpr std::size_t kMaxResolutions = 24;

/// What the printer can do.
struct Capabilities {
  /// Bits seen, by CapabilityKind; entry 0 and that of the resolutions stay 0.
  std::array<std::uint32_t, kHasUpperF + 1> sets{};
  /// Ended by a 0 entry.
  std::array<std::uint32_t, kMaxResolutions + 1> resolutions{};
  std::size_t resolution_count = 0;
};

/// printer_resolution() of a resolution that the printer does not have.
inline constexpr std::uint32_t kUnknownResolution = 0xFFFFFFFF;

/// Adds the tokens of one -G argument to the sets. A NUL-terminated text of any length. "D" takes
/// the decimal number after it, whatever that is: a stored 0 ("D0", "Dx") ends the list for every
/// search, though later entries still take their places.
void parse_capabilities(Capabilities& printer, const char* text);

/// Asks for a capability.
/// @param kind   a CapabilityKind; any other number answers 0.
/// @param value  bits of that kind's set: 1 when all of them are in the set (bits of another kind
///               never are); 0 asks whether the set has any. For kHasResolution a resolution: 1
///               when it is listed; 0 answers the first one listed, 0 without a list. Not looked at
///               for kHasLowerG and kHasUpperF.
std::uint32_t printer_has(const Capabilities& printer, int kind, std::uint32_t value);

/// The resolution of a text: its decimal value when it is listed, otherwise kUnknownResolution. The
/// first one listed for a null text; 0 when none is listed.
std::uint32_t printer_resolution(const Capabilities& printer, const char* text);

/// Settles CommandLine::resolution once the options are read: the one of -e when it is listed, else
/// the first one listed, else what -B or the default made it.
void choose_resolution(const Capabilities& printer, CommandLine& command_line);

/// Fills printer_class (the highest of f1 and f2, else f0), capability_F and capability_g in the
/// command line.
void query_printer(const Capabilities& printer, CommandLine& command_line);

}  // namespace rlx
