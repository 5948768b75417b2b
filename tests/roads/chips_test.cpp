/*
 * chips_test.cpp: the same requests to a Trident and to a Trident2 lead to the same calls in the
 * same order, to the same tables and fates, but for the differences listed here.
 */
#include "roads/chip_match.h"
#include "roads/road_switch.h"

#include "faults/views.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <functional>
#include <regex>
#include <utility>

namespace
{

using roads::Item;
using roads::Kind;
using roads::Lines;
using roads::Part;
using roads::RoadSwitch;

/** How a Trident2 has something that a Trident has otherwise. */
struct Difference {
    const char *reason;
    const char *trident;  ///< a regular expression of what a line of the Trident has
    const char *trident2; ///< what that of the Trident2 has in its place
};

/** In calls and in entries. */
constexpr std::array DIFFERENCES = {
    Difference{"the library asks which chip it is", R"(^bcm_pd_is_device_trident2\(\) = 0$)",
               "bcm_pd_is_device_trident2() = 1"},
    Difference{"the supervisor's rules are twice as many",
               R"(^(fwmpd_trident_get_sup_tcam_default_size\(\) = 0) \[size=128\]$)",
               "$1 [size=256]"},
    Difference{"so the flood list's, which are the last of them, are 128 later",
               R"(^(bcm_field_\w+\(0, |field entry )12(0|3|4|5|7)\b)", "$1<$2>"},
    Difference{"a trunk picks its port by another criterion, over a table of flows",
               R"(psc=9 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=0\})",
               "psc=15 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=256}"},
    Difference{"and so it stands in the chip", R"(^(trunk \d+:) psc 9 )", "$1 psc 15 "},
};

/** The rules of the flood list on a Trident2, by the last digit of those of a Trident. */
std::string with_rules(std::string line)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 5> RULES = {
        {{"<0>", "248"}, {"<3>", "251"}, {"<4>", "252"}, {"<5>", "253"}, {"<7>", "255"}}};
    for (const auto &[mark, rule] : RULES) {
        if (const auto found = line.find(mark); found != std::string::npos) {
            line.replace(found, mark.size(), rule);
        }
    }
    return line;
}

/**
 * An ingress object's flags on a Trident2, where they are always 6 on a Trident: 0x400 that they
 * count, 0x20 and 0x80 the families that the interface doesn't route.
 */
std::string flags_of(std::string_view interface)
{
    if (interface == "PortChannel3") {
        return "0x4a6";
    }
    const bool has_no_ip6 = interface == "Ethernet40" || interface.starts_with("Tunnel");
    return has_no_ip6 ? "0x486" : "0x406";
}

/** Of the numbers 3584 to 8191 are reserved, on a Trident2 those from 7680 on. */
std::string with_reserved_numbers(const std::string &line)
{
    static const std::regex COUNT(R"(^table: numbers: (\d+) in use$)");
    constexpr int MORE_FREE = 7680 - 3584;
    std::smatch count;
    return std::regex_match(line, count, COUNT)
               ? fmt::format("table: numbers: {} in use", std::stoi(count.str(1)) - MORE_FREE)
               : line;
}

/** What a line of the Trident would be on a Trident2. @param item  whose request the call was */
std::string on_trident2(std::string line, std::string_view item)
{
    static const std::regex CALL(R"(^(rtifhal_bcm_l3_ingress_create\(0, \{flags=)0x6 )");
    static const std::regex ENTRY(R"(^(L3 ingress of ([^:]*):.* flags )0x6$)");
    static const auto DIFFERENCES_READ = [] {
        std::vector<std::pair<std::regex, std::string>> all;
        all.reserve(std::size(DIFFERENCES));
        for (const Difference &each : DIFFERENCES) {
            all.emplace_back(each.trident, each.trident2);
        }
        return all;
    }();
    for (const auto &[trident, trident2] : DIFFERENCES_READ) {
        line = std::regex_replace(line, trident, trident2);
    }
    std::smatch entry;
    if (std::regex_match(line, entry, ENTRY)) {
        return entry.str(1) + flags_of(entry.str(2));
    }
    return with_reserved_numbers(
        with_rules(std::regex_replace(line, CALL, fmt::format("$01{} ", flags_of(item)))));
}

Lines on_trident2(const Lines &lines, std::string_view item)
{
    Lines all;
    for (const std::string &line : lines) {
        all.push_back(on_trident2(line, item));
    }
    return all;
}

