// Whole jobs along both roads: as fast as it goes, and record by record. Output, messages and
// status must be the same, the output must consist of whole blocks or frames, and the reader of
// jobs must find nothing wrong with it.
//
// Input: 8 bytes of choices, then the job:
//   0     switches: framed, -q, -r ubar, -D, and the mode letter
//   1     the form of -n, -l and -c
//   2     -L, and what the printer can do (-G)
//   3, 4  printable bytes put before the job, so that it crosses the ends of blocks (padding_of)
//   5, 6  bytes of the job behind these that stand ready for the fast road before the next read
//   7     how the job is cut into frames

#include <array>
#include <vector>

#include "printer_output.h"
#include "reading.h"
#include "whole_job.h"

namespace rlx::fuzzing {
namespace {

constexpr std::size_t kMostPadding = 3 * 8192;
constexpr std::size_t kMostFramedPadding = 4200;
constexpr std::size_t kMostJob = 16384;

/// The directory with the forms that jobs can name.
const Scratch& forms() {
  static const Scratch scratch;
  static const bool written = [] {
    scratch.write("fcbe/six", "print 1 79200\nlpi 1200 66\n");
    scratch.write("fcbe/mixd", "print 3\nlpi 1200 20\nlpi 900 20\nlpi 2400 4\n");
    scratch.write("fcbe/shrt", "print 1 7200\nlpi 2400 3\n");
    scratch.write("fcbe/long", "print 240 144000\nlpi 600 240\n");
    scratch.write("fcbe/bad", "lpi 1 1\n");
    return true;
  }();
  require(written, "no forms");
  return scratch;
}

void add_switches(Job& job, std::uint8_t switches) {
  constexpr std::array<const char*, 16> kModes{"",   "",   "-A",    "-B",   "-C", "-E",
                                               "-N", "-P", "-Q",    "-R",   "-S", "-f",
                                               "-i", "-k", "-e400", "-e240"};
  constexpr std::array<const char*, 4> kFlags{"-d", "-q", "-rubar", "-D"};
  for (std::size_t i = 0; i < kFlags.size(); ++i) {
    if ((switches >> i & 1) != 0) {
      job.words.emplace_back(kFlags[i]);
    }
  }
  job.framed = (switches & 1) != 0;
  job.words.emplace_back(kModes[switches >> 4]);
}

void add_form(Job& job, std::uint8_t choice) {
  constexpr std::array<const char*, 6> kForms{"", "", "-nsix", "-nmixd", "-nshrt", "-nlong"};
  constexpr std::array<const char*, 6> kLines{"", "-l6", "-l4", "-l3", "-l8", "-l12"};
  constexpr std::array<const char*, 4> kPitches{"", "-c10", "-c7201", "-c1"};
  job.words.emplace_back(kForms[choice % 6]);
  job.words.emplace_back(kLines[choice / 6 % 6]);
  job.words.emplace_back(kPitches[choice / 36 % 4]);
}

void add_printer(Job& job, std::uint8_t choice) {
  constexpr std::array<const char*, 8> kPrinters{
      "",    "-GD240!D400!f1!F!g", "-GD400!f1",  "-Gf2!Jja_JP", "-GD240!sA3!L1",
      "-GF", "-Gg!D0!D600",        "-Gf1!D240!g"};
  if (choice % 16 != 0) {
    job.words.emplace_back("-L" + std::to_string(choice % 16));
  }
  job.words.emplace_back(kPrinters[choice >> 5]);
}

/// Most jobs have no padding, and one in frames, each of which is a write, has little.
std::size_t padding_of(std::size_t choice, bool framed) {
  if (choice < 0xc000) {
    return 0;
  }
  return (choice - 0xc000) * 2 % (framed ? kMostFramedPadding : kMostPadding);
}

Job make_job(Choices& choices) {
  Job job;
  job.words.push_back("-p" + forms().path());
  add_switches(job, choices.byte());
  add_form(job, choices.byte());
  add_printer(job, choices.byte());
  const std::size_t padding = padding_of(choices.word(), job.framed);
  job.cut = padding + choices.word();
  const std::uint8_t frames = choices.byte();
  job.bytes = std::string(padding, 'x') + std::string(choices.bytes(kMostJob));
  if (job.framed) {
    job.bytes = in_frames(job.bytes, frames);
  }
  job.words.erase(std::remove(job.words.begin(), job.words.end(), ""), job.words.end());
  return job;
}

void check_output(const Job& job, const Result& result) {
  require(result.status == 0 || result.status == 1 || result.status == -1, "status of the job");
  require(result.status != 0 || result.messages.empty() || result.passed_through,
          "a message without a failure");
  const Reading reading(result.output);
  if (result.passed_through) {
    return;
  }
  require(result.status != 0 || reading.faults == 0, "the reader finds a fault in the output");
  if (job.framed) {
    frames_of(result.output);
  } else {
    blocks_of(result.output);
  }
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, size);
  const Job job = make_job(choices);
  const Result reference = run(job, false);
  check_output(job, reference);
  const Result fast = run(job, true);
  require(fast.status == reference.status, "the roads end with another status");
  require(fast.messages == reference.messages, "the roads report something else");
  require(fast.output == reference.output, "the roads write something else");
  return 0;
}
