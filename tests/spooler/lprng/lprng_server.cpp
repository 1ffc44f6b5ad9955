#include "spooler/lprng/lprng_server.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "spooler/installed_tree.h"
#include "support/descriptors.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

constexpr Seconds kStartPatience(20);
constexpr Seconds kEndPatience(10);

/// Whom lpd runs filters as, as usual.
constexpr const char* kServerUser = "daemon";

/// The mount namespace of a process; empty when there is no such process.
std::string name_space_of(const std::string& process) {
  std::error_code error;
  return fs::read_symlink("/proc/" + process + "/ns/mnt", error).string();
}

std::string program_of(pid_t process) {
  std::error_code error;
  return fs::read_symlink("/proc/" + std::to_string(process) + "/exe", error).filename();
}

/// A job's number; the name of its ticket fills it up with zeros. 0 for what is none.
unsigned long whole_number(const std::string& digits) {
  return std::strtoul(digits.c_str(), nullptr, 10);
}

void replace(std::string& text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  ASSERT_NE(at, std::string::npos) << from;
  text.replace(at, from.size(), to);
}

void give_to_server(const fs::path& path) {
  const passwd* const user = getpwnam(kServerUser);
  EXPECT_EQ(chown(path.c_str(), user->pw_uid, user->pw_gid), 0) << path;
}

}  // namespace

LprngServer::LprngServer(const std::vector<LprngQueue>& queues)
    : directory_(make_directory("lprng")), port_(free_loopback_port()) {
  make_folders(queues);
  write_settings(queues);
  const Outcome outcome = run({"checkpc", "-f"});
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  start();
}

LprngServer::~LprngServer() {
  for (const pid_t process : processes_of("lpd")) {
    kill(process, SIGTERM);
  }
  const bool ended = comes_true(kEndPatience, [this] {
    daemon_->wait(Seconds(0));
    return processes().empty();
  });
  EXPECT_TRUE(ended) << "processes of lpd are left";
  for (const pid_t left : processes()) {
    kill(left, SIGKILL);
  }
  std::error_code error;
  fs::remove_all(directory_, error);
}

void LprngServer::make_folders(const std::vector<LprngQueue>& queues) {
  fs::create_directories(directory_ + "/etc/lprng");
  for (const char* const file : {"passwd", "group", "ld.so.cache"}) {
    fs::copy_file(std::string("/etc/") + file, directory_ + "/etc/" + file);
  }
  fs::create_directory(directory_ + "/run");
  give_to_server(directory_ + "/run");
  for (const LprngQueue& queue : queues) {
    fs::create_directories(directory_ + "/spool/" + queue.name);
    give_to_server(directory_ + "/spool/" + queue.name);
  }
}

/// The sample entry, made that of a queue.
std::string LprngServer::entry(const LprngQueue& queue) const {
  std::string text = read_file(RLX_PROJECT_DIRECTORY "/spooler/rlx-lpd/printcap.example");
  replace(text, "lines|Line-printer jobs on the page printer", queue.name);
  replace(text, "/var/spool/lpd/lines", directory_ + "/spool/" + queue.name);
  replace(text, "192.0.2.10%9100", "127.0.0.1%" + std::to_string(queue.printer_port));
  replace(text, "/usr/libexec/rlx-lpd --forms=/srv/forms",
          installed_tree() + "/libexec/rlx-lpd " + queue.arguments);
  return text + queue.more;
}

void LprngServer::write_settings(const std::vector<LprngQueue>& queues) {
  const std::string etc = directory_ + "/etc/";
  write_file(etc + "hosts", "127.0.0.1 localhost\n");
  write_file(etc + "nsswitch.conf", "passwd: files\ngroup: files\nhosts: files\n");
  write_file(etc + "lprng/lpd.perms", "DEFAULT ACCEPT\n");
  // Jobs that are done stay, so that they can be asked for; a printer that is away is looked for
  // every second.
  write_file(
      etc + "lprng/lpd.conf",
      std::string("user=") + kServerUser + "\ngroup=" + kServerUser + "\nlpd_port=127.0.0.1%" +
          std::to_string(port_) + "\nunix_socket_path=" + directory_ + "/run/socket" +
          "\nlockfile=" + directory_ + "/run/lpd" +
          "\nprintcap_path=/etc/printcap\nlpd_printcap_path=\ndone_jobs#1000"
          "\nconnect_interval#1\nmax_connect_interval#1"
          "\nserver_tmp_dir=" +
          directory_ + "/run\ndefault_tmp_dir=" + directory_ + "/run\nsyslog_device=/dev/null\n");
  std::string printcap;
  for (const LprngQueue& queue : queues) {
    printcap += entry(queue);
  }
  write_file(etc + "printcap", printcap);
}

