/*
 * restart_report.h: all that one `rtif restart` came to, before it is printed.
 * restart_text.h prints it for people, restart_json.h for machines.
 */
#pragma once

#include "l3lif/restart.h"
#include "report/up_result.h"

#include "switch.h"

#include <optional>
#include <string>
#include <vector>

namespace lab::report
{

/** One run. What it points to outlives it. */
struct RestartReport {
    std::string state; ///< the state folder
    const simswitch::Switch *hardware = nullptr;
    const l3lif::Layer *layer = nullptr;
    const l3lif::RestartResult *restart = nullptr;
    std::optional<l3lif::Completion> completion; ///< restore: only when it was asked for
    std::optional<UpResult> up;                  ///< fast and cold
};

/** A next hop of a default route in the chip. */
struct NextHop {
    std::string interface;
    std::string mac;
    int port = 0;
    int vlan = 0;
};

/** A default route in the chip. */
struct DefaultRoute {
    bool ipv6 = false;
    int vrf = 0;
    std::vector<NextHop> next_hops;
};

/** The default routes that the chip holds. */
std::vector<DefaultRoute> default_routes(const RestartReport &report);

/** "Trident" or "Trident2". */
std::string chip_name(const simswitch::Switch &hardware);

} // namespace lab::report
