#include "tools/dump_job.h"

#include <algorithm>

#include "rlxdump/base64.h"
#include "rlxdump/json_dump.h"
#include "rlxdump/page_list.h"
#include "rlxdump/text_dump.h"
#include "tools/read_job.h"

namespace rlx::testing {

namespace {

/// The bytes in base64 behind a key of a line; none without it.
std::string bytes_behind(std::string_view line, std::string_view key) {
  std::size_t begin = line.find(key);
  if (begin == std::string_view::npos) {
    return "";
  }
  begin += key.size();
  return dump::from_base64(line.substr(begin, line.find('"', begin) - begin)).value();
}

}  // namespace

std::string text_dump(std::string_view stream) {
  std::string text;
  dump::Output output(text);
  const dump::Painter painter(false);
  dump::TextDump dump(output, painter);
  reader::MemoryInput input(reader_bytes(stream));
  reader::read_contents(input, dump);
  dump.finish(input.offset());
  output.flush();
  return text;
}

std::string json_dump(std::string_view stream) {
  std::string text;
  dump::Output output(text);
  dump::JsonDump dump(output);
  reader::MemoryInput input(reader_bytes(stream));
  reader::read_contents(input, dump);
  dump.finish(input.offset());
  output.flush();
  return text;
}

std::string page_list(std::string_view stream) {
  std::string text;
  dump::Output output(text);
  const dump::Painter painter(false);
  dump::PageList pages(output, painter);
  reader::MemoryInput input(reader_bytes(stream));
  reader::read_contents(input, pages);
  pages.finish();
  output.flush();
  return text;
}

std::string rebuilt_from_json(std::string_view dump) {
  std::string stream;
  while (!dump.empty()) {
    const std::string_view line = dump.substr(0, dump.find('\n'));
    // Quotes in the texts of a job have a backslash in front, so only keys look so.
    stream += bytes_behind(line, R"("header":")") + bytes_behind(line, R"("bytes":")");
    dump.remove_prefix(std::min(line.size() + 1, dump.size()));
  }
  return stream;
}

}  // namespace rlx::testing
