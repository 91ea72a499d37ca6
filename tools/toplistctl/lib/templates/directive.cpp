#include "toplistctl/lib/templates/directive.h"

#include <algorithm>
#include <array>

#include "util/fields.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

constexpr std::string_view kCommentEnd = "-->";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kBlanksAndReturn = " \t\r";
constexpr std::size_t kRankDigits = 3;

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// One to three digits; nothing for anything else.
std::optional<int> rank_of(std::string_view text) {
  if (text.empty() || text.size() > kRankDigits) return std::nullopt;
  if (!std::all_of(text.begin(), text.end(), is_digit)) return std::nullopt;
  return parse_int32(text);
}

/// Each of these reads what stands behind the directive's words; false when it is not as meant.
bool read_file(std::string_view rest, Directive& directive) {
  directive.file = rest;
  return !rest.empty();
}

bool read_ranks(std::string_view rest, Directive& directive) {
  const std::size_t hyphen = std::min(rest.find('-'), rest.size());
  const auto first = rank_of(rest.substr(0, hyphen));
  const auto last = rank_of(rest.substr(std::min(hyphen + 1, rest.size())));
  if (!first || !last || *first > *last) return false;
  directive.first = *first;
  directive.last = *last;
  return true;
}

bool read_nothing(std::string_view rest, Directive& /*directive*/) { return rest.empty(); }

struct Form {
  std::string_view front;  ///< whatever begins with it is meant as this directive
  Directive::Kind kind;
  bool (*read_rest)(std::string_view rest, Directive& directive);
  const char* advice;
};
constexpr std::array<Form, 3> kForms{{
    {"<!-- include", Directive::Kind::include, read_file, "write \"<!-- include FILE -->\""},
    {"<!-- repeat", Directive::Kind::repeat, read_ranks,
     "write \"<!-- repeat FIRST-LAST -->\" with ranks from 0 to 999, the lower one first"},
    {"<!-- end repeat", Directive::Kind::end_repeat, read_nothing, "write \"<!-- end repeat -->\""},
}};

/// nullptr when the text begins with no directive.
const Form* form_of(std::string_view text) {
  const auto form = std::find_if(kForms.begin(), kForms.end(),
                                 [text](const Form& f) { return text.starts_with(f.front); });
  return form == kForms.end() ? nullptr : &*form;
}

/// Reads a comment from its "<!--" on, up to the end of its line.
Directive read_directive(const Form& form, std::string_view comment) {
  Directive directive{.kind = form.kind, .file = {}, .error = {}};
  comment = comment.substr(0, comment.find_last_not_of(kBlanksAndReturn) + 1);
  if (comment.find(kCommentEnd) != comment.size() - kCommentEnd.size()) {
    directive.error = std::string("a directive stands alone on its line: ") + form.advice;
    return directive;
  }
  comment.remove_suffix(kCommentEnd.size());
  const std::string_view rest = comment.substr(form.front.size());
  const bool word_ends = rest.empty() || kBlanks.find(rest.front()) != std::string_view::npos;
  if (!word_ends || !form.read_rest(trimmed(rest), directive)) {
    directive.error = std::string("no such directive: ") + form.advice;
  }
  return directive;
}

DirectiveLine read_line(const Form& form, std::string_view text, std::size_t comment) {
  const std::size_t before =
      comment == 0 ? std::string_view::npos : text.rfind(kLineSeparator, comment - 1);
  const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
  const std::size_t feed = std::min(text.find(kLineSeparator, comment), text.size());
  DirectiveLine line{begin, comment, std::min(feed + 1, text.size()),
                     read_directive(form, text.substr(comment, feed - comment))};
  if (!trimmed(text.substr(begin, comment - begin)).empty() && line.directive.error.empty()) {
    line.directive.error = std::string("a directive stands alone on its line: ") + form.advice;
  }
  return line;
}

}  // namespace

std::optional<DirectiveLine> next_directive(std::string_view text, std::size_t from) {
  // "!" is rare in a page and "<" is not: a search for the former runs at the speed of memory.
  constexpr std::string_view kNeedle = "!-- ";
  for (std::size_t at = from;; ++at) {
    at = text.find(kNeedle, at);
    if (at == std::string_view::npos) return std::nullopt;
    if (at == from) continue;  // no "<" in front of it on its line
    if (const Form* form = form_of(text.substr(at - 1))) return read_line(*form, text, at - 1);
  }
}

}  // namespace toplist::ctl
