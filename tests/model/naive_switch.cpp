/*
 * naive_switch.cpp: see naive_switch.h.
 */
#include "model/naive_switch.h"

#include "config/address.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

namespace model_test
{

namespace
{

using lab::config::Kind;

constexpr int REFUSED = -1;

std::set<int> ports_of(const simswitch::chip::PortSet &ports)
{
    std::set<int> numbers;
    for (int port = 0; port <= simswitch::chip::LAST_PORT; ++port) {
        if (ports.has(port)) {
            numbers.insert(port);
        }
    }
    return numbers;
}

} // namespace

NaiveSwitch::NaiveSwitch(const lab::config::Description &config, simswitch::chip::Kind chip)
    : config_(&config), chip_(chip), numbers_(chip)
{
    bring_up();
}

void NaiveSwitch::bring_up()
{
    for (const auto &plan : lab::l3lif::plans_of(*config_)) {
        order_.push_back(plan.name);
        interfaces_[plan.name].plan = plan;
    }
    stations_.add_router_mac(lab::config::mac_text(config_->device_mac));
    for (const auto &plan : lab::l3lif::vlan_plans_of(*config_)) {
        vlans_.set_up(plan.vlan, ports_of(plan.ports));
    }
    for (const std::string &name : order_) {
        int code = 0;
        add(interfaces_.at(name), code);
    }
    for (const auto &pair : lab::l3lif::pair_plans_of(*config_)) {
        stations_.add_pair(pair.primary, pair.secondary);
    }
    for (const auto &mac :
         lab::l3lif::virtual_mac_plans_of(*config_, lab::l3lif::plans_of(*config_))) {
        stations_.add_virtual_mac(owner_of(interfaces_.at(mac.owner)),
                                  lab::config::mac_text(mac.mac));
    }
}

void NaiveSwitch::give_number(NaiveInterface &interface)
{
    if (interface.standing == Standing::down) {
        interface.number = numbers_.take();
    }
    interface.standing = Standing::up;
}

void NaiveSwitch::add(NaiveInterface &interface, int &code)
{
    const bool is_new = interface.standing == Standing::down;
    interface.refused = false;
    switch (interface.plan.kind) {
    case Kind::port:
        give_number(interface);
        vlans_.join(NaiveVlans::ROUTED, interface.plan.chip_port);
        break;
    case Kind::port_channel:
        give_number(interface);
        note_record(interface, is_new);
        join_channel(interface);
        break;
    case Kind::svi:
        give_number(interface);
        vlans_.set_svi(interface.plan.vlan, true);
        break;
    case Kind::subinterface:
        add_subinterface(interface, code);
        break;
    case Kind::tunnel:
        give_number(interface);
        break;
    }
}

/** A subinterface of a port-channel is stored under the ifindex of that. */
void NaiveSwitch::note_record(const NaiveInterface &interface, bool stored)
{
    const auto &plan = interface.plan;
    if (stored && plan.trunk != 0) {
        channel_records_[plan.main != 0 ? plan.main : plan.ifindex] = {plan.name, interface.number};
    }
}

/** Each member brings the VLANs of the subinterfaces that are there along. */
void NaiveSwitch::join_channel(NaiveInterface &channel)
{
    auto &members = trunks_[channel.plan.trunk];
    for (const auto &member : channel.plan.members) {
        if (std::ranges::find(members, member.chip_port) == members.end()) {
            members.push_back(member.chip_port);
        }
        vlans_.join(NaiveVlans::ROUTED, member.chip_port);
        for (const NaiveInterface *subinterface : filed_under(channel)) {
            vlans_.join(subinterface->plan.vlan, member.chip_port);
        }
    }
}

/** One of a port-channel is programmed on the members of the trunk; without any it is refused. */
void NaiveSwitch::add_subinterface(NaiveInterface &interface, int &code)
{
    interface.filed = true;
    if (interface.plan.trunk == 0) {
        give_number(interface);
        vlans_.join(interface.plan.vlan, interface.plan.chip_port);
        return;
    }
    const auto &members = trunks_[interface.plan.trunk];
    if (members.empty()) {
        code = REFUSED;
        interface.refused = true;
        return;
    }
    give_number(interface);
    note_record(interface, true);
    for (const int port : members) {
        vlans_.join(interface.plan.vlan, port);
    }
}

void NaiveSwitch::leave_channel(NaiveInterface &channel)
{
    auto &members = trunks_[channel.plan.trunk];
    while (!members.empty()) {
        const int port = members.back();
        members.pop_back();
        vlans_.leave(NaiveVlans::ROUTED, port);
        for (const NaiveInterface *subinterface : filed_under(channel)) {
            vlans_.leave(subinterface->plan.vlan, port);
        }
    }
}

void NaiveSwitch::remove(NaiveInterface &interface, bool keep)
{
    const bool was_up = interface.standing == Standing::up;
    const auto &plan = interface.plan;
    if (plan.kind == Kind::port) {
        vlans_.leave(NaiveVlans::ROUTED, plan.chip_port);
    } else if (plan.kind == Kind::port_channel) {
        if (!was_up) {
            // None of its members is there to take its objects: the first joins once more.
            NaiveInterface first = interface;
            first.plan.members.resize(1);
            join_channel(first);
        }
        leave_channel(interface);
    } else if (plan.kind == Kind::svi && was_up) {
        vlans_.set_svi(plan.vlan, false);
    } else if (plan.kind == Kind::subinterface && was_up) {
        for (const int port : ports_of_subinterface(interface)) {
            vlans_.leave(plan.vlan, port);
        }
    }
    interface.filed = false;
    interface.refused = false;
    if (plan.kind == Kind::port_channel && !keep) {
        channel_records_.erase(plan.ifindex);
    }
    if (keep && plan.kind != Kind::tunnel) {
        interface.standing = Standing::kept;
        return;
    }
    numbers_.hold_back(interface.number);
    interface.number = 0;
    interface.standing = Standing::down;
}

std::vector<NaiveInterface *> NaiveSwitch::filed_under(const NaiveInterface &main)
{
    std::vector<NaiveInterface *> found;
    for (auto &[name, interface] : interfaces_) {
        if (interface.filed && interface.plan.main == main.plan.ifindex) {
            found.push_back(&interface);
        }
    }
    return found;
}

std::vector<std::string> NaiveSwitch::worked_on(const std::string &name) const
{
    std::vector<std::string> names = {name};
    for (const std::string &other : order_) {
        const NaiveInterface &interface = interfaces_.at(other);
        if (interface.plan.main == interfaces_.at(name).plan.ifindex &&
            interface.standing == Standing::up) {
            names.push_back(other);
        }
    }
    return names;
}

std::set<std::string> NaiveSwitch::macs_of_pair(const std::string &primary,
                                                const std::string &secondary) const
{
    std::set<std::string> macs = stations_.macs_in(vlan_of(primary));
    macs.merge(stations_.macs_in(vlan_of(secondary)));
    return macs;
}

bool NaiveSwitch::shares_vlan(const std::string &name, const std::string &key) const
{
    const int vlan = interfaces_.at(name).plan.vlan;
    return vlan != 0 && std::ranges::any_of(interfaces_, [&](const auto &entry) {
               return entry.second.plan.vlan == vlan &&
                      key.starts_with("interface " + entry.first + " ");
           });
}

bool NaiveSwitch::is_shared(int vlan) const
{
    return vlan != 0 && std::ranges::count_if(interfaces_, [vlan](const auto &entry) {
                            return entry.second.plan.vlan == vlan;
                        }) > 1;
}

NaiveOwner NaiveSwitch::owner_of(const NaiveInterface &interface) const
{
    const auto &plan = interface.plan;
    NaiveOwner owner{plan.ifindex, plan.kind == Kind::svi, NaiveVlans::ROUTED, "any/any"};
    if (plan.kind == Kind::svi) {
        owner.key_vlan = plan.vlan;
        owner.place = fmt::format("{}/any", plan.vlan);
    } else if (plan.chip_port != 0) {
        owner.place = fmt::format("{}/{}", NaiveVlans::ROUTED, plan.chip_port);
    } else if (plan.kind == Kind::subinterface) {
        owner.place = fmt::format("{}/any", NaiveVlans::ROUTED);
    }
    return owner;
}

int NaiveSwitch::vlan_of(const std::string &word) const
{
    return config_->vlans.at(word).id;
}

bool NaiveSwitch::can_pair(const Step &step) const
{
    const std::pair<int, int> wanted{vlan_of(step.words[2]), vlan_of(step.words[3])};
    const auto &pairs = stations_.pairs();
    if (step.words[1] == "del") {
        return pairs.contains(wanted);
    }
    const auto clashes = [&wanted](const auto &pair) {
        return pair.second == wanted.second || pair.second == wanted.first ||
               pair.first == wanted.second;
    };
    return wanted.first != wanted.second && std::ranges::none_of(pairs, clashes);
}

bool NaiveSwitch::can(const Step &step) const
{
    const std::string &verb = step.words[0];
    if (verb == "del") {
        const Standing standing = interfaces_.at(step.words[1]).standing;
        const bool keep = step.words.size() == 3;
        return standing != Standing::down && !(keep && standing == Standing::kept) &&
               worked_on(step.words[1]).size() == 1;
    }
    if (verb == "rmac") {
        return stations_.has_router_mac(step.words[2]) == (step.words[1] == "del");
    }
    if (verb == "pvlan") {
        return can_pair(step);
    }
    // Of an interface that isn't up nothing is asked, and so there is nothing to fail.
    return verb != "set" || step.fault.empty() ||
           interfaces_.at(step.words[1]).standing == Standing::up;
}

std::optional<int> NaiveSwitch::apply(const Step &step)
{
    const auto &words = step.words;
    int code = 0;
    if (words[0] == "add") {
        add(interfaces_.at(words[1]), code);
    } else if (words[0] == "del") {
        remove(interfaces_.at(words[1]), words.size() == 3);
    } else if (words[0] == "set") {
        const NaiveInterface &interface = interfaces_.at(words[1]);
        // One that is kept isn't stored; a label goes into a record of the subinterface's own.
        note_record(interface, interface.standing == Standing::up && words[2] != "acl-label");
        // The class goes into the ingress object, under a number that one which is kept has parked.
        const bool is_parked =
            interface.standing == Standing::kept && interface.plan.kind != Kind::port_channel;
        code = words[2] == "acl-label" && is_parked ? REFUSED : 0;
    } else if (words[0] == "rmac") {
        if (words[1] == "add") {
            stations_.add_router_mac(words[2]);
            return std::nullopt;
        }
        stations_.remove_router_mac(words[2]);
    } else if (words[0] == "vmac") {
        const NaiveOwner owner = owner_of(interfaces_.at(words[2]));
        if (words[1] == "add") {
            stations_.add_virtual_mac(owner, words[3]);
        } else {
            stations_.remove_virtual_mac(owner, words[3]);
        }
    } else if (words[0] == "pvlan") {
        if (words[1] == "add") {
            stations_.add_pair(vlan_of(words[2]), vlan_of(words[3]));
        } else {
            stations_.remove_pair(vlan_of(words[2]), vlan_of(words[3]));
        }
    } else if (words[0] == "restart") {
        restart(words[1]);
        return std::nullopt;
    }
    return code;
}

void NaiveSwitch::rebuild(const std::vector<std::string> &names)
{
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (interfaces_.at(*name).standing != Standing::down) {
            remove(interfaces_.at(*name), false);
        }
    }
    for (const std::string &name : names) {
        int code = 0;
        add(interfaces_.at(name), code);
    }
}

