/*
 * input.h: a fuzzer's bytes, taken apart from front to back. Behind their end all is 0, so that any
 * bytes are an input.
 *
 * session_on_switch.h has a switch that inputs are played on, expect.h what must hold.
 */
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace fuzz
{

/** The bytes of one input. */
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size) : rest_(data, size) {}

    /** Whether all of it was taken. */
    bool empty() const { return rest_.empty(); }
    /** The next byte. */
    std::uint8_t byte()
    {
        const std::span<const std::uint8_t> taken = bytes(1);
        return taken.empty() ? std::uint8_t{0} : taken[0];
    }
    /** A number of so many bytes, at most 8, the highest first. */
    std::uint64_t number(std::size_t width)
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i) {
            value = value << 8U | byte();
        }
        return value;
    }
    /** The next bytes, `count` of them or what is left. */
    std::span<const std::uint8_t> bytes(std::size_t count)
    {
        const std::span<const std::uint8_t> taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    /** All that is left, as bytes. */
    std::span<const std::uint8_t> rest() { return bytes(rest_.size()); }
    /** All that is left, as a text. */
    std::string_view text()
    {
        const std::span<const std::uint8_t> left = rest();
        return {reinterpret_cast<const char *>(left.data()), left.size()};
    }

private:
    std::span<const std::uint8_t> rest_;
};

} // namespace fuzz
