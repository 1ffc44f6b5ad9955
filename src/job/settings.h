#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace rlx {

/// Longest form name and longest directory of the command line, without the NUL.
inline constexpr std::size_t kMaxNameBytes = 255;
/// Directories that are searched for forms.
inline constexpr std::size_t kMaxSearchedDirectories = 128;

/// Where a setting came from.
enum SettingSource : std::uint8_t {
  kNotGiven = 0,
  kFromForm = 1,       ///< form parameter command, kind 1 or 2
  kFromFormKind3 = 2,  ///< form parameter command, kind 3
  kFromCommandLine = 3,
};

/// `printer_class`: which font features the printer has (capability tokens f0, f1 and f2).
inline constexpr std::uint32_t kPrinterClassF0 = 0x100000;
inline constexpr std::uint32_t kPrinterClassF1 = 0x200000;
inline constexpr std::uint32_t kPrinterClassF2 = 0x400000;

/// How the printer emulates a line printer. The numbers are given, not chosen; there is no mode 5.
enum EmulationMode : int {
  kStandardMode = 1,
  kFineMode = 2,        ///< -B: 400 dots per inch
  kFormLengthMode = 3,  ///< -E and -N: no character spacing is sent
  kExtendedMode = 4,    ///< -C
  kMode6 = 6,           ///< -Q: command 479 is judged by its parameter
  kMode7 = 7,           ///< -R: the same
};

/// How the lengths of forms are treated.
enum StreamVariant : int {
  kPlainStream = 2,
  kSentLengthStream = 3,  ///< -E and -N: form lengths are sent to the printer
  kShortFormStream = 4,   ///< -R: they are sent, and lie between 3.5 and 14 inches
};

/// Decides the character spacing behind a print-condition command: from kOutputF on, index 4.
enum OutputVariant : std::uint8_t {
  kPlainOutput = 0,
  kOutputA = 1,  ///< -A
  kOutputF = 2,  ///< -f
  kOutputE = 3,  ///< -E and -N
  kOutputR = 4,  ///< -R
};

/// Which fonts of user-defined characters are asked for, and how their patterns are downloaded.
enum FontVariant : int {
  kFixedFont = 0,  ///< -E and -N: one size, in the fixed form
  kAllFonts = 1,   ///< all sizes
  kFineFonts = 2,  ///< -B: the sizes of 400 dots per inch
};

/// `header_selector`.
inline constexpr int kPlainHeader = 1;
inline constexpr int kSimplexBindingHeader = 8;

inline constexpr std::int32_t kLowResolution = 240;
inline constexpr std::int32_t kHighResolution = 400;

/// `line_unit` of every job until a command changes it.
inline constexpr std::int32_t kDefaultLineUnit = 180;
/// Largest form data that a form parameter command may bring.
inline constexpr std::int32_t kMaxFormData = 100;

/// The settings that the print-condition output sends: those of the command line, and those that
/// the form parameter command (500) brings.
struct SettingsRecord {
  std::uint8_t char_pitch_source = kNotGiven;
  std::uint8_t line_pitch_source = kNotGiven;
  std::uint8_t width_source = kNotGiven;
  /// kFromForm or kFromFormKind3 by command 500. kFromCommandLine would put form data of the
  /// command line before the job's; the rules for it are in place, no option gives any today.
  std::uint8_t form_source = kNotGiven;
  const char* line_pitch_text = nullptr;  ///< argument of -l: lines per inch in decimal
  /// -w, and `width_source`. Accepted for the sake of the spoolers that pass it; nothing reads it.
  const char* width_text = nullptr;
  std::int32_t spacing_index = 3;  ///< character spacing, 0 to 4
  std::int32_t line_unit_value = kDefaultLineUnit;
  std::int32_t form_data_length = 0;  ///< 0 to kMaxFormData
  std::array<std::uint8_t, kMaxFormData> form_data{};
  std::uint8_t output_variant = kPlainOutput;  ///< an OutputVariant
  std::uint8_t form_flag = 0;  ///< 1 after form parameter kind 2 on a printer with "g"
};

