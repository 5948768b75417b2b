/*
 * authors.cpp: whose request put an entry of the chip there.
 */
#include "chip/authors.h"

#include <algorithm>
#include <utility>

namespace simswitch::chip
{

namespace
{

/** No table's name has a space in it. */
std::string entry_of(std::string_view table, std::string_view id)
{
    std::string entry(table);
    entry += ' ';
    entry += id;
    return entry;
}

} // namespace

Authors::Scope::Scope(Authors &authors, std::string name)
    : authors_(authors), before_(std::exchange(authors.current_, std::move(name)))
{
}

Authors::Scope::~Scope()
{
    authors_.current_ = std::move(before_);
}

std::vector<std::string> Authors::of(std::string_view table, std::string_view id) const
{
    const auto found = entries_.find(entry_of(table, id));
    return found == entries_.end() ? std::vector<std::string>() : found->second;
}

void Authors::wrote(std::string_view table, std::string_view id)
{
    if (current_.empty()) {
        return;
    }
    std::vector<std::string> &authors = entries_[entry_of(table, id)];
    if (std::find(authors.begin(), authors.end(), current_) == authors.end()) {
        authors.push_back(current_);
    }
}

void Authors::ended(std::string_view table, std::string_view id)
{
    entries_.erase(entry_of(table, id));
}

} // namespace simswitch::chip
