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

/// The checks of one run of the program.
class Checks {
 public:
  Checks(const Arguments& arguments, const Reading& reading)
      : arguments_(arguments), reading_(reading), style_(style_of_standard_output()) {}

  /// @return whether all is well with all forms.
  bool check_all() {
    bool all_good = true;
    for (const std::string& path : arguments_.files) {
      all_good = check_form(path) && all_good;
    }
    return all_good;
  }

 private:
  bool check_form(const std::string& path) {
    const FormFile form = read_form_file(path, reading_);
    if (!form.is_good()) {
      complain(fault_text(form));
      return false;
    }
    const Layout layout = lay_out(form.name, form.table);
    if (arguments_.show) {
      show(layout);
    }
    if (arguments_.explain) {
      write_standard_output(explanation(form, reading_));
    }
    return !arguments_.svg || write_svg(layout);
  }

  void show(const Layout& layout) {
    write_standard_output(something_shown_ ? "\n" : "");
    write_standard_output(terminal_drawing(layout, style_));
    something_shown_ = true;
  }

  bool write_svg(const Layout& layout) const {
    const std::string error = write_picture(*arguments_.svg, svg_picture(layout));
    if (!error.empty()) {
      complain("fcbcheck: " + shown_name(*arguments_.svg) + ": " + error);
    }
    return error.empty();
  }

  const Arguments& arguments_;
  const Reading& reading_;
  const DrawingStyle style_;
  bool something_shown_ = false;
};

ExitStatus check(const Arguments& arguments) {
  Reading reading{.stream_variant = arguments.stream_variant};
  const char* const environment = arguments.environment ? arguments.environment->c_str() : nullptr;
  const std::string error = read_environment(environment, reading);
  if (!error.empty()) {
    complain(shown_name(arguments.environment.value_or("")) + ":0: " + error);
    return kWrongInput;
  }
  return Checks(arguments, reading).check_all() ? kGood : kWrongInput;
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
