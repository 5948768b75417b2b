/*
 * chip_file.h: chip.db, the file in which the chip outlives the process, with
 * what the forwarding manager keeps of its own beside it.
 *
 *   the chip's tables   all of them, a table each; of field entries what is
 *                       installed: edits that were not are in the SDK's memory
 *                       and die with the process
 *   vlan_control_cache  the cached controls of a VLAN as they were last handed
 *                       to a wrapper or stored (fwm/wrappers.h)
 *   trunk_map           the trunk ids that fwm_pc_sdb_store has filed: that
 *                       database is the platform's and outlives the forwarding
 *                       manager
 *   vlan_record         what each VLAN is in a private VLAN: the L2 side's own
 *                       store holds it
 *
 * The tables note what was written; save writes just that, in one transaction,
 * at the end of each call. So a process that is killed leaves what it had
 * finished; writes that waited in the wrappers' queue are lost with it.
 */
#pragma once

#include "chip/chip.h"
#include "fwm/host_state.h"
#include "fwm/wrappers.h"
#include "state/folder.h"

#include <memory>
#include <string>

namespace simswitch::state
{

/** The folder is of a chip of another kind. */
class OtherChip : public Error
{
public:
    OtherChip(const std::string &text, chip::Kind kind) : Error(text), kind_(kind) {}
    /** The kind that it is of. */
    chip::Kind kind() const { return kind_; }

private:
    chip::Kind kind_;
};

/** The file. All that it is given must outlive it. */
class ChipFile
{
public:
    /**
     * Opens the file, made where there is none, and brings what it holds into
     * chip, caches and maps; a new one leaves them alone. From then on their
     * changes are noted.
     *
     * @throws Error when the file is damaged, or of a chip of another kind or
     *         size; chip, caches and maps must not be used then
     */
    ChipFile(Folder &folder, chip::Chip &chip, fwm::Wrappers &wrappers, fwm::HostState &host);
    ~ChipFile();

    /** Whether it is new: nothing was ever saved to it. */
    bool is_new() const;
    /** Writes what has changed. A failure is the folder's to remember; what it concerned is kept
     * in memory only. */
    void save()
    {
        if (changed_) {
            write();
        }
    }

private:
    struct Open;
    void load();
    void write();

    bool changed_ = false;
    std::unique_ptr<Open> open_;
};

} // namespace simswitch::state
