/*
 * services/system.h: the kind of restart, platform keys and the tracked heap.
 */
#ifndef SERVICES_SYSTEM_H
#define SERVICES_SYSTEM_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tells whether this is a fast restart.
 *
 * @return nonzero during a fast restart
 */
int sysmgr_is_fastboot_restart(void);

/**
 * Reads a key of the platform's configuration.
 *
 * @param section  section
 * @param key      key
 * @param buffer   receives the value with its zero byte; left alone when there
 *                 is no such key
 * @param size     room in the buffer in bytes
 * @return nonzero when the key exists
 */
int get_string_from_platform_inf(const char *section, const char *key, char *buffer, int size);

/**
 * Releases memory of the tracked heap, which malloc hands out.
 *
 * @param memory  what malloc gave
 */
void mtrack_free(void *memory);

#ifdef __cplusplus
}
#endif

#endif
