/*
 * orders_test.cpp: the same adds in any order, with deletes and adds of others
 * in between, end in the same chip, the same tables and the same fate of each
 * frame.
 */
#include "roads/chip_match.h"
#include "roads/road_switch.h"

#include "faults/views.h"

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <tuple>

namespace
{

using roads::Change;
using roads::changed;
using roads::Item;
using roads::Kind;
using roads::Lines;
using roads::Part;
using roads::RoadSwitch;

/** One thing to do. */
struct Step {
    enum class Do : std::uint8_t { add, remove, keep } what = Do::add;
    std::string name;
};

/** A choice of 0 to below count. The same on each machine. */
std::size_t choose(std::mt19937 &random, std::size_t count)
{
    return random() % count;
}

bool is_needed(const std::string &name, const std::set<std::string> &there)
{
    return std::ranges::any_of(roads::items(), [&](const Item &each) {
        return there.contains(each.name) && std::ranges::find(each.after, name) != each.after.end();
    });
}

/** Takes one away that nobody there needs, for it to come again later. */
void take_one_away(std::mt19937 &random, std::set<std::string> &there, std::vector<Step> &steps)
{
    Lines may_go;
    for (const std::string &name : there) {
        if (roads::item(name).part != Part::vlan && !is_needed(name, there)) {
            may_go.push_back(name);
        }
    }
    if (may_go.empty()) {
        return;
    }
    const std::string name = may_go[choose(random, may_go.size())];
    const bool keep = roads::item(name).part == Part::interface && choose(random, 2) == 0;
    steps.push_back({keep ? Step::Do::keep : Step::Do::remove, name});
    there.erase(name);
}

/** All adds in an order that a layer above may use. @param deletes  with some in between */
std::vector<Step> order(std::uint32_t seed, bool deletes)
{
    std::mt19937 random(seed);
    std::set<std::string> there;
    std::vector<Step> steps;
    std::size_t left_to_delete = deletes ? 12 : 0;
    while (there.size() < roads::items().size()) {
        Lines may_come;
        for (const Item &each : roads::items()) {
            if (!there.contains(each.name) &&
                std::ranges::all_of(each.after,
                                    [&](const auto &name) { return there.contains(name); })) {
                may_come.push_back(each.name);
            }
        }
        const std::string name = may_come[choose(random, may_come.size())];
        steps.push_back({Step::Do::add, name});
        there.insert(name);
        if (left_to_delete != 0 && choose(random, 2) == 0) {
            --left_to_delete;
            take_one_away(random, there, steps);
        }
    }
    return steps;
}

/** What a delete changes for good, and why. */
struct Trace {
    std::string_view deleted;
    std::vector<Change> changes;
};

/**
 * A port's delete opens it for all families but IPv6 multicast, whatever it had; the next add
 * writes the IPv4 controls alone. As IPv6 is open then, nobody sets the property that would
 * close IPv4 multicast again (control 10).
 */
const std::vector<Trace> &port_traces()
{
    static const std::vector<Trace> ALL = {
        {"Ethernet0", {{"port 1 of", " 9=1", " 9=1 10=1"}}},
        {"Ethernet4", {{"port 2 of", " 9=1", " 9=1 10=1"}}},
        {"Ethernet36", {{"port 10 of", " 9=1", " 9=1 10=1"}}},
        {"Ethernet40", {{"port 11 of", " 10=1", " 9=1 10=1"}}},
    };
    return ALL;
}

/** Routing that is taken back from a secondary marks its VLAN, and nothing clears the mark. */
struct PairTrace {
    std::string_view pair;
    std::string_view svi;
    std::vector<Change> changes;
};

const std::vector<PairTrace> &pair_traces()
{
    static const std::vector<PairTrace> ALL = {
        {"pair 200 201",
         "Vlan200",
         {{"VLAN 201 of", "0xa00", "0xa40"}, {"table: VLAN 201 cached", "0x200", "0x240"}}},
        {"pair 300 301",
         "Vlan300",
         {{"VLAN 301 of", "0xa00", "0xa40"}, {"table: VLAN 301 cached", "0x200", "0x240"}}},
    };
    return ALL;
}

void note_delete(const std::string &name, const std::set<std::string> &there,
                 std::vector<Change> &changes)
{
    for (const Trace &trace : port_traces()) {
        if (trace.deleted == name) {
            changes.insert(changes.end(), trace.changes.begin(), trace.changes.end());
        }
    }
    for (const PairTrace &trace : pair_traces()) {
        const std::string pair(trace.pair);
        const std::string svi(trace.svi);
        if ((name == pair && there.contains(svi)) || (name == svi && there.contains(pair))) {
            changes.insert(changes.end(), trace.changes.begin(), trace.changes.end());
        }
    }
}

/** In what the end by a road differs from that by the file's order. */
std::vector<Change> changes_by(const std::vector<Step> &steps)
{
    std::vector<Change> changes;
    std::set<std::string> there;
    std::string_view last;
    for (const Step &step : steps) {
        if (step.what == Step::Do::add) {
            there.insert(step.name);
            last = step.name.starts_with("PortChannel3.") ? std::string_view(step.name) : last;
        } else {
            there.erase(step.name);
            note_delete(step.name, there, changes);
        }
    }
    // A port-channel's subinterfaces are stored under its own number: the last one stays.
    if (last == "PortChannel3.20") {
        changes.push_back(
            {"table: record 0x20003000", "PortChannel3.21 VLAN 21", "PortChannel3.20 VLAN 20"});
    }
    return changes;
}

/** What a road ends in. */
struct End {
    Lines named;
    Lines fates;
};

std::unique_ptr<RoadSwitch> go(Kind chip, const std::vector<Step> &steps)
{
    auto road = std::make_unique<RoadSwitch>(chip);
    for (const Step &step : steps) {
        if (step.what == Step::Do::add) {
            road->add(step.name);
        } else {
            road->remove(step.name, step.what == Step::Do::keep);
        }
    }
    return road;
}

std::vector<Step> file_order()
{
    std::vector<Step> steps;
    for (const std::string &name : roads::item_names()) {
        steps.push_back({Step::Do::add, name});
    }
    return steps;
}

/** The end by the file's order, once for each chip. */
const End &file_end(Kind chip)
{
    static std::map<Kind, End> ends;
    if (!ends.contains(chip)) {
        const auto road = go(chip, file_order());
        ends[chip] = {road->all_named(), road->fates()};
    }
    return ends[chip];
}

/** The port without an IPv6 address: nobody opens it for IPv6. */
constexpr std::string_view CLOSED = "Ethernet40";

bool was_deleted(const std::vector<Step> &steps, std::string_view name)
{
    return std::ranges::any_of(
        steps, [&](const Step &step) { return step.what != Step::Do::add && step.name == name; });
}

/**
 * After a delete the closed port takes IPv6, on a Trident. On a Trident2 the ingress object, which
 * each add writes, keeps it closed.
 */
Lines fates_after(Kind chip, Lines fates, bool closed_port_went)
{
    const std::string words = "--in Ethernet40 --ip 2001:db8:40::9 2001:db8:36::9: ";
    for (std::string &fate : fates) {
        if (fate.starts_with(words)) {
            EXPECT_EQ(fate, words + "dropped: not routable: routing of its kind is off");
            if (closed_port_went && chip == Kind::trident) {
                fate = words + "Ethernet36 untagged: 02:00:00:00:0f:01 > 02:aa:00:00:00:24, "
                               "2001:db8:40::9 > 2001:db8:36::9 ttl 63";
            }
        }
    }
    return fates;
}

class Orders : public testing::TestWithParam<Kind>
{
};

INSTANTIATE_TEST_SUITE_P(Chips, Orders, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return roads::chip_name(info.param); });

} // namespace

