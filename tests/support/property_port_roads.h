/*
 * property_port_roads.h: what the tests of the property setters of ports and
 * port-channels share: port 5 that is up, or port-channel 7 on trunk 8 that is
 * up on the ports 5 and 6, with subinterfaces, and what a setter calls and says
 * in stretches. Both interfaces have the number 3.
 */
#pragma once

#include "support/l3_objects.h"
#include "support/library_test.h"
#include "support/lif.h"
#include "support/member_roads.h"
#include "support/vlan_roads.h"

#include "services/tree.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace rtifhal_test::property_road
{

inline constexpr int PORT = 5;
inline constexpr int IIF = 3;
inline const std::string SET_PORT = "rtifhal_set_kelvo_l3_property_l3int";
inline const std::string SET_CHANNEL = "rtifhal_set_kelvo_l3_property_l3pc";
inline const std::string PORT_CONTROL = "fwmpd_bcm_port_control_set";
inline const std::string WRITE_INTERFACE = "rtifhal_bcm_l3_intf_create";
inline const std::string WRITE_INGRESS = "rtifhal_bcm_l3_ingress_create";
inline const std::string FROM_CACHE = "rtifhal_bcm_l3_ingress_get_from_cache";
inline const std::string READ_INTERFACE = "bcm_l3_intf_get";

/** Properties by name, those that aren't named 0. */
struct Properties {
    std::uint32_t ipv4_en = 0;
    std::uint32_t ipv4_mc_en = 0;
    std::uint32_t ipv6_en = 0;
    std::uint32_t l3_prop_word_7 = 0;
    std::uint8_t urpf_mode = 0;
    std::uint16_t vrf = 0;
    std::uint16_t ipv6_vrf = 0;
    std::uint16_t mtu = 0;
    std::uint32_t ingress_flag_word = 0;
    std::uint32_t l3_prop_word_8 = 0;
    std::uint16_t acl_qos_label_pending = 0;
    std::uint32_t class_high_bit = 0;
    std::uint32_t mpls_en = 0;

    operator l3lif_pi_ctxt() const;
};

/** A property that a port control follows. */
struct Followed {
    int control;
    std::uint32_t l3lif_pi_ctxt::*word;
    std::size_t place; ///< of the control in the order in which the controls are written
};
inline constexpr std::array<Followed, 4> FOLLOWED = {{{8, &l3lif_pi_ctxt::ipv4_en, 0},
                                                      {10, &l3lif_pi_ctxt::ipv4_mc_en, 1},
                                                      {9, &l3lif_pi_ctxt::ipv6_en, 2},
                                                      {14, &l3lif_pi_ctxt::mpls_en, 4}}};

/** The five values with that one on and all else off. */
std::vector<int> only(const Followed &followed);
/** All on but control 11. */
inline const std::vector<int> ALL_ON = {1, 1, 1, 0, 1};
inline const std::vector<int> ALL_OFF = {0, 0, 0, 0, 0};

/** Subinterfaces that the layer above has filed under a main interface. */
class Subinterfaces
{
public:
    /** One more, with all its properties 0. @param number  from 1; the order of the tree */
    Lif &add(Lif &main, unsigned number);
    /** The main interface has a tree, with what has been added by now. */
    void file(Lif &main) { main.lif.subint_tree = tree_.get(); }

private:
    simswitch::services::Tree tree_;
    std::vector<std::unique_ptr<Lif>> subs_;
};

/** The five controls of ports among the calls, the ingress ties left out. */
Calls family_controls(const Calls &port_controls);

/** Port 5 is up under the number 3; IPv4 is on, VRF 1, MTU 1500. */
class PortTest : public LibraryTest
{
protected:
    explicit PortTest(Kind chip = Kind::trident);

    int set() { return rtifhal_set_kelvo_l3_property_l3int(lif->get()); }
    Calls controls() const { return family_controls(calls_of({PORT_CONTROL})); }

    std::unique_ptr<Lif> lif = port(PORT);
    Subinterfaces subs;
};

/** Port-channel 7 is up under the number 3 on its members 5 and 6, which its tree has. */
class ChannelTest : public member_road::MemberTest
{
protected:
    explicit ChannelTest(Kind chip = Kind::trident);

    int set() { return rtifhal_set_kelvo_l3_property_l3pc(main->get()); }
    Calls controls() const { return family_controls(calls_of({PORT_CONTROL})); }
    /** The tree gets one more member, which the trunk doesn't have. */
    void file_member(Lif &member);

    simswitch::services::Tree members;
    Subinterfaces subs;
};

/** The L3 interface as the journal prints it; tunnel: its tunnel initiator. */
std::string object(const std::string &flags, int tunnel = 0);
/** The object is read by its number. */
std::string object_read(int tunnel = 0);
/** The object is written again and stored. */
Calls object_rewritten(const Lif &lif, int tunnel = 0);
Messages object_rewritten_messages(const Lif &lif);

/** The ingress object of IPv4 alone, as the chip gets it. */
std::string ingress(Kind chip);
/** The ingress object of a port is written again and tied to port 5. */
Calls port_ingress_rewritten(const Lif &lif, const std::string &record, Kind chip);
Messages port_ingress_rewritten_messages(const Lif &lif);
/** The same of the port-channel, tied to those ports, which the trunk has. */
Calls channel_ingress_rewritten(const Lif &lif, Kind chip, const std::vector<int> &ports);
Messages channel_ingress_rewritten_messages(const Lif &lif);

} // namespace rtifhal_test::property_road
