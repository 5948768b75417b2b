/*
 * explain.cpp: the kinds of number, and numbers that stand for nothing.
 */
#include "explain/explain.h"

#include "config/names.h"
#include "explain/book.h"
#include "packet/objects.h"
#include "session/errors.h"
#include "session/nearest.h"

#include "chip/chip.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <optional>

namespace lab::explain
{

namespace chip = simswitch::chip;

namespace
{

template <class Table> std::set<int> ids_of(const Table &table)
{
    std::set<int> ids;
    for (const auto &[id, record] : table.all()) {
        ids.insert(id);
    }
    return ids;
}

std::set<int> known_vlans(const session::State &state)
{
    return ids_of(state.hardware.chip.vlans);
}

std::set<int> known_stations(const session::State &state)
{
    return ids_of(state.hardware.chip.stations);
}

/** Groups too: a route names the one or the other, and they share the numbers. */
std::set<int> known_egresses(const session::State &state)
{
    std::set<int> egresses = ids_of(state.hardware.chip.egresses);
    egresses.merge(ids_of(state.hardware.chip.multipath_groups));
    return egresses;
}

/** The ports that the configuration has or somebody wrote to. */
std::set<int> known_ports(const session::State &state)
{
    std::set<int> ports = ids_of(state.hardware.chip.ports);
    for (const auto &[number, name] : state.scene().ports) {
        ports.insert(number);
    }
    return ports;
}

constexpr std::array SUBJECTS = {
    Subject{"iif", "interface number", 0, chip::LAST_IIF, explain_iif, taken_iifs},
    Subject{"vlan", "VLAN", 1, chip::LAST_VLAN, explain_vlan, known_vlans},
    Subject{"station", "station", chip::FIRST_STATION, std::numeric_limits<int>::max(),
            explain_station, known_stations},
    Subject{"port", "port", 0, chip::LAST_PORT, explain_port, known_ports},
    Subject{"egress", "egress object", 0, std::numeric_limits<int>::max(), explain_egress,
            known_egresses},
};

const Subject &subject_of(const std::string &word)
{
    const auto found = std::ranges::find(SUBJECTS, word, &Subject::word);
    if (found == SUBJECTS.end()) {
        throw session::UsageError(
            fmt::format("{} ({})", session::unknown("kind of number", word, subject_words()),
                        fmt::join(subject_words(), ", ")));
    }
    return *found;
}

/** What a number must be, for a word that is the name of something in its place. */
std::string name_hint(const Subject &subject, const std::string &word)
{
    constexpr std::string_view VLAN_NAME = "Vlan";
    const auto vlan = word.starts_with(VLAN_NAME)
                          ? config::parse_number(word.substr(VLAN_NAME.size()))
                          : std::nullopt;
    if (subject.word == "vlan" && vlan && *vlan != 0 && *vlan <= chip::LAST_VLAN) {
        return fmt::format("; a number is wanted, here {}", *vlan);
    }
    const bool is_name = !word.empty() && std::isalpha(static_cast<unsigned char>(word[0])) != 0;
    return is_name ? "; a number is wanted, not a name" : "";
}

int parse_subject_number(const Subject &subject, const std::string &word)
{
    const auto number = config::parse_number(word);
    if (!number || *number < static_cast<std::uint32_t>(subject.first) ||
        *number > static_cast<std::uint32_t>(subject.last)) {
        throw session::UsageError(
            fmt::format("{} is no {}: {}{}", config::number_or_quotes(word), subject.name,
                        subject.last == std::numeric_limits<int>::max()
                            ? fmt::format("those are from {}", subject.first)
                            : fmt::format("those are {} to {}", subject.first, subject.last),
                        name_hint(subject, word)));
    }
    return static_cast<int>(*number);
}

/** What a number that is there is, in a word or two. */
std::string short_text(const session::State &state, const Subject &subject, int number)
{
    const packet::Names names(state);
    if (subject.word == "egress") {
        const bool is_group = names.chip().multipath_groups.find(number) != nullptr;
        return is_group ? "an ECMP group" : packet::next_hop_text(names, number);
    }
    if (subject.word == "iif") {
        return names.interface_or_nothing(number);
    }
    if (subject.word == "vlan") {
        return session::Scene::name(state.scene().vlans, number);
    }
    return subject.word == "port" ? session::Scene::name(state.scene().ports, number) : "";
}

/** "the nearest are 3 (Ethernet0) and 5" */
std::string nearest_text(const session::State &state, const Subject &subject, int number)
{
    const std::set<int> known = subject.known(state);
    std::vector<std::string> near;
    const auto add = [&](int there) {
        const std::string what = short_text(state, subject, there);
        near.push_back(what.empty() ? fmt::to_string(there) : fmt::format("{} ({})", there, what));
    };
    const auto above = known.upper_bound(number);
    if (above != known.begin()) {
        add(*std::prev(above));
    }
    if (above != known.end()) {
        add(*above);
    }
    if (near.empty()) {
        return "the chip has none at all";
    }
    return fmt::format("the nearest {} {}", near.size() == 1 ? "is" : "are",
                       fmt::join(near, " and "));
}

} // namespace

std::span<const Subject> subjects()
{
    return SUBJECTS;
}

std::vector<std::string> subject_words()
{
    std::vector<std::string> words;
    words.reserve(SUBJECTS.size());
    for (const Subject &subject : SUBJECTS) {
        words.emplace_back(subject.word);
    }
    return words;
}

std::set<int> known_numbers(const session::State &state, std::string_view word)
{
    const auto found = std::ranges::find(SUBJECTS, word, &Subject::word);
    return found == SUBJECTS.end() ? std::set<int>{} : found->known(state);
}

void check_words(const std::string &word, const std::string &number)
{
    parse_subject_number(subject_of(word), number);
}

Finding explain(const session::State &state, const std::string &word, const std::string &number)
{
    const Subject &subject = subject_of(word);
    const int value = parse_subject_number(subject, number);
    Book book(state);
    if (subject.explain(book, value)) {
        return book.take();
    }
    Finding finding;
    finding.title = fmt::format("{} {} stands for nothing: {}", subject.name, value,
                                nearest_text(state, subject, value));
    if (subject.word == "port") {
        finding.title += fmt::format("; the chip takes {} to {}", subject.first, subject.last);
    }
    return finding;
}

} // namespace lab::explain
