/*
 * usage.h: what is told of a command line that makes no sense: of which verb, what is wrong,
 * how the verb is called, or which verb was meant.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace lab::commands
{

/**
 * The lines about a command line that couldn't be taken.
 *
 * @param app    the command with all its verbs, as far as it has read the words
 * @param error  what it found
 * @return lines, the last one ended too; words of the command line stand in them as they were
 *         given
 */
std::string usage_problem(const CLI::App &app, const CLI::ParseError &error);

} // namespace lab::commands
