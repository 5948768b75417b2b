/*
 * restart.cpp: see restart.h.
 */
#include "commands/restart.h"

#include "commands/progress_bar.h"
#include "commands/up.h"
#include "config/reader.h"
#include "l3lif/restart_routes.h"
#include "l3lif/restart_state.h"
#include "l3lif/shown_calls.h"
#include "report/restart_json.h"
#include "report/restart_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace lab::commands
{

namespace
{

/** The configuration that was named, or the one that lies beside the chip. */
std::optional<config::Description> find_config(const RestartOptions &options)
{
    const auto file =
        options.config.empty() ? l3lif::kept_config(options.state_dir) : options.config;
    if (!file.empty()) {
        return config::read_config(file);
    }
    if (options.mode != l3lif::RestartMode::restore || options.then_up) {
        throw std::runtime_error(fmt::format("{}: holds no configuration; name it with --config",
                                             options.state_dir.string()));
    }
    return std::nullopt;
}

bool is_good(const report::RestartReport &report)
{
    if (report.up) {
        return report.up->ok();
    }
    const bool all_taken =
        std::all_of(report.restart->interfaces.begin(), report.restart->interfaces.end(),
                    [](const auto &restored) { return restored.iif == 0 || restored.iif_taken; });
    return report.restart->chip_writes == 0 && all_taken &&
           (!report.completion || report.completion->ok());
}

void print(const RestartOptions &options, const report::RestartReport &report, std::ostream &out)
{
    if (options.json) {
        report::print_restart_json(report, out);
    } else {
        report::print_restart(report, options.view, out);
    }
}

} // namespace

int restart(const RestartOptions &options, std::ostream &out)
{
    const auto hardware = l3lif::open_saved(options.state_dir);
    const l3lif::ShownCalls shown(*hardware, options.view.calls, options.view.trace);
    return restart_on(*hardware, options, out);
}

int restart_on(simswitch::Switch &hardware, const RestartOptions &options, std::ostream &out)
{
    const auto config = find_config(options);
    if (!options.default_routes.empty()) {
        l3lif::provide_default_routes(options.default_routes);
    }
    if (!options.config.empty()) {
        l3lif::keep_config(options.state_dir, options.config);
    }
    l3lif::Layer layer(hardware);
    const bool restores = options.mode == l3lif::RestartMode::restore;
    ProgressBar bar(options.progress);
    const l3lif::RestartResult restarted =
        l3lif::restart(hardware, layer, options.mode, config ? &*config : nullptr,
                       bar.listener(restores ? "restoring" : "bringing up"));
    report::RestartReport report{options.state_dir.string(), &hardware, &layer, &restarted, {}, {}};
    if (!restores) {
        report.up = result_of(hardware, *config, layer);
    } else if (options.then_up) {
        report.completion = l3lif::complete(hardware, layer, *config, bar.listener("bringing up"));
    }
    bar.clear();
    print(options, report, out);
    return is_good(report) ? 0 : 1;
}

} // namespace lab::commands
