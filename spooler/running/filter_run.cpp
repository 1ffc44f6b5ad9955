#include "running/filter_run.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <functional>
#include <thread>

#include "rlx_reader/job_reader.h"

namespace rlx::spooler {

namespace {

constexpr std::size_t kPortionBytes = 65536;

/// Brings a portion; 0 bytes at the end.
using Portion = std::function<std::size_t(std::span<std::uint8_t>)>;

/// What is read is handed on before anybody looks at it.
class HandedOnInput : public reader::BufferedInput {
 public:
  HandedOnInput(Portion portion, int output) : portion_(std::move(portion)), output_(output) {}

  std::uint64_t bytes() const { return bytes_; }
  int output_error() const { return output_error_; }

 private:
  std::size_t read_some(std::span<std::uint8_t> room) override {
    const auto portion = room.first(std::min(room.size(), kPortionBytes));
    const std::size_t count = portion_(portion);
    output_error_ = write_all(output_, portion.first(count));
    if (output_error_ != 0) {
      return 0;
    }
    bytes_ += count;
    return count;
  }

  Portion portion_;
  int output_;
  std::uint64_t bytes_ = 0;
  int output_error_ = 0;
};

/// Puts bytes into the filter. @return false when it takes no more, or the job is cancelled.
bool put(int input, std::span<const std::uint8_t> bytes, const Cancellation& run) {
  while (!bytes.empty()) {
    const ssize_t taken = write(input, bytes.data(), bytes.size());
    if (taken >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(taken));
    } else if (errno == EAGAIN) {
      if (!run.wait_for(input, POLLOUT)) {
        return false;
      }
    } else if (errno != EINTR) {
      return false;
    }
  }
  return !run.is_asked();
}

/// Feeds the filter to the end of the job, or of the filter's patience.
void feed(Descriptor& input, JobSource& job, const Cancellation& run, std::string& job_error) {
  std::vector<std::uint8_t> portion(kPortionBytes);
  try {
    std::size_t count = 0;
    do {
      count = job.read(portion);
    } while (count > 0 && put(input.number(), std::span(portion).first(count), run));
  } catch (const std::exception& error) {
    // A job that is cut off may end where none can.
    job_error = run.is_asked() ? "" : error.what();
  }
  input.reset();
}

void gather_words(int messages, std::string& words) {
  std::array<std::uint8_t, 4096> portion{};
  try {
    for (std::size_t count = read_some(messages, portion, "messages"); count > 0;
         count = read_some(messages, portion, "messages")) {
      const std::size_t room = RunReport::kMostWords - words.size();
      words.append(portion.begin(),
                   portion.begin() + static_cast<std::ptrdiff_t>(std::min(count, room)));
    }
  } catch (const std::exception& error) {
    words += error.what();
  }
}

/// Lets nobody wait for a thread that waits for the job, whatever happens.
class AskAtTheEnd {
 public:
  explicit AskAtTheEnd(Cancellation& run) : run_(run) {}
  ~AskAtTheEnd() { run_.ask(); }
  AskAtTheEnd(const AskAtTheEnd&) = delete;
  AskAtTheEnd& operator=(const AskAtTheEnd&) = delete;

 private:
  Cancellation& run_;
};

/// Reads a job to its end, counting its pages.
void count_pages(HandedOnInput& input, const PageListener& listener, RunReport& report) {
  PageCounter counter(listener);
  try {
    reader::read_jobs(input, counter);
  } catch (const std::exception& error) {
    report.job_error = error.what();
  }
  report.bytes = input.bytes();
  report.output_error = input.output_error();
  if (report.output_error == 0) {
    counter.finish();
  }
  report.count = counter.count();
}

}  // namespace

bool failed(const RunReport& report) {
  return report.end.status != 0 || report.end.signal != 0 || !report.job_error.empty() ||
         report.output_error != 0 ||
         (!report.filter.empty() && report.words.find(report.filter + ": ") != std::string::npos);
}

RunReport run_filter(const FilterCommand& command, JobSource& job, int output,
                     const PageListener& listener, Cancellation& run) {
  RunReport report;
  report.filter = std::filesystem::path(command.program).filename();
  ChildProcess filter(command.program, command.arguments);
  std::string job_error;
  std::jthread feeder([&] { feed(filter.input(), job, run, job_error); });
  const AskAtTheEnd no_longer_than_this(run);
  std::jthread words([&] { gather_words(filter.messages().number(), report.words); });
  const int from = filter.output().number();
  HandedOnInput input(
      [from](std::span<std::uint8_t> room) { return read_some(from, room, "the filter's output"); },
      output);
  count_pages(input, listener, report);
  // A filter whose output nobody takes any more ends by itself.
  filter.output().reset();
  run.ask();
  feeder.join();
  words.join();
  report.end = filter.wait();
  if (report.job_error.empty()) {
    report.job_error = job_error;
  }
  return report;
}

RunReport hand_on(JobSource& job, int output, const PageListener& listener) {
  RunReport report;
  HandedOnInput input([&job](std::span<std::uint8_t> room) { return job.read(room); }, output);
  count_pages(input, listener, report);
  return report;
}

}  // namespace rlx::spooler
