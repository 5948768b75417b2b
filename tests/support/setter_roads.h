/*
 * setter_roads.h: what the tests of the property setters of SVIs, subinterfaces
 * and tunnels share: an SVI that is up, and what a setter calls and says in
 * stretches. These kinds have no port of their own: their setters write the two
 * objects again, and the SVI's its VLAN's record before that.
 *
 * All interfaces have the number 3. property_port_roads.h has ports and
 * port-channels.
 */
#pragma once

#include "support/lif.h"
#include "support/svi_roads.h"
#include "support/vlan_roads.h"

#include <cstdint>
#include <string>

namespace rtifhal_test::setter_road
{

inline constexpr int IIF = 3;
/** The chip's own mark of a VLAN whose snooping is off; the cache never has it. */
inline constexpr std::uint32_t SNOOPING_OFF = 0x800;
inline const std::string SET_SVI = "rtifhal_set_kelvo_l3_property_svi";
inline const std::string READ_INTERFACE = "bcm_l3_intf_get";
inline const std::string WRITE_INTERFACE = "rtifhal_bcm_l3_intf_create";
inline const std::string WRITE_INGRESS = "rtifhal_bcm_l3_ingress_create";
inline const std::string FROM_CACHE = "rtifhal_bcm_l3_ingress_get_from_cache";
inline const std::string VLAN_FROM_CACHE = "fwmpd_bcm_vlan_control_vlan_get_from_cache";
inline const std::string WRITE_VLAN = "fwmpd_bcm_vlan_control_vlan_set";
inline const std::string WRITE_VLAN_DIRECTLY = "bcm_vlan_control_vlan_set";
inline const std::string CREATE_INTERFACE = "rtifhal_l3_intf_create";
inline const std::string CREATE_INGRESS = "rtifhal_l3_ing_create";

/** All families, a strict reverse-path check, VRF 5, MTU 9000, a class of 0xE1 in the end. */
inline constexpr l3lif_pi_ctxt EVERYTHING_ON = {.ipv4_en = 1,
                                                .ipv4_mc_en = 1,
                                                .ipv6_en = 1,
                                                .l3_prop_word_7 = 1,
                                                .urpf_mode = 3,
                                                .vrf = 5,
                                                .ipv6_vrf = 6,
                                                .mtu = 9000,
                                                .ingress_flag_word = 1,
                                                .l3_prop_word_8 = 1,
                                                .acl_qos_label_pending = 0x21,
                                                .class_high_bit = 1,
                                                .mpls_en = 1};

/** The L3 interface is read by its number; answer: "{flags=0x0 …}". */
std::string object_answered(const std::string &answer);
/** The ingress object of IPv4 alone in VRF 1, as the chip gets it. */
std::string ip4_ingress(Kind chip);
/** The chip has refused the L3 interface; `working`: "0x…". */
Message object_refused(const std::string &working, int code);
/** The cache hasn't got the ingress object. */
Message ingress_not_cached();

/**
 * The L3 interface is written again. `working` is the hex ifindex of the
 * interface whose object it is; another than the one passed in for a
 * subinterface on a port-channel.
 */
Messages object_messages(const Lif &lif, const std::string &working, int int_vlan, int encap_vlan);
/** The ingress object of IPv4 alone is written again; without the tie. */
Messages ingress_messages(const Lif &lif, const std::string &working);
/** The last message of the ingress object's create. */
Message ingress_done(const Lif &lif);

/** The SVI of VLAN 100 is up: IPv4 on, VRF 1, MTU 1500; VLAN flags 0x400230. */
class SviSetterTest : public svi_road::SviTest
{
protected:
    explicit SviSetterTest(Kind chip = Kind::trident);

    int set(std::uint32_t property, std::uint32_t value);
    /** The VLAN's records that were written, in order, through the wrapper and directly. */
    Calls vlan_writes() const { return calls_of({WRITE_VLAN, WRITE_VLAN_DIRECTLY}); }
};

/** What the SVI setter may change of the VLAN's record. */
struct VlanRecord {
    unsigned vrf = 1;
    std::uint32_t flags = svi_road::ROUTED_IP4;
    unsigned urpf = 0;
};
/** The record as the journal prints it, routed under the number 3. */
std::string text(const VlanRecord &record);
/** The record is written through the wrapper, then directly with snooping off. */
Calls writes_of(const VlanRecord &record);

/** The SVI's setter up to the read of its object. */
Calls svi_object_read();
/** The setter's own write of the VLAN's record; the codes of the two writes. */
Calls svi_vlan_written(const VlanRecord &record, int wrapped = 0, int direct = 0);
/** The ingress object is written again and tied to the VLAN. */
Calls svi_ingress_rewritten(const Lif &lif, Kind chip, const std::string &ingress,
                            const VlanRecord &record);
/** The SVI's setter as a whole, IPv4 alone in VRF 1; `first`: its own write. */
Calls whole_svi_road(const Lif &lif, Kind chip, const VlanRecord &first, const VlanRecord &last);
/** Its messages; flags before and after, `unknown` after the first where it says so. */
Messages svi_messages(const Lif &lif, std::uint32_t property, std::uint32_t before,
                      std::uint32_t after, const Messages &unknown = {});

} // namespace rtifhal_test::setter_road
