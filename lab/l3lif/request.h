/*
 * request.h: one request of the layer above to the library, and what it did:
 * the calls that it led to, the messages, what the chip refused.
 *
 * GLib speaks to whoever has asked for its messages; while GlibMessages lives
 * they are the switch's, among the library's own. layer.h makes the requests.
 */
#pragma once

#include "switch.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::l3lif
{

/** What one request to the library did. */
struct Request {
    int code = 0; ///< what the library returned
    /** Platform calls in order, as the journal has them; none where it keeps only the request. */
    std::vector<std::string> calls = {};
    std::size_t call_count = 0; ///< how many there were
    /** The library's messages in order; errors alone where the trace log keeps only those. */
    std::vector<simswitch::fwm::Message> messages = {};
    std::string_view expected = {}; ///< start of an error message that is none here; or empty
    std::string refused_writes =
        {}; ///< what the chip refused when the queue was written out; or empty
    std::string refused_call = {}; ///< of one with a code, the last refused call, and why; or empty

    /** Adds what a later request for the same object did; the first failing code stays. */
    void append(Request next);
    /** Whether it returned 0 and reported no failure. */
    bool ok() const { return code == 0 && last_error().empty(); }
    /** All error messages without their line ends, and what the chip refused. */
    std::vector<std::string> errors() const;
    /** The last one of them; what the chip refused only when there is no other; empty for none. */
    std::string last_error() const;
};

/**
 * Makes a request, and writes out what then still waits in the queue.
 *
 * @param hardware  the switch that stands in for the platform
 * @param name      the request in words, for the journal
 * @param work      calls the library; its result is the request's code
 */
Request make_request(simswitch::Switch &hardware, const std::string &name,
                     const std::function<int()> &work);

/**
 * Says that nobody will ask for the calls of requests, nor for messages that are
 * no errors: from here on they are counted and forgotten.
 */
void keep_errors_only(simswitch::Switch &hardware);

/** Takes GLib's messages into the trace of a switch, as long as it lives. */
class GlibMessages
{
public:
    /** @param hardware  must outlive this */
    explicit GlibMessages(simswitch::Switch &hardware);
    ~GlibMessages();
    GlibMessages(const GlibMessages &) = delete;
    GlibMessages &operator=(const GlibMessages &) = delete;

private:
    unsigned handler_;
};

} // namespace lab::l3lif
