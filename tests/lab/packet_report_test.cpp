/*
 * packet_report_test.cpp: traces on narrow terminals, in colours, and as JSON;
 * whose request stands at the right.
 */
#include "packet_run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>
#include <string>

namespace lab_test
{

namespace
{

class PacketReport : public PacketTest
{
protected:
    nlohmann::json json() const
    {
        std::ostringstream out;
        lab::packet::print_json(told(), out);
        return nlohmann::json::parse(out.str());
    }
    /** The author of the line of a stage. */
    std::string author(simswitch::chip::pipeline::Stage stage) const
    {
        const auto &lines = told().lines;
        const auto found = std::find_if(lines.begin(), lines.end(),
                                        [stage](const auto &line) { return line.stage == stage; });
        return found == lines.end() ? "no such stage" : found->author;
    }
};

TEST_F(PacketReport, ANarrowTerminalGetsNoLongLines)
{
    run("packet --in PortChannel0001.20 --ip 10.8.20.9 10.2.0.19");
    for (const std::size_t width : {72U, 80U, 100U, 140U}) {
        std::istringstream lines(text(width));
        std::string line;
        std::getline(lines, line); // the frame stands in one line, whatever its length
        while (std::getline(lines, line)) {
            EXPECT_LE(line.size(), width) << line;
        }
    }
}

TEST_F(PacketReport, WhatIsLongHasItsAuthorAtTheEndOfItsLastLine)
{
    run("packet --in Ethernet0 --dmac 02:00:00:00:00:77 --ip 10.0.0.9 10.0.4.9");
    EXPECT_EQ(text(80),
              "Ethernet0 (port 1): untagged, 64 bytes, 02:00:00:00:00:fe to 02:00:00:00:00:77\n"
              "\n"
              "      STAGE          ID    WHAT                              PUT THERE BY\n"
              "-     frame                64 bytes, IPv4 10.0.0.9 to 10.0.4.9 TTL 64\n"
              "HIT   port           1     Ethernet0: untagged; the port discards nothing\n"
              "                                                                add Ethernet0 +1\n"
              "HIT   VLAN           4094  Ethernet0 (port 1) is a member    add Ethernet0 +7\n"
              "HIT   spanning tree  2     Ethernet0 (port 1) is forwarding  add Ethernet0 +9\n"
              "HIT   interface      3     Ethernet0, VRF default, by port control 67\n"
              "                                                                add Ethernet0 +1\n"
              "MISS  station              none for 02:00:00:00:00:77 in VLAN 4094 from\n"
              "                           Ethernet0 (port 1)\n"
              "\n"
              "DROPPED   not routable: its destination MAC is no station's\n"
              "nearest   station 1 (router MAC 02:00:00:00:0a:01, takes IPv4 IPv6 ARP), another\n"
              "          MAC\n"
              "likewise  every frame to 02:00:00:00:00:77 in VLAN 4094 on Ethernet0\n");
}

TEST_F(PacketReport, ColoursAreForTerminals)
{
    run("packet --in Ethernet0 --hex 0102");
    std::ostringstream out;
    lab::packet::print_text(told(), {0, true}, out);
    EXPECT_EQ(out.str(),
              "Ethernet0 (port 1): 2 bytes\n"
              "\n"
              "      STAGE  ID  WHAT                                     PUT THERE BY\n"
              "\x1b[31mMISS\x1b[0m  frame      2 bytes, other, Ethernet header cut off\n"
              "\n"
              "\x1b[31mDROPPED\x1b[0m   too short to be a frame\n"
              "likewise  every frame shorter than 14 bytes or cut off in its tags, on any port\n");
    EXPECT_EQ(text().find('\x1b'), std::string::npos);
}

TEST_F(PacketReport, JsonOfASentPacket)
{
    run("packet --in PortChannel0001.20 --ip 10.8.20.9 10.2.0.19");
    auto object = json();
    EXPECT_EQ(object["stages"].size(), told().lines.size());
    const auto egress = object["stages"][9];
    object.erase("stages");
    EXPECT_EQ(egress, nlohmann::json::parse(R"json({
        "mark": "hit", "stage": "egress", "table": "egress", "id": "100032",
        "text": "10.2.0.19 on Ethernet32, MAC 02:00:00:02:00:19", "nearest": null,
        "author": "neighbor 10.2.0.19 of Vlan200", "authors": ["neighbor 10.2.0.19 of Vlan200"]
    })json"));
    EXPECT_EQ(object, nlohmann::json::parse(R"json({
        "in": {"port": "Ethernet8", "chip_port": 3, "size": 64,
               "note": "the first member of PortChannel0001, for PortChannel0001.20",
               "frame": "tagged 20, 64 bytes, 02:00:00:00:00:fe to 02:00:00:00:0a:01 (router)",
               "interface": "PortChannel0001.20", "vrf": "default"
}
,
        "fate": "sent", "reason": "routed", "detail": null,
        "sent": [{"port": "Ethernet32", "chip_port": 9, "tag": 200}], "vlan": 200,
        "copied_to_cpu": false, "cpu_reason": null, "nearest": null,
        "changes": [
            {"field": "destination MAC", "before": "02:00:00:00:0a:01",
             "after": "02:00:00:02:00:19"},
            {"field": "source MAC", "before": "02:00:00:00:00:fe", "after": "02:00:00:00:0a:01"},
            {"field": "tag", "before": "VLAN 20 priority 0", "after": "VLAN 200 priority 0"},
            {"field": "TTL", "before": "64", "after": "63"},
            {"field": "checksum", "before": "0x5299", "after": "0x5399"}],
        "same_fate": ["every packet to 10.2.0.19 from Ethernet0, Ethernet4, Ethernet36, PortChannel0001 and 5 more (VRF default)"],
        "summary": "sent Ethernet32 tagged 200"
})json"));
}

TEST_F(PacketReport, JsonOfADroppedPacket)
{
    run("packet --in Ethernet28 --vlan 300 --ip 10.2.0.9 10.0.4.9");
    auto object = json();
    EXPECT_EQ(object["stages"].back(), nlohmann::json::parse(R"json({
        "mark": "miss", "stage": "VLAN", "table": "vlan", "id": "300", "text": "does not exist",
        "nearest": "Ethernet28 (port 8) is in VLANs 1, 200", "author": null, "authors": []
    })json"));
    object.erase("stages");
    EXPECT_EQ(object, nlohmann::json::parse(R"json({
        "in": {"port": "Ethernet28", "chip_port": 8, "size": 64, "note": null,
               "frame": "tagged 300, 64 bytes, 02:00:00:00:00:fe to 02:00:00:00:0a:01 (router)",
               "interface": null, "vrf": null
}
, "fate" : "dropped",
           "reason" : "its VLAN doesn't exist",
                      "detail" : null,
                                 "sent" : [],
                                          "vlan" : null,
                                                   "copied_to_cpu" : false,
                                                                     "cpu_reason" : null,
                                                                                    "nearest"
    : "Ethernet28 (port 8) is in VLANs 1, 200",
      "changes" : [],
                  "same_fate" : ["every frame of VLAN 300, on any port"],
                                "summary" : "dropped: its VLAN doesn't exist"
})json"));
}

TEST_F(PacketReport, WhoTookSomethingAwayIsNamedAtTheMiss)
{
    using simswitch::chip::pipeline::Stage;
    run_all({"set Ethernet0 ipv6 off"});
    run("packet --in Ethernet0 --ip 2001:db8::9 2001:db8:4::9");
    EXPECT_EQ(author(Stage::family), "set Ethernet0 ipv6 off");
    EXPECT_EQ(author(Stage::port), "add Ethernet0");
    run_all({"disable Ethernet36"});
    run("packet --in Ethernet36 --ip 10.0.36.9 10.0.4.9");
    EXPECT_EQ(author(Stage::family), "disable Ethernet36");
    run_all({"del Ethernet36"});
    run("packet --in Ethernet36 --ip 10.0.36.9 10.0.4.9");
    EXPECT_EQ(author(Stage::vlan), "delete Ethernet36");
}

TEST_F(PacketReport, OfASharedVlanTheFramesOwnInterfaceIsNamed)
{
    using simswitch::chip::pipeline::Stage;
    run("packet --in Ethernet36 --ip 10.0.36.9 10.0.4.9");
    EXPECT_EQ(author(Stage::vlan), "add Ethernet36");
    EXPECT_EQ(author(Stage::leave), "add Ethernet4");
    EXPECT_EQ(author(Stage::route), "neighbor 10.0.4.9 of Ethernet4");
    EXPECT_EQ(author(Stage::frame), "");
}

} // namespace

} // namespace lab_test
