/*
 * request_watch.h: whoever wants to see each request as it ends: its calls, its
 * messages, its code. request.h makes the requests.
 *
 * What is seen needn't be kept: a watch works where the journal keeps the calls
 * of one request only.
 */
#pragma once

#include "switch.h"

#include <deque>
#include <functional>
#include <span>
#include <string_view>

namespace lab::l3lif
{

/** A request at its end; good as long as the watch is told. */
struct SeenRequest {
    std::string_view name;                          ///< in words, "add Ethernet0"
    int code = 0;                                   ///< what the library returned
    std::span<const simswitch::CallRecord> records; ///< its calls, perhaps with the trace sinks'
    const std::deque<simswitch::fwm::Message> &messages; ///< all of them, not errors alone
    std::string_view refused_writes; ///< what the chip refused when the queue was written out
};

/** Sees each request of a switch, as long as it lives. The last one that was made sees. */
class RequestWatch
{
public:
    using Told = std::function<void(const SeenRequest &request)>;

    /**
     * @param hardware  the switch whose requests are seen
     * @param told      called at the end of each, before its calls are forgotten; what it throws
     *                  comes out of the request
     */
    RequestWatch(const simswitch::Switch &hardware, Told told);
    ~RequestWatch();
    RequestWatch(const RequestWatch &) = delete;
    RequestWatch &operator=(const RequestWatch &) = delete;

    /** The watch of a switch; null when nobody watches. */
    static const RequestWatch *of(const simswitch::Switch &hardware);

    /** Hands a request over. */
    void tell(const SeenRequest &request) const { told_(request); }

private:
    const simswitch::Switch *hardware_;
    Told told_;
    RequestWatch *previous_;
};

} // namespace lab::l3lif
