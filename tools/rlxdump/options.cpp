#include "rlxdump/options.h"

#include <algorithm>
#include <array>

namespace rlx::dump {

namespace {

using Mode = Options::Mode;
using Color = Options::Color;

struct ModeRow {
  std::string_view word;
  Mode mode;
};

constexpr std::array<ModeRow, 7> kModes{{
    {"--pages", Mode::pages},
    {"--json", Mode::json},
    {"--check", Mode::check},
    {"--diff", Mode::diff},
    {"--help", Mode::help},
    {"-h", Mode::help},
    {"--version", Mode::version},
}};

struct ColorRow {
  std::string_view word;
  Color color;
};

constexpr std::array<ColorRow, 4> kColors{{
    {"--color", Color::always},
    {"--color=always", Color::always},
    {"--color=never", Color::never},
    {"--color=auto", Color::automatic},
}};

template <typename Rows>
const auto* find_word(const Rows& rows, std::string_view word) {
  const auto* const row =
      std::find_if(rows.begin(), rows.end(), [&](const auto& each) { return each.word == word; });
  return row == rows.end() ? nullptr : row;
}

/// Takes a word that is an option. @return what is wrong with it; empty when nothing is.
std::string take_option(Options& options, std::string_view word) {
  if (const auto* const row = find_word(kModes, word)) {
    const bool again = options.mode != Mode::text && options.mode != row->mode;
    // Whoever asks for help gets it.
    if (again && row->mode != Mode::help && options.mode != Mode::help) {
      return std::string(word) + " does not go with another way to show a job";
    }
    options.mode = options.mode == Mode::help ? Mode::help : row->mode;
    return "";
  }
  if (const auto* const row = find_word(kColors, word)) {
    options.color = row->color;
    return "";
  }
  return "unknown option " + std::string(word);
}

std::string check_files(Options& options) {
  if (options.mode == Mode::help || options.mode == Mode::version) {
    return "";
  }
  if (options.mode == Mode::diff) {
    if (options.files.size() != 2) {
      return "--diff takes two files";
    }
    return options.files[0] == "-" && options.files[1] == "-" ? "standard input can be read once"
                                                              : "";
  }
  if (options.files.empty()) {
    options.files.emplace_back("-");
  }
  return options.files.size() == 1 ? "" : "one file, please; \"" + options.files[1] + "\" is more";
}

}  // namespace

std::optional<Options> parse_options(const std::vector<std::string>& words,
                                     std::string& complaint) {
  Options options;
  bool only_files = false;
  for (const std::string& word : words) {
    if (only_files || word == "-" || word.empty() || word.front() != '-') {
      options.files.push_back(word);
    } else if (word == "--") {
      only_files = true;
    } else if (complaint = take_option(options, word); !complaint.empty()) {
      return std::nullopt;
    }
  }
  complaint = check_files(options);
  return complaint.empty() ? std::optional(options) : std::nullopt;
}

std::string_view help_text() {
  return R"(usage: rlxdump [OPTION] [FILE]
       rlxdump --diff A B

Shows an RLX job as text: every block with its offset, kind and count, the text
of the pages, each control byte and each sequence by name. Reads standard input
without FILE, or when FILE is -.

  --pages            one line a page: number, bytes, lines of text, first words
  --json             for programs: one JSON object a line, all bytes in base64
  --check            nothing but faults, one a line: OFFSET: what
  --diff A B         what differs between two jobs, by page and piece
  --color=WHEN       auto (on a terminal, unless NO_COLOR is set), always, never
  --help             this text
  --version          the version

Exit status: 0 good (--diff: the jobs are the same), 1 something is wrong with
the job (--diff: they differ), or reading or writing failed, 2 wrong use.
)";
}

}  // namespace rlx::dump
