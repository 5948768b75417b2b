/*
 * state_kill_test.cpp: a process is killed after each of the calls of a road,
 * and the next one finds what the chip, the store and the caches had taken.
 */
#include "chip/snapshot.h"
#include "state_dir.h"
#include "switch.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/pss.h>
#include <fwmpd/wrappers.h>
#include <sdk/field.h>
#include <sdk/l2.h>
#include <sdk/l3.h>
#include <sdk/stg.h>
#include <sdk/switch.h>
#include <sdk/trunk.h>
#include <sdk/vlan.h>

#include <algorithm>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

constexpr bcm_vlan_t VLAN = 4094;
constexpr int PORT = 5;
constexpr int IIF = 3;
constexpr int TRUNK = 42;
constexpr int ENTRY = 127; ///< one of the platform's own field entries

using Step = std::function<void()>;

bcm_pbmp_t only(int port)
{
    bcm_pbmp_t ports{};
    ports.pbits[port / 32] = 1U << (port % 32);
    return ports;
}

/** A port becomes routed: at once, queued, flushed, cached. */
std::vector<Step> routed_port()
{
    return {
        [] { bcm_vlan_create(0, VLAN); },
        [] {
            int stg = 0;
            fwmpd_allocate_stg(VLAN, &stg);
        },
        [] { bcm_stg_vlan_add(0, 2, VLAN); },
        [] { fwmpd_bcm_stg_stp_set(0, 2, PORT, 4); },
        [] { fwmpd_bcm_vlan_port_add(0, VLAN, only(PORT), only(PORT)); },
        [] { fwmpd_bcm_port_untagged_vlan_set(0, PORT, VLAN); },
        [] { fwmpd_trident_batch_flush(); },
        [] {
            bcm_l3_intf_t intf{};
            intf.l3a_flags = 0x40;
            intf.l3a_intf_id = IIF;
            intf.l3a_vid = VLAN;
            rtifhal_bcm_l3_intf_create(0, &intf);
        },
        [] {
            bcm_l3_ingress_t ingress{};
            int iif = IIF;
            rtifhal_bcm_l3_ingress_create(0, &ingress, &iif);
        },
        [] { fwmpd_bcm_port_control_set(0, PORT, 67, IIF); },
        [] { fwmpd_trident_batch_flush(); },
        [] { fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN)->vc_vrf = 9; },
        [] { fwmpd_trident_vlan_bvcvt_store(VLAN); },
        [] {
            fwmpd_bcm_vlan_control_vlan_set(0, VLAN,
                                            *fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN));
        },
        [] { fwmpd_trident_batch_flush(); },
    };
}

/** Writes of all other kinds: the host's maps, the L2 side, field entries, the store. */
std::vector<Step> others()
{
    return {
        [] { fwmpd_bcm_switch_control_set(0, 230, 1); },
        [] { bcm_switch_control_set(0, 232, 1); },
        [] {
            const std::uint16_t key = TRUNK;
            const fwm_pc_sdb_value_t value{0x20029000, TRUNK};
            fwm_pc_sdb_store(&key, &value);
        },
        [] { Switch::current().host.vlans.add(VLAN, fwm::PrivateVlan::primary); },
        [] { Switch::current().wrappers.create_vlan(100, {.vrf = 3}); },
        [] { Switch::current().wrappers.set_vlan_stg(100, 2); },
        [] {
            bcm_l3_egress_t egress{};
            int id = 0;
            bcm_l3_egress_create(0, 0, &egress, &id);
        },
        [] { bcm_field_action_remove(0, ENTRY, 32); },
        [] { bcm_field_action_ports_add(0, ENTRY, 32, only(PORT)); },
        [] { bcm_field_entry_reinstall(0, ENTRY); },
        [] {
            l3lif lif{};
            lif.ifindex = 0x10000000;
            rtifhal_pss_l3port_store(g_fwm_pss_context, 1, &lif);
        },
        [] {
            fwmpd_global_config[44] = 0x80;
            fwmpd_pss_globalc_store(g_fwm_pss_context, fwmpd_global_config, 1);
        },
        [] { fwmpd_bcm_vlan_destroy(0, 100); },
        [] { Switch::current().end_request(); },
        [] { rtifhal_pss_l3port_delete(g_fwm_pss_context, 1, 0x10000000); },
    };
}

std::vector<Step> road()
{
    std::vector<Step> steps = routed_port();
    const std::vector<Step> more = others();
    steps.insert(steps.end(), more.begin(), more.end());
    return steps;
}

