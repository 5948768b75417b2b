/*
 * point.cpp: see point.h.
 */
#include "sweep/engine/point.h"

#include "sweep/engine/differences.h"
#include "sweep/engine/views.h"

#include "chip/snapshot.h"
#include "l3lif/bring_up.h"
#include "l3lif/interface_numbers.h"
#include "l3lif/readback.h"
#include "l3lif/restart.h"
#include "rtifhal_trident.h"
#include "support/library_test.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace sweep
{

namespace
{

namespace l3lif = lab::l3lif;
using simswitch::chip::Snapshot;

// Handed back by a process in front of its failures.
constexpr std::string_view KNOWN = "known ";

// A subinterface of a port-channel is stored under the port-channel, and
// without members: their restore has none to add to the VLAN.
constexpr std::string_view NO_MEMBERS = "Error - PC tree empty ";

// A port whose leaving was cut short is in the trunk yet when it joins again.
constexpr std::string_view ALREADY_MEMBER = ": entry exists already";

/** A switch after one more start, with a library that has just been loaded. */
struct Started {
    Started(const Road &road, const std::filesystem::path &state)
    {
        rtifhal_test::reset_library();
        hardware.emplace(simswitch::Options{.chip = road.chip, .state_dir = state});
        layer.emplace(*hardware);
        before = simswitch::chip::snapshot(hardware->chip);
    }

    std::optional<simswitch::Switch> hardware;
    std::optional<l3lif::Layer> layer;
    Snapshot before;
};

/** Collects what doesn't hold. */
class Checks
{
public:
    void hold(bool holds, std::string otherwise)
    {
        if (!holds) {
            failures.push_back(step + std::move(otherwise));
        }
    }

    std::string step;
    Lines failures;
};

std::set<int> stored_held_back(simswitch::Switch &hardware)
{
    std::set<int> numbers;
    const auto config = hardware.store.global_config();
    if (config) {
        for (int iif = 0; iif <= simswitch::chip::LAST_IIF; ++iif) {
            const auto n = static_cast<unsigned>(iif);
            const unsigned byte = (*config)[simswitch::services::GLOBAL_CONFIG_PRESERVE + (n / 8)];
            if ((byte & (0x80U >> (n % 8))) != 0) {
                numbers.insert(iif);
            }
        }
    }
    return numbers;
}

void check_restored(const l3lif::RestartResult &result, Checks &checks)
{
    std::map<int, std::string> owners;
    for (const auto &restored : result.interfaces) {
        const std::string &name = restored.interface->lif->plan().name;
        for (const std::string &error : restored.request.errors()) {
            checks.hold(error.starts_with(NO_MEMBERS),
                        fmt::format("restore of {}: {}", name, error));
        }
        checks.hold(restored.request.code == 0 && restored.replay.code == 0,
                    fmt::format("restore of {}: codes {}, {}", name, restored.request.code,
                                restored.replay.code));
        checks.hold(restored.iif >= l3lif::FIRST_IIF,
                    fmt::format("{} was stored with number {}", name, restored.iif));
        checks.hold(restored.iif_taken && l3lif::is_set(l3lif_l3iif_table, restored.iif),
                    fmt::format("number {} of {} is free", restored.iif, name));
        checks.hold(!l3lif::is_set(l3lif_l3iif_table_preserve, restored.iif),
                    fmt::format("number {} of {} is held back", restored.iif, name));
        const auto [owner, is_first] = owners.emplace(restored.iif, name);
        checks.hold(is_first,
                    fmt::format("{} and {} have number {}", name, owner->second, restored.iif));
        checks.hold(restored.in_config, fmt::format("{} isn't in the configuration", name));
    }
}

/** A restart in restore mode, which leaves the chip alone. */
void restore(const Road &road, Started &started, Checks &checks)
{
    simswitch::Switch &hardware = *started.hardware;
    const std::set<int> held_back = stored_held_back(hardware);
    const std::size_t stored = hardware.store.stored_interfaces().size();
    const auto result =
        l3lif::restart(hardware, *started.layer, l3lif::RestartMode::restore, road.config);
    checks.hold(result.chip_writes == 0, fmt::format("{} writes to the chip", result.chip_writes));
    for (const std::string &line :
         simswitch::chip::changes(started.before, simswitch::chip::snapshot(hardware.chip))) {
        checks.hold(false, "the chip changed: " + line);
    }
    checks.hold(result.globals.ok(), "the global context: " + result.globals.last_error());
    checks.hold(
        result.interfaces.size() == stored,
        fmt::format("{} of {} stored interfaces came back", result.interfaces.size(), stored));
    checks.hold(std::set<int>(result.preserved.begin(), result.preserved.end()) == held_back,
                "other numbers came back as held back than were stored");
    check_restored(result, checks);
    std::set<int> owned;
    for (const auto &restored : result.interfaces) {
        owned.insert(restored.iif);
    }
    for (const int iif : held_back) {
        checks.hold(l3lif::is_set(l3lif_l3iif_table, iif),
                    fmt::format("number {} was held back and is free", iif));
        checks.hold(owned.contains(iif) || l3lif::is_set(l3lif_l3iif_table_preserve, iif),
                    fmt::format("number {} isn't held back any more", iif));
    }
}

/** Every interface of the configuration works. */
void check_interfaces(const Road &road, const Started &started, Checks &checks)
{
    std::map<int, std::string> owners;
    for (const auto &plan : l3lif::plans_of(*road.config)) {
        const l3lif::Interface *interface = started.layer->routed().find(plan.name);
        if (interface == nullptr) {
            checks.hold(false, plan.name + " isn't there");
            continue;
        }
        const auto view = l3lif::read_back(*started.hardware, *interface->lif);
        checks.hold(view.missing.empty(), fmt::format("{}: {}", plan.name, view.missing));
        checks.hold(view.has_interface, plan.name + " has no L3 interface in the chip");
        if (view.iif == 0) {
            continue;
        }
        const auto [owner, is_first] = owners.emplace(view.iif, plan.name);
        checks.hold(is_first,
                    fmt::format("{} and {} have number {}", plan.name, owner->second, view.iif));
        checks.hold(l3lif::is_set(l3lif_l3iif_table, view.iif),
                    fmt::format("number {} of {} is free", view.iif, plan.name));
        checks.hold(started.hardware->chip.l3_ingresses.find(view.iif) != nullptr,
                    plan.name + " has no ingress object in the chip");
    }
}

void complete(const Road &road, Started &started, const Lines &expected, Checks &checks,
              std::map<std::string, int> &known)
{
    const auto completion = l3lif::complete(*started.hardware, *started.layer, *road.config);
    for (const auto &late : completion.requests) {
        const std::string error = late.request.last_error();
        const bool is_harmless = error.starts_with(NO_MEMBERS) || error.ends_with(ALREADY_MEMBER);
        checks.hold(!late.failed || (late.request.code == 0 && is_harmless),
                    fmt::format("{}: code {}, {}", late.asked, late.request.code,
                                late.request.last_error()));
    }
    check_interfaces(road, started, checks);
    const Lines all = differences(expected, chip_view(*started.hardware, *started.layer));
    for (const std::string &line : unknown_among(all, known)) {
        checks.hold(false, "other than when brought up at once: " + line);
    }
}

/** The whole of what must hold on a folder that a killed process has left. */
Lines check_folder(const Road &road, const std::filesystem::path &state, const Lines &expected)
{
    Checks checks;
    std::map<std::string, int> known;
    Lines tables;
    {
        checks.step = "restart: ";
        Started first(road, state);
        restore(road, first, checks);
        tables = library_tables(*first.hardware);
    }
    Snapshot complete_chip;
    {
        checks.step = "second restart: ";
        Started second(road, state);
        restore(road, second, checks);
        for (const std::string &line : differences(tables, library_tables(*second.hardware))) {
            checks.hold(false, "a table differs: " + line);
        }
        checks.step = "brought up: ";
        complete(road, second, expected, checks, known);
        complete_chip = simswitch::chip::snapshot(second.hardware->chip);
    }
    {
        checks.step = "last restart: ";
        Started last(road, state);
        checks.hold(last.before == complete_chip, "the chip isn't what it was");
        restore(road, last, checks);
    }
    Lines said;
    for (const auto &[name, count] : known) {
        said.push_back(fmt::format("{}{} {}", KNOWN, count, name));
    }
    said.insert(said.end(), checks.failures.begin(), checks.failures.end());
    return said;
}

} // namespace

Lines brought_up_at_once(const Road &road)
{
    return in_process([&road] {
               simswitch::Switch hardware({.chip = road.chip});
               l3lif::Layer layer(hardware);
               l3lif::bring_all_up(*road.config, layer);
               return chip_view(hardware, layer);
           })
        .lines;
}

Found check_point(const Road &road, std::size_t moment, const Lines &expected)
{
    const Folder folder;
    const auto state = folder.path() / "state";
    Found found;
    const Ended killed = in_process([&]() -> Lines { die_at(road, state, moment); });
    if (!killed.by_kill) {
        found.failures.push_back("the process that was to be killed ended with " + killed.how);
    }
    const Ended ended = in_process([&] { return check_folder(road, state, expected); });
    if (!ended.well) {
        found.failures.push_back("the process after the restart ended with " + ended.how);
    }
    for (const std::string &line : ended.lines) {
        if (line.starts_with(KNOWN)) {
            const std::size_t blank = line.find(' ', KNOWN.size());
            found.known[line.substr(blank + 1)] +=
                std::stoi(line.substr(KNOWN.size(), blank - KNOWN.size()));
        } else {
            found.failures.push_back(line);
        }
    }
    return found;
}

} // namespace sweep
