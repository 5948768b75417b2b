/*
 * shown_calls.cpp: see shown_calls.h. The platform works on one switch at a
 * time, and so does this.
 */
#include "l3lif/shown_calls.h"

#include "l3lif/request.h"

#include <utility>

namespace lab::l3lif
{

namespace
{

ShownCalls *last_shown = nullptr;

} // namespace

ShownCalls::ShownCalls(simswitch::Switch &hardware, bool calls, bool messages)
    : hardware_(hardware), previous_(std::exchange(last_shown, this))
{
    if (!calls && !messages) {
        keep_errors_only(hardware);
        return;
    }
    // Requests take the texts of calls only where the journal would keep them all.
    hardware.journal.keep(calls ? simswitch::Keep::all : simswitch::Keep::request);
    hardware.trace.errors_only = !messages;
}

ShownCalls::~ShownCalls()
{
    last_shown = previous_;
}

bool ShownCalls::is_on(const simswitch::Switch &hardware)
{
    const ShownCalls *shown = last_shown;
    while (shown != nullptr && &shown->hardware_ != &hardware) {
        shown = shown->previous_;
    }
    return shown != nullptr;
}

} // namespace lab::l3lif
