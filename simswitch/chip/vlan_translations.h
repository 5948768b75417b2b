/*
 * vlan_translations.h: the VLAN translations: frames of a generic port with
 * certain tags get another outer VLAN and an ingress interface.
 *
 * An entry for frames with one tag has 65535 as its key's inner VLAN. A key
 * whose inner VLAN is 0 finds that entry too, which is what who deletes one
 * relies on.
 */
#pragma once

#include "chip/basics.h"
#include "chip/changes.h"
#include "chip/outcome.h"

#include <cstddef>
#include <map>
#include <tuple>

namespace simswitch::chip
{

inline constexpr int ANY_INNER_VLAN = 65535;  ///< inner VLAN of a key that has none
inline constexpr int KEY_TYPE_PORT_OUTER = 8; ///< key: port and outer VLAN
inline constexpr int OUTER_TAG_REPLACE = 2;   ///< action on the outer tag: replace

/** What a translation matches. */
struct TranslationKey {
    int gport = 0;      ///< module port or trunk as a generic port
    int key_type = 0;   ///< which fields count, 8: port and outer VLAN
    int outer_vlan = 0; ///< outer VLAN of the frame
    int inner_vlan = 0; ///< inner VLAN of the frame, 65535 for none

    bool operator==(const TranslationKey &) const = default;
    friend bool operator<(const TranslationKey &a, const TranslationKey &b)
    {
        return std::tie(a.gport, a.key_type, a.outer_vlan, a.inner_vlan) <
               std::tie(b.gport, b.key_type, b.outer_vlan, b.inner_vlan);
    }
};

/** What a translation does. */
struct TranslationAction {
    std::uint16_t new_outer_vlan = 0; ///< the outer VLAN that the frame gets
    int ingress_if = 0;               ///< the L3 ingress object that it counts as
    int outer_tag_action = 0;         ///< what becomes of a single tag: 0 nothing, 2 replace
    int double_tag_action = 0;        ///< what becomes of the outer one of two tags

    bool operator==(const TranslationAction &) const = default;
};

std::string text(const TranslationKey &key);
std::string text(const TranslationAction &action);

/** The table of VLAN translations. */
class VlanTranslations
{
public:
    explicit VlanTranslations(std::size_t limit) : limit_(limit) {}

    /** Adds a translation. -4 for what check refuses; -6 when full; -8 when the key is taken. */
    Outcome create(const TranslationKey &key, const TranslationAction &action);
    /** Removes one. -7 when neither the key nor, for inner VLAN 0, its twin with 65535 is there. */
    Outcome remove(const TranslationKey &key);
    /** Replaces the action of a key. -7 when there is no such translation. */
    Outcome set(const TranslationKey &key, const TranslationAction &action);

    /** What create would refuse, for who queues the write. -4 for what is neither module port nor
     * trunk, and for VLANs out of 0..4095 other than an inner 65535. */
    static Outcome check(const TranslationKey &key);
    /** The action of a key, found as remove does; null when there is none. */
    const TranslationAction *find(const TranslationKey &key) const;
    std::size_t size() const { return table_.size(); }
    const std::map<TranslationKey, TranslationAction> &all() const { return table_; }

    // For who keeps a copy of the table across a restart.

    /** Empties the table. */
    void clear();
    /** Puts an entry of the copy in; a record that create would refuse is refused. */
    Outcome restore(const TranslationKey &id, const TranslationAction &record)
    {
        return create(id, record);
    }
    /** Which entries were written. */
    Changes<TranslationKey> &changes() { return changes_; }

private:
    using Map = std::map<TranslationKey, TranslationAction>;
    Map::const_iterator locate(const TranslationKey &key) const;

    std::size_t limit_;
    Map table_;
    Changes<TranslationKey> changes_;
};

} // namespace simswitch::chip
