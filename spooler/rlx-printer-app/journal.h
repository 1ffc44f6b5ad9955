#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace rlx::printer_app {

/// What is noted of a job that was taken in.
struct JournalEntry {
  int printer_id = 0;
  int job_id = 0;
  std::string name;
  std::string user;
  std::string format;
  long long created = 0;  ///< seconds since 1970
  bool complete = false;  ///< its document was written to the end
  std::string document;   ///< path; empty when there is none yet
  bool held = false;      ///< by an operator, or by whoever submitted it
  int ended = 0;          ///< 0, or the state in which it ended (IPP: 7 to 9)
};

/// Notes of jobs that a crash does not take away: a small file for each job that has not ended, put
/// in place by a rename after it was written to the disk.
///
/// A job is noted when it is created, before the client hears of it, and again when its document is
/// complete. The second note comes after the document's end, in two steps: at once a mark, which
/// the death of the server does not take away, and behind it the note on the disk, which a power
/// cut does not take away either. So for some hundred microseconds a job may be accepted and only
/// noted as created; after a crash in that time it is held, for nobody can tell whether its
/// document is whole.
class Journal {
 public:
  /// @param folder  is made if it is not there.
  /// @throws std::runtime_error when it cannot be used.
  explicit Journal(std::string folder);

  /// Where a job's attributes are kept, for the caller to write: goes with the job's note.
  std::string attributes_path(int printer_id, int job_id) const;

  /// Notes a job, anew if it was noted before. @return false, with errno, when it could not be.
  bool note(const JournalEntry& entry) const;
  /// Marks that a document is complete, without the disk's time; note_complete() is to follow.
  bool mark_complete(int printer_id, int job_id) const;
  /// Notes that a document is complete. Does nothing for a job that is not noted.
  bool note_complete(int printer_id, int job_id, const std::string& document) const;
  /// Notes that somebody has held or released a job. Does nothing for a job that is not noted.
  bool note_held(int printer_id, int job_id, bool held) const;
  /// Notes that a job has ended, until forget_ended(). Does nothing for a job that is not noted.
  bool note_ended(int printer_id, int job_id, int state) const;

  /// All notes and marks, in the order of printers and jobs. What cannot be read is left out.
  std::vector<JournalEntry> entries() const;
  /// Takes the notes of ended jobs away: their end is in the state file now.
  /// @param ended  the entries that were there before it was written.
  void forget_ended(const std::vector<JournalEntry>& ended) const;
  /// Takes the notes of a printer's jobs away: it was deleted.
  void forget_printer(int printer_id) const;

 private:
  template <typename Change>
  bool change(int printer_id, int job_id, Change apply) const;
  std::string path_of(int printer_id, int job_id, const char* extension = ".json") const;

  std::string folder_;
  mutable std::mutex changing_;  ///< a note that is read and written anew
};

/// Writes a file aside, to the disk, and puts it in place by a rename.
/// @return false, with errno, when it could not; the old file is there then.
bool put_in_place(const std::string& path, const std::string& text);

/// Gives PAPPL the attributes of the jobs that go on after a crash: copies them to where it looks
/// for them, beside the documents. It has files there itself, and empties them when it saves its
/// state a second time.
void restore_attributes(const Journal& journal, const std::vector<JournalEntry>& entries);

/// Puts the text of a state file, as PAPPL writes it, into the shape in which its jobs go on after
/// a crash, by what the journal says of them: a complete one waits to be printed, one that somebody
/// has held or whose document may be cut is held, one that has ended has, and one without a note or
/// a document is gone. The printers' next job numbers are behind all of them. Everything else
/// stays.
std::string restorable_state(const std::string& state, const std::vector<JournalEntry>& entries);

}  // namespace rlx::printer_app
