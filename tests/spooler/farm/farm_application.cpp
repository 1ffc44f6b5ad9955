#include "spooler/farm/farm_application.h"

#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace rlx::testing {

namespace {

constexpr Seconds kPatience(20);
/// Who the server is in a test run of root. The socket for its sub-commands is one for the machine
/// when it runs as root, and stands in its own $TMPDIR otherwise.
constexpr const char* kOrdinaryUser = "nobody";

}  // namespace

FarmApplication::FarmApplication()
    : directory_(make_directory("app")), port_(free_loopback_port()) {
  for (const char* const folder : {"/state/forms/fcbe", "/spool", "/temporary"}) {
    std::filesystem::create_directories(directory_ + folder);
  }
  if (is_root()) {
    const passwd* const user = getpwnam(kOrdinaryUser);
    for (const char* const folder : {"", "/state", "/spool", "/temporary"}) {
      EXPECT_EQ(chown((directory_ + folder).c_str(), user->pw_uid, user->pw_gid), 0);
    }
  }
  start();
  const Outcome outcome =
      run_command(command({"add", "-d", "office", "-v", printer_.uri(), "-m", "rlx-240"}));
  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.messages;
}

FarmApplication::~FarmApplication() {
  process_->send_signal(SIGTERM);
  EXPECT_TRUE(process_->wait(kPatience).has_value()) << "rlx-printer-app does not end";
  if (::testing::Test::HasFailure()) {
    std::fprintf(stderr, "rlx-printer-app's log:\n%s\n", log().c_str());
  }
  std::error_code error;
  std::filesystem::remove_all(directory_, error);
}

std::string FarmApplication::uri() const {
  return "ipp://localhost:" + std::to_string(port_) + "/ipp/print/office";
}

std::string FarmApplication::log() const {
  return read_file(directory_ + "/log");
}

Command FarmApplication::command(std::vector<std::string> words) const {
  words.insert(words.begin(), RLX_BUILD_DIRECTORY "/rlx-printer-app");
  Command command{std::move(words)};
  command.environment["HOME"] = directory_ + "/temporary";
  command.environment["TMPDIR"] = directory_ + "/temporary";
  if (is_root()) {
    command.user = getpwnam(kOrdinaryUser)->pw_uid;
  }
  return command;
}

void FarmApplication::start() {
  Command server =
      command({"server", "-o", "state-directory=" + directory_ + "/state", "-o",
               "spool-directory=" + directory_ + "/spool", "-o",
               "server-port=" + std::to_string(port_), "-o", "listen-hostname=localhost", "-o",
               "log-file=" + directory_ + "/log", "-o", "log-level=debug"});
  server.error_file = directory_ + "/messages";
  // A sub-command that finds no server starts one of its own: the socket has to be there first.
  const uid_t user = is_root() ? getpwnam(kOrdinaryUser)->pw_uid : getuid();
  const std::string socket =
      directory_ + "/temporary/rlx-printer-app" + std::to_string(user) + ".sock";
  std::filesystem::remove(socket);
  process_ = std::make_unique<Process>(server);
  EXPECT_TRUE(comes_true(kPatience, [&] { return std::filesystem::exists(socket); }))
      << "rlx-printer-app does not start";
}

void FarmApplication::kill() {
  process_->send_signal(SIGKILL);
  process_->wait(kPatience);
}

}  // namespace rlx::testing
