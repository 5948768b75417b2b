/*
 * explanation.h: what became of a frame and why, in words and names: the record
 * that explain.h makes, report.h prints and json.h writes.
 */
#pragma once

#include "chip/pipeline/trace.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lab::packet
{

/** What one stage did, and who put there what it went by. */
struct ExplainedLine {
    simswitch::chip::pipeline::Mark mark = simswitch::chip::pipeline::Mark::none;
    simswitch::chip::pipeline::Stage stage = simswitch::chip::pipeline::Stage::frame;
    std::string table{};                ///< the chip's table, "l2", or empty
    std::string id{};                   ///< the object's id as the chip has it; empty for none
    std::string shown_id{};             ///< the same, shorter where it is a key of many parts
    std::string text{};                 ///< what it said, with names
    std::string nearest{};              ///< on a miss the entry that came nearest; or empty
    std::string author{};               ///< whose request put it there; empty for nobody's
    std::vector<std::string> authors{}; ///< all of them, in the order of their first write
};

/** A port on which it left. */
struct SentPort {
    int port = 0;
    std::string name{};
    bool tagged = false;
};

/** What became of a frame. */
struct Explanation {
    int port = 0;            ///< port on which it came in
    std::string port_name{}; ///< its name
    std::string note{};      ///< why it is that port; or empty
    std::string frame{};     ///< tag, length and MACs of the frame, in words
    std::string interface {
    };                                  ///< routed interface that it came in on; empty for none
    std::string vrf{};                  ///< VRF of that interface
    std::size_t size = 0;               ///< its bytes
    std::vector<ExplainedLine> lines{}; ///< the stages in their order

    simswitch::chip::pipeline::Verdict verdict = simswitch::chip::pipeline::Verdict::dropped;
    simswitch::chip::pipeline::Reason reason = simswitch::chip::pipeline::Reason::none;
    std::string reason_text{};    ///< why, in words
    std::string detail{};         ///< what more there is to say of the reason; or empty
    bool copied_to_cpu = false;   ///< it was sent and the CPU got it too
    std::string cpu_reason{};     ///< why the CPU got it; empty when it didn't
    std::vector<SentPort> sent{}; ///< ports on which it left
    std::uint16_t vlan = 0;       ///< VLAN in which it left; 0 when it didn't
    std::vector<simswitch::chip::pipeline::Change> changes{}; ///< what the way out changed
    std::string nearest{};            ///< nearest entry of a dropped frame's last miss; or empty
    std::vector<std::string> fates{}; ///< what else meets the same fate, sentences

    /** "sent", "dropped" or "cpu". */
    std::string fate() const;
    /** "Ethernet4 untagged, Ethernet8 tagged 100"; empty when it didn't leave. */
    std::string sent_text() const;
    /** The reason, with what more there is to say of it. */
    std::string why() const;
    /** One line: "sent Ethernet4 untagged", "dropped: no route to its destination". */
    std::string summary() const;
};

} // namespace lab::packet
