#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>

#include "job/bytes.h"
#include "job/status.h"

namespace rlx {

// Reads and writes on descriptors as the filter needs them: a signal does not end them, and a
// descriptor that does not block (O_NONBLOCK) is waited for. What remains are real ends and
// failures.

/// Reads what is there, up to bytes.size() (1 or more), after waiting for it.
/// @return the bytes read; 0 at the end; -1 on a failure, with errno set.
ssize_t read_some(int descriptor, std::span<std::uint8_t> bytes);

/// Writes as much of `bytes` (1 or more) as the descriptor takes at once, after waiting for room.
/// @return the bytes written, 1 or more; -1 on a failure, with errno set. A write that takes
/// nothing is one: errno is EIO then.
ssize_t write_some(int descriptor, Bytes bytes);

/// Writes all of `bytes`, in as many steps as it takes.
/// @return ST_OK, or ST_IOERR on a failure, with errno set.
Status write_whole(int descriptor, Bytes bytes);

}  // namespace rlx
