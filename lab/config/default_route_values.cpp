/*
 * default_route_values.cpp: see default_route_values.h.
 */
#include "config/default_route_values.h"

#include "config/names.h"
#include "config/row_checks.h"
#include "session/nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace lab::config
{

namespace
{

constexpr std::int64_t WORD_MAX = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t INT_LOW = std::numeric_limits<int>::min();
constexpr std::int64_t INT_HIGH = std::numeric_limits<int>::max();

std::optional<std::uint32_t> parse_hex(std::string_view text)
{
    std::uint32_t word = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, word, 16);
    return error == std::errc() && stop == end ? std::optional(word) : std::nullopt;
}

bool is_hex(std::string_view text)
{
    return text.starts_with("0x") || text.starts_with("0X");
}

} // namespace

void check_object(const JsonNode &node, const std::vector<std::string> &keys)
{
    if (node.kind != JsonNode::Kind::object) {
        refuse("an object was expected, not {}", node.kind_name());
    }
    for (const JsonMember &member : node.members) {
        if (std::find(keys.begin(), keys.end(), member.key) != keys.end()) {
            continue;
        }
        if (const auto meant = session::nearest(member.key, keys)) {
            refuse("unknown key {}: did you mean \"{}\"?", in_quotes(member.key), *meant);
        }
        refuse("unknown key {}; the keys are {}", in_quotes(member.key), fmt::join(keys, ", "));
    }
}

const JsonNode &need(const JsonNode &object, std::string_view key)
{
    const JsonNode *node = object.find(key);
    if (node == nullptr) {
        refuse("{} is missing", key);
    }
    return *node;
}

const std::vector<JsonMember> &need_list(const JsonNode &node, std::string_view name)
{
    if (node.kind != JsonNode::Kind::list) {
        refuse("{} is {}, a list was expected", name, node.kind_name());
    }
    return node.members;
}

std::optional<std::int64_t> parse_integer(std::string_view text)
{
    if (is_hex(text)) {
        return parse_hex(text.substr(2));
    }
    if (text.starts_with('-')) {
        const auto positive = parse_number(text.substr(1));
        return positive ? std::optional(-std::int64_t{*positive}) : std::nullopt;
    }
    return parse_number(text);
}

const std::string &scalar_text(const JsonNode &node, std::string_view name,
                               std::string_view expected)
{
    if (node.kind != JsonNode::Kind::number && node.kind != JsonNode::Kind::text) {
        refuse("{} is {}, {} was expected", name, node.kind_name(), expected);
    }
    return node.text;
}

std::int64_t number_in(const JsonNode &node, std::string_view name, std::int64_t low,
                       std::int64_t high)
{
    const std::string &text = scalar_text(node, name);
    const auto value = parse_integer(text);
    if (!value || *value < low || *value > high) {
        const std::string shown = node.kind == JsonNode::Kind::number ? text : in_quotes(text);
        refuse("{} {} is not in {}..{}", name, shown, low, high);
    }
    return *value;
}

std::uint32_t word(const JsonNode &node, std::string_view name)
{
    return static_cast<std::uint32_t>(number_in(node, name, 0, WORD_MAX));
}

int signed_word(const JsonNode &node, std::string_view name)
{
    return node.kind == JsonNode::Kind::text && is_hex(node.text)
               ? static_cast<int>(word(node, name))
               : static_cast<int>(number_in(node, name, INT_LOW, INT_HIGH));
}

} // namespace lab::config
