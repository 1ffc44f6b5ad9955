#include <filesystem>
#include <fstream>
#include <sstream>

#include "spooler/web/browser/web_test.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* kGoodForm = "print 4 79200\nlpi 1200 66\n";
constexpr const char* kBadForm = "print 4 79200\nlpi 1000 66\n";
constexpr const char* kFault = "Line 2: lpi: pitch 1000 is none of 2400, 1800, 1200, 900 and 600";
const BrowserSetup kPhone{390, 800, "en"};
const BrowserSetup kJapanesePhone{390, 800, "ja"};

std::string contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class WebPages : public WebTest {};

TEST_F(WebPages, AddAFormAndDeleteIt) {
  Browser browser;
  browser.open(at("/forms"));
  browser.click_text("Add a form");
  browser.type("input[name=name]", "SLIP");
  browser.type("textarea", kGoodForm);
  browser.keep_screenshot("form-add-desktop");
  browser.click_text("Check and store");
  EXPECT_EQ(contents(form_path("SLIP")), kGoodForm);
  EXPECT_EQ(browser.pictures(), 1);
  browser.keep_screenshot("form-desktop");
  browser.open(at("/forms"));
  EXPECT_EQ(browser.pictures(), 2);
  browser.keep_screenshot("forms-desktop");
  browser.open(at("/forms/form?name=SLIP"));
  browser.click_text("Delete this form");
  EXPECT_TRUE(fs::exists(form_path("SLIP"))) << "it only asks";
  browser.follow("input[type=submit]");
  EXPECT_FALSE(fs::exists(form_path("SLIP")));
  EXPECT_TRUE(fs::exists(form_path("INVOICE")));
}

TEST_F(WebPages, UploadAFile) {
  Browser browser;
  browser.open(at("/forms/change"));
  browser.type("input[type=file]", RLX_PROJECT_DIRECTORY "/examples/forms/fcbe/INVOICE");
  browser.click_text("Check and store");
  EXPECT_TRUE(has(browser.text(), "There is a form of this name. Nothing was stored."));
  browser.click("input[name=replace]");
  browser.click_text("Check and store");
  EXPECT_EQ(contents(form_path("INVOICE")),
            contents(RLX_PROJECT_DIRECTORY "/examples/forms/fcbe/INVOICE"));
  EXPECT_TRUE(has(browser.url(), "/forms/form?name=INVOICE"));
}

TEST_F(WebPages, ABrokenFormIsNotStored) {
  const std::string before = contents(form_path("INVOICE"));
  Browser browser;
  browser.open(at("/forms/form?name=INVOICE"));
  browser.click_text("Change");
  browser.clear("textarea");
  browser.type("textarea", kBadForm);
  browser.click_text("Check and store");
  EXPECT_TRUE(has(browser.text(), kFault)) << browser.text();
  EXPECT_EQ(contents(form_path("INVOICE")), before);
  browser.keep_screenshot("form-fault-desktop");
  // One that is broken behind the server's back.
  std::ofstream(form_path("INVOICE")) << kBadForm;
  browser.open(at("/forms"));
  EXPECT_TRUE(has(browser.text(), kFault));
  EXPECT_EQ(browser.pictures(), 0);
  browser.keep_screenshot("forms-fault-desktop");
}

TEST_F(WebPages, ANameIsNeverAPath) {
  Browser browser;
  browser.open(at("/forms/change"));
  browser.run_script("document.querySelector('input[name=name]').removeAttribute('pattern')");
  browser.type("input[name=name]", "../../BAD");
  browser.type("textarea", kGoodForm);
  browser.click_text("Check and store");
  EXPECT_TRUE(has(browser.text(), "Nothing was stored."));
  EXPECT_FALSE(fs::exists(form_path("../../BAD")));
}

TEST_F(WebPages, ShowTheProofOfAJob) {
  submit(contents(RLX_PROJECT_DIRECTORY "/examples/invoice.txt"), {"form=INVOICE"});
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  Browser browser;
  ASSERT_TRUE(shows(browser, "/proofs", "Printed"));
  browser.keep_screenshot("jobs-desktop");
  browser.follow(".rlx-jobs a");
  EXPECT_EQ(browser.pictures(), 2);
  EXPECT_TRUE(has(browser.text(), "-n INVOICE"));
  browser.keep_screenshot("job-desktop");
  browser.follow(".rlx-card a");
  EXPECT_EQ(browser.pictures(), 1);
  EXPECT_TRUE(has(browser.text(), "Page 1 of 2"));
  browser.keep_screenshot("page-desktop");
  browser.click_text("Next page");
  EXPECT_TRUE(has(browser.text(), "Page 2 of 2"));
  browser.click_text("All pages");
  browser.click_text("What the printer gets");
  EXPECT_TRUE(has(browser.text(), " blocks"));
  browser.keep_screenshot("dump-desktop");
}

