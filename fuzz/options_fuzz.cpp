// Options and capabilities, the settings that come of them, and the print conditions that these
// bring.
//
// Input: the arguments, ended by NUL each.

#include <vector>

#include "driver/options/options.h"
#include "fresh_filter.h"
#include "output/print_conditions_out.h"
#include "printer_output.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

constexpr std::size_t kMostArguments = 40;

/// A command line whose every argument has a place of its own size.
class CommandLine {
 public:
  explicit CommandLine(std::string_view text) {
    add("filter");
    while (!text.empty() && places_.size() < kMostArguments) {
      const std::string_view argument = text.substr(0, text.find('\0'));
      text.remove_prefix(std::min(argument.size() + 1, text.size()));
      add(argument);
    }
    for (const auto& place : places_) {
      argv_.push_back(place.get());
    }
    argv_.push_back(nullptr);
  }

  int count() const { return static_cast<int>(places_.size()); }
  char** arguments() { return argv_.data(); }

 private:
  void add(std::string_view argument) {
    places_.push_back(std::make_unique<char[]>(argument.size() + 1));
    std::copy(argument.begin(), argument.end(), places_.back().get());
  }

  std::vector<std::unique_ptr<char[]>> places_;
  std::vector<char*> argv_;
};

template <std::size_t Size>
bool has_end(const std::array<char, Size>& text) {
  return std::find(text.begin(), text.end(), '\0') != text.end();
}

void check_directories() {
  const ResourceDirectories& directories = the_filter().directories;
  require(directories.count >= 1 && directories.count <= kMaxSearchedDirectories + 1,
          "number of directories");
  for (std::size_t i = 0; i < directories.count; ++i) {
    require(has_end(directories.entries[i]), "a directory without an end");
    require(directories.entries[i].front() != '\0', "an empty directory");
  }
}

void check_settings() {
  const rlx::CommandLine& settings = the_filter().command_line;
  require(settings.emulation_mode >= 1 && settings.emulation_mode <= 7, "emulation mode");
  require(settings.stream_variant >= 2 && settings.stream_variant <= 4, "stream variant");
  require(settings.character_pitch >= 0 && settings.character_pitch <= 7200, "character pitch");
  require(has_end(settings.f_text) && has_end(settings.j_text), "a text without an end");
  require(settings.printer_class == kPrinterClassF0 || settings.printer_class == kPrinterClassF1 ||
              settings.printer_class == kPrinterClassF2,
          "printer class");
  require(settings.fcb_name == nullptr || std::strlen(settings.fcb_name) <= kMaxNameBytes,
          "form name");
  const auto resolution = static_cast<std::uint32_t>(settings.resolution);
  const std::uint32_t first = printer_has(the_filter().printer, kHasResolution, 0);
  require(first != 0 ? printer_has(the_filter().printer, kHasResolution, resolution) == 1
                     : resolution == 240 || resolution == 400,
          "resolution");
  require(printer_resolution(the_filter().printer, nullptr) == first, "first resolution");
}

void check_capabilities(unsigned value) {
  for (int kind = -1; kind <= 11; ++kind) {
    const std::uint32_t any = printer_has(the_filter().printer, kind, 0);
    require(kind == kHasResolution || any <= 1, "answer of a capability");
    require(printer_has(the_filter().printer, kind, value) <= 1 || value == 0,
            "answer of a capability");
  }
  static_cast<void>(printer_resolution(the_filter().printer, std::to_string(value).c_str()));
}

/// Sends the print conditions of every command as a job would.
void check_conditions() {
  pitch_sequences(the_filter().spacing);
  for (const std::uint32_t command : std::initializer_list<std::uint32_t>{
           0, CMD_Q_A_EX, CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_NL_SP, CMD_Q_NL_SP2,
           CMD_SECOND_VARIANT_492, CMD_Q_OL_SP, 1}) {
    std::int32_t index = 0;
    std::int32_t unit = 0;
    std::int32_t written = 0;
    emit_print_conditions(the_filter().conditions_output, command, 0, 0, &index, &unit, &written,
                          the_filter().settings);
    require(index >= 0 && index <= 4, "spacing index");
  }
  the_filter().job.page_has_content = 1;
  end_page_data(the_filter().page);
  flush_output(the_filter().writer);
  const std::string output = standard_output().content();
  if (the_filter().command_line.framed_output != 0) {
    frames_of(output);
  } else {
    blocks_of(output);
  }
}

void check_options(std::string_view text) {
  reset_filter();
  CommandLine line(text);
  std::string messages;
  Status status = ST_OK;
  {
    const Messages caught;
    status = parse_options(option_targets(), line.count(), line.arguments());
    messages = caught.text();
  }
  require(status == 0 || status == 1, "status of the options");
  require((status == 0) == messages.empty(), "messages of the options");
  if (status == 0) {
    check_directories();
    choose_resolution(the_filter().printer, the_filter().command_line);
    query_printer(the_filter().printer, the_filter().command_line);
    check_settings();
    check_capabilities(static_cast<unsigned>(text.size() * 0x1011));
    standard_output().set("");
    check_conditions();
  }
  // The settings point into the command line.
  restart_settings();
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  rlx::fuzzing::check_options(rlx::fuzzing::text_of(data, size));
  return 0;
}
