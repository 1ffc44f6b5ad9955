// The whole program with the stand-in font library: in which order it is loaded, asked and
// released.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "job/fixed_paths.h"
#include "support/descriptors.h"
#include "support/font_sets_fixture.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/standin_font_library.h"
#include "support/tested_filter.h"

namespace rlx::testing {
namespace {

using Calls = std::vector<std::string>;

class FontJob : public ::testing::Test {
 protected:
  FontJob() {
    install_font_library();
    describe_fonts("every-font\n");
  }

  /// Runs the program. @return its exit status.
  static int run(const std::string& options, std::string_view job) {
    write_file("job", job);
    const std::string command =
        "'" + tested_filter() + "' " + options + " < job > output 2> messages";
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
  }

  static void append_opens(Calls& calls, const Variant& variant, int typefaces) {
    for (int style = 1; style <= typefaces; ++style) {
      append_open_calls(calls, variant, style, 2);
      append_open_calls(calls, variant, style, 4);
    }
  }
  static void append_closes(Calls& calls, const Variant& variant, int typefaces) {
    for (int style = 1; style <= typefaces; ++style) {
      for (const int code_set : {2, 4}) {
        for (const OpenedSize& size : opened_sizes(variant)) {
          calls.push_back("close " +
                          std::to_string(standin_font_id(style, code_set, size.dots, size.letter)));
        }
      }
    }
  }
  /// What a job that opens and closes these fonts in turn calls.
  static Calls job_calls(const std::vector<Variant>& variants, int typefaces = 1) {
    Calls calls{"load"};
    for (const Variant& variant : variants) {
      append_opens(calls, variant, typefaces);
      append_closes(calls, variant, typefaces);
    }
    calls.emplace_back("unload");
    return calls;
  }

 private:
  ScratchDirectory scratch_;
};

TEST_F(FontJob, OpensAtTheStartAndClosesBeforeItUnloads) {
  EXPECT_EQ(run("", "A\x0c"), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant}));
  EXPECT_EQ(run("-E", "A"), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kFixedVariant}));
  EXPECT_EQ(run("-B", ""), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kFineVariant}));
  EXPECT_EQ(read_file("messages"), "");
}

TEST_F(FontJob, RecordThatFindsAnotherResolutionReopensTheFontsOnce) {
  const std::string job = "A" + kBlankCommand + "B" + kFormNameCommand + "C" + kBlankCommand;
  EXPECT_EQ(run("-G D400", job), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant, kHighVariant}));
  EXPECT_EQ(run("-G D240", job), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant}));
  EXPECT_EQ(run("-G D400", "A\x1bQ!IB"), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant, kHighVariant}));
}

TEST_F(FontJob, PrinterWithTheSecondTypefaceGetsGothicFontsAtTheStartAndAtTheSwitch) {
  EXPECT_EQ(run("-G g", "A\x0c"), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant}, 2));
  EXPECT_EQ(run("-G 'g!D400'", kBlankCommand + "A\x0c"), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant, kHighVariant}, 2));
}

TEST_F(FontJob, LibraryThatLacksAnEntryPointIsNotUsedAndNothingIsSaid) {
  for (const char* const entry_point :
       {"FalOpenSysFont", "FalReadFont", "FalCloseFont", "FalFreeFontList", "fal_utyerror",
        "fal_utyderror", "fal_utyexists"}) {
    SCOPED_TRACE(entry_point);
    install_font_library_without(entry_point);
    EXPECT_EQ(run("-G D400", kBlankCommand + "A\x0c"), 0);
    EXPECT_EQ(read_file("messages"), "");
    EXPECT_EQ(take_font_calls(), (Calls{"load", "unload"}));
  }
}

TEST_F(FontJob, ErrorAtTheSwitchEndsTheJobAndWhatWasWrittenStays) {
  // In the last font of the second set, so that others are open then.
  describe_fonts("every-font\nopen-error 1 4 66 62 9 13\n");
  EXPECT_EQ(run("-G D400", "A" + kBlankCommand + "B\x0c"), 127);  // the low byte of -129
  EXPECT_EQ(read_file("messages"), tested_filter() + ": can't read fontlist(13)\n");
  EXPECT_NE(read_file("output").find("A\x0c"), std::string::npos);
  EXPECT_EQ(read_file("output").find("B\x0c"), std::string::npos);
  EXPECT_TRUE(read_file("output").ends_with(kJobEnd));
  Calls expected = job_calls({kLowVariant, kHighVariant});
  const std::string failed_font = std::to_string(standin_font_id(1, 4, 66, 62));
  std::erase(expected, "close " + failed_font);
  for (std::string& call : expected) {
    if (call.ends_with("-> " + failed_font)) {
      call.replace(call.size() - failed_font.size(), failed_font.size(), "-1");
    }
  }
  EXPECT_EQ(take_font_calls(), expected);
}

TEST_F(FontJob, LibraryChangesNothingOfTheOutput) {
  const std::string job = "A" + kBlankCommand + "B\x0c";
  EXPECT_EQ(run("-G D400", job), 0);
  const std::string with_library = read_file("output");
  EXPECT_FALSE(take_font_calls().empty());
  ASSERT_EQ(std::remove(fixed_paths::kFontLibrary), 0);
  EXPECT_EQ(run("-G D400", job), 0);
  EXPECT_EQ(read_file("output"), with_library);
  EXPECT_EQ(read_file("messages"), "");
}

TEST_F(FontJob, ClosesAndUnloadsAfterAPassThroughToo) {
  EXPECT_EQ(run("", kParameterBlock + "rest"), 0);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant}));
  EXPECT_EQ(read_file("output"), kParameterBlock + "rest");
}

TEST_F(FontJob, ClosesAndUnloadsWhenTheJobFails) {
  EXPECT_EQ(run("", "A\x1bQ1;16 n  0             B"), 1);
  EXPECT_EQ(take_font_calls(), job_calls({kLowVariant}));
  EXPECT_EQ(read_file("messages"), tested_filter() + ": FCB data error\n");
  EXPECT_TRUE(read_file("output").ends_with(kJobEnd));
}

TEST_F(FontJob, FontsWithoutAClassEndTheJobWith255) {
  // -B asks for fonts that exist for 400 dots per inch alone.
  EXPECT_EQ(run("-B -G D240", "A" + kBlankCommand + "B"), 255);
  EXPECT_EQ(take_font_calls(), job_calls({kFineVariant}));
  const std::string output = read_file("output");
  EXPECT_NE(output.find("A\x0c"), std::string::npos);
  EXPECT_TRUE(output.ends_with(kJobEnd));
}

TEST_F(FontJob, FontThatFailsAtTheStartEndsTheProcessWith127BeforeAnyOutput) {
  describe_fonts("every-font\nopen-error 1 2 16 16 9 12\n");
  EXPECT_EQ(run("", "A"), 127);
  EXPECT_EQ(read_file("output"), "");
  EXPECT_EQ(read_file("messages"), tested_filter() + ": can't read fontlist(12)\n");
}

TEST_F(FontJob, LibraryThatLacksAnEntryPointIsUnloadedAndTheJobPrints) {
  install_font_library_without("FalReadFont");
  EXPECT_EQ(run("", "A"), 0);
  EXPECT_EQ(take_font_calls(), (Calls{"load", "unload"}));
  EXPECT_TRUE(read_file("output").ends_with(kFinalFormFeed + kJobEnd));
}

}  // namespace
}  // namespace rlx::testing
