// The test programs' version of src/job/fixed_paths.cpp: every file of the product is looked up
// under the folder "sandbox" of the current directory.

#include "job/fixed_paths.h"

namespace rlx::fixed_paths {

const char* const kDefaultResourceDirectory = "sandbox/usr/local/lib/PXLQlp";
const char* const kEnvironmentFile = "sandbox/etc/opt/PXLQwrmtk/wrmtk/wrmtkenv";
const char* const kG1GaijiFile = "sandbox/etc/lp/g1gaiji";
const char* const kLostBitLog = "sandbox/var/opt/PXLQwrmtk/wrmtk/wrmtk64log.txt";
const char* const kFontLibrary = "sandbox/etc/opt/KOVAje/lib/libfal.so.1";

}  // namespace rlx::fixed_paths
