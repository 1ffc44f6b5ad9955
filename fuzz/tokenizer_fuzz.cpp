// The tokenizer and the classifier on plain bytes, and the in-place recogniser of the fast road
// against the tokenizer.
//
// Input: a byte of switches, a word that says how many bytes stand ready before the first read,
// the job.

#include <array>

#include "fresh_filter.h"
#include "input/byte_source.h"
#include "input/ready_sequence.h"
#include "input/sequence_reader.h"
#include "job/control_bytes.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

constexpr std::array<std::uint32_t, 75> kTokenCodes{
    256, 260, 262, 263, 268, 289, 292, 298, 302, 322, 324, 325, 326, 328, 330, 347, 348, 385, 386,
    387, 388, 396, 416, 428, 437, 440, 441, 445, 446, 448, 449, 453, 456, 457, 458, 459, 460, 461,
    462, 463, 464, 465, 466, 468, 469, 470, 474, 475, 476, 478, 482, 483, 485, 486, 493, 494, 495,
    496, 497, 498, 500, 506, 509, 510, 511, 513, 514, 515, 516, 517, 518, 519, 520, 522, 523};

struct Job {
  bool extended_parameters;
  bool discard_pending;
  std::size_t cut;
  std::string_view bytes;
};

CommandRecord record;

void start(const Job& job) {
  restart_input();
  the_filter().command_line.extended_parameters = job.extended_parameters ? 1 : 0;
}

bool is_token_code(std::uint32_t code) {
  return std::find(kTokenCodes.begin(), kTokenCodes.end(), code) != kTokenCodes.end();
}

/// The record holds what the input holds there.
void check_bytes(const Job& job, std::size_t from, std::size_t to) {
  const auto length = static_cast<std::size_t>(record.length);
  require(length == to - from, "the length is not what was taken");
  require(text_of(record.bytes.data(), length) == job.bytes.substr(from, length),
          "the record differs from the input");
}

void check_token(const Job& job, std::size_t from, std::size_t to) {
  require(record.length >= 0 && record.length <= kRecordCapacity, "length out of range");
  require(to > from, "no progress");
  if (record.code == CMD_IGNORE) {
    require(record.pending == 0, "pending data of an ignored command");
    return;
  }
  require(record.code == CMD_TEXT_RAW || is_token_code(record.code), "unknown code");
  check_bytes(job, from, to);
}

void check_ready_sequence(const Job& job, std::size_t at) {
  const auto introducer = static_cast<std::uint8_t>(job.bytes[at]);
  if ((introducer != kEsc && introducer != kFs) || job.bytes.size() - at < 2 * kBlockBytes) {
    return;
  }
  const ExactBytes ready(job.bytes.substr(at, 2 * kBlockBytes));
  const SequenceEnds ends{ByteBlock(ready.begin())};
  const ReadySequence sequence = ready_sequence(ready.begin(), ends, 0, kBlockBytes);
  if (sequence.code != CMD_IGNORE) {
    const auto length = static_cast<std::int32_t>(sequence.last) + 1;
    require(sequence.code == record.code && length == record.length && record.pending == 0,
            "the fast road sees another sequence");
  }
}

void skip_pending(const Job& job) {
  if (job.discard_pending && record.pending != 0) {
    const Status status =
        skip_data(the_filter().source, 0, static_cast<std::int32_t>(record.pending));
    require(status == ST_OK || status == ST_EOF, "status of discarded data");
  }
}

void tokenize(const Job& job) {
  start(job);
  const JobInput input(job.bytes, job.cut);
  for (;;) {
    const std::size_t from = input.taken();
    const Status status = zqtoken(the_filter().tokenizer, 0, &record);
    if (status == ST_EOF) {
      break;
    }
    require(status == ST_OK, "status of the tokenizer");
    check_token(job, from, input.taken());
    check_ready_sequence(job, from);
    skip_pending(job);
  }
  require(input.taken() == job.bytes.size(), "the tokenizer left bytes behind");
  require(zqtoken(the_filter().tokenizer, 0, &record) == ST_EOF, "the end does not stay");
}

std::size_t character_length(std::uint8_t lead) {
  constexpr std::array<std::uint8_t, 6> kFirstLeads{0x00, 0xc0, 0xe0, 0xf0, 0xf8, 0xfc};
  std::size_t length = 1;
  while (length < kFirstLeads.size() && lead <= 0xfd && lead >= kFirstLeads[length]) {
    ++length;
  }
  return length;
}

/// The code that the text at the front should have, and its length.
std::pair<std::uint32_t, std::size_t> expected_text(std::string_view text) {
  const auto lead = static_cast<std::uint8_t>(text.front());
  const bool shifted = lead == 0x8e;
  std::size_t length = character_length(lead);
  if (shifted) {
    length = text.size() < 2 ? 2 : 1 + character_length(static_cast<std::uint8_t>(text[1]));
  }
  if (length > text.size()) {
    return {CMD_TEXT_BAD, text.size()};
  }
  if (shifted) {
    return {CMD_TEXT_SS2, length};
  }
  if (lead < 0x7f) {
    return {CMD_TEXT_ASCII, length};
  }
  return {length == 1 ? CMD_TEXT_BAD : CMD_TEXT_MB, length};
}

void check_command(const Job& job, std::size_t from, std::size_t to) {
  require(to > from, "no progress");
  const auto first = static_cast<std::uint8_t>(job.bytes[from]);
  if (first >= 0x20 && first != kDel) {
    const auto [code, length] = expected_text(job.bytes.substr(from));
    require(record.code == code && to - from == length && record.pending == 0, "text");
    check_bytes(job, from, to);
  } else if (record.code == CMD_IGNORE) {
    require(record.length == 0 && record.pending == 0, "an ignored command has bytes");
  } else {
    require(is_token_code(record.code), "unknown code");
    check_bytes(job, from, to);
  }
}

void classify(const Job& job) {
  start(job);
  const JobInput input(job.bytes, job.cut);
  for (;;) {
    const std::size_t from = input.taken();
    const Status status = zqclass(the_filter().classifier, &record);
    if (status == ST_EOF) {
      break;
    }
    require(status == ST_OK, "status of the classifier");
    check_command(job, from, input.taken());
    skip_pending(job);
  }
  require(input.taken() == job.bytes.size(), "the classifier left bytes behind");
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, std::min<std::size_t>(size, 60000));
  const std::uint8_t switches = choices.byte();
  Job job{(switches & 1) != 0, (switches & 2) != 0, choices.word(), {}};
  job.bytes = choices.rest();
  job.cut = job.cut == 0 ? job.bytes.size() : job.cut;
  tokenize(job);
  classify(job);
  return 0;
}
