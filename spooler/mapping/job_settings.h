#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::spooler {

/// Paper sizes that the printer knows by name.
enum class Paper : std::uint8_t { unset, a3, a4, a5, b4, b5, letter };

/// Trays. `automatic` leaves the choice to the printer, and says so to it.
enum class Tray : std::uint8_t { unset, automatic, tray_1, tray_2, tray_3, tray_4 };

enum class Orientation : std::uint8_t { unset, upright, landscape };

enum class Sides : std::uint8_t { unset, one, two_long_edge, two_short_edge };

/// How user-defined characters that nobody has defined are printed.
enum class UndefinedCharacters : std::uint8_t { unset, space, ubar };

/// What a job is to look like, whichever spooler asks for it. "Unset" everywhere leaves the matter
/// to the job and to the printer.
struct JobSettings {
  std::string form;                  ///< name of a form, empty without one
  unsigned lines_per_page = 0;       ///< line feeds to a page, without a form; 0 is unset
  unsigned lines_per_inch = 0;       ///< 3, 4, 6, 8 or 12; 0 is unset
  unsigned characters_per_inch = 0;  ///< 1 to kMostCharactersPerInch; 0 is unset
  UndefinedCharacters undefined_characters = UndefinedCharacters::unset;
  bool extended_parameters = false;  ///< ESC Q ... "/~" is a command
  std::string charset;               ///< as iconv names it; empty for UTF-8
  Paper paper = Paper::unset;
  Tray tray = Tray::unset;
  Orientation orientation = Orientation::unset;
  Sides sides = Sides::unset;
  unsigned copies = 1;         ///< 1 to kMostCopies
  unsigned page_offset_x = 0;  ///< from the left edge, in 1/7200 inch; 0 is unset
  unsigned page_offset_y = 0;  ///< from the upper edge, in 1/7200 inch; 0 is unset

  static constexpr unsigned kMostLinesPerPage = 9999;
  static constexpr unsigned kMostCharactersPerInch = 100;
  static constexpr unsigned kMostCopies = 9999;
  /// The printer takes no smaller offset than this, and five digits.
  static constexpr unsigned kLeastPageOffset = 1440;
  static constexpr unsigned kMostPageOffset = 99999;
  static constexpr std::size_t kMostFormNameBytes = 255;
};

/// An option of a job, as a spooler hands it over.
struct JobOption {
  std::string name;
  std::string value;
};

/// An option whose value cannot be used.
struct OptionFault {
  std::string name;
  std::string value;
  std::string wanted;  ///< what the value has to be, such as "a whole number from 1 to 9999"
};

/// A line for people: "option lpi=5: wanted is 3, 4, 6, 8 or 12".
std::string text_of(const OptionFault& fault);

/// Puts what options say into settings; what they do not name keeps its value, so the defaults of a
/// queue are read first and the options of the job behind them, into the same record.
///
///     form                          letters, digits, "-" and "_"; None
///     lines-per-page                1 to 9999; None
///     lpi                           3, 4, 6, 8, 12; Default
///     cpi                           1 to 100; Default
///     rlx-undefined                 space, ubar; Default
///     rlx-extended                  true, false
///     rlx-charset                   a name that iconv knows; Default
///     media, PageSize               A3, A4, A5, B4, B5, Letter, or their names in IPP; a list in
///                                   media may hold a tray, too
///     media-source, InputSlot       auto, tray-1 to tray-4; Default
///     sides, Duplex                 one-sided, two-sided-long-edge, two-sided-short-edge
///     orientation-requested         3 (upright), 4 (landscape)
///     landscape                     true, false
///     copies                        1 to 9999
///     page-offset-x, page-offset-y  1440 to 99999; 0
///
/// An empty value, None, Default and, for numbers, 0 take back what a queue has set, in the rows
/// that have such a word.
///
/// Options of other names are nobody's business here. Names of options are compared as they are,
/// values without regard to case but for forms. Where two options mean the same setting the one
/// further down in the table counts: a spooler derives the second from the first.
/// @return what is wrong, in the order of the table; such options change nothing.
std::vector<OptionFault> read_job_options(const std::vector<JobOption>& options,
                                          JobSettings& settings);

/// True for the name of an option that read_job_options takes.
bool is_job_option(std::string_view name);

/// True for a name that a form may have in a queue: letters, digits, "-" and "_", at least one. So
/// a name is never a path.
bool is_form_name(std::string_view name);

}  // namespace rlx::spooler
