#include "input/frames.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "job/status.h"
#include "support/descriptor_io.h"
#include "support/narrowing.h"
#include "support/number.h"
#include "support/process_end.h"

namespace rlx {

namespace {

using Marker = std::array<std::uint8_t, kFrameMarkerBytes>;

constexpr Marker make_marker(std::string_view text) {
  Marker marker{};
  std::copy(text.begin(), text.end(), marker.begin());
  return marker;
}

/// Both markers, their NUL included, by FrameKind.
constexpr std::array<Marker, 2> kMarkers{make_marker("CNT_PRN_DAT"), make_marker("END_PRN_DAT")};

/// The status of an input that ends before a frame is complete.
Status short_frame(Status status) {
  return status == ST_IOERR ? ST_IOERR : ST_FRAME_SHORT;
}

/// The input ends where a frame could begin.
Status end_at_frame_border(const FrameReader& frames, Status status) {
  if (status == ST_IOERR) {
    return ST_IOERR;
  }
  return frames.frame_kind == kEndFrame ? ST_EOF : ST_FRAME_NOEND;
}

Status read_count(FrameReader& frames, std::size_t& count) {
  count = 0;
  for (std::size_t i = 0; i < kFrameCountDigits; ++i) {
    std::uint8_t digit = 0;
    std::size_t done = 0;
    const Status status = raw_read(frames.raw, std::span(&digit, 1), done);
    if (status != ST_OK) {
      return i == 0 ? end_at_frame_border(frames, status) : short_frame(status);
    }
    if (!is_digit(digit)) {
      return ST_FRAME_BAD;
    }
    count = count * 10 + static_cast<std::size_t>(digit - '0');
  }
  return count <= kMaxInputFrame ? ST_OK : ST_FRAME_BAD;
}

Status read_marker(FrameReader& frames) {
  Marker marker{};
  std::size_t done = 0;
  const Status status = raw_read(frames.raw, marker, done);
  if (status != ST_OK) {
    return short_frame(status);
  }
  const auto known = std::find(kMarkers.begin(), kMarkers.end(), marker);
  if (known == kMarkers.end()) {
    return ST_FRAME_BAD;
  }
  frames.frame_kind = static_cast<FrameKind>(known - kMarkers.begin());
  frames.end_frame_read = frames.frame_kind == kEndFrame;
  return ST_OK;
}

Status read_data(FrameReader& frames, std::size_t count) {
  std::size_t done = 0;
  const Status status = raw_read(frames.raw, std::span(frames.frame_data).first(count), done);
  if (status != ST_OK) {
    return short_frame(status);
  }
  frames.window = {frames.frame_data.data(), frames.frame_data.data() + count};
  frames.last_data_kind = frames.frame_kind;
  return ST_OK;
}

Status read_frame(FrameReader& frames) {
  if (frames.end_frame_read) {
    return ST_EOF;
  }
  std::size_t count = 0;
  Status status = read_count(frames, count);
  if (status == ST_OK) {
    status = read_marker(frames);
  }
  if (status != ST_OK) {
    return status;
  }
  return count == 0 ? ST_FRAME_EMPTY : read_data(frames, count);
}

/// Puts the header in front of a frame's data.
void fill_header(std::span<std::uint8_t> frame, FrameKind kind) {
  std::size_t count = frame.size() - kFrameHeaderBytes;
  for (std::size_t i = kFrameCountDigits; i-- > 0; count /= 10) {
    frame[i] = static_cast<std::uint8_t>('0' + count % 10);
  }
  std::memcpy(frame.data() + kFrameCountDigits, kMarkers[kind].data(), kFrameMarkerBytes);
}

}  // namespace

Status prtclin(FrameReader& frames, std::uint8_t* byte) {
  if (frames.window.empty()) {
    const Status status = read_frame(frames);
    if (status != ST_OK) {
      return status;
    }
  }
  *byte = *frames.window.next++;
  return ST_OK;
}

void prtclout(const FrameReader& frames) {
  std::array<std::uint8_t, kFrameHeaderBytes> frame{};
  if (write_frame(frame, frames.frame_kind, "rlxinout_ctl", "prtclout") != ST_OK) {
    end_process(ST_FAILED);
  }
}

Status write_frame(std::span<std::uint8_t> frame, FrameKind kind, const char* module,
                   const char* function) {
  fill_header(frame, kind);
  Bytes left = frame;
  while (!left.empty()) {
    const std::int32_t written =
        narrow_long_to_int(write_some(STDOUT_FILENO, left), module, function, -1);
    if (written < 0) {
      return ST_FAILED;
    }
    left = left.subspan(static_cast<std::size_t>(written));
  }
  return ST_OK;
}

}  // namespace rlx
