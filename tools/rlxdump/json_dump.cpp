#include "rlxdump/json_dump.h"

#include <nlohmann/json.hpp>

#include "rlx_reader/frame_reader.h"
#include "rlx_reader/job_parameters.h"
#include "rlx_reader/sequence.h"
#include "rlxdump/base64.h"
#include "rlxdump/described_token.h"

namespace rlx::dump {

namespace {

using nlohmann::ordered_json;
using reader::Bytes;
using reader::TokenKind;

std::string text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Bytes bytes_of(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

ordered_json object(const char* type, std::uint64_t offset) {
  return {{"type", type}, {"offset", offset}};
}

/// Text that is no UTF-8 has U+FFFD for what is none; its bytes stand in "bytes".
void put(Output& output, const ordered_json& value) {
  output.put(value.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + '\n');
}

ordered_json parameters_of(const reader::SequenceInfo& info) {
  ordered_json parameters = ordered_json::object();
  for (const reader::Parameter& parameter : info.parameters) {
    ordered_json value{{"text", parameter.value}};
    if (parameter.number) {
      value["number"] = *parameter.number;
    }
    parameters[parameter.name] = std::move(value);
  }
  return parameters;
}

void add_glyph(ordered_json& piece, const reader::Glyph& glyph) {
  piece["code"] = text_of(glyph.code);
  piece["rows"] = glyph.rows;
  piece["dots"] = base64(glyph.dots);
}

const char* name_of(reader::Place place) {
  switch (place) {
    case reader::Place::page_data:
      return "page data";
    case reader::Place::carried:
      return "carried settings";
    default:
      return "header";
  }
}

}  // namespace

void JsonDump::section(const reader::Section& section) {
  section_ = title_of(section);
}

void JsonDump::begin_block(const reader::Block& block) {
  ++blocks_;
  ordered_json value = object("block", block.offset);
  value["section"] = section_;
  value["use"] = name_of(block.use);
  value["kind"] = std::string(1, block.header.kind);
  value["count"] = block.header.count;
  value["payload"] = block.payload;
  value["count_is_right"] = block.count_is_right;
  value["header"] = base64(bytes_of(header_bytes(block.header)));
  put(output_, value);
}

void JsonDump::frame(const reader::Frame& frame) {
  ++frames_;
  ordered_json value = object("frame", frame.offset);
  value["section"] = section_;
  value["kind"] = frame.last ? "END" : "CNT";
  value["count"] = frame.count;
  value["header"] = base64(bytes_of(header_bytes(frame)));
  put(output_, value);
}

void JsonDump::bytes(std::uint64_t offset, Bytes part) {
  ordered_json value = object("bytes", offset);
  value["length"] = part.size();
  value["bytes"] = base64(part);
  put(output_, value);
}

void JsonDump::pass_through(std::uint64_t offset, Bytes sequence) {
  ordered_json value = object("pass through", offset);
  value["spelled"] = reader::spell(sequence);
  value["bytes"] = base64(sequence);
  put(output_, value);
}

void JsonDump::outside(std::uint64_t offset, Bytes part) {
  ordered_json value = object("outside", offset);
  value["length"] = part.size();
  value["bytes"] = base64(part);
  put(output_, value);
}

void JsonDump::job_parameter(std::uint64_t offset, Bytes line) {
  const Bytes content = line.back() == '\n' ? line.first(line.size() - 1) : line;
  const reader::JobParameter parameter = reader::describe_job_parameter(text_of(content));
  ordered_json value = object("job parameter", offset);
  value["key"] = parameter.key;
  value["value"] = parameter.value;
  value["name"] = parameter.name;
  if (!parameter.meaning.empty()) {
    value["meaning"] = parameter.meaning;
  }
  put(output_, value);
}

void JsonDump::token(reader::Place place, const reader::Token& token) {
  ordered_json value = object("piece", token.offset);
  value["place"] = name_of(place);
  value["kind"] = name_of(token.kind);
  value["length"] = token.bytes.size();
  switch (token.kind) {
    case TokenKind::text:
    case TokenKind::double_text:
      value["text"] = text_of(token.bytes);
      break;
    case TokenKind::control:
      value["name"] = name_of_control(token.bytes);
      break;
    case TokenKind::sequence: {
      const reader::SequenceInfo info = reader::describe_sequence(token.bytes);
      value["name"] = info.name;
      value["spelled"] = info.spelled;
      value["parameters"] = parameters_of(info);
      break;
    }
    case TokenKind::glyph:
      add_glyph(value, *token.glyph);
      break;
    default:
      break;
  }
  put(output_, value);
}

void JsonDump::fault(const reader::Fault& fault) {
  ++faults_;
  ordered_json value = object("fault", fault.offset);
  value["what"] = fault.what;
  put(output_, value);
}

void JsonDump::finish(std::uint64_t bytes) {
  put(output_, {{"type", "summary"},
                {"pages", pages_},
                {"blocks", blocks_},
                {"frames", frames_},
                {"length", bytes},
                {"faults", faults_}});
}

}  // namespace rlx::dump
