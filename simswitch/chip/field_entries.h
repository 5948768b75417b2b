/*
 * field_entries.h: the entries of the field processor, the rules in the chip's
 * TCAM.
 *
 * An entry is there twice: the SDK's copy, which edits change, and the
 * installed one, which the chip goes by. install() brings the copy into the
 * chip. At boot the platform's own entries are there, installed: of the
 * default region of S entries, S-1, S-3, S-4, S-5 and S-8 redirect to the front
 * ports, and S-4, S-5 and S-8 look at the port on which a frame came in.
 */
#pragma once

#include "chip/basics.h"
#include "chip/field_groups.h"
#include "chip/outcome.h"
#include "chip/table.h"

#include <optional>

namespace simswitch::chip
{

inline constexpr int ACTION_REDIRECT_PORTS = 32; ///< redirect to a set of ports
inline constexpr int ACTION_DROP = 39;           ///< drop the frame
inline constexpr int FIRST_FIELD_ENTRY = 8192;   ///< first id of entries whose id the chip gives

/** Which ports a frame may have come in on. */
struct InPorts {
    PortSet data{}; ///< the ports
    PortSet mask{}; ///< the ports that count

    bool operator==(const InPorts &) const = default;
};

/** What a rule matches and does. */
struct FieldRule {
    std::map<int, PortSet> port_actions{}; ///< ports by action
    std::set<int> actions{};               ///< actions without ports
    std::optional<InPorts> in_ports{};     ///< in-ports qualifier
    std::optional<bool> l3_routable{};     ///< L3-routable qualifier

    bool operator==(const FieldRule &) const = default;
};

/** An entry. */
struct FieldEntry {
    int group = SUP_GROUP;                ///< the group that it is in
    FieldRule copy{};                     ///< the SDK's copy
    std::optional<FieldRule> installed{}; ///< what the chip goes by; nothing until installed

    bool operator==(const FieldEntry &) const = default;
};

std::string text(const FieldRule &rule);
/** "group 1 installed (action 32 {1-104}) copy the same". */
std::string text(const FieldEntry &entry);

/** The table of field entries. */
class FieldEntries
{
public:
    /** With the platform's own entries in it. `groups` must outlive this. */
    FieldEntries(std::size_t limit, int region_size, const FieldGroups &groups);

    /** Creates an empty entry; `id` receives its id. -6 when the table is full; -7 no such group.
     */
    Outcome create(int group, int &id);
    /** Removes an entry. -7 when there is none. */
    Outcome remove(int id);

    // Edits of the SDK's copy. All: -7 when there is no such entry.

    /** Gives an entry an action with ports. -8 when it has the action. */
    Outcome add_port_action(int id, int action, const PortSet &ports);
    /** Gives an entry an action without ports. -8 when it has the action. */
    Outcome add_action(int id, int action);
    /** Takes an action out. -7 when the entry hasn't got it. */
    Outcome remove_action(int id, int action);
    /** Sets the in-ports qualifier, new or again. */
    Outcome set_in_ports(int id, const InPorts &in_ports);
    /** Sets the L3-routable qualifier, new or again; with nothing it doesn't count. */
    Outcome set_l3_routable(int id, std::optional<bool> routable);
    /** Takes a qualifier out. -7 when the entry hasn't got it. */
    Outcome remove_qualifier(int id, int qualifier);
    /** Brings the copy into the chip. */
    Outcome install(int id);

    /** The ports of an action in the SDK's copy. -7 when the entry hasn't got it. */
    Outcome get_port_action(int id, int action, PortSet &ports) const;
    /** The in-ports qualifier of the SDK's copy. -7 when the entry hasn't got it. */
    Outcome get_in_ports(int id, InPorts &in_ports) const;
    /** The entry, null when there is none. */
    const FieldEntry *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, FieldEntry> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear()
    {
        table_.clear();
        ids_.clear();
    }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const FieldEntry &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }
    /** Grows with each write. */
    std::uint64_t generation() const { return table_.generation(); }

private:
    void boot(int region_size);

    std::size_t limit_;
    const FieldGroups &groups_;
    IdPool ids_{FIRST_FIELD_ENTRY};
    Table<FieldEntry> table_;
};

} // namespace simswitch::chip
