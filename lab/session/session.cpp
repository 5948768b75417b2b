/*
 * session.cpp: see session.h.
 */
#include "session/session.h"

#include "session/errors.h"
#include "session/verbs.h"
#include "session/words.h"

#include <fmt/format.h>

#include <iterator>

namespace lab::session
{

Outcome Session::execute(std::string_view line)
{
    const Words words = split(line);
    if (words.empty()) {
        return {};
    }
    const Verb &command = verb(words.front());
    const Words arguments(std::next(words.begin()), words.end());
    if (arguments.size() < command.min || arguments.size() > command.max) {
        throw UsageError(fmt::format("{} arguments: {}",
                                     arguments.size() < command.min ? "missing" : "too many",
                                     command.usage));
    }
    // cppcheck-suppress returnDanglingLifetime  // an outcome holds texts of its own
    return command.run(state_, arguments);
}

Outcome Session::restart(l3lif::RestartMode mode)
{
    return begin_again(state_, mode);
}

} // namespace lab::session
