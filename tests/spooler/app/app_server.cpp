#include "spooler/app/app_server.h"

#include <arpa/inet.h>
#include <cups/cups.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>

#include "support/escaped_bytes.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

constexpr Seconds kStartPatience(20);
constexpr Seconds kEndPatience(60);
constexpr int kConnectMilliseconds = 5000;

bool answers(int port) {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const bool good =
      connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  close(descriptor);
  return good;
}

/// A connection of its own for each request, so that threads may ask at once.
class Connection {
 public:
  explicit Connection(int port)
      : http_(httpConnect2("localhost", port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                           kConnectMilliseconds, nullptr)) {}
  ~Connection() { httpClose(http_); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  http_t* get() const { return http_; }

 private:
  http_t* http_;
};

ipp_t* make_request(ipp_op_t operation, const std::string& printer_uri) {
  ipp_t* const request = ippNewRequest(operation);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
               printer_uri.c_str());
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, "tester");
  return request;
}

void add_attributes(ipp_t* request, const JobAttributes& attributes) {
  cups_option_t* options = nullptr;
  int count = 0;
  for (const auto& [name, value] : attributes) {
    count = cupsAddOption(name.c_str(), value.c_str(), count, &options);
  }
  cupsEncodeOptions2(request, count, options, IPP_TAG_JOB);
  cupsFreeOptions(count, options);
}

std::string resource_of(const std::string& printer) {
  return "/ipp/print/" + printer;
}

}  // namespace

AppServer::AppServer() : directory_(make_directory("app")), port_(free_loopback_port()) {
  start();
}

AppServer::~AppServer() {
  stop();
  if (::testing::Test::HasFailure()) {
    std::fprintf(stderr, "the application's log:\n%s\n", log().c_str());
  }
  std::error_code error;
  fs::remove_all(directory_, error);
}

Command AppServer::start_command() const {
  std::vector<std::string> words{installed_tree() + "/sbin/rlx-printer-app", "server"};
  for (const std::string& option :
       {"state-directory=" + directory_ + "/state", "spool-directory=" + directory_ + "/spool",
        "server-port=" + std::to_string(port_), std::string("listen-hostname=localhost"),
        "log-file=" + directory_ + "/log", std::string("log-level=info")}) {
    words.insert(words.end(), {"-o", option});
  }
  return {.words = words, .environment = {{"HOME", directory_}, {"TMPDIR", directory_}}};
}

void AppServer::start() {
  process_ = std::make_unique<Process>(start_command());
  EXPECT_TRUE(comes_true(kStartPatience, [this] { return answers(port_); }))
      << "the server does not answer";
}

void AppServer::stop(Seconds patience) {
  if (process_->is_running()) {
    process_->send_signal(SIGTERM);
    EXPECT_EQ(process_->wait(patience), 0) << "the server does not end well";
  }
}

void AppServer::kill() {
  process_->send_signal(SIGKILL);
  process_->wait(kEndPatience);
}

std::string AppServer::uri(const std::string& printer) const {
  return "ipp://localhost:" + std::to_string(port_) + resource_of(printer);
}

Outcome AppServer::run(std::vector<std::string> words) const {
  words.insert(words.begin(), installed_tree() + "/sbin/rlx-printer-app");
  words.insert(words.begin() + 2, {"-h", "localhost:" + std::to_string(port_)});
  return run_command({.words = words, .environment = {{"HOME", directory_}}});
}

Outcome AppServer::ipptool(const std::string& file, const std::vector<std::string>& words,
                           const std::string& printer) const {
  std::vector<std::string> command{"ipptool", "-t", "-T", "30"};
  command.insert(command.end(), words.begin(), words.end());
  command.insert(command.end(),
                 {uri(printer), RLX_PROJECT_DIRECTORY "/tests/spooler/app/ipptool/" + file});
  return run_command({.words = command, .environment = {{"HOME", directory_}}});
}

void AppServer::add_printer(const std::string& name, const std::string& kind,
                            const std::string& device) {
  const Outcome outcome = run({"add", "-d", name, "-v", device, "-m", kind});
  ASSERT_EQ(outcome.status, 0) << outcome.output << outcome.messages;
}

int AppServer::submit(const std::string& printer, std::string_view document,
                      const JobAttributes& attributes, const std::string& format,
                      std::string* words) const {
  const Connection connection(port_);
  ipp_t* const request = make_request(IPP_OP_PRINT_JOB, uri(printer));
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, "a job");
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               format.c_str());
  add_attributes(request, attributes);
  const std::string resource = resource_of(printer);
  http_status_t status = cupsSendRequest(connection.get(), request, resource.c_str(),
                                         ippLength(request) + document.size());
  if (status == HTTP_STATUS_CONTINUE) {
    status = cupsWriteRequestData(connection.get(), document.data(), document.size());
  }
  ippDelete(request);
  ipp_t* const answer = cupsGetResponse(connection.get(), resource.c_str());
  if (words != nullptr) {
    *words = cupsLastErrorString();
  }
  const int id = ippGetInteger(ippFindAttribute(answer, "job-id", IPP_TAG_INTEGER), 0);
  const bool good = answer != nullptr && ippGetStatusCode(answer) < IPP_STATUS_ERROR_BAD_REQUEST;
  ippDelete(answer);
  return good ? id : 0;
}

