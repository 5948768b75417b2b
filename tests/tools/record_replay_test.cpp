/*
 * record_replay_test.cpp: a recording run again: the same on both chips, and
 * how the first difference of one that was changed is shown.
 */
#include "record_run.h"

#include "record/recorder.h"
#include "record/replay.h"
#include "support/load_time_state.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/layer.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <sstream>

namespace
{

using record_test::Ran;
using record_test::TUNNEL;
using record_test::TWO_TUNNELS;
using record_test::with;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char *RECORDED_EXAMPLES[] = {"kinds",  "leaf",    "campus", "everything",
                                             "faults", "packets", "ping"};

/** On both chips, with each configuration of the examples. */
class RecordExamples : public record_test::InFolder,
                       public ::testing::WithParamInterface<std::tuple<const char *, const char *>>
{
};

INSTANTIATE_TEST_SUITE_P(Chips, RecordExamples,
                         ::testing::Combine(::testing::Values("trident", "trident2"),
                                            ::testing::ValuesIn(RECORDED_EXAMPLES)));

TEST_P(RecordExamples, AReplayDoesTheSame)
{
    const auto [chip, config] = GetParam();
    ASSERT_EQ(rtif(fmt::format("up examples/{}.json --chip {} --then-down --record some.rec",
                               config, chip))
                  .code,
              0);
    const Ran ran = rtif("replay some.rec");
    EXPECT_EQ(ran.code, 0) << ran.out;
    EXPECT_THAT(ran.out, EndsWith(" the same, 0 differ\n"));
    EXPECT_EQ(ran.err, "");
}

/** Recordings of a switch with one tunnel, or two. */
class RecordReplay : public record_test::InFolder
{
protected:
    RecordReplay()
    {
        write("tunnel.json", TUNNEL);
        write("two.json", TWO_TUNNELS);
    }

    std::string recorded(const std::string &words = "tunnel.json") const
    {
        EXPECT_EQ(rtif("up " + words + " --record some.rec").code, 0);
        return read("some.rec");
    }

    /** Replays a text that differs; gives what stands between the first line's end and the totals.
     */
    std::string difference(const std::string &text, const std::string &options = "") const
    {
        write("edited.rec", text);
        const Ran ran = rtif("replay edited.rec " + options);
        EXPECT_EQ(ran.code, 1) << ran.out << ran.err;
        EXPECT_EQ(ran.err, "");
        const std::size_t first = ran.out.find("\n\n");
        return first == std::string::npos ? ran.out : ran.out.substr(first + 2);
    }
};

TEST_F(RecordReplay, TellsWhatWasRunAgain)
{
    recorded();
    const std::string version = rtif("--version").out.substr(5, 5);
    EXPECT_EQ(rtif("replay some.rec").out,
              "some.rec: tunnel.json, recorded by rtif " + version +
                  " on a Trident\n2 requests, 31 calls run again on a Trident by rtif " + version +
                  "\n\n2 requests: 2 the same, 0 differ\n");
}

TEST_F(RecordReplay, AChangedResultIsTheFirstDifferenceInItsContext)
{
    const std::string text = recorded();
    EXPECT_EQ(difference(with(text,
                              "call 2.10 store rtifhal_pss_l3port_store(store, 1, "
                              "lif(0x40000001)) = 0\n",
                              "call 2.10 store rtifhal_pss_l3port_store(store, 1, "
                              "lif(0x40000001)) = -6\n")),
              R"(First difference: request 2 of 2, add MuxTunnel0 (edited.rec:16)
@@ call 2.4 @@
  service fwmpd_inband_init() = 0
  service bcm_pd_is_device_trident2() = 0
  service fwmpd_inband_init() = 0
  service fwmpd_inband_init() = 0
  service fwmpd_inband_init() = 0
  wrapper rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=02:00:00:00:00:09 vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}) = 0
- store rtifhal_pss_l3port_store(store, 1, lif(0x40000001)) = -6
+ store rtifhal_pss_l3port_store(store, 1, lif(0x40000001)) = 0
  service if_index_get_type(0x40000001) = 0 [type=24]
  service if_index_is_eth_port_channel_intf(0x40000001) = 0
  service if_index_is_sub_intf(0x40000001) = 0
  sdk bcm_l3_ingress_t_init()
  service rtifhal_get_bcm_unit(0) = 0
  service if_index_get_type(0x40000001) = 0 [type=24]

2 requests: 1 the same, 1 differs
)");
}

