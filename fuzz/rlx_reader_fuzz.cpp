// The reader of jobs, the tokens of page data, and the dump as JSON: every byte of any stream is
// handed on once, in its place, and the stream can be rebuilt.
//
// Input: a byte that says how large the portions of page data are, then a stream of blocks or
// frames.

#include "reading.h"
#include "rlx_reader/job_contents.h"
#include "rlx_reader/page_data.h"
#include "rlxdump/base64.h"
#include "rlxdump/json_dump.h"
#include "rlxdump/text_dump.h"

namespace rlx::fuzzing {
namespace {

/// Tokens in one string: kind and bytes of each; the portions of what may come in portions joined.
class Tokens : public reader::TokenVisitor {
 public:
  void token(const reader::Token& token) override {
    using reader::TokenKind;
    const bool portions = token.kind == TokenKind::text || token.kind == TokenKind::double_text ||
                          token.kind == TokenKind::invalid || token.kind == TokenKind::data;
    require(token.offset == next_ && !token.bytes.empty(), "the place of a token");
    require((token.kind == TokenKind::glyph) == (token.glyph != nullptr), "a glyph");
    if (!portions || token.kind != last_) {
      all_ += "\n";
      all_ += static_cast<char>('a' + static_cast<int>(token.kind));
    }
    last_ = token.kind;
    all_ += text_of(token.bytes.data(), token.bytes.size());
    next_ += token.bytes.size();
  }

  const std::string& all() const { return all_; }
  std::uint64_t next() const { return next_; }

 private:
  std::string all_;
  std::uint64_t next_ = 0;
  reader::TokenKind last_ = reader::TokenKind::unknown;
};

std::string tokens_of(std::string_view data, std::size_t portion) {
  Tokens tokens;
  reader::PageDataReader reader(tokens);
  for (std::size_t at = 0; at < data.size(); at += portion) {
    const std::string_view part = data.substr(at, portion);
    const ExactBytes exact(part);
    reader.feed({exact.begin(), part.size()}, at);
  }
  reader.finish();
  require(reader.is_whole() && tokens.next() == data.size(), "bytes without a token");
  return tokens.all();
}

/// The bytes in base64 behind a key of a line; none without it.
std::string bytes_behind(std::string_view line, std::string_view key) {
  const std::size_t found = line.find(key);
  if (found == std::string_view::npos) {
    return "";
  }
  const std::string_view rest = line.substr(found + key.size());
  const auto bytes = dump::from_base64(rest.substr(0, rest.find('"')));
  require(bytes.has_value(), "base64");
  return *bytes;
}

/// The stream that a JSON dump tells of.
std::string rebuilt_from_json(std::string_view dump) {
  std::string stream;
  while (!dump.empty()) {
    const std::string_view line = dump.substr(0, dump.find('\n'));
    stream += bytes_behind(line, R"("header":")") + bytes_behind(line, R"("bytes":")");
    dump.remove_prefix(std::min(dump.size(), line.size() + 1));
  }
  return stream;
}

/// What a dump writes about a stream.
template <typename Dump, typename... Arguments>
std::string dump_of(std::string_view stream, const Arguments&... arguments) {
  std::string text;
  dump::Output output(text);
  Dump dump(output, arguments...);
  reader::MemoryInput input({raw(stream), stream.size()});
  reader::read_contents(input, dump);
  dump.finish(input.offset());
  output.flush();
  return text;
}

/// A stream that is dumped as JSON can be rebuilt.
void require_rebuilt(std::string_view stream) {
  require(rebuilt_from_json(dump_of<dump::JsonDump>(stream)) == stream,
          "the stream that was rebuilt is another one");
}

/// What a terminal would take for more than text.
bool is_plain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<std::uint8_t>(c);
    return byte == '\n' || (byte >= 0x20 && byte != 0x7f);
  });
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, std::min<std::size_t>(size, 200000));
  const std::size_t portion = 1 + choices.byte();
  const ExactBytes exact(choices.rest());
  const std::string_view stream =
      text_of(exact.begin(), static_cast<std::size_t>(exact.end() - exact.begin()));
  const Reading reading(stream);
  require(tokens_of(stream, portion) == tokens_of(stream, stream.size() + 1),
          "tokens depend on the portions");
  require_rebuilt(stream);
  require(is_plain(dump_of<rlx::dump::TextDump>(stream, rlx::dump::Painter(false))),
          "the dump holds more than text");
  return 0;
}
