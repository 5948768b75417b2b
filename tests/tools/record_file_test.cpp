/*
 * record_file_test.cpp: what `rtif up --record` writes, and what becomes of
 * files that are no recording or a damaged one.
 */
#include "record_run.h"

#include "record/escape.h"
#include "record/recording.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace
{

using record_test::Ran;
using record_test::TUNNEL;
using record_test::with;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class RecordFile : public record_test::TunnelRecording
{
};

constexpr const char *RECORDED_REQUESTS =
    R"(request 1 add router MAC 02:00:00:00:00:09 = 1 (6 calls, 1 messages)
call 1.1 service rtifhal_get_bcm_unit(0) = 0
call 1.2 sdk bcm_l2_station_t_init()
call 1.3 wrapper fwmpd_trident_batch_flush() = 0
call 1.4 sdk bcm_l2_station_add(0, {flags=0x1c mac=02:00:00:00:00:09/ff:ff:ff:ff:ff:ff vlan=0/0 port=0/0}) = 0 [id=1]
call 1.5 sdk bcm_port_control_set(0, 0, 8, 1) = 0
call 1.6 sdk bcm_port_control_set(0, 0, 9, 1) = 0
message 1.1 trace rtifhal_trident_rmac_add: rmac (02:00:00:00:00:09) @ idx:1
request 2 add MuxTunnel0 = 0 (25 calls, 26 messages)
call 2.1 service rtifhal_get_bcm_unit(0) = 0
call 2.2 sdk bcm_l3_intf_t_init()
call 2.3 sdk bcm_switch_control_set(0, 232, 1) = 0
call 2.4 service fwmpd_inband_init() = 0
call 2.5 service bcm_pd_is_device_trident2() = 0
call 2.6 service fwmpd_inband_init() = 0
call 2.7 service fwmpd_inband_init() = 0
call 2.8 service fwmpd_inband_init() = 0
call 2.9 wrapper rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=02:00:00:00:00:09 vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}) = 0
call 2.10 store rtifhal_pss_l3port_store(store, 1, lif(0x40000001)) = 0
call 2.11 service if_index_get_type(0x40000001) = 0 [type=24]
call 2.12 service if_index_is_eth_port_channel_intf(0x40000001) = 0
call 2.13 service if_index_is_sub_intf(0x40000001) = 0
call 2.14 sdk bcm_l3_ingress_t_init()
call 2.15 service rtifhal_get_bcm_unit(0) = 0
call 2.16 service if_index_get_type(0x40000001) = 0 [type=24]
call 2.17 service bcm_pd_is_device_trident2() = 0
call 2.18 wrapper rtifhal_bcm_l3_ingress_create(0, {flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}, 3) = 0
call 2.19 service if_index_is_tunnel_intf(0x40000001) = 1
call 2.20 service if_index_get_type(0x40000001) = 0 [type=24]
call 2.21 service if_index_is_eth_port_channel_intf(0x40000001) = 0
call 2.22 service if_index_is_sub_intf(0x40000001) = 0
call 2.23 sdk bcm_l3_egress_t_init()
call 2.24 service rtifhal_get_bcm_unit(0) = 0
call 2.25 wrapper fwmpd_bcm_switch_control_set(0, 230, 1) = 0
message 2.1 trace rtifhal_trident_add_l3tun: L3LIF: 0x40000001, 1
message 2.2 trace rtifhal_l3tun_add: Entry: create - 1
message 2.3 trace rtifhal_l3_intf_create: inl3lif->ifindex = 40000001 l3lif->ifindex = 40000001 create = 1
message 2.4 trace rtifhal_l3_intf_create: create internal_vlan = 4094 si_encap_vlan = 0
message 2.5 trace l3iif_table_init: l3iif_table_init called with :0
message 2.6 trace l3iif_table_init: l3iif_table_init called with :1
message 2.7 trace rtifhal_alloc_l3iif: iif_index = 0x0
message 2.8 trace l3iif_table_init: l3iif_table_init called with :1
message 2.9 trace rtifhal_alloc_l3iif: iif_index = 0x1
message 2.10 trace l3iif_table_init: l3iif_table_init called with :1
message 2.11 trace rtifhal_alloc_l3iif: iif_index = 0x2
message 2.12 trace rtifhal_alloc_l3iif: iif_index = 0x3
message 2.13 trace rtifhal_l3_intf_create: Allocating l3lif_pd_ctxt
message 2.14 trace rtifhal_l3_intf_create: Allocating l3_pd
message 2.15 trace rtifhal_l3_intf_create: Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1
message 2.16 trace rtifhal_l3_intf_create: Created l3-intf with intf-id as 0x3
message 2.17 trace rtifhal_trident_l3port_add_pss: calling rtifhal_pss_l3port_store, lif (0x40000001)
message 2.18 trace rtifhal_trident_add_ingress: rtifhal_trident_add_ingress: L3LIF: 0x40000001, 0, 1
message 2.19 trace rtifhal_l3_ing_create: inl3lif->ifindex = 40000001 l3lif->ifindex = 40000001
message 2.20 trace rtifhal_l3_ing_create: l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3
message 2.21 trace rtifhal_l3_ing_create: vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0
message 2.22 trace rtifhal_get_class_id: Return 64 | l3_pd->acl_qos_label_ingress(0)
message 2.23 trace rtifhal_l3_ing_create: rtifhal_bcm_l3_ing_create(0x40000001) iif 3, vrf 1 rpf 0 class 64
message 2.24 trace rtifhal_l3_ing_create: Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0
message 2.25 trace rtifhal_l3_ing_create: bcm_l3_ing_create(40000001) success: -1, 3
message 2.26 trace rtifhal_trident_add_egress: rtifhal_trident_add_egress: L3LIF: 0x40000001, 0, 1
end 2 requests, 31 calls
)";

