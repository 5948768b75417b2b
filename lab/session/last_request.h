/*
 * last_request.h: what the last command of a session asked of the library, and
 * what came of it. `show calls` prints it, expectations look into it.
 */
#pragma once

#include "l3lif/request.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab::session
{

/** One request of a command. `up` has many, most commands one. */
struct Step {
    std::string asked; ///< "add Ethernet8"
    l3lif::Request request;
    bool gives_station = false; ///< its code is a station's number

    /** Whether the library refused it, or a part of it. */
    bool refused() const;
};

/** A command's requests. */
class LastRequest
{
public:
    LastRequest() = default;
    LastRequest(std::string command, std::vector<Step> steps)
        : command_(std::move(command)), steps_(std::move(steps))
    {
    }

    /** Whether nothing was asked yet. */
    bool empty() const { return steps_.empty(); }
    /** What the library returned; of several requests that of the first refused one, or 0. */
    int code() const;
    /** Whether the library refused any of it. */
    bool refused() const;
    /** Number of platform calls. */
    std::size_t call_count() const;
    /** All platform calls, in order. */
    std::vector<std::string> calls() const;
    /** The texts of all messages, in order, on one line each. */
    std::vector<std::string> messages() const;
    /** All errors in order, "asked: error" when there are several requests. */
    std::vector<std::string> errors() const;
    /** The refused call of a request that was refused without an error; empty when none was. */
    std::string silent_refusal() const;

    /** Prints what was asked, the calls and the messages of each step. */
    void print(std::ostream &out) const;

private:
    std::string command_;
    std::vector<Step> steps_;
};

/** The name of the function in a call's text. */
std::string_view function_of(std::string_view call);

} // namespace lab::session