TEST_F(WebPages, TellWhyAJobWasNotPrinted) {
  submit("A\n", {"form=<b>NONE"});
  submit("A\n", {"form=MISSING"});
  Browser browser;
  ASSERT_TRUE(shows(browser, "/proofs", "form MISSING is missing"));
  EXPECT_FALSE(has(browser.source(), "<b>NONE")) << "escaped";
  browser.keep_screenshot("jobs-failed-desktop");
  browser.follow(".rlx-jobs a");
  EXPECT_TRUE(has(browser.text(), "form MISSING is missing"));
  EXPECT_FALSE(has(browser.text(), "Pages: 0")) << "no proof of nothing: " << browser.text();
  browser.keep_screenshot("job-failed-desktop");
}

TEST_F(WebPages, CancelAJob) {
  printer_.tell("stall 1");
  submit(std::string(3000000, 'x') + "\n");
  Browser browser;
  ASSERT_TRUE(shows(browser, "/proofs", "Printing"));
  printer_.wait_for_stall();
  browser.keep_screenshot("jobs-printing-desktop");
  browser.click_text("Cancel this job");
  printer_.tell("go");
  EXPECT_TRUE(shows(browser, "/proofs", "Cancelled"));
}

// One row has a button, one a large number, one a message.
TEST_F(WebPages, TheColumnsOfTheJobsStandBelowEachOther) {
  std::string pages;
  for (int page = 0; page < 1000; ++page) {
    pages += "A\f";
  }
  submit(pages);
  submit("A\n", {"form=MISSING"});
  for (const char* const language : {"en", "ja"}) {
    Browser browser({1280, 1000, language});
    ASSERT_TRUE(shows(browser, "/proofs", "1000"));
    ASSERT_TRUE(shows(browser, "/proofs", "form MISSING is missing"));
    printer_.tell("stall 1");
    submit(std::string(3000000, 'x') + "\n");
    ASSERT_TRUE(printer_.wait_for_stall());
    browser.open(at("/proofs"));
    for (const char* const column : {".rlx-state", ".rlx-pages", "time"}) {
      const auto places = browser.run_script(
          std::string("return Array.from(document.querySelectorAll('.rlx-jobs li ") + column +
          "')).map(e => [e.getBoundingClientRect().left, e.getBoundingClientRect().height])");
      ASSERT_GE(places.size(), 3U) << column;
      for (const auto& place : places) {
        EXPECT_EQ(place, places[0]) << column << ' ' << language << ": " << places;
      }
    }
    EXPECT_EQ(browser.run_script("return document.documentElement.scrollWidth"), 1280) << language;
    browser.keep_screenshot(std::string("jobs-columns-desktop-") + language);
    browser.follow(".rlx-jobs input[type=submit]");
    printer_.tell("go");
    ASSERT_TRUE(comes_true(Seconds(60), [&] {
      browser.open(at("/proofs"));
      return browser.run_script("return document.querySelectorAll('.rlx-jobs form').length") == 0;
    }));
  }
}

TEST_F(WebPages, APrintersLinesPerInchAreChosenFromThoseThatItHas) {
  Browser browser;
  browser.open(at("/office/printing"));
  EXPECT_EQ(browser.run_script("return Array.from(document.querySelectorAll('select[name=lpi] "
                               "option')).map(o => o.value).join()"),
            "0,3,4,6,8,12");
  browser.run_script("document.querySelector('select[name=lpi]').value = '8'");
  browser.follow("form[action='/office/printing'] input[type=submit]");
  submit("A\n");
  ASSERT_TRUE(shows(browser, "/proofs", "Printed"));
  browser.follow(".rlx-jobs a");
  EXPECT_TRUE(has(browser.text(), "-l 8")) << browser.text();
}

