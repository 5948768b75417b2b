/*
 * growth_test.cpp: the requests of bench/growth/growth_requests.h: they leave all as it was, so
 * that any number of them can be measured, and they don't call the platform more often with more
 * interfaces.
 *
 * The library's tables begin anew in a new process only: each network is one's.
 */
#include "growth_requests.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

using null_platform::Chip;

/** A network in a process of its own, which ends well if `holds` does. */
template <class Holds> void in_a_process(Holds holds)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        holds();
        std::fflush(nullptr);
        std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "what failed stands above";
}

int numbers_taken()
{
    int taken = 0;
    for (const std::uint8_t byte : l3lif_l3iif_table.bits) {
        taken += __builtin_popcount(byte);
    }
    return taken;
}

/** Numbers that the chip keeps for itself or that the first set-up throws away. */
int numbers_reserved(Chip chip)
{
    return 8192 - (chip == Chip::trident ? 3584 : 7680) + 3;
}

/** Platform calls of each request, all in a batch. */
std::map<std::string, std::uint64_t> calls_of(const std::vector<Request> &requests)
{
    std::map<std::string, std::uint64_t> calls;
    for (const Request &request : requests) {
        request.before();
        const std::uint64_t before = null_platform::calls();
        request.timed();
        calls[request.name] = null_platform::calls() - before;
        request.after();
    }
    return calls;
}

/** The same of a network of so many, which is measured in a process of its own. */
std::map<std::string, std::uint64_t> calls_with(Chip chip, Subject subject, std::size_t count)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    std::fflush(nullptr);
    if (fork() == 0) {
        std::FILE *const to = fdopen(ends[1], "w");
        Network network(chip);
        for (const auto &[name, calls] : calls_of(requests_of(network, subject, count))) {
            std::fprintf(to, "%llu %s\n", static_cast<unsigned long long>(calls), name.c_str());
        }
        std::fclose(to);
        std::_Exit(0);
    }
    close(ends[1]);
    std::FILE *const from = fdopen(ends[0], "r");
    std::map<std::string, std::uint64_t> calls;
    char line[200];
    while (std::fgets(line, sizeof line, from) != nullptr) {
        std::istringstream words(line);
        std::uint64_t number = 0;
        std::string name;
        std::getline(words >> number >> std::ws, name);
        calls[name] = number;
    }
    std::fclose(from);
    wait(nullptr);
    return calls;
}

constexpr Subject SUBJECTS[] = {Subject::interfaces,    Subject::svis,
                                Subject::virtual_macs,  Subject::pairs,
                                Subject::subinterfaces, Subject::channel_subinterfaces};

} // namespace

TEST(GrowthNetwork, MixTakesANumberForEachInterface)
{
    for (const Chip chip : {Chip::trident, Chip::trident2}) {
        in_a_process([chip] {
            Network network(chip);
            network.fill(700);
            EXPECT_EQ(network.up(), 700U);
            EXPECT_EQ(numbers_taken() - numbers_reserved(chip), 700);
        });
    }
}

TEST(GrowthNetwork, LargestMixLeavesRoomForTheBatchOnly)
{
    const std::map<Chip, std::size_t> largest = {{Chip::trident, 3580}, {Chip::trident2, 7676}};
    for (const auto &[chip, count] : largest) {
        in_a_process([chip = chip, count = count] {
            Network network(chip);
            (void)requests_of(network, Subject::interfaces, count);
            EXPECT_EQ(network.up(), count - BATCH);
            EXPECT_EQ(8192 - numbers_taken(), static_cast<int>(BATCH) + 1);
        });
    }
}

TEST(GrowthRequests, LeaveInterfacesAndNumbersAsTheyWere)
{
    for (const Subject subject : SUBJECTS) {
        in_a_process([subject] {
            Network network(Chip::trident2);
            const std::vector<Request> requests = requests_of(network, subject, 64);
            const std::size_t up = network.up();
            const l3iif_bitmap_t numbers = l3lif_l3iif_table;
            const l3iif_bitmap_t preserved = l3lif_l3iif_table_preserve;
            for (const Request &request : requests) {
                request.before();
                request.timed();
                request.after();
                EXPECT_EQ(network.up(), up) << request.name;
                EXPECT_EQ(std::memcmp(&numbers, &l3lif_l3iif_table, sizeof numbers), 0)
                    << request.name;
                EXPECT_EQ(std::memcmp(&preserved, &l3lif_l3iif_table_preserve, sizeof preserved), 0)
                    << request.name;
            }
        });
    }
}

TEST(GrowthRequests, CallThePlatformAsOftenTheSecondTime)
{
    for (const Subject subject : SUBJECTS) {
        in_a_process([subject] {
            Network network(Chip::trident2);
            const std::vector<Request> requests = requests_of(network, subject, 64);
            (void)calls_of(requests);
            const auto second = calls_of(requests);
            EXPECT_EQ(second, calls_of(requests)) << text(subject);
            EXPECT_EQ(second.size(), requests.size()) << "two requests of one name";
        });
    }
}

TEST(GrowthRequests, CallThePlatformAsOftenWithAThousandInterfacesAsWithSixteen)
{
    for (const Chip chip : {Chip::trident, Chip::trident2}) {
        const auto few = calls_with(chip, Subject::interfaces, 16);
        EXPECT_GT(few.size(), 80U);
        EXPECT_EQ(few, calls_with(chip, Subject::interfaces, 1024));
    }
}

TEST(GrowthRequests, CallThePlatformAsOftenWithAThousandSvis)
{
    const auto few = calls_with(Chip::trident2, Subject::svis, 16);
    EXPECT_EQ(few.size(), 2U);
    EXPECT_EQ(few, calls_with(Chip::trident2, Subject::svis, 1024));
}

TEST(GrowthRequests, ListingCallsThePlatformOnceMoreForEachVirtualMac)
{
    const auto few = calls_with(Chip::trident2, Subject::virtual_macs, 108);
    const auto many = calls_with(Chip::trident2, Subject::virtual_macs, 1108);
    const std::string at_once = "virtual MACs: list all at once, an entry";
    EXPECT_EQ(many.at(at_once) - few.at(at_once), 1000U);
    // A listing of 100 entries is 101 requests, of which the last finds nothing.
    const std::string one_at_a_time = "virtual MACs: list one at a time, an entry";
    EXPECT_EQ((few.at(one_at_a_time) + 1) % 101, 0U);
    EXPECT_EQ((many.at(one_at_a_time) + 1) / 1101, (few.at(one_at_a_time) + 1) / 101);
    EXPECT_EQ(many.at("virtual MAC of an SVI: add"), few.at("virtual MAC of an SVI: add"));
    EXPECT_EQ(many.at("virtual MAC of an SVI: delete"), few.at("virtual MAC of an SVI: delete"));
}

TEST(GrowthRequests, PairCallsThePlatformAsOftenWithAThousandPairs)
{
    const auto few = calls_with(Chip::trident2, Subject::pairs, 16);
    const auto many = calls_with(Chip::trident2, Subject::pairs, 1000);
    EXPECT_EQ(many.at("private-VLAN pair: add"), few.at("private-VLAN pair: add"));
    EXPECT_EQ(many.at("private-VLAN pair: delete"), few.at("private-VLAN pair: delete"));
}

} // namespace bench
