/*
 * port_socket.h: a network interface as a port of the switch: whole frames in
 * and out by a packet socket, none of them meant for this machine alone.
 *
 * offload.h makes of what the kernel gives what was on the wire; wire.h moves
 * the frames between sockets and chip.
 */
#pragma once

#include "chip/pipeline/frame.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace lab::wire
{

/** An interface that can't be used, with why and what to do. */
class InterfaceError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** What reading a socket came to. */
enum class Read : std::uint8_t {
    frame,    ///< a frame
    nothing,  ///< none is waiting
    too_long, ///< a frame longer than the interface sends or the switch takes: merged from several
    down,     ///< the interface went down; it may come back
    gone,     ///< the interface was removed
    failed    ///< the kernel had no memory, or another passing trouble
};

/** What sending a frame came to. */
enum class Sent : std::uint8_t {
    done,
    full,     ///< the interface's queue has no room
    down,     ///< the interface is down
    too_long, ///< longer than the interface takes
    failed    ///< anything else
};

/** A packet socket on a network interface. */
class PortSocket
{
public:
    /**
     * Opens the interface: all of its frames are read, whomever they are for.
     *
     * @param interface  its name
     * @throws InterfaceError when there is none, it isn't Ethernet or may not be opened
     */
    explicit PortSocket(std::string interface);
    ~PortSocket();
    PortSocket(const PortSocket &) = delete;
    PortSocket &operator=(const PortSocket &) = delete;

    /** Reads the next frame; its bytes are in frame(). Never waits. */
    Read read();
    /** The frame that was read last, with its tag and its checksums. */
    std::span<const std::uint8_t> frame() const { return frame_; }
    /** Sends a frame. Never waits. */
    Sent send(std::span<const std::uint8_t> frame);

    /** Whether the interface is up. */
    bool is_up() const;
    /** Frames that the kernel had no room for since the last time it was asked. */
    std::size_t take_lost();
    /** The longest packet that the interface sends, in bytes; 0 when it is gone. */
    std::size_t mtu() const;
    int fd() const { return fd_; }
    const std::string &interface() const { return interface_; }

private:
    void bind();
    bool is_merged(std::size_t size);
    Read read_error(int error) const;

    std::string interface_;
    int fd_ = -1;
    int index_ = 0;
    std::size_t mtu_ = 0; ///< as it was when a frame last seemed too long
    /** A tag that is put back goes in front. */
    std::array<std::uint8_t,
               simswitch::chip::pipeline::TAG_SIZE + simswitch::chip::pipeline::FRAME_MAX>
        buffer_{};
    std::span<const std::uint8_t> frame_;
};

} // namespace lab::wire
