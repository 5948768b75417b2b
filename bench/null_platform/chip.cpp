/*
 * chip.cpp: the null platform set up, and what the layer above tells it; see null_platform.h.
 */
#include "calls.h"
#include "tables.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>
#include <l3lif/l3lif_layer.h>

#include <cstring>
#include <numeric>
#include <vector>

extern "C" {
int fwmpd_asic_cpu_port = 0;
int fwmpd_trident_unit = 0;
unsigned char fwmpd_global_config[2048];
int g_fwm_pss_restore_mode = 0;
void *g_fwm_pss_context = nullptr;
unsigned char l3lif_global_data[1056];
}

namespace null_platform
{

std::uint64_t call_counts[CALL_NUMBER];
Tables tables;
Directory directory;

namespace
{

/** Where the layer above keeps the ids of flooding field entries. */
constexpr std::size_t FLOOD_ENTRIES_AT = 672;
constexpr std::uint32_t FLOOD_ENTRIES = 96;

std::vector<std::uint32_t> known;

std::uint32_t ifindex_of(std::uint32_t kind, std::uint32_t main)
{
    return kind << 28 | main << 12;
}

} // namespace

void reset(Chip chip)
{
    std::memset(static_cast<void *>(&tables), 0, sizeof tables);
    tables.chip = chip;
    tables.station_ids.fill(1);
    tables.egress_ids.fill(100000);
    tables.group_ids.fill(200000);
    for (std::uint32_t channel = 0; channel < PORT_CHANNELS; ++channel) {
        tables.tids[channel] = channel + 1;
    }
    for (const std::uint32_t ifindex : known) {
        *slot_of(ifindex) = nullptr;
    }
    known.clear();
    directory.by_int_vlan.fill(nullptr);
    std::memset(l3lif_global_data, 0, sizeof l3lif_global_data);
    std::memset(fwmpd_global_config, 0, sizeof fwmpd_global_config);
    std::memset(call_counts, 0, sizeof call_counts);
    g_fwm_pss_restore_mode = 0;
}

std::uint32_t port_ifindex(std::uint32_t port)
{
    return ifindex_of(KIND_PORT, port);
}

std::uint32_t port_channel_ifindex(std::uint32_t channel)
{
    return ifindex_of(KIND_PORT_CHANNEL, channel);
}

std::uint32_t svi_ifindex(std::uint32_t vlan)
{
    return ifindex_of(KIND_SVI, vlan);
}

std::uint32_t tunnel_ifindex(std::uint32_t tunnel)
{
    return ifindex_of(KIND_TUNNEL, tunnel);
}

std::uint32_t subinterface_ifindex(std::uint32_t main, std::uint32_t number)
{
    return main | number;
}

void make_known(struct l3lif &l3lif)
{
    struct l3lif **const slot = slot_of(l3lif.ifindex);
    if (slot != nullptr) {
        *slot = &l3lif;
        known.push_back(l3lif.ifindex);
    }
    if (l3lif.int_vlan != 0 && l3lif.int_vlan < VLANS) {
        directory.by_int_vlan[l3lif.int_vlan] = &l3lif;
    }
}

void forget(const struct l3lif &l3lif)
{
    if (struct l3lif **const slot = slot_of(l3lif.ifindex); slot != nullptr) {
        *slot = nullptr;
    }
    if (l3lif.int_vlan < VLANS && directory.by_int_vlan[l3lif.int_vlan] == &l3lif) {
        directory.by_int_vlan[l3lif.int_vlan] = nullptr;
    }
}

void set_private_vlan(std::uint16_t vlan, PrivateVlan kind)
{
    tables.vlan_records[vlan % VLANS] = {true, kind};
}

void set_fast_restart(bool fast)
{
    tables.fast_restart = fast;
}

void set_flood_entry(std::uint32_t slot, std::uint32_t entry)
{
    if (slot < FLOOD_ENTRIES) {
        std::memcpy(&l3lif_global_data[FLOOD_ENTRIES_AT + slot * sizeof entry], &entry,
                    sizeof entry);
    }
}

std::uint64_t calls()
{
    return std::accumulate(std::begin(call_counts), std::end(call_counts), std::uint64_t{0});
}

} // namespace null_platform
