#!/usr/bin/env bash
#
# try_stock.sh: installs the three packages in a fresh Debian 12 by apt, and uses them
# there: rtif on an installed example, man pages, a host that is built. `./dev package
# --stock` runs it. Nothing of this machine is changed but a temporary folder.
set -euo pipefail

HERE=$(cd "$(dirname "$0")" && pwd)
SUITE=bookworm
EXAMPLES=/usr/share/doc/rtif/examples

usage() {
    cat <<'TEXT'
usage: packaging/debian/try_stock.sh PACKAGES [--base DIR]

PACKAGES is the folder of the three .deb. Without DIR, the root of a minimal Debian 12
that is copied, debootstrap makes one from the mirror that apt has. Takes root.
TEXT
}

say() { printf '== %s\n' "$*"; }

fail() {
    printf 'try_stock.sh: %s\n' "$*" >&2
    exit 1
}

inside() { chroot "$ROOT" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"; }

quiet_apt() {
    inside apt-get -qq -o Dpkg::Use-Pty=0 --no-install-recommends "$@" >"$WORK/apt.log" 2>&1 ||
        { cat "$WORK/apt.log" >&2; fail "apt-get $* failed"; }
}

# A package's file, as it is inside.
package() { (cd "$ROOT" && echo ./packages/"$1"_*.deb); }

clean_up() {
    umount "$ROOT/proc" 2>/dev/null || true
    # Never beyond a mount that is left.
    rm -rf --one-file-system "$WORK"
}

# The mirror that apt has for this release.
mirror() {
    # shellcheck disable=SC2016  # apt's own variable
    apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Codename: $SUITE" 2>/dev/null |
        sort -u | head -n 1
}

make_root() {
    if [[ -n $BASE ]]; then
        say "a copy of $BASE"
        cp -a "$BASE" "$ROOT"
    else
        local from
        from=$(mirror)
        [[ -n $from ]] || from=http://deb.debian.org/debian
        say "debootstrap $SUITE from $from"
        debootstrap --variant=minbase "$SUITE" "$ROOT" "$from" >"$WORK/debootstrap.log" ||
            { tail -n 20 "$WORK/debootstrap.log"; fail "debootstrap failed"; }
    fi
    cp -L /etc/resolv.conf "$ROOT/etc/resolv.conf"
    mount -t proc proc "$ROOT/proc"
    quiet_apt update
}

install_and_run() {
    say "apt-get install rtif"
    quiet_apt install "$(package librtifhal-trident0)" "$(package rtif)"
    inside rtif --version
    inside ldconfig -p | grep -F librtifhal_trident.so.0 || fail "the loader doesn't know the library"
    inside rtif up "$EXAMPLES/kinds.json" | tail -n 12
    inside rtif run --quiet "$EXAMPLES/changes.rtif"
    inside rtif run --quiet --chip trident2 "$EXAMPLES/ports.rtif"
}

build_host() {
    say "a host, built from the packages"
    quiet_apt install "$(package librtifhal-trident-dev)" gcc libc6-dev pkg-config cmake make
    cp -r "$HERE/../../tests/install/host" "$ROOT/host"
    # shellcheck disable=SC2016  # expanded inside
    inside sh -euc 'cd /host
        cc -std=c11 -Wall -Wextra -Werror -c host.c $(pkg-config --cflags rtifhal_trident)
        ./standins.sh /usr/lib/*/librtifhal_trident.so host.o > standins.c
        cc -o by-pkg-config host.o standins.c $(pkg-config --libs rtifhal_trident)
        rm standins.c
        cmake -S . -B build >/dev/null
        cmake --build build >/dev/null
        ./by-pkg-config > by-pkg-config.txt
        build/host > by-cmake.txt
        cmp by-pkg-config.txt by-cmake.txt
        cat by-cmake.txt'
    cmp "$ROOT/host/by-cmake.txt" "$HERE/../../tests/install/host/says.txt"
    say "the example of a whole host"
    # shellcheck disable=SC2016  # expanded inside
    inside sh -euc 'cp -r /usr/share/doc/librtifhal-trident-dev/examples/host /whole
        cd /whole
        make -s HEADERS="$(pkg-config --cflags rtifhal_trident)"
        ./host /usr/lib/*/librtifhal_trident.so | diff expected.txt -'
}

read_pages() {
    say "man pages"
    quiet_apt install man-db
    local page said pages
    pages=$(inside dpkg -L rtif librtifhal-trident-dev | grep '/man/man./')
    for page in $pages; do
        said=$(inside man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
        [[ -z $said ]] || fail "$page: $said"
    done
    say "$(wc -w <<<"$pages") pages without a warning"
    inside man -w rtif librtifhal_trident
    inside whatis rtif
}

remove() {
    say "apt-get purge"
    quiet_apt purge rtif librtifhal-trident-dev librtifhal-trident0
    local left
    left=$(find "$ROOT/usr" "$ROOT/etc" "$ROOT/var/lib" -name 'rtif*' -o -name '_rtif' -o -name 'librtifhal*')
    [[ -z $left ]] || fail "left behind: $left"
}

PACKAGES=
BASE=
while [[ $# -gt 0 ]]; do
    case $1 in
    --base)
        BASE=${2:?--base needs a folder}
        shift
        ;;
    -h | --help) usage; exit 0 ;;
    *) PACKAGES=$1 ;;
    esac
    shift
done
if [[ -z $PACKAGES ]]; then
    usage >&2
    exit 2
fi
[[ $(id -u) -eq 0 ]] || fail "making a root folder takes root"
compgen -G "$PACKAGES/rtif_*.deb" >/dev/null || fail "no packages in $PACKAGES"

WORK=$(mktemp -d)
ROOT=$WORK/root
trap clean_up EXIT
make_root
mkdir "$ROOT/packages"
cp "$PACKAGES"/*.deb "$ROOT/packages"
install_and_run
build_host
read_pages
remove
say "installed, used and removed in Debian $(cat "$ROOT/etc/debian_version")"
