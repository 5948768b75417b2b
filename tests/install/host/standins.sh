#!/bin/sh
#
# standins.sh LIBRARY HOST_OBJECT: C for each name that the library wants of its
# process, the host doesn't have and neither libc nor GLib: a function that ends the
# process, saying which it is. So a small host shows at once what it forgot.
set -eu

wanted=$(nm -D --undefined-only --format=posix "$1" |
    awk '$2 == "U" && $1 !~ /@/ && $1 !~ /^g_hash_table_/ { print $1 }')
had=$(nm --defined-only --format=posix "$2" | awk '{ print $1 }')

echo '#include <stdio.h>'
echo '#include <stdlib.h>'
for name in $wanted; do
    if ! printf '%s\n' "$had" | grep -qx "$name"; then
        printf 'void %s(void);\nvoid %s(void) { fputs("the host has no %s\\n", stderr); abort(); }\n' \
            "$name" "$name" "$name"
    fi
done
