/*
 * ipv6_config_test.cpp: IPv6 goes on or off for the whole switch: neighbour
 * discovery to the CPU, and the field group that stands behind it.
 */
#include "support/library_test.h"

#include "chip/field_groups.h"

#include <fwm/state.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <cstdint>

namespace rtifhal_test::ipv6_config
{

namespace
{

using Calls = std::vector<std::string>;
using simswitch::chip::ND_GROUP;

constexpr int ND_TO_CPU = 89;

const std::string CONFIG = "rtifhal_set_kelvo_l3_ipv6_config";
const std::string SET_CONTROL = "bcm_switch_control_set";
const std::string READ_GROUP = "bcm_field_group_enable_get";
const std::string SET_GROUP = "bcm_field_group_enable_set";

std::string control_set(int enable, int code = 0)
{
    return fmt::format("{}(0, 89, {}) = {}", SET_CONTROL, enable, code);
}

std::string group_read(int enabled)
{
    return fmt::format("{}(0, 13) = 0 [enable={}]", READ_GROUP, enabled);
}

std::string group_refused(int code)
{
    return fmt::format("{}(0, 13) = {}", READ_GROUP, code);
}

std::string group_set(int enable, int code = 0)
{
    return fmt::format("{}(0, 13, {}) = {}", SET_GROUP, enable, code);
}

class Ipv6Config : public LibraryTest
{
protected:
    explicit Ipv6Config(Kind chip = Kind::trident) : LibraryTest({.chip = chip}) {}

    /** The group as somebody has left it. */
    void group_was(bool enabled)
    {
        ASSERT_TRUE(sw.chip.field_groups.set_enabled(ND_GROUP, enabled).ok());
    }
    bool group_is_on() const { return sw.chip.field_groups.find(ND_GROUP)->enabled; }
    int nd_to_cpu() const { return sw.chip.switch_controls.get(ND_TO_CPU); }
    /** The whole road. */
    static Calls road(const Calls &behind_unit)
    {
        Calls calls = {"rtifhal_get_bcm_unit(0) = 0"};
        calls.insert(calls.end(), behind_unit.begin(), behind_unit.end());
        return calls;
    }
};

class Ipv6ConfigOnTrident2 : public Ipv6Config
{
protected:
    Ipv6ConfigOnTrident2() : Ipv6Config(Kind::trident2) {}
};

/** Values that aren't 1. */
class Ipv6ConfigOff : public Ipv6Config, public ::testing::WithParamInterface<int>
{
};

/** Both directions. */
class Ipv6ConfigRefused : public Ipv6Config, public ::testing::WithParamInterface<int>
{
protected:
    int enable() const { return GetParam(); }
};

} // namespace

TEST_F(Ipv6Config, OnSendsNeighbourDiscoveryToTheCpuAndSwitchesTheGroupOn)
{
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(1), 0);
    expect_calls(road({control_set(1), group_read(0), group_set(1)}));
    expect_messages({});
    EXPECT_EQ(nd_to_cpu(), 1);
    EXPECT_TRUE(group_is_on());
}

TEST_F(Ipv6ConfigOnTrident2, OnSendsNeighbourDiscoveryToTheCpuAndSwitchesTheGroupOn)
{
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(1), 0);
    expect_calls(road({control_set(1), group_read(0), group_set(1)}));
    EXPECT_EQ(nd_to_cpu(), 1);
    EXPECT_TRUE(group_is_on());
}

TEST_F(Ipv6Config, OnWithTheGroupOnLeavesTheGroupAlone)
{
    group_was(true);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(1), 0);
    expect_calls(road({control_set(1), group_read(1)}));
    expect_messages({});
    EXPECT_EQ(nd_to_cpu(), 1);
}

TEST_F(Ipv6Config, StateThatTheReadDoesntTellCountsAsOff)
{
    fail(READ_GROUP, 0);
    group_was(true);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(1), 0);
    expect_calls(road({control_set(1), group_refused(0), group_set(1)}));
    expect_messages({});
}

