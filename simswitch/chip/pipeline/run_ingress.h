/*
 * run_ingress.h: from the wire to VLAN and ingress interface.
 */
#pragma once

#include "chip/pipeline/run.h"

namespace simswitch::chip::pipeline
{

template <class Observer> bool Run<Observer>::receive(int port, std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > FRAME_MAX) {
        tell([&] {
            return Line{Mark::miss,
                        Stage::frame,
                        "",
                        "",
                        fmt::format("{} bytes, at most {}", bytes.size(), FRAME_MAX),
                        ""};
        });
        return drop(Reason::too_long);
    }
    const bool good = parse(bytes, frame_);
    tell([&] {
        std::string what = fmt::format("{} bytes, {}", bytes.size(), text(frame_.payload));
        if (frame_.fault != nullptr) {
            what += fmt::format(", {}", frame_.fault);
        } else if (frame_.is_ip()) {
            what += fmt::format(" {} to {} TTL {}", address_text(frame_.is_ip6(), frame_.from),
                                address_text(frame_.is_ip6(), frame_.to), frame_.ttl);
        }
        return Line{good ? Mark::none : Mark::miss, Stage::frame, "", "", what, ""};
    });
    if (!good) {
        return drop(Reason::bad_frame);
    }
    if (!is_port(port)) {
        return drop(Reason::no_port);
    }
    port_ = port;
    facts_ = &indexes_.port(port);
    return true;
}

template <class Observer> bool Run<Observer>::enter_port()
{
    const bool tagged = frame_.tag_vlan() != 0;
    const int mode = facts_->discard;
    const Reason reason = mode == DISCARD_ALL                   ? Reason::discard_all
                          : mode == DISCARD_UNTAGGED && !tagged ? Reason::discard_untagged
                          : mode == DISCARD_TAGGED && tagged    ? Reason::discard_tagged
                                                                : Reason::none;
    tell([&] {
        return Line{reason == Reason::none ? Mark::hit : Mark::miss,
                    Stage::port,
                    "port",
                    std::to_string(port_),
                    tagged ? fmt::format("tag with VLAN {}, discard {}", frame_.tag_vlan(), mode)
                           : fmt::format("untagged, discard {}", mode),
                    ""};
    });
    return reason == Reason::none || drop(reason);
}

template <class Observer>
void Run<Observer>::translated(const TranslationKey &key, const TranslationAction &action)
{
    const int tag_action = frame_.tags == 2 ? action.double_tag_action : action.outer_tag_action;
    if (tag_action == OUTER_TAG_REPLACE) {
        vlan_ = action.new_outer_vlan;
    }
    if (action.ingress_if != 0) {
        iif_ = action.ingress_if;
        from_ = InterfaceFrom::translation;
    }
    tell([&] {
        return Line{Mark::hit,
                    Stage::translation,
                    "vlan_translation",
                    text(key),
                    fmt::format("VLAN {}, ingress interface {}", vlan_, action.ingress_if),
                    ""};
    });
}

template <class Observer> bool Run<Observer>::translate()
{
    const int tag = frame_.tag_vlan();
    wire_vlan_ = tag != 0 ? tag : facts_->untagged_vlan;
    vlan_ = wire_vlan_;
    if (tag == 0 || !facts_->translates) {
        return true;
    }
    // An entry for frames with one tag has no inner VLAN in its key.
    const int inner = frame_.tags == 2 ? frame_.inner & VLAN_MASK : ANY_INNER_VLAN;
    const std::array<int, 2> gports = {module_port(0, port_), trunk_gport(facts_->trunk)};
    const std::size_t kinds = facts_->trunk >= 0 ? 2 : 1;
    for (std::size_t i = 0; i < kinds && facts_->key_type == KEY_TYPE_PORT_OUTER; ++i) {
        const TranslationKey key{gports[i], KEY_TYPE_PORT_OUTER, tag, inner};
        // For an inner VLAN of 0 the table would give the entry of one tag.
        const TranslationAction *action = inner != 0 ? chip_.vlan_translations.find(key) : nullptr;
        if (action != nullptr) {
            translated(key, *action);
            return true;
        }
    }
    tell([&] {
        return Line{Mark::miss,
                    Stage::translation,
                    "vlan_translation",
                    text(TranslationKey{gports[0], facts_->key_type, tag, inner}),
                    facts_->key_type == KEY_TYPE_PORT_OUTER
                        ? "none of the port or its trunk"
                        : fmt::format("the port's key type is {}, not {}", facts_->key_type,
                                      KEY_TYPE_PORT_OUTER),
                    nearest_translation(chip_, port_, facts_->trunk, tag)};
    });
    return !facts_->drops_on_miss || drop(Reason::translation_miss);
}

