/*
 * switch.h: the embedded switch as a whole: chip, wrappers, services, store
 * and journal in one object, which stands in for the platform while it lives.
 *
 * The platform's C functions have no handle, so they work on the switch that
 * was made last and still lives. Its constructor gives the platform's global
 * data (restore mode, global configuration, the stream, …) their start values.
 */
#pragma once

#include "chip/chip.h"
#include "fwm/host_state.h"
#include "fwm/trace_log.h"
#include "fwm/wrappers.h"
#include "journal/journal.h"
#include "services/directory.h"
#include "services/heap.h"
#include "services/messages.h"
#include "services/store.h"
#include "services/system_state.h"

#include <filesystem>

namespace simswitch
{

/** How a switch is built. */
struct Options {
    chip::Kind chip = chip::Kind::trident;
    chip::Limits limits = {};             ///< table sizes; the chip kind's own where 0
    std::filesystem::path state_dir = {}; ///< folder of the persistent store; empty: in memory
};

/** The embedded switch. */
class Switch
{
public:
    explicit Switch(Options options = {});
    ~Switch();
    Switch(const Switch &) = delete;
    Switch &operator=(const Switch &) = delete;

    /**
     * The switch that the platform's functions work on. Ends the process with a
     * message when there is none.
     */
    static Switch &current();
    /** The same; null when there is none. */
    static Switch *find_current();

    /** What the host does when a request is done: writes out what still waits in the queue. */
    void end_request() { wrappers.flush(); }

    Journal journal;               ///< calls and faults
    chip::Chip chip;               ///< the tables of the chip
    fwm::Wrappers wrappers;        ///< write queue and caches
    fwm::TraceLog trace;           ///< messages of the library, syslog, history, debug output
    fwm::HostState host;           ///< trunk map, VLAN records, error texts, in-band set-up
    services::Directory directory; ///< the interfaces that the layer above has registered
    services::SystemState system;  ///< fast restart, platform keys
    services::Messages messages;   ///< the message transport and bcm_usd
    services::Heap heap;           ///< tracked allocations, allocation faults
    services::Store store;         ///< the persistent store

private:
    Switch *previous_;
};

} // namespace simswitch
