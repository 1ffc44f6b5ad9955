#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "spooler/app/app_server.h"

// Many jobs and clients.
namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

class AppMany : public AppTest {
 protected:
  /// Each client submits its jobs one after another, all clients at once.
  /// @return what has to be printed, and how often.
  std::map<std::string, int> submit_from(int clients, int jobs) {
    std::vector<std::thread> threads;
    for (int client = 0; client < clients; ++client) {
      threads.emplace_back([this, client, jobs] {
        for (int job = 0; job < jobs; ++job) {
          EXPECT_GT(server_.submit("office", text_of(client, job)), 0);
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    std::map<std::string, int> expected;
    for (int client = 0; client < clients; ++client) {
      for (int job = 0; job < jobs; ++job) {
        ++expected[filtered({}, text_of(client, job))];
      }
    }
    return expected;
  }
  static std::string text_of(int client, int job) {
    return numbered_pages("C" + std::to_string(client) + "J" + std::to_string(job), 1 + job % 3);
  }
  void expect_printed(const std::map<std::string, int>& expected, std::size_t jobs,
                      Seconds patience) {
    std::map<std::string, int> printed;
    for (const PrinterJob& job : printer_.wait_for_jobs(jobs, patience)) {
      EXPECT_TRUE(job.is_whole()) << job.end;
      ++printed[job.bytes];
    }
    EXPECT_EQ(printed, expected);
  }
  long memory_kilobytes() const {
    std::ifstream status("/proc/" + std::to_string(server_.process()) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmRSS:")) {
        return std::stol(line.substr(6));
      }
    }
    return 0;
  }
  long descriptors() const {
    const fs::path folder = "/proc/" + std::to_string(server_.process()) + "/fd";
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
  }
};

TEST_F(AppMany, FourClientsWithTenJobsEach) {
  expect_printed(submit_from(4, 10), 40, Seconds(60));
}

using LongAppMany = AppMany;

TEST_F(LongAppMany, SixteenClientsWithFiftyJobsEach) {
  expect_printed(submit_from(16, 50), 800, Seconds(240));
}

TEST_F(LongAppMany, MemoryAndDescriptorsStayFlat) {
  constexpr std::size_t kRounds = 10;
  constexpr std::size_t kJobs = 500;
  constexpr long kMostGrowth = 4096;
  long memory = 0;
  long open_files = 0;
  for (std::size_t round = 1; round <= kRounds; ++round) {
    submit_from(4, kJobs / 4);
    ASSERT_EQ(printer_.wait_for_jobs(round * kJobs, Seconds(300)).size(), round * kJobs);
    // What PAPPL remembers of jobs grows to its bound first.
    if (round == 2) {
      memory = memory_kilobytes();
      open_files = descriptors();
    }
    RecordProperty("memory_" + std::to_string(round), static_cast<int>(memory_kilobytes()));
    RecordProperty("descriptors_" + std::to_string(round), static_cast<int>(descriptors()));
  }
  EXPECT_LE(memory_kilobytes(), memory + kMostGrowth) << "from " << memory;
  EXPECT_LE(descriptors(), open_files + 2);
}

}  // namespace
}  // namespace rlx::testing
