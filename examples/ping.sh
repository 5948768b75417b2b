#!/usr/bin/env bash
#
# ping.sh: three hosts ping each other through the switch.
#
#   usage: ping.sh [RTIF [OPTION...]]
#
#   RTIF    path of rtif; else the newest of build/*/bin/rtif
#   OPTION  of rtif wire, such as --chip trident2
#
#   host a ── Ethernet0 ┐        ┌ Ethernet8 ──┐
#                       ├ rtif ──┤             ├ host c (PortChannel0001)
#   host b ── Ethernet4 ┘        └ Ethernet12 ─┘
#
# Each host is a network namespace with a veth pair to the switch, which has a
# namespace of its own: nothing of this machine's network is touched, and all is
# gone when the script ends, however it ends. Without root a user namespace does.
# Exit code: 0 all pings came back, 1 one didn't, 77 neither root nor namespaces.
set -euo pipefail

SELF=$(readlink -f "${BASH_SOURCE[0]}")
EXAMPLES=$(dirname "$SELF")
SKIPPED=77
# A build with sanitizers on a busy machine takes its time.
READY_SECONDS=60
REPLY_SECONDS=10

say() { printf '== %s\n' "$*"; }

skip() {
    printf 'skipped: %s\n' "$*"
    exit $SKIPPED
}

fail() {
    printf 'ping.sh: %s\n' "$*" >&2
    exit 1
}

