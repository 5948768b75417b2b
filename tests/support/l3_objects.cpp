/*
 * l3_objects.cpp: see l3_objects.h.
 */
#include "support/l3_objects.h"

#include "fwmpd/platform.h"
#include "rtifhal_data.h"
#include "services/ifindex.h"

#include <fmt/format.h>

#include <cstddef>

namespace rtifhal_test
{

namespace
{

constexpr std::size_t CONFIG_OFFSET = 44;

std::size_t byte_of(unsigned iif)
{
    return iif / 8;
}

std::uint8_t mask_of(unsigned iif)
{
    return static_cast<std::uint8_t>(0x80U >> (iif % 8));
}

void set_bit(std::uint8_t &byte, unsigned iif)
{
    byte = static_cast<std::uint8_t>(byte | mask_of(iif));
}

} // namespace

std::unique_ptr<Lif> port_channel(std::uint16_t channel)
{
    return routed(simswitch::if_index::port_channel(channel));
}

std::unique_ptr<Lif> svi(std::uint16_t vlan)
{
    auto made = routed(simswitch::if_index::svi(vlan));
    made->lif.vlan = vlan;
    made->lif.si_encap_vlan = vlan;
    return made;
}

std::unique_ptr<Lif> subinterface(Lif &main, unsigned number)
{
    // The subinterface's number stands in the low bits of its main interface's ifindex.
    auto made = routed(main.lif.ifindex | number);
    made->lif.si_encap_vlan = 100;
    made->lif.main_l3lif = main.get();
    return made;
}

bool in_use(unsigned iif)
{
    return (l3lif_l3iif_table.bits[byte_of(iif)] & mask_of(iif)) != 0;
}

bool held_back(unsigned iif)
{
    return (l3lif_l3iif_table_preserve.bits[byte_of(iif)] & mask_of(iif)) != 0;
}

void take(unsigned iif)
{
    set_bit(l3lif_l3iif_table.bits[byte_of(iif)], iif);
}

void hold_back(unsigned iif)
{
    take(iif);
    set_bit(l3lif_l3iif_table_preserve.bits[byte_of(iif)], iif);
    set_bit(fwmpd_global_config[CONFIG_OFFSET + byte_of(iif)], iif);
}

bool held_back_in_config(unsigned iif)
{
    return (fwmpd_global_config[CONFIG_OFFSET + byte_of(iif)] & mask_of(iif)) != 0;
}

namespace called
{

std::string unit()
{
    return "rtifhal_get_bcm_unit(0) = 0";
}

std::string type(const Lif &lif, int type)
{
    return fmt::format("if_index_get_type({}) = 0 [type={}]", lif.index(), type);
}

std::string no_type(const Lif &lif, int code)
{
    return fmt::format("if_index_get_type({}) = {}", lif.index(), code);
}

std::string port_of(const Lif &lif, int sdk_port)
{
    return fmt::format("if_index_get_port({}) = 0 [port={}]", lif.index(), sdk_port - 1);
}

std::string is_tunnel(const Lif &lif, int answer)
{
    return fmt::format("if_index_is_tunnel_intf({}) = {}", lif.index(), answer);
}

std::string is_sub(const Lif &lif, int answer)
{
    return fmt::format("if_index_is_sub_intf({}) = {}", lif.index(), answer);
}

std::string is_port_channel(const Lif &lif, int answer)
{
    return fmt::format("if_index_is_eth_port_channel_intf({}) = {}", lif.index(), answer);
}

std::string intf_init()
{
    return "bcm_l3_intf_t_init()";
}

std::string ingress_init()
{
    return "bcm_l3_ingress_t_init()";
}

std::string inband_init()
{
    return "fwmpd_inband_init() = 0";
}

std::string flush()
{
    return "fwmpd_trident_batch_flush() = 0";
}

std::string trident2(int answer)
{
    return fmt::format("bcm_pd_is_device_trident2() = {}", answer);
}

std::string from_cache(int iif, bool found)
{
    return fmt::format("rtifhal_bcm_l3_ingress_get_from_cache({}) = {}", iif,
                       found ? "record" : "null");
}

std::string write_ingress(const std::string &record, int iif, int code)
{
    return fmt::format("rtifhal_bcm_l3_ingress_create(0, {}, {}) = {}", record, iif, code);
}

std::string destroy_ingress(int iif, int code)
{
    return fmt::format("rtifhal_bcm_l3_ingress_destroy(0, {}) = {}", iif, code);
}

std::string port_control(int port, int value, int code)
{
    return fmt::format("fwmpd_bcm_port_control_set(0, {}, 67, {}) = {}", port, value, code);
}

std::string store(const Lif &lif, int code)
{
    return fmt::format("rtifhal_pss_l3port_store(store, 1, {}) = {}", lif.text(), code);
}

std::string unstore(const Lif &lif, int code)
{
    return fmt::format("rtifhal_pss_l3port_delete(store, 1, {}) = {}", lif.index(), code);
}

std::string store_globals()
{
    return "fwmpd_pss_globalc_store(store, config, 1) = 0";
}

} // namespace called

} // namespace rtifhal_test
