/*
 * sdk/error.h: the texts of the SDK's status codes.
 */
#ifndef SDK_ERROR_H
#define SDK_ERROR_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The texts of the SDK's status codes, never null: entry n, 0 to 18, belongs
 * to the code -n, and entry 19 to every code outside -18..0.
 */
extern const char *const _shr_errmsg[20];

#ifdef __cplusplus
}
#endif

#endif
