/*
 * tables.cpp: see tables.h.
 */
#include "config/tables.h"

#include "config/names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace lab::config
{

namespace
{

/** The row itself where a dump has wrapped it: {"expireat": …, "type": "hash", "value": {…}}. */
const JsonNode &unwrapped(const JsonNode &node)
{
    const JsonNode *value = node.find("value");
    const bool wrapped =
        value != nullptr && node.find("type") != nullptr &&
        (value->kind == JsonNode::Kind::object || node.find("expireat") != nullptr);
    return wrapped ? *value : node;
}

bool is_scalar(const JsonNode &node)
{
    return node.kind == JsonNode::Kind::text || node.kind == JsonNode::Kind::number;
}

/** A scalar as it is, of anything else its kind. */
std::string text_or_kind(const JsonNode &node)
{
    return is_scalar(node) ? node.text : std::string(node.kind_name());
}

Field make_field(const JsonNode &node)
{
    Field field;
    field.is_scalar = is_scalar(node);
    field.is_list = node.kind == JsonNode::Kind::list;
    field.text = text_or_kind(node);
    if (field.is_list) {
        for (const auto &item : node.members) {
            field.items.push_back(text_or_kind(item.value));
        }
    }
    return field;
}

Row make_row(const JsonNode &node)
{
    Row row;
    if (node.kind != JsonNode::Kind::object) {
        row.not_a_row = node.kind_name();
        return row;
    }
    for (const auto &[name, value] : node.members) {
        row.fields[name] = make_field(value);
    }
    // A row without fields.
    if (const Field *null = row.find("NULL"); null != nullptr && null->text == "NULL") {
        row.fields.erase("NULL");
    }
    return row;
}

/** What stands twice, in words. */
std::string duplicate_note(const std::vector<std::string> &path, std::string_view file)
{
    std::string table = path[0];
    std::vector<std::string> rest(path.begin() + 1, path.end());
    if (const std::size_t bar = table.find('|'); bar != std::string::npos) {
        rest.insert(rest.begin(), table.substr(bar + 1));
        table.resize(bar);
        // The fields of a wrapped row.
        if (rest.size() > 2 && rest[1] == "value") {
            rest.erase(rest.begin() + 1);
        }
    }
    if (rest.empty()) {
        return fmt::format("{}: the table {} stands twice; the last one counts", file,
                           in_quotes(table));
    }
    const std::string row = in_quotes(rest[0]);
    if (rest.size() == 1) {
        return fmt::format("{}: {} {}: the row stands twice; the last one counts", file, table,
                           row);
    }
    rest.erase(rest.begin());
    return fmt::format("{}: {} {}: the key {} stands twice; the last one counts", file, table, row,
                       in_quotes(fmt::format("{}", fmt::join(rest, "."))));
}

/** Puts a row in; where both forms have it, the later one counts. */
void add_row(Tables &tables, const std::string &table, const std::string &key, const JsonNode &node,
             std::string_view file)
{
    if (!tables.by_name[table].insert_or_assign(key, make_row(node)).second) {
        tables.notes.push_back(duplicate_note({table, key}, file));
    }
}

} // namespace

const Field *Row::find(std::string_view name) const
{
    const auto it = fields.find(name);
    return it == fields.end() ? nullptr : &it->second;
}

const Table &Tables::table(std::string_view name) const
{
    static const Table none;
    const auto it = by_name.find(name);
    return it == by_name.end() ? none : it->second;
}

Tables make_tables(const JsonTree &tree, std::string_view file,
                   const std::vector<std::string_view> &read)
{
    if (tree.root.kind != JsonNode::Kind::object) {
        throw UnusableFile(fmt::format("{}: an object of tables was expected, not {}", file,
                                       tree.root.kind_name()));
    }
    Tables tables;
    for (const auto &path : tree.duplicates) {
        tables.notes.push_back(duplicate_note(path, file));
    }
    for (const auto &[name, node] : tree.root.members) {
        if (const std::size_t bar = name.find('|'); bar != std::string::npos) {
            add_row(tables, name.substr(0, bar), name.substr(bar + 1), unwrapped(node), file);
        } else if (node.kind == JsonNode::Kind::object) {
            for (const auto &[key, row] : node.members) {
                add_row(tables, name, key, row, file);
            }
        } else if (std::find(read.begin(), read.end(), name) != read.end()) {
            throw UnusableFile(fmt::format("{}: {}: an object of rows was expected, not {}", file,
                                           name, node.kind_name()));
        }
    }
    return tables;
}

} // namespace lab::config
