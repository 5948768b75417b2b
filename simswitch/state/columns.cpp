/*
 * columns.cpp: values as text, and back.
 */
#include "state/columns.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <nlohmann/json.hpp>

namespace simswitch::state
{

namespace
{

using Json = nlohmann::json;

constexpr const char *BAD = "the text makes no sense";

template <class T> T number(std::string_view text, int base = 10)
{
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        throw BadValue(BAD);
    }
    return value;
}

/** Bytes of two hex digits each, a separator of so many letters between them. */
template <std::size_t size>
void read_bytes(std::string_view text, std::size_t gap, std::array<std::uint8_t, size> &bytes)
{
    if (text.size() != 2 * size + gap * (size - 1)) {
        throw BadValue(BAD);
    }
    for (std::size_t i = 0; i < size; ++i) {
        bytes.at(i) = number<std::uint8_t>(text.substr(i * (2 + gap), 2), 16);
    }
}

/** A number of JSON that fits its place. */
template <class T> T json_number(const Json &value)
{
    if (!value.is_number_integer()) {
        throw BadValue(BAD);
    }
    const auto wide = value.get<std::int64_t>();
    const auto narrow = static_cast<T>(wide);
    if (static_cast<std::int64_t>(narrow) != wide) {
        throw BadValue(BAD);
    }
    return narrow;
}

Json parse(const std::string &text, Json::value_t kind)
{
    Json json = Json::parse(text, nullptr, false);
    if (json.type() != kind) {
        throw BadValue(BAD);
    }
    return json;
}

std::string list(const auto &numbers)
{
    return fmt::format("[{}]", fmt::join(numbers, ","));
}

/** A range "9-12" or a port "5" of a set. */
void add_range(std::string_view text, chip::PortSet &ports)
{
    const std::size_t dash = text.find('-');
    const int first = number<int>(text.substr(0, dash));
    const int last = dash == std::string_view::npos ? first : number<int>(text.substr(dash + 1));
    if (first < 0 || last > chip::LAST_PORT || first > last) {
        throw BadValue(BAD);
    }
    ports |= chip::PortSet::range(first, last);
}

} // namespace

std::string to_text(const chip::Mac &mac)
{
    return fmt::format("{:02x}", fmt::join(mac, ":"));
}

std::string to_text(const chip::PortSet &ports)
{
    return ports.text();
}

