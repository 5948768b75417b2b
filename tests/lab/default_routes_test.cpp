/*
 * default_routes_test.cpp: the file of default routes, written from its JSON
 * form and shown: its bytes, round trips, files that are refused, and where it
 * is put. default_routes_restart_test.cpp lets a fast restart read it.
 */
#include "default_routes_run.h"

#include "commands/command_line.h"
#include "rtifhal_types.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using lab_test::bytes_of;
using lab_test::source_path;

constexpr std::size_t ROUTE_BYTES = 5900;
constexpr std::size_t PATH_BYTES = 92;

const std::string LEAF = source_path("examples/leaf.json");

class DefaultRoutes : public ::testing::Test, protected lab_test::RoutesRun
{
protected:
    /** The refusal of a route with these keys. */
    std::string refusal(const std::string &keys) const
    {
        std::string text = write("[{" + keys + "}]");
        EXPECT_FALSE(fs::exists(file("out"))) << keys;
        return text;
    }
    /** The refusal of a path with these keys. */
    std::string path_refusal(const std::string &keys) const
    {
        return refusal(R"("family": "ipv4", "paths": [{)" + keys + "}]");
    }
    /** What is shown of a file of these bytes. */
    std::string shown(const std::string &bytes) const
    {
        put("out", bytes);
        return show();
    }
    std::uint32_t word_at(std::size_t offset) const
    {
        const std::string bytes = bytes_of(file("out"));
        std::uint32_t word = 0;
        std::memcpy(&word, bytes.data() + offset, sizeof word);
        return word;
    }
};

std::string word(std::uint32_t value)
{
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

/** A route whose paths hold anything. */
std::string random_route(std::mt19937 &random)
{
    const std::vector<std::uint32_t> likely = {0, 0, 0, 1, 2, 4095, 4096, 0xffffffff};
    const auto any = [&] {
        return random() % 4 == 0 ? static_cast<std::uint32_t>(random())
                                 : likely[random() % likely.size()];
    };
    std::string bytes = word(any()) + word(any()) + word(static_cast<std::uint32_t>(random() % 65));
    for (int i = 0; i < 64; ++i) {
        if (random() % 2 == 0) {
            bytes += std::string(PATH_BYTES, '\0');
            continue;
        }
        for (std::size_t at = 0; at < PATH_BYTES; at += 4) {
            bytes += word(any());
        }
    }
    return bytes;
}

} // namespace

TEST_F(DefaultRoutes, EveryFieldHasItsPlaceInTheFile)
{
    EXPECT_EQ(write(R"([{"family": "ipv6", "vrf": 3, "paths": [
        {"interface": "Ethernet1/2", "mac": "02:00:00:00:00:01"},
        {"interface": "Vlan100", "valid": false, "mac": "02:11:22:33:44:55", "port": 5,
         "vlan": 4095, "module": -1, "trunk": "0x80000007", "encap": 4294967295, "flags": "0x4",
         "l3_interface": 12, "raw": [1, 2, 3, 4, 5, 6, 7, 8, 9]}]}])"),
              "out: 1 route, 2 paths, 5904 bytes\n");
    EXPECT_EQ(fs::file_size(file("out")), 4 + ROUTE_BYTES);
    EXPECT_EQ(word_at(0), 1U);
    EXPECT_EQ(word_at(4), 1U);
    EXPECT_EQ(word_at(8), 3U);
    EXPECT_EQ(word_at(12), 2U);
    EXPECT_EQ(word_at(16 + 20), 2U) << "an Ethernet port tells its own port";
    EXPECT_EQ(word_at(16 + 84), 1U) << "a path is valid where nothing else is said";
    EXPECT_EQ(word_at(16 + 88), 0x10100000U);

    const std::size_t path = 16 + PATH_BYTES;
    EXPECT_EQ(word_at(path), 4U);
    EXPECT_EQ(word_at(path + 4), 12U);
    EXPECT_EQ(bytes_of(file("out")).substr(path + 8, 8), "\x02\x11\x22\x33\x44\x55\xff\x0f");
    EXPECT_EQ(word_at(path + 16), 0xffffffffU);
    EXPECT_EQ(word_at(path + 20), 5U);
    EXPECT_EQ(word_at(path + 24), 0x80000007U);
    EXPECT_EQ(word_at(path + 28), 4294967295U);
    EXPECT_EQ(word_at(path + 32), 9U);
    EXPECT_EQ(word_at(path + 36), 0U);
    EXPECT_EQ(word_at(path + 84), 0U);
    EXPECT_EQ(word_at(path + 88), 0x30000064U);
}

