/*
 * road_switch.h: a switch with two of each kind of interface (two_of_each.json),
 * of which each part is added and deleted by its name, and a fixed set of frames
 * through its chip.
 *
 * Beside it: chip_match.h says whether two chips are the same but for the
 * numbers that are handed out.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "lab/forward.h"
#include "routing/routing.h"

#include "switch.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace roads
{

using lab_test::chip_name;
using lab_test::Kind;
using Lines = std::vector<std::string>;

/** A frame of the set. */
struct Sample {
    std::string words; ///< as they stand behind `packet`
    int port = 0;      ///< the chip's
    std::vector<std::uint8_t> bytes;
};

/**
 * The set: from each interface to each other by IPv4 and IPv6, with and without a tag, to
 * routers' and virtual MACs, from private secondaries, and what no interface takes. It is made
 * once, with a switch of its own: call it before another one is there.
 */
const std::vector<Sample> &samples();

/** What can be added and deleted. */
enum class Part : std::uint8_t { router_mac, vlan, interface, pair, virtual_mac };

/** Something of two_of_each.json, or the second router MAC. */
struct Item {
    Part part = Part::interface;
    std::string name;  ///< "Ethernet0", "Vlan100 of L2", "pair 200 201", "00:… of Vlan200"
    Lines after = {};  ///< what is there before it
    std::size_t index; ///< among those of its part
};

/** All items, in the order in which a configuration is brought up. */
const std::vector<Item> &items();
/** Their names. */
Lines item_names();
const Item &item(std::string_view name);

/** The switch. */
class RoadSwitch
{
    bool loaded_; ///< first: the library begins as after loading

public:
    explicit RoadSwitch(Kind chip, const std::filesystem::path &state_dir = {});

    /** Adds an item; an interface is opened for the families of its addresses. It has to work. */
    void add(std::string_view name);
    void add(const Lines &names);
    /** Deletes it. @param keep  an interface's number and record stay. It has to work. */
    void remove(std::string_view name, bool keep = false);
    /** The chip and the tables with names in the place of numbers: see chip_match.h. */
    Lines all_named();
    /** What becomes of each frame of the set: "--in …: Ethernet4 untagged: …". */
    Lines fates();
    /** The interfaces' numbers in the chip. */
    std::map<std::string, int> numbers() const;
    lab::l3lif::Interface &interface(std::string_view name) const;

    simswitch::Switch hardware;
    lab::l3lif::Layer layer;
    lab_test::Traffic traffic;
    lab::routing::Routing routing;

private:
    void add_interface(const Item &added);

    std::map<std::size_t, int> stations_; ///< of router MACs, by their index
};

} // namespace roads
