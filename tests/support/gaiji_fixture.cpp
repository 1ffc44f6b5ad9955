#include "support/gaiji_fixture.h"

#include <unistd.h>

#include <algorithm>

#include "fonts/font_sets.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/the_filter.h"

namespace rlx::testing {

std::string pattern_in(const std::string& output, const DownloadFrame& frame) {
  EXPECT_TRUE(output.starts_with(frame.before)) << ::testing::PrintToString(output);
  EXPECT_TRUE(output.ends_with(frame.after)) << ::testing::PrintToString(output);
  const std::size_t around = frame.before.size() + frame.after.size();
  return output.size() < around ? "" : output.substr(frame.before.size(), output.size() - around);
}

void GaijiTest::start(int font_variant, int high_resolution_fonts, int second_typeface,
                      std::string_view description) {
  load(description);
  the_filter().command_line.font_variant = font_variant;
  the_filter().job.high_resolution_fonts = high_resolution_fonts;
  ASSERT_EQ(fonts_open(the_filter().fonts, font_variant, high_resolution_fonts, 1, second_typeface),
            0);
  restart_gaiji();
  state_.select_single_byte();
  take_font_calls();
}

std::string GaijiTest::put(std::string_view bytes, UndefinedGaijiRule rule) {
  record_.code = CMD_TEXT_GAIJI;
  record_.bytes.fill(0xEE);
  std::copy(bytes.begin(), bytes.end(), record_.bytes.begin());
  record_.length = static_cast<std::int32_t>(bytes.size());
  const CaptureDescriptor standard_error(STDERR_FILENO);
  status_ = gaiji_put(the_filter().gaiji, record_, rule, state_, out_);
  message_ = standard_error.text();
  return {out_.bytes.begin(), out_.bytes.begin() + out_.length};
}

void GaijiTest::expect_state(int set, int designation) const {
  EXPECT_EQ(state_.set, set);
  EXPECT_EQ(state_.designation, designation);
}

}  // namespace rlx::testing
