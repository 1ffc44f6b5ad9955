#include "spooler/web/browser/browser.h"

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "spooler/installed_tree.h"

namespace rlx::testing {

namespace {

using nlohmann::json;

constexpr long kSeconds = 60;
constexpr Seconds kStartPatience(30);
/// The name of an element's number in the protocol.
constexpr const char* kElement = "element-6066-11e4-a52e-4f735466cecf";

std::size_t take(char* bytes, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, size * count);
  return size * count;
}

struct EndCurl {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

WebAnswer request(const std::string& method, const std::string& url, const std::string* body,
                  const std::string& type) {
  const std::unique_ptr<CURL, EndCurl> curl(curl_easy_init());
  const std::unique_ptr<curl_slist, FreeList> headers(
      curl_slist_append(nullptr, ("Content-Type: " + type).c_str()));
  WebAnswer answer;
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, take);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer.body);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, kSeconds);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_NOPROXY, "*");
  // A server makes its certificate itself.
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
  if (body != nullptr) {
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body->data());
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(body->size()));
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
  }
  curl_easy_perform(curl.get());
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &answer.status);
  return answer;
}

std::string from_base64(const std::string& text) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char digit : text) {
    const std::size_t value = kDigits.find(digit);
    if (value == std::string_view::npos) {
      continue;
    }
    bits = (bits << 6U) | static_cast<unsigned>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>((bits >> count) & 0xFFU);
    }
  }
  return bytes;
}

/// Starts on a free port, which chromedriver tells.
std::string read_port(int output) {
  constexpr std::string_view kBefore = "successfully on port ";
  std::string said;
  std::array<char, 512> portion{};
  for (ssize_t count = 0; (count = read(output, portion.data(), portion.size())) > 0;) {
    said.append(portion.data(), static_cast<std::size_t>(count));
    const std::size_t place = said.find(kBefore);
    if (place != std::string::npos && said.find('.', place) != std::string::npos) {
      const std::size_t begin = place + kBefore.size();
      return said.substr(begin, said.find('.', begin) - begin);
    }
  }
  throw std::runtime_error("chromedriver does not start: " + said);
}

json wanted(const BrowserSetup& setup) {
  json arguments{"--headless=new", "--disable-gpu", "--disable-dev-shm-usage",
                 // Nothing but the server of the test is asked for anything.
                 "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE localhost",
                 "--user-data-dir=" + make_directory("browser"), "--accept-lang=" + setup.language};
  if (getuid() == 0) {
    arguments.push_back("--no-sandbox");
  }
  const json options{
      {"args", arguments},
      {"mobileEmulation",
       {{"deviceMetrics", {{"width", setup.width}, {"height", setup.height}, {"pixelRatio", 1}}}}},
      {"prefs", {{"intl.accept_languages", setup.language}}}};
  return {{"capabilities", {{"alwaysMatch", {{"goog:chromeOptions", options}}}}}};
}

}  // namespace

WebAnswer web_request(const std::string& url, const std::string* body, const std::string& type) {
  return request(body == nullptr ? "GET" : "POST", url, body, type);
}

Browser::Browser(const BrowserSetup& setup)
    : driver_(std::make_unique<Process>(
          Command{.words = {"chromedriver", "--port=0"},
                  .environment = {{"PATH", "/usr/bin:/bin"}, {"HOME", make_directory("home")}},
                  .user = {},
                  .has_pipes = true,
                  .error_file = "/dev/null"})),
      base_("http://127.0.0.1:" + read_port(driver_->output())) {
  session_ =
      "/session/" + ask("POST", "/session", wanted(setup)).at("sessionId").get<std::string>();
}

Browser::~Browser() {
  try {
    ask("DELETE", session_, nullptr);
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
  }
}

json Browser::ask(const std::string& method, const std::string& path, const json& body) {
  const std::string text = body.dump();
  const bool has_body = method == "POST";
  const WebAnswer answer =
      request(method, base_ + path, has_body ? &text : nullptr, "application/json");
  const json answered = json::parse(answer.body, nullptr, false);
  if (answer.status != 200 || answered.is_discarded()) {
    throw std::runtime_error(method + ' ' + path + ' ' + text + ": " + answer.body.substr(0, 400));
  }
  return answered.at("value");
}

std::string Browser::element(const std::string& strategy, const std::string& value) {
  return session_ + "/element/" +
         ask("POST", session_ + "/element", {{"using", strategy}, {"value", value}})
             .at(kElement)
             .get<std::string>();
}

void Browser::open(const std::string& url) {
  ask("POST", session_ + "/url", {{"url", url}});
}

std::string Browser::text() {
  return ask("GET", element("css selector", "body") + "/text");
}

std::string Browser::source() {
  return ask("GET", session_ + "/source");
}

std::string Browser::url() {
  return ask("GET", session_ + "/url");
}

void Browser::click(const std::string& selector) {
  ask("POST", element("css selector", selector) + "/click");
}

void Browser::click_text(const std::string& text) {
  const std::string path = "//a[normalize-space(.)='" + text + "']|//input[@value='" + text + "']";
  click_through(element("xpath", path));
}

void Browser::follow(const std::string& selector) {
  click_through(element("css selector", selector));
}

void Browser::click_through(const std::string& element) {
  run_script("window.isTheOldPage = true");
  ask("POST", element + "/click");
  EXPECT_TRUE(comes_true(kStartPatience, [this] {
    return run_script("return !window.isTheOldPage && document.readyState == 'complete'")
        .get<bool>();
  })) << "the click leads nowhere";
}

void Browser::type(const std::string& selector, const std::string& text) {
  ask("POST", element("css selector", selector) + "/value", {{"text", text}});
}

void Browser::clear(const std::string& selector) {
  ask("POST", element("css selector", selector) + "/clear");
}

json Browser::run_script(const std::string& script) {
  return ask("POST", session_ + "/execute/sync", {{"script", script}, {"args", json::array()}});
}

int Browser::pictures() {
  const json widths = run_script(
      "return Array.from(document.querySelectorAll('.rlx img')).map(i => i.complete ? "
      "i.naturalWidth : -1)");
  for (const json& width : widths) {
    EXPECT_GT(width.get<int>(), 0) << url();
  }
  return static_cast<int>(widths.size());
}

void Browser::keep_screenshot(const std::string& name) {
  std::filesystem::create_directories(RLX_SCREENSHOTS);
  std::ofstream(std::string(RLX_SCREENSHOTS) + '/' + name + ".png", std::ios::binary)
      << from_base64(ask("GET", session_ + "/screenshot"));
}

}  // namespace rlx::testing
