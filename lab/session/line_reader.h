/*
 * line_reader.h: reads a script line by line, however long its lines are.
 */
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>

namespace lab::session
{

/** A line of a script. */
struct Line {
    std::size_t number = 0; ///< from 1
    std::string text;       ///< without its line end; at most one byte more than the limit
};

/** Lines of a stream. Of a line over the limit one byte more than that is kept. */
class LineReader
{
public:
    /** @param in  the script; must outlive this */
    LineReader(std::istream &in, std::size_t limit) : in_(in), limit_(limit) {}

    /** The next line, a last one without a line end too; nothing at the end. */
    std::optional<Line> next();

private:
    std::istream &in_;
    std::size_t limit_;
    std::size_t number_ = 0;
};

} // namespace lab::session
