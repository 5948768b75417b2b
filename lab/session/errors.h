/*
 * errors.h: why a line of a session can't be done. Who catches one prefixes the
 * line's number; run.h and shell.h do.
 */
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace lab::session
{

/** The line makes no sense: an unknown word, a missing or bad argument. */
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** The line makes sense, and can't be done now: a file that isn't there, no interface is up. */
class Impossible : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** An expectation that isn't met. */
class Unmet : public std::runtime_error
{
public:
    /**
     * @param expected  what the line says should be
     * @param seen      what there is
     */
    Unmet(const std::string &expected, std::string seen)
        : std::runtime_error("expected " + expected), seen_(std::move(seen))
    {
    }
    const std::string &seen() const { return seen_; }

private:
    std::string seen_;
};

} // namespace lab::session
