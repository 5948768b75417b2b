/*
 * tables.h: what the null platform keeps, each under the number that it goes by, and its way
 * of numbering interfaces.
 *
 * An ifindex is its kind in the top 4 bits, the number of the main interface in 16, the number
 * of the subinterface in the low 12.
 */
#pragma once

#include "null_platform.h"

#include <sdk/field.h>
#include <sdk/l2.h>
#include <sdk/l3.h>
#include <sdk/trunk.h>
#include <sdk/vlan.h>

#include <array>
#include <bit>
#include <cstddef>

namespace null_platform
{

inline constexpr std::size_t NUMBERS = 8192;  /**< of L3 interfaces and ingress objects */
inline constexpr std::size_t STATIONS = 4096; /**< ids of stations, as many as Ids has */
inline constexpr std::size_t TRUNKS = 4096;
inline constexpr std::size_t TRUNK_ROOM = 32;
inline constexpr std::size_t FIELD_ENTRIES = 512;

/** Kinds of interface, as an ifindex begins. */
inline constexpr std::uint32_t KIND_PORT = 1;
inline constexpr std::uint32_t KIND_PORT_CHANNEL = 2;
inline constexpr std::uint32_t KIND_SVI = 3;
inline constexpr std::uint32_t KIND_TUNNEL = 4;
inline constexpr std::size_t KINDS = 16;

inline constexpr std::uint32_t kind_of(std::uint32_t ifindex)
{
    return ifindex >> 28;
}

inline constexpr std::uint32_t main_number_of(std::uint32_t ifindex)
{
    return (ifindex >> 12) & 0xFFFF;
}

inline constexpr std::uint32_t sub_number_of(std::uint32_t ifindex)
{
    return ifindex & 0xFFF;
}

/** 4096 ids that are given out, the lowest free one first. */
struct Ids {
    static constexpr std::size_t WORDS = 64;

    int first;
    std::uint64_t words_with_free; /**< bit n: word n has a free id */
    std::array<std::uint64_t, WORDS> free;

    void fill(int lowest)
    {
        first = lowest;
        words_with_free = ~std::uint64_t{0};
        free.fill(~std::uint64_t{0});
    }
    /** The lowest free id; -1 when none is left. */
    int take()
    {
        if (words_with_free == 0) {
            return -1;
        }
        const int word = std::countr_zero(words_with_free);
        std::uint64_t &bits = free[static_cast<std::size_t>(word)];
        const int bit = std::countr_zero(bits);
        bits &= bits - 1;
        words_with_free &= ~(static_cast<std::uint64_t>(bits == 0) << word);
        return first + word * 64 + bit;
    }
    void give_back(int id)
    {
        const auto at = static_cast<std::size_t>(id - first);
        if (at < WORDS * 64) {
            free[at / 64] |= std::uint64_t{1} << (at % 64);
            words_with_free |= std::uint64_t{1} << (at / 64);
        }
    }
};

struct Interface {
    bool exists;
    bcm_l3_intf_t object;
};

struct Ingress {
    bool exists;
    bcm_l3_ingress_t object;
};

struct Vlan {
    bool exists;
    int stg;
    bcm_vlan_control_vlan_t control;        /**< in the chip */
    bcm_vlan_control_vlan_t cached_control; /**< in the wrappers */
    bcm_vlan_block_t block;
};

struct Trunk {
    bool exists;
    int count;
    bcm_trunk_info_t info;
    std::array<bcm_trunk_member_t, TRUNK_ROOM> members;
};

struct FieldEntry {
    bcm_pbmp_t redirect;
    bcm_pbmp_t in_ports;
    bcm_pbmp_t in_ports_mask;
};

/** What the forwarding manager knows of a VLAN. */
struct VlanRecord {
    bool known;
    PrivateVlan kind;
};

struct Tables {
    Chip chip;
    bool fast_restart;
    int stgs; /**< groups given out */
    int field_entries;
    int nd_group_enabled;
    std::array<Interface, NUMBERS> interfaces;
    std::array<Ingress, NUMBERS> ingress;
    std::array<Vlan, VLANS> vlans;
    std::array<VlanRecord, VLANS> vlan_records;
    std::array<Trunk, TRUNKS> trunks;
    std::array<std::uint32_t, PORT_CHANNELS> tids; /**< of port-channels; 0: not known */
    std::array<FieldEntry, FIELD_ENTRIES> fields;
    std::array<bcm_l2_station_t, STATIONS> stations;
    Ids station_ids;
    Ids egress_ids;
    Ids group_ids;
};

/** The interfaces that the library can find. */
struct Directory {
    std::array<struct l3lif *, VLANS> by_int_vlan;
    std::array<struct l3lif *, KINDS * 65536> mains; /**< by kind and number */
    /** Subinterfaces, by main interface and number: ports, then port-channels. */
    std::array<struct l3lif *, std::size_t{PORTS + PORT_CHANNELS} * VLANS> subinterfaces;
};

extern Tables tables;
extern Directory directory;

/** Where an interface is kept by its ifindex; null for an ifindex that there can't be. */
inline struct l3lif **slot_of(std::uint32_t ifindex)
{
    const std::uint32_t kind = kind_of(ifindex);
    const std::uint32_t main = main_number_of(ifindex);
    const std::uint32_t sub = sub_number_of(ifindex);
    if (sub == 0) {
        return &directory.mains[kind * std::size_t{65536} + main];
    }
    if (kind == KIND_PORT && main < PORTS) {
        return &directory.subinterfaces[main * std::size_t{VLANS} + sub];
    }
    if (kind == KIND_PORT_CHANNEL && main < PORT_CHANNELS) {
        return &directory.subinterfaces[(PORTS + main) * std::size_t{VLANS} + sub];
    }
    return nullptr;
}

} // namespace null_platform
