#include "toplistctl/commands/check/check.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <filesystem>

#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

using Check = void (*)(const SiteView&, Diagnostics&);

constexpr Check kChecks[] = {
    check_trades,    check_configuration, check_columns,      check_histories,
    check_sum,       check_definitions,   check_pages,        check_settings,
    check_templates, check_sources,       check_unused_files,
};

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool is_there(const char* path) {
  std::error_code error;
  return std::filesystem::symlink_status(path, error).type() !=
         std::filesystem::file_type::not_found;
}

}  // namespace

Diagnostics check_site(const SiteView& site, std::string_view program_path) {
  Diagnostics findings;
  if (std::none_of(kNeededFiles.begin(), kNeededFiles.end(), is_there)) {
    add(findings, kinds::kNoSite, {.file = "."}, "this folder has no file that a run needs");
  }
  for (const Check check : kChecks) check(site, findings);
  check_harvest(site, program_path, findings);
  return findings;
}

std::optional<std::string> read_input(const std::string& path, const Kind& missing,
                                      Diagnostics& findings) {
  Expected<std::string> text = read_file(path);
  if (!text) {
    Error why = text.error();
    why.path.clear();  // the finding's place names it
    add(findings, why.code == 0 ? kinds::kUnusableFile : missing, {.file = path}, "{}", why.text());
    return std::nullopt;
  }
  if (text->starts_with(kByteOrderMark)) {
    add(findings, kinds::kByteOrderMark, {.file = path, .line = 1},
        "the file begins with a UTF-8 byte order mark");
  }
  return std::move(*text);
}

bool check_fields(const Kind& kind, const std::string& path, std::string_view text,
                  std::size_t size, Diagnostics& findings, LineBreaks breaks) {
  FieldReader fields(without_end_blanks(text));
  std::size_t in_record = 0, line = 1, in_line = 0;
  for (std::string_view field; fields.next(field);) {
    const auto feeds = std::count(field.begin(), field.end(), kLineSeparator);
    if (feeds > 0) {
      if (in_record != 0 && breaks == LineBreaks::between_records) break;
      line += static_cast<std::size_t>(feeds);
      in_line = 0;
    }
    ++in_line;
    in_record = (in_record + 1) % size;
  }
  if (in_record == 0) return true;
  if (breaks == LineBreaks::anywhere) {
    add(findings, kind, {.file = path, .line = line}, "the last record is incomplete");
  } else {
    add(findings, kind, {.file = path, .line = line}, "the line has {}, not {}",
        count_of(in_line, "field"), size);
  }
  return false;
}

void check_none_has(const Kind& kind, const std::string& file, std::size_t lacking,
                    const SiteView& site, Diagnostics& findings) {
  const std::size_t active = site.run.rows.size();
  if (lacking < active || active < 2) return;
  add(findings, kind, {.file = file}, "nothing for any of the {} active trades", grouped(active));
}

std::optional<std::int64_t> whole_number(std::string_view field) {
  while (!field.empty() && is_blank(field.front())) field.remove_prefix(1);
  while (!field.empty() && is_blank(field.back())) field.remove_suffix(1);
  if (field.starts_with('+')) field.remove_prefix(1);
  std::int64_t number = 0;
  const char* const end = field.data() + field.size();
  const auto parsed = std::from_chars(field.data(), end, number);
  if (parsed.ec == std::errc::invalid_argument || parsed.ptr != end) return std::nullopt;
  if (parsed.ec == std::errc::result_out_of_range) return field[0] == '-' ? INT64_MIN : INT64_MAX;
  return number;
}

std::string_view without_end_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

bool holds_markup(std::string_view text) {
  for (std::size_t at = text.find('<'); at < text.size(); at = text.find('<', at + 1)) {
    const std::string_view next = text.substr(at + 1, 1);
    if (next.empty()) return false;
    if (std::isalpha(static_cast<unsigned char>(next[0])) != 0 || contains("/!?", next)) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> files_in(std::string_view folder, std::string_view suffix) {
  std::vector<std::string> files;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
    const bool is_meant = entry.path().string().ends_with(suffix);
    if (is_meant && entry.is_regular_file(ignored)) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace toplist::ctl
