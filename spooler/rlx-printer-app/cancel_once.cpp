// Mends PAPPL's function of this name, in whose place the dynamic linker puts it: a program's own
// functions come before those of libraries.
//
// PAPPL 1.3.1's page of jobs cancels a job that has ended, too; the job stands in the list of ended
// ones twice then, and is freed twice. One that waits for its printer would go on saying so.
#include <dlfcn.h>
#include <pappl/pappl.h>

extern "C" void papplJobCancel(pappl_job_t* job) {
  using Cancel = void (*)(pappl_job_t*);
  static const auto cancel = reinterpret_cast<Cancel>(dlsym(RTLD_NEXT, "papplJobCancel"));
  if (cancel != nullptr && papplJobGetState(job) < IPP_JSTATE_CANCELED) {
    if (papplJobGetState(job) == IPP_JSTATE_PROCESSING && papplJobGetMessage(job) != nullptr) {
      papplJobSetMessage(job, "Job canceled.");
    }
    cancel(job);
  }
}
