/*
 * complete.cpp: see complete.h.
 */
#include "session/complete.h"

#include "config/address.h"
#include "config/natural_order.h"
#include "session/expect.h"
#include "session/platform_functions.h"
#include "session/properties.h"
#include "session/tables.h"
#include "session/verbs.h"
#include "session/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace lab::session
{

namespace
{

// A folder may hold more files than anybody wants to look at.
constexpr std::size_t FILES_MAX = 1000;

using Candidates = std::vector<std::string>;

Candidates values_of(const std::string &name)
{
    for (const Property &known : properties()) {
        if (known.name == name && known.kind == ValueKind::on_off) {
            return {"on", "off"};
        }
        if (known.name == name && known.kind == ValueKind::reverse_path) {
            return {"strict", "loose", "off"};
        }
    }
    return {};
}

/** Files and folders that begin with what is typed, the folders with a slash. */
Candidates files(const std::string &typed)
{
    const std::size_t slash = typed.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : typed.substr(0, slash + 1);
    Candidates found;
    std::error_code error;
    std::filesystem::directory_iterator entries(folder.empty() ? "." : folder, error);
    for (; !error && entries != std::filesystem::directory_iterator() && found.size() < FILES_MAX;
         entries.increment(error)) {
        std::error_code ignored;
        const std::string name = entries->path().filename().string();
        const bool hidden = name.starts_with('.') && typed.size() == folder.size();
        if (!hidden && can_be_shown(name)) {
            found.push_back(folder + name + (entries->is_directory(ignored) ? "/" : ""));
        }
    }
    return found;
}

Candidates known_vlans(const State &state)
{
    Candidates names;
    if (state.config) {
        for (const auto &[name, vlan] : state.config->vlans) {
            if (vlan.refused.empty()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

/** What may stand behind the words of a command on an interface. */
Candidates behind_interface(const State &state, const Words &words)
{
    if (words.size() == 1) {
        return state.interface_names();
    }
    const std::string &verb = words.front();
    if (words.size() == 2 && (verb == "set" || verb == "get")) {
        return property_names();
    }
    if (words.size() == 2 && verb == "del") {
        return {"keep"};
    }
    return words.size() == 3 && verb == "set" ? values_of(words[2]) : Candidates{};
}

Candidates router_macs(const State &state)
{
    Candidates macs;
    for (const auto &[station, mac] : state.layer.router_macs()) {
        macs.push_back(config::mac_text(mac));
    }
    return macs;
}

/** The virtual MACs that an interface has. */
Candidates virtual_macs(const State &state, const std::string &interface)
{
    const Table table = station_table(state.scene());
    const std::size_t mac = *table.column("mac");
    const std::size_t owner = *table.column("owner");
    const std::size_t role = *table.column("role");
    Candidates macs;
    for (const Row &row : table.rows) {
        if (row.cells[owner] == interface && row.cells[role] == "virtual MAC") {
            macs.push_back(row.cells[mac]);
        }
    }
    return macs;
}

/** What may stand behind the words of a command that adds and deletes. */
Candidates behind_add_del(const State &state, const Words &words)
{
    if (words.size() == 1) {
        return {"add", "del"};
    }
    const bool deletes = words[1] == "del";
    if (words.front() == "rmac") {
        return deletes && words.size() == 2 ? router_macs(state) : Candidates{};
    }
    if (words.front() == "vmac") {
        return words.size() == 2              ? state.interface_names()
               : deletes && words.size() == 3 ? virtual_macs(state, words[2])
                                              : Candidates{};
    }
    return words.size() <= 3 ? known_vlans(state) : Candidates{};
}

Candidates known_vrfs(const State &state)
{
    Candidates names = {"default"};
    if (state.config) {
        for (const auto &[name, number] : state.config->vrfs) {
            names.push_back(name);
        }
    }
    return names;
}

/** What may stand behind the words of the command on hosts. */
Candidates behind_neighbor(const State &state, const Words &words)
{
    if (words.size() == 1) {
        return {"add", "del"};
    }
    if (words.size() == 2) {
        return state.interface_names();
    }
    Candidates found;
    for (const routing::Neighbor &known : state.routing.neighbors()) {
        if (known.interface == words[2] && words.size() == 3) {
            found.push_back(known.address.text());
        } else if (known.interface == words[2] && words.size() == 4 && words[1] == "add") {
            found.push_back(config::mac_text(known.mac));
        }
    }
    return words.size() == 5 && words[1] == "add" ? state.routing.ports_of(words[2]) : found;
}

/** What may stand behind the words of the command on static routes. */
Candidates behind_route(const State &state, const Words &words)
{
    if (words.size() == 1) {
        return {"add", "del"};
    }
    Candidates found;
    if (words.size() == 2) {
        for (const routing::StaticRoute &known : state.routing.routes()) {
            found.push_back(known.prefix.text());
        }
        return found;
    }
    const bool has_ways = std::find(words.begin(), words.end(), "via") != words.end();
    if (has_ways) {
        return state.interface_names();
    }
    if (words.back() == "vrf") {
        return known_vrfs(state);
    }
    found = words[1] == "add" ? Candidates{"via", "blackhole"} : Candidates{};
    if (words.size() == 3) {
        found.emplace_back("vrf");
    }
    return words.back() == "blackhole" ? Candidates{} : found;
}

/** What may stand behind the words of the command on VXLAN ports. */
Candidates behind_vxlan(const State &state, const Words &words)
{
    if (words.size() == 1) {
        return {"add", "del"};
    }
    if (words[1] == "del") {
        Candidates numbers;
        for (const auto &[id, port] : state.hardware.chip.vxlan_ports.all()) {
            if (words.size() == 2) {
                numbers.push_back(fmt::to_string(port.vpn));
            } else if (words.size() == 3 && words[2] == fmt::to_string(port.vpn)) {
                numbers.push_back(fmt::to_string(id));
            }
        }
        return numbers;
    }
    if (words.size() == 2) {
        return state.interface_names();
    }
    if (words.size() % 2 == 0) {
        return words.back() == "port"     ? state.port_names()
               : words.back() == "egress" ? state.interface_names()
                                          : Candidates{};
    }
    Candidates keys = vxlan_keys();
    std::erase_if(keys, [&words](const std::string &key) {
        return std::find(words.begin() + 3, words.end(), key) != words.end();
    });
    return keys;
}

/** What may stand behind the words of a command on ports. */
Candidates behind_port(const State &state, const Words &words)
{
    if (words.front() == "drop") {
        return words.size() == 1   ? Candidates{"add", "del"}
               : words.size() == 2 ? state.port_names()
                                   : Candidates{};
    }
    if (words.size() > 1) {
        return words.size() == 2 ? Candidates{"clear"} : Candidates{};
    }
    Candidates names = state.port_names();
    const Candidates interfaces = state.interface_names();
    names.insert(names.end(), interfaces.begin(), interfaces.end());
    return names;
}

/** The keys of the rows of the tables that are shown under a word. */
Candidates keys_shown(const State &state, const std::string &name)
{
    Candidates keys;
    const Scene scene = state.scene();
    for (const TableKind &kind : table_kinds()) {
        if (kind.show != name) {
            continue;
        }
        for (const Row &row : kind.make(scene).rows) {
            if (row.shown) {
                keys.insert(keys.end(), row.keys.begin(), row.keys.end());
            }
        }
    }
    return keys;
}

/** What may stand behind the words of an expectation. */
Candidates behind_expect(const State &state, const Words &words)
{
    const auto subject = words.begin() + (!words.empty() && words.front() == "no" ? 1 : 0);
    if (subject != words.end() && *subject == "explain") {
        return explain_continuations({subject + 1, words.end()}, state);
    }
    return expect_continuations(words, state.scene());
}

/** What may stand behind a command whose first word is one of a few. */
Candidates known_words(const std::string &verb)
{
    if (verb == "ipv6") {
        return {"on", "off"};
    }
    if (verb == "show") {
        return show_names();
    }
    if (verb == "fail") {
        Candidates names = platform_functions();
        names.emplace_back("off");
        return names;
    }
    if (verb == "restart") {
        return {"cold", "fast", "restore"};
    }
    return verb == "help" ? verb_names() : Candidates{};
}

/** All that may follow some finished words. */
Candidates following(const State &state, const Words &words, const std::string &typed)
{
    if (words.empty()) {
        return verb_names();
    }
    const std::string &verb = words.front();
    if (verb == "add" || verb == "del" || verb == "set" || verb == "get" || verb == "disable") {
        return behind_interface(state, words);
    }
    if (verb == "rmac" || verb == "vmac" || verb == "pvlan") {
        return behind_add_del(state, words);
    }
    if (verb == "vxlan") {
        return behind_vxlan(state, words);
    }
    if (verb == "neighbor") {
        return behind_neighbor(state, words);
    }
    if (verb == "route") {
        return behind_route(state, words);
    }
    if (verb == "up" && words.size() == 2) {
        return {"open"};
    }
    if (verb == "drop" || verb == "member-port") {
        return behind_port(state, words);
    }
    if (verb == "packet") {
        return packet_continuations({words.begin() + 1, words.end()}, state);
    }
    if (verb == "explain") {
        return explain_continuations({words.begin() + 1, words.end()}, state);
    }
    if (verb == "expect") {
        return behind_expect(state, {words.begin() + 1, words.end()});
    }
    if (words.size() == 2 && verb == "show") {
        return keys_shown(state, words[1]);
    }
    if (words.size() > 1) {
        return verb == "fail" && words.size() == 2 ? Candidates{"always"} : Candidates{};
    }
    if (verb == "up") {
        return files(typed);
    }
    if (verb == "dump") {
        return state.interface_names();
    }
    return known_words(verb);
}

} // namespace

std::string Completion::common() const
{
    if (words.empty()) {
        return "";
    }
    std::string shared = words.front();
    for (const std::string &word : words) {
        const auto [end, other] =
            std::mismatch(shared.begin(), shared.end(), word.begin(), word.end());
        shared.erase(end, shared.end());
    }
    return shared.substr(std::min(typed.size(), shared.size()));
}

Completion complete(const State &state, std::string_view line)
{
    const Unfinished at = split_unfinished(line);
    Completion completion{at.last, {}};
    if (at.in_comment) {
        return completion;
    }
    for (std::string &word : following(state, at.before, at.last)) {
        if (word.starts_with(at.last)) {
            completion.words.push_back(std::move(word));
        }
    }
    auto &words = completion.words;
    std::sort(words.begin(), words.end(), config::NaturalLess{});
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return completion;
}

} // namespace lab::session