TEST_F(DefaultRoutes, NoRouteIsAFileToo)
{
    EXPECT_EQ(write("[]"), "out: 0 routes, 0 paths, 4 bytes\n");
    EXPECT_EQ(bytes_of(file("out")), std::string(4, '\0'));
    EXPECT_EQ(show(), "out: 0 routes, 0 paths\n");
    EXPECT_EQ(show(true), "[]\n");
}

TEST_F(DefaultRoutes, TableHasALineForEachPath)
{
    write(R"([
      {"family": "ipv4", "paths": [
        {"interface": "Ethernet1/9", "mac": "02:00:00:00:00:01"},
        {"interface": "port-channel7.20", "mac": "02:00:00:00:00:02", "trunk": 3, "vlan": 20,
         "flags": 4}]},
      {"family": 2, "vrf": 9, "paths": [],
       "spare": [{"ifindex": 7, "valid": false, "raw": [0, 0, 0, 0, 0, "0x10000", 0, 0, 255]}]},
      {"family": "ipv6", "paths": []}])");
    EXPECT_EQ(show(), R"(out: 3 routes, 2 paths

ROUTE  FAMILY    VRF     PATH  INTERFACE         STATE      MAC                   PORT  VLAN  MORE
    1  ipv4        1        1  Ethernet1/9       valid      02:00:00:00:00:01        9     -  -
    1  ipv4        1        2  port-channel7.20  valid      02:00:00:00:00:02        0    20  trunk 3, flags 0x4
    2  ipv6 (2)    9  spare 1  0x7               not valid  00:00:00:00:00:00  0x10000     -  word 8 0xff
    3  ipv6        1     none  -                 -          -                        -     -  -
)");
}

TEST_F(DefaultRoutes, JsonSaysWhatIsNotUnderstoodAnyway)
{
    const std::string routes = R"([
  {"family": "ipv4", "vrf": 1, "paths": [
    {"interface": "Ethernet1/9", "mac": "02:00:00:00:00:01", "port": 9},
    {"ifindex": "0x1", "valid": 2, "mac": "02:00:00:00:00:02", "port": "0x8000001", "vlan": 7, "module": 1, "trunk": -3, "encap": 5, "flags": "0x4", "l3_interface": 6}]},
  {"family": 2, "vrf": 0, "paths": [],
   "spare": [
    {"ifindex": "0x0", "valid": false, "port": 0, "raw": []},
    {"interface": "Tunnel3", "mac": "02:00:00:00:00:03", "port": 1, "raw": ["0x0", "0x0", "0x2", "0x3e800300", "0x0", "0x1"]}]}
]
)";
    // VLAN 16000, which no other key takes.
    write(routes);
    EXPECT_EQ(show(true), routes);
}

TEST_F(DefaultRoutes, WhateverAFileHoldsComesBackByteForByte)
{
    std::mt19937 random(5); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same files each time
    for (const std::string &config : {std::string(), LEAF}) {
        std::string bytes = word(3);
        for (int i = 0; i < 3; ++i) {
            bytes += random_route(random);
        }
        put("out", bytes);
        const std::string json = show(true, config);
        fs::remove(file("out"));
        EXPECT_TRUE(nlohmann::json::accept(json));
        EXPECT_EQ(write(json, config).substr(0, 15), "out: 3 routes, ");
        EXPECT_TRUE(bytes_of(file("out")) == bytes);
    }
}

TEST_F(DefaultRoutes, NamesOfAConfigurationCount)
{
    const std::string routes = R"([{"family": "ipv4", "vrf": "Vrf_storage", "paths": [
        {"interface": "Po0001.30", "mac": "02:00:00:00:00:01", "port": "Ethernet48"},
        {"interface": "PortChannel0002", "mac": "02:00:00:00:00:02", "trunk": "PortChannel0002"},
        {"interface": "Ethernet45.200", "mac": "02:00:00:00:00:03"},
        {"interface": "Ethernet1/49", "mac": "02:00:00:00:00:04"}]},
        {"family": "ipv6", "vrf": "default", "paths": []}])";
    EXPECT_EQ(write(routes, LEAF), "out: 2 routes, 4 paths, 11804 bytes\n");
    EXPECT_EQ(show(true, LEAF), R"([
  {"family": "ipv4", "vrf": 2, "paths": [
    {"interface": "Po0001.30", "mac": "02:00:00:00:00:01", "port": 49},
    {"interface": "PortChannel0002", "mac": "02:00:00:00:00:02", "port": 0, "trunk": 2},
    {"interface": "Ethernet45.200", "mac": "02:00:00:00:00:03", "port": 46},
    {"interface": "Ethernet48", "mac": "02:00:00:00:00:04", "port": 49}]},
  {"family": "ipv6", "vrf": 1, "paths": []}
]
)");
    EXPECT_NE(show().find("  port-channel1.30  "), std::string::npos);
}

