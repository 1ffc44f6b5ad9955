#include "rlxproof/options.h"

#include <getopt.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include "rlxproof/words.h"

namespace rlx::proof {

namespace {

constexpr const char* kUsage =
    "usage: rlxproof [-o FILE.pdf] [--png DIR] [--pages 3-7] [--filter-options TEXT] [FILE]\n";

constexpr const char* kHelp =
    "\n"
    "Draws proof sheets of a job: of RLX, or of a line-printer job, which the filter converts "
    "first.\n"
    "\n"
    "  -o, --output FILE      write the PDF there; - is standard output\n"
    "      --png DIR          write a picture of each sheet there; without -o no PDF\n"
    "      --pages RANGE      only these pages: 5, 3-7, 3- or -4\n"
    "      --filter-options TEXT\n"
    "                         options for the filter, such as \"-n INVOICE -p forms\"\n"
    "  -h, --help             this text\n"
    "  -V, --version          the version\n"
    "\n"
    "Without -o the PDF goes beside FILE, with .pdf in place of its ending; that of standard "
    "input\n"
    "goes to standard output when that is no terminal.\n"
    "\n"
    "Status: 0 good, 1 something is wrong with the job or with files, 2 wrong use.\n";

constexpr int kPng = 256;
constexpr int kPages = 257;
constexpr int kFilterOptions = 258;

constexpr std::array<option, 7> kOptions{{
    {"output", required_argument, nullptr, 'o'},
    {"png", required_argument, nullptr, kPng},
    {"pages", required_argument, nullptr, kPages},
    {"filter-options", required_argument, nullptr, kFilterOptions},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'V'},
    {nullptr, 0, nullptr, 0},
}};

/// Reads one command line.
class OptionReader {
 public:
  std::variant<Options, int> read(int argc, char** argv) {
    optind = 1;
    for (int letter = 0;
         (letter = getopt_long(argc, argv, "o:hV", kOptions.data(), nullptr)) != -1;) {
      if (!take(letter)) {
        return status_;
      }
    }
    if (argc - optind > 1) {
      return refuse("more than one FILE");
    }
    if (optind < argc) {
      options_.job = argv[optind];
    }
    if (!choose_output()) {
      return status_;
    }
    return options_;
  }

 private:
  int refuse(const std::string& what) {
    std::fprintf(stderr, "rlxproof: %s\n%s", what.c_str(), kUsage);
    return status_ = kWrongUse;
  }

  int end_with(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    return status_ = std::fflush(stdout) == 0 ? kGood : kBadInput;
  }

  /// @return false when the program is to end with status_.
  bool take(int letter) {
    switch (letter) {
      case 'o':
        options_.pdf = optarg;
        return true;
      case kPng:
        options_.pictures = optarg;
        return true;
      case kPages:
        return take_pages();
      case kFilterOptions:
        return take_filter_options();
      case 'h':
        end_with(std::string(kUsage) + kHelp);
        return false;
      case 'V':
        end_with("rlxproof " RLX_VERSION "\n");
        return false;
      default:
        std::fputs(kUsage, stderr);
        status_ = kWrongUse;
        return false;
    }
  }

  bool take_pages() {
    const auto range = parse_page_range(optarg);
    if (!range) {
      refuse("--pages " + std::string(optarg) + ": not a range of pages");
      return false;
    }
    options_.pages = *range;
    return true;
  }

  bool take_filter_options() {
    auto words = split_words(optarg);
    if (!words) {
      refuse("--filter-options: a quote is not closed");
      return false;
    }
    options_.filter_options = std::move(*words);
    return true;
  }

  bool choose_output() {
    if (options_.pdf || options_.pictures) {
      return true;
    }
    if (options_.job != "-") {
      std::filesystem::path path = options_.job;
      options_.pdf = path.extension() == ".pdf" ? path += ".pdf" : path.replace_extension(".pdf");
      return true;
    }
    if (isatty(STDOUT_FILENO) != 0) {
      refuse("a PDF does not go to a terminal; name a file with -o");
      return false;
    }
    options_.pdf = std::string(1, '-');
    return true;
  }

  Options options_;
  int status_ = kGood;
};

}  // namespace

std::variant<Options, int> read_options(int argc, char** argv) {
  return OptionReader().read(argc, argv);
}

}  // namespace rlx::proof
