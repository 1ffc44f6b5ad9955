// Many jobs, and a spooler in trouble: every job is accounted for.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <thread>

#include "spooler/spooler_test.h"
#include "support/escaped_bytes.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

class LongCupsMany : public CupsTest {};

/// What reached the printer, and how often.
std::map<std::string, int> counted(const std::vector<PrinterJob>& jobs) {
  std::map<std::string, int> counts;
  for (const PrinterJob& job : jobs) {
    EXPECT_TRUE(job.is_whole()) << job.end;
    ++counts[job.bytes];
  }
  return counts;
}

TEST_F(LongCupsMany, TwoHundredJobsOfEightClients) {
  constexpr int kClients = 8;
  constexpr int kJobs = 25;
  const std::string folder = make_directory("jobs");
  std::map<std::string, int> expected;
  long impressions = 0;
  for (int client = 0; client < kClients; ++client) {
    for (int job = 0; job < kJobs; ++job) {
      const std::string name = std::to_string(client) + "-" + std::to_string(job);
      const std::string text = numbered_pages(name, 1 + job % 3);
      write_file(folder + "/" + name, text);
      const bool has_form = job % 2 == 1;
      ++expected[filtered(has_form ? std::vector<std::string>{"-n", "LABEL", "-p", forms()}
                                   : std::vector<std::string>{},
                          text)];
      impressions += 1 + job % 3;
    }
  }
  // Two jobs of each client one after the other, the clients side by side.
  const std::string script =
      "i=0; while [ $i -lt " + std::to_string(kJobs) + " ]; do " +
      "form=None; [ $((i % 2)) = 0 ] || form=LABEL; lp -d q -o form=$form \"$0-$i\" >/dev/null || "
      "exit 1; i=$((i + 1)); done";
  std::vector<std::unique_ptr<Process>> clients;
  clients.reserve(kClients);
  for (int client = 0; client < kClients; ++client) {
    clients.push_back(std::make_unique<Process>(
        server_.client({"sh", "-c", script, folder + "/" + std::to_string(client)})));
  }
  for (const auto& client : clients) {
    EXPECT_EQ(client->wait(Seconds(60)), 0);
  }
  const auto& printed = printer_.wait_for_jobs(kClients * kJobs, Seconds(120));
  EXPECT_EQ(counted(printed), expected);
  long counted_by_cups = 0;
  comes_true(Seconds(10), [&] { return is_settled(server_.jobs("q").rbegin()->second); });
  const auto jobs = server_.jobs("q");
  EXPECT_EQ(jobs.size(), static_cast<std::size_t>(kClients * kJobs));
  for (const auto& [id, job] : jobs) {
    EXPECT_EQ(job.state, "completed") << id << ": " << job.message;
    counted_by_cups += job.impressions;
  }
  EXPECT_EQ(counted_by_cups, impressions);
}

/// Every golden job that a queue takes is printed as the filter prints it, or stopped with the
/// filter's words.
TEST_F(LongCupsMany, EveryGoldenJob) {
  int completed = 0;
  int stopped = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(RLX_CASES_DIRECTORY)) {
    const std::string name = entry.path().filename();
    if (!fs::exists(entry.path() / "stdin.esc") || name.starts_with("framed_")) {
      continue;
    }
    SCOPED_TRACE(name);
    const std::string job = decode_escaped(read_file(entry.path() / "stdin.esc")).value();
    const Outcome by_hand =
        run_command({{installed_tree() + "/libexec/zqeuctorlx", "-p", forms()}}, job);
    const std::size_t before = printer_.jobs().size();
    const std::size_t awaited = before + (by_hand.output.empty() ? 0 : 1);
    const CupsJob settled = server_.wait_for("q", server_.submit("q", job));
    if (by_hand.status == 0) {
      EXPECT_EQ(settled.state, "completed") << settled.message;
      ++completed;
    } else {
      EXPECT_EQ(settled.state, "processing-stopped");
      EXPECT_NE(settled.message.find(by_hand.messages.substr(
                    by_hand.messages.find(": ") + 2,
                    by_hand.messages.find('\n') - by_hand.messages.find(": ") - 2)),
                std::string::npos)
          << settled.message << " lacks " << by_hand.messages;
      ++stopped;
    }
    const auto& jobs = printer_.wait_for_jobs(awaited);
    ASSERT_EQ(jobs.size(), awaited);
    if (awaited > before) {
      EXPECT_EQ(describe_difference(by_hand.output, jobs.back().bytes), "");
    }
  }
  EXPECT_GT(completed, 90);
  EXPECT_GT(stopped, 2);
}

/// cupsd writes what it knows of jobs and queues within DirtyCleanInterval, 30 seconds if nobody
/// says otherwise; jobs that came later are lost with it.
class LongCupsKilled : public SpoolerTest {};

