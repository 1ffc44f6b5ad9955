// Writes generated jobs into a folder, for tests/machines/compare_jobs:
//
//   write_jobs FOLDER COUNT SEED
//
// FOLDER/forms has the forms, FOLDER/NUMBER a job each: "options" (one a line), "job", and what
// the site has: "site/" with the files that stand below sandbox/ in the run. The same seed makes
// the same jobs on every machine.

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/descriptors.h"
#include "support/job_generator.h"

namespace rlx::testing {
namespace {

constexpr std::array<std::string_view, 6> kPrinters{
    "D240!D400!f1!g!F", "D240", "D400!D240!f2!m70!g", "D300!D600!f10!isub!sA3", "!!g!F!D240", "f0"};
constexpr std::array<std::string_view, 6> kResolutions{"240", "400", "300", "600", "0", "-1"};
constexpr std::array<std::string_view, 10> kPlainOptions{"-A", "-B", "-C", "-D", "-f",
                                                         "-P", "-Q", "-S", "-i", "-k"};
constexpr std::array<std::string_view, 8> kNumbers{"3", "4", "6",          "8",
                                                   "9", "0", "4294967302", "99999999999999999999"};
constexpr std::array<std::string_view, 6> kFonts{
    "every-font\n",
    "every-font\nmissing-list\n",
    "every-font\nno-font 1 2 40 40\n",
    "font 1 2 24 24 7\nfont 1 4 40 40 9\n",
    "every-font\nopen-error 1 2 16 16 9 12\n",
    "every-font\nopen-error 1 4 66 62 9 13\n",
};
constexpr std::array<std::string_view, 5> kRanges{
    "F5A1-FEFE\n", "-FFFFFFFFFFFF0A5F-FEFE\n", "-FFFF0A5F-FEFE\n", "100000000F5A1-FEFE\n", "F5A1\n",
};

/// What the roads' jobs have not: more options, and what a site may have.
class SiteGenerator {
 public:
  explicit SiteGenerator(std::uint64_t seed) : random_(seed) {}

  void add_options(std::vector<std::string>& options) {
    if (chance(40)) {
      options.insert(options.end(), {"-G", one_of(kPrinters)});
    }
    if (chance(15)) {
      options.insert(options.end(), {"-e", one_of(kResolutions)});
    }
    if (chance(20)) {
      options.push_back(one_of(kPlainOptions));
    }
    if (chance(10)) {
      options.push_back((chance(50) ? "-c" : "-l") + one_of(kNumbers));
    }
    if (chance(10)) {
      options.insert(options.end(), {"-r", chance(50) ? "ubar" : "space"});
    }
    if (chance(5)) {
      options.insert(options.end(), {"-F", std::string(300, 'F'), "-w", one_of(kNumbers)});
    }
  }

  void write_site(const std::string& folder) {
    if (chance(50)) {
      write_file(folder + "/standin/description", one_of(kFonts));
    }
    if (chance(25)) {
      const bool usual = chance(60);
      write_file(folder + "/etc/lp/g1gaiji", usual ? kRanges.front() : one_of(kRanges));
    }
    if (chance(25)) {
      write_file(folder + "/etc/opt/PXLQwrmtk/wrmtk/wrmtkenv", "*COMMON\nFCBPRINT:2\n");
    }
  }

 private:
  bool chance(std::uint64_t percent) { return random_() % 100 < percent; }
  template <typename List>
  std::string one_of(const List& list) {
    return std::string(list[static_cast<std::size_t>(random_() % list.size())]);
  }

  std::mt19937_64 random_;
};

std::string lines_of(const std::vector<std::string>& words) {
  std::string lines;
  for (const std::string& word : words) {
    lines += word + "\n";
  }
  return lines;
}

void write_jobs(const char* folder, std::uint64_t count, std::uint64_t seed) {
  std::filesystem::create_directories(folder);
  std::filesystem::current_path(folder);
  write_generator_forms();
  JobGenerator jobs(seed);
  SiteGenerator sites(seed);
  for (std::uint64_t i = 0; i < count; ++i) {
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%06llu", static_cast<unsigned long long>(i));
    const std::string job_folder = number.data();
    GeneratedJob job = jobs.next();
    sites.add_options(job.options);
    write_file(job_folder + "/options", lines_of(job.options));
    write_file(job_folder + "/job", job.input);
    sites.write_site(job_folder + "/site");
  }
}

}  // namespace
}  // namespace rlx::testing

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: write_jobs FOLDER COUNT SEED\n", stderr);
    return 2;
  }
  rlx::testing::write_jobs(argv[1], std::strtoull(argv[2], nullptr, 10),
                           std::strtoull(argv[3], nullptr, 10));
  return 0;
}
