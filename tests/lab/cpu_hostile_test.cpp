/*
 * cpu_hostile_test.cpp: frames that nobody would send in good faith. The CPU may
 * drop them, and must not read beyond them, fail or answer without end.
 */
#include "cpu_switch.h"

#include "chip/pipeline/frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace lab_test
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

using CpuHostile = CpuTest;

/** One of each kind of frame that the CPU takes. */
std::vector<std::pair<int, Bytes>> good_frames()
{
    return {
        {PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1")},
        {PORT_B, arp_frame(false, "10.0.3.9", HOST, "10.0.3.1", {.tags = {10}})},
        {SECONDARY, arp_frame(true, "10.1.0.9", HOST, "10.1.0.254")},
        {PORT_A, ns_frame("2001:db8::9", "2001:db8::1")},
        {VLAN_TAGGED, na_frame("2001:db8:100::9", "2001:db8:100::1", HOST, {100})},
        {PORT_A, echo_frame({})},
        {PORT_A, echo_frame({.from = "2001:db8::9", .to = "2001:db8::1"})},
        {PORT_A, ip_frame({.to = "10.0.1.9", .ttl = 1})},
        {PORT_A, ip_frame({.from = "2001:db8::9", .to = "2001:db8:1::9", .ttl = 1})},
        {CHANNEL_1, ip_frame({.from = "10.0.2.9", .to = "10.1.0.77"})},
    };
}

/** Puts lengths and checksums of the IP headers right, so that damage behind them counts. */
void mend(Bytes &frame)
{
    pipeline::Frame read;
    if (!pipeline::parse(frame, read) || frame.size() < read.l3 + 40) {
        return;
    }
    const auto packet = std::span(frame).subspan(read.l3);
    if (read.type == pipeline::TYPE_IP4) {
        pipeline::write16(packet, 2, static_cast<std::uint16_t>(packet.size()));
        pipeline::write16(packet, 10, 0);
        pipeline::write16(packet, 10, pipeline::checksum(packet.first(20)));
    } else if (read.type == pipeline::TYPE_IP6) {
        pipeline::write16(packet, 4, static_cast<std::uint16_t>(packet.size() - 40));
    }
}

TEST_F(CpuHostile, FramesCutOffAtEachLengthAreSurvived)
{
    for (const auto &[port, frame] : good_frames()) {
        for (std::size_t size = 0; size < frame.size(); ++size) {
            // Of just this size, so that a read beyond it is found.
            Bytes cut(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(size));
            cut.shrink_to_fit();
            give(port, cut);
            mend(cut);
            give(port, cut);
        }
    }
    EXPECT_NE(forwarder.counters().of(lab::cpu::Ignored::malformed), 0U);
}

TEST_F(CpuHostile, AnArpRequestThatIsCutOffGetsNoReply)
{
    const Bytes whole = arp_frame(true, "10.0.0.9", HOST, "10.0.0.1");
    for (std::size_t size = 0; size < 42; ++size) {
        EXPECT_EQ(give(PORT_A, Bytes(whole.begin(), whole.begin() + static_cast<long>(size))),
                  Lines{})
            << size;
    }
    EXPECT_EQ(give(PORT_A, Bytes(whole.begin(), whole.begin() + 42)).size(), 1U);
    EXPECT_EQ(forwarder.counters().of(lab::cpu::Ignored::malformed), 28U);
}

TEST_F(CpuHostile, ArpOfOtherKindsOfAddressIsIgnored)
{
    for (const std::size_t at : {15U, 17U, 18U, 19U, 21U}) {
        Bytes frame = arp_frame(true, "10.0.0.9", HOST, "10.0.0.1");
        frame[at] = 9;
        EXPECT_EQ(give(PORT_A, frame), Lines{}) << at;
    }
    EXPECT_EQ(counted(), Lines{"5 ignored: malformed"});
}

TEST_F(CpuHostile, OptionsOfDiscoveryThatDontAddUpAreIgnored)
{
    const From link = {.to = "33:33:ff:00:00:01"};
    Bytes message = {135, 0, 0, 0, 0, 0, 0, 0, 0x20, 0x01, 0x0d, 0xb8,
                     0,   0, 0, 0, 0, 0, 0, 0, 0,    0,    0,    1};
    // No length; longer than the message; a MAC that is cut off.
    for (const Bytes &option : {Bytes{1, 0, 0, 0, 0, 0, 0, 0}, Bytes{1, 9, 2, 2, 2, 2, 2, 2},
                                Bytes{1, 1, 2, 2}, Bytes{1}}) {
        Bytes bad = message;
        bad.insert(bad.end(), option.begin(), option.end());
        EXPECT_EQ(give(PORT_A, icmp6_frame("2001:db8::9", "ff02::1:ff00:1", bad, link)), Lines{});
    }
    EXPECT_EQ(neighbors(), Lines{});
    EXPECT_EQ(counted(), Lines{"4 ignored: malformed"});
}

TEST_F(CpuHostile, DamagedFramesAreSurvived)
{
    const auto good = good_frames();
    Numbers number(20);
    for (int i = 0; i < 2000; ++i) {
        auto [port, frame] = good[number() % good.size()];
        for (unsigned n = number() % 4 + 1; n > 0; --n) {
            frame[12 + number() % (frame.size() - 12)] = static_cast<std::uint8_t>(number());
        }
        if (number() % 2 == 0) {
            mend(frame);
        }
        sent.clear();
        forwarder.take(port, frame, now);
        // At most a flood to all other ports, and an answer.
        ASSERT_LE(sent.size(), 104U);
        if (i % 100 == 0) {
            pass(1000);
        }
    }
    EXPECT_LE(routing.neighbors().size(), 1024U);
}

TEST_F(CpuHostile, RandomBytesAreSurvived)
{
    Numbers number(7);
    const std::array<std::uint16_t, 4> types = {pipeline::TYPE_ARP, pipeline::TYPE_IP4,
                                                pipeline::TYPE_IP6, pipeline::TYPE_TAG};
    for (int i = 0; i < 2000; ++i) {
        Bytes frame(14 + number() % 120);
        std::generate(frame.begin(), frame.end(),
                      [&] { return static_cast<std::uint8_t>(number()); });
        if (number() % 2 == 0) {
            std::fill_n(frame.begin(), 6, std::uint8_t{0xff});
        } else {
            std::copy_n(good_frames()[5].second.begin(), 6, frame.begin());
        }
        pipeline::write16(frame, 12, types[number() % types.size()]);
        if (frame.size() > 54 && number() % 4 != 0) {
            frame[14] = frame[12] == 0x86 ? 0x60 : 0x45;
            mend(frame);
        }
        forwarder.take(static_cast<int>(1 + number() % 8), frame, now);
    }
    EXPECT_NE(forwarder.counters().ignored(), 0U);
}

TEST_F(CpuHostile, ANeighbourThatTheChipHasNoRoomForDoesntMakePacketsGoRound)
{
    give(PORT_A, ip_frame({.to = "10.0.1.9"}));
    while (hardware.chip.egresses.size() < hardware.chip.limits().egresses) {
        int id = 0;
        ASSERT_TRUE(hardware.chip.egresses.create({}, id).ok());
    }
    EXPECT_EQ(give(PORT_B, arp_frame(false, "10.0.1.9", HOST, "10.0.1.1")), Lines{});
    EXPECT_EQ(forwarder.counters().of(lab::cpu::Ignored::still_unknown), 1U);
    EXPECT_EQ(forwarder.next_due(), std::nullopt);
}

TEST_F(CpuHostile, SoManyNeighboursAreLearned)
{
    auto many = config;
    for (unsigned i = 0; i < 1024; ++i) {
        const auto address = lab::config::parse_ip(fmt::format("2001:db8::1:{:x}", i)).value();
        many.neighbors.push_back({"Ethernet0", address, {2, 0, 0, 0, 1, 1}});
    }
    routing.configure(many);
    routing.sync();
    EXPECT_EQ(give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1")).size(), 1U);
    EXPECT_EQ(routing.neighbors().size(), 1024U);
    EXPECT_EQ(counted(),
              (Lines{"1 ARP requests answered", "1 ignored: no room for more neighbours"}));
}

} // namespace

} // namespace lab_test
