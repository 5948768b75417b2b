/*
 * check_parts.h: the subjects of a check, one function each. check.h runs them.
 */
#pragma once

#include "check/check.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace lab::check
{

/** What all subjects look at. */
struct Scene {
    simswitch::Switch &hardware;
    const l3lif::RestartResult &restored;
    std::vector<simswitch::services::StoredInterface> stored; ///< in the order of `restored`
    std::vector<int> held_back;              ///< in the stored global configuration
    std::map<int, std::string> owners;       ///< stored interface by its number in the chip
    std::map<int, std::string> displaced;    ///< interface whose record another's has replaced
    std::set<int> tied;                      ///< numbers that a port, VLAN or translation names
    std::map<int, std::set<int>> vlan_users; ///< chip ports of routed uses, by VLAN
    bool has_kept_channel = false; ///< a port-channel without members, its record replaced
    bool has_parked = false;       ///< the chip has objects of kept interfaces
    CheckResult &result;

    const simswitch::chip::Chip &chip() const { return hardware.chip; }
    void differ(std::string what, std::string cause) const
    {
        result.differences.push_back({std::move(what), std::move(cause)});
    }
    void note(std::string text) const { result.notes.push_back(std::move(text)); }
    /** Whether an interface is known to have a number. */
    bool is_owned(int iif) const { return owners.contains(iif) || displaced.contains(iif); }
    bool is_held_back(int iif) const;
};

/** Finds the owners of numbers, and which port or VLAN is whose. */
void find_owners(Scene &scene);

/** Stored interfaces: whether the chip has all of each, as it was stored. */
void check_stored(const Scene &scene);
/** Numbers: handed out twice, held back and owned, not taken by the library. */
void check_numbers(const Scene &scene);
/** L3 interfaces and ingress objects of the chip: whose they are. */
void check_objects(const Scene &scene);
/** What names an ingress object: ports, VLANs, translations. */
void check_ties(const Scene &scene);
/** VLANs: ports that nobody uses. */
void check_vlans(const Scene &scene);
/** VLANs of whose controls the wrappers' cache knows other values than the chip has. */
void check_vlan_caches(const simswitch::Switch &hardware, CheckResult &result);
/** Stations: those that are there twice, or in no VLAN or on no port that routes. */
void check_stations(const Scene &scene);

/** What a generic port stands for: "port 5", "trunk 2". */
std::string gport_text(int gport);
/** The chip's ports of a generic port; none for a trunk that isn't there. */
std::vector<int> ports_of_gport(const simswitch::chip::Chip &chip, int gport);

} // namespace lab::check
