#include "support/condition_columns.h"

#include <gtest/gtest.h>

#include <string>

#include "support/record_builder.h"

namespace rlx {
namespace {

using testing::make_record;

/// column_at, out of the compiler's sight: it warns of constant positions that no record has.
[[gnu::noinline]] std::uint8_t column(const CommandRecord& record, std::size_t position) {
  return column_at(record, position);
}

TEST(Columns, ColumnAtGivesTheBytesOfTheRecord) {
  const CommandRecord record = make_record(CMD_Q_NL_SP, "\x1bQ\xff");
  EXPECT_EQ(column(record, 0), 0x1b);
  EXPECT_EQ(column(record, 1), 'Q');
  EXPECT_EQ(column(record, 2), 0xff);
}

TEST(Columns, ColumnBehindTheEndReadsAsABlank) {
  const CommandRecord record = make_record(CMD_Q_NL_SP, "\x1bQ1");
  EXPECT_EQ(column(record, 2), '1');
  EXPECT_EQ(column(record, 3), ' ');
  EXPECT_EQ(column(record, 4095), ' ');
  EXPECT_EQ(column(record, 100000), ' ');
}

TEST(Columns, FullRecordIsReadToItsLastByte) {
  const CommandRecord record = make_record(CMD_Q_NL_SP, std::string(4096, 'x'));
  EXPECT_EQ(column(record, 4095), 'x');
  EXPECT_EQ(column(record, 4096), ' ');
}

TEST(Columns, DecimalColumnReadsItsWidthOnly) {
  const CommandRecord record = make_record(CMD_Q_NL_SP, "1234567");
  EXPECT_EQ(decimal_column(record, 0, 3), 123);
  EXPECT_EQ(decimal_column(record, 3, 2), 45);
  EXPECT_EQ(decimal_column(record, 3, 0), 0);
}

TEST(Columns, DecimalColumnThatIsCutByTheEndOfTheRecord) {
  const CommandRecord record = make_record(CMD_Q_NL_SP, "1234567");
  EXPECT_EQ(decimal_column(record, 5, 3), 67);
  EXPECT_EQ(decimal_column(record, 7, 3), 0);
}

TEST(Columns, DecimalColumnEndsAtANul) {
  const CommandRecord record = make_record(CMD_Q_NL_SP, std::string("12\0"
                                                                    "45",
                                                                    5));
  EXPECT_EQ(decimal_column(record, 0, 5), 12);
}

TEST(CommandShapeTest, LayoutIsFourBytesBehindTheBlank) {
  const CommandShape shape = command_shape(make_record(CMD_Q_NL_SP, "\x1bQ1;100 n  2"));
  EXPECT_TRUE(shape.has_length);
  EXPECT_EQ(shape.data_length, 100);
  EXPECT_EQ(shape.layout, 11U);
}

TEST(CommandShapeTest, WithoutALengthAllIsNothing) {
  const CommandShape shape = command_shape(make_record(CMD_Q_NL_SP, "\x1bQ1; n  2"));
  EXPECT_FALSE(shape.has_length);
  EXPECT_EQ(shape.data_length, 0);
  EXPECT_EQ(shape.layout, 0U);
}

TEST(CommandShapeTest, FullRecordWithoutABlankEndsAtItsEnd) {
  const CommandShape shape = command_shape(make_record(CMD_Q_NL_SP, std::string(4096, '0')));
  EXPECT_TRUE(shape.has_length);
  EXPECT_EQ(shape.data_length, 0);
  EXPECT_EQ(shape.layout, 4100U);
}

TEST(CommandShapeTest, NumberEndsAtTheFirstByteThatIsNoDigit) {
  const CommandShape shape = command_shape(make_record(CMD_Q_NL_SP, "\x1bQab99;12 n"));
  EXPECT_EQ(shape.data_length, 99);
  EXPECT_EQ(shape.layout, 13U);
}

}  // namespace
}  // namespace rlx
