#include "driver/start_up.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "driver/loop/loop_state.h"
#include "driver/options/capabilities.h"
#include "job/settings.h"
#include "output/line_spacing.h"
#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::CaptureDescriptor;
using testing::take_font_calls;
using testing::write_file;

class StartUp : public testing::FilterTest {
 protected:
  StartUp() {
    write_file("forms/fcbe/FORM", "print 3 7200\nlpi 900 8\n");
    write_file("forms/fcbe/BAD", "lines 6\n");
  }
  ~StartUp() override { testing::reset_filter(); }

  /// Starts a fresh process with these options.
  Status start(const std::vector<std::string>& options) {
    testing::reset_filter();
    words_ = {"filter", "-p", "forms"};
    words_.insert(words_.end(), options.begin(), options.end());
    argv_.clear();
    for (std::string& word : words_) {
      argv_.push_back(word.data());
    }
    argv_.push_back(nullptr);
    const CaptureDescriptor output(STDOUT_FILENO);
    const CaptureDescriptor messages(STDERR_FILENO);
    const Status status = start_up(the_filter(), static_cast<int>(words_.size()), argv_.data());
    messages_ = messages.text();
    output_ = output.text();
    return status;
  }
  void expect_failure(const std::vector<std::string>& options, Status status,
                      const std::string& message) {
    EXPECT_EQ(start(options), status);
    EXPECT_EQ(messages_, message);
    EXPECT_EQ(output_, "");
  }
  static void break_g1_file() { write_file("sandbox/etc/lp/g1gaiji", "F4A0-FEFE\n"); }

  std::string messages_;
  std::string output_;

 private:
  testing::ScratchDirectory scratch_;
  std::vector<std::string> words_;
  std::vector<char*> argv_;
};

std::string held_movement() {
  const OutputBuffer& held = the_filter().loop.pending_vertical_bytes;
  return {held.bytes.begin(), held.bytes.begin() + held.length};
}

long count_opens(const std::vector<std::string>& calls, const std::string& style) {
  return std::ranges::count_if(
      calls, [&](const std::string& call) { return call.starts_with("open " + style); });
}

TEST_F(StartUp, PlainJobStartsWithPendingConditionsAndNothingElse) {
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(messages_, "");
  EXPECT_EQ(output_, "");
  EXPECT_STREQ(the_filter().messages.program_name, "filter");
  EXPECT_TRUE(the_filter().loop.conditions_pending);
  EXPECT_FALSE(the_filter().loop.content_since_conditions);
  EXPECT_EQ(the_filter().loop.last_condition_code, 0U);
  EXPECT_FALSE(the_filter().loop.fcb_active);
  EXPECT_FALSE(the_filter().loop.initial_fcb_exists);
  EXPECT_EQ(the_filter().loop.current_store, &the_filter().loop.initial_store);
  EXPECT_EQ(the_filter().loop.pending_vertical_bytes.length, 0);
  EXPECT_EQ(the_filter().loop.character_set.set, 1);
  EXPECT_EQ(the_filter().job.font_library_loaded, 0);
  EXPECT_EQ(the_filter().job.page_has_content, 0);
  EXPECT_EQ(the_filter().job.page_started, 0);
}

TEST_F(StartUp, DefaultDirectoryStandsBehindThoseOfTheCommandLine) {
  EXPECT_EQ(start({"-p", "a:b"}), 0);
  ASSERT_EQ(the_filter().directories.count, 4U);
  EXPECT_STREQ(the_filter().directories.entries[0].data(), "forms");
  EXPECT_STREQ(the_filter().directories.entries[1].data(), "a");
  EXPECT_STREQ(the_filter().directories.entries[2].data(), "b");
  EXPECT_STREQ(the_filter().directories.entries[3].data(), "sandbox/usr/local/lib/PXLQlp");
}

TEST_F(StartUp, FormOfTheCommandLineIsLoadedAndItsTopHeld) {
  EXPECT_EQ(start({"-n", "FORM"}), 0);
  EXPECT_TRUE(the_filter().loop.fcb_active);
  EXPECT_TRUE(the_filter().loop.initial_fcb_exists);
  EXPECT_EQ(the_filter().loop.current_store, &the_filter().loop.initial_store);
  EXPECT_EQ(the_filter().loop.initial_store.lpi[7], 8U);
  EXPECT_EQ(held_movement(), "\x1c%) p\n\x1c%) p\n\x1c%) p");
  EXPECT_EQ(the_filter().loop.initial_store.cur_line, 2);
  EXPECT_EQ(the_filter().job.form_length_tenths, 0);
}

TEST_F(StartUp, FormLengthIsSentWithTheStreamVariantsThatWantIt) {
  // Two half inches make ten tenths; -R raises the form to 3.5 inches, rounded up to 4.
  EXPECT_EQ(start({"-E", "-n", "FORM"}), 0);
  EXPECT_EQ(the_filter().job.form_length_tenths, 10);
  EXPECT_EQ(start({"-n", "FORM", "-R"}), 0);
  EXPECT_EQ(the_filter().job.form_length_tenths, 40);
}