TEST_F(Ipv6Config, OffWithTheGroupOnSwitchesItOff)
{
    rtifhal_set_kelvo_l3_ipv6_config(1);
    start();
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(0), 0);
    expect_calls(road({control_set(0), group_read(1), group_set(0)}));
    expect_messages({});
    EXPECT_EQ(nd_to_cpu(), 0);
    EXPECT_FALSE(group_is_on());
}

TEST_F(Ipv6Config, OffWithTheGroupOffWritesItAllTheSame)
{
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(0), 0);
    expect_calls(road({control_set(0), group_read(0), group_set(0)}));
    expect_messages({});
}

TEST_F(Ipv6ConfigOnTrident2, OffWithTheGroupOffWritesItAllTheSame)
{
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(0), 0);
    expect_calls(road({control_set(0), group_read(0), group_set(0)}));
}

TEST_P(Ipv6ConfigOff, IsEveryValueButOne)
{
    rtifhal_set_kelvo_l3_ipv6_config(1);
    start();
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(GetParam()), 0);
    expect_calls(road({control_set(0), group_read(1), group_set(0)}));
    EXPECT_EQ(nd_to_cpu(), 0);
    EXPECT_FALSE(group_is_on());
}

INSTANTIATE_TEST_SUITE_P(Each, Ipv6ConfigOff,
                         ::testing::Values(0, 2, -1, 0x101, 0x10001, INT32_MAX, INT32_MIN));

TEST_F(Ipv6Config, IsTheSameInRestoreModeOnAFastRestartAndUnderAnSdnAgent)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(1), 0);
    expect_calls(road({control_set(1), group_read(0), group_set(1)}));
}

TEST_P(Ipv6ConfigRefused, SwitchControlEndsTheRoadBeforeTheGroup)
{
    fail(SET_CONTROL, -4);
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(enable()), -1);
    expect_calls(road({control_set(enable(), -4)}));
    expect_messages(
        {report(CONFIG, fmt::format(" switch_control_set(0, bcmSwitchNdPktToCpu) failed - {} \n",
                                    _shr_errmsg[4]))});
    EXPECT_FALSE(group_is_on());
}

TEST_P(Ipv6ConfigRefused, GroupThatCantBeReadEndsTheRoadAndTheControlStays)
{
    ASSERT_TRUE(sw.chip.field_groups.remove(ND_GROUP).ok());
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(enable()), -1);
    expect_calls(road({control_set(enable()), group_refused(-7)}));
    expect_messages({report(CONFIG, fmt::format(" bcm_field_group_enable_get {} failed - {} \n",
                                                enable(), _shr_errmsg[7]))});
    EXPECT_EQ(nd_to_cpu(), enable());
}

TEST_P(Ipv6ConfigRefused, GroupThatCantBeSetIsAFailureAndTheControlStays)
{
    fail(SET_GROUP, -7);
    group_was(false);
    EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(enable()), -1);
    expect_calls(road({control_set(enable()), group_read(0), group_set(enable(), -7)}));
    expect_messages({report(CONFIG, fmt::format(" bcm_field_group_enable_set {} failed - {} \n",
                                                enable(), _shr_errmsg[7]))});
    EXPECT_EQ(nd_to_cpu(), enable());
    EXPECT_FALSE(group_is_on());
}

TEST_P(Ipv6ConfigRefused, PositiveAnswersAreRefusalsToo)
{
    for (const auto &[function, text] :
         {std::pair<std::string, std::string>(
              SET_CONTROL, " switch_control_set(0, bcmSwitchNdPktToCpu) failed - "),
          std::pair<std::string, std::string>(
              READ_GROUP, fmt::format(" bcm_field_group_enable_get {} failed - ", enable())),
          std::pair<std::string, std::string>(
              SET_GROUP, fmt::format(" bcm_field_group_enable_set {} failed - ", enable()))}) {
        group_was(false);
        start();
        fail(function, 1);
        EXPECT_EQ(rtifhal_set_kelvo_l3_ipv6_config(enable()), -1);
        expect_messages({report(CONFIG, text + _shr_errmsg[19] + " \n")});
    }
}

INSTANTIATE_TEST_SUITE_P(OnAndOff, Ipv6ConfigRefused, ::testing::Values(1, 0));

} // namespace rtifhal_test::ipv6_config
