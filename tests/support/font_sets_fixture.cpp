#include "support/font_sets_fixture.h"

#include <unistd.h>

#include "support/descriptors.h"
#include "support/the_filter.h"

namespace rlx::testing {

namespace {

/// By font class.
const std::vector<std::vector<OpenedSize>> kOpenedSizes{
    {{2, 24, 22, 1}, {3, 24, 24, 0}},
    {{0, 16, 16, 0}, {1, 24, 22, 1}, {2, 30, 28, 1}, {3, 32, 32, 0}, {4, 40, 36, 2}},
    {{0, 24, 22, 1}, {1, 40, 36, 2}, {2, 50, 48, 1}, {3, 60, 56, 2}, {4, 66, 62, 2}},
    {{0, 32, 32, 0}, {1, 40, 36, 2}, {2, 50, 48, 1}, {3, 60, 56, 2}, {4, 66, 62, 2}},
};

std::string dimensions(const OpenedSize& size) {
  const std::string dots = std::to_string(size.dots);
  const std::string letter = std::to_string(size.letter);
  const std::string offset = std::to_string(size.offset);
  return " size=" + dots + "x" + dots + " letter=" + letter + "x" + letter + " offset=" + offset +
         "," + offset;
}

}  // namespace

const std::vector<OpenedSize>& opened_sizes(const Variant& variant) {
  return kOpenedSizes[static_cast<std::size_t>(variant.font_class)];
}

std::string open_call(int style, int code_set, const OpenedSize& size) {
  return std::string("open ") + (style == 1 ? "style=1,mincho" : "style=2,gothic") +
         " shape=1,zenkaku " + (code_set == 2 ? "set=2,u90_01,2" : "set=4,u90_03,4") + " final=2" +
         dimensions(size) + " mask=fffc LANG=ja FAL_LANG=ja_JP.U90 -> ";
}

void append_open_calls(std::vector<std::string>& calls, const Variant& variant, int style,
                       int code_set) {
  for (const OpenedSize& size : opened_sizes(variant)) {
    calls.push_back(open_call(style, code_set, size) +
                    std::to_string(standin_font_id(style, code_set, size.dots, size.letter)));
  }
}

std::string description_line(const char* keyword, int style, int code_set, const OpenedSize& size,
                             const char* rest) {
  return std::string(keyword) + " " + std::to_string(style) + " " + std::to_string(code_set) + " " +
         std::to_string(size.dots) + " " + std::to_string(size.letter) + rest + "\n";
}

FontSet& set_of(int typeface, int code_set) {
  return *find_font_set(the_filter().fonts, typeface, code_set);
}

int style_of(int typeface) {
  return typeface == kTypefaceMincho ? 1 : 2;
}

int library_set_of(int code_set) {
  return code_set == kCodeSetG1 ? 2 : 4;
}

void expect_unopened(const FontSize& size) {
  EXPECT_EQ(size.opened, 0);
  EXPECT_EQ(size.font_id, -1);
}

void expect_font(const FontSize& size, int font_id, int enlarged) {
  EXPECT_EQ(size.opened, 1);
  EXPECT_EQ(size.font_id, font_id);
  EXPECT_EQ(size.enlarged, enlarged);
}

void expect_same(const FontSize& left, const FontSize& right) {
  EXPECT_EQ(left.opened, right.opened);
  EXPECT_EQ(left.enlarged, right.enlarged);
  EXPECT_EQ(left.font_id, right.font_id);
  EXPECT_EQ(left.read_h, right.read_h);
  EXPECT_EQ(left.read_w, right.read_w);
}

Status FontSetsTest::open(const Variant& variant, int second_typeface) {
  return fonts_open(the_filter().fonts, variant.font_variant, variant.high_resolution_fonts, 1,
                    second_typeface);
}

void FontSetsTest::load_and_open(const std::string& description, const Variant& variant,
                                 int second_typeface) {
  load(description);
  the_filter().fonts.sets = {};
  take_font_calls();
  const CaptureDescriptor standard_error(STDERR_FILENO);
  status_ = open(variant, second_typeface);
  message_ = standard_error.text();
}

}  // namespace rlx::testing
