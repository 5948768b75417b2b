/*
 * default_routes.h: what the tests of saved default routes share: routes and
 * paths as they stand in the file, the calls that rebuild them, and a fixture
 * on a fast restart.
 */
#pragma once

#include "support/library_test.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rtifhal_test
{

/** A valid path over an interface: MAC 00:00:5e:00:01:07, port 5, encapsulation 7. */
def_route_path_t path_over(std::uint32_t ifindex);
/** The same path marked as not to be used. */
def_route_path_t unused_path_over(std::uint32_t ifindex);

/** An IPv4 route of VRF 1 over these paths, at most 64. */
def_route_rec_t route_over(const std::vector<def_route_path_t> &paths);
/** The same route of IPv6. */
def_route_rec_t ip6_route_over(const std::vector<def_route_path_t> &paths);
/** An IPv4 route over each of these interfaces. */
def_route_rec_t route_over_interfaces(const std::vector<std::uint32_t> &ifindexes);

/** The ifindex of the n-th interface of a test, from 0, and the number that it gets in the chip. */
std::uint32_t interface_of(unsigned n);
std::uint32_t iif_of(unsigned n);
/** The ifindexes of the first `count` interfaces. */
std::vector<std::uint32_t> interfaces(unsigned count);

/** The texts of calls, as the journal prints them. */
namespace route_call
{

std::string fast_restart();
std::string no_skip_key();
/** A look-up of the n-th interface of a test. */
std::string found_ready(unsigned n);
std::string found_not_ready(unsigned n);
/** The text of the code of a look-up that was refused, and of no code. */
std::string text_of_not_ready();
std::string text_of_success();
/** The next hop of a path over the n-th interface; id 0: refused with -1. */
std::string create(unsigned n, int id);
std::string group(const std::vector<int> &members, int id);
std::string route_init();
std::string add_route(int next_hop, const std::string &flags = "0x100");
std::string destroy(int id);
std::string group_init();
std::string destroy_group(int id);

} // namespace route_call

/** A fast restart with routes already loaded; the file's own road is in default_nh_file_test. */
class DefaultRoutesTest : public LibraryTest
{
protected:
    DefaultRoutesTest();

    /** Puts the tables as a loaded file leaves them. */
    void loaded(const std::vector<def_route_rec_t> &routes);
    /** Lets the n-th interface, or the first `count`, be ready. */
    void ready(unsigned n);
    void first_ready(unsigned count);
    /** The n-th interface comes up: what start() begins is this call alone. */
    void comes_up(unsigned n);
    /** The calls to the SDK since start(). */
    std::vector<std::string> sdk_calls() const;
    /** The whole ordered list of SDK calls since start() is this one. */
    void expect_sdk_calls(const std::vector<std::string> &expected) const;
    /** The texts of the system log since start(), all of priority 0. */
    std::vector<std::string> syslog_texts() const;
    /** The look-ups of interfaces since start(). */
    std::vector<std::string> lookups() const;
};

/** The function that most messages name. */
inline const char *const CREATE_DEFAULT_NH = "rtifhal_trident_create_default_nh";

/** The messages at both ends, with these between them. */
std::vector<Message> between_start_and_end(std::vector<Message> messages);

} // namespace rtifhal_test
