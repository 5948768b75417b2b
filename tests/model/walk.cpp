/*
 * walk.cpp: see walk.h.
 */
#include "model/walk.h"

#include "config/reader.h"
#include "faults/processes.h"
#include "model/naive_switch.h"
#include "model/weakened.h"
#include "rtifhal_data.h"
#include "session/errors.h"
#include "session/session.h"
#include "support/load_time_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace model_test
{

namespace
{

/** A walk under way. */
class Walker
{
public:
    /** @param needs_folder  chip and store outlive the process, which is slower */
    Walker(const Walk &begin, const lab::config::Description &config, bool needs_folder)
        : begin_(begin), model_(config, begin.chip)
    {
        if (needs_folder) {
            folder_.emplace();
        }
        open_switch();
        session_ = std::make_unique<lab::session::Session>(*hardware_, state_dir());
        session_->allow_restart();
        if (begin.lies) {
            model_.lie_about_numbers();
        }
    }

    Walked run(const std::vector<Step> &steps)
    {
        execute(fmt::format("up {}", begin_.config.string()));
        if (begin_.numbers_left != 0) {
            wear_numbers();
        }
        compare();
        for (const Step &step : steps) {
            if (!done_.differences.empty() || is_over_) {
                break;
            }
            if (model_.can(step)) {
                ++done_.steps;
                if (step.words[0] == "restart") {
                    do_restart(step);
                } else if (step.fault.empty()) {
                    do_step(step);
                } else {
                    do_failing_step(step);
                }
            }
        }
        return std::move(done_);
    }

private:
    std::filesystem::path state_dir() const
    {
        return folder_ ? folder_->path() / "state" : std::filesystem::path();
    }

    /**
     * As if a tunnel had been deleted and added thousands of times: its numbers are held back. The
     * script says so in full, the walk only does the last time.
     */
    void wear_numbers()
    {
        const std::string tunnel = "MuxTunnel1";
        const int last = NaiveNumbers::last(begin_.chip) - begin_.numbers_left;
        std::set<int> worn;
        for (int number = model_.interface(tunnel).number + 1; number <= last; ++number) {
            worn.insert(number);
            const auto n = static_cast<unsigned>(number);
            const auto bit = static_cast<std::uint8_t>(0x80U >> (n % 8));
            l3lif_l3iif_table.bits[n / 8] |= bit;
            l3lif_l3iif_table_preserve.bits[n / 8] |= bit;
            done_.script.push_back("del " + tunnel);
            done_.script.push_back("add " + tunnel);
        }
        model_.hold_back(worn);
        do_step({{"del", tunnel}});
        do_step({{"add", tunnel}});
    }

    /** A process begins. */
    void open_switch()
    {
        rtifhal_test::reset_library();
        hardware_ = std::make_unique<simswitch::Switch>(
            simswitch::Options{.chip = begin_.chip, .state_dir = state_dir()});
    }

    const lab::session::State &state() const { return session_->state(); }

    /** Does a line. @return its code; nothing when nothing was asked of the library */
    std::optional<int> execute(const std::string &line)
    {
        done_.script.push_back(line);
        hardware_->journal.clear();
        try {
            const lab::session::Outcome outcome = session_->execute(line);
            if (!outcome.asked) {
                return std::nullopt;
            }
            const int code = state().last.code();
            if (outcome.refused) {
                done_.script.push_back(fmt::format("expect code = {}", code));
            }
            return code;
        } catch (const std::exception &error) {
            done_.differences.push_back({"# " + line, "done", error.what()});
            return std::nullopt;
        }
    }

    void expect_code(std::optional<int> expected, std::optional<int> code)
    {
        if (expected && code && *code != *expected) {
            done_.differences.push_back({"code", fmt::to_string(*expected), fmt::to_string(*code)});
        }
    }

    void compare()
    {
        const auto found = differences(model_.facts(), seen(state()));
        done_.differences.insert(done_.differences.end(), found.begin(), found.end());
    }

    void do_step(const Step &step)
    {
        const auto code = execute(step.line());
        after(step, code);
    }

    void after(const Step &step, std::optional<int> code)
    {
        expect_code(model_.apply(step), code);
        if (begin_.meddle) {
            begin_.meddle(step, hardware_->chip);
        }
        compare();
    }

    /** This process ends and the next one begins, as far as the library and the switch can tell. */
    void do_restart(const Step &step)
    {
        ++done_.restarts;
        done_.script.push_back(step.line());
        const auto mode = session_->execute(step.line()).restart;
        session_.reset();
        hardware_.reset();
        open_switch();
        session_ = lab::session::Session::after_restart(*hardware_, state_dir(), {});
        session_->allow_restart();
        if (session_->restart(mode.value()).refused) {
            done_.script.push_back(fmt::format("expect code = {}", state().last.code()));
        }
        model_.apply(step);
        compare();
    }

    void do_failing_step(const Step &step)
    {
        const Facts before = seen(state());
        const Touched touched = touched_by(model_, step);
        execute(step.fault_line());
        const auto code = execute(step.line());
        const bool has_failed =
            std::ranges::any_of(hardware_->journal.records(),
                                [](const auto &record) { return record.reason == "injected"; });
        execute("fail off");
        if (!has_failed) {
            after(step, code);
            return;
        }
        ++done_.faults;
        done_.differences = changed_elsewhere(model_, touched, before, state());
        std::vector<std::string> healed;
        while (done_.differences.empty()) {
            const std::string line = next_healing(touched, step, healed, state());
            if (line.empty()) {
                break;
            }
            healed.push_back(line);
            execute(line);
        }
        if (!done_.differences.empty()) {
            return;
        }
        heal(model_, touched, step);
        done_.differences = adopt(model_, touched, state());
        compare_healed(touched);
    }

    void compare_healed(const Touched &touched)
    {
        auto found = differences(model_.facts(), seen(state()));
        is_over_ = std::erase_if(found, [&](const Difference &one) {
                       return is_other_order(one) ||
                              (done_.restarts != 0 && is_of_shared_vlan(one.key, model_, touched));
                   }) != 0;
        done_.differences.insert(done_.differences.end(), found.begin(), found.end());
    }

    const Walk &begin_;
    NaiveSwitch model_;
    bool is_over_ = false; ///< what comes next can't be foretold any more
    std::optional<lab::faults::Folder> folder_;
    std::unique_ptr<simswitch::Switch> hardware_;
    std::unique_ptr<lab::session::Session> session_;
    Walked done_;
};

} // namespace

std::string Walked::text() const
{
    std::string text;
    for (const std::string &line : script) {
        text += line + "\n";
    }
    for (const Difference &one : differences) {
        text += one.line() + "\n";
    }
    return text;
}

Walked walk(const Walk &begin, const std::vector<Step> &steps)
{
    const auto config = lab::config::read_config(begin.config);
    const bool restarts =
        std::ranges::any_of(steps, [](const Step &step) { return step.words[0] == "restart"; });
    return Walker(begin, config, restarts).run(steps);
}

} // namespace model_test
