#include "input/sequence_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "job/bytes.h"

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

/// Reads `count` bytes and hands them to `take` in portions, with the number of bytes before each.
template <typename Take>
Status read_counted(ByteSource& source, int flags, std::int32_t count, Take take) {
  std::int32_t done = 0;
  for (;;) {
    ByteWindow& window = job_window(source);
    const Bytes ready(window.next, std::min(static_cast<std::size_t>(count - done), window.size()));
    window.next += ready.size();
    take(ready, done);
    done += static_cast<std::int32_t>(ready.size());
    if (done == count) {
      return ST_OK;
    }
    if (at_end_frame_end(source)) {
      return ST_CUT;
    }
    std::uint8_t byte = 0;
    const Status status = zqgetc(source, flags, &byte);
    if (status != ST_OK) {
      return status;
    }
    take(Bytes(&byte, 1), done);
    ++done;
  }
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

Status zqrdata(ByteSource& source, int flags, std::span<std::uint8_t> destination,
               std::int32_t& done) {
  done = 0;
  return read_counted(source, flags, static_cast<std::int32_t>(destination.size()),
                      [&](Bytes portion, std::int32_t before) {
                        std::copy(portion.begin(), portion.end(), destination.begin() + before);
                        done = before + static_cast<std::int32_t>(portion.size());
                      });
}

Status skip_data(ByteSource& source, int flags, std::int32_t count) {
  return read_counted(source, flags, count, [](Bytes, std::int32_t) {});
}

}  // namespace rlx
