/*
 * record_diff_test.cpp: two recordings beside each other, by request.
 */
#include "record_run.h"

#include "record/compare.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace
{

using lab::record::Comparison;
using lab::record::read_recording_text;
using record_test::Ran;
using record_test::TUNNEL;
using record_test::with;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/** Recordings of the switch with one tunnel, of both chips. */
class RecordDiff : public record_test::InFolder
{
protected:
    RecordDiff()
    {
        write("tunnel.json", TUNNEL);
        version = rtif("--version").out.substr(5, 5);
    }

    /** Records into a file of that name. */
    void record(const std::string &file, const std::string &words = "tunnel.json") const
    {
        ASSERT_EQ(rtif("up " + words + " --record " + file).code, 0);
    }

    std::string version;
};

TEST_F(RecordDiff, OfEqualRecordingsSaysSo)
{
    record("a.rec");
    record("b.rec");
    const Ran ran = rtif("diff a.rec b.rec");
    EXPECT_EQ(ran.code, 0);
    EXPECT_EQ(ran.out, fmt::format("- a.rec: Trident, tunnel.json, rtif {0}, 2 requests, 31 calls\n"
                                   "+ b.rec: Trident, tunnel.json, rtif {0}, 2 requests, 31 calls\n"
                                   "\n2 requests: 2 the same, 0 differ\n",
                                   version));
}

TEST_F(RecordDiff, OfTwoChipsHasATableAndTheLinesOfEachRequestThatDiffers)
{
    record("a.rec");
    record("b.rec", "tunnel.json --chip trident2");
    const Ran ran = rtif("diff a.rec b.rec");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(ran.out, fmt::format("- a.rec: Trident, tunnel.json, rtif {0}, 2 requests, 31 calls\n"
                                   "+ b.rec: Trident2, tunnel.json, rtif {0}, 2 requests, 31 "
                                   "calls\n",
                                   version) +
                           R"(
REQUEST         CALLS -  CALLS +  SAME  CHANGED  GONE  NEW  RESULT
add MuxTunnel0       25       25    48        3     0    0  0

2 requests: 1 the same, 1 differs

add MuxTunnel0 (lines 16 and 16)
@@ call 2.2 @@
  sdk bcm_l3_intf_t_init()
  sdk bcm_switch_control_set(0, 232, 1) = 0
  service fwmpd_inband_init() = 0
- service bcm_pd_is_device_trident2() = 0
+ service bcm_pd_is_device_trident2() = 1
  service fwmpd_inband_init() = 0
  service fwmpd_inband_init() = 0
  service fwmpd_inband_init() = 0
@@ call 2.14 @@
  sdk bcm_l3_ingress_t_init()
  service rtifhal_get_bcm_unit(0) = 0
  service if_index_get_type(0x40000001) = 0 [type=24]
- service bcm_pd_is_device_trident2() = 0
+ service bcm_pd_is_device_trident2() = 1
- wrapper rtifhal_bcm_l3_ingress_create(0, {flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}, 3) = 0
+ wrapper rtifhal_bcm_l3_ingress_create(0, {flags=0x486 vrf=1 urpf=0 class=64 ipmc=0 qos=0}, 3) = 0
  service if_index_is_tunnel_intf(0x40000001) = 1
  service if_index_get_type(0x40000001) = 0 [type=24]
  service if_index_is_eth_port_channel_intf(0x40000001) = 0
)");
}

TEST_F(RecordDiff, AsASummaryHasTheTableAlone)
{
    record("a.rec");
    record("b.rec", "tunnel.json --chip trident2");
    const Ran ran = rtif("diff a.rec b.rec --summary");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, EndsWith("\n2 requests: 1 the same, 1 differs\n"));
}

TEST_F(RecordDiff, OfOneRequestShowsThatOneAlone)
{
    record("a.rec", "examples/kinds.json");
    record("b.rec", "examples/kinds.json --chip trident2");
    const Ran ran = rtif("diff a.rec b.rec --calls --request 'add MuxTunnel0'");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, HasSubstr("\nadd MuxTunnel0 (lines "));
    EXPECT_THAT(ran.out, Not(HasSubstr("\nadd Ethernet0 (lines ")));
    const Ran unknown = rtif("diff a.rec b.rec --request 'add Mux'");
    EXPECT_EQ(unknown.code, 2);
    EXPECT_EQ(unknown.out, "");
    EXPECT_EQ(unknown.err,
              "neither recording has a request \"add Mux\"; `grep ^request` lists them\n");
}

TEST_F(RecordDiff, WithoutMessagesCountsCallsAlone)
{
    record("a.rec", "examples/kinds.json");
    record("b.rec", "examples/kinds.json --chip trident2");
    const std::string calls = rtif("diff a.rec b.rec --calls").out;
    EXPECT_THAT(calls, Not(HasSubstr("\n- trace ")));
    EXPECT_THAT(calls, HasSubstr("\n- sdk bcm_field_action_remove(0, 125, 32) = 0\n"
                                 "+ sdk bcm_field_action_remove(0, 253, 32) = 0\n"));
    EXPECT_THAT(rtif("diff a.rec b.rec").out, HasSubstr("\n- trace "));
}

