/*
 * basics.cpp: sets of ports and MAC addresses.
 */
#include "chip/basics.h"

#include <bit>
#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

std::uint32_t bit_of(int port)
{
    return 1U << (static_cast<unsigned>(port) % 32);
}

std::size_t word_of(int port)
{
    return static_cast<std::size_t>(port) / 32;
}

} // namespace

std::string text(const Mac &mac)
{
    return fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", mac[0], mac[1], mac[2], mac[3],
                       mac[4], mac[5]);
}

PortSet::PortSet(std::initializer_list<int> ports)
{
    for (int port : ports) {
        add(port);
    }
}

PortSet PortSet::range(int first, int last)
{
    PortSet set;
    for (int port = first; port <= last; ++port) {
        set.add(port);
    }
    return set;
}

void PortSet::add(int port)
{
    if (is_port(port)) {
        words_.at(word_of(port)) |= bit_of(port);
    }
}

void PortSet::remove(int port)
{
    if (is_port(port)) {
        words_.at(word_of(port)) &= ~bit_of(port);
    }
}

bool PortSet::has(int port) const
{
    return is_port(port) && (words_.at(word_of(port)) & bit_of(port)) != 0;
}

int PortSet::count() const
{
    int sum = 0;
    for (std::uint32_t word : words_) {
        sum += std::popcount(word);
    }
    return sum;
}

std::string PortSet::text() const
{
    std::string out = "{";
    for (int first = 0; first <= LAST_PORT; ++first) {
        if (!has(first)) {
            continue;
        }
        int last = first;
        while (has(last + 1)) {
            ++last;
        }
        const char *comma = out.size() > 1 ? "," : "";
        if (last == first) {
            out += fmt::format("{}{}", comma, first);
        } else if (last == first + 1) {
            out += fmt::format("{}{},{}", comma, first, last);
        } else {
            out += fmt::format("{}{}-{}", comma, first, last);
        }
        first = last;
    }
    return out + "}";
}

PortSet &PortSet::operator|=(const PortSet &other)
{
    for (std::size_t i = 0; i < words_.size(); ++i) {
        words_.at(i) |= other.words_.at(i);
    }
    return *this;
}

PortSet &PortSet::operator&=(const PortSet &other)
{
    for (std::size_t i = 0; i < words_.size(); ++i) {
        words_.at(i) &= other.words_.at(i);
    }
    return *this;
}

PortSet &PortSet::operator-=(const PortSet &other)
{
    for (std::size_t i = 0; i < words_.size(); ++i) {
        words_.at(i) &= ~other.words_.at(i);
    }
    return *this;
}

} // namespace simswitch::chip
