#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>

#include "spooler/web/browser/web_test.h"

// Who may do what by the web page, and how much at once.
namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPassword = "Lines2Print";
constexpr const char* kForm = "print 4 79200\nlpi 1200 66\n";

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// Somebody who asks for a page, and reads nothing of the answer.
class SlowReader {
 public:
  SlowReader(int port, const std::string& path)
      : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // Small, so that an answer does not fit into the system's buffers.
    const int buffer = 4096;
    const int segment = 536;
    setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof(buffer));
    setsockopt(socket_, IPPROTO_TCP, TCP_MAXSEG, &segment, sizeof(segment));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const std::string request = "GET " + path + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
    EXPECT_EQ(send(socket_, request.data(), request.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(request.size()));
  }
  ~SlowReader() { close(socket_); }
  SlowReader(const SlowReader&) = delete;
  SlowReader& operator=(const SlowReader&) = delete;

  /// Waits for the first bytes of the answer.
  bool is_answered() const {
    pollfd wanted{socket_, POLLIN, 0};
    return poll(&wanted, 1, 20000) == 1;
  }

  /// The bytes that have come; they stay where they are.
  std::size_t arrived() const {
    std::string bytes(1 << 20, '\0');
    const ssize_t count = recv(socket_, bytes.data(), bytes.size(), MSG_PEEK | MSG_DONTWAIT);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
  }

 private:
  int socket_;
};

class WebSecurity : public WebTest {
 protected:
  void set_password() {
    Browser browser;
    browser.open(at("/security"));
    browser.type("input[name=new_password]", kPassword);
    browser.type("input[name=new_password2]", kPassword);
    browser.keep_screenshot("security-desktop");
    browser.follow("input[type=submit]");
    ASSERT_TRUE(has(browser.text(), "Password changed.")) << browser.text();
  }

  static void log_in(Browser& browser, const std::string& password) {
    browser.type("input[name=password]", password);
    browser.follow("input[value=Login]");
  }
};

TEST_F(WebSecurity, WithAPasswordFormsAndJobsAskForIt) {
  submit("A\n");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  set_password();
  for (const char* const path : {"/forms/change", "/forms/delete?name=INVOICE", "/proofs",
                                 "/proofs/job?of=1-1", "/proofs/page?of=1-1&page=1",
                                 "/proofs/picture?of=1-1&page=1&sheet=1", "/proofs/dump?of=1-1"}) {
    EXPECT_TRUE(has(web_request(at(path)).body, "name=\"password\"")) << path;
  }
  // What needs none: forms are seen and tried.
  for (const char* const path : {"/forms", "/forms/form?name=INVOICE", "/try"}) {
    EXPECT_FALSE(has(web_request(at(path)).body, "name=\"password\"")) << path;
  }
}

TEST_F(WebSecurity, AFormIsStoredAfterTheLogin) {
  set_password();
  Browser browser;
  browser.open(at("/forms/change"));
  browser.keep_screenshot("login-desktop");
  log_in(browser, "wrong");
  EXPECT_TRUE(has(browser.text(), "Password incorrect.")) << browser.text();
  log_in(browser, kPassword);
  browser.type("input[name=name]", "SLIP");
  browser.type("textarea", kForm);
  browser.click_text("Check and store");
  EXPECT_TRUE(fs::exists(form_path("SLIP")));
  browser.open(at("/forms/delete?name=SLIP"));
  browser.follow("input[type=submit]");
  EXPECT_FALSE(fs::exists(form_path("SLIP"))) << "the login holds";
}

TEST_F(WebSecurity, ThePasswordIsChangedWithTheOldOne) {
  set_password();
  Browser browser;
  browser.open(at("/security"));
  log_in(browser, kPassword);
  browser.open(at("/security"));
  const auto change = [&browser](const std::string& old_password) {
    browser.type("input[name=old_password]", old_password);
    browser.type("input[name=new_password]", "Print2Lines");
    browser.type("input[name=new_password2]", "Print2Lines");
    browser.follow("input[type=submit]");
    return browser.text();
  };
  EXPECT_TRUE(has(change("wrong"), "Wrong old password."));
  EXPECT_TRUE(has(change(kPassword), "Password changed."));
}

TEST_F(WebSecurity, NothingIsChangedWithoutTheLogin) {
  // A page that was open before has a session that is still good.
  const std::string page = web_request(at("/forms/delete?name=INVOICE")).body;
  const std::string before = "name=\"session\" value=\"";
  const std::size_t begin = page.find(before) + before.size();
  const std::string session = page.substr(begin, page.find('"', begin) - begin);
  ASSERT_FALSE(session.empty());
  set_password();
  const std::string removal = "name=INVOICE&session=" + session;
  EXPECT_TRUE(has(web_request(at("/forms/delete"), &removal).body, "name=\"password\""));
  const std::string guess = removal + "&password=guessed";
  EXPECT_TRUE(has(web_request(at("/forms/delete"), &guess).body, "Password incorrect."));
  EXPECT_TRUE(fs::exists(form_path("INVOICE")));
}

/// PAPPL's own reader would look for the field's end behind the body's.
TEST_F(WebSecurity, AFormThatIsCutBehindAFieldsHeadEndsNothing) {
  const std::string cut = "--x\r\nContent-Disposition: form-data; name=\"session\"\r\n\r\n";
  for (int i = 0; i < 20; ++i) {
    web_request(at("/office/jobs"), &cut, "multipart/form-data; boundary=x");
  }
  EXPECT_EQ(web_request(at("/office/jobs")).status, 200);
}

