/*
 * kept_extras.h: the virtual MACs and private-VLAN pairs of a state folder. The
 * store has neither; the kept configuration names them, and the chip tells
 * whether they are there: l3lif/configured_macs.h holds the one against the other.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "report/up_result.h"

#include "switch.h"

#include <vector>

namespace lab::page
{

/** What the results of a state folder's switch refer to; it must outlive their use. */
class KeptExtras
{
public:
    /**
     * @param hardware  the switch as its folder has it
     * @param known     the kept configuration
     * @param result    receives the virtual MACs and pairs, each with what
     *                  the chip lacks of it
     */
    KeptExtras(const simswitch::Switch &hardware, const config::Description &known,
               report::UpResult &result);
    KeptExtras(const KeptExtras &) = delete;
    KeptExtras &operator=(const KeptExtras &) = delete;

private:
    std::vector<l3lif::Pair> pairs_;
    std::vector<l3lif::VirtualMac> macs_;
};

} // namespace lab::page
