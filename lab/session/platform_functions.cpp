/*
 * platform_functions.cpp: see platform_functions.h.
 */
#include "session/platform_functions.h"

#include "session/errors.h"
#include "session/nearest.h"

#include <algorithm>

namespace lab::session
{

const std::vector<std::string> &platform_functions()
{
    static const std::vector<std::string> names = {
#include "platform_function_names.inc"
    };
    return names;
}

void check_function(const std::string &name)
{
    const auto &names = platform_functions();
    if (!std::binary_search(names.begin(), names.end(), name)) {
        throw UsageError(unknown("function", name, names));
    }
}

} // namespace lab::session
