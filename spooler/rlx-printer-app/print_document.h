#pragma once

#include <pappl/pappl.h>

#include <string>

#include "rlx-printer-app/job_queue.h"
#include "rlx-printer-app/job_record.h"
#include "rlx-printer-app/journal.h"

namespace rlx::printer_app {

/// Where the application keeps what it has, and the programs that it runs. One record a process,
/// settled before the system runs.
struct Application {
  bool serves = false;                  ///< not another sub-command, for which nothing is set up
  std::string state_file;               ///< printers and the history of jobs, as PAPPL writes them
  std::string spool_folder;             ///< documents of jobs
  std::string form_folder;              ///< forms stand below, in fcbe/NAME
  std::string filter;                   ///< path of zqeuctorlx; empty when it is not installed
  std::string form_checker;             ///< path of fcbcheck; empty when it is not installed
  Journal* journal = nullptr;           ///< of accepted jobs
  JobQueue* queue = nullptr;            ///< whose turn it is
  std::string proof_folder;             ///< for the web page; its contents need not be kept
  std::string painter;                  ///< path of rlxproof; empty when it is not installed
  std::string dumper;                   ///< path of rlxdump; empty when it is not installed
  const JobRecords* records = nullptr;  ///< of the last jobs
  int preserved_jobs = 0;               ///< so many documents of ended jobs a printer keeps
};

/// Prints a job of any of the formats; PAPPL calls it, in a thread of the job's own.
/// @param data  an Application.
/// @return false when the job was not printed. Why stands in its state message and its log.
bool print_document(pappl_job_t* job, pappl_device_t* device, void* data);

}  // namespace rlx::printer_app
