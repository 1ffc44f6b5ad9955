#pragma once

#include <string>

#include "forms/fcb.h"
#include "job/settings.h"
#include "support/environment_file.h"

namespace rlx::fcbcheck {

/// What stands for standard input on the command line.
inline constexpr const char* kStandardInput = "-";

/// What changes the reading of forms, besides the forms.
struct Reading {
  int stream_variant = kPlainStream;  ///< a StreamVariant
  EnvironmentFile environment{};
  bool environment_found = false;
};

/// A form that has been read with the filter's own reader.
struct FormFile {
  std::string label;  ///< what messages call it: the path, or "(standard input)"
  std::string name;   ///< what pictures call it: the path's last part
  FcbTable table;
  FcbReport report;
  std::string system_text;  ///< why the file could not be read (FcbWrong::file)

  bool is_good() const { return report.fault.wrong == FcbWrong::nothing; }
};

/// Reads the site's environment file.
/// @param path  another one in its place; null for the filter's.
/// @return why the one in its place cannot be read; empty when all is well. That the site has none
/// is.
std::string read_environment(const char* path, Reading& reading);

/// Reads the form at a path, or from standard input (kStandardInput; 64 MiB at most).
FormFile read_form_file(const std::string& path, const Reading& reading);

}  // namespace rlx::fcbcheck
