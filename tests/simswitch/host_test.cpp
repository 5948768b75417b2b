/*
 * host_test.cpp: the forwarding manager's state and the system's answers.
 */
#include "switch.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>
#include <services/system.h>

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

using testing::ElementsAre;

class HostTest : public testing::Test
{
protected:
    Switch sw;
};

} // namespace

TEST_F(HostTest, UnknownPortChannelHasNoTrunk)
{
    std::uint32_t tid = 99;
    EXPECT_EQ(fwm_ifindex_2_tid(0x20007000, &tid), 1);
    EXPECT_EQ(tid, 99U);
}

TEST_F(HostTest, FiledTrunkIsFound)
{
    const std::uint16_t key = 42;
    const fwm_pc_sdb_value_t value{.ifindex = 0x20029000, .tid = 42};
    std::uint32_t tid = 0;
    EXPECT_EQ(fwm_pc_sdb_store(&key, &value), 0);
    EXPECT_EQ(fwm_ifindex_2_tid(0x20029000, &tid), 0);
    EXPECT_EQ(tid, 42U);
    EXPECT_THAT(sw.journal.calls(),
                ElementsAre("fwm_pc_sdb_store(42, {ifindex=0x20029000 tid=42}) = 0",
                            "fwm_ifindex_2_tid(0x20029000) = 0 [tid=42]"));
    sw.host.forget_trunk_id(0x20029000);
    EXPECT_EQ(fwm_ifindex_2_tid(0x20029000, &tid), 1);
}

TEST_F(HostTest, SubinterfaceHasThePortChannelsTrunk)
{
    std::uint32_t tid = 0;
    sw.host.set_trunk_id(0x20029000, 7);
    EXPECT_EQ(fwm_ifindex_2_tid(0x2002900a, &tid), 0);
    EXPECT_EQ(tid, 7U);
    const std::uint16_t key = 42;
    const fwm_pc_sdb_value_t value{.ifindex = 0x2002900a, .tid = 42};
    fwm_pc_sdb_store(&key, &value);
    EXPECT_EQ(fwm_ifindex_2_tid(0x20029000, &tid), 0);
    EXPECT_EQ(tid, 42U);
    sw.host.forget_trunk_id(0x2002900a);
    EXPECT_EQ(fwm_ifindex_2_tid(0x20029000, &tid), 1);
}

TEST_F(HostTest, ErrorsHaveTexts)
{
    EXPECT_STREQ(fwm_syserr2str(0), "success");
    EXPECT_STREQ(fwm_syserr2str(fwm::ERROR_NO_SUCH_INTERFACE), "no such interface");
    const char *unknown = fwm_syserr2str(-1);
    EXPECT_STREQ(unknown, "unknown error 0xffffffff");
    fwm_syserr2str(17);
    EXPECT_STREQ(unknown, "unknown error 0xffffffff") << "a text stays as it was given";
}

TEST_F(HostTest, DirectWritesOfPrivateVlansStartOnUnit0)
{
    fwmpd_trident_unit = 3;
    const Switch fresh;
    EXPECT_EQ(fwmpd_trident_unit, 0);
}

TEST_F(HostTest, FastRestartIsAKnob)
{
    EXPECT_EQ(sysmgr_is_fastboot_restart(), 0);
    sw.system.fast_restart = true;
    EXPECT_NE(sysmgr_is_fastboot_restart(), 0);
}

TEST_F(HostTest, PlatformKeyIsRead)
{
    std::array<char, 8> buffer = {'x'};
    EXPECT_EQ(get_string_from_platform_inf("fwm", "skip_default_nh", buffer.data(), 8), 0);
    EXPECT_EQ(buffer[0], 'x');
    sw.system.set_key("fwm", "skip_default_nh", "1");
    EXPECT_NE(get_string_from_platform_inf("fwm", "skip_default_nh", buffer.data(), 8), 0);
    EXPECT_STREQ(buffer.data(), "1");
    EXPECT_EQ(get_string_from_platform_inf("other", "skip_default_nh", buffer.data(), 8), 0);
    EXPECT_EQ(sw.journal.calls()[1],
              "get_string_from_platform_inf(\"fwm\", \"skip_default_nh\", 8) = 1 [value=\"1\"]");
    sw.system.remove_key("fwm", "skip_default_nh");
    EXPECT_EQ(get_string_from_platform_inf("fwm", "skip_default_nh", buffer.data(), 8), 0);
}

TEST_F(HostTest, PlatformKeyIsCutToItsRoom)
{
    std::array<char, 4> buffer = {'x', 'x', 'x', 'x'};
    sw.system.set_key("fwm", "key", "long value");
    EXPECT_EQ(get_string_from_platform_inf("fwm", "key", buffer.data(), 3), 1);
    EXPECT_STREQ(buffer.data(), "lo");
    EXPECT_EQ(get_string_from_platform_inf("fwm", "key", buffer.data(), 0), 1);
    EXPECT_STREQ(buffer.data(), "lo");
}

} // namespace simswitch
