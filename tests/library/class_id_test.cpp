/*
 * class_id_test.cpp: the class of an interface: the value 64, the value 128 of
 * its property and the bits of its label.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

namespace rtifhal_test::class_id
{

namespace
{

constexpr const char *CLASS = "rtifhal_get_class_id";

class ClassId : public LibraryTest
{
protected:
    std::unique_ptr<Lif> lif = port(5);
};

} // namespace

TEST_F(ClassId, LabelAndHighBitAreAddedTo64)
{
    const struct {
        std::uint16_t label;
        std::uint32_t high_bit;
        std::uint32_t expected;
    } rows[] = {
        {0, 0, 64},          {0, 1, 192},         {5, 0, 69},        {64, 0, 64},
        {192, 0, 192},       {128, 1, 192},       {0x123, 1, 0x1E3}, {0x123, 0, 0x163},
        {0xFFFF, 0, 0xFFFF}, {0x8000, 2, 0x80C0},
    };
    lif->with_record(7);
    for (const auto &row : rows) {
        lif->record()->acl_qos_label_ingress = row.label;
        lif->properties.class_high_bit = row.high_bit;
        EXPECT_EQ(rtifhal_get_class_id(lif->get()), row.expected) << row.label;
    }
}

TEST_F(ClassId, InterfaceWithARecordPrintsItsLabel)
{
    lif->with_record(7).record()->acl_qos_label_ingress = 291;
    start();
    rtifhal_get_class_id(lif->get());
    expect_calls({});
    expect_messages({trace(CLASS, " Return 64 | l3_pd->acl_qos_label_ingress(291)\n")});
}

TEST_F(ClassId, InterfaceWithoutContextOrRecordHas64)
{
    EXPECT_EQ(rtifhal_get_class_id(lif->get()), 64U);
    EXPECT_EQ(rtifhal_get_class_id(lif->with_bare_context().get()), 64U);
    expect_messages({trace(CLASS, " Return 64\n"), trace(CLASS, " Return 64\n")});
}

TEST_F(ClassId, HighBitCountsWithoutARecordToo)
{
    lif->properties.class_high_bit = 1;
    EXPECT_EQ(rtifhal_get_class_id(lif->get()), 192U);
}

TEST_F(ClassId, InterfaceWithoutPropertiesHasNoHighBit)
{
    lif->with_record(7).without_properties().record()->acl_qos_label_ingress = 3;
    EXPECT_EQ(rtifhal_get_class_id(lif->get()), 67U);
}

TEST_F(ClassId, PendingLabelDoesNotCount)
{
    lif->with_record(7);
    lif->properties.acl_qos_label_pending = 5;
    EXPECT_EQ(rtifhal_get_class_id(lif->get()), 64U);
}

TEST_F(ClassId, SubinterfaceOfAPortChannelHasItsOwnClassHere)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    main->with_record(8).record()->acl_qos_label_ingress = 1;
    sub->with_record(9).record()->acl_qos_label_ingress = 2;
    EXPECT_EQ(rtifhal_get_class_id(sub->get()), 66U);
}

TEST_F(ClassId, NullInterfaceHas64)
{
    EXPECT_EQ(rtifhal_get_class_id(nullptr), 64U);
}

TEST_F(ClassId, ClassOfAKnownIfindexIsStored)
{
    lif->with_record(7).record()->acl_qos_label_ingress = 0x123;
    sw.directory.add(lif->get());
    std::uint32_t class_id = 0;
    EXPECT_EQ(rtifhal_get_class_id_ifindex(lif->lif.ifindex, &class_id), 0);
    EXPECT_EQ(class_id, 0x163U);
    expect_calls({"l3lif_find_lif_from_ifindex(" + lif->index() + ") = record"});
    expect_messages({trace(CLASS, " Return 64 | l3_pd->acl_qos_label_ingress(291)\n")});
}

TEST_F(ClassId, UnknownIfindexLeavesTheResultAlone)
{
    std::uint32_t class_id = 17;
    EXPECT_EQ(rtifhal_get_class_id_ifindex(lif->lif.ifindex, &class_id), -1);
    EXPECT_EQ(class_id, 17U);
    expect_calls({"l3lif_find_lif_from_ifindex(" + lif->index() + ") = null"});
    expect_messages({trace("rtifhal_get_class_id_ifindex",
                           "Failed to get l3lif for ifindex " + lif->decimal() + "\n")});
}

} // namespace rtifhal_test::class_id
