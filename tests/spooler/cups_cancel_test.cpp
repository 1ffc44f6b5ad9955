// Jobs that are cancelled: the printer gets whole blocks and a job end as long as it takes bytes,
// and no process is left (the server's end looks for that).
#include <gtest/gtest.h>

#include <algorithm>

#include "spooler/spooler_test.h"

namespace rlx::testing {
namespace {

/// How far the job has come when it is cancelled.
enum class Moment : std::uint8_t { waiting, connecting, beginning, middle, behind_the_filter };

struct CancelCase {
  ServerUser user;
  Moment moment;
};

/// More than the connection's buffers take while the printer takes nothing.
constexpr int kPages = 60000;

constexpr const char* kEndOfJob = "\033Q0;0000000020/a\033c\033\177";

class CupsCancel : public SpoolerTest, public ::testing::WithParamInterface<CancelCase> {
 protected:
  void SetUp() override {
    if (GetParam().user == ServerUser::root && !is_root()) {
      GTEST_SKIP() << "only root can run cupsd as root";
    }
  }
};

/// Processes of a job: not cupsd.
std::size_t job_processes(const CupsServer& server) {
  return server.processes().size() - 1;
}

void expect_beginning_of(const std::string& whole, const PrinterJob& job) {
  EXPECT_TRUE(job.is_whole()) << job.end << (job.faults.empty() ? "" : ": " + job.faults.front());
  const auto [end, other] =
      std::mismatch(whole.begin(), whole.end(), job.bytes.begin(), job.bytes.end());
  // The last page may end early; then come a form feed and the job end.
  constexpr std::ptrdiff_t kMostBytesOfAnEnd = 16384;
  EXPECT_LT(job.bytes.end() - other, kMostBytesOfAnEnd);
  EXPECT_NE(job.bytes.find(kEndOfJob), std::string::npos);
}

TEST_P(CupsCancel, EndsThePrintersJob) {
  CupsServer server({.user = GetParam().user});
  server.add_queue("q", printer_, {"--forms", forms()});
  const std::string large = numbered_pages("large", kPages, 10);
  const std::string small = numbered_pages("small", 2);
  const std::string& text = GetParam().moment == Moment::behind_the_filter ? small : large;
  switch (GetParam().moment) {
    case Moment::waiting:
      server.run({"cupsdisable", "q"});
      break;
    case Moment::connecting:
      printer_.tell("away");
      break;
    case Moment::beginning:
      printer_.tell("stall 50");
      break;
    case Moment::middle:
      printer_.tell("stall 1000000");
      break;
    case Moment::behind_the_filter:
      printer_.tell("stall 100");
      break;
  }
  const int id = server.submit("q", text);
  const bool reaches_printer =
      GetParam().moment != Moment::waiting && GetParam().moment != Moment::connecting;
  if (reaches_printer) {
    ASSERT_TRUE(printer_.wait_for_stall());
  } else if (GetParam().moment == Moment::connecting) {
    ASSERT_TRUE(comes_true(Seconds(10), [&] {
      return server.log_of(id).find("Connection") != std::string::npos ||
             server.job("q", id).message.find("not responding") != std::string::npos;
    }));
  }
  EXPECT_EQ(server.run({"cancel", std::to_string(id)}).status, 0);
  if (reaches_printer) {
    printer_.tell("go");
    ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
    expect_beginning_of(filtered({}, text), printer_.jobs()[0]);
    // What was handed on before is not taken back; the rest is not printed.
    if (GetParam().moment != Moment::behind_the_filter) {
      EXPECT_LT(printer_.jobs()[0].pages, kPages);
    }
  }
  EXPECT_EQ(server.wait_for("q", id).state, "canceled");
  EXPECT_TRUE(comes_true(Seconds(8), [&] { return job_processes(server) == 0; }));
  // The queue goes on.
  printer_.tell("back");
  server.run({"cupsenable", "q"});
  const std::size_t before = printer_.jobs().size();
  const int next = server.submit("q", small);
  EXPECT_EQ(server.wait_for("q", next).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(before + 1).size(), before + 1);
  expect_same_job(filtered({}, small), printer_.jobs().back());
}

std::vector<CancelCase> all_cases() {
  std::vector<CancelCase> cases;
  for (const ServerUser user : {ServerUser::root, ServerUser::unprivileged}) {
    for (const Moment moment : {Moment::waiting, Moment::connecting, Moment::beginning,
                                Moment::middle, Moment::behind_the_filter}) {
      cases.push_back({user, moment});
    }
  }
  return cases;
}

std::string name_of(const ::testing::TestParamInfo<CancelCase>& info) {
  constexpr std::array<const char*, 5> kMoments{"Waiting", "Connecting", "Beginning", "Middle",
                                                "BehindTheFilter"};
  return std::string(info.param.user == ServerUser::root ? "Root" : "Unprivileged") +
         kMoments.at(static_cast<std::size_t>(info.param.moment));
}

INSTANTIATE_TEST_SUITE_P(Moments, CupsCancel, ::testing::ValuesIn(all_cases()), name_of);

}  // namespace
}  // namespace rlx::testing
