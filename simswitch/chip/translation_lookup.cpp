/*
 * translation_lookup.cpp: which VLAN translation a frame meets.
 */
#include "chip/translation_lookup.h"

#include "chip/chip.h"

namespace simswitch::chip
{

namespace
{

constexpr int OWN_MODULE = 0; // the unit number stands for the module

std::optional<FoundTranslation> find_under(const Chip &chip, int gport, int outer_vlan)
{
    const TranslationKey key{gport, KEY_TYPE_PORT_OUTER, outer_vlan, ANY_INNER_VLAN};
    const TranslationAction *action = chip.vlan_translations.find(key);
    return action != nullptr ? std::optional(FoundTranslation{key, *action}) : std::nullopt;
}

} // namespace

std::optional<FoundTranslation> find_translation(const Chip &chip, int port, int outer_vlan)
{
    const int gport = module_port(OWN_MODULE, port);
    if (auto own = find_under(chip, gport, outer_vlan)) {
        return own;
    }
    const std::optional<int> trunk = chip.trunks.trunk_of(gport);
    return trunk ? find_under(chip, trunk_gport(*trunk), outer_vlan) : std::nullopt;
}

} // namespace simswitch::chip
