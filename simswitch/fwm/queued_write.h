/*
 * queued_write.h: the writes that can wait in the wrappers' queue: what each
 * does to the chip, and its words for a refusal and for lists.
 *
 * wrappers.h has the queue. What a write needs of the chip is looked up when
 * it runs, not when it is queued.
 */
#pragma once

#include "chip/chip.h"

#include <string>
#include <variant>

namespace simswitch::fwm
{

struct PortControlWrite {
    int port, control, value;
};
struct PortVlanControlWrite {
    int port, control, value;
};
struct UntaggedVlanWrite {
    int port, vlan;
};
struct DiscardWrite {
    int port, mode;
};
/** In all groups that the port's VLANs are in by the time of the flush. */
struct PortStateWrite {
    int port, state;
};
struct StgStateWrite {
    int stg, port, state;
};
struct VlanPortsAdd {
    int vlan;
    chip::PortSet ports, untagged;
};
struct VlanPortsRemove {
    int vlan;
    chip::PortSet ports;
};
struct VlanDestroy {
    int vlan;
};
struct VlanControlsWrite {
    int vlan;
    chip::VlanControls controls;
};
struct VlanBlocksWrite {
    int vlan;
    chip::VlanBlocks blocks;
};
struct SwitchControlWrite {
    int control, value;
};
struct L3InterfaceWrite {
    int id;
    bool replace; ///< an interface of this id is replaced; without it the id must be free
    chip::L3Interface interface;
};
struct L3InterfaceDelete {
    int id;
};
struct L3IngressWrite {
    int id;
    chip::L3Ingress ingress;
};
struct L3IngressDestroy {
    int id;
};
struct TranslationAdd {
    chip::TranslationKey key;
    chip::TranslationAction action;
};
struct TranslationDelete {
    chip::TranslationKey key;
};
struct TrunkWrite {
    int trunk;
    chip::Trunk record;
};
struct TrunkMemberAdd {
    int trunk;
    chip::TrunkMember member;
};
struct TrunkMemberDelete {
    int trunk, gport;
};

/** A write that waits. */
using QueuedWrite =
    std::variant<PortControlWrite, PortVlanControlWrite, UntaggedVlanWrite, DiscardWrite,
                 PortStateWrite, StgStateWrite, VlanPortsAdd, VlanPortsRemove, VlanDestroy,
                 VlanControlsWrite, VlanBlocksWrite, SwitchControlWrite, L3InterfaceWrite,
                 L3InterfaceDelete, L3IngressWrite, L3IngressDestroy, TranslationAdd,
                 TranslationDelete, TrunkWrite, TrunkMemberAdd, TrunkMemberDelete>;

/** Does the write; the outcome is the chip's. */
Outcome apply(const QueuedWrite &write, chip::Chip &chip);

/** The write in words: "vlan 100 add ports", "port 5 control 67 = 3". */
std::string describe(const QueuedWrite &write);

} // namespace simswitch::fwm
