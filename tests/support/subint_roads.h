/*
 * subint_roads.h: what the tests of subinterfaces share: a main interface with
 * its subinterfaces as the layer above hands them in, and the stretches of
 * calls and messages that an add and a delete consist of.
 *
 * A subinterface here is number 10 with 802.1Q VLAN 100, under the first free
 * number of the chip, 3. The switch is a unit 0 whose CPU port is 0.
 */
#pragma once

#include "support/l3_objects.h"
#include "support/lif.h"
#include "support/vlan_roads.h"

#include "services/tree.h"

#include <memory>
#include <string>
#include <vector>

namespace rtifhal_test::subint_road
{

inline constexpr int PORT = 5;
inline constexpr std::uint16_t VLAN = 100;
inline constexpr std::uint16_t CHANNEL = 7;
inline constexpr int TRUNK = 41;
inline constexpr int IIF = 3;
inline const std::string MODULE_PORT_5 = "0x8000005";
inline const std::string TRUNK_GPORT = "0xc000029";
inline const std::string PORT_CONTROL = "fwmpd_bcm_port_control_set";
inline const std::string TRANSLATE = "fwmpd_bcm_vlan_translate_action_add";
inline const std::string UNTRANSLATE = "fwmpd_bcm_vlan_translate_action_delete";

/** A port, routed, with subinterfaces that the layer above knows. */
class SubintOnPort : public LibraryTest
{
protected:
    explicit SubintOnPort(Kind chip = Kind::trident);

    /** One more subinterface of the port, filed in its tree. */
    std::unique_ptr<Lif> another(unsigned number, std::uint16_t vlan);
    /** Brings a subinterface up before the stretch that is looked at. */
    void brought_up(Lif &subinterface);

    simswitch::services::Tree subs;
    std::unique_ptr<Lif> main = port(PORT);
    std::unique_ptr<Lif> sub;
};

/**
 * A subinterface of a port-channel. Its own record says what it is; the object
 * and ingress operations work on the view, a record with the port-channel's
 * ifindex and all else the subinterface's.
 */
struct ChannelSub : Lif {
    ChannelSub(Lif &main, unsigned number, std::uint16_t vlan);

    /** Both records get a context and record of that live id. */
    void with_shared_record(std::uint16_t l3intf_id);
    /** "lif(0x…)" of the view. */
    std::string view_text() const;

    l3lif view = {};
};

/** Port-channel 7, trunk 41, whose members are in VLAN 4094. */
class SubintOnPortChannel : public LibraryTest
{
protected:
    /** @param members  ports of the trunk, in its order */
    explicit SubintOnPortChannel(const std::vector<int> &members = {5, 6, 9},
                                 Kind chip = Kind::trident);

    /** The trunk has members of these generic ports alone. */
    void set_members(const std::vector<int> &gports);
    /** Adds and deletes as the layer above does: afterwards both records have the same context. */
    int add(ChannelSub &subinterface, int create, int aux = 0);
    int add_step(ChannelSub &subinterface, int create);
    int del(ChannelSub &subinterface, int destroy, int aux = 0);
    int del_step(ChannelSub &subinterface, int destroy);
    /** Brings the subinterface up before the stretch that is looked at. */
    void brought_up();

    simswitch::services::Tree subs;
    std::unique_ptr<Lif> main = port_channel(CHANNEL);
    std::unique_ptr<ChannelSub> sub;
};

/** Which port it is. */
Calls port_asked(const Lif &sub);
/** Which trunk it is, and its members. */
Calls members_read(const Lif &sub, const std::vector<int> &ports);
/** A port is opened for routing. */
Calls port_opened(int port);
/** A new L3 interface; `stored`: the record that goes into the store, "lif(0x…)". */
Calls object_created(const std::string &stored, int iif = IIF, int vlan = VLAN);
/** The same object is written again. */
Calls object_written_again(const std::string &stored);
/** The object as it is read from the chip. */
std::string object(const std::string &flags, int iif = IIF, int vlan = VLAN);
/** A port joins a new VLAN; flags of the VLAN's controls. */
Calls vlan_made(int port, const std::string &flags = "0x278");
Messages vlan_made_messages(int port);
/** A port joins a VLAN in which those ports are by then, itself among them. */
Calls vlan_joined(int port, const std::vector<int> &ports);
Messages vlan_joined_messages(int port, const std::vector<int> &ports);
/** A port looks translations up. */
Calls keyed(int port);
/** A translation is added or removed. */
Calls translated(const std::string &gport, int iif = IIF, int code = 0);
Calls untranslated(const std::string &gport, int code = 0);
/** The ingress object is written and the egress step done; `create` as in the add. */
Calls ingress_and_egress(const Lif &sub, const Lif &main, Kind chip, bool create = true);
/** Egress and ingress step of a delete. */
Calls untied(const Lif &sub, const Lif &main, bool destroy);
/** The L3 interface is read; its code where the chip refuses. */
Calls object_read(int code = 0);
/** The main interface is looked up before a port's delete. */
Calls main_asked(const Lif &sub, const Lif &main);
/** The object goes, number and records with it. */
Calls object_deleted(const Lif &sub, bool destroy);
/** A port leaves the VLAN, in which those ports stay; the last one ends it. */
Calls vlan_left(int port, const std::vector<int> &staying);

} // namespace rtifhal_test::subint_road
