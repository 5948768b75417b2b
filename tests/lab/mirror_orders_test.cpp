/*
 * mirror_orders_test.cpp: an SVI, its private-VLAN pairs and its virtual MACs
 * may come in any order; the switch ends up the same, but for the numbers that
 * the chip gives to stations. Down in reverse, nothing stays.
 */
#include "config_text.h"
#include "l3lif/l2_side.h"
#include "l3lif/leftovers.h"
#include "l3lif/lif.h"
#include "l3lif/plans.h"
#include "l3lif/request.h"

#include "chip/snapshot.h"
#include "rtifhal_kelvo_trident/station/pvlan_svi.h"
#include "rtifhal_trident.h"
#include "services/tree.h"
#include "support/library_test.h"

#include <gtest/gtest.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <vector>

namespace
{

using simswitch::chip::Kind;
using Lines = std::vector<std::string>;

constexpr const char *PRIVATE = R"({
  "PORT": {"Ethernet0": {}, "Ethernet1": {}, "Ethernet2": {}},
  "VLAN_MEMBER": {"Vlan100|Ethernet0": {}, "Vlan101|Ethernet1": {}, "Vlan102|Ethernet2": {}},
  "VLAN_INTERFACE": {"Vlan100": {"static_anycast_gateway": "true"}, "Vlan100|10.0.0.1/24": {}},
  "PVLAN": {"Vlan100|Vlan101": {}, "Vlan100|Vlan102": {}},
  "SAG": {"GLOBAL": {"gateway_mac": "00:11:22:33:44:55"}}, "VRRP": {"Vlan100|8": {}}})";

enum class Step { svi, pairs, macs };

using Order = std::array<Step, 3>;

constexpr std::array<Order, 6> ORDERS = {{
    {Step::svi, Step::pairs, Step::macs},
    {Step::svi, Step::macs, Step::pairs},
    {Step::pairs, Step::svi, Step::macs},
    {Step::pairs, Step::macs, Step::svi},
    {Step::macs, Step::svi, Step::pairs},
    {Step::macs, Step::pairs, Step::svi},
}};

/** A switch with the configuration's VLANs, and an SVI that is known to the layer above. */
class PrivateVlan
{
public:
    explicit PrivateVlan(Kind kind) : hardware({.chip = kind})
    {
        rtifhal_test::reset_library();
        before = lab::l3lif::look(hardware);
        for (auto &plan : lab::l3lif::vlan_plans_of(config)) {
            l2.set_up(std::move(plan));
        }
    }

    void up(Step step)
    {
        switch (step) {
        case Step::svi:
            EXPECT_EQ(rtifhal_trident_add_svi(svi.record(), 0, 1), 0);
            break;
        case Step::pairs:
            change_pairs(1);
            break;
        case Step::macs:
            for (const auto &mac : macs) {
                EXPECT_EQ(rtifhal_trident_fhrp_mac_add(mac.mac.data(), mac.ifindex), 0);
            }
            break;
        }
        hardware.end_request();
    }

    void down(Step step)
    {
        switch (step) {
        case Step::svi:
            EXPECT_EQ(rtifhal_trident_del_svi(svi.record(), 0, 0), 0);
            EXPECT_EQ(rtifhal_trident_del_svi(svi.record(), 0, 1), 0);
            break;
        case Step::pairs:
            change_pairs(0);
            break;
        case Step::macs:
            for (const auto &mac : macs) {
                EXPECT_EQ(rtifhal_trident_fhrp_mac_del(mac.mac.data(), mac.ifindex), 0);
            }
            break;
        }
        hardware.end_request();
    }

    /** All that the switch and the library hold, without the numbers of stations. */
    Lines state()
    {
        Lines lines = simswitch::chip::snapshot(hardware.chip);
        for (std::string &line : lines) {
            if (line.starts_with("station ")) {
                line.erase(0, line.find(':'));
            }
        }
        for (const int vlan : {100, 101, 102}) {
            const auto &controls = *hardware.wrappers.vlan_controls(vlan);
            lines.push_back(fmt::format("cached {}: {} {} {:#x} {} {}", vlan, controls.vc_vrf,
                                        controls.vc_ingress_if, controls.vc_flags,
                                        controls.vc_class, controls.vc_urpf_mode));
        }
        for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
            const auto &entry = *static_cast<const fhrp_mac_entry_t *>(record);
            lines.push_back(fmt::format("kept {:#x} {} {:02x}", entry.ifindex, entry.vlan,
                                        fmt::join(entry.mac, ":")));
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    simswitch::Switch hardware;
    lab::l3lif::Moment before;
    lab::config::Description config = lab_test::read(PRIVATE);
    std::vector<lab::l3lif::LifPlan> plans = lab::l3lif::plans_of(config);
    std::vector<lab::l3lif::VirtualMacPlan> macs = lab::l3lif::virtual_mac_plans_of(config, plans);
    lab::l3lif::GlibMessages glib_messages{hardware};
    lab::l3lif::L2Side l2{hardware};
    lab::l3lif::Lif svi{hardware, plans.at(0)};

private:
    void change_pairs(std::uint32_t add)
    {
        for (const auto &pair : lab::l3lif::pair_plans_of(config)) {
            rtifhal_kelvo_pvlan_svi_mapping_update(pair.primary, pair.secondary, add);
        }
    }
};

/** Every order on both chips. */
class MirrorOrders : public ::testing::TestWithParam<std::tuple<Kind, Order>>
{
protected:
    Kind kind() const { return std::get<0>(GetParam()); }
    Order order() const { return std::get<1>(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Orders, MirrorOrders,
                         ::testing::Combine(::testing::Values(Kind::trident, Kind::trident2),
                                            ::testing::ValuesIn(ORDERS)));

Lines state_after(Kind kind, const Order &order)
{
    PrivateVlan vlan(kind);
    for (const Step step : order) {
        vlan.up(step);
    }
    return vlan.state();
}

} // namespace

TEST_P(MirrorOrders, EndInTheSameState)
{
    const Lines state = state_after(kind(), order());
    EXPECT_EQ(state, state_after(kind(), ORDERS[0]));
    const auto stations = std::count_if(state.begin(), state.end(), [](const std::string &line) {
        return line.starts_with(": flags ");
    });
    EXPECT_EQ(stations, 6); // two virtual MACs in three VLANs
}

TEST_P(MirrorOrders, SecondariesRouteOverTheSvi)
{
    PrivateVlan vlan(kind());
    for (const Step step : order()) {
        vlan.up(step);
    }
    const auto &primary = vlan.hardware.chip.vlans.find(100)->controls;
    EXPECT_EQ(static_cast<int>(primary.ingress_if), vlan.svi.iif());
    for (const int secondary : {101, 102}) {
        const auto &controls = vlan.hardware.chip.vlans.find(secondary)->controls;
        EXPECT_EQ(controls.ingress_if, primary.ingress_if);
        EXPECT_EQ(controls.flags & 0x38, 0U);
    }
}

TEST_P(MirrorOrders, DownInReverseLeavesNothing)
{
    PrivateVlan vlan(kind());
    Order steps = order();
    for (const Step step : steps) {
        vlan.up(step);
    }
    std::reverse(steps.begin(), steps.end());
    for (const Step step : steps) {
        vlan.down(step);
    }
    EXPECT_EQ(g_hash_table_size(pvlan_svi_map), 0U);
    EXPECT_TRUE(vlan.l2.take_down());
    EXPECT_EQ(lab::l3lif::left_behind(vlan.before, vlan.hardware), Lines{});
}
