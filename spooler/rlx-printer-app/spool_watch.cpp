#include "rlx-printer-app/spool_watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "mapping/words.h"

namespace rlx::printer_app {

SpoolWatch::SpoolWatch(const std::string& folder, Journal& journal)
    : folder_(folder), journal_(journal), events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  if (!events_.is_open() ||
      inotify_add_watch(events_.number(), folder.c_str(), IN_CLOSE_WRITE) < 0) {
    throw std::system_error(errno, std::generic_category(), folder);
  }
  noting_ = std::thread([this] { note(); });
  watching_ = std::thread([this] { watch(); });
}

SpoolWatch::~SpoolWatch() {
  done_.ask();
  watching_.join();
  {
    const std::lock_guard lock(changing_);
    ended_ = true;
  }
  marked_.notify_all();
  noting_.join();
}

void SpoolWatch::watch() {
  alignas(inotify_event) std::array<char, 65536> events{};
  while (done_.wait_for(events_.number(), POLLIN)) {
    const ssize_t count = read(events_.number(), events.data(), events.size());
    for (ssize_t at = 0; at < count;) {
      inotify_event event{};
      std::memcpy(&event, events.data() + at, sizeof(event));
      if (event.len > 0) {
        mark(events.data() + at + sizeof(event));
      }
      at += static_cast<ssize_t>(sizeof(event) + event.len);
    }
  }
}

void SpoolWatch::mark(const std::string& name) {
  Document document{folder_ + '/' + name};
  if (!read_document_name(name, document.printer_id, document.job_id)) {
    return;
  }
  journal_.mark_complete(document.printer_id, document.job_id);
  {
    const std::lock_guard lock(changing_);
    documents_.push_back(document);
  }
  marked_.notify_all();
}

void SpoolWatch::note() {
  std::unique_lock lock(changing_);
  for (;;) {
    marked_.wait(lock, [this] { return ended_ || !documents_.empty(); });
    if (documents_.empty()) {
      return;
    }
    const Document document = std::move(documents_.front());
    documents_.pop_front();
    lock.unlock();
    journal_.note_complete(document.printer_id, document.job_id, document.path);
    lock.lock();
  }
}

void find_documents(const std::string& folder, std::vector<JournalEntry>& entries) {
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    int printer_id = 0;
    int job_id = 0;
    if (!read_document_name(file.path().filename(), printer_id, job_id)) {
      continue;
    }
    for (JournalEntry& entry : entries) {
      if (entry.printer_id == printer_id && entry.job_id == job_id && entry.document.empty()) {
        entry.document = file.path();
      }
    }
  }
}

bool read_document_name(const std::string& name, int& printer_id, int& job_id) {
  constexpr unsigned kMostPrinter = 99999;
  constexpr unsigned kMostJob = 999999999;
  const std::size_t job = name.find('j');
  const std::size_t end = name.find('-');
  // Attributes of jobs stand beside the documents.
  if (!name.starts_with('p') || job == std::string::npos || end == std::string::npos || end < job ||
      name.ends_with(".ipp")) {
    return false;
  }
  const std::string_view text(name);
  const auto printer_number = spooler::whole_number(text.substr(1, job - 1), kMostPrinter);
  const auto job_number = spooler::whole_number(text.substr(job + 1, end - job - 1), kMostJob);
  printer_id = static_cast<int>(printer_number.value_or(0));
  job_id = static_cast<int>(job_number.value_or(0));
  return printer_number && job_number;
}

}  // namespace rlx::printer_app
