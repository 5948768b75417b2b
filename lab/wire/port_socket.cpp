/*
 * port_socket.cpp: see port_socket.h.
 */
#include "wire/port_socket.h"

#include "wire/offload.h"

#include <fmt/format.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <optional>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace lab::wire
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr int RECEIVE_ROOM = 4 * 1024 * 1024; // bytes, as far as the system grants them

/** What the kernel tells beside a frame. */
struct Beside {
    bool checksum_missing = false;
    std::optional<std::uint16_t> tag;
    std::uint16_t tag_type = pipeline::TYPE_TAG;
};

/** An interface's request, with its name in it. */
ifreq request_for(const std::string &interface)
{
    ifreq request{};
    interface.copy(request.ifr_name, IFNAMSIZ - 1);
    return request;
}

void set_option(int fd, int option, int value, const std::string &interface)
{
    if (setsockopt(fd, SOL_PACKET, option, &value, sizeof value) != 0) {
        throw InterfaceError(fmt::format("{}: packet socket option {}: {}", interface, option,
                                         std::strerror(errno)));
    }
}

Beside read_beside(msghdr &message)
{
    Beside beside;
    for (cmsghdr *header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_PACKET || header->cmsg_type != PACKET_AUXDATA) {
            continue;
        }
        tpacket_auxdata data{};
        std::memcpy(&data, CMSG_DATA(header), sizeof data);
        beside.checksum_missing = (data.tp_status & TP_STATUS_CSUMNOTREADY) != 0;
        if ((data.tp_status & TP_STATUS_VLAN_VALID) != 0) {
            beside.tag = data.tp_vlan_tci;
            if ((data.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0) {
                beside.tag_type = data.tp_vlan_tpid;
            }
        }
    }
    return beside;
}

int open_socket(const std::string &interface)
{
    // Without a protocol nothing is received until the socket is bound.
    const int fd = socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd >= 0) {
        return fd;
    }
    if (errno == EPERM || errno == EACCES) {
        throw InterfaceError(fmt::format(
            "{}: not permitted: frames of a network interface need CAP_NET_RAW. Run rtif as root, "
            "in a user namespace ('unshare -Urn'), or give it the capability: "
            "'setcap cap_net_raw+ep' on the program",
            interface));
    }
    throw InterfaceError(fmt::format("{}: packet socket: {}", interface, std::strerror(errno)));
}

} // namespace

PortSocket::PortSocket(std::string interface)
    : interface_(std::move(interface)), fd_(open_socket(interface_))
{
    try {
        bind();
    } catch (...) {
        close(fd_);
        throw;
    }
}

PortSocket::~PortSocket()
{
    close(fd_);
}

void PortSocket::bind()
{
    index_ = static_cast<int>(if_nametoindex(interface_.c_str()));
    if (index_ == 0) {
        throw InterfaceError(fmt::format("{}: there is no such network interface", interface_));
    }
    ifreq request = request_for(interface_);
    if (ioctl(fd_, SIOCGIFHWADDR, &request) != 0 || request.ifr_hwaddr.sa_family != ARPHRD_ETHER) {
        throw InterfaceError(fmt::format("{}: not an Ethernet interface", interface_));
    }
    set_option(fd_, PACKET_AUXDATA, 1, interface_);
    set_option(fd_, PACKET_IGNORE_OUTGOING, 1, interface_);
    setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &RECEIVE_ROOM, sizeof RECEIVE_ROOM);

    packet_mreq membership{};
    membership.mr_ifindex = index_;
    membership.mr_type = PACKET_MR_PROMISC;
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = index_;
    if (setsockopt(fd_, SOL_PACKET, PACKET_ADD_MEMBERSHIP, &membership, sizeof membership) != 0 ||
        ::bind(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        throw InterfaceError(fmt::format("{}: {}", interface_, std::strerror(errno)));
    }
    // Binding to an interface that is down leaves an error to be read.
    int pending = 0;
    socklen_t size = sizeof pending;
    getsockopt(fd_, SOL_SOCKET, SO_ERROR, &pending, &size);
}

Read PortSocket::read()
{
    iovec part{buffer_.data() + pipeline::TAG_SIZE, pipeline::FRAME_MAX};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(tpacket_auxdata))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    frame_ = {};
    // With MSG_TRUNC the length is that of the frame and not of what there was room for.
    const ssize_t length = recvmsg(fd_, &message, MSG_TRUNC);
    if (length < 0) {
        return read_error(errno);
    }
    const auto size = static_cast<std::size_t>(length);
    if (is_merged(size)) {
        return Read::too_long;
    }
    const Beside beside = read_beside(message);
    auto frame = std::span(buffer_).subspan(pipeline::TAG_SIZE, size);
    if (beside.tag) {
        if (size + pipeline::TAG_SIZE > pipeline::FRAME_MAX) {
            return Read::too_long;
        }
        frame = put_tag_back(std::span(buffer_).first(pipeline::TAG_SIZE + size), beside.tag_type,
                             *beside.tag);
    }
    if (beside.checksum_missing) {
        complete_checksum(frame);
    }
    frame_ = frame;
    return Read::frame;
}

/** Whether a frame is longer than one on the wire, made of several by offload. */
bool PortSocket::is_merged(std::size_t size)
{
    constexpr std::size_t HEADERS = pipeline::ETHERNET_HEADER + pipeline::TAG_SIZE;
    if (size > mtu_ + HEADERS) {
        mtu_ = mtu();
    }
    return size > pipeline::FRAME_MAX || size > mtu_ + HEADERS;
}

Read PortSocket::read_error(int error) const
{
    switch (error) {
    case EAGAIN:
    case EINTR:
        return Read::nothing;
    case ENETDOWN:
    case ENXIO:
    case ENODEV:
        return mtu() == 0 ? Read::gone : Read::down;
    default:
        return Read::failed;
    }
}

Sent PortSocket::send(std::span<const std::uint8_t> frame)
{
    if (::send(fd_, frame.data(), frame.size(), MSG_DONTWAIT) >= 0) {
        return Sent::done;
    }
    switch (errno) {
    case ENOBUFS:
    case EAGAIN:
        return Sent::full;
    case ENETDOWN:
    case ENXIO:
    case ENODEV:
        return Sent::down;
    case EMSGSIZE:
        return Sent::too_long;
    default:
        return Sent::failed;
    }
}

bool PortSocket::is_up() const
{
    ifreq request = request_for(interface_);
    return ioctl(fd_, SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & IFF_UP) != 0;
}

std::size_t PortSocket::take_lost()
{
    tpacket_stats counted{};
    socklen_t size = sizeof counted;
    // The kernel begins anew after each time it is asked.
    if (getsockopt(fd_, SOL_PACKET, PACKET_STATISTICS, &counted, &size) != 0) {
        return 0;
    }
    return counted.tp_drops;
}

std::size_t PortSocket::mtu() const
{
    // Another interface of the same name isn't this one.
    if (static_cast<int>(if_nametoindex(interface_.c_str())) != index_) {
        return 0;
    }
    ifreq request = request_for(interface_);
    return ioctl(fd_, SIOCGIFMTU, &request) == 0 ? static_cast<std::size_t>(request.ifr_mtu) : 0;
}

} // namespace lab::wire
