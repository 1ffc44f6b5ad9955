// A printer that waits for a finished page, while the host has not sent the next one yet.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>

#include "support/tested_filter.h"

namespace rlx::testing {
namespace {

/// Far more than a page takes; reached only when it does not come.
constexpr int kPatienceMilliseconds = 20000;

/// The program, with pipes at both ends.
class RunningFilter {
 public:
  RunningFilter() {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    EXPECT_EQ(pipe(input.data()), 0);
    EXPECT_EQ(pipe(output.data()), 0);
    child_ = fork();
    if (child_ == 0) {
      dup2(input[0], STDIN_FILENO);
      dup2(output[1], STDOUT_FILENO);
      close(input[1]);
      execl(tested_filter().c_str(), "filter", nullptr);
      _exit(99);
    }
    close(input[0]);
    close(output[1]);
    to_filter_ = input[1];
    from_filter_ = output[0];
  }
  ~RunningFilter() {
    close(to_filter_);
    close(from_filter_);
    waitpid(child_, nullptr, 0);
  }
  RunningFilter(const RunningFilter&) = delete;
  RunningFilter& operator=(const RunningFilter&) = delete;

  void send(const std::string& text) const {
    EXPECT_EQ(write(to_filter_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  /// What comes out up to a text, or all that comes before patience ends.
  std::string read_up_to(const std::string& end) const {
    std::string all;
    pollfd wait{from_filter_, POLLIN, 0};
    std::array<char, 4096> part{};
    while (!all.ends_with(end) && poll(&wait, 1, kPatienceMilliseconds) == 1) {
      const ssize_t got = read(from_filter_, part.data(), part.size());
      if (got <= 0) {
        break;
      }
      all.append(part.data(), static_cast<std::size_t>(got));
    }
    return all;
  }

 private:
  pid_t child_ = 0;
  int to_filter_ = 0;
  int from_filter_ = 0;
};

TEST(WaitingPrinter, GetsAFinishedPageWhileTheHostIsSilent) {
  const RunningFilter filter;
  filter.send("first page\f");
  // Behind the data come the carried settings; the spacing is the last of them.
  EXPECT_NE(filter.read_up_to("\x1c&! u").find("first page\f"), std::string::npos);
  filter.send("second page\f");
  EXPECT_TRUE(filter.read_up_to("second page\f").ends_with("second page\f"));
}

}  // namespace
}  // namespace rlx::testing
