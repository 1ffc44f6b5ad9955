#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "rlx-printer-app/journal.h"
#include "running/cancellation.h"

namespace rlx::printer_app {

/// Tells the journal of each document that was written to its end in the spool folder. PAPPL has no
/// call for that moment; the kernel tells when a file that was written is closed. The mark is made
/// at once, the note, which takes the disk's time, by a thread of its own.
class SpoolWatch {
 public:
  /// @param journal  must stay as long as this lives.
  /// @throws std::system_error when the folder cannot be watched.
  SpoolWatch(const std::string& folder, Journal& journal);
  ~SpoolWatch();
  SpoolWatch(const SpoolWatch&) = delete;
  SpoolWatch& operator=(const SpoolWatch&) = delete;

 private:
  struct Document {
    std::string path;
    int printer_id = 0;
    int job_id = 0;
  };

  void watch();
  void mark(const std::string& name);
  void note();

  std::string folder_;
  Journal& journal_;
  spooler::Descriptor events_;
  spooler::Cancellation done_;
  std::mutex changing_;
  std::condition_variable marked_;
  std::deque<Document> documents_;  ///< marked, not noted yet
  bool ended_ = false;
  std::thread watching_;
  std::thread noting_;
};

/// Finds the documents of jobs whose notes know of none yet: the server was killed between. They
/// are not marked as complete.
void find_documents(const std::string& folder, std::vector<JournalEntry>& entries);

/// The job of a document, by the name that PAPPL gives it (p00001j000000001-NAME.EXTENSION).
/// @return false for another file.
bool read_document_name(const std::string& name, int& printer_id, int& job_id);

}  // namespace rlx::printer_app
