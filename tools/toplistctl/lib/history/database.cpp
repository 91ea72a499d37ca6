#include "toplistctl/lib/history/database.h"

#include <fmt/core.h>

#include <system_error>
#include <utility>

namespace toplist::ctl {
namespace {

/// What a result code of SQLite means for whoever has to do something about it.
struct Cause {
  int code;
  std::string_view reason;
  std::string_view advice;
};

constexpr std::string_view kDamageAdvice =
    "Move the file away, or restore a copy of it. The next \"toplistctl record\" starts a new one.";

/// Extended codes come before the primary code that they belong to.
constexpr Cause kCauses[] = {
    {SQLITE_READONLY_ROLLBACK, "an interrupted recording has to be undone first",
     "Run \"toplistctl record\"."},
    {SQLITE_BUSY, "another program has kept it locked for 10 seconds", "Try again later."},
    {SQLITE_CORRUPT, "the file is damaged", kDamageAdvice},
    {SQLITE_NOTADB, "the file is damaged, or no SQLite database", kDamageAdvice},
    {SQLITE_FULL, "no space left on the device", "Free some space, then try again."},
};

const Cause* cause_of(int extended) {
  for (const Cause& cause : kCauses) {
    if (cause.code == extended || cause.code == (extended & 0xFF)) return &cause;
  }
  return nullptr;
}

}  // namespace

Expected<std::unique_ptr<Database>> Database::open(const std::string& path, const Access& access) {
  std::unique_ptr<Database> database(new Database(path, access));
  sqlite3* handle = nullptr;
  const int opened = ::sqlite3_open_v2(path.c_str(), &handle, access.flags, nullptr);
  database->handle_.reset(handle);
  if (opened != SQLITE_OK) return database->last_error();
  ::sqlite3_busy_timeout(handle, kBusySeconds * 1000);
  return database;
}

Expected<void> Database::execute(const std::string& sql) const {
  const int result = ::sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) return last_error();
  return {};
}

Expected<Statement> Database::prepare(const std::string& sql) const {
  sqlite3_stmt* handle = nullptr;
  const int result = ::sqlite3_prepare_v2(handle_.get(), sql.data(), static_cast<int>(sql.size()),
                                          &handle, nullptr);
  if (result != SQLITE_OK) return last_error();
  return Statement(*this, handle);
}

tl::unexpected<Error> Database::last_error() const {
  const int code = ::sqlite3_extended_errcode(handle_.get());
  if (const Cause* cause = cause_of(code)) return refuse(cause->reason, cause->advice);
  const int system_code = ::sqlite3_system_errno(handle_.get());
  const bool has_system_code =
      system_code != 0 && ((code & 0xFF) == SQLITE_IOERR || (code & 0xFF) == SQLITE_CANTOPEN);
  return refuse(has_system_code ? std::generic_category().message(system_code)
                                : ::sqlite3_errmsg(handle_.get()),
                "");
}

tl::unexpected<Error> Database::refuse(std::string_view reason, std::string_view advice) const {
  return failure(fmt::format("{} {}: {}. {}{}{}", access_.tried, path_, reason, access_.consequence,
                             advice.empty() ? "" : " ", advice));
}

void Statement::bind(int parameter, const std::string& text) {
  ::sqlite3_bind_text(handle_.get(), parameter, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
}

std::string Statement::text(int column) const {
  const auto* const bytes = ::sqlite3_column_text(handle_.get(), column);
  if (bytes == nullptr) return {};
  return {bytes, bytes + ::sqlite3_column_bytes(handle_.get(), column)};
}

Expected<bool> Statement::step() {
  const int result = ::sqlite3_step(handle_.get());
  if (result == SQLITE_ROW) return true;
  if (result != SQLITE_DONE) return database_->last_error();
  ::sqlite3_reset(handle_.get());
  return false;
}

}  // namespace toplist::ctl
