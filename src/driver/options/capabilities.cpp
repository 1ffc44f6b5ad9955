#include "driver/options/capabilities.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "support/number.h"

namespace rlx {

namespace {

constexpr const char* kTokenSeparator = "!";
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

void add_resolution(Capabilities& printer, const char* number) {
  if (printer.resolution_count == kMaxResolutions) {
    return;
  }
  printer.resolutions[printer.resolution_count] = static_cast<std::uint32_t>(decimal_value(number));
  ++printer.resolution_count;
}

void add_bit_token(Capabilities& printer, std::string_view token) {
  const auto* const row = std::find_if(kBitTokens.begin(), kBitTokens.end(),
                                       [&](const BitToken& known) { return known.text == token; });
  if (row != kBitTokens.end()) {
    printer.sets[static_cast<std::size_t>(row->kind)] |= row->bit;
  }
}

/// `token` is not empty, and ends at a separator or a NUL, so a number in it ends there too.
void add_token(Capabilities& printer, std::string_view token) {
  switch (token.front()) {
    case 'D':
      add_resolution(printer, token.data() + 1);
      return;
    case 'F':
      printer.sets[kHasUpperF] = kUpperFBit;
      return;
    case 'g':
      printer.sets[kHasLowerG] = kLowerGBit;
      return;
    default:
      add_bit_token(printer, token);
  }
}

bool is_listed(const Capabilities& printer, std::uint32_t resolution) {
  for (const std::uint32_t entry : printer.resolutions) {
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

void parse_capabilities(Capabilities& printer, const char* text) {
  const char* at = text + std::strspn(text, kTokenSeparator);
  while (*at != '\0') {
    const std::size_t length = std::strcspn(at, kTokenSeparator);
    add_token(printer, {at, length});
    at += length;
    at += std::strspn(at, kTokenSeparator);
  }
}

std::uint32_t printer_has(const Capabilities& printer, int kind, std::uint32_t value) {
  switch (kind) {
    case kHasResolution:
      return value == 0 ? printer.resolutions.front() : std::uint32_t{is_listed(printer, value)};
    case kHasLowerG:
    case kHasUpperF:
      value = 0;
      break;
    default:
      if (kind < kHasA3 || kind > kHasUpperF) {
        return 0;
      }
  }
  const std::uint32_t set = printer.sets[static_cast<std::size_t>(kind)];
  return value == 0 ? std::uint32_t{set != 0} : std::uint32_t{(set & value) == value};
}

std::uint32_t printer_resolution(const Capabilities& printer, const char* text) {
  if (text == nullptr || printer.resolutions.front() == 0) {
    return printer.resolutions.front();
  }
  const auto resolution = static_cast<std::uint32_t>(decimal_value(text));
  return is_listed(printer, resolution) ? resolution : kUnknownResolution;
}

void choose_resolution(const Capabilities& printer, CommandLine& command_line) {
  if (is_listed(printer, static_cast<std::uint32_t>(command_line.requested_resolution))) {
    command_line.resolution = command_line.requested_resolution;
  } else if (printer.resolutions.front() != 0) {
    command_line.resolution = static_cast<std::int32_t>(printer.resolutions.front());
  }
}

void query_printer(const Capabilities& printer, CommandLine& command_line) {
  command_line.capability_g = printer_has(printer, kHasLowerG, 0) == 1 ? 1 : 0;
  command_line.printer_class = kPrinterClassF0;
  // The later one wins.
  for (const std::uint32_t higher : {kPrinterClassF1, kPrinterClassF2}) {
    if (printer_has(printer, kHasFonts, higher) == 1) {
      command_line.printer_class = higher;
    }
  }
  command_line.capability_F = printer_has(printer, kHasUpperF, 0) == 1 ? 1 : 0;
}

}  // namespace rlx
