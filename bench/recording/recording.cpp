/*
 * recording.cpp: see recording.h.
 */
#include "recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace recording
{

namespace
{

bool noting = false;
Calls noted;
std::unordered_map<const void *, int> known;

NotedArgument noted_text(const char *string)
{
    NotedArgument argument{.kind = Kind::text, .pointer = string};
    if (string != nullptr) {
        argument.bytes = string;
    }
    return argument;
}

NotedArgument noted_argument(const Argument &argument)
{
    if (argument.kind == Kind::text) {
        return noted_text(static_cast<const char *>(argument.pointer));
    }
    NotedArgument made{.kind = argument.kind,
                       .number = argument.number,
                       .pointer = argument.pointer,
                       .size = argument.size};
    const bool is_read = argument.kind == Kind::input || argument.kind == Kind::value ||
                         argument.kind == Kind::keyed;
    if (is_read && argument.pointer != nullptr) {
        made.bytes.assign(static_cast<const char *>(argument.pointer), argument.size);
    }
    return made;
}

/** Whether two pointers that are only passed on stand for the same thing. */
bool is_same_handle(const NotedArgument &expected, const NotedArgument &seen)
{
    return (expected.pointer == nullptr) == (seen.pointer == nullptr) &&
           number_of(expected.pointer) == number_of(seen.pointer);
}

bool is_same(const NotedArgument &expected, const NotedArgument &seen)
{
    if (expected.kind != seen.kind || expected.size != seen.size) {
        return false;
    }
    switch (expected.kind) {
    case Kind::number:
    case Kind::keyed:
    case Kind::code:
        return expected.number == seen.number;
    case Kind::text:
    case Kind::input:
    case Kind::value:
        return (expected.pointer == nullptr) == (seen.pointer == nullptr) &&
               expected.bytes == seen.bytes;
    case Kind::handle:
        return is_same_handle(expected, seen);
    default:
        return true;
    }
}

} // namespace

void begin()
{
    noted.clear();
    noting = true;
}

Calls end()
{
    noting = false;
    return std::move(noted);
}

bool is_noting()
{
    return noting;
}

void know(const std::vector<const void *> &objects)
{
    known.clear();
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (objects[i] != nullptr) {
            known.try_emplace(objects[i], static_cast<int>(i));
        }
    }
}

int number_of(const void *pointer)
{
    const auto found = known.find(pointer);
    return found != known.end() ? found->second : -1;
}

void note_arguments(const char *function, std::initializer_list<Argument> arguments)
{
    NotedCall call{.function = function};
    for (const Argument &argument : arguments) {
        call.arguments.push_back(noted_argument(argument));
    }
    noted.push_back(std::move(call));
}

void note_variadic(std::va_list rest, const char *format)
{
    std::vector<NotedArgument> &arguments = noted.back().arguments;
    for (const char *at = std::strchr(format, '%'); at != nullptr; at = std::strchr(at, '%')) {
        at += 1 + std::strspn(at + 1, " +-#0123456789.");
        NotedArgument argument;
        if (*at == 's') {
            argument = noted_text(va_arg(rest, const char *));
        } else if (*at == 'p') {
            argument = {.kind = Kind::handle, .pointer = va_arg(rest, const void *)};
        } else if (std::strchr("dixuc", *at) != nullptr && *at != '\0') {
            argument.number = va_arg(rest, int);
        } else {
            ++at;
            continue;
        }
        argument.variadic = true;
        arguments.push_back(std::move(argument));
        ++at;
    }
}

void note_result(const void *pointer)
{
    noted.back().result = pointer;
}

const NotedCall *last_call()
{
    return noted.empty() ? nullptr : &noted.back();
}

std::string difference(const Calls &expected, const Calls &seen)
{
    const std::size_t shorter = std::min(expected.size(), seen.size());
    for (std::size_t i = 0; i < shorter; ++i) {
        if (expected[i].function != seen[i].function) {
            return fmt::format("call {}: {} expected, {} seen", i, expected[i].function,
                               seen[i].function);
        }
        const auto &wanted = expected[i].arguments;
        const auto &given = seen[i].arguments;
        if (wanted.size() != given.size()) {
            return fmt::format("call {}, {}: {} arguments expected, {} seen", i,
                               expected[i].function, wanted.size(), given.size());
        }
        for (std::size_t k = 0; k < wanted.size(); ++k) {
            if (!is_same(wanted[k], given[k])) {
                return fmt::format("call {}, {}: argument {} differs", i, expected[i].function, k);
            }
        }
    }
    return expected.size() == seen.size()
               ? std::string()
               : fmt::format("{} calls expected, {} seen", expected.size(), seen.size());
}

} // namespace recording
