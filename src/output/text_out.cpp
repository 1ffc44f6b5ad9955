#include "output/text_out.h"

#include <cstring>

#include "output/carried_settings.h"

namespace rlx {

namespace {

static_assert(kPageBufferBytes >= kSizeSequenceBytes + kSetSequenceBytes + kRecordCapacity,
              "a record holds the longest command and the switch in front of it");

void append(OutputBuffer& out, std::int32_t count, const std::uint8_t* bytes) {
  std::memcpy(out.bytes.data() + out.length, bytes, static_cast<std::size_t>(count));
  out.length += count;
}

/// Keeps the set sequence of a switch in the carried settings.
void keep_set(const SetSwitch& set_switch) {
  keep_setting(set_switch.set_command, kSetSequenceBytes,
               set_switch.bytes.data() + kSizeSequenceBytes);
}

/// Keeps both sequences of a switch.
void keep_switch(const SetSwitch& set_switch) {
  keep_setting(CMD_Q_YL_SP, kSizeSequenceBytes, set_switch.bytes.data());
  keep_set(set_switch);
}

void switch_to(const SetSwitch& set_switch, OutputBuffer& out) {
  append(out, kSizeSequenceBytes + kSetSequenceBytes, set_switch.bytes.data());
  keep_switch(set_switch);
}

void select_single_byte(OutputBuffer& out, CharacterSetState& state) {
  if (state.set == CharacterSetState::kDoubleByte) {
    switch_to(kToSingleByte, out);
    state.select_single_byte();
  }
}

void select_double_byte(OutputBuffer& out, CharacterSetState& state) {
  if (state.set == CharacterSetState::kSingleByte) {
    switch_to(kToDoubleByte, out);
    state.select_double_byte();
  }
}

/// In front of an invalid character the size sequence is deliberately left out.
void select_single_byte_set_only(OutputBuffer& out, CharacterSetState& state) {
  if (state.set == CharacterSetState::kDoubleByte) {
    append(out, kSetSequenceBytes, kToSingleByte.bytes.data() + kSizeSequenceBytes);
    keep_set(kToSingleByte);
    state.select_single_byte();
  }
}

}  // namespace

int text_out(const CommandRecord& record, OutputBuffer& out, CharacterSetState& state) {
  out.length = 0;
  switch (record.code) {
    case CMD_TEXT_ASCII:
      select_single_byte(out, state);
      append(out, record.length, record.bytes.data());
      break;
    case CMD_TEXT_MB:
      select_double_byte(out, state);
      append(out, record.length, record.bytes.data());
      break;
    case CMD_TEXT_SS2:
      select_single_byte(out, state);
      if (record.length > 1) {
        append(out, record.length - 1, record.bytes.data() + 1);
      }
      break;
    case CMD_TEXT_BAD:
      select_single_byte_set_only(out, state);
      append(out, record.length, record.bytes.data());
      break;
    default:
      out.bytes[0] = 0;
      out.length = 1;
      break;
  }
  return 0;
}

}  // namespace rlx
