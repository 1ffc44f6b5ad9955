#include "support/environment_file.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "job/fixed_paths.h"
#include "support/narrowing.h"
#include "support/text_file.h"

namespace rlx {

namespace {

constexpr std::size_t kChunkBytes = 512;
constexpr std::size_t kMaxSignificant = 512;
constexpr std::size_t kMaxFieldBytes = 255;

constexpr std::string_view kCommonHeader = "*COMMON";
constexpr std::string_view kRoundingKey = "FCBPRINT";
constexpr char kHalfInchValue = '2';

/// The significant characters of the line that is being read.
struct SignificantLine {
  std::array<char, kMaxSignificant> characters;
  std::size_t length = 0;
  bool in_comment = false;
  bool too_long = false;

  std::string_view text() const { return {characters.data(), length}; }
};

struct SectionReader {
  EnvironmentFile& environment;
  bool in_common = false;
  bool common_seen = false;
};

bool is_significant(char byte) {
  return byte >= '!' && byte <= '~';
}

void add_character(SignificantLine& line, char byte) {
  if (line.length == line.characters.size()) {
    line.too_long = true;
    return;
  }
  line.characters[line.length++] = byte;
}

void add_chunk(SignificantLine& line, std::string_view chunk) {
  for (const char byte : chunk) {
    if (byte == '#') {
      line.in_comment = true;
    }
    if (line.in_comment) {
      return;
    }
    if (is_significant(byte)) {
      add_character(line, byte);
    }
  }
}

void take_setting(EnvironmentFile& environment, std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) {
    return;
  }
  const std::string_view key = line.substr(0, colon).substr(0, kMaxFieldBytes);
  line.remove_prefix(colon + 1);
  const std::string_view value = line.substr(0, kMaxFieldBytes);
  if (key == kRoundingKey && !value.empty()) {
    environment.fcbprint_halfinch = value.front() == kHalfInchValue ? 1 : 0;
  }
}

void take_line(SectionReader& reader, const SignificantLine& line) {
  const std::string_view text = line.text();
  if (line.too_long || text.empty()) {
    return;
  }
  if (text.front() == '*') {
    reader.in_common = text.starts_with(kCommonHeader);
    reader.common_seen = reader.common_seen || reader.in_common;
  } else if (reader.in_common) {
    take_setting(reader.environment, text);
  }
}

/// The next piece of the file as text; false at its end.
bool read_chunk(TextFile& file, std::array<char, kChunkBytes>& buffer, std::string_view& chunk) {
  buffer.fill('\0');
  if (!file.read_line(buffer)) {
    return false;
  }
  const std::string_view text(buffer.data());
  const std::int32_t length =
      narrow_ulong_to_int(text.size(), "prcnv_env", "tqdxgetenv", kKeepTruncated);
  chunk = text.substr(0, static_cast<std::size_t>(length));
  return true;
}

bool read_sections(TextFile& file, EnvironmentFile& environment) {
  SectionReader reader{environment};
  SignificantLine line;
  std::array<char, kChunkBytes> buffer;
  std::string_view chunk;
  while (read_chunk(file, buffer, chunk)) {
    add_chunk(line, chunk);
    if (chunk.ends_with('\n')) {
      take_line(reader, line);
      line = SignificantLine{};
    }
  }
  take_line(reader, line);
  return reader.common_seen;
}

}  // namespace

Status tqdxgetenv(EnvironmentFile& environment) {
  if (environment.loaded != 0) {
    return ST_OK;
  }
  return read_environment_file(fixed_paths::kEnvironmentFile, environment);
}

Status read_environment_file(const char* path, EnvironmentFile& environment) {
  environment = {.loaded = 1};
  TextFile file(path);
  if (!file.is_open()) {
    return kNoEnvironmentFile;
  }
  return read_sections(file, environment) ? ST_OK : kNoCommonSection;
}

}  // namespace rlx
