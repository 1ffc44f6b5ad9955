#include "support/error_log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "job/fixed_paths.h"
#include "support/descriptors.h"
#include "support/narrowing.h"
#include "support/odd_files.h"
#include "support/statuses.h"

namespace rlx {
namespace {

namespace fs = std::filesystem;
using testing::read_file;
using testing::write_file;

constexpr std::int32_t kInt32Min = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kInt32Max = std::numeric_limits<std::int32_t>::max();

/// Lets log_append run against a fresh directory for the log.
class ErrorLog : public ::testing::Test {
 protected:
  ErrorLog() { fs::create_directories(fs::path(log_path()).parent_path()); }

  static std::string log_path() { return fixed_paths::kLostBitLog; }
  static std::string log_text() { return fs::exists(log_path()) ? read_file(log_path()) : ""; }

  static void put_link_to(const std::string& target) {
    fs::remove(log_path());
    fs::create_symlink(target, log_path());
  }

  /// The number of the next descriptor that is opened.
  static int next_descriptor() {
    const int descriptor = open("/dev/null", O_RDONLY);
    close(descriptor);
    return descriptor;
  }

 private:
  testing::ScratchDirectory scratch_;
};

/// A child process; runs `work` and exits with what it returns. 0 is expected.
template <typename Work>
pid_t start_child(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(work());
  }
  return child;
}

void expect_success(pid_t child) {
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(ErrorLog, AppendWritesTheLineAndANewline) {
  EXPECT_EQ(log_append("first"), 0);
  EXPECT_EQ(log_text(), "first\n");
  EXPECT_EQ(log_append("second"), 0);
  EXPECT_EQ(log_append(""), 0);
  EXPECT_EQ(log_text(), "first\nsecond\n\n");
}

TEST_F(ErrorLog, AppendCreatesTheFileWithTheModeThatTheUmaskLeaves) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{027}}) {
    fs::remove(log_path());
    const mode_t before = umask(mask);
    EXPECT_EQ(log_append("x"), 0);
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(log_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0666U & ~mask);
  }
}

TEST_F(ErrorLog, LogAt1999990BytesIsEmptiedByA20ByteLine) {
  write_file(log_path(), std::string(1'999'990, 'o'));
  EXPECT_EQ(log_append("12345678901234567890"), 0);
  EXPECT_EQ(log_text(), "12345678901234567890\n");
}

TEST_F(ErrorLog, CapLeavesRoomForTheNewlineAlone) {
  const std::string line = "12345678901234567890";
  for (std::size_t size = 1'999'977; size <= 1'999'983; ++size) {
    const std::string old = std::string(size - 1, 'o') + "\n";
    write_file(log_path(), old);
    EXPECT_EQ(log_append(line.c_str()), 0);
    const bool fits = size <= 1'999'980;
    EXPECT_TRUE(log_text() == (fits ? old : "") + line + "\n") << size;
  }
}

TEST_F(ErrorLog, FileAboveTheCapIsEmptied) {
  write_file(log_path(), std::string(3'000'000, 'o'));
  EXPECT_EQ(log_append("x"), 0);
  EXPECT_EQ(log_text(), "x\n");
}

TEST_F(ErrorLog, LineAboveTheCapStandsAloneAndIsLostNext) {
  write_file(log_path(), "old\n");
  const std::string line(2'000'001, 'l');
  EXPECT_EQ(log_append(line.c_str()), 0);
  EXPECT_TRUE(log_text() == line + "\n");
  EXPECT_EQ(log_append("x"), 0);
  EXPECT_EQ(log_text(), "x\n");
}

TEST_F(ErrorLog, MissingDirectoryIsOpenFailedAndTheGuardStillReturnsItsResult) {
  fs::remove_all("sandbox");
  EXPECT_EQ(log_append("x"), -1);
  EXPECT_EQ(narrow_long_to_int(std::int64_t{1} << 31, "zqeuctorlx", "main", -1), -1);
  EXPECT_EQ(narrow_ulong_to_int(0x80000000U, "rlxinout_ctl", "dtout_pji", 99), kInt32Min);
  EXPECT_FALSE(fs::exists("sandbox"));
}

