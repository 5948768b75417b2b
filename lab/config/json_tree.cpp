/*
 * json_tree.cpp: see json_tree.h. The parser reports what it meets, event by
 * event; that is the only way to see keys that stand twice, and numbers as they
 * are written.
 */
#include "config/json_tree.h"

#include "config/shown.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unordered_map>

namespace lab::config
{

namespace
{

using Json = nlohmann::json;

constexpr std::size_t FILE_SIZE_MAX = 64U << 20U;

constexpr std::size_t REASON_MAX = 120;

// Root, table, row, the wrapped fields of a flat row, one to spare.
constexpr std::size_t DEPTH_KEPT = 5; // objects and lists

/** What is wrong, out of the parser's message: no position, no exception's name, no bytes of the
 * file. */
std::string plain_reason(const std::string &message)
{
    const std::size_t dash = message.rfind(" - ");
    const std::size_t bracket = message.find("] ");
    const std::string reason = dash != std::string::npos      ? message.substr(dash + 3)
                               : bracket != std::string::npos ? message.substr(bracket + 2)
                                                              : message;
    // A number of the file may stand in it, however long.
    const std::string plain = harmless(reason.substr(0, reason.find(';')));
    return plain.size() <= REASON_MAX ? plain : fmt::format("{}…", plain.substr(0, REASON_MAX));
}

/** Builds the tree from the parser's events. */
class TreeBuilder : public nlohmann::json_sax<Json>
{
public:
    bool null() override { return add(JsonNode::Kind::null, "null"); }
    bool boolean(bool value) override
    {
        return add(JsonNode::Kind::boolean, value ? "true" : "false");
    }
    bool number_integer(number_integer_t value) override
    {
        return add(JsonNode::Kind::number, fmt::to_string(value));
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        return add(JsonNode::Kind::number, fmt::to_string(value));
    }
    bool number_float(number_float_t, const string_t &written) override
    {
        return add(JsonNode::Kind::number, written);
    }
    bool string(string_t &value) override { return add(JsonNode::Kind::text, std::move(value)); }
    bool binary(binary_t &) override { return false; }
    bool start_object(std::size_t) override { return open(JsonNode::Kind::object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(JsonNode::Kind::list); }
    bool end_array() override { return close(); }
    bool key(string_t &name) override
    {
        levels_.back().key = std::move(name);
        return true;
    }
    bool parse_error(std::size_t position, const std::string &,
                     const nlohmann::detail::exception &error) override
    {
        error_position = position;
        error_reason = plain_reason(error.what());
        return false;
    }

    JsonTree tree;
    std::size_t error_position = 0;
    std::string error_reason;
    std::string beyond; ///< the limit at which parsing ended; empty when none was met

private:
    /** An object or list that isn't closed yet. */
    struct Level {
        bool is_list = false;
        std::unique_ptr<JsonNode> node;                      ///< null where it lies too deep
        std::unordered_map<std::string, std::size_t> places; ///< key to place in the members
        std::string key;                                     ///< the key whose value comes next
    };

    /** Counts a value; false for one too many. */
    bool count()
    {
        if (++values_ > JSON_VALUES_MAX) {
            beyond = fmt::format("it has more than {} values", JSON_VALUES_MAX);
        }
        return values_ <= JSON_VALUES_MAX;
    }

    bool open(JsonNode::Kind kind)
    {
        if (levels_.size() == JSON_DEPTH_MAX) {
            beyond = fmt::format("objects and lists lie more than {} deep", JSON_DEPTH_MAX);
            return false;
        }
        if (!count()) {
            return false;
        }
        Level level;
        level.is_list = kind == JsonNode::Kind::list;
        if (levels_.size() < DEPTH_KEPT) {
            level.node = std::make_unique<JsonNode>();
            level.node->kind = kind;
        }
        levels_.push_back(std::move(level));
        return true;
    }

    bool close()
    {
        std::unique_ptr<JsonNode> node = std::move(levels_.back().node);
        levels_.pop_back();
        place(node ? std::move(*node) : JsonNode{});
        return true;
    }

    bool add(JsonNode::Kind kind, std::string text)
    {
        if (!count()) {
            return false;
        }
        place({kind, std::move(text), {}});
        return true;
    }

    /** Puts a value where it belongs: the root, or a member of the open object. */
    void place(JsonNode value)
    {
        if (levels_.empty()) {
            tree.root = std::move(value);
            return;
        }
        Level &level = levels_.back();
        if (!level.node) {
            return;
        }
        auto &members = level.node->members;
        if (level.is_list) {
            members.push_back({{}, std::move(value)});
            return;
        }
        const auto [place, is_new] = level.places.emplace(level.key, members.size());
        if (is_new) {
            members.push_back({level.key, std::move(value)});
        } else {
            note_duplicate();
            members[place->second].value = std::move(value);
        }
    }

    /** Tells the path of the key whose value has just come. */
    void note_duplicate()
    {
        std::vector<std::string> path;
        for (const Level &level : levels_) {
            path.push_back(level.is_list ? "[]" : level.key);
        }
        tree.duplicates.push_back(std::move(path));
    }

    std::vector<Level> levels_;
    std::size_t values_ = 0;
};

/** Where a byte of a text stands. */
std::string place_in(std::string_view text, std::size_t position)
{
    // The parser counts the byte at which it stopped as read.
    const std::string_view before = text.substr(0, position > 0 ? position - 1 : 0);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::size_t line_start = before.rfind('\n') + 1; // 0 when there is none
    return fmt::format("line {}, column {}", lines + 1, before.size() - line_start + 1);
}

} // namespace

const JsonNode *JsonNode::find(std::string_view key) const
{
    const auto it = std::find_if(members.begin(), members.end(),
                                 [key](const JsonMember &member) { return member.key == key; });
    return it == members.end() ? nullptr : &it->value;
}

std::string_view JsonNode::kind_name() const
{
    switch (kind) {
    case Kind::object:
        return "an object";
    case Kind::list:
        return "a list";
    case Kind::text:
        return "a text";
    case Kind::number:
        return "a number";
    case Kind::boolean:
        return "a boolean";
    case Kind::null:
        break;
    }
    return "null";
}

JsonTree parse_json(std::string_view text, std::string_view file)
{
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
        throw UnusableFile(fmt::format("{}: the file is empty; a JSON object was expected", file));
    }
    TreeBuilder builder;
    if (!Json::sax_parse(text.begin(), text.end(), &builder)) {
        if (!builder.beyond.empty()) {
            throw UnusableFile(fmt::format("{}: cannot be read: {}", file, builder.beyond));
        }
        throw UnusableFile(fmt::format("{}: {}: cannot be read as JSON: {}", file,
                                       place_in(text, builder.error_position),
                                       builder.error_reason));
    }
    return std::move(builder.tree);
}

std::string read_file(const std::filesystem::path &path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"),
                                                                std::fclose);
    const auto unusable = [&path](std::string_view why) {
        return UnusableFile(fmt::format("{}: cannot be read: {}", path.string(), why));
    };
    if (!file) {
        throw unusable(std::strerror(errno));
    }
    struct stat status = {};
    if (fstat(fileno(file.get()), &status) == 0 && S_ISREG(status.st_mode) &&
        static_cast<std::uint64_t>(status.st_size) > FILE_SIZE_MAX) {
        throw unusable("it is larger than 64 MiB");
    }
    std::string text;
    std::array<char, 65536> block = {};
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), file.get())) {
        text.append(block.data(), got);
        if (text.size() > FILE_SIZE_MAX) {
            throw unusable("it is larger than 64 MiB");
        }
    }
    if (std::ferror(file.get()) != 0) {
        throw unusable(std::strerror(errno));
    }
    return text;
}

} // namespace lab::config
