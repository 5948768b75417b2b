/*
 * property_read_test.cpp: properties are read as the layer above set them, by
 * interface and by internal VLAN.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <fmt/format.h>

namespace rtifhal_test::property_read
{

namespace
{

constexpr std::uint32_t UNTOUCHED = 0xDEADBEEF;
const std::string GET = "rtifhal_get_kelvo_l3_property";
const std::string FIND = "l3lif_find_lif_from_int_vlan";

/** What a property reads as. */
struct Readable {
    std::uint32_t id;
    std::uint32_t value;
};

/** An SVI that the layer above has registered under its internal VLAN. */
class PropertyRead : public LibraryTest
{
protected:
    explicit PropertyRead(Kind chip = Kind::trident) : LibraryTest({.chip = chip})
    {
        lif->lif.int_vlan = 100;
        // Each word another value, so that none is taken for its neighbour.
        lif->properties = {.ipv4_en = 101,
                           .ipv4_mc_en = 102,
                           .ipv6_en = 106,
                           .l3_prop_word_7 = 107,
                           .urpf_mode = 104,
                           .vrf = 103,
                           .ipv6_vrf = 109,
                           .mtu = 110,
                           .ingress_flag_word = 105,
                           .l3_prop_word_8 = 108,
                           .acl_qos_label_pending = 111,
                           .class_high_bit = 113,
                           .mpls_en = 118};
        sw.directory.add(lif->get());
        start();
    }

    int get(std::uint32_t property)
    {
        return rtifhal_get_kelvo_l3_property(lif->get(), property, &value);
    }
    int get_by_vlan(std::uint16_t vlan, std::uint32_t property)
    {
        return rtifhal_get_kelvo_l3_property_svi(vlan, property, &value);
    }
    static Message returning(std::uint32_t property, int shown)
    {
        return trace(GET, fmt::format(" Returning prop {}, value {} \n", property, shown));
    }

    std::unique_ptr<Lif> lif = svi(100);
    std::uint32_t value = UNTOUCHED;
};

class PropertyReadOnTrident2 : public PropertyRead
{
protected:
    PropertyReadOnTrident2() : PropertyRead(Kind::trident2) {}
};

constexpr Readable READABLE[] = {{1, 101}, {2, 102}, {3, 103}, {4, 104}, {5, 105},
                                 {6, 106}, {7, 107}, {8, 108}, {9, 109}, {13, 113}};
constexpr std::uint32_t UNREADABLE[] = {0,  10, 11, 12, 14,    15,         16,        17,
                                        18, 19, 20, 32, 0x101, 0x80000001, 0xFFFFFFFF};

} // namespace

TEST_F(PropertyRead, EachIdGivesItsOwnPropertyWithoutACall)
{
    for (const auto &[id, expected] : READABLE) {
        start();
        value = UNTOUCHED;
        EXPECT_EQ(get(id), 0) << id;
        EXPECT_EQ(value, expected) << id;
        expect_calls({});
        expect_messages({returning(id, static_cast<int>(expected))});
    }
}

TEST_F(PropertyReadOnTrident2, EachIdGivesItsOwnPropertyWithoutACall)
{
    for (const auto &[id, expected] : READABLE) {
        start();
        value = UNTOUCHED;
        EXPECT_EQ(get(id), 0) << id;
        EXPECT_EQ(value, expected) << id;
        expect_calls({});
        expect_messages({returning(id, static_cast<int>(expected))});
    }
}

TEST_F(PropertyRead, NarrowPropertiesAreWidenedWithoutASign)
{
    lif->properties.vrf = 0xFFFF;
    lif->properties.ipv6_vrf = 0x8000;
    lif->properties.urpf_mode = 0xFF;
    for (const auto &[id, expected] : {Readable{3, 0xFFFF}, {9, 0x8000}, {4, 0xFF}}) {
        EXPECT_EQ(get(id), 0);
        EXPECT_EQ(value, expected) << id;
    }
    expect_messages({returning(3, 65535), returning(9, 32768), returning(4, 255)});
}

TEST_F(PropertyRead, WordsComeOutWhole)
{
    lif->properties.ipv4_en = 0xFFFFFFFF;
    lif->properties.l3_prop_word_7 = 0x80000001;
    lif->properties.class_high_bit = 0x12345678;
    for (const auto &[id, expected] :
         {Readable{1, 0xFFFFFFFF}, {7, 0x80000001}, {13, 0x12345678}}) {
        EXPECT_EQ(get(id), 0);
        EXPECT_EQ(value, expected) << id;
    }
    expect_messages({returning(1, -1), returning(7, -2147483647), returning(13, 0x12345678)});
}

TEST_F(PropertyRead, PropertyOfZeroReadsAsZeroWithSuccess)
{
    lif->properties = {};
    for (const auto &readable : READABLE) {
        value = UNTOUCHED;
        EXPECT_EQ(get(readable.id), 0) << readable.id;
        EXPECT_EQ(value, 0U) << readable.id;
    }
    EXPECT_EQ(messages().size(), std::size(READABLE));
}

