/*
 * message_order_test.cpp: where the messages of an operation stand among its
 * calls. What a trace prints is what stood there before the next call, and a
 * report stands right behind the call that it tells of.
 *
 * The other tests have the calls and the messages each as a list of its own.
 */
#include "support/property_port_roads.h"
#include "support/restore_roads.h"
#include "support/setter_roads.h"
#include "support/woven.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::message_order
{

namespace
{

using setter_road::FROM_CACHE;
using setter_road::READ_INTERFACE;
using setter_road::SET_SVI;
using setter_road::VLAN_FROM_CACHE;
using setter_road::WRITE_INGRESS;
using setter_road::WRITE_INTERFACE;
using setter_road::WRITE_VLAN;
using setter_road::WRITE_VLAN_DIRECTLY;

const std::string FLUSH = "fwmpd_trident_batch_flush";
const std::string UNIT = "rtifhal_get_bcm_unit";
const std::string TYPE = "if_index_get_type";
const std::string PORT_OF = "if_index_get_port";
const std::string CONTROL = "fwmpd_bcm_port_control_set";
const std::string FIRST_NODE = "avl_get_first";
const std::string NEXT_NODE = "avl_get_next";
const std::string CACHE_PORT = "fwmpd_bcm_set_vlan_pbmp";

class MessageOrderOfPort : public property_road::PortTest
{
};

class MessageOrderOfPortChannel : public property_road::ChannelTest
{
};

class MessageOrderOfSvi : public setter_road::SviSetterTest
{
};

class MessageOrderOfTunnel : public LibraryTest
{
};

class MessageOrderOfRestore : public restore_road::RestoreTest
{
protected:
    MessageOrderOfRestore() { globals_restored(); }
};

} // namespace

TEST_F(MessageOrderOfPort, EntryComesFirstAndEachReportBehindItsRefusal)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(
        woven(sw, property_road::SET_PORT,
              {UNIT, TYPE, PORT_OF, FLUSH, READ_INTERFACE, WRITE_INTERFACE, CONTROL, FROM_CACHE}),
        (Calls{"104  Entry: - \n",
               UNIT,
               TYPE,
               PORT_OF,
               FLUSH,
               FLUSH,
               READ_INTERFACE,
               WRITE_INTERFACE,
               "102 int create(3) failed\n",
               TYPE,
               PORT_OF,
               CONTROL,
               CONTROL,
               CONTROL,
               CONTROL,
               CONTROL,
               UNIT,
               TYPE,
               FROM_CACHE,
               "102 ing create(3) failed\n"}));
}

TEST_F(MessageOrderOfPortChannel, MemberIsSaidBetweenItsLookUpAndItsControls)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    fail_when(PORT_OF, second->index(), -1);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(
        woven(
            sw, property_road::SET_CHANNEL,
            {READ_INTERFACE, WRITE_INTERFACE, FROM_CACHE, FIRST_NODE, NEXT_NODE, PORT_OF, CONTROL}),
        (Calls{
            READ_INTERFACE, WRITE_INTERFACE, "102 int create(3) failed\n", FROM_CACHE,
            "102 ing create(3) failed\n", FIRST_NODE, NEXT_NODE, PORT_OF, "104  L3PC member - 5\n",
            CONTROL, CONTROL, CONTROL, CONTROL, CONTROL, NEXT_NODE, PORT_OF,
            fmt::format("102 unable to get itf({}) in l3_property_l3pc set\n", main->decimal())}));
}

TEST_F(MessageOrderOfSvi, FlagsAreSaidBeforeTheChangeBeforeTheWriteAndBehindIt)
{
    fail(WRITE_VLAN_DIRECTLY, -4);
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    lif->lif.int_vlan = 200;
    switched_vlan(200);
    start();
    EXPECT_EQ(set(19, 77), -1);
    EXPECT_EQ(woven(sw, SET_SVI,
                    {FLUSH, READ_INTERFACE, VLAN_FROM_CACHE, WRITE_VLAN, WRITE_VLAN_DIRECTLY,
                     WRITE_INTERFACE, FROM_CACHE}),
              (Calls{FLUSH, READ_INTERFACE, "102 bcm_l3_intf_get(3) failed: 200\n", VLAN_FROM_CACHE,
                     "104 Get Miss Sup Flags(200) : 238 type = 19\n", "104  intf_id 3 unknown 77\n",
                     "104 Set MIss To Sup(200) : 238\n", WRITE_VLAN,
                     "104 Set Miss Sup Flags(200) : 238\n", FLUSH, WRITE_VLAN_DIRECTLY,
                     fmt::format("102 bcm_vlan_control_vlan_set(200) failed: {}\n", _shr_errmsg[4]),
                     WRITE_INTERFACE, "102 int create(3) failed\n", FROM_CACHE,
                     "102 ing create(200) failed\n"}));
}