template <class Observer> bool Run<Observer>::enter_vlan()
{
    const Vlan *wire = chip_.vlans.find(wire_vlan_);
    vlan_record_ = vlan_ == wire_vlan_ ? wire : chip_.vlans.find(vlan_);
    const bool there = wire != nullptr && vlan_record_ != nullptr;
    const bool member = there && wire->members.has(port_);
    tell([&] {
        const int missing = wire == nullptr ? wire_vlan_ : vlan_;
        return Line{member ? Mark::hit : Mark::miss,
                    Stage::vlan,
                    "vlan",
                    std::to_string(there ? wire_vlan_ : missing),
                    !there    ? "does not exist"
                    : !member ? fmt::format("port {} is not a member", port_)
                              : fmt::format("port {} is a member", port_),
                    member ? "" : vlans_of_port(chip_, port_)};
    });
    if (!there) {
        return drop(Reason::no_vlan);
    }
    result_.ingress_vlan = static_cast<std::uint16_t>(vlan_);
    return member || drop(Reason::not_a_member);
}

template <class Observer> bool Run<Observer>::pass_spanning_tree()
{
    constexpr std::array<const char *, 5> NAMES = {"disabled", "blocking", "listening", "learning",
                                                   "forwarding"};
    const Vlan &wire = *chip_.vlans.find(wire_vlan_);
    const int state = stp_state(wire, port_);
    tell([&] {
        return Line{state == STP_FORWARDING ? Mark::hit : Mark::miss,
                    Stage::spanning_tree,
                    "stg",
                    std::to_string(wire.stg),
                    fmt::format("port {} is {}", port_, NAMES.at(static_cast<std::size_t>(state))),
                    ""};
    });
    if (state == STP_DISABLED) {
        return drop(Reason::stp_in);
    }
    if (frame_.is_bridge_protocol()) {
        return to_cpu(Reason::bridge_protocol);
    }
    find_interface();
    if (state >= STP_LEARNING) {
        learn();
    }
    return state == STP_FORWARDING || drop(Reason::stp_in);
}

template <class Observer> void Run<Observer>::find_interface()
{
    if (from_ == InterfaceFrom::none && facts_->ingress != 0) {
        iif_ = facts_->ingress;
        from_ = InterfaceFrom::port;
    }
    if (from_ == InterfaceFrom::none && vlan_record_->controls.ingress_if != 0) {
        iif_ = static_cast<int>(vlan_record_->controls.ingress_if);
        from_ = InterfaceFrom::vlan;
    }
    ingress_ = from_ != InterfaceFrom::none ? chip_.l3_ingresses.find(iif_) : nullptr;
    tell([&] {
        constexpr std::array<const char *, 4> SOURCES = {"", "the translation", "port control 67",
                                                         "the VLAN's controls"};
        const char *source = SOURCES.at(static_cast<std::size_t>(from_));
        if (from_ == InterfaceFrom::none) {
            return Line{Mark::none,
                        Stage::interface,
                        "",
                        "",
                        fmt::format("neither port {} nor VLAN {} has one", port_, vlan_),
                        ""};
        }
        if (ingress_ == nullptr) {
            return Line{Mark::miss,
                        Stage::interface,
                        "l3_ingress",
                        std::to_string(iif_),
                        fmt::format("by {}, does not exist", source),
                        nearest_id("ingress interface", chip_.l3_ingresses, iif_)};
        }
        return Line{Mark::hit,
                    Stage::interface,
                    "l3_ingress",
                    std::to_string(iif_),
                    fmt::format("by {}, {}", source, text(*ingress_)),
                    ""};
    });
    if (ingress_ == nullptr) {
        from_ = InterfaceFrom::none;
    } else {
        result_.ingress = iif_;
    }
}

template <class Observer> void Run<Observer>::learn()
{
    // Where nothing is bridged, nobody asks where a station is.
    const bool group_source = (frame_.source[0] & 1U) != 0;
    if (has_own_interface() || port_ == CPU_PORT || group_source) {
        return;
    }
    const int gport = facts_->trunk >= 0 ? trunk_gport(facts_->trunk) : module_port(0, port_);
    learned_gport_ = gport;
    tell([&] {
        const L2Entry *known = l2_.find(vlan_, frame_.source);
        return Line{Mark::none,
                    Stage::learning,
                    "l2",
                    fmt::format("{}/{}", vlan_, text(frame_.source)),
                    known == nullptr        ? "would be learned"
                    : known->gport == gport ? "known"
                    : known->is_static      ? "static elsewhere, stays there"
                                            : "would move here",
                    ""};
    });
}

} // namespace simswitch::chip::pipeline
