/*
 * errors.h: why a neighbour or a static route isn't taken. routing.h throws them.
 */
#pragma once

#include <stdexcept>

namespace lab::routing
{

/** Why a neighbour or a route can't be taken: what, why, what to do. */
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** It names something that there isn't; the nearest name is in the text. */
class UnknownName : public Error
{
public:
    using Error::Error;
};

} // namespace lab::routing
