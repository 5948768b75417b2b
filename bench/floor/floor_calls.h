/*
 * floor_calls.h: the platform calls of each request as straight calls: what no library above
 * the same platform could do without.
 *
 * write_calls.cpp makes them from what the library calls, one list for each chip, in the order
 * in which cycles() has the requests. Numbers and texts stand in the code; a record that is
 * read is a constant; what the platform writes goes to one piece of scratch memory; results
 * are kept only where a later call needs them.
 */
#pragma once

#include <cstddef>

namespace floor_bench
{

/** A request's calls. */
struct FloorRequest {
    const char *name;
    std::size_t calls; /**< of the platform, libc's and GLib's among them */
    void (*run)();
};

/** A chip's requests. */
struct FloorRequests {
    const FloorRequest *first;
    std::size_t count;
};

extern const FloorRequests floor_of_trident;
extern const FloorRequests floor_of_trident2;

/** Room for the objects of a world. */
inline constexpr std::size_t OBJECTS = 128;

/** The addresses that World::objects() gave, for the calls that name one of them. */
extern const void *objects[OBJECTS];

/** Where the platform writes to. */
inline constexpr std::size_t SCRATCH_SIZE = 4096;
extern unsigned char scratch[SCRATCH_SIZE];

/** A record or an object by its address, as whatever pointer a function takes. */
struct At {
    const void *address;

    template <class Object> operator Object *() const
    {
        return static_cast<Object *>(const_cast<void *>(address));
    }
};

/** A record by its address, as a value of whatever type a function takes. */
struct Copy {
    const void *address;

    template <class Record> operator Record() const
    {
        return *static_cast<const Record *>(address);
    }
};

/** Stands for a function that the platform would call back. */
inline void ignored_visit(void *, void *, void *) {}

} // namespace floor_bench
