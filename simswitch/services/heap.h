/*
 * heap.h: the tracked heap: what the library allocates and whether it gives it
 * back.
 *
 * mtrack_free is always journaled. malloc, calloc and free are seen in an
 * executable that is linked with -Wl,--wrap=malloc,--wrap=calloc,--wrap=free
 * against the library's static archive, and only while Heap::tracking is on:
 *
 *     sw.heap.tracking = true;
 *     rtifhal_trident_add_l3port(&lif, 1);      // malloc(24) = record
 *
 * Then each allocation is journaled, and each free of a tracked block or of
 * null. A malloc is made to fail with Heap::fail_allocation, which is a fault
 * of the journal by the name "malloc". Releasing can't fail: a fault that
 * hits free or mtrack_free changes nothing.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace simswitch::services
{

/** The blocks that were handed out while the heap was tracked. */
class Heap
{
public:
    bool tracking = false; ///< allocations and frees are journaled and tracked

    /** Number of tracked blocks that were not released, by either free. */
    std::size_t live_blocks() const { return blocks_.size(); }
    /** Their sizes together, in bytes. */
    std::size_t live_bytes() const;
    /** Whether an address is a tracked block that was not released. */
    bool is_live(const void *block) const { return blocks_.contains(block); }

    /**
     * Makes a malloc of the current switch's library give null.
     *
     * @param nth      which of the tracked mallocs from now on, from 1
     * @param forever  that one and all after it
     */
    static void fail_allocation(std::uint64_t nth, bool forever = false);

    // For malloc and the two frees.
    void take(const void *block, std::size_t size) { blocks_[block] = size; }
    /** Forgets a block. Returns whether it was tracked. */
    bool give_back(const void *block) { return blocks_.erase(block) != 0; }

private:
    std::unordered_map<const void *, std::size_t> blocks_;
};

} // namespace simswitch::services
