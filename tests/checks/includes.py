#!/usr/bin/python3
"""The law of the seam: who may include what.

    main -> app -> ui, capture, encoding, settings -> platform/*.h (ports) -> base
      and -> platform/linux -> platform/*.h, base

The core (base app settings capture encoding ui) includes nothing but the standard library besides, ports have
no conditional compilation, and an adapter never includes a folder of the core above base.

usage: includes.py FOLDER    prints each breach as file:line: reason; status 1 when there is one
"""

import re
import sys
from pathlib import Path

STANDARD = set("""
algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts condition_variable
coroutine deque exception execution filesystem format forward_list fstream functional future initializer_list
iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new
numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex
source_location span sstream stack stdexcept stop_token streambuf string string_view strstream syncstream
system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant
vector version cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef
cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
""".split())

# What each folder of the core may include besides itself and the standard library.
BELOW = {
    "base": set(),
    "platform": {"base"},
    "settings": {"platform", "base"},
    "capture": {"settings", "platform", "base"},
    "encoding": {"capture", "settings", "platform", "base"},
    "ui": {"platform", "base"},
    "app": {"ui", "capture", "encoding", "settings", "platform", "base"},
}
INCLUDE = re.compile(r'^\s*#\s*include\b\s*(?:<([^>]+)>|"([^"]+)")?')
CONDITION = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif|else|endif)\b")
SUFFIXES = {".h", ".cpp", ".hpp", ".cc", ".cxx", ".inl"}


def breaches(root):
    """Yields (path, line number, reason) for every line that breaks the law."""
    for folder in BELOW:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in SUFFIXES and path.is_file():
                yield from breachesOf(path, root)


def breachesOf(path, root):
    place = path.relative_to(root)
    folder = place.parts[0]
    isAdapter = folder == "platform" and len(place.parts) > 2
    isMain = place == Path("app/main.cpp")
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if folder == "platform" and not isAdapter and CONDITION.match(line):
            yield place, number, "a port has no conditional compilation"
        match = INCLUDE.match(line)
        if not match:
            continue
        system, own = match.groups()
        if system is None and own is None:
            yield place, number, "an include that is not a plain name"
        elif system is not None:
            if not isAdapter and system not in STANDARD:
                yield place, number, f"<{system}> is not the standard library's"
        else:
            reason = ownInclude(own, folder, isAdapter, isMain, root)
            if reason:
                yield place, number, reason


def ownInclude(name, folder, isAdapter, isMain, root):
    """Why a file in `folder` must not include our own header `name`; None when it may."""
    parts = Path(name).parts
    if not (root / name).is_file() or ".." in parts:
        return f'"{name}" is no header of the project, named from its top'
    target, native = parts[0], parts[0] == "platform" and len(parts) > 2
    if isMain:
        allowed = target in BELOW
    elif isAdapter:
        allowed = target in ("platform", "base")
    else:
        allowed = (target == folder or target in BELOW[folder]) and not native
    return None if allowed else f'{"an adapter" if isAdapter else folder} must not include "{name}"'


def main():
    root = Path(sys.argv[1])
    files = sum(1 for folder in BELOW for p in (root / folder).rglob("*") if p.suffix in SUFFIXES)
    found = list(breaches(root))
    for place, number, reason in found:
        print(f"{place}:{number}: {reason}", file=sys.stderr)
    if files == 0:
        print("includes: no source file found", file=sys.stderr)
    print(f"includes: {files} files, {len(found)} breaches")
    return 1 if found or files == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
