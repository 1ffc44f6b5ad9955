// What is no regular file where the filter looks for one: it never waits there, nor acts on it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "faults/check_fault.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"
#include "faults/hostile_files.h"
#include "faults/output_rules.h"
#include "job/fixed_paths.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

/// A file that a job looks at, and what an unreadable one in its place comes to.
struct Place {
  const char* name;
  JobKind job;
  std::string path;
  int status;
  const char* message;
  OutputRule output;
  bool may_be_absent;  ///< an absent one is no error
};

const std::vector<Place> kPlaces{
    {"Form", JobKind::form, kFormPlace, 1, kFormError, OutputRule::nothing, false},
    {"FormOfRecord", JobKind::conditions, kRecordFormPlace, 1, kFormError, OutputRule::ended,
     false},
    {"Environment", JobKind::form, fixed_paths::kEnvironmentFile, 0, "", OutputRule::rounded_up,
     false},
    {"EnvironmentOfRecord", JobKind::conditions, fixed_paths::kEnvironmentFile, 0, "",
     OutputRule::rounded_up, false},
    {"G1Range", JobKind::form, fixed_paths::kG1GaijiFile, 1, kG1Error, OutputRule::nothing, true},
    {"FontLibrary", JobKind::form, fixed_paths::kFontLibrary, 0, "", OutputRule::same, true},
};

class FileAtPlace : public ::testing::TestWithParam<Place> {
 protected:
  static void expect_refused(const Job& job, const HostileFile& hostile) {
    SCOPED_TRACE(hostile.kind);
    const Place& place = GetParam();
    const Reference reference = make_reference(job);
    FaultRig rig(job);
    fs::remove(place.path);
    hostile.make(place.path);
    const Outcome outcome = rig.run();
    if (hostile.absent && place.may_be_absent) {
      expect_undisturbed(reference, outcome);
      return;
    }
    EXPECT_EQ(outcome.status, place.status);
    EXPECT_EQ(outcome.messages, place.message);
    EXPECT_EQ(broken_rule(place.output, job, reference, outcome), "");
  }

  static const Job& job() { return small_job(GetParam().job); }
};

TEST_P(FileAtPlace, IsRefusedWithoutWaitingWhenItIsHostile) {
  for (const HostileFile& hostile : hostile_files()) {
    expect_refused(job(), hostile);
    RETURN_IF_FAILED();
  }
}

TEST_P(FileAtPlace, MayBeReachedByLinks) {
  const Reference reference = make_reference(job());
  FaultRig rig(job());
  fs::rename(GetParam().path, "moved");
  fs::create_symlink(fs::absolute("moved"), "link");
  fs::create_symlink(fs::absolute("link"), GetParam().path);
  expect_undisturbed(reference, rig.run());
}

INSTANTIATE_TEST_SUITE_P(Faults, FileAtPlace, ::testing::ValuesIn(kPlaces),
                         [](const auto& place) { return std::string(place.param.name); });

/// The form's path, and not its name, on the command line.
class FormByPath : public FileAtPlace {};

TEST_P(FormByPath, IsRefusedWithoutWaitingWhenItIsHostile) {
  Job by_path = job();
  by_path.options = {"-R", "-n", kFormPlace};
  for (const HostileFile& hostile : hostile_files()) {
    expect_refused(by_path, hostile);
    RETURN_IF_FAILED();
  }
}

INSTANTIATE_TEST_SUITE_P(Faults, FormByPath, ::testing::Values(kPlaces.front()),
                         [](const auto& place) { return std::string(place.param.name); });

}  // namespace
}  // namespace rlx::testing
