#include "rlxdump/text_dump.h"

#include <algorithm>

#include "rlx_reader/job_parameters.h"
#include "rlx_reader/sequence.h"
#include "rlxdump/described_token.h"
#include "rlxdump/shown_text.h"

namespace rlx::dump {

namespace {

using reader::Bytes;

constexpr std::size_t kOffsetWidth = 10;
constexpr std::size_t kNameWidth = 20;
constexpr std::size_t kSpelledWidth = 26;
constexpr std::size_t kCountWidth = 10;
constexpr std::size_t kSeparatorWidth = 78;
constexpr std::size_t kMostShown = 32;
/// Characters of a text in one line.
constexpr std::size_t kMostText = 132;

std::string counted(std::uint64_t number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string_view text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

void TextDump::line(std::uint64_t offset, std::string_view text) {
  std::string whole = painter_.paint(Look::faint, right(std::to_string(offset), kOffsetWidth));
  whole.reserve(whole.size() + text.size() + 3);
  whole += "  ";
  whole += text;
  whole.erase(whole.find_last_not_of(' ') + 1);
  whole += '\n';
  output_.put(whole);
}

void TextDump::piece(std::uint64_t offset, std::string_view name, std::string_view spelled,
                     std::string_view meaning) {
  const std::size_t width = meaning.empty() ? 0 : kSpelledWidth;
  std::string text = "  ";
  text.reserve(2 * kSpelledWidth + kNameWidth + spelled.size() + meaning.size());
  text += painter_.paint(Look::faint, left(name, kNameWidth));
  text += "  ";
  text += spelled;
  text.append(width - std::min(width, spelled.size()), ' ');
  if (!meaning.empty()) {
    text += "  ";
    text += painter_.paint(Look::good, meaning);
  }
  line(offset, text);
}

void TextDump::section(const reader::Section& section) {
  const std::string title = "== " + title_of(section) + " ";
  const std::string rule(kSeparatorWidth - std::min(kSeparatorWidth, title.size()), '=');
  output_.put(painter_.paint(Look::title, title + rule) + '\n');
}

void TextDump::begin_block(const reader::Block& block) {
  ++blocks_;
  const std::string verdict = block.count_is_right ? "right" : "WRONG";
  line(block.offset, painter_.paint(Look::bold, left(name_of(block.use), kNameWidth + 2)) +
                         "  kind " + block.header.kind + "  count " +
                         right(std::to_string(block.header.count), kCountWidth) + " " +
                         painter_.paint(block.count_is_right ? Look::plain : Look::bad, verdict) +
                         "  payload " + right(std::to_string(block.payload), kCountWidth));
}

void TextDump::frame(const reader::Frame& frame) {
  ++frames_;
  const std::string name = frame.last ? "END frame" : "CNT frame";
  line(frame.offset, painter_.paint(Look::bold, left(name, kNameWidth + 2)) + "  count " +
                         std::to_string(frame.count));
}

void TextDump::pass_through(std::uint64_t offset, Bytes sequence) {
  line(offset, painter_.paint(Look::bold, left("pass through", kNameWidth + 2)) + "  " +
                   reader::spell(sequence));
}

void TextDump::outside(std::uint64_t offset, Bytes part) {
  const bool all = part.size() <= kMostShown;
  line(offset, painter_.paint(Look::bad, left("outside", kNameWidth + 2)) + "  " +
                   hexadecimal(all ? part : part.first(kMostShown)) +
                   (all ? "" : " ...  " + counted(part.size(), "byte")));
}

void TextDump::job_parameter(std::uint64_t offset, Bytes line) {
  const bool ended = line.back() == '\n';
  const Bytes content = ended ? line.first(line.size() - 1) : line;
  const reader::JobParameter parameter = reader::describe_job_parameter(text_of(content));
  piece(offset, parameter.name.empty() ? "job parameter" : parameter.name, shown(content),
        ended ? parameter.meaning : "no line end");
}

/// A long text takes several lines.
void TextDump::token(reader::Place /*place*/, const reader::Token& token) {
  const bool text = token.kind == reader::TokenKind::text;
  const std::size_t most = text ? kMostText : token.bytes.size();
  for (std::size_t at = 0; at < token.bytes.size(); at += most) {
    const Bytes part = token.bytes.subspan(at, std::min(most, token.bytes.size() - at));
    const DescribedToken described =
        describe_token({token.kind, token.offset + at, part, token.glyph});
    piece(token.offset + at, at == 0 ? described.name : "", described.spelled, described.meaning);
  }
}

void TextDump::fault(const reader::Fault& fault) {
  ++faults_;
  line(fault.offset, painter_.paint(Look::bad, "!! " + fault.what));
}

void TextDump::finish(std::uint64_t bytes) {
  const std::string units =
      frames_ != 0 ? counted(frames_, "frame") +
                         (blocks_ == 0 ? std::string() : ", " + counted(blocks_, "block"))
                   : counted(blocks_, "block");
  const std::string faults = faults_ == 0 ? "no faults" : counted(faults_, "fault");
  output_.put(painter_.paint(Look::title, std::string(kSeparatorWidth, '=')) + '\n');
  output_.put(counted(pages_, "page") + ", " + units + ", " + counted(bytes, "byte") + ", " +
              painter_.paint(faults_ == 0 ? Look::good : Look::bad, faults) + '\n');
}

}  // namespace rlx::dump
