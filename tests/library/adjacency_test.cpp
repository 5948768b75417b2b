/*
 * adjacency_test.cpp: asking bcm_usd for the adjacencies of an interface, on a
 * fast restart only.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"
#include "support/lif.h"

#include "rtifhal_kelvo_trident/defaults/adjacency.h"

#include <fwm/state.h>
#include <l3lif/l3lif_layer.h>

#include <cstddef>
#include <fmt/format.h>

namespace rtifhal_test::adjacency
{

namespace
{

using simswitch::services::AdjacencyRequest;
namespace if_index = simswitch::if_index;

using Calls = std::vector<std::string>;

constexpr std::uint32_t IIF = 3;
constexpr std::uint32_t CONTEXT = 7;
const std::string RECOVER = "rtifhal_trident_recover_adjacency";
const std::string SEND = "rtifhal_trident_bcm_usd_create_adj";
const std::string FAST_RESTART = "sysmgr_is_fastboot_restart() = 1";
const std::string SENT = "mts_send(0xfe000000, 1009, 160781, record, 12, 0, record) = ";
const std::string DROPPED = "mts_drop(record)";

static_assert(offsetof(adjacency_request, ifindex) == 0);
static_assert(offsetof(adjacency_request, l3iif) == 4);
static_assert(offsetof(adjacency_request, context) == 8);
static_assert(offsetof(l3lif_iif_info_t, l3iif) == 24);

std::string looked_up(std::uint32_t ifindex, std::uint32_t iif = IIF)
{
    return fmt::format("l3lif_get_iif_for_ifindex_new({:#x}) = 0 [l3iif={:#x}]", ifindex, iif);
}

std::string iod_of(std::uint32_t ifindex, int iod = 1)
{
    return fmt::format("lcache_im_get_iod_frm_ifindex({:#x}) = 0 [iod={}]", ifindex, iod);
}

std::string context_of(int iod, int context = CONTEXT)
{
    return fmt::format("l3vm_if_get_context_id({}) = {}", iod, context);
}

/** The look-ups and the message that is taken. */
Calls asked(std::uint32_t ifindex)
{
    return {FAST_RESTART, looked_up(ifindex), iod_of(ifindex), context_of(1), SENT + "0", DROPPED};
}

Message sending(std::uint32_t ifindex)
{
    return trace(SEND, fmt::format("SENDING notif to bcm_usd for SVI {:#x}", ifindex));
}

Message notified(unsigned result)
{
    return trace(SEND, fmt::format("BCM_USD notified to create adj, ret_val: {}\n", result));
}

std::string not_notified(unsigned code)
{
    return fmt::format("Unable to notify bcm_usd to create adj, error {}", code);
}

std::string logged(unsigned code)
{
    return "syslog(0, \"" + not_notified(code) + "\")";
}

class AdjacencyTest : public LibraryTest
{
protected:
    explicit AdjacencyTest(Kind chip = Kind::trident) : LibraryTest({.chip = chip})
    {
        sw.system.fast_restart = true;
        ready(ifindex);
    }

    void ready(std::uint32_t interface, std::uint32_t iif = IIF, std::uint32_t context = CONTEXT)
    {
        sw.directory.set_iif(interface, iif);
        sw.directory.set_context(interface, context);
    }

    void expect_requests(const std::vector<AdjacencyRequest> &expected) const
    {
        EXPECT_EQ(sw.messages.requests(), expected);
        EXPECT_EQ(sw.messages.unreleased(), 0U);
    }

    const std::uint32_t ifindex = if_index::svi(100);
};

class Adjacency : public AdjacencyTest
{
};

class AdjacencyOnTrident2 : public AdjacencyTest
{
protected:
    AdjacencyOnTrident2() : AdjacencyTest(Kind::trident2) {}
};

class AdjacencyMessage : public AdjacencyTest
{
};

} // namespace

TEST_F(Adjacency, ReadyInterfaceIsAskedForInOneMessage)
{
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_calls(asked(ifindex));
    expect_messages({sending(ifindex), notified(0)});
    expect_requests({{ifindex, IIF, CONTEXT}});
}

TEST_F(AdjacencyOnTrident2, ReadyInterfaceIsAskedForInOneMessage)
{
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_calls(asked(ifindex));
    expect_messages({sending(ifindex), notified(0)});
}

TEST_F(Adjacency, V4EntryDoesTheSame)
{
    rtifhal_trident_create_v4_adjacency(ifindex);
    expect_calls(asked(ifindex));
    expect_messages({sending(ifindex), notified(0)});
    expect_requests({{ifindex, IIF, CONTEXT}});
}

TEST_F(Adjacency, V6EntryDoesNothing)
{
    rtifhal_trident_create_v6_adjacency(ifindex);
    EXPECT_TRUE(sw.journal.records().empty());
    expect_messages({});
    expect_requests({});
}

