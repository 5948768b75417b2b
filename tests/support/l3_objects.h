/*
 * l3_objects.h: what the tests of an interface's L3 objects share: interfaces of
 * the kinds that lif.h doesn't build, the tables of interface numbers, and the
 * texts of the calls that those objects take.
 */
#pragma once

#include "support/lif.h"

#include <cstdint>
#include <memory>
#include <string>

namespace rtifhal_test
{

/** A port-channel: IPv4 on, VRF 1, MTU 1500. */
std::unique_ptr<Lif> port_channel(std::uint16_t channel);
/** An SVI, its VLAN also where the ingress tie looks for it. */
std::unique_ptr<Lif> svi(std::uint16_t vlan);
/** A subinterface of a main interface, with 802.1Q VLAN 100. */
std::unique_ptr<Lif> subinterface(Lif &main, unsigned number);

/** Whether an interface number is not free. */
bool in_use(unsigned iif);
/** Whether an interface number is held back. */
bool held_back(unsigned iif);
/** Takes a number, as an interface that has it would have done. */
void take(unsigned iif);
/** Takes a number and holds it back. */
void hold_back(unsigned iif);
/** Whether the global configuration's image has a number held back. */
bool held_back_in_config(unsigned iif);

/** The texts of calls, as the journal prints them. */
namespace called
{

std::string unit();
std::string type(const Lif &lif, int type);
/** A refused look-up of the type. */
std::string no_type(const Lif &lif, int code = -1);
std::string port_of(const Lif &lif, int sdk_port);
std::string is_tunnel(const Lif &lif, int answer);
std::string is_sub(const Lif &lif, int answer);
std::string is_port_channel(const Lif &lif, int answer);
std::string intf_init();
std::string ingress_init();
std::string inband_init();
std::string flush();
std::string trident2(int answer);
std::string from_cache(int iif, bool found = true);
/** record: "{flags=0x6 …}". */
std::string write_ingress(const std::string &record, int iif, int code = 0);
std::string destroy_ingress(int iif, int code = 0);
std::string port_control(int port, int value, int code = 0);
std::string store(const Lif &lif, int code = 0);
std::string unstore(const Lif &lif, int code = 0);
std::string store_globals();

} // namespace called

} // namespace rtifhal_test
