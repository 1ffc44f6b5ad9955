#include "spooler/farm/farm.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>

namespace rlx::testing {

namespace {

constexpr int kServers = 3;
constexpr int kClients = 4;
constexpr const char* kScripts = RLX_PROJECT_DIRECTORY "/examples/print-farm/";

void expect_done(const Outcome& outcome) {
  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.messages;
}

Command watch_command(const CupsServer& server) {
  Command command = server.client({std::string(kScripts) + "farm-watch", "--interval", "1"});
  command.error_file = server.directory() + "/temporary/watch";
  command.has_pipes = true;
  return command;
}

/// True when a job was cut off inside the bytes of a job that is expected.
bool is_part_of(const std::string& part, const std::map<std::string, std::string>& names) {
  return std::any_of(names.begin(), names.end(),
                     [&](const auto& expected) { return expected.first.starts_with(part); });
}

}  // namespace

FarmServer::FarmServer(const std::string& forms) {
  Command command = cups_.client({std::string(kScripts) + "set-up-server", "lines", "--device",
                                  printer_.uri(), "--forms", forms});
  command.environment["RLX_QUEUE"] = installed_tree() + "/sbin/rlx-queue";
  expect_done(run_command(command));
  EXPECT_TRUE(comes_true(Seconds(10), [this] {
    return cups_.run({"cupsctl"}).output.find("DirtyCleanInterval=0") != std::string::npos;
  }));
}

std::string FarmServer::uri() const {
  return "ipp://127.0.0.1:" + std::to_string(cups_.port()) + "/printers/lines";
}

void FarmServer::watch() {
  watch_ = std::make_unique<Process>(watch_command(cups_));
}

void FarmServer::lose_power() {
  watch_.reset();
  cups_.kill();
  for (const pid_t process : cups_.processes()) {
    ::kill(process, SIGKILL);
  }
  EXPECT_TRUE(comes_true(Seconds(10), [this] { return cups_.processes().empty(); }));
}

void FarmServer::crash() {
  watch_.reset();
  cups_.kill();
}

void FarmServer::come_back() {
  EXPECT_TRUE(comes_true(Seconds(30), [this] { return cups_.processes().empty(); }));
  expect_done(run_command({{std::string(kScripts) + "skip-job-ids", cups_.directory() + "/cache",
                            cups_.spool_directory()}}));
  cups_.start();
  watch();
}

int FarmServer::starts_of(const std::string& job_name) {
  int starts = 0;
  for (const auto& [id, job] : cups_.jobs("lines")) {
    if (job.name == job_name) {
      std::istringstream lines(cups_.log_of(id));
      for (std::string line; std::getline(lines, line);) {
        starts += line.find("Started backend ") != std::string::npos ? 1 : 0;
      }
    }
  }
  return starts;
}

std::vector<FarmJob> farm_jobs(int count, const std::string& forms) {
  std::vector<FarmJob> jobs;
  for (int number = 1; number <= count; ++number) {
    const int pages = 1 + number % 3;
    FarmJob job;
    job.name = "job-" + std::to_string(number);
    job.text = numbered_pages(job.name, pages, 40);
    job.impressions = pages;
    if (number % 2 == 0) {
      job.options.emplace_back("form=LABEL");
      job.filter_options = {"-n", "LABEL", "-p", forms};
    }
    jobs.push_back(job);
  }
  return jobs;
}

FarmTest::FarmTest() {
  Command command = front_.client(
      {std::string(kScripts) + "set-up-front", "farm", "--lanes", std::to_string(kLanes)});
  for (int server = 0; server < kServers; ++server) {
    servers_.push_back(std::make_unique<FarmServer>(forms()));
    command.words.push_back(servers_.back()->uri());
    servers_.back()->watch();
  }
  command.environment["CUPS_BACKENDS"] = front_.directory() + "/bin/backend";
  expect_done(run_command(command));
  EXPECT_TRUE(comes_true(Seconds(10), [this] {
    return front_.run({"cupsctl"}).output.find("DirtyCleanInterval=0") != std::string::npos;
  }));
  watch_ = std::make_unique<Process>(watch_command(front_));
}

void FarmTest::submit(const std::vector<FarmJob>& jobs) {
  const std::string folder = make_directory("jobs");
  std::vector<std::string> scripts(kClients);
  for (std::size_t number = 0; number < jobs.size(); ++number) {
    const FarmJob& job = jobs[number];
    const std::string file = folder + "/" + job.name;
    write_file(file, job.text);
    std::string line = "lp -d farm -t " + job.name;
    for (const std::string& option : job.options) {
      line += " -o " + option;
    }
    // A client that is told no tries again: that job was not taken.
    scripts[number % kClients] += "until " + line + ' ' + file + " >/dev/null; do sleep 1; done\n";
  }
  for (const std::string& script : scripts) {
    clients_.push_back(std::make_unique<Process>(front_.client({"sh", "-c", script})));
  }
}

void FarmTest::wait_for_clients() {
  for (const auto& client : clients_) {
    EXPECT_EQ(client->wait(Seconds(120)), 0);
  }
  clients_.clear();
}

void FarmTest::wait_for_front(Seconds patience) {
  EXPECT_TRUE(comes_true(patience, [this] {
    return front_.run({"lpstat", "-o"}).output.empty();
  })) << front_.run({"lpstat", "-l", "-o"}).output;
}

std::size_t FarmTest::printed() {
  std::size_t count = 0;
  for (const auto& server : servers_) {
    count += server->printer().jobs().size();
  }
  return count;
}

int FarmTest::expect_all_printed(const std::vector<FarmJob>& jobs) {
  std::map<std::string, std::string> names;
  for (const FarmJob& job : jobs) {
    names[filtered(job.filter_options, job.text)] = job.name;
  }
  EXPECT_EQ(names.size(), jobs.size()) << "two jobs have the same bytes";
  std::map<std::string, int> times;
  for (const auto& server : servers_) {
    for (const PrinterJob& received : server->printer().jobs()) {
      if (received.is_whole() && names.contains(received.bytes)) {
        ++times[names[received.bytes]];
      } else {
        EXPECT_TRUE(is_part_of(received.bytes, names))
            << "no job of ours, " << received.bytes.size() << " bytes, " << received.end;
        EXPECT_FALSE(received.ended);
      }
    }
  }
  int repeated = 0;
  for (const FarmJob& job : jobs) {
    EXPECT_GE(times[job.name], 1) << job.name << " was lost";
    if (times[job.name] > 1) {
      ++repeated;
      int starts = 0;
      for (const auto& server : servers_) {
        starts += server->starts_of(job.name);
      }
      EXPECT_LE(times[job.name], starts) << job.name << " came from nowhere";
    }
  }
  return repeated;
}

void FarmTest::expect_lanes_idle() {
  const std::string queues = front_.run({"lpstat", "-p"}).output;
  EXPECT_EQ(queues.find("disabled"), std::string::npos) << queues;
}

}  // namespace rlx::testing
