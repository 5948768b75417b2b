/*
 * vlan_translations.cpp: the table of VLAN translations.
 */
#include "chip/vlan_translations.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

Outcome unknown_translation(const TranslationKey &key)
{
    return {ERROR_NOT_FOUND, fmt::format("VLAN translation {} does not exist", text(key))};
}

} // namespace

std::string text(const TranslationKey &key)
{
    return fmt::format("gport {:#x} type {} outer {} inner {}", static_cast<unsigned>(key.gport),
                       key.key_type, key.outer_vlan, key.inner_vlan);
}

std::string text(const TranslationAction &action)
{
    return fmt::format("vlan {} iif {} outer-tag {}", action.new_outer_vlan, action.ingress_if,
                       action.outer_tag_action);
}

Outcome VlanTranslations::create(const TranslationKey &key, const TranslationAction &action)
{
    if (key.outer_vlan < 0 || key.outer_vlan > LAST_VLAN) {
        return out_of_range("outer VLAN", key.outer_vlan, 0, LAST_VLAN);
    }
    if (table_.contains(key)) {
        return {ERROR_EXISTS, fmt::format("VLAN translation {} exists already", text(key))};
    }
    if (table_.size() >= limit_) {
        return table_full("VLAN translation", limit_);
    }
    table_.emplace(key, action);
    return {};
}

Outcome VlanTranslations::remove(const TranslationKey &key)
{
    auto it = locate(key);
    if (it == table_.end()) {
        return unknown_translation(key);
    }
    table_.erase(it);
    return {};
}

Outcome VlanTranslations::set(const TranslationKey &key, const TranslationAction &action)
{
    auto it = locate(key);
    if (it == table_.end()) {
        return unknown_translation(key);
    }
    table_[it->first] = action;
    return {};
}

const TranslationAction *VlanTranslations::find(const TranslationKey &key) const
{
    auto it = locate(key);
    return it == table_.end() ? nullptr : &it->second;
}

VlanTranslations::Map::const_iterator VlanTranslations::locate(const TranslationKey &key) const
{
    auto it = table_.find(key);
    if (it == table_.end() && key.inner_vlan == 0) {
        TranslationKey single_tagged = key;
        single_tagged.inner_vlan = ANY_INNER_VLAN;
        it = table_.find(single_tagged);
    }
    return it;
}

} // namespace simswitch::chip
