/*
 * packet_words_test.cpp: frames made from words, and the words that make none.
 */
#include "packet_run.h"

#include "chip/pipeline/frame.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab_test
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

std::string hex(const std::vector<std::uint8_t> &bytes)
{
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

class PacketWords : public PacketTest
{
protected:
    /** What the pipeline reads in a frame. */
    pipeline::Frame read(const lab::packet::MadeFrame &made)
    {
        pipeline::Frame read;
        EXPECT_TRUE(pipeline::parse(made.bytes, read));
        EXPECT_EQ(read.fault, nullptr);
        return read;
    }
    std::string destination(const std::string &words)
    {
        return simswitch::chip::text(read(frame(words)).destination);
    }
    std::string why_not(const std::string &words) { return problem("packet " + words); }
};

TEST_F(PacketWords, AUdpPacketByDefault)
{
    const auto made = frame("--in Ethernet0 --ip 10.0.0.9 10.0.4.9");
    EXPECT_EQ(made.port, 1);
    EXPECT_EQ(made.port_name, "Ethernet0");
    EXPECT_EQ(made.note, "");
    EXPECT_EQ(hex(made.bytes), "020000000a010200000000fe0800"
                               "4500003200010000401162a90a0000090a000409"
                               "27104e20001e727000000000000000000000000000000000000000000000");
}

TEST_F(PacketWords, EachWordIsInTheFrame)
{
    const auto made = frame("--in Ethernet4 --vlan 10 --dmac 02:00:00:00:00:77 --smac "
                            "02:00:00:00:00:78 --ip 2001:db8::1 2001:db8::2 --ttl 3 --size 100 "
                            "--proto tcp --sport 1 --dport 2");
    const auto read = this->read(made);
    EXPECT_EQ(made.bytes.size(), 100U);
    EXPECT_EQ(read.tag_vlan(), 10);
    EXPECT_EQ(simswitch::chip::text(read.destination), "02:00:00:00:00:77");
    EXPECT_EQ(simswitch::chip::text(read.source), "02:00:00:00:00:78");
    EXPECT_EQ(pipeline::address_text(true, read.from), "2001:db8::1");
    EXPECT_EQ(pipeline::address_text(true, read.to), "2001:db8::2");
    EXPECT_EQ(read.ttl, 3);
    EXPECT_EQ(read.protocol, pipeline::PROTOCOL_TCP);
    EXPECT_EQ(read.l3_length, 82U);
    EXPECT_EQ(pipeline::read16(made.bytes, read.l4), 1);
    EXPECT_EQ(pipeline::read16(made.bytes, read.l4 + 2), 2);
}

TEST_F(PacketWords, OtherProtocolsAndFrames)
{
    EXPECT_EQ(read(frame("--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --proto icmp")).protocol, 1);
    EXPECT_EQ(read(frame("--in Ethernet0 --ip ::9 ::8 --proto icmp")).protocol, 58);
    EXPECT_EQ(read(frame("--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --proto 89")).protocol, 89);
    EXPECT_EQ(hex(frame("--in Ethernet0 --arp 10.0.0.9 10.0.0.1 --size 42").bytes),
              "ffffffffffff0200000000fe0806000108000604000102000000"
              "00fe0a0000090000000000000a000001");
    const auto labelled = frame("--in Ethernet0 --mpls 77 --ip 10.0.0.9 10.0.4.9").bytes;
    EXPECT_EQ(hex({labelled.begin() + 12, labelled.begin() + 19}), "88470004d14045");
    EXPECT_EQ(hex(frame("--in Ethernet0 --hex \"01:02 0aFF\"").bytes), "01020aff");
}

TEST_F(PacketWords, HeadersThatNeedMoreThan64BytesGetThem)
{
    EXPECT_EQ(frame("--in Ethernet0 --ip ::9 ::8 --proto tcp").bytes.size(), 74U);
    EXPECT_EQ(frame("--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --size 42").bytes.size(), 42U);
    EXPECT_EQ(frame("--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --size 9600").bytes.size(), 9600U);
}

TEST_F(PacketWords, DestinationsGoByName)
{
    const std::string ip4 = "--in Ethernet0 --ip 10.0.0.9 10.0.4.9 ";
    EXPECT_EQ(destination(ip4), "02:00:00:00:0a:01");
    EXPECT_EQ(destination(ip4 + "--dmac router"), "02:00:00:00:0a:01");
    EXPECT_EQ(destination(ip4 + "--dmac broadcast"), "ff:ff:ff:ff:ff:ff");
    // An interface with a virtual MAC is reached by that one.
    EXPECT_EQ(destination(ip4 + "--dmac Vlan100"), "00:00:5e:00:01:08");
    EXPECT_EQ(destination(ip4 + "--dmac Ethernet4"), "02:00:00:00:0a:01");
    EXPECT_EQ(destination("--in Ethernet0 --ip 10.0.0.9 224.0.0.5"), "01:00:5e:00:00:05");
    EXPECT_EQ(destination("--in Ethernet0 --ip fe80::1 ff02::1:ff00:9"), "33:33:ff:00:00:09");
}

TEST_F(PacketWords, FramesComeInByName)
{
    const auto channel = frame("--in PortChannel0001 --ip 10.0.8.9 10.0.4.9");
    EXPECT_EQ(channel.port_name, "Ethernet8");
    EXPECT_EQ(channel.note, "the first member of PortChannel0001");
    const auto sub = frame("--in Ethernet4.10 --ip 10.4.10.9 10.0.4.9");
    EXPECT_EQ(sub.note, "the port of Ethernet4.10");
    EXPECT_EQ(read(sub).tag_vlan(), 10);
    const auto both = frame("--in PortChannel0001.20 --ip 10.8.20.9 10.0.4.9 --vlan 7");
    EXPECT_EQ(both.note, "the first member of PortChannel0001, for PortChannel0001.20");
    EXPECT_EQ(read(both).tag_vlan(), 7);
}

TEST_F(PacketWords, WordsThatMakeNoSense)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"--ip 10.0.0.9 10.0.4.9", "usage: where it comes in is missing: --in PORT"},
        {"--in Ethernet0", "usage: what goes in is missing: --ip SRC DST, --arp SENDER TARGET or "
                           "--hex BYTES"},
        {"--inn Ethernet0", "usage: unknown option '--inn': did you mean '--in'?"},
        {"--in Ethernet0 --in Ethernet4", "usage: --in is given twice"},
        {"--in Ethernet0 --ip 10.0.0.9", "usage: behind --ip stands SRC DST"},
        {"--in Ethernet0 --ip 10.0.0.9 10.0.4.9 10.0.5.9", "usage: unknown option '10.0.5.9'"},
        {"--in Ethernt0 --ip 10.0.0.9 10.0.4.9",
         "usage: --in: unknown port 'Ethernt0': did you mean 'Ethernet0'?"},
        {"--in Vlan200 --ip 10.0.0.9 10.0.4.9",
         "usage: --in Vlan200: a VLAN is no port; its ports are Ethernet28, Ethernet32"},
        {"--in Ethernet0 --ip 10.0.0.9 banana", "usage: --ip \"banana\" is no IP address"},
        {"--in Ethernet0 --ip 10.0.0.9 ::1",
         "usage: --ip: one of 10.0.0.9 and ::1 is an IPv4 address, the other an IPv6"},
        {"--in Ethernet0 --arp ::1 ::2",
         "usage: --arp: ARP is for IPv4 addresses; IPv6 asks by neighbour discovery"},
        {"--in Ethernet0 --arp 1.1.1.1 1.1.1.2 --ip 10.0.0.9 10.0.4.9",
         "usage: --ip and --arp: a frame is one of the two"},
        {"--in Ethernet0 --arp 1.1.1.1 1.1.1.2 --ttl 3",
         "usage: --ttl goes with --ip, not with --arp"},
        {"--in Ethernet0 --hex 0102 --vlan 3",
         "usage: --vlan doesn't go with --hex, which is a whole frame"},
        {"--in Ethernet0 --hex 012", "usage: --hex: the last byte has one digit"},
        {"--in Ethernet0 --hex 01zz", "usage: --hex: \"z\" is no hex digit"},
    };
    for (const auto &[words, expected] : cases) {
        EXPECT_EQ(why_not(words), expected) << words;
    }
}

