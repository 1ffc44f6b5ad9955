#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "running/print_job.h"

namespace rlx::printer_app {

/// A picture of a sheet, in the order of printing.
struct Sheet {
  unsigned page = 0;   ///< of the job, from 1
  unsigned sheet = 0;  ///< of the page, from 1: one with form feeds inside has several
};

/// What became of a job, without printing it.
struct Proof {
  std::string folder;
  unsigned pages = 0;
  bool is_cut = false;                ///< it was longer than kMostBytes, or took too long
  std::string words;                  ///< why the job would not print; empty when it would
  std::vector<std::string> commands;  ///< of the filter
  std::string text;                   ///< what was put beside it
};

/// Proofs of jobs and trials: a folder each with the printer's job and pictures of its sheets. The
/// last kMostProofs are kept, none through a new start.
class ProofStore {
 public:
  /// @param folder   is emptied.
  /// @param painter  path of rlxproof. @param dumper  path of rlxdump.
  ProofStore(std::string folder, std::string painter, std::string dumper);

  /// @param key  letters, digits and "-".
  std::optional<Proof> find(const std::string& key) const;

  /// Runs the filter on a job, as for printing, within kMostBytes and kMostSeconds.
  /// @param text  is put beside the proof.
  Proof make(const std::string& key, spooler::PrintJob job, const std::string& text);

  /// Draws the sheets of some pages, where that was not done.
  /// @return the sheets, and in `words` why there are none.
  std::vector<Sheet> draw(const Proof& proof, unsigned first, unsigned last,
                          std::string& words) const;

  /// A picture (PNG) that was drawn; nothing when it was not, or is no longer kept.
  static std::optional<std::string> picture(const Proof& proof, const Sheet& sheet);

  /// What rlxdump says, at most kMostDumpBytes of it.
  /// @param is_cut  set when there is more.
  std::string dump(const Proof& proof, bool& is_cut) const;

  static constexpr std::size_t kMostBytes = std::size_t{8} << 20U;
  static constexpr int kMostSeconds = 20;
  static constexpr std::size_t kMostProofs = 24;
  static constexpr std::size_t kMostPictures = 60;  ///< of one proof
  static constexpr std::size_t kMostDumpBytes = 400000;

 private:
  void drop_old() const;

  std::string folder_;
  std::string painter_;
  std::string dumper_;
  mutable std::mutex changing_;  ///< which proofs there are
};

/// A picture's sheet by its name, page-003-2.png. @return false for another name.
bool read_picture_name(const std::string& name, Sheet& sheet);

}  // namespace rlx::printer_app