TEST_F(DefaultRoutes, NamesThatNobodyKnowsAreRefused)
{
    const std::string no_config = "; names of a configuration need --config CONFIG.json";
    const std::string names =
        "is no name like Ethernet1/9, Ethernet1/9.10, port-channel7, Vlan100 or Tunnel1";
    for (const char *name : {"Ethernet8", "Ethernet1/0", "Ethernet1/09", "Ethernet1/257", "Vlan1.2",
                             "Ethernet1/9.", "Ethernet1/9.0", "port-channel1.4096", "Vlan", ""}) {
        const std::string quoted = '"' + std::string(name) + '"';
        EXPECT_EQ(path_refusal(R"("interface": )" + quoted),
                  fmt::format("routes.json: route 1: path 1: interface {} {}{}", quoted, names,
                              no_config));
    }
    const std::string start = R"([{"family": "ipv4", "paths": [{"mac": "02:00:00:00:00:01", )";
    EXPECT_EQ(write(start + R"("interface": "Ethernet999"}]}])", LEAF),
              "routes.json: route 1: path 1: interface \"Ethernet999\" " + names + ", and " + LEAF +
                  " has no such routed interface that is taken");
    EXPECT_EQ(write(start + R"("ifindex": 1, "port": "Ethernet999"}]}])", LEAF),
              "routes.json: route 1: path 1: port \"Ethernet999\" is neither a number nor a port "
              "like Ethernet1/9 or of " +
                  LEAF);
    EXPECT_EQ(write(start + R"("ifindex": 1, "trunk": "PortChannel9"}]}])", LEAF),
              "routes.json: route 1: path 1: trunk \"PortChannel9\" is neither a number nor a "
              "port-channel of " +
                  LEAF);
    EXPECT_EQ(write(R"([{"family": "ipv4", "vrf": "Vrf_x", "paths": []}])", LEAF),
              "routes.json: route 1: vrf \"Vrf_x\" is neither a number nor a VRF of " + LEAF);
}

TEST_F(DefaultRoutes, WhatIsNoListOfRoutesIsRefused)
{
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"", "the file is empty; a list of routes was expected"},
        {"[", "line 1, column 2: cannot be read as JSON: unexpected end of input"},
        {"{}", "a list of routes was expected, not an object"},
        {"[7]", "route 1: an object was expected, not a number"},
        {R"([{"family": "ipv4", "paths": []}, {}])", "route 2: family is missing"},
        {R"([{"family": "ipv4", "family": "ipv6"}])", "a route has the key \"family\" twice; "
                                                      "leave one"},
        {R"([{"family": "ipv4", "paths": [{"mac": 1, "mac": 2}]}])",
         "a path has the key \"mac\" twice; leave one"}};
    for (const auto &[text, reason] : refused) {
        EXPECT_EQ(write(text), "routes.json: " + reason);
    }
}