TEST_F(PropertyRead, OtherIdsAreUnreadableAndZeroTheValueSilently)
{
    for (const std::uint32_t id : UNREADABLE) {
        value = UNTOUCHED;
        EXPECT_EQ(get(id), -1) << id;
        EXPECT_EQ(value, 0U) << id;
    }
    expect_calls({});
    expect_messages({});
}

TEST_F(PropertyRead, AnswerIsTheLayersAboveAndNotTheChips)
{
    const auto routed = port(5);
    routed->properties.urpf_mode = 3;
    l3iif_table_init();
    ASSERT_EQ(rtifhal_trident_add_l3port(routed->get(), 1), 0);
    sw.end_request();
    ASSERT_EQ(sw.chip.l3_ingresses.find(routed->record()->l3intf_id)->urpf_mode, 2);
    EXPECT_EQ(rtifhal_get_kelvo_l3_property(routed->get(), 4, &value), 0);
    EXPECT_EQ(value, 3U);
    routed->properties.vrf = 9;
    EXPECT_EQ(rtifhal_get_kelvo_l3_property(routed->get(), 3, &value), 0);
    EXPECT_EQ(value, 9U);
}

TEST_F(PropertyRead, InterfaceNeedsNoContextAndNoVlan)
{
    const auto bare = tunnel(3);
    bare->properties.ipv6_vrf = 12;
    EXPECT_EQ(rtifhal_get_kelvo_l3_property(bare->get(), 9, &value), 0);
    EXPECT_EQ(value, 12U);
}

TEST_F(PropertyRead, NullInterfaceZeroesTheValue)
{
    for (const std::uint32_t id : {1U, 10U}) {
        value = UNTOUCHED;
        EXPECT_EQ(rtifhal_get_kelvo_l3_property(nullptr, id, &value), -1);
        EXPECT_EQ(value, 0U);
    }
    expect_calls({});
    expect_messages({});
}

TEST_F(PropertyRead, MissingPropertiesZeroTheValue)
{
    lif->without_properties();
    EXPECT_EQ(get(1), -1);
    EXPECT_EQ(value, 0U);
    expect_calls({});
    expect_messages({});
}

TEST_F(PropertyRead, NullValueIsRefused)
{
    EXPECT_EQ(rtifhal_get_kelvo_l3_property(lif->get(), 1, nullptr), -1);
    EXPECT_EQ(rtifhal_get_kelvo_l3_property(nullptr, 1, nullptr), -1);
    EXPECT_EQ(rtifhal_get_kelvo_l3_property_svi(100, 1, nullptr), -1);
    EXPECT_EQ(rtifhal_get_kelvo_l3_property_svi(200, 1, nullptr), -1);
    expect_messages({});
}

TEST_F(PropertyRead, ByVlanTheInterfaceIsLookedUpAndReadLikeAnyOther)
{
    for (const auto &[id, expected] : READABLE) {
        start();
        value = UNTOUCHED;
        EXPECT_EQ(get_by_vlan(100, id), 0) << id;
        EXPECT_EQ(value, expected) << id;
        expect_calls({FIND + "(100) = record"});
        expect_messages({returning(id, static_cast<int>(expected))});
    }
}

TEST_F(PropertyRead, UnknownVlanLeavesTheValueAlone)
{
    for (const std::uint16_t vlan : {std::uint16_t{0}, std::uint16_t{99}, std::uint16_t{0xFFFF}}) {
        start();
        EXPECT_EQ(get_by_vlan(vlan, 1), -1);
        EXPECT_EQ(value, UNTOUCHED);
        expect_calls({fmt::format("{}({}) = null", FIND, vlan)});
        expect_messages({});
    }
}

TEST_F(PropertyRead, UnknownVlanLeavesTheValueAloneForAnUnreadableIdToo)
{
    EXPECT_EQ(get_by_vlan(99, 10), -1);
    EXPECT_EQ(value, UNTOUCHED);
}

TEST_F(PropertyRead, VlanIsTheInternalOneAndNotTheInterfacesOwn)
{
    const auto other = svi(200);
    other->lif.int_vlan = 300;
    other->properties.vrf = 21;
    sw.directory.add(other->get());
    EXPECT_EQ(get_by_vlan(300, 3), 0);
    EXPECT_EQ(value, 21U);
    value = UNTOUCHED;
    EXPECT_EQ(get_by_vlan(200, 3), -1);
    EXPECT_EQ(value, UNTOUCHED);
}

TEST_F(PropertyRead, ByVlanUnreadableIdsZeroTheValue)
{
    for (const std::uint32_t id : UNREADABLE) {
        value = UNTOUCHED;
        EXPECT_EQ(get_by_vlan(100, id), -1) << id;
        EXPECT_EQ(value, 0U) << id;
    }
    expect_messages({});
}

TEST_F(PropertyRead, ByVlanMissingPropertiesZeroTheValue)
{
    lif->without_properties();
    EXPECT_EQ(get_by_vlan(100, 1), -1);
    EXPECT_EQ(value, 0U);
    expect_messages({});
}

} // namespace rtifhal_test::property_read
