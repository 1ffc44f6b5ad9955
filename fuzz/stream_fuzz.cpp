// Jobs built of whole commands, against a plain model of what becomes of each: the text comes out
// in order, settings are carried, pages end where they should, every block has its count, and
// framed jobs carry the same bytes as plain ones. The print conditions of the filter itself are off
// (-q), and there is no form.
//
// Random bytes seldom make a sequence with its parameters, its count and its data. Here they choose
// one. Input:
//   0     -L, record by record or by the fast road, whether the end cuts something
//   1, 2  bytes of the job that stand ready for the fast road before the next read
//   3     how the job is cut into frames, and what its end cuts
//   ...   commands: a byte that chooses one, and what it asks for (add_command)

#include <array>
#include <utility>

#include "printer_output.h"
#include "reading.h"
#include "support/printer_blocks.h"
#include "whole_job.h"

namespace rlx::fuzzing {
namespace {

constexpr std::size_t kMostCommands = 600;
constexpr std::size_t kMostPayload = 8192;
constexpr std::size_t kMostGathered = 4096;
constexpr std::size_t kMostCarried = 19;
constexpr std::size_t kPlaces = 12;
constexpr char kFeed = '\f';

const std::string kSingleSize = "\x1bQ1 y";
const std::string kDoubleSize = "\x1bQ2 y";
const std::string kSingleSet = "\x1b(H";
const std::string kDoubleSet = "\x1b$@";

/// Where a sequence is carried.
constexpr int kNowhere = 0;
constexpr int kGeneral = -1;

/// What a command does besides being written.
enum class Effect : std::uint8_t { none, content, no_content };

/// A sequence as `intro ... final`, with parameters in between.
struct Sequence {
  std::string_view intro;
  std::string_view end;
  int carried;
  Effect effect;
};

constexpr Effect kNone = Effect::none;
constexpr Effect kContent = Effect::content;
constexpr Effect kNoContent = Effect::no_content;

constexpr std::array kCsi{
    Sequence{"\x1b[", "`", kNowhere, kNone}, Sequence{"\x1b[", "a", kNowhere, kNone},
    Sequence{"\x1b[", "d", kNowhere, kNone}, Sequence{"\x1b[", "e", kNowhere, kNone},
    Sequence{"\x1b[", " E", 5, kNone}};

/// They end with any of `p` to `y`.
constexpr std::array kFs{
    Sequence{"\x1c\"", "", kNowhere, kNone}, Sequence{"\x1c$", "", kGeneral, kNone},
    Sequence{"\x1c%", "", 12, kNone},        Sequence{"\x1c&", "", kGeneral, kNone},
    Sequence{"\x1c(`", "", 3, kNone},        Sequence{"\x1c(a", "", 4, kNone},
    Sequence{"\x1c(!", "", kNowhere, kNone}, Sequence{"\x1c*", "", kGeneral, kNone}};

constexpr std::array kShort{Sequence{"\x1b$@", "", 1, kNone}, Sequence{"\x1b(H", "", 1, kNone},
                            Sequence{"\x1b\x63", "", kNowhere, kNoContent},
                            Sequence{"\x1cJ", "", 2, kNone}, Sequence{"\x1cK", "", 2, kNone}};

constexpr std::array kQ{Sequence{"\x1bQ", "!@", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "!A", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "!C", kNowhere, kNone},
                        Sequence{"\x1bQ", "!D", kNowhere, kNone},
                        Sequence{"\x1bQ", "/E", 9, kNone},
                        Sequence{"\x1bQ", "!F", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "/F", 10, kNone},
                        Sequence{"\x1bQ", "/G", 11, kNone},
                        Sequence{"\x1bQ", "!H", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "/H", kNowhere, kNone},
                        Sequence{"\x1bQ", "!I", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "/I", kNowhere, kNone},
                        Sequence{"\x1bQ", "!R", kGeneral, kNone},
                        Sequence{"\x1bQ", "/U", kNowhere, kNone},
                        Sequence{"\x1bQ", "/V", kNowhere, kNone},
                        Sequence{"\x1bQ", "!W", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "/W", kNowhere, kNone},
                        Sequence{"\x1bQ", "!X", kNowhere, kNone},
                        Sequence{"\x1bQ", "/X", kNowhere, kNone},
                        Sequence{"\x1bQ", "!Y", kNowhere, kNone},
                        Sequence{"\x1bQ", "!\\", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "!]", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "!b", kNowhere, kNone},
                        Sequence{"\x1bQ", "/b", kNowhere, kNone},
                        Sequence{"\x1bQ", "!c", kNowhere, kNone},
                        Sequence{"\x1bQ", "!f", 7, kNone},
                        Sequence{"\x1bQ", "!j", kNowhere, kNone},
                        Sequence{"\x1bQ", "!k", kNowhere, kNone},
                        Sequence{"\x1bQ", "!l", kNowhere, kNone},
                        Sequence{"\x1bQ", "!m", kNowhere, kNone},
                        Sequence{"\x1bQ", "!n", kNowhere, kNone},
                        Sequence{"\x1bQ", " p", 8, kNone},
                        Sequence{"\x1bQ", "/p", kNowhere, kNone},
                        Sequence{"\x1bQ", "!q", kNowhere, kNone},
                        Sequence{"\x1bQ", "!s", kNowhere, kNone},
                        Sequence{"\x1bQ", "!u", kNowhere, kNone},
                        Sequence{"\x1bQ", "!v", kNowhere, kNone},
                        Sequence{"\x1bQ", " x", kNowhere, kNone},
                        Sequence{"\x1bQ", "!x", kNowhere, kContent},
                        Sequence{"\x1bQ", " y", 6, kNone},
                        Sequence{"\x1bQ", "!y", kNowhere, kContent},
                        Sequence{"\x1bQ", "!z", kNowhere, kContent},
                        Sequence{"\x1bQ", "/|", kNowhere, kNoContent},
                        Sequence{"\x1bQ", "/}", kNowhere, kNoContent},
                        Sequence{"\x1bQ", " ~", kNowhere, kNone},
                        Sequence{"\x1bQ", "!~", kNowhere, kNone}};

/// Nothing of them is written.
constexpr std::array<std::string_view, 10> kIgnored{
    "\x1bx",  "\x1b%12\nA", "\x1c\x7f", "\x1c!12A", "\x1b$A",
    "\x1b(B", "\x1b[1;2H",  "\x1b[12E", "\x1bQ12C", "\x1bQ1;2 C"};

/// What the job is to become: the blocks of its pages, and all bytes that are written.
class Model {
 public:
  explicit Model(std::size_t lines_per_page) : lines_per_page_(lines_per_page) {}

