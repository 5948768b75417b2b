/*
 * default_routes_restart_test.cpp: a fast restart brings the default routes of
 * the file that `rtif default-routes` wrote into the chip.
 */
#include "default_routes_run.h"
#include "support/private_pss.h"

#include "chip/routes.h"
#include "services/ifindex.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace
{

namespace chip = simswitch::chip;
using lab_test::bytes_of;
using lab_test::source_path;

constexpr std::array<std::uint8_t, 16> NOTHING = {};

chip::RouteKey default_route(int vrf, bool ip6)
{
    return ip6 ? chip::ip6_key(vrf, std::span(NOTHING), std::span(NOTHING))
               : chip::ip4_key(vrf, 0, 0);
}

/** A configuration of routed ports Ethernet0 and up. */
std::string ports(unsigned count)
{
    std::vector<std::string> names;
    for (unsigned i = 0; i < count; ++i) {
        names.push_back(fmt::format("\"Ethernet{}\": {{}}", i));
    }
    const std::string rows = fmt::format("{}", fmt::join(names, ", "));
    return fmt::format(R"({{"PORT": {{{0}}}, "INTERFACE": {{{0}}}}})", rows);
}

/** A route over the first ports. */
std::string route(const std::string &family, unsigned count)
{
    std::vector<std::string> paths;
    for (unsigned i = 1; i <= count; ++i) {
        paths.push_back(fmt::format(
            R"({{"interface": "Ethernet1/{0}", "mac": "02:00:00:00:01:0{0}", "encap": 7}})", i));
    }
    return fmt::format(R"({{"family": "{}", "paths": [{}]}})", family, fmt::join(paths, ", "));
}

/** A fast restart with a file in place. */
class FastRestart : public lab_test::UpTest
{
protected:
    void SetUp() override
    {
        if (!pss.obstacle().empty()) {
            GTEST_SKIP() << pss.obstacle();
        }
        hardware.system.fast_restart = true;
    }

    static std::string place() { return rtifhal_test::PrivatePss::folder() / "default_route.txt"; }

    /** Puts the file in place, as a user does. */
    void save(const std::string &routes, const std::string &config = "") const
    {
        files.put("routes.json", routes);
        const std::string told =
            files.run({.routes = files.file("routes.json"), .out = place(), .config = config});
        EXPECT_EQ(told.substr(0, place().size() + 2), place() + ": ");
        ASSERT_TRUE(std::filesystem::exists(place())) << told;
    }

    /** The next hops of a route: those of its group, or the one. Empty when there is no route. */
    std::vector<chip::Egress> next_hops(int vrf, bool ip6) const
    {
        const chip::Route *found = hardware.chip.routes.find(default_route(vrf, ip6));
        if (found == nullptr) {
            return {};
        }
        std::vector<int> ids = {found->next_hop};
        if (found->multipath) {
            ids = hardware.chip.multipath_groups.find(found->next_hop)->members;
        }
        std::vector<chip::Egress> hops;
        std::transform(ids.begin(), ids.end(), std::back_inserter(hops),
                       [this](int id) { return *hardware.chip.egresses.find(id); });
        return hops;
    }

    rtifhal_test::PrivatePss pss;
    lab_test::RoutesRun files;
    simswitch::Switch hardware;
};

class FastRestartPaths : public FastRestart, public ::testing::WithParamInterface<unsigned>
{
};

INSTANTIATE_TEST_SUITE_P(Paths, FastRestartPaths, ::testing::Values(2U, 3U, 8U));

} // namespace

TEST_P(FastRestartPaths, DefaultRoutesOfBothFamiliesAreInTheChip)
{
    const unsigned count = GetParam();
    save(fmt::format("[{}, {}]", route("ipv4", count), route("ipv6", count)));
    EXPECT_EQ(run_json(hardware, ports(count)), 0) << text;
    EXPECT_FALSE(std::filesystem::exists(place()));
    EXPECT_EQ(hardware.chip.routes.size(), 2U);
    EXPECT_EQ(hardware.chip.multipath_groups.size(), 2U);
    EXPECT_EQ(hardware.chip.egresses.size(), 2 * count) << "replaced ones are gone";
    for (const bool ip6 : {false, true}) {
        const auto hops = next_hops(1, ip6);
        ASSERT_EQ(hops.size(), count);
        for (unsigned i = 0; i < count; ++i) {
            EXPECT_EQ(chip::text(hops[i]),
                      fmt::format("interface {} mac 02:00:00:00:01:0{} vlan 0 module 0 port {} "
                                  "trunk 0 encap 7 flags 0x100",
                                  object["interfaces"][i]["iif"].get<int>(), i + 1, i + 1));
        }
    }
}

