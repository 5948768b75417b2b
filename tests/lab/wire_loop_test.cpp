/*
 * wire_loop_test.cpp: the event loop: descriptors, times, signals, exceptions.
 */
#include "wire/loop.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using lab::wire::Loop;
using std::chrono::milliseconds;

/** A pipe to write to and to watch. */
struct Pipe {
    Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
    ~Pipe()
    {
        close(ends[0]);
        close(ends[1]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    void put(char letter) const { EXPECT_EQ(write(ends[1], &letter, 1), 1); }
    char get() const
    {
        char letter = 0;
        EXPECT_EQ(read(ends[0], &letter, 1), 1);
        return letter;
    }
    std::array<int, 2> ends{};
};

TEST(WireLoop, CallsForEachDescriptorThatCanBeRead)
{
    const Pipe one;
    const Pipe two;
    Loop loop;
    std::string seen;
    loop.watch(one.ends[0], [&] {
        seen += one.get();
        two.put('b');
    });
    loop.watch(two.ends[0], [&] {
        seen += two.get();
        loop.quit();
    });
    one.put('a');
    loop.run();
    EXPECT_EQ(seen, "ab");
}

TEST(WireLoop, AWatchMayEndItself)
{
    const Pipe pipe;
    Loop loop;
    int calls = 0;
    loop.watch(pipe.ends[0], [&] {
        ++calls;
        loop.unwatch(pipe.ends[0]);
    });
    pipe.put('a'); // and stays there to be read
    loop.quit_at(Loop::now() + milliseconds(5));
    loop.run();
    EXPECT_EQ(calls, 1);
}

TEST(WireLoop, AnAlarmRingsOnceAndAtOnceWhenItsTimeHasPassed)
{
    Loop loop;
    std::vector<Loop::Time> rung;
    loop.on_alarm([&] {
        rung.push_back(Loop::now());
        if (rung.size() == 1) {
            loop.set_alarm(Loop::now() + milliseconds(3));
        } else {
            loop.quit_at(Loop::now() + milliseconds(3));
        }
    });
    loop.set_alarm(milliseconds(1));
    loop.run();
    ASSERT_EQ(rung.size(), 2U);
    EXPECT_GE(rung[1] - rung[0], milliseconds(2));
}

TEST(WireLoop, AnAlarmCanBeTakenBack)
{
    Loop loop;
    int rung = 0;
    loop.on_alarm([&] { ++rung; });
    loop.set_alarm(Loop::now() + milliseconds(1));
    loop.set_alarm(std::nullopt);
    loop.quit_at(Loop::now() + milliseconds(4));
    loop.run();
    EXPECT_EQ(rung, 0);
}

TEST(WireLoop, WhatACallbackThrowsComesOutOfRun)
{
    const Pipe pipe;
    Loop loop;
    loop.watch(pipe.ends[0], [] { throw std::runtime_error("broken"); });
    pipe.put('a');
    try {
        loop.run();
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "broken");
    }
}

TEST(WireLoop, EndsOnSignals)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Loop loop;
        loop.quit_on_signals();
        loop.on_alarm([signal] { kill(getpid(), signal); });
        loop.set_alarm(milliseconds(1));
        // If no signal came it would end by time.
        const auto late = Loop::now() + std::chrono::seconds(5);
        loop.quit_at(late);
        loop.run();
        EXPECT_LT(Loop::now(), late);
    }
}

} // namespace
