#include "rlxproof/proof_run.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "rlx_reader/job_reader.h"
#include "rlxproof/filter_process.h"
#include "rlxproof/layout.h"
#include "rlxproof/outputs.h"
#include "rlxproof/progress.h"
#include "rlxproof/proof_painter.h"

namespace rlx::proof {

namespace {

void say(const std::string& text) {
  std::fprintf(stderr, "rlxproof: %s\n", text.c_str());
}

/// The job's name in headings and messages.
std::string name_of(const std::string& job) {
  return job == "-" ? "standard input" : std::filesystem::path(job).filename().string();
}

/// True when a job begins as the reader takes it; any other one is a line-printer job. So is a job
/// in frames when there are options for the filter: nothing else tells those of either language
/// apart.
bool is_rlx(reader::ByteInput& job, const Options& options) {
  const reader::Bytes front = job.look(reader::kHeaderBytes);
  return front.empty() || reader::parse_header(front).has_value() ||
         (reader::is_framed(front) && options.filter_options.empty());
}

/// Bytes of a regular file; 0 for others.
std::uint64_t size_of(const std::string& job) {
  struct stat about {};
  const bool known = (job == "-" ? fstat(0, &about) : stat(job.c_str(), &about)) == 0;
  return known && S_ISREG(about.st_mode) ? static_cast<std::uint64_t>(about.st_size) : 0;
}

/// Draws the sheets of the pages that are asked for.
class SheetDrawer : public SheetVisitor {
 public:
  explicit SheetDrawer(const Options& options) : options_(options), painter_(name_of(options.job)) {
    const std::string title = "Proof of " + name_of(options.job);
    if (options.pdf) {
      outputs_.push_back(make_pdf_output(*options.pdf, title));
    }
    if (options.pictures) {
      outputs_.push_back(make_picture_output(*options.pictures));
    }
  }

  void show(Progress* progress) { progress_ = progress; }

  /// Offsets are not those of the job from here on, but of what the filter made of it.
  void take_converted() { converted_ = ", converted"; }

  void sheet(const Sheet& sheet) override {
    last_page_ = std::max(last_page_, sheet.page);
    if (progress_ != nullptr) {
      progress_->page(sheet.page);
    }
    if (!options_.pages.contains(sheet.page)) {
      return;
    }
    ++drawn_;
    for (const auto& output : outputs_) {
      output->add(sheet, painter_);
    }
  }

  void fault(const reader::Fault& fault) override {
    is_faulty_ = true;
    say(name_of(options_.job) + converted_ + ":" + std::to_string(fault.offset) + ": " +
        fault.what);
  }

  void filter_failed(const std::string& ending) {
    filter_has_failed_ = true;
    say(name_of(options_.job) + ": " + ending);
  }

  /// @return false when the job had faults, or none of the pages that were asked for.
  bool finish() {
    const std::string reason = why_nothing();
    for (const auto& output : outputs_) {
      output->finish(painter_, reason);
    }
    const bool misses = drawn_ == 0 && last_page_ != 0;
    if (misses) {
      say(name_of(options_.job) + ": " + reason);
    }
    return !is_faulty_ && !misses && !filter_has_failed_;
  }

 private:
  /// For a proof without sheets.
  std::string why_nothing() const {
    if (last_page_ != 0) {
      return "The job has " + std::to_string(last_page_) +
             (last_page_ == 1 ? " page, not one" : " pages, none") + " of those asked for.";
    }
    return filter_has_failed_ ? "The filter could not convert the job." : "The job prints nothing.";
  }

  const Options& options_;
  ProofPainter painter_;
  std::vector<std::unique_ptr<Output>> outputs_;
  Progress* progress_ = nullptr;
  std::string converted_;
  std::uint64_t last_page_ = 0;
  std::uint64_t drawn_ = 0;
  bool is_faulty_ = false;
  bool filter_has_failed_ = false;
};

void draw_rlx(reader::ByteInput& job, SheetDrawer& drawer) {
  Layout layout(drawer);
  read_jobs(job, layout);
  layout.finish();
}

void draw_rlx_file(reader::ByteInput& job, std::uint64_t size, SheetDrawer& drawer) {
  Progress progress(size, [&job] { return job.offset(); });
  drawer.show(&progress);
  draw_rlx(job, drawer);
  drawer.show(nullptr);
}

void draw_line_printer_job(reader::ByteInput& job, const Options& options, SheetDrawer& drawer) {
  FilterProcess filter(options.filter_options, job);
  {
    reader::FileInput converted(filter.output_path());
    Progress progress(size_of(options.job), [&filter] { return filter.bytes_fed(); });
    drawer.show(&progress);
    drawer.take_converted();
    draw_rlx(converted, drawer);
    drawer.show(nullptr);
  }
  const std::string ending = filter.wait();
  if (!ending.empty()) {
    drawer.filter_failed(ending);
  }
}

/// A PDF that overwrites its job would leave neither.
void refuse_to_overwrite(const Options& options) {
  std::error_code error;
  if (options.pdf && *options.pdf != "-" && options.job != "-" &&
      std::filesystem::equivalent(*options.pdf, options.job, error)) {
    throw std::runtime_error(*options.pdf + ": this is the job itself");
  }
}

bool draw(const Options& options) {
  refuse_to_overwrite(options);
  reader::FileInput job(options.job);
  const bool rlx = is_rlx(job, options);
  SheetDrawer drawer(options);
  if (rlx) {
    if (!options.filter_options.empty()) {
      say(name_of(options.job) + ": the job is RLX already; the filter's options are not used");
    }
    draw_rlx_file(job, size_of(options.job), drawer);
  } else {
    draw_line_printer_job(job, options, drawer);
  }
  return drawer.finish();
}

}  // namespace

int run_proof(const Options& options) {
  try {
    return draw(options) ? kGood : kBadInput;
  } catch (const std::exception& error) {
    say(error.what());
    return kBadInput;
  }
}

}  // namespace rlx::proof
