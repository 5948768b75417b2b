/*
 * recording.h: what the library calls, written down with all arguments.
 *
 * The platform that records is the null platform compiled with NULL_PLATFORM_RECORDS: each
 * function notes its call here. libc.cpp notes what the library has of libc and GLib. Nothing
 * is noted outside begin() and end().
 */
#pragma once

#include "arguments.h"

#include <cstdarg>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

namespace recording
{

/** An argument as it was at the call. */
struct NotedArgument {
    Kind kind = Kind::number;
    bool variadic = false;         /**< it stands behind a text with conversions */
    std::int64_t number = 0;       /**< a number, or a record's key */
    const void *pointer = nullptr; /**< it may be gone by now */
    std::size_t size = 0;          /**< of the record, in bytes */
    std::string bytes{};           /**< what was read: a record, or a text */
};

struct NotedCall {
    std::string function{};
    std::vector<NotedArgument> arguments{};
    const void *result = nullptr; /**< the pointer that it gave, if it gives one */
};

using Calls = std::vector<NotedCall>;

/** Begins to note calls. */
void begin();

/** Ends it. @return the calls since begin() */
Calls end();

/**
 * Objects that live as long as the program, so that their address is one at each call.
 *
 * @param objects  their addresses; the place in the list is the object's number
 */
void know(const std::vector<const void *> &objects);

/** @return the number of a known object; -1 for any other address */
int number_of(const void *pointer);

/**
 * Tells where two lists of calls part, which should be the same calls with the same arguments.
 *
 * @return the first difference in words; empty when there is none
 */
std::string difference(const Calls &expected, const Calls &seen);

/** Whether calls are noted now. */
bool is_noting();

void note_arguments(const char *function, std::initializer_list<Argument> arguments);

inline Argument argument_of(const Argument &argument)
{
    return argument;
}

template <class Number>
requires std::is_integral_v<Number> Argument argument_of(Number number)
{
    return {Kind::number, static_cast<std::int64_t>(number), nullptr, 0};
}

/** Notes a call. */
template <class... Arguments> void note(const char *function, const Arguments &...arguments)
{
    if (is_noting()) {
        note_arguments(function, {argument_of(arguments)...});
    }
}

void note_variadic(std::va_list rest, const char *format);

/** Notes a call with a text and its arguments. */
template <class... Arguments>
void note_text(std::va_list rest, const char *format, const char *function,
               const Arguments &...arguments)
{
    if (is_noting()) {
        note_arguments(function, {argument_of(arguments)...});
        note_variadic(rest, format);
    }
}

void note_result(const void *pointer);

/** Notes what the last call gives. */
template <class Object> Object *gives(Object *pointer)
{
    if (is_noting()) {
        note_result(pointer);
    }
    return pointer;
}

/** @return the last call noted; null when there is none */
const NotedCall *last_call();

} // namespace recording
