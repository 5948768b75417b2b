# rtif.bash: completion of rtif for bash; it needs nothing of bash-completion. The man
# pages have what each option does.
# shellcheck shell=bash

# _rtif_options COMMAND: its options.
_rtif_options() {
    case $1 in
    up) echo "--chip --state --json --calls --trace --then-down --record" ;;
    run) echo "--chip --state --record --quiet" ;;
    shell) echo "--chip --state --record" ;;
    default-routes) echo "--read --json --force --config" ;;
    restart) echo "--state --mode --config --default-routes --then-up --json --calls --trace" ;;
    check) echo "--state --json" ;;
    dump) echo "--chip --state --json" ;;
    wire) echo "--port --chip --state --ipv6 --verbose --seconds --json" ;;
    packet) echo "--chip --json --neighbor --pcap --out --in --vlan --dmac --smac" \
        "--ip --ttl --size --proto --sport --dport --mpls --arp --hex" ;;
    report) echo "--chip --calls --state -o --out" ;;
    sweep) echo "--chip --request --codes --quick --json --jobs" ;;
    replay) echo "--chip --all" ;;
    diff) echo "--summary --request --calls" ;;
    explain) echo "--chip --state --json" ;;
    esac
}

# _rtif_words WORDS: those that begin as the word on the line.
_rtif_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "${COMP_WORDS[COMP_CWORD]}"); }

# _rtif_files [PATTERN]: files of this pattern, and folders on the way to them.
_rtif_files() {
    local word=${COMP_WORDS[COMP_CWORD]}
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <({
        compgen -d -- "$word"
        [[ $# -eq 0 ]] || compgen -f -X "!$1" -- "$word"
    } | sort -u)
}

# _rtif_value COMMAND OPTION: what may stand behind an option, if it is known; fails for an
# option that has no value.
_rtif_value() {
    case $1$2 in
    sweep--chip) _rtif_words "trident trident2 both" ;;
    *--chip) _rtif_words "trident trident2" ;;
    restart--mode) _rtif_words "cold fast restore" ;;
    *--state | packet--out) _rtif_files ;;
    report--out | report-o) _rtif_files "*.html" ;;
    *--config) _rtif_files "*.json" ;;
    packet--pcap) _rtif_files "*.pcap" ;;
    *--record | default-routes--read | restart--default-routes) _rtif_files "*" ;;
    packet--proto) _rtif_words "udp tcp icmp" ;;
    packet--dmac) _rtif_words "router broadcast" ;;
    packet--neighbor | packet--in | packet--vlan | packet--smac | packet--ip | packet--arp) ;;
    packet--ttl | packet--size | packet--sport | packet--dport | packet--mpls | packet--hex) ;;
    wire--port | wire--seconds | report--calls | sweep--request | sweep--codes | sweep--jobs) ;;
    diff--request) ;;
    *) return 1 ;;
    esac
}

# _rtif_argument COMMAND: what isn't an option.
_rtif_argument() {
    case $1 in
    explain)
        if ((COMP_CWORD == 2)); then
            _rtif_words "iif vlan station port egress"
        else
            _rtif_files "*.json"
        fi
        ;;
    run) _rtif_files "*.rtif" ;;
    replay | diff) _rtif_files "*" ;;
    shell | restart | check) ;;
    *) _rtif_files "*.json" ;;
    esac
}

_rtif() {
    local command=${COMP_WORDS[1]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        if [[ $command == -* ]]; then
            _rtif_words "--help --version -h"
        else
            _rtif_words "up run shell default-routes restart check dump wire packet report sweep
                replay diff explain"
        fi
    elif _rtif_value "$command" "$before"; then
        return
    elif [[ ${COMP_WORDS[COMP_CWORD - 2]} == --@(ip|arp) ]]; then
        return # the second of two addresses
    elif [[ ${COMP_WORDS[COMP_CWORD]} == -* ]]; then
        _rtif_words "$(_rtif_options "$command") --help -h"
    else
        _rtif_argument "$command"
    fi
}
complete -F _rtif rtif
