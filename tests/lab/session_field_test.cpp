/*
 * session_field_test.cpp: the drop rule in a session, and the field processor
 * as it is shown. The library keeps the rule as long as its process lives, so
 * that each script is a process.
 */
#include "script_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace lab_test
{

namespace
{

using testing::HasSubstr;

using SessionField = ScriptTest;

TEST_P(SessionField, FirstPortMakesTheRule)
{
    expect_done("drop add Ethernet0\n"
                "expect code = 0\n"
                "expect call bcm_field_group_create_id\n"
                "expect call \"bcm_field_qualify_L3Routable(0, 8192, 0, 1) = 0\"\n"
                "expect field-group 11 priority = 0\n"
                "expect field-group 11 qualifiers = 13,82\n"
                "expect field-group 11 meaning = in-ports,L3-routable\n"
                "expect field-entry 8192 group = 11\n"
                "expect field-entry 8192 state = installed\n"
                "expect field-entry 8192 in-ports = 1\n"
                "expect field-entry 8192 in-mask = 1\n"
                "expect field-entry 8192 l3-routable = 0\n"
                "expect field-entry 8192 actions = drop\n"
                "expect field-entry 8192 copy = \"the same\"\n");
}

TEST_P(SessionField, LaterPortsAreInTheDataAlone)
{
    expect_done("drop add Ethernet4\n"
                "drop add Ethernet16\n"
                "expect no call bcm_field_group_create_id\n"
                "expect no call bcm_field_entry_create\n"
                "expect field-entry 8192 in-ports = 2,5\n"
                "expect field-entry 8192 in-mask = 2\n"
                "drop add Ethernet4\n"
                "expect call bcm_field_entry_install count = 1\n"
                "expect field-entry 8192 in-ports = 2,5\n"
                "expect field-entry 8192 in-mask = 2\n");
}

TEST_P(SessionField, APortNeverLeaves)
{
    const CommandRun done = run("drop add Ethernet0\n"
                                "drop del Ethernet0\n"
                                "expect code = 0\n"
                                "expect field-entry 8192 in-ports = 1\n");
    EXPECT_EQ(done.code, 0) << done.out;
    EXPECT_THAT(done.out,
                HasSubstr("done, 0 calls; no port leaves the drop rule, it stays as it is\n"));
}

TEST_P(SessionField, RuleIsShown)
{
    const CommandRun done = run("drop add Ethernet0\n"
                                "drop add Ethernet12\n"
                                "show field 11\n"
                                "show field 8192\n");
    EXPECT_THAT(
        done.out,
        HasSubstr("GROUP  STATE  PRIORITY  QUALIFIERS  MEANING\n"
                  "   11  on            0  13,82       in-ports,L3-routable\n"
                  "show field 8192\n"
                  "ENTRY  GROUP  STATE      IN-PORTS  IN-MASK  L3-ROUTABLE  ACTIONS  COPY\n"
                  " 8192     11  installed  1,4       1        0            drop     the same\n"));
}

TEST_P(SessionField, HalfBuiltGroupIsRefusedTheSecondTime)
{
    for (const std::string step :
         {"bcm_field_entry_create", "bcm_field_qualify_L3Routable", "bcm_field_action_add"}) {
        expect_done("fail " + step +
                    " -4\n"
                    "drop add Ethernet0\n"
                    "expect code = -1\n"
                    "expect field-group 11\n"
                    "drop add Ethernet0\n"
                    "expect code = -1\n"
                    "expect message \"group_create(1) failed: \"\n"
                    "expect no call bcm_field_entry_create\n");
    }
}

TEST_P(SessionField, EntryThatTheChipDoesNotGoByIsShownAsSuch)
{
    const CommandRun done = run("fail bcm_field_action_add -4\n"
                                "drop add Ethernet0\n"
                                "expect message \"action_add(1) failed: \"\n"
                                "expect field-entry 8192 state = \"not installed\"\n"
                                "expect field-entry 8192 l3-routable = 0\n"
                                "expect field-entry 8192 actions = -\n"
                                "expect field-entry 8192 installed = -\n"
                                "show field 8192\n");
    EXPECT_EQ(done.code, 0) << done.out;
    EXPECT_THAT(done.out, HasSubstr(" 8192     11  not installed  -         -        0            "
                                    "-        l3-routable 0\n"));
}

TEST_P(SessionField, EachStepIsReported)
{
    const std::string refused = "drop add Ethernet8\nexpect code = -1\nexpect message ";
    expect_done("fail bcm_field_group_create_id -6\n" + refused +
                "\"group_create(3) failed: \"\nexpect no field-group 11\n");
    expect_done("fail bcm_field_entry_create -6\n" + refused + "\"entry_create(3) failed: \"\n");
    expect_done("fail bcm_field_qualify_L3Routable -6\n" + refused +
                "\"rtb_create(3) failed: \"\n");
    // The rule counts as made from here on: the next port makes no group.
    expect_done("fail bcm_field_entry_install -6\n" + refused +
                "\"action_add(3) failed: \"\n"
                "drop add Ethernet0\n"
                "expect no call bcm_field_group_create_id\n"
                "expect field-entry 8192 in-ports = 1,3\n"
                "expect field-entry 8192 in-mask = 3\n");
    // Without ports that could be read and added to, no port ever gets in.
    expect_done("fail bcm_field_qualify_InPorts -6\n" + refused +
                "\"action_add(3) failed: \"\n"
                "drop add Ethernet0\n"
                "expect code = -1\n"
                "expect no call bcm_field_group_create_id\n"
                "expect call \"bcm_field_qualify_InPorts_get(0, 8192) = -7\"\n"
                "expect field-entry 8192 state = \"not installed\"\n");
    expect_done("drop add Ethernet0\n"
                "fail bcm_field_qualify_InPorts_get -6\n" +
                refused +
                "\"action_add(3) failed: \"\n"
                "expect field-entry 8192 in-ports = 1\n");
}

TEST_P(SessionField, AFailedInstallLeavesTheChipsSideBehind)
{
    const CommandRun done = run("drop add Ethernet0\n"
                                "fail bcm_field_entry_install -4\n"
                                "drop add Ethernet4\n"
                                "expect code = -1\n"
                                "expect field-entry 8192 in-ports = 1\n"
                                "expect field-entry 8192 copy != \"the same\"\n"
                                "show field 8192\n");
    EXPECT_EQ(done.code, 0) << done.out;
    EXPECT_THAT(done.out, HasSubstr(" 8192     11  installed  1         1        0            drop "
                                    "    in-ports {1,2}/{1} l3-routable 0 action 39\n"));
}

TEST_P(SessionField, ARefusalThatNothingAcceptsEndsWithOne)
{
    const CommandRun done = run("fail bcm_field_group_create_id -6\n"
                                "drop add Ethernet0\n");
    EXPECT_EQ(done.code, 1);
    EXPECT_THAT(done.out, HasSubstr("refused: code -1, 2 calls"));
    EXPECT_THAT(done.out, HasSubstr("group_create(1) failed: "));
}

INSTANTIATE_TEST_SUITE_P(BothChips, SessionField, ::testing::Values("trident", "trident2"));

/** None of these reaches the library. */
using SessionDrop = SessionTest;

TEST_F(SessionDrop, WhatMakesNoSenseIsRefused)
{
    EXPECT_EQ(problem("drop add Ethernet0"),
              "impossible: no configuration is up: begin with 'up FILE'");
    up();
    EXPECT_EQ(problem("drop"), "usage: missing arguments: drop add|del PORT");
    EXPECT_EQ(problem("drop add Ethernet0 Ethernet4"),
              "usage: too many arguments: drop add|del PORT");
    EXPECT_EQ(problem("drop ad Ethernet0"),
              "usage: unknown word 'ad': did you mean 'add'? (add or del)");
    EXPECT_EQ(problem("drop add Ethernet1"),
              "usage: unknown port 'Ethernet1': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("drop add Vlan100"), "usage: unknown port 'Vlan100'");
}

TEST_F(SessionDrop, EntriesOfThePlatformAreShownByTheirParts)
{
    expect_met({"field-group 1 meaning = in-ports", "field-entry 127 state = installed",
                "field-entry 127 in-ports = -", "field-entry 127 in-mask = -",
                "field-entry 127 l3-routable = -", "field-entry 127 actions = \"redirect 1-104\"",
                "field-entry 124 in-ports = 1-104", "field-entry 124 in-mask = 0-255",
                "field-entry 124 installed = \"in-ports {1-104}/{0-255} action 32 {1-104}\""});
}

} // namespace

} // namespace lab_test
