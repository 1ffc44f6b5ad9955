#include "rlx-printer-app/system.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mapping/words.h"
#include "rlx-printer-app/early_release.h"
#include "rlx-printer-app/folder_lock.h"
#include "rlx-printer-app/formats.h"
#include "rlx-printer-app/lock_order.h"
#include "rlx-printer-app/lock_watch.h"
#include "rlx-printer-app/paused_printers.h"
#include "rlx-printer-app/printer_device.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/printer_options.h"
#include "rlx-printer-app/quick_end.h"
#include "rlx-printer-app/refusal.h"
#include "rlx-printer-app/spool_watch.h"
#include "rlx-printer-app/web/web.h"
#include "running/child_process.h"

namespace rlx::printer_app {

namespace {

namespace fs = std::filesystem;

/// Options of the server, as "-o NAME=VALUE" gives them.
class ServerOptions {
 public:
  ServerOptions(int count, cups_option_t* options) : count_(count), options_(options) {}

  /// @return null when it is not given.
  const char* find(const char* name) const { return cupsGetOption(name, count_, options_); }
  std::string find(const char* name, const std::string& otherwise) const {
    const char* const value = find(name);
    return value == nullptr ? otherwise : value;
  }

 private:
  int count_;
  cups_option_t* options_;
};

constexpr const char* kName = "rlx-printer-app";

/// @throws std::runtime_error for a name that is none of ours: it would be ignored, and a server
/// may listen where it should not.
void look_at_names(int count, const cups_option_t* options) {
  constexpr std::array<std::string_view, 13> kNames{
      "admin-group", "auth-service",    "form-directory", "listen-hostname", "log-file",
      "log-level",   "preserved-jobs",  "private-server", "server-hostname", "server-name",
      "server-port", "spool-directory", "state-directory"};
  for (int i = 0; i < count; ++i) {
    if (std::find(kNames.begin(), kNames.end(), options[i].name) == kNames.end()) {
      throw std::runtime_error("-o " + std::string(options[i].name) +
                               ": there is no option of this name");
    }
  }
}

/// A folder for what the application keeps, where the options name none.
std::string usual_folder(const char* of_the_system, const char* of_a_user) {
  if (getuid() == 0) {
    return std::string(of_the_system) + '/' + kName;
  }
  const char* const home = std::getenv("HOME");
  return std::string(home == nullptr ? "/tmp" : home) + '/' + of_a_user + '/' + kName;
}

pappl_loglevel_t log_level(const std::string& name) {
  constexpr std::array<std::string_view, 5> kNames{"debug", "info", "warn", "error", "fatal"};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (name == kNames[i]) {
      return static_cast<pappl_loglevel_t>(i);
    }
  }
  throw std::runtime_error("log-level=" + name + ": wanted is debug, info, warn, error or fatal");
}

int port_number(const std::string& text) {
  constexpr int kMostPort = 65535;
  char* end = nullptr;
  const long port = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || port < 0 || port > kMostPort) {
    throw std::runtime_error("server-port=" + text + ": wanted is a port number");
  }
  return static_cast<int>(port);
}

void make_folder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw std::runtime_error("the folder " + folder + " cannot be made: " + error.message());
  }
}

std::string read_file(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// Keeps whatever the job asks for. @return false, with errno, when it could not.
bool write_attributes(pappl_job_t* job, const std::string& path) {
  const spooler::Descriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  ipp_t* const attributes = ippNew();
  std::vector<const char*> names{"media",
                                 "media-col",
                                 "media-source",
                                 "sides",
                                 "copies",
                                 "orientation-requested",
                                 "printer-resolution"};
  for (const VendorAttribute& vendor : vendor_attributes()) {
    names.push_back(vendor.name);
  }
  for (const char* const name : names) {
    if (ipp_attribute_t* const attribute = papplJobGetAttribute(job, name); attribute != nullptr) {
      ippCopyAttribute(attributes, attribute, 0);
    }
  }
  ippSetState(attributes, IPP_STATE_IDLE);
  const bool good = file.is_open() && ippWriteFile(file.number(), attributes) == IPP_STATE_DATA &&
                    fdatasync(file.number()) == 0;
  const int error = errno;
  ippDelete(attributes);
  errno = error;
  return good;
}

void note_job(pappl_job_t* job, bool is_held, const Journal& journal) {
  JournalEntry entry;
  entry.held = is_held;
  entry.printer_id = papplPrinterGetID(papplJobGetPrinter(job));
  entry.job_id = papplJobGetID(job);
  entry.name = papplJobGetName(job);
  entry.user = papplJobGetUsername(job);
  const char* const format = papplJobGetFormat(job);
  entry.format = format == nullptr ? kText : format;
  entry.created = papplJobGetTimeCreated(job);
  const std::string attributes = journal.attributes_path(entry.printer_id, entry.job_id);
  if (!write_attributes(job, attributes) || !journal.note(entry)) {
    const int error = errno;
    set_unnoted(job, error);
    unlink(attributes.c_str());
    papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "The journal cannot be written: %s",
                std::strerror(error));
  }
}

