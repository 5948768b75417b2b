/*
 * l2_table.cpp: which station is behind which port. Open addressing: an entry
 * is at its home place or behind it with no free place between.
 */
#include "chip/pipeline/l2_table.h"

#include "chip/refusal.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <iterator>

namespace simswitch::chip::pipeline
{

namespace
{

std::uint64_t key_of(int vlan, const Mac &mac)
{
    return static_cast<std::uint64_t>(vlan) << 48 | number_of(mac);
}

bool is_group(const Mac &mac)
{
    return (mac[0] & 1U) != 0;
}

Outcome check(int vlan, const Mac &mac, bool group)
{
    if (!is_vlan(vlan)) {
        return out_of_range("VLAN", vlan, 1, LAST_VLAN);
    }
    if (is_group(mac) != group) {
        return {ERROR_PARAM,
                fmt::format("{} is {} address", text(mac), group ? "no group" : "a group")};
    }
    return {};
}

} // namespace

Mac L2Entry::mac() const
{
    Mac mac{};
    for (std::size_t i = 0; i < mac.size(); ++i) {
        mac.at(i) = static_cast<std::uint8_t>(key >> (40 - 8 * i));
    }
    return mac;
}

// Half of the places stay free, so that searches are short.
L2Table::L2Table(std::size_t limit)
    : limit_(limit), places_(std::bit_ceil(std::max<std::size_t>(limit, 1) * 2))
{
}

std::size_t L2Table::home_of(std::uint64_t key) const
{
    return (key * 0x9e3779b97f4a7c15U >> 20) & (places_.size() - 1);
}

L2Entry &L2Table::place_of(std::uint64_t key)
{
    std::size_t place = home_of(key);
    while (places_[place].key != 0 && places_[place].key != key) {
        place = (place + 1) & (places_.size() - 1);
    }
    return places_[place];
}

bool L2Table::learn(int vlan, const Mac &mac, int gport)
{
    if (is_group(mac) || !is_vlan(vlan)) {
        return false;
    }
    L2Entry &entry = place_of(key_of(vlan, mac));
    if (entry.key == 0) {
        if (size_ >= limit_) {
            return false;
        }
        ++size_;
        entry = {key_of(vlan, mac), gport, false};
    } else if (!entry.is_static) {
        entry.gport = gport;
    }
    return entry.gport == gport;
}

Outcome L2Table::add_static(int vlan, const Mac &mac, int gport)
{
    if (Outcome refused = check(vlan, mac, false); !refused.ok()) {
        return refused;
    }
    L2Entry &entry = place_of(key_of(vlan, mac));
    if (entry.key == 0 && size_ >= limit_) {
        return table_full("L2 address", limit_);
    }
    size_ += entry.key == 0 ? 1 : 0;
    entry = {key_of(vlan, mac), gport, true};
    return {};
}

Outcome L2Table::add_group(int vlan, const Mac &mac, const PortSet &ports)
{
    Outcome outcome = check(vlan, mac, true);
    if (outcome.ok()) {
        groups_[key_of(vlan, mac)] = ports;
    }
    return outcome;
}

Outcome L2Table::remove(int vlan, const Mac &mac)
{
    if (is_vlan(vlan)) {
        if (groups_.erase(key_of(vlan, mac)) != 0) {
            return {};
        }
        const L2Entry &entry = place_of(key_of(vlan, mac));
        if (entry.key != 0) {
            take_out(static_cast<std::size_t>(&entry - places_.data()));
            return {};
        }
    }
    return {ERROR_NOT_FOUND,
            fmt::format("L2 address {} in VLAN {} does not exist", text(mac), vlan)};
}

void L2Table::take_out(std::size_t place)
{
    const std::size_t mask = places_.size() - 1;
    --size_;
    places_[place] = {};
    // What stands behind moves up when the free place cuts it off from its home.
    for (std::size_t next = (place + 1) & mask; places_[next].key != 0; next = (next + 1) & mask) {
        const std::size_t home = home_of(places_[next].key);
        if (((next - home) & mask) >= ((next - place) & mask)) {
            places_[place] = places_[next];
            places_[next] = {};
            place = next;
        }
    }
}

template <class Leaves> void L2Table::take_out_if(Leaves leaves)
{
    for (const L2Entry &entry : all()) {
        if (leaves(entry)) {
            take_out(static_cast<std::size_t>(&place_of(entry.key) - places_.data()));
        }
    }
}

void L2Table::flush(int gport)
{
    take_out_if([gport](const L2Entry &entry) { return !entry.is_static && entry.gport == gport; });
}

void L2Table::flush()
{
    take_out_if([](const L2Entry &entry) { return !entry.is_static; });
}

const L2Entry *L2Table::find(int vlan, const Mac &mac) const
{
    const std::uint64_t key = key_of(vlan, mac);
    for (std::size_t place = home_of(key); places_[place].key != 0;
         place = (place + 1) & (places_.size() - 1)) {
        if (places_[place].key == key) {
            return &places_[place];
        }
    }
    return nullptr;
}

const PortSet *L2Table::find_group(int vlan, const Mac &mac) const
{
    const auto found = groups_.find(key_of(vlan, mac));
    return found == groups_.end() ? nullptr : &found->second;
}

std::vector<L2Entry> L2Table::all() const
{
    std::vector<L2Entry> entries;
    std::copy_if(places_.begin(), places_.end(), std::back_inserter(entries),
                 [](const L2Entry &entry) { return entry.key != 0; });
    std::sort(entries.begin(), entries.end(),
              [](const L2Entry &a, const L2Entry &b) { return a.key < b.key; });
    return entries;
}

} // namespace simswitch::chip::pipeline
