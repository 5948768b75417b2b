/*
 * page_json.h: the data of a page as JSON, in the form that the page's scripts
 * read (assets/). Every text is made harmless, and the whole may stand in a
 * script element.
 */
#pragma once

#include "page/records.h"

#include <string>

namespace lab::page
{

/** A page's data: ASCII, without a `<`. */
std::string json_of(const Page &page);

} // namespace lab::page
