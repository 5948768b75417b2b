/*
 * arguments.h: how the functions of the null platform name their arguments, so that calls can
 * be written down and made again. A number stands as it is.
 *
 * calls.h has the mark that takes them; recording.h writes them down.
 */
#pragma once

#include <cstddef>
#include <cstdint>

namespace recording
{

/** What an argument is to the function. */
enum class Kind : std::uint8_t {
    number, /**< a number */
    text,   /**< a C string, or null */
    input,  /**< a record that is read, by pointer */
    output, /**< memory that is written */
    keyed,  /**< a record that is written, found by a number in it */
    value,  /**< a record by value */
    handle, /**< a pointer that is only passed on, or that belongs to the platform */
    code,   /**< a function of the caller's */
};

/** An argument. The record behind the pointer isn't copied. */
struct Argument {
    Kind kind = Kind::number;
    std::int64_t number = 0; /**< the number; of a keyed record its key */
    const void *pointer = nullptr;
    std::size_t size = 0; /**< of the record in bytes */
};

/** A C string, or null. */
inline Argument text(const char *string)
{
    return {Kind::text, 0, string, 0};
}

/** Bytes that are read. */
inline Argument in(const void *bytes, std::size_t size)
{
    return {Kind::input, 0, bytes, size};
}

/** A record that is read. */
template <class Record> Argument in(const Record *record)
{
    return in(record, sizeof(Record));
}

/** A record that is written. */
template <class Record> Argument out(const Record *record)
{
    return {Kind::output, 0, record, sizeof(Record)};
}

/** Memory that is written. */
inline Argument out(const void *memory, std::size_t size)
{
    return {Kind::output, 0, memory, size};
}

/** A record that is written, of which only the key is read. */
template <class Record> Argument keyed(const Record *record, std::int64_t key)
{
    return {Kind::keyed, key, record, sizeof(Record)};
}

/** A record by value. */
template <class Record> Argument value(const Record &record)
{
    return {Kind::value, 0, &record, sizeof(Record)};
}

/** A pointer that is only passed on, or that belongs to the platform. */
inline Argument handle(const void *pointer)
{
    return {Kind::handle, 0, pointer, 0};
}

/** A function of the caller's, which the platform may call. */
template <class Result, class... Parameters> Argument code(Result (*function)(Parameters...))
{
    return {Kind::code, function != nullptr ? 1 : 0, nullptr, 0};
}

/** Arguments at which nobody looks; not defined. */
template <class... Arguments> int ignored(const Arguments &...arguments);

} // namespace recording
