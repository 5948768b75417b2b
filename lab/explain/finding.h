/*
 * finding.h: what there is to say of one number of the chip: what it is, who
 * holds it, what depends on it, and whose request put each of that there.
 * explain.h finds it out, report.h prints it.
 */
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lab::explain
{

/** An object of the chip, or of the layer above, in a line. */
struct Fact {
    std::string what;                      ///< "egress"
    std::string id;                        ///< "100002"; empty for what has no number
    std::string text;                      ///< what it is, with names
    std::vector<std::string> authors = {}; ///< requests that wrote it, the most telling one first
    bool is_entry = false;                 ///< an entry of the chip, which somebody wrote
};

/** The facts that answer one question. */
struct Section {
    std::string_view title; ///< "what it is"
    std::vector<Fact> facts = {};
};

/** All that there is to say. */
struct Finding {
    bool found = false;     ///< the number stands for something
    std::string title = {}; ///< "iif 7: Ethernet4.10, subinterface"; of an unknown one a sentence
    std::vector<Section> sections = {};
};

} // namespace lab::explain
