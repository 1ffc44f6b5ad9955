#pragma once

#include <pappl/pappl.h>

namespace rlx::printer_app {

/// Holds a job again that was released before its document was here: PAPPL would start it, and end
/// the whole server where it looks for the document's format. It waits for its document then.
///
/// To be called where PAPPL tells of the release, with its locks.
void hold_again(pappl_job_t* job);

}  // namespace rlx::printer_app
