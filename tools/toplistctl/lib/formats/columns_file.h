#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace toplist::ctl {

/// How many of a trade's extra columns a tag can name: three and "att00" to "att99".
inline constexpr std::size_t kNamedColumns = 103;

/// The columns that every site has, even if it does not use them: title, description, picture.
inline constexpr std::size_t kUsualColumns = 3;

/// The names of the extra columns: title, description, picture, att00 to att99.
std::string column_name(std::size_t index);
std::optional<std::size_t> column_index(std::string_view name);

/// The extra columns of one domain. Missing ones at the end and empty ones are the same to a page.
using Columns = std::vector<std::string_view>;
bool same_columns(const Columns& a, const Columns& b);

/// A domain and its extra columns.
using DomainColumns = std::pair<std::string_view, Columns>;

/// The file "d/tl/tl.a1", for reading and rewriting. It is a view into its text.
class ColumnsFile {
 public:
  explicit ColumnsFile(std::string_view text);

  /// All columns of the domain as a run attaches them: those of all its lines, in order.
  [[nodiscard]] const Columns& of(std::string_view domain) const;

  /// Columns of a line, or of the domain that has most.
  [[nodiscard]] std::size_t width() const { return width_; }

  /// The text with these columns for these domains, each given once. It is unchanged if they
  /// already have them. An empty text gets a header of `new_columns` columns.
  ///
  /// Otherwise lines of the file keep their order and their unread first field. Lines of the same
  /// domain become one. Domains without a line follow in the given order, if they have a column.
  /// Lines of other domains stay. The header stays, and grows if there are more columns.
  ///
  /// Lines of the domain `left` are removed.
  [[nodiscard]] std::string with(const std::vector<DomainColumns>& wanted, std::size_t new_columns,
                                 std::string_view left = {}) const;

 private:
  struct Line {
    std::string_view lead;  ///< the text before the domain: a line break, a field, "|"
    std::string_view domain;
  };

  std::string_view text_;
  std::string_view header_;  ///< up to its last "|"; empty when it is too short for a column
  std::size_t header_columns_ = 0;
  std::vector<Line> lines_;  ///< the first of each domain
  std::string_view tail_;    ///< the text after the last complete line
  std::unordered_map<std::string_view, Columns> columns_;
  std::size_t width_ = 0;
};

}  // namespace toplist::ctl
