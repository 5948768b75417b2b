/*
 * port_requests.cpp: see port_requests.h.
 */
#include "l3lif/port_requests.h"

#include "rtifhal_trident.h"

#include "sdk/access.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace lab::l3lif
{

namespace
{

using simswitch::sdk::UNIT;

/** The records of the platform's VXLAN calls, longer than what they are known to hold. */
using Record = std::array<std::uint32_t, 16>;

constexpr std::size_t VPN_VN_ID = 1;
constexpr std::size_t VPN_ID = 2;
constexpr std::size_t VPN_MC_INDEX = 3;
constexpr std::size_t EGRESS_INTERFACE = 1;
constexpr std::size_t PORT_ID = 0;
constexpr std::size_t PORT_FLAGS = 1;
constexpr std::size_t PORT_MATCH_PORT = 6;
constexpr std::size_t PORT_CRITERIA = 7;
constexpr std::size_t PORT_MATCH_VLAN = 8;

} // namespace

Request add_drop_port(simswitch::Switch &hardware, const std::string &name, int port)
{
    return make_request(hardware, name, [port] { return rtifhal_install_ifp_drop(UNIT, port); });
}

Request remove_drop_port(simswitch::Switch &hardware, const std::string &name, int port)
{
    return make_request(hardware, name, [port] { return rtifhal_rm_ifp_drop(UNIT, port); });
}

Request add_vxlan_port(simswitch::Switch &hardware, const std::string &name, const VxlanPlan &plan,
                       int &id)
{
    Record vpn{};
    vpn[VPN_VN_ID] = plan.vni;
    vpn[VPN_ID] = plan.vpn;
    vpn[VPN_MC_INDEX] = plan.mc;
    Record egress{};
    egress[EGRESS_INTERFACE] = plan.egress;
    Record port{};
    port[PORT_FLAGS] = plan.flags;
    port[PORT_MATCH_PORT] = plan.port;
    port[PORT_CRITERIA] = plan.criteria;
    // The VLAN is the first half of its word, whatever the order of bytes.
    std::memcpy(&port[PORT_MATCH_VLAN], &plan.vlan, sizeof plan.vlan);
    Request request = make_request(hardware, name, [&] {
        return rtifhal_trident_vxlan_port_create(UNIT, plan.ifindex, vpn.data(), egress.data(),
                                                 port.data(), 0);
    });
    if (request.code == 0) {
        id = static_cast<int>(port[PORT_ID]);
    }
    return request;
}

Request remove_vxlan_port(simswitch::Switch &hardware, const std::string &name, std::uint32_t vpn,
                          std::uint32_t id)
{
    return make_request(hardware, name, [vpn, id] {
        return rtifhal_trident_vxlan_port_delete(UNIT, 0, 0, vpn, id, 0);
    });
}

Request set_member_port(simswitch::Switch &hardware, const std::string &name, std::uint32_t ifindex,
                        bool clear)
{
    return make_request(hardware, name, [ifindex, clear] {
        return rtifhal_init_member_port(ifindex, clear ? 1 : 0);
    });
}

} // namespace lab::l3lif
