#include "spooler/fuzz/fuzzed_server.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr Seconds kStartPatience(60);
constexpr Seconds kEndPatience(90);
constexpr Seconds kJobPatience(120);
constexpr Seconds kSettlePatience(60);
constexpr milliseconds kAnswerPatience(60000);
constexpr std::size_t kMoreDescriptors = 24;
constexpr std::size_t kMostForms = 60;
constexpr const char* kOffice = "office";
constexpr const char* kAway = "away";
constexpr const char* kIpp = "application/ipp";

std::string read_whole(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::size_t entries_of(const fs::path& folder) {
  std::error_code error;
  const fs::directory_iterator begin(folder, error);
  return error ? 0 : static_cast<std::size_t>(std::distance(begin, fs::directory_iterator()));
}

/// The first integer of this name in an answer; 0 without one.
std::uint32_t integer_of(const std::string& answer, const std::string& name) {
  const std::size_t at = answer.find(name + std::string("\0\4", 2));
  if (at == std::string::npos || at + name.size() + 6 > answer.size()) {
    return 0;
  }
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8U | static_cast<unsigned char>(answer[at + name.size() + 2 + i]);
  }
  return value;
}

std::string line_of(const std::string& status, const std::string& name) {
  const std::size_t at = status.find(name);
  return at == std::string::npos ? "" : status.substr(at, status.find('\n', at) - at);
}

bool is_form_name(const std::string& name) {
  return std::all_of(name.begin(), name.end(), [](unsigned char byte) {
    return std::isalnum(byte) != 0 || byte == '-' || byte == '_';
  });
}

/// True for what the server itself keeps at this path below its folder.
bool is_expected(const fs::path& path) {
  const std::string text = path.string();
  const std::string name = path.filename();
  const auto below = [&text](const char* folder) { return text.starts_with(folder); };
  if (below("state/forms/fcbe/")) {
    // A form that is being written, or was when a server was killed, has ".new" behind its name.
    return is_form_name(name.ends_with(".new") ? name.substr(0, name.size() - 4) : name);
  }
  if (below("state/")) {
    return text == "state/forms" || text == "state/forms/canary" || text == "state/forms/fcbe" ||
           below("state/journal") || below("state/paused") || below("state/records") ||
           name == "lock" || name.starts_with("rlx-printer-app.state");
  }
  if (below("spool/")) {
    return below("spool/proofs") || name == "lock" || name.starts_with("p0") ||
           name.starts_with("p1");
  }
  return text == "state" || text == "spool" || name.starts_with("log") || below("home") ||
         below("tmp");
}

}  // namespace

FuzzedServer::FuzzedServer()
    : root_((fs::temp_directory_path() / "rlx-app-fuzz-XXXXXX").string()),
      port_(free_loopback_port()) {
  if (mkdtemp(root_.data()) == nullptr) {
    throw std::runtime_error("no folder " + root_);
  }
  place_ = root_ + "/1/2/3";
  for (const char* const folder :
       {"/server/home", "/server/tmp", "/server/state/forms/fcbe", "/printed"}) {
    fs::create_directories(place_ + folder);
  }
  fs::create_directories(root_ + "/reports");
  for (const char* const canary : {"/canary", "/server/state/forms/canary"}) {
    std::ofstream(place_ + canary) << kSecret;
  }
  start();
}

FuzzedServer::~FuzzedServer() {
  process_.reset();
  std::error_code error;
  fs::remove_all(root_, error);
}

void FuzzedServer::start() {
  const std::string server = place_ + "/server";
  std::vector<std::string> words{RLX_FUZZED_SERVER, "server"};
  for (const std::string& option :
       {"state-directory=" + server + "/state", "spool-directory=" + server + "/spool",
        "server-port=" + std::to_string(port_), std::string("listen-hostname=localhost"),
        "log-file=" + server + "/log", std::string("log-level=info")}) {
    words.insert(words.end(), {"-o", option});
  }
  const std::string report = "log_path=" + root_ + "/reports/report:detect_leaks=0";
  process_ = std::make_unique<Process>(Command{.words = words,
                                               .environment = {{"HOME", server + "/home"},
                                                               {"TMPDIR", server + "/tmp"},
                                                               {"ASAN_OPTIONS", report},
                                                               {"UBSAN_OPTIONS", report}},
                                               .error_file = root_ + "/messages"});
  ++starts_;
  if (!comes_true(kStartPatience, [this] { return HttpConnection(port_).is_open(); })) {
    throw std::runtime_error("the server does not start: " + read_whole(root_ + "/messages"));
  }
}

