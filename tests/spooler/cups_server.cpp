#include "spooler/cups_server.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <regex>
#include <sstream>

#include "spooler/installed_tree.h"
#include "support/descriptors.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSystemServerBin = "/usr/lib/cups";
constexpr const char* kSystemDataDirectory = "/usr/share/cups";
/// Who cupsd is when it is not root, in a test run of root.
constexpr const char* kOrdinaryUser = "nobody";
constexpr Seconds kStartPatience(10);
constexpr Seconds kEndPatience(10);

/// Links to all that is in a folder, but for what is there already.
void link_all(const fs::path& from, const fs::path& to) {
  fs::create_directories(to);
  for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
    const fs::path link = to / entry.path().filename();
    if (!fs::exists(fs::symlink_status(link))) {
      fs::create_symlink(entry.path(), link);
    }
  }
}

std::string text_of_file(const std::string& path) {
  return fs::exists(path) ? read_file(path) : "";
}

/// The value of an attribute in the words of ipptool: "  name (type) = value".
bool read_attribute(const std::string& line, std::map<std::string, std::string>& attributes) {
  static const std::regex kForm(R"(^\s+([a-z-]+) \([^=]*\) = (.*)$)");
  std::smatch match;
  if (!std::regex_match(line, match, kForm)) {
    return false;
  }
  return attributes.emplace(match[1], match[2]).second;
}

long number_of(const std::string& text) {
  return text.empty() || text.find_first_not_of("0123456789") != std::string::npos
             ? 0
             : std::stol(text);
}

CupsJob job_of(std::map<std::string, std::string> attributes) {
  CupsJob job;
  job.id = static_cast<int>(number_of(attributes["job-id"]));
  job.state = attributes["job-state"];
  job.reasons = attributes["job-state-reasons"];
  job.message = attributes["job-printer-state-message"];
  job.format = attributes["document-format-detected"];
  if (job.format.empty()) {
    job.format = attributes["document-format"];
  }
  job.impressions = number_of(attributes["job-impressions-completed"]);
  job.name = attributes["job-name"];
  return job;
}

}  // namespace

bool is_settled(const CupsJob& job) {
  return job.state == "completed" || job.state == "processing-stopped" || job.state == "canceled" ||
         job.state == "aborted" || job.state == "pending-held";
}

bool is_root() {
  return geteuid() == 0;
}

CupsServer::CupsServer(CupsSetup setup)
    : setup_(std::move(setup)), directory_(make_directory("cups")), port_(free_loopback_port()) {
  make_folders();
  write_settings();
  start();
}

CupsServer::~CupsServer() {
  stop();
  const bool ended = comes_true(kEndPatience, [this] { return processes().empty(); });
  EXPECT_TRUE(ended) << "processes of cupsd are left";
  for (const pid_t left : processes()) {
    ::kill(left, SIGKILL);
  }
  if (::testing::Test::HasFailure()) {
    std::fprintf(stderr, "cupsd's log:\n%s\n", error_log().c_str());
  }
  std::error_code error;
  fs::remove_all(directory_, error);
  if (!setup_.spool_directory.empty()) {
    fs::remove_all(setup_.spool_directory, error);
  }
}

std::string CupsServer::spool_directory() const {
  return setup_.spool_directory.empty() ? directory_ + "/spool" : setup_.spool_directory;
}

void CupsServer::make_folders() const {
  const fs::path bin = fs::path(directory_) / "bin";
  link_all(installed_tree() + "/lib/cups/filter", bin / "filter");
  link_all(std::string(kSystemServerBin) + "/filter", bin / "filter");
  // A folder of its own, so that a test can add a backend.
  link_all(installed_tree() + "/lib/cups/backend", bin / "backend");
  link_all(std::string(kSystemServerBin) + "/backend", bin / "backend");
  link_all(kSystemServerBin, bin);
  const fs::path data = fs::path(directory_) / "share";
  link_all(installed_tree() + "/share/cups/mime", data / "mime");
  link_all(std::string(kSystemDataDirectory) + "/mime", data / "mime");
  link_all(kSystemDataDirectory, data);
  for (const char* const name : {"settings", "cache", "state", "log", "temporary"}) {
    fs::create_directory(directory_ + "/" + name);
  }
  fs::create_directories(spool_directory());
  if (is_root() && setup_.user == ServerUser::unprivileged) {
    const passwd* const user = getpwnam(kOrdinaryUser);
    for (const std::string& path :
         {directory_, directory_ + "/settings", directory_ + "/cache", directory_ + "/state",
          directory_ + "/log", directory_ + "/temporary", spool_directory()}) {
      EXPECT_EQ(chown(path.c_str(), user->pw_uid, user->pw_gid), 0);
    }
  }
}

