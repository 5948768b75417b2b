/*
 * pipeline_chip.h: a chip with its packet pipeline, and the writes that make
 * routed interfaces of each kind, for the tests of the pipeline.
 */
#pragma once

#include "chip/pipeline/pipeline.h"
#include "outcome_matchers.h"
#include "pipeline_frames.h"

#include <fmt/format.h>

namespace simswitch::chip::pipeline
{

inline constexpr int ROUTED_VLAN = 4094; ///< VLAN of the routed ports

/** A chip and its pipeline. Every write must succeed. */
struct PipelineTest : testing::Test {
    explicit PipelineTest(Kind kind = Kind::trident);

    /** The L3 interface and ingress object of a number. */
    void interface(int iif, int vlan, const L3Ingress &ingress = {.vrf = 1});
    /** Takes a port off the flood lists of the platform's own field entries. */
    void off_flood_lists(int port);
    /** A routed port; its L3 interface has ROUTER_MAC and an MTU of 1500. */
    void routed_port(int port, int iif, const L3Ingress &ingress = {.vrf = 1});
    /** A subinterface, keyed on a generic port; `ports` carry it. */
    void subinterface(int gport, const std::vector<int> &ports, int vlan, int iif);
    /** A VLAN with its interface, its ports tagged. */
    void svi(int vlan, int iif, const PortSet &ports);
    /** A bridged VLAN. */
    void bridged_vlan(int vlan, const PortSet &ports, const PortSet &untagged = {});
    /** A trunk of ports. */
    void trunk(int id, const std::vector<int> &ports);
    /** A station for ROUTER_MAC in every VLAN. */
    int router_mac(std::uint32_t flags = 0x1c);
    /** A next hop with OTHER_MAC. */
    int next_hop(int iif, int port);
    /** A route of VRF 1, "10.9.0.0/16". */
    void route(const std::string &prefix, int next_hop, int vrf = 1);

    /**
     * Sends a frame and gives the verdict: traced, then as traffic, which must agree.
     * The result and the trace stay in `result` and `trace`.
     */
    std::string send(int port, const Bytes &frame);
    /** The bytes that a port got. */
    Bytes got(int port) const;
    /** The line of a stage in the last trace, empty when it wasn't met. */
    std::string line(Stage stage) const;

    Chip chip;
    Pipeline pipeline{chip};
    Result result;
    Trace trace;
};

struct PipelineTest2 : PipelineTest {
    PipelineTest2() : PipelineTest(Kind::trident2) {}
};

} // namespace simswitch::chip::pipeline
