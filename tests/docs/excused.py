"""excused.py: commands of the pages that commands_test.py can't run, each with the reason.

Their options are looked at all the same. An entry that no page needs any more fails the test.
"""

from dataclasses import dataclass


@dataclass(frozen=True)
class Excuse:
    """The commands of a page that begin so. Where `unless` is given, a command of the shell, they
    run if that succeeds; where `prints` is given, it is a file with what such a command prints,
    which a test of its own holds."""

    page: str
    begins: str
    reason: str
    unless: str = ""
    prints: str = ""


EXCUSED = (
    Excuse(
        "docs/integrating.md",
        "cd examples/host && make",
        "shipped.example_host runs it, on a library without sanitizers",
        prints="examples/host/expected.txt",
    ),
    Excuse("docs/integrating.md", "cmake ", "builds the library as a whole"),
    Excuse("docs/contributing.md", "cmake --build ", "builds tests, which takes minutes"),
    Excuse("docs/contributing.md", "build/dev/bin/test_library ", "runs tests of a build"),
    Excuse("docs/contributing.md", "ctest ", "runs tests of a build"),
    Excuse("docs/installing.md", "apt-get install ", "needs root; ./dev package --stock does it"),
    Excuse("docs/installing.md", "rtif up /usr/", "./dev package --stock runs it"),
    Excuse("docs/installing.md", "man rtif", "./dev package --stock reads every page"),
    Excuse("docs/installing.md", "cmake ", "builds the library; shipped.install does so"),
    Excuse("docs/installing.md", "cc ", "needs the library installed; shipped.install does so"),
    Excuse("docs/installing.md", "pkg-config ", "needs the library installed; shipped.install does so"),
    Excuse(
        "docs/restart.md",
        "rtif restart --state leaf --mode fast ",
        "needs root or user namespaces, to mount a folder of its own",
        unless="unshare --user --map-root-user --mount true",
    ),
    Excuse("docs/wire.md", "ip ", "needs root"),
    Excuse("docs/wire.md", "rtif wire ", "needs root and a network interface; ping.* run it"),
    Excuse("docs/wire.md", "ping ", "needs root and a network interface; ping.* run it"),
    Excuse("docs/wire.md", "ethtool ", "needs a network interface, and isn't in packages.txt"),
    Excuse("docs/wire.md", "examples/ping.sh", "ping.* run it"),
)

# Verbs of ./dev that hand their options on, with the program that has them.
DEV_OPTIONS = {
    "model": "tests/model/model_walk.cpp",
    "mutate": "scripts/mutate.py",
    "sweep": "tests/sweep/kill_sweep.cpp",
}

# Options that prose names alone, with what has them.
OTHER_OPTIONS = {
    "--component": "cmake --install",
    "--messages": "./dev mutate",
    "--direction": "./dev sweep",
    "--first": "./dev sweep",
    "--last": "./dev sweep",
}
