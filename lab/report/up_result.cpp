/*
 * up_result.cpp: see up_result.h.
 */
#include "report/up_result.h"

#include <algorithm>

namespace lab::report
{

std::size_t UpResult::up_count() const
{
    return static_cast<std::size_t>(
        std::count_if(interfaces.begin(), interfaces.end(),
                      [](const InterfaceResult &interface) { return interface.up; }));
}

std::size_t UpResult::calls() const
{
    std::size_t count = layer->router_mac().calls.size();
    for (const auto &interface : interfaces) {
        count += interface.interface->up.calls.size();
    }
    return count;
}

bool UpResult::has_router_mac() const
{
    return layer->router_mac().code != l3lif::Layer::NO_STATION;
}

bool UpResult::ok() const
{
    const bool gone = !teardown || (teardown->clean && teardown->left.empty());
    return has_router_mac() && up_count() == interfaces.size() && gone;
}

} // namespace lab::report
