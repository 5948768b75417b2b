/*
 * record_layout_test.cpp: the layout of the records that the library shares
 * with the layer above, which was built apart from it.
 */
#include "rtifhal_types.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace rtifhal_test::record_layout
{

namespace
{

using Offsets = std::vector<std::size_t>;

} // namespace

TEST(RecordLayout, Interface)
{
    const Offsets offsets = {offsetof(l3lif, ifindex),
                             offsetof(l3lif, lif_state),
                             offsetof(l3lif, mac),
                             offsetof(l3lif, int_vlan),
                             offsetof(l3lif, vlan),
                             offsetof(l3lif, si_encap_vlan),
                             offsetof(l3lif, tid),
                             offsetof(l3lif, subint_tree),
                             offsetof(l3lif, pc_member_tree),
                             offsetof(l3lif, main_l3lif),
                             offsetof(l3lif, l3lif_pi_ctxt),
                             offsetof(l3lif, l3lif_pd_ctxt)};
    EXPECT_EQ(offsets, (Offsets{0, 4, 8, 14, 16, 18, 20, 24, 32, 40, 48, 56}));
    EXPECT_EQ(sizeof(l3lif), 64U);
}

TEST(RecordLayout, Properties)
{
    using Record = struct l3lif_pi_ctxt;
    const Offsets offsets = {offsetof(Record, ipv4_en),
                             offsetof(Record, ipv4_mc_en),
                             offsetof(Record, ipv6_en),
                             offsetof(Record, l3_prop_word_7),
                             offsetof(Record, urpf_mode),
                             offsetof(Record, vrf),
                             offsetof(Record, ipv6_vrf),
                             offsetof(Record, mtu),
                             offsetof(Record, ingress_flag_word),
                             offsetof(Record, l3_prop_word_8),
                             offsetof(Record, acl_qos_label_pending),
                             offsetof(Record, class_high_bit),
                             offsetof(Record, mpls_en)};
    EXPECT_EQ(offsets, (Offsets{0, 4, 8, 12, 16, 18, 20, 22, 24, 28, 32, 36, 40}));
    EXPECT_EQ(sizeof(Record), 44U);
}

TEST(RecordLayout, ContextAndHardwareState)
{
    using Context = struct l3lif_pd_ctxt;
    using State = struct l3_pd;
    EXPECT_EQ(offsetof(Context, l3_pd), sizeof(void *));
    EXPECT_EQ(sizeof(Context), 2 * sizeof(void *));
    const Offsets offsets = {offsetof(State, brcm_prog_complete), offsetof(State, l3intf_id),
                             offsetof(State, prev_l3_if_index),
                             offsetof(State, acl_qos_label_ingress)};
    EXPECT_EQ(offsets, (Offsets{0, 4, 6, 8}));
    EXPECT_EQ(sizeof(State), 12U);
}

TEST(RecordLayout, NumberTables)
{
    EXPECT_EQ(offsetof(l3iif_bitmap_t, bits), 4U);
    EXPECT_EQ(sizeof(l3iif_bitmap_t), 4U + 1024U);
}

} // namespace rtifhal_test::record_layout
