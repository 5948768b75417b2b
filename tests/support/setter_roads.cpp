/*
 * setter_roads.cpp: see setter_roads.h.
 */
#include "support/setter_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <cstddef>

namespace rtifhal_test::setter_road
{

namespace
{

constexpr int TYPE_SVI = 9;
/** An SVI is on the VLAN, and its ingress object is mapped to it. */
constexpr unsigned MAPPED_SVI = 6;

Message said_by(const std::string &function, const std::string &text)
{
    return trace(function, text);
}

} // namespace

std::string object_answered(const std::string &answer)
{
    return fmt::format("{}(0, {}) = 0 [intf={}]", READ_INTERFACE, IIF, answer);
}

std::string ip4_ingress(Kind chip)
{
    // A Trident2 is told of the family that is off.
    return fmt::format("{{flags={} vrf=1 urpf=0 class=64 ipmc=0 qos=0}}",
                       chip == Kind::trident2 ? "0x486" : "0x6");
}

Message object_refused(const std::string &working, int code)
{
    return report(CREATE_INTERFACE, fmt::format("{}({}) failed: {}\n", WRITE_INTERFACE, working,
                                                _shr_errmsg[static_cast<std::size_t>(-code)]));
}

Message ingress_not_cached()
{
    return report(CREATE_INGRESS, FROM_CACHE + " returned NULL for iif 3\n");
}

Messages object_messages(const Lif &lif, const std::string &working, int int_vlan, int encap_vlan)
{
    const std::string &create = CREATE_INTERFACE;
    return {
        said_by(create, fmt::format("inl3lif->ifindex = {} l3lif->ifindex = {} create = 0\n",
                                    lif.hex(), working)),
        said_by(create, fmt::format("create internal_vlan = {} si_encap_vlan = {}\n", int_vlan,
                                    encap_vlan)),
        said_by(create, "Reusing l3a_intf_id from existind pd ctxt 3\n"),
        said_by(create, fmt::format(" Calling bcm_l3_intf_create for {} intf-id 3, mtu 1500, "
                                    "vrf 1\n",
                                    encap_vlan != 0 ? encap_vlan : int_vlan)),
        said_by(create, "Created l3-intf with intf-id as 0x3\n"),
        said_by("rtifhal_trident_l3port_add_pss",
                fmt::format("calling rtifhal_pss_l3port_store, lif (0x{})\n", working)),
    };
}

Messages ingress_messages(const Lif &lif, const std::string &working)
{
    const std::string &create = CREATE_INGRESS;
    return {
        said_by(create,
                fmt::format("inl3lif->ifindex = {} l3lif->ifindex = {}\n", lif.hex(), working)),
        said_by(create, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        said_by(create, "Get l3_iif for iif 3\n"),
        said_by(create, "ipmc_intf_id = 0 class 40 flags = 6\n"),
        said_by(create, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        said_by("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
        said_by(create, fmt::format(" rtifhal_bcm_l3_ing_create(0x{}) iif 3, vrf 1 rpf 0 "
                                    "class 64\n",
                                    working)),
        said_by(create, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                        "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                        "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
    };
}

Message ingress_done(const Lif &lif)
{
    return said_by(CREATE_INGRESS,
                   fmt::format("bcm_l3_ing_create({}) success: -1, 3\n", lif.hex()));
}

SviSetterTest::SviSetterTest(Kind chip) : SviTest({.chip = chip})
{
    is_up();
}

int SviSetterTest::set(std::uint32_t property, std::uint32_t value)
{
    return rtifhal_set_kelvo_l3_property_svi(lif->get(), property, value);
}

std::string text(const VlanRecord &record)
{
    return svi_road::controls(record.vrf, IIF, record.flags, MAPPED_SVI, record.urpf);
}

Calls writes_of(const VlanRecord &record)
{
    return {svi_road::written(svi_road::VLAN, text(record)), svi_vlan_written(record).back()};
}

Calls svi_object_read()
{
    return {called::unit(),      called::intf_init(), called::intf_init(),
            called::intf_init(), called::flush(),     object_answered(svi_road::object("0x0"))};
}

Calls svi_vlan_written(const VlanRecord &record, int wrapped, int direct)
{
    VlanRecord snooped = record;
    snooped.flags |= SNOOPING_OFF;
    return join({Calls{svi_road::cache_asked(svi_road::VLAN),
                       svi_road::written(svi_road::VLAN, text(record), wrapped)},
                 svi_road::written_directly(svi_road::VLAN, text(snooped), direct)});
}

Calls svi_ingress_rewritten(const Lif &lif, Kind chip, const std::string &ingress,
                            const VlanRecord &record)
{
    VlanRecord snooped = record;
    snooped.flags |= SNOOPING_OFF;
    return join({
        Calls{
            called::ingress_init(),
            called::unit(),
            called::type(lif, TYPE_SVI),
            called::from_cache(IIF),
            called::trident2(chip == Kind::trident2 ? 1 : 0),
            called::write_ingress(ingress, IIF),
            svi_road::cache_asked(svi_road::VLAN),
            svi_road::written(svi_road::VLAN, text(record)),
            svi_road::vlan_stored(svi_road::VLAN),
        },
        svi_road::written_directly(svi_road::VLAN, text(snooped)),
    });
}

Calls whole_svi_road(const Lif &lif, Kind chip, const VlanRecord &first, const VlanRecord &last)
{
    return join({svi_object_read(), svi_vlan_written(first), svi_road::object_written_again(lif),
                 svi_ingress_rewritten(lif, chip, ip4_ingress(chip), last)});
}

Messages svi_messages(const Lif &lif, std::uint32_t property, std::uint32_t before,
                      std::uint32_t after, const Messages &unknown)
{
    return join({
        Messages{trace(SET_SVI, fmt::format("Get Miss Sup Flags(100) : {:x} type = {}\n", before,
                                            static_cast<int>(property)))},
        unknown,
        Messages{trace(SET_SVI, fmt::format("Set MIss To Sup(100) : {:x}\n", after)),
                 trace(SET_SVI, fmt::format("Set Miss Sup Flags(100) : {:x}\n", after))},
        object_messages(lif, lif.hex(), svi_road::VLAN, svi_road::VLAN),
        ingress_messages(lif, lif.hex()),
        Messages{trace(CREATE_INGRESS, "Mapping vid 100 to iif 3\n"), ingress_done(lif)},
    });
}

} // namespace rtifhal_test::setter_road
