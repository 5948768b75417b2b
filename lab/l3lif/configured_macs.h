/*
 * configured_macs.h: the virtual MACs and private-VLAN pairs of a configuration,
 * and what a chip has of them. No store keeps either, and the library forgets
 * them at a restart: then the chip alone tells whether they are there, and the
 * configuration whose they are.
 *
 * Beside it: readback_macs.h reads what the library still knows of.
 */
#pragma once

#include "config/description.h"
#include "l3lif/plans.h"
#include "l3lif/readback_macs.h"

#include "switch.h"

#include <string_view>
#include <unordered_map>
#include <vector>

namespace lab::l3lif
{

/** The virtual MACs and pairs of one configuration. */
class ConfiguredMacs
{
public:
    /** @param config  isn't needed afterwards */
    explicit ConfiguredMacs(const config::Description &config);
    ~ConfiguredMacs() = default;
    ConfiguredMacs(const ConfiguredMacs &) = delete;
    ConfiguredMacs &operator=(const ConfiguredMacs &) = delete;

    /** All virtual MACs, in the order of their interfaces. */
    const std::vector<VirtualMacPlan> &macs() const { return macs_; }
    /** All private-VLAN pairs. */
    const std::vector<PairPlan> &pairs() const { return pairs_; }

    /**
     * Whether a station is one of a virtual MAC, its own or one that is mirrored into a secondary.
     * Interfaces whose stations match the same, as two port-channels with one virtual MAC, both
     * have each of them.
     */
    bool has(const VirtualMacPlan &mac, const simswitch::chip::Station &station) const;
    /**
     * The stations of a virtual MAC in the chip, its own first, then by VLAN.
     *
     * @return what is missing too: its own station, or that in a secondary of a pair that is there
     */
    VirtualMacView read_back(const simswitch::Switch &hardware, const VirtualMacPlan &mac) const;

    /** Whether a pair's secondary is routed by the primary's interface. */
    static bool has(const simswitch::chip::Chip &chip, const PairPlan &pair);
    /** What the chip holds of a pair: the secondary names the ingress object that the primary has.
     */
    static PairView read_back(const simswitch::Switch &hardware, const PairPlan &pair);

private:
    const LifPlan *owner_of(const VirtualMacPlan &mac) const;
    bool is_secondary_of(int vlan, int primary) const;

    std::vector<LifPlan> interfaces_;
    std::unordered_map<std::string_view, const LifPlan *>
        by_name_; ///< the names stand in the plans
    std::vector<VirtualMacPlan> macs_;
    std::vector<PairPlan> pairs_;
};

} // namespace lab::l3lif
