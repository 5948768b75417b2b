/*
 * ifindex_test.cpp: SDK ports and trunk ids of interface indexes.
 */
#include "support/library_test.h"
#include "support/lif.h"

#include <fmt/format.h>

namespace rtifhal_test::ifindex
{

namespace
{

using namespace simswitch;

constexpr int UNTOUCHED = 0x5a5a;

class PortOfIfindex : public LibraryTest
{
protected:
    /** The translator refuses, with these calls, and leaves the caller's word alone. */
    void expect_no_port(std::uint32_t ifindex, const std::vector<std::string> &expected)
    {
        int sdk_port = UNTOUCHED;
        EXPECT_EQ(fwmpd_ifindex_to_bcm_port(ifindex, &sdk_port), -1);
        EXPECT_EQ(sdk_port, UNTOUCHED);
        expect_calls(expected);
        expect_messages({});
    }
};

class TrunkOfIfindex : public LibraryTest
{
protected:
    static std::string text(const char *format, std::uint32_t ifindex, int rc, std::uint32_t tid)
    {
        return fmt::format(fmt::runtime(format), rc, ifindex, tid);
    }
};

} // namespace

TEST_F(PortOfIfindex, PortIsThePlatformsPlusOne)
{
    const std::uint32_t ifindex = if_index::port(4);
    int sdk_port = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_port(ifindex, &sdk_port), 0);
    EXPECT_EQ(sdk_port, 5);
    expect_calls({fmt::format("if_index_get_type({:#x}) = 0 [type=26]", ifindex),
                  fmt::format("if_index_get_port({:#x}) = 0 [port=4]", ifindex)});
    expect_messages({});
}

TEST_F(PortOfIfindex, SubinterfaceOfAPortHasThePortsPort)
{
    int sdk_port = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_port(if_index::port_sub(4, 1), &sdk_port), 0);
    EXPECT_EQ(sdk_port, 5);
}

TEST_F(PortOfIfindex, PortByte255IsPort256WithoutAWrap)
{
    int sdk_port = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_port(if_index::port(255), &sdk_port), 0);
    EXPECT_EQ(sdk_port, 256);
    EXPECT_EQ(rtifhal_ifindex_to_asic_port(if_index::port(255)), 256);
}

TEST_F(PortOfIfindex, PortChannelHasNoPort)
{
    const std::uint32_t ifindex = if_index::port_channel(41);
    expect_no_port(ifindex, {fmt::format("if_index_get_type({:#x}) = 0 [type=22]", ifindex)});
}

TEST_F(PortOfIfindex, SviTunnelAndManagementHaveNoPort)
{
    const std::uint32_t svi = if_index::svi(100);
    expect_no_port(svi, {fmt::format("if_index_get_type({:#x}) = 0 [type=9]", svi)});
    start();
    const std::uint32_t tunnel = if_index::tunnel(1);
    expect_no_port(tunnel, {fmt::format("if_index_get_type({:#x}) = 0 [type=24]", tunnel)});
    start();
    const std::uint32_t mgmt = if_index::management(0);
    expect_no_port(mgmt, {fmt::format("if_index_get_type({:#x}) = 0 [type=5]", mgmt)});
}

TEST_F(PortOfIfindex, UnreadableTypeGivesNoPort)
{
    const std::uint32_t ifindex = if_index::port(4);
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_type", code);
        expect_no_port(ifindex, {fmt::format("if_index_get_type({:#x}) = {}", ifindex, code)});
    }
}

TEST_F(PortOfIfindex, UnreadablePortGivesNoPort)
{
    const std::uint32_t ifindex = if_index::port(4);
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_port", code);
        expect_no_port(ifindex, {fmt::format("if_index_get_type({:#x}) = 0 [type=26]", ifindex),
                                 fmt::format("if_index_get_port({:#x}) = {}", ifindex, code)});
    }
}

TEST_F(PortOfIfindex, PlainTranslatorAsksForNothingButThePort)
{
    const std::uint32_t ifindex = if_index::port(0);
    EXPECT_EQ(rtifhal_ifindex_to_asic_port(ifindex), 1);
    expect_calls({fmt::format("if_index_get_port({:#x}) = 0 [port=0]", ifindex)});
    EXPECT_EQ(rtifhal_ifindex_to_asic_port(if_index::port(103)), 104);
    expect_messages({});
}

TEST_F(PortOfIfindex, PlainTranslatorGivesPort1WhereThereIsNone)
{
    fail("if_index_get_port", -1);
    EXPECT_EQ(rtifhal_ifindex_to_asic_port(if_index::port(9)), 1);
    EXPECT_EQ(rtifhal_ifindex_to_asic_port(if_index::port_channel(9)), 1);
    EXPECT_EQ(rtifhal_ifindex_to_asic_port(if_index::svi(9)), 1);
    expect_messages({});
}

