/*
 * pipeline_random_test.cpp: damaged frames over tables that change under them.
 * Whatever comes, the trace and the traffic agree, nothing leaves where it may
 * not, and what leaves as routed is a good packet.
 */
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

namespace
{

struct PipelineRandom : PipelineTest {
    PipelineRandom()
    {
        router_mac();
        routed_port(5, 7, {.vrf = 1, .urpf_mode = 1});
        routed_port(6, 8);
        subinterface(module_port(0, 5), {5}, 100, 9);
        svi(200, 12, {0, 10, 11, 12});
        trunk(3, {11, 12});
        route("10.9.0.0/16", next_hop(8, 6));
        int group = 0;
        chip.multipath_groups.create({{next_hop(12, trunk_gport(3)), next_hop(9, 5)}}, group);
        route("10.0.0.0/8", group);
        route("2001:db8::/32", group);
    }
    unsigned below(unsigned end) { return static_cast<unsigned>(random() % end); }

    Bytes any_frame()
    {
        Make make;
        make.tags = std::vector<int>(std::array<unsigned, 6>{0, 0, 1, 1, 1, 2}.at(below(6)), 0);
        for (int &vlan : make.tags) {
            vlan = std::array<int, 6>{0, 100, 100, 200, 200, 7}.at(below(6));
        }
        make.to =
            std::array<Mac, 6>{ROUTER_MAC, ROUTER_MAC, ROUTER_MAC, HOST_MAC, OTHER_MAC, BROADCAST}
                .at(below(6));
        make.from = below(2) == 0 ? HOST_MAC : OTHER_MAC;
        make.ttl = static_cast<int>(below(6));
        make.destination = fmt::format("10.{}.0.1", below(12));
        if (below(3) == 0) {
            make.source = "2001:db8::2";
            make.destination = fmt::format("2001:db{}::1", below(10));
        }
        Bytes frame = below(5) == 0 ? plain_frame(below(2) == 0 ? TYPE_ARP : TYPE_MPLS, make)
                                    : ip_frame(make);
        if (below(3) == 0) {
            frame.at(below(static_cast<unsigned>(frame.size()))) =
                static_cast<std::uint8_t>(below(256));
        }
        if (below(10) == 0) {
            frame.resize(below(static_cast<unsigned>(frame.size())));
        }
        return frame;
    }
    void any_write()
    {
        const int port = static_cast<int>(below(14));
        const int vlan = std::array<int, 4>{1, 100, 200, 4094}.at(below(4));
        switch (below(9)) {
        case 0:
            chip.ports.set_control(port, PORT_CONTROL_INGRESS,
                                   port > 6 ? 0 : static_cast<int>(7 + below(3)));
            break;
        case 1:
            chip.ports.set_vlan_control(port, below(2) == 0 ? 2 : 4, static_cast<int>(below(2)));
            break;
        case 2:
            chip.vlans.remove_ports(vlan, {below(3) == 0 ? port : 13});
            break;
        case 3:
            chip.vlans.add_ports(vlan, {0, port}, below(2) == 0 ? PortSet{port} : PortSet{});
            break;
        case 4:
            chip.stgs.set_state(DEFAULT_STG, port, below(9) == 0 ? 1 : STP_FORWARDING);
            break;
        case 5:
            chip.egresses.set(FIRST_EGRESS + static_cast<int>(below(4)),
                              {.interface = static_cast<int>(7 + below(8)),
                               .mac = OTHER_MAC,
                               .port = below(4) == 0 ? trunk_gport(3) : port});
            break;
        case 6:
            chip.l3_ingresses.set(
                static_cast<int>(7 + below(6)),
                {.vrf = below(4) == 0 ? 2 : 1, .urpf_mode = static_cast<int>(below(3))});
            break;
        case 7:
            chip.l3_interfaces.remove(static_cast<int>(7 + below(6)));
            break;
        default:
            for (int iif = 7; iif <= 12; ++iif) {
                chip.l3_interfaces.set(iif, {.mac = ROUTER_MAC,
                                             .vlan = static_cast<std::uint16_t>(vlan),
                                             .mtu = below(2) == 0 ? 0 : 48});
            }
        }
    }
    void check(int in_port)
    {
        PortSet out = result.tagged;
        out |= result.untagged;
        EXPECT_EQ(out.empty(), result.verdict != Verdict::sent);
        EXPECT_EQ(result.verdict == Verdict::to_cpu, out.empty() && result.cpu);
        EXPECT_FALSE(out.has(CPU_PORT));
        EXPECT_TRUE(result.reason == Reason::routed || !out.has(in_port));
        for (int port = 0; port <= LAST_PORT; ++port) {
            if (result.left_on(port)) {
                const Vlan *vlan = chip.vlans.find(result.vlan);
                ASSERT_NE(vlan, nullptr);
                EXPECT_TRUE(vlan->members.has(port));
                EXPECT_EQ(result.untagged.has(port), vlan->untagged.has(port));
                const Bytes bytes = got(port);
                Frame frame;
                EXPECT_TRUE(parse(bytes, frame));
                if (result.reason == Reason::routed) {
                    EXPECT_EQ(frame.fault, nullptr);
                    EXPECT_EQ(frame.source, ROUTER_MAC);
                    EXPECT_GE(frame.ttl, 1);
                }
            }
        }
    }
    Numbers random{42};
};

} // namespace

TEST_F(PipelineRandom, DamagedFramesOverChangingTables)
{
    std::map<Verdict, int> verdicts;
    int routed = 0;
    for (int i = 0; i < 6000 && !HasFailure(); ++i) {
        if (i % 20 == 0) {
            any_write();
        }
        const int port = std::array<int, 4>{5, 6, 10, 11}.at(below(4));
        send(port, any_frame());
        check(port);
        ++verdicts[result.verdict];
        routed += result.reason == Reason::routed ? 1 : 0;
    }
    // All ends are met, or the frames would test little.
    EXPECT_GT(verdicts[Verdict::sent], 200);
    EXPECT_GT(verdicts[Verdict::to_cpu], 100);
    EXPECT_GT(verdicts[Verdict::dropped], 200);
    EXPECT_GT(routed, 20);
}

} // namespace simswitch::chip::pipeline
