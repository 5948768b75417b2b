/*
 * wrappers.h: the wrapper layer between routed interfaces and the chip: a
 * queue of writes, and a cache of what was last written.
 *
 * A wrapper checks its arguments, updates its cache and queues the write. The
 * chip changes when the queue is flushed: on request, when the queue has
 * reached its capacity, and when the host ends a request. Who reads the chip
 * directly before that sees it as it was.
 *
 * Two refusals have to be told apart. A wrapper refuses what it can know: an
 * argument out of range, and, for L3 interfaces, ingress objects and the
 * members of trunks, what its cache says of the table. Then nothing is queued. All else the chip
 * refuses at the flush, which tells of it in its report; who called the wrapper has long had a 0.
 *
 * The cached controls of a VLAN outlive the process, as they were when they
 * were last handed to a wrapper (set, destroy) or stored: a caller that has
 * changed the record in place, and done neither, loses that with the process.
 * All other caches are filled from the chip again.
 *
 * wrappers.cpp has the queue and the VLAN caches, l3_cache.cpp the L3 objects,
 * trunk_cache.cpp the trunks, wrapper_calls.cpp the C functions;
 * queued_write.h the writes themselves.
 */
#pragma once

#include "chip/chip.h"
#include "fwm/queued_write.h"

#include <fwmpd/wrappers.h>

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace simswitch::fwm
{

/** What a flush did. */
struct FlushReport {
    int code = OK;           ///< 0, or the code of the first refusal
    std::size_t writes = 0;  ///< writes that waited
    std::size_t refused = 0; ///< those of them that the chip refused
    std::string text;        ///< "5 writes, 1 refused: vlan 100 add ports: VLAN 100 does not exist"
};

/** The wrapper layer. */
class Wrappers
{
public:
    static constexpr std::size_t DEFAULT_CAPACITY = 1024; ///< writes that the queue holds

    /** Its caches start with what the chip holds. `chip` must outlive this. */
    explicit Wrappers(chip::Chip &chip);

    // The queue.

    /** Writes all that waits to the chip, in its order; a refused write doesn't stop the rest. */
    FlushReport flush();
    /** Number of writes that wait. */
    std::size_t pending() const { return queue_.size(); }
    /** What waits, in order, in words. */
    std::vector<std::string> pending_text() const;
    /** Drops what waits without writing it, as the end of the process would. */
    void drop_pending() { queue_.clear(); }
    /** Sets how many writes the queue holds, at least 1; with the last one it flushes itself. */
    void set_capacity(std::size_t writes);
    /** Reports of the flushes that nobody asked for, oldest first: of a full queue, and before a
     * write of the L2 side that goes to the chip at once. */
    const std::vector<FlushReport> &own_flushes() const { return own_flushes_; }
    /** Writes that the chip has taken since power-on, from the queue and by direct calls. */
    std::uint64_t chip_writes() const { return chip_.writes; }

    // Ports and the switch. -4 for an argument out of range.

    Outcome set_port_control(int port, int control, int value); ///< -16: the chip lacks the control
    Outcome set_port_vlan_control(int port, int control, int value);
    Outcome set_untagged_vlan(int port, int vlan);
    Outcome set_discard(int port, int mode);
    Outcome set_port_state(int port, int state);
    Outcome set_stg_state(int stg, int port, int state); ///< -7: the group doesn't exist
    Outcome set_switch_control(int control, int value);

    // VLANs. -4 for a VLAN out of 1..4095; whether it exists shows at the flush.

    Outcome add_vlan_ports(int vlan, const chip::PortSet &ports, const chip::PortSet &untagged);
    Outcome remove_vlan_ports(int vlan, const chip::PortSet &ports);
    /** Puts the cached controls back to their defaults, too. */
    Outcome destroy_vlan(int vlan);
    /** Adds a port to the cached ports of a VLAN only: after a restart the chip has it. */
    Outcome cache_vlan_port(int vlan, int port);
    /** The cached ports of a VLAN: what was added and not removed since the caches were filled. */
    const chip::PortSet &cached_vlan_ports(int vlan) { return vlan_ports_[vlan]; }
    /** Updates the cached controls, too; a record that was taken away is back then. */
    Outcome set_vlan_controls(int vlan, const bcm_vlan_control_vlan_t &control);
    Outcome set_vlan_blocks(int vlan, const bcm_vlan_block_t &block);
    /** The cached controls, to be changed in place; null for 0, above 4095, or taken away. */
    bcm_vlan_control_vlan_t *vlan_controls(int vlan);
    /** Takes the cached controls of a VLAN away, as before the platform has set it up. */
    void forget_vlan_control(int vlan);
    /** The block record of a VLAN, to be changed in place; all above 4095 share one. */
    bcm_vlan_block_t &vlan_blocks(int vlan);
    /** Stores a VLAN's cached controls for a restart. */
    void store_vlan(int vlan);
    /** The VLANs whose controls were stored, in the order of the calls. */
    const std::vector<int> &stored_vlans() const { return stored_vlans_; }

    // What the L2 side writes at once. All that waits is written first: a queued destroy must
    // not hit the VLAN that comes after it.

    /**
     * Creates a VLAN without a member: in the chip at once, its cached controls, which are
     * queued too, and its block record, which is emptied.
     *
     * @param vlan      1..4095
     * @param controls  what its controls shall be
     * @return 0; -4 for an id out of range; -6 when the table is full; -8 when the VLAN exists
     */
    Outcome create_vlan(int vlan, const chip::VlanControls &controls = {});
    /** Moves a VLAN into a spanning tree group. -7 when the VLAN or the group doesn't exist. */
    Outcome set_vlan_stg(int vlan, int stg);

    // VLAN translations. -4 for a key that no translation can have; the rest shows at the flush.

    Outcome add_translation(const chip::TranslationKey &key, const chip::TranslationAction &action);
    Outcome remove_translation(const chip::TranslationKey &key);

    // Trunks. Which there are the chip knows, as they are created by direct calls; their members
    // are told from the cache.

    /** Writes a trunk. -4 for an id out of 0..65535 or over 32 members; -7 when there is none. */
    Outcome set_trunk(int trunk, const chip::Trunk &record);
    /** Adds a member. -6 when the trunk has 32; -7 no such trunk; -8 member already. */
    Outcome add_trunk_member(int trunk, const chip::TrunkMember &member);
    /** Takes a member out. -7 when there is no such trunk or member. */
    Outcome remove_trunk_member(int trunk, int gport);

    // L3 objects. Existing, unknown and full are told from the cache.

    /**
     * Creates an L3 interface, or replaces it: see fwmpd/l3_cache.h. Without
     * flags 0x40 and 0x100 the lowest free id is taken and put into the record.
     */
    Outcome create_l3_interface(bcm_l3_intf_t &intf);
    Outcome delete_l3_interface(int id);
    Outcome create_l3_ingress(const bcm_l3_ingress_t &ingress, int iif);
    Outcome destroy_l3_ingress(int iif);
    /** The cached ingress object, null when there is none. */
    bcm_l3_ingress_t *l3_ingress(int iif);

    /** Empties the caches and fills them with what the chip holds, as after a restart. */
    void rebuild_caches();
    /** Drops what waits and fills the caches with what the chip holds after power-on. */
    void power_cycle();
    /** The VLANs whose cached controls were handed to a wrapper or stored. */
    chip::Changes<int> &vlan_control_changes() { return vlan_control_changes_; }
    /** The cached controls of a VLAN if the cache has any; null otherwise. */
    const bcm_vlan_control_vlan_t *kept_vlan_controls(int vlan) const;
    /** Whether the record of a VLAN was taken away. */
    bool is_forgotten(int vlan) const { return forgotten_vlans_.contains(vlan); }
    /** Puts back the cached controls that an earlier process left, null for none. */
    void restore_vlan_controls(int vlan, const chip::VlanControls *controls);
    /** Has a function called after each write to the chip by the host: a flush, the L2 side. */
    void after_host_writes(std::function<void()> function) { after_write_ = std::move(function); }

private:
    void push(const QueuedWrite &write);
    void flush_by_itself() { own_flushes_.push_back(flush()); }
    /** Does a write to the chip after all that waits; the body gives an Outcome. */
    template <class Body> Outcome write_at_once(Body &&body);
    std::vector<int> *trunk_members(int trunk);
    int lowest_free_l3_interface();

    void tell_of_write() const;

    chip::Chip &chip_;
    std::function<void()> after_write_;
    chip::Changes<int> vlan_control_changes_;
    std::vector<QueuedWrite> queue_;
    std::vector<QueuedWrite> flushing_; ///< what a flush is writing; its room is used again
    std::size_t capacity_ = DEFAULT_CAPACITY;
    std::vector<FlushReport> own_flushes_;

    // Records are handed out by address: a map whose nodes stay.
    std::unordered_map<int, bcm_vlan_control_vlan_t> vlan_controls_;
    std::unordered_map<int, chip::PortSet> vlan_ports_;
    std::unordered_set<int> forgotten_vlans_;
    std::unordered_map<int, bcm_vlan_block_t> vlan_blocks_;
    std::vector<int> stored_vlans_;
    std::unordered_set<int> l3_interfaces_;
    int l3_interfaces_from_ = 0; ///< all ids below are taken
    std::unordered_map<int, bcm_l3_ingress_t> l3_ingresses_;
    std::unordered_map<int, std::vector<int>> trunks_; ///< generic ports of the members
};

} // namespace simswitch::fwm
