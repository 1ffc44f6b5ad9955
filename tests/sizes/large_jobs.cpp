#include "sizes/large_jobs.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>

namespace rlx::testing {

namespace {

constexpr std::size_t kLinesOfPage = 60;
constexpr std::size_t kUnitBytes = 65536;

/// The next line of text, without a line end: its number, and printable characters that shift from
/// line to line. 62 bytes, so that lines meet the borders of blocks and buffers everywhere.
class NumberedLines {
 public:
  static constexpr std::size_t kDigits = 12;
  static constexpr std::size_t kCharacters = 50;

  void append(std::string& job) {
    for (std::size_t at = kDigits; at-- > 0 && ++digits_[at] > '9';) {
      digits_[at] = '0';
    }
    job.append(digits_.data(), digits_.size());
    job.append(printable_, shift_, kCharacters);
    shift_ = shift_ + 1 < kShifts ? shift_ + 1 : 0;
  }

 private:
  static constexpr std::size_t kShifts = 45;

  static std::string printable() {
    std::string all;
    for (char c = 0x20; c < 0x7f; ++c) {
      all += c;
    }
    return all;
  }

  std::array<char, kDigits> digits_ = [] {
    std::array<char, kDigits> zeros{};
    zeros.fill('0');
    return zeros;
  }();
  std::string printable_ = printable();
  std::size_t shift_ = 0;
};

/// Pages of lines.
class TextPages : public LargeJob {
 public:
  void make(std::string& job) override {
    page_.clear();
    for (std::size_t line = 0; line < kLinesOfPage; ++line) {
      lines_.append(page_);
      page_ += '\n';
    }
    job += page_;
    job += '\f';
  }
  void print(PrintedJob& printed) override {
    printed.text(page_);
    printed.end_page();
  }
  void finish(PrintedJob& printed) override { printed.end_job(false); }

 protected:
  const std::string& page() const { return page_; }

 private:
  NumberedLines lines_;
  std::string page_;
};

/// One line that never ends.
class OneLine : public LargeJob {
 public:
  void make(std::string& job) override {
    unit_.clear();
    while (unit_.size() < kUnitBytes) {
      lines_.append(unit_);
    }
    job += unit_;
  }
  void print(PrintedJob& printed) override { printed.text(unit_); }
  void finish(PrintedJob& printed) override { printed.end_job(true); }

 private:
  NumberedLines lines_;
  std::string unit_;
};

/// Nothing but FF: an empty page for each.
class FormFeeds : public LargeJob {
 public:
  void make(std::string& job) override { job.append(kUnitBytes, '\f'); }
  void print(PrintedJob& printed) override {
    for (std::size_t i = 0; i < kUnitBytes; ++i) {
      printed.end_page();
    }
  }
  void finish(PrintedJob& printed) override { printed.end_job(false); }
};

/// Nothing but LF: no content, but the blocks that are full go out.
class LineFeeds : public LargeJob {
 public:
  void make(std::string& job) override { job.append(kUnitBytes, '\n'); }
  void print(PrintedJob& printed) override { printed.repeated('\n', kUnitBytes); }
  void finish(PrintedJob& printed) override { printed.end_job(false); }
};

/// The same with -L: a FF behind every line feed whose number can be divided by it.
template <std::uint64_t Lines>
class CountedLineFeeds : public LineFeeds {
 public:
  void print(PrintedJob& printed) override {
    std::size_t left = kUnitBytes;
    while (left > 0) {
      const std::size_t plain = std::min<std::uint64_t>(left, Lines - 1 - line_);
      printed.repeated('\n', plain);
      line_ += plain;
      left -= plain;
      if (left > 0) {
        printed.end_page("\n\f");
        line_ = 0;
        --left;
      }
    }
  }

 private:
  std::uint64_t line_ = 0;
};

/// Nothing but ESC: one sequence without an end.
class Escapes : public LargeJob {
 public:
  void make(std::string& job) override { job.append(kUnitBytes, '\x1b'); }
  void print(PrintedJob& /*printed*/) override {}
  void finish(PrintedJob& /*printed*/) override {}
};

constexpr std::string_view kPitch = "\x1c%!\" p";
constexpr std::string_view kNextLine = "\n\x1c%!\" p";
constexpr std::string_view kNextForm = "\f\x1c%!\" p";
constexpr int kLinesOfForm = 66;

/// Where the form stands, and what it brings.
class FormWalk {
 public:
  /// What is held back is written.
  void release(PrintedJob& printed) {
    printed.piece(held_);
    held_ = {};
  }
  void line_feed(PrintedJob& printed) {
    release(printed);
    if (++line_ == kLinesOfForm) {
      held_ = kNextForm;
      line_ = 0;
    } else {
      printed.piece(kNextLine);
    }
  }
  void form_feed() {
    held_ = kPitch;
    line_ = 0;
  }

