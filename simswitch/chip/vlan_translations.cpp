/*
 * vlan_translations.cpp: the table of VLAN translations.
 */
#include "chip/vlan_translations.h"

#include "chip/refusal.h"
#include "chip/trunks.h"

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
    std::string out = fmt::format("vlan {} iif {} outer-tag {}", action.new_outer_vlan,
                                  action.ingress_if, action.outer_tag_action);
    if (action.double_tag_action != 0) {
        out += fmt::format(" double-tag {}", action.double_tag_action);
    }
    return out;
}

Outcome VlanTranslations::check(const TranslationKey &key)
{
    const int kind = gport_kind(key.gport);
    if (kind != GPORT_MODULE_PORT && kind != GPORT_TRUNK) {
        return {ERROR_PARAM, fmt::format("generic port {:#x} is neither a module port nor a trunk",
                                         static_cast<unsigned>(key.gport))};
    }
    if (key.outer_vlan < 0 || key.outer_vlan > LAST_VLAN) {
        return out_of_range("outer VLAN", key.outer_vlan, 0, LAST_VLAN);
    }
    if (key.inner_vlan != ANY_INNER_VLAN && (key.inner_vlan < 0 || key.inner_vlan > LAST_VLAN)) {
        return out_of_range("inner VLAN", key.inner_vlan, 0, LAST_VLAN);
    }
    return {};
}

Outcome VlanTranslations::create(const TranslationKey &key, const TranslationAction &action)
{
    if (Outcome refused = check(key); !refused.ok()) {
        return refused;
    }
    if (table_.contains(key)) {
        return {ERROR_EXISTS, fmt::format("VLAN translation {} exists already", text(key))};
    }
    if (table_.size() >= limit_) {
        return table_full("VLAN translation", limit_);
    }
    changes_.note(key);
    table_.emplace(key, action);
    return {};
}

Outcome VlanTranslations::remove(const TranslationKey &key)
{
    auto it = locate(key);
    if (it == table_.end()) {
        return unknown_translation(key);
    }
    changes_.note_end(it->first);
    table_.erase(it);
    return {};
}

Outcome VlanTranslations::set(const TranslationKey &key, const TranslationAction &action)
{
    auto it = locate(key);
    if (it == table_.end()) {
        return unknown_translation(key);
    }
    changes_.note(it->first);
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

void VlanTranslations::clear()
{
    for (const auto &[key, record] : table_) {
        changes_.note_end(key);
    }
    table_.clear();
}

} // namespace simswitch::chip
