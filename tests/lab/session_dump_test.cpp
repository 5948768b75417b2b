/*
 * session_dump_test.cpp: the library's dumps in a session.
 */
#include "session_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace lab_test
{

namespace
{

using simswitch::chip::Kind;
using testing::HasSubstr;

class SessionDump : public SessionTest, public ::testing::WithParamInterface<Kind>
{
protected:
    SessionDump() : SessionTest({.chip = GetParam()}) {}

    /** The numbers that a chip of this kind doesn't have are never free. */
    const std::string beyond = GetParam() == Kind::trident ? "3584-8191" : "7680-8191";
};

TEST_P(SessionDump, VirtualMacsOfAPort)
{
    up();
    run_all({"vmac add Ethernet0 00:00:5e:00:01:08", "vmac add Ethernet0 00:00:5e:00:01:07",
             "vmac add Ethernet4 00:00:5e:00:01:09", "vmac add Ethernet4.10 00:00:5e:00:01:0a"});
    const auto dump = run("dump Ethernet0");
    EXPECT_EQ(dump.summary, "done, 9 calls");
    EXPECT_EQ(dump.shown, "Ethernet0:pd: vlan=4094 fhrp_mac=00:00:5e:00:01:07\n"
                          "Ethernet0:pd: vlan=4094 fhrp_mac=00:00:5e:00:01:08\n");
    EXPECT_EQ(run("dump Ethernet4.10").shown,
              "Ethernet4.10:pd: vlan=4094 fhrp_mac=00:00:5e:00:01:0a\n");
    run_all({"vmac del Ethernet4 00:00:5e:00:01:09"});
    const auto none = run("dump Ethernet4");
    EXPECT_THAT(none.summary, HasSubstr(", no virtual MAC"));
    EXPECT_EQ(none.shown, "");
}

TEST_P(SessionDump, CallsAndMessagesAreTheRequests)
{
    up();
    run_all({"vmac add Ethernet0 00:00:5e:00:01:08", "dump Ethernet0"});
    EXPECT_EQ(run("show calls").shown,
              "dump Ethernet0: code 0, 5 calls, 1 message\n"
              "    if_index_get_type(0x10000000) = 0 [type=26]\n"
              "    if_index_get_port(0x10000000) = 0 [port=0]\n"
              "    avl_get_first(tree) = record\n"
              "    cmd_prt(command, \"Ethernet0:pd: vlan=4094 fhrp_mac=00:00:5e:00:01:08\\n\", 0) "
              "= 0\n"
              "    avl_get_next(tree, node) = null\n"
              "    104 rtifhal_trident_dump_l3lif: bcm_port: 1\n");
    expect_met({"call cmd_prt count = 1", "message \"bcm_port: 1\"", "no message fhrp_mac"});
}

TEST_P(SessionDump, WhatHasNoPortIsToldSo)
{
    up();
    run_all({"vmac add Vlan100 00:00:5e:00:01:08"});
    const auto svi = run("dump Vlan100");
    EXPECT_TRUE(svi.refused);
    EXPECT_EQ(svi.summary, "refused: code -1, 1 call");
    EXPECT_EQ(svi.shown,
              "    unable to get intf(805306468)\n"
              "    Vlan100 is a VLAN interface: the dump looks the interface's port up first, so "
              "only ports and their subinterfaces have one; 'show stations' has all\n");
    expect_met({"code = -1", "message \"unable to get intf(805306468)\"", "no call cmd_prt"});
    EXPECT_THAT(run("dump PortChannel0001").shown, HasSubstr("PortChannel0001 is a port-channel:"));
    EXPECT_THAT(run("dump PortChannel0001.20").shown,
                HasSubstr("PortChannel0001.20 is a port-channel's subinterface:"));
    EXPECT_THAT(run("dump MuxTunnel0").shown, HasSubstr("MuxTunnel0 is a tunnel:"));
}

TEST_P(SessionDump, FaultsHitIt)
{
    up();
    run_all({"vmac add Ethernet0 00:00:5e:00:01:08", "fail if_index_get_type -1"});
    const auto dump = run("dump Ethernet0");
    EXPECT_EQ(dump.summary, "refused: code -1, 1 call");
    EXPECT_EQ(dump.shown, "    unable to get intf(268435456)\n");
    run_all({"fail cmd_prt -1", "dump Ethernet0"});
    expect_met({"call \"cmd_prt(command, \"", "code = 0"});
    EXPECT_EQ(run("dump Ethernet0").shown, "Ethernet0:pd: vlan=4094 fhrp_mac=00:00:5e:00:01:08\n");
}

TEST_P(SessionDump, TablesOfNumbers)
{
    const auto none = run("dump");
    EXPECT_EQ(none.summary, "done, 2 calls");
    EXPECT_EQ(none.shown, " l3lif bitmap: \n l3lif bitmap: \n");
    up();
    EXPECT_EQ(run("dump").shown, " l3lif bitmap: 0-9," + beyond + "\n l3lif bitmap: \n");
    run_all({"del Ethernet0", "del Ethernet4.10"});
    EXPECT_EQ(run("dump").shown, " l3lif bitmap: 0-9," + beyond + "\n l3lif bitmap: 3,7\n");
    EXPECT_EQ(run("show calls").shown,
              "dump: code 0, 2 calls, 0 messages\n"
              "    cmd_prt(command, \" l3lif bitmap: 0-9," +
                  beyond +
                  "\\n\", 0) = 0\n"
                  "    cmd_prt(command, \" l3lif bitmap: 3,7\\n\", 0) = 0\n");
}

TEST_P(SessionDump, ALongListGoesOn)
{
    up();
    for (int iif = 10; iif < 80; iif += 2) {
        l3lif_l3iif_table.bits[iif / 8] |= static_cast<std::uint8_t>(0x80 >> (iif % 8));
    }
    const std::string shown = run("dump").shown;
    EXPECT_EQ(shown,
              " l3lif bitmap: 0-10,12,14,16,18,20,22,24,26,28,30,32,34,36,38,40,42,44,46,48\n"
              " l3lif bitmap: 50,52,54,56,58,60,62,64,66,68,70,72,74,76,78," +
                  beyond +
                  "\n"
                  " l3lif bitmap: \n");
}

TEST_P(SessionDump, WhatMakesNoSenseIsRefused)
{
    EXPECT_EQ(problem("dump Ethernet0"),
              "impossible: no configuration is up: begin with 'up FILE'");
    up();
    EXPECT_EQ(problem("dump Vlan10"), "usage: unknown interface 'Vlan10': did you mean 'Vlan100'?");
    EXPECT_EQ(problem("dump Ethernet16"),
              "usage: unknown interface 'Ethernet16': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("dump Ethernet0 Ethernet4"), "usage: too many arguments: dump [NAME]");
}

INSTANTIATE_TEST_SUITE_P(BothChips, SessionDump, ::testing::Values(Kind::trident, Kind::trident2));

} // namespace

} // namespace lab_test
