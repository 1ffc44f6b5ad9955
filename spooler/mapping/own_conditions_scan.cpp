#include "mapping/own_conditions_scan.h"

namespace rlx::spooler {

namespace {

constexpr std::uint8_t kEscape = 0x1b;

bool is_final(std::uint8_t byte) {
  return byte >= 0x40 && byte <= 0x7e;
}

}  // namespace

void OwnConditionsScan::end_sequence(std::uint8_t final) {
  // The other sequences with SP n are told by their first parameter byte.
  const bool conditions = before_ == ' ' && final == 'n' && first_ != '2' && first_ != '9';
  const bool printer_job = before_ == '/' && final == '`';
  found_ = found_ || conditions || printer_job;
  state_ = State::text;
}

void OwnConditionsScan::take(std::uint8_t byte) {
  switch (state_) {
    case State::text:
      state_ = byte == kEscape ? State::escape : State::text;
      break;
    case State::escape:
      state_ =
          byte == 'Q' ? State::first_parameter : (byte == kEscape ? State::escape : State::text);
      break;
    case State::first_parameter:
    case State::parameters:
      if (before_ == kEscape && byte == 'Q') {
        state_ = State::first_parameter;
      } else if (is_final(byte)) {
        end_sequence(byte);
      } else {
        first_ = state_ == State::first_parameter ? byte : first_;
        state_ = State::parameters;
      }
      break;
  }
  before_ = byte;
}

void OwnConditionsScan::take(std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    take(byte);
  }
}

}  // namespace rlx::spooler
