/*
 * gather.h: fills the page of a switch: of one that has just brought a
 * configuration up, and of one that lies in a state folder. calls.h has the
 * calls, graph.h the chip's objects, records.h what comes out.
 */
#pragma once

#include "page/calls.h"
#include "page/records.h"
#include "report/up_result.h"
#include "session/state.h"

#include <cstddef>
#include <vector>

namespace lab::page
{

/** The requests that a configuration was brought up with, and whose each is. */
struct Requests {
    std::vector<JournalRequest> journal = {};
    /** Behind the last request of each VLAN, interface, pair and virtual MAC, in that order. */
    std::vector<std::size_t> ends = {};
};

/**
 * Brings a configuration up as `rtif up` does, and the routes that follow it.
 *
 * @param state  of a switch whose journal keeps all, with its configuration
 * @return its requests
 */
Requests bring_up(session::State &state);

/**
 * Gathers the page.
 *
 * @param state       of the switch
 * @param result      what its interfaces came to
 * @param requests    that brought it up; null when nobody knows them, for a state folder
 * @param call_limit  calls that the page may hold; those of later interfaces are dropped, of
 *                    interfaces that failed last
 */
Page gather(const session::State &state, const report::UpResult &result, const Requests *requests,
            std::size_t call_limit);

} // namespace lab::page
