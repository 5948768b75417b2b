/*
 * changes.h: which entries of a table were written, for who keeps a copy of
 * the chip elsewhere. No key is noted until someone watches. How often a table
 * was written is counted always: what is derived from it is made anew when the
 * count has changed.
 */
#pragma once

#include <algorithm>
#include <cstdint>
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
        ++generation_;
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
    /** How many writes there were, watched or not. */
    std::uint64_t generation() const { return generation_; }

private:
    bool *any_ = nullptr;
    std::uint64_t generation_ = 0;
    std::vector<Key> keys_;
};

} // namespace simswitch::chip
