#include "mapping/filter_arguments.h"

#include <gtest/gtest.h>

namespace rlx::spooler {
namespace {

using Words = std::vector<std::string>;

/// The names of what check_queue finds wrong.
Words faults_of(const QueueSettings& queue) {
  Words names;
  for (const OptionFault& fault : check_queue(queue)) {
    EXPECT_FALSE(fault.wanted.empty());
    names.push_back(fault.name + '=' + fault.value);
  }
  return names;
}

QueueSettings queue_of(unsigned mode, unsigned resolution, const std::string& capabilities) {
  QueueSettings queue;
  queue.emulation_mode = mode;
  queue.resolution = resolution;
  queue.capabilities = capabilities;
  return queue;
}

Words arguments_of(const QueueSettings& queue) {
  EXPECT_EQ(faults_of(queue), Words());
  return filter_arguments(queue, JobSettings());
}

TEST(FilterArguments, AreNoneWithoutAWish) {
  EXPECT_EQ(filter_arguments(QueueSettings(), JobSettings()), Words());
}

TEST(FilterArguments, OfEachSettingOfAJob) {
  const auto with = [](auto JobSettings::*setting, auto value) {
    JobSettings job;
    job.*setting = value;
    return filter_arguments(QueueSettings(), job);
  };
  EXPECT_EQ(with(&JobSettings::form, "INVOICE"), Words({"-n", "INVOICE"}));
  EXPECT_EQ(with(&JobSettings::form, "-x"), Words({"-n", "-x"}));
  EXPECT_EQ(with(&JobSettings::lines_per_page, 9999U), Words({"-L", "9999"}));
  EXPECT_EQ(with(&JobSettings::lines_per_inch, 12U), Words({"-l", "12"}));
  EXPECT_EQ(with(&JobSettings::characters_per_inch, 100U), Words({"-c", "100"}));
  EXPECT_EQ(with(&JobSettings::undefined_characters, UndefinedCharacters::space),
            Words({"-r", "space"}));
  EXPECT_EQ(with(&JobSettings::undefined_characters, UndefinedCharacters::ubar),
            Words({"-r", "ubar"}));
  EXPECT_EQ(with(&JobSettings::extended_parameters, true), Words({"-P"}));
}

TEST(FilterArguments, OfWhatAPrintConditionCommandSaysAreNone) {
  JobSettings job;
  job.charset = "EUC-JP";
  job.paper = Paper::a3;
  job.tray = Tray::tray_2;
  job.orientation = Orientation::landscape;
  job.sides = Sides::two_long_edge;
  job.copies = 7;
  job.page_offset_x = 1440;
  job.page_offset_y = 1440;
  EXPECT_EQ(filter_arguments(QueueSettings(), job), Words());
}

TEST(FilterArguments, OfTheModes) {
  EXPECT_EQ(arguments_of(queue_of(1, 0, "")), Words());
  EXPECT_EQ(arguments_of(queue_of(2, 0, "")), Words({"-B"}));
  EXPECT_EQ(arguments_of(queue_of(3, 0, "")), Words({"-E"}));
  EXPECT_EQ(arguments_of(queue_of(4, 0, "")), Words({"-C"}));
  EXPECT_EQ(arguments_of(queue_of(6, 0, "")), Words({"-Q"}));
  EXPECT_EQ(arguments_of(queue_of(7, 0, "")), Words({"-R"}));
}

TEST(FilterArguments, OfOtherModesAreFaults) {
  for (const unsigned mode : {0U, 5U, 8U, 4294967295U}) {
    EXPECT_EQ(faults_of(queue_of(mode, 0, "")),
              Words({"rlxEmulationMode=" + std::to_string(mode)}));
  }
}

TEST(FilterArguments, OfAResolutionThatTheCapabilitiesList) {
  const std::string both = "D240!D400!f1";
  EXPECT_EQ(arguments_of(queue_of(1, 240, both)), Words({"-G", both, "-e", "240"}));
  EXPECT_EQ(arguments_of(queue_of(1, 400, both)), Words({"-G", both, "-e", "400"}));
  EXPECT_EQ(arguments_of(queue_of(7, 400, both)), Words({"-R", "-G", both, "-e", "400"}));
  EXPECT_EQ(arguments_of(queue_of(2, 240, both)), Words({"-B", "-G", both, "-e", "240"}));
  EXPECT_EQ(arguments_of(queue_of(1, 600, "g!D600")), Words({"-G", "g!D600", "-e", "600"}));
  EXPECT_EQ(arguments_of(queue_of(1, 0, both)), Words({"-G", both}));
}

TEST(FilterArguments, OfAResolutionThatNobodyLists) {
  EXPECT_EQ(arguments_of(queue_of(1, 240, "")), Words());
  EXPECT_EQ(arguments_of(queue_of(6, 240, "f1!g")), Words({"-Q", "-G", "f1!g"}));
  EXPECT_EQ(arguments_of(queue_of(1, 400, "")), Words({"-B"}));
  EXPECT_EQ(arguments_of(queue_of(2, 400, "")), Words({"-B"}));
  EXPECT_EQ(arguments_of(queue_of(1, 400, "f1")), Words({"-B", "-G", "f1"}));
}

TEST(FilterArguments, OfAResolutionThatCannotBeAreFaults) {
  EXPECT_EQ(faults_of(queue_of(1, 600, "")), Words({"rlxResolution=600"}));
  EXPECT_EQ(faults_of(queue_of(1, 600, "D240!D400")), Words({"rlxResolution=600"}));
  EXPECT_EQ(faults_of(queue_of(1, 240, "D400")), Words({"rlxResolution=240"}));
  EXPECT_EQ(faults_of(queue_of(1, 400, "D240")), Words({"rlxResolution=400"}));
  EXPECT_EQ(faults_of(queue_of(2, 400, "f1!D240")), Words({"rlxResolution=400"}));
  EXPECT_EQ(faults_of(queue_of(2, 240, "")), Words({"rlxResolution=240"}));
  // A part of a token is none.
  EXPECT_EQ(faults_of(queue_of(1, 40, "D400")), Words({"rlxResolution=40"}));
  for (const unsigned mode : {3U, 4U, 6U, 7U}) {
    EXPECT_EQ(faults_of(queue_of(mode, 400, "")), Words({"rlxResolution=400"})) << mode;
    EXPECT_EQ(faults_of(queue_of(mode, 240, "")), Words()) << mode;
  }
}

TEST(FilterArguments, OfFilterFlags) {
  QueueSettings queue;
  queue.filter_flags = "Af";
  EXPECT_EQ(arguments_of(queue), Words({"-A", "-f"}));
  queue.filter_flags = "qD";
  EXPECT_EQ(arguments_of(queue), Words({"-q", "-D"}));
  for (const char* flags : {"d", "B", "A f", "A,f", "-A", "n", "AN"}) {
    queue.filter_flags = flags;
    EXPECT_EQ(faults_of(queue), Words({std::string("rlxFilterFlags=") + flags}));
  }
}

TEST(FilterArguments, OfFormDirectories) {
  QueueSettings queue;
  queue.form_directories = {"/srv/forms"};
  EXPECT_EQ(arguments_of(queue), Words({"-p", "/srv/forms"}));
  queue.form_directories = {"/srv/forms", "/a b", "/"};
  EXPECT_EQ(arguments_of(queue), Words({"-p", "/srv/forms:/a b:/"}));
  queue.form_directories = {'/' + std::string(254, 'f')};
  EXPECT_EQ(faults_of(queue), Words());
  for (const std::string& directory : {std::string("forms"), std::string("./forms"), std::string(),
                                       std::string("/a:/b"), '/' + std::string(255, 'f')}) {
    queue.form_directories = {"/srv/forms", directory};
    EXPECT_EQ(faults_of(queue), Words({"rlxFormDirectories=" + directory}));
  }
}

TEST(FilterArguments, OfAllTogether) {
  QueueSettings queue = queue_of(4, 240, "D240!g");
  queue.filter_flags = "A";
  queue.form_directories = {"/f"};
  JobSettings job;
  job.form = "F";
  job.lines_per_page = 60;
  job.lines_per_inch = 8;
  job.characters_per_inch = 10;
  job.undefined_characters = UndefinedCharacters::ubar;
  job.extended_parameters = true;
  EXPECT_EQ(faults_of(queue), Words());
  EXPECT_EQ(filter_arguments(queue, job),
            Words({"-C", "-A", "-P", "-G", "D240!g", "-e", "240", "-L", "60", "-c", "10", "-l", "8",
                   "-r", "ubar", "-p", "/f", "-n", "F"}));
}

TEST(FilterArguments, EachFaultOfAQueueIsToldOf) {
  QueueSettings queue = queue_of(5, 600, "");
  queue.filter_flags = "x";
  queue.form_directories = {"a", "b"};
  EXPECT_EQ(faults_of(queue), Words({"rlxEmulationMode=5", "rlxResolution=600", "rlxFilterFlags=x",
                                     "rlxFormDirectories=a", "rlxFormDirectories=b"}));
}

}  // namespace
}  // namespace rlx::spooler
