// Comes before PAPPL's function of this name, as the dynamic linker has it: a program's own
// functions come before those of libraries.
//
// PAPPL 1.3.1 has no call that refuses a job. A document that it cannot store is refused, and so is
// one whose job could not be noted: the next start of the server would not know of it.
#include <dlfcn.h>
#include <pappl/pappl.h>

#include <cerrno>
#include <cstring>

#include "rlx-printer-app/refusal.h"

extern "C" int papplJobOpenFile(pappl_job_t* job, char* name, size_t size, const char* directory,
                                const char* extension, const char* mode) {
  using Open = int (*)(pappl_job_t*, char*, size_t, const char*, const char*, const char*);
  static const auto open_file = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "papplJobOpenFile"));
  // Other files than documents have an extension.
  if (extension == nullptr && std::strcmp(mode, "w") == 0) {
    if (const int error = rlx::printer_app::take_unnoted(job); error != 0) {
      errno = error;
      return -1;
    }
  }
  return open_file == nullptr ? -1 : open_file(job, name, size, directory, extension, mode);
}
