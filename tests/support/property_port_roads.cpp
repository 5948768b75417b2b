/*
 * property_port_roads.cpp: see property_port_roads.h.
 */
#include "support/property_port_roads.h"

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::property_road
{

namespace
{

int on(Kind chip)
{
    return chip == Kind::trident2 ? 1 : 0;
}

/** The ingress object is written again, up to the questions of the tie. */
Calls ingress_rewritten(const Lif &lif, int type, const std::string &record, Kind chip)
{
    return {called::ingress_init(),
            called::unit(),
            called::type(lif, type),
            called::from_cache(IIF),
            called::trident2(on(chip)),
            called::write_ingress(record, IIF),
            called::is_tunnel(lif, 0),
            called::is_sub(lif, 0),
            called::is_port_channel(lif, type == 22 ? 1 : 0)};
}

/** The messages of the ingress object up to the tie. */
Messages ingress_rewritten_messages(const Lif &lif)
{
    const std::string create = "rtifhal_l3_ing_create";
    return {
        trace(create, fmt::format("inl3lif->ifindex = {0} l3lif->ifindex = {0}\n", lif.hex())),
        trace(create, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        trace(create, "Get l3_iif for iif 3\n"),
        trace(create, "ipmc_intf_id = 0 class 40 flags = 6\n"),
        trace(create, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
        trace(create, fmt::format(" rtifhal_bcm_l3_ing_create({}) iif 3, vrf 1 rpf 0 class 64\n",
                                  lif.index())),
        trace(create, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                      "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                      "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
    };
}

} // namespace

Properties::operator l3lif_pi_ctxt() const
{
    return {ipv4_en,
            ipv4_mc_en,
            ipv6_en,
            l3_prop_word_7,
            urpf_mode,
            vrf,
            ipv6_vrf,
            mtu,
            ingress_flag_word,
            l3_prop_word_8,
            acl_qos_label_pending,
            class_high_bit,
            mpls_en};
}

std::vector<int> only(const Followed &followed)
{
    std::vector<int> values = ALL_OFF;
    values.at(followed.place) = 1;
    return values;
}

Lif &Subinterfaces::add(Lif &main, unsigned number)
{
    subs_.push_back(subinterface(main, number));
    Lif &sub = *subs_.back();
    sub.properties = {};
    tree_.insert(sub.get());
    file(main);
    return sub;
}

Calls family_controls(const Calls &port_controls)
{
    Calls families = port_controls;
    std::erase_if(families,
                  [](const std::string &call) { return call.find(", 67, ") != std::string::npos; });
    return families;
}

PortTest::PortTest(Kind chip) : LibraryTest({.chip = chip})
{
    l3iif_table_init();
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    sw.end_request();
    start();
}

ChannelTest::ChannelTest(Kind chip) : MemberTest({.chip = chip})
{
    both_up();
    file_member(*first);
    file_member(*second);
}

void ChannelTest::file_member(Lif &member)
{
    EXPECT_TRUE(members.insert(member.get()));
    main->lif.pc_member_tree = members.get();
}

std::string object(const std::string &flags, int tunnel)
{
    return fmt::format(
        "{{flags={} id=3 mac=00:11:22:33:44:55 vid=4094 vrf=1 mtu=1500 ttl=0 tunnel={}}}", flags,
        tunnel);
}

std::string object_read(int tunnel)
{
    return fmt::format("{}(0, 3) = 0 [intf={}]", READ_INTERFACE, object("0x0", tunnel));
}

Calls object_rewritten(const Lif &lif, int tunnel)
{
    return {fmt::format("{}(0, {}) = 0", WRITE_INTERFACE, object("0x140", tunnel)),
            called::store(lif)};
}

Messages object_rewritten_messages(const Lif &lif)
{
    const std::string create = "rtifhal_l3_intf_create";
    return {
        trace(create,
              fmt::format("inl3lif->ifindex = {0} l3lif->ifindex = {0} create = 0\n", lif.hex())),
        trace(create, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace(create, "Reusing l3a_intf_id from existind pd ctxt 3\n"),
        trace(create, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
        trace(create, "Created l3-intf with intf-id as 0x3\n"),
        trace("rtifhal_trident_l3port_add_pss",
              fmt::format("calling rtifhal_pss_l3port_store, lif ({})\n", lif.index())),
    };
}

std::string ingress(Kind chip)
{
    // A Trident2 is told of the family that is off.
    return fmt::format("{{flags={} vrf=1 urpf=0 class=64 ipmc=0 qos=0}}",
                       chip == Kind::trident2 ? "0x486" : "0x6");
}

Calls port_ingress_rewritten(const Lif &lif, const std::string &record, Kind chip)
{
    return join({ingress_rewritten(lif, 26, record, chip), member_road::port_asked(lif, PORT),
                 Calls{called::port_control(PORT, IIF)}});
}

Messages port_ingress_rewritten_messages(const Lif &lif)
{
    const std::string create = "rtifhal_l3_ing_create";
    return join({ingress_rewritten_messages(lif),
                 Messages{
                     trace(create, "L3Ingress L3 Phy or L3 PC port = 5 iif = 3\n"),
                     trace(create, fmt::format("bcm_l3_ing_create({}) control: 5, 3\n", lif.hex())),
                     trace(create, fmt::format("bcm_l3_ing_create({}) success: 5, 3\n", lif.hex())),
                 }});
}

Calls channel_ingress_rewritten(const Lif &lif, Kind chip, const std::vector<int> &ports)
{
    Calls tied;
    for (const int port : ports) {
        tied.push_back(called::port_control(port, IIF));
    }
    return join(
        {ingress_rewritten(lif, 22, ingress(chip), chip), member_road::tid_asked(lif),
         Calls{"bcm_trunk_info_t_init()", called::flush(), member_road::trunk_read(chip, ports)},
         tied});
}

Messages channel_ingress_rewritten_messages(const Lif &lif)
{
    const std::string create = "rtifhal_l3_ing_create";
    return join(
        {ingress_rewritten_messages(lif),
         Messages{
             member_road::tid_found(lif),
             trace(create, "tid = 8\n"),
             trace(create, "total member ports = 2\n"),
             trace(create, "member port[0] = gport 134217733, port 5\n"),
             trace(create, "member port[1] = gport 134217734, port 6\n"),
             trace(create, fmt::format("bcm_l3_ing_create({}) success: -1, 3\n", lif.hex())),
         }});
}

} // namespace rtifhal_test::property_road
