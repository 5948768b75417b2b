/*
 * programmed_chip.h: a chip as the library leaves it after a few dozen adds:
 * routed ports, a VLAN with an interface, one with none, a tunnel, and the
 * routes and next hops that other layers put beside them.
 */
#pragma once

#include "chip/pipeline/pipeline.h"

#include "pipeline_frames.h"

#include <vector>

namespace bench
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;

inline constexpr int IN_PORT = 1;        ///< the routed port that frames come in on
inline constexpr int ROUTED_PORTS = 32;  ///< ports 1 to 32
inline constexpr int BRIDGED_VLAN = 100; ///< without an interface, on ports 40 to 47
inline constexpr int FIRST_BRIDGED_PORT = 40;
inline constexpr int BRIDGED_PORTS = 8;
inline constexpr int NET_COUNT = 1000; ///< 10.0.0.0/24, 10.0.1.0/24, … by ports in turn
inline constexpr int PATHS = 8;        ///< 11.0.0.0/8 has as many

/** The chip and its pipeline. Every write must succeed, or the program ends with its reason. */
class ProgrammedChip
{
public:
    ProgrammedChip();

    pipeline::Pipeline &pipeline() { return pipeline_; }

private:
    void add_routed_port(int port);
    void add_bridged_vlan();
    int add_tunnel();
    void add_routes();

    chip::Chip chip_;
    pipeline::Pipeline pipeline_{chip_};
    std::vector<int> next_hops_; ///< egress object by routed port, from 1
};

/** The MAC of a station behind a bridged port. */
chip::Mac station_mac(int port);

} // namespace bench
