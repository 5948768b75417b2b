/*
 * forward_random_test.cpp: random frames through a chip that the library has
 * programmed with one of everything, while interfaces come, go and change. What
 * comes out keeps to the tables, whatever came in.
 */
#include "cpu_switch.h"
#include "forward.h"

#include "session/errors.h"

#include "chip/stgs.h"

#include <algorithm>
#include <map>
#include <span>

namespace
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;
using Bytes = std::vector<std::uint8_t>;
using lab_test::Kind;
using lab_test::Lines;

constexpr int FRAMES = 2000;
constexpr int FRAMES_A_CHANGE = 80;
constexpr unsigned SEED = 20261121;

const Lines INTERFACES = {"Ethernet0",       "Ethernet4",       "Ethernet4.30", "Ethernet12",
                          "Ethernet16",      "PortChannel1",    "PortChannel3", "PortChannel3.40",
                          "PortChannel4.43", "Vlan100",         "Vlan110",      "Vlan200",
                          "Ethernet120.10",  "Ethernet132.100", "Tunnel1"};
// Where frames come in, with the tags that have a meaning there.
const Lines WAYS_IN = {"Ethernet0",
                       "Ethernet4",
                       "Ethernet4 --vlan 30",
                       "Ethernet16",
                       "Ethernet40",
                       "Ethernet44",
                       "Ethernet60",
                       "Ethernet60 --vlan 40",
                       "Ethernet64 --vlan 43",
                       "Ethernet72 --vlan 100",
                       "Ethernet80",
                       "Ethernet104",
                       "Ethernet104 --vlan 0",
                       "Ethernet112 --vlan 200",
                       "Ethernet116 --vlan 201",
                       "Ethernet120 --vlan 10",
                       "Ethernet132 --vlan 100",
                       "Ethernet76 --vlan 110",
                       "Ethernet36 --vlan 4000",
                       "Ethernet128 --vlan 10"};
const Lines MACS = {"00:00:5e:00:01:04", "02:5a:00:00:0e:01", "02:00:00:00:0e:33",
                    "02:00:00:00:99:99", "broadcast",         "01:00:5e:01:02:03"};
const Lines TARGETS = {"10.0.0.1",   "10.1.1.1",    "10.2.110.9",    "10.2.100.9", "10.4.0.1",
                       "10.4.13.1",  "10.30.0.9",   "192.0.2.1",     "10.0.0.0",   "192.0.2.2",
                       "fd00:4::99", "fd00:1:1::1", "fd00:2:110::9", "192.0.2.3",  "10.1.1.1"};
const Lines GROUPS = {"224.0.0.5", "239.1.2.3", "ff02::1", "ff0e::7"};

class ForwardRandom : public testing::TestWithParam<Kind>, public lab_test::Lab
{
protected:
    ForwardRandom() : Lab(GetParam(), {}, "examples/everything.json")
    {
        run({"neighbor add Ethernet0 10.0.0.1 02:aa:00:00:00:00",
             "neighbor add PortChannel1 10.1.1.1 02:aa:00:00:00:01",
             "neighbor add PortChannel1 fd00:1:1::1 02:aa:00:00:00:01",
             "neighbor add Vlan110 10.2.110.9 02:aa:00:00:01:10 Ethernet104",
             "neighbor add Vlan110 fd00:2:110::9 02:aa:00:00:01:10 PortChannel5",
             "neighbor add Ethernet120.10 10.4.0.1 02:aa:00:00:00:10",
             "neighbor add PortChannel3.40 10.4.13.1 02:aa:00:00:00:40",
             "route add 0.0.0.0/0 via 10.0.0.1 10.1.1.1 10.4.13.1",
             "route add 10.9.0.0/24 via 10.0.0.1", "route add 10.30.0.0/16 via Tunnel1"});
        for (int i = 0; i < 80; ++i) {
            templates.push_back(frame(any_words()));
        }
    }

