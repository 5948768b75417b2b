# rtif.fish: completion of rtif for fish. The man pages have what each option does.

# The command on the line is one of these.
function __rtif_in
    set -l words (commandline -opc)
    set -q words[2]; and contains -- $words[2] $argv
end

# The word is the second of two addresses.
function __rtif_second_address
    set -l words (commandline -opc)
    contains -- $words[-2] --ip --arp
end

# Files that end so, and folders on the way to them.
function __rtif_files
    set -l word (commandline -ct)
    for file in $word*$argv[1] $word*/
        echo $file
    end
end

complete -c rtif -f
complete -c rtif -s h -l help -d 'print a help'
complete -c rtif -n __fish_use_subcommand -l version -d 'print the version'
complete -c rtif -n __fish_use_subcommand -a up -d 'bring a configuration up and show what the chip holds'
complete -c rtif -n __fish_use_subcommand -a run -d 'run a script'
complete -c rtif -n __fish_use_subcommand -a shell -d 'take commands one by one'
complete -c rtif -n __fish_use_subcommand -a default-routes -d 'write or show the file of default routes'
complete -c rtif -n __fish_use_subcommand -a restart -d 'start again on a state folder'
complete -c rtif -n __fish_use_subcommand -a check -d 'compare what store, chip and library have'
complete -c rtif -n __fish_use_subcommand -a dump -d 'print the library\'s dumps'
complete -c rtif -n __fish_use_subcommand -a wire -d 'forward between network interfaces'
complete -c rtif -n __fish_use_subcommand -a packet -d 'tell where a frame goes and why'
complete -c rtif -n __fish_use_subcommand -a report -d 'write an HTML page of a switch'
complete -c rtif -n __fish_use_subcommand -a sweep -d 'let every platform call fail'
complete -c rtif -n __fish_use_subcommand -a replay -d 'run a recording again'
complete -c rtif -n __fish_use_subcommand -a diff -d 'compare two recordings'
complete -c rtif -n __fish_use_subcommand -a explain -d 'tell who holds a number of the chip'

complete -c rtif -n '__rtif_in up' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in up' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in up' -l json -d 'print JSON'
complete -c rtif -n '__rtif_in up' -l calls -d 'print the platform calls'
complete -c rtif -n '__rtif_in up' -l trace -d 'print the library\'s messages'
complete -c rtif -n '__rtif_in up' -l then-down -d 'take everything down again'
complete -c rtif -n '__rtif_in up' -l record -r -F -d 'write all requests and calls into a file'
complete -c rtif -n '__rtif_in up' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in run' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in run' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in run' -l record -r -F -d 'write all requests and calls into a file'
complete -c rtif -n '__rtif_in run' -l quiet -d 'print failures only'
complete -c rtif -n '__rtif_in run' -a '(__rtif_files .rtif)'

complete -c rtif -n '__rtif_in shell' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in shell' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in shell' -l record -r -F -d 'write all requests and calls into a file'

complete -c rtif -n '__rtif_in default-routes' -l read -r -F -d 'show this file'
complete -c rtif -n '__rtif_in default-routes' -l json -d 'with --read: print JSON'
complete -c rtif -n '__rtif_in default-routes' -l force -d 'replace the file'
complete -c rtif -n '__rtif_in default-routes' -l config -x -a '(__rtif_files .json)' -d 'take names of this configuration'
complete -c rtif -n '__rtif_in default-routes' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in restart' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in restart' -l mode -x -a 'cold fast restore' -d 'the kind of start'
complete -c rtif -n '__rtif_in restart' -l config -x -a '(__rtif_files .json)' -d 'a configuration in place of the folder\'s'
complete -c rtif -n '__rtif_in restart' -l default-routes -r -F -d 'fast: the file of default routes'
complete -c rtif -n '__rtif_in restart' -l then-up -d 'restore: then bring up what is missing'
complete -c rtif -n '__rtif_in restart' -l json -d 'print JSON'
complete -c rtif -n '__rtif_in restart' -l calls -d 'print the platform calls'
complete -c rtif -n '__rtif_in restart' -l trace -d 'print the library\'s messages'

complete -c rtif -n '__rtif_in check' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in check' -l json -d 'print JSON'