TEST_P(Orders, OfTheSameAddsEndInTheSameChipAndTables)
{
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        const auto steps = order(seed, false);
        const auto road = go(GetParam(), steps);
        EXPECT_EQ(lab::faults::differences(changed(file_end(GetParam()).named, changes_by(steps)),
                                           road->all_named()),
                  Lines{})
            << "seed " << seed;
    }
}

TEST_P(Orders, OfTheSameAddsForwardTheSameFrames)
{
    for (std::uint32_t seed = 13; seed <= 16; ++seed) {
        EXPECT_EQ(roads::first_difference(go(GetParam(), order(seed, false))->fates(),
                                          file_end(GetParam()).fates),
                  "")
            << "seed " << seed;
    }
}

TEST_P(Orders, WithDeletesInBetweenDifferInWhatDeletesLeaveAlone)
{
    int changes_seen = 0;
    for (std::uint32_t seed = 17; seed <= 24; ++seed) {
        const auto steps = order(seed, true);
        const auto changes = changes_by(steps);
        const auto road = go(GetParam(), steps);
        EXPECT_EQ(lab::faults::differences(changed(file_end(GetParam()).named, changes),
                                           road->all_named()),
                  Lines{})
            << "seed " << seed;
        EXPECT_EQ(roads::first_difference(road->fates(),
                                          fates_after(GetParam(), file_end(GetParam()).fates,
                                                      was_deleted(steps, CLOSED))),
                  "")
            << "seed " << seed;
        changes_seen += static_cast<int>(changes.size());
    }
    EXPECT_GT(changes_seen, 8);
}
