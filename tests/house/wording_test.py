"""Checks how the tracked text files are written: no words that leave work undone, no trailing blanks, no tabs in C++
sources."""

import argparse
import pathlib
import re
import subprocess
import sys

# Put together here, so that this file does not hold them.
UNDONE = re.compile(r"\b(" + "|".join(("TO" + "DO", "FIX" + "ME", "X" * 3)) + r")\b")
CPP_SUFFIXES = (".cpp", ".hpp", ".h", ".inl")
TEXT_SUFFIXES = CPP_SUFFIXES + (
    ".md", ".txt", ".py", ".cmake", ".in", ".json", ".yml", ".yaml", ".sh", ".html", ".css", ".glsl")


def is_text(name, content):
    """Sources, documents and scripts; samples and corpora hold whatever their tests need."""
    path = pathlib.PurePosixPath(name)
    if any("corpus" in part for part in path.parts):
        return False
    return path.suffix in TEXT_SUFFIXES or path.name.startswith(".clang") or content.startswith(b"#!")


def faults_of(name, content):
    """All faults of one file, each as "file:line: what"."""
    if not is_text(name, content):
        return []
    faults = []
    for number, line in enumerate(content.decode("utf-8").split("\n"), start=1):
        if UNDONE.search(line):
            faults.append(f"{name}:{number}: leaves work undone: {line.strip()}")
        if line != line.rstrip():
            faults.append(f"{name}:{number}: trailing blanks")
        if "\t" in line and name.endswith(CPP_SUFFIXES):
            faults.append(f"{name}:{number}: a tab")
    return faults


def tracked_files(root):
    listing = subprocess.run(["git", "-C", root, "ls-files", "-z"], capture_output=True, check=False)
    if listing.returncode == 0:
        names = [name for name in listing.stdout.decode("utf-8").split("\0") if name]
    else:  # an unpacked archive: everything but what is built
        names = [file.relative_to(root).as_posix() for file in root.rglob("*") if file.is_file()]
        names = [name for name in names if not name.startswith(("build/", ".git/", ".cache/"))]
    return [name for name in names if (root / name).is_file()]


def self_check():
    """Faults of this script itself: planted ones that it misses, or finds where there are none."""
    planted = {
        ("a.cpp", b"int a; // TO" + b"DO: more\n"): 1,
        ("a.md", b"FIX" + b"ME\n"): 1,
        ("a.py", b"# XX" + b"X\n"): 1,
        ("a.cpp", b"// XX" + b"XX and TO" + b"DOS are other words\n"): 0,
        ("a.hpp", b"int a; \nint b;\t\n"): 3,
        ("CMakeLists.txt", b"\tset(a b)\n"): 0,
        ("a.md", b"line\r\n"): 1,
        ("run", b"#!/bin/sh\nexit 0 \n"): 1,
        ("picture.png", b"\x89PNG \n"): 0,
        ("fuzz/corpus/a.txt", b"wait(1) \n"): 0,
        ("a.cpp", b"int a;\n"): 0,
    }
    return [f"{name} {content!r}: expected {count} faults, found {faults_of(name, content)}"
            for (name, content), count in planted.items() if len(faults_of(name, content)) != count]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--self-check", action="store_true", help="look for planted faults instead")
    parser.add_argument("--root", type=pathlib.Path, help="the source tree")
    arguments = parser.parse_args()
    if arguments.self_check:
        faults = self_check()
    else:
        names = tracked_files(arguments.root)
        if not names:
            sys.exit("no files found")
        faults = [fault for name in names for fault in faults_of(name, (arguments.root / name).read_bytes())]
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
