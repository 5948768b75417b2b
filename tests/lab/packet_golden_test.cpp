/*
 * packet_golden_test.cpp: the whole trace of packets in all situations, held
 * against tests/lab/golden. RTIF_WRITE_GOLDEN=1 writes them anew; what then
 * differs is for a reader to judge.
 */
#include "packet_run.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace lab_test
{

namespace
{

/** A packet in a situation; what the situation changes is put back behind it. */
struct Situation {
    const char *name;                     ///< of the file
    const char *packet;                   ///< what stands behind `packet`
    std::vector<std::string> before = {}; ///< commands that make the situation
    std::vector<std::string> after = {};  ///< commands that end it
};

const std::vector<Situation> &situations()
{
    static const std::vector<Situation> ALL = {
        {"routed-ip4", "--in Ethernet0 --ip 10.0.0.9 10.0.4.9"},
        {"routed-ip6", "--in Ethernet0 --ip 2001:db8::9 2001:db8:4::9"},
        {"ecmp-one-flow", "--in Ethernet0 --ip 10.0.0.9 10.60.1.1 --sport 1"},
        {"ecmp-another-flow", "--in Ethernet0 --ip 10.0.0.9 10.60.1.1 --sport 4"},
        {"default-route", "--in Ethernet0 --ip 10.0.0.9 192.0.2.1 --proto tcp"},
        {"port-channel-out", "--in Ethernet4 --ip 10.0.4.9 10.0.8.9"},
        {"port-channel-in", "--in PortChannel0001 --ip 10.0.8.9 10.0.4.9"},
        {"subinterface-in-and-out", "--in Ethernet4.10 --ip 10.4.10.9 10.8.20.9"},
        {"subinterface-of-port-channel", "--in PortChannel0001.20 --ip 10.8.20.9 10.4.10.9"},
        {"svi-to-svi", "--in Ethernet20 --ip 10.1.0.9 10.2.0.19"},
        {"tunnel", "--in Ethernet0 --ip 10.0.0.9 10.70.1.1"},
        {"virtual-mac", "--in Ethernet0 --dmac Ethernet0 --ip 10.0.0.9 10.0.4.9"},
        {"secondary-vlan-in", "--in Ethernet24 --dmac Vlan100 --ip 10.1.0.19 10.0.4.9"},
        {"secondary-vlan-out", "--in Ethernet0 --ip 10.0.0.9 10.1.0.19"},
        {"own-address", "--in Ethernet0 --ip 10.0.0.9 10.0.4.1 --proto icmp"},
        {"unknown-neighbour", "--in Ethernet0 --ip 10.0.0.9 10.0.4.99"},
        {"another-vrf", "--in Ethernet40 --ip 10.9.40.9 10.90.1.1"},
        {"no-route", "--in Ethernet40 --ip 10.9.40.9 10.0.4.9"},
        {"black-hole", "--in Ethernet0 --ip 10.0.0.9 10.80.1.1"},
        {"mtu", "--in Ethernet0 --ip 10.0.0.9 10.0.36.9 --size 1600"},
        {"ttl", "--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --ttl 1"},
        {"vlan-miss", "--in Ethernet28 --vlan 100 --ip 10.2.0.9 10.0.4.9"},
        {"translation-miss", "--in Ethernet4 --vlan 11 --ip 10.4.10.9 10.0.4.9"},
        {"no-station", "--in Ethernet0 --dmac 02:00:00:00:00:77 --ip 10.0.0.9 10.0.4.9"},
        {"bridged-known", "--in Ethernet28 --dmac 02:00:00:02:00:19 --ip 10.2.0.9 10.2.0.19"},
        {"flooded", "--in Ethernet28 --dmac 02:00:00:02:00:99 --ip 10.2.0.9 10.2.0.99"},
        {"arp-on-port", "--in Ethernet0 --arp 10.0.0.9 10.0.0.1"},
        {"arp-in-vlan", "--in Ethernet28 --arp 10.2.0.9 10.2.0.1"},
        {"mpls", "--in Ethernet0 --mpls 17 --ip 10.0.0.9 10.0.4.9"},
        {"reverse-path-strict",
         "--in Ethernet0 --ip 10.0.8.9 10.0.4.9",
         {"set Ethernet0 urpf strict"},
         {"set Ethernet0 urpf off"}},
        {"ip6-off",
         "--in Ethernet0 --ip 2001:db8::9 2001:db8:4::9",
         {"set Ethernet0 ipv6 off"},
         {"set Ethernet0 ipv6 on"}},
        {"disabled-interface",
         "--in Ethernet36 --ip 10.0.36.9 10.0.4.9",
         {"disable Ethernet36"},
         {"set Ethernet36 vrf 1"}},
        {"deleted-interface",
         "--in Ethernet36 --ip 10.0.36.9 10.0.4.9",
         {"del Ethernet36"},
         {"add Ethernet36"}},
        {"drop-rule",
         "--in Ethernet0 --dmac 02:00:00:00:00:77 --ip 10.0.0.9 10.0.4.9",
         {"drop add Ethernet0"}},
    };
    return ALL;
}

const std::filesystem::path GOLDEN =
    std::filesystem::path(RTIFHAL_SOURCE_DIR) / "tests" / "lab" / "golden";

std::string content_of(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class PacketGolden : public PacketTest
{
protected:
    /** What a reader of the file sees: the commands, then the trace. */
    std::string trace_of(const Situation &situation)
    {
        std::string shown;
        for (const std::string &line : situation.before) {
            EXPECT_FALSE(run(line).refused) << line;
            shown += fmt::format("rtif> {}\n", line);
        }
        run(fmt::format("packet {}", situation.packet));
        shown += fmt::format("rtif> packet {}\n{}", situation.packet, text());
        for (const std::string &line : situation.after) {
            run(line);
        }
        return shown;
    }
};

TEST_F(PacketGolden, TheTracesAreAsWritten)
{
    const bool writes = std::getenv("RTIF_WRITE_GOLDEN") != nullptr;
    for (const Situation &situation : situations()) {
        const auto file = GOLDEN / fmt::format("{}.txt", situation.name);
        const std::string seen = trace_of(situation);
        if (writes) {
            std::ofstream(file, std::ios::binary) << seen;
        }
        EXPECT_EQ(seen, content_of(file)) << situation.name;
    }
}

TEST_F(PacketGolden, NoFileIsWithoutASituation)
{
    std::size_t files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(GOLDEN)) {
        files += entry.path().extension() == ".txt" ? 1 : 0;
    }
    EXPECT_EQ(files, situations().size());
}

} // namespace

} // namespace lab_test
