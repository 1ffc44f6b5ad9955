// One queue, three print servers behind it, all real: cupsd four times, each with its own folders
// and port, set up with the sample scripts of examples/print-farm.
#include <gtest/gtest.h>

#include "spooler/farm/farm.h"

namespace rlx::testing {
namespace {

class Farm : public FarmTest {};
class LongFarm : public FarmTest {};

TEST_F(Farm, OptionsAndPagesOfAJobPassTheFront) {
  const std::string text = numbered_pages("options", 3);
  const int id = front_.submit(
      "farm", text,
      {"form=LABEL", "lpi=8", "cpi=12", "media=A3", "media-source=tray-2",
       "sides=two-sided-short-edge", "orientation-requested=4", "copies=3", "rlx-undefined=ubar",
       "rlx-extended=true", "page-offset-x=1440", "page-offset-y=2880"});
  EXPECT_EQ(front_.wait_for("farm", id).state, "completed");
  ASSERT_EQ(printed(), 1U);
  PrinterJob through;
  for (const auto& server : servers_) {
    if (!server->printer().jobs().empty()) {
      through = server->printer().jobs()[0];
      const auto jobs = server->cups().jobs("lines");
      ASSERT_EQ(jobs.size(), 1U);
      EXPECT_EQ(jobs.begin()->second.impressions, 9);
      EXPECT_EQ(jobs.begin()->second.state, "completed");
    }
  }
  // The same job, handed to a server itself.
  FarmServer& server = *servers_[0];
  const std::size_t before = server.printer().jobs().size();
  server.cups().submit(
      "lines", text,
      {"form=LABEL", "lpi=8", "cpi=12", "media=A3", "media-source=tray-2",
       "sides=two-sided-short-edge", "orientation-requested=4", "copies=3", "rlx-undefined=ubar",
       "rlx-extended=true", "page-offset-x=1440", "page-offset-y=2880"});
  ASSERT_EQ(server.printer().wait_for_jobs(before + 1).size(), before + 1);
  expect_same_job(server.printer().jobs().back().bytes, through);
  EXPECT_EQ(through.impressions, 9U);
}

/// A crash swallows jobs that a server has taken; here it is made to keep none on its disk. `ipp`
/// by itself calls them completed.
TEST_F(LongFarm, JobsThatAServerForgotAreSentAgain) {
  FarmServer& server = *servers_[1];
  EXPECT_EQ(server.cups().run({"cupsctl", "DirtyCleanInterval=600"}).status, 0);
  EXPECT_TRUE(comes_true(Seconds(10), [&] {
    return server.cups().run({"cupsctl"}).output.find("DirtyCleanInterval=600") !=
           std::string::npos;
  }));
  server.printer().tell("away");
  const auto jobs = farm_jobs(10, forms());
  submit(jobs);
  wait_for_clients();
  ASSERT_TRUE(comes_true(Seconds(30), [&] { return printed() == jobs.size() - kLanes; }));
  server.lose_power();
  server.printer().tell("back");
  server.come_back();
  EXPECT_EQ(server.cups().run({"lpstat", "-o"}).output, "") << "it has forgotten nothing";
  // Nobody gets the number of a job that is forgotten.
  EXPECT_GT(server.cups().submit("lines", jobs[0].text, {"job-hold-until=indefinite"}), 1000);
  wait_for_front(Seconds(60));
  EXPECT_EQ(expect_all_printed(jobs), 0);
  EXPECT_EQ(printed(), jobs.size());
}

/// The front is set up anew with other servers: those that are named count, and no others.
TEST_F(LongFarm, FrontIsSetUpAnew) {
  const std::string script = RLX_PROJECT_DIRECTORY "/examples/print-farm/set-up-front";
  const auto members = [this] { return front_.run({"lpstat", "-c", "farm"}).output; };
  EXPECT_NE(members().find("farm-3-2"), std::string::npos) << members();
  const auto set_up = [&](const std::vector<std::string>& uris) {
    Command command = front_.client({script, "farm", "--lanes", "1"});
    command.words.insert(command.words.end(), uris.begin(), uris.end());
    command.environment["CUPS_BACKENDS"] = front_.directory() + "/bin/backend";
    return run_command(command);
  };
  const Outcome fewer = set_up({servers_[1]->uri()});
  EXPECT_EQ(fewer.status, 0) << fewer.messages;
  EXPECT_EQ(members(), "members of class farm:\n\tfarm-1-1\n");
  EXPECT_EQ(front_.wait_for("farm", front_.submit("farm", "A\f")).state, "completed");
  EXPECT_EQ(servers_[1]->printer().wait_for_jobs(1).size(), 1U);
  const Outcome more = set_up({servers_[1]->uri(), servers_[2]->uri()});
  EXPECT_EQ(more.status, 0) << more.messages;
  EXPECT_EQ(members(), "members of class farm:\n\tfarm-1-1\n\tfarm-2-1\n");
}

/// Jobs with control sequences, and those in the printer's language, are passed on as such.
TEST_F(LongFarm, FormatsPassTheFront) {
  const std::string lines = "A\033Q1;100!C\nB\f";
  front_.wait_for("farm", front_.submit("farm", lines));
  const std::string language = filtered({}, "PLAIN\f");
  front_.wait_for("farm", front_.submit("farm", language));
  std::set<std::string> bytes;
  for (const auto& server : servers_) {
    for (const PrinterJob& job : server->printer().jobs()) {
      bytes.insert(job.bytes);
    }
  }
  EXPECT_EQ(bytes, (std::set<std::string>{filtered({}, lines), language}));
}

TEST_F(LongFarm, JobsGoElsewhereWhenAServerIsAway) {
  servers_[1]->lose_power();
  const auto jobs = farm_jobs(12, forms());
  submit(jobs);
  wait_for_clients();
  wait_for_front(Seconds(60));
  EXPECT_EQ(expect_all_printed(jobs), 0);
  EXPECT_EQ(printed(), jobs.size());
  EXPECT_TRUE(servers_[1]->printer().jobs().empty());
  servers_[1]->come_back();
  expect_lanes_idle();
}

/// A printer that takes nothing keeps a job a lane, and no more.
TEST_F(LongFarm, PrinterThatIsAwayKeepsAJobALane) {
  servers_[2]->printer().tell("away");
  const auto jobs = farm_jobs(15, forms());
  submit(jobs);
  wait_for_clients();
  EXPECT_TRUE(comes_true(Seconds(30), [&] { return printed() >= jobs.size() - kLanes; }));
  servers_[2]->printer().tell("back");
  wait_for_front(Seconds(60));
  EXPECT_EQ(expect_all_printed(jobs), 0);
  EXPECT_EQ(printed(), jobs.size());
}

/// More jobs with a fault than there are lanes: without farm-watch all lanes would wait for ever.
TEST_F(Farm, JobsWithAFaultBlockNoLane) {
  for (int job = 0; job < 2 * kLanes * 3; ++job) {
    front_.submit("farm", "A\f", {"form=NOSUCH"});
  }
  const auto jobs = farm_jobs(6, forms());
  submit(jobs);
  wait_for_clients();
  wait_for_front(Seconds(60));
  EXPECT_EQ(expect_all_printed(jobs), 0);
  int held = 0;
  for (const auto& server : servers_) {
    for (const auto& [id, job] : server->cups().jobs("lines")) {
      if (job.state == "pending-held") {
        EXPECT_NE(job.message.find("NOSUCH"), std::string::npos) << job.message;
        ++held;
      }
    }
  }
  EXPECT_EQ(held, 2 * kLanes * 3);
  // Mended, it prints.
  put_form("NOSUCH", "print 4 36000\n");
  FarmServer& server = *servers_[0];
  const std::size_t before = server.printer().jobs().size();
  for (const auto& [id, job] : server.cups().jobs("lines")) {
    if (job.state == "pending-held") {
      EXPECT_EQ(server.cups().run({"lp", "-i", std::to_string(id), "-H", "resume"}).status, 0);
      ASSERT_EQ(server.printer().wait_for_jobs(before + 1).size(), before + 1);
      expect_same_job(filtered({"-n", "NOSUCH", "-p", forms()}, "A\f"),
                      server.printer().jobs().back());
      break;
    }
  }
}

/// In the middle of the jobs a server goes, and comes back later.
class FarmKilled : public FarmTest {
 protected:
  enum class End : std::uint8_t { power, crash };

