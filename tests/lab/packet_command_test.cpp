/*
 * packet_command_test.cpp: the command `rtif packet`: options, exit codes, what
 * goes where.
 */
#include "commands/command_line.h"
#include "commands/packet.h"
#include "session_run.h"
#include "up_run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lab_test
{

namespace
{

class PacketCommand : public ::testing::Test
{
protected:
    /** Runs rtif packet; `out` and `err` receive what it says. */
    int run(const std::vector<std::string> &words,
            const std::filesystem::path &config = EXAMPLES / "packets.json")
    {
        rtifhal_test::reset_library();
        std::vector<std::string> all = {"rtif", "packet", config.string()};
        all.insert(all.end(), words.begin(), words.end());
        std::vector<const char *> argv;
        argv.reserve(all.size());
        for (const std::string &word : all) {
            argv.push_back(word.c_str());
        }
        std::ostringstream said;
        std::ostringstream complained;
        const int code =
            lab::commands::run(static_cast<int>(argv.size()), argv.data(), {said, complained});
        out = said.str();
        err = complained.str();
        return code;
    }

    std::string out;
    std::string err;
};

const std::vector<std::string> SENT = {"--in", "Ethernet0", "--ip", "10.0.0.9", "10.0.4.9"};

TEST_F(PacketCommand, TellsOfAPacketThatIsSent)
{
    EXPECT_EQ(run(SENT), 0);
    EXPECT_NE(out.find("\nSENT      Ethernet4 untagged: routed\n"), std::string::npos) << out;
    EXPECT_EQ(err, "");
}

TEST_F(PacketCommand, ADroppedOneIsNoFailure)
{
    EXPECT_EQ(run({"--in", "Ethernet40", "--ip", "10.9.40.9", "10.0.4.9", "--chip", "trident2"}),
              0);
    EXPECT_NE(out.find("\nDROPPED   no route to its destination\n"), std::string::npos) << out;
}

TEST_F(PacketCommand, IPv6OfTheConfigurationIsOpen)
{
    EXPECT_EQ(run({"--in", "Ethernet0", "--ip", "2001:db8::9", "2001:db8:4::9", "--json"}), 0);
    EXPECT_EQ(nlohmann::json::parse(out)["summary"], "sent Ethernet4 untagged");
}

TEST_F(PacketCommand, NeighborsCanBeAdded)
{
    const std::vector<std::string> packet = {"--in", "Ethernet0", "--ip", "10.0.0.9", "10.2.0.77"};
    EXPECT_EQ(run(packet), 0);
    EXPECT_NE(out.find("TO CPU    its next hop is the CPU; 10.2.0.77 isn't known on Vlan200"),
              std::string::npos)
        << out;
    auto known = packet;
    known.insert(known.end(), {"--neighbor", "Vlan200,10.2.0.77,02:00:00:02:00:77,Ethernet28"});
    EXPECT_EQ(run(known), 0);
    EXPECT_NE(out.find("SENT      Ethernet28 untagged"), std::string::npos) << out;
}

TEST_F(PacketCommand, WordsThatMakeNoSenseAreUsageErrors)
{
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"--in", "Ethernt0", "--ip", "10.0.0.9", "10.0.4.9"},
         "--in: unknown port 'Ethernt0': did you mean 'Ethernet0'?\n"},
        {{"--in", "Ethernet0"},
         "what goes in is missing: --ip SRC DST, --arp SENDER TARGET or --hex BYTES\n"},
        {{"--in", "Ethernet0", "--arp", "1.1.1.1", "1.1.1.2", "--neighbor", "Vlan200,10.2.0.77"},
         "--neighbor \"Vlan200,10.2.0.77\" is no INTERFACE,ADDRESS,MAC or "
         "INTERFACE,ADDRESS,MAC,PORT\n"},
        {{"--in", "Ethernet0", "--arp", "1.1.1.1", "1.1.1.2", "--neighbor",
          "Vlan200,banana,02:00:00:02:00:77"},
         "--neighbor: \"banana\" is no IP address\n"},
    };
    for (const auto &[words, expected] : cases) {
        EXPECT_EQ(run(words), 2);
        EXPECT_EQ(err, expected);
        EXPECT_EQ(out, "");
    }
    EXPECT_EQ(run({"--in", "Ethernet0", "--pcap", "x.pcap"}), 2);
    EXPECT_NE(err.find("--pcap and --out: go together"), std::string::npos) << err;
    EXPECT_EQ(run({"--in", "Ethernet0", "--ttl", "3", "--pcap", "x.pcap", "--out", "x"}), 2);
    EXPECT_NE(err.find("--ttl: doesn't go with --pcap"), std::string::npos) << err;
    EXPECT_EQ(run({"--in", "Ethernet0", "--arp", "1.1.1.1", "1.1.1.2", "--neighbor",
                   "Vlan20,10.2.0.77,02:00:00:02:00:77"}),
              2);
    EXPECT_NE(err.find("Vlan200"), std::string::npos) << err;
}

TEST_F(PacketCommand, ABadConfigurationIsRefused)
{
    const Folder folder;
    const auto bad = folder.path / "bad.json";
    std::ofstream(bad) << "{";
    EXPECT_EQ(run(SENT, bad), 1);
    EXPECT_NE(err.find("bad.json"), std::string::npos) << err;
    EXPECT_EQ(run(SENT, folder.path / "none.json"), 1);
    EXPECT_NE(err.find("none.json"), std::string::npos) << err;
}

} // namespace

} // namespace lab_test
