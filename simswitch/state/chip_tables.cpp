/*
 * chip_tables.cpp: what ties the tables of chip.db to those in memory.
 *
 * A source is a table in memory: find(key) gives the record to be kept or
 * nothing, restore(key, record) puts one back, clear() empties it, changes()
 * tells which keys were written. The chip's tables are that already.
 */
#include "state/chip_tables.h"

#include "chip/refusal.h"
#include "sdk/convert.h"
#include "state/rows.h"

namespace simswitch::state
{

namespace
{

/** The installed rules of the field entries. */
struct FieldEntrySource {
    chip::FieldEntries &entries;

    std::optional<InstalledEntry> find(int id) const
    {
        const chip::FieldEntry *entry = entries.find(id);
        if (entry == nullptr || !entry->installed) {
            return std::nullopt;
        }
        return InstalledEntry{entry->group, *entry->installed};
    }
    Outcome restore(int id, const InstalledEntry &entry) const
    {
        return entries.restore(id, {entry.group, entry.rule, entry.rule});
    }
    void clear() const { entries.clear(); }
    chip::Changes<int> &changes() const { return entries.changes(); }
};

/** The wrappers' cache of VLAN controls. */
struct VlanControlSource {
    fwm::Wrappers &wrappers;

    std::optional<CachedControls> find(int vlan) const
    {
        if (wrappers.is_forgotten(vlan)) {
            return CachedControls{.known = false};
        }
        const bcm_vlan_control_vlan_t *kept = wrappers.kept_vlan_controls(vlan);
        return kept == nullptr ? std::nullopt
                               : std::optional(CachedControls{.controls = sdk::to_chip(*kept)});
    }
    Outcome restore(int vlan, const CachedControls &cached) const
    {
        if (!chip::is_vlan(vlan)) {
            return chip::out_of_range("VLAN", vlan, 1, chip::LAST_VLAN);
        }
        wrappers.restore_vlan_controls(vlan, cached.known ? &cached.controls : nullptr);
        return {};
    }
    void clear() const {}
    chip::Changes<int> &changes() const { return wrappers.vlan_control_changes(); }
};

/** The trunk ids of the port-channels. */
struct TrunkMapSource {
    fwm::HostState &host;

    std::optional<std::uint32_t> find(std::uint32_t ifindex) const
    {
        return host.trunk_id(ifindex);
    }
    Outcome restore(std::uint32_t ifindex, std::uint32_t tid) const
    {
        host.set_trunk_id(ifindex, tid);
        return {};
    }
    void clear() const { host.clear_trunk_ids(); }
    chip::Changes<std::uint32_t> &changes() const { return host.trunk_id_changes(); }
};

/** What the VLANs are in private VLANs. */
struct VlanRecordSource {
    fwm::VlanDirectory &vlans;

    std::optional<fwm::PrivateVlan> find(int vlan) const
    {
        return vlans.has(vlan) ? std::optional(vlans.role(vlan)) : std::nullopt;
    }
    Outcome restore(int vlan, fwm::PrivateVlan role) const
    {
        if (role > fwm::PrivateVlan::secondary) {
            return chip::out_of_range("part in a private VLAN", static_cast<int>(role), 0,
                                      static_cast<int>(fwm::PrivateVlan::secondary));
        }
        return vlans.add(vlan, role);
    }
    void clear() const { vlans.clear(); }
    chip::Changes<int> &changes() const { return vlans.changes(); }
};

/** A source as it is kept: a table of the chip by reference, a view by value. */
template <class Source> class Tied : public SavedTable
{
    using Bare = std::remove_reference_t<Source>;
    using Key = std::remove_cvref_t<decltype(std::declval<Bare &>().changes().keys().front())>;
    using Record = std::remove_cvref_t<decltype(*std::declval<Bare &>().find(std::declval<Key>()))>;

public:
    Tied(File &file, const char *name, Source source)
        : source_(std::forward<Source>(source)), rows_(file, name)
    {
    }
    static std::string definition(const char *name) { return table_definition<Key, Record>(name); }

    void load() override
    {
        source_.clear();
        rows_.read(
            [this](const Key &key, const Record &record) { return source_.restore(key, record); });
    }
    void watch(bool &changed) override { source_.changes().watch(changed); }
    void save() override
    {
        for (const Key &key : source_.changes().keys()) {
            if (const auto record = source_.find(key)) {
                rows_.put(key, *record);
            } else {
                rows_.erase(key);
            }
        }
    }
    void forget() override { source_.changes().forget(); }

private:
    Source source_;
    Rows<Key, Record> rows_;
};

template <class Visit> void each_chip_source(chip::Chip &chip, Visit visit)
{
    chip.for_each_table([&]<class Table>(const char *name, Table &table) {
        if constexpr (std::is_same_v<Table, chip::FieldEntries>) {
            visit.template operator()<FieldEntrySource>(name, FieldEntrySource{table});
        } else {
            visit.template operator()<Table &>(name, table);
        }
    });
}

template <class Visit>
void each_host_source(fwm::Wrappers &wrappers, fwm::HostState &host, Visit visit)
{
    visit.template operator()<VlanControlSource>("vlan_control_cache", {wrappers});
    visit.template operator()<TrunkMapSource>("trunk_map", {host});
    visit.template operator()<VlanRecordSource>("vlan_record", {host.vlans});
}

} // namespace

std::vector<std::string> chip_definitions(chip::Chip &chip, fwm::Wrappers &wrappers,
                                          fwm::HostState &host)
{
    std::vector<std::string> definitions;
    const auto add = [&]<class Source>(const char *name, Source &&) {
        definitions.push_back(Tied<Source>::definition(name));
    };
    each_chip_source(chip, add);
    each_host_source(wrappers, host, add);
    return definitions;
}

SavedTables open_chip_tables(File &file, chip::Chip &chip)
{
    SavedTables tables;
    each_chip_source(chip, [&]<class Source>(const char *name, Source &&source) {
        tables.push_back(std::make_unique<Tied<Source>>(file, name, std::forward<Source>(source)));
    });
    return tables;
}

SavedTables open_host_tables(File &file, fwm::Wrappers &wrappers, fwm::HostState &host)
{
    SavedTables tables;
    each_host_source(wrappers, host, [&]<class Source>(const char *name, Source &&source) {
        tables.push_back(std::make_unique<Tied<Source>>(file, name, std::forward<Source>(source)));
    });
    return tables;
}

} // namespace simswitch::state
