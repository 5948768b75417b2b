/*
 * columns.h: how the values of the chip's records stand in the columns of a
 * database: numbers as numbers, all else as text that people can read.
 *
 *   MAC address             00:11:22:33:44:55
 *   set of ports            {0,5,9-12}
 *   address or mask         32 hex digits
 *   states by port          one digit a port from port 0, the zeros at the end left out
 *   words, lists of ids     [1,2]; nothing but zeros: []
 *   values by number        {"8":1,"67":3}
 *   trunk members           [[flags,gport,scaling,weight],…]
 *   what may be missing     empty text
 *
 * record_columns.h says which columns a record has.
 */
#pragma once

#include "chip/chip.h"
#include "services/sqlite.h"

#include <fmt/format.h>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace simswitch::state
{

/** A value that no column of its kind can hold. */
class BadValue : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Each value as text, and the other way: BadValue for a text that to_text doesn't give.
std::string to_text(const chip::Mac &mac);
std::string to_text(const chip::PortSet &ports);
std::string to_text(const std::array<std::uint8_t, 16> &bytes);
std::string to_text(const std::array<std::uint8_t, chip::LAST_PORT + 1> &states);
std::string words_text(std::span<const std::uint32_t> words);
template <std::size_t size> std::string to_text(const std::array<std::uint32_t, size> &words)
{
    return words_text(words);
}
std::string to_text(const std::vector<int> &ids);
std::string to_text(const std::vector<std::uint32_t> &ids);
std::string to_text(const std::set<int> &ids);
std::string to_text(const std::map<int, int> &values);
std::string to_text(const std::map<int, chip::PortSet> &values);
std::string to_text(const std::vector<chip::TrunkMember> &members);
std::string to_text(const std::optional<chip::InPorts> &in_ports);
std::string to_text(const std::optional<bool> &value);

void from_text(const std::string &text, chip::Mac &mac);
void from_text(const std::string &text, chip::PortSet &ports);
void from_text(const std::string &text, std::array<std::uint8_t, 16> &bytes);
void from_text(const std::string &text, std::array<std::uint8_t, chip::LAST_PORT + 1> &states);
void read_words(const std::string &text, std::span<std::uint32_t> words);
template <std::size_t size>
void from_text(const std::string &text, std::array<std::uint32_t, size> &words)
{
    read_words(text, words);
}
void from_text(const std::string &text, std::vector<int> &ids);
void from_text(const std::string &text, std::vector<std::uint32_t> &ids);
void from_text(const std::string &text, std::set<int> &ids);
void from_text(const std::string &text, std::map<int, int> &values);
void from_text(const std::string &text, std::map<int, chip::PortSet> &values);
void from_text(const std::string &text, std::vector<chip::TrunkMember> &members);
void from_text(const std::string &text, std::optional<chip::InPorts> &in_ports);
void from_text(const std::string &text, std::optional<bool> &value);

/** A number or an enumeration, which stands in its column as a number. */
template <class T>
concept Number = std::is_integral_v<T> || std::is_enum_v<T>;

/** Gathers the names and types of columns. */
class ColumnNames
{
public:
    template <class T> void operator()(const char *name, const T &)
    {
        names.emplace_back(name);
        definitions.push_back(fmt::format("{} {} NOT NULL", name, Number<T> ? "INTEGER" : "TEXT"));
    }
    std::vector<std::string> names;
    std::vector<std::string> definitions; ///< "vlan INTEGER NOT NULL"
};

/** Binds values to the parameters of a statement. */
class ColumnWriter
{
public:
    explicit ColumnWriter(services::sqlite::Statement &statement) : statement_(statement) {}
    template <class T> void operator()(const char *, const T &value)
    {
        if constexpr (Number<T>) {
            statement_.bind(static_cast<std::int64_t>(value));
        } else {
            statement_.bind(std::string_view(to_text(value)));
        }
    }

private:
    services::sqlite::Statement &statement_;
};

/** Reads values from the present row of a statement. */
class ColumnReader
{
public:
    explicit ColumnReader(const services::sqlite::Statement &statement) : statement_(statement) {}
    template <class T> void operator()(const char *name, T &value)
    {
        if constexpr (Number<T>) {
            const std::int64_t number = statement_.integer(column_++);
            value = static_cast<T>(number);
            if (static_cast<std::int64_t>(value) != number) {
                throw BadValue(fmt::format("{} {} does not fit", name, number));
            }
        } else {
            const std::string text = statement_.text(column_++);
            try {
                from_text(text, value);
            } catch (const BadValue &) {
                throw BadValue(fmt::format("{} \"{}\" makes no sense", name, text));
            }
        }
    }

private:
    const services::sqlite::Statement &statement_;
    int column_ = 0;
};

} // namespace simswitch::state
