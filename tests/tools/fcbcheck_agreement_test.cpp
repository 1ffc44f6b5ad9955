// The program takes exactly the forms that the filter takes: the forms of all other tests and
// generated ones, as the filter's loader and as the whole filter judge them.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fcbcheck/form_file.h"
#include "job/fixed_paths.h"
#include "support/descriptors.h"
#include "support/the_filter.h"
#include "tools/form_generator.h"
#include "tools/tool_run.h"

namespace rlx::fcbcheck {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kGeneratedForms = 20000;
/// Of the generated ones every hundredth is given to the programs.
constexpr std::uint32_t kGeneratedRuns = kGeneratedForms / 100;

/// What changes the reading.
struct Circumstances {
  int stream_variant = kPlainStream;
  bool half_inches = false;
};

constexpr std::array<Circumstances, 6> kAllCircumstances{{{kPlainStream, false},
                                                          {kPlainStream, true},
                                                          {kSentLengthStream, false},
                                                          {kSentLengthStream, true},
                                                          {kShortFormStream, false},
                                                          {kShortFormStream, true}}};

/// The bytes of a string literal of a source, from behind its quote; `at` is moved behind it.
std::string literal(std::string_view source, std::size_t& at) {
  std::string text;
  for (; at < source.size() && source[at] != '"'; ++at) {
    if (source[at] != '\\') {
      text += source[at];
      continue;
    }
    constexpr std::string_view kLetters = "nrtvf0";
    constexpr std::string_view kMeanings{"\n\r\t\v\f\0", 6};
    const std::size_t letter = kLetters.find(source[++at]);
    text += letter == std::string_view::npos ? source[at] : kMeanings[letter];
  }
  ++at;
  return text;
}

/// All string literals of a source; what stands around them does not matter: any text is a form to
/// be judged.
std::vector<std::string> literals(const std::string& source) {
  std::vector<std::string> all;
  for (std::size_t at = source.find('"'); at != std::string::npos; at = source.find('"', at)) {
    ++at;
    all.push_back(literal(source, at));
  }
  return all;
}

bool is_form_path(const fs::path& path) {
  return path.parent_path().filename() == "fcbe";
}

void add_forms_below(const fs::path& folder, std::vector<std::string>& forms) {
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && is_form_path(entry.path())) {
      forms.push_back(testing::read_file(entry.path()));
    }
  }
}

/// The forms of golden jobs, of the examples, of the fuzz target and in the unit tests.
std::vector<std::string> forms_of_the_suites() {
  const fs::path project(RLX_PROJECT_DIRECTORY);
  std::vector<std::string> forms;
  add_forms_below(project / "tests/cases", forms);
  add_forms_below(project / "examples/forms", forms);
  for (const fs::directory_entry& entry : fs::directory_iterator(project / "fuzz/corpus/fcb")) {
    const std::string input = testing::read_file(entry.path());
    forms.push_back(input.substr(std::min<std::size_t>(1, input.size())));
  }
  for (const char* const name :
       {"fcb", "fcb_fault", "form_walk", "start_up", "main_loop_forms", "job_end", "two_jobs"}) {
    const fs::path source = project / "tests/unit" / (std::string(name) + "_test.cpp");
    const std::vector<std::string> texts = literals(testing::read_file(source));
    forms.insert(forms.end(), texts.begin(), texts.end());
  }
  return forms;
}

/// A form in memory.
class FormInMemory {
 public:
  FormInMemory() : descriptor_(memfd_create("form", 0)) {}
  ~FormInMemory() { close(descriptor_); }
  FormInMemory(const FormInMemory&) = delete;
  FormInMemory& operator=(const FormInMemory&) = delete;

