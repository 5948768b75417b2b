/*
 * changes.h: which entries of a table were written, for who keeps a copy of
 * the chip elsewhere. No key is noted until someone watches, and nobody is told
 * of a write until someone listens, as the chip does for authors.h. How often a
 * table was written is counted always: what is derived from it is made anew when
 * the count has changed.
 */
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace simswitch::chip
{

/** What a write did to an entry. */
enum class Write {
    put, ///< it was put in, or changed
    end  ///< it was taken out
};

/** The keys of the entries that were written since they were taken last. */
template <class Key> class Changes
{
public:
    /** From now on keys are noted, and `any` becomes true with each. `any` must outlive this. */
    void watch(bool &any) { any_ = &any; }
    /** From now on each write is told as it happens; one listener at a time. */
    void listen(std::function<void(const Key &, Write)> listener)
    {
        listener_ = std::move(listener);
    }
    /** Notes that an entry was put in or changed. */
    void note(const Key &key) { take(key, Write::put); }
    /** Notes that an entry was taken out. */
    void note_end(const Key &key) { take(key, Write::end); }
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
    void take(const Key &key, Write write)
    {
        ++generation_;
        if (any_ != nullptr) {
            keys_.push_back(key);
            *any_ = true;
        }
        if (listener_) {
            listener_(key, write);
        }
    }

    bool *any_ = nullptr;
    std::uint64_t generation_ = 0;
    std::vector<Key> keys_;
    std::function<void(const Key &, Write)> listener_;
};

} // namespace simswitch::chip
