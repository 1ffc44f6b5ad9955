#include "driver/start_up.h"

#include "fonts/g1_gaiji_file.h"

namespace rlx {

namespace {

/// Loads the form of -n, if there is one.
Status load_initial_form(Filter& filter) {
  if (filter.command_line.fcb_name == nullptr) {
    return ST_OK;
  }
  LoopState& loop = filter.loop;
  const Status status =
      fcb_load(filter.forms, filter.command_line.fcb_name, loop.initial_store, filter.directories);
  if (status == ST_OK) {
    top_of_form(filter.spacing, loop.initial_store, loop.pending_vertical_bytes);
    loop.fcb_active = true;
    loop.initial_fcb_exists = true;
  }
  return status;
}

Status set_up_fonts(Filter& filter) {
  filter.job.font_library_loaded = fal_load(filter.library) == ST_OK ? 1 : 0;
  // The range is checked here; which character lies in it will be for the classifier to say.
  G1GaijiRange range;
  if (g1gaiji_load(filter.messages, range) != ST_OK) {
    return ST_FAILED;
  }
  return fonts_open(filter.fonts, filter.command_line.font_variant,
                    filter.job.high_resolution_fonts, 1, filter.command_line.capability_g);
}

void flush_pages_of(void* writer) {
  flush_finished_pages(*static_cast<ByteWriter*>(writer));
}

}  // namespace

Status start_up(Filter& filter, int argc, char** argv) {
  Status status = parse_options({filter.messages, filter.command_line, filter.settings, filter.job,
                                 filter.printer, filter.directories},
                                argc, argv);
  if (status == ST_OK) {
    status = load_initial_form(filter);
  }
  if (status != ST_OK) {
    return status;
  }
  choose_resolution(filter.printer, filter.command_line);
  query_printer(filter.printer, filter.command_line);
  status = set_up_fonts(filter);
  if (status == ST_OK) {
    status = allocate_page_buffers(filter.page);
  }
  if (status == ST_OK) {
    pitch_sequences(filter.spacing);
    filter.source.raw.before_waiting = flush_pages_of;
    filter.source.raw.waiting_context = &filter.writer;
  }
  return status;
}

}  // namespace rlx
