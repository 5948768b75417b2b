/*
 * usage.cpp: see usage.h.
 */
#include "commands/usage.h"

#include "session/nearest.h"

#include <fmt/format.h>

#include <vector>

namespace lab::commands
{

namespace
{

/** The line of a verb's help that shows how it is called. */
std::string call_of(const CLI::App &app, const CLI::App &verb)
{
    const std::string help = verb.help(app.get_name());
    const std::size_t at = help.find("Usage: ");
    return at == std::string::npos ? std::string() : help.substr(at, help.find('\n', at) + 1 - at);
}

std::vector<std::string> verbs_of(const CLI::App &app)
{
    std::vector<std::string> names;
    for (const CLI::App *verb : app.get_subcommands([](const CLI::App *) { return true; })) {
        names.push_back(verb->get_name());
    }
    return names;
}

} // namespace

std::string usage_problem(const CLI::App &app, const CLI::ParseError &error)
{
    const std::string &name = app.get_name();
    if (const auto verbs = app.get_subcommands(); !verbs.empty()) {
        const CLI::App &verb = *verbs.front();
        return fmt::format("{0} {1}: {2}\n{3}Run '{0} {1} --help' for more information.\n", name,
                           verb.get_name(), error.what(), call_of(app, verb));
    }
    const auto words = app.remaining();
    if (words.empty()) {
        return fmt::format("{}: a command is missing\n\n{}", name, app.help());
    }
    const std::string &word = words.front();
    const std::string problem = word.starts_with('-')
                                    ? session::unknown("option", word, {"--help", "--version"})
                                    : session::unknown("command", word, verbs_of(app));
    return fmt::format("{0}: {1}\nRun '{0} --help' for the list of commands.\n", name, problem);
}

} // namespace lab::commands
