/*
 * explain.h: what a number of the chip stands for: of an L3 interface, a VLAN, a
 * station, a port or an egress object. finding.h has what comes out.
 *
 * l3_subjects.cpp has interfaces and egress objects, l2_subjects.cpp VLANs,
 * stations and ports. packet/explain.h explains frames.
 */
#pragma once

#include "explain/finding.h"

#include "chip/egresses.h"

#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{
struct State;
}

namespace lab::explain
{

class Book;

/** A kind of number. */
struct Subject {
    std::string_view word; ///< "iif"
    std::string_view name; ///< "interface number"
    int first;             ///< the lowest number that the chip could have
    int last;              ///< the highest
    /** Writes what a number stands for; false when it stands for nothing. */
    bool (*explain)(Book &book, int number);
    /** The numbers that stand for something. */
    std::set<int> (*known)(const session::State &state);
};

/** All kinds, in the order of help. */
std::span<const Subject> subjects();

/** Their words. */
std::vector<std::string> subject_words();

/** The numbers of a kind that stand for something; none for a word that is no kind. */
std::set<int> known_numbers(const session::State &state, std::string_view word);

/**
 * Looks whether a kind and a number make sense, before anything runs.
 *
 * @throws session::UsageError as explain
 */
void check_words(const std::string &word, const std::string &number);

/**
 * Explains a number.
 *
 * @param state   the session; authors are those that its chip has tracked
 * @param word    the kind, "iif"
 * @param number  the number in decimal
 * @return what it stands for; of a number that stands for nothing the nearest that do
 * @throws session::UsageError for another kind, and for no number or one out of range
 */
Finding explain(const session::State &state, const std::string &word, const std::string &number);

// The writers; each tells whether the number stands for something.

bool explain_iif(Book &book, int iif);
bool explain_egress(Book &book, int egress);
bool explain_vlan(Book &book, int vlan);
bool explain_station(Book &book, int station);
bool explain_port(Book &book, int port);

/** The trunk that an egress object leaves by, named by it or by a generic port; 0 for a port. */
int trunk_of(const simswitch::chip::Egress &egress);

/** The interface numbers that are not free. */
std::set<int> taken_iifs(const session::State &state);

} // namespace lab::explain
