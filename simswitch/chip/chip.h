/*
 * chip.h: the switching chip: one table per subject, and a way to tell what
 * changed.
 *
 * Each table has its own header with the rules it keeps: what it refuses, with
 * which code, and what is there at boot. All have the same shape: create,
 * remove, the setters, then find(id), size() and all(). Nothing here knows the
 * platform's C types; sdk/convert.h translates.
 *
 *     chip::Chip chip(chip::Kind::trident, {.stations = 2});
 *     Outcome outcome = chip.vlans.create(100);
 *     if (!outcome.ok()) { … outcome.reason … }
 *
 * snapshot.h tells what a chip holds, and what differs between two moments.
 */
#pragma once

#include "chip/authors.h"
#include "chip/egresses.h"
#include "chip/field_entries.h"
#include "chip/field_groups.h"
#include "chip/l3_ingresses.h"
#include "chip/l3_interfaces.h"
#include "chip/limits.h"
#include "chip/multipath_groups.h"
#include "chip/ports.h"
#include "chip/routes.h"
#include "chip/stations.h"
#include "chip/stgs.h"
#include "chip/switch_controls.h"
#include "chip/trunks.h"
#include "chip/tunnels.h"
#include "chip/vlan_translations.h"
#include "chip/vlans.h"
#include "chip/vxlan_ports.h"

namespace simswitch::chip
{

/** A chip, as it is after power-on. */
class Chip
{
public:
    /**
     * @param kind    the kind of chip
     * @param limits  table sizes, the kind's own where 0
     */
    explicit Chip(Kind kind = Kind::trident, const Limits &limits = {})
        : kind_(kind), limits_(sizes_of(kind, limits))
    {
    }
    // Tables refer to each other.
    Chip(const Chip &) = delete;
    Chip &operator=(const Chip &) = delete;

    Kind kind() const { return kind_; }
    /** The size of each table; no field is 0. */
    const Limits &limits() const { return limits_; }

private:
    Kind kind_;
    Limits limits_;

public:
    /** Whose requests put what there; nothing is noted before track_authors(). */
    Authors authors;
    Stations stations{limits_.stations};
    L3Interfaces l3_interfaces{limits_.l3_interfaces};
    L3Ingresses l3_ingresses{limits_.l3_ingresses};
    Vlans vlans{limits_.vlans};
    Stgs stgs{limits_.stgs, vlans};
    Ports ports{kind_};
    VlanTranslations vlan_translations{limits_.vlan_translations};
    Trunks trunks{limits_.trunks};
    Egresses egresses{limits_.egresses};
    MultipathGroups multipath_groups{limits_.multipath_groups, egresses};
    Routes routes{limits_.routes, egresses, multipath_groups};
    FieldGroups field_groups{limits_.field_groups};
    FieldEntries field_entries{limits_.field_entries, static_cast<int>(limits_.rule_region),
                               field_groups};
    SwitchControls switch_controls;
    Tunnels tunnels{limits_.tunnels, l3_interfaces};
    VxlanPorts vxlan_ports{limits_.vxlan_ports};

    /**
     * Calls a function with the name and the table of each, "l3_interface" and
     * l3_interfaces, a table before those whose entries name its own.
     */
    template <class Visitor> void for_each_table(Visitor visit)
    {
        visit("switch_control", switch_controls);
        visit("port", ports);
        visit("stg", stgs);
        visit("vlan", vlans);
        visit("station", stations);
        visit("l3_interface", l3_interfaces);
        visit("l3_ingress", l3_ingresses);
        visit("vlan_translation", vlan_translations);
        visit("trunk", trunks);
        visit("egress", egresses);
        visit("multipath_group", multipath_groups);
        visit("route", routes);
        visit("field_group", field_groups);
        visit("field_entry", field_entries);
        visit("tunnel", tunnels);
        visit("vxlan_port", vxlan_ports);
    }
    /** From now on `authors` knows who writes. What was written before has no author. */
    void track_authors();
    /** What the tables' own checks can't see: -7 for a VLAN in a group that doesn't exist. */
    Outcome check() const;
    /** Puts everything back to what it is after power-on, but for the count of writes. Nobody is
     * the author of what is there then. */
    void power_cycle();

    /** Number of writes that the chip has taken since power-on; who writes counts. */
    std::uint64_t writes = 0;
};

} // namespace simswitch::chip