TEST_F(RecordFile, HasEveryRequestCallAndMessageOnALine)
{
    std::string version = recorded();
    version.resize(std::min(version.size(), version.find("\nchip")));
    EXPECT_EQ(
        recorded(),
        version +
            "\nchip trident\nconfiguration tunnel.json\n"
            "config {\"DEVICE_METADATA\": {\"localhost\": {\"mac\": \"02:00:00:00:00:09\"}},\n"
            "config  \"TUNNEL\": {\"MuxTunnel0\": {\"tunnel_type\": \"IPINIP\", "
            "\"dst_ip\": \"10.1.0.32\", \"src_ip\": \"10.1.0.33\"}}}\nconfig\n" +
            RECORDED_REQUESTS);
    EXPECT_THAT(version, StartsWith("rtif-recording 1\nrtif "));
}

TEST_F(RecordFile, IsTheSameBytesInEveryRun)
{
    ASSERT_EQ(rtif("up examples/kinds.json --then-down --record one").code, 0);
    ASSERT_EQ(rtif("up examples/kinds.json --then-down --calls --record two").code, 0);
    ASSERT_EQ(rtif("up examples/kinds.json --then-down --state kept --record three").code, 0);
    EXPECT_THAT(read("one"), HasSubstr("\nrequest 4 add Ethernet0 = 0 ("));
    EXPECT_EQ(read("one"), read("two"));
    EXPECT_EQ(read("one"), read("three"));
}

TEST_F(RecordFile, ChangesNothingOfWhatIsPrinted)
{
    const Ran plain = rtif("up examples/kinds.json --trace --then-down");
    EXPECT_EQ(rtif("up examples/kinds.json --trace --then-down --record some.rec").out, plain.out);
}

