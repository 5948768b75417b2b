/*
 * error.cpp: the texts of the SDK's status codes (sdk/error.h).
 */
#include <sdk/error.h>

extern "C" {

const char *const _shr_errmsg[20] = {
    "no error",             //   0
    "internal error",       //  -1
    "out of memory",        //  -2
    "no such unit",         //  -3
    "value out of range",   //  -4
    "table empty",          //  -5
    "table full",           //  -6
    "no such entry",        //  -7
    "entry exists already", //  -8
    "timed out",            //  -9
    "busy",                 // -10
    "failed",               // -11
    "switched off",         // -12
    "bad identifier",       // -13
    "no resources",         // -14
    "bad configuration",    // -15
    "not available",        // -16
    "not initialised",      // -17
    "bad port",             // -18
    "unknown error",        // every other code
};

} // extern "C"
