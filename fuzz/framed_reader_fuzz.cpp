// The transfer protocol: the frame reader against a plain model of it and, for input that does not
// end the process, the byte source with its echoes and the writer of output frames.
//
// Input: a word that says how many bytes stand ready before the first read, the framed job.

#include "fresh_filter.h"
#include "input/byte_source.h"
#include "printer_output.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

/// What a framed input consists of.
struct FramedInput {
  std::vector<Frame> frames;
  Status final_status = ST_OK;
};

/// Takes one frame off the front. @return its status when it is malformed or there is none.
Status take_frame(std::string_view& input, std::vector<Frame>& frames) {
  if (!frames.empty() && frames.back().is_end) {
    return ST_EOF;
  }
  if (input.empty()) {
    return frames.empty() ? ST_EOF : ST_FRAME_NOEND;
  }
  std::size_t count = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    if (i == input.size()) {
      return ST_FRAME_SHORT;
    }
    if (input[i] < '0' || input[i] > '9') {
      return ST_FRAME_BAD;
    }
    count = count * 10 + static_cast<std::size_t>(input[i] - '0');
  }
  if (input.size() < 16) {
    return ST_FRAME_SHORT;
  }
  const std::string_view marker = input.substr(4, 12);
  const bool is_end = marker == std::string_view("END_PRN_DAT\0", 12);
  if (!is_end && marker != std::string_view("CNT_PRN_DAT\0", 12)) {
    return ST_FRAME_BAD;
  }
  if (input.size() - 16 < count) {
    return ST_FRAME_SHORT;
  }
  frames.push_back({is_end, std::string(input.substr(16, count))});
  input.remove_prefix(16 + count);
  return ST_OK;
}

FramedInput take_apart(std::string_view input) {
  FramedInput parts;
  while (parts.final_status == ST_OK) {
    parts.final_status = take_frame(input, parts.frames);
  }
  return parts;
}

void start() {
  restart_input();
  the_filter().command_line.framed_output = 1;
  standard_output().set("");
}

void expect_byte(char expected) {
  std::uint8_t byte = 0;
  require(prtclin(the_filter().source.frames, &byte) == ST_OK &&
              byte == static_cast<std::uint8_t>(expected),
          "frame data");
}

void read_frames(const FramedInput& parts, std::string_view job, std::size_t cut) {
  start();
  const JobInput input(job, cut);
  std::uint8_t byte = 0;
  for (const Frame& frame : parts.frames) {
    if (frame.data.empty()) {
      require(prtclin(the_filter().source.frames, &byte) == ST_FRAME_EMPTY, "an empty frame");
    }
    for (std::size_t i = 0; i < frame.data.size(); ++i) {
      expect_byte(frame.data[i]);
      require(frame_left(the_filter().source.frames) == frame.data.size() - i - 1,
              "what is left of a frame");
    }
    require(the_filter().source.frames.frame_kind == (frame.is_end ? kEndFrame : kCntFrame),
            "frame kind");
  }
  require(prtclin(the_filter().source.frames, &byte) == parts.final_status,
          "the status behind the last frame");
  require(standard_output().content().empty(), "output of the frame reader");
}

/// Frames as they leave when every byte is a piece of its own.
std::vector<Frame> copied_frames(const FramedInput& parts) {
  std::vector<Frame> frames;
  for (const Frame& frame : parts.frames) {
    std::string_view data = frame.data;
    while (data.size() > 4096) {
      frames.push_back({false, std::string(take_bytes(data, 4096))});
    }
    frames.push_back({frame.is_end, std::string(data)});
  }
  return frames;
}

/// Copies a whole job, byte by byte.
void copy_job(const FramedInput& parts, std::string_view job, std::size_t cut) {
  start();
  const JobInput input(job, cut);
  std::uint8_t byte = 0;
  Status status = ST_OK;
  while ((status = zqgetc(the_filter().source, 0, &byte)) == ST_OK) {
    directout(the_filter().frame_writer, Bytes(&byte, 1));
  }
  require(status == ST_EOF, "the end of a framed job");
  require(the_filter().frame_writer.out_len == 0, "output is held at the end");
  require(frames_of(standard_output().content()) == copied_frames(parts), "copied frames");
}

/// Reads a whole job as commands and writes their bytes.
void copy_commands(std::string_view job, std::size_t cut) {
  start();
  const JobInput input(job, cut);
  static CommandRecord record;
  std::string data;
  Status status = ST_OK;
  while ((status = zqclass(the_filter().classifier, &record)) == ST_OK || status == ST_CUT) {
    require(record.length >= 0 && record.length <= kRecordCapacity, "length out of range");
    data += text_of(record.bytes.data(), static_cast<std::size_t>(record.length));
    directout(the_filter().frame_writer, record.content());
  }
  require(status == ST_EOF, "the end of a framed job");
  require(out_end_frame(the_filter().frame_writer) == 0, "status of the end frame");
  std::string written;
  for (const Frame& frame : frames_of(standard_output().content())) {
    written += frame.data;
  }
  require(written == data, "the data of the frames");
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, std::min<std::size_t>(size, 60000));
  const std::size_t ready = choices.word();
  const std::string_view job = choices.rest();
  const std::size_t cut = ready == 0 ? job.size() : ready;
  const FramedInput parts = take_apart(job);
  read_frames(parts, job, cut);
  // Anything else ends the process from inside the byte source.
  if (parts.final_status == rlx::ST_EOF) {
    copy_job(parts, job, cut);
    copy_commands(job, cut);
  }
  rlx::testing::the_filter().command_line.framed_output = 0;
  return 0;
}
