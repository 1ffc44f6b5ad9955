// The suite is complete only as long as the shim knows every function that can fail. What the
// programs take from the C library is either taken by the shim or stands below as harmless.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "faults/elf_imports.h"

#if !defined(RLX_FAULT_SHIM) || !defined(RLX_PROGRAM) || !defined(RLX_SANDBOXED_PROGRAM)
#error "the build tells where the shim and the programs are"
#endif

namespace rlx::testing {
namespace {

/// Names that cannot fail, or whose failure cannot change anything.
const std::set<std::string> kHarmless{
    // Start and end of the process.
    "__libc_start_main",
    "__cxa_finalize",
    "__cxa_atexit",
    "exit",
    "_exit",
    "abort",
    "__stack_chk_fail",
    "__stack_chk_guard",
    "__fortify_fail",
    "__chk_fail",
    // Values, no functions.
    "__errno_location",
    "stderr",
    "stdout",
    "stdin",
    "optarg",
    "optind",
    "opterr",
    "optopt",
    "environ",
    // Bytes and characters in memory.
    "memchr",
    "memrchr",
    "memcmp",
    "bcmp",
    "memcpy",
    "memmove",
    "memset",
    "strchr",
    "strrchr",
    "strcspn",
    "strspn",
    "strlen",
    "strnlen",
    "strcmp",
    "strncmp",
    "strcpy",
    "__memcpy_chk",
    "__memmove_chk",
    "__memset_chk",
    "__strcpy_chk",
    "__strncpy_chk",
    // Numbers: what is no number is what the filter's rules say.
    "strtol",
    "strtoul",
    "strtoull",
    "__isoc23_strtol",
    "__isoc23_strtoul",
    "__isoc23_strtoull",
    // Texts of bounded numbers and names into room of this process.
    "snprintf",
    "__snprintf_chk",
    // The command line.
    "getopt",
    // Gives back, and tells nothing.
    "free",
    // Never fails.
    "getpid",
};

std::set<std::string> unknown_imports(const std::string& program) {
  const std::set<std::string> shim = exported_names(RLX_FAULT_SHIM);
  std::set<std::string> unknown = imported_names(program);
  std::erase_if(unknown, [&](const std::string& name) {
    return kHarmless.contains(name) || shim.contains(name);
  });
  return unknown;
}

TEST(Imports, OfTheProgramAreFailedByTheShimOrHarmless) {
  EXPECT_EQ(unknown_imports(RLX_PROGRAM), std::set<std::string>{});
}

TEST(Imports, OfTheProgramUnderTestAreTheSameAsOfTheProduct) {
  EXPECT_EQ(imported_names(RLX_SANDBOXED_PROGRAM), imported_names(RLX_PROGRAM));
}

TEST(Imports, AreFound) {
  const std::set<std::string> names = imported_names(RLX_PROGRAM);
  EXPECT_TRUE(names.contains("write"));
  EXPECT_FALSE(names.contains("main"));
  EXPECT_TRUE(exported_names(RLX_FAULT_SHIM).contains("write"));
  EXPECT_FALSE(exported_names(RLX_FAULT_SHIM).contains("memcpy"));
}

}  // namespace
}  // namespace rlx::testing
