/*
 * dump_l3lif_test.cpp: the dump of an interface: the virtual MACs of a routed
 * port, line by line, to a command or to the trace.
 *
 * dump_bitmap_test.cpp has the dump of the interface numbers.
 */
#include "support/fhrp_roads.h"

#include <fmt/format.h>

#include <string>

namespace rtifhal_test::dump_l3lif
{

namespace
{

using namespace fhrp_road;

const std::string DUMP = "rtifhal_trident_dump_l3lif";
const std::string LINE = "Eth1/5:pd: vlan=4094 fhrp_mac=02:11:5e:33:01:08\n";
/** What stands behind the prefix in that line. */
const std::string TAIL = LINE.substr(6);

const std::string FIRST_ENTRY = "avl_get_first(tree) = record";
const std::string NEXT_ENTRY = "avl_get_next(tree, node) = record";
const std::string NO_MORE = "avl_get_next(tree, node) = null";

Message port_found(int port = PORT)
{
    return trace(DUMP, fmt::format("bcm_port: {}\n", port));
}

Message line(const std::string &text)
{
    return trace(DUMP, text);
}

class DumpInterface : public FhrpTest
{
protected:
    static int dump(Lif &lif, void *command = nullptr, const std::string &prefix = "Eth1/5")
    {
        return rtifhal_trident_dump_l3lif(command, prefix.c_str(), lif.get());
    }

    /** The lines that a command of its own gets. */
    std::vector<std::string> dumped(Lif &lif, const std::string &prefix = "Eth1/5")
    {
        auto &output = sw.command_outputs.open();
        EXPECT_EQ(dump(lif, &output, prefix), 0);
        return output.lines();
    }

    /** No port: the look-up ends it, whatever is kept for the interface. */
    void expect_no_port(Lif &lif)
    {
        saved(lif, VMAC, ROUTED, 1);
        auto &output = sw.command_outputs.open();
        EXPECT_EQ(dump(lif, &output), -1);
        expect_messages({report(DUMP, fmt::format("unable to get intf({})\n", lif.decimal()))});
        EXPECT_EQ(sw.journal.count("avl_get_first"), 0U);
        EXPECT_TRUE(output.lines().empty());
    }

    Lif &lif = known_port();
};

} // namespace

TEST_F(DumpInterface, WithoutAnyVirtualMacOnlyThePortIsSaid)
{
    EXPECT_EQ(dump(lif), 0);
    expect_calls(port_asked(lif));
    expect_messages({port_found()});
}

TEST_F(DumpInterface, OfAnEmptyTreeOnlyThePortIsSaid)
{
    added(lif);
    ASSERT_EQ(del(lif), 0);
    ASSERT_NE(fhrp_mac_hash, nullptr);
    start();
    EXPECT_EQ(dumped(lif), Calls{});
    expect_messages({port_found()});
}

TEST_F(DumpInterface, LineGoesToTheTraceWithoutACommand)
{
    added(lif);
    EXPECT_EQ(dump(lif), 0);
    expect_calls(join({port_asked(lif), Calls{FIRST_ENTRY, NO_MORE}}));
    expect_messages({port_found(), line(LINE)});
}

TEST_F(DumpInterface, LineGoesToTheCommandAlone)
{
    added(lif);
    auto &output = sw.command_outputs.open();
    EXPECT_EQ(dump(lif, &output), 0);
    expect_calls(join({port_asked(lif), Calls{FIRST_ENTRY,
                                              R"(cmd_prt(command, "Eth1/5:pd: vlan=4094 )"
                                              R"(fhrp_mac=02:11:5e:33:01:08\n", 0) = 0)",
                                              NO_MORE}}));
    expect_messages({port_found()});
    EXPECT_EQ(output.text(), LINE);
}

TEST_F(DumpInterface, EntriesComeByVlanAndThenByMac)
{
    saved(lif, OTHER, ROUTED, 1);
    saved(lif, VMAC, ROUTED, 2);
    saved(lif, OTHER, 7, 3);
    saved(lif, MULTICAST, 0, 4);
    saved(lif, VMAC, 65535, 5);
    EXPECT_EQ(dumped(lif), (Calls{
                               "Eth1/5:pd: vlan=0 fhrp_mac=33:33:12:34:56:08\n",
                               "Eth1/5:pd: vlan=7 fhrp_mac=02:11:5e:33:01:09\n",
                               LINE,
                               "Eth1/5:pd: vlan=4094 fhrp_mac=02:11:5e:33:01:09\n",
                               "Eth1/5:pd: vlan=65535 fhrp_mac=02:11:5e:33:01:08\n",
                           }));
}

TEST_F(DumpInterface, EntriesOfOtherInterfacesArePassedOver)
{
    auto &before = known_port(PORT - 1);
    auto &after = known_port(PORT + 1);
    for (const Lif *owner : {&before, &lif, &after}) {
        saved(*owner, VMAC, ROUTED, 1);
    }
    EXPECT_EQ(dump(lif), 0);
    expect_calls(join({port_asked(lif), Calls{FIRST_ENTRY, NEXT_ENTRY, NEXT_ENTRY, NO_MORE}}));
    expect_messages({port_found(), line(LINE)});
}

TEST_F(DumpInterface, InterfaceWithoutEntriesPrintsNothing)
{
    auto &other = known_port(PORT + 1);
    saved(other, VMAC, ROUTED, 1);
    EXPECT_EQ(dumped(lif), Calls{});
    expect_calls(join({port_asked(lif), Calls{FIRST_ENTRY, NO_MORE}}));
    expect_messages({port_found()});
}

