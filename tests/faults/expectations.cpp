#include "faults/expectations.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace rlx::testing {

namespace {

using enum JobKind;
using enum When;
using enum OutputRule;

const JobKinds kAll{plain, form, framed, sequences, conditions, pass_through};
const JobKinds kUnframed{plain, form, sequences, conditions, pass_through};
const JobKinds kWithForm{form, conditions};

/// A transfer that meets one of these is tried again, after a poll with EAGAIN.
const std::vector<int> kPassing{EINTR, EAGAIN};
const std::vector<int> kReadErrors{EIO, ECONNRESET, EISDIR, EBADF, EINVAL, ENOMEM, ETIMEDOUT};
/// 0 is a write that takes nothing. The system's text says EIO then.
const std::vector<int> kWriteErrors{EIO, ENOSPC, EPIPE, EBADF, EFBIG, EDQUOT, EINVAL, ENOMEM, 0};
const std::vector<int> kCloseErrors{EIO, ENOSPC, EDQUOT, EBADF};
const std::vector<int> kPathErrors{EACCES, ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG, ENOMEM, EIO};
const std::vector<int> kOpenErrors{EACCES, ENOENT, EMFILE, ENFILE, ELOOP,
                                   ENXIO,  ENOMEM, EIO,    EPERM};
const std::vector<int> kFstatErrors{EIO, EBADF, ENOMEM, EOVERFLOW};

constexpr const char* kNoMessage = "";
constexpr const char* kSystemError = "filter: %m\n";
constexpr const char* kWriteError = "write error";

std::vector<int> without(std::vector<int> errors, int error) {
  std::erase(errors, error);
  return errors;
}

const std::vector<Expectation> kTable{
    // Standard input. A read error ends the job: what is gathered is still written. The copy behind
    // command 520 has no status.
    {kAll, Call::read, Role::input, always, kPassing, 0, kNoMessage, same},
    {kUnframed, Call::read, Role::input, in_job, kReadErrors, 129, kSystemError, ended},
    {{framed}, Call::read, Role::input, in_job, kReadErrors, 129, kNoMessage, ended},
    {{pass_through}, Call::read, Role::input, in_copy, kReadErrors, 0, kSystemError, prefix},

    // Standard output. Nothing can be saved, so nothing is tried.
    {kAll, Call::write, Role::output, always, kPassing, 0, kNoMessage, same},
    {kUnframed, Call::write, Role::output, in_job, kWriteErrors, 1, kWriteError, prefix},
    {{framed}, Call::write, Role::output, in_job, kWriteErrors, 1, kNoMessage, prefix},
    {{pass_through}, Call::write, Role::output, in_copy, kWriteErrors, 0, kSystemError, prefix},
    // Some systems tell only at the close that what they took did not arrive.
    {kAll, Call::close, Role::output, always, kCloseErrors, 1, kWriteError, same},
    {kAll, Call::close, Role::output, always, {EINTR}, 0, kNoMessage, same},

    // Whether input is ready, and how much a pipe holds, only tells when output leaves.
    {kAll, Call::poll_now, Role::input, always, {EINTR, ENOMEM, EINVAL}, 0, kNoMessage, same},
    {kAll, Call::fcntl, Role::input, always, {EPERM, EBUSY, EBADF, EINVAL}, 0, kNoMessage, same},
    {kAll, Call::fcntl, Role::output, always, {EPERM, EBUSY, EBADF, EINVAL}, 0, kNoMessage, same},
    // The two page buffers.
    {kAll, Call::malloc, Role::none, always, {ENOMEM}, 1, kNoMessage, nothing},

    // A form: of -n before anything is written, of a record behind the pages before it.
    {{form}, Call::stat, Role::form, always, kPathErrors, 1, kFormError, nothing},
    {{form}, Call::open, Role::form, always, kOpenErrors, 1, kFormError, nothing},
    {{form}, Call::fstat, Role::form, always, kFstatErrors, 1, kFormError, nothing},
    {{form}, Call::read, Role::form, always, kReadErrors, 1, kFormError, nothing},
    {{conditions}, Call::stat, Role::form, always, kPathErrors, 1, kFormError, ended},
    {{conditions}, Call::open, Role::form, always, kOpenErrors, 1, kFormError, ended},
    {{conditions}, Call::fstat, Role::form, always, kFstatErrors, 1, kFormError, ended},
    {{conditions}, Call::read, Role::form, always, kReadErrors, 1, kFormError, ended},
    {kWithForm, Call::open, Role::form, always, {EINTR}, 0, kNoMessage, same},
    {kWithForm, Call::read, Role::form, always, {EINTR}, 0, kNoMessage, same},
    {kWithForm, Call::close, Role::form, always, {EIO, EINTR}, 0, kNoMessage, same},

    // The environment file counts as absent, or as ended where it cannot be read on.
    {kWithForm, Call::stat, Role::environment, always, kPathErrors, 0, kNoMessage, rounded_up},
    {kWithForm, Call::open, Role::environment, always, kOpenErrors, 0, kNoMessage, rounded_up},
    {kWithForm, Call::fstat, Role::environment, always, kFstatErrors, 0, kNoMessage, rounded_up},
    {kWithForm, Call::read, Role::environment, first, kReadErrors, 0, kNoMessage, rounded_up},
    {kWithForm, Call::read, Role::environment, later, kReadErrors, 0, kNoMessage, rounded_either},
    {kWithForm, Call::open, Role::environment, always, {EINTR}, 0, kNoMessage, same},
    {kWithForm, Call::read, Role::environment, always, {EINTR}, 0, kNoMessage, same},
    {kWithForm, Call::close, Role::environment, always, {EIO, EINTR}, 0, kNoMessage, same},

    // The range of user-defined characters. Every job looks for it; here only the job with a form
    // finds it. Only a file that is not there is no range; one that
    // goes away between two looks is an error.
    {kAll, Call::stat, Role::g1_range, first, {ENOENT}, 0, kNoMessage, same},
    {kAll, Call::stat, Role::g1_range, always, without(kPathErrors, ENOENT), 1, kG1Error, nothing},
    {kAll, Call::open, Role::g1_range, always, kOpenErrors, 1, kG1Error, nothing},
    {kAll, Call::fstat, Role::g1_range, always, kFstatErrors, 1, kG1Error, nothing},
    {kAll, Call::read, Role::g1_range, always, kReadErrors, 1, kG1Error, nothing},
    {kAll, Call::open, Role::g1_range, always, {EINTR}, 0, kNoMessage, same},
    {kAll, Call::read, Role::g1_range, always, {EINTR}, 0, kNoMessage, same},
    {kAll, Call::close, Role::g1_range, always, {EIO, EINTR}, 0, kNoMessage, same},

    // The font library: without it user-defined characters are undefined, and these jobs have none.
    {kAll, Call::stat, Role::font_library, always, kPathErrors, 0, kNoMessage, same},
    {kAll, Call::dlopen, Role::none, always, {ENOENT, ENOMEM}, 0, kNoMessage, same},
    {kAll, Call::dlsym, Role::none, always, {ENOENT}, 0, kNoMessage, same},
    {kAll, Call::dlclose, Role::none, always, {EINVAL}, 0, kNoMessage, same},
    {kAll, Call::putenv, Role::none, always, {ENOMEM}, 0, kNoMessage, same},
};

bool contains(const auto& all, auto one) {
  return std::ranges::find(all, one) != all.end();
}

bool is_about(const Expectation& row, JobKind kind, Call call, Role role) {
  return row.call == call && row.role == role && contains(row.jobs, kind);
}

}  // namespace

std::vector<Expectation> expectations_for(JobKind kind, Call call, Role role) {
  std::vector<Expectation> rows = kTable;
  std::erase_if(rows, [=](const Expectation& row) { return !is_about(row, kind, call, role); });
  return rows;
}

std::string message_of(const Expectation& expectation, int error) {
  std::string message = expectation.message;
  if (const std::size_t place = message.find("%m"); place != std::string::npos) {
    message.replace(place, 2, std::strerror(error == 0 ? EIO : error));
  }
  return message;
}

}  // namespace rlx::testing
