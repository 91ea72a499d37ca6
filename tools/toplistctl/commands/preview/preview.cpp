// preview: shows the pages of the next run in a browser, and again after every change.

#include <fmt/core.h>
#include <signal.h>

#include <chrono>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "run/statistics.h"
#include "toplist/definitions.h"
#include "toplistctl/commands.h"
#include "toplistctl/commands/preview/page_maker.h"
#include "toplistctl/commands/preview/server.h"
#include "toplistctl/commands/preview/watch.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  std::string user;
  std::size_t port = 8000;
};

constexpr long kLookNanoseconds = 50'000'000;

/// Looks for changes and publishes what comes of them.
class Preview {
 public:
  explicit Preview(const Arguments& arguments) : arguments_(arguments) {}

  Expected<int> run() {
    // Signals are taken only where this waits for them. Other threads inherit the mask.
    sigset_t ends;
    ::sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&ends, signal);
    ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);

    const auto port = server_.listen(static_cast<std::uint16_t>(arguments_.port));
    if (!port) return tl::unexpected(port.error());
    for (const char* path : {kTradesPath, kSumPath, kExtraColumnsPath}) figures_.add(path);
    publish();
    server_.start();
    if (print(fmt::format("http://127.0.0.1:{}/\n", *port)) != 0) return kExitTrouble;
    const timespec pause{.tv_sec = 0, .tv_nsec = kLookNanoseconds};
    while (::sigtimedwait(&ends, nullptr, &pause) < 0) {
      const bool new_design = design_.has_changed();
      if (!figures_.has_changed() && !new_design) continue;
      if (new_design) ++design_number_;
      publish();
    }
    server_.stop();
    return 0;
  }

 private:
  void publish() {
    auto next = std::make_shared<Published>();
    next->snapshot = make_snapshot(arguments_.site, now_ ? now_->snapshot : Snapshot());
    for (const std::string& path : next->snapshot.inputs) design_.add(path);
    next->revision = fmt::format("{}.{}", start_, ++revision_);
    Members state = next->snapshot.state;
    state.emplace_back("revision", next->revision);
    state.emplace_back("design", fmt::format("{}.{}", start_, design_number_));
    next->state = json_text(Value(std::move(state)));
    now_ = next;
    server_.publish(std::move(next));
  }

  const Arguments& arguments_;
  Watch design_;   ///< files whose changes reload the page
  Watch figures_;  ///< files whose changes are shown when it is reloaded
  PreviewServer server_{design_};
  std::shared_ptr<const Published> now_;
  std::int64_t start_ = std::chrono::system_clock::now().time_since_epoch().count();
  std::size_t revision_ = 0;
  std::size_t design_number_ = 0;
};

Expected<int> preview(const Arguments& arguments) {
  if (arguments.port > std::numeric_limits<std::uint16_t>::max()) {
    return failure(fmt::format("--port: {} is no port. Ports end at 65535.", arguments.port));
  }
  return enter_site_and_say_so(arguments.site, arguments.user)
      .and_then([] { return read_file(kDefinitionsPath); })
      .and_then([&](const std::string&) { return Preview(arguments).run(); });
}

}  // namespace

void add_preview_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("preview", "Show the next run's pages in a browser, after every change");
  command.footer(
      "The site is only read. Only browsers of this machine are served. Ctrl-C ends the preview.\n"
      "Exit status: 0 ended by Ctrl-C, 2 could not start.\n"
      "Example:\n"
      "  toplistctl preview --port 8080");
  add_site_option(command, arguments->site);
  add_user_option(command, arguments->user);
  command.number("--port", "N", arguments->port, 0,
                 "The port at 127.0.0.1; 0 picks a free one; 8000 if not given");
  command.run([arguments] { return preview(*arguments); });
}

}  // namespace toplist::ctl
