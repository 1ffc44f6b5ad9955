#include "rlx-printer-app/early_release.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace rlx::printer_app {

namespace {

constexpr std::chrono::milliseconds kLongestWait(100);

/// What the thread that holds the job has to know, and to tell.
struct Holding {
  int job_id = 0;
  std::mutex changing;
  std::condition_variable changed;
  bool has_begun = false;
};

void hold_if_it_is_it(pappl_job_t* job, void* data) {
  auto& holding = *static_cast<Holding*>(data);
  {
    const std::lock_guard lock(holding.changing);
    holding.has_begun = true;
  }
  holding.changed.notify_all();
  if (papplJobGetID(job) == holding.job_id) {
    papplJobHold(job, nullptr, "indefinite", 0);
  }
}

}  // namespace

void hold_again(pappl_job_t* job) {
  pappl_printer_t* const printer = papplJobGetPrinter(job);
  const auto holding = std::make_shared<Holding>();
  holding->job_id = papplJobGetID(job);
  // Whoever releases has the job's lock, so this is for another thread. That has, or waits for, the
  // printer's lock as a reader when this returns; PAPPL needs it as a writer to start the job.
  std::thread([printer, holding] {
    papplPrinterIterateActiveJobs(printer, hold_if_it_is_it, holding.get(), 1, 0);
  }).detach();
  std::unique_lock lock(holding->changing);
  holding->changed.wait_for(lock, kLongestWait, [&] { return holding->has_begun; });
}

}  // namespace rlx::printer_app
