/*
 * indexes.h: what the pipeline derives from the chip's tables, so that a frame
 * asks each question once and in constant time. The tables stay the truth; each
 * part is made anew when its table was written to since the last frame.
 */
#pragma once

#include "chip/chip.h"
#include "chip/pipeline/numbers.h"
#include "chip/pipeline/route_index.h"
#include "chip/pipeline/station_index.h"

namespace simswitch::chip::pipeline
{

/** A port as a frame meets it. */
struct PortFacts {
    int untagged_vlan = DEFAULT_VLAN;
    int discard = 0;
    bool translates = false;
    bool drops_on_miss = false;
    int key_type = 0;
    bool ip4 = false;
    bool ip6 = false;
    bool mpls = false;
    int ingress = 0; ///< port control 67
    int trunk = -1;  ///< the lowest trunk that it is a member of, -1 for none
};

/** An installed rule. */
struct InstalledRule {
    int id = 0;
    FieldRule rule{};
};

/** The installed rules of a group that is on, in the order of their ids. */
struct RuleGroup {
    int id = 0;
    int priority = 0;
    std::vector<InstalledRule> rules{};
};

/** All that is derived. */
class Indexes
{
public:
    explicit Indexes(const Chip &chip) : chip_(chip) {}

    /** Brings everything into step with the tables. */
    void refresh();

    const PortFacts &port(int port) const { return ports_[static_cast<std::size_t>(port)]; }
    /** The ports of a trunk in the order of its members, -1 for one that is no module port; null
     * for a trunk that doesn't exist. */
    const std::vector<int> *trunk_ports(int trunk) const;
    /** The groups that are on and have rules, the highest priority first. */
    const std::vector<RuleGroup> &rule_groups() const { return rule_groups_; }

    StationIndex stations;
    RouteIndex routes;

private:
    void refresh_ports();
    void refresh_rules();

    const Chip &chip_;
    std::uint64_t ports_generation_ = ~std::uint64_t{0};
    std::uint64_t trunks_generation_ = ~std::uint64_t{0};
    std::uint64_t groups_generation_ = ~std::uint64_t{0};
    std::uint64_t entries_generation_ = ~std::uint64_t{0};
    std::array<PortFacts, LAST_PORT + 1> ports_{};
    std::unordered_map<int, std::vector<int>> trunk_ports_;
    std::vector<RuleGroup> rule_groups_;
};

} // namespace simswitch::chip::pipeline
