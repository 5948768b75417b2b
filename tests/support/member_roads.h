/*
 * member_roads.h: what the tests of a routed port-channel's members share:
 * port-channel 7 on trunk 8 with the member ports 5 and 6, and what a member's
 * way in and out calls and says, in stretches.
 *
 * The stretches are those of a table of numbers that is set up, on a switch on
 * which nothing is routed yet: the port-channel gets the number 3.
 */
#pragma once

#include "support/l3_objects.h"
#include "support/lif.h"
#include "support/vlan_roads.h"

#include <memory>
#include <string>
#include <vector>

namespace rtifhal_test::member_road
{

inline constexpr int TRUNK = 8;
inline constexpr int IIF = 3;
inline constexpr int FIRST = 5;
inline constexpr int SECOND = 6;

inline const std::string PORT_CONTROL = "fwmpd_bcm_port_control_set";
inline const std::string UNTAGGED_VLAN = "fwmpd_bcm_port_untagged_vlan_set";

/** Port-channel 7 with two member ports that are not up yet. */
class MemberTest : public LibraryTest
{
protected:
    explicit MemberTest(const simswitch::Options &options = {});

    /** Brings a member up before the stretch that is looked at. */
    void brought_up(Lif &member, int create);
    /** Both members are up, the first with create. */
    void both_up();
    /** From now on the port-channel counts as one that has subinterfaces. */
    void has_subinterfaces();
    /** The port controls that were set since start(). */
    Calls port_controls() const { return calls_of({PORT_CONTROL}); }

    std::unique_ptr<Lif> main = port_channel(7);
    std::unique_ptr<Lif> first = port(FIRST);
    std::unique_ptr<Lif> second = port(SECOND);
};

/** A port as a trunk member and its module port, as the journal prints them. */
std::string member_of_trunk(int port);
std::string module_port_of(int port);
/** What the trunk answers when it is read with those members. */
std::string trunk_read(Kind chip, const std::vector<int> &members);
/** The trunk's properties, as they are given to it. */
std::string trunk_info(Kind chip);

/** A dispatcher finds out what the member is. */
Calls kind_asked(const Lif &member);
/** Which port, which trunk. */
Calls port_asked(const Lif &member, int port);
Calls tid_asked(const Lif &main);
Message tid_found(const Lif &main);
/** A missing trunk is created and takes its first member. */
Calls trunk_created(Kind chip, int port);
/** A trunk that is there takes one more. */
Calls trunk_joined(Kind chip, int port, const std::vector<int> &before);
/** The port-channel's L3 interface is read. */
Calls object_read();
/** Port controls 8, 10, 9, 11, 14 in the order of the way in. */
Calls port_opened(int port, const std::vector<int> &values);
/** All five on, in the same order, which is that of the way out. */
Calls port_closed(int port);
Calls untagged_vlan(int port);

/** How the interface step of an add ends on an ordinary start. */
Calls ordinary_start();
/** The first member's way in with create, as a whole. */
Calls first_up(const Lif &main, const Lif &member, Kind chip, const Calls &end);
Messages first_up_messages(const Lif &main, const Lif &member, Kind chip);
/** The second member's way in without create, behind the first. */
Calls second_up(const Lif &main, const Lif &member, Kind chip);
Messages second_up_messages(const Lif &main, const Lif &member, Kind chip);
/** A member's way out as a whole; `destroy`: the port-channel's record goes with it. */
Calls down(const Lif &main, const Lif &member, int port, Kind chip, bool destroy);
Messages down_messages(const Lif &main, const Lif &member, int port, bool destroy);

} // namespace rtifhal_test::member_road
