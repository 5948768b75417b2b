/*
 * refusal.cpp: the sentences of refusal.h.
 */
#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

Outcome table_full(std::string_view table, std::size_t limit)
{
    return {ERROR_FULL, fmt::format("{} table full: {} of {}", table, limit, limit)};
}

Outcome unknown(std::string_view kind, long long id)
{
    return {ERROR_NOT_FOUND, fmt::format("{} {} does not exist", kind, id)};
}

Outcome existing(std::string_view kind, long long id)
{
    return {ERROR_EXISTS, fmt::format("{} {} exists already", kind, id)};
}

Outcome out_of_range(std::string_view kind, long long value, long long first, long long last)
{
    return {ERROR_PARAM, fmt::format("{} {} is not in {}..{}", kind, value, first, last)};
}

Outcome unavailable(std::string_view kind, long long id, std::string_view where)
{
    return {ERROR_UNAVAILABLE, fmt::format("{} {} is not available on {}", kind, id, where)};
}

} // namespace simswitch::chip
