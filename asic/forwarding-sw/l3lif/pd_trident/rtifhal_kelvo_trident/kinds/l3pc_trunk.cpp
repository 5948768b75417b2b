/*
 * l3pc_trunk.cpp: a port joins a routed port-channel's trunk, which is created
 * with the first member. l3pc.cpp calls it.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/gport.h"

#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/trunk.h>
#include <string.h>

namespace
{

/** The SDK's codes for a trunk that is missing, and for one that is there. */
constexpr int SDK_NOT_FOUND = -7;
constexpr int SDK_EXISTS = -8;

constexpr uint32_t TRUNK_WITH_ID = 16;

/** What the choice of a member hashes, and the Trident2's flow table. */
constexpr int TRIDENT_SELECTION = 9;
constexpr int TRIDENT2_SELECTION = 15;
constexpr int TRIDENT2_DYNAMIC_SIZE = 256;
constexpr int SDK_CHOOSES = -1;

/** One request, as the steps hand it on. */
struct trunk_request {
    int unit;
    int tid;
    int create;
    int count;
    bcm_trunk_info_t info;
    bcm_trunk_member_t members[TRUNK_MEMBERS];
};

void fill_info(bcm_trunk_info_t &info)
{
    const bool trident2 = bcm_pd_is_device_trident2() != 0;
    info.psc = trident2 ? TRIDENT2_SELECTION : TRIDENT_SELECTION;
    info.dlf_index = SDK_CHOOSES;
    info.mc_index = SDK_CHOOSES;
    info.ipmc_index = SDK_CHOOSES;
    if (trident2) {
        info.dynamic_size = TRIDENT2_DYNAMIC_SIZE;
    }
}

/** Creates the missing trunk; one that is there after all is taken as new. */
int create_trunk(trunk_request &request)
{
    TRACE_OF(rtifhal_alloc_l3pc_add, "BAD BAD BAD BAD BAD \n");
    REPORT_OF(rtifhal_alloc_l3pc_add, "calling bcm_trunk_create_id(unit=%d, tid=%d)\n",
              request.unit, request.tid);
    if (request.create == 0) {
        return SDK_NOT_FOUND;
    }
    int rc = bcm_trunk_create(request.unit, TRUNK_WITH_ID, &request.tid);
    if (rc < 0 && rc != SDK_EXISTS) {
        REPORT_OF(rtifhal_alloc_l3pc_add, "bcm_trunk_create_id(%d) failed: %s\n", request.tid,
                  rtifhal_errtext(rc));
        return rc;
    }
    fill_info(request.info);
    rc = fwmpd_bcm_trunk_set(request.unit, request.tid, &request.info, request.count,
                             request.members);
    if (rc < 0) {
        REPORT_OF(rtifhal_alloc_l3pc_add, "bcm_trunk_set(%d) failed(create): %s\n", request.tid,
                  rtifhal_errtext(rc));
    }
    return 0;
}

/** Makes sure that the trunk is there. */
int ensure_trunk(trunk_request &request)
{
    bcm_trunk_info_t_init(&request.info);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_trunk_get(request.unit, request.tid, &request.info, TRUNK_MEMBERS,
                                 request.members, &request.count);
    if (rc == SDK_NOT_FOUND) {
        return create_trunk(request);
    }
    // Reported with create also when the trunk is simply there already.
    if (rc < 0 || request.create != 0) {
        REPORT_OF(rtifhal_alloc_l3pc_add, "bcm_trunk_get(unit=%d, tid=%d) failed: %s\n",
                  request.unit, request.tid, rtifhal_errtext(rc));
    }
    return rc < 0 ? rc : 0;
}

/** Whether one of the records names the member; no cleared one does. */
bool has_member(const trunk_request &request, bcm_gport_t gport)
{
    for (int i = 0; i < request.count && i < TRUNK_MEMBERS; ++i) {
        if (request.members[i].gport == gport) {
            return true; // GCOVR_EXCL_LINE
        }
    }
    return false;
}

} // namespace

int rtifhal_alloc_l3pc_add(int unit, int tid, int port, int create)
{
    TRACE("tid = %x tport = %d create = %d\n", tid, port, create);
    trunk_request request = {};
    request.unit = unit;
    request.tid = tid;
    request.create = create;
    if (const int rc = ensure_trunk(request); rc != 0) {
        return rc;
    }

    // The records are cleared before they are compared: a port that is a
    // member already goes on, and the SDK answers.
    memset(request.members, 0, sizeof request.members);
    bcm_trunk_member_t member;
    bcm_trunk_member_t_init(&member);
    member.gport = module_port(unit, port);
    if (has_member(request, member.gport)) {
        TRACE("tport = %d already member of tid = %x\n", port, request.tid); // GCOVR_EXCL_LINE
        return 0;                                                            // GCOVR_EXCL_LINE
    }
    const int rc = fwmpd_bcm_trunk_member_add(unit, request.tid, member);
    if (rc != 0) {
        REPORT("bcm_trunk_member_add failed for TRUNK %d PORT %d: %s\n", request.tid, port,
               rtifhal_errtext(rc));
    }
    return 0;
}
