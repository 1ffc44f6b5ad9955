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
#include "job/command_record.h"
#include "job/control_bytes.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

constexpr std::array<std::uint32_t, 75> kTokenCodes{
    CMD_CTRL,        CMD_LF,       CMD_FF,         CMD_CR,       CMD_DEL,        CMD_ESC_DOLLAR_AT,
    CMD_ESC_PAREN_H, CMD_ESC_C,    CMD_ESC_DEL4,   CMD_FS_QUOTE, CMD_FS_DOLLAR,  CMD_FS_PERCENT,
    CMD_FS_AMP,      CMD_FS_PAREN, CMD_FS_STAR,    CMD_FS_J,     CMD_FS_K,       CMD_CSI_BQ,
    CMD_CSI_AL,      CMD_CSI_DL,   CMD_CSI_EL,     CMD_CSI_SP_E, CMD_Q_NL_SP9,   CMD_Q_Y_EX,
    CMD_Q_PL_SP,     CMD_Q_XL_SP,  CMD_Q_YL_SP,    CMD_Q_AT_EX,  CMD_Q_A_EX,     CMD_Q_C_EX,
    CMD_Q_D_EX,      CMD_Q_H_EX,   CMD_Q_AL_EX,    CMD_Q_JL_EX,  CMD_Q_KL_EX,    CMD_Q_LL_EX,
    CMD_Q_ML_EX,     CMD_Q_NL_EX,  CMD_Q_PL_EX,    CMD_Q_QL_EX,  CMD_Q_SL_EX,    CMD_Q_UL_EX,
    CMD_Q_VL_EX,     CMD_Q_XL_EX,  CMD_Q_YL_EX,    CMD_Q_ZL_EX,  CMD_Q_TILDE_SP, CMD_Q_DEL_EX,
    CMD_Q_F_EX,      CMD_Q_I_EX,   CMD_Q_NL_SP,    CMD_Q_NL_SP2, CMD_Q_TILDE_SL, CMD_Q_W_EX,
    CMD_Q_R_EX,      CMD_Q_X_EX,   CMD_Q_BSL_EX,   CMD_Q_BL_EX,  CMD_Q_CL_EX,    CMD_Q_FL_EX,
    CMD_Q_OL_SP,     CMD_Q_RBR_EX, CMD_Q_BAR_SL,   CMD_Q_E_SL,   CMD_Q_F_SL,     CMD_Q_G_SL,
    CMD_Q_H_SL,      CMD_Q_I_SL,   CMD_Q_U_SL,     CMD_Q_V_SL,   CMD_Q_W_SL,     CMD_Q_X_SL,
    CMD_Q_BQ_SL,     CMD_Q_BL_SL,  CMD_Q_RBRACE_SL};

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
