// The drawings and pictures of forms, compared with the files of fcbcheck/: NAME.utf8 and
// NAME.ascii are terminals', NAME.svg is a picture. The one of the invoice stands in docs/images/.
//
// With RLX_UPDATE_DRAWINGS set the files are written anew; look at them before you commit them.

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "fcbcheck/form_file.h"
#include "fcbcheck/layout.h"
#include "fcbcheck/svg_picture.h"
#include "fcbcheck/terminal_drawing.h"
#include "support/descriptors.h"

namespace rlx::fcbcheck {
namespace {

namespace fs = std::filesystem;

const fs::path kProject(RLX_PROJECT_DIRECTORY);
const fs::path kDrawings = kProject / "tests/tools/fcbcheck";

/// A form that is drawn.
struct DrawnForm {
  const char* name;
  const char* path;
  bool half_inches;
};

constexpr std::array<DrawnForm, 4> kDrawnForms{{
    {"INVOICE", "examples/forms/fcbe/INVOICE", false},
    {"PITCHES", "tests/tools/fcbcheck/PITCHES", false},
    {"PAST", "tests/tools/fcbcheck/PAST", true},
    {"NARROW", "tests/tools/fcbcheck/NARROW", false},
}};

Layout layout_of(const DrawnForm& drawn) {
  const EnvironmentFile environment{.loaded = 1, .fcbprint_halfinch = drawn.half_inches ? 1 : 0};
  const FormFile form = read_form_file(kProject / drawn.path, {.environment = environment});
  EXPECT_TRUE(form.is_good()) << drawn.path;
  EXPECT_EQ(form.name, drawn.name);
  return lay_out(form.name, form.table);
}

void expect_file(const fs::path& path, const std::string& drawing) {
  if (std::getenv("RLX_UPDATE_DRAWINGS") != nullptr) {
    testing::write_file(path, drawing);
  }
  EXPECT_EQ(testing::read_file(path), drawing) << path;
}

fs::path picture_path(const DrawnForm& form) {
  return std::string(form.name) == "INVOICE" ? kProject / "docs/images/invoice-form.svg"
                                             : kDrawings / (std::string(form.name) + ".svg");
}

TEST(FcbcheckDrawing, IsAsKept) {
  for (const DrawnForm& form : kDrawnForms) {
    const Layout layout = layout_of(form);
    const fs::path path = kDrawings / form.name;
    expect_file(path.string() + ".utf8", terminal_drawing(layout, {.utf8 = true}));
    expect_file(path.string() + ".ascii", terminal_drawing(layout, {}));
    expect_file(picture_path(form), svg_picture(layout));
  }
}

/// The columns of a line of UTF-8 in which no character is wide.
std::size_t columns(const std::string& line) {
  std::size_t count = 0;
  for (const char byte : line) {
    count += (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U ? 0U : 1U;
  }
  return count;
}

std::vector<std::string> lines_of_text(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    lines.push_back(text.substr(at, text.find('\n', at) - at));
  }
  return lines;
}

TEST(FcbcheckDrawing, FitsATerminalAndHasNoBlanksAtLineEnds) {
  for (const DrawnForm& form : kDrawnForms) {
    for (const bool utf8 : {false, true}) {
      for (const std::string& line :
           lines_of_text(terminal_drawing(layout_of(form), {.utf8 = utf8}))) {
        EXPECT_LE(columns(line), 79U) << line;
        EXPECT_FALSE(line.ends_with(' ')) << line;
      }
    }
  }
}

/// A drawing without the terminal's sequences for colours.
std::string without_colours(std::string text) {
  for (std::size_t at = 0; (at = text.find("\x1b[", at)) != std::string::npos;) {
    text.erase(at, text.find('m', at) + 1 - at);
  }
  return text;
}

TEST(FcbcheckDrawing, ColoursChangeNothingElse) {
  for (const DrawnForm& form : kDrawnForms) {
    const Layout layout = layout_of(form);
    const std::string coloured = terminal_drawing(layout, {.utf8 = true, .colour = true});
    EXPECT_NE(coloured.find("\x1b[1;32m▶"), std::string::npos);
    EXPECT_EQ(without_colours(coloured), terminal_drawing(layout, {.utf8 = true}));
  }
}

// The pictures are well-formed.

/// Reads through the tags of XML as pictures use it: each that is opened is closed, in order, and
/// nothing else has a '<', or a '&' that begins no entity. @return what is wrong, or nothing.
std::string xml_fault(const std::string& xml) {
  std::vector<std::string> open;
  for (std::size_t at = 0; (at = xml.find('<', at)) != std::string::npos;) {
    const std::size_t end = xml.find('>', at);
    const std::string tag = xml.substr(at + 1, end - at - 1);
    const std::string name = tag.substr(0, tag.find_first_of(" \n"));
    if (end == std::string::npos || tag.find('<') != std::string::npos) {
      return "a tag without an end: " + tag;
    }
    if (tag.starts_with('/')) {
      if (open.empty() || "/" + open.back() != tag) {
        return "closed, but not open: " + tag;
      }
      open.pop_back();
    } else if (!tag.ends_with('/') && !tag.ends_with('?')) {
      open.push_back(name);
    }
    at = end;
  }
  return open.empty() ? "" : "not closed: " + open.back();
}

TEST(FcbcheckPicture, IsWellFormed) {
  for (const DrawnForm& form : kDrawnForms) {
    const std::string picture = svg_picture(layout_of(form));
    EXPECT_EQ(xml_fault(picture), "");
    EXPECT_TRUE(picture.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg "));
  }
}

TEST(FcbcheckPicture, HoldsAnyNameOfAForm) {
  Layout layout = layout_of(kDrawnForms[0]);
  layout.name = "<svg>&\"\x01\xff" + std::string(255, 'x');
  const std::string picture = svg_picture(layout);
  EXPECT_EQ(xml_fault(picture), "");
  EXPECT_NE(picture.find("&lt;svg&gt;&amp;&quot;??" + std::string(39, 'x') + "…"),
            std::string::npos);
}

TEST(FcbcheckPicture, TheCheckFindsWhatIsWrong) {
  EXPECT_EQ(xml_fault("<a><b/>x</a>"), "");
  EXPECT_NE(xml_fault("<a><b></a>"), "");
  EXPECT_NE(xml_fault("<a"), "");
  EXPECT_NE(xml_fault("<a>"), "");
  EXPECT_NE(xml_fault("</a>"), "");
}

// The layout behind them.

TEST(FcbcheckLayout, LinesStandOneBelowTheOther) {
  const Layout layout = layout_of(kDrawnForms[0]);
  EXPECT_EQ(layout.name, "INVOICE");
  EXPECT_EQ(layout.length, 79200);
  EXPECT_EQ(layout.top_line, 4);
  EXPECT_EQ(layout.lines_bottom(), 79200);
  ASSERT_EQ(layout.lines.size(), 72U);
  EXPECT_EQ(layout.lines[12].number, 13);
  EXPECT_EQ(layout.lines[12].top, 14400);
  EXPECT_EQ(layout.lines[12].height, 900);
  EXPECT_EQ(layout.lines[12].lines_per_inch, 8U);
  ASSERT_EQ(layout.runs.size(), 4U);
  EXPECT_EQ(layout.runs[1].count, 36);
  EXPECT_EQ(layout.runs[1].top, 14400);
  EXPECT_EQ(layout.runs[1].height, 32400);
  EXPECT_EQ(layout.summary(), "11 in, 72 lines, printing starts on line 4");
}

}  // namespace
}  // namespace rlx::fcbcheck