TEST_F(RecordDiff, OfTwoConfigurationsListsTheRequestsThatOneOfThemHas)
{
    write("two.json", record_test::TWO_TUNNELS);
    record("a.rec");
    record("b.rec", "two.json --then-down");
    const Ran ran = rtif("diff a.rec b.rec");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, EndsWith(R"(
The configurations are not the same.
Only b.rec took everything down again.

REQUEST                         CALLS -  CALLS +  SAME  CHANGED  GONE  NEW  RESULT
add MuxTunnel1                        -       21     -        -     -    -  0       only in b.rec
delete MuxTunnel1                     -       21     -        -     -    -  0       only in b.rec
delete MuxTunnel0                     -       21     -        -     -    -  0       only in b.rec
delete router MAC at station 1        -        5     -        -     -    -  0       only in b.rec

6 requests: 2 the same, 0 differ, 4 only in b.rec
)"));
}

TEST_F(RecordDiff, AResultThatChangedIsInTheTable)
{
    record("a.rec");
    write("b.rec", with(read("a.rec"), "add MuxTunnel0 = 0", "add MuxTunnel0 = -1"));
    const Ran ran = rtif("diff a.rec b.rec");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, HasSubstr("\nadd MuxTunnel0       25       25    51        0     0    0  "
                                   "0 -> -1\n"));
    EXPECT_THAT(ran.out, EndsWith("\nadd MuxTunnel0 (lines 16 and 16)\n- result 0\n+ result -1\n"));
}

TEST_F(RecordDiff, OfWhatIsNoRecordingIsRefused)
{
    record("a.rec");
    for (const char *words : {"diff a.rec tunnel.json", "diff tunnel.json a.rec"}) {
        const Ran ran = rtif(words);
        EXPECT_EQ(ran.code, 2);
        EXPECT_EQ(ran.out, "");
        EXPECT_THAT(ran.err, StartsWith("tunnel.json:1: no recording: "));
    }
    EXPECT_EQ(rtif("diff a.rec").code, 2);
}

TEST_F(RecordDiff, OfOneThatWasCutOffSaysSo)
{
    record("a.rec");
    const std::string text = read("a.rec");
    write("b.rec", text.substr(0, text.find("request 2")));
    const Ran ran = rtif("diff a.rec b.rec");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, HasSubstr(", 1 request, 6 calls, cut off\n"));
    EXPECT_THAT(ran.out, HasSubstr("\n2 requests: 1 the same, 0 differ, 1 only in a.rec\n"));
}

/** A recording of requests that each have one call, "NAME = call". */
std::string small_recording(const std::vector<std::pair<std::string, std::string>> &requests)
{
    std::string text = "rtif-recording 1\nrtif 1\nchip trident\nconfiguration x\nconfig\n";
    for (std::size_t i = 1; i <= requests.size(); ++i) {
        text += fmt::format("request {0} {1} = 0 (1 calls, 0 messages)\ncall {0}.1 service {2}\n",
                            i, requests[i - 1].first, requests[i - 1].second);
    }
    return text + fmt::format("end {0} requests, {0} calls\n", requests.size());
}

TEST(RecordCompare, RequestsOfOneNameAreTakenInTheirOrder)
{
    const auto before = read_recording_text(
        small_recording({{"add A", "f(1)"}, {"del A", "g()"}, {"add A", "f(2)"}}), "a");
    const auto after = read_recording_text(
        small_recording({{"add A", "f(1)"}, {"add B", "f(9)"}, {"add A", "f(3)"}}), "b");
    const Comparison comparison = compare(before, after);
    ASSERT_EQ(comparison.pairs.size(), 4U);
    EXPECT_TRUE(comparison.pairs[0].equal());
    EXPECT_EQ(comparison.pairs[1].before, &before.requests[1]);
    EXPECT_EQ(comparison.pairs[1].after, nullptr);
    EXPECT_EQ(comparison.pairs[2].before, nullptr);
    EXPECT_EQ(comparison.pairs[2].after, &after.requests[1]);
    EXPECT_EQ(comparison.pairs[3].before, &before.requests[2]);
    EXPECT_EQ(comparison.pairs[3].after, &after.requests[2]);
    EXPECT_EQ(comparison.equal, 1U);
    EXPECT_EQ(comparison.different, 1U);
    EXPECT_EQ(comparison.only_before, 1U);
    EXPECT_EQ(comparison.only_after, 1U);
    EXPECT_EQ(comparison.moved, 0U);
}

TEST(RecordCompare, AnotherOrderIsADifference)
{
    const auto before = read_recording_text(
        small_recording({{"add A", "f(1)"}, {"add B", "f(2)"}, {"add C", "f(3)"}}), "a");
    const auto after = read_recording_text(
        small_recording({{"add C", "f(3)"}, {"add A", "f(1)"}, {"add B", "f(2)"}}), "b");
    const Comparison comparison = compare(before, after);
    EXPECT_EQ(comparison.equal, 3U);
    EXPECT_EQ(comparison.moved, 1U);
    EXPECT_TRUE(comparison.pairs[2].moved);
    EXPECT_FALSE(comparison.all_equal());
}

} // namespace
