#pragma once

namespace rlx {

/// Asks the system for a pipe that holds more than usual, so that the filter and its neighbours
/// take turns less often. A pipe that is as wide or wider already is left alone. For a descriptor
/// that is no pipe, on a system that cannot, and past the limits of the user nothing happens. errno
/// is left as it was.
void widen_pipe(int descriptor);

}  // namespace rlx
