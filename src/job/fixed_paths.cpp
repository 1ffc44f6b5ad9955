#include "job/fixed_paths.h"

namespace rlx::fixed_paths {

const char* const kDefaultResourceDirectory = "/usr/local/lib/PXLQlp";
const char* const kEnvironmentFile = "/etc/opt/PXLQwrmtk/wrmtk/wrmtkenv";
const char* const kG1GaijiFile = "/etc/lp/g1gaiji";
const char* const kLostBitLog = "/var/opt/PXLQwrmtk/wrmtk/wrmtk64log.txt";
const char* const kFontLibrary = "/etc/opt/KOVAje/lib/libfal.so.1";

}  // namespace rlx::fixed_paths
