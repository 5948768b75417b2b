/*
 * config.cpp: a configuration of any text: read, and where it is small, brought up.
 */
#include "expect.h"
#include "input.h"
#include "support/load_time_state.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/plans.h"
#include "routing/routing.h"

#include "chip/pipeline/pipeline.h"
#include "switch.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

// Bringing an interface up takes a hundred times longer than reading one.
constexpr std::size_t INTERFACES_MAX = 4;
constexpr std::size_t VLANS_MAX = 8;

void bring_up(const lab::config::Description &config)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    lab::l3lif::Layer layer(hardware);
    simswitch::chip::pipeline::Pipeline pipeline(hardware.chip);
    lab::routing::Routing routing(hardware, layer, pipeline.l2());
    lab::l3lif::bring_all_up(config, layer);
    routing.configure(config);
    routing.sync();
    for (const std::string &problem : routing.problems()) {
        fuzz::expect_one_line(problem);
    }
    layer.take_down();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    try {
        const auto config =
            lab::config::read_config_text(fuzz::Input(data, size).text(), "config.json");
        for (const std::string &note : config.notes) {
            fuzz::expect_one_line(note);
        }
        for (const auto &row : config.skipped) {
            fuzz::expect_one_line(config.message(row));
        }
        if (lab::l3lif::plans_of(config).size() <= INTERFACES_MAX &&
            lab::l3lif::vlan_plans_of(config).size() <= VLANS_MAX) {
            bring_up(config);
        }
    } catch (const lab::config::UnusableFile &error) {
        fuzz::expect_one_line(error.what());
    }
    return 0;
}
