/*
 * flood_list.h: what the tests of the flood lists and in-port sets share: the
 * calls of each edit, and a fixture that looks into the chip's field entries.
 *
 * At boot the chip's entries 127, 125, 124, 123 and 120 flood to the front
 * ports; 124, 123 and 120 also have them as in-ports.
 */
#pragma once

#include "support/library_test.h"

#include <string>
#include <vector>

namespace rtifhal_test
{

/** The texts of calls, as the journal prints them. */
namespace field_call
{

using Lines = std::vector<std::string>;

inline const char *const FRONT = "{1-104}";
inline const char *const FRONT_BUT_5 = "{1-4,6-104}";
inline const char *const SIZE = "fwmpd_trident_get_sup_tcam_default_size() = 0 [size=128]";
inline const char *const UNIT = "rtifhal_get_bcm_unit(0) = 0";

/** The edit of an entry's redirect ports. */
Lines flood_edit(int entry, const std::string &before, const std::string &after);
/** The edit of an entry's in-ports. */
Lines in_ports_edit(int entry, const std::string &before, const std::string &after);
/** The flood edit of an entry that isn't in the chip. */
Lines edit_of_unknown(int entry, const std::string &after);
/** Lists in a row. */
Lines joined(const std::vector<Lines> &parts);

} // namespace field_call

/** A switch whose field entries are looked into. */
class FloodListTest : public LibraryTest
{
protected:
    explicit FloodListTest(const simswitch::Options &options = {}) : LibraryTest(options) {}

    /** The entries that the calls of a function were for, their second argument. */
    std::vector<int> entries_of(const std::string &function) const;
    /** What the chip goes by for an entry. */
    const simswitch::chip::FieldRule &installed(int entry) const;
    /** Whether an entry redirects to a port. */
    bool floods_to(int entry, int port) const;
};

} // namespace rtifhal_test
