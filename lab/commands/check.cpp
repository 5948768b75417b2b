/*
 * check.cpp: see check.h.
 */
#include "commands/check.h"

#include "check/check.h"
#include "config/reader.h"
#include "l3lif/restart_state.h"
#include "report/check_text.h"
#include "report/restart_report.h"

#include <optional>
#include <ostream>

namespace lab::commands
{

int check(const CheckOptions &options, std::ostream &out)
{
    const l3lif::SavedCopy copy(options.state_dir);
    const auto hardware = copy.open();
    std::optional<config::Description> config;
    if (const auto file = l3lif::kept_config(options.state_dir); !file.empty()) {
        config = config::read_config(file);
    }
    const check::CheckResult result = check::check(*hardware, config ? &*config : nullptr);
    const auto print = options.json ? report::print_check_json : report::print_check;
    print(result, options.state_dir.string(), report::chip_name(*hardware), out);
    return result.differences.empty() ? 0 : 1;
}

} // namespace lab::commands
