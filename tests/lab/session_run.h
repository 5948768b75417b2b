/*
 * session_run.h: sessions in a test, each on a switch of its own, with
 * examples/kinds.json up: a port, a port-channel, a VLAN interface, both kinds
 * of subinterface, a tunnel.
 */
#pragma once

#include "session/errors.h"
#include "session/session.h"
#include "support/library_test.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace lab_test
{

inline const std::filesystem::path EXAMPLES =
    std::filesystem::path(RTIFHAL_SOURCE_DIR) / "examples";

/** A session, with a library as it is after loading. */
class SessionTest : public ::testing::Test
{
protected:
    explicit SessionTest(const simswitch::Options &options = {}) : hardware((reset(), options)) {}

    /** Does a line that makes sense. */
    lab::session::Outcome run(std::string_view line) { return session.execute(line); }
    /** Does lines that the library takes without a word. */
    void run_all(const std::vector<std::string> &lines)
    {
        for (const std::string &line : lines) {
            const auto outcome = session.execute(line);
            EXPECT_FALSE(outcome.refused) << line << "\n" << outcome.shown;
        }
    }
    void up() { run_all({"up kinds.json"}); }

    /** Why a line isn't done: "usage: …", "impossible: …", "unmet: … seen …"; empty when it is. */
    std::string problem(std::string_view line)
    {
        try {
            session.execute(line);
        } catch (const lab::session::UsageError &error) {
            return std::string("usage: ") + error.what();
        } catch (const lab::session::Impossible &error) {
            return std::string("impossible: ") + error.what();
        } catch (const lab::session::Unmet &error) {
            return std::string("unmet: ") + error.what() + " seen " + error.seen();
        }
        return "";
    }
    /** Expects that expectations are met. */
    void expect_met(const std::vector<std::string> &lines)
    {
        for (const std::string &line : lines) {
            EXPECT_EQ(problem("expect " + line), "");
        }
    }

    simswitch::Switch hardware;
    lab::session::Session session{hardware, {}, EXAMPLES};

private:
    static void reset() { rtifhal_test::reset_library(); }
};

/** The same on a Trident2. */
class SessionOnTrident2Test : public SessionTest
{
protected:
    SessionOnTrident2Test() : SessionTest({.chip = simswitch::chip::Kind::trident2}) {}
};

} // namespace lab_test
