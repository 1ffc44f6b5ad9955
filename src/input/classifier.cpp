#include "input/classifier.h"

#include "input/byte_source.h"
#include "input/tokenizer.h"

namespace rlx {

namespace {

constexpr std::uint8_t kLastPrintable = 0x7e;

/// A character that lacks bytes is invalid; what was read of it is kept.
Status cut_character(Classifier& classifier, CommandRecord& record, Status status) {
  record.code = CMD_TEXT_BAD;
  if (status == ST_EOF) {
    classifier.class_eof = true;
    return ST_OK;
  }
  return status;
}

/// Appends `count` bytes, whatever their values, or cuts the character.
Status read_rest(Classifier& classifier, CommandRecord& record, int count) {
  ByteSource& source = classifier.tokenizer.source;
  for (; count > 0; --count) {
    if (at_end_frame_end(source)) {
      return cut_character(classifier, record, ST_OK);
    }
    std::uint8_t byte = 0;
    const Status status = zqgetc(source, 0, &byte);
    if (status != ST_OK) {
      return cut_character(classifier, record, status);
    }
    record.bytes[static_cast<std::size_t>(record.length++)] = byte;
  }
  return ST_OK;
}

Status classify_shifted(Classifier& classifier, CommandRecord& record) {
  record.code = CMD_TEXT_SS2;
  const Status status = read_rest(classifier, record, 1);
  if (status != ST_OK || record.code != CMD_TEXT_SS2) {
    return status;
  }
  return read_rest(classifier, record, continuation_bytes(record.bytes[1]));
}

Status classify(Classifier& classifier, CommandRecord& record) {
  const std::uint8_t first = record.bytes[0];
  if (first <= kLastPrintable) {
    record.code = CMD_TEXT_ASCII;
    return ST_OK;
  }
  if (first == kSingleShift2) {
    return classify_shifted(classifier, record);
  }
  const int count = continuation_bytes(first);
  record.code = count == 0 ? CMD_TEXT_BAD : CMD_TEXT_MB;
  return read_rest(classifier, record, count);
}

}  // namespace

Status zqclass(Classifier& classifier, CommandRecord* record) {
  record->pending = 0;
  record->length = 0;
  if (classifier.class_eof) {
    return ST_EOF;
  }
  const Status status = zqtoken(classifier.tokenizer, 0, record);
  if (status != ST_OK) {
    return status;
  }
  if (record->code == CMD_TEXT_RAW) {
    return classify(classifier, *record);
  }
  if (record->code == CMD_IGNORE) {
    record->length = 0;
    record->pending = 0;
  }
  return ST_OK;
}

}  // namespace rlx
