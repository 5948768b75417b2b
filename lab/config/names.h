/*
 * names.h: the names and numbers of a configuration, read strictly, and how a
 * text of a file is shown to people. Beside it: address.h reads addresses.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lab::config
{

/** The VLANs that a configuration may use. */
inline constexpr std::uint16_t VLAN_MIN = 1;
inline constexpr std::uint16_t VLAN_MAX = 4094;

/** The VLAN in which the chip routes all ports and subinterfaces; no file can have it. */
inline constexpr std::uint16_t VLAN_OF_ROUTED_PORTS = 4094;

/** A text in quotation marks; control characters and all that could stir a terminal as \x1b. Of
 * one that is longer than 160 bytes the beginning. */
std::string in_quotes(std::string_view text);

/** The same without the marks, whatever its length. */
std::string quotable(std::string_view text);

/** A text as it stands when it is digits only, else in quotation marks. */
std::string number_or_quotes(std::string_view text);

/** Reads digits and nothing else, up to 4294967295. */
std::optional<std::uint32_t> parse_number(std::string_view text);

/** Whether it is a port's name: Ethernet4, Ethernet-BP0. */
bool is_port_name(std::string_view name);

/** Whether it is a VRF's name: "Vrf" and 1 to 12 letters, digits, "_" or "-". */
bool is_vrf_name(std::string_view name);

/** Whether it is a port-channel's name: "PortChannel" and 1 to 4 digits. */
bool is_port_channel_name(std::string_view name);

/** The digits of "Vlan" and digits; nothing for another name. */
std::optional<std::string_view> vlan_name_digits(std::string_view name);

/** What the name of a subinterface says. */
struct SubinterfaceName {
    std::string parent;      ///< Ethernet12 or PortChannel0003, the long form of the name
    std::string_view digits; ///< what stands behind the dot
    bool long_form = false;  ///< Ethernet12.10: the digits are its VLAN too
};

/** Reads Ethernet12.10, PortChannel0003.10, Eth12.10 or Po0003.10; nothing for another name. */
std::optional<SubinterfaceName> parse_subinterface_name(std::string_view name);

} // namespace lab::config
