/*
 * natural_order.h: the order in which people count names: Ethernet8 stands
 * before Ethernet64. Ports get their chip ports and VRFs their numbers in it.
 */
#pragma once

#include <string_view>

namespace lab::config
{

/**
 * Compares two names run by run: runs of digits by their value, all else byte
 * by byte, and a name before one that goes on where it ends.
 *
 * @param left, right  any bytes; a run of digits may be of any length
 * @return negative, 0 or positive as left sorts before, with or after right;
 *         0 only for equal names
 */
int natural_compare(std::string_view left, std::string_view right);

/** The same as an order for sorted containers. */
struct NaturalLess {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const
    {
        return natural_compare(left, right) < 0;
    }
};

} // namespace lab::config