 private:
  std::string_view held_ = kPitch;
  int line_ = 0;
};

/// The line feeds with a form. The last one of the job moves nothing.
class LineFeedsOnForm : public LineFeeds {
 public:
  void print(PrintedJob& printed) override {
    for (std::size_t i = 0; i < kUnitBytes; ++i) {
      walk_.line_feed(printed);
    }
  }
  std::string_view tail() const override { return "\n"; }
  void finish(PrintedJob& printed) override {
    printed.text("\n");
    LineFeeds::finish(printed);
  }

 private:
  FormWalk walk_;
};

/// The pages of text with a form.
class TextOnForm : public TextPages {
 public:
  void print(PrintedJob& printed) override {
    std::string_view left = page();
    while (!left.empty()) {
      const std::size_t length = left.find('\n');
      walk_.release(printed);
      printed.text(left.substr(0, length));
      walk_.line_feed(printed);
      left.remove_prefix(length + 1);
    }
    printed.end_page();
    walk_.form_feed();
  }

 private:
  FormWalk walk_;
};

/// A number that goes on, in digits.
class RunningNumber {
 public:
  explicit RunningNumber(std::string_view first) : digits_(first) {}
  std::string_view next() {
    for (std::size_t at = digits_.size(); at-- > 0 && ++digits_[at] > '9';) {
      digits_[at] = '0';
    }
    return digits_;
  }

 private:
  std::string digits_;
};

/// Puts parts together, in the same memory each time.
class Joined {
 public:
  std::string_view operator()(std::initializer_list<std::string_view> parts) {
    bytes_.clear();
    for (const std::string_view part : parts) {
      bytes_ += part;
    }
    return bytes_;
  }

 private:
  std::string bytes_;
};

/// Sequences among text, all with a number: some are carried, some are not, some are unknown.
class Sequences : public LargeJob {
 public:
  void make(std::string& job) override {
    printed_ = made_;
    for (std::size_t i = 0; i < kLinesOfPage; ++i) {
      const std::string_view number = made_.next();
      job += joined_(
          {"\x1b[", number, "`A\x1bQ", number, "/E\x1c%", number, "pB\x1b#", number, "A\n"});
    }
    job += '\f';
  }
  void print(PrintedJob& printed) override {
    for (std::size_t i = 0; i < kLinesOfPage; ++i) {
      const std::string_view number = printed_.next();
      printed.piece(joined_({"\x1b[", number, "`"}));
      printed.text("A");
      carried(printed, kExpandPlace, joined_({"\x1bQ", number, "/E"}));
      carried(printed, kPitchPlace, joined_({"\x1c%", number, "p"}));
      printed.text("B\n");
    }
    printed.end_page();
  }
  void finish(PrintedJob& printed) override { printed.end_job(false); }

 private:
  static constexpr std::size_t kExpandPlace = 9;
  static constexpr std::size_t kPitchPlace = 12;

  /// A sequence is kept behind the cut that it makes itself.
  static void carried(PrintedJob& printed, std::size_t place, std::string_view sequence) {
    printed.piece(sequence);
    printed.carry(place, sequence);
  }

  RunningNumber made_{"0000000000"};
  RunningNumber printed_ = made_;
  Joined joined_;
};

/// Double-byte and single-byte text in turn.
class MixedText : public LargeJob {
 public:
  void make(std::string& job) override {
    printed_ = made_;
    for (std::size_t i = 0; i < kTurnsOfPage; ++i) {
      job += kFirst;
      job += kSecond;
      job += made_.next();
    }
    job += '\f';
  }
  void print(PrintedJob& printed) override {
    for (std::size_t i = 0; i < kTurnsOfPage; ++i) {
      const std::string_view number = printed_.next();
      switched(printed, "\x1b$@", "\x1bQ2 y", kFirst);
      printed.piece(kSecond);
      switched(printed, "\x1b(H", "\x1bQ1 y", number.substr(0, 1));
      printed.text(number.substr(1));
    }
    printed.end_page();
  }
  void finish(PrintedJob& printed) override { printed.end_job(false); }

 private:
  static constexpr std::size_t kTurnsOfPage = 1000;
  static constexpr std::size_t kSetPlace = 1;
  static constexpr std::size_t kSizePlace = 6;
  static constexpr std::string_view kFirst = "\xe3\x81\x82";
  static constexpr std::string_view kSecond = "\xe6\x97\xa5";

  /// The switch is one piece with the character behind it, and is kept before a cut in front of it.
  void switched(PrintedJob& printed, std::string_view set, std::string_view size,
                std::string_view character) {
    printed.carry(kSetPlace, set);
    printed.carry(kSizePlace, size);
    printed.piece(joined_({size, set, character}));
  }

  RunningNumber made_{"0000000000"};
  RunningNumber printed_ = made_;
  Joined joined_;
};

/// Frames of text: what comes in goes out.
class Framed : public LargeJob {
 public:
  void make(std::string& job) override {
    while (text_.size() < kFrameBytes) {
      lines_.append(text_);
      text_ += ++line_ % kLinesOfPage == 0 ? "\n\f" : "\n";
    }
    frame_.assign("4096CNT_PRN_DAT\0", kHeaderBytes);
    frame_.append(text_, 0, kFrameBytes);
    text_.erase(0, kFrameBytes);
    job += frame_;
  }
  void print(PrintedJob& printed) override { printed.bytes += frame_; }
  std::string_view tail() const override { return {"0000END_PRN_DAT\0", kHeaderBytes}; }
  void finish(PrintedJob& printed) override { printed.bytes += tail(); }

