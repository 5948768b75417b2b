/*
 * wire.h: the chip's ports on network interfaces of this machine: what comes in
 * on an interface goes into the port, what leaves on the port goes out of the
 * interface.
 *
 * port_socket.h is one interface, loop.h waits for frames and times,
 * cpu/forwarder.h forwards. Not a thread of its own: everything is done in
 * run().
 */
#pragma once

#include "cpu/forwarder.h"
#include "packet/tally.h"
#include "session/state.h"
#include "wire/loop.h"
#include "wire/port_socket.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::wire
{

/** A port and the interface that it is on. */
struct Binding {
    std::string port;
    std::string interface;
};

/** What went through a port. */
struct PortCounters {
    Binding binding;
    packet::Traffic in;            ///< frames that were taken
    packet::Traffic out;           ///< frames that were sent
    std::uint64_t merged = 0;      ///< came in longer than a frame on a wire: not taken
    std::uint64_t missed = 0;      ///< the kernel had no room for them until they were read
    std::uint64_t not_sent = 0;    ///< the interface was down, full, or took no frame so long
    std::uint64_t read_errors = 0; ///< reads that failed for another reason
    std::string ended;             ///< why the port was given up; empty while it works
};

/** The ports of a switch on network interfaces. */
class Wire
{
public:
    /** Something to be told, a line without its end. */
    using Tell = std::function<void(std::string_view line)>;

    /**
     * Opens the interfaces.
     *
     * @param state     a session with a configuration up; must outlive this
     * @param bindings  which port is on which interface, each once
     * @param tell      gets what happens to ports
     * @throws session::UsageError for an unknown port, with the nearest
     * @throws InterfaceError for an interface that can't be used
     */
    Wire(session::State &state, const std::vector<Binding> &bindings, Tell tell);

    /** Tells of each frame too, a line each. */
    void tell_frames() { tells_frames_ = true; }
    /**
     * Forwards until SIGINT or SIGTERM comes, the last interface is gone, or the time is over.
     *
     * @param lasts  for how long; nothing: without an end
     */
    void run(std::optional<std::chrono::milliseconds> lasts);

    /** What went through each port, in the order in which they were bound. */
    std::vector<PortCounters> ports() const;
    const packet::Tally &tally() const { return tally_; }
    /** Frames that left on ports that are on no interface. */
    std::uint64_t unbound() const { return unbound_; }
    /** What the switch's CPU did. */
    const cpu::Counters &cpu() const { return forwarder_.counters(); }
    /** Whether a port still works. */
    bool works() const;

private:
    /** A port on its interface. */
    struct Port {
        Port(const Binding &binding, int port_number)
            : number(port_number), socket(binding.interface)
        {
            counters.binding = binding;
        }
        int number;
        PortSocket socket;
        PortCounters counters;
        bool told_merged = false;
        bool told_not_sent = false;
        bool is_down = false;
    };

    void read(Port &port);
    bool read_one(Port &port);
    void take(Port &port);
    void went_down(Port &port);
    void end(Port &port, const std::string &why);
    void send(int number, std::span<const std::uint8_t> frame);
    void not_sent(Port &port, Sent why, std::size_t size);
    void tick();
    void look_at_down();
    void set_alarm();

    session::Scene scene_;
    Tell tell_;
    Loop loop_;
    std::map<int, std::unique_ptr<Port>> ports_;
    std::vector<int> order_; ///< of the ports
    cpu::Forwarder forwarder_;
    packet::Tally tally_;
    std::optional<Loop::Time> look_at_; ///< when interfaces that are down are looked at
    std::uint64_t taken_ = 0;
    std::uint64_t unbound_ = 0;
    bool tells_frames_ = false;
    std::vector<std::string> left_; ///< ports on which the frame at hand has left
};

} // namespace lab::wire
