/*
 * translation_lookup.h: which VLAN translation a frame meets.
 *
 * A frame that comes in on a trunk's member is looked up under the member's
 * own module port first, then under the trunk: both kinds of entries are in
 * one table (vlan_translations.h), the members of trunks in another (trunks.h).
 */
#pragma once

#include "chip/vlan_translations.h"

#include <optional>

namespace simswitch::chip
{

class Chip;

/** A translation with the key that it was found under. */
struct FoundTranslation {
    TranslationKey key{};
    TranslationAction action{};

    bool operator==(const FoundTranslation &) const = default;
};

/**
 * Looks the translation of a frame with one tag up. Whether the port translates
 * at all, which its VLAN controls tell, isn't asked here.
 *
 * @param chip        the chip
 * @param port        port on which the frame came in, 0 to 255
 * @param outer_vlan  VLAN of its tag, 0 to 4095
 * @return the translation; nothing when neither the port nor its trunk has one
 */
std::optional<FoundTranslation> find_translation(const Chip &chip, int port, int outer_vlan);

} // namespace simswitch::chip