TEST_F(WebPages, ADefaultThatCannotBeIsCalledADefault) {
  Browser browser;
  browser.open(at("/office/printing"));
  browser.clear("input[name=page-offset-x]");
  browser.type("input[name=page-offset-x]", "5");
  browser.follow("form[action='/office/printing'] input[type=submit]");
  submit("A\n");
  EXPECT_TRUE(shows(browser, "/proofs", "option page-offset-x-default=5: wanted is "));
}

TEST_F(WebPages, TryAForm) {
  Browser browser;
  browser.open(at("/forms/form?name=INVOICE"));
  browser.click_text("Try it");
  browser.type("textarea", "Trial <of> a form\n");
  browser.click_text("Show the proof");
  EXPECT_EQ(browser.pictures(), 1);
  EXPECT_TRUE(has(browser.source(), "Trial &lt;of&gt; a form")) << "the text stays";
  browser.keep_screenshot("try-desktop");
  // A form feed cannot be typed; a file has them.
  browser.type("input[type=file]", RLX_PROJECT_DIRECTORY "/examples/invoice.txt");
  browser.click_text("Show the proof");
  EXPECT_EQ(browser.pictures(), 2);
  EXPECT_TRUE(printer_.jobs().empty()) << "nothing is printed";
  browser.open(at("/proofs"));
  EXPECT_TRUE(has(browser.text(), "There was no job yet."));
}

TEST_F(WebPages, RefuseWhatDoesNotComeFromThem) {
  const std::string removal = "name=INVOICE";
  EXPECT_EQ(web_request(at("/forms/delete"), &removal).status, 403);
  const std::string other = "name=INVOICE&session=0123456789";
  EXPECT_EQ(web_request(at("/forms/delete"), &other).status, 403);
  EXPECT_TRUE(fs::exists(form_path("INVOICE")));
  const std::string long_body(3000000, 'a');
  EXPECT_EQ(web_request(at("/forms/change"), &long_body).status, 413);
  EXPECT_EQ(web_request(at("/try"), &removal, "text/plain").status, 400);
  EXPECT_EQ(web_request(at("/forms/picture?name=../../../../etc/passwd")).status, 404);
  EXPECT_EQ(web_request(at("/forms")).status, 200) << "it goes on";
}

/// Each page fits into a phone's width, in both languages, and has no script.
TEST_F(WebPages, FitAPhone) {
  submit(contents(RLX_PROJECT_DIRECTORY "/examples/invoice.txt"), {"form=INVOICE"});
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  std::ofstream(form_path("BROKEN")) << kBadForm;
  const std::vector<std::pair<std::string, std::string>> pages{
      {"forms", "/forms"},
      {"form", "/forms/form?name=INVOICE"},
      {"change", "/forms/change"},
      {"jobs", "/proofs"},
      {"job", "/proofs/job?of=1-1"},
      {"page", "/proofs/page?of=1-1&page=1"},
      {"dump", "/proofs/dump?of=1-1"},
      {"try", "/try"}};
  for (const BrowserSetup& setup : {kPhone, kJapanesePhone}) {
    Browser browser(setup);
    ASSERT_TRUE(shows(browser, "/proofs", setup.language == "ja" ? "印刷済み" : "Printed"));
    for (const auto& [name, path] : pages) {
      browser.open(at(path));
      EXPECT_LE(browser.run_script("return document.documentElement.scrollWidth").get<int>(),
                setup.width)
          << path;
      EXPECT_EQ(has(browser.text(), "フォームを試す"), setup.language == "ja") << path;
      EXPECT_FALSE(has(browser.source(), "<script")) << path;
      browser.keep_screenshot(name + "-phone-" + setup.language);
    }
  }
}

TEST_F(WebPages, TheFrameworksPagesInJapanese) {
  Browser browser({1280, 1000, "ja"});
  browser.open(at("/"));
  const std::string home = browser.text();
  for (const char* const word : {"設定", "設置場所", "組織", "印刷の既定値"}) {
    EXPECT_TRUE(has(home, word)) << word << " in " << home;
  }
  browser.keep_screenshot("home-desktop-ja");
  browser.open(at("/office/printing"));
  EXPECT_TRUE(has(browser.text(), "長辺とじ")) << browser.text();
  browser.keep_screenshot("defaults-desktop-ja");
  Browser english;
  english.open(at("/"));
  EXPECT_TRUE(has(english.text(), "Configuration")) << english.text();
  english.keep_screenshot("home-desktop");
}

}  // namespace
}  // namespace rlx::testing