TEST_F(Adjacency, EachCallAsksOnceMore)
{
    for (int i = 0; i < 3; ++i) {
        start();
        rtifhal_trident_create_v4_adjacency(ifindex);
        expect_calls(asked(ifindex));
    }
    const AdjacencyRequest request = {ifindex, IIF, CONTEXT};
    expect_requests({request, request, request});
}

TEST_F(Adjacency, NothingIsLookedUpOnAnOrdinaryStart)
{
    sw.system.fast_restart = false;
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    rtifhal_trident_create_v4_adjacency(ifindex);
    expect_calls({"sysmgr_is_fastboot_restart() = 0", "sysmgr_is_fastboot_restart() = 0"});
    expect_messages({});
    expect_requests({});
}

TEST_F(Adjacency, RestoreModeWithoutAFastRestartIsAnOrdinaryStart)
{
    sw.system.fast_restart = false;
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_calls({"sysmgr_is_fastboot_restart() = 0"});
    expect_requests({});
}

TEST_F(Adjacency, RestoreModeOfAFastRestartAsksToo)
{
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_requests({{ifindex, IIF, CONTEXT}});
}

TEST_F(Adjacency, AnyNonzeroAnswerIsAFastRestart)
{
    sw.system.fast_restart = false;
    fail("sysmgr_is_fastboot_restart", -1);
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_requests({{ifindex, IIF, CONTEXT}});
}

TEST_F(Adjacency, TextSaysSviWhateverTheKind)
{
    for (const std::uint32_t other : {if_index::port(4), if_index::port_sub(4, 10),
                                      if_index::port_channel(7), if_index::tunnel(3)}) {
        start();
        ready(other);
        EXPECT_EQ(rtifhal_trident_recover_adjacency(other), 0);
        expect_messages({sending(other), notified(0)});
        EXPECT_EQ(sw.messages.requests().back(), (AdjacencyRequest{other, IIF, CONTEXT}));
    }
}

TEST_F(Adjacency, NumberAndContextAreTheInterfacesOwn)
{
    const std::uint32_t other = if_index::svi(200);
    ready(other, 0x1DFF, 0x01020304);
    rtifhal_trident_recover_adjacency(ifindex);
    start();
    rtifhal_trident_recover_adjacency(other);
    expect_calls({FAST_RESTART, looked_up(other, 0x1DFF), iod_of(other, 2),
                  context_of(2, 0x01020304), SENT + "0", DROPPED});
    expect_requests({{ifindex, IIF, CONTEXT}, {other, 0x1DFF, 0x01020304}});
}

TEST_F(Adjacency, InterfaceThatIsNotReadyIsReportedAndNothingIsSent)
{
    sw.directory.set_ready(ifindex, false);
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), -1);
    const int code = simswitch::fwm::ERROR_INTERFACE_NOT_READY;
    expect_calls({FAST_RESTART,
                  fmt::format("l3lif_get_iif_for_ifindex_new({:#x}) = {}", ifindex, code),
                  fmt::format("fwm_syserr2str({}) = \"interface not ready\"", code)});
    expect_messages({report(RECOVER, "intf is not ready :0x30000064 rc:interface not ready\n")});
    expect_requests({});
}

TEST_F(Adjacency, V4EntryOfAnInterfaceThatIsNotReadyReportsTheSame)
{
    sw.directory.set_ready(ifindex, false);
    rtifhal_trident_create_v4_adjacency(ifindex);
    expect_messages({report(RECOVER, "intf is not ready :0x30000064 rc:interface not ready\n")});
    expect_requests({});
}

TEST_F(Adjacency, AnyCodeButZeroIsNotReady)
{
    for (const int code : {1, -1}) {
        start();
        fail("l3lif_get_iif_for_ifindex_new", code);
        EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), -1);
        expect_messages({report(RECOVER, std::string("intf is not ready :0x30000064 rc:") +
                                             sw.host.error_text(code) + "\n")});
        EXPECT_EQ(sw.journal.count("mts_send"), 0U);
    }
}

TEST_F(Adjacency, CallerMayComeBackWhenTheInterfaceIsReady)
{
    sw.directory.set_ready(ifindex, false);
    rtifhal_trident_recover_adjacency(ifindex);
    sw.directory.set_ready(ifindex, true);
    start();
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_calls(asked(ifindex));
}

TEST_F(Adjacency, RefusedIodIsNotLookedAt)
{
    for (const int code : {-1, 1}) {
        start();
        fail("lcache_im_get_iod_frm_ifindex", code);
        EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
        expect_calls({FAST_RESTART, looked_up(ifindex),
                      fmt::format("lcache_im_get_iod_frm_ifindex({:#x}) = {}", ifindex, code),
                      context_of(0, 0), SENT + "0", DROPPED});
        expect_messages({sending(ifindex), notified(0)});
        EXPECT_EQ(sw.messages.requests().back(), (AdjacencyRequest{ifindex, IIF, 0}));
    }
}

