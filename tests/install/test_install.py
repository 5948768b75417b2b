"""What `cmake --install` puts in place, as those use it who have nothing but that: a tiny
host, in a folder elsewhere, built by find_package and by pkg-config, and run.

    python3 tests/install/test_install.py [TEST...]

The library is built anew, by the commands of docs/installing.md; that takes a few seconds.
The packages of Debian have test_packages.py.
"""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
HOST = Path(__file__).resolve().parent / "host"
CONTRACT = ROOT / "platform/include"

# 0 to 2 belong to nobody, so the first number is 3: the bit 0x10 of its byte.
HOST_SAYS = (HOST / "says.txt").read_text()


def run(*words, env=None, cwd=None):
    """What the command printed; what it had to complain about fails the test."""
    made = subprocess.run([str(word) for word in words], capture_output=True, text=True, cwd=cwd,
                          env={**os.environ, **(env or {})}, check=False)
    if made.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, words))}: exit {made.returncode}\n"
                             f"{made.stdout}{made.stderr}")
    return made.stdout


def shown(*, having):
    """The block of commands in docs/installing.md that has this text."""
    page = (ROOT / "docs/installing.md").read_text()
    blocks = re.findall(r"^```sh\n(.*?)^```", page, re.M | re.S)
    return next(block for block in blocks if having in block)


def build_library(folder, *options):
    """The library alone, as for a product."""
    run("cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
        "-DRTIFHAL_LAB=OFF", *options)
    run("cmake", "--build", folder)


def install(build, prefix):
    for component in ("library", "development"):
        run("cmake", "--install", build, "--prefix", prefix, "--component", component)


def copy_of_host(folder):
    shutil.copytree(HOST, folder)
    return folder


def build_by_cmake(source, prefix, *options):
    """The host's program, by find_package."""
    build = source / "build"
    run("cmake", "-S", source, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}", *options)
    run("cmake", "--build", build)
    return build / "host"


def build_by_pkg_config(source, pkgconfig, *options, env=None):
    """The host's program, by a compiler and pkg-config."""
    def ask(*what):
        return run("pkg-config", *options, *what, "rtifhal_trident",
                   env={"PKG_CONFIG_PATH": str(pkgconfig), **(env or {})}).split()

    library = Path(next(word for word in ask("--libs-only-L"))[2:]) / "librtifhal_trident.so"
    run("cc", "-std=c11", "-Wall", "-Wextra", "-Wconversion", "-Werror", "-c", "host.c",
        *ask("--cflags"), cwd=source)
    (source / "standins.c").write_text(run(source / "standins.sh", library, source / "host.o"))
    run("cc", "-o", "host", "host.o", "standins.c", *ask("--libs"), cwd=source)
    return source / "host"