/** What a process leaves that took so many steps: the SDK's copies of rules and what waits in the
 * queue are its own. */
std::string left_by(Switch &sw)
{
    for (const auto &[id, entry] : sw.chip.field_entries.all()) {
        sw.chip.field_entries.restore(id, {entry.group, *entry.installed, entry.installed});
    }
    std::string text;
    for (const std::string &line : chip::snapshot(sw.chip)) {
        text += line + "\n";
    }
    text += fmt::format("trunk id {}\n", sw.host.trunk_id(0x20029000).value_or(0));
    for (const auto &[vlan, role] : sw.host.vlans.all()) {
        text += fmt::format("VLAN record {}: {}\n", vlan, static_cast<int>(role));
    }
    for (const auto &interface : sw.store.stored_interfaces()) {
        text += fmt::format("interface {:#x}\n", interface.ifindex);
    }
    text +=
        fmt::format("config {}\n", sw.store.global_config().value_or(services::GlobalConfig{})[44]);
    return text;
}

std::uint32_t cached_vrf(Switch &sw, int vlan)
{
    return sw.wrappers.vlan_controls(vlan)->vc_vrf;
}

} // namespace

TEST(StateAfterKill, IsWhatEachCallLeft)
{
    const auto steps = road();
    std::size_t differences = 0;
    std::string before;
    for (std::size_t count = 0; count <= steps.size(); ++count) {
        const StateDir dir;
        const auto take_steps = [&] {
            std::for_each_n(steps.begin(), count, [](const Step &step) { step(); });
        };
        killed_after([&] {
            Switch sw({.state_dir = dir.path()});
            take_steps();
            // What the directory of VLANs is told in C++ is saved with the next call.
            sw.save();
            die();
        });
        Switch found({.state_dir = dir.path()});
        Switch expected;
        take_steps();
        const std::string left = left_by(expected);
        EXPECT_EQ(left_by(found), left) << "after step " << count;
        differences += left != before ? 1 : 0;
        before = left;
    }
    EXPECT_EQ(differences, 18U) << "each step that changes what is left was seen";
}

TEST(StateAfterKill, CachedControlsAreThoseOfTheLastSetOrStore)
{
    const auto vrf_after = [](bool stored) {
        const StateDir dir;
        killed_after([&] {
            Switch sw({.state_dir = dir.path()});
            bcm_vlan_control_vlan_t control{};
            control.vc_vrf = 7;
            fwmpd_bcm_vlan_control_vlan_set(0, VLAN, control);
            fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN)->vc_vrf = 8;
            if (stored) {
                fwmpd_trident_vlan_bvcvt_store(VLAN);
            }
            fwmpd_trident_batch_flush();
            die();
        });
        Switch found({.state_dir = dir.path()});
        return cached_vrf(found, VLAN);
    };
    EXPECT_EQ(vrf_after(false), 7U);
    EXPECT_EQ(vrf_after(true), 8U);
}

TEST(StateAfterKill, FullQueueThatFlushedItselfIsInTheChip)
{
    const StateDir dir;
    killed_after([&] {
        Switch sw({.state_dir = dir.path()});
        sw.wrappers.set_capacity(2);
        fwmpd_bcm_switch_control_set(0, 1, 1);
        fwmpd_bcm_switch_control_set(0, 2, 1);
        fwmpd_bcm_switch_control_set(0, 3, 1);
        die();
    });
    Switch found({.state_dir = dir.path()});
    EXPECT_EQ(found.chip.switch_controls.all(), (std::map<int, int>{{1, 1}, {2, 1}}));
}

TEST(StateAfterKill, WhatAFaultTurnedAwayWasNotTaken)
{
    const StateDir dir;
    killed_after([&] {
        Switch sw({.state_dir = dir.path()});
        sw.journal.arm({.function = "bcm_vlan_create", .code = -1});
        bcm_vlan_create(0, VLAN);
        die();
    });
    EXPECT_EQ(Switch({.state_dir = dir.path()}).chip.vlans.find(VLAN), nullptr);
}

TEST(StateAfterKill, LifeGoesOnOverManyProcesses)
{
    const StateDir dir;
    for (int control = 1; control <= 10; ++control) {
        killed_after([&] {
            Switch sw({.state_dir = dir.path()});
            bcm_switch_control_set(0, control, control);
            die();
        });
    }
    EXPECT_EQ(Switch({.state_dir = dir.path()}).chip.switch_controls.all().size(), 10U);
}

} // namespace simswitch
