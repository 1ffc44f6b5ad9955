// Checks forms with the filter's own reader: `fcbcheck --help`, fcbcheck.1.

#include <clocale>
#include <cstdio>
#include <exception>
#include <string>

#include "fcbcheck/arguments.h"
#include "fcbcheck/explanation.h"
#include "fcbcheck/fault_text.h"
#include "fcbcheck/form_file.h"
#include "fcbcheck/layout.h"
#include "fcbcheck/output_file.h"
#include "fcbcheck/svg_picture.h"
#include "fcbcheck/terminal_drawing.h"
#include "fcbcheck/text.h"

namespace rlx::fcbcheck {
namespace {

enum ExitStatus : int { kGood = 0, kWrongInput = 1, kWrongUse = 2 };

/// Says one line on standard error, behind what standard output has so far.
void complain(const std::string& line) {
  std::fflush(stdout);
  std::fprintf(stderr, "%s\n", line.c_str());
}

/// What was asked for of a good form. @return false, with a message, when it cannot be written.
bool show_form(const FormFile& form, const Arguments& arguments, const Reading& reading) {
  const Layout layout = lay_out(form.name, form.table);
  if (arguments.show) {
    write_standard_output(terminal_drawing(layout, style_of_standard_output()));
  }
  if (arguments.explain) {
    write_standard_output(explanation(form, reading));
  }
  if (arguments.svg) {
    const std::string error = write_picture(*arguments.svg, svg_picture(layout));
    if (!error.empty()) {
      complain("fcbcheck: " + shown_name(*arguments.svg) + ": " + error);
      return false;
    }
  }
  return true;
}

/// Checks one form. @return whether all is well with it.
bool check_file(const std::string& path, const Arguments& arguments, const Reading& reading) {
  const FormFile form = read_form_file(path, reading);
  if (!form.is_good()) {
    complain(fault_text(form));
    return false;
  }
  return show_form(form, arguments, reading);
}

bool check_files(const Arguments& arguments, const Reading& reading) {
  bool all_good = true;
  const char* separator = "";
  for (const std::string& path : arguments.files) {
    if (arguments.show) {
      write_standard_output(separator);
      separator = "\n";
    }
    all_good = check_file(path, arguments, reading) && all_good;
  }
  return all_good;
}

ExitStatus check(const Arguments& arguments) {
  Reading reading{.stream_variant = arguments.stream_variant};
  const char* const environment = arguments.environment ? arguments.environment->c_str() : nullptr;
  const std::string error = read_environment(environment, reading);
  if (!error.empty()) {
    complain(shown_name(environment) + ":0: " + error);
    return kWrongInput;
  }
  return check_files(arguments, reading) ? kGood : kWrongInput;
}

ExitStatus act(const Arguments& arguments) {
  switch (arguments.action) {
    case Action::help:
      write_standard_output(kHelp);
      return kGood;
    case Action::version:
      write_standard_output("fcbcheck " RLX_VERSION "\n");
      return kGood;
    case Action::wrong_use:
      complain("Try 'fcbcheck --help'.");
      return kWrongUse;
    case Action::check:
      break;
  }
  return check(arguments);
}

ExitStatus run(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  const ExitStatus status = act(parse_arguments(argc, argv));
  const std::string error = finish_standard_output();
  if (!error.empty()) {
    complain("fcbcheck: standard output: " + error);
    return kWrongInput;
  }
  return status;
}

}  // namespace
}  // namespace rlx::fcbcheck

int main(int argc, char** argv) {
  try {
    return rlx::fcbcheck::run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fcbcheck: %s\n", error.what());
    return 1;
  }
}
