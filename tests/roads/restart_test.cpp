/*
 * restart_test.cpp: what the library knows after a restore is what it knew before, but for what no
 * store keeps; the chip isn't touched, and each frame fares as before.
 */
#include "roads/chip_match.h"
#include "roads/road_switch.h"

#include "config/reader.h"
#include "faults/processes.h"
#include "faults/views.h"
#include "l3lif/restart.h"

#include "chip/snapshot.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace
{

using roads::Kind;
using roads::Lines;
using roads::RoadSwitch;

/** All that the tests compare. */
struct Moment {
    Lines chip;
    Lines tables;
    Lines named; ///< tables with the names of interfaces
    Lines fates;
};

Moment moment_of(RoadSwitch &road)
{
    return {simswitch::chip::snapshot(road.hardware.chip),
            lab::faults::library_tables(road.hardware),
            roads::named_tables(road.hardware, road.layer), road.fates()};
}

class Restored : public testing::TestWithParam<Kind>
{
protected:
    Restored()
    {
        RoadSwitch road(GetParam(), folder.path() / "state");
        road.add(roads::item_names());
        before = moment_of(road);
    }

    lab::faults::Folder folder;
    const lab::config::Description config = lab::config::read_config(
        std::filesystem::path(RTIFHAL_SOURCE_DIR) / "tests/roads/two_of_each.json");
    Moment before;
};

INSTANTIATE_TEST_SUITE_P(Chips, Restored, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return roads::chip_name(info.param); });

/** Ports of a VLAN that the wrappers remember: those of restored interfaces, in place of all. */
const Lines FEWER_CACHED_PORTS = {
    "+ VLAN 10 cached ports 7,18",         "+ VLAN 11 cached ports 7",
    "- VLAN 10 cached ports 0,7,14,15,18", "- VLAN 100 cached ports 0,14,15",
    "- VLAN 11 cached ports 0,7",          "- VLAN 20 cached ports 0,8,9",
    "- VLAN 200 cached ports 0,12",        "- VLAN 201 cached ports 0,13",
    "- VLAN 21 cached ports 0,8,9",        "- VLAN 300 cached ports 0,12,16",
    "- VLAN 301 cached ports 0,17",        "- VLAN 4094 cached ports 0,1,2,3,4,5,6,7,8,9,10,11",
};

/** No store has the routed uses of VLANs; the L2 side marks its own again. */
const Lines NO_ROUTED_USES = {
    "+ VLAN 10 used by 0 ports, 0 SVI, 1 L2", "- VLAN 10 used by 2 ports, 0 SVI, 1 L2",
    "- VLAN 11 used by 1 ports, 0 SVI, 0 L2", "- VLAN 20 used by 2 ports, 0 SVI, 0 L2",
    "- VLAN 21 used by 2 ports, 0 SVI, 0 L2",
};

/** The VLANs of a port-channel's members aren't counted again. */
const Lines NO_VLANS_OF_MEMBERS = {
    "- port 3 in VLANs 4094", "- port 4 in VLANs 4094",       "- port 5 in VLANs 4094",
    "- port 6 in VLANs 4094", "- port 8 in VLANs 20,21,4094", "- port 9 in VLANs 20,21,4094",
};

Lines joined(const std::vector<Lines> &lists)
{
    Lines all;
    for (const Lines &list : lists) {
        all.insert(all.end(), list.begin(), list.end());
    }
    std::ranges::sort(all);
    return all;
}

/** Two tables held against each other, sorted. */
Lines changes(const Lines &before, const Lines &after)
{
    return joined({lab::faults::differences(before, after)});
}

/** The numbers that are taken. PortChannel3 (10) and PortChannel3.20 (17) are stored under one
 * number with PortChannel3.21, whose record is the last. */
Lines numbers_missing(Kind chip)
{
    const int reserved = chip == Kind::trident ? 3584 : 7680;
    return {fmt::format("+ numbers taken 0-9 11-16 18-20 {}-8191", reserved),
            fmt::format("- numbers taken 0-20 {}-8191", reserved)};
}

} // namespace

TEST_P(Restored, TablesAreAsBeforeButForWhatNoStoreKeeps)
{
    RoadSwitch road(GetParam(), folder.path() / "state");
    lab::l3lif::restart(road.hardware, road.layer, lab::l3lif::RestartMode::restore, &config);
    const Moment after = moment_of(road);
    // Of a port-channel the first member is restored: 1, 2, 7, 10 and 11 are ports.
    EXPECT_EQ(changes(before.tables, after.tables),
              joined({FEWER_CACHED_PORTS,
                      {"+ VLAN 4094 cached ports 1,2,3,5,7,10,11"},
                      NO_ROUTED_USES,
                      NO_VLANS_OF_MEMBERS,
                      numbers_missing(GetParam()),
                      {"- virtual MACs 6", "+ virtual MACs 0"}}));
}

TEST_P(Restored, TheChipIsAsBeforeAndEachFrameFaresAsBefore)
{
    RoadSwitch road(GetParam(), folder.path() / "state");
    lab::l3lif::restart(road.hardware, road.layer, lab::l3lif::RestartMode::restore, &config);
    const Moment after = moment_of(road);
    EXPECT_EQ(simswitch::chip::changes(before.chip, after.chip), Lines{});
    EXPECT_EQ(roads::first_difference(before.fates, after.fates), "");
}

TEST_P(Restored, AndCompletedEachInterfaceHasItsNumberAndEachVirtualMacIsKnown)
{
    RoadSwitch road(GetParam(), folder.path() / "state");
    lab::l3lif::restart(road.hardware, road.layer, lab::l3lif::RestartMode::restore, &config);
    EXPECT_TRUE(lab::l3lif::complete(road.hardware, road.layer, config).ok());
    const Moment after = moment_of(road);
    EXPECT_EQ(changes(before.tables, after.tables),
              joined({FEWER_CACHED_PORTS,
                      {"+ VLAN 4094 cached ports 1,2,3,5,7,8,9,10,11"},
                      NO_ROUTED_USES,
                      NO_VLANS_OF_MEMBERS}));
    EXPECT_EQ(changes(before.named, after.named),
              joined({FEWER_CACHED_PORTS,
                      {"+ VLAN 4094 cached ports 1,2,3,5,7,8,9,10,11"},
                      NO_ROUTED_USES,
                      NO_VLANS_OF_MEMBERS}));
    // The stations of before stay: nobody knows them.
    EXPECT_EQ(road.hardware.chip.stations.size(), 2U + 2U * 6U);
    EXPECT_EQ(roads::first_difference(before.fates, after.fates), "");
}
