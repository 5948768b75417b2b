/*
 * command_output.h: the output of diagnostic commands (services/cmd.h), kept
 * as lines for who wants to see them.
 */
#pragma once

#include "chip/outcome.h"

#include <memory>
#include <string>
#include <vector>

namespace simswitch::services
{

/** What a command has printed; the object's address is the platform's handle of it. */
class CommandOutput
{
public:
    /** The texts, one for each write, as they were handed in. */
    const std::vector<std::string> &lines() const { return lines_; }
    /** All of them, one behind the other. */
    std::string text() const;
    /** Takes a text. */
    void add(std::string line) { lines_.push_back(std::move(line)); }

private:
    std::vector<std::string> lines_;
};

/** The outputs that are open. */
class CommandOutputs
{
public:
    /** Opens an output, which lives as long as this or until it is closed. */
    CommandOutput &open();
    /** Closes one; what isn't open is no failure. */
    void close(const void *handle);
    /** Writes to an output. -4 for a handle that isn't one's that is open. */
    Outcome print(const void *handle, const char *text);

private:
    std::vector<std::unique_ptr<CommandOutput>> open_;
};

} // namespace simswitch::services