complete -c rtif -n '__rtif_in dump' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in dump' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in dump' -l json -d 'print JSON'
complete -c rtif -n '__rtif_in dump' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in wire' -l port -x -d 'a port and its interface'
complete -c rtif -n '__rtif_in wire' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in wire' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in wire' -l ipv6 -d 'IPv6 of the switch on'
complete -c rtif -n '__rtif_in wire' -l verbose -d 'print a line for each frame'
complete -c rtif -n '__rtif_in wire' -l seconds -x -d 'end after this time'
complete -c rtif -n '__rtif_in wire' -l json -d 'print JSON, one object a line'
complete -c rtif -n '__rtif_in wire' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in packet' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in packet' -l json -d 'print JSON'
complete -c rtif -n '__rtif_in packet' -l neighbor -x -d 'INTERFACE,ADDRESS,MAC[,PORT] of a host'
complete -c rtif -n '__rtif_in packet' -l pcap -x -a '(__rtif_files .pcap)' -d 'take every frame of a capture'
complete -c rtif -n '__rtif_in packet' -l out -x -a '(__fish_complete_directories)' -d 'folder for captures'
complete -c rtif -n '__rtif_in packet' -l in -x -d 'where the frame comes in'
complete -c rtif -n '__rtif_in packet' -l vlan -x -d 'its VLAN'
complete -c rtif -n '__rtif_in packet' -l dmac -x -a 'router broadcast' -d 'its destination MAC'
complete -c rtif -n '__rtif_in packet' -l smac -x -d 'its source MAC'
complete -c rtif -n '__rtif_in packet' -l ip -x -d 'a packet between two addresses'
complete -c rtif -n '__rtif_in packet' -l ttl -x -d 'TTL or hop limit'
complete -c rtif -n '__rtif_in packet' -l size -x -d 'bytes of the frame'
complete -c rtif -n '__rtif_in packet' -l proto -x -a 'udp tcp icmp' -d 'what the packet carries'
complete -c rtif -n '__rtif_in packet' -l sport -x -d 'source port'
complete -c rtif -n '__rtif_in packet' -l dport -x -d 'destination port'
complete -c rtif -n '__rtif_in packet' -l mpls -x -d 'a label in front'
complete -c rtif -n '__rtif_in packet' -l arp -x -d 'an ARP request'
complete -c rtif -n '__rtif_in packet' -l hex -x -d 'the frame\'s bytes'
complete -c rtif -n '__rtif_in packet; and not __rtif_second_address' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in report' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in report' -l calls -x -d 'how many calls the page may hold'
complete -c rtif -n '__rtif_in report' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in report' -s o -l out -x -a '(__rtif_files .html)' -d 'the page'
complete -c rtif -n '__rtif_in report' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in sweep' -l chip -x -a 'trident trident2 both' -d 'the kind of chip'
complete -c rtif -n '__rtif_in sweep' -l request -x -d 'only this request'
complete -c rtif -n '__rtif_in sweep' -l codes -x -d 'what the calls fail with'
complete -c rtif -n '__rtif_in sweep' -l quick -d 'the first call of each function only'
complete -c rtif -n '__rtif_in sweep' -l json -d 'print JSON'
complete -c rtif -n '__rtif_in sweep' -l jobs -x -d 'processes side by side'
complete -c rtif -n '__rtif_in sweep' -a '(__rtif_files .json)'

complete -c rtif -n '__rtif_in replay' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in replay' -l all -d 'a line for each request that differs'
complete -c rtif -n '__rtif_in replay' -F

complete -c rtif -n '__rtif_in diff' -l summary -d 'a line for each request that differs'
complete -c rtif -n '__rtif_in diff' -l request -x -d 'only this request'
complete -c rtif -n '__rtif_in diff' -l calls -d 'leave messages out'
complete -c rtif -n '__rtif_in diff' -F

complete -c rtif -n '__rtif_in explain' -l chip -x -a 'trident trident2' -d 'the kind of chip'
complete -c rtif -n '__rtif_in explain' -l state -x -a '(__fish_complete_directories)' -d 'folder of chip and persistent store'
complete -c rtif -n '__rtif_in explain' -l json -d 'print JSON'
complete -c rtif -n '__rtif_in explain; and test (count (commandline -opc)) -eq 2' -a 'iif vlan station port egress'
complete -c rtif -n '__rtif_in explain; and test (count (commandline -opc)) -ge 4' -a '(__rtif_files .json)'