void CupsServer::write_settings() const {
  std::ostringstream server;
  server << "Listen " << socket() << "\nListen 127.0.0.1:" << port_ << R"(
LogLevel debug
MaxLogSize 0
LogTimeFormat usecs
PageLogFormat %j %P %C
Browsing No
BrowseLocalProtocols none
WebInterface No
DefaultAuthType None
JobKillDelay )"
         << setup_.job_kill_delay << R"(
MaxJobs 1000
PreserveJobHistory Yes
PreserveJobFiles Yes
<Location />
  Order allow,deny
  Allow all
</Location>
<Location /admin>
  Order allow,deny
  Allow all
</Location>
<Policy default>
  JobPrivateAccess all
  JobPrivateValues none
  SubscriptionPrivateAccess all
  SubscriptionPrivateValues none
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
)" << setup_.settings;
  write_file(directory_ + "/settings/cupsd.conf", server.str());

  std::ostringstream files;
  files << "User lp\nGroup lp\nSystemGroup root\nLogFileGroup lp\nPrintcap\n";
  for (const auto& [name, folder] : {std::pair("ServerRoot", "/settings"),
                                     {"ServerBin", "/bin"},
                                     {"DataDir", "/share"},
                                     {"CacheDir", "/cache"},
                                     {"StateDir", "/state"},
                                     {"TempDir", "/temporary"},
                                     {"AccessLog", "/log/access_log"},
                                     {"ErrorLog", "/log/error_log"},
                                     {"PageLog", "/log/page_log"}}) {
    files << name << ' ' << directory_ << folder << '\n';
  }
  files << "RequestRoot " << spool_directory() << '\n';
  write_file(directory_ + "/settings/cups-files.conf", files.str());
}

void CupsServer::start() {
  const std::string settings = directory_ + "/settings";
  Command command{
      {"cupsd", "-f", "-c", settings + "/cupsd.conf", "-s", settings + "/cups-files.conf"}};
  // cupsd's children get this from it; it itself has it so that it is found, too.
  command.environment["CUPS_SERVERROOT"] = settings;
  command.error_file = directory_ + "/log/cupsd";
  if (is_root() && setup_.user == ServerUser::unprivileged) {
    command.user = getpwnam(kOrdinaryUser)->pw_uid;
  }
  process_ = std::make_unique<Process>(command);
  const bool runs = comes_true(kStartPatience, [this] {
    return run({"lpstat", "-r"}).output.find("is running") != std::string::npos;
  });
  EXPECT_TRUE(runs) << "cupsd does not start: " << text_of_file(directory_ + "/log/cupsd")
                    << error_log();
}

void CupsServer::stop() {
  process_->send_signal(SIGTERM);
  EXPECT_TRUE(process_->wait(kEndPatience).has_value()) << "cupsd does not end";
}

void CupsServer::kill() {
  process_->send_signal(SIGKILL);
  process_->wait(kEndPatience);
}

Command CupsServer::client(std::vector<std::string> words) const {
  Command command{std::move(words)};
  command.environment["CUPS_SERVER"] = socket();
  // No settings of the user's own, and none of the system's.
  command.environment["HOME"] = directory_ + "/temporary";
  command.environment["TMPDIR"] = directory_ + "/temporary";
  command.environment["CUPS_SERVERROOT"] = directory_ + "/settings";
  return command;
}

Outcome CupsServer::run(std::vector<std::string> words, std::string_view input) const {
  return run_command(client(std::move(words)), input);
}

std::string CupsServer::uri(const std::string& queue) const {
  return "ipp://127.0.0.1:" + std::to_string(port_) + "/printers/" + queue;
}

Outcome CupsServer::rlx_queue(std::vector<std::string> words) const {
  words.insert(words.begin(), installed_tree() + "/sbin/rlx-queue");
  return run(std::move(words));
}

void CupsServer::add_queue(const std::string& name, const Printer& printer,
                           std::vector<std::string> options) const {
  std::vector<std::string> words{"add", name, "--device", printer.uri()};
  words.insert(words.end(), options.begin(), options.end());
  const Outcome outcome = rlx_queue(words);
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
}

