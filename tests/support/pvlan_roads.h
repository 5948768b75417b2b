/*
 * pvlan_roads.h: what the tests of private-VLAN pairs share: VLAN 100 as a
 * primary, its secondaries 101 and 102, and the stretches of calls in which a
 * secondary's record follows the primary's SVI.
 *
 * The SVI of VLAN 100 is SviTest's; unless a test says otherwise it isn't up.
 */
#pragma once

#include "support/svi_roads.h"

#include "rtifhal_kelvo_trident/station/pvlan_svi.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rtifhal_test::pvlan_road
{

inline constexpr std::uint16_t PRIMARY = svi_road::VLAN;
inline constexpr std::uint16_t SECONDARY = 101;
inline constexpr std::uint16_t SECOND = 102;
inline constexpr std::uint16_t OTHER_PRIMARY = 200;
inline constexpr std::uint16_t OTHER_SECONDARY = 201;
/** The VRF of every secondary, which nothing changes. */
inline constexpr unsigned OWN_VRF = 7;

inline const std::string UPDATE = "rtifhal_kelvo_pvlan_svi_mapping_update";
inline const std::string INSERT = "rtifhal_pvlan_svi_mapping_insert";
inline const std::string REMOVE = "rtifhal_pvlan_svi_mapping_remove";
inline const std::string SECONDARY_UPDATE = "rtifhal_pvlan_svi_update_secondary";
inline const std::string ROUTING = "rtifhal_subintf_routing_en_dis";

/** A test of private-VLAN pairs. */
class PvlanTest : public svi_road::SviTest
{
protected:
    explicit PvlanTest(const simswitch::Options &options = {});

    /** The primary has an SVI, as far as its VLAN's records tell. */
    void primary_has_an_svi(std::uint32_t ingress_if = svi_road::IIF);
    /** Virtual MACs are on the primary's SVI, with stations 1, 2, … */
    void virtual_macs(const std::vector<fhrp_road::Address> &macs);

    static void pair_appears(std::uint32_t primary, std::uint32_t secondary)
    {
        rtifhal_kelvo_pvlan_svi_mapping_update(primary, secondary, 1);
    }
    static void pair_goes(std::uint32_t primary, std::uint32_t secondary)
    {
        rtifhal_kelvo_pvlan_svi_mapping_update(primary, secondary, 0);
    }
};

/** A secondary's record as the journal prints it. */
std::string record(unsigned iif, std::uint32_t flags);

/** The primary's ingress interface is mirrored onto a secondary. */
Calls mirrored(int primary, int secondary, unsigned iif, std::uint32_t flags);
/** It is taken back, and the flags are settled by a write of their own, under the old iif. */
Calls taken_back_in_two_writes(int primary, int secondary, unsigned iif, std::uint32_t flags);
/** It is taken back with the only write. */
Calls taken_back(int primary, int secondary, std::uint32_t flags);

/** "Primary 100, Seconday 101" */
Message announced_pair(std::uint32_t primary, std::uint32_t secondary);
/** What the taking back says of a VLAN: its number, and its uses. */
Messages uses_told(int vlan, int subint_count = 0, int svi = 0, int l2_vlan = 1);
/** "fwmpd_bcm_vlan_control_vlan_get_from_cache(101) returned NULL" */
std::string not_in_cache(int vlan);

} // namespace rtifhal_test::pvlan_road