TEST_F(ErrorLog, DirectoryInPlaceOfTheFileIsOpenFailed) {
  fs::create_directories(log_path());
  EXPECT_EQ(log_append("x"), -1);
}

/// Another process that holds the lock of the log until it is told to let go.
class LockHolder {
 public:
  explicit LockHolder(const std::string& path) {
    EXPECT_EQ(pipe(ready_.data()), 0);
    EXPECT_EQ(pipe(release_.data()), 0);
    child_ = start_child([this, &path] {
      close(release_[1]);
      const int file = open(path.c_str(), O_RDWR | O_CREAT, 0666);
      char byte = lockf(file, F_LOCK, 0) == 0 ? 'y' : 'n';
      const bool told = write(ready_[1], &byte, 1) == 1;
      return told && read(release_[0], &byte, 1) >= 0 ? 0 : 1;
    });
    char answer = 'n';
    EXPECT_EQ(read(ready_[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
  }
  ~LockHolder() {
    let_go();
    expect_success(child_);
    close(ready_[0]);
    close(ready_[1]);
    close(release_[0]);
    close(release_[1]);
  }
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;

  /// May be called by a signal handler.
  void let_go() const { static_cast<void>(!write(release_[1], "x", 1)); }

 private:
  std::array<int, 2> ready_{};
  std::array<int, 2> release_{};
  pid_t child_ = -1;
};

/// Calls a handler every few milliseconds while it lives.
class Ticker {
 public:
  Ticker(void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(SIGALRM, &action, &saved_);
    set_interval(5000);
  }
  ~Ticker() {
    set_interval(0);
    sigaction(SIGALRM, &saved_, nullptr);
  }
  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;

 private:
  static void set_interval(suseconds_t microseconds) {
    const itimerval timer{{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  struct sigaction saved_ {};
};

const LockHolder* holder_to_release = nullptr;
int awaited_descriptor = -1;
int signals_left = 0;

void release_after_some_signals(int) {
  if (--signals_left == 0) {
    holder_to_release->let_go();
  }
}

TEST_F(ErrorLog, SignalsDoNotEndTheWaitForTheLock) {
  write_file(log_path(), "old\n");
  const LockHolder holder(log_path());
  holder_to_release = &holder;
  signals_left = 5;
  {
    const Ticker ticker(release_after_some_signals, 0);
    EXPECT_EQ(log_append("x"), 0);
  }
  EXPECT_LE(signals_left, 0);
  EXPECT_EQ(log_text(), "old\nx\n");
}

/// Once the log is open (and its opener waits for the lock), puts another file in its place and
/// lets the opener have the lock.
void replace_log_when_open(int) {
  if (fcntl(awaited_descriptor, F_GETFD) != -1 && rename("other", fixed_paths::kLostBitLog) == 0) {
    holder_to_release->let_go();
  }
}

TEST_F(ErrorLog, FileThatTakesTheLogsPlaceMeanwhileIsLeftAlone) {
  write_file(log_path(), std::string(2'000'000, 'o'));
  write_file("other", "other\n");
  const LockHolder holder(log_path());
  holder_to_release = &holder;
  awaited_descriptor = next_descriptor();
  {
    const Ticker ticker(replace_log_when_open, SA_RESTART);
    EXPECT_EQ(log_append("x"), 0);
  }
  EXPECT_EQ(next_descriptor(), awaited_descriptor);
  EXPECT_EQ(log_text(), "other\n");
}

TEST_F(ErrorLog, OnlyARegularFileIsWrittenTo) {
  const int descriptor = next_descriptor();
  testing::for_each_odd_file(log_path(), [] { EXPECT_EQ(log_append("x"), -1); });
  EXPECT_EQ(next_descriptor(), descriptor);
}

TEST_F(ErrorLog, SymbolicLinksAreNotFollowed) {
  write_file("elsewhere", "text\n");
  put_link_to(fs::absolute("elsewhere"));
  EXPECT_EQ(log_append("x"), -1);
  EXPECT_EQ(testing::read_file("elsewhere"), "text\n");
  fs::remove(log_path());
  put_link_to(fs::absolute("missing"));
  EXPECT_EQ(log_append("x"), -1);
  EXPECT_FALSE(fs::exists("missing"));
}

TEST_F(ErrorLog, LineWithoutItsNewlineGetsItBeforeTheNextOne) {
  write_file(log_path(), "whole\ncut");
  EXPECT_EQ(log_append("next"), 0);
  EXPECT_EQ(log_text(), "whole\ncut\nnext\n");
}

TEST_F(ErrorLog, TheMissingNewlineCountsForTheCap) {
  const std::string line = "12345678901234567890";
  for (std::size_t size = 1'999'977; size <= 1'999'983; ++size) {
    const std::string old(size, 'o');
    write_file(log_path(), old);
    EXPECT_EQ(log_append(line.c_str()), 0);
    const bool fits = size <= 1'999'979;
    EXPECT_TRUE(log_text() == (fits ? old + "\n" : "") + line + "\n") << size;
  }
}

TEST_F(ErrorLog, LineThatDoesNotFitTheFileSizeLimitIsWriteFailed) {
  expect_success(start_child([] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{10, 10};
    setrlimit(RLIMIT_FSIZE, &limit);
    return log_append("12345678901234567890") == -6 ? 0 : 1;
  }));
}

TEST_F(ErrorLog, NewlineThatDoesNotFitTheFileSizeLimitIsWriteFailed) {
  expect_success(start_child([] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{20, 20};
    setrlimit(RLIMIT_FSIZE, &limit);
    return log_append("12345678901234567890") == -6 ? 0 : 1;
  }));
  EXPECT_EQ(log_text(), "12345678901234567890");
  EXPECT_EQ(log_append("next"), 0);
  EXPECT_EQ(log_text(), "12345678901234567890\nnext\n");
}

// Several jobs log at once.

constexpr int kWriters = 4;
constexpr int kLinesEach = 150;

/// A line of its own length, the same character all over behind its number.
std::string writer_line(int writer, int number) {
  return std::to_string(writer) + ":" + std::to_string(number) + ":" +
         std::string(static_cast<std::size_t>(20 + (number * 37 + writer * 11) % 150),
                     static_cast<char>('a' + writer));
}

void run_writers() {
  std::vector<pid_t> writers;
  writers.reserve(kWriters);
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(start_child([writer] {
      for (int number = 0; number < kLinesEach; ++number) {
        if (log_append(writer_line(writer, number).c_str()) != 0) {
          return 1;
        }
      }
      return 0;
    }));
  }
  for (const pid_t writer : writers) {
    expect_success(writer);
  }
}

/// Each line is one that a writer wrote, whole, and each writer's lines follow each other up to
/// its last one. Returns how many there are.
int expect_whole_lines(const std::string& text) {
  std::array<int, kWriters> last;
  last.fill(-1);
  std::istringstream lines(text);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const int writer = line.empty() ? 0 : line.front() - '0';
    const int number =
        line.size() < 3 ? 0 : static_cast<int>(std::strtol(line.c_str() + 2, nullptr, 10));
    if (writer < 0 || writer >= kWriters) {
      ADD_FAILURE() << line;
      break;
    }
    int& seen = last[static_cast<std::size_t>(writer)];
    EXPECT_EQ(line, writer_line(writer, number));
    EXPECT_TRUE(seen == -1 || seen == number - 1) << seen << " " << number;
    seen = number;
  }
  for (const int number : last) {
    EXPECT_TRUE(number == -1 || number == kLinesEach - 1);
  }
  EXPECT_TRUE(text.ends_with('\n'));
  return count;
}

TEST_F(ErrorLog, ConcurrentWritersLoseAndMixNothing) {
  run_writers();
  EXPECT_EQ(expect_whole_lines(log_text()), kWriters * kLinesEach);
}

TEST_F(ErrorLog, ConcurrentWritersThatPassTheCapMixNothing) {
  write_file(log_path(), std::string(1'990'000, 'o'));
  run_writers();
  const std::string text = log_text();
  EXPECT_LE(text.size(), 2'000'001U);
  EXPECT_GT(expect_whole_lines(text), 0);
}

// The guards.

class Guards : public ErrorLog {
 protected:
  /// A time such as "Sun Nov 15 10:50:29 2026".
  static constexpr std::size_t kTimeBytes = 24;

  /// The value of the one log line, in hexadecimal, or what stands in the log instead.
  static std::string logged_value() {
    std::string text = log_text();
    const std::string begin = ":ERROR:module:function:" + std::to_string(getpid()) + " lost bit (";
    const std::string end = ")\n";
    const std::size_t around = kTimeBytes + begin.size() + end.size();
    if (text.size() < around || text.compare(kTimeBytes, begin.size(), begin) != 0 ||
        !text.ends_with(end)) {
      return text;
    }
    return text.substr(kTimeBytes + begin.size(), text.size() - around);
  }

  static std::string take_logged_value() {
    std::string value = logged_value();
    fs::remove(log_path());
    return value;
  }
};

TEST_F(Guards, WriteResultMinusOnePassesAndLogsNothing) {
  EXPECT_EQ(narrow_long_to_int(-1, "module", "function", -1), -1);
  EXPECT_EQ(narrow_long_to_int(-1, "module", "function", 7), -1);
  EXPECT_FALSE(fs::exists(log_path()));
}

TEST_F(Guards, WriteResultTwoToThe31LogsALineAndReturnsMinusOne) {
  EXPECT_EQ(narrow_long_to_int(std::int64_t{1} << 31, "module", "function", -1), -1);
  EXPECT_EQ(logged_value(), "80000000");
}

TEST_F(Guards, Length80000000WithSubstitute99LogsALineAndReturnsTheTruncatedValue) {
  EXPECT_EQ(narrow_ulong_to_int(0x80000000U, "module", "function", 99), -2147483647 - 1);
  EXPECT_EQ(logged_value(), "80000000");
}

TEST_F(Guards, LongToIntLimits) {
  for (const std::int64_t value : {std::int64_t{kInt32Min}, std::int64_t{kInt32Min} + 1,
                                   std::int64_t{0}, std::int64_t{kInt32Max}}) {
    EXPECT_EQ(narrow_long_to_int(value, "module", "function", 5), value);
  }
  EXPECT_FALSE(fs::exists(log_path()));
  EXPECT_EQ(narrow_long_to_int(std::int64_t{kInt32Max} + 1, "module", "function", 5), 5);
  EXPECT_EQ(take_logged_value(), "80000000");
  EXPECT_EQ(narrow_long_to_int(std::int64_t{kInt32Min} - 1, "module", "function", 5), 5);
  EXPECT_EQ(take_logged_value(), "ffffffff7fffffff");
  EXPECT_EQ(narrow_long_to_int(std::int64_t{kInt32Min} - 1, "module", "function", 99), kInt32Max);
  EXPECT_EQ(take_logged_value(), "ffffffff7fffffff");
}

TEST_F(Guards, UlongToIntLimits) {
  EXPECT_EQ(narrow_ulong_to_int(0, "module", "function", 5), 0);
  EXPECT_EQ(narrow_ulong_to_int(99, "module", "function", 5), 99);
  EXPECT_EQ(narrow_ulong_to_int(0x7fffffff, "module", "function", 5), kInt32Max);
  EXPECT_FALSE(fs::exists(log_path()));
  EXPECT_EQ(narrow_ulong_to_int(0x80000000, "module", "function", 5), 5);
  EXPECT_EQ(take_logged_value(), "80000000");
  EXPECT_EQ(narrow_ulong_to_int(0xffffffffffffffff, "module", "function", -1), -1);
  EXPECT_EQ(take_logged_value(), "ffffffffffffffff");
  EXPECT_EQ(narrow_ulong_to_int(0x123456789abcdef0, "module", "function", 99), -0x65432110);
  EXPECT_EQ(take_logged_value(), "123456789abcdef0");
}

TEST_F(Guards, UlongToUintLimits) {
  EXPECT_EQ(narrow_ulong_to_uint(0, "module", "function", 5), 0U);
  EXPECT_EQ(narrow_ulong_to_uint(0xffffffff, "module", "function", 5), 0xffffffffU);
  EXPECT_FALSE(fs::exists(log_path()));
  EXPECT_EQ(narrow_ulong_to_uint(0x100000000, "module", "function", 5), 5U);
  EXPECT_EQ(take_logged_value(), "100000000");
  EXPECT_EQ(narrow_ulong_to_uint(0x100000000, "module", "function", -1), 0xffffffffU);
  EXPECT_EQ(take_logged_value(), "100000000");
  EXPECT_EQ(narrow_ulong_to_uint(0x1fffffffe, "module", "function", 99), 0xfffffffeU);
  EXPECT_EQ(take_logged_value(), "1fffffffe");
}

TEST_F(Guards, LongToUintLimits) {
  EXPECT_EQ(narrow_long_to_uint(0, "module", "function", 5), 0U);
  EXPECT_EQ(narrow_long_to_uint(0xffffffff, "module", "function", 5), 0xffffffffU);
  EXPECT_FALSE(fs::exists(log_path()));
  EXPECT_EQ(narrow_long_to_uint(0x100000000, "module", "function", 5), 5U);
  EXPECT_EQ(take_logged_value(), "100000000");
  EXPECT_EQ(narrow_long_to_uint(-1, "module", "function", 5), 5U);
  EXPECT_EQ(take_logged_value(), "ffffffffffffffff");
  EXPECT_EQ(narrow_long_to_uint(-2, "module", "function", 99), 0xfffffffeU);
  EXPECT_EQ(take_logged_value(), "fffffffffffffffe");
}

TEST_F(Guards, LineBeginsWithTheLocalTime) {
  const auto now_text = [] {
    const std::time_t now = std::time(nullptr);
    std::array<char, 64> text{};
    EXPECT_NE(std::strftime(text.data(), text.size(),
                            "%a %b %e %H:%M:%S %Y:ERROR:", std::localtime(&now)),
              0U);
    return std::string(text.data());
  };
  setenv("TZ", "XYZ-5:30", 1);
  std::string before;
  do {  // the clock may tick in between
    fs::remove(log_path());
    before = now_text();
    narrow_long_to_uint(-1, "module", "function", 5);
  } while (before != now_text());
  unsetenv("TZ");
  tzset();
  EXPECT_TRUE(log_text().starts_with(before)) << before << log_text();
}

TEST_F(Guards, LineIsCutTo255Bytes) {
  narrow_long_to_uint(-1, "module", std::string(300, 'f').c_str(), 5);
  const std::string text = log_text();
  EXPECT_EQ(text.size(), 256U);
  EXPECT_TRUE(text.ends_with("ffff\n"));
}

TEST_F(Guards, EachLossAppendsALine) {
  narrow_long_to_uint(-1, "module", "function", 5);
  narrow_long_to_uint(-2, "module", "function", 5);
  const std::string text = log_text();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
}

TEST_F(Guards, ErrnoIsKeptWhetherOrNotALineIsLogged) {
  errno = EPIPE;
  narrow_long_to_int(-1, "module", "function", -1);
  EXPECT_EQ(errno, EPIPE);
  narrow_long_to_int(std::int64_t{1} << 31, "module", "function", -1);
  EXPECT_EQ(errno, EPIPE);
  EXPECT_EQ(take_logged_value(), "80000000");
}

TEST_F(Guards, ErrnoIsKeptByEveryGuardWhenTheLogFails) {
  fs::remove_all("sandbox");
  errno = EINTR;
  narrow_long_to_int(std::int64_t{1} << 31, "module", "function", -1);
  EXPECT_EQ(errno, EINTR);
  narrow_ulong_to_int(0x80000000, "module", "function", -1);
  EXPECT_EQ(errno, EINTR);
  narrow_ulong_to_uint(0x100000000, "module", "function", -1);
  EXPECT_EQ(errno, EINTR);
  narrow_long_to_uint(-1, "module", "function", -1);
  EXPECT_EQ(errno, EINTR);
}

}  // namespace
}  // namespace rlx
