/*
 * default_routes.cpp: saved default routes of any bytes, three ways: as the JSON form, as the
 * binary file in the lab, and as the file that the library finds on a fast restart.
 */
#include "expect.h"
#include "input.h"
#include "support/load_time_state.h"

#include "config/default_route_file.h"
#include "config/default_route_reader.h"
#include "config/default_route_writer.h"
#include "config/json_tree.h"

#include "rtifhal_trident.h"
#include "services/ifindex.h"
#include "services/pss_folder.h"
#include "switch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace
{

namespace config = lab::config;
namespace if_index = simswitch::if_index;

enum class Way : std::uint8_t { json, binary, library, ways };

/** The routes in their JSON form. */
std::string json_of(const config::DefaultRoutes &routes)
{
    std::ostringstream out;
    config::print_default_routes(routes, {}, out);
    return out.str();
}

/** What was read comes out of both forms as it went in. */
void expect_same_again(const config::DefaultRoutes &routes)
{
    const std::string bytes = config::default_route_bytes(routes);
    fuzz::expect(config::default_route_bytes(config::parse_default_routes(bytes, "file")) == bytes,
                 "a file that was written can be read, and says the same");
    const std::string json = json_of(routes);
    fuzz::expect_harmless(json);
    fuzz::expect(config::default_route_bytes(config::read_default_routes(json, "json", {})) ==
                     bytes,
                 "the JSON form of routes gives the same routes");
}

void read_in_the_lab(std::string_view text, bool is_json)
{
    try {
        expect_same_again(is_json ? config::read_default_routes(text, "json", {})
                                  : config::parse_default_routes(text, "file"));
    } catch (const config::UnusableFile &error) {
        fuzz::expect_one_line(error.what());
    }
}

/**
 * The library takes room for as many routes as the file promises, whatever it holds: few, or more
 * than any machine has room for.
 */
std::string with_count_in_reason(std::string_view file)
{
    constexpr std::size_t WIDTH = 4;
    constexpr std::uint8_t ALL = 0xff;
    std::string bytes(file);
    const bool is_beyond = bytes.size() >= WIDTH && static_cast<std::uint8_t>(bytes[3]) == ALL;
    for (std::size_t i = 1; i < std::min(bytes.size(), WIDTH) && !is_beyond; ++i) {
        bytes[i] = static_cast<char>(i == 1 ? bytes[i] & 3 : 0);
    }
    return bytes;
}

/** A fast restart on which three interfaces come up, one after the other. */
void restart(std::string_view bytes)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    hardware.system.fast_restart = true;
    std::ofstream(std::string(simswitch::services::PSS_FOLDER) + "/default_route.txt",
                  std::ios::binary)
        << with_count_in_reason(bytes);
    std::uint32_t iif = 3;
    for (const std::uint32_t ifindex :
         {if_index::port(0), if_index::port_channel(1), if_index::svi(100)}) {
        hardware.directory.set_iif(ifindex, iif++);
        hardware.directory.set_ready(ifindex, true);
        rtifhal_trident_create_default_nh(ifindex);
    }
    rtifhal_trident_destroy_default_nh();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    // While the process has one thread.
    simswitch::services::make_pss_folder_private();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const auto way = static_cast<Way>(input.byte() % static_cast<unsigned>(Way::ways));
    if (way != Way::library) {
        read_in_the_lab(input.text(), way == Way::json);
    } else if (simswitch::services::make_pss_folder_private().empty()) {
        restart(input.text());
    }
    return 0;
}
