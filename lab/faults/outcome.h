/*
 * outcome.h: what became of one request in which one call was made to fail.
 * run.h finds it out, rows.h brings many together.
 */
#pragma once

#include "switch.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lab::faults
{

/** A call that was made to fail. */
struct Failing {
    std::string function;
    std::uint64_t place = 1; ///< which call of the function in the request, from 1
    int code = -1;           ///< what it gives; null or false where its result is no code
    bool forever = false;    ///< it and all later calls of the function
    bool has_code = true;    ///< its result is a code
};

/** What became of it. */
struct Outcome {
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::string road = {};
    std::string kind = {};    ///< of the request: "add a port"
    std::string variant = {}; ///< of it: "number kept"
    std::string asked = {};   ///< "add Ethernet0"
    Failing failing = {};
    int result = 0;        ///< what the request returned
    std::size_t later = 0; ///< calls behind the failing one when nothing fails
    std::size_t made = 0;  ///< those of them that were made all the same
    std::size_t other = 0; ///< calls behind it that nothing asks for when nothing fails
    std::string said = {}; ///< the first error message; empty for none
    std::vector<std::string> stays = {}; ///< what it leaves, in short words: words.h
    std::string again = {}; ///< empty when deleted and added again it works; else why not
    std::vector<std::string> lasts = {};  ///< what differs even then
    std::vector<std::string> broken = {}; ///< what has to hold and doesn't; a crash, a leak
};

/** As one line of JSON. */
std::string to_line(const Outcome &outcome);
/** From such a line. @throws std::runtime_error when it is none */
Outcome from_line(const std::string &line);

/** "all 12 later calls were made", in short words: "goes on", "stops", "9 of 12". */
std::string pace(const Outcome &outcome);

} // namespace lab::faults