TEST_F(DefaultRoutes, BadKeysOfARouteAreRefused)
{
    const std::vector<std::pair<std::string, std::string>> refused = {
        {R"("famly": "ipv4")", "unknown key \"famly\": did you mean \"family\"?"},
        {R"("\u001b[2J": 1)", R"(unknown key "\x1b[2J"; the keys are family, vrf, paths, spare)"},
        {R"("family": "ipv5")", "family is \"ipv5\", \"ipv4\" or \"ipv6\" was expected"},
        {R"("family": null)", "family is null, \"ipv4\" or \"ipv6\" was expected"},
        {R"("family": "ipv4")", "paths is missing"},
        {R"("family": "ipv4", "paths": {})", "paths is an object, a list was expected"},
        {R"("family": "ipv4", "vrf": -1)", "vrf -1 is not in 0..4294967295"},
        {R"("family": "ipv4", "vrf": 1.5)", "vrf 1.5 is not in 0..4294967295"},
        {R"("family": "ipv4", "vrf": 4294967296)", "vrf 4294967296 is not in 0..4294967295"},
        {R"("family": "ipv4", "vrf": "Vrf_a")", "vrf \"Vrf_a\" is neither a number nor known: "
                                                "names of VRFs need --config CONFIG.json"},
        {R"("family": "ipv4", "paths": [], "spare": [3])",
         "spare path 1: an object was expected, not a number"}};
    for (const auto &[keys, reason] : refused) {
        EXPECT_EQ(refusal(keys), "routes.json: route 1: " + reason);
    }
}

TEST_F(DefaultRoutes, BadKeysOfAPathAreRefused)
{
    const std::string good = R"("ifindex": 1, "port": 1, "mac": "02:00:00:00:00:01", )";
    const std::vector<std::pair<std::string, std::string>> refused = {
        {R"("mca": 1)", "unknown key \"mca\": did you mean \"mac\"?"},
        {R"("valid": true)", "interface is missing, or ifindex in its place"},
        {R"("interface": "Vlan1", "ifindex": 1)", "interface and ifindex are both there; leave "
                                                  "one"},
        {R"("interface": 5)", "interface is a number, a name was expected; a number is an ifindex"},
        {R"("ifindex": "0x100000000")", "ifindex \"0x100000000\" is not in 0..4294967295"},
        {R"("ifindex": "0x")", "ifindex \"0x\" is not in 0..4294967295"},
        {R"("interface": "Ethernet1/9")", "mac is missing"},
        {R"("ifindex": 1, "mac": 5)", "mac is a number, a text was expected"},
        {R"("ifindex": 1, "mac": "02-00")", "mac: \"02-00\" is no MAC address like "
                                            "00:11:22:33:44:55"},
        {R"("interface": "Vlan100", "mac": "02:00:00:00:00:01")",
         "port is missing, or trunk in its place: only an Ethernet port tells its own"},
        {good + R"("valid": "yes")", "valid is a text, true or false was expected"},
        {good + R"("vlan": 4096)", "vlan 4096 is not in 0..4095"},
        {good + R"("vlan": [1])", "vlan is a list, a number was expected"},
        {good + R"("module": 2147483648)", "module 2147483648 is not in -2147483648..2147483647"},
        {good + R"("encap": -1)", "encap -1 is not in 0..4294967295"},
        {good + R"("flags": "x")", "flags \"x\" is not in 0..4294967295"},
        {good + R"("trunk": {})", "trunk is an object, a number or name was expected"},
        {good + R"("trunk": "PortChannel1")",
         "trunk \"PortChannel1\" is neither a number nor a port-channel: their names need "
         "--config CONFIG.json"},
        {good + R"("raw": 1)", "raw is a number, a list was expected"},
        {good + R"("raw": [0, -1])", "raw word 1 -1 is not in 0..4294967295"},
        {good + R"("raw": [0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0])",
         "raw has 22 words, an egress object has 21"}};
    for (const auto &[keys, reason] : refused) {
        EXPECT_EQ(path_refusal(keys), "routes.json: route 1: path 1: " + reason);
    }
}

TEST_F(DefaultRoutes, RoomOfARouteAndOfAFile)
{
    std::string paths = R"({"ifindex": 1, "raw": []})";
    for (int i = 1; i < 64; ++i) {
        paths += R"(, {"ifindex": 1, "raw": []})";
    }
    const std::string route = R"({"family": "ipv4", "paths": [)" + paths;
    EXPECT_EQ(write("[" + route + R"(, {"ifindex": 1}]}])"),
              "routes.json: route 1: paths has 65, and a route has room for 64 paths");
    EXPECT_EQ(write("[" + route + R"(], "spare": [{"ifindex": 1}]}])"),
              "routes.json: route 1: spare has 1, and a route has room for 64 paths altogether");
    EXPECT_EQ(write("[" + route + "]}]"), "out: 1 route, 64 paths, 5904 bytes\n");
    fs::remove(file("out"));

    std::string routes = R"({"family": "ipv4", "paths": []})";
    for (int i = 1; i < 1024; ++i) {
        routes += R"(, {"family": "ipv4", "paths": []})";
    }
    EXPECT_EQ(write("[" + routes + ", {}]"), "routes.json: 1025 routes; a file takes at most 1024");
    EXPECT_EQ(write("[" + routes + "]"), "out: 1024 routes, 0 paths, 6041604 bytes\n");
    EXPECT_EQ(show(true).size(),
              4 +
                  1024 * std::strlen("\n  {\"family\": \"ipv4\", \"vrf\": 1, \"paths\": "
                                     "[]},") -
                  1);
}

TEST_F(DefaultRoutes, FilesThatSayOtherThanTheyHoldAreRefused)
{
    const std::string route(ROUTE_BYTES, '\0');
    EXPECT_EQ(shown(""), "out: has 0 bytes, less than the count of routes at its beginning; write "
                         "it again");
    EXPECT_EQ(shown(word(2) + route), "out: says 2 routes, which are 11804 bytes, but has 5904: it "
                                      "is cut off, or no file of default routes; write it again");
    EXPECT_EQ(shown(word(0xffffffff)),
              "out: says 4294967295 routes, which are 25340307040504 bytes, but has 4: it is cut "
              "off, or no file of default routes; write it again");
    EXPECT_EQ(shown(word(1) + route + "x"),
              "out: says 1 routes, which are 5904 bytes, but has 5905: something stands behind the "
              "last route, or it is no file of default routes; write it again");
    EXPECT_EQ(shown(word(0x01000000) + route), "out: its numbers have the byte order of another "
                                               "machine; write it on one like this");
    EXPECT_EQ(shown(word(1) + word(0) + word(1) + word(65) + route.substr(12)),
              "out: route 1 says 65 paths and has room for 64; write it again");
    EXPECT_EQ(shown(word(1025) + std::string(1025 * ROUTE_BYTES, '\0')),
              "out: has 1025 routes, at most 1024 are read");
    EXPECT_EQ(run({.read = file("nowhere")}), "nowhere: cannot be read: No such file or directory");
    EXPECT_EQ(run({.read = folder.path}),
              folder.path.string() + ": cannot be read: Is a directory");
}

TEST_F(DefaultRoutes, AFileIsPutInPlaceWholeForItsOwner)
{
    put("routes.json", "[]");
    put("out", "what was there");
    fs::permissions(file("out"), fs::perms::all);
    lab::commands::DefaultRoutesOptions options = {.routes = file("routes.json"),
                                                   .out = file("out")};
    EXPECT_EQ(run(options), "out: is there already; --force replaces it");
    EXPECT_EQ(bytes_of(file("out")), "what was there");
    options.force = true;
    EXPECT_EQ(run(options), "out: 0 routes, 0 paths, 4 bytes\n");
    EXPECT_EQ(bytes_of(file("out")), std::string(4, '\0'));
    EXPECT_EQ(fs::status(file("out")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), {}), 2);
}

TEST_F(DefaultRoutes, WhatIsNoRegularFileIsLeftAlone)
{
    put("routes.json", "[]");
    fs::create_directory(file("folder"));
    fs::create_symlink("folder", file("link"));
    const auto forced = [this](const std::string &name) {
        return run({.routes = file("routes.json"), .out = file(name), .force = true});
    };
    EXPECT_EQ(forced("folder"), "folder: is a folder; name a file");
    EXPECT_EQ(forced("folder/"), "folder/: is a folder; name a file");
    EXPECT_EQ(forced("link"), "link: is no regular file, and is left alone; name a file");
    EXPECT_EQ(forced("routes.json"), "routes.json: is what was read; name another file for the "
                                     "routes");
    EXPECT_EQ(forced("none/out"), "none/out: cannot be written: No such file or directory");
    EXPECT_EQ(forced(std::string(300, 'x')).substr(300), ": cannot be written: File name too long");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), {}), 3);
    EXPECT_EQ(bytes_of(file("routes.json")), "[]");
}

