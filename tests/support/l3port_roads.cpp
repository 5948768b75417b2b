/*
 * l3port_roads.cpp: see l3port_roads.h.
 */
#include "support/l3port_roads.h"

#include "support/l3_objects.h"

#include <fmt/format.h>

namespace rtifhal_test::l3port_road
{

namespace
{

std::string port_control_set(int control, int value)
{
    return fmt::format("fwmpd_bcm_port_control_set(0, 5, {}, {}) = 0", control, value);
}

std::string object(const std::string &flags)
{
    return "{flags=" + flags +
           " id=3 mac=00:11:22:33:44:55 vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}";
}

/** A dispatcher finds out what the interface is. */
Calls kind_asked(const Lif &lif)
{
    return {
        called::type(lif, 26),
        called::is_port_channel(lif, 0),
        called::is_sub(lif, 0),
        fmt::format("if_index_is_physical_interface({}) = 1", lif.index()),
    };
}

/** The port is opened for routing. */
Calls port_opened(const Lif &lif)
{
    return join({Calls{called::is_port_channel(lif, 0), called::unit()}, port_asked(lif),
                 Calls{
                     called::intf_init(),
                     "bcm_switch_control_set(0, 232, 1) = 0",
                     port_control_set(8, 1),
                     port_control_set(10, 1),
                     port_control_set(14, 0),
                 }});
}

Calls object_created(const Lif &lif)
{
    return {
        called::inband_init(),
        fmt::format("malloc({}) = record", sizeof(l3lif_pd_ctxt)),
        fmt::format("malloc({}) = record", sizeof(l3_pd)),
        "rtifhal_bcm_l3_intf_create(0, " + object("0x40") + ") = 0",
        called::store(lif),
    };
}

Calls object_programmed_again(const Lif &lif)
{
    return {"rtifhal_bcm_l3_intf_create(0, " + object("0x140") + ") = 0", called::store(lif)};
}

/** The port joins VLAN 4094, which is new. */
Calls routed_vlan_joined(Kind chip)
{
    return join({Calls{
                     called::flush(),
                     "bcm_vlan_create(0, 4094) = 0",
                     "fwmpd_allocate_stg(4094) = 0 [stg=2]",
                     called::flush(),
                     "bcm_stg_vlan_add(0, 2, 4094) = 0",
                     "fwmpd_bcm_vlan_port_add(0, 4094, {0,5}, {5}) = 0",
                     "fwmpd_bcm_port_stp_set(0, 5, 4) = 0",
                 },
                 mode_on_calls(chip, PORT), refreshed_controls_calls(4094, "0x0"),
                 Calls{"fwmpd_bcm_port_untagged_vlan_set(0, 5, 4094) = 0"}});
}

/** The same where VLAN 4094 is there and the port was in it before. */
Calls routed_vlan_joined_again(Kind chip)
{
    return join({Calls{
                     called::flush(),
                     "bcm_vlan_create(0, 4094) = -8",
                     "fwmpd_bcm_vlan_port_add(0, 4094, {0,5}, {5}) = 0",
                     "fwmpd_bcm_port_stp_set(0, 5, 4) = 0",
                 },
                 mode_on_calls(chip, PORT, {PORT}), refreshed_controls_calls(4094, "0x0"),
                 Calls{"fwmpd_bcm_port_untagged_vlan_set(0, 5, 4094) = 0"}});
}

/** The ingress object is written and tied to the port; `cached`: from the cached one. */
Calls ingress_written(const Lif &lif, Kind chip, bool cached = false)
{
    // A Trident2 routes IPv4 alone here: the object says that IPv6 is off.
    const std::string flags = chip == Kind::trident2 ? "0x486" : "0x6";
    return join(
        {kind_asked(lif), Calls{called::ingress_init(), called::unit(), called::type(lif, 26)},
         cached ? Calls{called::from_cache(IIF)} : Calls{},
         Calls{
             called::trident2(chip == Kind::trident2 ? 1 : 0),
             called::write_ingress("{flags=" + flags + " vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
             called::is_tunnel(lif, 0),
             called::is_sub(lif, 0),
             called::is_port_channel(lif, 0),
         },
         port_asked(lif), Calls{called::port_control(PORT, IIF)}});
}

Calls egress_added(const Lif &lif)
{
    return join({kind_asked(lif), Calls{"bcm_l3_egress_t_init()", called::unit(),
                                        "fwmpd_bcm_switch_control_set(0, 230, 1) = 0"}});
}

} // namespace

Calls port_asked(const Lif &lif)
{
    return {called::type(lif, 26), called::port_of(lif, PORT)};
}

Calls ordinary_start()
{
    return {"sysmgr_is_fastboot_restart() = 0"};
}

Calls fast_restart(const Lif &lif)
{
    return {
        "sysmgr_is_fastboot_restart() = 1",
        "l3lif_update_sdb_for_intf(" + lif.text() + ") = 0",
        "sysmgr_is_fastboot_restart() = 1",
        "get_string_from_platform_inf(\"fwm\", \"skip_default_nh\", 15) = 0",
    };
}

Calls up(const Lif &lif, Kind chip, const Calls &end_of_interface_step)
{
    return join({port_opened(lif), object_created(lif), routed_vlan_joined(chip),
                 end_of_interface_step, ingress_written(lif, chip), egress_added(lif)});
}

Calls up_again(const Lif &lif, Kind chip, const Calls &end_of_interface_step)
{
    return join({port_opened(lif), object_programmed_again(lif), routed_vlan_joined_again(chip),
                 end_of_interface_step, ingress_written(lif, chip, true), egress_added(lif)});
}

Calls untied(const Lif &lif, bool destroy)
{
    return join({kind_asked(lif), kind_asked(lif), Calls{called::unit(), called::type(lif, 26)},
                 destroy ? Calls{called::destroy_ingress(IIF)} : Calls{},
                 Calls{called::is_tunnel(lif, 0), called::is_sub(lif, 0)}, port_asked(lif),
                 Calls{called::port_control(PORT, 0)}});
}

Calls port_closed()
{
    return {port_control_set(8, 1), port_control_set(10, 1), port_control_set(9, 1),
            port_control_set(11, 0), port_control_set(14, 1)};
}

Calls object_read(const Lif &lif)
{
    return join({Calls{called::unit()}, port_asked(lif),
                 Calls{called::intf_init(), called::flush(),
                       "bcm_l3_intf_get(0, 3) = 0 [intf=" + object("0x0") + "]"}});
}

Calls object_deleted()
{
    return {"rtifhal_bcm_l3_intf_delete(0, " + object("0x0") + ") = 0"};
}

Calls record_released()
{
    return {called::inband_init(), called::store_globals(), "mtrack_free(record)",
            "mtrack_free(record)"};
}

Calls routed_vlan_left(Kind chip)
{
    return join({Calls{"fwmpd_bcm_vlan_port_remove(0, 4094, {5}) = 0",
                       "fwmpd_bcm_port_stp_set(0, 5, 0) = 0"},
                 mode_off_calls(chip, PORT), Calls{"fwmpd_bcm_port_discard_set(0, 5, 0) = 0"}});
}

Calls down(const Lif &lif, Kind chip)
{
    return join({untied(lif, true), object_read(lif), port_closed(), Calls{called::unit()},
                 object_deleted(), record_released(), Calls{called::unstore(lif)},
                 routed_vlan_left(chip)});
}

Messages interface_step_messages(Kind chip)
{
    const std::string add = "rtifhal_trident_l3port_add";
    const std::string create = "rtifhal_l3_intf_create";
    const std::string vlan = "rtifhal_vlan_create";
    return join({
        Messages{
            trace("rtifhal_trident_add_l3port",
                  "\nrtifhal_trident_add_l3port: L3LIF: 0x10400000, 1\n"),
            trace(add, " Entry: create - 1\n"),
            trace(add, "bcm_port: 5\n"),
            trace(create, "inl3lif->ifindex = 10400000 l3lif->ifindex = 10400000 create = 1\n"),
            trace(create, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
            trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
            trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
            trace(create, "Allocating l3lif_pd_ctxt\n"),
            trace(create, "Allocating l3_pd\n"),
            trace(create, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
            trace(create, "Created l3-intf with intf-id as 0x3\n"),
            trace("rtifhal_trident_l3port_add_pss",
                  "calling rtifhal_pss_l3port_store, lif (0x10400000)\n"),
            trace(vlan, "vlan 4094 port 5\n"),
            trace(vlan, "fwmpd_allocate_stg allocated stg: 2 vlan 4094 port 5\n"),
            trace(vlan, "bcm_stg_vlan_add Added stg: 2 to vlan 4094 port 5\n"),
        },
        mode_on_messages(chip, PORT),
        Messages{
            trace(vlan, " Set vlan control for vid: 4094, flags: 0x0\n"),
            trace(vlan, "Created 4094 vlan \n"),
        },
    });
}

namespace
{

/** "function: L3LIF: 0x10400000, 0, 1", after a line break. */
Message dispatched(const std::string &function, int flag)
{
    return trace(function, fmt::format("\n{}: L3LIF: 0x10400000, 0, {}\n", function, flag));
}

/** What an entry point says first. */
Message entered(const std::string &function, int flag)
{
    return trace(function, fmt::format("\n{}: L3LIF: 0x10400000, {}\n", function, flag));
}

/** Egress and ingress step of a delete; `live`: l3intf_id, 0 once the number is parked. */
Messages untied_messages(int destroy, int live)
{
    const std::string ingress = "rtifhal_l3_ing_delete";
    return {
        entered("rtifhal_trident_del_l3port", destroy),
        dispatched("rtifhal_trident_del_egress", destroy),
        dispatched("rtifhal_trident_del_ingress", destroy),
        trace(ingress, fmt::format("ifindex = 10400000 destroy = {}\n", destroy)),
        trace(ingress, fmt::format("iftype = 1a iif = 3 l3_if_index = {}\n", live)),
        trace(ingress, "L3 Phy \n"),
        // "% i" is a conversion of its own: the port, with a blank before it.
        trace(ingress, "L3Ingress L3 Phy or L3 PC port =  5if = 0\n"),
    };
}

Messages del_entered_messages(int destroy)
{
    const std::string del = "rtifhal_trident_l3port_del";
    return {trace(del, fmt::format(" Entry: destroy - {}\n", destroy)),
            trace(del, fmt::format("ifindex = 10400000 main 0 destroy = {}\n", destroy))};
}

Messages record_released_messages()
{
    return {
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_free_l3iif", " iif_index = 3 preserve = 1\n"),
        trace("rtifhal_l3_intf_delete", "intf-pd-ctx deleted for 10400000\n"),
    };
}

Messages routed_vlan_left_messages()
{
    const std::string vlan = "rtifhal_vlan_delete";
    return join(
        {Messages{trace(vlan, "vlan 4094 port 5\n"), trace(vlan, "Reset STP state for port 5\n")},
         mode_off_messages(PORT)});
}

} // namespace

Messages ingress_and_egress_messages(int create)
{
    const std::string ingress = "rtifhal_l3_ing_create";
    const Messages cached = {
        trace(ingress, "Get l3_iif for iif 3\n"),
        trace(ingress, "ipmc_intf_id = 0 class 40 flags = 6\n"),
    };
    return join({
        Messages{
            dispatched("rtifhal_trident_add_ingress", create),
            trace(ingress, "inl3lif->ifindex = 10400000 l3lif->ifindex = 10400000\n"),
            trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        },
        create == 0 ? cached : Messages{},
        Messages{
            trace(ingress, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
            trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
            trace(ingress, " rtifhal_bcm_l3_ing_create(0x10400000) iif 3, vrf 1 rpf 0 class 64\n"),
            trace(ingress, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                           "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                           "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
            trace(ingress, "L3Ingress L3 Phy or L3 PC port = 5 iif = 3\n"),
            trace(ingress, "bcm_l3_ing_create(10400000) control: 5, 3\n"),
            trace(ingress, "bcm_l3_ing_create(10400000) success: 5, 3\n"),
            dispatched("rtifhal_trident_add_egress", create),
        },
    });
}

Messages up_again_messages(Kind chip)
{
    const std::string add = "rtifhal_trident_l3port_add";
    const std::string create = "rtifhal_l3_intf_create";
    const std::string vlan = "rtifhal_vlan_create";
    return join({
        Messages{
            entered("rtifhal_trident_add_l3port", 0),
            trace(add, " Entry: create - 0\n"),
            trace(add, "bcm_port: 5\n"),
            trace(create, "inl3lif->ifindex = 10400000 l3lif->ifindex = 10400000 create = 0\n"),
            trace(create, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
            trace(create, "Reusing l3a_intf_id from existind pd ctxt 3\n"),
            trace(create, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
            trace(create, "Created l3-intf with intf-id as 0x3\n"),
            trace("rtifhal_trident_l3port_add_pss",
                  "calling rtifhal_pss_l3port_store, lif (0x10400000)\n"),
            trace(vlan, "vlan 4094 port 5\n"),
        },
        mode_on_messages(chip, PORT),
        Messages{
            trace(vlan, " Set vlan control for vid: 4094, flags: 0x0\n"),
            trace(vlan, "Created 4094 vlan \n"),
        },
        ingress_and_egress_messages(0),
    });
}

Messages down_messages(int destroy)
{
    const std::string object = "rtifhal_l3_intf_delete";
    return join({
        untied_messages(destroy, IIF),
        del_entered_messages(destroy),
        Messages{
            trace("rtifhal_trident_l3port_del", "brcm_prog_complete = 0, l3intf_id = 3\n"),
            trace(object, fmt::format("l3lif->ifindex = 10400000 destroy = {}\n", destroy)),
            trace(object, "intf-delete for 10400000\n"),
        },
        destroy != 0 ? record_released_messages() : Messages{},
        routed_vlan_left_messages(),
    });
}

Messages parked_down_messages()
{
    const std::string del = "rtifhal_trident_l3port_del";
    return join({
        untied_messages(1, 0),
        del_entered_messages(1),
        Messages{
            trace(del, "brcm_prog_complete = 1, l3intf_id = 0\n"),
            trace(del, "Using prev_l3_if_index 3\n"),
            trace("rtifhal_l3_intf_delete", "l3lif->ifindex = 10400000 destroy = 1\n"),
        },
        record_released_messages(),
        routed_vlan_left_messages(),
    });
}

} // namespace rtifhal_test::l3port_road
