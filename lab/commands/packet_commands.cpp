/*
 * packet_commands.cpp: the options of packet. See command.h.
 */
#include "commands/command.h"

#include "commands/packet.h"
#include "packet/frame_words.h"

#include <memory>
#include <string>
#include <vector>

namespace lab::commands
{

namespace
{

struct Parsed {
    std::string config;
    std::string chip = "trident";
    std::string capture;
    std::string out;
    PacketOptions options;
};

void add_frame_options(CLI::App &command, const std::shared_ptr<Parsed> &parsed)
{
    for (const packet::FrameOption &option : packet::frame_options()) {
        const std::string name(option.name);
        command
            .add_option_function<std::vector<std::string>>(
                name,
                [parsed, name](const std::vector<std::string> &values) {
                    parsed->options.words[name] = values;
                },
                std::string(option.help))
            ->expected(static_cast<int>(option.count))
            ->type_name(std::string(option.values))
            ->group("The frame");
    }
}

/** Refuses what doesn't go together. */
void check_words(const Parsed &parsed)
{
    if (parsed.capture.empty() != parsed.out.empty()) {
        throw CLI::ValidationError("--pcap and --out", "go together");
    }
    for (const auto &[name, values] : parsed.options.words) {
        if (!parsed.capture.empty() && name != "--in") {
            throw CLI::ValidationError(name, "doesn't go with --pcap, whose frames are whole");
        }
    }
}

} // namespace

Command add_packet(CLI::App &app)
{
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *packet = app.add_subcommand(
        "packet", "Tells where a frame goes and why, stage by stage; docs/packets.md has more");
    packet->add_option("config", parsed->config, "The switch's configuration, a config_db.json")
        ->required()
        ->type_name("CONFIG.json");
    add_chip_option(*packet, parsed->chip);
    packet->add_flag("--json", parsed->options.json, "Prints one JSON object");
    packet
        ->add_option("--neighbor", parsed->options.neighbors,
                     "A host beside those of the configuration; may be given often")
        ->type_name("INTERFACE,ADDRESS,MAC[,PORT]")
        ->allow_extra_args(false);
    packet
        ->add_option("--pcap", parsed->capture,
                     "In place of one frame: every frame of this capture goes in at --in")
        ->type_name("IN.pcap");
    packet->add_option("--out", parsed->out, "Folder for a capture of each port that they leave on")
        ->type_name("DIR");
    add_frame_options(*packet, parsed);
    packet->callback([parsed] { check_words(*parsed); });
    packet->footer("Exit codes: 0 done, whatever became of the frame, 1 refused, 2 usage.");
    return {packet, [parsed](const Terminal &terminal) {
                PacketOptions options = parsed->options;
                options.config = parsed->config;
                options.chip = chip_kinds().at(parsed->chip);
                options.capture = parsed->capture;
                options.out = parsed->out;
                return commands::packet(options, terminal);
            }};
}

} // namespace lab::commands
