/*
 * outcome.h: how an operation of the chip's tables ended: the SDK's code, and
 * for a refusal the reason in words.
 */
#pragma once

#include <string>

namespace simswitch
{

// The codes that the embedded switch gives.
inline constexpr int OK = 0;
inline constexpr int ERROR_UNIT = -3;
inline constexpr int ERROR_PARAM = -4;
inline constexpr int ERROR_FULL = -6;
inline constexpr int ERROR_NOT_FOUND = -7;
inline constexpr int ERROR_EXISTS = -8;
inline constexpr int ERROR_UNAVAILABLE = -16;

/** The code of an operation and, when it was refused, why. */
struct Outcome {
    int code = OK;
    std::string reason;

    bool ok() const { return code >= 0; }
};

} // namespace simswitch
