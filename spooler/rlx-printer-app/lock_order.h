#pragma once

#include <pappl/pappl.h>

namespace rlx::printer_app {

/// From now on nobody waits for ever for two of PAPPL's locks.
///
/// PAPPL 1.3.1 takes them in two orders: whoever ends an upload that broke, or a picture that comes
/// while another job prints, has the printer's lock and waits for the system's; whoever saves the
/// state, or lists printers, reads the system's and waits for a printer's. Here the latter give the
/// system's lock back for a moment when they do not get the other one.
void keep_lock_order(pappl_system_t* system);

}  // namespace rlx::printer_app
