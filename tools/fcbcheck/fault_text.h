#pragma once

#include <string>

#include "fcbcheck/form_file.h"

namespace rlx::fcbcheck {

/// What is wrong with a form that was refused, in one line without its end: FILE:LINE: what. Faults
/// of the file itself have line 0 and the system's text.
std::string fault_text(const FormFile& form);

}  // namespace rlx::fcbcheck
