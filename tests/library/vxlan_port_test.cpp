/*
 * vxlan_port_test.cpp: VXLAN virtual ports: the line that the create says, and
 * which arguments reach the platform layer.
 */
#include "support/library_test.h"

#include <array>
#include <cstring>

namespace rtifhal_test::vxlan_port
{

namespace
{

const std::string CREATE = "rtifhal_trident_vxlan_port_create";
constexpr std::uint32_t IF_INDEX = 0x1AB00000;

/** The three records, no longer than what is told of them. */
struct Records {
    std::array<std::uint32_t, 4> vpn = {0xdead0001, 5000, 0x7001, 0xCAFE};
    std::array<std::uint32_t, 2> egress = {0xdead0002, 0xBEEF};
    std::array<unsigned char, 34> port = {};

    Records()
    {
        put(4, 0x2Fu);
        put(24, 0x1Fu);
        put(28, 2u);
        put(32, std::uint16_t{100});
    }
    /** Writes a word of the port record. */
    template <class Word> void put(std::size_t offset, Word word)
    {
        std::memcpy(port.data() + offset, &word, sizeof word);
    }
    std::uint32_t port_id() const
    {
        std::uint32_t id = 0;
        std::memcpy(&id, port.data(), sizeof id);
        return id;
    }
};

class VxlanPort : public LibraryTest
{
protected:
    int create(int unit = 0, std::uint32_t if_index = IF_INDEX, std::uintptr_t context = 7)
    {
        return rtifhal_trident_vxlan_port_create(unit, if_index, records.vpn.data(),
                                                 records.egress.data(), records.port.data(),
                                                 context);
    }

    Records records;
};

} // namespace

TEST_F(VxlanPort, CreateIsHandedOnWhole)
{
    EXPECT_EQ(create(), 0);
    expect_calls({"rtifhal_bcm_vxlan_port_create(0, 0x1ab00000, vpn 28673 vn 5000 port 31 vlan 100 "
                  "criteria 2 flags 0x2f egress 48879 multicast 0xcafe of 0x1ab00000, 7) = 0 "
                  "[id=1]"});
    EXPECT_EQ(records.port_id(), 1U); // the caller's own record was handed on
}

TEST_F(VxlanPort, CreateSaysWhatItMatchesWithTwoBlanksMissing)
{
    EXPECT_EQ(create(), 0);
    expect_messages(
        {trace(CREATE, "rtifhal_trident_vxlan_port_create: Creating vxlan virtual port match_port "
                       "0x1Fmatch_vlan 100 vpn id 0x7001 vn_id 5000 bcm_mc_index 0xCAFEcriteria 2 "
                       "flags 0x2F if_index 0x1AB00000 egr_obj intf BEEF\n")});
}

TEST_F(VxlanPort, CreateSaysTheHighestValues)
{
    records.vpn = {0, 0xffffffff, 0xfffffffe, 0xfffffffd};
    records.egress = {0, 0xfffffffc};
    records.put(4, 0xfffffffbu);
    records.put(24, 0xfffffffau);
    records.put(28, 0xfffffff9u);
    records.put(32, std::uint16_t{0xffff});
    EXPECT_EQ(create(0, 0xfffffff8), -4); // no such port
    expect_messages(
        {trace(CREATE, "rtifhal_trident_vxlan_port_create: Creating vxlan virtual port match_port "
                       "0xFFFFFFFAmatch_vlan 65535 vpn id 0xFFFFFFFE vn_id -1 bcm_mc_index "
                       "0xFFFFFFFDcriteria -7 flags 0xFFFFFFFB if_index 0xFFFFFFF8 egr_obj intf "
                       "FFFFFFFC\n")});
}

TEST_F(VxlanPort, CreateSaysNothingOfTheRestOfTheRecords)
{
    Records other;
    other.vpn[0] = 1;
    other.egress[0] = 2;
    other.put(0, 3u);
    for (std::size_t offset = 8; offset < 24; offset += 4) {
        other.put(offset, 0x55555555u);
    }
    create();
    records = other;
    sw.chip.vxlan_ports.clear();
    create();
    ASSERT_EQ(messages().size(), 2U);
    EXPECT_EQ(messages().front(), messages().back());
}

TEST_F(VxlanPort, CreateSpeaksBeforeThePlatformLayerActs)
{
    std::size_t said = 0;
    sw.journal.arm({.function = "rtifhal_bcm_vxlan_port_create",
                    .forever = true,
                    .when = [&](std::string_view) {
                        said = messages().size();
                        return false;
                    }});
    create();
    EXPECT_EQ(said, 1U);
}

TEST_F(VxlanPort, CreateHandsThePlatformLayersAnswerBack)
{
    EXPECT_EQ(create(), 0);
    EXPECT_EQ(create(), -8); // it matches the same
    fail("rtifhal_bcm_vxlan_port_create", 17);
    EXPECT_EQ(create(), 17);
    EXPECT_EQ(create(2), -3);
    EXPECT_EQ(messages().size(), 4U);
    expect_reports({});
}

TEST_F(VxlanPort, SixthArgumentOfTheCreateArrivesWhole)
{
    EXPECT_EQ(create(0, IF_INDEX, 0xfedcba9876543210), 0);
    EXPECT_TRUE(calls().front().find(", 18364758544493064720) = 0") != std::string::npos)
        << calls().front();
}

TEST_F(VxlanPort, CreateWithoutARecordIsRefusedWithoutACall)
{
    auto *const vpn = records.vpn.data();
    auto *const egress = records.egress.data();
    auto *const port = records.port.data();
    EXPECT_EQ(rtifhal_trident_vxlan_port_create(0, IF_INDEX, nullptr, egress, port, 7), -1);
    EXPECT_EQ(rtifhal_trident_vxlan_port_create(0, IF_INDEX, vpn, nullptr, port, 7), -1);
    EXPECT_EQ(rtifhal_trident_vxlan_port_create(0, IF_INDEX, vpn, egress, nullptr, 7), -1);
    expect_calls({});
    expect_messages({});
}

TEST_F(VxlanPort, DeleteDropsTwoArgumentsAndSaysNothing)
{
    create();
    start();
    EXPECT_EQ(rtifhal_trident_vxlan_port_delete(0, 22, 33, 0x7001, 1, 66), 0);
    expect_calls({"rtifhal_bcm_vxlan_port_delete(0, 28673, 1, 66) = 0"});
    expect_messages({});
    EXPECT_EQ(sw.chip.vxlan_ports.size(), 0U);
}

TEST_F(VxlanPort, ArgumentsOfTheDeleteArriveWhole)
{
    EXPECT_EQ(
        rtifhal_trident_vxlan_port_delete(0, 0, 0, 0x100000001, 0x100000002, 0xfedcba9876543210),
        -7);
    expect_calls({"rtifhal_bcm_vxlan_port_delete(0, 4294967297, 4294967298, 18364758544493064720) "
                  "= -7"});
}

TEST_F(VxlanPort, DeleteHandsThePlatformLayersAnswerBack)
{
    EXPECT_EQ(rtifhal_trident_vxlan_port_delete(0, 0, 0, 0x7001, 1, 0), -7); // no such port
    EXPECT_EQ(rtifhal_trident_vxlan_port_delete(5, 0, 0, 0x7001, 1, 0), -3);
    fail("rtifhal_bcm_vxlan_port_delete", 17);
    EXPECT_EQ(rtifhal_trident_vxlan_port_delete(0, 0, 0, 0x7001, 1, 0), 17);
    expect_messages({});
}

} // namespace rtifhal_test::vxlan_port
