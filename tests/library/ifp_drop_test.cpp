/*
 * ifp_drop_test.cpp: the rule that drops what isn't L3-routable: how the first
 * port makes it, how later ones join it, and what a new process finds.
 *
 * ifp_drop_failure_test.cpp has the steps that the chip may refuse.
 */
#include "support/drop_rule.h"

#include "rtifhal_kelvo_trident/field/ifp_drop.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace rtifhal_test::ifp_drop
{

namespace
{

using namespace drop_rule;

class DropRule : public DropRuleTest
{
};

class DropRuleOnTrident2 : public DropRuleTest
{
protected:
    DropRuleOnTrident2() : DropRuleTest({.chip = Kind::trident2}) {}
};

/** Processes that follow each other on one chip. */
class DropRuleOfTheLastProcess : public ::testing::Test
{
protected:
    DropRuleOfTheLastProcess()
    {
        reset_library();
        std::string name = (std::filesystem::temp_directory_path() / "drop-rule-XXXXXX").string();
        folder = mkdtemp(name.data()) != nullptr ? name : std::string();
    }
    ~DropRuleOfTheLastProcess() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    DropRuleOfTheLastProcess(const DropRuleOfTheLastProcess &) = delete;
    DropRuleOfTheLastProcess &operator=(const DropRuleOfTheLastProcess &) = delete;

    /** A process makes the rule for a port and is killed. */
    void made_by_another_process(int port) const
    {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const simswitch::Switch sw({.state_dir = folder});
            if (rtifhal_install_ifp_drop(0, port) == 0) {
                (void)raise(SIGKILL);
            }
            _exit(1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the rule to start from was not made";
    }

    std::filesystem::path folder;
};

} // namespace

TEST_F(DropRule, FirstPortMakesGroupEntryAndAction)
{
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), 0);
    expect_calls({
        "fwmpd_trident_batch_flush() = 0",
        "bcm_field_group_create_id(0, qualifiers {13 82}, 0, 11) = 0",
        "bcm_field_entry_create(0, 11) = 0 [entry=8192]",
        "bcm_field_qualify_L3Routable(0, 8192, 0, 1) = 0",
        "bcm_field_action_add(0, 8192, 39, 0x0, 0x0) = 0",
        "bcm_field_qualify_InPorts(0, 8192, {5}, {5}) = 0",
        "bcm_field_entry_install(0, 8192) = 0",
    });
    expect_messages({});
}

TEST_F(DropRule, StandsInTheChipAfterTheFirstPort)
{
    rtifhal_install_ifp_drop(0, 5);
    EXPECT_EQ(simswitch::chip::text(*sw.chip.field_groups.find(GROUP)),
              "priority 0 qualifiers 13 82");
    EXPECT_EQ(rule(),
              "group 11 installed (in-ports {5}/{5} l3-routable 0 action 39) copy the same");
}

TEST_F(DropRule, IsMarkedAsMadeByOneWhateverPortsJoin)
{
    EXPECT_EQ(ifp_drop_installed, 0U);
    for (const int port : {5, 6}) {
        rtifhal_install_ifp_drop(0, port);
        EXPECT_EQ(ifp_drop_installed, 1U) << port;
    }
}

TEST_F(DropRuleOnTrident2, FirstPortMakesTheSameRule)
{
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), 0);
    expect_calls(join({made(), rewritten("{5}", "{5}")}));
    EXPECT_EQ(rule(),
              "group 11 installed (in-ports {5}/{5} l3-routable 0 action 39) copy the same");
}

TEST_F(DropRule, LaterPortJoinsTheDataAloneAndMakesNoGroupOrEntry)
{
    stands_for({5});
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    expect_calls({
        "fwmpd_trident_batch_flush() = 0",
        "bcm_field_qualify_InPorts_get(0, 8192) = 0 [data={5} mask={5}]",
        "bcm_field_qualify_InPorts(0, 8192, {5,6}, {5}) = 0",
        "bcm_field_entry_install(0, 8192) = 0",
    });
    expect_messages({});
    EXPECT_EQ(rule(),
              "group 11 installed (in-ports {5,6}/{5} l3-routable 0 action 39) copy the same");
}