/** A port that gets its first VLAN or loses its last is opened for VXLAN, on a Trident2 alone. */
bool opens_for_vxlan(const std::string &call)
{
    static const std::regex OPENS(R"(^fwmpd_bcm_port_control_set\(0, \d+, 187, 1\) = 0$)");
    return std::regex_match(call, OPENS);
}

/** The calls that each of all adds and deletes leads to, and what is there then. */
struct Story {
    std::vector<std::pair<std::string, Lines>> calls; ///< by the item that was asked for
    Lines up;                                         ///< all entries, when all is up
    Lines up_fates;
    Lines down; ///< all entries, when what has no subinterface is down
};

Story tell(Kind chip)
{
    RoadSwitch road(chip);
    Story story;
    const auto note = [&](const std::string &name, const std::function<void()> &work) {
        const std::size_t from = road.hardware.journal.records().size();
        work();
        story.calls.emplace_back(name, road.hardware.journal.calls(from));
    };
    for (const std::string &name : roads::item_names()) {
        note(name, [&] { road.add(name); });
    }
    story.up = road.all_named();
    story.up_fates = road.fates();
    const auto &items = roads::items();
    for (auto at = items.rbegin(); at != items.rend(); ++at) {
        const Item &item = *at;
        if (item.part != Part::interface) {
            continue;
        }
        note(item.name, [&] { road.remove(item.name, true); });
        if (item.name != "Ethernet24" && item.name != "PortChannel3") {
            note(item.name, [&] { road.add(item.name); });
            note(item.name, [&] { road.remove(item.name); });
        }
    }
    story.down = road.all_named();
    return story;
}

/** The entries of a Trident2 without the control of a port that a Trident hasn't. */
Lines without_vxlan(Lines entries)
{
    constexpr std::string_view OPEN = " 187=1";
    for (std::string &line : entries) {
        const auto found = line.find(OPEN);
        if (line.starts_with("port ") && found != std::string::npos) {
            line.erase(found, OPEN.size());
        }
    }
    std::ranges::sort(entries);
    return entries;
}

Lines sorted(Lines lines)
{
    std::ranges::sort(lines);
    return lines;
}

} // namespace

TEST(Chips, DifferInNoOtherCallThanTheListed)
{
    const Story trident = tell(Kind::trident);
    const Story trident2 = tell(Kind::trident2);
    ASSERT_EQ(trident.calls.size(), trident2.calls.size());
    int opened = 0;
    for (std::size_t i = 0; i < trident.calls.size(); ++i) {
        const auto &[name, calls] = trident.calls[i];
        Lines others = trident2.calls[i].second;
        opened += static_cast<int>(std::erase_if(others, opens_for_vxlan));
        EXPECT_EQ(roads::first_difference(on_trident2(calls, name), others), "")
            << name << ", request " << i;
    }
    // 12 ports get their first VLAN; all lose their last, 9 after having had one again.
    EXPECT_EQ(opened, 12 + 12 + 9 + 9);
}

TEST(Chips, DifferInNoOtherEntryThanTheListed)
{
    const Story trident = tell(Kind::trident);
    const Story trident2 = tell(Kind::trident2);
    EXPECT_EQ(
        lab::faults::differences(sorted(on_trident2(trident.up, "")), without_vxlan(trident2.up)),
        Lines{});
    EXPECT_EQ(lab::faults::differences(sorted(on_trident2(trident.down, "")),
                                       without_vxlan(trident2.down)),
              Lines{});
    // A port-channel without families is up for its subinterfaces. They open the ports of a
    // Trident, where its packets find no route; on a Trident2 its ingress object keeps it closed.
    const std::string words = "--in Ethernet28 --ip 10.0.0.9 10.0.4.9: dropped: ";
    EXPECT_EQ(lab::faults::differences(sorted(trident.up_fates), sorted(trident2.up_fates)),
              (Lines{"- " + words + "no route to its destination",
                     "+ " + words + "not routable: routing of its kind is off"}));
}

TEST(Chips, EachListedDifferenceIsThere)
{
    const Story trident = tell(Kind::trident);
    Lines lines = trident.up;
    for (const auto &[name, calls] : trident.calls) {
        lines.insert(lines.end(), calls.begin(), calls.end());
    }
    for (const Difference &each : DIFFERENCES) {
        const std::regex seen(each.trident);
        EXPECT_TRUE(std::ranges::any_of(lines, [&](const std::string &line) {
            return std::regex_search(line, seen);
        })) << each.reason;
    }
}
