/*
 * object_book.h: objects of the chip as a page shows them: a name, an id, and
 * the fields that matter, read from the chip's tables alone. graph.h ties those
 * of one interface together.
 */
#pragma once

#include "packet/names.h"
#include "packet/owners.h"
#include "page/records.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace lab::page
{

/** Fills a page's objects, each once. An object that the chip lacks says so. */
class ObjectBook
{
public:
    /**
     * @param names  of the switch as it is
     * @param page   receives the objects; both must outlive this
     */
    ObjectBook(const packet::Names &names, Page &page)
        : names_(names), owners_(names.state()), page_(page)
    {
    }

    // Each gives an index into Page::objects.

    std::size_t port(int port);
    std::size_t trunk(int trunk);
    std::size_t vlan(int vlan);
    std::size_t translation(const simswitch::chip::TranslationKey &key);
    std::size_t ingress(int iif);
    std::size_t interface(int iif);
    std::size_t tunnel(int iif);
    std::size_t station(int station);
    std::size_t egress(int egress);
    /** What is not drawn one by one. @param what  "ports" @param names  of all of them */
    std::size_t more(const std::string &what, const std::vector<std::string> &names);

    const packet::Names &names() const { return names_; }
    const simswitch::chip::Chip &chip() const { return names_.chip(); }

private:
    /** Adds an object with its authors, whose entry in the table has that id, if it exists. */
    std::size_t add(ChipObject object, const std::string &entry, bool exists = true);

    const packet::Names &names_;
    packet::StationOwners owners_;
    Page &page_;
    std::map<std::pair<std::string, std::string>, std::size_t> known_;
};

} // namespace lab::page
