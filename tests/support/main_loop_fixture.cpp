#include "support/main_loop_fixture.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "driver/job_end.h"
#include "driver/loop/loop_state.h"
#include "driver/loop/routing.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/carried_settings.h"
#include "output/frame_writer.h"
#include "output/page_writer.h"
#include "support/descriptors.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx::testing {

const std::string kBlankCommand = condition_sequence(ConditionColumns{});
const std::string kFormNameCommand = "\x1bQ2;30 n  0      FORMNAME             ";

namespace {

std::string take_gathered() {
  const PieceSink sink = page_sink(the_filter().page);
  std::string text(sink.bytes, sink.bytes + *sink.length);
  *sink.length = 0;
  return text;
}

}  // namespace

MainLoopTest::MainLoopTest() {
  restart();
}

void MainLoopTest::restart() {
  reset_filter();
  the_filter().loop.conditions_pending = false;
}

void MainLoopTest::pend_conditions() {
  the_filter().loop.conditions_pending = true;
}

Routed MainLoopTest::route_again() {
  Routed routed;
  const std::string output = output_of([&] { routed.goes_on = route_record(the_filter().loop); });
  if (the_filter().loop.record.code == CMD_Q_BQ_SL) {
    routed.data = output;
    return routed;
  }
  const DataBlocks blocks = data_blocks(output);
  routed.pages = static_cast<int>(std::ranges::count(blocks.kinds, '2'));
  routed.data = blocks.data + take_gathered();
  return routed;
}

Routed MainLoopTest::route(std::uint32_t code, std::string_view bytes) {
  the_filter().loop.record = make_record(code, bytes);
  return route_again();
}

bool MainLoopTest::pass(std::uint32_t code, std::string_view bytes) {
  the_filter().loop.record = make_record(code, bytes);
  return route_record(the_filter().loop);
}

void MainLoopTest::use_form(const std::vector<std::uint32_t>& lines_per_inch, int top_line) {
  FcbTable& form = the_filter().loop.initial_store;
  form = FcbTable{};
  std::ranges::copy(lines_per_inch, form.lpi.begin());
  form.top_line = top_line;
  the_filter().loop.current_store = &form;
  the_filter().loop.initial_fcb_exists = true;
  the_filter().loop.fcb_active = true;
}

void MainLoopTest::hold_movement(std::string_view bytes) {
  the_filter().loop.pending_vertical_bytes.length = count_of(bytes);
  std::ranges::copy(bytes, the_filter().loop.pending_vertical_bytes.bytes.begin());
}

std::string MainLoopTest::held_movement() {
  const OutputBuffer& held = the_filter().loop.pending_vertical_bytes;
  return {held.bytes.begin(), held.bytes.begin() + held.length};
}

void MainLoopTest::hold_command(std::string_view bytes) {
  the_filter().loop.held_command.length = count_of(bytes);
  std::ranges::copy(bytes, the_filter().loop.held_command.bytes.begin());
}

void MainLoopTest::use_form_directory(std::string_view directory) {
  the_filter().directories = {};
  the_filter().directories.append(directory);
}

void MainLoopTest::open_frame(bool end_frame, std::string_view rest) {
  the_filter().command_line.framed_output = 1;
  the_filter().source.frames.frame_kind = end_frame ? kEndFrame : kCntFrame;
  the_filter().source.frames.last_data_kind = the_filter().source.frames.frame_kind;
  the_filter().source.frames.end_frame_read = end_frame;
  the_filter().source.frames.window = {raw(rest), raw(rest) + rest.size()};
}

std::string MainLoopTest::gathered_frame() {
  const std::uint8_t* data = the_filter().frame_writer.out_frame.data() + kFrameHeaderBytes;
  return {data, data + the_filter().frame_writer.out_len};
}

std::string take_kept_settings() {
  return output_of([] { out_kept_settings(the_filter().carried); });
}

std::string_view bytes_for(std::uint32_t code) {
  if (code == CMD_Q_NL_SP) {
    return kBlankCommand;
  }
  return code == CMD_Q_NL_SP2 ? std::string_view(kFormNameCommand) : "\x1bQ`";
}

bool is_one_of(std::uint32_t code, const std::vector<std::uint32_t>& codes) {
  return std::ranges::find(codes, code) != codes.end();
}

std::string job_pages(const JobResult& result) {
  std::string_view output = result.output;
  if (output.ends_with(kJobEnd)) {
    output.remove_suffix(kJobEnd.size());
  }
  std::string pages;
  for (const char byte : data_blocks(output).data) {
    pages += byte;
    if (byte == '\x0c') {
      pages += '|';
    }
  }
  return pages;
}

RedirectedDescriptor::RedirectedDescriptor(int descriptor, const char* path, int flags)
    : descriptor_(descriptor), saved_(dup(descriptor)) {
  const int file = open(path, flags);
  EXPECT_GE(file, 0) << path;
  dup2(file, descriptor);
  close(file);
}

RedirectedDescriptor::~RedirectedDescriptor() {
  dup2(saved_, descriptor_);
  close(saved_);
}

}  // namespace rlx::testing