void FuzzedServer::ask_system(std::uint16_t operation) const {
  ask(port_,
      http_request("POST", "/ipp/system", kIpp, plain_message(operation, port_, "").bytes() + '\3'),
      kAnswerPatience);
}

void FuzzedServer::ask_printer(std::uint16_t operation, const std::string& printer) const {
  ask(port_,
      http_request("POST", "/ipp/print/" + printer, kIpp,
                   plain_message(operation, port_, printer).bytes() + '\3'),
      kAnswerPatience);
}

bool FuzzedServer::has_printer(const std::string& name) const {
  const HttpAnswer answer =
      ask(port_,
          http_request("POST", "/ipp/print/" + name, kIpp,
                       plain_message(ipp::kGetPrinterAttributes, port_, name).bytes() + '\3'),
          kAnswerPatience);
  return answer.body.size() > 4 && answer.body[2] == 0;
}

void FuzzedServer::add_printer(const std::string& name, const std::string& device) const {
  IppMessage message = plain_message(ipp::kCreatePrinter, port_, "");
  add(message, ipp::kKeyword, "printer-service-type", "print");
  add(message, ipp::kKeyword, "smi55357-driver", "rlx-240");
  add(message, ipp::kUri, "smi55357-device-uri", device);
  message.pieces.push_back({ipp::kPrinterGroup});
  add(message, ipp::kName, "printer-name", name);
  ask(port_, http_request("POST", "/ipp/system", kIpp, message.bytes() + '\3'), kAnswerPatience);
}

std::string FuzzedServer::token() const {
  const std::string page =
      ask(port_, http_request("GET", "/forms/change", "", ""), kAnswerPatience).body;
  constexpr std::string_view kFront = R"(name="session" value=")";
  const std::size_t at = page.find(kFront);
  if (at == std::string::npos) {
    return {};
  }
  const std::size_t begin = at + kFront.size();
  return page.substr(begin, page.find('"', begin) - begin);
}

void FuzzedServer::clear_away() const {
  std::error_code error;
  std::vector<fs::path> printed;
  for (const auto& file : fs::directory_iterator(place_ + "/printed", error)) {
    printed.push_back(file.path());
  }
  const fs::path forms = place_ + "/server/state/forms/fcbe";
  if (entries_of(forms) > kMostForms) {
    for (const auto& file : fs::directory_iterator(forms, error)) {
      printed.push_back(file.path());
    }
  }
  for (const fs::path& path : printed) {
    fs::remove(path, error);
  }
}

void FuzzedServer::restore() {
  if (process_->wait(Seconds(0)) == 0) {
    // Somebody has asked it to end: any user of this machine may.
    start();
  }
  ask_system(ipp::kEnableAllPrinters);
  ask_system(ipp::kResumeAllPrinters);
  for (const std::string name : {kOffice, kAway}) {
    ask_printer(ipp::kCancelJobs, name);
    if (!has_printer(name)) {
      add_printer(name, name == kAway ? "socket://127.0.0.1:9" : "file://" + place_ + "/printed");
    }
    for (const std::uint16_t operation :
         {ipp::kEnablePrinter, ipp::kReleaseHeldNewJobs, ipp::kResumePrinter}) {
      ask_printer(operation, name);
    }
  }
  clear_away();
}

std::string FuzzedServer::fault_of_life() {
  const auto status = process_->wait(Seconds(0));
  return status ? "the server has ended with " + std::to_string(*status) : "";
}

