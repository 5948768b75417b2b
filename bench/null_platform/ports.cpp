/*
 * ports.cpp: the null platform's port and switch controls, trunks and stations, and its sets
 * of ports.
 */
#include "calls.h"
#include "tables.h"

#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/pbmp.h>
#include <sdk/port.h>
#include <sdk/switch.h>

#include <algorithm>
#include <bit>

using namespace null_platform;
using recording::in;
using recording::out;
using recording::value;

namespace
{

constexpr int NOT_FOUND = -7;
constexpr int EXISTS = -8;
constexpr int OUT_OF_RANGE = -4;

Trunk *find_trunk(int tid)
{
    const auto index = static_cast<std::size_t>(tid);
    return index < TRUNKS && tables.trunks[index].exists ? &tables.trunks[index] : nullptr;
}

} // namespace

extern "C" {

int bcm_pd_is_device_trident2(void)
{
    CALLED(bcm_pd_is_device_trident2);
    return tables.chip == Chip::trident2 ? 1 : 0;
}

int fwmpd_inband_init(void)
{
    CALLED(fwmpd_inband_init);
    return 0;
}

int fwmpd_pif_to_asic_port(int pif)
{
    CALLED(fwmpd_pif_to_asic_port, pif);
    return pif + 1;
}

int fwmpd_trident_batch_flush(void)
{
    CALLED(fwmpd_trident_batch_flush);
    return 0;
}

int bcm_port_control_set(int unit, int port, int control, int value)
{
    CALLED(bcm_port_control_set, unit, port, control, value);
    return 0;
}

int bcm_switch_control_set(int unit, int control, int value)
{
    CALLED(bcm_switch_control_set, unit, control, value);
    return 0;
}

int bcm_vlan_control_port_set(int unit, int port, int control, int value)
{
    CALLED(bcm_vlan_control_port_set, unit, port, control, value);
    return 0;
}

int fwmpd_bcm_port_control_set(int unit, int port, int control, int value)
{
    CALLED(fwmpd_bcm_port_control_set, unit, port, control, value);
    return 0;
}

int fwmpd_bcm_port_untagged_vlan_set(int unit, int port, bcm_vlan_t vlan)
{
    CALLED(fwmpd_bcm_port_untagged_vlan_set, unit, port, vlan);
    return 0;
}

int fwmpd_bcm_port_discard_set(int unit, int port, int mode)
{
    CALLED(fwmpd_bcm_port_discard_set, unit, port, mode);
    return 0;
}

int fwmpd_bcm_port_stp_set(int unit, int port, int state)
{
    CALLED(fwmpd_bcm_port_stp_set, unit, port, state);
    return 0;
}

int fwmpd_bcm_stg_stp_set(int unit, int stg, int port, int state)
{
    CALLED(fwmpd_bcm_stg_stp_set, unit, stg, port, state);
    return 0;
}

int fwmpd_bcm_vlan_control_port_set(int unit, int port, int control, int value)
{
    CALLED(fwmpd_bcm_vlan_control_port_set, unit, port, control, value);
    return 0;
}

int fwmpd_bcm_switch_control_set(int unit, int control, int value)
{
    CALLED(fwmpd_bcm_switch_control_set, unit, control, value);
    return 0;
}

void bcm_trunk_info_t_init(bcm_trunk_info_t *info)
{
    CALLED(bcm_trunk_info_t_init, out(info));
    *info = {};
}

void bcm_trunk_member_t_init(bcm_trunk_member_t *member)
{
    CALLED(bcm_trunk_member_t_init, out(member));
    *member = {};
}

int bcm_trunk_create(int unit, uint32_t flags, int *tid)
{
    CALLED(bcm_trunk_create, unit, flags, in(tid));
    const auto index = static_cast<std::size_t>(*tid);
    if (index >= TRUNKS) {
        return OUT_OF_RANGE;
    }
    if (tables.trunks[index].exists) {
        return EXISTS;
    }
    tables.trunks[index].exists = true;
    return 0;
}

int bcm_trunk_get(int unit, int tid, bcm_trunk_info_t *info, int member_max,
                  bcm_trunk_member_t *members, int *member_count)
{
    CALLED(bcm_trunk_get, unit, tid, out(info), member_max,
           out(members, static_cast<std::size_t>(member_max) * sizeof *members), out(member_count));
    const Trunk *const trunk = find_trunk(tid);
    if (trunk == nullptr) {
        return NOT_FOUND;
    }
    *info = trunk->info;
    *member_count = trunk->count;
    std::copy_n(trunk->members.begin(), std::min(trunk->count, member_max), members);
    return 0;
}

int fwmpd_bcm_trunk_set(int unit, int tid, bcm_trunk_info_t *info, int count,
                        bcm_trunk_member_t *members)
{
    CALLED(fwmpd_bcm_trunk_set, unit, tid, in(info), count,
           in(members, static_cast<std::size_t>(count) * sizeof *members));
    Trunk *const trunk = find_trunk(tid);
    if (trunk == nullptr) {
        return NOT_FOUND;
    }
    trunk->info = *info;
    trunk->count = std::clamp(count, 0, static_cast<int>(TRUNK_ROOM));
    std::copy_n(members, trunk->count, trunk->members.begin());
    return 0;
}

int fwmpd_bcm_trunk_member_add(int unit, int tid, bcm_trunk_member_t member)
{
    CALLED(fwmpd_bcm_trunk_member_add, unit, tid, value(member));
    Trunk *const trunk = find_trunk(tid);
    if (trunk == nullptr) {
        return NOT_FOUND;
    }
    if (trunk->count == static_cast<int>(TRUNK_ROOM)) {
        return -6;
    }
    trunk->members[static_cast<std::size_t>(trunk->count++)] = member;
    return 0;
}

int fwmpd_bcm_trunk_member_delete(int unit, int tid, bcm_trunk_member_t member)
{
    CALLED(fwmpd_bcm_trunk_member_delete, unit, tid, value(member));
    Trunk *const trunk = find_trunk(tid);
    if (trunk == nullptr) {
        return NOT_FOUND;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(trunk->count); ++i) {
        if (trunk->members[i].gport == member.gport) {
            trunk->members[i] = trunk->members[static_cast<std::size_t>(--trunk->count)];
            return 0;
        }
    }
    return NOT_FOUND;
}

void bcm_l2_station_t_init(bcm_l2_station_t *station)
{
    CALLED(bcm_l2_station_t_init, out(station));
    *station = {};
}

int bcm_l2_station_add(int unit, int *station_id, bcm_l2_station_t *station)
{
    CALLED(bcm_l2_station_add, unit, out(station_id), in(station));
    const int id = tables.station_ids.take();
    if (id < 0) {
        return -6;
    }
    tables.stations[static_cast<std::size_t>(id - 1)] = *station;
    *station_id = id;
    return 0;
}

int bcm_l2_station_delete(int unit, int station_id)
{
    CALLED(bcm_l2_station_delete, unit, station_id);
    tables.station_ids.give_back(station_id);
    return 0;
}

int bcm_l2_station_get(int unit, int station_id, bcm_l2_station_t *station)
{
    CALLED(bcm_l2_station_get, unit, station_id, out(station));
    const auto index = static_cast<std::size_t>(station_id - 1);
    if (index >= STATIONS) {
        return NOT_FOUND;
    }
    *station = tables.stations[index];
    return 0;
}

int _shr_popcount(uint32_t word)
{
    CALLED(_shr_popcount, word);
    return std::popcount(word);
}

int _shr_pbmp_bmnull(const bcm_pbmp_t *pbmp)
{
    CALLED(_shr_pbmp_bmnull, in(pbmp));
    std::uint32_t any = 0;
    for (const std::uint32_t word : pbmp->pbits) {
        any |= word;
    }
    return any == 0 ? 1 : 0;
}
}