    std::size_t below(std::size_t end) { return random() % end; }
    const std::string &any_of(const Lines &words) { return words[below(words.size())]; }
    std::string any_words()
    {
        const std::string &target = below(12) == 0 ? any_of(GROUPS) : any_of(TARGETS);
        const std::string source = target.find(':') != std::string::npos ? "fd00:2:110::77"
                                   : below(2) == 0                       ? "10.1.1.1"
                                                                         : "192.0.2.77";
        return fmt::format("--in {} --dmac {} --ip {} {} --ttl {} --size {} --sport {}{}",
                           any_of(WAYS_IN), below(3) == 0 ? any_of(MACS) : "router", source, target,
                           below(4) == 0 ? 1 : 64, below(6) == 0 ? 2000 : 90, below(60000),
                           below(12) == 0 ? " --mpls 77" : "");
    }
    Bytes any_frame(const Bytes &good)
    {
        Bytes bytes = good;
        if (below(5) == 0) {
            bytes.at(below(std::min<std::size_t>(bytes.size(), 60))) =
                static_cast<std::uint8_t>(below(256));
        }
        if (below(16) == 0) {
            bytes.resize(below(bytes.size()));
        }
        return bytes;
    }
    void any_change()
    {
        static const Lines CHANGES = {"del {}",          "add {}",          "del {} keep",
                                      "add {}",          "disable {}",      "set {} ipv6 on",
                                      "set {} vrf 2",    "set {} vrf 1",    "set {} urpf strict",
                                      "set {} urpf off", "set {} mtu 1400", "set {} ipv4 off",
                                      "set {} ipv4 on",  "set {} mpls on"};
        try {
            session.execute(fmt::format(fmt::runtime(any_of(CHANGES)), any_of(INTERFACES)));
        } catch (const lab::session::Impossible &) {
            ++impossible; // what is down can't be deleted
        }
    }
    /** The ports that a flooded frame stays out of. */
    const chip::PortSet &blocked(const chip::Vlan &vlan, const Bytes &bytes) const
    {
        pipeline::Frame read;
        pipeline::parse(bytes, read);
        return read.is_broadcast() ? vlan.blocks.broadcast
               : read.is_group()   ? vlan.blocks.unknown_multicast
                                   : vlan.blocks.unknown_unicast;
    }
    void check(int in, const Bytes &bytes)
    {
        const pipeline::Result &result = traffic.result();
        const bool is_routed = result.reason == pipeline::Reason::routed;
        const chip::Vlan *vlan = hardware.chip.vlans.find(result.vlan);
        for (int port = 0; port <= chip::LAST_PORT; ++port) {
            if (!result.left_on(port)) {
                continue;
            }
            ASSERT_NE(vlan, nullptr);
            EXPECT_NE(port, chip::CPU_PORT);
            EXPECT_TRUE(vlan->members.has(port));
            EXPECT_EQ(result.untagged.has(port), vlan->untagged.has(port));
            EXPECT_EQ(hardware.chip.stgs.find(vlan->stg)->states.at(static_cast<std::size_t>(port)),
                      chip::STP_FORWARDING);
            EXPECT_TRUE(is_routed || port != in);
            EXPECT_TRUE(is_routed || result.vlan == result.ingress_vlan);
            if (result.reason == pipeline::Reason::flooded) {
                EXPECT_FALSE(blocked(*vlan, bytes).has(port));
            }
        }
        if (is_routed) {
            const auto *from = hardware.chip.l3_ingresses.find(result.ingress);
            const auto *out = hardware.chip.l3_interfaces.find(result.egress);
            ASSERT_NE(from, nullptr);
            ASSERT_NE(out, nullptr);
            EXPECT_TRUE(std::ranges::equal(std::span(result.bytes).subspan(6, 6), out->mac));
        }
    }

    lab_test::Numbers random{SEED};
    std::vector<lab::packet::MadeFrame> templates;
    int impossible = 0;
};

INSTANTIATE_TEST_SUITE_P(Chips, ForwardRandom, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return lab_test::chip_name(info.param); });

} // namespace

TEST_P(ForwardRandom, FramesAndChangesOfInterfaces)
{
    std::map<pipeline::Reason, int> ends;
    for (int i = 0; i < FRAMES && !HasFailure(); ++i) {
        if (i % FRAMES_A_CHANGE == FRAMES_A_CHANGE - 1) {
            any_change();
        }
        const auto &made = templates[below(templates.size())];
        const int in = below(8) == 0 ? templates[below(templates.size())].port : made.port;
        const Bytes bytes = any_frame(made.bytes);
        SCOPED_TRACE(fmt::format("frame {} on {}: {}", i, in, traffic.send(in, bytes)));
        check(in, bytes);
        ++ends[traffic.result().reason];
    }
    // Frames that all end alike would test little.
    EXPECT_GT(ends[pipeline::Reason::routed], FRAMES / 20);
    EXPECT_GT(ends[pipeline::Reason::flooded], FRAMES / 20);
    EXPECT_GT(ends[pipeline::Reason::no_station], FRAMES / 50);
    EXPECT_GE(ends.size(), 15U);
    EXPECT_LT(impossible, FRAMES / FRAMES_A_CHANGE / 2);
}
