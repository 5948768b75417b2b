/*
 * heap.cpp: mtrack_free, and malloc, calloc and free where an executable wraps them.
 */
#include "services/heap.h"

#include "journal/call.h"
#include "switch.h"

#include <services/system.h>

#include <cstdlib>
#include <numeric>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Switch;

extern "C" {
// The linker gives these only where the allocation is wrapped; else they are null.
__attribute__((weak)) void *__real_malloc(size_t size);
__attribute__((weak)) void *__real_calloc(size_t count, size_t size);
__attribute__((weak)) void __real_free(void *memory);
}

namespace simswitch::services
{

std::size_t Heap::live_bytes() const
{
    return std::accumulate(blocks_.begin(), blocks_.end(), std::size_t{0},
                           [](std::size_t sum, const auto &block) { return sum + block.second; });
}

void Heap::fail_allocation(std::uint64_t nth, bool forever)
{
    current_journal().arm({.function = "malloc", .nth = nth, .forever = forever});
}

} // namespace simswitch::services

namespace
{

/** True while this thread is inside the tracking itself, whose own blocks don't count. */
thread_local bool inside = false;

class Inside
{
public:
    Inside() { inside = true; }
    ~Inside() { inside = false; }
    Inside(const Inside &) = delete;
    Inside &operator=(const Inside &) = delete;
};

void *allocate(std::size_t size)
{
    return __real_malloc != nullptr ? __real_malloc(size) : std::malloc(size);
}

void *allocate_zeroed(std::size_t count, std::size_t size)
{
    return __real_calloc != nullptr ? __real_calloc(count, size) : std::calloc(count, size);
}

void release(void *memory)
{
    if (__real_free != nullptr) {
        __real_free(memory);
    } else {
        std::free(memory);
    }
}

/** The switch whose heap sees this allocation; null where none does. */
Switch *find_tracking_switch()
{
    Switch *current = inside ? nullptr : Switch::find_current();
    return current != nullptr && current->heap.tracking ? current : nullptr;
}

void *track(Switch &owner, void *memory, std::size_t size)
{
    if (memory != nullptr) {
        owner.heap.take(memory, size);
    }
    return memory;
}

const char *word_for(const void *memory)
{
    return memory == nullptr ? "null" : "record";
}

void journal_free(const char *function, const void *memory)
{
    const Call call(Layer::service, function, simswitch::Word{word_for(memory)});
}

} // namespace

extern "C" {

void mtrack_free(void *memory)
{
    const Inside guard;
    journal_free(__func__, memory);
    Switch::current().heap.give_back(memory);
    release(memory);
}

void *__wrap_malloc(size_t size)
{
    Switch *current = find_tracking_switch();
    if (current == nullptr) {
        return allocate(size);
    }
    const Inside guard;
    Call call(Layer::service, "malloc", size);
    return call.run_pointer([&] { return track(*current, allocate(size), size); });
}

void *__wrap_calloc(size_t count, size_t size)
{
    Switch *current = find_tracking_switch();
    if (current == nullptr) {
        return allocate_zeroed(count, size);
    }
    const Inside guard;
    Call call(Layer::service, "calloc", count, size);
    return call.run_pointer(
        [&] { return track(*current, allocate_zeroed(count, size), count * size); });
}

void __wrap_free(void *memory)
{
    Switch *current = inside ? nullptr : Switch::find_current();
    if (current != nullptr) {
        const Inside guard;
        const bool tracked = current->heap.give_back(memory);
        if (current->heap.tracking && (tracked || memory == nullptr)) {
            journal_free("free", memory);
        }
    }
    release(memory);
}

} // extern "C"
