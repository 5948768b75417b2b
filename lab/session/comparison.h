/*
 * comparison.h: the parts of an expectation: keys of rows, "= 5" and "!= 5", and
 * the values that have no column because there are too many of them: controls
 * by number. expect.h puts them together.
 */
#pragma once

#include "session/scene.h"
#include "session/table.h"
#include "session/words.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace lab::session
{

/**
 * Checks that a key that no row has is one that could be there: a number, or a
 * name that the table knows. @throws UsageError for another, with the nearest
 */
void check_key(const Table &table, const std::string &key);

/** What a value is compared with. */
struct Comparison {
    bool equal = true; ///< "=", else "!="
    std::string value;
};

/** The place of the first "=" or "!=" in some words, their number when there is none. */
std::size_t find_sign(const Words &words);

/** Reads "= VALUE" or "!= VALUE". @throws UsageError for anything else */
Comparison take_comparison(const Words &words);

/**
 * Whether a comparison holds: "=" when one of the values is the expected one,
 * "!=" when none is. Numbers are compared as numbers, decimal or 0x hex, and
 * "-" is a value that isn't there.
 */
bool holds(const Comparison &comparison, const std::vector<std::string> &values);

/**
 * The values of "control N" or "vlan-control N" in rows of the table of ports,
 * or of "control N" of the switch.
 *
 * @param field  the words of the field
 * @return nothing when these words name no such control
 * @throws UsageError for a control without a number
 */
std::optional<std::vector<std::string>> numbered_control(const Table &table, const Words &field,
                                                         const std::vector<const Row *> &rows,
                                                         const Scene &scene);

} // namespace lab::session
