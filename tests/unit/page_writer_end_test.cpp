#include <gtest/gtest.h>

#include <array>
#include <string>

#include "job/output_buffer.h"
#include "job/settings.h"
#include "output/carried_settings.h"
#include "output/job_header.h"
#include "output/page_writer.h"
#include "support/filter_state.h"
#include "support/page_data.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

// How a job ends on its last page.

namespace rlx::testing {
namespace {

using PageWriterEnd = FilterTest;

TEST_F(PageWriterEnd, JobWithoutALastFormFeedEndsWithItsText) {
  EXPECT_EQ(output_of([] {
              the_filter().job.page_has_content = 1;
              put("ABC");
              end_job();
            }),
            kFirstHeader + block('2', "ABC") + kFinalFormFeed + kJobEnd);
}

TEST_F(PageWriterEnd, BytesWithoutContentAreNotWrittenAtTheEnd) {
  EXPECT_EQ(output_of([] {
              the_filter().job.page_has_content = 1;
              put("ABC\f");
              put("\x1c%!\"p");
              end_job();
            }),
            kFirstHeader + block('2', "ABC\f") + kJobEnd);
}

TEST_F(PageWriterEnd, BytesWithoutContentOfAJobThatNeverStartedLeaveOnlyTheParameterText) {
  EXPECT_EQ(output_of([] {
              put("\n");
              end_job();
            }),
            kFirstParameters);
}

TEST_F(PageWriterEnd, EmptyInputWritesNothing) {
  EXPECT_EQ(output_of(end_job), "");
}

TEST_F(PageWriterEnd, EndOfTheJobKeepsTheCarriedSettingsToItself) {
  keep(CMD_Q_YL_SP, "\x1bQ1 y");
  the_filter().job.page_has_content = 1;
  EXPECT_EQ(output_of([] {
              put("A");
              end_job();
            }),
            kFirstHeader + block('2', "A") + kFinalFormFeed + kJobEnd);
  EXPECT_EQ(output_of([] { out_kept_settings(the_filter().carried); }), block('6', "\x1bQ1 y"));
}

/// Every state in which a job can end.
struct End {
  bool gathered;
  bool content;
  bool started;
  bool continued;
  std::string output;
};

/// Brings the writer into a state; what this writes does not count.
void prepare(const End& end) {
  reset_filter();
  output_of([&] {
    if (end.continued) {
      put(pattern(kPageBufferBytes));
      page_sink(the_filter().page).cut();
    }
    if (end.gathered) {
      put("AB");
    }
  });
  // So a parameter text is due, and seen where it is written.
  the_filter().header.sent = {};
  the_filter().job.page_has_content = end.content ? 1 : 0;
  the_filter().job.job_started = end.started ? 1 : 0;
}

TEST_F(PageWriterEnd, EndOfTheJobInEachState) {
  const std::string finish = kFinalFormFeed + kJobEnd;
  const std::string header_without_start = kFirstParameters + kFirstDensity + kNextHeader;
  // Gathered, content, started, continued.
  const std::array ends{
      End{true, true, false, false, kFirstHeader + block('2', "AB") + finish},
      End{true, true, true, false, header_without_start + block('2', "AB") + finish},
      End{true, true, false, true, block('0', "AB") + finish},
      End{true, true, true, true, block('0', "AB") + finish},
      End{true, false, false, false, kFirstParameters},
      End{true, false, true, false, kJobEnd + kFirstParameters},
      End{true, false, false, true, ""},
      End{true, false, true, true, kJobEnd},
      End{false, true, true, false, finish},
      End{false, true, true, true, finish},
      End{false, false, true, false, kJobEnd},
      End{false, false, true, true, kJobEnd},
      End{false, true, false, false, ""},
      End{false, true, false, true, ""},
      End{false, false, false, false, ""},
      End{false, false, false, true, ""},
  };
  for (const End& end : ends) {
    prepare(end);
    EXPECT_EQ(output_of(end_job), end.output)
        << end.gathered << end.content << end.started << end.continued;
    EXPECT_EQ(the_filter().job.job_started, 0);
    EXPECT_EQ(output_of(end_job), "");
  }
}

TEST_F(PageWriterEnd, EndOfTheJobClearsTheFlagsOfThePage) {
  for (const bool gathered : {false, true}) {
    for (const bool content : {false, true}) {
      for (const bool continued : {false, true}) {
        prepare(End{gathered, content, true, continued, ""});
        output_of(end_job);
        EXPECT_EQ(the_filter().job.page_has_content, 0);
        // The next block is the first of a page of a new job.
        const DataBlocks next = data_blocks(output_of([] { put("C\f"); }));
        EXPECT_EQ(next.kinds, "2") << gathered << content << continued;
        EXPECT_EQ(next.data, "C\f");
        EXPECT_EQ(the_filter().job.job_started, 1);
      }
    }
  }
}

TEST_F(PageWriterEnd, EndOfTheJobWithoutContentWritesNoParameterTextThatWasSent) {
  EXPECT_EQ(output_of([] {
              put("A\f");
              put("\n");
              end_job();
            }),
            kFirstHeader + block('2', "A\f") + kJobEnd);
}

}  // namespace
}  // namespace rlx::testing
