#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "spooler/app/app_server.h"

// What goes wrong with a job, and what is said then.
namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

class AppFailure : public AppTest {
 protected:
  /// Submits a job that cannot be printed. @return its message.
  std::string refused(std::string_view document, const JobAttributes& attributes,
                      const std::string& format = "text/plain") {
    const int id = server_.submit("office", document, attributes, format);
    AppJob end = server_.wait_for("office", id);
    EXPECT_EQ(end.state, kAborted);
    EXPECT_TRUE(printer_.jobs().empty());
    // Our words may come a moment after PAPPL's.
    comes_true(Seconds(5), [&] {
      end = server_.job("office", id);
      return end.message != "Job aborted.";
    });
    return end.message;
  }
};

TEST_F(AppFailure, ABadValueNamesItsAttribute) {
  const JobAttributes bad{{"lines-per-page", "100000"},
                          {"lpi", "13"},
                          {"cpi", "99999"},
                          {"rlx-undefined", "nothing"},
                          {"rlx-extended", "maybe"},
                          {"rlx-charset", "ebcdic"},
                          {"form", "../../etc/passwd"},
                          {"page-offset-x", "-1"}};
  for (const auto& [name, value] : bad) {
    const std::string message = refused("TEXT\f", {{name, value}});
    EXPECT_NE(message.find(name), std::string::npos) << name << '=' << value << ": " << message;
    EXPECT_NE(message.find("nothing was printed"), std::string::npos) << message;
  }
}

TEST_F(AppFailure, AFormThatIsMissingIsNamed) {
  EXPECT_NE(refused("TEXT\f", {{"form", "NOSUCH"}}).find("NOSUCH"), std::string::npos);
}

const char* const kNotPrintable =
    "this printer prints text and line-printer jobs, not pictures or PDF; nothing was printed";

/// PAPPL reads raster from the client itself, when no other job prints.
TEST_F(AppFailure, RasterIsRefusedWithAPlainMessage) {
  for (const char* const format : {"image/pwg-raster", "image/urf"}) {
    EXPECT_EQ(refused("RaS2no raster at all", {}, format), kNotPrintable) << format;
  }
}

TEST_F(AppFailure, AnotherFormatIsRefusedWithAPlainMessage) {
  const std::string jpeg_cut = "\xff\xd8\xff\xe0 no picture at all";
  const std::string png_cut = "\x89PNG no picture at all";
  for (const char* const format : {"image/jpeg", "application/octet-stream"}) {
    EXPECT_EQ(refused(jpeg_cut, {}, format), kNotPrintable) << format;
  }
  EXPECT_EQ(refused(png_cut, {}, "image/png"), kNotPrintable);
  EXPECT_EQ(refused("%PDF-1.4\n", {}, "application/pdf"), kNotPrintable);
  EXPECT_EQ(refused("%PDF-1.4\n", {}, "application/octet-stream"), kNotPrintable);
  EXPECT_EQ(refused("<html></html>", {}, "text/html"), kNotPrintable);
  EXPECT_EQ(refused(std::string_view("\0\1\2\3", 4), {}, "application/octet-stream"),
            kNotPrintable);
}

/// Such a job would be accepted, and unknown to the next start of the server.
class AppJournal : public AppFailure {
 protected:
  std::string journal() const { return server_.directory() + "/state/journal"; }

  void expect_refused(const std::string& why) {
    for (int number = 1; number <= 2; ++number) {
      std::string words;
      EXPECT_EQ(server_.submit("office", "LOST\f", {}, "text/plain", &words), 0);
      EXPECT_NE(words.find(why), std::string::npos) << words;
      const AppJob job = server_.job("office", number);
      EXPECT_EQ(job.state, kAborted);
      EXPECT_EQ(job.message,
                "the job cannot be kept: " + why + "; nothing was printed, submit it again");
    }
    EXPECT_TRUE(printer_.jobs().empty());
  }
};

