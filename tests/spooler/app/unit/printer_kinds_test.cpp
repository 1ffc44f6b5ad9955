#include "rlx-printer-app/printer_kinds.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace rlx::printer_app {
namespace {

TEST(PrinterKinds, EachIsFoundByItsName) {
  std::set<std::string> names;
  for (const PrinterKind& kind : printer_kinds()) {
    EXPECT_EQ(find_printer_kind(kind.name), &kind);
    EXPECT_TRUE(names.insert(kind.name).second) << kind.name;
    EXPECT_NE(std::string(kind.description), "");
    EXPECT_GT(kind.resolutions[0], 0);
  }
  EXPECT_EQ(names.size(), 7U);
  EXPECT_EQ(find_printer_kind("rlx"), nullptr);
  EXPECT_EQ(find_printer_kind(""), nullptr);
}

TEST(PrinterKinds, EmulationModesAreAllThere) {
  std::set<unsigned> modes;
  for (const PrinterKind& kind : printer_kinds()) {
    modes.insert(kind.emulation_mode);
  }
  EXPECT_EQ(modes, (std::set<unsigned>{1, 2, 3, 4, 6, 7}));
}

TEST(PrinterKinds, TheResolutionIsNamedWhereThereIsAChoice) {
  const auto one = queue_settings(*find_printer_kind("rlx-400"), 400, "/forms");
  EXPECT_EQ(one.emulation_mode, 2U);
  EXPECT_EQ(one.resolution, 0U);
  ASSERT_EQ(one.form_directories.size(), 1U);
  EXPECT_EQ(one.form_directories[0], "/forms");
  EXPECT_EQ(queue_settings(*find_printer_kind("rlx-240-400"), 400, "").resolution, 400U);
}

}  // namespace
}  // namespace rlx::printer_app
