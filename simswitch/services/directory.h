/*
 * directory.h: the layer above as the library sees it: the interfaces that it
 * has registered, and which of them are ready to forward.
 *
 * Whoever plays that layer registers its records here. The platform's
 * functions of l3lif/l3lif_layer.h and rtifhal_if_has_si read them. The layer's data block
 * l3lif_global_data is zeroed with each new switch.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

struct l3lif;

namespace simswitch::services
{

/** Size of l3lif_global_data in bytes. */
inline constexpr std::size_t LAYER_DATA_BYTES = 1056;
/** Where in it the ids of field entries that flood to ports begin, and how many there are. */
inline constexpr std::size_t LAYER_DATA_FLOOD_ENTRIES = 672;
inline constexpr std::size_t LAYER_DATA_FLOOD_ENTRY_COUNT = 96;

/** The registered interfaces, by ifindex. Records stay their owner's. */
class Directory
{
public:
    /** Registers a record under its ifindex; one that was there is replaced. */
    void add(l3lif *lif);
    /** Forgets an interface's record; unknown ones are no failure. */
    void remove(std::uint32_t ifindex) { lifs_.erase(ifindex); }
    /** Forgets records, knobs and updates. */
    void clear() { *this = {}; }
    /** The record of an ifindex, or null. */
    l3lif *find(std::uint32_t ifindex) const;
    /** The first record, by ifindex, with an internal VLAN; null for 0 or when there is none. */
    l3lif *find_by_int_vlan(std::uint16_t vlan) const;
    /** Whether the registered record of a main interface has subinterfaces. */
    bool has_subinterfaces(std::uint32_t ifindex) const;
    /** All records, in the order of their ifindex. */
    std::vector<l3lif *> all() const;

    /**
     * Says whether an interface is ready, whatever its record says. Without
     * this an interface is ready when it has a number in the chip; with it, it
     * needs that number still.
     */
    void set_ready(std::uint32_t ifindex, bool ready) { ready_[ifindex] = ready; }
    /** Gives an ifindex a number in the chip, also without a record. */
    void set_iif(std::uint32_t ifindex, std::uint32_t iif) { iifs_[ifindex] = iif; }
    /**
     * The number of an interface that is ready: the one given with set_iif, or
     * else the live one of its record, which is the parked number while the
     * hardware object is gone. Nothing when it isn't ready.
     */
    std::optional<std::uint32_t> ready_iif(std::uint32_t ifindex) const;

    /** The interfaces that l3lif_update_sdb_for_intf has published, in that order. */
    const std::vector<std::uint32_t> &updates() const { return updates_; }
    /** Notes that an interface was published. */
    void note_update(std::uint32_t ifindex) { updates_.push_back(ifindex); }

    /** Puts an interface into a VRF context. */
    void set_context(std::uint32_t ifindex, std::uint32_t context) { contexts_[ifindex] = context; }
    /** Its VRF context: the one given, or else the VRF of its record, 0 counted as 1. */
    std::uint32_t context(std::uint32_t ifindex) const;
    /** The interface manager's number of an interface, from 1, given at the first question. */
    std::uint32_t iod(std::uint32_t ifindex);
    /** The interface of such a number; nothing for an unknown one. */
    std::optional<std::uint32_t> ifindex_of_iod(std::uint32_t iod) const;

    /** Writes the id of a field entry that floods to ports into a slot, 0 to 95, of
     * l3lif_global_data. */
    static void set_flood_entry(std::size_t slot, std::uint32_t entry);

private:
    std::map<std::uint32_t, l3lif *> lifs_;
    std::map<std::uint32_t, bool> ready_;
    std::map<std::uint32_t, std::uint32_t> iifs_;
    std::map<std::uint32_t, std::uint32_t> contexts_;
    std::vector<std::uint32_t> iods_; ///< the ifindex of each number, the first is number 1
    std::unordered_map<std::uint32_t, std::uint32_t> iod_of_; ///< the number of each ifindex
    std::vector<std::uint32_t> updates_;
};

} // namespace simswitch::services
