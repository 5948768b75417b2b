/*
 * line_reader.h: reads a script line by line, however long its lines are.
 */
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

namespace lab::session
{

/** The longest script that is read, in bytes: a line that never ends, ends here. */
inline constexpr std::size_t SCRIPT_MAX_BYTES = std::size_t{16} << 20U;

/** What is said of a longer one. */
inline constexpr std::string_view SCRIPT_TOO_LONG = "the script is longer than 16 MiB";

/** A line of a script. */
struct Line {
    std::size_t number = 0; ///< from 1
    std::string text;       ///< without its line end; at most one byte more than the limit
    bool is_beyond = false; ///< the script's limit is in it: nothing is read behind that
};

/** Lines of a stream. Of a line over the limit one byte more than that is kept. */
class LineReader
{
public:
    /**
     * @param in      the script; must outlive this
     * @param limit   bytes of a line
     * @param script  bytes of the script
     */
    LineReader(std::istream &in, std::size_t limit, std::size_t script = SCRIPT_MAX_BYTES)
        : in_(in), limit_(limit), left_(script)
    {
    }

    /** The next line, a last one without a line end too; nothing at the end. */
    std::optional<Line> next();

private:
    std::istream &in_;
    std::size_t limit_;
    std::size_t left_; ///< bytes that may be read yet
    std::size_t number_ = 0;
};

} // namespace lab::session