TEST_F(RecordFile, OfATeardownHasItsRequestsToo)
{
    ASSERT_EQ(rtif("up tunnel.json --then-down --record some.rec").code, 0);
    EXPECT_THAT(read("some.rec"), HasSubstr("\nthen down\n"));
    EXPECT_THAT(read("some.rec"), HasSubstr("\nrequest 3 delete MuxTunnel0 = 0 ("));
    EXPECT_THAT(read("some.rec"), HasSubstr("\nrequest 4 delete router MAC at station 1 = 0 ("));
}

TEST_F(RecordFile, ThatCantBeWrittenIsSaidBeforeAnythingRuns)
{
    const Ran ran = rtif("up tunnel.json --state kept --record nowhere/some.rec");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "nowhere/some.rec: the recording cannot be written: No such file or "
                       "directory\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "kept" / "config.json"));
}

TEST_F(RecordFile, OverItsOwnConfigurationIsRefused)
{
    const Ran ran = rtif("up tunnel.json --record ./tunnel.json");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.err, "./tunnel.json: is the configuration itself; name another file for the "
                       "recording\n");
    EXPECT_EQ(read("tunnel.json"), TUNNEL);
}

TEST_F(RecordFile, OnAFullDiskIsAFailure)
{
    const Ran ran = rtif("up tunnel.json --record /dev/full");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.err, "/dev/full: the recording could not be written to its end; is the disk "
                       "full?\n");
}

TEST_F(RecordFile, OfABadConfigurationLeavesTheFileAlone)
{
    write("some.rec", "an earlier one");
    write("bad.json", "{");
    EXPECT_EQ(rtif("up bad.json --record some.rec").code, 1);
    EXPECT_EQ(read("some.rec"), "an earlier one");
}

TEST_F(RecordFile, KeepsAConfigurationByteByByte)
{
    // No line end at the end, carriage returns, and one line longer than a recording's line.
    const std::string config =
        "\r\n{\t\"A\\n\u00e9\": \"" + std::string(70000, 'x') + "\u009b\u202e\"}\r\n\r\n ";
    write("odd.json", config);
    ASSERT_EQ(rtif("up odd.json --record odd.rec").code, 0);
    const auto recording = lab::record::read_recording(folder / "odd.rec");
    EXPECT_EQ(recording.header.config, config);
    EXPECT_TRUE(recording.is_complete);
    for (const char letter : read("odd.rec")) {
        EXPECT_TRUE(letter == '\n' || letter == '\t' || static_cast<unsigned char>(letter) >= 0x20);
    }
}

TEST_F(RecordFile, AnotherFileIsNoRecording)
{
    EXPECT_EQ(refused(TUNNEL), "edited.rec:1: no recording: its first line isn't "
                               "\"rtif-recording 1\"; `rtif up CONFIG.json --record FILE` makes "
                               "one\n");
    EXPECT_THAT(refused(""), StartsWith("edited.rec:1: no recording: "));
    EXPECT_EQ(rtif("replay nowhere.rec").err,
              "nowhere.rec: cannot be read: No such file or directory\n");
    EXPECT_EQ(rtif("replay examples").err, "examples: cannot be read: it is a folder\n");
}

TEST_F(RecordFile, OfAnotherVersionIsRefusedByItsVersion)
{
    EXPECT_EQ(refused(with(recorded(), "rtif-recording 1", "rtif-recording 2")),
              "edited.rec:1: a recording of version 2; this rtif reads version 1: record the run "
              "again\n");
}

TEST_F(RecordFile, ALineThatIsMissingIsToldByItsPlace)
{
    const std::string text = recorded();
    EXPECT_EQ(refused(with(text, "call 2.4 service fwmpd_inband_init() = 0\n", "")),
              "edited.rec:20: \"call 2.4 …\" has to stand here: lines are missing or were added\n");
    EXPECT_EQ(refused(with(text, "chip trident\n", "")),
              "edited.rec:3: \"chip …\" has to stand here\n");
    EXPECT_THAT(refused(with(text, "request 2 ", "request 3 ")),
                StartsWith("edited.rec:16: request 2 has to stand here: "));
}