 private:
  static constexpr std::size_t kFrameBytes = 4096;
  static constexpr std::size_t kHeaderBytes = 16;

  NumberedLines lines_;
  std::uint64_t line_ = 0;
  std::string text_;
  std::string frame_;
};

/// Sequences of every introducer that are too long, and a line of text behind each.
class LongParameters : public LargeJob {
 public:
  explicit LongParameters(std::size_t bytes) : bytes_(bytes) {}
  void make(std::string& job) override {
    const Shape& shape = kShapes.at(unit_++ % kShapes.size());
    line_.clear();
    lines_.append(line_);
    line_ += '\n';
    job += shape.front;
    job.append(bytes_, shape.parameter);
    job += shape.back;
    job += line_;
  }
  void print(PrintedJob& printed) override { printed.text(line_); }
  void finish(PrintedJob& printed) override { printed.end_job(true); }

 private:
  struct Shape {
    std::string_view front;
    char parameter;
    std::string_view back;
  };
  static constexpr std::array kShapes{
      Shape{"\x1b[", '1', "a"},    Shape{"\x1c%", '2', "p"},    Shape{"\x1bQ", '3', "/E"},
      Shape{"\x1b#", '\f', "A"},   Shape{"\x1c!", '\n', "A"},   Shape{"\x1b[", '\x1b', "`"},
      Shape{"\x1bQ1;", '0', " n"}, Shape{"\x1bQ1;", ';', "!a"}, Shape{"\x1bQ", '\x7f', "/p"},
      Shape{"\x1c$", '\xe3', "q"},
  };

  std::size_t bytes_;
  NumberedLines lines_;
  std::string line_;
  std::size_t unit_ = 0;
};

/// Counted data that no record holds, behind a sequence that is written and behind a
/// print-condition command, which is consumed and ends the page: both print their data.
class CountedData : public LargeJob {
 public:
  explicit CountedData(std::size_t bytes) : bytes_(bytes) {}
  void make(std::string& job) override {
    data_.clear();
    while (data_.size() < bytes_) {
      lines_.append(data_);
    }
    data_.resize(bytes_);
    written_ = !written_;
    sequence_ = "\x1bQ1;" + std::to_string(bytes_) + (written_ ? "!a" : " n");
    job += sequence_;
    job += data_;
  }
  void print(PrintedJob& printed) override {
    if (written_) {
      printed.piece(sequence_);
    } else {
      printed.end_page();
    }
    printed.text(data_);
  }
  /// Data are no content by themselves: a page of them alone would be dropped at the end.
  std::string_view tail() const override { return "A\f"; }
  void finish(PrintedJob& printed) override {
    printed.text("A");
    printed.end_page();
    printed.end_job(false);
  }

 private:
  std::size_t bytes_;
  NumberedLines lines_;
  std::string data_;
  std::string sequence_;
  bool written_ = false;
};

template <typename Job>
std::unique_ptr<LargeJob> create() {
  return std::make_unique<Job>();
}

constexpr std::uint64_t kGreatestPageLength = 2147483647;
constexpr std::uint64_t kShortRunOfPages = std::uint64_t{2} << 20U;

}  // namespace

const std::vector<LargeJobKind>& large_job_kinds() {
  const std::string form = kLargeJobForm;
  static const std::vector<LargeJobKind> kinds{
      {"text", {"-q"}, create<TextPages>},
      {"one_line", {"-q"}, create<OneLine>},
      {"sequences", {"-q"}, create<Sequences>},
      {"mixed_text", {"-q"}, create<MixedText>},
      {"form_feeds", {"-q"}, create<FormFeeds>, kShortRunOfPages},
      {"line_feeds", {"-q"}, create<LineFeeds>},
      {"line_feeds_no_page_end", {"-q", "-L", "-1"}, create<LineFeeds>},
      {"line_feeds_greatest_page",
       {"-q", "-L", std::to_string(kGreatestPageLength)},
       create<CountedLineFeeds<kGreatestPageLength>>},
      {"line_feeds_pages", {"-q", "-L", "66"}, create<CountedLineFeeds<66>>},
      {"line_feeds_on_form", {"-q", "-p", "forms", "-n", form}, create<LineFeedsOnForm>},
      {"text_on_form", {"-q", "-p", "forms", "-n", form}, create<TextOnForm>},
      {"escapes", {"-q"}, create<Escapes>},
      {"framed", {"-q", "-d"}, create<Framed>},
  };
  return kinds;
}

std::unique_ptr<LargeJob> job_of_long_parameters(std::size_t bytes) {
  return std::make_unique<LongParameters>(bytes);
}

std::unique_ptr<LargeJob> job_of_counted_data(std::size_t bytes) {
  return std::make_unique<CountedData>(bytes);
}

}  // namespace rlx::testing
