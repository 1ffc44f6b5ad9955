#include "spooler/spooler_test.h"

#include <filesystem>

#include "support/escaped_bytes.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

}  // namespace

std::string filtered(const std::vector<std::string>& options, std::string_view job) {
  Command command{{installed_tree() + "/libexec/zqeuctorlx"}};
  command.words.insert(command.words.end(), options.begin(), options.end());
  const Outcome outcome = run_command(command, job);
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  return outcome.output;
}

std::string numbered_pages(const std::string& name, int pages, int lines) {
  std::string text;
  for (int page = 1; page <= pages; ++page) {
    text += "PAGE " + std::to_string(page) + " OF " + name + '\n';
    for (int line = 2; line <= lines; ++line) {
      text += "LINE " + std::to_string(line) + '\n';
    }
    text += '\f';
  }
  return text;
}

void expect_same_job(const std::string& expected, const PrinterJob& actual) {
  EXPECT_EQ(describe_difference(expected, actual.bytes), "");
  EXPECT_TRUE(actual.is_whole()) << actual.end << ", "
                                 << (actual.faults.empty() ? "" : actual.faults.front());
}

SpoolerTest::SpoolerTest() : forms_(make_directory("forms")) {
  put_form("INVOICE", read_file(RLX_PROJECT_DIRECTORY "/examples/forms/fcbe/INVOICE"));
  put_form("LABEL", "print 2 28800\nlpi 900 32\n");
}

SpoolerTest::~SpoolerTest() {
  std::error_code error;
  fs::remove_all(forms_, error);
}

void SpoolerTest::put_form(const std::string& name, const std::string& text) const {
  write_file(forms_ + "/fcbe/" + name, text);
}

void SpoolerTest::remove_form(const std::string& name) const {
  fs::remove(forms_ + "/fcbe/" + name);
}

CupsTest::CupsTest(const CupsSetup& setup) : server_(setup) {
  server_.add_queue("q", printer_, {"--forms", forms()});
}

PrinterJob CupsTest::print(std::string_view job, const std::vector<std::string>& options) {
  const std::size_t before = printer_.jobs().size();
  const int id = server_.submit("q", job, options);
  const CupsJob settled = server_.wait_for("q", id);
  EXPECT_EQ(settled.state, "completed") << settled.message << '\n' << server_.log_of(id);
  const auto& jobs = printer_.wait_for_jobs(before + 1);
  EXPECT_EQ(jobs.size(), before + 1);
  return jobs.size() > before ? jobs[before] : PrinterJob();
}

}  // namespace rlx::testing
