"""Checks what includes what.

One direction only: qua <- vell <- tern <- kodo <- tern_common <- editor. The facilities of tern_common stand side by
side; the start-up in module/ alone may include any of them. Installed headers include installed headers only, and
none of the third-party libraries that the sources stand on.
"""

import argparse
import pathlib
import re
import sys
import tempfile

STOREYS = ("qua", "vell", "tern", "kodo", "tern_common", "editor")
ROOTS = ("platform", "tern_common", "editor")
SUFFIXES = (".hpp", ".cpp", ".h", ".inl")
# At the top of tern_common: shared by all facilities. Every other file there belongs to the command system.
SHARED = ("tern_common/assertion.hpp", "tern_common/export.hpp")
PRIVATE_LIBRARIES = ("boost", "spdlog", "fmt", "pugixml", "nlohmann", "glm", "epoxy", "GL", "EGL")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
GENERATED = re.compile(r"(^|/)(ui_[^/]+\.h|moc_[^/]+\.cpp|[^/]+\.moc)$")


def storey_of(include_path):
    first = include_path.split("/")[0]
    return STOREYS.index(first) if first in STOREYS and "/" in include_path else None


def facility_of(include_path):
    """The facility of tern_common that a path belongs to; None for what is shared or elsewhere."""
    parts = include_path.split("/")
    if parts[0] != "tern_common" or include_path in SHARED:
        return None
    return parts[1] if len(parts) > 2 else "command system"


def include_path_of(file, root):
    path = file.relative_to(root).as_posix()
    return path.removeprefix("platform/")


def includes_of(file):
    """Line number, quote or bracket, and path of each include."""
    lines = file.read_text(encoding="utf-8").splitlines()
    for number, line in enumerate(lines, start=1):
        match = INCLUDE.match(line)
        if match:
            yield number, match.group(1), match.group(2)


def faults_of_include(own, opening, included):
    storey = storey_of(included)
    if storey is None:
        if opening == '"' and not GENERATED.search(included):
            yield f'"{included}" is no path from a root'
        return
    if opening == "<":
        yield f"<{included}> is the project's own: quote it"
    own_storey = storey_of(own)
    if storey > own_storey:
        yield f"{STOREYS[own_storey]} must not include {STOREYS[storey]} ({included})"
    own_facility = facility_of(own)
    facility = facility_of(included)
    if None not in (own_facility, facility) and own_facility not in (facility, "module"):
        yield f"{own_facility} must not include {facility} ({included})"


def faults_of_installed(opening, included, installed):
    library = re.split(r"[/.]", included)[0]
    if library in PRIVATE_LIBRARIES or library.startswith("Q"):
        yield f"an installed header must not include {included}"
    elif opening == '"' and included not in installed:
        yield f"an installed header includes {included}, which is not installed"


def check(root, installed_headers):
    """All faults below root, each as "file:line: what"."""
    installed = {include_path_of(header, root) for header in installed_headers}
    faults = []
    for folder in ROOTS:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix not in SUFFIXES:
                continue
            own = include_path_of(file, root)
            for number, opening, included in includes_of(file):
                found = list(faults_of_include(own, opening, included))
                if own in installed:
                    found += faults_of_installed(opening, included, installed)
                faults += [f"{file.relative_to(root).as_posix()}:{number}: {fault}" for fault in found]
    return faults


# Files of a made-up tree: what they include, and the fault that is to be found, if any.
PLANTED = {
    "platform/qua/signal.hpp": ('#include "qua/export.hpp"\n#include <memory>', None),
    "platform/qua/export.hpp": ("", None),
    "platform/qua/up.hpp": ('#include "vell/variant.hpp"', "qua must not include vell"),
    "platform/vell/variant.hpp": ('#include "qua/signal.hpp"', None),
    "platform/vell/above.cpp": ('#  include "tern/object.hpp"', "vell must not include tern"),
    "platform/tern/object.hpp": ('#include "vell/variant.hpp"', None),
    "platform/tern/above.cpp": ('#include "kodo/export.hpp"', "tern must not include kodo"),
    "platform/kodo/math/fast.hpp": ("#include <glm/vec3.hpp>", "must not include glm"),
    "platform/kodo/core/log.hpp": ("#include <spdlog/spdlog.h>", "must not include spdlog"),
    "platform/kodo/core/log.cpp": ("#include <spdlog/spdlog.h>", None),
    "platform/kodo/core/cpp.cpp": ('#include "tern_common/export.hpp"', "kodo must not include tern_common"),
    "tern_common/export.hpp": ('#include "qua/export.hpp"', None),
    "tern_common/assertion.hpp": ("#include <pugixml.hpp>", "must not include pugixml"),
    "tern_common/command_object.hpp": ('#include "tern_common/script.hpp"', "which is not installed"),
    "tern_common/script.hpp": ('#include "tern_common/query/query.hpp"', "command system must not include query"),
    "tern_common/query/query.hpp": ('#include "tern_common/assertion.hpp"', None),
    "tern_common/query/query.cpp": ('#include "query.hpp"', "no path from a root"),
    "tern_common/query/other.cpp": ('#include "tern_common/utils/finalizer.hpp"', "query must not include utils"),
    "tern_common/query/command.cpp": (
        '#include "tern_common/command_object.hpp"', "query must not include command system"),
    "tern_common/utils/finalizer.hpp": ("#include <boost/any.hpp>", "must not include boost"),
    "tern_common/utils/above.cpp": ('#include "editor/window.hpp"', "tern_common must not include editor"),
    "tern_common/utils/module.cpp": ('#include "tern_common/module/slot.hpp"', "utils must not include module"),
    "tern_common/module/slot.hpp": ("", None),
    "tern_common/module/module.cpp": (
        '#include "tern_common/query/query.hpp"\n#include "tern_common/utils/finalizer.hpp"', None),
    "editor/window.hpp": ('#include "tern_common/query/query.hpp"\n#include "ui_window.h"', None),
    "editor/angle.cpp": ("#include <qua/signal.hpp>", "quote it"),
}
PLANTED_INSTALLED = (
    "platform/qua/signal.hpp", "platform/qua/export.hpp", "platform/kodo/core/log.hpp", "platform/kodo/math/fast.hpp", "tern_common/export.hpp",
    "tern_common/assertion.hpp", "tern_common/command_object.hpp", "tern_common/utils/finalizer.hpp")


def self_check():
    """Faults of this script itself: planted violations that it misses, or finds where there are none."""
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory)
        for name, (text, _) in PLANTED.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text + "\n", encoding="utf-8")
        found = check(root, [root / name for name in PLANTED_INSTALLED])
    faults = []
    for name, (_, expected) in PLANTED.items():
        own = [fault for fault in found if fault.startswith(name + ":")]
        if len(own) != (0 if expected is None else 1) or any(expected not in fault for fault in own):
            faults.append(f"{name}: expected {expected}, found {own}")
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--self-check", action="store_true", help="look for planted faults instead")
    parser.add_argument("--root", type=pathlib.Path, help="the source tree")
    parser.add_argument("--installed", type=pathlib.Path, help="a file that lists the installed headers")
    arguments = parser.parse_args()
    if arguments.self_check:
        faults = self_check()
    else:
        headers = [pathlib.Path(line) for line in arguments.installed.read_text(encoding="utf-8").split("\n") if line]
        if not headers:
            sys.exit("no installed headers are listed")
        faults = check(arguments.root, headers)
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
