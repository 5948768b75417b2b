/*
 * wire.cpp: see wire.h.
 */
#include "wire/wire.h"

#include "wire/frame_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace lab::wire
{

namespace
{

// Frames of one port that are read before the others have their turn.
constexpr int FRAMES_AT_ONCE = 64;
// While an interface is down it is looked at now and then: nobody tells when it
// is back.
constexpr Loop::Time LOOK_AGAIN = std::chrono::milliseconds(250);

const char *text(Sent why)
{
    switch (why) {
    case Sent::full:
        return "its queue is full";
    case Sent::down:
        return "it is down";
    case Sent::too_long:
        return "it takes no frame so long";
    case Sent::done:
    case Sent::failed:
        break;
    }
    return "the kernel refused it";
}

} // namespace

Wire::Wire(session::State &state, const std::vector<Binding> &bindings, Tell tell)
    : scene_(state.scene()), tell_(std::move(tell)),
      forwarder_(state.hardware, state.layer, state.routing, state.pipeline,
                 [this](int port, std::span<const std::uint8_t> frame) { send(port, frame); })
{
    for (const Binding &binding : bindings) {
        const int number = static_cast<int>(state.port(binding.port).chip_port);
        auto port = std::make_unique<Port>(binding, number);
        ports_[number] = std::move(port);
        order_.push_back(number);
    }
}

void Wire::run(std::optional<std::chrono::milliseconds> lasts)
{
    for (const int number : order_) {
        Port &port = *ports_.at(number);
        if (!port.socket.is_up()) {
            went_down(port);
        }
        loop_.watch(port.socket.fd(), [this, &port] { read(port); });
    }
    loop_.on_alarm([this] { tick(); });
    loop_.quit_on_signals();
    if (lasts) {
        loop_.quit_at(Loop::now() + *lasts);
    }
    set_alarm();
    loop_.run();
    for (auto &[number, port] : ports_) {
        port->counters.missed += port->socket.take_lost();
    }
}

std::vector<PortCounters> Wire::ports() const
{
    std::vector<PortCounters> list;
    list.reserve(order_.size());
    for (const int number : order_) {
        list.push_back(ports_.at(number)->counters);
    }
    return list;
}

bool Wire::works() const
{
    return std::any_of(ports_.begin(), ports_.end(),
                       [](const auto &port) { return port.second->counters.ended.empty(); });
}

/** Reads what waits at a port, but not for ever: the others wait too. */
void Wire::read(Port &port)
{
    for (int i = 0; i < FRAMES_AT_ONCE && read_one(port); ++i) {
    }
    set_alarm();
}

/** Reads a frame of a port. False when there is nothing more to read. */
bool Wire::read_one(Port &port)
{
    switch (port.socket.read()) {
    case Read::frame:
        take(port);
        return true;
    case Read::too_long:
        ++port.counters.merged;
        if (!std::exchange(port.told_merged, true)) {
            tell_(fmt::format("{}: frames come in on {} that the sender's segmentation offload "
                              "made of several, and aren't taken: at the sender, run "
                              "'ethtool -K IF gro off gso off tso off'",
                              port.counters.binding.port, port.counters.binding.interface));
        }
        return true;
    case Read::down:
        went_down(port);
        return true;
    case Read::gone:
        end(port, fmt::format("{} is gone", port.counters.binding.interface));
        return false;
    case Read::failed:
        ++port.counters.read_errors;
        return false;
    case Read::nothing:
        break;
    }
    return false;
}

void Wire::take(Port &port)
{
    const auto frame = port.socket.frame();
    ++port.counters.in.frames;
    port.counters.in.bytes += frame.size();
    left_.clear();
    const auto &result = forwarder_.take(port.number, frame, Loop::now());
    tally_.came_in(++taken_, result);
    if (tells_frames_) {
        tell_(fmt::format("{}  {}: {}{}", port.counters.binding.port, text(frame),
                          fate_text(result),
                          left_.empty() ? "" : fmt::format("; out {}", fmt::join(left_, ", "))));
    }
}

/** The socket outlives it, and works again when the interface comes up. */
void Wire::went_down(Port &port)
{
    look_at_ = Loop::now() + LOOK_AGAIN;
    if (!std::exchange(port.is_down, true)) {
        tell_(fmt::format("{}: {} is down; nothing goes in or out until it is up",
                          port.counters.binding.port, port.counters.binding.interface));
    }
}

void Wire::end(Port &port, const std::string &why)
{
    loop_.unwatch(port.socket.fd());
    port.counters.ended = why;
    tell_(fmt::format("{}: {}: the port ends", port.counters.binding.port, why));
    if (!works()) {
        tell_("no port is left");
        loop_.quit();
    }
}

void Wire::send(int number, std::span<const std::uint8_t> frame)
{
    const auto found = ports_.find(number);
    tally_.went_out(number, frame.size());
    if (tells_frames_) {
        left_.push_back(scene_.port_text(number));
    }
    if (found == ports_.end()) {
        ++unbound_;
        return;
    }
    Port &port = *found->second;
    const Sent sent = port.counters.ended.empty() ? port.socket.send(frame) : Sent::down;
    if (sent != Sent::done) {
        not_sent(port, sent, frame.size());
        return;
    }
    ++port.counters.out.frames;
    port.counters.out.bytes += frame.size();
}

void Wire::not_sent(Port &port, Sent why, std::size_t size)
{
    ++port.counters.not_sent;
    if (why == Sent::down || std::exchange(port.told_not_sent, true)) {
        return;
    }
    tell_(fmt::format("{}: a frame of {} bytes couldn't be sent on {}: {}; "
                      "others like it are only "
                      "counted",
                      port.counters.binding.port, size, port.counters.binding.interface,
                      text(why)));
}

void Wire::tick()
{
    left_.clear();
    forwarder_.tick(Loop::now());
    if (tells_frames_ && !left_.empty()) {
        tell_(fmt::format("CPU  what was due: out {}", fmt::join(left_, ", ")));
    }
    if (look_at_ && *look_at_ <= Loop::now()) {
        look_at_down();
    }
    set_alarm();
}

/** Looks whether interfaces that went down are back, or gone for good. */
void Wire::look_at_down()
{
    look_at_.reset();
    for (auto &[number, port] : ports_) {
        if (!port->is_down || !port->counters.ended.empty()) {
            continue;
        }
        if (port->socket.mtu() == 0) {
            end(*port, fmt::format("{} is gone", port->counters.binding.interface));
        } else if (port->socket.is_up()) {
            port->is_down = false;
            tell_(fmt::format("{}: {} is up again", port->counters.binding.port,
                              port->counters.binding.interface));
        } else {
            look_at_ = Loop::now() + LOOK_AGAIN;
        }
    }
}

void Wire::set_alarm()
{
    std::optional<Loop::Time> next = forwarder_.next_due();
    if (look_at_) {
        next = next ? std::min(*next, *look_at_) : *look_at_;
    }
    loop_.set_alarm(next);
}

} // namespace lab::wire