TEST_F(PacketWords, ValuesThatMakeNoSense)
{
    const std::string ip = "--in Ethernet0 --ip 10.0.0.9 10.0.4.9 ";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"--vlan 4095", "usage: --vlan is a number from 0 to 4094, not \"4095\""},
        {"--ttl 256", "usage: --ttl is a number from 0 to 255, not \"256\""},
        {"--ttl -1", "usage: --ttl is a number from 0 to 255, not \"-1\""},
        {"--size 41", "usage: --size 41: the headers alone are 42 bytes"},
        {"--size 9601", "usage: --size is a number from 0 to 9600, not \"9601\""},
        {"--proto upd", "usage: --proto: unknown protocol 'upd': did you mean 'udp'? (udp, tcp, "
                        "icmp or a number)"},
        {"--proto 256", "usage: --proto is a number from 0 to 255, not \"256\""},
        {"--sport 65536", "usage: --sport is a number from 0 to 65535, not \"65536\""},
        {"--proto icmp --dport 3", "usage: --sport and --dport go with --proto udp or tcp"},
        {"--mpls 1048576", "usage: --mpls is a number from 0 to 1048575, not \"1048576\""},
        {"--smac 02:00", "usage: --smac \"02:00\" is no MAC such as 02:00:00:00:00:01"},
        {"--dmac 02:00:00:00:00:0g",
         "usage: --dmac \"02:00:00:00:00:0g\" is no MAC such as 02:00:00:00:00:01"},
        {"--dmac ruter", "usage: --dmac: unknown MAC or interface 'ruter': did you mean 'router'?"},
    };
    for (const auto &[words, expected] : cases) {
        EXPECT_EQ(why_not(ip + words), expected) << words;
    }
}

TEST_F(PacketWords, AnInterfaceThatIsDownHasNoMac)
{
    run("del Ethernet4.10");
    EXPECT_EQ(
        why_not("--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --dmac Ethernet4.10"),
        "impossible: --dmac Ethernet4.10: it is down and has no MAC; 'router' is the device's "
        "MAC");
}

TEST_F(SessionTest, APacketNeedsAConfiguration)
{
    EXPECT_EQ(problem("packet --in Ethernet0 --ip 10.0.0.9 10.0.4.9"),
              "impossible: no configuration is up: begin with 'up FILE'");
}

} // namespace

} // namespace lab_test
