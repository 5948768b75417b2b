/*
 * wire_socket_test.cpp: a network interface as a port: frames as they were on
 * the wire, and what happens to the interface. In namespaces of their own.
 */
#include "wire/offload.h"
#include "wire/port_socket.h"
#include "wire_space.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <poll.h>
#include <string>
#include <vector>

namespace
{

using lab::wire::InterfaceError;
using lab::wire::PortSocket;
using lab::wire::Read;
using lab::wire::Sent;
using lab_test::in_namespace;
using lab_test::shell;
using Bytes = std::vector<std::uint8_t>;

/** A frame of a type that the kernel has no use for. */
Bytes frame(std::size_t size, std::uint8_t first = 2)
{
    Bytes bytes(size, 0x33);
    bytes.at(0) = first;
    bytes.at(12) = 0x88;
    bytes.at(13) = 0xb5;
    return bytes;
}

/** Waits until there is something to be read, or an error, but not for ever. */
Read read_soon(PortSocket &socket, int milliseconds = 5000)
{
    pollfd waits{socket.fd(), POLLIN, 0};
    poll(&waits, 1, milliseconds);
    return socket.read();
}

/**
 * What is read once the cable works again: the kernel drops, and doesn't tell, what is
 * sent before it has taken note of the carrier.
 */
Read read_of_next(PortSocket &socket, PortSocket &sender)
{
    Read seen = Read::nothing;
    for (int attempt = 0; attempt < 50 && seen == Read::nothing; ++attempt) {
        EXPECT_EQ(sender.send(frame(60)), Sent::done);
        seen = read_soon(socket, 100);
    }
    return seen;
}

Bytes bytes_of(const PortSocket &socket)
{
    return {socket.frame().begin(), socket.frame().end()};
}

/** Why an interface can't be used; empty when it can. */
std::string refusal(const std::string &interface)
{
    try {
        const PortSocket socket(interface);
    } catch (const InterfaceError &error) {
        return error.what();
    }
    return "";
}

TEST(WireSocket, FramesForAnybodyComeInWholeAndOwnOnesDoNot)
{
    in_namespace([] {
        PortSocket port("sw0");
        PortSocket host("host0");
        EXPECT_EQ(port.read(), Read::nothing);
        for (const Bytes &sent : {frame(14), frame(60, 0xff), frame(1514, 3)}) {
            EXPECT_EQ(host.send(sent), Sent::done);
            EXPECT_EQ(read_soon(port), Read::frame);
            EXPECT_EQ(bytes_of(port), sent);
        }
        EXPECT_EQ(host.read(), Read::nothing);
        EXPECT_EQ(port.take_lost(), 0U);
    });
}

TEST(WireSocket, TagsAreWhereTheyWere)
{
    in_namespace([] {
        PortSocket port("sw0");
        PortSocket host("host0");
        Bytes tagged = frame(64);
        tagged.at(12) = 0x81;
        tagged.at(13) = 0x00;
        tagged.at(14) = 0x60;
        tagged.at(15) = 0x64;
        Bytes twice = tagged;
        twice.at(16) = 0x81;
        twice.at(17) = 0x00;
        Bytes service = tagged;
        service.at(12) = 0x88;
        service.at(13) = 0xa8;
        for (const Bytes &sent : {tagged, twice, service}) {
            EXPECT_EQ(host.send(sent), Sent::done);
            EXPECT_EQ(read_soon(port), Read::frame);
            EXPECT_EQ(bytes_of(port), sent);
        }
    });
}

TEST(WireSocket, ChecksumsOfTheKernelAreComplete)
{
    in_namespace([] {
        ASSERT_TRUE(shell("ip address add 10.0.0.9/24 dev host0"));
        ASSERT_TRUE(shell("ip neighbour add 10.0.0.1 lladdr 02:00:00:00:0b:01 dev host0"));
        PortSocket port("sw0");
        ASSERT_TRUE(shell("bash -c 'echo x >/dev/udp/10.0.0.1/5000'"));
        do {
            ASSERT_EQ(read_soon(port), Read::frame);
        } while (port.frame().size() != 44 || port.frame()[23] != 17);
        Bytes seen = bytes_of(port);
        const Bytes before = seen;
        EXPECT_TRUE(lab::wire::complete_checksum(seen));
        EXPECT_EQ(seen, before);
    });
}

TEST(WireSocket, FramesThatOffloadMergedAreTold)
{
    in_namespace([] {
        ASSERT_TRUE(shell("ip link set host0 mtu 9000"));
        PortSocket port("sw0");
        PortSocket host("host0");
        // veth drops what its other end can't take; so that end shrinks when it is through.
        ASSERT_TRUE(shell("ip link set sw0 mtu 9000"));
        EXPECT_EQ(host.send(frame(4000)), Sent::done);
        ASSERT_TRUE(shell("ip link set sw0 mtu 1500"));
        EXPECT_EQ(read_soon(port), Read::too_long);
        EXPECT_TRUE(port.frame().empty());
        EXPECT_EQ(port.send(frame(4000)), Sent::too_long);
        EXPECT_EQ(port.mtu(), 1500U);
    });
}

TEST(WireSocket, AnInterfaceGoesDownAndComesBack)
{
    in_namespace([] {
        PortSocket port("sw0");
        PortSocket host("host0");
        EXPECT_TRUE(port.is_up());
        ASSERT_TRUE(shell("ip link set sw0 down"));
        EXPECT_EQ(read_soon(port), Read::down);
        EXPECT_FALSE(port.is_up());
        EXPECT_EQ(port.send(frame(60)), Sent::down);
        ASSERT_TRUE(shell("ip link set sw0 up"));
        EXPECT_TRUE(port.is_up());
        EXPECT_EQ(read_of_next(port, host), Read::frame);
    });
}

TEST(WireSocket, AnInterfaceThatIsRemovedIsGone)
{
    in_namespace([] {
        PortSocket port("sw0");
        ASSERT_TRUE(shell("ip link del host0"));
        Read seen = read_soon(port);
        // Down comes first where one is quick enough to see it.
        seen = seen == Read::down && port.mtu() == 0 ? Read::gone : seen;
        EXPECT_EQ(seen, Read::gone);
        EXPECT_EQ(port.mtu(), 0U);
        EXPECT_EQ(port.send(frame(60)), Sent::down);
        // Another one of its name isn't this one.
        ASSERT_TRUE(shell("ip link add sw0 type veth peer name host0"));
        EXPECT_EQ(port.mtu(), 0U);
    });
}

TEST(WireSocket, AnInterfaceThatIsDownCanBeOpened)
{
    in_namespace([] {
        ASSERT_TRUE(shell("ip link set sw0 down"));
        PortSocket port("sw0");
        EXPECT_FALSE(port.is_up());
        EXPECT_EQ(port.read(), Read::nothing);
    });
}

TEST(WireSocket, ErrorsSayWhatToDo)
{
    in_namespace([] {
        EXPECT_EQ(refusal("veth7"), "veth7: there is no such network interface");
        EXPECT_EQ(refusal("a-name-that-is-too-long"),
                  "a-name-that-is-too-long: there is no such network interface");
        EXPECT_EQ(refusal("lo"), "lo: not an Ethernet interface");
    });
}

TEST(WireSocket, WithoutThePermissionItIsSaid)
{
    in_namespace([] {
        // Another user has no capability; a user namespace maps none that one could become.
        if (setuid(65534) != 0) {
            return;
        }
        EXPECT_EQ(refusal("sw0"),
                  "sw0: not permitted: frames of a network interface need CAP_NET_RAW. Run rtif as "
                  "root, in a user namespace ('unshare -Urn'), or give it the capability: 'setcap "
                  "cap_net_raw+ep' on the program");
    });
}

} // namespace