TEST_F(RecordReplay, ARequestsCodeAndAMessageAreCompared)
{
    const std::string text = recorded();
    EXPECT_THAT(difference(with(text, "add MuxTunnel0 = 0 (", "add MuxTunnel0 = -6 (")),
                StartsWith("First difference: request 2 of 2, add MuxTunnel0 (edited.rec:16)\n"
                           "- result -6\n+ result 0\n\n"));
    const std::string said = difference(with(text, "Entry: create - 1", "Entry: create - 0"));
    EXPECT_THAT(said, HasSubstr("\n@@ call 2.21 @@\n"));
    EXPECT_THAT(said, HasSubstr("\n- trace rtifhal_l3tun_add: Entry: create - 0\n"
                                "+ trace rtifhal_l3tun_add: Entry: create - 1\n"));
    EXPECT_THAT(difference(with(text, "message 2.2 trace ", "message 2.2 error ")),
                HasSubstr("\n- error rtifhal_l3tun_add: "));
}

TEST_F(RecordReplay, CallsThatAreGoneAndNewOnesStandWhereTheyBelong)
{
    // The first station call is another one, and the last but one has gone.
    std::string text = with(recorded(), "sdk bcm_l2_station_t_init()", "sdk bcm_older_call()");
    text = with(text, "(6 calls, ", "(5 calls, ");
    text = with(text, "call 1.5 sdk bcm_port_control_set(0, 0, 8, 1) = 0\n", "");
    text = with(text, "call 1.6 ", "call 1.5 ");
    text = with(text, "31 calls", "30 calls");
    EXPECT_EQ(difference(text),
              R"(First difference: request 1 of 2, add router MAC 02:00:00:00:00:09 (edited.rec:8)
@@ call 1.1 @@
  service rtifhal_get_bcm_unit(0) = 0
- sdk bcm_older_call()
+ sdk bcm_l2_station_t_init()
  wrapper fwmpd_trident_batch_flush() = 0
  sdk bcm_l2_station_add(0, {flags=0x1c mac=02:00:00:00:00:09/ff:ff:ff:ff:ff:ff vlan=0/0 port=0/0}) = 0 [id=1]
+ sdk bcm_port_control_set(0, 0, 8, 1) = 0
  sdk bcm_port_control_set(0, 0, 9, 1) = 0
  trace rtifhal_trident_rmac_add: rmac (02:00:00:00:00:09) @ idx:1

2 requests: 1 the same, 1 differs
)");
}

