/*
 * authors.h: of the requests that wrote an entry of the chip the one that says
 * most. explain.h asks for a frame's entries, explain/book.h for those of a
 * number.
 */
#pragma once

#include <string>
#include <vector>

namespace lab::packet
{

/**
 * Of several requests the one that is about the first of some interfaces, else
 * the first one.
 *
 * @param authors     the requests, "add Ethernet0", the first one first
 * @param interfaces  names, the most important one first; empty ones are nobody's
 * @param last_first  looks from the last request on: of what was missed, who put it there has less
 *                    to say than who took it away
 * @return empty for no request
 */
std::string author_of(std::vector<std::string> authors, const std::vector<std::string> &interfaces,
                      bool last_first = false);

} // namespace lab::packet
