#include <gtest/gtest.h>

#include <string>

#include "spooler/app/app_server.h"

// What goes wrong with a job, and what is said then.
namespace rlx::testing {
namespace {

class AppFailure : public AppTest {
 protected:
  /// Submits a job that cannot be printed. @return its message.
  std::string refused(std::string_view document, const JobAttributes& attributes,
                      const std::string& format = "text/plain") {
    const int id = server_.submit("office", document, attributes, format);
    const AppJob end = server_.wait_for("office", id);
    EXPECT_EQ(end.state, kAborted);
    EXPECT_TRUE(printer_.jobs().empty());
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

TEST_F(AppFailure, AJobWaitsForAPrinterThatIsAway) {
  printer_.tell("away");
  const int id = server_.submit("office", "TEXT\f");
  ASSERT_TRUE(server_.wait_for_state("office", id, kProcessing));
  printer_.tell("back");
  EXPECT_EQ(server_.wait_for("office", id).state, kCompleted);
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
