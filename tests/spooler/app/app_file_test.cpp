#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "spooler/app/app_server.h"

// Printers that are a folder or a file.
namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

class AppFile : public AppTest {
 protected:
  std::string place(const std::string& name) const { return server_.directory() + '/' + name; }

  /// Adds the printer "files" at a place.
  void add(const std::string& path) { server_.add_printer("files", "rlx-240", "file://" + path); }

  AppJob submit(const std::string& text) const {
    return server_.wait_for("files", server_.submit("files", text));
  }

  /// A job that must not be printed. @return its message.
  std::string refused() const {
    const AppJob end = submit("REFUSED\f");
    EXPECT_EQ(end.state, kAborted);
    return end.message;
  }
};

/// "office" is printer 1, "files" 2.
constexpr const char* kFirst = "/job-00002-000000001.rlx";
constexpr const char* kFirstAgain = "/job-00002-000000001-2.rlx";
constexpr const char* kFirstOnceMore = "/job-00002-000000001-3.rlx";
constexpr const char* kSecond = "/job-00002-000000002.rlx";

TEST_F(AppFile, AFolderGetsAFileForEachJob) {
  fs::create_directory(place("out"));
  add(place("out"));
  EXPECT_EQ(submit("FIRST\f").state, kCompleted);
  EXPECT_EQ(submit("SECOND\f").state, kCompleted);
  EXPECT_EQ(read_file(place("out") + kFirst), filtered({}, "FIRST\f"));
  EXPECT_EQ(read_file(place("out") + kSecond), filtered({}, "SECOND\f"));
}

TEST_F(AppFile, AFileInAFolderIsNeverOverwritten) {
  fs::create_directory(place("out"));
  std::ofstream(place("out") + kFirst) << "kept";
  std::ofstream(place("out") + kFirstAgain) << "kept, too";
  add(place("out") + '/');
  EXPECT_EQ(submit("FIRST\f").state, kCompleted);
  EXPECT_EQ(read_file(place("out") + kFirst), "kept");
  EXPECT_EQ(read_file(place("out") + kFirstAgain), "kept, too");
  EXPECT_EQ(read_file(place("out") + kFirstOnceMore), filtered({}, "FIRST\f"));
}

TEST_F(AppFile, JobsAreAddedToAFile) {
  std::ofstream(place("out")) << "BEFORE";
  add(place("out"));
  EXPECT_EQ(submit("FIRST\f").state, kCompleted);
  EXPECT_EQ(submit("SECOND\f").state, kCompleted);
  EXPECT_EQ(read_file(place("out")), "BEFORE" + filtered({}, "FIRST\f") + filtered({}, "SECOND\f"));
}

TEST_F(AppFile, AFolderThatIsGoneDoesNotBecomeAFile) {
  fs::create_directory(place("out"));
  add(place("out"));
  fs::rename(place("out"), place("away"));
  const std::string message = refused();
  EXPECT_NE(message.find(place("out") + " cannot be opened: No such file or directory"),
            std::string::npos)
      << message;
  EXPECT_FALSE(fs::exists(place("out")));
  fs::rename(place("away"), place("out"));
  EXPECT_EQ(submit("BACK\f").state, kCompleted);
  EXPECT_EQ(read_file(place("out") + kSecond), filtered({}, "BACK\f"));
}

TEST_F(AppFile, AFileInAFoldersPlaceIsNoFolder) {
  fs::create_directory(place("out"));
  add(place("out") + '/');
  fs::remove(place("out"));
  std::ofstream(place("out")) << "kept";
  const std::string message = refused();
  EXPECT_NE(message.find("/ cannot be opened: Not a directory"), std::string::npos) << message;
  EXPECT_EQ(read_file(place("out")), "kept");
}

TEST_F(AppFile, AFullDiskIsTold) {
  add("/dev/full");
  const std::string message = refused();
  EXPECT_NE(message.find("/dev/full cannot be written: No space left on device"), std::string::npos)
      << message;
  EXPECT_EQ(message.find("the connection broke"), std::string::npos) << message;
}

}  // namespace
}  // namespace rlx::testing
