/*
 * shown_calls.h: a command that shows calls or messages of requests when all of
 * them are done keeps those and nothing else: the journal's own records, several
 * times as large, go with each request. request.h makes the requests.
 */
#pragma once

#include "switch.h"

namespace lab::l3lif
{

/** What requests of a switch keep, as long as this lives. The last one that was made counts. */
class ShownCalls
{
public:
    /**
     * @param hardware  the switch; must outlive this
     * @param calls     requests keep the texts of their calls
     * @param messages  requests keep all their messages, else errors alone
     */
    ShownCalls(simswitch::Switch &hardware, bool calls, bool messages);
    ~ShownCalls();
    ShownCalls(const ShownCalls &) = delete;
    ShownCalls &operator=(const ShownCalls &) = delete;

    /** Whether the journal of a switch forgets what a request has taken. */
    static bool is_on(const simswitch::Switch &hardware);

private:
    const simswitch::Switch &hardware_;
    ShownCalls *previous_;
};

} // namespace lab::l3lif
