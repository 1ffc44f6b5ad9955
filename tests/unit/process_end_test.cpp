#include "support/process_end.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace rlx {
namespace {

TEST(ProcessEndDeathTest, EndsWithTheStatusAndSaysNothing) {
  EXPECT_EXIT(end_process(ST_OK), ::testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(end_process(ST_IOERR), ::testing::ExitedWithCode(129), "^$");
}

TEST(ProcessEndDeathTest, AWriteErrorSaysSoWithoutANewline) {
  EXPECT_EXIT(end_with_write_error(), ::testing::ExitedWithCode(1), "^write error$");
}

[[noreturn]] void close_it_and_go_on() {
  close_standard_output();
  _exit(fcntl(STDOUT_FILENO, F_GETFD) == -1 ? 3 : 4);
}

TEST(ProcessEndDeathTest, StandardOutputIsClosed) {
  EXPECT_EXIT(close_it_and_go_on(), ::testing::ExitedWithCode(3), "^$");
}

TEST(ProcessEndDeathTest, ACloseThatFailsIsAWriteError) {
  EXPECT_EXIT(
      {
        close(STDOUT_FILENO);
        close_it_and_go_on();
      },
      ::testing::ExitedWithCode(1), "^write error$");
}

}  // namespace
}  // namespace rlx