int AppServer::create(const std::string& printer, const JobAttributes& attributes) const {
  const Connection connection(port_);
  ipp_t* const request = make_request(IPP_OP_CREATE_JOB, uri(printer));
  add_attributes(request, attributes);
  ipp_t* const answer = cupsDoRequest(connection.get(), request, resource_of(printer).c_str());
  const int id = ippGetInteger(ippFindAttribute(answer, "job-id", IPP_TAG_INTEGER), 0);
  ippDelete(answer);
  return id;
}

bool AppServer::send_document(const std::string& printer, int id, std::string_view document) const {
  const Connection connection(port_);
  ipp_t* const request = make_request(IPP_OP_SEND_DOCUMENT, uri(printer));
  ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", id);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               "text/plain");
  ippAddBoolean(request, IPP_TAG_OPERATION, "last-document", 1);
  const std::string resource = resource_of(printer);
  if (cupsSendRequest(connection.get(), request, resource.c_str(),
                      ippLength(request) + document.size()) == HTTP_STATUS_CONTINUE) {
    cupsWriteRequestData(connection.get(), document.data(), document.size());
  }
  ippDelete(request);
  ipp_t* const answer = cupsGetResponse(connection.get(), resource.c_str());
  const bool good = answer != nullptr && ippGetStatusCode(answer) < IPP_STATUS_ERROR_BAD_REQUEST;
  ippDelete(answer);
  return good;
}

AppJob AppServer::job(const std::string& printer, int id) const {
  const Connection connection(port_);
  ipp_t* const request = make_request(IPP_OP_GET_JOB_ATTRIBUTES, uri(printer));
  ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", id);
  ipp_t* const answer = cupsDoRequest(connection.get(), request, resource_of(printer).c_str());
  AppJob job;
  job.id = id;
  job.state = ippGetInteger(ippFindAttribute(answer, "job-state", IPP_TAG_ENUM), 0);
  const char* const message =
      ippGetString(ippFindAttribute(answer, "job-state-message", IPP_TAG_ZERO), 0, nullptr);
  job.message = message == nullptr ? "" : message;
  job.impressions =
      ippGetInteger(ippFindAttribute(answer, "job-impressions-completed", IPP_TAG_INTEGER), 0);
  ippDelete(answer);
  return job;
}

std::string AppServer::reasons(const std::string& printer) const {
  const Connection connection(port_);
  ipp_t* const request = make_request(IPP_OP_GET_PRINTER_ATTRIBUTES, uri(printer));
  ipp_t* const answer = cupsDoRequest(connection.get(), request, resource_of(printer).c_str());
  std::string all(256, '\0');
  ipp_attribute_t* const attribute =
      ippFindAttribute(answer, "printer-state-reasons", IPP_TAG_KEYWORD);
  all.resize(attribute == nullptr ? 0 : ippAttributeString(attribute, all.data(), all.size()));
  ippDelete(answer);
  return all;
}

AppJob AppServer::wait_for(const std::string& printer, int id, Seconds patience) const {
  AppJob found;
  comes_true(patience, [&, this] { return (found = job(printer, id)).state >= kCanceled; });
  return found;
}

bool AppServer::wait_for_state(const std::string& printer, int id, int state,
                               Seconds patience) const {
  return comes_true(patience, [&, this] { return job(printer, id).state == state; });
}

bool AppServer::tell_job(const std::string& operation, const std::string& printer, int id) const {
  const std::map<std::string, ipp_op_t> operations{
      {"cancel", IPP_OP_CANCEL_JOB}, {"hold", IPP_OP_HOLD_JOB}, {"release", IPP_OP_RELEASE_JOB}};
  const Connection connection(port_);
  ipp_t* const request = make_request(operations.at(operation), uri(printer));
  ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", id);
  ippDelete(cupsDoRequest(connection.get(), request, resource_of(printer).c_str()));
  return cupsLastError() < IPP_STATUS_ERROR_BAD_REQUEST;
}

bool AppServer::tell_printer(const std::string& operation, const std::string& printer) const {
  const std::map<std::string, ipp_op_t> operations{
      {"hold-new-jobs", IPP_OP_HOLD_NEW_JOBS},
      {"release-held-new-jobs", IPP_OP_RELEASE_HELD_NEW_JOBS}};
  const Connection connection(port_);
  ipp_t* const request = make_request(operations.at(operation), uri(printer));
  ippDelete(cupsDoRequest(connection.get(), request, resource_of(printer).c_str()));
  return cupsLastError() < IPP_STATUS_ERROR_BAD_REQUEST;
}

std::string AppServer::log() const {
  const std::string path = directory_ + "/log";
  return fs::exists(path) ? read_file(path) : "";
}

AppTest::AppTest() {
  server_.add_printer("office", "rlx-240", printer_.uri());
  fs::copy(forms() + "/fcbe", server_.forms() + "/fcbe",
           fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

PrinterJob AppTest::print(std::string_view document, const JobAttributes& attributes,
                          const std::string& format) {
  const std::size_t before = printer_.jobs().size();
  const int id = server_.submit("office", document, attributes, format);
  const AppJob end = server_.wait_for("office", id);
  EXPECT_EQ(end.state, kCompleted) << end.message;
  const auto& jobs = printer_.wait_for_jobs(before + 1);
  EXPECT_EQ(jobs.size(), before + 1);
  if (jobs.size() <= before) {
    return {};
  }
  EXPECT_EQ(static_cast<std::uint64_t>(end.impressions), jobs[before].impressions);
  return jobs[before];
}

}  // namespace rlx::testing
