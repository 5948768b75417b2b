/*
 * holds.h: what has to hold after any failure of a platform call: a function
 * for each, with a text. run.h asks all of them.
 */
#pragma once

#include "faults/road.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::faults
{

/** Something that has to hold. */
struct Hold {
    std::string_view name; ///< "each number has one owner"
    bool at_once;          ///< right behind the failure; else once it was deleted and added again
    /** What breaks it, a line each; empty when it holds. */
    Lines (*broken)(const World &world);
};

/** All of them. */
std::span<const Hold> holds();

/**
 * What breaks any of them, "each number has one owner: Ethernet0 and Vlan100 have number 3".
 *
 * @param at_once  those that hold right behind a failure (true), or the others (false)
 */
Lines broken_holds(const World &world, bool at_once);

} // namespace lab::faults
