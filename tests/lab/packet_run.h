/*
 * packet_run.h: packets in a test, on a session with examples/packets.json up.
 */
#pragma once

#include "packet/explain.h"
#include "packet/frame_words.h"
#include "packet/make_frame.h"
#include "packet/report.h"
#include "session/verbs.h"
#include "session/words.h"
#include "session_run.h"

#include <sstream>
#include <string>
#include <string_view>

namespace lab_test
{

/** A session with every kind of interface, neighbours and routes. */
class PacketTest : public SessionTest
{
protected:
    PacketTest() { run_all({"up packets.json open", "ipv6 on"}); }

    /** The frame of some options. */
    lab::packet::MadeFrame frame(std::string_view words) const
    {
        return lab::packet::make_frame(lab::packet::read_frame_words(lab::session::split(words)),
                                       session.state());
    }
    /** The summary of a packet that is sent through. */
    std::string fate(std::string_view words) { return run("packet " + std::string(words)).summary; }
    /** The last packet. */
    const lab::packet::Explanation &told() const { return *session.state().packet; }
    /** The last packet as text. */
    std::string text(std::size_t width = 0) const
    {
        std::ostringstream out;
        lab::packet::print_text(told(), {width, false}, out);
        return out.str();
    }
};

} // namespace lab_test
