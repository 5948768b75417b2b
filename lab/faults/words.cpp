/*
 * words.cpp: see words.h.
 */
#include "faults/words.h"

#include "faults/sweep.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <map>
#include <set>
#include <utility>

namespace lab::faults
{

namespace
{

/** Lines that begin with a text, and hold another, are of this subject. */
struct Subject {
    std::string_view begin;
    std::string_view part;
    std::string_view words;
};

// The first that fits counts.
constexpr std::array SUBJECTS = {
    Subject{"", " of memory", "a block of memory"},
    Subject{"station", "", "station"},
    Subject{"L3 interface ", "", "L3 interface"},
    Subject{"L3 ingress ", "", "ingress object"},
    Subject{"VLAN translation", "", "VLAN translation"},
    Subject{"VLAN ", " members", "members of the VLAN"},
    Subject{"VLAN ", " untagged", "untagged ports of the VLAN"},
    Subject{"VLAN ", " cached ports", "cached ports of the VLAN"},
    Subject{"VLAN ", " cached ", "cached controls of the VLAN"},
    Subject{"VLAN ", " controls", "controls of the VLAN"},
    Subject{"VLAN ", " blocks", "flood masks of the VLAN"},
    Subject{"VLAN ", " umc", "flood masks of the VLAN"},
    Subject{"VLAN ", " uuc", "flood masks of the VLAN"},
    Subject{"VLAN ", " stg", "group of the VLAN"},
    Subject{"VLAN ", " used by", "count of the VLAN's users"},
    Subject{"VLAN ", "", "VLAN"},
    Subject{"STG ", "", "spanning tree state"},
    Subject{"port ", " in VLANs", "counted VLANs of the port"},
    Subject{"port ", " untagged", "untagged VLAN of the port"},
    Subject{"port ", " vlan-controls", "VLAN controls of the port"},
    Subject{"port ", " discard", "discard mode of the port"},
    Subject{"port ", " controls", "controls of the port"},
    Subject{"port ", "", "state of the port"},
    Subject{"trunk ", "", "trunk"},
    Subject{"egress ", "", "next hop"},
    Subject{"multipath group", "", "multipath group"},
    Subject{"route ", "", "route"},
    Subject{"field group", "", "field group"},
    Subject{"field entry", "", "field entry"},
    Subject{"switch control", "", "control of the switch"},
    Subject{"tunnel ", "", "tunnel"},
    Subject{"VXLAN port", "", "VXLAN port"},
    Subject{"numbers: ", "", "numbers in use"},
    Subject{"virtual MACs", "", "count of virtual MACs"},
    Subject{"record ", "", "stored record"},
    Subject{"forwarding manager's", "", "VLAN of the forwarding manager"},
    Subject{"interface ", "", "standing of the interface"},
};

std::string_view subject_of(std::string_view line)
{
    for (const Subject &subject : SUBJECTS) {
        if (line.starts_with(subject.begin) && line.find(subject.part) != std::string_view::npos) {
            return subject.words;
        }
    }
    return line;
}

/** How many words of a line without a colon name what it tells of. */
int words_of_object(std::string_view line)
{
    if (line.starts_with("interface ") || line.starts_with("virtual MACs")) {
        return 2;
    }
    const bool is_long =
        line.find(" cached ") != std::string_view::npos || line.starts_with("forwarding ");
    return is_long ? 4 : 3;
}

/** What comes before the values: the object and the name of what it has. */
std::string object_of(std::string_view line)
{
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos) {
        return std::string(line.substr(0, colon));
    }
    std::size_t end = 0;
    for (int left = words_of_object(line); left > 0 && end != std::string_view::npos; --left) {
        end = line.find(' ', end + 1);
    }
    return std::string(line.substr(0, end));
}

bool is_number(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool is_word(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/** A text with each `from`, which isn't empty, made a `to`. */
std::string with_all_replaced(std::string_view text, std::string_view from, std::string_view to)
{
    std::string out;
    std::size_t begin = 0;
    for (std::size_t at = text.find(from); at != std::string_view::npos;
         at = text.find(from, begin)) {
        out.append(text, begin, at - begin).append(to);
        begin = at + from.size();
    }
    return out.append(text, begin);
}

/** What is gone (first) and what was added (second), by object. */
using Signs = std::map<std::string, std::pair<bool, bool>>;

/** As many parts as these come or go with a VLAN or port as a whole. */
constexpr int WHOLE = 3;

/** "VLAN 100" of "VLAN 100 members"; empty for what is no part of a VLAN or port of the chip. */
std::string whole_of(const std::string &object)
{
    const bool is_chips = object.starts_with("VLAN ") || object.starts_with("port ");
    const bool is_counted = object.find(" cached") != std::string::npos ||
                            object.find(" used") != std::string::npos ||
                            object.find(" in") != std::string::npos;
    return is_chips && !is_counted ? object.substr(0, object.find(' ', object.find(' ') + 1)) : "";
}

/** How many parts of each VLAN and port come or go. */
std::map<std::string, int> wholes_of(const Signs &signs)
{
    std::map<std::string, int> parts;
    for (const auto &[object, sign] : signs) {
        const std::string whole = whole_of(object);
        if (!whole.empty() && sign.first != sign.second) {
            ++parts[whole];
        }
    }
    return parts;
}

} // namespace

Lines in_words(const Lines &differences)
{
    Signs signs;
    std::map<std::string, std::string_view> subjects;
    for (const std::string &line : differences) {
        const std::string_view text = std::string_view(line).substr(2);
        const std::string object = object_of(text);
        auto &[gone, added] = signs[object];
        (line.front() == '-' ? gone : added) = true;
        subjects[object] = subject_of(text);
    }
    const auto wholes = wholes_of(signs);
    std::set<std::string> words;
    for (const auto &[object, sign] : signs) {
        const auto &[gone, added] = sign;
        const auto whole = wholes.find(whole_of(object));
        const bool is_part = whole != wholes.end() && gone != added && whole->second >= WHOLE;
        if (is_part && object.starts_with("port ")) {
            // The chip's ports are always there: one without a line has nothing set.
            words.insert("other settings of the port");
            continue;
        }
        const std::string_view prefix = gone && added ? "other " : gone ? "without " : "";
        words.insert(fmt::format("{}{}", prefix, is_part ? "VLAN" : subjects[object]));
    }
    return {words.begin(), words.end()};
}

std::string without_numbers(std::string_view message)
{
    std::string text(message);
    for (const int code : ALL_CODES) {
        text = with_all_replaced(text, _shr_errmsg[-code], "E");
    }
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool begins = is_number(text[i]) && (i == 0 || !is_word(text[i - 1]));
        if (!begins) {
            out += text[i];
            continue;
        }
        out += 'N';
        while (i + 1 < text.size() && is_word(text[i + 1])) {
            ++i;
        }
    }
    return with_all_replaced(out, "-N", "N");
}

} // namespace lab::faults
