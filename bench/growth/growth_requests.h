/*
 * growth_requests.h: the requests whose cost is measured as something grows, and what grows.
 *
 * growth_bench.cpp runs them, growth_network.h has the interfaces that they meet.
 */
#pragma once

#include "growth_network.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench
{

/** What grows. */
enum class Subject : std::uint8_t {
    interfaces,           ///< of all kinds, mixed
    svis,                 ///< and nothing else
    virtual_macs,         ///< on 20 SVIs
    pairs,                ///< secondaries of one primary
    subinterfaces,        ///< of one port
    channel_subinterfaces ///< of one port-channel
};

/** As the tables name it, such as "virtual MACs". */
const char *text(Subject subject);

/** A request. After `timed` and `after` all is as it was before `before`. */
struct Request {
    std::string name;
    std::size_t units = 0;                ///< requests that `timed` makes
    std::function<void()> before = [] {}; ///< brings about what `timed` needs
    std::function<void()> timed;
    std::function<void()> after = [] {}; ///< takes back what it left
};

/** Interfaces, virtual MACs or pairs that come and go in one measurement. */
inline constexpr std::size_t BATCH = 8;

/**
 * Brings a network to its size less BATCH, which the requests bring up and take down.
 *
 * @param network  without interfaces; must outlive the requests
 * @param subject  what grows
 * @param count    how much of it there is, at least 16
 * @return the requests to measure
 */
std::vector<Request> requests_of(Network &network, Subject subject, std::size_t count);

} // namespace bench