TEST_F(RecordFile, ALineTooManyIsToldByItsPlace)
{
    const std::string text = recorded();
    EXPECT_EQ(refused(with(text, "call 2.4 ", "call 2.4 sdk bcm_x()\ncall 2.4 ")),
              "edited.rec:21: \"call 2.5 …\" has to stand here: lines are missing or were added\n");
    EXPECT_EQ(refused(text + "\n"), "edited.rec:69: something stands behind the end\n");
    EXPECT_EQ(refused(with(text, "end 2 requests, 31", "end 3 requests, 31")),
              "edited.rec:68: \"end 2 requests, 31 calls\" or the next request has to stand "
              "here\n");
}

TEST_F(RecordFile, ControlCharactersAreRefusedAndNotEchoed)
{
    const std::string text = recorded();
    EXPECT_EQ(refused(with(text, "trident", "\x1b[2Jtrident")),
              "edited.rec:3: bytes that a recording never has: control characters, or no UTF-8\n");
    EXPECT_EQ(refused(with(text, "chip trident", "chip \\x1b[2J")),
              "edited.rec:3: \"\\x1b[2J\" is no chip: trident and trident2 are\n");
    EXPECT_THAT(refused(with(text, "chip trident", "chip \\e")),
                StartsWith("edited.rec:3: an escape that a recording doesn't have"));
}

TEST_F(RecordFile, ALineOfTenMegabytesIsRefused)
{
    std::string longest;
    longest.resize(10'000'000, 'x');
    EXPECT_EQ(refused(with(recorded(), "config {", "config {" + longest)),
              "edited.rec:5: the line is longer than 64 KiB; no recording has such\n");
    EXPECT_EQ(refused(longest),
              "edited.rec:1: the line is longer than 64 KiB; no recording has such\n");
}

TEST_F(RecordFile, NumbersThatMakeNoSenseAreRefused)
{
    const std::string text = recorded();
    for (const char *counts : {"(25 calls)", "(-1 calls, 26 messages)", "(25 calls, x messages)",
                               "(99999999999999999999 calls, 26 messages)", "25 calls"}) {
        EXPECT_THAT(refused(with(text, "(25 calls, 26 messages)", counts)),
                    StartsWith("edited.rec:16: "))
            << counts;
    }
    // More than there are: the next request stands where a message has to.
    EXPECT_THAT(refused(with(text, "(6 calls, 1 messages)", "(6 calls, 4000000000 messages)")),
                StartsWith("edited.rec:16: \"message 1.2 …\" has to stand here"));
    EXPECT_THAT(refused(with(text, "chip trident\n", "chip trident\nlimits vlans=x\n")),
                StartsWith("edited.rec:4: \"vlans=x\" is no size of a table"));
    EXPECT_THAT(refused(with(text, "chip trident\n", "chip trident\nlimits walls=3\n")),
                StartsWith("edited.rec:4: \"walls=3\" is no size of a table"));
}

TEST_F(RecordFile, AConfigurationThatMakesNoSenseIsToldWithTheRecording)
{
    EXPECT_THAT(refused(with(recorded(), "config {", "config [")),
                StartsWith("edited.rec: configuration tunnel.json: "));
}

TEST_F(RecordFile, EscapesGoBothWays)
{
    const std::string odd = "a\\b\nc\rd\te\x1b\x7f\xc2\x9b\xff\u00e9";
    EXPECT_EQ(lab::record::escaped(odd), "a\\\\b\\nc\\rd\te\\x1b\\x7f\\xc2\\x9b\\xff\u00e9");
    EXPECT_EQ(lab::record::unescaped(lab::record::escaped(odd)), odd);
    for (const char *bad : {"\\", "\\q", "\\x", "\\x1", "\\x1g", "\\xgg"}) {
        EXPECT_EQ(lab::record::unescaped(bad), std::nullopt) << bad;
    }
}

} // namespace