/// The words of a program with the server's /etc.
std::vector<std::string> LprngServer::inside(std::vector<std::string> words) const {
  for (const char* const folder : {"/usr/bin/", "/usr/sbin/"}) {
    const std::string program = RLX_LPRNG + (folder + words.front());
    if (fs::exists(program)) {
      words.front() = program;
    }
  }
  std::vector<std::string> all{"unshare",
                               "--mount",
                               "--uts",
                               "sh",
                               "-c",
                               R"(mount --bind "$0" /etc && hostname localhost && exec "$@")",
                               directory_ + "/etc"};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

void LprngServer::start() {
  Command command{inside({"lpd", "-F"})};
  command.error_file = directory_ + "/run/messages";
  daemon_ = std::make_unique<Process>(command);
  const bool is_up = comes_true(kStartPatience, [this] {
    return program_of(daemon_->id()) == "lpd" && run({"lpc", "lpd"}).status == 0 &&
           fs::exists(directory_ + "/run/socket");
  });
  EXPECT_TRUE(is_up) << "lpd does not start: " << read_file(command.error_file);
  name_space_ = name_space_of(std::to_string(daemon_->id()));
}

Outcome LprngServer::run(std::vector<std::string> words, std::string_view input) {
  return run_command({inside(std::move(words))}, input);
}

/// Numbers of the jobs that have a ticket, hfA384.
std::set<std::string> LprngServer::jobs_of(const std::string& queue) const {
  constexpr std::string_view kTicket = "hfA";
  std::set<std::string> numbers;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory_ + "/spool/" + queue)) {
    const std::string name = entry.path().filename();
    if (name.starts_with(kTicket)) {
      numbers.insert(name.substr(kTicket.size()));
    }
  }
  return numbers;
}

std::string LprngServer::submit_files(const std::string& queue,
                                      const std::vector<std::string>& files,
                                      const std::vector<std::string>& options) {
  const std::set<std::string> before = jobs_of(queue);
  std::vector<std::string> words{"lpr", "-P" + queue};
  words.insert(words.end(), options.begin(), options.end());
  for (std::size_t i = 0; i < files.size(); ++i) {
    words.push_back(directory_ + "/file-" + std::to_string(i + 1));
    write_file(words.back(), files[i]);
  }
  const Outcome outcome = run(words);
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  for (const std::string& number : jobs_of(queue)) {
    if (!before.contains(number)) {
      return number;
    }
  }
  ADD_FAILURE() << "there is no new job: " << outcome.output << outcome.messages;
  return {};
}

std::string LprngServer::submit(const std::string& queue, std::string_view job,
                                const std::vector<std::string>& options) {
  return submit_files(queue, {std::string(job)}, options);
}

std::string LprngServer::status(const std::string& queue) {
  return run({"lpq", "-L", "-P" + queue}).output;
}

LprngJob LprngServer::job(const std::string& queue, const std::string& number) {
  std::istringstream lines(status(queue));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string state;
    std::string owner;
    words >> state >> owner;
    const std::size_t id = owner.find('+');
    if (id != std::string::npos && whole_number(owner.substr(id + 1)) == whole_number(number)) {
      return {state};
    }
  }
  return {};
}

bool LprngServer::wait_for_state(const std::string& queue, const std::string& number,
                                 const std::string& state, Seconds patience) {
  return comes_true(patience, [&] { return job(queue, number).state == state; });
}

std::vector<pid_t> LprngServer::processes() const {
  std::vector<pid_t> found;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos && !name_space_.empty() &&
        name_space_of(name) == name_space_) {
      found.push_back(std::stoi(name));
    }
  }
  return found;
}

std::vector<pid_t> LprngServer::processes_of(const std::string& program) const {
  std::vector<pid_t> found;
  for (const pid_t process : processes()) {
    if (program_of(process) == program) {
      found.push_back(process);
    }
  }
  return found;
}

}  // namespace rlx::testing
