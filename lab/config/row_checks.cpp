/*
 * row_checks.cpp: see row_checks.h.
 */
#include "config/row_checks.h"

#include "config/names.h"

#include <algorithm>

namespace lab::config
{

namespace
{

/** The items of a text "Ethernet0,Ethernet4"; none of an empty one. */
std::vector<std::string> split(const std::string &text)
{
    std::vector<std::string> items;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        items.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
    return items;
}

} // namespace

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

bool is_true(const Row &row, std::string_view name)
{
    const std::string *text = scalar(row, name);
    if (text == nullptr || *text == "false") {
        return false;
    }
    if (*text != "true") {
        refuse("{} is {}, \"true\" or \"false\" was expected", name, in_quotes(*text));
    }
    return true;
}

std::vector<std::string> listed(const Row &row, std::string_view name)
{
    // A dump of the database marks a list by the name of its field.
    for (const auto &field_name : {std::string(name), fmt::format("{}@", name)}) {
        if (const Field *field = row.find(field_name); field != nullptr) {
            return field->is_list ? field->items : split(field->text);
        }
    }
    return {};
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

std::uint16_t need_free_vlan(std::string_view digits)
{
    const std::uint16_t vlan = need_vlan(digits);
    if (vlan == VLAN_OF_ROUTED_PORTS) {
        refuse("VLAN {} is the switch's own", VLAN_OF_ROUTED_PORTS);
    }
    return vlan;
}

std::uint16_t need_vlan_name(std::string_view name)
{
    const auto digits = vlan_name_digits(name);
    if (!digits) {
        refuse("{} is no VLAN name like Vlan100", in_quotes(name));
    }
    const std::uint16_t vlan = need_free_vlan(*digits);
    if (digits->front() == '0') {
        refuse("{} is written Vlan{}", name, vlan);
    }
    return vlan;
}

const Vlan &need_known_vlan(std::string_view name, const Description &description)
{
    need_vlan_name(name);
    const auto vlan = description.vlans.find(name);
    if (vlan == description.vlans.end()) {
        refuse("its VLAN {} isn't in VLAN", name);
    }
    // cppcheck-suppress derefInvalidIteratorRedundantCheck  // refuse() doesn't return
    const Vlan &known = vlan->second;
    if (!known.refused.empty()) {
        refuse("its VLAN {} isn't taken: {}", name, known.refused);
    }
    return known;
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
