/*
 * differences.cpp: see differences.h.
 */
#include "sweep/engine/differences.h"

#include <algorithm>

namespace sweep
{

namespace
{

bool has(std::string_view line, std::string_view text)
{
    return line.find(text) != std::string_view::npos;
}

/** Whether behind the sign stands "VLAN <number><text>". */
bool is_of_vlan(std::string_view line, std::string_view text)
{
    constexpr std::string_view VLAN = "VLAN ";
    std::string_view rest = line.substr(2);
    if (!rest.starts_with(VLAN)) {
        return false;
    }
    rest.remove_prefix(VLAN.size());
    const std::size_t digits = rest.find_first_not_of("0123456789");
    return digits != 0 && digits != std::string_view::npos && rest.substr(digits).starts_with(text);
}

} // namespace

const std::vector<Known> &known_differences()
{
    static const std::vector<Known> all = {
        {"second station of a virtual MAC",
         "the virtual MACs are in no store: each is installed anew beside the station of it that "
         "the chip has",
         [](std::string_view line) {
             return line.starts_with("+ station: ") && has(line, "/ff:ff:ff:ff:ff:ff ");
         }},
        {"VLAN in another spanning tree group",
         "which group is that of the routed VLANs is in no store: a VLAN that is made after a "
         "restore joins group 0, and VLAN 4094 stays where it was made",
         [](std::string_view line) { return is_of_vlan(line, " stg "); }},
        {"state of a port in a spanning tree group",
         "it follows the group of the VLAN that the port has joined",
         [](std::string_view line) { return line.substr(2).starts_with("STG "); }},
        {"port without its place in a VLAN's block masks",
         "which ports use a VLAN is in no store: masks that are written after a restore are of "
         "the ports that have joined since",
         [](std::string_view line) {
             return is_of_vlan(line, " umc ") || is_of_vlan(line, " uuc ") ||
                    is_of_vlan(line, " blocks ");
         }},
        {"flag 0x40 of a secondary VLAN",
         "a pair that is taken back leaves it in the controls of the secondary, and the next one "
         "leaves it there",
         [](std::string_view line) {
             return is_of_vlan(line, " controls ") && has(line, " iif Vlan") &&
                    (has(line, " flags 0xa00 ") || has(line, " flags 0xa40 "));
         }},
        {"flags of a VLAN that was made and not finished",
         "a VLAN that exists is the L2 side's: the add that finds it leaves its flags alone",
         [](std::string_view line) {
             return is_of_vlan(line, " controls ") && has(line, " vrf 0 iif 0 ") &&
                    (has(line, " flags 0x0 ") || has(line, " flags 0x278 "));
         }},
        {"spreading of a trunk that was made and not finished",
         "it is set when the trunk is made; an add that finds the trunk leaves it alone",
         [](std::string_view line) {
             return line.substr(2).starts_with("trunk ") && has(line, " psc ");
         }},
        {"translation of a port-channel's subinterface on a member's port",
         "a member that joins gets those of the subinterfaces there are; a subinterface that "
         "comes later has its own on the trunk",
         [](std::string_view line) {
             return line.starts_with("+ VLAN translation gport 0x8") &&
                    has(line, " iif PortChannel");
         }},
        {"family of a port that was deleted",
         "a delete leaves the port open for IPv6, and the next add doesn't close it",
         [](std::string_view line) {
             return line.substr(2).starts_with("port ") && has(line, " controls 8=1 ") &&
                    has(line, " 10=1");
         }},
    };
    return all;
}

Lines unknown_among(const Lines &differences, std::map<std::string, int> &known)
{
    Lines unknown;
    for (const std::string &line : differences) {
        const auto &all = known_differences();
        const auto found =
            std::ranges::find_if(all, [&line](const Known &one) { return one.is(line); });
        if (found == all.end()) {
            unknown.push_back(line);
        } else {
            ++known[std::string(found->name)];
        }
    }
    return unknown;
}

} // namespace sweep
