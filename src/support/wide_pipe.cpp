#include "support/wide_pipe.h"

#include <fcntl.h>

#include <cerrno>

namespace rlx {

namespace {

/// Twice what a pipe holds by itself. An output pipe takes all that the filter gathers in one write
/// then; more gains nothing (docs/performance.md). All pipes of a user share 64 MiB, and when that
/// is used up, further ones hold 8 KiB only: two pipes of this size leave room for a few hundred
/// jobs at once.
constexpr int kWidePipeBytes = 131072;

}  // namespace

void widen_pipe(int descriptor) {
#ifdef F_SETPIPE_SZ
  const int saved = errno;
  const int size = fcntl(descriptor, F_GETPIPE_SZ);
  if (size > 0 && size < kWidePipeBytes) {
    static_cast<void>(fcntl(descriptor, F_SETPIPE_SZ, kWidePipeBytes));
  }
  errno = saved;
#else
  static_cast<void>(descriptor);
#endif
}

}  // namespace rlx