std::string FuzzedServer::fault_of_a_job() {
  IppMessage submit = plain_message(ipp::kPrintJob, port_, kOffice);
  add(submit, ipp::kMimeType, "document-format", "text/plain");
  const std::string path = std::string("/ipp/print/") + kOffice;
  const HttpAnswer answer =
      ask(port_, http_request("POST", path, kIpp, submit.bytes() + "\3PAGE\f"), kAnswerPatience);
  const std::uint32_t id = integer_of(answer.body, "job-id");
  if (id == 0) {
    return "the server takes no job: HTTP status " + std::to_string(answer.status);
  }
  jobs_ = id;
  IppMessage look = plain_message(ipp::kGetJobAttributes, port_, kOffice);
  add(look, ipp::kInteger, "job-id", ipp_integer(id));
  constexpr std::uint32_t kCanceled = 7;
  std::uint32_t state = 0;
  comes_true(kJobPatience, [&] {
    state = integer_of(
        ask(port_, http_request("POST", path, kIpp, look.bytes() + '\3'), kAnswerPatience).body,
        "job-state");
    return state >= kCanceled;
  });
  return state >= kCanceled ? ""
                            : "job " + std::to_string(id) + " does not end: it is in state " +
                                  std::to_string(state);
}

std::string FuzzedServer::fault_of_descriptors() {
  const fs::path folder = "/proc/" + std::to_string(process_->id()) + "/fd";
  if (usual_descriptors_ == 0) {
    usual_descriptors_ = entries_of(folder);
  }
  const std::size_t most = usual_descriptors_ + kMoreDescriptors;
  return comes_true(kSettlePatience, [&] { return entries_of(folder) <= most; })
             ? ""
             : "descriptors have become " + std::to_string(entries_of(folder)) + " from " +
                   std::to_string(usual_descriptors_);
}

void FuzzedServer::find_stray_files(std::vector<std::string>& faults) const {
  std::error_code error;
  const std::array<std::string, 8> own{"1",        "1/2",           "1/2/3",        "reports",
                                       "messages", "1/2/3/printed", "1/2/3/server", "1/2/3/canary"};
  for (fs::recursive_directory_iterator at(root_, error), end; at != end; at.increment(error)) {
    const std::string path = at->path().lexically_relative(root_);
    const bool is_own = std::find(own.begin(), own.end(), path) != own.end() ||
                        path.starts_with("reports/") || path.starts_with("1/2/3/printed/");
    constexpr std::string_view kServer = "1/2/3/server/";
    if (!is_own && !(path.starts_with(kServer) && is_expected(path.substr(kServer.size())))) {
      faults.push_back("a file appeared: " + path);
    }
  }
  for (const char* const folder : {"/", "/tmp", "/etc", "/var/tmp", "."}) {
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (entry.path().filename().string().find(kMark) != std::string::npos) {
        faults.push_back("a file appeared: " + entry.path().string());
      }
    }
  }
  for (const char* const canary : {"/canary", "/server/state/forms/canary"}) {
    if (read_whole(place_ + canary) != kSecret) {
      faults.push_back(std::string("a file was changed: ") + canary);
    }
  }
}

void FuzzedServer::find_reports(std::vector<std::string>& faults) const {
  std::error_code error;
  for (const auto& file : fs::directory_iterator(root_ + "/reports", error)) {
    faults.push_back("a sanitizer reports:\n" + read_whole(file.path()).substr(0, 6000));
  }
  const std::string messages = read_whole(root_ + "/messages");
  for (const char* const word : {"runtime error", "Sanitizer", "terminate called"}) {
    if (messages.find(word) != std::string::npos) {
      faults.push_back("the server has said:\n" + messages.substr(0, 6000));
      return;
    }
  }
}

std::vector<std::string> FuzzedServer::faults() {
  std::vector<std::string> all;
  find_reports(all);
  std::string fault = fault_of_life();
  if (fault.empty()) {
    fault = fault_of_a_job();
  }
  if (fault.empty()) {
    fault = fault_of_descriptors();
  }
  if (!fault.empty()) {
    all.push_back(fault);
  }
  find_stray_files(all);
  return all;
}

std::vector<std::string> FuzzedServer::end() {
  std::vector<std::string> all;
  process_->send_signal(SIGTERM);
  const auto status = process_->wait(kEndPatience);
  if (status != 0) {
    all.push_back(status ? "the server ends with " + std::to_string(*status)
                         : "the server does not end");
  }
  find_reports(all);
  find_stray_files(all);
  return all;
}

std::string FuzzedServer::figures() const {
  const std::string process = "/proc/" + std::to_string(process_->id());
  const std::string status = read_whole(process + "/status");
  return std::to_string(entries_of(process + "/fd")) + " descriptors, " +
         line_of(status, "Threads:") + ", " + line_of(status, "VmRSS:");
}

}  // namespace rlx::testing