  void ascii(char character) { text(std::string(1, character), false); }
  void double_byte(const std::string& character) { text(character, true); }
  void shifted(const std::string& character) { text(character, false); }
  void invalid(const std::string& bytes) {
    std::string set;
    if (double_byte_) {
      set = kSingleSet;
      places_[1] = kSingleSet;
      double_byte_ = false;
    }
    note(kContent);
    piece(set + bytes);
  }
  void control(char byte) { piece(std::string(1, byte)); }
  void line_feed() {
    written_ += '\n';
    if (++lines_ == lines_per_page_) {
      lines_ = 0;
      to_page("\n\f");
    } else {
      to_page("\n");
    }
  }
  void form_feed() {
    lines_ = 0;
    has_content_ = false;
    piece("\f");
  }
  void sequence(const std::string& bytes, int carried, Effect effect) {
    note(effect);
    piece(bytes);
    carry(bytes, carried);
  }
  /// A sequence with its data. Many are not gathered: each byte of them is a piece then.
  void counted(const std::string& bytes, const std::string& data, Effect effect) {
    note(effect);
    if (bytes.size() + data.size() <= kMostGathered) {
      piece(bytes + data);
      return;
    }
    piece(bytes);
    for (const char byte : data) {
      piece(std::string(1, byte));
    }
  }
  /// A sequence that the end of the job cuts.
  void cut(const std::string& bytes) { cut_ = bytes; }
  /// Ends a page that has content. Only this and form feeds clear that: behind a page that
  /// something else ended it makes an empty one.
  void condition_command() {
    if (std::exchange(has_content_, false)) {
      piece("\f");
    }
  }
  /// Without content what the page still holds is dropped; blocks that are full have gone out.
  void end() {
    if (is_printed_) {
      end_block();
      blocks_ += testing::kFinalFormFeed;
      ++pages_;
    } else {
      data_.clear();
    }
  }