  void kill_in_the_middle(int count, End end) {
    for (const auto& server : servers_) {
      server->printer().tell("rate 3000");
    }
    const auto jobs = farm_jobs(count, forms());
    submit(jobs);
    const auto third = static_cast<std::size_t>(count / 3);
    ASSERT_TRUE(comes_true(Seconds(120), [&] { return printed() >= third; }));
    // The worst moment: it has just taken a job. cupsd, farm-watch and its sleep are there always.
    comes_true(Seconds(10), [&] { return servers_[1]->cups().processes().size() > 3; });
    if (end == End::power) {
      servers_[1]->lose_power();
    } else {
      servers_[1]->crash();
    }
    EXPECT_TRUE(comes_true(Seconds(120), [&] { return printed() >= 2 * third; }));
    servers_[1]->come_back();
    wait_for_clients();
    wait_for_front(Seconds(120));
    const int repeated = expect_all_printed(jobs);
    std::printf("%d jobs, %zu connections of printers, %d jobs printed more than once\n", count,
                printed(), repeated);
    // Those that the server had, and one whose answer did not reach the front any more.
    EXPECT_LE(repeated, 2 * kLanes);
    expect_lanes_idle();
  }
};

TEST_F(FarmKilled, ThirtyJobsPowerLost) {
  kill_in_the_middle(30, End::power);
}

class LongFarmKilled : public FarmKilled {};

/// What the front had handed on and not yet noted as completed it hands on again: a job a lane.
TEST_F(LongFarmKilled, FrontKilled) {
  for (const auto& server : servers_) {
    server->printer().tell("rate 3000");
  }
  const auto jobs = farm_jobs(60, forms());
  submit(jobs);
  wait_for_clients();
  front_.kill();
  EXPECT_TRUE(comes_true(Seconds(60), [this] { return front_.processes().size() <= 2; }));
  front_.start();
  wait_for_front(Seconds(120));
  const int repeated = expect_all_printed(jobs);
  std::printf("front killed: %d jobs printed more than once\n", repeated);
  EXPECT_LE(repeated, 2 * kLanes * static_cast<int>(servers_.size()));
}

TEST_F(LongFarmKilled, FiveHundredJobsPowerLost) {
  kill_in_the_middle(500, End::power);
}

TEST_F(LongFarmKilled, FiveHundredJobsCrash) {
  kill_in_the_middle(500, End::crash);
}

}  // namespace
}  // namespace rlx::testing