TEST_F(RecordReplay, OnTheOtherChipShowsWhatThatChipDoesFirst)
{
    recorded("examples/kinds.json");
    const Ran ran = rtif("replay some.rec --chip trident2 --all");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, HasSubstr(R"(
First difference: request 4 of 11, add Ethernet0 (some.rec:70)
@@ call 4.5 @@
  sdk bcm_l3_intf_t_init()
  sdk bcm_switch_control_set(0, 232, 1) = 0
  wrapper fwmpd_bcm_port_control_set(0, 1, 8, 1) = 0
  wrapper fwmpd_bcm_port_control_set(0, 1, 10, 1) = 0
  wrapper fwmpd_bcm_port_control_set(0, 1, 14, 0) = 0
  service fwmpd_inband_init() = 0
- service bcm_pd_is_device_trident2() = 0
+ service bcm_pd_is_device_trident2() = 1
  service fwmpd_inband_init() = 0
)"));
    EXPECT_THAT(ran.out, HasSubstr("\n  … and 46 more lines of this request\n"));
    EXPECT_THAT(ran.out, HasSubstr(R"(
REQUEST                            CALLS -  CALLS +  SAME  CHANGED  GONE  NEW  RESULT
add Ethernet0                           91       92    90       46     0    1  0
)"));
    EXPECT_THAT(ran.out, EndsWith("\n11 requests: 3 the same, 8 differ\n"));
}

TEST_F(RecordReplay, OnTheChipThatItIsOfIsTheSameWithAndWithoutTheOption)
{
    recorded("examples/kinds.json --chip trident2");
    EXPECT_EQ(rtif("replay some.rec").code, 0);
    EXPECT_EQ(rtif("replay some.rec --chip trident2").code, 0);
    EXPECT_EQ(rtif("replay some.rec --chip trident3").code, 2);
}

TEST_F(RecordReplay, OfARunThatWasCutOffComparesWhatIsThere)
{
    const std::string text = recorded();
    // Behind the first request; in the middle of the second; without the end alone.
    for (const auto &[cut, requests] :
         {std::pair{text.find("request 2"), 1}, std::pair{text.find("call 2.7") + 3, 1},
          std::pair{text.find("message 2.4"), 1}, std::pair{text.find("end 2"), 2},
          std::pair{text.size() - 1, 2}}) {
        write("edited.rec", text.substr(0, cut));
        const Ran ran = rtif("replay edited.rec");
        EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
        EXPECT_THAT(ran.out, HasSubstr(fmt::format("\nThe recording has no end: its run was cut "
                                                   "off after {} request",
                                                   requests)));
    }
    EXPECT_THAT(difference(with(text.substr(0, text.find("request 2")), "8, 1) = 0", "8, 1) = -4")),
                StartsWith("First difference: request 1 of 1, "));
}

TEST_F(RecordReplay, RequestsThatAreOneSidedOrMovedAreToldByName)
{
    const std::string one = recorded();
    const std::string two = recorded("two.json");
    const auto config_of = [](const std::string &text) {
        const std::size_t first = text.find("config {");
        return text.substr(first, text.find("request 1") - first);
    };
    EXPECT_EQ(difference(with(one, config_of(one), config_of(two))),
              "First difference: request 3 of the run, add MuxTunnel1, is not in the recording\n\n"
              "3 requests: 2 the same, 0 differ, 1 only now\n");
    const std::string gone = difference(with(two, config_of(two), config_of(one)));
    EXPECT_THAT(gone, StartsWith("First difference: request 3 of 3, add MuxTunnel1 (edited.rec:"));
    EXPECT_THAT(gone, EndsWith(")\n  it is not asked for any more; the run has 2 requests now\n\n"
                               "3 requests: 2 the same, 0 differ, 1 only in the recording\n"));
    // The two tunnels under each other's names.
    std::string swapped = with(two, "add MuxTunnel0", "add MuxTunnel9");
    swapped = with(swapped, "add MuxTunnel1", "add MuxTunnel0");
    swapped = with(swapped, "add MuxTunnel9", "add MuxTunnel1");
    EXPECT_THAT(difference(swapped, "--all"), HasSubstr(" in another order"));
}

TEST_F(RecordReplay, ANameThatSteersATerminalIsNotEchoed)
{
    const std::string text =
        difference(with(recorded(), "add MuxTunnel0 = 0", "add \\x1b[2JMux = 0"));
    EXPECT_THAT(text, HasSubstr("add \\x1b[2JMux"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST(RecordLimits, TableSizesAreRecordedAndUsedAgain)
{
    rtifhal_test::reset_library();
    std::ostringstream out;
    {
        simswitch::Switch hardware({.limits = {.l3_ingresses = 4, .vlans = 16}});
        lab::record::Header header;
        header.configuration = "two.json";
        header.config = TWO_TUNNELS;
        const auto config = lab::config::read_config_text(TWO_TUNNELS, "two.json");
        lab::record::Recorder recorder(hardware, header, out);
        lab::l3lif::Layer layer(hardware);
        lab::l3lif::bring_all_up(config, layer);
        recorder.finish();
    }
    EXPECT_THAT(out.str(), HasSubstr("\nlimits l3_ingresses=4 vlans=16\n"));
    const auto recording = lab::record::read_recording_text(out.str(), "some.rec");
    EXPECT_EQ(recording.header.limits, (simswitch::chip::Limits{.l3_ingresses = 4, .vlans = 16}));
    rtifhal_test::reset_library();
    EXPECT_EQ(*lab::record::replay(recording).text, out.str());
}

} // namespace
