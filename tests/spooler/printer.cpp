#include "spooler/printer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <nlohmann/json.hpp>

#include "spooler/installed_tree.h"
#include "support/descriptors.h"

namespace rlx::testing {

namespace {

constexpr Seconds kCommandPatience(10);

}  // namespace

Printer::Printer() : directory_(make_directory("printer")) {
  process_ = std::make_unique<Process>(Command{
      .words = {RLX_TEST_PRINTER, directory_}, .environment = {}, .user = {}, .has_pipes = true});
  EXPECT_TRUE(comes_true(kCommandPatience, [this] { return read_line(Seconds(0)), port_ != 0; }));
}

std::string Printer::uri() const {
  return "socket://127.0.0.1:" + std::to_string(port_);
}

void Printer::tell(const std::string& command) {
  done_.clear();
  stalled_ = false;
  const std::string line = command + '\n';
  EXPECT_EQ(write(process_->input(), line.data(), line.size()), static_cast<ssize_t>(line.size()));
  EXPECT_TRUE(
      comes_true(kCommandPatience, [&, this] { return read_line(Seconds(0)), done_ == command; }))
      << "the printer does not " << command;
}

const std::vector<PrinterJob>& Printer::wait_for_jobs(std::size_t count, Seconds patience) {
  comes_true(patience, [&, this] {
    while (read_line(Seconds(0))) {
    }
    return jobs_.size() >= count;
  });
  return jobs_;
}

bool Printer::wait_for_stall(Seconds patience) {
  return comes_true(patience, [this] { return read_line(Seconds(0)), stalled_; });
}

/// Reads what the printer tells. @return false when there is no line.
bool Printer::read_line(Seconds patience) {
  std::size_t end = waiting_.find('\n');
  pollfd ready{process_->output(), POLLIN, 0};
  const int milliseconds = static_cast<int>(patience.count() * 1000);
  if (end == std::string::npos && poll(&ready, 1, milliseconds) > 0) {
    std::array<char, 4096> buffer{};
    const ssize_t count = read(process_->output(), buffer.data(), buffer.size());
    waiting_.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    end = waiting_.find('\n');
  }
  if (end == std::string::npos) {
    return false;
  }
  take_line(waiting_.substr(0, end));
  waiting_.erase(0, end + 1);
  return true;
}

void Printer::take_line(const std::string& line) {
  const nlohmann::json told = nlohmann::json::parse(line);
  if (told.contains("port")) {
    port_ = told["port"];
  } else if (told.contains("done")) {
    done_ = told["done"];
  } else if (told.contains("stalled")) {
    stalled_ = true;
  } else if (told.contains("job") && told["bytes"] != 0) {
    PrinterJob job;
    job.bytes = read_file(directory_ + "/" + told["file"].get<std::string>());
    job.end = told["end"];
    job.pages = told["pages"];
    job.impressions = told["impressions"];
    job.ended = told["ended"];
    job.faults = told["faults"].get<std::vector<std::string>>();
    jobs_.push_back(job);
  }
}

}  // namespace rlx::testing
