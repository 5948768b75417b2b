/*
 * pipeline.h: what the chip does with a frame.
 *
 * The tables of the chip say what happens, and are only read here. The pipeline
 * has a state of its own, the L2 addresses (l2_table.h), and what it derives from
 * the tables (indexes.h). Forwarding a frame allocates nothing.
 *
 *     Pipeline pipeline(chip);
 *     Result result;
 *     pipeline.run(5, frame, result);
 *     if (result.left_on(6)) { … result.write(6, out) … }
 *
 * docs/pipeline.md tells what each stage does and what each number is taken for.
 */
#pragma once

#include "chip/pipeline/indexes.h"
#include "chip/pipeline/l2_table.h"
#include "chip/pipeline/result.h"
#include "chip/pipeline/trace.h"

namespace simswitch::chip::pipeline
{

/** The packet side of a chip. */
class Pipeline
{
public:
    /**
     * @param chip      the chip, which must outlive this
     * @param l2_limit  number of L2 addresses that there is room for
     */
    explicit Pipeline(const Chip &chip, std::size_t l2_limit = L2Table::DEFAULT_LIMIT)
        : chip_(chip), indexes_(chip), l2_(l2_limit)
    {
    }

    /**
     * Takes a frame as traffic: its source address is learned where frames are bridged.
     *
     * @param port    port on which it came in, 0 for one that the CPU sends
     * @param frame   the frame without its FCS, up to 9600 bytes
     * @param result  receives what became of it
     */
    void run(int port, std::span<const std::uint8_t> frame, Result &result);
    /** The same without learning, written down in a trace, which must be new. */
    void trace(int port, std::span<const std::uint8_t> frame, Result &result, Trace &trace);

    L2Table &l2() { return l2_; }

private:
    const Chip &chip_;
    Indexes indexes_;
    L2Table l2_;
};

} // namespace simswitch::chip::pipeline
