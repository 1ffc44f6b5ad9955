#include "spooler/printer/received_job.h"

#include <charconv>
#include <sstream>

#include "rlx_reader/job_reader.h"

namespace rlx::testing {

namespace {

class JobCheck : public reader::JobVisitor {
 public:
  explicit JobCheck(ReceivedJob& job) : job_(job) {}

  void begin_block(const reader::Block& block) override {
    job_.ended = block.use == reader::BlockUse::job_end;
    parameters_.clear();
    if (block.use == reader::BlockUse::job_start) {
      copies_ = announced_;
    }
  }
  void payload(const reader::Block& block, reader::Bytes part) override {
    if (block.use == reader::BlockUse::job_parameters) {
      parameters_.append(part.begin(), part.end());
    }
  }
  void end_block(const reader::Block& block) override {
    if (block.use == reader::BlockUse::job_parameters) {
      read_copies();
    }
  }
  void begin_page(std::uint64_t /*number*/, const reader::Block& /*block*/) override {
    ++job_.pages;
    job_.impressions += copies_;
    announced_ = 1;
  }
  void fault(const reader::Fault& fault) override {
    job_.faults.push_back(std::to_string(fault.offset) + ": " + fault.what);
  }

 private:
  void read_copies() {
    announced_ = 1;
    std::istringstream lines(parameters_);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("CPS=")) {
        set_copies(line.substr(4));
      }
    }
  }

  /// A printer that is told of no copies makes one.
  void set_copies(const std::string& digits) {
    std::uint64_t copies = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), copies);
    copies_ = copies == 0 ? 1 : copies;
    announced_ = copies_;
  }

  ReceivedJob& job_;
  std::string parameters_;
  std::uint64_t copies_ = 1;
  /// What the parameters in front of a job start say: a job forgets the copies of the one before.
  std::uint64_t announced_ = 1;
};

}  // namespace

ReceivedJob read_received_job(std::string_view bytes) {
  ReceivedJob job;
  job.bytes = bytes.size();
  JobCheck check(job);
  reader::MemoryInput input({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  reader::read_jobs(input, check);
  return job;
}

}  // namespace rlx::testing