TEST_F(Adjacency, ContextIsSentAsItIs)
{
    fail("l3vm_if_get_context_id", -1);
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), 0);
    expect_requests({{ifindex, IIF, 0xFFFFFFFF}});
}

TEST_F(Adjacency, RefusedMessageIsHandedUpAndNotRetried)
{
    fail("mts_send", -5);
    EXPECT_EQ(rtifhal_trident_recover_adjacency(ifindex), -5);
    expect_calls({FAST_RESTART, looked_up(ifindex), iod_of(ifindex), context_of(1), SENT + "-5",
                  logged(4294967291)});
    const std::string text = not_notified(4294967291);
    expect_messages({sending(ifindex), report(SEND, text), trace(SEND, text)});
    expect_requests({});
}

TEST_F(Adjacency, V4EntryOfARefusedMessageSaysTheSame)
{
    fail("mts_send", -5);
    rtifhal_trident_create_v4_adjacency(ifindex);
    const std::string text = not_notified(4294967291);
    expect_messages({sending(ifindex), report(SEND, text), trace(SEND, text)});
    start();
    rtifhal_trident_create_v4_adjacency(ifindex);
    expect_calls(asked(ifindex));
}

TEST_F(AdjacencyMessage, PayloadGoesOutWithoutALookUp)
{
    const adjacency_request request = {0x11223344, 0x55667788, 0x99AABBCC};
    EXPECT_EQ(rtifhal_trident_bcm_usd_create_adj(&request), 0);
    expect_calls({SENT + "0", DROPPED});
    expect_messages({sending(0x11223344), notified(0)});
    expect_requests({{0x11223344, 0x55667788, 0x99AABBCC}});
}

TEST_F(AdjacencyMessage, KindOfStartIsTheCallersAffair)
{
    sw.system.fast_restart = false;
    const adjacency_request request = {ifindex, IIF, CONTEXT};
    EXPECT_EQ(rtifhal_trident_bcm_usd_create_adj(&request), 0);
    expect_calls({SENT + "0", DROPPED});
}

TEST_F(AdjacencyMessage, NullPayloadIsReportedAndNothingIsSent)
{
    EXPECT_EQ(rtifhal_trident_bcm_usd_create_adj(nullptr), -1);
    expect_calls({});
    expect_messages({report(SEND, "ERROR, passed a NULL parameter\n")});
    expect_requests({});
}

TEST_F(AdjacencyMessage, RefusalGoesToTheSystemLogFirstAndDropsNothing)
{
    const adjacency_request request = {ifindex, IIF, CONTEXT};
    fail("mts_send", -1);
    EXPECT_EQ(rtifhal_trident_bcm_usd_create_adj(&request), -1);
    Calls order;
    for (const auto &record : sw.journal.records()) {
        if (record.function.starts_with("fwm_ds_") || !record.trace_sink) {
            order.push_back(record.function);
        }
    }
    EXPECT_EQ(order, (Calls{"fwm_ds_trace_add", "mts_send", "syslog", "fwm_ds_trace_add",
                            "fwm_ds_add", "fwm_ds_trace_add"}));
    ASSERT_EQ(sw.trace.syslog().size(), 1U);
    EXPECT_EQ(sw.trace.syslog().front().priority, 0);
    EXPECT_EQ(sw.trace.syslog().front().text, not_notified(4294967295));
}

TEST_F(AdjacencyMessage, PositiveResultIsASuccess)
{
    const adjacency_request request = {ifindex, IIF, CONTEXT};
    fail("mts_send", 5);
    EXPECT_EQ(rtifhal_trident_bcm_usd_create_adj(&request), 5);
    expect_messages({sending(ifindex), notified(5)});
    EXPECT_EQ(sw.journal.count("mts_drop"), 1U);
    EXPECT_EQ(sw.journal.count("syslog"), 0U);
}

TEST_F(AdjacencyMessage, ReportOfADroppedMessageStandsBehindItsRelease)
{
    const adjacency_request request = {ifindex, IIF, CONTEXT};
    rtifhal_trident_bcm_usd_create_adj(&request);
    const auto &records = sw.journal.records();
    Calls order;
    for (const auto &record : records) {
        if (record.function == "fwm_ds_trace_add" || !record.trace_sink) {
            order.push_back(record.function);
        }
    }
    EXPECT_EQ(order, (Calls{"fwm_ds_trace_add", "mts_send", "mts_drop", "fwm_ds_trace_add"}));
}

} // namespace rtifhal_test::adjacency
