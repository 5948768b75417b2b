/*
 * ifindex_test.cpp: interface indexes: made, asked about, named.
 */
#include "services/ifindex.h"

#include "switch.h"

#include <services/if_index.h>

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace simswitch
{

namespace
{

using testing::ElementsAre;

/** The answers of all questions about an ifindex. */
struct Answers {
    int type = -1; ///< -1: can't be read
    int port = -1; ///< -1: none
    bool port_channel = false;
    bool sub = false;
    bool physical = false;
    bool tunnel = false;
    std::string name;

    bool operator==(const Answers &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Answers &a)
{
    return out << a.name << " type " << a.type << " port " << a.port << " pc " << a.port_channel
               << " sub " << a.sub << " physical " << a.physical << " tunnel " << a.tunnel;
}

Answers ask(std::uint32_t ifindex)
{
    std::uint8_t byte = 0;
    std::array<char, 64> name{};
    Answers answers;
    answers.type = if_index_get_type(ifindex, &byte) == 0 ? byte : -1;
    answers.port = if_index_get_port(ifindex, &byte) == 0 ? byte : -1;
    answers.port_channel = if_index_is_eth_port_channel_intf(ifindex) != 0;
    answers.sub = if_index_is_sub_intf(ifindex) != 0;
    answers.physical = if_index_is_physical_interface(ifindex) != 0;
    answers.tunnel = if_index_is_tunnel_intf(ifindex) != 0;
    answers.name = snprintf_if_index(name.data(), name.size(), ifindex);
    return answers;
}

class IfIndex : public testing::Test
{
protected:
    Switch sw;
};

} // namespace

TEST_F(IfIndex, EthernetPort)
{
    EXPECT_EQ(ask(if_index::port(4)),
              (Answers{.type = 26, .port = 4, .physical = true, .name = "Ethernet1/5"}));
    EXPECT_EQ(ask(if_index::port(0)).port, 0);
    EXPECT_EQ(ask(if_index::port(255)).port, 255);
}

TEST_F(IfIndex, SubinterfaceOfAPort)
{
    EXPECT_EQ(ask(if_index::port_sub(4, 10)),
              (Answers{.type = 26, .port = 4, .sub = true, .name = "Ethernet1/5.10"}));
    EXPECT_EQ(ask(if_index::port_sub(255, 65535)).name, "Ethernet1/256.65535");
}

TEST_F(IfIndex, PortChannelAndItsSubinterface)
{
    EXPECT_EQ(ask(if_index::port_channel(7)),
              (Answers{.type = 22, .port_channel = true, .name = "port-channel7"}));
    EXPECT_EQ(ask(if_index::port_channel_sub(7, 10)),
              (Answers{.type = 22, .port_channel = true, .sub = true, .name = "port-channel7.10"}));
}

TEST_F(IfIndex, OtherKinds)
{
    EXPECT_EQ(ask(if_index::svi(100)), (Answers{.type = 9, .name = "Vlan100"}));
    EXPECT_EQ(ask(if_index::tunnel(3)), (Answers{.type = 24, .tunnel = true, .name = "Tunnel3"}));
    EXPECT_EQ(ask(if_index::management(0)), (Answers{.type = 5, .name = "mgmt0"}));
    EXPECT_EQ(ask(if_index::loopback(0)), (Answers{.type = 20, .name = "loopback0"}));
}

TEST_F(IfIndex, UnknownClassCantBeRead)
{
    EXPECT_EQ(ask(0), (Answers{.name = "ifindex 0x0"}));
    EXPECT_EQ(ask(0xF0000001), (Answers{.name = "ifindex 0xf0000001"}));
    EXPECT_EQ(ask(0x10010000), (Answers{.name = "ifindex 0x10010000"}));
}

TEST_F(IfIndex, RefusalLeavesTheCallersBytesAlone)
{
    std::uint8_t byte = 77;
    std::uint16_t number = 88;
    EXPECT_NE(if_index_get_type(0, &byte), 0);
    EXPECT_NE(if_index_get_port(if_index::svi(1), &byte), 0);
    EXPECT_NE(if_index_port_channel_get_channel_num(if_index::port(1), &number), 0);
    EXPECT_EQ(byte, 77);
    EXPECT_EQ(number, 88);
}

TEST_F(IfIndex, ChannelNumberIsReadBack)
{
    for (const unsigned channel : {0U, 41U, 65535U}) {
        std::uint16_t number = 1;
        EXPECT_EQ(if_index_port_channel_get_channel_num(if_index::port_channel(channel), &number),
                  0);
        EXPECT_EQ(number, channel);
        number = 1;
        const std::uint32_t sub = if_index::port_channel_sub(channel, 4095);
        EXPECT_EQ(if_index_port_channel_get_channel_num(sub, &number), 0);
        EXPECT_EQ(number, channel);
    }
}

TEST_F(IfIndex, SubinterfaceNumberIsReadBack)
{
    std::uint16_t number = 1;
    EXPECT_EQ(if_index_get_sub_intf(if_index::port_sub(4, 10), &number), 0);
    EXPECT_EQ(number, 10);
    EXPECT_EQ(if_index_get_sub_intf(if_index::port(4), &number), 0);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(if_index_get_sub_intf(if_index::port_sub(255, 65535), &number), 0);
    EXPECT_EQ(number, 65535);
    EXPECT_EQ(if_index_get_sub_intf(if_index::port_channel(65535), &number), 0);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(if_index_get_sub_intf(if_index::port_channel_sub(7, 4095), &number), 0);
    EXPECT_EQ(number, 4095);
    EXPECT_EQ(sw.journal.calls().front(), "if_index_get_sub_intf(0x1040000a) = 0 [number=10]");
}

TEST_F(IfIndex, WhatHasNoSubinterfacesHasNoNumber)
{
    std::uint16_t number = 77;
    for (const std::uint32_t ifindex : {if_index::svi(100), if_index::tunnel(3),
                                        if_index::management(0), if_index::loopback(0), 0U}) {
        EXPECT_EQ(if_index_get_sub_intf(ifindex, &number), 1) << if_index::name(ifindex);
    }
    sw.journal.arm({.function = "if_index_get_sub_intf", .code = -1});
    EXPECT_EQ(if_index_get_sub_intf(if_index::port_sub(4, 10), &number), -1);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(sw.journal.calls().front(), "if_index_get_sub_intf(0x30000064) = 1");
}

TEST_F(IfIndex, PartsAreWhatItWasMadeOf)
{
    using if_index::Kind;
    using if_index::Parts;
    EXPECT_EQ(if_index::parts(if_index::port_sub(9, 8)), (Parts{Kind::port, 9, 8}));
    EXPECT_EQ(if_index::parts(if_index::port_channel_sub(9, 4095)),
              (Parts{Kind::port_channel, 9, 4095}));
    EXPECT_EQ(if_index::parts(if_index::svi(4095)), (Parts{Kind::svi, 4095, 0}));
    EXPECT_EQ(if_index::parts(0), std::nullopt);
}

TEST_F(IfIndex, MainInterfaceOfASubinterface)
{
    EXPECT_EQ(if_index::main_interface(if_index::port_sub(9, 8)), if_index::port(9));
    EXPECT_EQ(if_index::main_interface(if_index::port_channel_sub(9, 8)),
              if_index::port_channel(9));
    EXPECT_EQ(if_index::main_interface(if_index::svi(8)), if_index::svi(8));
    EXPECT_EQ(if_index::main_interface(0), 0U);
}

TEST_F(IfIndex, MainInterfaceIsAWordOfBitsInTheJournal)
{
    EXPECT_EQ(if_index_get_mainintf_from_subintf(if_index::port_sub(0, 10)), if_index::port(0));
    EXPECT_EQ(if_index_get_mainintf_from_subintf(if_index::port_channel(7)),
              if_index::port_channel(7));
    sw.journal.arm({.function = "if_index_get_mainintf_from_subintf", .code = 0x20});
    EXPECT_EQ(if_index_get_mainintf_from_subintf(if_index::port_sub(0, 10)), 0x20U);
    EXPECT_THAT(sw.journal.calls(),
                ElementsAre("if_index_get_mainintf_from_subintf(0x1000000a) = 0x10000000",
                            "if_index_get_mainintf_from_subintf(0x20007000) = 0x20007000",
                            "if_index_get_mainintf_from_subintf(0x1000000a) = 0x20"));
}

TEST_F(IfIndex, NumberOutOfRangeIsRefusedInWords)
{
    EXPECT_THROW(if_index::port(256), std::out_of_range);
    EXPECT_THROW(if_index::port_sub(1, 0), std::out_of_range);
    EXPECT_THROW(if_index::port_sub(1, 65536), std::out_of_range);
    EXPECT_THROW(if_index::port_channel(65536), std::out_of_range);
    EXPECT_THROW(if_index::port_channel_sub(1, 4096), std::out_of_range);
    EXPECT_THROW(if_index::svi(65536), std::out_of_range);
    EXPECT_THROW(if_index::tunnel(1U << 28U), std::out_of_range);
    try {
        if_index::port(300);
        FAIL();
    } catch (const std::out_of_range &error) {
        EXPECT_STREQ(error.what(), "interface index: port 300 is not in 0..255");
    }
}

TEST_F(IfIndex, NameIsCutToItsRoom)
{
    std::array<char, 5> name = {'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(snprintf_if_index(name.data(), name.size(), if_index::port(4)), name.data());
    EXPECT_STREQ(name.data(), "Ethe");
    char untouched = 'x';
    snprintf_if_index(&untouched, 0, if_index::port(4));
    EXPECT_EQ(untouched, 'x');
}

TEST_F(IfIndex, CallsAreJournaledWithTheirAnswers)
{
    std::uint8_t type = 0;
    std::array<char, 16> name{};
    if_index_get_type(if_index::port(0), &type);
    if_index_get_type(0, &type);
    snprintf_if_index(name.data(), name.size(), if_index::svi(5));
    EXPECT_THAT(sw.journal.calls(), ElementsAre("if_index_get_type(0x10000000) = 0 [type=26]",
                                                "if_index_get_type(0x0) = 1",
                                                "snprintf_if_index(16, 0x30000005) = \"Vlan5\""));
}

TEST_F(IfIndex, InjectedFaultLeavesTheNameEmpty)
{
    std::array<char, 4> name = {'x', 'x', 'x', 'x'};
    sw.journal.arm({.function = "snprintf_if_index"});
    EXPECT_STREQ(snprintf_if_index(name.data(), name.size(), if_index::port(0)), "");
}

} // namespace simswitch
