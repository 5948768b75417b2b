/*
 * authors.cpp: see authors.h.
 */
#include "packet/authors.h"

#include <algorithm>
#include <cstddef>

namespace lab::packet
{

namespace
{

/** Whether a request's name, "add Ethernet0", is about an interface. */
bool is_about(const std::string &author, const std::string &interface)
{
    const std::size_t at = author.find(interface);
    if (interface.empty() || at == std::string::npos) {
        return false;
    }
    const std::size_t end = at + interface.size();
    const bool begins = at == 0 || author[at - 1] == ' ';
    return begins && (end == author.size() || author[end] == ' ');
}

} // namespace

std::string author_of(std::vector<std::string> authors, const std::vector<std::string> &interfaces,
                      bool last_first)
{
    if (last_first) {
        std::reverse(authors.begin(), authors.end());
    }
    for (const std::string &interface : interfaces) {
        const auto found =
            std::find_if(authors.begin(), authors.end(), [&interface](const std::string &author) {
                return is_about(author, interface);
            });
        if (found != authors.end()) {
            return *found;
        }
    }
    return authors.empty() ? "" : authors.front();
}

} // namespace lab::packet
