"""The packages of library and development files, unpacked by dpkg-deb and used from there:
no root is needed. `./dev package --stock` installs all three in a fresh Debian.

    [RTIFHAL_PACKAGES=build/packages] python3 tests/install/test_packages.py [TEST...]

With RTIFHAL_PACKAGES the three packages of that folder are looked at too. Exits with 77,
which CTest takes for skipped, where Debian's tools are missing.
"""

import gzip
import os
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

import test_install as installed  # noqa: E402
from test_install import ROOT, run  # noqa: E402

TOOLS = ("cpack", "dpkg-deb", "dpkg-shlibdeps", "dpkg-gensymbols", "dpkg-architecture", "file")
EPOCH = "1700000000"


class Packages(unittest.TestCase):
    """Made by cpack as ./dev package makes them."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="rtifhal-debs-")))
        cls.libraries = "lib/" + run("dpkg-architecture", "-qDEB_HOST_MULTIARCH").strip()
        installed.build_library(cls.folder / "build", f"-DCMAKE_INSTALL_LIBDIR={cls.libraries}")
        cls.packages = cls.pack("debs", EPOCH)
        cls.root = cls.folder / "root"
        for package in cls.packages.values():
            run("dpkg-deb", "-x", package, cls.root)

    @classmethod
    def pack(cls, name, epoch):
        """The packages, by name."""
        run("cpack", "--config", cls.folder / "build/CPackConfig.cmake", "-B", cls.folder / name,
            env={"SOURCE_DATE_EPOCH": epoch})
        return {path.name.split("_")[0]: path for path in (cls.folder / name).glob("*.deb")}

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.packages[package], name).strip()

    def control(self, package):
        folder = self.folder / f"control of {package}"
        run("dpkg-deb", "-e", self.packages[package], folder)
        return folder

    def test_library_and_development_files_are_two_packages(self):
        self.assertEqual(set(self.packages), {"librtifhal-trident0", "librtifhal-trident-dev"})

    def test_the_library_needs_the_c_library_and_glib_alone(self):
        needed = {part.split()[0] for part in self.field("librtifhal-trident0", "Depends").split(", ")}
        self.assertEqual(needed, {"libc6", "libglib2.0-0"})

    def test_development_files_want_exactly_their_library(self):
        version = self.field("librtifhal-trident0", "Version")
        self.assertEqual(self.field("librtifhal-trident-dev", "Depends"),
                         f"librtifhal-trident0 (= {version})")

    def test_the_changelog_has_this_version_on_top(self):
        for name in self.packages:
            with gzip.open(self.root / f"usr/share/doc/{name}/changelog.Debian.gz", "rt") as changelog:
                version = self.field(name, "Version")
                self.assertEqual(changelog.readline(), f"rtifhal ({version}) unstable; urgency=medium\n")

    def test_no_script_runs_at_installation_and_the_loader_is_told(self):
        control = self.control("librtifhal-trident0")
        self.assertEqual({path.name for path in control.iterdir()},
                         {"control", "md5sums", "shlibs", "symbols", "triggers"})
        self.assertIn("\nactivate-noawait ldconfig\n", (control / "triggers").read_text())

    def test_the_symbols_are_those_of_the_library(self):
        source = self.folder / "symbols"
        (source / "debian").mkdir(parents=True)
        (source / "debian/control").write_text(
            "Source: rtifhal\n\nPackage: librtifhal-trident0\nArchitecture: any\n")
        tree = source / "debian/librtifhal-trident0"
        run("dpkg-deb", "-x", self.packages["librtifhal-trident0"], tree)
        run("dpkg-gensymbols", "-v0.1.0", "-plibrtifhal-trident0", f"-P{tree.relative_to(source)}",
            f"-O{source / 'found'}", cwd=source)

        def names(file):
            """The soname's line, and each symbol without the version that brought it."""
            lines = file.read_text().splitlines()
            return [line.split("@")[0] for line in lines if not line.startswith("*")]

        self.assertEqual(names(self.control("librtifhal-trident0") / "symbols"), names(source / "found"))

    def test_what_links_the_library_gets_its_package(self):
        shlibs = (self.control("librtifhal-trident0") / "shlibs").read_text()
        self.assertIn("librtifhal_trident 0 librtifhal-trident0 (>= 0.1.0)\n", shlibs)

    def test_everything_belongs_to_root_and_is_as_old_as_it_is_told(self):
        for package in self.packages.values():
            listing = run("dpkg-deb", "-c", package, env={"TZ": "UTC"}).splitlines()
            self.assertEqual({line.split()[1] for line in listing}, {"root/root"})
            self.assertLessEqual(max(line.split()[3] for line in listing), "2023-11-14")
            modes = {line.split()[0] for line in listing}
            self.assertLessEqual(modes, {"drwxr-xr-x", "-rw-r--r--", "lrwxrwxrwx"})

    def test_they_are_the_same_bytes_when_made_again(self):
        again = self.pack("again", EPOCH)
        for name, package in self.packages.items():
            self.assertEqual(package.read_bytes(), again[name].read_bytes(), name)

    def test_a_host_is_built_from_them_and_runs(self):
        usr = self.root / "usr"
        by_cmake = installed.build_by_cmake(installed.copy_of_host(self.folder / "by cmake"), usr)
        self.assertEqual(run(by_cmake), installed.HOST_SAYS)
        host = installed.build_by_pkg_config(installed.copy_of_host(self.folder / "by pkg-config"),
                                             usr / self.libraries / "pkgconfig")
        seen = run(host, env={"LD_LIBRARY_PATH": str(usr / self.libraries)})
        self.assertEqual(seen, installed.HOST_SAYS)

    @unittest.skipUnless(shutil.which("lintian"), "lintian isn't installed")
    def test_lintian_finds_no_error(self):
        root = ["--allow-root"] if os.getuid() == 0 else []
        self.assertNotIn("E: ", run("lintian", *root, "--fail-on", "error", *self.packages.values()))


