// The reader of the environment file, against a plain model of it.
//
// Input: the file.

#include "fresh_filter.h"
#include "support/environment_file.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

/// What the file says.
struct Model {
  bool common_seen = false;
  bool in_common = false;
  int halfinch = 0;
  std::string line;
  bool in_comment = false;
};

/// Takes one piece off the front: up to a line end, 511 bytes at most, and of that what stands
/// before a NUL.
std::string_view take_piece(std::string_view& file) {
  std::string_view piece = file.substr(0, 511);
  piece = piece.substr(0, piece.find('\n') == piece.npos ? piece.npos : piece.find('\n') + 1);
  file.remove_prefix(piece.size());
  return piece.substr(0, piece.find('\0'));
}

void add_piece(Model& model, std::string_view piece) {
  for (const char byte : piece) {
    model.in_comment = model.in_comment || byte == '#';
    if (!model.in_comment && byte > ' ' && byte < '\x7f') {
      model.line += byte;
    }
  }
}

void take_setting(Model& model) {
  const std::size_t colon = model.line.find(':');
  if (colon == std::string::npos || colon + 1 == model.line.size()) {
    return;
  }
  if (model.line.substr(0, colon) == "FCBPRINT") {
    model.halfinch = model.line[colon + 1] == '2' ? 1 : 0;
  }
}

void end_line(Model& model) {
  if (!model.line.empty() && model.line.size() <= 512) {
    if (model.line.front() == '*') {
      model.in_common = model.line.substr(0, 7) == "*COMMON";
      model.common_seen = model.common_seen || model.in_common;
    } else if (model.in_common) {
      take_setting(model);
    }
  }
  model.line.clear();
  model.in_comment = false;
}

Model read_model(std::string_view file) {
  Model model;
  while (!file.empty()) {
    const std::string_view piece = take_piece(file);
    add_piece(model, piece);
    if (piece.ends_with('\n')) {
      end_line(model);
    }
  }
  end_line(model);
  return model;
}

void check_file(std::string_view bytes, const MemoryFile& file) {
  file.set(bytes);
  const Model model = read_model(bytes);
  the_filter().environment = {};
  require(tqdxgetenv(the_filter().environment) == (model.common_seen ? 0 : -2),
          "status of the environment file");
  require(the_filter().environment.fcbprint_halfinch == model.halfinch, "FCBPRINT");
  require(tqdxgetenv(the_filter().environment) == 0, "the environment file was read again");
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  static const MemoryFile file;
  static const Scratch scratch;
  static const bool linked = (scratch.link("sandbox/etc/opt/PXLQwrmtk/wrmtk/wrmtkenv", file), true);
  require(linked, "no place for the environment file");
  const InsideScratch inside(scratch);
  check_file(text_of(data, size), file);
  return 0;
}