class Install(unittest.TestCase):
    """A prefix, as it is after a move."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="rtifhal-install-")))
        cls.build = cls.folder / "build"
        commands = shown(having="-DRTIFHAL_LAB=OFF").replace("build/product", str(cls.build))
        run("sh", "-ec", commands.replace("/opt/rtifhal", str(cls.folder / "first")), cwd=ROOT)
        cls.prefix = cls.folder / "a place elsewhere"
        (cls.folder / "first").rename(cls.prefix)

    def test_the_library_has_soname_and_version(self):
        library = self.prefix / "lib"
        self.assertEqual((library / "librtifhal_trident.so").readlink(), Path("librtifhal_trident.so.0"))
        versioned = library / (library / "librtifhal_trident.so.0").readlink()
        self.assertRegex(versioned.name, r"^librtifhal_trident\.so\.0\.\d+\.\d+$")
        self.assertFalse(versioned.is_symlink())
        self.assertIn("Library soname: [librtifhal_trident.so.0]", run("readelf", "-d", versioned))

    def test_a_host_that_only_runs_gets_no_headers(self):
        prefix = self.folder / "running"
        run("cmake", "--install", self.build, "--prefix", prefix, "--component", "library")
        names = sorted(path.name for path in prefix.rglob("*") if not path.is_dir())
        self.assertEqual([name.split(".so.")[0] for name in names], ["librtifhal_trident"] * 2)

    def test_every_header_of_library_and_contract_is_there(self):
        def headers(folder):
            return {str(path.relative_to(folder)) for path in folder.rglob("*.h")}

        include = self.prefix / "include/rtifhal"
        own = headers(ROOT / "asic/forwarding-sw/l3lif/pd_trident/include")
        self.assertEqual(headers(include), own | {f"platform/{name}" for name in headers(CONTRACT)})

    def test_a_host_is_built_by_find_package_and_runs(self):
        host = build_by_cmake(copy_of_host(self.folder / "by cmake"), self.prefix)
        self.assertEqual(run(host), HOST_SAYS)

    def test_a_host_is_built_by_pkg_config_and_runs(self):
        # pkg-config prints a space of a folder's name with a backslash, for a shell.
        prefix = self.folder / "plain"
        prefix.symlink_to(self.prefix)
        host = build_by_pkg_config(copy_of_host(self.folder / "by pkg-config"), prefix / "lib/pkgconfig")
        self.assertEqual(run(host, env={"LD_LIBRARY_PATH": str(self.prefix / "lib")}), HOST_SAYS)

    def test_the_page_s_commands_build_a_host(self):
        prefix = self.folder / "shown"
        prefix.symlink_to(self.prefix)
        source = copy_of_host(self.folder / "by the page")
        build_by_pkg_config(source, prefix / "lib/pkgconfig")
        (source / "host").unlink()
        commands = shown(having="export PKG_CONFIG_PATH").replace("/opt/rtifhal", str(prefix))
        # What stands in for the rest of a host comes with it.
        run("sh", "-ec", commands.replace("host.c", "host.c standins.c"), cwd=source)
        self.assertEqual(run(source / "host", env={"LD_LIBRARY_PATH": str(prefix / "lib")}), HOST_SAYS)

    def test_another_major_version_is_refused(self):
        source = copy_of_host(self.folder / "too new")
        lists = source / "CMakeLists.txt"
        lists.write_text(lists.read_text().replace("rtifhal 0.1", "rtifhal 1.0"))
        with self.assertRaisesRegex(AssertionError, r'compatible with requested\s+version "1.0"'):
            build_by_cmake(source, self.prefix)

    def test_nothing_installed_names_the_build_or_the_sources(self):
        for path in self.prefix.rglob("*"):
            if path.is_file():
                content = path.read_bytes()
                for folder in (self.folder, ROOT):
                    self.assertNotIn(bytes(folder), content, path)


class OwnPlatform(unittest.TestCase):
    """A library that was built against a host's own platform headers."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="rtifhal-own-")))
        cls.contract = cls.folder / "contract"
        shutil.copytree(CONTRACT, cls.contract)
        with (cls.contract / "fwm/state.h").open("a") as header:
            header.write("#define HOST_HAS_ITS_OWN 1\n")
        build_library(cls.folder / "build", f"-DRTIFHAL_PLATFORM_INCLUDE={cls.contract}")
        cls.prefix = cls.folder / "prefix"
        install(cls.folder / "build", cls.prefix)

    def host(self, name):
        source = copy_of_host(self.folder / name)
        main = source / "host.c"
        main.write_text(main.read_text().replace(
            "static int stored_times;",
            "#ifndef HOST_HAS_ITS_OWN\n#error other platform headers\n#endif\nstatic int stored_times;"))
        return source

    def test_our_contract_is_not_installed(self):
        self.assertFalse((self.prefix / "include/rtifhal/platform").exists())

    def test_the_headers_it_was_built_against_are_found(self):
        self.assertEqual(run(build_by_cmake(self.host("default"), self.prefix)), HOST_SAYS)

    def test_they_may_have_moved(self):
        moved = self.folder / "moved"
        self.contract.rename(moved)
        self.addCleanup(moved.rename, self.contract)
        with self.assertRaisesRegex(AssertionError, r"set\s+RTIFHAL_PLATFORM_INCLUDE\s+to\s+the\s+folder"):
            build_by_cmake(self.host("lost"), self.prefix)
        option = f"-DRTIFHAL_PLATFORM_INCLUDE={moved}"
        self.assertEqual(run(build_by_cmake(self.host("told"), self.prefix, option)), HOST_SAYS)
        host = build_by_pkg_config(self.host("pkg-config"), self.prefix / "lib/pkgconfig",
                                   f"--define-variable=platform_include={moved}")
        self.assertEqual(run(host, env={"LD_LIBRARY_PATH": str(self.prefix / "lib")}), HOST_SAYS)


if __name__ == "__main__":
    unittest.main()