TEST_F(AppJournal, AJobThatCannotBeNotedIsRefused) {
  // In the place of the first job's note, and of the second one's attributes.
  fs::create_directory(journal() + "/00001-000000001.json.new");
  fs::create_directory(journal() + "/00001-000000002.ipp");
  expect_refused("Is a directory");
  EXPECT_EQ(print("TEXT\f").bytes, filtered({}, "TEXT\f"));
}

TEST_F(AppJournal, AJobIsRefusedWhenTheDiskIsFull) {
  const Outcome mounted =
      run_command({{"mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", journal()}});
  if (mounted.status != 0) {
    GTEST_SKIP() << "only root can have a small disk of its own";
  }
  run_command({{"dd", "if=/dev/zero", "of=" + journal() + "/filler", "bs=4k"}});
  expect_refused("No space left on device");
  fs::remove(journal() + "/filler");
  EXPECT_EQ(print("TEXT\f").bytes, filtered({}, "TEXT\f"));
  server_.stop();
  EXPECT_EQ(run_command({{"umount", journal()}}).status, 0);
}

TEST_F(AppFailure, AJobAtAStalledPrinterCanBeCancelled) {
  printer_.tell("stall 100");
  const int id = server_.submit("office", numbered_pages("A", 40000));
  ASSERT_TRUE(printer_.wait_for_stall());
  ASSERT_TRUE(server_.tell_job("cancel", "office", id));
  printer_.tell("go");
  EXPECT_EQ(server_.wait_for("office", id, Seconds(60)).state, kCanceled);
  // What has reached the printer is a job that ends.
  const PrinterJob job = printer_.wait_for_jobs(1).at(0);
  EXPECT_TRUE(job.is_whole()) << job.end;
  EXPECT_EQ(print("AFTER\f").bytes, filtered({}, "AFTER\f"));
}

/// The words of a job whose printer is away.
constexpr const char* kAway = " cannot be reached; the job waits until it answers";

class AppAway : public AppFailure {
 protected:
  bool says_away(int id) {
    return comes_true(Seconds(20), [&] {
      return server_.job("office", id).message.ends_with(kAway) &&
             server_.reasons("office").find("offline") != std::string::npos;
    });
  }
};

TEST_F(AppAway, AJobSaysThatItWaits) {
  EXPECT_EQ(server_.reasons("office"), "none");
  printer_.tell("away");
  const int id = server_.submit("office", "TEXT\f");
  ASSERT_TRUE(server_.wait_for_state("office", id, kProcessing));
  EXPECT_TRUE(says_away(id)) << server_.job("office", id).message << server_.reasons("office");
  printer_.tell("back");
  const AppJob end = server_.wait_for("office", id);
  EXPECT_EQ(end.state, kCompleted);
  EXPECT_EQ(end.message, "Job completed.");
  EXPECT_EQ(server_.reasons("office"), "none");
}

TEST_F(AppAway, ACancelledJobDoesNotGoOnSayingThatItWaits) {
  printer_.tell("away");
  const int id = server_.submit("office", "TEXT\f");
  ASSERT_TRUE(says_away(id));
  ASSERT_TRUE(server_.tell_job("cancel", "office", id));
  const AppJob end = server_.wait_for("office", id);
  EXPECT_EQ(end.state, kCanceled);
  EXPECT_EQ(end.message, "Job canceled.");
  printer_.tell("back");
  EXPECT_EQ(print("AFTER\f").bytes, filtered({}, "AFTER\f"));
  EXPECT_EQ(server_.reasons("office"), "none");
}

TEST_F(AppFailure, APrinterThatClosesInTheMiddleAbortsTheJob) {
  printer_.tell("close 5000");
  const int id = server_.submit("office", numbered_pages("A", 20000));
  const AppJob end = server_.wait_for("office", id);
  EXPECT_EQ(end.state, kAborted);
  EXPECT_NE(end.message.find("the connection broke"), std::string::npos) << end.message;
  EXPECT_EQ(server_.wait_for("office", server_.submit("office", "AFTER\f")).state, kCompleted);
}

}  // namespace
}  // namespace rlx::testing
