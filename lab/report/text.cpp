/*
 * text.cpp: see text.h.
 */
#include "report/text.h"

#include "config/names.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>

namespace lab::report
{

namespace
{

/** What the library says may hold line ends. */
std::string one_line(const std::string &text)
{
    std::string line = text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    const std::size_t first = line.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : line.substr(first, line.find_last_not_of(' ') - first + 1);
}

} // namespace

std::string counted(std::size_t number, std::string_view what)
{
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

std::string plain(std::string_view name)
{
    return config::quotable(name);
}

std::string number_or_dash(bool there, int number)
{
    return there ? fmt::to_string(number) : "-";
}

std::string port_list(const std::vector<int> &ports)
{
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < ports.size();) {
        std::size_t end = i + 1;
        while (end < ports.size() && ports[end] == ports[end - 1] + 1) {
            ++end;
        }
        const std::size_t run = end - i;
        parts.push_back(run > 2 ? fmt::format("{}-{}", ports[i], ports[end - 1])
                                : fmt::to_string(ports[i]));
        i = run > 2 ? end : i + 1;
    }
    return parts.empty() ? "-" : fmt::format("{}", fmt::join(parts, ","));
}

void print_request(const l3lif::Request &request, const View &view, std::ostream &out)
{
    if (view.calls) {
        for (const auto &call : request.calls) {
            fmt::print(out, "    {}\n", call);
        }
    }
    if (view.trace) {
        for (const auto &message : request.messages) {
            fmt::print(out, "    {} {}: {}\n", message.level, message.function,
                       one_line(message.text));
        }
    }
}

} // namespace lab::report
