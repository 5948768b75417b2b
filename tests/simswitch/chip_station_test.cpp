/*
 * chip_station_test.cpp: the station table.
 */
#include "chip/stations.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

Station station_on(std::uint16_t vlan)
{
    return {.flags = 0x1c, .mac = {0, 1, 2, 3, 4, 5}, .vlan = vlan, .vlan_mask = 0xfff};
}

} // namespace

TEST(Stations, IdsBeginAtOne)
{
    Stations stations(512);
    int first = 0;
    int second = 0;
    EXPECT_THAT(stations.create(station_on(1), first), Done());
    EXPECT_THAT(stations.create(station_on(2), second), Done());
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(*stations.find(2), station_on(2));
}

TEST(Stations, FullTableRefuses)
{
    Stations stations(1);
    int id = 0;
    stations.create(station_on(1), id);
    int untouched = -1;
    EXPECT_THAT(stations.create(station_on(2), untouched),
                Refused(-6, "station table full: 1 of 1"));
    EXPECT_EQ(untouched, -1);
    EXPECT_EQ(stations.size(), 1U);
}

TEST(Stations, RemoveMakesRoom)
{
    Stations stations(1);
    int id = 0;
    stations.create(station_on(1), id);
    EXPECT_THAT(stations.remove(id), Done());
    EXPECT_THAT(stations.create(station_on(2), id), Done());
    EXPECT_EQ(id, 1);
}

TEST(Stations, UnknownIdIsRefused)
{
    Stations stations(1);
    EXPECT_THAT(stations.remove(7), Refused(-7, "station 7 does not exist"));
    EXPECT_THAT(stations.set(7, {}), Refused(-7, "station 7 does not exist"));
    EXPECT_EQ(stations.find(7), nullptr);
}

TEST(Stations, VlanOutOfRangeIsRefused)
{
    Stations stations(1);
    int id = 0;
    EXPECT_THAT(stations.create(station_on(4096), id), Refused(-4, "VLAN 4096 is not in 0..4095"));
    EXPECT_THAT(stations.create({.vlan_mask = 0x1000}, id),
                Refused(-4, "VLAN mask 4096 is not in 0..4095"));
}

TEST(Stations, SetReplaces)
{
    Stations stations(1);
    int id = 0;
    stations.create(station_on(1), id);
    EXPECT_THAT(stations.set(id, station_on(3)), Done());
    EXPECT_EQ(stations.find(id)->vlan, 3);
}

TEST(Stations, TextShowsAllFields)
{
    EXPECT_EQ(text(station_on(5)),
              "flags 0x1c mac 00:01:02:03:04:05/00:00:00:00:00:00 vlan 5/0xfff port 0/0x0");
}

} // namespace simswitch::chip
