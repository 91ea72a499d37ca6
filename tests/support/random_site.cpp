#include "support/random_site.h"

#include <array>
#include <iterator>
#include <string>
#include <vector>

#include "util/sha1.h"

namespace toplist::test {
namespace {

constexpr std::int32_t kFirstId = 101;
constexpr std::uint64_t kFigures = 4;  ///< So few different ones that many trades are equal.

std::string three_digits(int number) {
  const std::string digits = std::to_string(number);
  return std::string(3 - digits.size(), '0') + digits;
}

}  // namespace

RandomSite::RandomSite(std::uint64_t seed) : Site(std::vector<Trade>{}), random_(seed) {
  add_trades();
  const std::array members{kFirstId, kFirstId + 2, kFirstId + 3, kFirstId + 7};
  write("d/gr/g", ctl::encode_group("g", members));
  write("d/tl/vantaig", ctl::encode_harvest_file({.thumbnail_optional = one_in(4) ? "0" : "1"}));
  const int toplists = 1 + number(6);
  for (int i = 0; i < toplists; ++i) add_random_toplist(i);
  if (one_in(4)) break_something();
}

/// Mostly one of few; otherwise such as make ratios that are whole or at their limits.
std::int32_t RandomSite::figure() {
  constexpr std::int32_t kOthers[] = {50,  53,  59,  100,      -1,        -53,
                                      106, 200, 117, 21474837, INT32_MAX, INT32_MIN};
  return one_in(3) ? kOthers[random_.below(std::size(kOthers))] : number(kFigures);
}

/// The 42 figures of a record as no counter writes them. Bytes from \200 on are negative where char
/// is signed.
std::string RandomSite::odd_figures() {
  std::string text;
  for (int i = 0; i < 42; ++i) {
    text += one_of({"99999999999999999999|", "-99999999999999999999|", "2147483648|", "\2407|",
                    "+0053|", "-|", "|"});
  }
  return text;
}

void RandomSite::add_trades() {
  const int trades = one_in(12) ? number(10) : 10 + number(20);
  for (int i = 0; i < trades; ++i) {
    Trade trade{.id = kFirstId + (one_in(20) ? 0 : i),
                .domain = one_of({"t", "t", "t", "\377"}) + three_digits(i) + ".example",
                .status = one_in(8) ? number(3) : 1};
    if (one_in(20)) trade.domain = "twin.example";
    for (PeriodBlock& block : trade.periods) {
      for (const Counter counter : kFileOrder) block.*counter = figure();
      for (std::int32_t& further : block.further) further = figure();
    }
    for (std::string& column : trade.columns) {
      column =
          one_of({"one;two;three", "title", "a;", "", "%%dom_000%%", "caf\303\251;\377\200;z"});
    }
    if (one_in(400)) trade.columns[0] = "100%%";
    add_trade(trade);
    if (one_in(8)) write("d/h/" + trade.domain + ".his", odd_figures() + odd_figures());
    if (one_in(8)) {
      write("d/t/sum", read("d/t/sum") + "sum|" + std::to_string(trade.id) + "|" + odd_figures());
    }
    if (!one_in(5)) write("l/thumbs/" + trade.domain + ".jpg", "");
  }
}

void RandomSite::add_random_toplist(int i) {
  const std::string name = "t" + std::to_string(i);
  write("d/tl/" + name + ".tpl", template_text());
  const std::string check = sha1_file_hex(path("d/tl/" + name + ".tpl"));
  add_definition({.template_name = one_in(25) ? "none.tpl" : name + ".tpl",
                  .output_path = page_path(i),
                  .order_by = one_in(10) ? "junk" : std::to_string(1 + number(60)),
                  .mode = one_of({"1", "1", "2", "2", "2", "3"}),
                  .check = one_in(5) ? "old" : check});
  for (int settings = number(4); settings > 0; --settings) add_setting(name, setting());
}

std::string RandomSite::template_text() {
  std::string text = "<tlxt>%%\nnotes\n</tlxt>\n";
  const int ranks = 5 + number(25);
  for (int i = 0; i < ranks; ++i) {
    const std::string rank = three_digits(i);
    const std::string names[] = {"tid", "tit", "att00",
                                 one_of({"rin60", "cef99", "oddly", "\377\200\351ly"})};
    text += "rank " + std::to_string(i) + ":";
    for (const std::string& name : names) {
      text.append(" %%").append(name).append("_").append(rank).append("%%");
    }
    text += "\351 behind it\n";
  }
  if (one_in(10)) text += one_of({"%%tid_1%% malformed\n", "50%% stray\n", "%%tid_-01%%\r\n"});
  return text;
}

std::string RandomSite::page_path(int i) {
  if (!one_in(8)) return "p" + std::to_string(i) + ".html";
  if (one_in(4)) return path("absolute.html");
  return one_of({"p0.html", "./l/p.html", "none/p.html", "d/gr", "d/tl/t1.tpl", "d/t/sum", ""});
}

std::string RandomSite::setting() {
  const std::string key = one_of({"rin60", "uin60", "out24", "ctg24", "cprod", "tprod", "unknown"});
  return one_in(2) ? key + "=" + std::to_string(number(kFigures))
                   : one_of({"group=g", "group=none", "group=*", "rin60=-1", "no setting",
                             "uin60=9999999999", "cprod=53", "tprod=-2",
                             "skipdomains=t001.example,\377004.example,twin.example",
                             "domains=t000.example, t002.example,t003.example,t005.example"});
}

void RandomSite::break_something() {
  const std::string name =
      one_of({"d/t/index", "d/t/sum", "d/tl/tl", "d/tl/tl.ext", "d/tl/tl.a1", "d/tl/vantaig",
              "d/h/t002.example.his", "d/gr/g", "l/thumbs", "d/tl/t0.tpl"});
  if (name != "l/thumbs" && one_in(2)) {
    const std::string text = read(name);
    write(name, text.substr(0, random_.below(text.size() + 1)));  // cut
  } else {
    remove(name);
  }
}

}  // namespace toplist::test