TEST_F(LongCupsKilled, TwentyJobsWait) {
  CupsServer server({.settings = "DirtyCleanInterval 0\n"});
  server.add_queue("q", printer_, {"--forms", forms()});
  printer_.tell("rate 30000");
  std::vector<int> ids;
  std::map<std::string, int> expected;
  for (int job = 0; job < 20; ++job) {
    const std::string text = numbered_pages("job " + std::to_string(job), 100);
    ids.push_back(server.submit("q", text));
    expected[filtered({}, text)] = 1;
  }
  ASSERT_GE(printer_.wait_for_jobs(5, Seconds(60)).size(), 5U);
  server.kill();
  printer_.tell("go");
  // What cupsd had started goes on, or ends: the printer's job is a whole one all the same.
  EXPECT_TRUE(comes_true(Seconds(30), [&] { return server.processes().empty(); }));
  server.start();
  for (const int id : ids) {
    const CupsJob job = server.wait_for("q", id, Seconds(60));
    EXPECT_EQ(job.state, "completed") << id << ": " << job.message;
  }
  std::map<std::string, int> printed = counted(printer_.jobs());
  for (const auto& [bytes, count] : expected) {
    EXPECT_GE(printed[bytes], 1);
    printed.erase(bytes);
  }
  EXPECT_TRUE(printed.empty());
  // Twice at most the job that was being printed, and the one whose end cupsd had not noted yet.
  EXPECT_LE(printer_.jobs().size(), 22U);
}

/// What stops a job in mid-print without giving it up: it prints from its beginning later.
class CupsStopped : public SpoolerTest {
 protected:
  /// Prints a large job and lets `stop` and `go_on` happen while the printer has begun with it.
  template <typename Stop, typename GoOn>
  void expect_printed_again(CupsServer& server, Stop stop, GoOn go_on) {
    server.add_queue("q", printer_);
    const std::string text = numbered_pages("stopped", 60000, 10);
    printer_.tell("stall 50000");
    const int id = server.submit("q", text);
    ASSERT_TRUE(printer_.wait_for_stall());
    stop();
    printer_.tell("go");
    ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
    EXPECT_LT(printer_.jobs()[0].pages, 60000U);
    go_on();
    const CupsJob job = server.wait_for("q", id, Seconds(60));
    EXPECT_EQ(job.state, "completed") << job.message;
    ASSERT_EQ(printer_.wait_for_jobs(2).size(), 2U);
    EXPECT_EQ(describe_difference(filtered({}, text), printer_.jobs()[1].bytes), "");
  }
};

TEST_F(CupsStopped, CupsdIsStoppedAndStarted) {
  CupsServer server;
  expect_printed_again(
      server, [&] { server.stop(); },
      [&] {
        EXPECT_TRUE(comes_true(Seconds(10), [&] { return server.processes().empty(); }));
        server.start();
      });
}

TEST_F(CupsStopped, QueueIsDisabledAndEnabled) {
  CupsServer server;
  expect_printed_again(
      server,
      [&] {
        EXPECT_EQ(server.run({"cupsdisable", "q"}).status, 0);
      },
      [&] {
        EXPECT_EQ(server.run({"cupsenable", "q"}).status, 0);
      });
}

/// A small disk of the test's own.
class SmallDisk {
 public:
  explicit SmallDisk(const std::string& size) : path_(make_directory("disk")) {
    is_mounted_ =
        run_command({{"mount", "-t", "tmpfs", "-o", "size=" + size, "tmpfs", path_}}).status == 0;
  }
  ~SmallDisk() {
    if (is_mounted_) {
      EXPECT_EQ(run_command({{"umount", path_}}).status, 0);
    }
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool is_mounted() const { return is_mounted_; }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool is_mounted_ = false;
};

class CupsDiskFull : public SpoolerTest {};

TEST_F(CupsDiskFull, JobsAreRefusedOrPrintedWhole) {
  const SmallDisk disk("1m");
  if (!disk.is_mounted()) {
    GTEST_SKIP() << "only root can have a small disk of its own";
  }
  CupsServer server({.spool_directory = disk.path() + "/spool"});
  server.add_queue("q", printer_, {"--forms", forms()});
  const std::string small = numbered_pages("small", 2);
  const int waiting = server.submit("q", small, {"copies=4", "job-hold-until=indefinite"});
  // More than there is room for: lp says so, and no part of it is printed.
  const Outcome refused = server.run({"lp", "-d", "q"}, numbered_pages("large", 40000, 10));
  EXPECT_NE(refused.status, 0) << refused.output;
  EXPECT_NE(refused.messages, "");
  // A job that has come prints although nothing fits any more.
  write_file(disk.path() + "/filler", "");
  run_command({{"dd", "if=/dev/zero", "of=" + disk.path() + "/filler", "bs=64k"}});
  EXPECT_EQ(server.run({"lp", "-i", std::to_string(waiting), "-H", "resume"}).status, 0);
  EXPECT_EQ(server.wait_for("q", waiting).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  EXPECT_EQ(printer_.jobs()[0].impressions, 8U);
  const Outcome full = server.run({"lp", "-d", "q"}, small);
  if (full.status == 0) {
    ADD_FAILURE() << "taken, and what then? " << full.output << server.error_log();
  }
  fs::remove(disk.path() + "/filler");
  const int next = server.submit("q", small);
  EXPECT_EQ(server.wait_for("q", next).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(2).size(), 2U);
  expect_same_job(filtered({}, small), printer_.jobs()[1]);
}

}  // namespace
}  // namespace rlx::testing