int CupsServer::submit(const std::string& queue, std::string_view job,
                       const std::vector<std::string>& options) const {
  std::vector<std::string> words{"lp", "-d", queue};
  for (const std::string& option : options) {
    words.insert(words.end(), {"-o", option});
  }
  Outcome outcome;
  // lp says that a queue does not exist, too, when cupsd was too busy to take its connection: then
  // there is no job, and it may ask again.
  comes_true(Seconds(5), [&] {
    outcome = run(words, job);
    return outcome.messages.find("does not exist") == std::string::npos;
  });
  const std::regex form("request id is .*-([0-9]+) .*\n");
  std::smatch match;
  if (!std::regex_match(outcome.output, match, form)) {
    ADD_FAILURE() << "lp: " << outcome.output << outcome.messages;
    return 0;
  }
  return std::stoi(match[1]);
}

std::vector<std::map<std::string, std::string>> CupsServer::ask(const std::string& queue,
                                                                const std::string& request) const {
  const std::string file = directory_ + "/temporary/request";
  write_file(file,
             "{\nGROUP operation-attributes-tag\n"
             "ATTR charset attributes-charset utf-8\n"
             "ATTR naturalLanguage attributes-natural-language en\n"
             "ATTR uri printer-uri $uri\n" +
                 request + "}\n");
  const Outcome outcome = run({"ipptool", "-tv", uri(queue), file});
  std::vector<std::map<std::string, std::string>> groups(1);
  std::istringstream lines(outcome.output);
  bool is_answer = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("status-code") != std::string::npos) {
      is_answer = true;
    } else if (line.find("-- separator --") != std::string::npos) {
      groups.emplace_back();
    } else if (is_answer) {
      read_attribute(line, groups.back());
    }
  }
  return groups;
}

std::map<int, CupsJob> CupsServer::jobs(const std::string& queue) const {
  std::map<int, CupsJob> all;
  for (const auto& group :
       ask(queue,
           "OPERATION Get-Jobs\nATTR keyword which-jobs all\n"
           "ATTR keyword requested-attributes job-id,job-state,job-state-reasons,job-name,"
           "job-printer-state-message,document-format,document-format-detected,"
           "job-impressions-completed\n")) {
    const CupsJob job = job_of(group);
    if (job.id != 0) {
      all[job.id] = job;
    }
  }
  return all;
}

CupsJob CupsServer::job(const std::string& queue, int id) const {
  return job_of(
      ask(queue, "OPERATION Get-Job-Attributes\nATTR integer job-id " + std::to_string(id) + "\n")
          .front());
}

CupsJob CupsServer::wait_for(const std::string& queue, int id, Seconds patience) const {
  CupsJob found;
  if (id == 0) {
    return found;  // it was not taken, and that has been told
  }
  EXPECT_TRUE(comes_true(patience, [&, this] { return is_settled(found = job(queue, id)); }))
      << "job " << id << " is " << found.state << ": " << found.message;
  return found;
}

bool CupsServer::wait_for_state(const std::string& queue, int id, const std::string& state,
                                Seconds patience) const {
  return comes_true(patience, [&, this] { return job(queue, id).state == state; });
}

std::string CupsServer::queue_state(const std::string& queue) const {
  auto attributes = ask(queue,
                        "OPERATION Get-Printer-Attributes\nATTR keyword requested-attributes "
                        "printer-state,printer-state-message,printer-state-reasons\n")
                        .front();
  return attributes["printer-state"] + ' ' + attributes["printer-state-reasons"] + ' ' +
         attributes["printer-state-message"];
}

std::vector<pid_t> CupsServer::processes() const {
  return processes_with("CUPS_SERVERROOT", directory_ + "/settings");
}

std::string CupsServer::error_log() const {
  return text_of_file(directory_ + "/log/error_log");
}

std::string CupsServer::page_log() const {
  return text_of_file(directory_ + "/log/page_log");
}

std::string CupsServer::log_of(int id) const {
  const std::string mark = "[Job " + std::to_string(id) + "]";
  std::istringstream lines(error_log());
  std::string found;
  for (std::string line; std::getline(lines, line);) {
    if (line.find(mark) != std::string::npos) {
      found += line + '\n';
    }
  }
  return found;
}

}  // namespace rlx::testing
