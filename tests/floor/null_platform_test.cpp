/*
 * null_platform_test.cpp: the platform of the benchmarks keeps what the library reads back, and
 * counts what it is called for.
 */
#include "calls.h"
#include "null_platform.h"

#include <rtifhal_trident.h>

#include <gtest/gtest.h>

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/l2.h>
#include <services/avl.h>
#include <services/if_index.h>

#include <array>
#include <cstdint>
#include <string>

namespace
{

using null_platform::Call;
using null_platform::Chip;

std::uint64_t count_of(Call call)
{
    return null_platform::call_counts[static_cast<std::size_t>(call)];
}

int by_number(const void *a, const void *b)
{
    return *static_cast<const int *>(a) - *static_cast<const int *>(b);
}

class NullPlatform : public ::testing::Test
{
protected:
    NullPlatform() { null_platform::reset(Chip::trident); }
};

TEST_F(NullPlatform, InterfaceIsReadAsItWasCreatedUntilItIsDeleted)
{
    bcm_l3_intf_t made = {};
    made.l3a_intf_id = 7;
    made.l3a_vid = 4094;
    made.l3a_mtu = 9100;
    ASSERT_EQ(rtifhal_bcm_l3_intf_create(0, &made), 0);
    bcm_l3_intf_t seen = {};
    seen.l3a_intf_id = 7;
    ASSERT_EQ(bcm_l3_intf_get(0, &seen), 0);
    EXPECT_EQ(seen.l3a_mtu, 9100);
    ASSERT_EQ(rtifhal_bcm_l3_intf_delete(0, &made), 0);
    EXPECT_EQ(bcm_l3_intf_get(0, &seen), -7);
}

TEST_F(NullPlatform, DirectWriteOfVlanControlsPassesTheCacheBy)
{
    bcm_vlan_control_vlan_t control = {};
    control.vc_vrf = 3;
    (void)bcm_vlan_control_vlan_set(0, 100, control);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(100)->vc_vrf, 0U);
    (void)fwmpd_bcm_vlan_control_vlan_set(0, 100, control);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(100)->vc_vrf, 3U);
}

TEST_F(NullPlatform, LowestStationIdIsGivenAgain)
{
    bcm_l2_station_t station = {};
    int first = 0;
    int second = 0;
    ASSERT_EQ(bcm_l2_station_add(0, &first, &station), 0);
    ASSERT_EQ(bcm_l2_station_add(0, &second, &station), 0);
    (void)bcm_l2_station_delete(0, first);
    (void)bcm_l2_station_delete(0, second);
    int again = 0;
    ASSERT_EQ(bcm_l2_station_add(0, &again, &station), 0);
    EXPECT_EQ(again, first);
    EXPECT_NE(second, first);
}

TEST_F(NullPlatform, TreeKeepsItsOrder)
{
    std::array<int, 5> numbers = {40, 10, 30, 20, 50};
    avl_tree_t *const tree = avl_create(by_number, 0);
    for (int &number : numbers) {
        ASSERT_EQ(avl_insert(tree, &number), 0);
    }
    EXPECT_NE(avl_insert(tree, &numbers[0]), 0);
    EXPECT_EQ(avl_delete(tree, &numbers[2]), &numbers[2]);
    EXPECT_EQ(tree->count, 4U);
    std::string walked;
    for (avl_node_t *node = avl_get_first(tree); node != nullptr; node = avl_get_next(tree, node)) {
        walked += std::to_string(*static_cast<const int *>(node->payload)) + " ";
    }
    EXPECT_EQ(walked, "10 20 40 50 ");
    const int between = 25;
    EXPECT_EQ(avl_find_next(tree, &between), &numbers[0]);
    EXPECT_EQ(avl_find(tree, &between), nullptr);
}

TEST_F(NullPlatform, IfindexesTellTheirKindPortAndNumber)
{
    const std::uint32_t sub =
        null_platform::subinterface_ifindex(null_platform::port_ifindex(9), 45);
    std::uint8_t type = 0;
    std::uint8_t port = 0;
    std::uint16_t number = 0;
    EXPECT_EQ(if_index_get_type(sub, &type), 0);
    EXPECT_EQ(type, 26);
    EXPECT_EQ(if_index_get_port(sub, &port), 0);
    EXPECT_EQ(port, 9);
    EXPECT_EQ(if_index_get_sub_intf(sub, &number), 0);
    EXPECT_EQ(number, 45);
    EXPECT_EQ(if_index_get_mainintf_from_subintf(sub), null_platform::port_ifindex(9));
    EXPECT_EQ(if_index_is_physical_interface(sub), 0);
    EXPECT_NE(if_index_get_type(0, &type), 0);
}

TEST_F(NullPlatform, PortComesUpAndIsFoundAndCounted)
{
    l3lif_pi_ctxt properties = {};
    properties.ipv4_en = 1;
    l3lif port = {};
    port.ifindex = null_platform::port_ifindex(7);
    port.l3lif_pi_ctxt = &properties;
    null_platform::make_known(port);
    ASSERT_EQ(rtifhal_trident_add_l3port(&port, 1), 0);
    EXPECT_EQ(l3lif_find_lif_from_ifindex(port.ifindex), &port);
    EXPECT_EQ(count_of(Call::rtifhal_bcm_l3_intf_create), 1U);
    EXPECT_EQ(count_of(Call::rtifhal_bcm_l3_ingress_create), 1U);
    EXPECT_GT(null_platform::calls(), 100U);
    ASSERT_NE(port.l3lif_pd_ctxt, nullptr);
    EXPECT_NE(rtifhal_bcm_l3_ingress_get_from_cache(port.l3lif_pd_ctxt->l3_pd->l3intf_id), nullptr);
    EXPECT_EQ(rtifhal_trident_del_l3port(&port, 1), 0);
    EXPECT_EQ(port.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(count_of(Call::mtrack_free), 2U);
    null_platform::forget(port);
    EXPECT_EQ(l3lif_find_lif_from_ifindex(port.ifindex), nullptr);
}

} // namespace
