/*
 * member_roads.cpp: see member_roads.h.
 */
#include "support/member_roads.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>

namespace rtifhal_test::member_road
{

namespace
{

constexpr std::array CONTROLS = {8, 10, 9, 11, 14};

std::string object(const std::string &flags)
{
    return "{flags=" + flags +
           " id=3 mac=00:11:22:33:44:55 vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}";
}

int on(Kind chip)
{
    return chip == Kind::trident2 ? 1 : 0;
}

/** Both switch controls, then the port's, then its untagged VLAN. */
Calls routing_opened(const Lif &main, int port)
{
    return join({Calls{
                     "fwmpd_bcm_switch_control_set(0, 364, 1) = 0",
                     "fwmpd_bcm_switch_control_set(0, 232, 1) = 0",
                     "rtifhal_if_has_si(" + main.index() + ") = 0",
                 },
                 port_opened(port, {1, 0, 0, 0, 0}), untagged_vlan(port)});
}

/** The port-channel's object is created, and its records. */
Calls object_created(const Lif &main)
{
    return {
        called::is_port_channel(main, 1),
        called::inband_init(),
        fmt::format("malloc({}) = record", sizeof(l3lif_pd_ctxt)),
        fmt::format("malloc({}) = record", sizeof(l3_pd)),
        "rtifhal_bcm_l3_intf_create(0, " + object("0x40") + ") = 0",
        called::store(main),
    };
}

Calls added_to_routed_vlan(int port)
{
    return {
        fmt::format("fwmpd_bcm_vlan_port_add(0, 4094, {{0,{0}}}, {{{0}}}) = 0", port),
        fmt::format("fwmpd_bcm_port_stp_set(0, {}, 4) = 0", port),
    };
}

Calls routed_vlan_joined_first(Kind chip, int port)
{
    return join({Calls{
                     called::flush(),
                     "bcm_vlan_create(0, 4094) = 0",
                     "fwmpd_allocate_stg(4094) = 0 [stg=2]",
                     called::flush(),
                     "bcm_stg_vlan_add(0, 2, 4094) = 0",
                 },
                 added_to_routed_vlan(port), mode_on_calls(chip, port),
                 refreshed_controls_calls(4094, "0x0")});
}

Calls routed_vlan_joined_next(Kind chip, int port, const std::vector<int> &before)
{
    return join({Calls{called::flush(), "bcm_vlan_create(0, 4094) = -8"},
                 added_to_routed_vlan(port), mode_on_calls(chip, port, before),
                 refreshed_controls_calls(4094, "0x0")});
}

/** The port-channel's ingress object is written and tied to the member's port. */
Calls ingress_written(const Lif &main, const Lif &member, int port, Kind chip, bool cached)
{
    const std::string flags = chip == Kind::trident2 ? "0x486" : "0x6";
    return join(
        {kind_asked(member),
         Calls{called::ingress_init(), called::unit(), called::type(member, 26),
               called::is_port_channel(main, 1)},
         cached ? Calls{called::from_cache(IIF)} : Calls{},
         Calls{
             called::trident2(on(chip)),
             called::write_ingress("{flags=" + flags + " vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
             called::is_tunnel(member, 0),
             called::is_sub(member, 0),
             called::is_port_channel(member, 0),
         },
         port_asked(member, port), Calls{called::port_control(port, IIF)}});
}

Calls egress_added(const Lif &main, const Lif &member)
{
    return join({kind_asked(member),
                 Calls{"bcm_l3_egress_t_init()", called::unit(), called::is_port_channel(main, 1),
                       "fwmpd_bcm_switch_control_set(0, 230, 1) = 0"}});
}

std::string entry(const std::string &function, const Lif &member, int flag)
{
    return fmt::format("\n{}: L3LIF: {}, {}\n", function, member.index(), flag);
}

/** A dispatcher's first message. */
Message dispatched(const std::string &function, const Lif &member, int flag)
{
    return trace(function, fmt::format("\n{}: L3LIF: {}, 0, {}\n", function, member.index(), flag));
}

Messages joining(const Lif &main, const Lif &member, int port, int create)
{
    const std::string add = "rtifhal_trident_l3pc_add";
    return {
        trace("rtifhal_trident_add_l3pc", entry("rtifhal_trident_add_l3pc", member, create)),
        trace(add, " Entry: - \n"),
        tid_found(main),
        trace(add, fmt::format("ifindex = {} port = {} main ifindex = {} tid = 8 \n", member.hex(),
                               port, main.hex())),
        trace("rtifhal_alloc_l3pc_add",
              fmt::format("tid = 8 tport = {} create = {}\n", port, create)),
    };
}

Messages object_messages(const Lif &main, const Lif &member)
{
    const std::string create = "rtifhal_l3_intf_create";
    return {
        trace(create, "context set in l3iif for intf " + main.index() + "\n"),
        trace(create, fmt::format("inl3lif->ifindex = {} l3lif->ifindex = {} create = 1\n",
                                  member.hex(), main.hex())),
        trace(create, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
        trace(create, "Allocating l3lif_pd_ctxt\n"),
        trace(create, "Allocating l3_pd\n"),
        trace(create, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
        trace(create, "Created l3-intf with intf-id as 0x3\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (" + main.index() + ")\n"),
    };
}

Messages routed_vlan_messages(Kind chip, int port, const Messages &group)
{
    const std::string vlan = "rtifhal_vlan_create";
    return join({Messages{trace(vlan, fmt::format("vlan 4094 port {}\n", port))}, group,
                 mode_on_messages(chip, port),
                 Messages{
                     trace(vlan, " Set vlan control for vid: 4094, flags: 0x0\n"),
                     trace(vlan, "Created 4094 vlan \n"),
                 }});
}

Messages ingress_and_egress_messages(const Lif &main, const Lif &member, int port, int create)
{
    const std::string ingress = "rtifhal_l3_ing_create";
    const Messages again = {
        trace(ingress, "Get l3_iif for iif 3\n"),
        trace(ingress, "ipmc_intf_id = 0 class 40 flags = 6\n"),
    };
    return join({
        Messages{
            dispatched("rtifhal_trident_add_ingress", member, create),
            trace(ingress, "main ifindex = " + main.hex() + "\n"),
            trace(ingress, fmt::format("inl3lif->ifindex = {} l3lif->ifindex = {}\n", member.hex(),
                                       main.hex())),
            trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        },
        create == 0 ? again : Messages{},
        Messages{
            trace(ingress, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
            trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
            trace(ingress,
                  fmt::format(" rtifhal_bcm_l3_ing_create({}) iif 3, vrf 1 rpf 0 class 64\n",
                              main.index())),
            trace(ingress, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                           "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                           "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
            trace(ingress, fmt::format("L3Ingress L3 Phy or L3 PC port = {} iif = 3\n", port)),
            trace(ingress,
                  fmt::format("bcm_l3_ing_create({}) control: {}, 3\n", member.hex(), port)),
            trace(ingress,
                  fmt::format("bcm_l3_ing_create({}) success: {}, 3\n", member.hex(), port)),
            dispatched("rtifhal_trident_add_egress", member, create),
        },
    });
}

} // namespace

MemberTest::MemberTest(const simswitch::Options &options) : LibraryTest(options)
{
    first->lif.main_l3lif = main->get();
    second->lif.main_l3lif = main->get();
    sw.host.set_trunk_id(main->lif.ifindex, TRUNK);
    l3iif_table_init();
    start();
}

void MemberTest::brought_up(Lif &member, int create)
{
    ASSERT_EQ(rtifhal_trident_add_l3pc(member.get(), create), 0);
    sw.end_request();
    start();
}

void MemberTest::both_up()
{
    brought_up(*first, 1);
    brought_up(*second, 0);
}

void MemberTest::has_subinterfaces()
{
    sw.journal.arm({.function = "rtifhal_if_has_si", .code = 1, .forever = true});
}

std::string module_port_of(int port)
{
    return fmt::format("{:#x}", 0x8000000 | port);
}

std::string member_of_trunk(int port)
{
    return "{flags=0x0 gport=" + module_port_of(port) + "}";
}

std::string trunk_info(Kind chip)
{
    return chip == Kind::trident2 ? "{flags=0x0 psc=15 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=256}"
                                  : "{flags=0x0 psc=9 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=0}";
}

std::string trunk_read(Kind chip, const std::vector<int> &members)
{
    std::vector<std::string> texts;
    texts.reserve(members.size());
    for (const int port : members) {
        texts.push_back(member_of_trunk(port));
    }
    return fmt::format("bcm_trunk_get(0, 8, 32) = 0 [info={} count={} members=[{}]]",
                       trunk_info(chip), members.size(), fmt::join(texts, ","));
}

Calls kind_asked(const Lif &member)
{
    return {
        called::type(member, 26),
        called::is_port_channel(member, 0),
        called::is_sub(member, 0),
        fmt::format("if_index_is_physical_interface({}) = 1", member.index()),
    };
}

Calls port_asked(const Lif &member, int port)
{
    return {called::type(member, 26), called::port_of(member, port)};
}

Calls tid_asked(const Lif &main)
{
    return {called::is_port_channel(main, 1),
            "fwm_ifindex_2_tid(" + main.index() + ") = 0 [tid=8]"};
}

Message tid_found(const Lif &main)
{
    return trace("fwmpd_ifindex_to_bcm_tid", "rc = 0 ifindex = " + main.hex() + " tid = 8 \n");
}

Calls trunk_created(Kind chip, int port)
{
    return {
        "bcm_trunk_info_t_init()",
        called::flush(),
        "bcm_trunk_get(0, 8, 32) = -7",
        "bcm_trunk_create(0, 0x10, 8) = 0",
        called::trident2(on(chip)),
        "fwmpd_bcm_trunk_set(0, 8, " + trunk_info(chip) + ", 0, []) = 0",
        "bcm_trunk_member_t_init()",
        "fwmpd_bcm_trunk_member_add(0, 8, " + member_of_trunk(port) + ") = 0",
    };
}

Calls trunk_joined(Kind chip, int port, const std::vector<int> &before)
{
    return {
        "bcm_trunk_info_t_init()",
        called::flush(),
        trunk_read(chip, before),
        "bcm_trunk_member_t_init()",
        "fwmpd_bcm_trunk_member_add(0, 8, " + member_of_trunk(port) + ") = 0",
    };
}

Calls object_read()
{
    return {called::intf_init(), called::flush(),
            "bcm_l3_intf_get(0, 3) = 0 [intf=" + object("0x0") + "]"};
}

Calls port_opened(int port, const std::vector<int> &values)
{
    Calls calls;
    for (std::size_t i = 0; i < CONTROLS.size(); ++i) {
        calls.push_back(
            fmt::format("{}(0, {}, {}, {}) = 0", PORT_CONTROL, port, CONTROLS.at(i), values.at(i)));
    }
    return calls;
}

Calls port_closed(int port)
{
    return port_opened(port, {1, 1, 1, 1, 1});
}

Calls untagged_vlan(int port)
{
    return {fmt::format("{}(0, {}, 4094) = 0", UNTAGGED_VLAN, port)};
}

Calls ordinary_start()
{
    return {"sysmgr_is_fastboot_restart() = 0"};
}

Calls first_up(const Lif &main, const Lif &member, Kind chip, const Calls &end)
{
    return join({Calls{called::unit()}, port_asked(member, FIRST), tid_asked(main),
                 trunk_created(chip, FIRST), Calls{called::intf_init()},
                 routing_opened(main, FIRST), object_created(main),
                 routed_vlan_joined_first(chip, FIRST),
                 Calls{"rtifhal_if_has_si(" + main.index() + ") = 0"}, end,
                 ingress_written(main, member, FIRST, chip, false), egress_added(main, member)});
}

Messages first_up_messages(const Lif &main, const Lif &member, Kind chip)
{
    const std::string trunk = "rtifhal_alloc_l3pc_add";
    const std::string vlan = "rtifhal_vlan_create";
    return join({
        joining(main, member, FIRST, 1),
        Messages{
            trace(trunk, "BAD BAD BAD BAD BAD \n"),
            report(trunk, "calling bcm_trunk_create_id(unit=0, tid=8)\n"),
        },
        object_messages(main, member),
        routed_vlan_messages(
            chip, FIRST,
            {
                trace(vlan, "fwmpd_allocate_stg allocated stg: 2 vlan 4094 port 5\n"),
                trace(vlan, "bcm_stg_vlan_add Added stg: 2 to vlan 4094 port 5\n"),
            }),
        ingress_and_egress_messages(main, member, FIRST, 1),
    });
}

Calls second_up(const Lif &main, const Lif &member, Kind chip)
{
    return join({Calls{called::unit()}, port_asked(member, SECOND), tid_asked(main),
                 trunk_joined(chip, SECOND, {FIRST}), Calls{called::intf_init()}, object_read(),
                 routing_opened(main, SECOND), routed_vlan_joined_next(chip, SECOND, {FIRST}),
                 Calls{"rtifhal_if_has_si(" + main.index() + ") = 0"}, ordinary_start(),
                 ingress_written(main, member, SECOND, chip, true), egress_added(main, member)});
}

Messages second_up_messages(const Lif &main, const Lif &member, Kind chip)
{
    return join({
        joining(main, member, SECOND, 0),
        Messages{trace("rtifhal_trident_l3pc_add",
                       "Skipping l3_intf_create for " + member.hex() + "\n")},
        routed_vlan_messages(chip, SECOND, {}),
        ingress_and_egress_messages(main, member, SECOND, 0),
    });
}

Calls down(const Lif &main, const Lif &member, int port, Kind chip, bool destroy)
{
    const Calls object_gone = {
        called::unit(),        "rtifhal_bcm_l3_intf_delete(0, " + object("0x0") + ") = 0",
        called::inband_init(), called::store_globals(),
        "mtrack_free(record)", "mtrack_free(record)",
        called::unstore(main),
    };
    return join({
        // Egress and ingress step.
        kind_asked(member),
        kind_asked(member),
        Calls{called::unit(), called::type(member, 26), called::is_port_channel(main, 1)},
        destroy ? Calls{called::destroy_ingress(IIF)} : Calls{},
        Calls{called::is_tunnel(member, 0), called::is_sub(member, 0)},
        port_asked(member, port),
        Calls{called::port_control(port, 0)},
        // Interface step.
        port_asked(member, port),
        Calls{called::unit()},
        object_read(),
        port_closed(port),
        destroy ? object_gone : Calls{},
        tid_asked(main),
        Calls{
            "bcm_trunk_member_t_init()",
            "fwmpd_bcm_trunk_member_delete(0, 8, " + member_of_trunk(port) + ") = 0",
            fmt::format("fwmpd_bcm_vlan_port_remove(0, 4094, {{{}}}) = 0", port),
            fmt::format("fwmpd_bcm_port_stp_set(0, {}, 0) = 0", port),
        },
        mode_off_calls(chip, port),
        Calls{
            fmt::format("fwmpd_bcm_port_discard_set(0, {}, 0) = 0", port),
            "rtifhal_if_has_si(" + main.index() + ") = 0",
        },
    });
}

Messages down_messages(const Lif &main, const Lif &member, int port, bool destroy)
{
    const std::string ingress = "rtifhal_l3_ing_delete";
    const std::string del = "rtifhal_trident_l3pc_del";
    const std::string object = "rtifhal_l3_intf_delete";
    const std::string vlan = "rtifhal_vlan_delete";
    const int flag = destroy ? 1 : 0;
    const Messages object_gone = {
        trace(object, "l3lif->ifindex = " + main.hex() + " destroy = 1\n"),
        trace(object, "intf-delete for " + main.hex() + "\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_free_l3iif", " iif_index = 3 preserve = 1\n"),
        trace(object, "intf-pd-ctx deleted for " + main.hex() + "\n"),
    };
    const Messages object_kept = {
        trace(del, "Not calling l3_intf_delete for ifindex " + member.hex() + " as not destroy\n")};
    const std::string ifindex_and_flag =
        fmt::format("ifindex = {} destroy = {}\n", member.hex(), flag);
    return join({
        Messages{
            trace("rtifhal_trident_del_l3pc", entry("rtifhal_trident_del_l3pc", member, flag)),
            dispatched("rtifhal_trident_del_egress", member, flag),
            // The egress step looks at the member, which never has a context.
            report("rtifhal_l3_egr_delete",
                   "Failed to delete l3lif pd context for intf " + member.index()),
            dispatched("rtifhal_trident_del_ingress", member, flag),
            trace(ingress, ifindex_and_flag),
            trace(ingress, "main ifindex = " + main.hex() + "\n"),
            trace(ingress, "iftype = 1a iif = 3 l3_if_index = 3\n"),
            trace(ingress, "L3 Phy \n"),
            // "% i" is a conversion of its own: the port, with a blank before it.
            trace(ingress, fmt::format("L3Ingress L3 Phy or L3 PC port =  {}if = 0\n", port)),
            trace(del, " Entry: - \n"),
            trace(del, ifindex_and_flag),
        },
        destroy ? object_gone : object_kept,
        Messages{
            tid_found(main),
            trace(vlan, fmt::format("vlan 4094 port {}\n", port)),
            trace(vlan, fmt::format("Reset STP state for port {}\n", port)),
        },
        mode_off_messages(port),
    });
}

} // namespace rtifhal_test::member_road
