#include "input/classifier.h"

#include "input/byte_source.h"
#include "input/tokenizer.h"

namespace rlx {

namespace {

struct Classifier {
  /// The input ended inside a character; the next call returns ST_EOF at once.
  bool class_eof = false;
};

Classifier classifier;

constexpr std::uint8_t kLastPrintable = 0x7e;

int read_character_byte(std::uint8_t* byte) {
  return job_settings.framed_output != 0 ? zqgetc(0, byte) : stdgetc(byte);
}

/// A character that lacks bytes is invalid; what was read of it is kept.
int cut_character(CommandRecord& record, int status) {
  record.code = CMD_TEXT_BAD;
  if (status == ST_EOF) {
    classifier.class_eof = true;
    return ST_OK;
  }
  return status;
}

/// Appends `count` bytes, whatever their values, or cuts the character.
int read_rest(CommandRecord& record, int count) {
  for (; count > 0; --count) {
    if (at_end_frame_end()) {
      return cut_character(record, ST_OK);
    }
    std::uint8_t byte = 0;
    const int status = read_character_byte(&byte);
    if (status != ST_OK) {
      return cut_character(record, status);
    }
    record.bytes[static_cast<std::size_t>(record.length++)] = byte;
  }
  return ST_OK;
}

int classify_shifted(CommandRecord& record) {
  record.code = CMD_TEXT_SS2;
  const int status = read_rest(record, 1);
  if (status != ST_OK || record.code != CMD_TEXT_SS2) {
    return status;
  }
  return read_rest(record, continuation_bytes(record.bytes[1]));
}

int classify(CommandRecord& record) {
  const std::uint8_t first = record.bytes[0];
  if (first <= kLastPrintable) {
    record.code = CMD_TEXT_ASCII;
    return ST_OK;
  }
  if (first == kSingleShift2) {
    return classify_shifted(record);
  }
  const int count = continuation_bytes(first);
  record.code = count == 0 ? CMD_TEXT_BAD : CMD_TEXT_MB;
  return read_rest(record, count);
}

}  // namespace

int zqclass(CommandRecord* record) {
  record->pending = 0;
  record->length = 0;
  if (classifier.class_eof) {
    return ST_EOF;
  }
  const int status = zqtoken(0, record);
  if (status != ST_OK) {
    return status;
  }
  if (record->code == CMD_TEXT_RAW) {
    return classify(*record);
  }
  if (record->code == CMD_IGNORE) {
    record->length = 0;
    record->pending = 0;
  }
  return ST_OK;
}

void reset_classifier() {
  classifier = {};
}

}  // namespace rlx