  void set(const std::string& text) const {
    ASSERT_EQ(ftruncate(descriptor_, 0), 0);
    ASSERT_EQ(pwrite(descriptor_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

class FcbcheckAgreement : public ::testing::Test {
 protected:
  ~FcbcheckAgreement() override {
    testing::restart_settings();
    testing::the_filter().environment = {};
  }

  /// Compares the program's reading with the filter's loader. @return whether the form is good.
  bool compare_readings(const std::string& text, const Circumstances& how) {
    memory_.set(text);
    const EnvironmentFile environment{.loaded = 1, .fcbprint_halfinch = how.half_inches ? 1 : 0};
    testing::the_filter().command_line.stream_variant = how.stream_variant;
    testing::the_filter().environment = environment;
    FcbTable table;
    const Status status =
        fcb_load(testing::the_filter().forms, memory_.path().c_str(), table, directories_);
    const FormFile form = read_form_file(
        memory_.path(), {.stream_variant = how.stream_variant, .environment = environment});
    EXPECT_EQ(form.is_good(), status == ST_OK) << text;
    if (status == ST_OK) {
      EXPECT_EQ(form.table.lpi, table.lpi) << text;
      EXPECT_EQ(form.table.top_line, table.top_line) << text;
      EXPECT_EQ(form.table.form_halfinch, table.form_halfinch) << text;
    }
    return status == ST_OK;
  }

  /// Compares both programs. @return whether the form is good.
  static bool compare_programs(const std::string& text, const Circumstances& how) {
    testing::write_file("FORM", text);
    testing::write_file(fixed_paths::kEnvironmentFile,
                        how.half_inches ? "*COMMON\nFCBPRINT:2\n" : "*COMMON\n");
    std::vector<std::string> options;
    if (how.stream_variant != kPlainStream) {
      options.emplace_back(how.stream_variant == kShortFormStream ? "-R" : "-E");
    }
    const bool good = filter_takes(options);
    EXPECT_EQ(fcbcheck_takes(options), good) << text;
    return good;
  }

 private:
  static bool filter_takes(std::vector<std::string> options) {
    options.insert(options.end(), {"-n", "./FORM"});
    const testing::ToolOutcome outcome =
        testing::run_tool(RLX_SANDBOXED_PROGRAM, {.arguments = options});
    EXPECT_EQ(outcome.messages, outcome.status == 0 ? "" : "tool: FCB data error\n");
    return outcome.status == 0;
  }

  static bool fcbcheck_takes(std::vector<std::string> options) {
    options.insert(options.end(), {"--environment", fixed_paths::kEnvironmentFile, "FORM"});
    const testing::ToolOutcome outcome = testing::run_tool(RLX_FCBCHECK, {.arguments = options});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.messages.starts_with("FORM:"), outcome.status == 1);
    return outcome.status == 0;
  }

  const FormInMemory memory_;
  const ResourceDirectories directories_;
};

TEST_F(FcbcheckAgreement, OnTheFormsOfAllSuites) {
  const testing::CaptureDescriptor messages(STDERR_FILENO);
  const std::vector<std::string> forms = forms_of_the_suites();
  EXPECT_GT(forms.size(), 300U);
  std::size_t good = 0;
  for (const std::string& form : forms) {
    for (const Circumstances& how : kAllCircumstances) {
      good += compare_readings(form, how) ? 1U : 0U;
    }
  }
  EXPECT_GT(good, forms.size());
}

TEST_F(FcbcheckAgreement, OnGeneratedForms) {
  const testing::CaptureDescriptor messages(STDERR_FILENO);
  std::size_t good = 0;
  for (std::uint32_t number = 0; number < kGeneratedForms; ++number) {
    const Circumstances& how = kAllCircumstances[number % kAllCircumstances.size()];
    good += compare_readings(testing::generated_form(number), how) ? 1U : 0U;
  }
  EXPECT_GT(good, kGeneratedForms * 4 / 10);
  EXPECT_LT(good, kGeneratedForms * 6 / 10);
}

TEST_F(FcbcheckAgreement, OfTheProgramsOnGeneratedForms) {
  const testing::ScratchDirectory scratch;
  std::size_t good = 0;
  for (std::uint32_t number = 0; number < kGeneratedRuns; ++number) {
    const Circumstances& how = kAllCircumstances[number % kAllCircumstances.size()];
    good += compare_programs(testing::generated_form(number), how) ? 1U : 0U;
  }
  EXPECT_GT(good, kGeneratedRuns / 3);
  EXPECT_LT(good, kGeneratedRuns * 2 / 3);
}

TEST_F(FcbcheckAgreement, OfTheProgramsOnTheFormsOfAllSuites) {
  const testing::ScratchDirectory scratch;
  const std::vector<std::string> forms = forms_of_the_suites();
  for (std::size_t i = 0; i < forms.size(); i += 4) {
    compare_programs(forms[i], kAllCircumstances[i / 4 % kAllCircumstances.size()]);
  }
}

TEST(FcbcheckAgreementTest, FindsLiterals) {
  EXPECT_EQ(literals(R"(a("b\n", "", "c\"\\")"), (std::vector<std::string>{"b\n", "", "c\"\\"}));
}

}  // namespace
}  // namespace rlx::fcbcheck
