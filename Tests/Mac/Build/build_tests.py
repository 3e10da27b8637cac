#!/usr/bin/env python3
"""Tests how the agent is built for Macs, as far as that works on another system: build_tests.py [TEST...]

The real project is configured with a toolchain that pretends a Mac. The agent's libraries are built for this machine,
from small stand-ins. The tools of Xcode that look at the finished agent are scripts that print what the tests want.
"""

import contextlib
import hashlib
import json
import os
import pathlib
import plistlib
import re
import shlex
import shutil
import subprocess
import sys
import tarfile
import unittest

sys.dont_write_bytecode = True  # keeps the source directory clean
HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parent.parent.parent
sys.path += [str(PROJECT / "Tests/Support"), str(HERE)]

from scratch_places import scratch_directory  # noqa: E402
from stand_ins import write_stand_ins  # noqa: E402


def run(*arguments, **options):
    """Returns the exit status and everything that was printed, in one line."""
    done = subprocess.run([str(argument) for argument in arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, timeout=240, **options)
    return done.returncode, " ".join(done.stdout.split())


def preset(name):
    """Returns the cache variables of a preset, as options of CMake."""
    presets = {one["name"]: one for one in json.loads((PROJECT / "CMakePresets.json").read_text())["configurePresets"]}

    def variables(one):
        inherited = variables(presets[one["inherits"]]) if "inherits" in one else {}
        return inherited | one.get("cacheVariables", {})

    return [f"-D{variable}={value}" for variable, value in variables(presets[name]).items()]


class BuildCase(unittest.TestCase):
    def setUp(self):
        places = contextlib.ExitStack()
        self.addCleanup(places.close)
        self.directory = places.enter_context(scratch_directory())
        self.libraries = self.directory / "libraries"
        write_stand_ins(self.libraries)

    def expect_stop(self, result, reason):
        self.assertNotEqual(result[0], 0, result[1])
        self.assertIn(reason, result[1])


class LibraryTests(BuildCase):
    """The libraries, built for this machine from given sources."""

    def configure(self, folder):
        return run("cmake", "-G", "Ninja", "-S", HERE / "Program", "-B", self.directory / "build",
                   f"-DTAVEL_LIBRARY_SOURCES={folder}")

    def test_are_built_from_a_given_folder_and_linked_statically(self):
        self.assertEqual(self.configure(self.libraries)[0], 0)
        status, said = run("cmake", "--build", self.directory / "build")
        self.assertEqual(status, 0, said)
        shutil.rmtree(self.directory / "build/Libraries")  # a shared library would be missing now
        self.assertEqual(run(self.directory / "build/program")[0], 0)

    def test_stop_the_configuration_if_the_folder_is_missing(self):
        self.expect_stop(self.configure(self.directory / "nowhere"), "simdjson-3.0.1/src/simdjson.cpp is missing")

    def test_stop_the_configuration_if_the_folder_lacks_one_of_them(self):
        (self.libraries / "utf8proc-2.8.0/utf8proc.c").unlink()
        self.expect_stop(self.configure(self.libraries), "utf8proc-2.8.0/utf8proc.c is missing")


class ArchiveTests(BuildCase):
    """The sources of a library, from an archive."""

    def setUp(self):
        super().setUp()
        self.archive = self.make_archive("source.c")
        self.hash = hashlib.sha256(self.archive.read_bytes()).hexdigest()

    def make_archive(self, source):
        file = self.directory / "library-1.0" / source
        file.parent.mkdir()
        file.touch()
        with tarfile.open(self.directory / "upstream.tar.gz", "w:gz") as archive:
            archive.add(file.parent, "library-1.0")
        shutil.rmtree(file.parent)
        return self.directory / "upstream.tar.gz"

    def find(self, sha256):
        return run("cmake", f"-DURL={self.archive.as_uri()}", f"-DSHA256={sha256}", "-P", HERE / "find-sources.cmake",
                   cwd=self.directory)

    def test_are_unpacked(self):
        self.assertEqual(self.find(self.hash), (0, f"found {self.directory}/library-1.0"))

    def test_are_downloaded_once(self):
        self.find(self.hash)
        self.archive.unlink()
        self.assertEqual(self.find(self.hash)[0], 0)

    def test_of_another_hash_stop_the_configuration_each_time(self):
        for _ in range(2):
            self.expect_stop(self.find("0" * 64), f"hash is {self.hash}, not {'0' * 64}")
            self.assertFalse((self.directory / "library-1.0").exists())

    def test_that_changed_since_an_earlier_download_are_downloaded_again(self):
        (self.directory / "library-1.0.tar.gz").write_text("half an archive")
        self.assertEqual(self.find(self.hash)[0], 0)

    def test_out_of_reach_stop_the_configuration(self):
        self.archive.unlink()
        self.expect_stop(self.find(self.hash), "upstream.tar.gz cannot be downloaded")

    def test_without_the_expected_file_stop_the_configuration(self):
        self.archive = self.make_archive("another.c")
        found = self.find(hashlib.sha256(self.archive.read_bytes()).hexdigest())
        self.expect_stop(found, "library-1.0/source.c is missing")


class PretendedMacTests(BuildCase):
    """The project, configured for a Mac. Nothing is built."""

    def setUp(self):
        super().setUp()
        self.build = self.directory / "build"

    def configure(self, name, *options, **environment):
        # The tools, tests and benchmarks would need libraries for a Mac.
        return run("cmake", "-G", "Ninja", "-S", PROJECT, "-B", self.build, "--toolchain", HERE / "pretended-mac.cmake",
                   *preset(name), "-DTAVEL_BUILD_TOOLS=OFF", "-DTAVEL_BUILD_TESTS=OFF", "-DTAVEL_BUILD_BENCHMARKS=OFF",
                   *options, env=dict(os.environ) | environment)

    def commands(self, name):
        """Returns the compiler's arguments by source file."""
        status, said = self.configure(name, f"-DTAVEL_LIBRARY_SOURCES={self.libraries}")
        self.assertEqual(status, 0, said)
        database = json.loads((self.build / "compile_commands.json").read_text())
        return {pathlib.Path(one["file"]): shlex.split(one["command"]) for one in database}

    def test_everything_is_compiled_for_both_processors_and_the_oldest_system(self):
        commands = self.commands("universal")
        names = {file.name for file in commands}
        self.assertLessEqual({"simdjson.cpp", "utf8proc.c", "main.cpp", "MacPasteboard.mm"}, names)
        for file, arguments in commands.items():
            line = " ".join(arguments)
            self.assertIn(" -arch arm64 -arch x86_64 ", line, file)
            self.assertEqual(re.findall(r"-mmacosx-version-min=\S*", line), ["-mmacosx-version-min=13.0"], file)

    def test_objective_cpp_gets_the_flags_of_cpp(self):
        for name in ("dev", "asan", "tsan", "release", "universal"):
            with self.subTest(name):
                shutil.rmtree(self.build, ignore_errors=True)
                by_kind = {}
                for file, arguments in self.commands(name).items():
                    if file.parent == PROJECT / "Sources/Mac" and file.stem not in ("ImageProperties", "Utf16"):
                        own = arguments[arguments.index("-o"):] + ["-x", "objective-c++", "-fno-objc-arc"]
                        shared = [argument for argument in arguments if argument not in own]
                        by_kind.setdefault(file.suffix, set()).add(tuple(shared))
                self.assertEqual(by_kind[".mm"], by_kind[".cpp"])
                self.assertEqual(len(by_kind[".mm"]), 1)

    def test_every_file_is_compiled_by_itself(self):
        self.assertFalse([file for file in self.commands("dev") if file.name.startswith("unity_")])

    def test_the_agent_links_its_own_archives_and_frameworks_only(self):
        self.commands("universal")
        rule = re.search(r"^build bin/TavelClipboardAgent: .*?(?=^build )", (self.build / "build.ninja").read_text(),
                         re.MULTILINE | re.DOTALL)[0]
        linked = shlex.split(re.search(r"^  LINK_LIBRARIES = (.*)$", rule, re.MULTILINE)[1])
        own = {"cmake/Libraries/libtavel_simdjson.a", "cmake/Libraries/libtavel_utf8proc.a"}
        self.assertLessEqual(own, set(linked))
        for library in own:
            self.assertIn(f"build {library}:", (self.build / "build.ninja").read_text())
        others = [one for one in linked if not re.fullmatch(r"(Sources|cmake/Libraries)/\S+\.a", one)]
        self.assertEqual(set(others[::2]), {"-framework"})
        self.assertLessEqual(set(others[1::2]), {"AppKit", "ApplicationServices", "CoreFoundation", "CoreGraphics",
                                                 "Foundation", "ImageIO"})

    def test_the_agent_holds_its_description(self):
        self.commands("universal")
        flags = re.search(r"^  LINK_FLAGS = (.*__info_plist.*)$", (self.build / "build.ninja").read_text(), re.MULTILINE)
        words = [word for word in shlex.split(flags[1]) if word != "-Xlinker"]
        at = words.index("-sectcreate")
        self.assertEqual(words[at:at + 3], ["-sectcreate", "__TEXT", "__info_plist"])
        description = plistlib.loads(pathlib.Path(words[at + 3]).read_bytes())
        version = re.search(r"project\(TavelClipboardAgent VERSION (\S+)", (PROJECT / "CMakeLists.txt").read_text())[1]
        self.assertEqual(description["CFBundleVersion"], version)
        self.assertEqual(description["CFBundleShortVersionString"], version)
        self.assertEqual(description["LSMinimumSystemVersion"], "13.0")
        self.assertIs(description["LSUIElement"], True)

    def test_the_configuration_stops_without_the_sources(self):
        result = self.configure("dev", https_proxy="http://127.0.0.1:1", HTTPS_PROXY="http://127.0.0.1:1")
        self.expect_stop(result, "simdjson/archive/refs/tags/v3.0.1.tar.gz cannot be downloaded")


class CheckTests(BuildCase):
    """scripts/check-universal, with tools that print what the tests want."""

    LIBRARIES = ("/usr/lib/libc++.1.dylib", "/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit")

    def setUp(self):
        super().setUp()
        self.tools = self.directory / "tools"
        self.tools.mkdir()
        self.write_tool("lipo", 'cat "$0.archs"')  # lipo -archs FILE
        self.write_tool("otool", 'cat "$0.$2$3"')  # otool -arch PROCESSOR -L|-l FILE
        self.describe()

    def write_tool(self, name, script):
        (self.tools / name).write_text(f"#!/bin/sh\n{script}\n")
        (self.tools / name).chmod(0o755)

    def describe(self, processors=("x86_64", "arm64")):
        (self.tools / "lipo.archs").write_text(" ".join(processors) + "\n")
        for processor in processors:
            self.describe_half(processor)

    def describe_half(self, processor, libraries=LIBRARIES, minimum="13.0", section="__info_plist"):
        lines = [f"agent (architecture {processor}):"]
        lines += [f"\t{one} (compatibility version 1.0.0, current version 1.0.0)" for one in libraries]
        (self.tools / f"otool.{processor}-L").write_text("\n".join(lines) + "\n")
        (self.tools / f"otool.{processor}-l").write_text(
            f"agent:\nLoad command 1\n  sectname {section}\n   segname __TEXT\nLoad command 9\n"
            f"      cmd LC_BUILD_VERSION\n platform 1\n    minos {minimum}\n      sdk 15.2\n")

    def check(self):
        return run(PROJECT / "scripts/check-universal", "agent",
                   env=dict(os.environ) | {"PATH": f"{self.tools}:{os.environ['PATH']}"})

    def test_accepts_an_agent_that_needs_nothing(self):
        self.assertEqual(self.check()[0], 0, self.check())

    def test_refuses_an_agent_for_one_processor(self):
        self.describe(["arm64"])
        self.expect_stop(self.check(), "not built for x86_64, but only for arm64")

    def test_refuses_a_library_that_macos_does_not_have(self):
        for library in ("/opt/homebrew/opt/simdjson/lib/libsimdjson.dylib", "@rpath/libutf8proc.3.dylib"):
            self.describe_half("x86_64", libraries=[*self.LIBRARIES, library])
            self.expect_stop(self.check(), f"needs {library}, which is no part of macOS, for x86_64")

    def test_refuses_a_half_for_another_system(self):
        self.describe_half("arm64", minimum="15.0")
        self.expect_stop(self.check(), "starts on macOS 15.0, not 13.0, for arm64")

    def test_refuses_a_half_without_a_description(self):
        self.describe_half("arm64", section="__const")
        self.expect_stop(self.check(), "holds no Info.plist for arm64")

    def test_refuses_what_it_cannot_read(self):
        self.write_tool("otool", "exit 1")
        self.assertNotEqual(self.check()[0], 0)
        self.write_tool("otool", "true")
        self.expect_stop(self.check(), "links no library at all for arm64")


if __name__ == "__main__":
    unittest.main()
