#include "rlxdump/run.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "rlx_reader/byte_input.h"
#include "rlx_reader/job_contents.h"
#include "rlx_reader/job_reader.h"
#include "rlxdump/compare_jobs.h"
#include "rlxdump/fault_list.h"
#include "rlxdump/json_dump.h"
#include "rlxdump/options.h"
#include "rlxdump/output.h"
#include "rlxdump/page_list.h"
#include "rlxdump/text_dump.h"

namespace rlx::dump {

namespace {

using reader::FileInput;

std::string shown_name(const std::string& file) {
  return file == "-" ? "(standard input)" : file;
}

void complain(const std::string& text) {
  std::fprintf(stderr, "rlxdump: %s\n", text.c_str());
}

/// Color on a terminal only, unless it is asked for; NO_COLOR counts when it is not empty.
bool wants_color(Options::Color color) {
  const char* const no_color = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  switch (color) {
    case Options::Color::always:
      return true;
    case Options::Color::never:
      return false;
    default:
      return isatty(STDOUT_FILENO) != 0 && (no_color == nullptr || *no_color == '\0') &&
             (terminal == nullptr || std::string_view(terminal) != "dumb");
  }
}

/// Hands on what is found, and notes whether there was a fault.
class Watched : public reader::JobContents {
 public:
  explicit Watched(reader::ContentVisitor& visitor) : JobContents(visitor) {}

  void fault(const reader::Fault& fault) override {
    first_ = first_.what.empty() ? fault : first_;
    JobContents::fault(fault);
  }

  /// Nothing in `what` when there was none.
  const reader::Fault& first() const { return first_; }

 private:
  reader::Fault first_;
};

/// Shows a job. @return the first fault; nothing in `what` when there was none.
reader::Fault show(FileInput& input, reader::ContentVisitor& visitor) {
  Watched contents(visitor);
  reader::read_jobs(input, contents);
  contents.finish();
  return contents.first();
}

int status_of(const reader::Fault& fault) {
  return fault.what.empty() ? kGood : kWrongInput;
}

template <typename Dump>
int finish_dump(FileInput& input, Dump& dump) {
  const reader::Fault fault = show(input, dump);
  dump.finish(input.offset());
  return status_of(fault);
}

/// The list itself has no place for faults.
int list_pages(const std::string& file, FileInput& input, Output& output, const Painter& painter) {
  PageList pages(output, painter);
  const reader::Fault fault = show(input, pages);
  pages.finish();
  if (!fault.what.empty()) {
    complain(shown_name(file) + ": " + std::to_string(fault.offset) + ": " + fault.what);
  }
  return status_of(fault);
}

int check(FileInput& input, Output& output, const Painter& painter) {
  FaultList faults(output, painter);
  reader::read_jobs(input, faults);
  return faults.any() ? kWrongInput : kGood;
}

int diff(const Options& options, Output& output, const Painter& painter) {
  FileInput first(options.files[0]);
  FileInput second(options.files[1]);
  const bool same = compare_jobs({shown_name(options.files[0]), first},
                                 {shown_name(options.files[1]), second}, output, painter);
  return same ? kGood : kWrongInput;
}

/// False for what cannot be a job in RLX; most of all a job that has not been converted.
bool begins_as_rlx(FileInput& input) {
  const reader::Bytes front = input.look(reader::kHeaderBytes);
  return front.empty() || reader::is_framed(front) || reader::parse_header(front).has_value();
}

int show_input(const Options& options, const std::string& file, FileInput& input, Output& output,
               const Painter& painter) {
  switch (options.mode) {
    case Options::Mode::pages:
      return list_pages(file, input, output, painter);
    case Options::Mode::json: {
      JsonDump dump(output);
      return finish_dump(input, dump);
    }
    case Options::Mode::check:
      return check(input, output, painter);
    default: {
      TextDump dump(output, painter);
      return finish_dump(input, dump);
    }
  }
}

int show_file(const Options& options, Output& output, const Painter& painter) {
  const std::string& file = options.files.front();
  FileInput input(file);
  const bool looks_right = begins_as_rlx(input);
  const int status = show_input(options, file, input, output, painter);
  output.flush();
  if (!looks_right) {
    complain(shown_name(file) +
             ": begins with no block; a line-printer job has to go through zqeuctorlx first");
  }
  return status;
}

int do_what_is_asked(const Options& options, Output& output) {
  const Painter painter(wants_color(options.color));
  switch (options.mode) {
    case Options::Mode::help:
      output.put(help_text());
      return kGood;
    case Options::Mode::version:
      output.put("rlxdump " RLX_VERSION "\n");
      return kGood;
    case Options::Mode::diff:
      return diff(options, output, painter);
    default:
      return show_file(options, output, painter);
  }
}

}  // namespace

int run(const std::vector<std::string>& words) {
  std::string complaint;
  const auto options = parse_options(words, complaint);
  if (!options) {
    complain(complaint + "; rlxdump --help tells more");
    return kWrongUse;
  }
  Output output(STDOUT_FILENO);
  try {
    const int status = do_what_is_asked(*options, output);
    output.flush();
    return status;
  } catch (const std::system_error& error) {
    // When nobody reads on, nobody wants to be told.
    if (error.code() != std::errc::broken_pipe) {
      complain(error.what());
    }
  }
  // What was shown so far is of use; that it cannot be written was told already.
  try {
    output.flush();
  } catch (const std::system_error&) {
    return kWrongInput;
  }
  return kWrongInput;
}

}  // namespace rlx::dump