TEST_F(DumpInterface, SubinterfaceOfAPortHasEntriesOfItsOwn)
{
    const auto sub = subinterface(lif, 10);
    saved(lif, OTHER, ROUTED, 1);
    saved(*sub, VMAC, ROUTED, 2);
    EXPECT_EQ(dumped(*sub), Calls{LINE});
    expect_messages({port_found()});
}

TEST_F(DumpInterface, AllSixBytesOfTheMacAreTwoDigits)
{
    saved(lif, {{0xff, 0x00, 0x0a, 0xb0, 0xcd, 0xef}}, ROUTED, 1);
    EXPECT_EQ(dumped(lif), Calls{"Eth1/5:pd: vlan=4094 fhrp_mac=ff:00:0a:b0:cd:ef\n"});
}

TEST_F(DumpInterface, NothingThatIsKeptChanges)
{
    added(lif);
    const auto before = kept();
    const auto in_chip_before = stations();
    dump(lif);
    EXPECT_EQ(kept(), before);
    EXPECT_EQ(stations(), in_chip_before);
}

TEST_F(DumpInterface, LineOf255CharactersIsWholeAndALongerOneIsCut)
{
    added(lif);
    const std::string fits(255 - TAIL.size(), 'x');
    EXPECT_EQ(dumped(lif, fits), Calls{fits + TAIL});
    EXPECT_EQ(dumped(lif, fits + "y"),
              Calls{fits + "y" + TAIL.substr(0, TAIL.size() - 1)}); // its line end is lost
    const std::string endless(1000, 'z');
    EXPECT_EQ(dumped(lif, endless), Calls{endless.substr(0, 255)});
}

TEST_F(DumpInterface, LineIsCutInTheTraceToo)
{
    added(lif);
    EXPECT_EQ(dump(lif, nullptr, std::string(1000, 'z')), 0);
    expect_messages({port_found(), line(std::string(255, 'z'))});
}

TEST_F(DumpInterface, ShortLineAfterALongOneHasNothingOfIt)
{
    added(lif);
    dumped(lif, std::string(1000, 'z'));
    EXPECT_EQ(dumped(lif), Calls{LINE});
    EXPECT_EQ(dumped(lif, ""), Calls{TAIL});
}

TEST_F(DumpInterface, PercentSignsOfThePrefixAreNoFormat)
{
    const std::string prefix = "100%d %s%n%%";
    added(lif);
    EXPECT_EQ(dumped(lif, prefix), Calls{prefix + TAIL});
    start();
    EXPECT_EQ(dump(lif, nullptr, prefix), 0);
    expect_messages({port_found(), line(prefix + TAIL)});
}

TEST_F(DumpInterface, MissingPrefixIsSurvived)
{
    added(lif);
    auto &output = sw.command_outputs.open();
    EXPECT_EQ(rtifhal_trident_dump_l3lif(&output, nullptr, lif.get()), 0);
    ASSERT_EQ(output.lines().size(), 1U);
    EXPECT_TRUE(output.lines().front().ends_with(TAIL)) << output.lines().front();
}

TEST_F(DumpInterface, CommandThatIsGoneDoesNotStopTheDump)
{
    saved(lif, VMAC, ROUTED, 1);
    saved(lif, OTHER, ROUTED, 2);
    auto &output = sw.command_outputs.open();
    void *const handle = &output;
    sw.command_outputs.close(handle);
    EXPECT_EQ(dump(lif, handle), 0);
    EXPECT_EQ(sw.journal.count("cmd_prt"), 2U);
    expect_messages({port_found()});
}

TEST_F(DumpInterface, NullInterfaceIsReported)
{
    auto &output = sw.command_outputs.open();
    EXPECT_EQ(rtifhal_trident_dump_l3lif(&output, "Eth1/5", nullptr), -1);
    expect_calls({});
    expect_messages({report(DUMP, " Got l3lif as null")});
}

TEST_F(DumpInterface, SviWithAVirtualMacNeverGetsPastThePort)
{
    auto &vlan = known_svi();
    added(vlan);
    EXPECT_EQ(dump(vlan), -1);
    expect_calls({called::type(vlan, 9)});
    expect_messages({report(DUMP, "unable to get intf(805306468)\n")});
}

TEST_F(DumpInterface, PrimarySviWithStationsOfItsSecondariesNeverGetsPastThePort)
{
    Lif &vlan = primary_svi({200});
    added(vlan);
    ASSERT_EQ(kept(), (Calls{entry(vlan, 100, 2), entry(vlan, 200, 1)}));
    auto &output = sw.command_outputs.open();
    EXPECT_EQ(dump(vlan, &output), -1);
    EXPECT_TRUE(output.lines().empty());
}

TEST_F(DumpInterface, PortChannelNeverGetsPastThePort)
{
    auto &channel = known(port_channel(7));
    expect_no_port(channel);
}

TEST_F(DumpInterface, InterfaceThatCantBeReadIsReportedWithItsSign)
{
    Lif unreadable(0x80000001);
    expect_no_port(unreadable);
    EXPECT_EQ(reports().front().text, "unable to get intf(-2147483647)\n");
}

TEST_F(DumpInterface, PortThatCantBeReadEndsIt)
{
    fail("if_index_get_port", 1);
    expect_no_port(lif);
}

} // namespace rtifhal_test::dump_l3lif
