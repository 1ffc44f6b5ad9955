// The log of lost bits, which no job reaches: its writer and a guard, by a program of their own.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "faults/check_fault.h"
#include "faults/fault_rig.h"
#include "faults/hostile_files.h"
#include "job/fixed_paths.h"
#include "support/descriptors.h"

#ifndef RLX_LOG_PROBE
#error "the build tells where the program that calls the log's writer is"
#endif

namespace rlx::testing {
namespace {

const std::string kEarlier = "an earlier line\n";
const std::string kLine = "the line";
const std::string kFull(2'000'000, 'x');

/// What a failing call of log_append comes to.
struct LogExpectation {
  Call call;
  std::vector<std::uint32_t> numbers;  ///< of the calls
  std::vector<int> errors;             ///< 0: the call returns 0
  int result;                          ///< of log_append
  bool log_full = false;
};

const std::vector<LogExpectation> kTable{
    {Call::open, {1}, {EINTR}, 0},
    {Call::open, {1}, {EACCES, ENOENT, ELOOP, EROFS, ENOSPC, EMFILE, ENFILE, EISDIR, ENXIO}, -1},
    {Call::lockf, {1}, {EINTR}, 0},
    {Call::lockf, {1}, {EDEADLK, ENOLCK, EACCES, EINVAL, EBADF}, -2},
    // The kind of the file, then its size.
    {Call::fstat, {1, 2}, {EIO, EOVERFLOW, ENOMEM, EBADF}, -3},
    {Call::ftruncate, {1}, {EIO, EPERM, EROFS, EINVAL}, -4, true},
    {Call::lseek, {1}, {EINVAL, EOVERFLOW, ESPIPE}, -5},
    {Call::write, {1}, {EIO, ENOSPC, EDQUOT, EFBIG, EBADF, 0}, -6},
    {Call::write, {1}, {EINTR}, 0},
    // How the last line ends; when it cannot be told the new line goes behind it all the same.
    {Call::pread, {1}, {EIO, EINTR}, 0},
    // Behind the line nothing matters any more: the way back, the unlocking, the close.
    {Call::lseek, {2}, {EINVAL}, 0},
    {Call::lockf, {2}, {EINVAL}, 0},
    {Call::close, {1}, {EIO, EINTR, ENOSPC}, 0},
};

/// Runs one of the probe's tasks, again and again.
class LogRig {
 public:
  explicit LogRig(std::vector<std::string> options) : rig_(RLX_LOG_PROBE, std::move(options)) {
    set_log(kEarlier);
  }

  static void set_log(const std::string& bytes) { write_file(fixed_paths::kLostBitLog, bytes); }
  static std::string log() { return read_file(fixed_paths::kLostBitLog); }

  Outcome run(const Plan& plan = {}) { return rig_.run(plan); }
  Outcome run(const Fault& fault) {
    Plan plan;
    plan.faults[0] = fault;
    return run(plan);
  }

 private:
  FaultRig rig_;
};

Role role_of(Call call) {
  return call == Call::time || call == Call::ctime ? Role::none : Role::log;
}

Fault log_fault(Call call, std::uint32_t number, int error) {
  Fault fault{.call = call, .role = role_of(call), .error = error, .first = number};
  fault.effect = error == 0 ? Effect::zero : Effect::fail;
  return fault;
}

/// Hands each fault of the table to a function, with its row and a log in the row's state.
template <typename Function>
void for_each_fault(Function&& take) {
  for (const LogExpectation& row : kTable) {
    for (const std::uint32_t number : row.numbers) {
      for (const int error : row.errors) {
        const Fault fault = log_fault(row.call, number, error);
        SCOPED_TRACE(describe(fault));
        LogRig::set_log(row.log_full ? kFull : kEarlier);
        take(row, fault);
      }
    }
  }
}

TEST(LogFaults, EveryFailureHasItsResultAndLosesNoEarlierLine) {
  LogRig rig({"append", kLine});
  for_each_fault([&](const LogExpectation& row, const Fault& fault) {
    const Outcome outcome = rig.run(fault);
    EXPECT_EQ(outcome.tally.faults_met, 1U);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, std::to_string(row.result) + "\n");
    const std::string before = row.log_full ? kFull : kEarlier;
    EXPECT_TRUE(LogRig::log() == (row.result == 0 ? before + kLine + "\n" : before));
  });
}

TEST(LogFaults, AGuardKeepsItsResultAndErrnoWhateverFails) {
  LogRig rig({"guard"});
  for_each_fault([&](const LogExpectation& /*row*/, const Fault& fault) {
    const Outcome outcome = rig.run(fault);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "7 kept\n");
  });
}

