#pragma once

#include <sqlite3.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"

/// SQLite with this program's errors. Only the .cpp files of this folder include it.
namespace toplist::ctl {

/// What an open file is for, and how its errors begin and end: "cannot record in FILE: REASON.
/// CONSEQUENCE ADVICE".
struct Access {
  int flags;  ///< of sqlite3_open_v2()
  std::string_view tried;
  std::string_view consequence;  ///< such as "Nothing was recorded."
};

/// How long to wait for other programs that use the database.
inline constexpr int kBusySeconds = 10;

class Database;

/// A prepared statement. Its database must outlive it. Parameters are numbered from 1, columns
/// from 0.
class Statement {
 public:
  void bind(int parameter, std::integral auto value) {
    ::sqlite3_bind_int64(handle_.get(), parameter, value);
  }
  /// The text must live until the statement has run.
  void bind(int parameter, const std::string& text);

  template <typename T = std::int64_t>
  [[nodiscard]] T number(int column) const {
    return static_cast<T>(::sqlite3_column_int64(handle_.get(), column));
  }
  [[nodiscard]] std::string text(int column) const;

  /// The next row; false when there is none. Then the statement can run again.
  Expected<bool> step();

 private:
  friend class Database;
  struct Finalize {
    void operator()(sqlite3_stmt* handle) const { ::sqlite3_finalize(handle); }
  };
  Statement(const Database& database, sqlite3_stmt* handle)
      : database_(&database), handle_(handle) {}
  const Database* database_;
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

/// An open database file. What a transaction has not committed is undone when it closes.
class Database {
 public:
  static Expected<std::unique_ptr<Database>> open(const std::string& path, const Access& access);

  /// Runs statements for no rows.
  Expected<void> execute(const std::string& sql) const;
  [[nodiscard]] Expected<Statement> prepare(const std::string& sql) const;

  /// What `read` returns at each row that the query gives for these values of its parameters.
  template <typename Read, typename... Values>
  auto query(const std::string& sql, const Read& read, const Values&... values) const
      -> Expected<std::vector<std::invoke_result_t<Read, const Statement&>>> {
    auto statement = prepare(sql);
    if (!statement) return tl::unexpected(statement.error());
    int parameter = 0;
    (statement->bind(++parameter, values), ...);
    std::vector<std::invoke_result_t<Read, const Statement&>> result;
    for (;;) {
      const Expected<bool> row = statement->step();
      if (!row) return tl::unexpected(row.error());
      if (!*row) return result;
      result.push_back(read(*statement));
    }
  }

  [[nodiscard]] std::int64_t last_id() const { return ::sqlite3_last_insert_rowid(handle_.get()); }

  /// Why the last call failed.
  [[nodiscard]] tl::unexpected<Error> last_error() const;
  /// That the database is not usable, in words.
  [[nodiscard]] tl::unexpected<Error> refuse(std::string_view reason,
                                             std::string_view advice) const;

 private:
  Database(std::string path, const Access& access) : path_(std::move(path)), access_(access) {}

  struct Close {
    void operator()(sqlite3* handle) const { ::sqlite3_close(handle); }
  };
  std::string path_;
  Access access_;
  std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace toplist::ctl
