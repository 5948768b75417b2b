/*
 * forward.h: a switch with interfaces of each kind (forward.json), and frames
 * through its chip, each told in one line: the ports and tags with which it came
 * out and what it then looked like, or why it didn't.
 */
#pragma once

#include "config/description.h"
#include "packet/make_frame.h"
#include "session/session.h"

#include "chip/pipeline/pipeline.h"
#include "switch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab_test
{

using simswitch::chip::Kind;
using Lines = std::vector<std::string>;

inline constexpr std::string_view OWN_MAC = "02:00:00:00:0f:01";

/** Frames through a chip, with the names that its ports have in a configuration. */
class Traffic
{
public:
    Traffic(simswitch::Switch &hardware, const lab::config::Description &config);

    /**
     * Gives a frame to a port. What traffic does and what its trace says must be the same, and
     * what leaves must carry what came in.
     *
     * @return "Ethernet4 untagged: 02:… > 02:…, 10.0.0.9 > 10.0.4.9 ttl 63", several ports
     *         as "Ethernet4 untagged, Ethernet8 tagged 10: …"; "dropped: why"; "cpu: why"
     */
    std::string send(int port, std::span<const std::uint8_t> frame);
    /** The port's name, "port 90" for one that the configuration doesn't have. */
    std::string name(int port) const;
    /** What became of the last frame. */
    const simswitch::chip::pipeline::Result &result() const { return result_; }

    simswitch::chip::pipeline::Pipeline pipeline;

private:
    std::string tell(std::span<const std::uint8_t> frame);

    std::map<int, std::string> names_;
    simswitch::chip::pipeline::Result result_;
};

/** An interface of forward.json and a host behind it. */
struct Place {
    const char *label; ///< its kind, as the name of a test has it
    const char *name;
    const char *in;  ///< the words that give one of its host's frames to the chip
    std::string ip4; ///< of the host
    std::string ip6;
    const char *mac; ///< of the host
    const char *tag; ///< how frames leave: "untagged" or "tagged 10"
    Lines ports;     ///< by which they may leave, several for a port-channel
};

/** The six kinds of interface; a tunnel is a way out only. */
const std::vector<Place> &places();
/** The routed port that is the other end of everything, Ethernet4. */
const Place &peer();
/** The kind of interface that has a label. */
const Place &place(std::string_view label);

/** The number of a flow, computed as docs/pipeline.md says. UDP from port 10000 to 20000. */
std::uint32_t flow_number(std::string_view from, std::string_view to, int source_port = 10000);

/** How a packet looks that was routed to a place. */
std::string routed(const Place &to, std::string_view from, std::string_view target,
                   const std::string &port = "");

/** A session with forward.json, opened for the families of its addresses, and its traffic. */
class Lab
{
public:
    explicit Lab(Kind chip, const std::filesystem::path &state_dir = {},
                 std::string_view config = "tests/lab/forward.json");

    /** Does lines that the library takes without a word. */
    void run(const Lines &lines);
    /** The frame that stands behind `packet`. */
    lab::packet::MadeFrame frame(const std::string &words) const;
    /** Gives it to the chip. */
    std::string send(const std::string &words);
    /** From a host of one place to one of another. */
    std::string from_to(const Place &from, const Place &to, bool ip6 = false);
    /** The number of an interface that is up. */
    int iif(std::string_view interface) const;

    simswitch::Switch hardware;
    lab::session::Session session;
    Traffic traffic;
};

/** "Trident", "Trident2". */
std::string chip_name(Kind chip);

/** A test with it. */
class ForwardTest : public ::testing::Test, public Lab
{
protected:
    explicit ForwardTest(Kind chip) : Lab(chip) {}
};

/** The same for each chip. */
class ForwardOnBothChips : public ForwardTest, public ::testing::WithParamInterface<Kind>
{
protected:
    ForwardOnBothChips() : ForwardTest(GetParam()) {}
};

} // namespace lab_test
