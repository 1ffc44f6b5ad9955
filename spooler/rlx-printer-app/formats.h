#pragma once

#include <pappl/pappl.h>

namespace rlx::printer_app {

inline constexpr const char* kText = "text/plain";
inline constexpr const char* kLines = "application/vnd.rlx-lines";
inline constexpr const char* kPrinterLanguage = "application/vnd.rlx";

/// Why a job of another format is not printed.
inline constexpr const char* kNotPrintable =
    "this printer prints text and line-printer jobs, not pictures or PDF; nothing was printed";

/// True when jobs of this format are printed. @param format  may be null, which none is.
bool is_printable(const char* format);

/// What a document is that came without a format; PAPPL calls it.
/// @return null when it cannot be told.
const char* detect_format(const unsigned char* front, size_t count, void* data);

}  // namespace rlx::printer_app
