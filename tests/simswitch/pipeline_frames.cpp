/*
 * pipeline_frames.cpp: frames for the tests of the packet pipeline.
 */
#include "pipeline_frames.h"

#include <algorithm>
#include <arpa/inet.h>
#include <span>

namespace simswitch::chip::pipeline
{

namespace
{

void put16(Bytes &bytes, int value)
{
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

Bytes headers(const Make &make, int type)
{
    Bytes bytes(make.to.begin(), make.to.end());
    bytes.insert(bytes.end(), make.from.begin(), make.from.end());
    for (const int vlan : make.tags) {
        put16(bytes, TYPE_TAG);
        put16(bytes, vlan);
    }
    put16(bytes, type);
    return bytes;
}

} // namespace

Address address(const std::string &text)
{
    Address out{};
    const bool ip6 = text.find(':') != std::string::npos;
    inet_pton(ip6 ? AF_INET6 : AF_INET, text.c_str(), out.data());
    return out;
}

Bytes ip_frame(const Make &make)
{
    const bool ip6 = make.source.find(':') != std::string::npos;
    Bytes frame = headers(make, ip6 ? TYPE_IP6 : TYPE_IP4);
    const std::size_t l3 = frame.size();
    const std::size_t header = ip6 ? 40 : 20;
    const std::size_t payload = std::max(make.size, l3 + header + 8) - l3 - header;
    frame.resize(l3 + header + payload);
    const Address from = address(make.source);
    const Address to = address(make.destination);
    const std::span packet = std::span(frame).subspan(l3);
    if (ip6) {
        packet[0] = 0x60;
        write16(packet, 4, static_cast<std::uint16_t>(payload));
        packet[6] = static_cast<std::uint8_t>(make.protocol);
        packet[7] = static_cast<std::uint8_t>(make.ttl);
        std::copy(from.begin(), from.end(), packet.begin() + 8);
        std::copy(to.begin(), to.end(), packet.begin() + 24);
    } else {
        packet[0] = 0x45;
        write16(packet, 2, static_cast<std::uint16_t>(header + payload));
        packet[8] = static_cast<std::uint8_t>(make.ttl);
        packet[9] = static_cast<std::uint8_t>(make.protocol);
        std::copy_n(from.begin(), 4, packet.begin() + 12);
        std::copy_n(to.begin(), 4, packet.begin() + 16);
        fix_checksum(frame, l3);
    }
    write16(packet, header, static_cast<std::uint16_t>(make.source_port));
    write16(packet, header + 2, static_cast<std::uint16_t>(make.destination_port));
    return frame;
}

Bytes plain_frame(std::uint16_t type, const Make &make)
{
    Bytes frame = headers(make, type);
    frame.resize(frame.size() + 46);
    return frame;
}

void fix_checksum(Bytes &frame, std::size_t l3)
{
    const std::span packet = std::span(frame).subspan(l3);
    write16(packet, 10, 0);
    write16(packet, 10, checksum(packet.first(std::size_t{4} * (packet[0] & 0xfU))));
}

} // namespace simswitch::chip::pipeline
