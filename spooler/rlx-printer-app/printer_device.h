#pragma once

#include <pappl/pappl.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "running/cancellation.h"
#include "running/descriptor.h"

namespace rlx::printer_app {

/// Puts devices of our own in place of PAPPL's for two kinds of URI. To be called before anything
/// else of PAPPL's.
/// - socket://HOST[:PORT], 9100 without a port: PAPPL's write cannot be ended while a printer takes
///   nothing, and a connection that broke stays so for the jobs that wait.
/// - file:///PATH: PAPPL closes it when a job ends, also under another one. A folder gets a new
/// file
///   for each job, job-PRINTER-JOB.rlx; to another file jobs are added. Folder or file must be
///   there; a path that ends in "/" is that of a folder.
void add_devices();

/// From now on a printer that PAPPL cannot open is "offline", and its job's message says that it
/// waits. A job that gets the printer takes both away.
void tell_absence(pappl_system_t* system);

/// So many jobs have a printer in their hands now: bytes of theirs may have reached it.
int jobs_at_printers();

/// From now on no other job gets a printer: the server is about to end.
void close_printers();

/// A job that is counted by jobs_at_printers() as long as this lives.
class AtPrinter {
 public:
  AtPrinter();
  ~AtPrinter();
  AtPrinter(const AtPrinter&) = delete;
  AtPrinter& operator=(const AtPrinter&) = delete;

  /// False behind close_printers(): the job is not counted, and may not write.
  bool is_there() const { return is_there_; }

 private:
  bool is_there_;
};

/// The printer in the hands of one job: a connection, or a file, of its own.
class JobDevice {
 public:
  /// @param device      what PAPPL has opened for the job.
  /// @param give_up     ends waiting for the printer, whatever it is for; it must outlive this.
  /// @param at_printer  is there from open() on, until the caller has noted how the job ended.
  JobDevice(pappl_job_t* job, pappl_device_t* device, const spooler::Cancellation& give_up,
            std::optional<AtPrinter>& at_printer);

  /// Connects; tries until the printer answers, and waits behind close_printers(). @return false
  /// when it was given up, or when a file cannot be opened.
  bool open();

  /// Writes all of it. @return false when the printer takes no more, or it was given up.
  bool write(std::span<const std::uint8_t> bytes);

  /// Waits until the printer has taken all, and ends the connection.
  /// @return false when it did not take all.
  bool finish();

  /// Why open(), write() or finish() returned false.
  const std::string& words() const { return words_; }

 private:
  bool open_file();
  bool connect();
  bool take_place();
  void say_away();
  void say_there();
  bool fail(const std::string& words);

  pappl_job_t* job_;
  pappl_device_t* device_;
  const spooler::Cancellation& give_up_;
  bool is_file_;
  spooler::Descriptor printer_;
  std::optional<AtPrinter>& at_printer_;
  std::string path_;  ///< of a file
  std::string words_ = "the connection broke";
};

}  // namespace rlx::printer_app