TEST_F(DropRule, MaskHoldsTheFirstPortHoweverManyFollow)
{
    stands_for({5});
    for (const int port : {9, 1, 255, 0}) {
        EXPECT_EQ(rtifhal_install_ifp_drop(0, port), 0);
    }
    EXPECT_EQ(in_ports().data.text(), "{0,1,5,9,255}");
    EXPECT_EQ(in_ports().mask.text(), "{5}");
    EXPECT_EQ(sw.chip.field_entries.all().count(ENTRY + 1), 0U);
}

TEST_F(DropRule, FirstPortAgainIsWrittenAgain)
{
    stands_for({5});
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), 0);
    expect_calls(join({read("{5}", "{5}"), rewritten("{5}", "{5}")}));
}

TEST_F(DropRule, LaterPortAgainIsWrittenAgain)
{
    stands_for({5, 6});
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    expect_calls(join({read("{5,6}", "{5}"), rewritten("{5,6}", "{5}")}));
}

TEST_F(DropRule, PortsThatThePlatformPutIntoTheMaskStay)
{
    stands_for({5});
    sw.chip.field_entries.set_in_ports(ENTRY, {{5, 7}, {1, 5, 7}});
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    expect_calls(join({read("{5,7}", "{1,5,7}"), rewritten("{5-7}", "{1,5,7}")}));
}

TEST_F(DropRule, PortsAtTheEdgesOfAWord)
{
    for (const int port : {0, 31, 32, 63, 64, 255}) {
        reset_library();
        sw.chip.field_groups.remove(GROUP);
        sw.chip.field_entries.remove(ENTRY);
        EXPECT_EQ(rtifhal_install_ifp_drop(0, port), 0) << port;
        const auto wanted = fmt::format("{{{}}}", port);
        EXPECT_EQ(in_ports().data.text(), wanted);
        EXPECT_EQ(in_ports().mask.text(), wanted);
    }
}

TEST_F(DropRule, PortThatNoSetHasRoomForHasNoPlaceInTheRule)
{
    for (const int port : {256, -1, 300}) {
        reset_library();
        sw.chip.field_groups.remove(GROUP);
        sw.chip.field_entries.remove(ENTRY);
        start();
        EXPECT_EQ(rtifhal_install_ifp_drop(0, port), 0) << port;
        expect_calls(join({made(), rewritten("{}", "{}")}));
    }
    start();
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 256), 0);
    expect_calls(join({read("{}", "{}"), rewritten("{}", "{}")}));
}

TEST_F(DropRule, UnitIsTheCallersInEveryFieldCall)
{
    for (const char *function : FIELD_CALLS) {
        sw.journal.arm({.function = function, .code = 0, .forever = true});
    }
    EXPECT_EQ(rtifhal_install_ifp_drop(3, 5), 0);
    EXPECT_EQ(rtifhal_install_ifp_drop(4, 6), 0);
    EXPECT_EQ(sw.journal.count("rtifhal_get_bcm_unit"), 0U);
    expect_calls({
        "fwmpd_trident_batch_flush() = 0",
        "bcm_field_group_create_id(3, qualifiers {13 82}, 0, 11) = 0",
        "bcm_field_entry_create(3, 11) = 0",
        "bcm_field_qualify_L3Routable(3, 0, 0, 1) = 0",
        "bcm_field_action_add(3, 0, 39, 0x0, 0x0) = 0",
        "bcm_field_qualify_InPorts(3, 0, {5}, {5}) = 0",
        "bcm_field_entry_install(3, 0) = 0",
        "fwmpd_trident_batch_flush() = 0",
        "bcm_field_qualify_InPorts_get(4, 0) = 0",
        "bcm_field_qualify_InPorts(4, 0, {6}, {}) = 0",
        "bcm_field_entry_install(4, 0) = 0",
    });
}

