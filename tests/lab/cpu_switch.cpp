/*
 * cpu_switch.cpp: the switch of the tests of the CPU.
 */
#include "cpu_switch.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/families.h"
#include "support/library_test.h"

#include "rtifhal_property.h"

#include <fmt/format.h>

namespace lab_test
{

namespace
{

constexpr std::string_view CONFIG = R"({
    "DEVICE_METADATA": {"localhost": {"hostname": "cpu-1", "mac": "02:00:00:00:0a:01"}},
    "PORT": {
        "Ethernet0": {"mtu": "9100"}, "Ethernet4": {"mtu": "1400"}, "Ethernet8": {"mtu": "9100"},
        "Ethernet12": {"mtu": "9100"}, "Ethernet16": {"mtu": "9100"}, "Ethernet20": {"mtu": "9100"},
        "Ethernet24": {"mtu": "9100"}, "Ethernet28": {"mtu": "9100"}
    },
    "VRF": {"Vrf_red": {}},
    "PORTCHANNEL": {"PortChannel1": {"mtu": "9100"}},
    "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet8": {}, "PortChannel1|Ethernet12": {}},
    "VLAN": {"Vlan100": {"vlanid": "100"}, "Vlan101": {"vlanid": "101"}},
    "VLAN_MEMBER": {
        "Vlan100|Ethernet16": {"tagging_mode": "untagged"},
        "Vlan100|Ethernet20": {"tagging_mode": "tagged"},
        "Vlan101|Ethernet24": {"tagging_mode": "untagged"}
    },
    "PVLAN": {"Vlan100|Vlan101": {}},
    "INTERFACE": {
        "Ethernet0": {}, "Ethernet0|10.0.0.1/24": {}, "Ethernet0|2001:db8::1/64": {},
        "Ethernet4": {}, "Ethernet4|10.0.1.1/24": {}, "Ethernet4|2001:db8:1::1/64": {},
        "Ethernet28": {"vrf_name": "Vrf_red"}, "Ethernet28|10.0.0.1/24": {}
    },
    "PORTCHANNEL_INTERFACE": {"PortChannel1": {}, "PortChannel1|10.0.2.1/24": {}},
    "VLAN_INTERFACE": {"Vlan100": {}, "Vlan100|10.1.0.1/24": {}, "Vlan100|2001:db8:100::1/64": {}},
    "VLAN_SUB_INTERFACE": {
        "Ethernet4.10": {"vlan": "10"}, "Ethernet4.10|10.0.3.1/24": {},
        "PortChannel1.20": {"vlan": "20"}, "PortChannel1.20|10.0.4.1/24": {}
    },
    "VRRP": {"Vlan100|8": {"vip": ["10.1.0.254"]}},
    "STATIC_ROUTE": {"10.9.0.0/16": {"nexthop": "10.0.1.9"}}
})";

} // namespace

CpuTest::CpuTest(const simswitch::Options &options)
    : hardware((rtifhal_test::reset_library(), options)),
      config(lab::config::read_config_text(CONFIG, "cpu.json"))
{
    EXPECT_EQ(config.skipped, std::vector<lab::config::SkippedRow>{});
    lab::l3lif::bring_all_up(config, layer);
    for (const auto &opened : lab::l3lif::open_families(config, layer, hardware)) {
        EXPECT_TRUE(opened.request.ok()) << opened.asked;
    }
    lab::l3lif::make_request(hardware, "ipv6 on",
                             [] { return rtifhal_set_kelvo_l3_ipv6_config(1); });
    routing.configure(config);
    routing.sync();
    EXPECT_EQ(routing.problems(), Lines{});
}

Lines CpuTest::take_sent()
{
    Lines lines;
    for (const auto &[port, frame] : sent) {
        lines.push_back(fmt::format("{}: {}", port, tell(frame)));
    }
    return lines;
}

Lines CpuTest::give(int port, const Bytes &frame)
{
    sent.clear();
    forwarder.take(port, frame, now);
    return take_sent();
}

Lines CpuTest::pass(int milliseconds)
{
    sent.clear();
    now += std::chrono::milliseconds(milliseconds);
    forwarder.tick(now);
    return take_sent();
}

void CpuTest::know(std::string_view interface, std::string_view address, std::string_view mac,
                   std::string_view port)
{
    std::string reason;
    routing.set_neighbor({std::string(interface), lab::config::parse_ip(address).value(),
                          lab::config::parse_mac(mac, reason).value(), std::string(port), 0});
}

Lines CpuTest::neighbors() const
{
    Lines lines;
    for (const auto &neighbor : routing.neighbors()) {
        lines.push_back(
            fmt::format("{} {} {}{}{}", neighbor.interface, neighbor.address.text(),
                        lab::config::mac_text(neighbor.mac),
                        neighbor.port.empty() ? "" : " behind " + neighbor.port,
                        neighbor.vlan == 0 ? "" : fmt::format(" in {}", neighbor.vlan)));
    }
    return lines;
}

Lines CpuTest::counted() const
{
    Lines lines;
    for (const auto &[text, count] : forwarder.counters().all()) {
        lines.push_back(fmt::format("{} {}", count, text));
    }
    return lines;
}

} // namespace lab_test
