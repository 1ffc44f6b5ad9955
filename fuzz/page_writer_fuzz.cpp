// The page writer: pieces and settings in, and the blocks that come out against a plain model.
//
// Input: a byte of switches, 60 bytes of a print-condition command, then operations. An operation
// is a byte that says what, and a word that says how many bytes.

#include <map>

#include "driver/loop/print_condition_command.h"
#include "fresh_filter.h"
#include "printer_output.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

constexpr std::size_t kRoom = 8192;
constexpr std::size_t kSlotRoom = 19;

/// The page as it should become: all blocks with page data and carried settings.
class Model {
 public:
  void put(std::string_view piece) {
    if (piece.empty()) {
      return;
    }
    if (piece.back() == '\f') {
      gathered_ += piece;
      out_data_block();
      out_settings();
      begin_page();
      return;
    }
    if (gathered_.size() + piece.size() > kRoom) {
      out_data_block();
      out_settings();
      continued_ = true;
      gathered_.clear();
    }
    gathered_ += piece;
  }

  void keep(std::uint32_t command, std::string_view sequence) {
    if (command == CMD_Q_R_EX) {
      general_ += general_.size() + sequence.size() <= kRoom ? sequence : "";
    } else if (sequence.size() <= kSlotRoom) {
      slots_[command == CMD_Q_YL_SP ? 6 : 12] = sequence;
    }
  }

  void end_job(bool content) {
    if (!gathered_.empty() && content) {
      out_data_block();
    }
    if (content && started_) {
      blocks_.push_back({'0', false, "\f"});
    }
    if (started_) {
      blocks_.push_back({'0', false, std::string("\x1b\x63\x1b\x7f\x00\x00\x01\x00", 8)});
    }
    started_ = false;
    begin_page();
  }

  const std::vector<Block>& blocks() const { return blocks_; }

 private:
  void begin_page() {
    gathered_.clear();
    continued_ = false;
  }

  void out_data_block() {
    blocks_.push_back({continued_ ? '0' : '2', false, gathered_});
    started_ = true;
  }

  void out_settings() {
    std::string settings = general_;
    for (const auto& [slot, sequence] : slots_) {
      settings += sequence;
    }
    if (!settings.empty()) {
      blocks_.push_back({'6', false, settings});
    }
    general_.clear();
    slots_.clear();
  }

  std::string gathered_;
  bool continued_ = false;
  bool started_ = false;
  std::string general_;
  std::map<int, std::string> slots_;
  std::vector<Block> blocks_;
};

/// Bytes without FF that show where they stand.
std::string pattern(std::size_t count, std::uint8_t first) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<char>(0x20 + (first + i) % 0xe0);
  }
  return bytes;
}

std::int32_t count_of(std::string_view bytes) {
  return static_cast<std::int32_t>(bytes.size());
}

void put(Model& model, const std::string& piece, bool through_sink) {
  model.put(piece);
  if (through_sink && !piece.empty() && piece.back() != '\f') {
    const PieceSink sink = page_sink(the_filter().page);
    sink.make_room(count_of(piece));
    sink.append(bytes_of(piece));
  } else {
    const ExactBytes bytes(piece);
    out_page_data(the_filter().page, {bytes.begin(), piece.size()});
  }
}

/// Pieces of one byte each.
void put_bytes(Model& model, const std::string& bytes) {
  for (const char byte : bytes) {
    model.put(std::string_view(&byte, 1));
  }
  page_sink(the_filter().page).append_bytes(bytes_of(bytes));
}

void keep(Model& model, std::uint8_t choice, const std::string& sequence) {
  constexpr std::uint32_t kCommands[] = {CMD_Q_R_EX, CMD_Q_YL_SP, CMD_FS_PERCENT};
  const std::uint32_t command = kCommands[choice % 3];
  model.keep(command, sequence);
  const ExactBytes bytes(sequence);
  keep_setting(the_filter().carried, command, {bytes.begin(), sequence.size()});
}

void end_job(Model& model) {
  model.end_job(the_filter().job.page_has_content != 0);
  end_page_data(the_filter().page);
  require(the_filter().job.page_has_content == 0, "content behind the job end");
}

void take_operation(Model& model, Choices& choices) {
  const std::uint8_t what = choices.byte();
  const std::size_t count = choices.word();
  switch (what % 8) {
    case 0:
      put(model, pattern(count % (kRoom + 1), what), false);
      break;
    case 1:
      put(model, pattern(count % (2 * kRoom), what) + '\f', false);
      break;
    case 2:
      put(model, std::string(choices.bytes(count % 64)), false);
      break;
    case 3:
      put(model, pattern(count % (kRoom + 1), what), true);
      break;
    case 4:
      put_bytes(model, pattern(count % (2 * kRoom), what));
      break;
    case 5:
      keep(model, what / 8, pattern(count % (kRoom + 2), what));
      break;
    case 6:
      keep(model, what / 8, pattern(count % (kSlotRoom + 2), what));
      break;
    default:
      if (what >= 0x80) {
        end_job(model);
      } else {
        the_filter().job.page_has_content = 1;
      }
  }
}

/// Conditions and settings that the job header sends.
void choose_conditions(Choices& choices) {
  const std::uint8_t switches = choices.byte();
  the_filter().command_line.header_selector = (switches & 1) != 0 ? 8 : 1;
  the_filter().command_line.resolution = (switches & 2) != 0 ? 400 : 240;
  the_filter().job.form_length_tenths = switches >> 2;
  static CommandRecord record;
  std::string bytes = "\x1bQ1;99 n..";
  bytes += choices.bytes(60);
  bytes += "P2          B        00720 9999900072";
  std::copy(bytes.begin(), bytes.end(), record.bytes.begin());
  record.length = count_of(bytes);
  const Messages messages;
  require(
      parse_print_condition_command(the_filter().messages, record, the_filter().conditions) == 0,
      "status of the print conditions");
}

/// The blocks of an output that the model speaks of. No header block stands behind the first data
/// block of a page.
std::vector<Block> data_blocks(std::string_view output) {
  std::vector<Block> blocks;
  for (Block& block : blocks_of(output)) {
    const bool of_header = block.is_parameter_text || block.kind >= '7';
    if (!of_header) {
      blocks.push_back(std::move(block));
    }
  }
  return blocks;
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, std::min<std::size_t>(size, 400));
  reset_filter();
  standard_output().set("");
  choose_conditions(choices);
  Model model;
  while (!choices.empty()) {
    take_operation(model, choices);
  }
  end_job(model);
  rlx::flush_output(the_filter().writer);
  require(data_blocks(standard_output().content()) == model.blocks(), "blocks");
  return 0;
}
