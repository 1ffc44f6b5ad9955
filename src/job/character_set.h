#pragma once

namespace rlx {

/// Which of the printer's character sets is selected; shared by the text output, the glyph
/// download and the driver.
struct CharacterSetState {
  static constexpr int kSingleByte = 1;
  static constexpr int kDoubleByte = 2;
  /// `designation` of the download set, ESC "$D".
  static constexpr int kDownloadDesignation = 3;

  /// kSingleByte or kDoubleByte.
  int set = kSingleByte;
  /// kDownloadDesignation while the double-byte set is the download set, otherwise 0. Only the
  /// glyph download looks at it.
  int designation = 0;

  void select_single_byte() { *this = {kSingleByte, 0}; }
  void select_double_byte() { *this = {kDoubleByte, 0}; }
  void select_download() { *this = {kDoubleByte, kDownloadDesignation}; }
};

}  // namespace rlx
