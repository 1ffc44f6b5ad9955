#pragma once

#include "input/tokenizer.h"
#include "job/command_record.h"

namespace rlx {

/// What the classifier keeps from one character to the next, and what it reads.
struct Classifier {
  Tokenizer& tokenizer;
  /// The input ended inside a character; the next call returns ST_EOF at once.
  bool class_eof = false;

  explicit Classifier(Tokenizer& commands) : tokenizer(commands) {}
};

/// zqclass: reads the next command and says what kind of text it is. Text is UTF-8 with lead bytes
/// up to 0xfd, so up to six bytes a character, and 0x8e as a prefix that stays with the character
/// behind it. Continuation bytes are counted by the lead byte; their values are not looked at.
///
/// @param record  filled: CMD_TEXT_ASCII, CMD_TEXT_MB, CMD_TEXT_SS2 or CMD_TEXT_BAD (an invalid
///                byte, or a character that the end of the input cut) for text, else what zqtoken
///                gave. A command that is ignored has no bytes and nothing pending.
/// @return ST_OK with a record; ST_EOF at the end of the input; other statuses as zqtoken.
Status zqclass(Classifier& classifier, CommandRecord* record);

inline constexpr std::uint8_t kFirstLead = 0xc0;
inline constexpr std::uint8_t kLastLead = 0xfd;

/// Bytes that follow a lead byte: 1 to 5, or 0 for a byte that is no lead byte.
constexpr int continuation_bytes(std::uint8_t lead) {
  if (lead < kFirstLead || lead > kLastLead) {
    return 0;
  }
  if (lead < 0xe0) {
    return 1;
  }
  if (lead < 0xf0) {
    return 2;
  }
  if (lead < 0xf8) {
    return 3;
  }
  return lead < 0xfc ? 4 : 5;
}

/// The prefix that stays with the character behind it.
inline constexpr std::uint8_t kSingleShift2 = 0x8e;

}  // namespace rlx
