/*
 * up_many_test.cpp: thousands of mixed interfaces at once: all of them come up
 * and back, what is shown doesn't depend on what is kept meanwhile, and one
 * interface of thousands takes no more than one of hundreds.
 */
#include "mixed_configuration.h"
#include "up_run.h"

#include "commands/restart.h"
#include "simswitch/allocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>

#ifdef RTIFHAL_WITH_SANITIZER
// Of the sanitizers' interface; g++ comes without the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*malloc_hook)(const volatile void *,
                                                                             std::size_t),
                                                         void (*free_hook)(const volatile void *));
#endif

namespace lab_test
{

namespace
{

using lab::commands::UpOptions;
using simswitch::chip::Kind;
using testing::HasSubstr;

#ifdef RTIFHAL_WITH_SANITIZER

std::size_t taken = 0;

void count_taken(const volatile void * /*memory*/, std::size_t /*size*/)
{
    ++taken;
}

void ignore_freed(const volatile void * /*memory*/) {}

/** How often the program has allocated, from the first question on. */
std::size_t allocations()
{
    static const int installed =
        __sanitizer_install_malloc_and_free_hooks(count_taken, ignore_freed);
    EXPECT_GT(installed, 0);
    return taken;
}

#else

std::size_t allocations()
{
    return simswitch::chip::pipeline::allocations();
}

#endif

/** What a command printed, and its exit code. */
struct Printed {
    int code;
    std::string text;
};

class UpMany : public UpTest
{
protected:
    /** `rtif up` as the command line runs it: it keeps no more than it is asked for. */
    Printed up(std::size_t interfaces, Kind chip, UpOptions options = {})
    {
        rtifhal_test::reset_library();
        options.config = folder.path / "mixed.json";
        options.chip = chip;
        std::ofstream(options.config) << mixed_configuration(interfaces, chip);
        std::ostringstream out;
        const int code = lab::commands::up(options, out);
        return {code, out.str()};
    }

    /** Allocations of an up, for each interface. */
    double allocations_each(std::size_t interfaces)
    {
        const std::size_t before = allocations();
        EXPECT_EQ(up(interfaces, Kind::trident2).code, 0);
        return static_cast<double>(allocations() - before) / static_cast<double>(interfaces);
    }
};

} // namespace

TEST_F(UpMany, AllThatTheMixedConfigurationHasComesUp)
{
    const Printed trident = up(3400, Kind::trident);
    EXPECT_EQ(trident.code, 0);
    EXPECT_THAT(trident.text, HasSubstr("\n3400 interfaces: 3400 up, 0 failed; "));
    EXPECT_THAT(trident.text, HasSubstr("; 0 rows not taken\n"));
    const Printed trident2 = up(7000, Kind::trident2);
    EXPECT_EQ(trident2.code, 0);
    EXPECT_THAT(trident2.text, HasSubstr("\n7000 interfaces: 7000 up, 0 failed; "));
    EXPECT_THAT(trident2.text, HasSubstr("; 0 rows not taken\n"));
}

TEST_F(UpMany, WhatIsKeptMeanwhileShowsNowhere)
{
    for (const bool json : {false, true}) {
        const Printed kept_errors =
            up(300, Kind::trident2, {.json = json, .then_down = true, .view = {}});
        simswitch::Switch keeps_all({.chip = Kind::trident2});
        rtifhal_test::reset_library();
        std::ostringstream out;
        const int code = lab::commands::up_on(
            keeps_all,
            {.config = folder.path / "mixed.json", .json = json, .then_down = true, .view = {}},
            out);
        EXPECT_EQ(kept_errors.code, code);
        EXPECT_EQ(kept_errors.text, out.str());
    }
}

TEST_F(UpMany, RestoredNothingIsWrittenToTheChip)
{
    const std::filesystem::path state = folder.path / "state";
    ASSERT_EQ(up(1000, Kind::trident2, {.state_dir = state, .view = {}}).code, 0);
    rtifhal_test::reset_library();
    std::ostringstream out;
    EXPECT_EQ(lab::commands::restart({.state_dir = state, .view = {}}, out), 0);
    EXPECT_THAT(out.str(), HasSubstr("restore: "));
    EXPECT_THAT(out.str(), HasSubstr(" stored interfaces, 0 chip writes\n"));
}

/** A table that is copied for each interface, or a list that grows with all of them, shows here. */
TEST_F(UpMany, OneOfThousandsTakesNoMoreAllocationsThanOneOfHundreds)
{
    const double of_hundreds = allocations_each(500);
    const double of_thousands = allocations_each(3000);
    EXPECT_GT(of_hundreds, 100) << "it counts";
    EXPECT_LT(of_thousands, 1.2 * of_hundreds);
}

} // namespace lab_test
