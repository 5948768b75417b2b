/*
 * json_tree.h: a JSON file as it stands, before anybody asks what it means:
 * objects in the file's order, numbers as they are written, and the keys that
 * stand twice. tables.h makes tables and rows of it.
 */
#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lab::config
{

/** A file that can't be used at all; the text is one line that begins with the file's name. */
class UnusableFile : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct JsonMember;

/** A JSON value. Of what lies too deep to be part of a row only the kind is kept. */
struct JsonNode {
    enum class Kind { object, list, text, number, boolean, null };

    Kind kind = Kind::null;
    std::string text;                ///< a text; a number or boolean as the file writes it
    std::vector<JsonMember> members; ///< of an object, each key once; of a list, without keys

    /** The member of a key, null when there is none. */
    const JsonNode *find(std::string_view key) const;
    /** "an object", "a list", "a text", … */
    std::string_view kind_name() const;
};

/** A member of an object. */
struct JsonMember {
    std::string key;
    JsonNode value;
};

/** A file's root and what stands twice in it. */
struct JsonTree {
    JsonNode root;
    std::vector<std::vector<std::string>> duplicates; ///< path of each key that came again
};

/** The deepest place in a file: objects and lists around it. */
inline constexpr std::size_t JSON_DEPTH_MAX = 1000;
/** The most values in a file: objects, lists, texts, numbers and all others together. */
inline constexpr std::size_t JSON_VALUES_MAX = 200000;

/**
 * Parses a text. Of a key that stands twice the last value counts.
 *
 * @param text  the JSON text
 * @param file  the name that messages begin with
 * @throws UnusableFile where it is no JSON, with line and column; when it goes beyond the limits
 */
JsonTree parse_json(std::string_view text, std::string_view file);

/**
 * Reads a file whole.
 *
 * @param path  the file, at most 64 MiB
 * @throws UnusableFile when it isn't there, can't be read or is too large
 */
std::string read_file(const std::filesystem::path &path);

} // namespace lab::config
