#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "spooler/process.h"

namespace rlx::testing {

struct WebAnswer {
  long status = 0;
  std::string body;
};

/// A request as curl makes it. @param body  sent as a POST, unless it is null.
WebAnswer web_request(const std::string& url, const std::string* body = nullptr,
                      const std::string& type = "application/x-www-form-urlencoded");

/// How a browser shows pages.
struct BrowserSetup {
  int width = 1280;
  int height = 1000;
  std::string language = "en";
};

/// Chromium without a window, driven by chromedriver in the WebDriver protocol. Both need
/// JavaScript for themselves.
class Browser {
 public:
  explicit Browser(const BrowserSetup& setup = {});
  ~Browser();
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  void open(const std::string& url);
  /// The page's text, as it is shown.
  std::string text();
  std::string source();
  std::string url();
  /// @param selector  CSS. Fails the test when there is no such element.
  void click(const std::string& selector);
  /// The same with what leads to another page, and waits for that.
  void follow(const std::string& selector);
  /// The same with a link or button that has this text.
  void click_text(const std::string& text);
  void type(const std::string& selector, const std::string& text);
  void clear(const std::string& selector);
  /// Runs a script of the test's. @return what it returns.
  nlohmann::json run_script(const std::string& script);
  /// The number of pictures in the page; fails the test when one of them cannot be shown.
  int pictures();
  /// Keeps what the window shows as NAME.png in the folder of screenshots.
  void keep_screenshot(const std::string& name);

 private:
  nlohmann::json ask(const std::string& method, const std::string& path,
                     const nlohmann::json& body = nlohmann::json::object());
  void click_through(const std::string& element);
  std::string element(const std::string& strategy, const std::string& value);

  std::unique_ptr<Process> driver_;
  std::string base_;
  std::string session_;
};

}  // namespace rlx::testing
