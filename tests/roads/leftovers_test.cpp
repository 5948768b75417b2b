/*
 * leftovers_test.cpp: what an add and a delete leave, kind by kind; all else is as before, and a
 * second and a fiftieth time leave no more than the first. leftovers.h has the lists.
 */
#include "roads/leftovers.h"

#include "faults/views.h"

#include "l3lif/interface_numbers.h"
#include "l3lif/property_requests.h"
#include "rtifhal_trident.h"

#include "chip/basics.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <tuple>

namespace
{

using roads::Case;
using roads::Item;
using roads::Kind;
using roads::Lines;
using roads::Part;
using roads::RoadSwitch;

void append(Lines &lines, const Lines &more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

/** All but where the layer above has its interfaces. */
Lines seen(RoadSwitch &road)
{
    Lines lines = road.all_named();
    std::erase_if(lines,
                  [](const std::string &line) { return line.starts_with("table: interface "); });
    return lines;
}

Lines sorted(Lines lines)
{
    std::ranges::sort(lines);
    return lines;
}

int held_back()
{
    int count = 0;
    for (int number = 0; number <= simswitch::chip::LAST_IIF; ++number) {
        count += lab::l3lif::is_set(l3lif_l3iif_table_preserve, number) ? 1 : 0;
    }
    return count;
}

/** What of an interface that is kept is there beside what its delete leaves. */
Lines kept(Kind chip, const Case &tried, int number, int numbers_before)
{
    Lines lines = {fmt::format("- table: numbers: {} in use", numbers_before),
                   fmt::format("+ table: numbers: {} in use", numbers_before + 1)};
    const bool is_channel = tried.name == "PortChannel1";
    const std::string owner = is_channel ? tried.name : fmt::format("number {}", number);
    // Its ingress object waits for the next add.
    lines.push_back(fmt::format("+ L3 ingress of {}: vrf 1 urpf 0 class 64 ipmc 0 qos 0 flags {}",
                                owner, chip == Kind::trident ? "0x6" : "0x406"));
    // A port-channel's L3 interface and record go with destroy alone.
    if (is_channel) {
        append(lines, {"+ L3 interface of PortChannel1: mac 02:00:00:00:0f:01 vlan 4094 vrf 1 mtu "
                       "9100 ttl 0 tunnel 0 flags 0x0",
                       "+ table: record 0x20001000: iif PortChannel1 VLAN 4094 VRF 1 MTU 9100"});
    }
    // The record under the port-channel's number has the number that is kept.
    if (tried.name == "PortChannel3.20") {
        append(lines, {"- table: record 0x20003000: iif nobody's VLAN 20 VRF 1 MTU 9100",
                       "+ table: record 0x20003000: iif PortChannel3.20 VLAN 20 VRF 1 MTU 9100"});
    }
    return lines;
}

int numbers_in_use(const Lines &lines)
{
    constexpr std::string_view NUMBERS = "table: numbers: ";
    const auto found = std::ranges::find_if(
        lines, [&](const std::string &line) { return line.starts_with(NUMBERS); });
    return found == lines.end() ? 0 : std::stoi(found->substr(NUMBERS.size()));
}

/** Sets properties of all sorts on an interface, gives it a label and stops it. */
void change_properties(RoadSwitch &road, const std::string &name)
{
    lab::l3lif::Lif &lif = *road.interface(name).lif;
    l3lif_pi_ctxt &properties = *lif.record()->l3lif_pi_ctxt;
    properties.ipv4_en = 1;
    properties.ipv4_mc_en = 1;
    properties.ipv6_en = 1;
    properties.mpls_en = 1;
    properties.vrf = 5;
    properties.urpf_mode = 3;
    properties.mtu = 1400;
    EXPECT_TRUE(lab::l3lif::set_property(road.hardware, lif, "set", 0, 0).ok());
    EXPECT_TRUE(lab::l3lif::set_label(road.hardware, lif, "set label", 77).ok());
    EXPECT_TRUE(lab::l3lif::disable(road.hardware, lif, "disable").ok());
}

class Leftovers : public testing::TestWithParam<std::tuple<Kind, Case>>
{
protected:
    Leftovers() : chip(std::get<0>(GetParam())), tried(std::get<1>(GetParam())), road(chip)
    {
        for (const Item &each : roads::items()) {
            if (each.part == Part::vlan) {
                road.add(each.name);
            }
        }
        road.add("Ethernet4");
        road.add(tried.before);
        base = seen(road);
        base_held = held_back();
    }
    bool is_interface() const { return roads::item(tried.name).part == Part::interface; }

    Kind chip;
    Case tried;
    RoadSwitch road;
    Lines base;
    int base_held = 0;
};

class LeftoversOfInterfaces : public Leftovers
{
};

std::vector<Case> interfaces()
{
    std::vector<Case> all;
    std::ranges::copy_if(roads::cases(), std::back_inserter(all), [](const Case &each) {
        return roads::item(each.name).part == Part::interface;
    });
    return all;
}

std::string label(const testing::TestParamInfo<std::tuple<Kind, Case>> &info)
{
    return fmt::format("{}_{}", std::get<1>(info.param).label,
                       roads::chip_name(std::get<0>(info.param)));
}

INSTANTIATE_TEST_SUITE_P(Kinds, Leftovers,
                         testing::Combine(testing::Values(Kind::trident, Kind::trident2),
                                          testing::ValuesIn(roads::cases())),
                         label);
INSTANTIATE_TEST_SUITE_P(Kinds, LeftoversOfInterfaces,
                         testing::Combine(testing::Values(Kind::trident, Kind::trident2),
                                          testing::ValuesIn(interfaces())),
                         label);

} // namespace

TEST_P(Leftovers, OfAnAddAndADeleteAreTheListedAndNoMoreTheNextFiftyTimes)
{
    road.add(tried.name);
    road.remove(tried.name);
    const Lines once = seen(road);
    EXPECT_EQ(sorted(lab::faults::differences(base, once)), sorted(tried.left(chip)));
    for (int again = 0; again < 49; ++again) {
        road.add(tried.name);
        road.remove(tried.name);
        if (again == 0) {
            EXPECT_EQ(lab::faults::differences(once, seen(road)), Lines{});
        }
    }
    EXPECT_EQ(lab::faults::differences(once, seen(road)), Lines{});
    // A number is held back each time: the next add takes a free one.
    EXPECT_EQ(held_back() - base_held, is_interface() ? 50 : 0);
}

TEST_P(LeftoversOfInterfaces, ThatWereKeptAndThenDeletedAreTheSame)
{
    road.add(tried.name);
    road.remove(tried.name);
    const Lines once = seen(road);
    road.add(tried.name);
    const int number = road.interface(tried.name).lif->iif();
    road.remove(tried.name, true);
    // A tunnel goes for good, kept or not.
    const bool goes = tried.name == "Tunnel1";
    EXPECT_EQ(sorted(lab::faults::differences(once, seen(road))),
              goes ? Lines{} : sorted(kept(chip, tried, number, numbers_in_use(once))));
    road.add(tried.name);
    EXPECT_EQ(road.interface(tried.name).lif->iif() == number, !goes);
    road.remove(tried.name);
    EXPECT_EQ(lab::faults::differences(once, seen(road)), Lines{});
}

TEST_P(LeftoversOfInterfaces, WhosePropertiesWereSetAreThoseListedBeside)
{
    road.add(tried.name);
    road.remove(tried.name);
    const Lines once = seen(road);
    road.add(tried.name);
    change_properties(road, tried.name);
    road.remove(tried.name, true);
    road.add(tried.name);
    road.remove(tried.name);
    EXPECT_EQ(lab::faults::differences(roads::changed(once, tried.by_properties), seen(road)),
              Lines{});
}
