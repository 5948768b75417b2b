/*
 * member_port.h: what the tests of a port's way into VLAN 4094 without a routed
 * interface share: the VLAN is there, and what a call consists of.
 */
#pragma once

#include "support/lif.h"
#include "support/vlan_roads.h"

#include <memory>
#include <string>

namespace rtifhal_test::member_port
{

using vlan_road::FLUSH;
using vlan_road::GROUP;
using vlan_road::PORT;
using vlan_road::ROUTED;

inline const std::string INIT = "rtifhal_init_member_port";

/** A call begins; the port is found. */
Calls begins(const Lif &lif, int sdk_port);
/** The same up to where an interface turns out to be no port. */
Calls begins_without_port(const Lif &lif, int type);
/** The queue is flushed and the group is brought up. */
Calls brings_group_up(int group = GROUP);
/** The port goes in or out. */
Calls goes_in(int port);
Calls goes_out(int port);

/** The first message. */
Message entered(const Lif &lif, int port, int clear);
/** The group is there. */
Messages group_is_up(int port, int group = GROUP);
/** The last message. */
Message done(const std::string &flags = "0x0");

/** A test on a chip that has VLAN 4094. */
class MemberPortTest : public LibraryTest
{
protected:
    explicit MemberPortTest(const simswitch::Options &options = {});

    /** Puts the port in, or takes it out. */
    int in() { return rtifhal_init_member_port(lif->lif.ifindex, 0); }
    int out() { return rtifhal_init_member_port(lif->lif.ifindex, 1); }
    /** The group is in force. */
    void group_was_up();

    std::unique_ptr<Lif> lif = port(PORT);
};

} // namespace rtifhal_test::member_port
