/*
 * message_order_station_test.cpp: where the messages of SVIs, virtual MACs and
 * private-VLAN pairs stand among their calls.
 *
 * message_order_test.cpp has those of changes and of the restore. The tests of
 * each operation have its calls and its messages as lists of their own.
 */
#include "support/pvlan_roads.h"
#include "support/woven.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::message_order_station
{

namespace
{

using namespace pvlan_road;
using fhrp_road::OTHER;
using fhrp_road::VMAC;

const std::string CALL_UNIT = "rtifhal_get_bcm_unit";
const std::string CALL_FLUSH = "fwmpd_trident_batch_flush";
const std::string CALL_TYPE = "if_index_get_type";
const std::string CALL_SUB = "if_index_get_sub_intf";
const std::string CALL_PORT = "if_index_get_port";
const std::string CALL_LIF = "l3lif_find_lif_from_ifindex";
const std::string CALL_CACHE = "fwmpd_bcm_vlan_control_vlan_get_from_cache";
const std::string CALL_SET = "fwmpd_bcm_vlan_control_vlan_set";
const std::string CALL_SET_DIRECTLY = "bcm_vlan_control_vlan_set";
const std::string CALL_BLOCKS = "fwmpd_bcm_vlan_block_set";
const std::string CALL_READ_INTERFACE = "bcm_l3_intf_get";
const std::string CALL_WRITE_INTERFACE = "rtifhal_bcm_l3_intf_create";
const std::string CALL_DELETE_INTERFACE = "rtifhal_bcm_l3_intf_delete";
const std::string CALL_INGRESS = "bcm_l3_ingress_t_init";
const std::string CALL_FIND_VLAN = "FWM_FWIM_FIND_VLAN";
const std::string CALL_PVLAN = "FWM_FWIM_VLAN_PVLAN";
const std::string CALL_IS_PRIMARY = "FWM_FWIM_PVLAN_IS_PRIMARY";
const std::string CALL_WALK = "g_hash_table_foreach";
const std::string CALL_STORE_VLAN = "fwmpd_trident_vlan_bvcvt_store";
const std::string CALL_FAST = "sysmgr_is_fastboot_restart";
const std::string CALL_INIT = "bcm_l2_station_t_init";
const std::string CALL_ADD = "bcm_l2_station_add";
const std::string CALL_GET = "bcm_l2_station_get";
const std::string CALL_DELETE = "bcm_l2_station_delete";
const std::string CALL_FIND = "avl_find";
const std::string CALL_FIND_NEXT = "avl_find_next";
const std::string CALL_INSERT = "avl_insert";
const std::string CALL_REMOVE = "avl_delete";
const std::string CALL_FIRST_NODE = "avl_get_first";
const std::string CALL_NEXT_NODE = "avl_get_next";
const std::string CALL_NEW_TABLE = "g_hash_table_new";
const std::string CALL_INTO_TABLE = "g_hash_table_insert";
const std::string CALL_OUT_OF_TABLE = "g_hash_table_remove";
const std::string CALL_MALLOC = "malloc";
const std::string CALL_FREE = "free";

const Calls STATION_CALLS = {
    CALL_UNIT,  CALL_FLUSH,  CALL_TYPE,   CALL_SUB,    CALL_PORT,       CALL_LIF, CALL_FIND_VLAN,
    CALL_PVLAN, CALL_WALK,   CALL_INIT,   CALL_ADD,    CALL_IS_PRIMARY, CALL_GET, CALL_DELETE,
    CALL_FIND,  CALL_INSERT, CALL_REMOVE, CALL_MALLOC, CALL_FREE,
};
const Calls PAIR_CALLS = {
    CALL_UNIT,       CALL_FLUSH,  CALL_MALLOC,     CALL_FREE,      CALL_NEW_TABLE,
    CALL_INTO_TABLE, CALL_INIT,   CALL_FIRST_NODE, CALL_NEXT_NODE, CALL_OUT_OF_TABLE,
    CALL_ADD,        CALL_DELETE, CALL_CACHE,      CALL_INSERT,
};
const Calls RECORD_CALLS = {CALL_UNIT, CALL_FLUSH, CALL_CACHE, CALL_SET, CALL_SET_DIRECTLY};

/** "02:11:5e:33:01:08" in a message of a station. */
std::string at_station(int id)
{
    return fmt::format("104 fhrp mac ({}) @ idx:{}\n", VMAC.text(), id);
}

class MessageOrderOfSviRoad : public PvlanTest
{
};

class MessageOrderOfVirtualMac : public PvlanTest
{
};

class MessageOrderOfPair : public PvlanTest
{
};

} // namespace

TEST_F(MessageOrderOfSviRoad, AddTellsTheFlagsAroundTheirWriteAndEachRefusalBehindItsCall)
{
    announced({{PRIMARY, SECONDARY}});
    fail(CALL_SET, -4);
    fail(CALL_BLOCKS, -4);
    fail(CALL_WRITE_INTERFACE, -4);
    EXPECT_EQ(add(), -1);
    EXPECT_EQ(
        woven(sw, {svi_road::ADD_SVI, svi_road::SVI_ADD, svi_road::MIRROR},
              {CALL_CACHE, CALL_SET, CALL_BLOCKS, CALL_WRITE_INTERFACE, CALL_INGRESS,
               CALL_FIND_VLAN, CALL_PVLAN, CALL_IS_PRIMARY, CALL_WALK, CALL_STORE_VLAN, CALL_FAST}),
        (Calls{"104 rtifhal_trident_add_svi: L3LIF: 0x30000064, 0, 1\n",
               "104 Begin rtifhal_trident_svi_add for vlan 100\n",
               CALL_CACHE,
               "104 Get To Sup Flags(100) : 0x238\n",
               CALL_SET,
               fmt::format("102 bcm_vlan_control_vlan_set(100) failed: {}\n", _shr_errmsg[4]),
               "104 Set To Sup Flags(100) : 0x400230\n",
               "104  Remove CPU to Brdcast flood block filter for vlan 100 \n",
               CALL_BLOCKS,
               fmt::format("102 vlan_block_set() failed: {}\n", _shr_errmsg[1]),
               CALL_WRITE_INTERFACE,
               "102 itf create(100) failed\n",
               CALL_INGRESS,
               "102 ing create(100) failed\n",
               "104 Vlan 100\n",
               CALL_FIND_VLAN,
               CALL_PVLAN,
               CALL_IS_PRIMARY,
               CALL_WALK,
               CALL_CACHE,
               CALL_CACHE,
               CALL_SET,
               CALL_STORE_VLAN,
               CALL_FAST,
               "102 \nrtifhal_trident_add_svi: L3LIF failed to add itf: 0x30000064, 0, 1\n"}));
}

TEST_F(MessageOrderOfSviRoad, DeleteTellsTheFlagsAroundTheirWriteAndLooksForSecondariesBehindIt)
{
    is_up();
    vlan_is(PRIMARY, fhrp_road::Role::plain);
    fail(CALL_BLOCKS, -4);
    EXPECT_EQ(del(), 0);
    EXPECT_EQ(woven(sw, {svi_road::DEL_SVI, svi_road::SVI_DEL, svi_road::MIRROR},
                    {CALL_TYPE, CALL_CACHE, CALL_SET, CALL_BLOCKS, CALL_READ_INTERFACE,
                     CALL_DELETE_INTERFACE, CALL_FIND_VLAN, CALL_PVLAN, CALL_STORE_VLAN}),
              (Calls{"104 \nrtifhal_trident_del_svi: L3LIF: 0x30000064, 0\n",
                     CALL_TYPE,
                     CALL_TYPE,
                     CALL_TYPE,
                     CALL_CACHE,
                     CALL_SET,
                     CALL_STORE_VLAN,
                     CALL_READ_INTERFACE,
                     CALL_CACHE,
                     "104 Get To Sup Flags(100) : 400230\n",
                     CALL_SET,
                     "104 Set To Sup Flags(100) : 400238\n",
                     "104 Add CPU to Brdcast flood block filter for vlan 100\n",
                     CALL_BLOCKS,
                     fmt::format("102 vlan_block_set() failed: {}\n", _shr_errmsg[1]),
                     "104 Vlan 100\n",
                     CALL_FIND_VLAN,
                     CALL_PVLAN,
                     "104 Vlan 100 is not primary\n",
                     CALL_DELETE_INTERFACE,
                     CALL_STORE_VLAN}));
}

TEST_F(MessageOrderOfVirtualMac, AddOnAPrimaryThatTheChipLostTellsEachStepInItsPlace)
{
    announced({{PRIMARY, SECONDARY}});
    virtual_macs({VMAC});
    lost(2);
    start();
    EXPECT_EQ(FhrpTest::add(*lif), 0);
    EXPECT_EQ(woven(sw, {fhrp_road::ADD, fhrp_road::SECONDARY_ADD}, STATION_CALLS),
              (Calls{CALL_UNIT,
                     CALL_LIF,
                     CALL_TYPE,
                     CALL_INIT,
                     CALL_FIND,
                     "104 (02:11:5e:33:01:08) already present in hash table on intf 0x30000064\n",
                     CALL_GET,
                     "104 MAC not present in HW program it\n",
                     CALL_SUB,
                     "104 SVI vlan 100\n",
                     CALL_FIND_VLAN,
                     CALL_PVLAN,
                     CALL_IS_PRIMARY,
                     CALL_WALK,
                     CALL_UNIT,
                     "104 pvlan_svi_map primVLAN 100\n",
                     CALL_INIT,
                     "104  pvlan_svi_map SecVLAN 101\n",
                     CALL_FLUSH,
                     CALL_ADD,
                     at_station(2),
                     CALL_MALLOC,
                     CALL_INSERT,
                     "104 Failed to save SecVLAN macaddr info in avl tree\n",
                     CALL_FLUSH,
                     CALL_ADD,
                     at_station(3),
                     CALL_MALLOC,
                     CALL_INSERT,
                     "104 Failed to save addr info in hash table\n"}));
}

TEST_F(MessageOrderOfVirtualMac, AddOnASubinterfaceTellsItsVlanBeforeAndItsPortBehindTheLookUp)
{
    Lif &sub = known(subinterface(known_port(), 10));
    start();
    EXPECT_EQ(FhrpTest::add(sub), 0);
    const Calls order = woven(sw, fhrp_road::ADD, STATION_CALLS);
    EXPECT_EQ(order, (Calls{CALL_UNIT, CALL_LIF, CALL_TYPE, CALL_INIT, CALL_SUB,
                            "104 Sub interface vlan 0\n", CALL_TYPE, CALL_PORT,
                            "104 Sub interface port 5\n", CALL_FLUSH, CALL_ADD, at_station(1),
                            CALL_MALLOC, CALL_INSERT}));
}

TEST_F(MessageOrderOfVirtualMac, AddOnAPortTellsItBehindTheLookUp)
{
    const Lif &routed = known_port();
    EXPECT_EQ(FhrpTest::add(routed), 0);
    EXPECT_EQ(woven(sw, fhrp_road::ADD, STATION_CALLS),
              (Calls{CALL_UNIT, CALL_LIF, CALL_TYPE, CALL_INIT, CALL_SUB, CALL_TYPE, CALL_PORT,
                     "104 L3 physical interface port 5\n", CALL_FLUSH, CALL_ADD, at_station(1),
                     CALL_MALLOC, CALL_INSERT}));
}

TEST_F(MessageOrderOfVirtualMac, DeleteTellsEachRefusalBeforeTheEntryGoes)
{
    announced({{PRIMARY, SECONDARY}});
    virtual_macs({VMAC});
    lost(1);
    lost(2);
    EXPECT_EQ(FhrpTest::del(*lif), -1);
    const std::string lost_text = _shr_errmsg[7];
    EXPECT_EQ(woven(sw, {fhrp_road::DEL, fhrp_road::SECONDARY_DEL}, STATION_CALLS),
              (Calls{CALL_UNIT,
                     CALL_TYPE,
                     CALL_LIF,
                     CALL_FIND,
                     CALL_FIND_VLAN,
                     CALL_PVLAN,
                     CALL_IS_PRIMARY,
                     CALL_WALK,
                     CALL_UNIT,
                     "104 svi_map PrimVLAN 100\n",
                     CALL_FIND,
                     "104 SecVLAN 101\n",
                     CALL_FLUSH,
                     CALL_DELETE,
                     "102 Sec VLAN l2_station del failed(" + lost_text + ") for idx:1\n",
                     CALL_FIND,
                     CALL_REMOVE,
                     CALL_FREE,
                     CALL_FLUSH,
                     CALL_DELETE,
                     "102 l2_station_delete failed(" + lost_text + ") for idx:2\n",
                     CALL_FIND,
                     CALL_REMOVE,
                     CALL_FREE}));
}

TEST_F(MessageOrderOfVirtualMac, ListingIsToldAtItsBeginAndItsEnd)
{
    virtual_macs({VMAC});
    start();
    int count = 1;
    EXPECT_EQ(rtifhal_trident_fhrp_mac_getnext(0, 7, VMAC.bytes, 0, 0, &count, nullptr), 0);
    EXPECT_EQ(woven(sw, fhrp_road::LIST, {CALL_FIND_NEXT}),
              (Calls{"104 invoked with vlan 7, filter_mac 0", CALL_FIND_NEXT, CALL_FIND_NEXT,
                     "104 returning with total 1 entries"}));
}

TEST_F(MessageOrderOfPair, NewOneTellsEachMacBeforeItsStation)
{
    virtual_macs({VMAC, OTHER});
    primary_has_an_svi();
    fail(CALL_ADD, -6, 2);
    fail(CALL_INSERT, -8);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(woven(sw, {UPDATE, INSERT}, PAIR_CALLS),
              (Calls{"104 Primary 100, Seconday 101\n",
                     CALL_UNIT,
                     CALL_MALLOC,
                     CALL_NEW_TABLE,
                     "104 hash_table new \n",
                     CALL_INTO_TABLE,
                     CALL_FIRST_NODE,
                     "104 Prim VLAN 100 match in fhrp_mac_hash \n",
                     CALL_INIT,
                     CALL_FLUSH,
                     CALL_ADD,
                     at_station(3),
                     CALL_MALLOC,
                     CALL_INSERT,
                     "104 Failed to save Sec VLAN 101  addr info in avltree\n",
                     CALL_NEXT_NODE,
                     "104 Prim VLAN 100 match in fhrp_mac_hash \n",
                     CALL_INIT,
                     CALL_FLUSH,
                     CALL_ADD,
                     fmt::format("102 fhrp mac ({}) failed: {}\n", OTHER.text(), _shr_errmsg[6]),
                     CALL_NEXT_NODE,
                     CALL_CACHE,
                     CALL_CACHE,
                     CALL_UNIT,
                     CALL_FLUSH}));
}

TEST_F(MessageOrderOfPair, OneWithoutATableTellsItBeforeItsRecordGoes)
{
    fail(CALL_NEW_TABLE, -1);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(woven(sw, {UPDATE, INSERT}, PAIR_CALLS),
              (Calls{"104 Primary 100, Seconday 101\n", CALL_UNIT, CALL_MALLOC, CALL_NEW_TABLE,
                     "104 hash_table new \n", "104 hash_table doesnt exist \n", CALL_FREE}));
}

TEST_F(MessageOrderOfPair, GoneOneTellsEachMacBeforeItsStationGoes)
{
    virtual_macs({VMAC});
    announced({{PRIMARY, SECONDARY}});
    lost(2);
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(
        woven(sw, {UPDATE, REMOVE}, PAIR_CALLS),
        (Calls{"104 Primary 100, Seconday 101\n", CALL_UNIT, CALL_OUT_OF_TABLE, CALL_FIRST_NODE,
               CALL_NEXT_NODE, CALL_NEXT_NODE, "104 Sec VLAN 101 match in fhrp_mac_hash  \n",
               CALL_FLUSH, CALL_DELETE,
               fmt::format("102 SecVLAN l2_station_delete failed({}) for idx:2\n", _shr_errmsg[7]),
               CALL_FREE}));
}

TEST_F(MessageOrderOfPair, SecondaryTellsItsUsesBehindTheCacheAndTheChangeBeforeItsWrite)
{
    cached(SECONDARY).vc_flags = 0;
    fail(CALL_SET, -4);
    fail(CALL_SET_DIRECTLY, -4);
    EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, 0), 0);
    EXPECT_EQ(
        woven(sw, {SECONDARY_UPDATE, ROUTING}, RECORD_CALLS),
        (Calls{CALL_CACHE, CALL_CACHE, CALL_UNIT,
               "104 ------------------------------------vlan 101\n", CALL_CACHE,
               "104 SI = 0, svi = 0, l2_vlan = 1\n", "104 Disabling v4/v6 routing on vlan 101\n",
               CALL_SET, "102 bcm_vlan_control_vlan_set failed for VLAN: 101\n", CALL_SET,
               CALL_FLUSH, CALL_SET_DIRECTLY,
               fmt::format("102 bcm_vlan_control_vlan_set(101) failed: {}\n", _shr_errmsg[4])}));
}

TEST_F(MessageOrderOfPair, SecondaryOfSubinterfacesTellsTheChangeBeforeItsWriteAndFlush)
{
    rtifhal_vlan_type_count[SECONDARY].subint_count = 1;
    fail(CALL_SET, -4, 2);
    EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, 0), -1);
    EXPECT_EQ(
        woven(sw, {SECONDARY_UPDATE, ROUTING}, RECORD_CALLS),
        (Calls{CALL_CACHE, CALL_CACHE, CALL_UNIT,
               "104 ------------------------------------vlan 101\n", CALL_CACHE,
               "104 SI = 1, svi = 0, l2_vlan = 1\n", "104 Enabling v4/v6 routing on vlan 101\n",
               CALL_SET, CALL_FLUSH, CALL_SET, "102 bcm_vlan_control_vlan_set(101) failed\n"}));
}

} // namespace rtifhal_test::message_order_station
