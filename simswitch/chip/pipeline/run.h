/*
 * run.h: one frame's way through the pipeline.
 *
 *   run_ingress.h   port, VLAN translation, VLAN, spanning tree, interface
 *   run_decide.h    station, families, traps, field entries
 *   run_route.h     reverse path, route, next hop, L3 interface, trunk
 *   run_bridge.h    known and unknown addresses, flooding, what leaves where
 *
 * A run lives for one frame and owns nothing. What a stage finds stands in the
 * members for those after it. docs/pipeline.md tells what each number means.
 */
#pragma once

#include "chip/chip.h"
#include "chip/pipeline/flow_hash.h"
#include "chip/pipeline/indexes.h"
#include "chip/pipeline/l2_table.h"
#include "chip/pipeline/nearest.h"
#include "chip/pipeline/numbers.h"
#include "chip/pipeline/observer.h"
#include "chip/pipeline/result.h"

#include <algorithm>
#include <bit>

namespace simswitch::chip::pipeline
{

/** Where a frame's ingress interface comes from. */
enum class InterfaceFrom { none, translation, port, vlan };

/** Calls a function with each port of a set, in order. */
template <class Visitor> void for_each_port(const PortSet &ports, Visitor visit)
{
    int base = 0;
    for (std::uint32_t word : ports.words()) {
        for (; word != 0; word &= word - 1) {
            visit(base + std::countr_zero(word));
        }
        base += 32;
    }
}

/** One frame's way. */
template <class Observer> class Run
{
public:
    /** All must outlive the run; `result` must be clear. */
    Run(const Chip &chip, const Indexes &indexes, L2Table &l2, Observer &observer, Result &result)
        : chip_(chip), indexes_(indexes), l2_(l2), observer_(observer), result_(result)
    {
    }

    /** Takes a frame all the way. */
    void take(int port, std::span<const std::uint8_t> bytes);

    const Frame &frame() const { return frame_; }

private:
    void forward(int port, std::span<const std::uint8_t> bytes);

    // run_ingress.h
    bool receive(int port, std::span<const std::uint8_t> bytes);
    bool enter_port();
    bool translate();
    void translated(const TranslationKey &key, const TranslationAction &action);
    bool enter_vlan();
    bool pass_spanning_tree();
    void find_interface();
    void learn();

    // run_decide.h
    void find_station();
    Reason why_not_routable();
    Reason why_family_is_off();
    bool port_controls_count() const;
    bool is_label_switched() const;
    Reason trap_of() const;
    bool trap();
    bool rule_matches(const InstalledRule &installed, bool routable);
    bool applies(const RuleGroup &group) const;
    bool pass_field_entries(bool routable);

    // run_route.h
    bool pass_reverse_path();
    bool leads_back(const FoundRoute &found) const;
    void route();
    void send_to(int egress_id);
    const L3Interface *pass_l3_interface(const Egress &egress);
    int port_of(const Egress &egress);
    bool enter_tunnel(int id, const L3Interface &interface);
    void store_routed(const Mac &to, const Mac &from);

    // run_bridge.h
    void bridge(Reason why_not_routed);
    void send_to_known(const L2Entry &entry);
    int member_of_trunk(int trunk);
    bool is_chosen(int port, const PortSet &candidates);
    void flood(PortSet ports, Reason reason);
    bool may_leave(int port, int vlan_id, const Vlan &vlan, bool tell);
    void leave(int port, int vlan_id, const Vlan &vlan);
    void store_bridged();

    /** Tells the observer; `make` gives the line. */
    template <class Make> void tell(Make make)
    {
        if constexpr (Observer::traces) {
            observer_.add(make());
        }
    }
    bool drop(Reason reason)
    {
        result_.verdict = result_.cpu ? Verdict::to_cpu : Verdict::dropped;
        result_.reason = result_.cpu ? result_.cpu_reason : reason;
        return false;
    }
    bool to_cpu(Reason reason)
    {
        result_.cpu = true;
        result_.cpu_reason = reason;
        return drop(reason);
    }
    /** Whether the frame's interface is its port's or its tag's own, not its VLAN's. */
    bool has_own_interface() const
    {
        return from_ == InterfaceFrom::translation || from_ == InterfaceFrom::port;
    }
    /** The CPU's port isn't part of the spanning tree. */
    int stp_state(const Vlan &vlan, int port) const
    {
        if (port == CPU_PORT) {
            return STP_FORWARDING;
        }
        const Stg *stg = chip_.stgs.find(vlan.stg);
        return stg == nullptr ? STP_DISABLED : stg->states[static_cast<std::size_t>(port)];
    }

    const Chip &chip_;
    const Indexes &indexes_;
    L2Table &l2_;
    Observer &observer_;
    Result &result_;

    Frame frame_{};
    int port_ = 0;
    const PortFacts *facts_ = nullptr;
    int wire_vlan_ = 0; ///< VLAN of the tag, or the port's for untagged frames
    int vlan_ = 0;      ///< the same after translation
    const Vlan *vlan_record_ = nullptr;
    int learned_gport_ = -1; ///< where the frame's source is, -1 when that isn't learned
    int iif_ = 0;            ///< L3 ingress object, 0 for none
    InterfaceFrom from_ = InterfaceFrom::none;
    const L3Ingress *ingress_ = nullptr;
    const FoundStation *station_ = nullptr;
    const Tunnel *tunnel_ = nullptr;    ///< what the packet leaves through, null for none
    const PortSet *redirect_ = nullptr; ///< ports of the field entry that redirects
};

} // namespace simswitch::chip::pipeline
