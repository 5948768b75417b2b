/*
 * svi_roads.cpp: see svi_roads.h.
 */
#include "support/svi_roads.h"

#include "rtifhal_trident.h"

#include <fwmpd/wrappers.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <stdexcept>

namespace rtifhal_test::svi_road
{

namespace
{

constexpr int TYPE_SVI = 9;
const std::string MASKS = "{kmc={} umc={0} uuc={} bc={}}";

} // namespace

SviTest::SviTest(const simswitch::Options &options) : FhrpTest(options)
{
    l3iif_table_init();
    switched_vlan(VLAN);
    vlan_is(VLAN, fhrp_road::Role::plain);
    lif->lif.int_vlan = VLAN;
    start();
}

void SviTest::switched_vlan(std::uint16_t vlan, std::uint32_t flags, std::uint32_t vrf)
{
    bcm_vlan_create(0, vlan);
    rtifhal_set_l2_vlan(vlan);
    bcm_vlan_control_vlan_t control = {};
    control.vc_flags = flags;
    control.vc_vrf = vrf;
    fwmpd_bcm_vlan_control_vlan_set(0, vlan, control);
    sw.end_request();
    start();
}

void SviTest::flags_were(std::uint32_t flags)
{
    cached().vc_flags = flags;
    start();
}

void SviTest::is_up()
{
    if (add() != 0) {
        throw std::runtime_error("the SVI to start from did not come up");
    }
    sw.end_request();
    start();
}

void SviTest::is_parked()
{
    is_up();
    if (del(0) != 0) {
        throw std::runtime_error("the SVI to start from did not go down");
    }
    sw.end_request();
    start();
}

bcm_vlan_control_vlan_t &SviTest::cached(std::uint16_t vlan)
{
    return *simswitch::Switch::current().wrappers.vlan_controls(vlan);
}

simswitch::chip::VlanControls SviTest::in_the_chip(std::uint16_t vlan)
{
    sw.end_request();
    const simswitch::chip::Vlan *found = sw.chip.vlans.find(vlan);
    if (found == nullptr) {
        throw std::runtime_error(fmt::format("VLAN {} is not in the chip", vlan));
    }
    return found->controls;
}

std::string controls(unsigned vrf, unsigned iif, std::uint32_t flags, unsigned vlan_class,
                     unsigned urpf)
{
    return fmt::format("{{vrf={} iif={} flags={:#x} class={} urpf={}}}", vrf, iif, flags,
                       vlan_class, urpf);
}

std::string object(const std::string &flags, const std::string &rest)
{
    return fmt::format("{{flags={} id={} mac=00:11:22:33:44:55 vid={} {} ttl=0 tunnel=0}}", flags,
                       IIF, VLAN, rest);
}

std::string cache_asked(int vlan, bool found)
{
    return fmt::format("fwmpd_bcm_vlan_control_vlan_get_from_cache({}) = {}", vlan,
                       found ? "record" : "null");
}

std::string written(int vlan, const std::string &record, int code)
{
    return fmt::format("fwmpd_bcm_vlan_control_vlan_set(0, {}, {}) = {}", vlan, record, code);
}

Calls written_directly(int vlan, const std::string &record, int code, int unit)
{
    return {"bcm_vlan_control_vlan_t_init()", called::flush(),
            fmt::format("bcm_vlan_control_vlan_set({}, {}, {}) = {}", unit, vlan, record, code)};
}

std::string vlan_stored(int vlan)
{
    return fmt::format("fwmpd_trident_vlan_bvcvt_store({}) = 0", vlan);
}

Calls kind_asked(const Lif &lif)
{
    return {called::type(lif, TYPE_SVI), called::is_port_channel(lif, 0), called::is_sub(lif, 0)};
}

Calls flags_opened(int code)
{
    return {called::unit(), called::intf_init(), cache_asked(VLAN),
            written(VLAN, controls(0, 0, ROUTED_IP4, 2), code)};
}

Calls use_taken(int code)
{
    return {called::unit(), called::flush(), "fwmpd_trident_get_bvbt(100) = record",
            fmt::format("fwmpd_bcm_vlan_block_set(0, 100, {}) = {}", MASKS, code)};
}

Calls use_given_up(int code)
{
    return code != 0 ? use_taken(code)
                     : join({use_taken(), popcounts({}), Calls{"_shr_pbmp_bmnull({}) = 1"}});
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

Calls object_written_again(const Lif &lif)
{
    return {"rtifhal_bcm_l3_intf_create(0, " + object("0x140") + ") = 0", called::store(lif)};
}

Calls ingress_tied(const Lif &lif, Kind chip, bool again)
{
    // A Trident2 routes IPv4 alone here: the object says that IPv6 is off.
    const std::string flags = chip == Kind::trident2 ? "0x486" : "0x6";
    return join({
        Calls{called::ingress_init(), called::unit(), called::type(lif, TYPE_SVI)},
        again ? Calls{called::from_cache(IIF)} : Calls{},
        Calls{
            called::trident2(chip == Kind::trident2 ? 1 : 0),
            called::write_ingress("{flags=" + flags + " vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
            cache_asked(VLAN),
            written(VLAN, controls(1, IIF, ROUTED_IP4, 6)),
            vlan_stored(VLAN),
        },
        written_directly(VLAN, controls(1, IIF, ROUTED_IP4 | 0x800, 6)),
    });
}

Calls not_mirrored()
{
    return fhrp_road::role_asked(VLAN, fhrp_road::Role::plain);
}

Calls ordinary_end()
{
    return {vlan_stored(VLAN), "sysmgr_is_fastboot_restart() = 0"};
}

Calls ingress_and_egress_added(const Lif &lif)
{
    return join({kind_asked(lif), kind_asked(lif),
                 Calls{"bcm_l3_egress_t_init()", called::unit(),
                       "fwmpd_bcm_switch_control_set(0, 230, 1) = 0"}});
}

Calls up(const Lif &lif, Kind chip)
{
    return join({flags_opened(), use_taken(), object_created(lif), ingress_tied(lif, chip),
                 not_mirrored(), ordinary_end(), ingress_and_egress_added(lif)});
}

Calls up_again(const Lif &lif)
{
    return join({
        Calls{called::unit(), called::intf_init(), cache_asked(VLAN),
              written(VLAN, controls(1, 0, ROUTED_IP4, 2))},
        use_taken(),
        object_written_again(lif),
        ingress_tied(lif, Kind::trident, true),
        not_mirrored(),
        ordinary_end(),
        ingress_and_egress_added(lif),
    });
}

Calls unmarked(const Lif &lif)
{
    return join({kind_asked(lif), kind_asked(lif),
                 Calls{
                     called::unit(),
                     called::type(lif, TYPE_SVI),
                     cache_asked(VLAN),
                     written(VLAN, controls(1, IIF, ROUTED_IP4, 2)),
                     vlan_stored(VLAN),
                 }});
}

Calls object_read()
{
    return {called::unit(), called::unit(), called::intf_init(), called::flush(),
            "bcm_l3_intf_get(0, 3) = 0 [intf=" + object("0x0") + "]"};
}

Calls closed(std::uint32_t flags)
{
    return join(
        {Calls{cache_asked(VLAN), written(VLAN, controls(1, 0, flags, 0))}, use_given_up()});
}

Calls object_deleted()
{
    return {called::unit(), "rtifhal_bcm_l3_intf_delete(0, " + object("0x0") + ") = 0"};
}

Calls record_released()
{
    return {called::inband_init(), called::store_globals(), "mtrack_free(record)",
            "mtrack_free(record)"};
}

Calls down(const Lif &lif, bool destroy)
{
    return join({unmarked(lif), object_read(), closed(), not_mirrored(), object_deleted(),
                 destroy ? record_released() : Calls{},
                 Calls{called::unstore(lif), vlan_stored(VLAN)}});
}

namespace
{

Messages object_messages()
{
    const std::string create = "rtifhal_l3_intf_create";
    return {
        trace(create, "inl3lif->ifindex = 30000064 l3lif->ifindex = 30000064 create = 1\n"),
        trace(create, "create internal_vlan = 100 si_encap_vlan = 100\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
        trace(create, "Allocating l3lif_pd_ctxt\n"),
        trace(create, "Allocating l3_pd\n"),
        trace(create, " Calling bcm_l3_intf_create for 100 intf-id 3, mtu 1500, vrf 1\n"),
        trace(create, "Created l3-intf with intf-id as 0x3\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (0x30000064)\n"),
    };
}

Messages ingress_messages()
{
    const std::string create = "rtifhal_l3_ing_create";
    return {
        trace(create, "inl3lif->ifindex = 30000064 l3lif->ifindex = 30000064\n"),
        trace(create, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        trace(create, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
        trace(create, " rtifhal_bcm_l3_ing_create(0x30000064) iif 3, vrf 1 rpf 0 class 64\n"),
        trace(create, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                      "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                      "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
        trace(create, "Mapping vid 100 to iif 3\n"),
        trace(create, "bcm_l3_ing_create(30000064) success: -1, 3\n"),
    };
}

Messages not_primary()
{
    return {trace(MIRROR, "Vlan 100\n"), trace(MIRROR, "Vlan 100 is not primary\n")};
}

/** "function: L3LIF: 0x30000064, 0, 1", after a line break. */
Message dispatched(const std::string &function)
{
    return trace(function, "\n" + function + ": L3LIF: 0x30000064, 0, 1\n");
}

} // namespace

Messages up_messages()
{
    return join({
        Messages{
            trace(ADD_SVI, ADD_SVI + ": L3LIF: 0x30000064, 0, 1\n"),
            trace(SVI_ADD, "Begin " + SVI_ADD + " for vlan 100\n"),
            trace(SVI_ADD, "Get To Sup Flags(100) : 0x238\n"),
            trace(SVI_ADD, "Set To Sup Flags(100) : 0x400230\n"),
            trace(SVI_ADD, " Remove CPU to Brdcast flood block filter for vlan 100 \n"),
            trace(BLOCK, "\n\n UMCB Vlan = 100 type = 2 port = 0 set = 1\n"),
            trace(BLOCK, "UMCB Calling bcm_vlan_block_set for 100\n"),
        },
        object_messages(),
        ingress_messages(),
        not_primary(),
        Messages{dispatched("rtifhal_trident_add_ingress"),
                 dispatched("rtifhal_trident_add_egress")},
    });
}

Messages down_messages()
{
    const std::string label = "rtifhal_l3_ing_update_vlan_label";
    const std::string object = "rtifhal_l3_intf_delete";
    return join({
        Messages{
            trace(DEL_SVI, "\n" + DEL_SVI + ": L3LIF: 0x30000064, 0\n"),
            dispatched("rtifhal_trident_del_egress"),
            dispatched("rtifhal_trident_del_ingress"),
            trace(label, "Entered " + label + " for 0x30000064\n"),
            trace(SVI_DEL, "Get To Sup Flags(100) : 400230\n"),
            trace(SVI_DEL, "Set To Sup Flags(100) : 400238\n"),
            trace(SVI_DEL, "Add CPU to Brdcast flood block filter for vlan 100\n"),
            trace(BLOCK, "\n\n UMCB Vlan = 100 type = 2 port = 0 set = 0\n"),
            trace(BLOCK, "UMCB Add CPU to vblk 100\n"),
            trace(BLOCK, "UMCB Calling bcm_vlan_block_set 100\n"),
            trace(BLOCK, "\n pbmp_count 0"),
        },
        not_primary(),
        Messages{
            trace(object, "l3lif->ifindex = 30000064 destroy = 1\n"),
            trace(object, "intf-delete for 30000064\n"),
            trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
            trace("rtifhal_free_l3iif", " iif_index = 3 preserve = 1\n"),
            trace(object, "intf-pd-ctx deleted for 30000064\n"),
        },
    });
}

Messages use_refused(const std::string &step)
{
    // The operation gives -1, whatever the chip said.
    return {report(BLOCK, "bcm_vlan_block_set failed for vid 100\n"),
            report(step, fmt::format("vlan_block_set() failed: {}\n", _shr_errmsg[1]))};
}

} // namespace rtifhal_test::svi_road
