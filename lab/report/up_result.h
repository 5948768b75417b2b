/*
 * up_result.h: all that one `rtif up` came to, before it is printed. table.h
 * prints it for people, json.h for machines.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "l3lif/readback.h"
#include "l3lif/readback_macs.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::report
{

/** An interface, what the chip holds of it, and how it went. */
struct InterfaceResult {
    const l3lif::Interface *interface = nullptr;
    l3lif::HardwareView view;
    bool up = false;
    std::string error; ///< why it failed; empty when it is up
};

/** A virtual MAC, its stations in the chip, and how it went. */
struct VirtualMacResult {
    const l3lif::VirtualMac *mac = nullptr;
    l3lif::VirtualMacView view;
    std::string error; ///< why it failed; empty when it is up
};

/** A private-VLAN pair, what the chip holds of it, and how it went. */
struct PairResult {
    const l3lif::Pair *pair = nullptr;
    l3lif::PairView view;
    std::string error; ///< why it failed; empty when it is up
};

/** How taking everything down again went. */
struct Teardown {
    bool clean = true;             ///< the library reported no failure
    std::vector<std::string> left; ///< what was left behind
    std::string by_design;         ///< what stays, in words
};

/** One run. The configuration and the layer outlive it. */
struct UpResult {
    const config::Description *config = nullptr;
    const l3lif::Layer *layer = nullptr;
    std::string_view chip; ///< "Trident" or "Trident2"
    std::vector<InterfaceResult> interfaces;
    std::vector<VirtualMacResult> virtual_macs;
    std::vector<PairResult> pairs;
    std::vector<config::SkippedRow> skipped;
    std::vector<std::string> notes;
    std::optional<Teardown> teardown; ///< only when it was asked for

    std::size_t up_count() const;
    /** Platform calls of all requests that brought something up. */
    std::size_t calls() const;
    bool has_router_mac() const;
    /** The VLANs that the L2 side couldn't set up. */
    std::vector<const l3lif::L2Vlan *> failed_vlans() const;
    /** Virtual MACs and pairs that are not as they should be. */
    std::size_t failed_macs() const;
    std::size_t failed_pairs() const;
    /** Whether everything that was tried has worked. */
    bool ok() const;
};

/** What the user wants to see. */
struct View {
    bool calls = false;  ///< the platform calls under each interface
    bool trace = false;  ///< the library's messages under each interface
    bool colour = false; ///< colours, for a terminal

    /** Whether what the requests did is shown, not only what they came to. */
    bool wants_requests() const { return calls || trace; }
};

} // namespace lab::report
