#pragma once

namespace rlx::printer_app {

/// Looks of our pages, beside PAPPL's style sheet.
extern const char* const kStyle;

}  // namespace rlx::printer_app