/// Somebody has held or released the job; the queue's own holds and releases are no events.
void take_hold(pappl_job_t* job, const Application& application) {
  const int printer_id = papplPrinterGetID(papplJobGetPrinter(job));
  const int job_id = papplJobGetID(job);
  const ipp_jstate_t state = papplJobGetState(job);
  if (state == IPP_JSTATE_HELD || state == IPP_JSTATE_PENDING) {
    application.journal->note_held(printer_id, job_id, state == IPP_JSTATE_HELD);
    application.queue->set_held(printer_id, job_id, state == IPP_JSTATE_HELD);
    if (state == IPP_JSTATE_PENDING && papplJobGetFilename(job) == nullptr) {
      hold_again(job);
    }
  }
}

void follow_event(pappl_job_t* job, pappl_event_t event, const Application& application) {
  const int printer_id = papplPrinterGetID(papplJobGetPrinter(job));
  if ((event & PAPPL_EVENT_JOB_CREATED) != 0) {
    const bool is_held = (papplJobGetReasons(job) & PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED) != 0 ||
                         papplPrinterIsHoldingNewJobs(papplJobGetPrinter(job));
    // The queue waits for the job's lock then, and has it as soon as this returns.
    application.queue->add(printer_id, papplJobGetID(job), is_held);
    note_job(job, is_held, *application.journal);
  }
  if ((event & PAPPL_EVENT_JOB_STATE_CHANGED) != 0) {
    take_hold(job, application);
    if (papplJobGetState(job) == IPP_JSTATE_PROCESSING) {
      refuse_format(job);
    }
  }
  if ((event & PAPPL_EVENT_JOB_COMPLETED) != 0) {
    // The event of a job that is cancelled while it prints comes before it has ended.
    application.journal->note_ended(printer_id, papplJobGetID(job),
                                    std::max(papplJobGetState(job), IPP_JSTATE_CANCELED));
    application.queue->wake();
  }
}

void forget_printer(int printer_id, const Journal& journal) {
  journal.forget_printer(printer_id);
  for (const auto kind : {PausedPrinters::Kind::paused, PausedPrinters::Kind::holding}) {
    paused_printers().note(printer_id, kind, false);
  }
}

/// PAPPL calls this for each event, before it answers the client. Jobs of the state file are
/// created again at the start; they are noted already, and come before the event is asked for.
void take_event(pappl_system_t* system, pappl_printer_t* printer, pappl_job_t* job,
                pappl_event_t event, void* data) {
  const auto& application = *static_cast<const Application*>(data);
  try {
    if (job != nullptr) {
      follow_event(job, event, application);
    } else if (printer != nullptr && (event & PAPPL_EVENT_PRINTER_DELETED) != 0) {
      forget_printer(papplPrinterGetID(printer), *application.journal);
    }
  } catch (const std::exception& error) {
    // It would end the server: PAPPL is in C.
    papplLog(system, PAPPL_LOGLEVEL_ERROR, "An event cannot be followed: %s", error.what());
  }
}

/// Takes the end of those jobs as it is for PAPPL, which writes it down: marks those whose end was
/// no event, such as one with an upload that broke, and keeps the notes of those whose end it has
/// not seen yet.
void take_ends(pappl_system_t* system, std::vector<JournalEntry>& entries) {
  for (JournalEntry& entry : entries) {
    pappl_printer_t* const printer =
        papplSystemFindPrinter(system, nullptr, entry.printer_id, nullptr);
    entry.ended = 0;
    if (printer != nullptr) {
      pappl_job_t* const job = papplPrinterFindJob(printer, entry.job_id);
      const bool has_ended = job == nullptr || papplJobGetState(job) >= IPP_JSTATE_CANCELED;
      entry.ended = has_ended ? int{IPP_JSTATE_ABORTED} : 0;
    }
  }
}

bool write_state(pappl_system_t* system, const Application& application) {
  static std::mutex saving;
  const std::lock_guard lock(saving);
  auto entries = application.journal->entries();
  take_ends(system, entries);
  const std::string aside = application.state_file + ".aside";
  if (!papplSystemSaveState(system, aside.c_str())) {
    return false;
  }
  const bool saved = put_in_place(application.state_file, read_file(aside));
  unlink(aside.c_str());
  if (saved) {
    application.journal->forget_ended(entries);
  } else {
    papplLog(system, PAPPL_LOGLEVEL_ERROR, "%s cannot be written: %s",
             application.state_file.c_str(), std::strerror(errno));
  }
  return saved;
}