std::string to_text(const std::array<std::uint8_t, 16> &bytes)
{
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

std::string to_text(const std::array<std::uint8_t, chip::LAST_PORT + 1> &states)
{
    std::string text;
    for (const std::uint8_t state : states) {
        text += static_cast<char>('0' + state);
    }
    text.erase(text.find_last_not_of('0') + 1);
    return text;
}

std::string words_text(std::span<const std::uint32_t> words)
{
    const bool is_zero =
        std::all_of(words.begin(), words.end(), [](std::uint32_t word) { return word == 0; });
    return is_zero ? "[]" : list(words);
}

std::string to_text(const std::vector<int> &ids)
{
    return list(ids);
}

std::string to_text(const std::vector<std::uint32_t> &ids)
{
    return list(ids);
}

std::string to_text(const std::set<int> &ids)
{
    return list(ids);
}

std::string to_text(const std::map<int, int> &values)
{
    std::string text = "{";
    for (const auto &[key, value] : values) {
        fmt::format_to(std::back_inserter(text), "{}\"{}\":{}", text.size() > 1 ? "," : "", key,
                       value);
    }
    return text + "}";
}

std::string to_text(const std::map<int, chip::PortSet> &values)
{
    std::string text = "{";
    for (const auto &[key, value] : values) {
        fmt::format_to(std::back_inserter(text), "{}\"{}\":\"{}\"", text.size() > 1 ? "," : "", key,
                       value.text());
    }
    return text + "}";
}

std::string to_text(const std::vector<chip::TrunkMember> &members)
{
    std::string text = "[";
    for (const chip::TrunkMember &member : members) {
        fmt::format_to(std::back_inserter(text), "{}[{},{},{},{}]", text.size() > 1 ? "," : "",
                       member.flags, member.gport, member.scaling_factor, member.load_weight);
    }
    return text + "]";
}

std::string to_text(const std::optional<chip::InPorts> &in_ports)
{
    return in_ports ? fmt::format("{}/{}", in_ports->data.text(), in_ports->mask.text())
                    : std::string();
}

std::string to_text(const std::optional<bool> &value)
{
    return value ? std::string(*value ? "1" : "0") : std::string();
}

void from_text(const std::string &text, chip::Mac &mac)
{
    read_bytes(text, 1, mac);
}

void from_text(const std::string &text, chip::PortSet &ports)
{
    ports = {};
    if (text.size() < 2 || text.front() != '{' || text.back() != '}') {
        throw BadValue(BAD);
    }
    std::string_view rest = std::string_view(text).substr(1, text.size() - 2);
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        add_range(rest.substr(0, comma), ports);
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
}

void from_text(const std::string &text, std::array<std::uint8_t, 16> &bytes)
{
    read_bytes(text, 0, bytes);
}

void from_text(const std::string &text, std::array<std::uint8_t, chip::LAST_PORT + 1> &states)
{
    states = {};
    if (text.size() > states.size()) {
        throw BadValue(BAD);
    }
    std::transform(text.begin(), text.end(), states.begin(),
                   [](char digit) { return number<std::uint8_t>(std::string_view(&digit, 1)); });
}

void read_words(const std::string &text, std::span<std::uint32_t> words)
{
    const Json json = parse(text, Json::value_t::array);
    if (json.size() != words.size() && !json.empty()) {
        throw BadValue(BAD);
    }
    std::fill(words.begin(), words.end(), 0U);
    std::transform(json.begin(), json.end(), words.begin(),
                   [](const Json &word) { return json_number<std::uint32_t>(word); });
}

void from_text(const std::string &text, std::vector<int> &ids)
{
    ids.clear();
    for (const Json &id : parse(text, Json::value_t::array)) {
        ids.push_back(json_number<int>(id));
    }
}

void from_text(const std::string &text, std::vector<std::uint32_t> &ids)
{
    ids.clear();
    for (const Json &id : parse(text, Json::value_t::array)) {
        ids.push_back(json_number<std::uint32_t>(id));
    }
}

void from_text(const std::string &text, std::set<int> &ids)
{
    ids.clear();
    for (const Json &id : parse(text, Json::value_t::array)) {
        ids.insert(json_number<int>(id));
    }
}

void from_text(const std::string &text, std::map<int, int> &values)
{
    values.clear();
    const Json json = parse(text, Json::value_t::object);
    for (const auto &[key, value] : json.items()) {
        values[number<int>(key)] = json_number<int>(value);
    }
}

void from_text(const std::string &text, std::map<int, chip::PortSet> &values)
{
    values.clear();
    const Json json = parse(text, Json::value_t::object);
    for (const auto &[key, value] : json.items()) {
        if (!value.is_string()) {
            throw BadValue(BAD);
        }
        from_text(value.get<std::string>(), values[number<int>(key)]);
    }
}

void from_text(const std::string &text, std::vector<chip::TrunkMember> &members)
{
    members.clear();
    for (const Json &member : parse(text, Json::value_t::array)) {
        if (!member.is_array() || member.size() != 4) {
            throw BadValue(BAD);
        }
        members.push_back({json_number<std::uint32_t>(member[0]), json_number<int>(member[1]),
                           json_number<int>(member[2]), json_number<int>(member[3])});
    }
}

void from_text(const std::string &text, std::optional<chip::InPorts> &in_ports)
{
    in_ports.reset();
    if (text.empty()) {
        return;
    }
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos) {
        throw BadValue(BAD);
    }
    chip::InPorts found;
    from_text(text.substr(0, slash), found.data);
    from_text(text.substr(slash + 1), found.mask);
    in_ports = found;
}

void from_text(const std::string &text, std::optional<bool> &value)
{
    value.reset();
    if (!text.empty()) {
        value = number<unsigned>(std::string_view(text)) != 0;
    }
}

} // namespace simswitch::state
