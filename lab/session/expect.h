/*
 * expect.h: the checks of a script: a cell of a table, a number of rows, what
 * the last command asked of the platform.
 *
 *     expect vlan 100 flags = 0x8          a cell; numbers are compared as numbers
 *     expect iif Ethernet0 = 5             the first column
 *     expect port Ethernet0 control 8 = 1  a control by its number
 *     expect station count = 2             rows; with a key, the rows of that key
 *     expect vlan 100, expect no vlan 300  whether there is such a row
 *     expect packet fate = sent            the last packet, which needs no key
 *     expect code = 0                      what the library returned
 *     expect call "bcm_vlan_create(0, 4"   a call that begins so, or of a function
 *     expect message "Set To Sup"          a message that holds this
 *
 * Each may have != in place of =. docs/commands.md tells users of them.
 */
#pragma once

#include "session/last_request.h"
#include "session/scene.h"
#include "session/words.h"

#include <cstddef>
#include <string>
#include <vector>

namespace lab::session
{

/**
 * Checks an expectation.
 *
 * @param words  what stands behind `expect`
 * @param scene  the switch
 * @param last   the last command's requests
 * @throws UsageError for one that makes no sense, Unmet for one that isn't met
 */
void check(const Words &words, const Scene &scene, const LastRequest &last);

/**
 * What was seen in place of what was expected: the first lines, each on a line of its own, and
 * how many more there are.
 */
std::string first_lines(const std::vector<std::string> &lines, std::size_t most);

/** Whether it looks at what the last command came to: its code or a message. */
bool looks_at_outcome(const Words &words);

/** The words that may stand behind `expect`. */
std::vector<std::string> expect_subjects();

/** The words that may follow these: fields, keys, "=", of a subject. */
std::vector<std::string> expect_continuations(const Words &words, const Scene &scene);

} // namespace lab::session