TEST_F(MessageOrderOfTunnel, EntryComesFirstAndEachReportBehindItsRefusal)
{
    const auto lif = tunnel(1);
    l3iif_table_init();
    ASSERT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 0);
    start();
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_l3tun(lif->get()), 0);
    EXPECT_EQ(
        woven(sw, "rtifhal_set_kelvo_l3_property_l3tun",
              {UNIT, FLUSH, READ_INTERFACE, WRITE_INTERFACE, FROM_CACHE}),
        (Calls{"104  Entry: - \n", UNIT, FLUSH, FLUSH, READ_INTERFACE, WRITE_INTERFACE,
               "102 int create(3) failed\n", UNIT, FROM_CACHE, "102 ing create(3) failed\n"}));
}

TEST_F(MessageOrderOfPort, DisableSaysTheNumberBeforeItsReadAndTheObjectBehindIt)
{
    const std::string find = "l3lif_find_lif_from_ifindex";
    const std::string read = "bcm_l3_ingress_get";
    lif->lif.int_vlan = 0;
    lif->properties.mpls_en = 1;
    sw.directory.add(lif->get());
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(rtifhal_trident_l3_disable(lif->lif.ifindex), -6);
    // The second unit is asked for by the step that takes MPLS off.
    EXPECT_EQ(
        woven(sw, "rtifhal_trident_l3_disable",
              {find, "bcm_l3_ingress_t_init", UNIT, read, WRITE_INGRESS}),
        (Calls{find, "bcm_l3_ingress_t_init", UNIT,
               "104 l3_if_index = 0x3 ipmc_intf_id = 0x0 iif = 0x0\n", read,
               "104 ipmc_intf_id = 0 class 40 flags = 2\n", UNIT,
               fmt::format("102 vlan control set failure for {} err: {}\n", lif->hex(),
                           _shr_errmsg[1]),
               WRITE_INGRESS,
               fmt::format("102 bcm_l3_ing_create({}) failed: {}\n", lif->hex(), _shr_errmsg[6])}));
}

TEST_F(MessageOrderOfRestore, PortIsSaidBetweenItsLookUpAndTheCache)
{
    const auto lif = port(5);
    EXPECT_EQ(restore(lif->with_record(7)), 0);
    EXPECT_EQ(woven(sw, restore_road::RESTORE, {TYPE, PORT_OF, CACHE_PORT}),
              (Calls{fmt::format("104 intf ({}) si:0 int-vlan:0 \n", lif->index()), TYPE, TYPE,
                     PORT_OF, "104  vid 4094 bcm 5 index 7\n", CACHE_PORT}));
}

TEST_F(MessageOrderOfRestore, MembersAreEachSaidBetweenTheirLookUpAndTheCache)
{
    const auto lif = port_channel(7);
    const auto first = port(5);
    const auto second = port(9);
    simswitch::services::Tree tree;
    ASSERT_TRUE(tree.insert(first->get()));
    ASSERT_TRUE(tree.insert(second->get()));
    lif->lif.pc_member_tree = tree.get();
    EXPECT_EQ(restore(lif->with_record(7)), 0);
    EXPECT_EQ(woven(sw, restore_road::RESTORE, {TYPE, PORT_OF, CACHE_PORT}),
              (Calls{fmt::format("104 intf ({}) si:0 int-vlan:0 \n", lif->index()), TYPE, PORT_OF,
                     "104  port 5 ", CACHE_PORT, PORT_OF, "104  port 9 ", CACHE_PORT}));
}

TEST_F(MessageOrderOfRestore, UnreadableTypeIsReportedBehindTheLookUp)
{
    const auto lif = port(5);
    fail(TYPE, -1);
    EXPECT_EQ(restore(lif->with_record(7)), 0);
    EXPECT_EQ(woven(sw, restore_road::RESTORE, {TYPE, PORT_OF, CACHE_PORT}),
              (Calls{fmt::format("104 intf ({}) si:0 int-vlan:0 \n", lif->index()), TYPE,
                     fmt::format("102 bcm_l3_ing_create({}) get type failed\n", lif->decimal())}));
}

TEST_F(MessageOrderOfRestore, SourceFileIsThatOfTheStoresUnit)
{
    const std::string unit = "asic/forwarding-sw/l3lif/pd_trident/rtifhal_kelvo_trident";
    const auto tree_less = port_channel(7);
    ASSERT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    fail(TYPE, -1, 3);
    restore(port(5)->with_record(7));
    restore(*port(6));
    restore(*tree_less);
    ASSERT_EQ(sw.trace.messages().size(), 8U);
    for (const auto &message : sw.trace.messages()) {
        const bool of_the_numbers = message.function == "l3iif_table_init";
        EXPECT_EQ(message.file, of_the_numbers ? unit : unit + "_pss") << message.text;
    }
}

} // namespace rtifhal_test::message_order
