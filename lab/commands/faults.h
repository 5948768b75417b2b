/*
 * faults.h: the command `rtif sweep`: every platform call of every request of a
 * configuration is made to fail, and what becomes of it is told. faults/sweep.h
 * does it.
 */
#pragma once

#include "faults/sweep.h"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace lab::commands
{

/** What the user asked for. */
struct FaultsOptions {
    std::filesystem::path config = {};
    faults::SweepOptions sweep = {};
    bool json = false;
};

/**
 * Runs the command.
 *
 * @param options  what was asked for
 * @param out      receives the result
 * @return 0; 1 when something breaks that has to hold after any failure
 * @throws config::UnusableFile when the configuration can't be used
 * @throws session::UsageError for a kind of request that there is none of
 * @throws std::runtime_error when a process of the sweep can't do its share
 */
int faults(const FaultsOptions &options, std::ostream &out);

/**
 * Reads a list of codes, "-1,-6".
 *
 * @return them; each is from -1 to -99
 * @throws session::UsageError for anything else
 */
std::vector<int> parse_codes(const std::string &text);

} // namespace lab::commands
