/*
 * default_route_values.h: the values in the JSON form of default routes, each
 * refused with its name and what was expected. default_route_reader.h makes
 * routes of them.
 */
#pragma once

#include "config/json_tree.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::config
{

// Each of these throws BadRow, of row_checks.h, for what isn't as it should be.

/** Refuses what is no object, and keys that aren't known. */
void check_object(const JsonNode &node, const std::vector<std::string> &keys);

/** The value of a key that must be there. */
const JsonNode &need(const JsonNode &object, std::string_view key);

/** The items of what must be a list. @param name  of the list, for messages */
const std::vector<JsonMember> &need_list(const JsonNode &node, std::string_view name);

/** Reads 12, -1 or 0x0c; nothing for anything else. */
std::optional<std::int64_t> parse_integer(std::string_view text);

/** What stands in a number or text. @param expected  what it should have been, for messages */
const std::string &scalar_text(const JsonNode &node, std::string_view name,
                               std::string_view expected = "a number");

/** A number of a range, or such a text, in hex too. */
std::int64_t number_in(const JsonNode &node, std::string_view name, std::int64_t low,
                       std::int64_t high);

/** A number of 32 bits. */
std::uint32_t word(const JsonNode &node, std::string_view name);

/** A number of the SDK's type int; in hex, its 32 bits. */
int signed_word(const JsonNode &node, std::string_view name);

} // namespace lab::config
