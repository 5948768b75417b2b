/*
 * request_watch.cpp: see request_watch.h. The platform works on one switch at a
 * time, and so do the watches.
 */
#include "l3lif/request_watch.h"

#include <utility>

namespace lab::l3lif
{

namespace
{

RequestWatch *last_watch = nullptr;

} // namespace

RequestWatch::RequestWatch(const simswitch::Switch &hardware, Told told)
    : hardware_(&hardware), told_(std::move(told)), previous_(std::exchange(last_watch, this))
{
}

RequestWatch::~RequestWatch()
{
    last_watch = previous_;
}

const RequestWatch *RequestWatch::of(const simswitch::Switch &hardware)
{
    const RequestWatch *watch = last_watch;
    while (watch != nullptr && watch->hardware_ != &hardware) {
        watch = watch->previous_;
    }
    return watch;
}

} // namespace lab::l3lif
