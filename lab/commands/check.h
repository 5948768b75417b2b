/*
 * check.h: the command `rtif check`: whether store, chip and library agree on a
 * state folder. check/check.h compares.
 */
#pragma once

#include <filesystem>
#include <iosfwd>

namespace lab::commands
{

/** What the user asked for. */
struct CheckOptions {
    std::filesystem::path state_dir = {};
    bool json = false;
};

/**
 * Runs the command. The folder stays as it is: a copy of it is looked at.
 *
 * @param options  what was asked for
 * @param out      receives the result
 * @return 0; 1 when there are differences
 * @throws std::runtime_error when the folder can't be used
 */
int check(const CheckOptions &options, std::ostream &out);

} // namespace lab::commands
