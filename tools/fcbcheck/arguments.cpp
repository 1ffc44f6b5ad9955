#include "fcbcheck/arguments.h"

#include <getopt.h>

#include <array>
#include <cstdio>

#include "fcbcheck/form_file.h"

namespace rlx::fcbcheck {

const char* const kHelp =
    "usage: fcbcheck [-ENR] [--environment FILE] [--explain] [--show] [--svg PICTURE] [FILE...]\n"
    "\n"
    "Checks forms (FCB files) with the filter's own reader and says of each one that\n"
    "it refuses what is wrong and where. Without FILE, or for -, standard input.\n"
    "\n"
    "      --show              draw the form\n"
    "      --svg PICTURE       write a picture of the form, an SVG file; - is standard output\n"
    "      --explain           tell how the length was rounded, and what the lines are\n"
    "      --environment FILE  the environment file, in place of the filter's\n"
    "  -E, -N, -R              as the filter's options: -R has lengths of 3.5 to 14 inches\n"
    "      --help              print this\n"
    "      --version           print the version\n"
    "\n"
    "Exit status: 0 all forms are good, 1 something is wrong with one or with a file,\n"
    "2 wrong use.\n";

namespace {

/// What getopt_long returns for options without a letter.
enum LongOption : int { kShow = 256, kSvg, kExplain, kEnvironment, kHelpOption, kVersion };

constexpr const char* kLetters = "ENR";

constexpr std::array<option, 7> kLongOptions{{
    {"show", no_argument, nullptr, kShow},
    {"svg", required_argument, nullptr, kSvg},
    {"explain", no_argument, nullptr, kExplain},
    {"environment", required_argument, nullptr, kEnvironment},
    {"help", no_argument, nullptr, kHelpOption},
    {"version", no_argument, nullptr, kVersion},
    {nullptr, 0, nullptr, 0},
}};

void take_option(Arguments& arguments, int letter) {
  switch (letter) {
    case 'E':
    case 'N':
      arguments.stream_variant = kSentLengthStream;
      break;
    case 'R':
      arguments.stream_variant = kShortFormStream;
      break;
    case kShow:
      arguments.show = true;
      break;
    case kSvg:
      arguments.svg = optarg;
      break;
    case kExplain:
      arguments.explain = true;
      break;
    case kEnvironment:
      arguments.environment = optarg;
      break;
    case kHelpOption:
      arguments.action = Action::help;
      break;
    case kVersion:
      arguments.action = Action::version;
      break;
    default:
      arguments.action = Action::wrong_use;
  }
}

/// What is wrong with options that do not go together; null when nothing is.
const char* contradiction(const Arguments& arguments) {
  if (!arguments.svg) {
    return nullptr;
  }
  if (arguments.files.size() > 1) {
    return "--svg makes a picture of one form";
  }
  if (*arguments.svg == "-" && (arguments.show || arguments.explain)) {
    return "--svg - leaves standard output to the picture";
  }
  return nullptr;
}

}  // namespace

Arguments parse_arguments(int argc, char** argv) {
  Arguments arguments;
  optind = 0;
  while (arguments.action == Action::check) {
    const int letter = getopt_long(argc, argv, kLetters, kLongOptions.data(), nullptr);
    if (letter == -1) {
      break;
    }
    take_option(arguments, letter);
  }
  arguments.files.assign(argv + optind, argv + argc);
  if (arguments.files.empty()) {
    arguments.files.emplace_back(kStandardInput);
  }
  const char* const wrong = contradiction(arguments);
  if (arguments.action == Action::check && wrong != nullptr) {
    std::fprintf(stderr, "fcbcheck: %s\n", wrong);
    arguments.action = Action::wrong_use;
  }
  return arguments;
}

}  // namespace rlx::fcbcheck
