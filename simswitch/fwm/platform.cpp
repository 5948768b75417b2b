/*
 * platform.cpp: what the platform layer tells of the chip, and what it does
 * at once (fwmpd/platform.h). The global configuration is with the store
 * (services/store.h).
 */
#include <fwmpd/platform.h>

#include "chip/refusal.h"
#include "journal/call.h"
#include "switch.h"

using namespace simswitch;

int fwmpd_asic_cpu_port = chip::CPU_PORT;
int fwmpd_trident_unit = 0;

extern "C" {

int bcm_pd_is_device_trident2(void)
{
    Call call(Layer::service, __func__);
    return call.run([] { return Switch::current().chip.kind() == chip::Kind::trident2 ? 1 : 0; });
}

int fwmpd_inband_init(void)
{
    Call call(Layer::service, __func__);
    return call.run([] {
        ++Switch::current().host.inband_inits;
        return OK;
    });
}

int fwmpd_allocate_stg(bcm_vlan_t vlan, int *stg)
{
    Call call(Layer::service, __func__, vlan);
    return call.run([&] {
        chip::Chip &chip = Switch::current().chip;
        Outcome outcome = chip.stgs.create(*stg);
        if (outcome.ok()) {
            ++chip.writes;
            call.out("stg", *stg);
        }
        return outcome;
    });
}

int fwmpd_get_vlan_stg(bcm_vlan_t vlan)
{
    Call call(Layer::service, __func__, vlan);
    return call.run([&]() -> Outcome {
        const chip::Vlan *found = Switch::current().chip.vlans.find(vlan);
        if (found == nullptr) {
            // No code may stand here: callers take the low 16 bits as a group.
            return {0, chip::unknown("VLAN", vlan).reason};
        }
        return {found->stg, {}};
    });
}

int fwmpd_pif_to_asic_port(int pif)
{
    Call call(Layer::service, __func__, pif);
    // Platform interfaces are numbered from 0, front ports from 1.
    return call.run([&] { return static_cast<int>(static_cast<unsigned>(pif) + 1U); });
}

int fwmpd_trident_get_sup_tcam_default_size(int *size)
{
    Call call(Layer::service, __func__);
    return call.run([&] {
        *size = static_cast<int>(Switch::current().chip.limits().rule_region);
        call.out("size", *size);
        return OK;
    });
}

} // extern "C"
