#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "toplistctl/lib/report/site_report.h"

/// Pieces of the report's page.
namespace toplist::ctl {

/// Text of others as HTML, also for attributes in double quotes: UTF-8 without control characters,
/// and no longer than what a person reads.
std::string html_text(std::string_view text);

/// A text of HTML, such as a title, with its entities as the characters that they stand for.
std::string decoded(std::string_view html);

std::string base64(std::string_view bytes);

/// With commas, and a minus sign.
std::string number_text(std::int64_t number);

/// The local time in a format of strftime().
std::string time_text(std::int64_t time, const char* format);

/// A line chart of visitors in and out, with a text alternative. `id` is unique in the page;
/// `what` is its title, and `unit` that of the figures, such as "visitors an hour".
std::string chart(const Series& series, std::string_view id, std::string_view what,
                  std::string_view unit);

/// A small line of the visitors in.
std::string sparkline(const Series& series);

/// Two bars on a scale from 0 to `most`.
std::string bars(const Traffic& traffic, std::int64_t most);

}  // namespace toplist::ctl
