/*
 * router_mac_test.cpp: router MACs: the station entry of each, and L3 routing
 * of the CPU port, which carries no count.
 */
#include "support/library_test.h"

#include <fwm/state.h>
#include <sdk/error.h>

namespace rtifhal_test::router_mac
{

namespace
{

constexpr std::uint8_t MAC[6] = {0x00, 0x1b, 0x54, 0xc2, 0xfe, 0x09};
constexpr int NO_STATION = 0xFFFF;
constexpr int UNKNOWN_STATION = 12345;

class RouterMac : public LibraryTest
{
protected:
    static Message added(int station)
    {
        return trace("rtifhal_trident_rmac_add",
                     "rmac (00:1b:54:c2:fe:09) @ idx:" + std::to_string(station) + "\n");
    }

    std::string cpu_port_routing() const
    {
        return "IPv4 " + std::to_string(sw.chip.ports.control(0, 8)) + " IPv6 " +
               std::to_string(sw.chip.ports.control(0, 9));
    }
};

class RouterMacOnTrident2 : public Trident2Test
{
};

const std::string ADD_STATION =
    "bcm_l2_station_add(0, {flags=0x1c mac=00:1b:54:c2:fe:09/ff:ff:ff:ff:ff:ff vlan=0/0 port=0/0})";

/** The calls of an add, of which the station add ended as told. */
std::vector<std::string> add_calls(const std::string &station_result)
{
    return {
        "rtifhal_get_bcm_unit(0) = 0",          "bcm_l2_station_t_init()",
        "fwmpd_trident_batch_flush() = 0",      ADD_STATION + station_result,
        "bcm_port_control_set(0, 0, 8, 1) = 0", "bcm_port_control_set(0, 0, 9, 1) = 0",
    };
}

/** The calls of a delete, of which the station delete ended as told. */
std::vector<std::string> delete_calls(int station, int result)
{
    return {
        "rtifhal_get_bcm_unit(0) = 0",
        "fwmpd_trident_batch_flush() = 0",
        "bcm_l2_station_delete(0, " + std::to_string(station) + ") = " + std::to_string(result),
        "bcm_port_control_set(0, 0, 8, 0) = 0",
        "bcm_port_control_set(0, 0, 9, 0) = 0",
    };
}

} // namespace

TEST_F(RouterMac, AddMakesAStationForEveryVlanAndOpensTheCpuPort)
{
    const int station = rtifhal_trident_rmac_add(MAC);
    EXPECT_NE(station, NO_STATION);
    expect_calls(add_calls(" = 0 [id=" + std::to_string(station) + "]"));
    expect_messages({added(station)});
}

TEST_F(RouterMacOnTrident2, AddMakesTheSameCalls)
{
    const int station = rtifhal_trident_rmac_add(MAC);
    expect_calls(add_calls(" = 0 [id=" + std::to_string(station) + "]"));
}

TEST_F(RouterMac, AddsOfTwoMacsGiveTwoStations)
{
    const std::uint8_t other[6] = {0x00, 0x1b, 0x54, 0xc2, 0xfe, 0x0a};
    EXPECT_NE(rtifhal_trident_rmac_add(MAC), rtifhal_trident_rmac_add(other));
}

TEST_F(RouterMac, FailedAddGivesNoStationAndStillOpensTheCpuPort)
{
    fail("bcm_l2_station_add", -6);
    EXPECT_EQ(rtifhal_trident_rmac_add(MAC), NO_STATION);
    expect_calls(add_calls(" = -6"));
    expect_messages(
        {report("rtifhal_trident_rmac_add",
                std::string("rmac (00:1b:54:c2:fe:09) failed: ") + _shr_errmsg[6] + "\n")});
}

TEST_F(RouterMac, PositiveResultOfTheStationAddIsASuccess)
{
    fail("bcm_l2_station_add", 1);
    EXPECT_EQ(rtifhal_trident_rmac_add(MAC), NO_STATION);
    expect_messages({added(NO_STATION)});
}

TEST_F(RouterMac, RefusedIpv4ControlOfTheAddIsATraceAndIpv6Follows)
{
    fail_when("bcm_port_control_set", "0, 0, 8, 1", -4);
    const int station = rtifhal_trident_rmac_add(MAC);
    EXPECT_NE(station, NO_STATION);
    EXPECT_EQ(calls_of({"bcm_port_control_set"}),
              (std::vector<std::string>{"bcm_port_control_set(0, 0, 8, 1) = -4",
                                        "bcm_port_control_set(0, 0, 9, 1) = 0"}));
    expect_messages({added(station), trace("rtifhal_trident_rmac_add",
                                           "Failed to enable IPv4 L3 routing on CPU port\n")});
}

TEST_F(RouterMac, RefusedIpv6ControlOfTheAddIsATrace)
{
    fail_when("bcm_port_control_set", "0, 0, 9, 1", -4);
    const int station = rtifhal_trident_rmac_add(MAC);
    EXPECT_NE(station, NO_STATION);
    expect_messages({added(station), trace("rtifhal_trident_rmac_add",
                                           "Failed to enable IPv6 L3 routing on CPU port\n")});
}

TEST_F(RouterMac, AddInRestoreModeMakesNoCallAndGivesNoStation)
{
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(rtifhal_trident_rmac_add(MAC), NO_STATION);
    expect_calls({});
    expect_messages({});
}

TEST_F(RouterMac, AddOfANullMacMakesNoCallAndGivesNoStation)
{
    EXPECT_EQ(rtifhal_trident_rmac_add(nullptr), NO_STATION);
    expect_calls({});
}

TEST_F(RouterMac, UnitOfAllCallsIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    rtifhal_trident_rmac_add(MAC);
    ASSERT_EQ(calls_of({"bcm_l2_station_add"}).size(), 1U);
    EXPECT_EQ(calls_of({"bcm_l2_station_add"})[0].rfind("bcm_l2_station_add(3, ", 0), 0U);
    ASSERT_EQ(calls_of({"bcm_port_control_set"}).size(), 2U);
    EXPECT_EQ(calls_of({"bcm_port_control_set"})[1].rfind("bcm_port_control_set(3, 0, 9, 1)", 0),
              0U);
}

TEST_F(RouterMac, DeleteRemovesTheStationAndClosesTheCpuPort)
{
    const int station = rtifhal_trident_rmac_add(MAC);
    start();
    EXPECT_EQ(rtifhal_trident_rmac_del(station), 0);
    expect_calls(delete_calls(station, 0));
    expect_messages({});
}

TEST_F(RouterMac, DeleteOfAnUnknownStationIsReportedAndStillClosesTheCpuPort)
{
    EXPECT_EQ(rtifhal_trident_rmac_del(UNKNOWN_STATION), -1);
    expect_calls(delete_calls(UNKNOWN_STATION, -7));
    expect_messages({report("rtifhal_trident_rmac_del", std::string("l2_station_delete failed(") +
                                                            _shr_errmsg[7] + ") for idx:12345\n")});
}

TEST_F(RouterMac, DeleteInRestoreModeStillCallsTheChip)
{
    const int station = rtifhal_trident_rmac_add(MAC);
    g_fwm_pss_restore_mode = 1;
    start();
    EXPECT_EQ(rtifhal_trident_rmac_del(station), 0);
    expect_calls(delete_calls(station, 0));
}

TEST_F(RouterMac, RefusedControlsOfTheDeleteAreTraces)
{
    const int station = rtifhal_trident_rmac_add(MAC);
    start();
    fail_when("bcm_port_control_set", "0, 0, 8, 0", -16);
    fail_when("bcm_port_control_set", "0, 0, 9, 0", -16);
    EXPECT_EQ(rtifhal_trident_rmac_del(station), 0);
    expect_messages({
        trace("rtifhal_trident_rmac_del", "Failed to disable IPv4 L3 routing on CPU port\n"),
        trace("rtifhal_trident_rmac_del", "Failed to disable IPv6 L3 routing on CPU port\n"),
    });
}

TEST_F(RouterMac, PositiveAnswersAreNoFailures)
{
    const int station = rtifhal_trident_rmac_add(MAC);
    start();
    fail("bcm_l2_station_delete", 1);
    fail_when("bcm_port_control_set", "0, 0, 8, 0", 1);
    fail_when("bcm_port_control_set", "0, 0, 9, 0", 1);
    EXPECT_EQ(rtifhal_trident_rmac_del(station), 0);
    expect_messages({});

    fail_when("bcm_port_control_set", "0, 0, 8, 1", 1);
    fail_when("bcm_port_control_set", "0, 0, 9, 1", 1);
    EXPECT_NE(rtifhal_trident_rmac_add(MAC), NO_STATION);
    EXPECT_EQ(messages().size(), 1U); // the station's
}

TEST_F(RouterMac, DeleteOfOneOfTwoClosesTheCpuPortUntilTheNextAdd)
{
    const std::uint8_t other[6] = {0x00, 0x1b, 0x54, 0xc2, 0xfe, 0x0a};
    const int station = rtifhal_trident_rmac_add(MAC);
    rtifhal_trident_rmac_add(other);
    EXPECT_EQ(cpu_port_routing(), "IPv4 1 IPv6 1");
    rtifhal_trident_rmac_del(station);
    EXPECT_EQ(sw.chip.stations.size(), 1U);
    EXPECT_EQ(cpu_port_routing(), "IPv4 0 IPv6 0");
    rtifhal_trident_rmac_add(MAC);
    EXPECT_EQ(cpu_port_routing(), "IPv4 1 IPv6 1");
}

} // namespace rtifhal_test::router_mac