TEST(LogFaults, AGuardLogsWithoutAClock) {
  LogRig rig({"guard"});
  EXPECT_EQ(rig.run(log_fault(Call::time, 1, EFAULT)).output, "7 kept\n");
  EXPECT_TRUE(LogRig::log().ends_with(" lost bit (123456789)\n"));
  LogRig::set_log(kEarlier);
  EXPECT_EQ(rig.run(log_fault(Call::ctime, 1, EINVAL)).output, "7 kept\n");
  EXPECT_TRUE(LogRig::log().starts_with(kEarlier + ":ERROR:module:function:"));
}

TEST(LogFaults, ShortWritesOfEverySizeAreContinued) {
  LogRig rig({"append", kLine, "the next line"});
  for (std::uint32_t size = 1; size < 20; ++size) {
    LogRig::set_log(kEarlier);
    EXPECT_EQ(rig.run({.write_limit = size}).output, "0\n0\n");
    EXPECT_EQ(LogRig::log(), kEarlier + kLine + "\nthe next line\n");
  }
}

/// The disk is full behind any byte of the line, and has room again for the next one.
TEST(LogFaults, ALineThatWasCutShortDoesNotRunIntoTheNext) {
  LogRig rig({"append", kLine, "the next line"});
  for (std::uint32_t number = 1; number <= kLine.size() + 1; ++number) {
    SCOPED_TRACE("written: " + std::to_string(number - 1));
    LogRig::set_log(kEarlier);
    Plan plan{.write_limit = 1};
    plan.faults[0] = log_fault(Call::write, number, ENOSPC);
    EXPECT_EQ(rig.run(plan).output, "-6\n0\n");
    const std::string part = kLine.substr(0, number - 1);
    const std::string without_part = kEarlier + "the next line\n";
    const std::string with_part = kEarlier + part + "\nthe next line\n";
    EXPECT_TRUE(LogRig::log() == without_part || LogRig::log() == with_part) << LogRig::log();
  }
}

/// A signal at the moment when the writer looks how the last line ends.
TEST(LogFaults, ASignalDoesNotMakeALineRunIntoOneThatWasCutShort) {
  LogRig rig({"append", kLine});
  LogRig::set_log(kEarlier + "cut");
  EXPECT_EQ(rig.run(log_fault(Call::pread, 1, EINTR)).output, "0\n");
  EXPECT_EQ(LogRig::log(), kEarlier + "cut\n" + kLine + "\n");
}

/// A link is hostile here, too, wherever it leads: whoever may write the folder could aim it.
TEST(LogFaults, OnlyARegularFileIsWrittenTo) {
  LogRig rig({"append", kLine});
  for (const HostileFile& hostile : hostile_files()) {
    SCOPED_TRACE(hostile.kind);
    std::filesystem::remove(fixed_paths::kLostBitLog);
    hostile.make(fixed_paths::kLostBitLog);
    EXPECT_EQ(rig.run().output, "-1\n");
  }
  std::filesystem::remove(fixed_paths::kLostBitLog);
  write_file("target", kEarlier);
  std::filesystem::create_symlink(std::filesystem::absolute("target"), fixed_paths::kLostBitLog);
  EXPECT_EQ(rig.run().output, "-1\n");
  EXPECT_EQ(read_file("target"), kEarlier);
}

TEST(LogFaults, CallsOfEveryFunctionAreInTheTable) {
  LogRig rig({"append", kLine});
  LogRig::set_log(kFull);
  const Tally tally = rig.run().tally;
  for (std::size_t call = 0; call < kCalls; ++call) {
    const std::uint32_t count = tally.calls[call][static_cast<std::size_t>(Role::log)];
    const bool known = std::ranges::any_of(
        kTable, [=](const LogExpectation& row) { return row.call == static_cast<Call>(call); });
    EXPECT_TRUE(count == 0 || known) << kCallNames[call];
  }
}

}  // namespace
}  // namespace rlx::testing