  /// All bytes in order, as a framed job has them. A sequence that is cut is dropped, but for one
  /// that the last frame cuts in its data: that goes on as far as it came.
  std::string written(bool last_frame_has_data) const {
    return written_ + (last_frame_has_data ? cut_ : "");
  }
  /// The output of a plain job.
  std::string output() const {
    if (written_.empty()) {
      return "";
    }
    return testing::kFirstParameters + (blocks_.empty() ? "" : blocks_ + testing::kJobEnd);
  }

 private:
  void note(Effect effect) {
    if (effect == kContent) {
      has_content_ = is_printed_ = true;
    } else if (effect == kNoContent) {
      has_content_ = false;
    }
  }
  void carry(const std::string& bytes, int where) {
    if (where == kGeneral) {
      general_ += bytes;
    } else if (where != kNowhere && bytes.size() <= kMostCarried) {
      places_[static_cast<std::size_t>(where)] = bytes;
    }
  }
  /// Text of one of both sets, behind a switch to it where it needs one.
  void text(const std::string& character, bool double_byte) {
    std::string set;
    if (double_byte_ != double_byte) {
      double_byte_ = double_byte;
      places_[6] = double_byte ? kDoubleSize : kSingleSize;
      places_[1] = double_byte ? kDoubleSet : kSingleSet;
      set = places_[6] + places_[1];
    }
    note(kContent);
    piece(set + character);
  }

  void piece(const std::string& bytes) {
    written_ += bytes;
    to_page(bytes);
  }
  void to_page(const std::string& bytes) {
    if (data_.size() + bytes.size() > kMostPayload) {
      end_block();
      carry_on();
    }
    data_ += bytes;
    if (bytes.back() == kFeed) {
      end_page();
    }
  }
  void end_page() {
    end_block();
    carry_on();
    ++pages_;
    in_page_ = is_printed_ = false;
  }
  void end_block() {
    if (!in_page_) {
      blocks_ += pages_ == 0 ? testing::kJobStart + testing::kFirstDensity : "";
      blocks_ += testing::kNextHeader;
    }
    blocks_ += testing::block(in_page_ ? '0' : '2', data_);
    in_page_ = true;
    data_.clear();
  }
  /// Writes the settings of a block again, but not behind the last block of a job.
  void carry_on() {
    std::string carried = std::exchange(general_, "");
    for (std::string& place : places_) {
      carried += std::exchange(place, "");
    }
    blocks_ += carried.empty() ? "" : testing::block('6', carried);
  }

