/*
 * chip_tables.h: the tables of chip.db, each tied to the table in memory whose
 * copy it is.
 */
#pragma once

#include "chip/chip.h"
#include "fwm/host_state.h"
#include "fwm/wrappers.h"
#include "state/file.h"

#include <memory>
#include <string>
#include <vector>

namespace simswitch::state
{

/** A table of the file and the one in memory. */
class SavedTable
{
public:
    SavedTable() = default;
    virtual ~SavedTable() = default;
    SavedTable(const SavedTable &) = delete;
    SavedTable &operator=(const SavedTable &) = delete;

    /** Fills the one in memory from the file. @throws Error for a row that can't be right */
    virtual void load() = 0;
    /** Has the one in memory note its changes. */
    virtual void watch(bool &changed) = 0;
    /** Writes the changes to the file. @throws sqlite::Error */
    virtual void save() = 0;
    /** Forgets the changes. */
    virtual void forget() = 0;
};

using SavedTables = std::vector<std::unique_ptr<SavedTable>>;

/** The statements that make the tables. */
std::vector<std::string> chip_definitions(chip::Chip &chip, fwm::Wrappers &wrappers,
                                          fwm::HostState &host);

// The tables, in the order in which they are loaded. All that is given must outlive them.
SavedTables open_chip_tables(File &file, chip::Chip &chip);
SavedTables open_host_tables(File &file, fwm::Wrappers &wrappers, fwm::HostState &host);

} // namespace simswitch::state