bool save_state(pappl_system_t* system, void* data) {
  const bool saved = write_state(system, *static_cast<const Application*>(data));
  if (!papplSystemIsRunning(system)) {
    // The last time: PAPPL would delete now what threads of clients still use.
    _exit(saved ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  return saved;
}

/// PAPPL forgets that somebody has paused a printer, or that it holds new jobs.
void pause_again(pappl_printer_t* printer, void* /*data*/) {
  const int id = papplPrinterGetID(printer);
  if (paused_printers().has(id, PausedPrinters::Kind::paused)) {
    papplPrinterPause(printer);
  }
  if (paused_printers().has(id, PausedPrinters::Kind::holding)) {
    papplPrinterHoldNewJobs(printer);
  }
}

void restore(pappl_system_t* system, const Application& application) {
  const std::string state = read_file(application.state_file);
  if (state.empty()) {
    return;
  }
  auto entries = application.journal->entries();
  find_documents(application.spool_folder, entries);
  restore_attributes(*application.journal, entries);
  const std::string restored = restorable_state(state, entries);
  if (!put_in_place(application.state_file, restored) ||
      !papplSystemLoadState(system, application.state_file.c_str())) {
    throw std::runtime_error(application.state_file + " cannot be read or written");
  }
  papplSystemIteratePrinters(system, pause_again, nullptr);
}

void begin_to_print(pappl_printer_t* printer, void* /*data*/) {
  if (!paused_printers().has(papplPrinterGetID(printer), PausedPrinters::Kind::paused)) {
    papplPrinterResume(printer);
  }
}

/// Ends the process: threads of jobs that wait for a printer, or for an operator, would keep it.
[[noreturn]] void end_now(pappl_system_t* system, const Application& application) {
  write_state(system, application);
  papplLog(system, PAPPL_LOGLEVEL_INFO, "Ends; what waits is printed when it runs again.");
  _exit(EXIT_SUCCESS);
}

/// Called each second when the system runs, which makes PAPPL look whether there is something to
/// save: it would otherwise sleep for half a minute, and a crash in that time would take a new
/// printer, a default or a password away.
bool look_each_second(pappl_system_t* system, void* data) {
  static bool has_begun = false;
  if (!std::exchange(has_begun, true)) {
    // Jobs of the last run begin.
    static_cast<const Application*>(data)->queue->settle();
    papplSystemIteratePrinters(system, begin_to_print, nullptr);
  }
  return true;
}

/// Takes the locks of the system and of its printers for a moment.
void touch_locks(pappl_system_t* system) {
  if (papplSystemIsRunning(system)) {
    papplSystemIteratePrinters(
        system,
        [](pappl_printer_t* printer, void* /*data*/) {
          std::array<char, 256> place{};
          papplPrinterGetLocation(printer, place.data(), place.size());
        },
        nullptr);
  }
}

[[noreturn]] void end_stuck() {
  std::fprintf(stderr,
               "%s: the server is stuck and ends; jobs that wait are printed when it runs again\n",
               kName);
  _exit(EXIT_FAILURE);
}

int preserved_jobs(const std::string& text) {
  constexpr unsigned kMostPreserved = 1000;
  const auto count = spooler::whole_number(text, kMostPreserved);
  if (!count) {
    throw std::runtime_error("preserved-jobs=" + text + ": wanted is a number up to 1000");
  }
  return static_cast<int>(*count);
}

void find_places(const ServerOptions& options, Application& application) {
  const std::string state = options.find("state-directory", usual_state_folder());
  application.spool_folder = options.find("spool-directory", usual_folder("/var/spool", ".cache"));
  application.form_folder = options.find("form-directory", state + "/forms");
  application.state_file = state + '/' + kName + ".state";
  make_folder(state);
  make_folder(application.spool_folder);
  static const FolderLock state_lock(state);
  static const FolderLock spool_lock(application.spool_folder);
  make_folder(application.form_folder + "/fcbe");
  application.filter = spooler::find_program("zqeuctorlx", RLX_TO_FILTERS);
  application.form_checker = spooler::find_program("fcbcheck", RLX_TO_PROGRAMS);
  application.painter = spooler::find_program("rlxproof", RLX_TO_PROGRAMS);
  application.dumper = spooler::find_program("rlxdump", RLX_TO_PROGRAMS);
  application.proof_folder = application.spool_folder + "/proofs";
  application.preserved_jobs = preserved_jobs(options.find("preserved-jobs", "20"));
  make_folder(state + "/records");
  // All stay until the process ends: PAPPL's threads use them to the last.
  static const JobRecords records(state + "/records");
  application.records = &records;
  static Journal journal(state + "/journal");
  static SpoolWatch watch(application.spool_folder, journal);
  static JobQueue queue;
  paused_printers().use(state + "/paused");
  application.journal = &journal;
  application.queue = &queue;
}

pappl_system_t* create(const ServerOptions& options, const Application& application) {
  pappl_soptions_t wanted = PAPPL_SOPTIONS_MULTI_QUEUE | PAPPL_SOPTIONS_WEB_INTERFACE |
                            PAPPL_SOPTIONS_WEB_LOG | PAPPL_SOPTIONS_WEB_SECURITY |
                            PAPPL_SOPTIONS_WEB_TLS;
  pappl_system_t* const system =
      papplSystemCreate(wanted, options.find("server-name", "RLX printers").c_str(),
                        port_number(options.find("server-port", "0")), "_print,_universal",
                        application.spool_folder.c_str(), options.find("log-file", "-").c_str(),
                        log_level(options.find("log-level", "info")), options.find("auth-service"),
                        /* tls_only */ false);
  if (system == nullptr) {
    throw std::runtime_error("the server cannot be made");
  }
  keep_lock_order(system);
  if (options.find("admin-group") != nullptr) {
    papplSystemSetAdminGroup(system, options.find("admin-group"));
  }
  if (options.find("private-server") == nullptr) {
    const char* const host = options.find("listen-hostname");
    if (!papplSystemAddListeners(system, host)) {
      throw std::runtime_error("the port " + std::to_string(papplSystemGetHostPort(system)) +
                               " cannot be listened on: another program may have it");
    }
  }
  return system;
}

/// The kinds of printers, as PAPPL takes them.
std::vector<pappl_pr_driver_t>& drivers() {
  static std::vector<pappl_pr_driver_t> all = [] {
    std::vector<pappl_pr_driver_t> kinds;
    for (const PrinterKind& kind : printer_kinds()) {
      kinds.push_back({kind.name, kind.description, nullptr, nullptr});
    }
    return kinds;
  }();
  return all;
}

/// For sub-commands that only ask a system for its kinds of printers.
pappl_system_t* make_idle_system() {
  pappl_system_t* const system =
      papplSystemCreate(PAPPL_SOPTIONS_NONE, kName, 0, nullptr, "/tmp", "/dev/null",
                        PAPPL_LOGLEVEL_FATAL, nullptr, /* tls_only */ false);
  if (system != nullptr) {
    papplSystemSetPrinterDrivers(system, static_cast<int>(drivers().size()), drivers().data(),
                                 nullptr, nullptr, describe_printer, nullptr);
  }
  return system;
}

void set_up_formats(pappl_system_t* system, Application& application) {
  papplSystemSetMIMECallback(system, detect_format, nullptr);
  // The printer's own language goes the same way: PAPPL would count each such job as one page.
  for (const char* const format : {kText, kLines, kPrinterLanguage}) {
    papplSystemAddMIMEFilter(system, format, kPrinterLanguage, print_document, &application);
  }
  for (const char* const format : {"image/jpeg", "image/png"}) {
    papplSystemAddMIMEFilter(system, format, kPrinterLanguage, print_no_picture, nullptr);
  }
}

void set_up_version(pappl_system_t* system) {
  pappl_version_t version{};
  std::snprintf(version.name, sizeof(version.name), "%s", kName);
  std::snprintf(version.sversion, sizeof(version.sversion), "%s", RLX_VERSION);
  papplSystemSetVersions(system, 1, &version);
}

}  // namespace

std::string usual_state_folder() {
  return usual_folder("/var/lib", ".local/state");
}

pappl_system_t* make_system(int count, cups_option_t* options, void* data) {
  auto& application = *static_cast<Application*>(data);
  const ServerOptions given(count, options);
  try {
    if (!application.serves) {
      return make_idle_system();
    }
    look_at_names(count, options);
    find_places(given, application);
    pappl_system_t* const system = create(given, application);
    set_up_version(system);
    papplSystemSetPrinterDrivers(system, static_cast<int>(drivers().size()), drivers().data(),
                                 nullptr, prepare_printer, describe_printer, &application);
    set_up_formats(system, application);
    add_web_pages(system, application);
    papplSystemSetSaveCallback(system, save_state, &application);
    restore(system, application);
    application.queue->start(system);
    papplSystemSetEventCallback(system, take_event, &application);
    tell_absence(system);
    papplSystemAddTimerCallback(system, 0, 1, look_each_second, &application);
    static const QuickEnd end(system, *application.queue,
                              [system, &application] { end_now(system, application); });
    // A printer that does not answer keeps its lock for some seconds.
    static const LockWatch watch([system] { touch_locks(system); }, end_stuck,
                                 std::chrono::minutes(10));
    return system;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kName, error.what());
    return nullptr;
  }
}

}  // namespace rlx::printer_app