TEST_P(FastRestartPaths, RouteWaitsForThreeQuartersOfItsPaths)
{
    const unsigned count = GetParam();
    const unsigned enough = 3 * count / 4;
    save(fmt::format("[{}]", route("ipv4", count)));
    EXPECT_EQ(run_json(hardware, ports(enough)), 0) << text;
    EXPECT_EQ(next_hops(1, false).size(), enough);

    rtifhal_test::reset_library();
    simswitch::Switch fewer;
    fewer.system.fast_restart = true;
    save(fmt::format("[{}]", route("ipv4", count)));
    EXPECT_EQ(run_json(fewer, ports(enough - 1)), 0) << text;
    EXPECT_EQ(fewer.chip.routes.size(), 0U);
    // Without any interface nobody has looked for it.
    EXPECT_EQ(std::filesystem::exists(place()), enough == 1);
}

TEST_F(FastRestart, RouteOfOnePathNeedsNoGroup)
{
    save("[" + route("ipv6", 1) + "]");
    EXPECT_EQ(run_json(hardware, ports(2)), 0) << text;
    EXPECT_EQ(next_hops(1, true).size(), 1U);
    EXPECT_EQ(hardware.chip.multipath_groups.size(), 0U);
    EXPECT_TRUE(next_hops(1, false).empty());
}

TEST_F(FastRestart, PortChannelTakesPartInARouteThatAnotherInterfaceBringsUp)
{
    const std::string config = R"({"PORT": {"Ethernet0": {}, "Ethernet1": {}},
        "PORTCHANNEL_MEMBER": {"PortChannel7|Ethernet0": {}}, "PORTCHANNEL_INTERFACE": {"PortChannel7": {}},
        "VLAN": {"Vlan10": {}}, "VLAN_MEMBER": {"Vlan10|Ethernet1": {}}, "VLAN_INTERFACE": {"Vlan10": {}}})";
    const std::string channel =
        R"({"interface": "port-channel7", "mac": "02:00:00:00:00:07", "trunk": 1})";
    save(R"([{"family": "ipv4", "paths": [)" + channel + R"(]}, {"family": "ipv6", "paths": [)" +
         channel + R"(, {"interface": "Vlan10", "mac": "02:00:00:00:00:08", "port": 2}]}])");
    EXPECT_EQ(run_json(hardware, config), 0) << text;
    EXPECT_TRUE(next_hops(1, false).empty());
    const auto hops = next_hops(1, true);
    ASSERT_EQ(hops.size(), 2U);
    EXPECT_EQ(hops[0].trunk, 1);
    EXPECT_EQ(hops[0].interface, object["interfaces"][0]["iif"]);
    EXPECT_EQ(hops[1].interface, object["interfaces"][1]["iif"]);
}

TEST_F(FastRestart, FileStaysOnAnOrdinaryStart)
{
    hardware.system.fast_restart = false;
    save("[" + route("ipv4", 2) + "]");
    const std::string bytes = bytes_of(place());
    EXPECT_EQ(run_json(hardware, ports(2)), 0) << text;
    EXPECT_EQ(bytes_of(place()), bytes);
    EXPECT_EQ(hardware.chip.routes.size(), 0U);
}

TEST_F(FastRestart, ExampleBringsItsRoutesBack)
{
    const std::string leaf = source_path("examples/leaf.json");
    save(bytes_of(source_path("examples/default-routes.json")), leaf);
    EXPECT_EQ(run_json(hardware, bytes_of(leaf)), 0) << text;
    EXPECT_EQ(next_hops(1, false).size(), 4U);
    EXPECT_EQ(next_hops(1, true).size(), 4U);
    const auto storage = next_hops(2, false);
    ASSERT_EQ(storage.size(), 1U);
    EXPECT_EQ(storage[0].port, 46);
    EXPECT_EQ(storage[0].vlan, 201);
    EXPECT_EQ(hardware.chip.routes.size(), 3U);
}

TEST_F(FastRestart, ExampleOfTheDocumentIsTaken)
{
    const std::string document = bytes_of(source_path("docs/restart.md"));
    const std::size_t start = document.find("```json\n") + 8;
    save(document.substr(start, document.find("```", start) - start));
    const std::string shown = files.run({.read = place()});
    EXPECT_EQ(shown.substr(0, shown.find('\n')), place() + ": 2 routes, 5 paths");
    EXPECT_EQ(run_json(hardware, ports(10)), 0) << text;
    EXPECT_TRUE(next_hops(1, false).empty()) << "its subinterface isn't there";
}

TEST_F(FastRestart, TableOfTheDocumentIsWhatIsShown)
{
    const std::string leaf = source_path("examples/leaf.json");
    const std::string told = files.run({.routes = source_path("examples/default-routes.json"),
                                        .out = files.file("default_route.txt"),
                                        .config = leaf});
    const std::string shown = files.run({.read = files.file("default_route.txt"), .config = leaf});
    const std::string document = bytes_of(source_path("docs/restart.md"));
    EXPECT_NE(document.find(told), std::string::npos) << told;
    const std::size_t third = shown.find("\n    1  ipv4      1     3");
    EXPECT_NE(document.find(shown.substr(0, third)), std::string::npos) << shown;
    EXPECT_NE(document.find(shown.substr(shown.find("\n    3  ipv4") + 1)), std::string::npos);
}
