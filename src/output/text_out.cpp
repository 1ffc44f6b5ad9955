#include "output/text_out.h"

namespace rlx {

namespace {

static_assert(kPageBufferBytes >= kSizeSequenceBytes + kSetSequenceBytes + kRecordCapacity,
              "the longest record and the switch in front of it always fit");

/// What becomes of a record that is no text.
constexpr std::array<std::uint8_t, 1> kNotText{0x00};

/// Keeps the set sequence of a switch in the carried settings.
void keep_set(CarriedSettings& carried, const SetSwitch& set_switch) {
  keep_setting(carried, set_switch.set_command, set_switch.set_sequence());
}

/// Keeps both sequences of a switch.
void keep_switch(CarriedSettings& carried, const SetSwitch& set_switch) {
  keep_setting(carried, CMD_Q_YL_SP, set_switch.size_sequence());
  keep_set(carried, set_switch);
}

void switch_to(CarriedSettings& carried, const SetSwitch& set_switch, OutputBuffer& out) {
  out.append_fitting(set_switch.bytes);
  keep_switch(carried, set_switch);
}

void select_single_byte(CarriedSettings& carried, OutputBuffer& out, CharacterSetState& state) {
  if (state.set == CharacterSetState::kDoubleByte) {
    switch_to(carried, kToSingleByte, out);
    state.select_single_byte();
  }
}

void select_double_byte(CarriedSettings& carried, OutputBuffer& out, CharacterSetState& state) {
  if (state.set == CharacterSetState::kSingleByte) {
    switch_to(carried, kToDoubleByte, out);
    state.select_double_byte();
  }
}

/// In front of an invalid character the size sequence is deliberately left out.
void select_single_byte_set_only(CarriedSettings& carried, OutputBuffer& out,
                                 CharacterSetState& state) {
  if (state.set == CharacterSetState::kDoubleByte) {
    out.append_fitting(kToSingleByte.set_sequence());
    keep_set(carried, kToSingleByte);
    state.select_single_byte();
  }
}

}  // namespace

void text_out(CarriedSettings& carried, const CommandRecord& record, OutputBuffer& out,
              CharacterSetState& state) {
  out.length = 0;
  switch (record.code) {
    case CMD_TEXT_ASCII:
      select_single_byte(carried, out, state);
      out.append_fitting(record.content());
      break;
    case CMD_TEXT_MB:
      select_double_byte(carried, out, state);
      out.append_fitting(record.content());
      break;
    case CMD_TEXT_SS2:
      select_single_byte(carried, out, state);
      if (record.length > 1) {
        out.append_fitting(record.content().subspan(1));
      }
      break;
    case CMD_TEXT_BAD:
      select_single_byte_set_only(carried, out, state);
      out.append_fitting(record.content());
      break;
    default:
      out.append_fitting(kNotText);
      break;
  }
}

}  // namespace rlx
