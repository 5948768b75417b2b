/*
 * tables.h: a configuration as tables of rows, the same for both forms of the
 * file: nested ("PORT": {"Ethernet0": {…}}) and flat ("PORT|Ethernet0": {…},
 * the row perhaps wrapped with "type" and "value"). Beside it: json_tree.h
 * parses the file, reader.h says what the rows mean.
 */
#pragma once

#include "config/json_tree.h"
#include "config/natural_order.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lab::config
{

/** A field of a row. */
struct Field {
    bool is_scalar = false;         ///< a text or a number
    bool is_list = false;           ///< a list
    std::string text;               ///< the scalar; for anything else its kind, "a list"
    std::vector<std::string> items; ///< of a list: its scalars; for anything else in it the kind
};

/** A row: its fields by name. */
struct Row {
    std::map<std::string, Field, std::less<>> fields;
    std::string not_a_row; ///< what stands there in place of an object, "a list"; empty for a row

    /** A field, null when the row doesn't have it. */
    const Field *find(std::string_view name) const;
};

/** Rows by key, in natural order of the keys. */
using Table = std::map<std::string, Row, NaturalLess>;

/** All tables of a file, and what was noticed while reading. */
struct Tables {
    std::map<std::string, Table, std::less<>> by_name;
    std::vector<std::string> notes; ///< lines that begin with the file's name

    /** A table; an empty one when the file doesn't have it. */
    const Table &table(std::string_view name) const;
};

/**
 * Makes tables of a parsed file.
 *
 * @param tree  the file
 * @param file  the name that messages begin with
 * @param read  the tables that will be asked for
 * @throws UnusableFile when the root is no object, or one of those tables isn't
 */
Tables make_tables(const JsonTree &tree, std::string_view file,
                   const std::vector<std::string_view> &read);

} // namespace lab::config
