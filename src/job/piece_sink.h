#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "job/bytes.h"

namespace rlx {

/// A place that gathers pieces of output and cuts them into blocks or frames: the page buffer, or
/// the output frame. A piece is never divided: one that does not fit behind the gathered ones makes
/// a cut first. This view is for runs of pieces that need nothing but gathering: no piece may end
/// the page (in FF), and with framed output none may use up the input frame.
struct PieceSink {
  std::uint8_t* bytes;
  std::int32_t* length;
  std::int32_t capacity;
  /// Writes what `owner` has gathered and sets `*length` to 0.
  void (*cut_of)(void* owner);
  void* owner;

  void cut() const { cut_of(owner); }

  std::int32_t room() const { return capacity - *length; }

  /// Makes room for a piece of `count` bytes, `capacity` at most.
  void make_room(std::int32_t count) const {
    if (count > room()) [[unlikely]] {
      cut();
    }
  }

  /// Appends what there is room for.
  void append(Bytes more) const {
    std::memcpy(bytes + *length, more.data(), more.size());
    *length += static_cast<std::int32_t>(more.size());
  }

  /// Appends pieces of one byte each.
  void append_bytes(Bytes pieces) const {
    while (!pieces.empty()) {
      make_room(1);
      const std::size_t portion = std::min(pieces.size(), static_cast<std::size_t>(room()));
      append(pieces.first(portion));
      pieces = pieces.subspan(portion);
    }
  }
};

}  // namespace rlx