TEST_F(TrunkOfIfindex, KnownPortChannelHasTheForwardingManagersTrunk)
{
    const std::uint32_t ifindex = if_index::port_channel(41);
    sw.host.set_trunk_id(ifindex, 7);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 7U);
    expect_calls({fmt::format("if_index_is_eth_port_channel_intf({:#x}) = 1", ifindex),
                  fmt::format("fwm_ifindex_2_tid({:#x}) = 0 [tid=7]", ifindex)});
    expect_messages({trace("fwmpd_ifindex_to_bcm_tid",
                           text("rc = {} ifindex = {:x} tid = {} \n", ifindex, 0, 7))});
}

TEST_F(TrunkOfIfindex, SubinterfaceHasItsPortChannelsTrunk)
{
    sw.host.set_trunk_id(if_index::port_channel(41), 7);
    const std::uint32_t ifindex = if_index::port_channel_sub(41, 1);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 7U);
    expect_calls({fmt::format("if_index_is_eth_port_channel_intf({:#x}) = 1", ifindex),
                  fmt::format("fwm_ifindex_2_tid({:#x}) = 0 [tid=7]", ifindex)});
}

TEST_F(TrunkOfIfindex, SubinterfaceOfAnUnknownPortChannelFilesItsTrunk)
{
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(if_index::port_channel_sub(41, 1), &tid), 0);
    EXPECT_EQ(tid, 42U);
    EXPECT_EQ(sw.host.trunk_id(if_index::port_channel(41)), 42U);
}

TEST_F(TrunkOfIfindex, UnknownPortChannelGetsItsNumberPlusOneFiledAndReported)
{
    const std::uint32_t ifindex = if_index::port_channel(41);
    fail("fwm_ifindex_2_tid", 37);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 42U);
    expect_calls({
        fmt::format("if_index_is_eth_port_channel_intf({:#x}) = 1", ifindex),
        fmt::format("fwm_ifindex_2_tid({:#x}) = 37", ifindex),
        fmt::format("if_index_port_channel_get_channel_num({:#x}) = 0 [number=41]", ifindex),
        fmt::format("fwm_pc_sdb_store(42, {{ifindex={:#x} tid=42}}) = 0", ifindex),
    });
    expect_messages({report("fwmpd_ifindex_to_bcm_tid",
                            text("ERR: rc = {} ifindex = {:x} tid = {} \n", ifindex, 37, 42))});
}

TEST_F(TrunkOfIfindex, FiledTrunkIsFoundAtTheNextLookup)
{
    const std::uint32_t ifindex = if_index::port_channel(41);
    std::uint32_t tid = UNTOUCHED;
    fwmpd_ifindex_to_bcm_tid(ifindex, &tid);
    start();
    tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 42U);
    expect_reports({});
    EXPECT_TRUE(calls_of({"fwm_pc_sdb_store"}).empty());
}

TEST_F(TrunkOfIfindex, NegativeMissIsAMissToo)
{
    const std::uint32_t ifindex = if_index::port_channel(1);
    fail("fwm_ifindex_2_tid", -1);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 2U);
    expect_reports({report("fwmpd_ifindex_to_bcm_tid",
                           text("ERR: rc = {} ifindex = {:x} tid = {} \n", ifindex, -1, 2))});
}

TEST_F(TrunkOfIfindex, Channel65535GivesTrunk0)
{
    const std::uint32_t ifindex = if_index::port_channel(65535);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 0U);
    EXPECT_EQ(calls_of({"fwm_pc_sdb_store"}),
              (std::vector<std::string>{
                  fmt::format("fwm_pc_sdb_store(0, {{ifindex={:#x} tid=0}}) = 0", ifindex)}));
}

TEST_F(TrunkOfIfindex, UnreadableChannelNumberCountsAsZero)
{
    const std::uint32_t ifindex = if_index::port_channel(41);
    fail("if_index_port_channel_get_channel_num", 1);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), 0);
    EXPECT_EQ(tid, 1U);
    EXPECT_EQ(calls_of({"fwm_pc_sdb_store"}),
              (std::vector<std::string>{
                  fmt::format("fwm_pc_sdb_store(1, {{ifindex={:#x} tid=1}}) = 0", ifindex)}));
}

TEST_F(TrunkOfIfindex, RefusedFilingIsNotLookedAt)
{
    fail("fwm_pc_sdb_store", -1);
    std::uint32_t tid = UNTOUCHED;
    EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(if_index::port_channel(41), &tid), 0);
    EXPECT_EQ(tid, 42U);
    EXPECT_EQ(messages().size(), 1U);
}

TEST_F(TrunkOfIfindex, WhatIsNoPortChannelHasNoTrunk)
{
    for (const std::uint32_t ifindex :
         {if_index::port(4), if_index::svi(41), if_index::tunnel(41), if_index::port_sub(4, 1)}) {
        start();
        std::uint32_t tid = UNTOUCHED;
        EXPECT_EQ(fwmpd_ifindex_to_bcm_tid(ifindex, &tid), -1);
        EXPECT_EQ(tid, static_cast<std::uint32_t>(UNTOUCHED));
        expect_calls({fmt::format("if_index_is_eth_port_channel_intf({:#x}) = 0", ifindex)});
        expect_messages({});
    }
}

} // namespace rtifhal_test::ifindex
