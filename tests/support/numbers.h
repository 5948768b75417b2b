/*
 * numbers.h: numbers for tests that want many different ones.
 */
#pragma once

#include <cstdint>

namespace rtifhal_test
{

/** Numbers that look random and are the same in every run. */
class Numbers
{
public:
    explicit Numbers(std::uint32_t seed) : state_(seed) {}
    std::uint32_t operator()()
    {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state_ >> 32);
    }

private:
    std::uint64_t state_;
};

} // namespace rtifhal_test
