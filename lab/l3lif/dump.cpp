/*
 * dump.cpp: see dump.h.
 */
#include "l3lif/dump.h"

#include "rtifhal_trident.h"

#include "services/command_output.h"

#include <fmt/format.h>

#include <functional>
#include <string_view>

namespace lab::l3lif
{

namespace
{

/** Runs a dump with a command's output that is open as long as it lasts. */
Dump run_dump(simswitch::Switch &hardware, const std::string &name,
              const std::function<int(void *command)> &work)
{
    simswitch::services::CommandOutput &output = hardware.command_outputs.open();
    Dump dump;
    dump.request = make_request(hardware, name, [&work, &output] { return work(&output); });
    dump.text = output.text();
    hardware.command_outputs.close(&output);
    return dump;
}

/** What an interface without a port of its own is. */
std::string_view kind_in_words(const LifPlan &plan)
{
    switch (plan.kind) {
    case config::Kind::port_channel:
        return "port-channel";
    case config::Kind::subinterface:
        return "port-channel's subinterface";
    case config::Kind::svi:
        return "VLAN interface";
    default:
        return "tunnel";
    }
}

} // namespace

Dump dump_interface(simswitch::Switch &hardware, const Lif &lif, const std::string &name)
{
    return run_dump(hardware, name, [&lif](void *command) {
        return rtifhal_trident_dump_l3lif(command, lif.plan().name.c_str(), lif.record());
    });
}

std::string why_no_dump(const LifPlan &plan)
{
    return plan.chip_port != 0
               ? ""
               : fmt::format("{} is a {}: the dump looks the interface's port up first, so only "
                             "ports and their subinterfaces have one",
                             plan.name, kind_in_words(plan));
}

Dump dump_numbers(simswitch::Switch &hardware, const std::string &name)
{
    return run_dump(hardware, name, [](void *command) {
        rtifhal_kelvo_dump_global_info(0, command);
        return 0;
    });
}

} // namespace lab::l3lif
