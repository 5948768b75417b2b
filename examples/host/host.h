/*
 * host.h: what host.c and answers.c share.
 */
#ifndef HOST_H
#define HOST_H

#include <stdio.h>

/** The SDK's codes that this host answers with; sdk/error.h has their texts. */
enum { HOST_BAD_PARAMETER = -4, HOST_NOT_FOUND = -7, HOST_EXISTS = -8 };

/** Prints what a call told the chip or the store: a line under the request that made it. */
#define HOST_TOLD(...) (printf("    %s: ", __func__), printf(__VA_ARGS__), (void)putchar('\n'))

/** Errors that the library has reported; 0 when all went well. */
extern int host_errors;

#endif
