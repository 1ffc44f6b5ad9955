#include "rlx-printer-app/formats.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace rlx::printer_app {

namespace {

/// A job parameter block: ESC "Q0;", ten digits, "/" and a grave accent.
bool begins_printer_job(std::string_view front) {
  constexpr std::size_t kDigits = 10;
  return front.starts_with("\033Q0;") && front.substr(4 + kDigits, 2) == "/`";
}

/// A byte of text, in UTF-8 or another encoding.
bool is_text(unsigned char byte) {
  return byte >= 0x20 ? byte != 0x7f : byte == '\n' || byte == '\r' || byte == '\f' || byte == '\t';
}

}  // namespace

bool is_printable(const char* format) {
  return format != nullptr &&
         (format == std::string_view(kText) || format == std::string_view(kLines) ||
          format == std::string_view(kPrinterLanguage));
}

const char* detect_format(const unsigned char* front, size_t count, void* /*data*/) {
  const std::span<const unsigned char> bytes(front, count);
  if (begins_printer_job({reinterpret_cast<const char*>(front), count})) {
    return kPrinterLanguage;
  }
  if (std::all_of(bytes.begin(), bytes.end(), is_text)) {
    return kText;
  }
  // A sequence, which no other kind of document begins with that this printer could be sent.
  const bool has_sequence = std::any_of(bytes.begin(), bytes.end(),
                                        [](auto byte) { return byte == 0x1b || byte == 0x1c; });
  return has_sequence ? kLines : nullptr;
}

}  // namespace rlx::printer_app
