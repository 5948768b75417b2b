/*
 * kept_extras.cpp: see kept_extras.h.
 */
#include "page/kept_extras.h"

#include "l3lif/configured_macs.h"

#include <string>
#include <utility>

namespace lab::page
{

KeptExtras::KeptExtras(const simswitch::Switch &hardware, const config::Description &known,
                       report::UpResult &result)
{
    const l3lif::ConfiguredMacs configured(known);
    for (const l3lif::PairPlan &plan : configured.pairs()) {
        pairs_.push_back({plan, {}, {}});
    }
    for (const l3lif::VirtualMacPlan &plan : configured.macs()) {
        macs_.push_back({plan, {}, {}});
    }
    for (const l3lif::Pair &pair : pairs_) {
        auto view = l3lif::ConfiguredMacs::read_back(hardware, pair.plan);
        const std::string missing = view.missing;
        result.pairs.push_back({&pair, std::move(view), missing});
    }
    for (const l3lif::VirtualMac &mac : macs_) {
        auto view = configured.read_back(hardware, mac.plan);
        const std::string missing = view.missing;
        result.virtual_macs.push_back({&mac, std::move(view), missing});
    }
}

} // namespace lab::page
