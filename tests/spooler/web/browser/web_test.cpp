#include "spooler/web/browser/web_test.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "spooler/installed_tree.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

constexpr Seconds kPatience(20);

}  // namespace

WebTest::WebTest() : folder_(make_directory("web")), port_(free_loopback_port()) {
  base_ = "http://localhost:" + std::to_string(port_);
  fs::create_directories(folder_ + "/s/forms/fcbe");
  fs::create_directories(folder_ + "/sp");
  fs::copy(RLX_PROJECT_DIRECTORY "/examples/forms/fcbe/INVOICE", form_path("INVOICE"));
  start();
  EXPECT_EQ(run_here({"add", "-d", "office", "-v", printer_.uri(), "-m", "rlx-240"}).status, 0);
}

void WebTest::start() {
  server_ = std::make_unique<Process>(Command{
      .words = {RLX_BUILD_DIRECTORY "/rlx-printer-app", "server", "-o",
                "state-directory=" + folder_ + "/s", "-o", "spool-directory=" + folder_ + "/sp",
                "-o", "server-port=" + std::to_string(port_), "-o", "listen-hostname=localhost",
                "-o", "log-file=" + folder_ + "/log", "-o", "log-level=debug"},
      .environment = {{"HOME", folder_}, {"PATH", "/usr/bin:/bin"}},
      .user = {},
      .has_pipes = false,
      .error_file = folder_ + "/messages"});
  EXPECT_TRUE(comes_true(kPatience, [this] { return web_request(at("/forms")).status == 200; }));
}

Outcome WebTest::run(const std::vector<std::string>& words) const {
  std::vector<std::string> all{RLX_BUILD_DIRECTORY "/rlx-printer-app"};
  all.insert(all.end(), words.begin(), words.end());
  return run_command({.words = all, .environment = {{"HOME", folder_}, {"PATH", "/usr/bin:/bin"}}});
}

Outcome WebTest::run_here(std::vector<std::string> words) const {
  words.insert(words.begin() + 1, {"-h", authority()});
  return run(words);
}

int WebTest::painters() const {
  const auto all = processes_with("HOME", folder_);
  return static_cast<int>(std::count_if(all.begin(), all.end(), [](pid_t process) {
    std::error_code error;
    const fs::path program =
        fs::read_symlink("/proc/" + std::to_string(process) + "/exe", error).filename();
    return program == "rlxproof";
  }));
}

void WebTest::submit(const std::string& text, const std::vector<std::string>& options) const {
  const std::string file = folder_ + "/report.txt";
  std::ofstream(file) << text;
  std::vector<std::string> words{"submit", "-d", "office"};
  for (const std::string& option : options) {
    words.insert(words.end(), {"-o", option});
  }
  words.push_back(file);
  const Outcome outcome = run_here(words);
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
}

bool WebTest::shows(Browser& browser, const std::string& path, const std::string& text) const {
  return comes_true(kPatience, [&] {
    browser.open(at(path));
    return browser.text().find(text) != std::string::npos;
  });
}

}  // namespace rlx::testing
