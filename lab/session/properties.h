/*
 * properties.h: the properties of a routed interface that a session sets and
 * reads: their names and values in words, where the layer above keeps them, and
 * the identifiers by which the library knows them.
 *
 * Which call brings a change to the chip depends on the interface's kind;
 * interface_verbs.h has that.
 */
#pragma once

#include "rtifhal_types.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/** What the values of a property are. */
enum class ValueKind : std::uint8_t { on_off, number, reverse_path };

/** A property. */
struct Property {
    std::string_view name;   ///< "ipv4-multicast"
    std::string_view values; ///< "on|off"
    ValueKind kind;
    std::uint32_t first;                      ///< the lowest number
    std::uint32_t last;                       ///< the highest number
    std::uint32_t svi_id;                     ///< identifier for an SVI's setter; 0: it has none
    bool readable;                            ///< the library reads it back, by the same identifier
    void (*store)(l3lif_pi_ctxt &, uint32_t); ///< null for one that isn't kept there
};

/** All properties, in the order of help and completion. */
std::span<const Property> properties();

/** Their names. */
std::vector<std::string> property_names();

/** The property of a name. @throws UsageError for an unknown one, with the nearest */
const Property &property(std::string_view name);

/** The value that a word stands for. @throws UsageError for one that the property can't have */
std::uint32_t parse_value(const Property &property, std::string_view word);

/** A value in words: "on", "strict", "9000". */
std::string value_text(const Property &property, std::uint32_t value);

} // namespace lab::session
