/*
 * expect.cpp: see expect.h.
 */
#include "expect.h"

#include "config/names.h"
#include "session/words.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

// Read by AddressSanitizer at its start: an allocation of more than there is fails, as it does
// elsewhere.
extern "C" const char *__asan_default_options(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char *__asan_default_options()  // NOLINT(bugprone-reserved-identifier)
{
    return "allocator_may_return_null=1:max_allocation_size_mb=512";
}

namespace fuzz
{

void expect(bool holds, std::string_view sentence)
{
    if (!holds) {
        fmt::print(stderr, "fuzz: this doesn't hold: {}\n", sentence);
        std::abort();
    }
}

void expect_harmless(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        expect_one_line(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

void expect_one_line(std::string_view text)
{
    if (!lab::session::can_be_shown(text)) {
        fmt::print(stderr, "fuzz: {}\n", lab::config::in_quotes(text));
        expect(false, "what is shown can't stir a terminal");
    }
}

} // namespace fuzz