TEST(DefaultRoutesCommandLine, ExitCodes)
{
    const auto code = [](std::vector<const char *> arguments) {
        arguments.insert(arguments.begin(), {"rtif", "default-routes"});
        std::ostringstream out;
        std::ostringstream err;
        const int code =
            lab::commands::run(static_cast<int>(arguments.size()), arguments.data(), {out, err});
        EXPECT_EQ(code == 0, err.str().empty()) << err.str();
        return code;
    };
    const lab_test::RoutesRun files;
    files.put("routes.json", "[]");
    const std::string routes = files.file("routes.json");
    const std::string out = files.file("out");
    EXPECT_EQ(code({routes.c_str(), out.c_str()}), 0);
    EXPECT_EQ(code({routes.c_str(), out.c_str()}), 1);
    EXPECT_EQ(code({routes.c_str(), out.c_str(), "--force"}), 0);
    EXPECT_EQ(code({"--read", out.c_str(), "--json"}), 0);
    EXPECT_EQ(code({"--read", out.c_str(), "--config", "/nowhere"}), 1);
    for (const std::vector<const char *> &wrong :
         std::vector<std::vector<const char *>>{{},
                                                {"a"},
                                                {"--read"},
                                                {"--read", "a", "b"},
                                                {"--read", "a", "--force"},
                                                {"a", "b", "--json"},
                                                {"a", "b", "c"},
                                                {"", ""}}) {
        EXPECT_EQ(code(wrong), 2);
    }
}
