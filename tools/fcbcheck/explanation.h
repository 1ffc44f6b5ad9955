#pragma once

#include <string>

#include "fcbcheck/form_file.h"

namespace rlx::fcbcheck {

/// How a form that was taken came to its length, which lines it has and where printing starts:
/// lines of text, each with the form's label in front.
std::string explanation(const FormFile& form, const Reading& reading);

}  // namespace rlx::fcbcheck