@unittest.skipUnless("RTIFHAL_PACKAGES" in os.environ, "only what ./dev package has made has rtif")
class Tools(unittest.TestCase):
    """The package of rtif, unpacked beside that of its library."""

    @classmethod
    def setUpClass(cls):
        cls.root = Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="rtifhal-tools-")))
        cls.packages = sorted(Path(os.environ["RTIFHAL_PACKAGES"]).glob("*.deb"))
        for package in cls.packages:
            run("dpkg-deb", "-x", package, cls.root)

    def rtif(self, *arguments):
        libraries = next(self.root.glob("usr/lib/*/librtifhal_trident.so.0")).parent
        return run(self.root / "usr/bin/rtif", *arguments, env={"LD_LIBRARY_PATH": str(libraries)})

    def test_all_three_are_there(self):
        self.assertEqual([package.name.split("_")[0] for package in self.packages],
                         ["librtifhal-trident-dev", "librtifhal-trident0", "rtif"])

    def test_an_example_of_the_package_comes_up(self):
        examples = self.root / "usr/share/doc/rtif/examples"
        self.assertIn("7 interfaces: 7 up, 0 failed", self.rtif("up", examples / "kinds.json"))

    def test_the_loader_is_told_no_place(self):
        self.assertNotRegex(run("readelf", "-d", self.root / "usr/bin/rtif"), "RPATH|RUNPATH")

    def test_pages_and_completions_are_where_debian_looks(self):
        share = self.root / "usr/share"
        pages = {path.name for path in share.glob("man/man*/*")}
        self.assertEqual(pages, {f"{path.name}.gz" for path in (ROOT / "packaging/man").iterdir()})
        for name in ("bash-completion/completions/rtif", "zsh/vendor-completions/_rtif",
                     "fish/vendor_completions.d/rtif.fish"):
            self.assertTrue((share / name).is_file(), name)


if __name__ == "__main__":
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    if missing:
        print(f"missing: {' '.join(missing)}")
        sys.exit(77)
    unittest.main()