find_rtif() {
    local newest
    # shellcheck disable=SC2012  # names of our own
    newest=$(ls -t "$EXAMPLES"/../build/*/bin/rtif 2>/dev/null | head -n 1 || true)
    [[ -n $newest ]] || fail "no build/*/bin/rtif: build it first, or give its path"
    readlink -f "$newest"
}

# Goes on in namespaces of its own, in which it may do anything. Root that may not
# do it as root, as in a container, is tried as any other user.
enter() {
    local tool how
    for tool in ip ping traceroute unshare nsenter setpriv; do
        command -v "$tool" >/dev/null ||
            skip "no '$tool' (packages iproute2 iputils-ping traceroute util-linux)"
    done
    for how in --net "--user --map-root-user --net"; do
        # shellcheck disable=SC2086  # several options
        if unshare $how ip link add probe type veth peer name probe-peer 2>/dev/null; then
            PING_SH_INSIDE=1 exec unshare $how "$SELF" "$@"
        fi
    done
    skip "neither root nor user namespaces: no network namespace with veth pairs can be made"
}

declare -A PID_OF=()
RTIF_PID=
SCRATCH=

# A namespace lives as long as a process in it: ending these removes all.
clean_up() {
    local pid
    for pid in $RTIF_PID "${PID_OF[@]}"; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    [[ -z $SCRATCH ]] || rm -rf "$SCRATCH"
}

# on HOST COMMAND...: runs a command at a host.
on() {
    local host=$1
    shift
    nsenter --net="/proc/${PID_OF[$host]}/ns/net" -- "$@"
}

make_host() {
    local host=$1 tries
    # It ends with this script, even if the script is killed.
    unshare --net setpriv --pdeathsig KILL sleep 1000 &
    PID_OF[$host]=$!
    # Until it has a namespace that isn't ours.
    for ((tries = 0; tries < 500; tries++)); do
        [[ $(readlink "/proc/${PID_OF[$host]}/ns/net") == "$(readlink /proc/self/ns/net)" ]] || break
        sleep 0.02
    done
    on "$host" ip link set lo up
}

# cable HOST INTERFACE PORT: a veth pair from a host to a port of the switch.
cable() {
    local host=$1 interface=$2 port=$3
    ip link add "$port" type veth peer name "$interface" netns "${PID_OF[$host]}"
    # The switch's end is a cable: this machine has no address on it.
    ip link set "$port" addrgenmode none up
    on "$host" ip link set "$interface" up
}

# Whether the switch is ready, or has failed.
wait_for_switch() {
    local tries
    for ((tries = 0; tries < READY_SECONDS * 10; tries++)); do
        if grep -q '^ready' "$SCRATCH/switch"; then
            grep '^ready' "$SCRATCH/switch"
            return 0
        fi
        kill -0 "$RTIF_PID" 2>/dev/null || break
        sleep 0.1
    done
    cat "$SCRATCH/switch" >&2
    fail "the switch isn't ready after $READY_SECONDS s"
}

GOOD=0
BAD=0

# check TEXT COMMAND...: does something that should work.
check() {
    local text=$1
    shift
    if "$@" >"$SCRATCH/last" 2>&1; then
        printf '  good  %s\n' "$text"
        GOOD=$((GOOD + 1))
    else
        printf '  BAD   %s\n' "$text"
        sed 's/^/        /' "$SCRATCH/last"
        BAD=$((BAD + 1))
    fi
}

# pings HOST ADDRESS: one reply is enough; the first echo request may wait for a neighbour.
pings() { on "$1" ping -n -c 2 -i 0.2 -w "$REPLY_SECONDS" "$2"; }

# shows_hops HOST ADDRESS HOP...: traceroute has these hops, in this order.
shows_hops() {
    local host=$1 address=$2 seen
    shift 2
    on "$host" traceroute -n -q 2 -N 1 -w "$REPLY_SECONDS" -m 5 "$address" | tee "$SCRATCH/hops"
    seen=$(awk 'NR > 1 { for (i = 2; i <= NF; i++) if ($i ~ /[.:].*[.:]/) { print $i; break } }' "$SCRATCH/hops" | xargs)
    [[ $seen == "$*" ]] || {
        echo "hops seen: $seen; expected: $*"
        return 1
    }
}

make_hosts() {
    say "hosts a, b and c, each in a network namespace"
    make_host a
    cable a eth0 port0
    on a ip address add 10.0.0.9/24 dev eth0
    on a ip address add 2001:db8::9/64 dev eth0 nodad
    on a ip route add default via 10.0.0.1
    on a ip -6 route add default via 2001:db8::1

    make_host b
    cable b eth0 port4
    on b ip address add 10.0.1.9/24 dev eth0
    on b ip address add 2001:db8:0:1::9/64 dev eth0 nodad
    on b ip route add default via 10.0.1.1
    on b ip -6 route add default via 2001:db8:0:1::1

    # Two links with one MAC are what a port-channel looks like from here. Packets
    # come in on either; the ways back are on both.
    make_host c
    cable c eth0 port8
    cable c eth1 port12
    local member
    for member in eth0 eth1; do
        on c ip link set "$member" address 02:00:00:00:0c:09
        on c sh -c "echo 0 >/proc/sys/net/ipv4/conf/$member/rp_filter" 2>/dev/null || true
    done
    on c sh -c 'echo 0 >/proc/sys/net/ipv4/conf/all/rp_filter' 2>/dev/null || true
    local last
    for last in 9 10 11 12 13 14 15 16; do
        on c ip address add "10.0.2.$last/24" dev eth0
    done
    on c ip route add default nexthop via 10.0.2.1 dev eth0 nexthop via 10.0.2.1 dev eth1 onlink
}

start_switch() {
    say "rtif wire examples/ping.json${OPTIONS[*]:+ ${OPTIONS[*]}}"
    : >"$SCRATCH/switch"
    # It ends with this script, even if the script is killed.
    setpriv --pdeathsig TERM "$RTIF" wire "$EXAMPLES/ping.json" \
        --port Ethernet0=port0 --port Ethernet4=port4 --port Ethernet8=port8 --port Ethernet12=port12 "${OPTIONS[@]}" >"$SCRATCH/switch" 2>&1 &
    RTIF_PID=$!
    wait_for_switch
}

# Both members of the port-channel have sent something.
both_members_sent() {
    awk '$1 == "Ethernet8" || $1 == "Ethernet12" { print; if ($4 > 0) sent++ } END { exit sent != 2 }' \
        "$SCRATCH/switch"
}

stop_switch() {
    kill -TERM "$RTIF_PID"
    local code=0
    wait "$RTIF_PID" || code=$?
    RTIF_PID=
    say "what the switch counted"
    sed '0,/^ready/d' "$SCRATCH/switch" | sed 's/^/  /'
    check "the switch ended well" test "$code" -eq 0
}

run_pings() {
    say "the switch's own addresses"
    check "a pings 10.0.0.1" pings a 10.0.0.1
    check "a pings 2001:db8::1" pings a 2001:db8::1
    check "a pings 10.0.1.1, the address of another interface" pings a 10.0.1.1
    say "between two routed ports"
    check "a pings b, 10.0.1.9" pings a 10.0.1.9
    check "b pings a, 10.0.0.9" pings b 10.0.0.9
    check "a pings b, 2001:db8:0:1::9" pings a 2001:db8:0:1::9
    say "through the members of a port-channel"
    local last
    for last in 9 10 11 12 13 14 15 16; do
        check "a pings c, 10.0.2.$last" pings a "10.0.2.$last"
    done
    check "c pings b, 10.0.1.9" pings c 10.0.1.9
    say "traceroute"
    check "from a to b: 10.0.0.1, then b" shows_hops a 10.0.1.9 10.0.0.1 10.0.1.9
    check "from a to b: 2001:db8::1, then b" shows_hops a 2001:db8:0:1::9 2001:db8::1 2001:db8:0:1::9
}

main() {
    RTIF=$(readlink -f "${1:-$(find_rtif)}")
    [[ -f $RTIF && -x $RTIF ]] || fail "${1:-rtif}: no program"
    OPTIONS=("${@:2}")
    trap clean_up EXIT
    trap 'exit 1' INT TERM HUP
    SCRATCH=$(mktemp -d)
    ip link set lo up
    make_hosts
    start_switch
    run_pings
    stop_switch
    check "both members of the port-channel were used" both_members_sent
    say "$GOOD good, $BAD bad"
    [[ $BAD -eq 0 ]]
}

[[ -n ${PING_SH_INSIDE:-} ]] || enter "$@"
main "$@"
