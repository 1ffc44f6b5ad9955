#pragma once

#include <pappl/pappl.h>

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace rlx::printer_app {

/// A copy of what PAPPL knows of a job: the job itself may go at any time.
struct JobFacts {
  int printer_id = 0;
  std::string printer;  ///< name
  int id = 0;
  std::string name, user, format, message;
  std::string document;  ///< path; empty when it is no longer kept
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  std::time_t created = 0;
  std::time_t ended = 0;  ///< 0 when it has not
  int impressions = 0;    ///< completed

  bool has_ended() const { return state >= IPP_JSTATE_CANCELED; }
};

/// All jobs of all printers, the newest first. @param printer_id  of this one only, unless it is 0.
std::vector<JobFacts> all_jobs(pappl_system_t* system, unsigned printer_id);

std::optional<JobFacts> find_job(pappl_system_t* system, unsigned printer_id, unsigned job_id);

/// Cancels a job that has not ended. PAPPL would take one that has ended into its list a second
/// time, and use it after it was freed. Nothing happens when there is no such job.
void cancel_job(pappl_system_t* system, unsigned printer_id, unsigned job_id);

}  // namespace rlx::printer_app
