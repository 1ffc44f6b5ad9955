#include "support/main_loop_fixture.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "driver/job_end.h"
#include "driver/loop_state.h"
#include "driver/main_loop.h"
#include "driver/routing.h"
#include "driver/start_up.h"
#include "input/framed_transfer.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/carried_settings.h"
#include "output/page_writer.h"
#include "support/descriptors.h"
#include "support/page_data.h"
#include "support/record_builder.h"

namespace rlx::testing {

const std::string kBlankRecord = condition_sequence(ConditionColumns{});
const std::string kFormNameRecord = "\x1bQ2;30 n  0      FORMNAME             ";

namespace {

std::string take_gathered() {
  const PieceSink sink = page_sink();
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
  loop_state.conditions_pending = false;
}

void MainLoopTest::pend_conditions() {
  loop_state.conditions_pending = true;
}

Routed MainLoopTest::route_again() {
  Routed routed;
  const std::string output = output_of([&] { routed.goes_on = route_record(loop_state); });
  if (loop_state.record.code == CMD_Q_BQ_SL) {
    routed.data = output;
    return routed;
  }
  const DataBlocks blocks = data_blocks(output);
  routed.pages = static_cast<int>(std::ranges::count(blocks.kinds, '2'));
  routed.data = blocks.data + take_gathered();
  return routed;
}

Routed MainLoopTest::route(std::uint32_t code, std::string_view bytes) {
  loop_state.record = make_record(code, bytes);
  return route_again();
}

bool MainLoopTest::pass(std::uint32_t code, std::string_view bytes) {
  loop_state.record = make_record(code, bytes);
  return route_record(loop_state);
}

void MainLoopTest::use_form(const std::vector<std::uint32_t>& lines_per_inch, int top_line) {
  FcbTable& form = loop_state.initial_store;
  form = FcbTable{};
  std::ranges::copy(lines_per_inch, form.lpi.begin());
  form.top_line = top_line;
  loop_state.current_store = &form;
  loop_state.initial_fcb_exists = true;
  loop_state.fcb_active = true;
}

void MainLoopTest::hold_movement(std::string_view bytes) {
  loop_state.pending_vertical_bytes.length = count_of(bytes);
  std::ranges::copy(bytes, loop_state.pending_vertical_bytes.bytes.begin());
}

std::string MainLoopTest::held_movement() {
  const OutputBuffer& held = loop_state.pending_vertical_bytes;
  return {held.bytes.begin(), held.bytes.begin() + held.length};
}

void MainLoopTest::hold_command(std::string_view bytes) {
  loop_state.held_command.length = count_of(bytes);
  std::ranges::copy(bytes, loop_state.held_command.bytes.begin());
}

void MainLoopTest::use_form_directory(std::string_view directory) {
  std::ranges::copy(directory, resource_directories.entries[0].begin());
  resource_directories.count = 1;
}

void MainLoopTest::open_frame(bool end_frame, std::string_view rest) {
  job_settings.framed_output = 1;
  framed_transfer.frame_kind = end_frame ? kEndFrame : kCntFrame;
  framed_transfer.last_data_kind = framed_transfer.frame_kind;
  framed_transfer.end_frame_read = end_frame;
  framed_transfer.window = {raw(rest), raw(rest) + rest.size()};
}

std::string MainLoopTest::gathered_frame() {
  const std::uint8_t* data = framed_transfer.out_frame.data() + kFrameHeaderBytes;
  return {data, data + framed_transfer.out_len};
}

std::string take_kept_settings() {
  return output_of([] { EXPECT_EQ(out_kept_settings(), 0); });
}

std::string_view bytes_for(std::uint32_t code) {
  if (code == CMD_Q_NL_SP) {
    return kBlankRecord;
  }
  return code == CMD_Q_NL_SP2 ? std::string_view(kFormNameRecord) : "\x1bQ`";
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
