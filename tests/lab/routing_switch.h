/*
 * routing_switch.h: a switch with interfaces of each kind, its routing layer, and
 * what the chip then holds, one line a route.
 */
#pragma once

#include "l3lif/bring_up.h"
#include "l3lif/layer.h"
#include "routing/routing.h"

#include "chip/pipeline/pipeline.h"
#include "switch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lab_test
{

using Lines = std::vector<std::string>;

/**
 * Ethernet0 10.0.0.1/24 and 2001:db8::1/64, Ethernet4 10.0.1.1/24 with its
 * subinterface 10 10.0.3.1/24, PortChannel1 10.0.2.1/24 with its subinterface 20
 * 10.0.4.1/24, Vlan100 10.1.0.1/24 with the secondary Vlan101, Vlan200
 * 10.3.0.1/24 with one port, Ethernet28 of Vrf_red 10.0.0.1/24, and Tunnel1 to
 * 10.9.0.1.
 */
class RoutingTest : public ::testing::Test
{
protected:
    explicit RoutingTest(const simswitch::Options &options = {}, std::string_view more = "");

    /** The interface of a name. */
    lab::l3lif::Interface &interface(std::string_view name);
    /** Takes an interface down, and syncs. */
    void take_down(std::string_view name);
    /** Adds a host of a MAC that ends so. */
    void know(const std::string &interface, std::string_view address, std::uint8_t mac,
              const std::string &port = "");
    /** Adds a static route of the default VRF; "10.0.0.9", "Tunnel1", "fe80::9%Ethernet0". */
    void route(std::string_view prefix, const Lines &ways);
    /** Why a call isn't done; empty when it is. */
    template <class Work> std::string problem(Work work)
    {
        try {
            work();
        } catch (const lab::routing::UnknownName &error) {
            return std::string("unknown: ") + error.what();
        } catch (const lab::routing::Error &error) {
            return error.what();
        }
        return "";
    }
    /** "vrf 1 10.0.0.0/24: CPU of Ethernet0", several ways with "and" between them. */
    Lines routes() const;
    /** The line of one prefix of the default VRF without it; empty when there is none. */
    std::string to(std::string_view prefix) const;
    /** How often the chip's tables that routing writes were written. */
    std::vector<std::uint64_t> writes();

    simswitch::Switch hardware;
    lab::config::Description config;
    lab::l3lif::Layer layer{hardware};
    simswitch::chip::pipeline::Pipeline pipeline{hardware.chip};
    lab::routing::Routing routing{hardware, layer, pipeline.l2()};

private:
    std::string text_of(int egress) const;
};

/** An address. */
lab::config::IpAddress ip(std::string_view text);

} // namespace lab_test
