/*
 * flow_hash.cpp: the number of a frame's flow.
 */
#include "chip/pipeline/flow_hash.h"

namespace simswitch::chip::pipeline
{

namespace
{

/** A hash over 32-bit words. */
class WordHash
{
public:
    void add(std::uint32_t word)
    {
        value_ = (value_ ^ word) * 0x85ebca6bU;
        value_ ^= value_ >> 13;
    }
    void add(const Address &address, std::size_t size)
    {
        for (std::size_t i = 0; i < size; i += 4) {
            add(std::uint32_t{read16(address, i)} << 16 | read16(address, i + 2));
        }
    }
    void add(const Mac &mac)
    {
        add(std::uint32_t{read16(mac, 0)} << 16 | read16(mac, 2));
        add(read16(mac, 4));
    }
    std::uint32_t value() const { return value_ ^ value_ >> 16; }

private:
    std::uint32_t value_ = 0x9e3779b9U;
};

} // namespace

std::uint32_t flow_hash(const Frame &frame)
{
    WordHash hash;
    if (!frame.is_ip() || frame.fault != nullptr) {
        hash.add(frame.destination);
        hash.add(frame.source);
        hash.add(frame.type);
        return hash.value();
    }
    const std::size_t size = frame.is_ip6() ? 16 : 4;
    hash.add(frame.from, size);
    hash.add(frame.to, size);
    hash.add(frame.protocol);
    const bool has_ports = frame.protocol == PROTOCOL_TCP || frame.protocol == PROTOCOL_UDP;
    if (has_ports && frame.l4 != 0) {
        hash.add(std::uint32_t{read16(frame.bytes, frame.l4)} << 16 |
                 read16(frame.bytes, frame.l4 + 2));
    }
    return hash.value();
}

} // namespace simswitch::chip::pipeline
