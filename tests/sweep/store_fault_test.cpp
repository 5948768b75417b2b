/*
 * store_fault_test.cpp: each write to the persistent store fails once. The
 * interface works on, a message tells of it, and what the next start finds is
 * named by the check.
 */
#include "sweep/engine/processes.h"

#include "check/check.h"
#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/interface_numbers.h"
#include "l3lif/readback.h"
#include "l3lif/restart.h"
#include "rtifhal_trident.h"
#include "support/library_test.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace sweep
{

namespace
{

namespace l3lif = lab::l3lif;
using simswitch::chip::Kind;
using simswitch::fwm::Message;

const std::string STORE = "rtifhal_pss_l3port_store";
const std::string DELETE = "rtifhal_pss_l3port_delete";
const std::string STORE_GLOBALS = "fwmpd_pss_globalc_store";

// Of examples/kinds.json: two ports, a port-channel of two members, an SVI, a
// subinterface of each, a tunnel. The port-channel's subinterface is stored
// under the port-channel's ifindex, in the place of its record.
constexpr int INTERFACES = 7;
constexpr int INTERFACES_WITH_RECORD = 6;
constexpr int STORES_UP = 7;
constexpr int DELETES_DOWN = 7;

const std::string PORT_CHANNEL = "0x20001000";

/** A switch on the folder of a test, after one more start. */
struct Machine {
    Machine(Kind kind, const std::filesystem::path &state)
    {
        rtifhal_test::reset_library();
        hardware.emplace(simswitch::Options{.chip = kind, .state_dir = state});
        layer.emplace(*hardware);
    }
    void fail(const std::string &function, std::uint64_t nth)
    {
        hardware->journal.arm({.function = function, .code = -1, .nth = nth});
    }
    /** The call that was made to fail; null when there were fewer calls. */
    const simswitch::CallRecord *failed_call() const
    {
        const auto &records = hardware->journal.records();
        const auto found = std::ranges::find(records, "injected", &simswitch::CallRecord::reason);
        return found == records.end() ? nullptr : &*found;
    }
    /** Whether a call with the same arguments was made after that one. */
    bool was_made_again(const simswitch::CallRecord &failed) const
    {
        return std::ranges::any_of(hardware->journal.records(), [&failed](const auto &record) {
            return record.sequence > failed.sequence && record.function == failed.function &&
                   record.arguments == failed.arguments;
        });
    }

    std::optional<simswitch::Switch> hardware;
    std::optional<l3lif::Layer> layer;
};

/** "0x1a000001" of "store, 1, lif(0x1a000001)" or "store, 1, 0x1a000001". */
std::string ifindex_in(const std::string &arguments)
{
    const std::size_t begin = arguments.rfind("0x");
    return arguments.substr(begin, arguments.find_first_not_of("0123456789abcdefx", begin) - begin);
}

/** Of the interface that was stored last under an ifindex: its number, in the check's words. */
std::string number_of(const Machine &machine, const std::string &ifindex)
{
    std::string number;
    for (const auto &interface : machine.layer->interfaces()) {
        const auto &plan = interface->lif->plan();
        if (fmt::format("{:#x}", plan.ifindex) == ifindex ||
            (plan.trunk != 0 && fmt::format("{:#x}", plan.main) == ifindex)) {
            number = fmt::format("L3 interface {} ", interface->lif->iif());
        }
    }
    return number;
}

int count_held_back()
{
    int count = 0;
    for (int iif = 0; iif <= simswitch::chip::LAST_IIF; ++iif) {
        count += l3lif::is_set(l3lif_l3iif_table_preserve, iif) ? 1 : 0;
    }
    return count;
}

std::vector<Message> reports_of(const std::vector<l3lif::Request> &requests)
{
    std::vector<Message> reports;
    for (const l3lif::Request &request : requests) {
        std::ranges::copy_if(request.messages, std::back_inserter(reports),
                             [](const Message &message) {
                                 return message.level == simswitch::fwm::LEVEL_ERROR &&
                                        message.text.find("pss") != std::string::npos;
                             });
    }
    return reports;
}

void expect_report(const std::vector<Message> &reports, const std::string &function,
                   const std::string &text)
{
    ASSERT_EQ(reports.size(), 1U) << text;
    EXPECT_EQ(reports.front().level, 102);
    EXPECT_EQ(reports.front().function, function);
    EXPECT_EQ(reports.front().text, text);
}

void expect_all_work(const Machine &machine, const lab::config::Description &config,
                     const std::string &when)
{
    std::set<int> iifs;
    for (const auto &plan : l3lif::plans_of(config)) {
        const l3lif::Interface *interface = machine.layer->routed().find(plan.name);
        ASSERT_NE(interface, nullptr) << plan.name << " " << when;
        EXPECT_EQ(interface->up.code, 0) << plan.name << " " << when;
        const auto view = l3lif::read_back(*machine.hardware, *interface->lif);
        EXPECT_EQ(view.missing, "") << plan.name << " " << when;
        EXPECT_TRUE(iifs.insert(view.iif).second) << plan.name << " " << when;
    }
}

/** What the check names, in one text. */
std::string named(const lab::check::CheckResult &result)
{
    std::string text;
    for (const auto &difference : result.differences) {
        text += difference.what + "; " + difference.cause + "\n";
    }
    return text;
}

/** Requests of bringing all interfaces up, or of taking them down. */
std::vector<l3lif::Request> requests(const Machine &machine, bool down)
{
    std::vector<l3lif::Request> all;
    for (const auto &interface : machine.layer->interfaces()) {
        all.push_back(down ? interface->down : interface->up);
    }
    return all;
}

class StoreFault : public testing::TestWithParam<Kind>
{
protected:
    /** What the check names at the next start, which afterwards brings all up again. */
    std::string named_at_next_start(const std::filesystem::path &state, const std::string &when)
    {
        std::string text;
        {
            Machine looked(GetParam(), state);
            text = named(lab::check::check(*looked.hardware, &config));
        }
        Machine next(GetParam(), state);
        const auto result =
            l3lif::restart(*next.hardware, *next.layer, l3lif::RestartMode::restore, &config);
        EXPECT_EQ(result.chip_writes, 0U) << when;
        for (const auto &late : l3lif::complete(*next.hardware, *next.layer, config).requests) {
            EXPECT_FALSE(late.failed)
                << late.asked << " " << when << ": " << late.request.last_error();
        }
        expect_all_work(next, config, when);
        return text;
    }

    const lab::config::Description config = lab::config::read_config(
        std::filesystem::path(RTIFHAL_SOURCE_DIR) / "examples" / "kinds.json");
};

} // namespace

TEST_P(StoreFault, AnInterfaceThatIsNotStoredWorksAndIsNamed)
{
    int hit = 0;
    int lasting = 0;
    for (std::uint64_t nth = 1;; ++nth) {
        const Folder folder;
        std::string when;
        std::string number;
        {
            Machine machine(GetParam(), folder.path() / "state");
            machine.fail(STORE, nth);
            l3lif::bring_all_up(config, *machine.layer);
            const simswitch::CallRecord *failed = machine.failed_call();
            if (failed == nullptr) {
                break;
            }
            ++hit;
            const std::string ifindex = ifindex_in(failed->arguments);
            when = fmt::format("when store {} failed, that of {}", nth, ifindex);
            expect_report(reports_of(requests(machine, false)), "rtifhal_trident_l3port_add_pss",
                          fmt::format("Failed to store to pss for ifidx ({})\n", ifindex));
            expect_all_work(machine, config, when);
            if (!machine.was_made_again(*failed)) {
                number = number_of(machine, ifindex);
                ++lasting;
            }
        }
        const std::string text = named_at_next_start(folder.path() / "state", when);
        EXPECT_EQ(text.find(number) != std::string::npos, true)
            << when << ", " << number << " isn't named: " << text;
        EXPECT_EQ(text.empty(), number.empty()) << when << ": " << text;
    }
    EXPECT_EQ(hit, STORES_UP);
    EXPECT_EQ(lasting, INTERFACES_WITH_RECORD);
}

TEST_P(StoreFault, ARecordThatIsNotDeletedIsNamed)
{
    int hit = 0;
    int lasting = 0;
    for (std::uint64_t nth = 1;; ++nth) {
        const Folder folder;
        std::string when;
        bool lasts = false;
        {
            Machine machine(GetParam(), folder.path() / "state");
            l3lif::bring_all_up(config, *machine.layer);
            machine.fail(DELETE, nth);
            machine.layer->take_down();
            const simswitch::CallRecord *failed = machine.failed_call();
            if (failed == nullptr) {
                break;
            }
            ++hit;
            const std::string ifindex = ifindex_in(failed->arguments);
            when = fmt::format("when delete {} failed, that of {}", nth, ifindex);
            expect_report(reports_of(requests(machine, true)), "rtifhal_trident_l3port_del_pss",
                          fmt::format("failed to delete pss for ifidx ({})\n", ifindex));
            EXPECT_TRUE(machine.hardware->chip.l3_interfaces.all().empty()) << when;
            lasts = !machine.hardware->store.stored_interfaces().empty();
            lasting += lasts ? 1 : 0;
        }
        const std::string text = named_at_next_start(folder.path() / "state", when);
        // Its subinterface's record stays after each delete, and is no difference.
        if (when.find(PORT_CHANNEL) == std::string::npos) {
            EXPECT_EQ(text.find("no such L3 interface") != std::string::npos, lasts)
                << when << ": " << text;
        }
    }
    EXPECT_EQ(hit, DELETES_DOWN);
    EXPECT_EQ(lasting, INTERFACES_WITH_RECORD);
}

/** Nothing tells of it; the next one that is stored has all numbers again. */
TEST_P(StoreFault, NumbersThatAreNotStoredAreHeldBackUntilTheProcessEnds)
{
    int hit = 0;
    for (std::uint64_t nth = 1;; ++nth) {
        const Folder folder;
        std::string when;
        int held_back = 0;
        bool is_last = false;
        {
            Machine machine(GetParam(), folder.path() / "state");
            l3lif::bring_all_up(config, *machine.layer);
            machine.fail(STORE_GLOBALS, nth);
            EXPECT_TRUE(machine.layer->take_down()) << "nobody reports it";
            const simswitch::CallRecord *failed = machine.failed_call();
            if (failed == nullptr) {
                break;
            }
            ++hit;
            when = fmt::format("when store {} of the globals failed", nth);
            EXPECT_EQ(reports_of(requests(machine, true)).size(), 0U) << when;
            held_back = count_held_back();
            EXPECT_EQ(held_back, INTERFACES) << when;
            is_last = !machine.was_made_again(*failed);
        }
        {
            Machine next(GetParam(), folder.path() / "state");
            const auto result =
                l3lif::restart(*next.hardware, *next.layer, l3lif::RestartMode::restore, &config);
            EXPECT_EQ(std::ssize(result.preserved), is_last ? held_back - 1 : held_back) << when;
        }
        named_at_next_start(folder.path() / "state", when);
    }
    EXPECT_EQ(hit, INTERFACES);
}

INSTANTIATE_TEST_SUITE_P(BothChips, StoreFault, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) {
                             return info.param == Kind::trident2 ? "Trident2" : "Trident";
                         });

} // namespace sweep
