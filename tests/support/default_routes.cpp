/*
 * default_routes.cpp: see default_routes.h.
 */
#include "support/default_routes.h"

#include "fwm/host_state.h"
#include "rtifhal_kelvo_trident/defaults/default_nh.h"
#include "services/ifindex.h"

#include <sdk/l3.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>
#include <cstring>

namespace rtifhal_test
{

namespace
{

constexpr std::uint8_t NEXT_HOP_MAC[6] = {0x00, 0x00, 0x5e, 0x00, 0x01, 0x07};
constexpr int NEXT_HOP_PORT = 5;
constexpr std::uint32_t ENCAPSULATION = 7;
constexpr unsigned FIRST_IIF = 11;

/** Memory as the library would have taken it, so that it can give it back. */
template <class Record> Record *zeroed(std::size_t count)
{
    void *memory = std::malloc(count * sizeof(Record));
    std::memset(memory, 0, count * sizeof(Record));
    return static_cast<Record *>(memory);
}

} // namespace

def_route_path_t path_over(std::uint32_t ifindex)
{
    bcm_l3_egress_t egress = {};
    std::memcpy(egress.mac_addr, NEXT_HOP_MAC, sizeof egress.mac_addr);
    egress.port = NEXT_HOP_PORT;
    egress.encap_id = ENCAPSULATION;
    def_route_path_t path = {};
    std::memcpy(path.egress, &egress, sizeof path.egress);
    path.valid = 1;
    path.ifindex = ifindex;
    return path;
}

def_route_path_t unused_path_over(std::uint32_t ifindex)
{
    auto path = path_over(ifindex);
    path.valid = 0;
    return path;
}

def_route_rec_t route_over(const std::vector<def_route_path_t> &paths)
{
    def_route_rec_t route = {};
    route.vrf = 1;
    route.paths = static_cast<std::uint32_t>(paths.size());
    std::copy(paths.begin(), paths.end(), route.path);
    return route;
}

def_route_rec_t ip6_route_over(const std::vector<def_route_path_t> &paths)
{
    auto route = route_over(paths);
    route.family = 1;
    return route;
}

def_route_rec_t route_over_interfaces(const std::vector<std::uint32_t> &ifindexes)
{
    std::vector<def_route_path_t> paths;
    paths.reserve(ifindexes.size());
    for (const auto ifindex : ifindexes) {
        paths.push_back(path_over(ifindex));
    }
    return route_over(paths);
}

std::uint32_t interface_of(unsigned n)
{
    return simswitch::if_index::port(n);
}

std::uint32_t iif_of(unsigned n)
{
    return FIRST_IIF + n;
}

std::vector<std::uint32_t> interfaces(unsigned count)
{
    std::vector<std::uint32_t> ifindexes;
    for (unsigned n = 0; n < count; ++n) {
        ifindexes.push_back(interface_of(n));
    }
    return ifindexes;
}

namespace route_call
{

std::string fast_restart()
{
    return "sysmgr_is_fastboot_restart() = 1";
}

std::string no_skip_key()
{
    return R"(get_string_from_platform_inf("fwm", "skip_default_nh", 15) = 0)";
}

std::string found_ready(unsigned n)
{
    return fmt::format("l3lif_get_iif_for_ifindex_new({:#x}) = 0 [l3iif={:#x}]", interface_of(n),
                       iif_of(n));
}

std::string found_not_ready(unsigned n)
{
    return fmt::format("l3lif_get_iif_for_ifindex_new({:#x}) = {}", interface_of(n),
                       simswitch::fwm::ERROR_INTERFACE_NOT_READY);
}

std::string text_of_not_ready()
{
    return fmt::format("fwm_syserr2str({}) = \"interface not ready\"",
                       simswitch::fwm::ERROR_INTERFACE_NOT_READY);
}

std::string text_of_success()
{
    return "fwm_syserr2str(0) = \"success\"";
}

std::string create(unsigned n, int id)
{
    return fmt::format("bcm_l3_egress_create(0, 0x0, {{flags=0x100 intf={} mac=00:00:5e:00:01:07 "
                       "vlan=0 module=0 port=5 trunk=0 encap=7}}) = {}",
                       iif_of(n), id == 0 ? "-1" : fmt::format("0 [id={}]", id));
}

std::string group(const std::vector<int> &members, int id)
{
    return fmt::format("bcm_l3_egress_multipath_create(0, 0x0, {}, [{}]) = {}", members.size(),
                       fmt::join(members, ","), id == 0 ? "-1" : fmt::format("0 [id={}]", id));
}

std::string route_init()
{
    return "bcm_l3_route_t_init()";
}

std::string add_route(int next_hop, const std::string &flags)
{
    const bool ip6 = flags.starts_with("0x2");
    return fmt::format("bcm_l3_route_add(0, {{flags={} vrf=1 net={} intf={}}}) = 0", flags,
                       ip6 ? "::/0" : "0.0.0.0/0", next_hop);
}

std::string destroy(int id)
{
    return fmt::format("bcm_l3_egress_destroy(0, {}) = 0", id);
}

std::string group_init()
{
    return "bcm_l3_egress_ecmp_t_init()";
}

std::string destroy_group(int id)
{
    return fmt::format("bcm_l3_egress_ecmp_destroy(0, {{flags=0x0 id={}}}) = 0", id);
}

} // namespace route_call

DefaultRoutesTest::DefaultRoutesTest()
{
    sw.system.fast_restart = true;
}

void DefaultRoutesTest::loaded(const std::vector<def_route_rec_t> &routes)
{
    def_routes = zeroed<def_route_rec_t>(routes.size());
    egresses = zeroed<def_egress_set_t>(routes.size());
    std::copy(routes.begin(), routes.end(), def_routes);
    num_def_routes = static_cast<std::uint32_t>(routes.size());
    def_routes_loaded = 1;
    start();
}

void DefaultRoutesTest::ready(unsigned n)
{
    sw.directory.set_iif(interface_of(n), iif_of(n));
}

void DefaultRoutesTest::first_ready(unsigned count)
{
    for (unsigned n = 0; n < count; ++n) {
        ready(n);
    }
}

void DefaultRoutesTest::comes_up(unsigned n)
{
    start();
    rtifhal_trident_create_default_nh(interface_of(n));
}

std::vector<std::string> DefaultRoutesTest::sdk_calls() const
{
    std::vector<std::string> chosen;
    for (const auto &call : calls()) {
        if (call.starts_with("bcm_")) {
            chosen.push_back(call);
        }
    }
    return chosen;
}

void DefaultRoutesTest::expect_sdk_calls(const std::vector<std::string> &expected) const
{
    EXPECT_EQ(sdk_calls(), expected);
}

std::vector<std::string> DefaultRoutesTest::syslog_texts() const
{
    std::vector<std::string> texts;
    for (const auto &line : sw.trace.syslog()) {
        EXPECT_EQ(line.priority, 0) << line.text;
        texts.push_back(line.text);
    }
    return texts;
}

std::vector<std::string> DefaultRoutesTest::lookups() const
{
    return calls_of({"l3lif_get_iif_for_ifindex_new"});
}

std::vector<Message> between_start_and_end(std::vector<Message> messages)
{
    const std::string name = CREATE_DEFAULT_NH;
    messages.insert(messages.begin(), trace(name, name + " start >>\n"));
    messages.push_back(trace(name, name + " end >>\n"));
    return messages;
}

} // namespace rtifhal_test