  std::size_t lines_per_page_;  ///< 0: no page length
  std::size_t lines_ = 0;
  bool double_byte_ = false;
  bool has_content_ = false;
  bool is_printed_ = false;
  bool in_page_ = false;
  std::size_t pages_ = 0;
  std::string general_;
  std::array<std::string, kPlaces + 1> places_;
  std::string data_;
  std::string blocks_;
  std::string written_;
  std::string cut_;
};

/// A job as it grows, beside what it is to become.
struct Growing {
  std::string bytes;
  Model model;
};

/// Parameters of a sequence: any bytes but those from `first` to `last`, and no DEL.
std::string parameters(Choices& choices, char first, char last) {
  std::string bytes(choices.bytes(choices.byte() % 24));
  for (char& byte : bytes) {
    const auto value = static_cast<std::uint8_t>(byte);
    const bool ends =
        value >= static_cast<std::uint8_t>(first) && value <= static_cast<std::uint8_t>(last);
    byte = ends || value == 0x7f ? '0' : byte;
  }
  return bytes;
}

template <std::size_t N>
const Sequence& one_of(const std::array<Sequence, N>& sequences, Choices& choices) {
  return sequences[choices.byte() % N];
}

void add_sequence(Growing& job, const std::string& bytes, const Sequence& sequence) {
  job.bytes += bytes;
  job.model.sequence(bytes, sequence.carried, sequence.effect);
}

void add_ascii(Growing& job, Choices& choices) {
  const std::size_t count = 1 + choices.byte();
  std::size_t next = choices.byte();
  for (std::size_t i = 0; i < count; ++i) {
    const char character = static_cast<char>(0x20 + next++ % 95);
    job.bytes += character;
    job.model.ascii(character);
  }
}

/// A lead byte with what it asks for.
std::string character(Choices& choices) {
  constexpr std::array<std::pair<std::uint8_t, std::uint8_t>, 5> kLeads{
      {{0xc0, 32}, {0xe0, 16}, {0xf0, 8}, {0xf8, 4}, {0xfc, 2}}};
  const std::size_t length = choices.byte() % kLeads.size();
  const auto [first, count] = kLeads[length];
  std::string bytes(1, static_cast<char>(first + choices.byte() % count));
  bytes += choices.bytes(length + 1);
  bytes.resize(length + 2, 'E');
  return bytes;
}

void add_double_byte(Growing& job, Choices& choices) {
  for (std::size_t left = 1 + choices.byte() % 8; left > 0; --left) {
    const std::string bytes = character(choices);
    job.bytes += bytes;
    job.model.double_byte(bytes);
  }
}

void add_shifted(Growing& job, Choices& choices) {
  const std::uint8_t choice = choices.byte();
  const bool is_single = choice < 0xc0 || choice > 0xfd;
  const std::string bytes =
      is_single ? std::string(1, static_cast<char>(choice)) : character(choices);
  job.bytes += '\x8e' + bytes;
  job.model.shifted(bytes);
}

void add_invalid(Growing& job, Choices& choices) {
  const std::uint8_t byte = 0x80 + choices.byte() % 0x40;
  const std::string bytes(1, static_cast<char>(byte == 0x8e ? 0xfe : byte));
  job.bytes += bytes;
  job.model.invalid(bytes);
}

void add_line_feeds(Growing& job, Choices& choices) {
  for (std::size_t left = 1 + choices.byte() % 16; left > 0; --left) {
    job.bytes += '\n';
    job.model.line_feed();
  }
}

void add_form_feed(Growing& job) {
  job.bytes += '\f';
  job.model.form_feed();
}

/// CR, DEL, and the control bytes without a name.
void add_control(Growing& job, Choices& choices) {
  const std::uint8_t choice = choices.byte() % 0x21;
  const bool is_other = choice == 0x0a || choice == 0x0c || choice == 0x1b || choice == 0x1c;
  const char byte = is_other ? '\r' : static_cast<char>(choice == 0x20 ? 0x7f : choice);
  job.bytes += byte;
  job.model.control(byte);
}

void add_csi(Growing& job, Choices& choices) {
  const Sequence& sequence = one_of(kCsi, choices);
  add_sequence(
      job,
      std::string(sequence.intro) + parameters(choices, 0x40, 0x7e) + std::string(sequence.end),
      sequence);
}

void add_fs(Growing& job, Choices& choices) {
  const Sequence& sequence = one_of(kFs, choices);
  const char final_byte = static_cast<char>('p' + choices.byte() % 10);
  add_sequence(job, std::string(sequence.intro) + parameters(choices, 'p', 'y') + final_byte,
               sequence);
}

void add_short(Growing& job, Choices& choices) {
  const Sequence& sequence = one_of(kShort, choices);
  add_sequence(job, std::string(sequence.intro), sequence);
}

void add_q(Growing& job, Choices& choices) {
  const Sequence& sequence = one_of(kQ, choices);
  add_sequence(
      job,
      std::string(sequence.intro) + parameters(choices, 0x40, 0x7e) + std::string(sequence.end),
      sequence);
}

/// `count` bytes of the input, filled up where it ends.
std::string data_of(Choices& choices, std::size_t count) {
  std::string bytes(choices.bytes(count));
  bytes.resize(count, 'D');
  return bytes;
}

void add_with_data(Growing& job, const std::string& bytes, const std::string& data, Effect effect) {
  job.bytes += bytes + data;
  job.model.counted(bytes, data, effect);
}

void add_counted(Growing& job, Choices& choices) {
  constexpr std::array<std::size_t, 4> kLeast{0, 0, 4000, 8100};
  const std::uint8_t kind = choices.byte() % 6;
  const std::string zeros(choices.byte() % 8, '0');
  const std::size_t count = kLeast[choices.byte() % kLeast.size()] + choices.byte();
  const std::string number = zeros + std::to_string(count);
  switch (kind) {
    case 0:
      return add_with_data(job, "\x1bQ1;" + number + "!a", data_of(choices, count), kContent);
    case 1:
      return add_with_data(job, "\x1bQ9;" + number + " n", data_of(choices, count), kNone);
    case 2:
      return add_with_data(job, "\x1bQ1;2!p", data_of(choices, 32), kNone);
    case 3:
      return add_with_data(job, "\x1bQ1;" + number + "!\x7f", data_of(choices, count), kContent);
    case 4:
      return add_with_data(job, "\x1b\x7f", data_of(choices, 4), kNoContent);
    default:
      // An image without a mode that knows it goes with its data.
      job.bytes += "\x1bQ1;2;3;4;" + number + "/~" + data_of(choices, count);
  }
}

void add_ignored(Growing& job, Choices& choices) {
  job.bytes += kIgnored[choices.byte() % kIgnored.size()];
}

void add_form_name(Growing& job) {
  job.bytes += "\x1bQ2;13 n..0......NAME";
  job.model.condition_command();
}

void add_command(Growing& job, Choices& choices) {
  switch (choices.byte() % 32) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    case 7:
      return add_ascii(job, choices);
    case 8:
    case 9:
    case 10:
      return add_double_byte(job, choices);
    case 11:
      return add_shifted(job, choices);
    case 12:
      return add_invalid(job, choices);
    case 13:
    case 14:
      return add_line_feeds(job, choices);
    case 15:
    case 16:
      return add_form_feed(job);
    case 17:
      return add_control(job, choices);
    case 18:
    case 19:
      return add_csi(job, choices);
    case 20:
    case 21:
    case 22:
      return add_fs(job, choices);
    case 23:
      return add_short(job, choices);
    case 24:
    case 25:
    case 26:
    case 27:
      return add_q(job, choices);
    case 28:
    case 29:
      return add_counted(job, choices);
    case 30:
      return add_ignored(job, choices);
    default:
      return add_form_name(job);
  }
}

/// What the end of the job cuts: a character is an invalid one, a sequence is dropped.
void add_cut_end(Growing& job, Choices& choices) {
  constexpr std::array<std::string_view, 6> kCharacters{"\xc3",
                                                        "\xe3\x81",
                                                        "\xf0",
                                                        "\xf8"
                                                        "ABC",
                                                        "\xfc"
                                                        "ABCD",
                                                        "\x8e"};
  constexpr std::array<std::string_view, 6> kSequences{"\x1b",
                                                       "\x1bQ1;2",
                                                       "\x1c",
                                                       "\x1c%!\" ",
                                                       "\x1b\x7f"
                                                       "ABC",
                                                       "\x1b[12"};
  const std::uint8_t choice = choices.byte();
  const bool is_character = choice % 2 == 0;
  const std::string bytes(is_character ? kCharacters[choice / 2U % kCharacters.size()]
                                       : kSequences[choice / 2U % kSequences.size()]);
  job.bytes += bytes;
  if (is_character) {
    job.model.invalid(bytes);
  } else {
    job.model.cut(bytes);
  }
}

std::string data_of_frames(std::string_view output) {
  std::string data;
  for (const Frame& frame : frames_of(output)) {
    data += frame.data;
  }
  return data;
}

void check_plain(const Job& job, const Model& model, bool fast) {
  const Result result = run(job, fast);
  require(result.status == ST_OK && result.messages.empty(), "a plain job fails");
  require(result.output == model.output(), "a plain job becomes something else");
  const Reading reading(result.output);
  require(reading.faults == 0, "the reader finds a fault in the output");
}

void check_framed(Job job, const Model& model, std::uint8_t frames, bool fast) {
  job.words.emplace_back("-d");
  job.framed = true;
  const bool last_frame_has_data = !job.bytes.empty() && !ends_in_empty_frame(frames);
  job.bytes = in_frames(job.bytes, frames);
  const Result result = run(job, fast);
  require(result.status == ST_OK && result.messages.empty(), "a framed job fails");
  require(data_of_frames(result.output) == model.written(last_frame_has_data),
          "a framed job carries something else");
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, size);
  const std::uint8_t choice = choices.byte();
  const std::size_t lines = choice % 8 < 4 ? 0 : choice % 8 * 3;
  const bool fast = (choice & 0x80) == 0;
  Job job;
  job.cut = choices.word();
  const std::uint8_t frames = choices.byte();
  Choices end(&frames, 1);
  Growing growing{"", Model(lines)};
  for (std::size_t i = 0; i < kMostCommands && !choices.empty(); ++i) {
    add_command(growing, choices);
  }
  if ((choice & 0x40) != 0) {
    add_cut_end(growing, end);
  }
  growing.model.end();
  job.words.emplace_back("-q");
  if (lines > 0) {
    job.words.push_back("-L" + std::to_string(lines));
  }
  job.bytes = growing.bytes;
  check_plain(job, growing.model, fast);
  check_framed(job, growing.model, frames, fast);
  return 0;
}
