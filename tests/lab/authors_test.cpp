/*
 * authors_test.cpp: after a configuration was brought up, each entry of the chip
 * is known by the requests that put it there.
 */
#include "session_run.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

namespace lab_test
{

namespace
{

using testing::ElementsAre;

/** kinds.json up, its authors known. */
class AuthorsTest : public SessionTest
{
protected:
    AuthorsTest()
    {
        hardware.chip.track_authors();
        up();
    }

    std::vector<std::string> of(std::string_view table, int id) const
    {
        return hardware.chip.authors.of(table, std::to_string(id));
    }
    /** "3: add Ethernet0" for each entry of a table. */
    template <class Table>
    std::vector<std::string> lines(std::string_view table, const Table &entries) const
    {
        std::vector<std::string> out;
        for (const auto &[id, entry] : entries.all()) {
            const std::vector<std::string> names = of(table, id);
            out.push_back(fmt::format("{}: {}", id, fmt::join(names, ", ")));
        }
        return out;
    }
};

} // namespace

TEST_F(AuthorsTest, TheVlanOfRoutedPortsIsTheInterfacesAndMembers)
{
    EXPECT_THAT(of("vlan", 4094),
                ElementsAre("add Ethernet0", "add Ethernet4", "add Ethernet8 to PortChannel0001",
                            "add Ethernet12 to PortChannel0001"));
    EXPECT_THAT(of("vlan", 100), ElementsAre("set up Vlan100", "add Vlan100"));
}

TEST_F(AuthorsTest, EachEntryIsItsInterfaces)
{
    EXPECT_THAT(lines("l3_ingress", hardware.chip.l3_ingresses),
                ElementsAre("3: add Ethernet0", "4: add Ethernet4",
                            "5: add Ethernet8 to PortChannel0001, "
                            "add Ethernet12 to PortChannel0001",
                            "6: add Vlan100", "7: add Ethernet4.10", "8: add PortChannel0001.20",
                            "9: add MuxTunnel0"));
    EXPECT_THAT(lines("port", hardware.chip.ports),
                ElementsAre("0: add router MAC 02:00:00:00:0a:01", "1: add Ethernet0",
                            "2: add Ethernet4, add Ethernet4.10",
                            "3: add Ethernet8 to PortChannel0001, add PortChannel0001.20",
                            "4: add Ethernet12 to PortChannel0001, add PortChannel0001.20",
                            "5: set up Vlan100", "6: set up Vlan101"));
    EXPECT_THAT(lines("station", hardware.chip.stations),
                ElementsAre("1: add router MAC 02:00:00:00:0a:01"));
}

TEST_F(AuthorsTest, ATranslationIsItsSubinterfaces)
{
    std::vector<std::string> seen;
    for (const auto &[key, action] : hardware.chip.vlan_translations.all()) {
        for (const std::string &name : hardware.chip.authors.of("vlan_translation", text(key))) {
            seen.push_back(fmt::format("{}: {}", key.outer_vlan, name));
        }
    }
    EXPECT_THAT(
        seen, testing::UnorderedElementsAre("10: add Ethernet4.10", "20: add PortChannel0001.20"));
}

TEST_F(AuthorsTest, APropertyAddsItsRequestAndADeleteEndsTheEntry)
{
    run_all({"set Ethernet0 mtu 1400"});
    EXPECT_THAT(of("l3_interface", 3), ElementsAre("add Ethernet0", "set Ethernet0 mtu 1400"));
    run_all({"del Ethernet0"});
    EXPECT_THAT(of("l3_interface", 3), ElementsAre());
    run_all({"add Ethernet0"});
    const int number = hardware.chip.ports.control(1, simswitch::chip::PORT_CONTROL_INGRESS);
    EXPECT_THAT(of("l3_interface", number), ElementsAre("add Ethernet0"));
    // A port is never taken out: what it was is still told.
    EXPECT_THAT(of("port", 1),
                ElementsAre("add Ethernet0", "set Ethernet0 mtu 1400", "delete Ethernet0"));
}

} // namespace lab_test
