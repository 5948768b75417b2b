/*
 * line_reader.cpp: see line_reader.h.
 */
#include "session/line_reader.h"

#include <streambuf>

namespace lab::session
{

std::optional<Line> LineReader::next()
{
    using Traits = std::istream::traits_type;
    std::streambuf *buffer = in_.rdbuf();
    Line line{++number_, {}};
    int byte = buffer->sbumpc();
    if (byte == Traits::eof()) {
        return std::nullopt;
    }
    for (; byte != Traits::eof() && byte != '\n'; byte = buffer->sbumpc()) {
        if (line.text.size() <= limit_) {
            line.text += Traits::to_char_type(byte);
        }
    }
    return line;
}

} // namespace lab::session
