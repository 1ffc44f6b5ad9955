#include <gtest/gtest.h>

#include "rlx_reader/block.h"
#include "tools/sample_streams.h"

namespace rlx::testing {
namespace {

using reader::BlockHeader;
using reader::BlockUse;
using reader::Ending;
using reader::parse_header;

BlockUse use(char kind, Ending ending, const std::string& payload) {
  const BlockHeader header{kind, reader::count_for(ending, payload.size()), ending};
  return use_of(header, reader_bytes(payload).first(std::min<std::size_t>(payload.size(), 16)));
}

TEST(BlockHeader, HasKindCountAndEnding) {
  const auto data = parse_header(reader_bytes("\x1bQ2;0000001194/a"));
  ASSERT_TRUE(data.has_value());
  EXPECT_EQ(data->kind, '2');
  EXPECT_EQ(data->count, 1194U);
  EXPECT_EQ(data->ending, Ending::data);
  EXPECT_EQ(data->payload(), 1182U);
  const auto parameters = parse_header(reader_bytes("\x1bQ0;0000000043/`%%%"));
  ASSERT_TRUE(parameters.has_value());
  EXPECT_EQ(parameters->ending, Ending::parameters);
  EXPECT_EQ(parameters->payload(), 43U);
}

TEST(BlockHeader, CountIsAtLeastTwelveWithData) {
  EXPECT_EQ(parse_header(reader_bytes("\x1bQ2;0000000012/a"))->payload(), 0U);
  EXPECT_FALSE(parse_header(reader_bytes("\x1bQ2;0000000011/a"))->payload().has_value());
  EXPECT_FALSE(parse_header(reader_bytes("\x1bQ2;0000000000/a"))->payload().has_value());
  EXPECT_EQ(parse_header(reader_bytes("\x1bQ0;0000000000/`"))->payload(), 0U);
  EXPECT_EQ(parse_header(reader_bytes("\x1bQ2;9999999999/a"))->payload(), 9999999987U);
}

TEST(BlockHeader, IsNoneWithAnyByteChanged) {
  const std::string good = "\x1bQ2;0000001194/a";
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const char byte : {'x', ' ', '\0', '\x1c'}) {
      std::string changed = good;
      changed[at] = byte;
      EXPECT_FALSE(parse_header(reader_bytes(changed)).has_value()) << at;
    }
    EXPECT_FALSE(parse_header(reader_bytes(good.substr(0, at))).has_value()) << at;
  }
}

TEST(BlockHeader, OfParametersIsOfKind0) {
  EXPECT_FALSE(parse_header(reader_bytes("\x1bQ2;0000000043/`")).has_value());
}

TEST(BlockHeader, GivesItsBytesBack) {
  for (const char* const header : {"\x1bQ2;0000001194/a", "\x1bQ0;0000000043/`",
                                   "\x1bQ9;9999999999/a", "\x1bQ7;0000000000/a"}) {
    EXPECT_EQ(header_bytes(*parse_header(reader_bytes(header))), header);
  }
}

TEST(BlockUses, AreToldByKindEndingAndPayload) {
  EXPECT_EQ(use('0', Ending::parameters, "EMU=RLX\n"), BlockUse::job_parameters);
  EXPECT_EQ(use('9', Ending::data, kJobStartPayload), BlockUse::job_start);
  EXPECT_EQ(use('9', Ending::data, kSetup), BlockUse::page_setup);
  EXPECT_EQ(use('8', Ending::data, "\x1bQ240!A"), BlockUse::density);
  EXPECT_EQ(use('7', Ending::data, "\x1bQ0;4;0!F"), BlockUse::page_format);
  EXPECT_EQ(use('2', Ending::data, "A"), BlockUse::first_data);
  EXPECT_EQ(use('2', Ending::data, "\f"), BlockUse::first_data);
  EXPECT_EQ(use('0', Ending::data, "A"), BlockUse::further_data);
  EXPECT_EQ(use('6', Ending::data, kSettings), BlockUse::carried_settings);
  EXPECT_EQ(use('0', Ending::data, "\f"), BlockUse::final_form_feed);
  EXPECT_EQ(use('0', Ending::data, kJobEndPayload), BlockUse::job_end);
  for (const char kind : {'1', '3', '4', '5'}) {
    EXPECT_EQ(use(kind, Ending::data, "A"), BlockUse::unknown) << kind;
  }
}

TEST(BlockUses, OfKind0AreToldByTheWholePayload) {
  EXPECT_EQ(use('0', Ending::data, "\fA"), BlockUse::further_data);
  EXPECT_EQ(use('0', Ending::data, kJobEndPayload + "A"), BlockUse::further_data);
  EXPECT_EQ(use('0', Ending::data, kJobEndPayload.substr(0, 7)), BlockUse::further_data);
  EXPECT_EQ(use('0', Ending::data, std::string(100, 'A')), BlockUse::further_data);
}

TEST(BlockUses, HaveNames) {
  EXPECT_EQ(name_of(BlockUse::job_parameters), "job parameters");
  EXPECT_EQ(name_of(BlockUse::carried_settings), "carried settings");
  EXPECT_EQ(name_of(BlockUse::unknown), "unknown");
}

}  // namespace
}  // namespace rlx::testing
