#include "run/run_driver.h"

#include "harvest/harvest.h"
#include "run/steps.h"
#include "run/sys_log.h"
#include "util/file.h"

namespace toplist {
namespace {

/// Does what a run does, in the site.
class SiteOutcomes final : public Outcomes {
 public:
  void log(const Failure& failure) override { log_failure(failure); }
  void unopened_folder(const std::string& folder) override { write_dir_error_page(folder, "", 0); }
  void harvest(std::span<const TradeRecord> trades) override { harvest_thumbnails(trades); }
  bool write_page(const std::string& path, std::string_view page) override {
    return write_file(path, page);
  }
};

}  // namespace

void run_driver() {
  RunState run;
  SiteOutcomes outcomes;
  carry_out(run, outcomes);
}

}  // namespace toplist
