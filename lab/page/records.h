/*
 * records.h: what the page of a switch shows, as plain records. gather.h fills
 * them; page_json.h writes them into the page, whose scripts (assets/) show them.
 *
 * What comes again and again is there once and named by its index: calls,
 * messages and the chip's objects.
 */
#pragma once

#include "journal/journal.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lab::page
{

/** A platform call, as often as it was made alike. */
struct CallLine {
    simswitch::Layer layer = simswitch::Layer::service;
    std::size_t function = 0;   ///< index into Page::functions
    std::string arguments = {}; ///< "0, 5, 67, 3"
    std::string result = {};    ///< "0", "-6", "record"; empty for a function without one
    std::string outputs = {};   ///< "id=1"; empty for none
    std::string reason = {};    ///< why it was refused, or what a flush did; may be empty
    bool queues = false;        ///< a wrapper that left a write in the queue
};

/** A message of the library. */
struct MessageLine {
    bool is_error = false;
    std::string function = {}; ///< the library's function that says it
    std::string text = {};     ///< on one line
};

/** One request of the layer above, and what it led to. */
struct RequestLines {
    std::string asked = {}; ///< "add Ethernet8"
    std::size_t calls = 0;  ///< how many there were, kept or not
    std::vector<int>
        items{};             ///< in order: n is call n, -n-1 message n; none when they were dropped
    std::size_t waiting = 0; ///< writes that the end of the request brought to the chip
    std::string refused = {}; ///< what the chip refused of those; or empty
    bool kept = false;        ///< the items are there
};

/** An object of the chip. */
struct ChipObject {
    std::string table = {}; ///< "l3_ingress", as the chip's own tables; "more" for what isn't drawn
    std::string id = {};    ///< "3", "port 9"
    std::string title = {}; ///< "Ethernet8"
    std::vector<std::pair<std::string, std::string>> fields{}; ///< name and value
    std::vector<std::string> authors{};                        ///< whose requests wrote it
    std::size_t more_authors = 0;                              ///< how many more
    bool missing = false; ///< something names it, and the chip has none
};

/** A tie between two objects of a graph. */
struct Tie {
    std::size_t from = 0; ///< index into Graph::nodes
    std::size_t to = 0;
    std::string what = {}; ///< "port control 67"
};

/** The objects of one interface, in columns from the ports to the next hops. */
struct Graph {
    struct Node {
        std::size_t object = 0; ///< index into Page::objects
        int column = 0; ///< 0 ports, 1 trunk, 2 VLAN or translation, 3 ingress, 4 L3, 5 next hops
        int row = 0;    ///< at least; 0 is the road of a packet
    };
    std::vector<Node> nodes{};
    std::vector<Tie> ties{};
};

/** What a stage of the chip's pipeline did to a packet. */
struct SampleLine {
    std::string mark = {};   ///< "hit", "miss", or empty
    std::string stage = {};  ///< "VLAN"
    std::string id = {};     ///< of the object; or empty
    std::string text = {};   ///< with names
    std::string author = {}; ///< whose request put it there; or empty
};

/** A packet that was traced while the page was made. */
struct Sample {
    std::string what = {};    ///< "to its own address"
    std::string frame = {};   ///< where it comes in, and as what
    std::string fate = {};    ///< "sent", "dropped" or "cpu"
    std::string summary = {}; ///< the same with the reason
    std::vector<SampleLine> lines{};
};

/** A routed interface. */
struct InterfaceLines {
    std::string name = {};
    std::string kind = {};  ///< "port", "svi"
    std::string state = {}; ///< "up", "stopped", "failed", "kept", "down"
    std::string error = {}; ///< why it isn't up; or empty
    std::uint32_t ifindex = 0;
    std::optional<int> code{};  ///< what the library returned; nothing when no request is known
    int iif = 0;                ///< 0: none
    bool has_interface = false; ///< the L3 interface is there: the next three are its
    int vlan = 0;
    int vrf = 0;
    int mtu = 0;
    std::string vrf_name = {};
    std::vector<std::string> families{};  ///< what the chip routes
    std::vector<std::string> ports{};     ///< their names
    std::vector<std::string> addresses{}; ///< of the configuration
    std::size_t calls = 0;                ///< of its own requests
    std::vector<RequestLines> requests{}; ///< its own
    std::vector<RequestLines> others{};   ///< of its VLAN, private-VLAN pairs and virtual MACs
    Graph graph{};
    std::vector<Sample> samples{}; ///< none for later interfaces of many
};

/** How full a table of the chip is. */
struct TableFill {
    std::string name = {};  ///< "stations"
    std::string label = {}; ///< "L2 stations"
    std::size_t used = 0;
    std::size_t size = 0;
};

/** A virtual MAC or a private-VLAN pair. */
struct ExtraLine {
    std::string what = {};  ///< "virtual MAC 00:00:5e:00:01:01"
    std::string owner = {}; ///< the interface or VLAN that has it
    std::string where = {}; ///< "station 2, VLAN 101"
    std::string error = {}; ///< or empty
};

/** A row of the configuration that isn't taken. */
struct SkippedLine {
    std::string table = {};
    std::string row = {};
    std::string reason = {};
};

/** All of it. */
struct Page {
    std::string source = {};      ///< the configuration or the state folder
    bool from_state = false;      ///< the switch of a state folder, whose calls nobody knows
    std::string host = {};        ///< host name; may be empty
    std::string chip = {};        ///< "Trident2"
    std::string mac = {};         ///< router MAC; empty when none is known
    std::optional<int> station{}; ///< its station
    std::size_t calls = 0;        ///< of all requests
    std::size_t vlans = 0;        ///< VLANs that the L2 side has set up
    std::size_t routes = 0;
    std::vector<InterfaceLines> interfaces{};
    std::vector<RequestLines> switch_requests{}; ///< those that belong to no interface
    std::vector<ExtraLine> virtual_macs{};
    std::vector<ExtraLine> pairs{};
    std::vector<TableFill> tables{};
    std::vector<SkippedLine> skipped{};
    std::vector<std::string> notes{};
    std::vector<std::string> functions{};
    std::vector<CallLine> call_lines{};
    std::vector<MessageLine> messages{};
    std::vector<ChipObject> objects{};
    std::size_t call_limit = 0;      ///< calls that the page may hold
    std::size_t without_calls = 0;   ///< interfaces whose calls were dropped for it
    std::size_t failed_requests = 0; ///< refused, beside interfaces: VLANs, virtual MACs, pairs
};

} // namespace lab::page