TEST_F(StartUp, ResolutionAndPrinterAreSettledFromTheCapabilities) {
  EXPECT_EQ(start({"-G", "D300!D400!f1!f2!F!g"}), 0);
  EXPECT_EQ(the_filter().command_line.resolution, 300);
  EXPECT_EQ(the_filter().command_line.printer_class, kPrinterClassF2);
  EXPECT_EQ(the_filter().command_line.capability_F, 1);
  EXPECT_EQ(the_filter().command_line.capability_g, 1);
  EXPECT_EQ(start({"-e", "400", "-G", "D300!D400!f1"}), 0);
  EXPECT_EQ(the_filter().command_line.resolution, 400);
  EXPECT_EQ(the_filter().command_line.printer_class, kPrinterClassF1);
  EXPECT_EQ(the_filter().command_line.capability_F, 0);
  EXPECT_EQ(the_filter().command_line.capability_g, 0);
}

TEST_F(StartUp, PitchSequencesOfOptionCArePrepared) {
  EXPECT_EQ(start({"-c", "10"}), 0);
  EXPECT_EQ(the_filter().spacing.character_pitch.pitch.length, 10);
  EXPECT_EQ(the_filter().spacing.character_pitch.double_pitch.length, 6);
  EXPECT_EQ(start({"-c", "7201"}), 0);
  EXPECT_EQ(the_filter().spacing.character_pitch.pitch.length, 0);
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(the_filter().spacing.character_pitch.pitch.length, 0);
}

TEST_F(StartUp, FontsOfTheJobsClassAreOpened) {
  testing::install_font_library();
  testing::describe_fonts("every-font\n");
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(the_filter().job.font_library_loaded, 1);
  std::vector<std::string> calls = take_font_calls();
  ASSERT_EQ(calls.size(), 11U);
  EXPECT_EQ(calls[0], "load");
  EXPECT_EQ(count_opens(calls, "style=1,mincho"), 10);
  EXPECT_EQ(start({"-G", "g"}), 0);
  calls = take_font_calls();
  EXPECT_EQ(count_opens(calls, "style=1,mincho"), 10);
  EXPECT_EQ(count_opens(calls, "style=2,gothic"), 10);
  EXPECT_EQ(start({"-E"}), 0);
  EXPECT_EQ(count_opens(take_font_calls(), "style=1,mincho"), 4);
}

TEST_F(StartUp, MissingLibraryOrEntryPointIsNoFailure) {
  testing::install_font_library_without("fal_utyexists");
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(the_filter().job.font_library_loaded, 0);
  EXPECT_EQ(messages_, "");
}

// Failures, each in front of those that would come later

TEST_F(StartUp, OptionErrorComesFirst) {
  break_g1_file();
  expect_failure({"-n", "BAD", "-r", "Space"}, ST_FAILED, "filter: undefgaiji pattern error\n");
  EXPECT_EQ(start({"-n", "BAD", "-z"}), 1);
  EXPECT_EQ(messages_.find("FCB"), std::string::npos);
  EXPECT_EQ(messages_.find("g1gaiji"), std::string::npos);
}

TEST_F(StartUp, FormThatCannotBeLoadedComesBeforeTheG1File) {
  break_g1_file();
  testing::install_font_library();
  expect_failure({"-n", "BAD"}, ST_FAILED, "filter: FCB data error\n");
  expect_failure({"-n", "NONE"}, ST_FAILED, "filter: FCB data error\n");
  // The library was not even loaded.
  EXPECT_EQ(take_font_calls(), std::vector<std::string>{});
}

TEST_F(StartUp, BadG1FileComesBetweenTheLibraryAndItsFonts) {
  break_g1_file();
  testing::install_font_library();
  testing::describe_fonts("every-font\nopen-error 1 2 24 22 7 0\n");
  expect_failure({"-n", "FORM"}, ST_FAILED, "filter: g1gaiji code error\n");
  const std::vector<std::string> calls = take_font_calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls[0], "load");
  EXPECT_EQ(count_opens(calls, ""), 0);
}

TEST_F(StartUp, FontThatCannotBeOpenedEndsWithTheLibrarysStatus) {
  testing::install_font_library();
  testing::describe_fonts("every-font\nopen-error 1 4 24 22 7 0\n");
  expect_failure({}, ST_FONT_ERROR, "filter: broken fontfile\n");
  // What was open is closed.
  const std::vector<std::string> calls = take_font_calls();
  EXPECT_EQ(
      std::ranges::count_if(calls, [](const auto& call) { return call.starts_with("close"); }), 6);
}

TEST_F(StartUp, GoodG1FileIsNoFailure) {
  write_file("sandbox/etc/lp/g1gaiji", "F5A1-FEFE\n");
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(messages_, "");
}

}  // namespace
}  // namespace rlx
