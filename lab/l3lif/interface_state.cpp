/*
 * interface_state.cpp: see interface_state.h.
 */
#include "l3lif/interface_state.h"

namespace lab::l3lif
{

namespace
{

/** What the library writes to stop an interface; no add and no change of a property gives this. */
constexpr std::uint32_t STOPPED_FLAGS = 0x5E2;

/** Whether an interface of which nothing is there was asked for last. */
bool was_refused(const Interface &interface)
{
    const bool was_added = interface.up.code != 0 || interface.up.call_count != 0;
    return was_added && interface.down.call_count == 0;
}

} // namespace

std::string_view state_of(const simswitch::chip::Chip &chip, const Interface &interface,
                          const HardwareView &view)
{
    switch (interface.standing()) {
    case Standing::down:
        return was_refused(interface) ? "failed" : "down";
    case Standing::kept:
        return "kept";
    case Standing::up:
        break;
    }
    if (!view.missing.empty()) {
        return "failed";
    }
    const simswitch::chip::L3Ingress *ingress = chip.l3_ingresses.find(view.iif);
    return ingress != nullptr && ingress->flags == STOPPED_FLAGS ? "stopped" : "up";
}

} // namespace lab::l3lif
