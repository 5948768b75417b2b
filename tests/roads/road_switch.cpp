/*
 * road_switch.cpp: see road_switch.h.
 */
#include "roads/road_switch.h"

#include "roads/chip_match.h"

#include "config/reader.h"
#include "l3lif/families.h"
#include "l3lif/plans.h"
#include "packet/make_frame.h"
#include "support/load_time_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace roads
{

namespace
{

namespace l3lif = lab::l3lif;

constexpr std::string_view CONFIG = "tests/roads/two_of_each.json";
constexpr lab::config::Mac SECOND_MAC = {0x02, 0x00, 0x00, 0x00, 0x0f, 0x02};

const lab::config::Description &config()
{
    static const auto CONFIG_READ =
        lab::config::read_config(std::filesystem::path(RTIFHAL_SOURCE_DIR) / CONFIG);
    return CONFIG_READ;
}

struct Plans {
    std::vector<l3lif::VlanPlan> vlans = l3lif::vlan_plans_of(config());
    std::vector<l3lif::LifPlan> interfaces = l3lif::plans_of(config());
    std::vector<l3lif::PairPlan> pairs = l3lif::pair_plans_of(config());
    std::vector<l3lif::VirtualMacPlan> macs = l3lif::virtual_mac_plans_of(config(), interfaces);
};

const Plans &plans()
{
    static const Plans PLANS;
    return PLANS;
}

std::string vlan_item(std::uint16_t vlan)
{
    return fmt::format("Vlan{} of L2", vlan);
}

/** What an interface needs: its VLAN, where the L2 side has it, and its main interface. */
Lines needs_of(const l3lif::LifPlan &plan)
{
    Lines needs;
    if (plan.vlan != 0 && std::ranges::find(plans().vlans, plan.vlan, &l3lif::VlanPlan::vlan) !=
                              plans().vlans.end()) {
        needs.push_back(vlan_item(plan.vlan));
    }
    const auto main = std::ranges::find(plans().interfaces, plan.main, &l3lif::LifPlan::ifindex);
    if (plan.main != 0 && main != plans().interfaces.end()) {
        needs.push_back(main->name);
    }
    return needs;
}

std::vector<Item> make_items()
{
    std::vector<Item> all = {{Part::router_mac, "first router MAC", {}, 0},
                             {Part::router_mac, "second router MAC", {}, 1}};
    const Plans &from = plans();
    for (std::size_t i = 0; i < from.vlans.size(); ++i) {
        all.push_back({Part::vlan, vlan_item(from.vlans[i].vlan), {}, i});
    }
    for (std::size_t i = 0; i < from.interfaces.size(); ++i) {
        all.push_back({Part::interface, from.interfaces[i].name, needs_of(from.interfaces[i]), i});
    }
    for (std::size_t i = 0; i < from.pairs.size(); ++i) {
        const auto &[primary, secondary] = from.pairs[i];
        all.push_back({Part::pair,
                       fmt::format("pair {} {}", primary, secondary),
                       {vlan_item(primary), vlan_item(secondary)},
                       i});
    }
    for (std::size_t i = 0; i < from.macs.size(); ++i) {
        all.push_back(
            {Part::virtual_mac,
             fmt::format("{} of {}", lab::config::mac_text(from.macs[i].mac), from.macs[i].owner),
             {from.macs[i].owner},
             i});
    }
    return all;
}

/** A host of the set, and the words that give one of its frames to the chip. */
struct Host {
    std::string in;
    int net; ///< 10.0.net.0/24 and 2001:db8:net::/64
    int host = 9;
    bool has_ip6 = true;
};

const std::vector<Host> &hosts()
{
    static const std::vector<Host> ALL = {
        {"--in Ethernet0", 0},
        {"--in Ethernet4", 4},
        {"--in Ethernet24", 24},
        {"--in Ethernet36", 36},
        {"--in Ethernet40", 40, 9, false},
        {"--in Ethernet8", 1},
        {"--in Ethernet20", 2},
        {"--in Ethernet52 --vlan 100", 100},
        {"--in Ethernet44", 200},
        {"--in Ethernet60", 30},
        {"--in Ethernet48", 200, 11},
        {"--in Ethernet64", 30, 11},
        {"--in Ethernet24 --vlan 10", 10},
        {"--in Ethernet24 --vlan 11", 11},
        {"--in Ethernet68 --vlan 10", 12},
        {"--in Ethernet28 --vlan 20", 20},
        {"--in Ethernet32 --vlan 21", 21},
    };
    return ALL;
}

std::string address(const Host &host, bool ip6)
{
    return ip6 ? fmt::format("2001:db8:{}::{}", host.net, host.host)
               : fmt::format("10.0.{}.{}", host.net, host.host);
}

/** Ways in that no interface has, and MACs that are not the device's. */
void add_odd_words(Lines &words)
{
    constexpr std::array<const char *, 7> MACS = {
        "02:00:00:00:0f:02", "02:00:00:00:99:99", "broadcast",        "00:00:5e:00:01:08",
        "00:00:5e:00:02:08", "00:00:5e:00:01:09", "01:00:5e:00:00:05"};
    for (const Host &host : hosts()) {
        for (const char *mac : MACS) {
            words.push_back(
                fmt::format("{} --dmac {} --ip {} 10.0.4.9", host.in, mac, address(host, false)));
        }
        words.push_back(fmt::format("{} --ip {} 10.30.0.9", host.in, address(host, false)));
        words.push_back(fmt::format("{} --ip {} 10.31.0.9", host.in, address(host, false)));
        words.push_back(fmt::format("{} --ip {} 10.40.0.9", host.in, address(host, false)));
        words.push_back(fmt::format("{} --ip {} 10.50.0.9", host.in, address(host, false)));
        words.push_back(fmt::format("{} --mpls 9 --ip 10.0.0.9 10.0.4.9", host.in));
        words.push_back(fmt::format("{} --ttl 1 --ip 10.0.0.9 10.0.4.9", host.in));
        words.push_back(fmt::format("{} --size 9400 --ip 10.0.0.9 10.0.100.9", host.in));
    }
    words.emplace_back("--in Ethernet40 --ip 2001:db8:40::9 2001:db8:36::9");
    for (const char *in : {"Ethernet0", "Ethernet8", "Ethernet24", "Ethernet28", "Ethernet52",
                           "Ethernet68", "Ethernet72"}) {
        for (const int vlan : {10, 20, 99, 100, 200, 4094}) {
            words.push_back(fmt::format("--in {} --vlan {} --ip 10.0.0.9 10.0.4.9", in, vlan));
        }
        words.push_back(fmt::format("--in {} --ip 10.0.0.9 10.0.4.9", in));
    }
}

std::vector<Sample> make_samples()
{
    Lines words;
    for (const Host &from : hosts()) {
        for (const Host &to : hosts()) {
            words.push_back(
                fmt::format("{} --ip {} {}", from.in, address(from, false), address(to, false)));
            if (from.has_ip6 && to.has_ip6 && (from.net + to.net) % 3 == 0) {
                words.push_back(
                    fmt::format("{} --ip {} {}", from.in, address(from, true), address(to, true)));
            }
        }
        words.push_back(
            fmt::format("{} --ip {} 10.0.{}.1", from.in, address(from, false), from.net));
    }
    add_odd_words(words);
    rtifhal_test::reset_library();
    const lab_test::Lab lab(Kind::trident, {}, CONFIG);
    std::vector<Sample> all;
    for (std::string &line : words) {
        auto frame = lab.frame(line);
        all.push_back({std::move(line), frame.port, std::move(frame.bytes)});
    }
    return all;
}

} // namespace

const std::vector<Sample> &samples()
{
    static const std::vector<Sample> ALL = make_samples();
    return ALL;
}

const std::vector<Item> &items()
{
    static const std::vector<Item> ALL = make_items();
    return ALL;
}

Lines item_names()
{
    Lines names;
    for (const Item &each : items()) {
        names.push_back(each.name);
    }
    return names;
}

const Item &item(std::string_view name)
{
    const auto found = std::ranges::find(items(), name, &Item::name);
    if (found == items().end()) {
        throw std::invalid_argument(fmt::format("no item {}", name));
    }
    return *found;
}

RoadSwitch::RoadSwitch(Kind chip, const std::filesystem::path &state_dir)
    : loaded_((samples(), rtifhal_test::reset_library(), true)),
      hardware({.chip = chip, .state_dir = state_dir}), layer(hardware),
      traffic(hardware, config()), routing(hardware, layer, traffic.pipeline.l2())
{
    routing.configure(config());
}

lab::l3lif::Interface &RoadSwitch::interface(std::string_view name) const
{
    l3lif::Interface *found = layer.routed().find(name);
    if (found == nullptr) {
        throw std::invalid_argument(fmt::format("{} was never up", name));
    }
    return *found;
}

void RoadSwitch::add_interface(const Item &added)
{
    l3lif::Interface *known = layer.routed().find(added.name);
    const l3lif::Request &request = known != nullptr
                                        ? layer.bring_up(*known)
                                        : layer.bring_up(plans().interfaces[added.index]).up;
    EXPECT_TRUE(request.ok()) << added.name << ": " << request.last_error();
    for (const auto &opened : l3lif::open_families(config(), layer, hardware)) {
        EXPECT_TRUE(opened.request.ok()) << opened.asked << ": " << opened.request.last_error();
    }
}

void RoadSwitch::add(std::string_view name)
{
    const Item &added = item(name);
    switch (added.part) {
    case Part::router_mac: {
        const auto &request =
            layer.add_router_mac(added.index == 0 ? config().device_mac : SECOND_MAC);
        EXPECT_NE(request.code, l3lif::Layer::NO_STATION) << name;
        stations_[added.index] = request.code;
        break;
    }
    case Part::vlan: {
        const auto &request = layer.set_up_vlan(plans().vlans[added.index]).up;
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    case Part::interface:
        add_interface(added);
        break;
    case Part::pair: {
        const auto &request = layer.add_pair(plans().pairs[added.index]);
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    case Part::virtual_mac: {
        const auto &request = layer.add_virtual_mac(plans().macs[added.index]);
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    }
    routing.sync();
}

void RoadSwitch::add(const Lines &names)
{
    for (const std::string &name : names) {
        add(name);
    }
}

void RoadSwitch::remove(std::string_view name, bool keep)
{
    const Item &gone = item(name);
    switch (gone.part) {
    case Part::router_mac: {
        const auto &request = layer.remove_router_mac(stations_.at(gone.index));
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    case Part::vlan:
        throw std::invalid_argument("VLANs of the L2 side go together");
    case Part::interface: {
        const auto &request = layer.take_down(interface(name), keep);
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    case Part::pair: {
        const auto request = layer.remove_pair(plans().pairs[gone.index]);
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    case Part::virtual_mac: {
        const auto request = layer.remove_virtual_mac(plans().macs[gone.index]);
        EXPECT_TRUE(request.ok()) << name << ": " << request.last_error();
        break;
    }
    }
    routing.sync();
}

Lines RoadSwitch::all_named()
{
    Lines all = named_entries(hardware.chip, numbers());
    for (std::string &line : named_tables(hardware, layer)) {
        all.push_back("table: " + std::move(line));
    }
    std::ranges::sort(all);
    return all;
}

Lines RoadSwitch::fates()
{
    Lines lines;
    for (const Sample &sample : samples()) {
        lines.push_back(
            fmt::format("{}: {}", sample.words, traffic.send(sample.port, sample.bytes)));
    }
    return lines;
}

std::map<std::string, int> RoadSwitch::numbers() const
{
    std::map<std::string, int> all;
    for (const auto &each : layer.interfaces()) {
        if (each->standing() != l3lif::Standing::down) {
            all[each->lif->plan().name] = each->lif->iif();
        }
    }
    return all;
}

} // namespace roads
