/*
 * l2.cpp: L2 stations (sdk/l2.h) over chip/stations.h.
 */
#include "chip/refusal.h"
#include "sdk/access.h"
#include "sdk/convert.h"

#include <sdk/l2.h>

using namespace simswitch;

extern "C" {

void bcm_l2_station_t_init(bcm_l2_station_t *station)
{
    sdk::clear_record(__func__, station);
}

int bcm_l2_station_add(int unit, int *station_id, bcm_l2_station_t *station)
{
    Call call(Layer::sdk, __func__, unit, station);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        Outcome outcome = chip.stations.create(sdk::to_chip(*station), *station_id);
        if (outcome.ok()) {
            call.out("id", *station_id);
        }
        return outcome;
    });
}

int bcm_l2_station_delete(int unit, int station_id)
{
    Call call(Layer::sdk, __func__, unit, station_id);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.stations.remove(station_id); });
}

int bcm_l2_station_get(int unit, int station_id, bcm_l2_station_t *station)
{
    Call call(Layer::sdk, __func__, unit, station_id);
    return sdk::read(call, unit, [&](const chip::Chip &chip) -> Outcome {
        const chip::Station *found = chip.stations.find(station_id);
        if (found == nullptr) {
            return chip::unknown("station", station_id);
        }
        *station = sdk::to_sdk(*found);
        call.out("station", *station);
        return {};
    });
}

} // extern "C"
