/*
 * shown_calls_test.cpp: requests that take along what will be shown of them,
 * while the journal forgets the rest.
 */
#include "l3lif/bring_up.h"
#include "l3lif/shown_calls.h"
#include "restart_run.h"
#include "session_run.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace lab_test
{

namespace
{

/** The requests that bring kinds.json up, and what was left of them elsewhere. */
struct ShownRun {
    /** @param shown  calls and messages; nothing: the journal keeps all */
    explicit ShownRun(std::optional<std::pair<bool, bool>> shown)
    {
        rtifhal_test::reset_library();
        simswitch::Switch hardware;
        std::optional<lab::l3lif::ShownCalls> kept;
        if (shown) {
            kept.emplace(hardware, shown->first, shown->second);
        }
        lab::l3lif::Layer layer(hardware);
        hardware.journal.arm({.function = "rtifhal_bcm_l3_ingress_create", .code = -6, .nth = 3});
        lab::l3lif::bring_all_up(example("kinds"), layer);
        for (const auto &named : lab::l3lif::requests_up(layer)) {
            requests.push_back(*named.request);
        }
        records = hardware.journal.records().size();
        calls_made = hardware.journal.calls_made();
    }
    std::vector<std::vector<std::string>> calls() const
    {
        std::vector<std::vector<std::string>> all;
        for (const auto &request : requests) {
            all.push_back(request.calls);
        }
        return all;
    }
    std::vector<std::string> messages(bool errors_only) const
    {
        std::vector<std::string> all;
        for (const auto &request : requests) {
            for (const auto &message : request.messages) {
                if (!errors_only || message.level == simswitch::fwm::LEVEL_ERROR) {
                    all.push_back(message.text);
                }
            }
        }
        return all;
    }
    /** What each request came to. */
    std::vector<std::string> results() const
    {
        std::vector<std::string> all;
        for (const auto &request : requests) {
            all.push_back(fmt::format("{} {} {} {}", request.code, request.call_count,
                                      request.last_error(), request.refused_call));
        }
        return all;
    }

    std::vector<lab::l3lif::Request> requests;
    std::size_t records = 0;
    std::uint64_t calls_made = 0;
};

} // namespace

TEST(ShownCalls, RequestsHaveWhatIsShownAndTheJournalForgetsIt)
{
    const ShownRun all(std::nullopt);
    EXPECT_GT(all.records, 1000U);
    for (const bool calls : {false, true}) {
        for (const bool messages : {false, true}) {
            SCOPED_TRACE(fmt::format("calls {}, messages {}", calls, messages));
            const ShownRun kept(std::pair{calls, messages});
            EXPECT_EQ(kept.calls(),
                      calls ? all.calls()
                            : std::vector<std::vector<std::string>>(all.requests.size()));
            EXPECT_EQ(kept.messages(false), all.messages(!messages));
            EXPECT_EQ(kept.results(), all.results());
            EXPECT_EQ(kept.calls_made, all.calls_made);
            EXPECT_EQ(kept.records, 0U);
        }
    }
}

TEST(ShownCalls, ASessionShowsTheLastCommandAllTheSame)
{
    const auto lines = [](bool forgets) {
        rtifhal_test::reset_library();
        simswitch::Switch hardware;
        std::optional<lab::l3lif::ShownCalls> kept;
        if (forgets) {
            kept.emplace(hardware, true, true);
        }
        lab::session::Session session(hardware, {}, EXAMPLES);
        std::string text;
        for (const char *line : {"up kinds.json", "show calls", "set Ethernet0 vrf 5", "show calls",
                                 "fail rtifhal_bcm_l3_ingress_create 2 -6", "set Ethernet0 vrf 6",
                                 "set Ethernet0 vrf 7", "show calls"}) {
            const auto outcome = session.execute(line);
            text += outcome.summary + "\n" + outcome.shown;
        }
        EXPECT_EQ(hardware.journal.records().empty(), forgets);
        return text;
    };
    EXPECT_EQ(lines(true), lines(false));
}

TEST(ShownCalls, ItEndsWithItsScope)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    {
        const lab::l3lif::ShownCalls kept(hardware, true, false);
        EXPECT_TRUE(lab::l3lif::ShownCalls::is_on(hardware));
    }
    EXPECT_FALSE(lab::l3lif::ShownCalls::is_on(hardware));
}

} // namespace lab_test
