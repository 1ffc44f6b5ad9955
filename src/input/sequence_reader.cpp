#include "input/sequence_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace rlx {

namespace {

/// Takes bytes that stand ready, up to one in `low` to `high`. @return true when it was met.
bool take_ready_bytes(ByteSource& source, CommandRecord& record, std::uint8_t low,
                      std::uint8_t high) {
  ByteWindow& window = job_window(source);
  const std::uint8_t* next = window.next;
  const std::uint8_t* const end = window.end;
  const auto range = static_cast<std::uint8_t>(high - low);
  bool met = false;
  while (next != end && !met) {
    const std::uint8_t byte = *next++;
    append_byte(record, byte);
    met = static_cast<std::uint8_t>(byte - low) <= range;
  }
  window.next = next;
  return met;
}

/// Takes up to `count` bytes that stand ready. @return how many.
std::int32_t take_ready_data(ByteSource& source, std::uint8_t* destination, std::int32_t count) {
  ByteWindow& window = job_window(source);
  const std::size_t portion = std::min(static_cast<std::size_t>(count), window.size());
  if (destination != nullptr && portion != 0) {
    std::memcpy(destination, window.next, portion);
  }
  window.next += portion;
  return static_cast<std::int32_t>(portion);
}

}  // namespace

Status wait_for_sequence_byte(ByteSource& source, int flags, CommandRecord& record) {
  if (at_end_frame_end(source)) {
    return ignore_command(record, ST_CUT);
  }
  std::uint8_t byte = 0;
  const Status status = zqgetc(source, flags, &byte);
  if (status != ST_OK) {
    return ignore_command(record, status);
  }
  append_byte(record, byte);
  return ST_OK;
}

Status zqrhandl(ByteSource& source, int flags, CommandRecord* record, std::uint8_t low,
                std::uint8_t high) {
  if (record == nullptr) {
    std::fputs("*** zqrhandl: zqdtp error\n", stderr);
    return ST_FAILED;
  }
  while (!take_ready_bytes(source, *record, low, high)) {
    const Status status = read_sequence_byte(source, flags, *record);
    if (status != ST_OK) {
      return status;
    }
    const std::uint8_t byte = record->bytes[static_cast<std::size_t>(record->length - 1)];
    if (byte >= low && byte <= high) {
      return ST_OK;
    }
  }
  return ST_OK;
}

Status zqrdata(ByteSource& source, int flags, std::uint8_t* destination, std::int32_t* count) {
  const std::int32_t wanted = *count;
  Status status = ST_OK;
  *count = 0;
  for (;;) {
    std::uint8_t* const rest = destination == nullptr ? nullptr : destination + *count;
    *count += take_ready_data(source, rest, wanted - *count);
    if (*count == wanted) {
      return ST_OK;
    }
    if (at_end_frame_end(source)) {
      return ST_CUT;
    }
    std::uint8_t byte = 0;
    status = zqgetc(source, flags, &byte);
    if (status != ST_OK) {
      return status;
    }
    if (destination != nullptr) {
      destination[*count] = byte;
    }
    ++*count;
  }
}

}  // namespace rlx
