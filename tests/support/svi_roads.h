/*
 * svi_roads.h: what the tests of SVIs share: an SVI of VLAN 100 under the
 * number 3, and what its add and delete call and say, in stretches.
 *
 * Unless a test says otherwise VLAN 100 is a switched VLAN in no private VLAN,
 * with routing and MPLS off, and the SVI routes IPv4 alone in VRF 1.
 */
#pragma once

#include "support/fhrp_roads.h"
#include "support/l3_objects.h"
#include "support/vlan_roads.h"

#include <sdk/vlan.h>

#include <cstdint>
#include <memory>
#include <string>

namespace rtifhal_test::svi_road
{

inline constexpr std::uint16_t VLAN = 100;
inline constexpr int IIF = 3;
/** Routing and MPLS off. */
inline constexpr std::uint32_t SWITCHED = 0x238;
/** What an add leaves of that: IPv4 unicast on. */
inline constexpr std::uint32_t ROUTED_IP4 = 0x400230;

inline const std::string ADD_SVI = "rtifhal_trident_add_svi";
inline const std::string DEL_SVI = "rtifhal_trident_del_svi";
inline const std::string SVI_ADD = "rtifhal_trident_svi_add";
inline const std::string SVI_DEL = "rtifhal_trident_svi_del";
inline const std::string MIRROR = "rtifhal_handle_pvlan_svi";
inline const std::string BLOCK = "rtifhal_subintf_block_set";

/** A test of SVIs. */
class SviTest : public fhrp_road::FhrpTest
{
protected:
    explicit SviTest(const simswitch::Options &options = {});

    /** A VLAN in the chip and with the L2 side, its controls as those. */
    void switched_vlan(std::uint16_t vlan, std::uint32_t flags = SWITCHED, std::uint32_t vrf = 0);
    /** Writes the VLAN's flags, as somebody else would have left them. */
    void flags_were(std::uint32_t flags);
    /** The SVI is up; what waited is in the chip. */
    void is_up();
    /** The same, then down with its record kept. */
    void is_parked();

    int add(int create = 1) { return rtifhal_trident_add_svi(lif->get(), 0, create); }
    int del(int destroy = 1) { return rtifhal_trident_del_svi(lif->get(), 0, destroy); }
    int step_add(int create = 1) { return rtifhal_trident_svi_add(lif->get(), create); }
    int step_del(int destroy = 1) { return rtifhal_trident_svi_del(lif->get(), destroy); }

    /** A VLAN's record in the wrappers' cache. */
    static bcm_vlan_control_vlan_t &cached(std::uint16_t vlan = VLAN);
    /** A VLAN's controls in the chip, once all that waits is there. */
    simswitch::chip::VlanControls in_the_chip(std::uint16_t vlan = VLAN);

    std::unique_ptr<Lif> lif = svi(VLAN);
};

/** A VLAN's controls as the journal prints them. */
std::string controls(unsigned vrf, unsigned iif, std::uint32_t flags, unsigned vlan_class,
                     unsigned urpf = 0);
/** The L3 interface object as the journal prints it; rest: "vrf=1 mtu=1500". */
std::string object(const std::string &flags, const std::string &rest = "vrf=1 mtu=1500");

/** The cache is asked for a VLAN's record. */
std::string cache_asked(int vlan, bool found = true);
/** A VLAN's record goes through the wrapper. */
std::string written(int vlan, const std::string &record, int code = 0);
/** It goes straight to the chip. */
Calls written_directly(int vlan, const std::string &record, int code = 0, int unit = 0);
/** A VLAN's record is stored for a restart. */
std::string vlan_stored(int vlan);

/** A dispatcher finds out that it is an SVI. */
Calls kind_asked(const Lif &lif);
/** The add up to the write of the VLAN's flags. */
Calls flags_opened(int code = 0);
/** The SVI's use of the VLAN is taken on, beside the L2 side's. */
Calls use_taken(int code = 0);
/** It is given up; the L2 side keeps the VLAN. */
Calls use_given_up(int code = 0);
/** The L3 interface is created, with its record. */
Calls object_created(const Lif &lif);
/** It is written again. */
Calls object_written_again(const Lif &lif);
/** The ingress object is written and tied to the VLAN; again: from the cached one. */
Calls ingress_tied(const Lif &lif, Kind chip = Kind::trident, bool again = false);
/** The VLAN is in no private VLAN. */
Calls not_mirrored();
/** The end of the interface step on an ordinary start. */
Calls ordinary_end();
/** The two other steps of an add. */
Calls ingress_and_egress_added(const Lif &lif);
/** A first add as a whole. */
Calls up(const Lif &lif, Kind chip = Kind::trident);
/** An add with `create` 0, the VLAN's flags as they were at first. */
Calls up_again(const Lif &lif);

/** Egress and ingress step of a delete: the VLAN's mark goes. */
Calls unmarked(const Lif &lif);
/** The delete's interface step up to the look at the object. */
Calls object_read();
/** The VLAN's flags are closed and the use is given up. */
Calls closed(std::uint32_t flags = 0x400238);
/** The object goes. */
Calls object_deleted();
/** The number is held back, the records are freed. */
Calls record_released();
/** A delete as a whole. */
Calls down(const Lif &lif, bool destroy);

/** Messages of a first add and of a final delete. */
Messages up_messages();
Messages down_messages();
/** "vlan_block_set() failed", and what the operation itself says. */
Messages use_refused(const std::string &step);

} // namespace rtifhal_test::svi_road
