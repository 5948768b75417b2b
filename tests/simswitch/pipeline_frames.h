/*
 * pipeline_frames.h: frames for the tests of the packet pipeline, put together
 * from what a test cares for.
 */
#pragma once

#include "support/numbers.h"

#include "chip/pipeline/frame.h"

#include <string>
#include <vector>

namespace simswitch::chip::pipeline
{

using Bytes = std::vector<std::uint8_t>;

inline constexpr Mac ROUTER_MAC = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
inline constexpr Mac HOST_MAC = {0x00, 0xaa, 0xbb, 0xcc, 0xdd, 0x01};
inline constexpr Mac OTHER_MAC = {0x00, 0xaa, 0xbb, 0xcc, 0xdd, 0x02};
inline constexpr Mac BROADCAST = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};

using rtifhal_test::Numbers;

/** "10.0.0.1" or "2001:db8::1" as an address. */
Address address(const std::string &text);

/** What a test's frame is made of. */
struct Make {
    Mac to = ROUTER_MAC;
    Mac from = HOST_MAC;
    std::vector<int> tags = {};           ///< VLANs of the tags, the outer one first
    std::string source = "10.0.0.2";      ///< IP source; a colon makes the packet IPv6
    std::string destination = "10.9.0.1"; ///< IP destination
    int ttl = 64;
    int protocol = PROTOCOL_UDP;
    int source_port = 1000;
    int destination_port = 2000;
    std::size_t size = 0; ///< bytes of the frame, 0 for what the headers need
};

/** An Ethernet frame with an IP packet. */
Bytes ip_frame(const Make &make = {});
/** An Ethernet frame of another type with 46 bytes of payload. */
Bytes plain_frame(std::uint16_t type, const Make &make = {});
/** Puts the IPv4 header's checksum right after an edit; `l3` is where the header begins. */
void fix_checksum(Bytes &frame, std::size_t l3 = ETHERNET_HEADER);

} // namespace simswitch::chip::pipeline
