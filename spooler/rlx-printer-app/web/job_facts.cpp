#include "rlx-printer-app/web/job_facts.h"

#include <algorithm>
#include <tuple>

namespace rlx::printer_app {

namespace {

std::string text_of(const char* text) {
  return text == nullptr ? "" : text;
}

/// PAPPL calls it for each job, and holds the printer's lock.
void take_job(pappl_job_t* job, void* data) {
  JobFacts facts;
  facts.id = papplJobGetID(job);
  facts.name = text_of(papplJobGetName(job));
  facts.user = text_of(papplJobGetUsername(job));
  facts.format = text_of(papplJobGetFormat(job));
  facts.message = text_of(papplJobGetMessage(job));
  facts.document = text_of(papplJobGetFilename(job));
  facts.state = papplJobGetState(job);
  facts.created = papplJobGetTimeCreated(job);
  facts.ended = papplJobGetTimeCompleted(job);
  facts.impressions = papplJobGetImpressionsCompleted(job);
  static_cast<std::vector<JobFacts>*>(data)->push_back(std::move(facts));
}

void take_printer(pappl_printer_t* printer, void* data) {
  static_cast<std::vector<int>*>(data)->push_back(papplPrinterGetID(printer));
}

void add_jobs(pappl_system_t* system, int printer_id, std::vector<JobFacts>& all) {
  pappl_printer_t* const printer = papplSystemFindPrinter(system, nullptr, printer_id, nullptr);
  if (printer == nullptr) {
    return;
  }
  std::vector<JobFacts> jobs;
  papplPrinterIterateAllJobs(printer, take_job, &jobs, 1, 0);
  for (JobFacts& job : jobs) {
    job.printer_id = printer_id;
    job.printer = text_of(papplPrinterGetName(printer));
    all.push_back(std::move(job));
  }
}

}  // namespace

std::vector<JobFacts> all_jobs(pappl_system_t* system, unsigned printer_id) {
  std::vector<int> printers;
  papplSystemIteratePrinters(system, take_printer, &printers);
  std::vector<JobFacts> all;
  for (const int id : printers) {
    if (printer_id == 0 || static_cast<int>(printer_id) == id) {
      add_jobs(system, id, all);
    }
  }
  std::sort(all.begin(), all.end(), [](const JobFacts& left, const JobFacts& right) {
    return std::tie(left.created, left.id, left.printer_id) >
           std::tie(right.created, right.id, right.printer_id);
  });
  return all;
}

std::optional<JobFacts> find_job(pappl_system_t* system, unsigned printer_id, unsigned job_id) {
  std::vector<JobFacts> jobs;
  add_jobs(system, static_cast<int>(printer_id), jobs);
  const auto found = std::find_if(jobs.begin(), jobs.end(), [job_id](const JobFacts& job) {
    return job.id == static_cast<int>(job_id);
  });
  return found == jobs.end() ? std::nullopt : std::optional(*found);
}

void cancel_job(pappl_system_t* system, unsigned printer_id, unsigned job_id) {
  pappl_printer_t* const printer =
      papplSystemFindPrinter(system, nullptr, static_cast<int>(printer_id), nullptr);
  pappl_job_t* const job =
      printer == nullptr ? nullptr : papplPrinterFindJob(printer, static_cast<int>(job_id));
  if (job != nullptr && papplJobGetState(job) < IPP_JSTATE_CANCELED) {
    papplJobCancel(job);
  }
}

}  // namespace rlx::printer_app
