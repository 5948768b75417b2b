/*
 * switch.h: the embedded switch as a whole: chip, wrappers, services, store
 * and journal in one object, which stands in for the platform while it lives.
 *
 * The platform's C functions have no handle, so they work on the switch that
 * was made last and still lives. Its constructor gives the platform's global
 * data (restore mode, global configuration, the stream, …) their start values.
 *
 * With a state folder the switch outlives the process: chip, store and what
 * the forwarding manager keeps of its own are in the folder as soon as the
 * platform call that changed them returns, and the next switch on the folder
 * begins with them. state/folder.h and state/chip_file.h tell what is kept.
 */
#pragma once

#include "chip/chip.h"
#include "fwm/host_state.h"
#include "fwm/trace_log.h"
#include "fwm/wrappers.h"
#include "journal/journal.h"
#include "services/command_output.h"
#include "services/directory.h"
#include "services/heap.h"
#include "services/messages.h"
#include "services/store.h"
#include "services/system_state.h"
#include "state/chip_file.h"
#include "state/folder.h"

#include <filesystem>
#include <memory>

namespace simswitch
{

/** How a switch is built. */
struct Options {
    chip::Kind chip = chip::Kind::trident;
    chip::Limits limits = {};             ///< table sizes; the chip kind's own where 0
    std::filesystem::path state_dir = {}; ///< folder that outlives the process; empty: in memory
};

/** The embedded switch. */
class Switch
{
public:
    /**
     * @throws state::Error when the state folder can't be used: it is damaged, in use by another
     *         process, of another chip, or can't be written; what and what to do is in its text
     */
    explicit Switch(const Options &options = {});
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
    void end_request()
    {
        wrappers.flush();
        save();
    }

    /**
     * Writes what has changed to the state folder. Each platform call, flush and write of the L2
     * side ends with it; who writes to the tables directly may call it.
     */
    void save()
    {
        if (chip_file_) {
            chip_file_->save();
        }
    }
    /**
     * Why the state folder has taken nothing more, empty while all is well. A platform call can't
     * fail for that: it goes on in memory, and the folder keeps the last good moment. Who runs
     * requests asks after each.
     */
    const std::string &state_error() const;
    /** The state folder; empty without one. */
    std::filesystem::path state_dir() const
    {
        return folder_ ? folder_->path() : std::filesystem::path();
    }
    /** What a switch is after its power was off: chip, caches, trunk map, VLAN records and store
     * begin anew, in the state folder too. What waits in the queue is dropped. */
    void power_cycle();

private:
    /** Before all that lives in it. */
    std::unique_ptr<state::Folder> folder_;

public:
    Journal journal;               ///< calls and faults
    chip::Chip chip;               ///< the tables of the chip
    fwm::Wrappers wrappers;        ///< write queue and caches
    fwm::TraceLog trace;           ///< messages of the library, syslog, history, debug output
    fwm::HostState host;           ///< trunk map, VLAN records, error texts, in-band set-up
    services::Directory directory; ///< the interfaces that the layer above has registered
    services::SystemState system;  ///< fast restart, platform keys
    services::Messages messages;   ///< the message transport and bcm_usd
    services::CommandOutputs command_outputs; ///< what diagnostic commands print
    services::Heap heap;                      ///< tracked allocations, allocation faults
    services::Store store;                    ///< the persistent store

private:
    void open_state();

    Switch *previous_ = nullptr;
    std::unique_ptr<state::ChipFile> chip_file_;
};

} // namespace simswitch