void NaiveSwitch::adopt_numbers(const std::map<std::string, int> &owned,
                                const std::set<int> &held_back, const std::set<int> &lost)
{
    std::set<int> all;
    for (const auto &[name, number] : owned) {
        interfaces_.at(name).number = number;
        if (number != 0) {
            all.insert(number);
        }
    }
    numbers_.adopt(all, held_back, lost);
}

std::vector<int> NaiveSwitch::ports_of_subinterface(const NaiveInterface &interface) const
{
    const auto trunk = trunks_.find(interface.plan.trunk);
    return trunk == trunks_.end() ? std::vector<int>{interface.plan.chip_port} : trunk->second;
}

/** After a restore the last subinterface that is counted in a VLAN takes it from the others. */
bool NaiveSwitch::has_its_vlan(const NaiveInterface &interface) const
{
    return interface.plan.kind != Kind::subinterface ||
           std::ranges::all_of(ports_of_subinterface(interface),
                               [&](int port) { return vlans_.has(interface.plan.vlan, port); });
}

std::string NaiveSwitch::state_of(const NaiveInterface &interface) const
{
    if (interface.standing != Standing::up) {
        const bool kept = interface.standing == Standing::kept;
        return kept ? "kept" : interface.refused ? "failed" : "down";
    }
    return has_its_vlan(interface) ? "up" : "failed";
}

Facts NaiveSwitch::facts() const
{
    Facts facts;
    for (const auto &[name, interface] : interfaces_) {
        facts[fmt::format("interface {} state", name)] = state_of(interface);
        const int lie = lies_ && interface.number != 0 ? 1 : 0;
        facts[fmt::format("interface {} iif", name)] =
            interface.number == 0 ? "" : fmt::to_string(interface.number + lie);
    }
    vlans_.add_to(facts);
    for (const auto &[trunk, members] : trunks_) {
        std::vector<std::string> names;
        for (const int port : members) {
            for (const auto &[name, known] : config_->ports) {
                if (static_cast<int>(known.chip_port) == port) {
                    names.push_back(name);
                }
            }
        }
        facts[fmt::format("trunk {} members", trunk)] = fmt::format("{}", fmt::join(names, ","));
    }
    stations_.add_to(facts);
    facts["# numbers held back"] = list_text(numbers_.held_back());
    facts["# numbers taken by nobody"] = list_text(numbers_.lost());
    return facts;
}

} // namespace model_test
