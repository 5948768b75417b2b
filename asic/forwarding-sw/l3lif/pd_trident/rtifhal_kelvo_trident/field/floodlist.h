/*
 * floodlist.h: the module-private side of the flood lists: the size of the
 * rule memory's default region, and a port's change in all entries.
 */
#pragma once

/** Last known size of the region; 128 until it has been fetched. */
extern int tcam_sup_default_size;

/** Nonzero until the size has been fetched. */
extern int tcam_sup_size_stale;

/** The size of the region, fetched until that succeeds once. */
int rtifhal_brcm_tcam_sup_default_size();

/**
 * Tells all entries that a port has turned L2 or L3.
 *
 * @param port  SDK port, of which the low 8 bits count
 * @param l2    nonzero: it is L2 now; 0: it is L3
 * @return the result of the last reinstall
 */
int rtifhal_update_llm_acl_floodlist(int port, int l2);
