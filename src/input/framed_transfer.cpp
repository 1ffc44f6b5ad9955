#include "input/framed_transfer.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "job/status.h"
#include "support/descriptor_io.h"
#include "support/error_log.h"
#include "support/number.h"
#include "support/process_end.h"

namespace rlx {

FramedTransfer framed_transfer;

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
int short_frame(int status) {
  return status == ST_IOERR ? ST_IOERR : ST_FRAME_SHORT;
}

/// The input ends where a frame could begin.
int end_at_frame_border(int status) {
  if (status == ST_IOERR) {
    return ST_IOERR;
  }
  return framed_transfer.frame_kind == kEndFrame ? ST_EOF : ST_FRAME_NOEND;
}

int read_count(std::size_t& count) {
  count = 0;
  for (std::size_t i = 0; i < kFrameCountDigits; ++i) {
    std::uint8_t digit = 0;
    std::size_t one = 1;
    const int status = raw_read(&digit, one);
    if (status != ST_OK) {
      return i == 0 ? end_at_frame_border(status) : short_frame(status);
    }
    if (!is_digit(digit)) {
      return ST_FRAME_BAD;
    }
    count = count * 10 + static_cast<std::size_t>(digit - '0');
  }
  return count <= kMaxInputFrame ? ST_OK : ST_FRAME_BAD;
}

int read_marker() {
  Marker marker{};
  std::size_t length = marker.size();
  const int status = raw_read(marker.data(), length);
  if (status != ST_OK) {
    return short_frame(status);
  }
  const auto known = std::find(kMarkers.begin(), kMarkers.end(), marker);
  if (known == kMarkers.end()) {
    return ST_FRAME_BAD;
  }
  framed_transfer.frame_kind = static_cast<FrameKind>(known - kMarkers.begin());
  framed_transfer.end_frame_read = framed_transfer.frame_kind == kEndFrame;
  return ST_OK;
}

int read_data(std::size_t count) {
  std::size_t length = count;
  const int status = raw_read(framed_transfer.frame_data.data(), length);
  if (status != ST_OK) {
    return short_frame(status);
  }
  framed_transfer.window = {framed_transfer.frame_data.data(),
                            framed_transfer.frame_data.data() + count};
  framed_transfer.last_data_kind = framed_transfer.frame_kind;
  return ST_OK;
}

int read_frame() {
  if (framed_transfer.end_frame_read) {
    return ST_EOF;
  }
  std::size_t count = 0;
  int status = read_count(count);
  if (status == ST_OK) {
    status = read_marker();
  }
  if (status != ST_OK) {
    return status;
  }
  return count == 0 ? ST_FRAME_EMPTY : read_data(count);
}

/// Puts the header in front of the data that is gathered.
void fill_header(std::uint8_t* header, std::int32_t count, FrameKind kind) {
  for (std::size_t i = kFrameCountDigits; i-- > 0; count /= 10) {
    header[i] = static_cast<std::uint8_t>('0' + count % 10);
  }
  std::memcpy(header + kFrameCountDigits, kMarkers[kind].data(), kFrameMarkerBytes);
}

/// Writes a whole frame: in one write, unless a signal or a printer that is slow to take it cuts
/// that short. @return false when it cannot be written.
bool write_frame(const std::uint8_t* frame, std::int32_t data_bytes, const char* module,
                 const char* function) {
  std::span left(frame, kFrameHeaderBytes + static_cast<std::size_t>(data_bytes));
  while (!left.empty()) {
    const std::int32_t written =
        narrow_long_to_int(write_some(STDOUT_FILENO, left), module, function, -1);
    if (written < 0) {
      return false;
    }
    left = left.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

bool write_out_frame(FrameKind kind, const char* module, const char* function) {
  fill_header(framed_transfer.out_frame.data(), framed_transfer.out_len, kind);
  const bool complete =
      write_frame(framed_transfer.out_frame.data(), framed_transfer.out_len, module, function);
  framed_transfer.out_len = 0;
  return complete;
}

int write_gathered(FrameKind kind) {
  if (!write_out_frame(kind, "rlxinout_ctl", "directout")) {
    end_process(kExitFailure);
  }
  return ST_OK;
}

/// What is held would overflow: it leaves as a CNT frame, whatever the input frame's marker is.
int cut_frame() {
  return write_gathered(kCntFrame);
}

void gather(std::int32_t length, const std::uint8_t* bytes) {
  std::uint8_t* data = framed_transfer.out_frame.data() + kFrameHeaderBytes;
  std::memcpy(data + framed_transfer.out_len, bytes, static_cast<std::size_t>(length));
  framed_transfer.out_len += length;
}

}  // namespace

int prtclin(std::uint8_t* byte) {
  if (framed_transfer.window.empty()) {
    const int status = read_frame();
    if (status != ST_OK) {
      return status;
    }
  }
  *byte = *framed_transfer.window.next++;
  return ST_OK;
}

int directout(std::int32_t length, const std::uint8_t* bytes) {
  if (bytes == nullptr) {
    return ST_OK;
  }
  while (framed_transfer.out_len + length > kMaxOutputFrame) {
    const std::int32_t room = framed_transfer.out_len == 0 ? kMaxOutputFrame : 0;
    gather(room, bytes);  // nothing, but for a piece that no frame holds
    bytes += room;
    length -= room;
    cut_frame();
  }
  gather(length, bytes);
  return frame_left() != 0 ? ST_OK : write_gathered(framed_transfer.frame_kind);
}

void prtclout() {
  std::array<std::uint8_t, kFrameHeaderBytes> frame{};
  fill_header(frame.data(), 0, framed_transfer.frame_kind);
  if (!write_frame(frame.data(), 0, "rlxinout_ctl", "prtclout")) {
    end_process(kExitFailure);
  }
}

int out_end_frame() {
  if (framed_transfer.out_len == 0 || framed_transfer.output_closed) {
    return ST_OK;
  }
  return write_out_frame(kEndFrame, "zqeuctorlx", "main") ? ST_OK : kExitFailure;
}

PieceSink frame_sink() {
  return {framed_transfer.out_frame.data() + kFrameHeaderBytes, &framed_transfer.out_len,
          kMaxOutputFrame, cut_frame};
}

void reset_framed_transfer() {
  framed_transfer.frame_kind = kEndFrame;
  framed_transfer.last_data_kind = kEndFrame;
  framed_transfer.end_frame_read = false;
  framed_transfer.output_closed = false;
  framed_transfer.window = {};
  framed_transfer.out_len = 0;
}

}  // namespace rlx
