/*
 * weakened.cpp: see weakened.h.
 */
#include "model/weakened.h"

#include "config/address.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace model_test
{

namespace
{

using lab::l3lif::Standing;
using lab::session::State;
using Lines = std::vector<std::string>;

constexpr long ATTEMPTS = 3; ///< a deletion stops where it is cut short, and goes on in the next

std::string next_of_interfaces(const Lines &interfaces, const Lines &done, const State &state)
{
    const bool adds =
        std::ranges::any_of(done, [](const std::string &line) { return line.starts_with("add "); });
    if (!adds) {
        for (auto name = interfaces.rbegin(); name != interfaces.rend(); ++name) {
            std::string line = "del " + *name;
            if (state.interface(*name).standing() != Standing::down &&
                std::ranges::count(done, line) < ATTEMPTS) {
                return line;
            }
        }
    }
    for (const std::string &name : interfaces) {
        std::string line = "add " + name;
        if (std::ranges::find(done, line) == done.end()) {
            return line;
        }
    }
    return "";
}

/** Deleted if it is there, and added: "rmac del X", then "rmac add X". */
std::string next_of_address(const Step &step, const Lines &done, bool is_there)
{
    const auto with = [&step](const char *what) {
        Step line = step;
        line.words[1] = what;
        return line.line();
    };
    if (done.empty() && is_there) {
        return with("del");
    }
    return done.empty() || done.back() == with("del") ? with("add") : "";
}

bool is_there(const Step &step, const State &state)
{
    if (step.words[0] == "rmac") {
        return std::ranges::any_of(state.layer.router_macs(), [&step](const auto &known) {
            return lab::config::mac_text(known.second) == step.words[2];
        });
    }
    if (step.words[0] == "pvlan") {
        const lab::l3lif::PairPlan pair{state.vlan(step.words[2]), state.vlan(step.words[3])};
        return std::ranges::any_of(state.layer.pairs(),
                                   [&pair](const auto &known) { return known.plan == pair; });
    }
    return true;
}

/** Facts that a request on these may not change. */
bool is_elsewhere(const std::string &key, const NaiveSwitch &model, const Touched &touched)
{
    const auto begins = [&key](const std::string &start) { return key.starts_with(start); };
    for (const std::string &name : touched.interfaces) {
        const auto &plan = model.interface(name).plan;
        if (begins("interface " + name + " ") ||
            (plan.vlan != 0 && begins(fmt::format("vlan {} ", plan.vlan))) ||
            (plan.trunk != 0 && begins(fmt::format("trunk {} ", plan.trunk)))) {
            return false;
        }
    }
    for (const std::string &mac : touched.macs) {
        if (key.find(mac) != std::string::npos) {
            return false;
        }
    }
    // After a restore the last subinterface that is counted in a VLAN takes it from the others.
    for (const std::string &name : touched.interfaces) {
        if (model.shares_vlan(name, key)) {
            return false;
        }
    }
    const bool is_of_all = begins(fmt::format("vlan {} ", int{NaiveVlans::ROUTED})) || begins("# ");
    return !is_of_all;
}

} // namespace

Touched touched_by(const NaiveSwitch &model, const Step &step)
{
    const auto &words = step.words;
    Touched touched;
    if (words[0] == "rmac" || words[0] == "vmac") {
        touched.macs.insert(words.back());
    } else if (words[0] == "pvlan") {
        touched.macs = model.macs_of_pair(words[2], words[3]);
    } else if (words[0] != "ipv6") {
        touched.interfaces = model.worked_on(words[1]);
    }
    return touched;
}

std::vector<Difference> changed_elsewhere(const NaiveSwitch &model, const Touched &touched,
                                          const Facts &before, const State &state)
{
    std::vector<Difference> changed = differences(before, seen(state));
    std::erase_if(changed,
                  [&](const Difference &one) { return !is_elsewhere(one.key, model, touched); });
    std::map<int, std::string> owners;
    for (const auto &[name, number] : owned_numbers(state)) {
        if (number != 0 && !owners.emplace(number, name).second) {
            changed.push_back({fmt::format("# owner of number {}", number), owners[number], name});
        }
    }
    return changed;
}

std::string next_healing(const Touched &touched, const Step &step, const Lines &done,
                         const State &state)
{
    if (!touched.interfaces.empty()) {
        return next_of_interfaces(touched.interfaces, done, state);
    }
    if (step.words[0] == "ipv6") {
        return done.empty() ? step.line() : "";
    }
    return next_of_address(step, done, is_there(step, state));
}

void heal(NaiveSwitch &model, const Touched &touched, const Step &step)
{
    if (!touched.interfaces.empty()) {
        model.rebuild(touched.interfaces);
    } else if (step.words[0] != "ipv6") {
        Step line = step;
        line.fault.clear();
        for (const char *what : {"del", "add"}) {
            line.words[1] = what;
            if (model.can(line)) {
                model.apply(line);
            }
        }
    }
}

bool is_of_shared_vlan(const std::string &key, const NaiveSwitch &model, const Touched &touched)
{
    return std::ranges::any_of(touched.interfaces, [&](const std::string &name) {
        const int vlan = model.interface(name).plan.vlan;
        return model.is_shared(vlan) &&
               (model.shares_vlan(name, key) || key.starts_with(fmt::format("vlan {} ", vlan)));
    });
}

bool is_other_order(const Difference &difference)
{
    const auto sorted = [](const std::string &list) {
        std::multiset<std::string> names;
        std::istringstream words(list);
        for (std::string name; std::getline(words, name, ',');) {
            names.insert(name);
        }
        return names;
    };
    return difference.key.starts_with("trunk ") &&
           sorted(difference.expected) == sorted(difference.seen);
}

std::vector<Difference> adopt(NaiveSwitch &model, const Touched &touched, const State &state)
{
    std::vector<Difference> wrong;
    const std::map<std::string, int> owned = owned_numbers(state);
    const std::set<int> held_back = numbers_held_back();
    for (const auto &[name, number] : owned) {
        const bool is_others =
            std::ranges::find(touched.interfaces, name) == touched.interfaces.end();
        if (is_others && number != model.interface(name).number) {
            wrong.push_back({fmt::format("interface {} iif", name),
                             fmt::to_string(model.interface(name).number), fmt::to_string(number)});
        }
        if (held_back.contains(number)) {
            wrong.push_back(
                {fmt::format("# number {} of {}", number, name), "in use", "held back"});
        }
    }
    model.adopt_numbers(owned, held_back, numbers_lost(state));
    for (const std::string &mac : touched.macs) {
        const auto places = station_places(state.hardware.chip, mac);
        const auto wanted = model.stations().places(mac);
        if (!std::ranges::includes(places, wanted)) {
            wrong.push_back({fmt::format("station {} count", mac), fmt::to_string(wanted.size()),
                             fmt::to_string(places.size())});
        }
        model.stations().adopt(mac, places);
    }
    return wrong;
}

} // namespace model_test
