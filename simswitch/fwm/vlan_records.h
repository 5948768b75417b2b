/*
 * vlan_records.h: the VLANs that the forwarding manager knows, and what each is
 * in a private VLAN. Routed interfaces ask for it through fwm/vlan.h.
 *
 * These are records of the forwarding manager's own, apart from the chip's
 * VLANs (chip/vlans.h): whoever plays the L2 side keeps both.
 *
 *     sw.host.vlans.add(100, fwm::PrivateVlan::primary);
 *     sw.host.vlans.add(101, fwm::PrivateVlan::secondary);
 */
#pragma once

#include "chip/changes.h"
#include "chip/outcome.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace simswitch::fwm
{

/** What a VLAN is in a private VLAN. */
enum class PrivateVlan : std::uint8_t {
    none,      ///< it is in no private VLAN
    primary,   ///< the VLAN with the router
    secondary, ///< a VLAN of hosts that the router of the primary serves
};

} // namespace simswitch::fwm

/** The private-VLAN part of a VLAN's record. */
struct fwm_fwim_pvlan {
    simswitch::fwm::PrivateVlan role = simswitch::fwm::PrivateVlan::none;
};

/** A VLAN's record. */
struct fwm_fwim_vlan {
    fwm_fwim_pvlan pvlan{};
};

namespace simswitch::fwm
{

/** The VLANs of the forwarding manager; none at first. */
class VlanDirectory
{
public:
    /**
     * Makes a VLAN known.
     *
     * @param vlan  1..4095
     * @param role  what it is in a private VLAN
     * @return 0; -4 for an id out of range; -8 when the VLAN is known
     */
    Outcome add(int vlan, PrivateVlan role = PrivateVlan::none);
    /** Forgets a VLAN; its record must not be used any more. -7 when it isn't known. */
    Outcome remove(int vlan);
    /** Sets what a VLAN is; its record stays where it is. -7 when it isn't known. */
    Outcome set_role(int vlan, PrivateVlan role);

    /** What a VLAN is; none for one that isn't known. */
    PrivateVlan role(int vlan) const;
    /** The record of a VLAN, which stays until it is removed; null when it isn't known. */
    fwm_fwim_vlan *find(int vlan);
    bool has(int vlan) const { return records_.contains(vlan); }
    std::size_t size() const { return records_.size(); }
    /** What each VLAN is, in the order of their ids. */
    std::map<int, PrivateVlan> all() const;

    /** Forgets all VLANs. */
    void clear();
    /** Which VLANs were written; who keeps them across a restart watches. */
    chip::Changes<int> &changes() { return changes_; }

private:
    chip::Changes<int> changes_;
    std::map<int, fwm_fwim_vlan> records_;
};

} // namespace simswitch::fwm
