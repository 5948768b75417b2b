/*
 * natural_order.cpp: see natural_order.h.
 */
#include "config/natural_order.h"

#include <algorithm>

namespace lab::config
{

namespace
{

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

/** Takes the run at the front of a name: digits only, or no digits. */
std::string_view take_run(std::string_view &name)
{
    const bool digits = is_digit(name.front());
    std::size_t length = 1;
    while (length < name.size() && is_digit(name[length]) == digits) {
        ++length;
    }
    const std::string_view run = name.substr(0, length);
    name.remove_prefix(length);
    return run;
}

/** Compares digits by value, without a limit of their length. */
int compare_digits(std::string_view left, std::string_view right)
{
    left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
    right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
    if (left.size() != right.size()) {
        return left.size() < right.size() ? -1 : 1;
    }
    return left.compare(right);
}

} // namespace

int natural_compare(std::string_view left, std::string_view right)
{
    std::string_view left_rest = left;
    std::string_view right_rest = right;
    while (!left_rest.empty() && !right_rest.empty()) {
        const std::string_view left_run = take_run(left_rest);
        const std::string_view right_run = take_run(right_rest);
        const bool numbers = is_digit(left_run.front()) && is_digit(right_run.front());
        const int order =
            numbers ? compare_digits(left_run, right_run) : left_run.compare(right_run);
        if (order != 0) {
            return order;
        }
    }
    if (left_rest.empty() != right_rest.empty()) {
        return left_rest.empty() ? -1 : 1;
    }
    // Names that differ by leading zeros only.
    return left.compare(right);
}

} // namespace lab::config