TEST_F(DropRule, WhatWaitsInTheQueueIsWrittenFirst)
{
    sw.wrappers.set_port_control(5, 8, 1);
    fail("bcm_field_group_create_id", -1);
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), -1);
    EXPECT_EQ(sw.chip.ports.control(5, 8), 1);
}

TEST_F(DropRule, FlushIsNotLookedAt)
{
    fail("fwmpd_trident_batch_flush", -1);
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), 0);
    EXPECT_EQ(in_ports().data.text(), "{5}");
}

TEST_F(DropRule, RemovalDoesNothing)
{
    stands_for({5, 6});
    EXPECT_EQ(rtifhal_rm_ifp_drop(0, 6), 0);
    EXPECT_EQ(rtifhal_rm_ifp_drop(9, -1), 0);
    expect_calls({});
    expect_messages({});
    EXPECT_EQ(in_ports().data.text(), "{5,6}");
}

TEST_F(DropRule, RemovalBeforeAnyPortDoesNothing)
{
    EXPECT_EQ(rtifhal_rm_ifp_drop(0, 5), 0);
    expect_calls({});
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), 0);
    EXPECT_EQ(calls(), join({made(), rewritten("{5}", "{5}")}));
}

TEST_F(DropRuleOfTheLastProcess, KeepsTheGroupSoThatTheNextProcessIsRefused)
{
    made_by_another_process(5);
    const simswitch::Switch sw({.state_dir = folder});
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), -1);
    EXPECT_EQ(sw.journal.calls(),
              (Calls{"fwmpd_trident_batch_flush() = 0",
                     "bcm_field_group_create_id(0, qualifiers {13 82}, 0, 11) = -8"}));
    ASSERT_EQ(sw.trace.messages().size(), 1U);
    EXPECT_EQ(sw.trace.messages().front().level, 102);
    EXPECT_EQ(sw.trace.messages().front().function, "rtifhal_install_ifp_drop");
    EXPECT_EQ(sw.trace.messages().front().text,
              fmt::format("group_create(6) failed: {}\n", _shr_errmsg[8]));
    EXPECT_EQ(simswitch::chip::text(*sw.chip.field_entries.find(ENTRY)),
              "group 11 installed (in-ports {5}/{5} l3-routable 0 action 39) copy the same");
}

TEST_F(DropRuleOfTheLastProcess, IsGoneAfterAPowerCycleSoThatItIsMadeAnew)
{
    made_by_another_process(5);
    simswitch::Switch sw({.state_dir = folder});
    sw.power_cycle();
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    EXPECT_EQ(sw.chip.field_entries.find(ENTRY)->installed->in_ports->data.text(), "{6}");
}

TEST(MemoryFill, FillsThatManyBytesAndGivesTheMemoryBack)
{
    std::array<unsigned char, 8> memory{};
    memory.fill(0x55);
    EXPECT_EQ(sal_memset(memory.data() + 1, 0xa7, 6), memory.data() + 1);
    EXPECT_EQ(memory,
              (std::array<unsigned char, 8>{0x55, 0xa7, 0xa7, 0xa7, 0xa7, 0xa7, 0xa7, 0x55}));
}

TEST(MemoryFill, TakesTheLowEightBits)
{
    std::array<unsigned char, 2> memory{};
    sal_memset(memory.data(), 0x1ff, 1);
    EXPECT_EQ(memory, (std::array<unsigned char, 2>{0xff, 0}));
    sal_memset(memory.data(), -2, 2);
    EXPECT_EQ(memory, (std::array<unsigned char, 2>{0xfe, 0xfe}));
}

TEST(MemoryFill, OfNoBytesWritesNothing)
{
    unsigned char byte = 0x55;
    EXPECT_EQ(sal_memset(&byte, 0, 0), &byte);
    EXPECT_EQ(byte, 0x55);
    EXPECT_EQ(sal_memset(nullptr, 0, 0), nullptr);
}

} // namespace rtifhal_test::ifp_drop