/// The token of PAPPL's forms, which a page holds.
std::string token_of(const std::string& page) {
  constexpr std::string_view kBefore = "name=\"session\" value=\"";
  const std::size_t begin = page.find(kBefore);
  EXPECT_NE(begin, std::string::npos);
  return page.substr(begin + kBefore.size(),
                     page.find('"', begin + kBefore.size()) - begin - kBefore.size());
}

TEST_F(WebSecurity, AFormOfPapplsOwnPagesIsRead) {
  const std::string token = token_of(web_request(at("/office/config")).body);
  const std::string form = "--x\r\nContent-Disposition: form-data; name=\"session\"\r\n\r\n" +
                           token +
                           "\r\n--x\r\nContent-Disposition: form-data; "
                           "name=\"location\"\r\n\r\nHall 3\r\n--x--\r\n";
  web_request(at("/office/config"), &form, "multipart/form-data; boundary=x");
  EXPECT_TRUE(has(web_request(at("/office/config")).body, "Hall 3"));
}

/// PAPPL would list it twice among the jobs that have ended.
TEST_F(WebSecurity, AJobThatHasEndedIsNotCancelled) {
  submit("A\n");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  Browser browser;
  ASSERT_TRUE(shows(browser, "/proofs", "Printed"));
  const std::string form =
      "session=" + token_of(web_request(at("/office/config")).body) + "&action=cancel-job&job-id=1";
  web_request(at("/office/jobs"), &form);
  const std::string page = web_request(at("/office/jobs")).body;
  const std::size_t first = page.find("<tr><td>1</td>");
  EXPECT_NE(first, std::string::npos) << page;
  EXPECT_EQ(page.find("<tr><td>1</td>", first + 1), std::string::npos) << page;
}

TEST_F(WebSecurity, ThePagesAreThereWithTls) {
  EXPECT_EQ(web_request("https://" + authority() + "/forms").status, 200);
  const WebAnswer picture = web_request("https://" + authority() + "/forms/picture?name=INVOICE");
  EXPECT_TRUE(has(picture.body, "<svg"));
}

TEST_F(WebSecurity, AJobComesWithTls) {
  const std::string file = form_path("INVOICE");  // any text
  const Outcome outcome =
      run({"submit", "-u", "ipps://" + authority() + "/ipp/print/office", file});
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  const auto jobs = printer_.wait_for_jobs(1);
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_TRUE(jobs[0].is_whole()) << jobs[0].end;
}

TEST_F(WebSecurity, TwoRequestsDrawAtATime) {
  constexpr std::size_t kRequests = 6;
  std::string pages;
  for (int page = 0; page < 8; ++page) {
    for (int line = 0; line < 60; ++line) {
      pages += "a line that is drawn on each of the pages of this job\n";
    }
    pages += '\f';
  }
  for (std::size_t job = 0; job < kRequests; ++job) {
    submit(pages);
  }
  ASSERT_EQ(printer_.wait_for_jobs(kRequests).size(), kRequests);
  std::vector<std::future<WebAnswer>> answers;
  for (std::size_t job = 1; job <= kRequests; ++job) {
    answers.push_back(std::async(std::launch::async, [this, job] {
      return web_request(at("/proofs/job?of=1-" + std::to_string(job)));
    }));
  }
  int most = 0;
  for (std::future<WebAnswer>& answer : answers) {
    while (answer.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
      most = std::max(most, painters());
    }
    const WebAnswer page = answer.get();
    EXPECT_EQ(page.status, 200);
    EXPECT_TRUE(has(page.body, "/proofs/picture?of=")) << "all had their turn: " << page.body;
  }
  EXPECT_EQ(most, 2);
}

TEST_F(WebSecurity, SlowReadersDoNotKeepOthersFromDrawing) {
  std::string lines;
  for (int line = 0; line < 8000; ++line) {
    lines += std::to_string(line) + " is a line of a long job\n";
  }
  submit(lines);
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  const WebAnswer whole = web_request(at("/proofs/dump?of=1-1"));
  ASSERT_TRUE(has(whole.body, "</pre>")) << whole.body;
  ASSERT_GT(whole.body.size(), 300000U) << "an answer that no buffer takes";
  std::vector<std::unique_ptr<SlowReader>> readers;
  for (int reader = 0; reader < 3; ++reader) {
    readers.push_back(std::make_unique<SlowReader>(port(), "/proofs/dump?of=1-1"));
    ASSERT_TRUE(readers.back()->is_answered()) << reader;
  }
  for (const char* const path :
       {"/forms", "/forms/form?name=INVOICE", "/forms/picture?name=INVOICE", "/try",
        "/proofs/job?of=1-1", "/proofs/picture?of=1-1&page=1&sheet=1"}) {
    const WebAnswer page = web_request(at(path));
    EXPECT_EQ(page.status, 200) << path;
    EXPECT_FALSE(has(page.body, "Too many pictures")) << path;
  }
  for (const auto& reader : readers) {
    EXPECT_LT(reader->arrived(), 100000U) << "it read slowly";
  }
}

}  // namespace
}  // namespace rlx::testing
