/*
 * def_route_file.cpp: see def_route_file.h.
 *
 * A count of routes in the byte order of the host, then the routes; no magic,
 * version or checksum. What the count promises and the file doesn't hold reads
 * as zeros, so that a missing path counts as not valid.
 */
#include "defaults/def_route_file.h"

#include "defaults/default_nh.h"

#include <stdio.h>
#include <stdlib.h>

def_route_rec_t *def_routes;
uint32_t num_def_routes;
def_egress_set_t *egresses;
uint32_t def_routes_loaded;

namespace
{

constexpr char DEF_ROUTE_FILE[] = "/mnt/pss/default_route.txt";

/** Zeroed records; room for one where none is asked for, so that an empty file counts as loaded. */
template <class Record> Record *allocate(uint32_t count)
{
    return static_cast<Record *>(calloc(count != 0 ? count : 1, sizeof(Record)));
}

} // namespace

void load_def_routes()
{
    FILE *const file = fopen(DEF_ROUTE_FILE, "rb");
    if (file != nullptr) {
        num_def_routes = 0;
        (void)!fread(&num_def_routes, sizeof num_def_routes, 1, file);
        def_routes = allocate<def_route_rec_t>(num_def_routes);
        if (def_routes == nullptr) {
            num_def_routes = 0;
        } else {
            (void)!fread(def_routes, sizeof *def_routes, num_def_routes, file);
        }
        egresses = allocate<def_egress_set_t>(num_def_routes);
        if (egresses == nullptr) {
            num_def_routes = 0;
        }
        (void)fclose(file);
        (void)remove(DEF_ROUTE_FILE);
    }
    def_routes_loaded = 1;
}

void rtifhal_trident_destroy_default_nh(void)
{
    if (def_routes_loaded == 0) {
        return;
    }
    if (egresses != nullptr) {
        for (uint32_t i = 0; i < num_def_routes; ++i) {
            clear_old_egress(&egresses[i]);
        }
    }
    free(egresses);
    egresses = nullptr;
    if (def_routes != nullptr) {
        free(def_routes);
        def_routes = nullptr;
        def_routes_loaded = 0;
        num_def_routes = 0;
    }
}
