/*
 * frame_repair.h: the checksums and lengths of a frame put in order, so that a fuzzer's frames come
 * further than the first check.
 */
#pragma once

#include <cstdint>
#include <vector>

namespace fuzz
{

/**
 * Gives an IPv4 or IPv6 packet its length, its header's checksum and that of an ICMP or ICMPv6
 * message in it. Any other frame stays as it is.
 */
void repair(std::vector<std::uint8_t> &frame);

} // namespace fuzz
