"""Who may include whom: cmake/floors.txt against the include lines of the tree and what the compiler read."""
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]')
PROJECT_FOLDERS = ("pluginterfaces", "base", "frame", "libraries", "public.sdk", "source", "host", "tools")


def pattern_regex(pattern):
    escaped = re.escape(pattern).replace(r"\*\*", "<any>").replace(r"\*", "[^/]*").replace("<any>", ".*")
    return re.compile(f"^{escaped}$")


class Floors:
    """cmake/floors.txt, read as CMake reads it."""

    def __init__(self, text):
        self.floors, self.packages, section, key = {}, {}, None, None
        for line in text.splitlines():
            if not line.strip() or line.strip().startswith("#"):
                continue
            header = re.match(r"^\[(package +)?([^\]]+)\]$", line)
            entry = re.match(r"^([a-z]+) *= *(.*)$", line)
            if header:
                section = (self.packages if header[1] else self.floors).setdefault(header[2], {})
            elif entry:
                key = entry[1]
                section[key] = entry[2].split()
            else:
                section[key] += line.split()
        self.patterns = sorted(((len(pattern), pattern_regex(pattern), name) for name, floor in self.floors.items()
                                for pattern in floor.get("files", [])), key=lambda row: -row[0])

    def floor_of(self, path):
        path = re.sub("^frame/include/", "frame/source/", path)
        return next((name for _, regex, name in self.patterns if regex.match(path)), None)

    def closure(self, name):
        seen, todo = [], [name]
        while todo:
            each = todo.pop()
            if each not in seen:
                seen.append(each)
                todo += self.floors[each].get("sees", [])
        return seen

    def may_see(self, name, path):
        owner = self.floor_of(path)
        return owner is None or owner in self.closure(name)

    def refused_package(self, name, header):
        """The package that a system header belongs to, when the floor doesn't name it; else None."""
        own = self.floors[name].get("packages", [])
        for package, rows in self.packages.items():
            if any(header == start or header.startswith(start) for start in rows.get("headers", [])):
                return None if package in own else package
        return None


def resolve(including, name):
    """The tree's file that an include line means, as a path from the root; None: it isn't the tree's."""
    for folder in (ROOT / including).parent, ROOT, ROOT / "frame" / "include":
        path = (folder / name).resolve()
        if path.is_file() and path.is_relative_to(ROOT):
            return path.relative_to(ROOT).as_posix()
    return None


def check_text(floors, path, text):
    """Complaints about the include lines of one file."""
    floor = floors.floor_of(path)
    if floor is None:
        return [f"{path}: no target of cmake/floors.txt has it"]
    complaints = []
    for number, line in enumerate(text.splitlines(), 1):
        found = INCLUDE.match(line)
        if not found:
            continue
        target = resolve(path, found[2]) if found[1] == '"' else None
        if target and not floors.may_see(floor, target):
            complaints.append(f"{path}:{number}: {floor} may not include {target} of {floors.floor_of(target)}")
        package = floors.refused_package(floor, found[2])
        if package:
            complaints.append(f"{path}:{number}: {floor} may not name {package} ({found[2]})")
    return complaints


def check_tree(floors):
    files = [path for folder in PROJECT_FOLDERS for path in sorted((ROOT / folder).rglob("*"))
             if path.suffix in (".h", ".cpp")]
    return len(files), [complaint for path in files
                        for complaint in check_text(floors, path.relative_to(ROOT).as_posix(), path.read_text())]


def check_dependencies(floors, build):
    """What the compiler really read for each object of a floor."""
    listing = subprocess.run(["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True).stdout
    complaints, floor = set(), None
    for line in listing.splitlines():
        if line and not line.startswith(" "):
            source = re.match(r"CMakeFiles/[^/]+\.dir/(.+?)\.o(bj)?:", line)
            path = source[1].replace("_/", "/") if source else ""
            floor = floors.floor_of(path) if path.startswith(PROJECT_FOLDERS) else None
        elif floor:
            read = pathlib.Path(build, line.strip()).resolve()
            name = read.relative_to(ROOT).as_posix() if read.is_relative_to(ROOT) else ""
            if name.startswith(PROJECT_FOLDERS) and not floors.may_see(floor, name):
                complaints.add(f"{path}: {floor} reads {name} of {floors.floor_of(name)}")
    return sorted(complaints)
