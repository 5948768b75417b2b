/*
 * observer.h: who watches a frame's way through the pipeline.
 *
 * Each stage tells its observer what it looked up and whether it was there. The
 * telling is a function that is only called by an observer that traces, so the
 * one that traces nothing costs nothing. trace.h has one that writes it all down.
 */
#pragma once

#include <string>

namespace simswitch::chip::pipeline
{

/** The stages in the order in which a frame meets them. */
enum class Stage {
    frame,
    port,
    translation,
    vlan,
    spanning_tree,
    interface,
    learning,
    station,
    family,
    reverse_path,
    trap,
    field,
    route,
    multipath,
    egress,
    l3_interface,
    tunnel,
    trunk,
    leave,
    bridge,
};

/** "VLAN translation". */
const char *text(Stage stage);

/** How a look-up ended. */
enum class Mark {
    hit,  ///< it was there and the frame went by it
    miss, ///< it wasn't there, or said no
    none  ///< nothing was looked for
};

/** What one stage did. */
struct Line {
    Mark mark = Mark::none;
    Stage stage = Stage::frame;
    std::string table{};   ///< table as in Chip::for_each_table, or "l2"; empty for none
    std::string id{};      ///< the object's id, its key where it has no number
    std::string text{};    ///< what it said
    std::string nearest{}; ///< on a miss the entry that came nearest, empty for none
};

/** Watches nothing. Frames are traffic: source addresses are learned. */
struct NullObserver {
    static constexpr bool traces = false;
};

} // namespace simswitch::chip::pipeline
