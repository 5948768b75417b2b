/*
 * row_checks.cpp: see row_checks.h.
 */
#include "config/row_checks.h"

#include "config/names.h"

namespace lab::config
{

void need_object(const Row &row)
{
    if (!row.not_a_row.empty()) {
        refuse("an object of fields was expected, not {}", row.not_a_row);
    }
}

const std::string *scalar(const Row &row, std::string_view name)
{
    const Field *field = row.find(name);
    if (field == nullptr) {
        return nullptr;
    }
    if (!field->is_scalar) {
        refuse("{} is {}, a text or a number was expected", name, field->text);
    }
    return &field->text;
}

std::optional<std::uint32_t> number(const Row &row, std::string_view name, std::uint32_t low,
                                    std::uint32_t high)
{
    const std::string *text = scalar(row, name);
    if (text == nullptr) {
        return std::nullopt;
    }
    const auto value = parse_number(*text);
    if (!value || *value < low || *value > high) {
        refuse("{} {} is not in {}..{}", name, number_or_quotes(*text), low, high);
    }
    return value;
}

bool enabled(const Row &row, std::string_view name)
{
    const std::string *text = scalar(row, name);
    if (text == nullptr || *text == "disable") {
        return false;
    }
    if (*text != "enable") {
        refuse("{} is {}, \"enable\" or \"disable\" was expected", name, in_quotes(*text));
    }
    return true;
}

void need_port(const std::string &name, const Description &description)
{
    const auto port = description.ports.find(name);
    if (port == description.ports.end()) {
        refuse("its port {} isn't in PORT", name);
    }
    if (!port->second.refused.empty()) {
        refuse("its port {} isn't taken: {}", name, port->second.refused);
    }
}

std::uint16_t need_vlan(std::string_view digits)
{
    const auto vlan = parse_number(digits);
    if (!vlan || *vlan < VLAN_MIN || *vlan > VLAN_MAX) {
        refuse("VLAN {} is not in {}..{}", number_or_quotes(digits), VLAN_MIN, VLAN_MAX);
    }
    return static_cast<std::uint16_t>(*vlan);
}

IpAddress need_unicast(std::string_view field, std::string_view text)
{
    const auto address = parse_ip(text);
    if (!address) {
        refuse("{} {} is no address like 10.0.0.1 or fc00::1", field, in_quotes(text));
    }
    if (!address->is_unicast()) {
        refuse("{} {} is not the address of one interface", field, address->text());
    }
    return *address;
}

} // namespace lab::config
