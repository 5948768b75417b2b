/*
 * names.h: the names that a chip's numbers have in a session, for the texts of
 * an explanation. describe.h tells what an object of the chip is with them.
 */
#pragma once

#include "session/scene.h"
#include "session/state.h"

#include "chip/basics.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lab::packet
{

/** Names and numbers of a session, as it is now. */
class Names
{
public:
    /** @param state  must outlive this */
    explicit Names(const session::State &state) : state_(state), scene_(state.scene()) {}

    const session::State &state() const { return state_; }
    const simswitch::chip::Chip &chip() const { return state_.hardware.chip; }

    /** "Ethernet0", "CPU", or "port 7" for one without a name. */
    std::string port(int port) const;
    /** "Ethernet0 (port 1)". */
    std::string port_and_number(int port) const;
    /** "Ethernet0, Ethernet4 and 3 more"; "no port" for none. */
    std::string ports(const simswitch::chip::PortSet &ports) const;
    /** The routed interface of a number, "interface 7" for one without a name. */
    std::string interface(int iif) const;
    /** The name of an interface's number; empty when it has none. */
    std::string interface_or_nothing(int iif) const
    {
        return session::Scene::name(scene_.iifs, iif);
    }
    /** "PortChannel0001", or "trunk 7". */
    std::string trunk(int trunk) const;
    /** What a generic port is. */
    std::string gport(int gport) const { return scene_.gport_text(gport); }
    /** "default" or the VRF's name; "7" for one without a name. */
    std::string vrf(int vrf) const;
    /** "VLAN 100". */
    static std::string vlan(int vlan);
    /** The routed interfaces of a VRF, those that have an ingress object. */
    std::vector<std::string> interfaces_of_vrf(int vrf) const;

    /**
     * A text of the pipeline with names beside the numbers of ports, interfaces,
     * egress objects and VRFs, and in place of sets of ports.
     */
    std::string put_into(std::string_view text) const;

private:
    const session::State &state_;
    session::Scene scene_;
};

/** "A", "A and B", "A, B and 3 more": the first `most` of some words. */
std::string first_of(const std::vector<std::string> &words, std::size_t most);

} // namespace lab::packet
