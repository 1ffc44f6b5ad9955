#include "support/wide_pipe.h"

#include <fcntl.h>

#include <cerrno>

namespace rlx {

namespace {
/// Four times what a pipe holds by itself; more gains nothing.
constexpr int kWidePipeBytes = 262144;
}  // namespace

void widen_pipe(int descriptor) {
#ifdef F_SETPIPE_SZ
  const int saved = errno;
  static_cast<void>(fcntl(descriptor, F_SETPIPE_SZ, kWidePipeBytes));
  errno = saved;
#else
  static_cast<void>(descriptor);
#endif
}

}  // namespace rlx