/// Directories that are searched for forms, each NUL-terminated; the list ends at the first empty
/// entry. One entry more than is searched: behind 128 directories of the command line the default
/// directory has its place but is not looked at.
struct ResourceDirectories {
  std::array<std::array<char, kMaxNameBytes + 1>, kMaxSearchedDirectories + 1> entries;
  std::size_t count = 0;  ///< entries filled

  // The entries keep whatever they hold; the list says itself where it ends.
  ResourceDirectories() { end_list(); }

  /// Appends a directory of at most kMaxNameBytes.
  void append(std::string_view directory) {
    entries[count][directory.copy(entries[count].data(), kMaxNameBytes)] = '\0';
    ++count;
    end_list();
  }

 private:
  void end_list() {
    if (count < entries.size()) {
      entries[count].front() = '\0';
    }
  }
};

/// What the command line fixed, the printer's capabilities included. Filled at start-up; nothing
/// changes it afterwards. The comments say which options set a field.
struct CommandLine {
  int emulation_mode = kStandardMode;        ///< an EmulationMode
  int stream_variant = kPlainStream;         ///< a StreamVariant
  int extended_parameters = 0;               ///< 1 with -C, -N, -P: ESC Q ... /~ is a command
  int header_selector = kPlainHeader;        ///< kSimplexBindingHeader with -D
  std::int32_t resolution = kLowResolution;  ///< dots per inch: -e, -G, -B
  int font_variant = kAllFonts;              ///< a FontVariant
  int framed_output = 0;             ///< -d: input and output are framed for the transfer protocol
  int lines_per_page = 0;            ///< -L; 0 is no page-length emulation
  std::int32_t character_pitch = 0;  ///< -c: 7200 / n in 1/7200 inch; 0 when unset
  int print_conditions_enabled = 1;  ///< 0 with -q
  int undefined_gaiji_pattern = 0;   ///< -r: 0 "space", 1 "ubar"
  const char* fcb_name = nullptr;    ///< -n; null when not given
  std::int32_t requested_resolution = 0;  ///< -e; 0 is none
  std::uint32_t printer_class = kPrinterClassF0;
  int capability_F = 0;  ///< capability token F
  int capability_g = 0;  ///< capability token g

  // Accepted for the sake of the spoolers that pass them, and kept because a person who looks into
  // a running filter wants to see its whole command line; nothing reads them.
  int compact_flag = 0;          ///< -S
  int ignore_flag = 0;           ///< -i
  std::array<char, 256> f_text;  ///< -F, cut to its room
  std::array<char, 256> j_text;  ///< -J, cut to its room

  // The two texts are empty, whatever stands behind their ends.
  CommandLine() { f_text.front() = j_text.front() = '\0'; }
};

/// What the job changes while it runs and more than one subsystem looks at.
struct JobState {
  /// Something was put on the page since the last page end. Set by the driver, cleared by the page
  /// writer.
  int page_has_content = 0;
  /// Text or a line movement since the last FF or print-condition command. Set by the driver, read
  /// by the line spacing (which puts a FF before a new form only then).
  int page_started = 0;
  /// The job start block has been written and the job end block has not. Set by the job header,
  /// cleared by the page writer.
  int job_started = 0;
  /// 1 when the fonts in use are the 400-dpi set. Set by option -B, then by the driver: behind
  /// commands 478, 479, 482 and 483 by the resolution, behind 489 by its parameter.
  int high_resolution_fonts = 0;
  /// Set at start-up.
  int font_library_loaded = 0;
  /// FFL: form length in tenths of an inch that the job header sends; 0 is none. Set by the line
  /// spacing for kSentLengthStream and kShortFormStream.
  std::int32_t form_length_tenths = 0;
  /// Size index 1 to 4 and typeface 0 or 1 of user-defined characters. No command changes them
  /// today.
  int gaiji_size_index = 1;
  int gaiji_typeface = 0;

  // Noted for whoever continues this filter; nothing reads them today.
  std::int32_t line_unit = kDefaultLineUnit;  ///< commands 478 and 479 reset it
  int settings_changed = 0;                   ///< a command changed print settings
  int fonts_reloaded = 0;                     ///< fonts were set up again during the job
};

}  // namespace rlx
