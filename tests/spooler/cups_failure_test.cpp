// Jobs that do not print: each stays, with a reason, and prints when it is mended; the queue goes
// on.
#include <gtest/gtest.h>

#include <filesystem>

#include "spooler/spooler_test.h"

namespace rlx::testing {
namespace {

class CupsFailure : public CupsTest {
 protected:
  /// Expects that a job is stopped with a reason that holds some words.
  void expect_stopped(int id, const std::vector<std::string>& words) {
    const CupsJob job = server_.wait_for("q", id);
    EXPECT_EQ(job.state, "processing-stopped") << server_.log_of(id);
    for (const std::string& word : words) {
      EXPECT_NE(job.message.find(word), std::string::npos) << word << " in: " << job.message;
    }
  }

  void expect_queue_goes_on() {
    const std::string text = numbered_pages("next", 1);
    expect_same_job(filtered({}, text), print(text));
  }

  /// Prints a job again that was stopped.
  PrinterJob restart(int id) {
    const std::size_t before = printer_.jobs().size();
    EXPECT_EQ(server_.run({"lp", "-i", std::to_string(id), "-H", "restart"}).status, 0);
    EXPECT_TRUE(server_.wait_for_state("q", id, "completed"));
    const auto& jobs = printer_.wait_for_jobs(before + 1);
    return jobs.size() > before ? jobs[before] : PrinterJob();
  }
};

TEST_F(CupsFailure, FormThatIsMissing) {
  const std::string text = numbered_pages("missing", 2);
  const int id = server_.submit("q", text, {"form=NOSUCH"});
  expect_stopped(id, {"NOSUCH", forms() + "/fcbe/NOSUCH"});
  expect_queue_goes_on();
  EXPECT_NE(server_.queue_state("q").find("rlx-form-missing-warning"), std::string::npos);
  put_form("NOSUCH", "print 3 72000\n");
  expect_same_job(filtered({"-n", "NOSUCH", "-p", forms()}, text), restart(id));
  EXPECT_EQ(server_.queue_state("q").find("rlx-form-missing-warning"), std::string::npos);
}

/// Root makes folders for himself alone; CUPS runs filters as another user.
TEST_F(CupsFailure, FolderOfFormsThatIsClosed) {
  if (!is_root()) {
    GTEST_SKIP() << "only root runs cupsd and filters as different users";
  }
  const std::string text = numbered_pages("closed", 2);
  std::filesystem::permissions(forms(), std::filesystem::perms::owner_all);
  const int id = server_.submit("q", text, {"form=LABEL"});
  expect_stopped(id, {"LABEL cannot be looked for: " + forms() + "/fcbe/LABEL: Permission denied"});
  std::filesystem::permissions(
      forms(), std::filesystem::perms::others_exec | std::filesystem::perms::owner_all);
  expect_same_job(filtered({"-n", "LABEL", "-p", forms()}, text), restart(id));
  // A form that only root may read is another thing.
  std::filesystem::permissions(forms() + "/fcbe/LABEL", std::filesystem::perms::owner_read);
  expect_stopped(server_.submit("q", text, {"form=LABEL"}), {"LABEL", "Permission denied"});
}

TEST_F(CupsFailure, FormThatIsWrong) {
  put_form("WRONG", "print 300\n");
  const std::string text = numbered_pages("wrong", 2);
  const int id = server_.submit("q", text, {"form=WRONG"});
  expect_stopped(id, {"WRONG", "first line 300 is above 255"});
  expect_queue_goes_on();
  put_form("WRONG", "print 3\n");
  expect_same_job(filtered({"-n", "WRONG", "-p", forms()}, text), restart(id));
}

TEST_F(CupsFailure, NameOfAFormThatIsAPath) {
  for (const char* const name : {"../INVOICE", "/etc/passwd", "INVOICE.txt", "A B"}) {
    expect_stopped(server_.submit("q", "A\f", {std::string("form='") + name + "'"}), {"form"});
  }
  EXPECT_TRUE(printer_.jobs().empty());
}

TEST_F(CupsFailure, ValuesThatAreWrong) {
  for (const char* const option :
       {"lpi=5", "cpi=0x", "cpi=101", "lines-per-page=-1", "lines-per-page=ten",
        "rlx-undefined=star", "rlx-extended=perhaps", "rlx-charset=KLINGON", "media=A9",
        "media-source=tray-5", "orientation-requested=7", "page-offset-x=1439",
        "page-offset-y=100000"}) {
    SCOPED_TRACE(option);
    expect_stopped(server_.submit("q", "A\f", {option}), {option, "wanted is"});
  }
  EXPECT_TRUE(printer_.jobs().empty());
  expect_queue_goes_on();
}

/// cupsd may notice the end of a filter before it reads what the filter has said.
class LongCupsFailure : public CupsFailure {};

TEST_F(LongCupsFailure, NoReasonGetsLost) {
  for (int times = 0; times < 200; ++times) {
    const CupsJob job = server_.wait_for("q", server_.submit("q", "A\f", {"lpi=5"}));
    ASSERT_NE(job.message.find("lpi=5"), std::string::npos) << times << ": " << job.message;
  }
}

TEST_F(CupsFailure, TextThatIsNotOfItsEncoding) {
  const int id = server_.submit("q", "ABC\306\374\377X\n\f", {"rlx-charset=EUC-JP"});
  expect_stopped(id, {"byte 5", "EUC-JP"});
  EXPECT_TRUE(printer_.jobs().empty());
  expect_queue_goes_on();
}

/// CUPS has two kinds of banner pages: its own, and those of cups-filters.
TEST_F(CupsFailure, BannerPages) {
  expect_stopped(server_.submit("q", "#CUPS-BANNER\nShow job-id\n"), {"banner page"});
  EXPECT_TRUE(printer_.jobs().empty());
  // A document that fails keeps no other one of its job from being printed.
  expect_stopped(server_.submit("q", "A\f", {"job-sheets=standard"}),
                 {"banner page", "without it", "job-sheets=none"});
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  expect_same_job(filtered({}, "A\f"), printer_.jobs()[0]);
  expect_queue_goes_on();
}

TEST_F(CupsFailure, FormOfTheJobItself) {
  // A print-condition command, layout 2, that names a form which is not there.
  const std::string job =
      "A\f\033Q1;100 n  2" + std::string(14, ' ') + "ZZ9" + std::string(80, ' ') + "B\f";
  const int id = server_.submit("q", job);
  expect_stopped(id, {"FCB"});
  expect_queue_goes_on();
}

TEST_F(CupsFailure, QueueThatIsSetUpWrongly) {
  const std::string path = server_.directory() + "/settings/ppd/q.ppd";
  std::string ppd = read_file(path);
  const std::string mode = "*rlxEmulationMode: \"1\"";
  ppd.replace(ppd.find(mode), mode.size(), "*rlxEmulationMode: \"5\"");
  write_file(path, ppd);
  expect_stopped(server_.submit("q", "A\f"), {"rlxEmulationMode", "5"});
  EXPECT_TRUE(printer_.jobs().empty());
}

TEST_F(CupsFailure, FormThatIsRemovedWhileJobsWait) {
  server_.run({"cupsdisable", "q"});
  const std::string text = numbered_pages("waiting", 2);
  const std::string plain = numbered_pages("plain", 1);
  std::vector<int> with_form;
  std::vector<int> without;
  for (int i = 0; i < 3; ++i) {
    with_form.push_back(server_.submit("q", text, {"form=LABEL"}));
    without.push_back(server_.submit("q", plain));
  }
  remove_form("LABEL");
  server_.run({"cupsenable", "q"});
  for (const int id : with_form) {
    expect_stopped(id, {"LABEL"});
  }
  for (const int id : without) {
    EXPECT_EQ(server_.wait_for("q", id).state, "completed");
  }
  ASSERT_EQ(printer_.wait_for_jobs(3).size(), 3U);
  for (const PrinterJob& job : printer_.jobs()) {
    expect_same_job(filtered({}, plain), job);
  }
  put_form("LABEL", "print 4 36000\n");
  for (const int id : with_form) {
    expect_same_job(filtered({"-n", "LABEL", "-p", forms()}, text), restart(id));
  }
}

}  // namespace
}  // namespace rlx::testing
