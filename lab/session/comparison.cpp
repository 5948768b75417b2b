/*
 * comparison.cpp: see comparison.h.
 */
#include "session/comparison.h"

#include "config/names.h"
#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace lab::session
{

namespace
{

namespace chip = simswitch::chip;

/** A number, decimal with or without a sign, or 0x hex. */
std::optional<std::int64_t> number_of(std::string_view text)
{
    const bool hex = text.starts_with("0x");
    const std::string_view digits = hex ? text.substr(2) : text;
    std::int64_t number = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, hex ? 16 : 10);
    const bool whole = error == std::errc{} && end == digits.data() + digits.size();
    return whole ? std::optional<std::int64_t>(number) : std::nullopt;
}

bool same(const std::string &value, const std::string &expected)
{
    if (value == expected || (value.empty() && expected == "-")) {
        return true;
    }
    const auto left = number_of(value);
    return left && left == number_of(expected);
}

int control_number(const Words &field, int last)
{
    const auto number = field.size() == 2 ? config::parse_number(field[1]) : std::nullopt;
    if (!number || *number > static_cast<std::uint32_t>(last)) {
        throw UsageError(fmt::format("{} needs a number from 0 to {}", field.front(), last));
    }
    return static_cast<int>(*number);
}

/** A number, a MAC, a prefix, or what may be meant as one. */
bool could_be_number(std::string_view key)
{
    return !key.empty() && key.find_first_not_of("0123456789abcdefABCDEFx:./") == key.npos;
}

} // namespace

void check_key(const Table &table, const std::string &key)
{
    const auto &known = table.known_keys;
    if (could_be_number(key) || std::find(known.begin(), known.end(), key) != known.end()) {
        return;
    }
    throw UsageError(unknown(table.subject, key, known));
}

std::size_t find_sign(const Words &words)
{
    const auto found = std::find_if(words.begin(), words.end(), [](const std::string &word) {
        return word == "=" || word == "!=";
    });
    return static_cast<std::size_t>(found - words.begin());
}

Comparison take_comparison(const Words &words)
{
    if (words.empty() || (words[0] != "=" && words[0] != "!=")) {
        throw UsageError("'=' or '!=' with blanks around it is missing");
    }
    if (words.size() != 2) {
        throw UsageError(words.size() < 2 ? fmt::format("a value is missing behind '{}'", words[0])
                                          : fmt::format("one value stands behind '{}': put one "
                                                        "with blanks in quotes",
                                                        words[0]));
    }
    return {words[0] == "=", words[1]};
}

bool holds(const Comparison &comparison, const std::vector<std::string> &values)
{
    const bool found =
        std::any_of(values.begin(), values.end(), [&comparison](const std::string &value) {
            return same(value, comparison.value);
        });
    return found == comparison.equal;
}

std::optional<std::vector<std::string>> numbered_control(const Table &table, const Words &field,
                                                         const std::vector<const Row *> &rows,
                                                         const Scene &scene)
{
    if (field.empty()) {
        return std::nullopt;
    }
    const chip::Chip &chip = scene.hardware.chip;
    if (table.subject == "switch" && field.front() == "control") {
        const int control = control_number(field, chip::LAST_SWITCH_CONTROL);
        return std::vector<std::string>{fmt::to_string(chip.switch_controls.get(control))};
    }
    const bool vlan_control = field.front() == "vlan-control";
    if (table.subject != "port" || (field.front() != "control" && !vlan_control)) {
        return std::nullopt;
    }
    const int control = control_number(field, chip::LAST_VLAN_PORT_CONTROL);
    std::vector<std::string> values;
    for (const Row *row : rows) {
        const int port = static_cast<int>(*number_of(row->cells.front()));
        values.push_back(fmt::to_string(vlan_control ? chip.ports.vlan_control(port, control)
                                                     : chip.ports.control(port, control)));
    }
    return values;
}

} // namespace lab::session
