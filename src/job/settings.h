#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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
  std::uint8_t form_source = kNotGiven;
  const char* char_pitch_text = nullptr;  ///< argument of -c; null when not given
  const char* line_pitch_text = nullptr;  ///< argument of -l: lines per inch in decimal
  const char* width_text = nullptr;       ///< argument of -w
  std::int32_t spacing_index = 3;         ///< character spacing, 0 to 4
  std::int32_t line_unit_value = kDefaultLineUnit;
  std::int32_t form_data_length = 0;  ///< 0 to kMaxFormData
  std::array<std::uint8_t, kMaxFormData> form_data{};
  std::uint8_t output_variant = 0;  ///< 0; 1 with -A, 2 with -f, 3 with -E or -N, 4 with -R
  std::uint8_t form_flag = 0;       ///< 1 after form parameter kind 2 on a printer with "g"
};

/// Directories that are searched for forms, each NUL-terminated; the list ends at the first empty
/// entry. One entry more than is searched: behind 128 directories of the command line the default
/// directory has its place but is not looked at.
struct ResourceDirectories {
  std::array<std::array<char, kMaxNameBytes + 1>, kMaxSearchedDirectories + 1> entries{};
  std::size_t count = 0;  ///< entries filled
};

/// The job-wide settings: the command line's, and the few run-time flags that several subsystems
/// share. One instance, alive for the whole process. `stream_variant` and the like say in their
/// comment which options set them.
struct JobSettings {
  /// argv[0]; the prefix of every message.
  const char* program_name = "";

  int emulation_mode = 1;         ///< -B 2, -E and -N 3, -C 4, -Q 6, -R 7
  int stream_variant = 2;         ///< -E and -N 3, -R 4: how form lengths are treated
  int extended_parameters = 0;    ///< 1 with -C, -N, -P: ESC Q ... /~ is a command
  int header_selector = 1;        ///< 8 with -D: simplex pages get a full binding sequence
  std::int32_t resolution = 240;  ///< dots per inch
  int high_resolution_fonts = 0;  ///< 1 when the fonts in use are the 400-dpi set
  int font_variant = 1;           ///< 2 with -B, 0 with -E and -N
  std::int32_t line_unit = kDefaultLineUnit;
  int framed_output = 0;             ///< -d: input and output are framed for the transfer protocol
  int lines_per_page = 0;            ///< -L; 0 is no page-length emulation
  std::int32_t character_pitch = 0;  ///< -c: 7200 / n in 1/7200 inch; 0 when unset
  int print_conditions_enabled = 1;  ///< 0 with -q
  int undefined_gaiji_pattern = 0;   ///< -r: 0 "space", 1 "ubar"
  const char* fcb_name = nullptr;    ///< -n; null when not given
  std::int32_t requested_resolution = 0;  ///< -e; 0 is none
  std::uint32_t printer_class = kPrinterClassF0;
  int capability_F = 0;     ///< capability token F
  int capability_g = 0;     ///< capability token g
  int japanese_locale = 0;  ///< capability token Jja_JP
  int font_library_loaded = 0;
  int compact_flag = 0;            ///< -S; read by nothing
  int ignore_flag = 0;             ///< -i; read by nothing
  std::array<char, 256> f_text{};  ///< -F, cut to its room; read by nothing
  std::array<char, 256> j_text{};  ///< -J, cut to its room; read by nothing

  SettingsRecord record;

  // Run-time flags that more than one subsystem looks at.

  /// Something was put on the page since the last page end. Set by the driver, cleared by the page
  /// writer.
  int page_has_content = 0;
  /// Text or a line movement since the last FF or print-condition record. Set by the driver, read
  /// by the line spacing (which puts a FF before a new form only then).
  int page_started = 0;
  /// The job start block has been written and the job end block has not.
  int job_started = 0;
  /// A command changed print settings.
  int settings_changed = 0;
  /// Fonts were set up again during the job.
  int fonts_reloaded = 0;
  /// FFL: form length in tenths of an inch that the job header sends; 0 is none. Set by the line
  /// spacing for stream variants 3 and 4.
  std::int32_t form_length_tenths = 0;
  /// Size index 1 to 4 and typeface 0 or 1 of user-defined characters. No command changes them
  /// today.
  int gaiji_size_index = 1;
  int gaiji_typeface = 0;
};

/// The settings of this process.
extern JobSettings job_settings;
/// The form directories of this process (kept apart from the settings for their size).
extern ResourceDirectories resource_directories;

/// Puts all settings and the directory list back to their defaults.
void reset_job_settings();

}  // namespace rlx
