#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "job/command_record.h"
#include "support/filter_state.h"

namespace rlx::testing {

// What the print-condition output sends (the sequences as a printer's manual lists them).
inline const std::string kStandardState = "\x1c(`q\x1c(ap\x1c%!\" p\x1bQ1 y\x1bQ1;!f";
inline const std::string kSetReset = "\x1b$@\x1b(H";
inline const std::string kSpacing3 = "\x1c&! u";
inline const std::string kSpacing4 = "\x1c&!\"p";
inline const std::string kSixLines = "\x1c%!\" p";
inline const std::string kEightLines = "\x1c%) p";
inline const std::string kFramedReset = "\x1b$@\x1b(H\x1bQ1 y";

/// The conditions of a job without options: at its start and behind commands 478, 479 and 500.
inline const std::string kStartConditions = kStandardState + kSetReset + kSpacing3 + kSixLines;
/// The same behind a print-condition or form name command.
inline const std::string kCommandConditions = kSetReset + kSpacing3;

/// The bytes of a print-condition command without values, and of a form name command.
extern const std::string kBlankCommand;
extern const std::string kFormNameCommand;

/// A job parameter block, as a job in the printer's language begins with it.
inline const std::string kParameterBlock = "\x1bQ0;0000000043/`";

/// What became of one record.
struct Routed {
  bool goes_on = false;  ///< the loop goes on
  int pages = 0;         ///< pages that were ended
  /// Page data put out: what was ended, and what is gathered behind it. After command 520 all that
  /// was passed through.
  std::string data;
};

/// Drives the main loop with single records, commands that no input produces included.
class MainLoopTest : public FilterTest {
 protected:
  /// Routes a record. No conditions are pending unless the test says so (`pend_conditions`).
  MainLoopTest();

  static void pend_conditions();
  /// Routes a record with these bytes and takes the page data that it made.
  static Routed route(std::uint32_t code, std::string_view bytes);
  /// Routes what stands in the loop's record.
  static Routed route_again();
  /// Routes a record for its effect on the state alone; what it writes is lost.
  static bool pass(std::uint32_t code, std::string_view bytes);
  /// A state as at the start of a test, for sweeps over the codes.
  static void restart();

  /// Selects a form whose lines have these numbers of lines per inch.
  static void use_form(const std::vector<std::uint32_t>& lines_per_inch, int top_line);
  static void hold_movement(std::string_view bytes);
  static std::string held_movement();
  static void hold_command(std::string_view bytes);
  static void use_form_directory(std::string_view directory);

  /// Framed output: the rest of the input frame, which stays readable while the test lives.
  static void open_frame(bool end_frame, std::string_view rest);
  /// Data gathered for the next frame.
  static std::string gathered_frame();
};

/// The carried settings, which are forgotten then.
std::string take_kept_settings();

/// Every command code that the routing tables can hold.
template <typename Visitor>
void for_each_code(Visitor visit) {
  for (std::uint32_t code = 0; code <= kHighestCommandCode; ++code) {
    visit(code);
  }
}

/// Bytes with which each code is complete: those above for 482 and 483, a short sequence for
/// others.
std::string_view bytes_for(std::uint32_t code);

bool is_one_of(std::uint32_t code, const std::vector<std::uint32_t>& codes);

/// The page data of a whole job's output, with a '|' behind each form feed; without the job end.
std::string job_pages(const JobResult& result);

/// A file or directory as a descriptor (0 or 1) while it lives.
class RedirectedDescriptor {
 public:
  RedirectedDescriptor(int descriptor, const char* path, int flags);
  ~RedirectedDescriptor();
  RedirectedDescriptor(const RedirectedDescriptor&) = delete;
  RedirectedDescriptor& operator=(const RedirectedDescriptor&) = delete;

 private:
  int descriptor_;
  int saved_;
};

}  // namespace rlx::testing
