/*
 * changes.h: which entries of a table were written, for who keeps a copy of
 * the chip elsewhere. Nothing is noted, and nothing costs anything, until
 * someone watches.
 */
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

namespace simswitch::chip
{

/** The keys of the entries that were written since they were taken last. */
template <class Key> class Changes
{
public:
    /** From now on keys are noted, and `any` becomes true with each. `any` must outlive this. */
    void watch(bool &any) { any_ = &any; }
    /** Notes that an entry was put in, changed or taken out. */
    void note(const Key &key)
    {
        if (any_ != nullptr) {
            keys_.push_back(key);
            *any_ = true;
        }
    }
    /** The keys in their order, each once; they stay until forget. */
    const std::vector<Key> &keys()
    {
        if (keys_.size() > 1) {
            std::sort(keys_.begin(), keys_.end());
            keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
        }
        return keys_;
    }
    void forget() { keys_.clear(); }

private:
    bool *any_ = nullptr;
    std::vector<Key> keys_;
};

} // namespace simswitch::chip
