/*
 * chip_station_test.cpp: the station table.
 */
#include "chip/stations.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

constexpr Mac ALL_ONES = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};

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

TEST(Stations, ExactStationMatchesItsFrameAlone)
{
    const Mac mac = {0, 1, 2, 3, 4, 5};
    Stations stations(1);
    int id = 0;
    stations.create({.mac = mac,
                     .mac_mask = ALL_ONES,
                     .vlan = 4094,
                     .vlan_mask = 0xfff,
                     .src_port = 5,
                     .src_port_mask = 127},
                    id);
    EXPECT_EQ(stations.match(mac, 4094, 5), id);
    EXPECT_EQ(stations.match(mac, 4094, 6), std::nullopt);
    EXPECT_EQ(stations.match(mac, 4093, 5), std::nullopt);
    EXPECT_EQ(stations.match({0, 1, 2, 3, 4, 4}, 4094, 5), std::nullopt);
    EXPECT_EQ(stations.match({1, 1, 2, 3, 4, 5}, 4094, 5), std::nullopt);
}

TEST(Stations, BitsOutsideTheMasksDontCount)
{
    Stations stations(1);
    int id = 0;
    stations.create({.mac = {0x33, 0x33},
                     .mac_mask = {0xff, 0xff},
                     .vlan = 100,
                     .vlan_mask = 0xffe,
                     .src_port = 5,
                     .src_port_mask = 127},
                    id);
    EXPECT_EQ(stations.match({0x33, 0x33, 9, 9, 9, 9}, 101, 5 + 128), id);
    EXPECT_EQ(stations.match({0x33, 0x33, 9, 9, 9, 9}, 102, 5), std::nullopt);
}

TEST(Stations, EmptyMasksTakeEveryVlanAndPort)
{
    const Mac mac = {0, 1, 2, 3, 4, 5};
    Stations stations(1);
    int id = 0;
    EXPECT_EQ(stations.match(mac, 1, 1), std::nullopt);
    stations.create({.mac = mac, .mac_mask = ALL_ONES, .vlan = 7, .src_port = 7}, id);
    EXPECT_EQ(stations.match(mac, 0, 0), id);
    EXPECT_EQ(stations.match(mac, 4095, 255), id);
}

TEST(Stations, LowestIdOfThoseThatMatchTakesTheFrame)
{
    const Mac mac = {0, 1, 2, 3, 4, 5};
    Stations stations(64);
    int id = 0;
    stations.create({.mac = {9}, .mac_mask = ALL_ONES}, id);
    for (int count = 0; count < 60; ++count) {
        stations.create({.mac = mac, .mac_mask = ALL_ONES}, id);
    }
    EXPECT_EQ(stations.match(mac, 1, 1), 2);
    stations.remove(2);
    EXPECT_EQ(stations.match(mac, 1, 1), 3);
}

TEST(Stations, LostStationIsFoundNoMoreAndItsIdComesAgain)
{
    Stations stations(4);
    int id = 0;
    stations.create(station_on(1), id);
    stations.create(station_on(2), id);
    EXPECT_THAT(stations.remove(1), Done());
    EXPECT_EQ(stations.find(1), nullptr);
    EXPECT_EQ(*stations.find(2), station_on(2));
    stations.create(station_on(3), id);
    EXPECT_EQ(id, 1);
}

TEST(Stations, TextShowsAllFields)
{
    EXPECT_EQ(text(station_on(5)),
              "flags 0x1c mac 00:01:02:03:04:05/00:00:00:00:00:00 vlan 5/0xfff port 0/0x0");
}

} // namespace simswitch::chip
