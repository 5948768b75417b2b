/*
 * hardening_test.cpp: whether an optimised build of the shared library carries the
 * guards that it was built with: tables of functions that are filled at its load
 * and then read-only, no memory that is written and run, guarded stacks, and
 * printing that knows the size of its buffer. Other builds have none of them.
 */
#include "shipped/tool_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using rtifhal_test::lines_of;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using Names = std::set<std::string>;

/** What prints without knowing the size of its buffer, or the number of its arguments. */
const Names UNCHECKED = {"sprintf",  "snprintf", "vsprintf", "vsnprintf", "printf",
                         "vfprintf", "fprintf",  "syslog",   "vsyslog"};

class Hardening : public testing::Test
{
protected:
    void SetUp() override
    {
#ifndef RTIFHAL_HARDENED
        GTEST_SKIP() << "this build isn't hardened";
#endif
    }
};

/** Kind and flags of each segment, such as "GNU_STACK RW". */
std::vector<std::string> segments()
{
    std::vector<std::string> found;
    for (const std::string &line :
         lines_of(RTIFHAL_READELF " --segments --wide '" RTIFHAL_SHARED_LIBRARY "'")) {
        // "  LOAD  0x000000 0x... 0x... 0x01f4a0 0x01f4a0 R E 0x1000"
        std::istringstream fields(line);
        std::string kind;
        std::string field;
        std::string flags;
        fields >> kind;
        while (fields >> field) {
            if (field.find_first_not_of("RWE") == std::string::npos) {
                flags += field;
            }
        }
        if (!flags.empty()) {
            found.push_back(kind.append(" ").append(flags));
        }
    }
    return found;
}

/** The functions that the library takes from elsewhere, without their versions. */
Names imports()
{
    Names names;
    for (const std::string &line :
         lines_of(RTIFHAL_NM " -D --undefined-only --format=posix '" RTIFHAL_SHARED_LIBRARY "'")) {
        names.insert(line.substr(0, line.find_first_of("@ ")));
    }
    return names;
}

TEST_F(Hardening, TablesOfFunctionsAreFilledAtLoadAndReadOnly)
{
    EXPECT_THAT(segments(), Contains("GNU_RELRO R"));
    EXPECT_THAT(lines_of(RTIFHAL_READELF " --dynamic --wide '" RTIFHAL_SHARED_LIBRARY "'"),
                Contains(HasSubstr("BIND_NOW")));
}

TEST_F(Hardening, NothingIsWrittenAndRun)
{
    const std::vector<std::string> all = segments();
    EXPECT_THAT(all, IsSupersetOf({"LOAD RE", "LOAD RW", "GNU_STACK RW"}));
    for (const std::string &segment : all) {
        const std::string_view flags = std::string_view(segment).substr(segment.find(' '));
        EXPECT_FALSE(flags.find('W') != flags.npos && flags.find('E') != flags.npos) << segment;
    }
}

TEST_F(Hardening, StacksAreGuarded)
{
    EXPECT_THAT(imports(), Contains("__stack_chk_fail"));
}

TEST_F(Hardening, WhatPrintsKnowsItsBuffer)
{
    const Names all = imports();
    EXPECT_THAT(all, IsSupersetOf({"__snprintf_chk", "__vsnprintf_chk", "__syslog_chk"}));
    Names unchecked;
    std::set_intersection(all.begin(), all.end(), UNCHECKED.begin(), UNCHECKED.end(),
                          std::inserter(unchecked, unchecked.end()));
    EXPECT_EQ(unchecked, Names{});
}

} // namespace
