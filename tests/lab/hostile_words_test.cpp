/*
 * hostile_words_test.cpp: what stirs a terminal in the words of a command line and in the names of
 * files, and files that have no end or more addresses than anybody needs.
 */
#include "config_text.h"
#include "restart_run.h"
#include "up_run.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

using namespace lab_test;

namespace
{

/** "\x1b[31m" and a carriage return, as a shell makes them. */
constexpr const char *RED = "\"$(printf '\\033[31mx\\rx')\"";

} // namespace

TEST(HostileWord, IsShownHarmlessWhereItIsRefused)
{
    const std::string config = source_path("examples/kinds.json").string();
    for (const std::string &words :
         std::vector<std::string>{"up --chip {} " + config, "restart --state x --mode {}",
                                  "packet " + config + " --in {} --ip 10.0.0.1 10.0.0.2",
                                  "packet " + config + " --in Ethernet0 --ip {} 10.0.0.2",
                                  "packet " + config + " --in Ethernet0 --dmac {} --arp 1.1.1.1 {}",
                                  "dump " + config + " {}", "run --{} x"}) {
        const CommandRun run = rtif(fmt::format(fmt::runtime(words), RED, RED));
        EXPECT_EQ(run.code, 2) << words << "\n" << run.out;
        EXPECT_EQ(run.out.find_first_of("\x1b\r"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("\\x1b[31mx\\x0dx"), std::string::npos) << run.out;
    }
}

TEST(HostileName, OfAFileIsShownHarmless)
{
    const Folder folder;
    const auto path = folder.path / "red\x1b[31m\r.json";
    std::ofstream(path) << R"({"PORT": {"Ethernet0": {}, "bad": {}}, "INTERFACE": {"Vlan1": {}}})";
    const std::string name = "\"" + folder.path.string() + "\"/red*.json";
    const std::string in_red = "\"$(printf '" + folder.path.string() + "/red\\033[31m')\"";
    std::filesystem::copy_file(source_path("tests/lab/captures/cut-off.pcap"),
                               folder.path / "red\x1b[31m");
    const CommandRun capture = rtif("packet --pcap " + in_red + " --in Ethernet0 --out " + in_red +
                                    ".out " + source_path("examples/kinds.json").string());
    EXPECT_EQ(capture.out.find('\x1b'), std::string::npos) << capture.out;
    EXPECT_NE(capture.out.find("red\\x1b[31m: "), std::string::npos) << capture.out;
    for (const char *words : {"up ", "up --json ", "up --calls --trace --then-down ", "dump "}) {
        const CommandRun run = rtif(words + name);
        EXPECT_EQ(run.code, 0) << run.out;
        EXPECT_EQ(run.out.find_first_of("\x1b\r"), std::string::npos) << run.out;
    }
    const CommandRun run = rtif("up " + name);
    EXPECT_NE(run.out.find("red\\x1b[31m\\x0d.json: PORT \"bad\""), std::string::npos) << run.out;
}

TEST(HostileName, OfAFolderIsShownHarmless)
{
    const Folder folder;
    const auto path = folder.path / "red\x1b[31m\r";
    std::filesystem::create_directory(path);
    std::ofstream(path / "bad.json") << R"({"PORT": {"Ethernet0": {}, "bad": {}}})";
    std::ofstream(path / "up.rtif") << "up bad.json\nsave\nup bad.json\n";
    const std::string name = "\"$(printf '" + folder.path.string() + "/red\\033[31m\\r')\"/";
    std::string told;
    for (const std::string &words :
         {"run --state " + name + "state " + name + "up.rtif", "check --state " + name + "state",
          "dump --state " + name + "state", "restart --mode restore --state " + name + "state",
          "restart --mode cold --state " + name + "state", "check --state " + name}) {
        const CommandRun run = rtif(words);
        EXPECT_EQ(run.out.find_first_of("\x1b\r"), std::string::npos) << words << "\n" << run.out;
        told += run.out;
    }
    for (const char *said :
         {"x0d/bad.json: PORT", "x0d/bad.json is up already", "x0d/state: Trident, 0 stored",
          "x0d/state: Trident, restore", "x0d/state: Trident, cold", "x0d/: "}) {
        EXPECT_NE(told.find(std::string("red\\x1b[31m\\") + said), std::string::npos)
            << said << "\n"
            << told;
    }
}

TEST(HostileFile, OfFiftyThousandAddressesOfAnInterfaceIsReadInTheirNumber)
{
    constexpr int COUNT = 50'000;
    std::string text = R"({"PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0": {})";
    for (int i = 0; i < COUNT; ++i) {
        // The same address in two spellings counts once.
        text += fmt::format(R"(, "Ethernet0|2001:db8::{:x}/128": {{}})", i);
    }
    const auto config = read(text + R"(, "Ethernet0|2001:DB8::1/128": {}}})");
    ASSERT_EQ(config.interfaces.size(), 1U);
    EXPECT_EQ(config.interfaces.front().addresses.size(), std::size_t{COUNT});
}

TEST(HostileDefaultRoutes, OfAFileWithoutEndAreRefused)
{
    const Folder folder;
    const std::string state = (folder.path / "state").string();
    ASSERT_EQ(rtif("up " + source_path("examples/kinds.json").string() + " --state " + state).code,
              0);
    const CommandRun run =
        rtif("restart --state " + state + " --mode fast --default-routes /dev/zero");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "/dev/zero: cannot be read: it is larger than 64 MiB\n");
}
