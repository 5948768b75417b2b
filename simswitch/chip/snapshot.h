/*
 * snapshot.h: what a chip holds, as lines of text, and what differs between
 * two moments. A test that ends where it began compares two snapshots:
 *
 *     const auto before = chip::snapshot(chip);
 *     …
 *     EXPECT_EQ(chip::changes(before, chip::snapshot(chip)),
 *               (std::vector<std::string>{"+ switch control 230: 1"}));
 */
#pragma once

#include <string>
#include <vector>

namespace simswitch::chip
{

class Chip;

/** Each object on a line of its own, "VLAN 100: stg 1 members {0,5} …", table by table, by id. */
using Snapshot = std::vector<std::string>;

/** All that the chip holds. */
Snapshot snapshot(const Chip &chip);

/** The lines that are gone, with "- ", then the new ones, with "+ ", each in their own order. */
std::vector<std::string> changes(const Snapshot &before, const Snapshot &after);

/** Whether both chips hold the same objects, in the fields too that no snapshot line shows. */
bool same_state(const Chip &one, const Chip &other);

} // namespace simswitch::chip
