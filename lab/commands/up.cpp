/*
 * up.cpp: see up.h.
 */
#include "commands/up.h"

#include "commands/progress_bar.h"
#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/layer.h"
#include "l3lif/leftovers.h"
#include "l3lif/readback.h"
#include "l3lif/readback_macs.h"
#include "l3lif/restart_state.h"
#include "l3lif/shown_calls.h"
#include "record/recorder.h"
#include "report/json.h"
#include "report/table.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lab::commands
{

namespace
{

report::InterfaceResult judge(const simswitch::Switch &hardware, const l3lif::Interface &interface)
{
    report::InterfaceResult result{
        &interface, l3lif::read_back(hardware, *interface.lif), false, {}};
    result.up = interface.up.code == 0 && result.view.missing.empty();
    if (!result.up) {
        result.error = interface.up.last_error();
        if (result.error.empty()) {
            result.error = result.view.missing;
        }
    }
    return result;
}

/** The numbers in the chip of the SVIs, by VLAN. */
std::map<std::uint16_t, int> svis_of(const report::UpResult &result)
{
    std::map<std::uint16_t, int> svis;
    for (const auto &interface : result.interfaces) {
        const auto &plan = interface.interface->lif->plan();
        if (plan.kind == config::Kind::svi) {
            svis.try_emplace(plan.vlan, interface.view.iif);
        }
    }
    return svis;
}

report::VirtualMacResult judge(const simswitch::Switch &hardware, const l3lif::Layer &layer,
                               const l3lif::VirtualMac &mac)
{
    std::vector<std::uint16_t> secondaries;
    for (const auto &pair : layer.pairs()) {
        if (pair.plan.primary == mac.plan.vlan) {
            secondaries.push_back(pair.plan.secondary);
        }
    }
    report::VirtualMacResult result{&mac, l3lif::read_back(hardware, mac.plan, secondaries), {}};
    result.error = mac.up.last_error();
    if (result.error.empty()) {
        result.error = result.view.missing;
    }
    return result;
}

/** @param svi  the number in the chip of the primary's SVI; 0 when it has none */
report::PairResult judge(const simswitch::Switch &hardware, const l3lif::Pair &pair, int svi)
{
    report::PairResult result{&pair, l3lif::read_back(hardware, pair.plan, svi), {}};
    result.error = pair.up.last_error();
    if (result.error.empty()) {
        result.error = result.view.missing;
    }
    return result;
}

void judge_all(const simswitch::Switch &hardware, const l3lif::Layer &layer,
               report::UpResult &result)
{
    for (const auto &interface : layer.interfaces()) {
        result.interfaces.push_back(judge(hardware, *interface));
    }
    for (const auto &mac : layer.virtual_macs()) {
        result.virtual_macs.push_back(judge(hardware, layer, mac));
    }
    const auto svis = svis_of(result);
    for (const auto &pair : layer.pairs()) {
        const auto svi = svis.find(pair.plan.primary);
        result.pairs.push_back(judge(hardware, pair, svi == svis.end() ? 0 : svi->second));
    }
}

/** Tells once of interfaces on which the chip doesn't route what the file asks for. */
void note_families(report::UpResult &result)
{
    std::vector<std::string> names;
    for (const auto &interface : result.interfaces) {
        const auto &plan = interface.interface->lif->plan();
        const auto &view = interface.view;
        if (interface.up && (plan.ipv4 != view.ipv4 || plan.ipv6 != view.ipv6)) {
            names.push_back(plan.name);
        }
    }
    if (names.empty()) {
        return;
    }
    result.notes.push_back(fmt::format(
        "{}: {} of {} interfaces, {} the first, do not route the families of their addresses: "
        "bringing a port up opens it for IPv4 only, bringing a subinterface up for both",
        result.config->file, names.size(), result.interfaces.size(), names.front()));
}

report::Teardown tear_down(simswitch::Switch &hardware, l3lif::Layer &layer,
                           const l3lif::Moment &before)
{
    report::Teardown teardown;
    teardown.clean = layer.take_down();
    teardown.left = l3lif::left_behind(before, hardware);
    teardown.by_design = l3lif::stays_by_design(before, hardware);
    return teardown;
}

/** What a recording of the run begins with. */
record::Header header_of(const UpOptions &options, const std::string &config)
{
    record::Header header;
    header.configuration = options.config.string();
    header.then_down = options.then_down;
    header.config = config;
    return header;
}

} // namespace

int up(const UpOptions &options, std::ostream &out)
{
    simswitch::Switch hardware({.chip = options.chip, .state_dir = options.state_dir});
    const l3lif::ShownCalls shown(hardware, options.view.calls, options.view.trace);
    return up_on(hardware, options, out);
}

report::UpResult result_of(const simswitch::Switch &hardware, const config::Description &config,
                           const l3lif::Layer &layer)
{
    report::UpResult result;
    result.config = &config;
    result.layer = &layer;
    result.chip = hardware.chip.kind() == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident";
    result.skipped = config.skipped;
    result.notes = config.notes;
    judge_all(hardware, layer, result);
    note_families(result);
    return result;
}

int up_on(simswitch::Switch &hardware, const UpOptions &options, std::ostream &out)
{
    const std::string text = config::read_file(options.config);
    const auto config = config::read_config_text(text, options.config.string());
    std::optional<record::RecordingFile> file;
    if (!options.record.empty()) {
        file.emplace(options.record, options.config, options.state_dir);
    }
    l3lif::keep_config(options.state_dir, options.config);
    const auto earlier = l3lif::forget_earlier_run(hardware, options.state_dir);

    const l3lif::Moment before = l3lif::look(hardware);
    std::optional<record::Recorder> recorder;
    if (file) {
        recorder.emplace(hardware, header_of(options, text), file->out());
    }
    l3lif::Layer layer(hardware);
    ProgressBar bar(options.progress);
    l3lif::bring_all_up(config, layer, {}, bar.listener("bringing up"));
    report::UpResult result = result_of(hardware, config, layer);
    result.notes.insert(result.notes.begin() + static_cast<std::ptrdiff_t>(config.notes.size()),
                        earlier.begin(), earlier.end());
    if (options.then_down) {
        result.teardown = tear_down(hardware, layer, before);
    }

    if (recorder) {
        recorder->finish();
        recorder.reset();
        file->close();
    }
    bar.clear();
    if (options.json) {
        report::print_json(result, options.view, out);
    } else {
        report::print_table(result, options.view, out);
    }
    l3lif::check_state(hardware);
    return result.ok() ? 0 : 1;
}

} // namespace lab::commands
