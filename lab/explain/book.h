/*
 * book.h: writes a finding (finding.h): sections, and in them objects of the
 * chip with the names and authors that a session knows. packet/objects.h has
 * their texts.
 */
#pragma once

#include "explain/finding.h"
#include "packet/names.h"
#include "session/state.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab::explain
{

/** Objects of one sort that a section lists; of more the number is told. */
inline constexpr std::size_t LISTED_MAX = 16;

/** A finding while it is written. */
class Book
{
public:
    /** @param state  a session; must outlive this */
    explicit Book(const session::State &state) : state_(state), names_(state) {}

    const session::State &state() const { return state_; }
    const packet::Names &names() const { return names_; }
    const simswitch::chip::Chip &chip() const { return names_.chip(); }

    /** Begins with what the number is. */
    void title(std::string text);
    /** Of several requests that wrote an entry, those on these count first. @param names  of
     * interfaces and ports */
    void about(std::vector<std::string> names) { about_ = std::move(names); }
    /** What follows stands under this title; a section without anything isn't shown. */
    void section(std::string_view title);

    /** Something that isn't the chip's: an interface's name, a configuration's VLAN. */
    void say(std::string what, std::string id, std::string text);
    /**
     * An entry of a table of the chip.
     *
     * @param what   what it is called, "L3 interface"
     * @param table  its table, as Chip::for_each_table names it
     * @param entry  its id there, as a trace's line has it
     * @param id     the id as people read it
     * @param text   what it says
     */
    void entry(std::string what, std::string_view table, const std::string &entry, std::string id,
               std::string text);
    /** The same of one whose text is that of packet/objects.h; says so where there is none. */
    void object(std::string what, std::string_view table, const std::string &id);

    // Entries of the chip, by what they have to do with something.

    /** A port with what it routes. */
    void port(int port);
    void translation(const simswitch::chip::TranslationKey &key,
                     const simswitch::chip::TranslationAction &action);
    /** The routes over egress objects, with the multipath groups between, and over groups. */
    void routes_over(const std::set<int> &egresses, std::set<int> groups = {});

    /** The finding, of a number that stands for something. */
    Finding take();

private:
    void add(Fact fact);
    void end_section();

    const session::State &state_;
    packet::Names names_;
    Finding finding_;
    std::vector<std::string> about_;
    std::map<std::string, std::size_t> counted_; ///< facts of the section by what they are
};

} // namespace lab::explain
