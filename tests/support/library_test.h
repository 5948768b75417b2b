/*
 * library_test.h: the fixture of the library's tests: a fresh embedded switch
 * and a library in its load-time state for each test, and comparisons of the
 * whole list of platform calls and of messages.
 *
 * lif.h has builders of routed interfaces.
 */
#pragma once

#include "support/load_time_state.h"

#include "switch.h"

#include "rtifhal_trident.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rtifhal_test
{

using simswitch::chip::Kind;

/** A message of the library: its level, the function that it names, its text. */
struct Message {
    int level;
    std::string function;
    std::string text;

    bool operator==(const Message &) const = default;
};

/** "104 function text" with line ends made visible. */
std::ostream &operator<<(std::ostream &stream, const Message &message);

/** A trace message, level 104. */
Message trace(std::string function, std::string text);
/** An error report, level 102. */
Message report(std::string function, std::string text);

/**
 * A test with a switch of its own. `start()` begins the stretch that calls(),
 * messages() and the expectations look at; it is also called by SetUp.
 */
class LibraryTest : public ::testing::Test
{
protected:
    explicit LibraryTest(const simswitch::Options &options = {});

    /** Forgets the calls and messages so far. */
    void start();

    /** Platform calls since start(), the trace sinks left out: "name(args) = result [outputs]". */
    std::vector<std::string> calls() const;
    /** Those of them whose function name is one of `functions`. */
    std::vector<std::string> calls_of(const std::vector<std::string> &functions) const;
    /** All messages since start(). */
    std::vector<Message> messages() const;
    /** Those of level 102. */
    std::vector<Message> reports() const;

    /** The whole ordered list of calls since start() is this one. */
    void expect_calls(const std::vector<std::string> &expected) const;
    /** The whole ordered list of messages since start() is this one. */
    void expect_messages(const std::vector<Message> &expected) const;
    /** The whole ordered list of level-102 messages since start() is this one. */
    void expect_reports(const std::vector<Message> &expected) const;

    /** Lets the n-th call of a function from now on fail with a code (a pointer: null). */
    void fail(const std::string &function, int code, std::uint64_t nth = 1);
    /** Lets each call of a function fail whose printed arguments are `arguments`. */
    void fail_when(const std::string &function, const std::string &arguments, int code);

    simswitch::Switch sw;
};

/** The same on a Trident2. */
class Trident2Test : public LibraryTest
{
protected:
    Trident2Test() : LibraryTest({.chip = Kind::trident2}) {}
};

} // namespace rtifhal_test
