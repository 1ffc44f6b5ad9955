#include "driver/capabilities.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "job/settings.h"
#include "support/number.h"

namespace rlx {

namespace {

constexpr std::size_t kMaxResolutions = 24;
constexpr const char* kTokenSeparator = "!";
constexpr std::string_view kJapaneseLocaleToken = "Jja_JP";
constexpr std::uint32_t kLowerGBit = 0x1000000;
constexpr std::uint32_t kUpperFBit = 0x10000000;

/// A token that stands for one bit and must match as a whole.
struct BitToken {
  std::string_view text;
  CapabilityKind kind;
  std::uint32_t bit;
};

constexpr std::array<BitToken, 15> kBitTokens{{
    {"sA3", kHasA3, 0x1},
    {"sa3", kHasA3, 0x1},
    {"m70", kHasM, 0x10},
    {"m75", kHasM, 0x20},
    {"isub", kHasIsub, 0x100},
    {"Sfront", kHasS, 0x1000},
    {"Sboth", kHasS, 0x2000},
    {"L1", kHasL, 0x10000},
    {"L2", kHasL, 0x20000},
    {"L3", kHasL, 0x40000},
    {"L4", kHasL, 0x80000},
    {"f0", kHasFonts, kPrinterClassF0},
    {"f1", kHasFonts, kPrinterClassF1},
    {"f2", kHasFonts, kPrinterClassF2},
    {"f10", kHasFonts, 0x800000},
}};

struct PrinterCapabilities {
  /// Bits seen, by CapabilityKind; entry 0 and that of the resolutions stay 0.
  std::array<std::uint32_t, kHasUpperF + 1> sets{};
  /// Ended by a 0 entry.
  std::array<std::uint32_t, kMaxResolutions + 1> resolutions{};
  std::size_t resolution_count = 0;
};

PrinterCapabilities state;

void add_resolution(const char* number) {
  if (state.resolution_count == kMaxResolutions) {
    return;
  }
  state.resolutions[state.resolution_count] = static_cast<std::uint32_t>(decimal_value(number));
  ++state.resolution_count;
}

void add_bit_token(std::string_view token) {
  const auto* const row = std::find_if(kBitTokens.begin(), kBitTokens.end(),
                                       [&](const BitToken& known) { return known.text == token; });
  if (row != kBitTokens.end()) {
    state.sets[static_cast<std::size_t>(row->kind)] |= row->bit;
  }
}

/// `token` is not empty, and ends at a separator or a NUL, so a number in it ends there too.
void add_token(std::string_view token) {
  switch (token.front()) {
    case 'D':
      add_resolution(token.data() + 1);
      return;
    case 'F':
      state.sets[kHasUpperF] = kUpperFBit;
      return;
    case 'g':
      state.sets[kHasLowerG] = kLowerGBit;
      return;
    case 'J':
      if (token == kJapaneseLocaleToken) {
        job_settings.japanese_locale = 1;
      }
      return;
    default:
      add_bit_token(token);
  }
}

bool is_listed(std::uint32_t resolution) {
  for (const std::uint32_t entry : state.resolutions) {
    if (entry == 0) {
      return false;
    }
    if (entry == resolution) {
      return true;
    }
  }
  return false;
}

}  // namespace

void parse_capabilities(const char* text) {
  const char* at = text + std::strspn(text, kTokenSeparator);
  while (*at != '\0') {
    const std::size_t length = std::strcspn(at, kTokenSeparator);
    add_token({at, length});
    at += length;
    at += std::strspn(at, kTokenSeparator);
  }
}

std::uint32_t printer_has(int kind, std::uint32_t value) {
  switch (kind) {
    case kHasResolution:
      return value == 0 ? state.resolutions.front() : std::uint32_t{is_listed(value)};
    case kHasLowerG:
    case kHasUpperF:
      value = 0;
      break;
    default:
      if (kind < kHasA3 || kind > kHasUpperF) {
        return 0;
      }
  }
  const std::uint32_t set = state.sets[static_cast<std::size_t>(kind)];
  return value == 0 ? std::uint32_t{set != 0} : std::uint32_t{(set & value) == value};
}

std::uint32_t printer_resolution(const char* text) {
  if (text == nullptr || state.resolutions.front() == 0) {
    return state.resolutions.front();
  }
  const auto resolution = static_cast<std::uint32_t>(decimal_value(text));
  return is_listed(resolution) ? resolution : kUnknownResolution;
}

void choose_resolution() {
  if (is_listed(static_cast<std::uint32_t>(job_settings.requested_resolution))) {
    job_settings.resolution = job_settings.requested_resolution;
  } else if (state.resolutions.front() != 0) {
    job_settings.resolution = static_cast<std::int32_t>(state.resolutions.front());
  }
}

void query_printer() {
  job_settings.capability_g = printer_has(kHasLowerG, 0) == 1 ? 1 : 0;
  job_settings.printer_class = kPrinterClassF0;
  // The later one wins.
  for (const std::uint32_t higher : {kPrinterClassF1, kPrinterClassF2}) {
    if (printer_has(kHasFonts, higher) == 1) {
      job_settings.printer_class = higher;
    }
  }
  job_settings.capability_F = printer_has(kHasUpperF, 0) == 1 ? 1 : 0;
}

void reset_capabilities() {
  state = PrinterCapabilities{};
}

}  // namespace rlx
