#include "job/settings.h"

namespace rlx {

JobSettings job_settings;
ResourceDirectories resource_directories;

void reset_job_settings() {
  job_settings = JobSettings{};
  resource_directories.entries.fill({});
  resource_directories.count = 0;
}

}  // namespace rlx
