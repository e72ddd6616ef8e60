#!/usr/bin/env python3
"""Checks that every #include of the library points the way its layers allow.

The layers, from the bottom (see the README's layout):
  core        VelmoraCore/: the standard library, ICU and nlohmann/json only.
  interfaces  VelmoraMac/Platform/ itself: the platform's interfaces and the
              pieces every implementation shares, over GLib at most.
  process     VelmoraMac/Platform/Process/: the real process's services,
              which both implementations use.
  headless    VelmoraMac/Platform/Headless/ and
  desktop     VelmoraMac/Platform/Desktop/: the two implementations, which
              know neither each other nor the shell.
  shell       the rest of VelmoraMac/, which reaches the platform only
              through its interfaces and knows no widget toolkit;
  views       VelmoraMac/**/Gtk/: the shell's GTK views, handed to the
              desktop platform through its view factory;
  start-up    VelmoraMac/Exports/: the one place that picks an
              implementation, and only by its composition header.

Quoted includes are resolved as the compiler does (beside the file first,
then from the repository's root or include/); an include that resolves
nowhere is reported too, so that a misspelt path cannot hide a breach.
Toolkit and GLib headers (<gtk/...>, <glib.h>, ...) are checked by name.

Usage: scripts/check-layers.py [repository root]
Exits with status 1 and lists every breach.
"""

import os
import re
import sys

ROOT = os.path.abspath(sys.argv[1]) if len(sys.argv) > 1 else os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCE_FOLDERS = ["VelmoraCore", "VelmoraMac", "include"]
EXTENSIONS = (".h", ".hpp", ".c", ".cpp")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')

# The implementations' own compositions, the only headers of theirs the
# start-up may name.
COMPOSITIONS = {
    "VelmoraMac/Platform/Desktop/DesktopShellPlatform.h",
    "VelmoraMac/Platform/Headless/HeadlessShellPlatform.h",
}

ALLOWED = {
    "core": {"core"},
    "public": {"public"},
    "interfaces": {"core", "interfaces"},
    "process": {"core", "interfaces", "process"},
    "headless": {"core", "interfaces", "process", "headless"},
    "desktop": {"core", "interfaces", "process", "desktop"},
    "shell": {"core", "interfaces", "shell"},
    "views": {"core", "interfaces", "shell", "views"},
    "start-up": {"core", "interfaces", "shell", "views", "start-up", "public"},
}

# System headers by the layers that may use them: the widget toolkit only
# where windows are drawn, GLib nowhere in the core or the shell's logic.
TOOLKIT = re.compile(r"^(gtk|gdk|gdk-pixbuf|pango|cairo|libdbusmenu[-\w.]*)/|^(cairo|pango\w*)\.h$")
GLIB = re.compile(r"^(glib|gio|glib-object|gobject)[/.]|^glib-unix\.h$")
TOOLKIT_LAYERS = {"desktop", "views"}
GLIB_LAYERS = {"interfaces", "process", "headless", "desktop", "views"}


def layer_of(path):
    parts = path.split("/")
    if parts[0] == "VelmoraCore":
        return "core"
    if parts[0] == "include":
        return "public"
    if parts[0] != "VelmoraMac":
        return None
    if parts[1] == "Platform":
        if len(parts) == 3:
            return "interfaces"
        return {"Process": "process", "Headless": "headless", "Desktop": "desktop"}.get(parts[2], "unknown platform folder")
    if "Gtk" in parts[1:-1]:
        return "views"
    if parts[1] == "Exports":
        return "start-up"
    return "shell"


def resolve(including, name):
    for base in (os.path.dirname(including), "", "include"):
        candidate = os.path.normpath(os.path.join(base, name))
        if os.path.isfile(os.path.join(ROOT, candidate)):
            return candidate.replace(os.sep, "/")
    return None


def breaches(path):
    layer = layer_of(path)
    with open(os.path.join(ROOT, path), encoding="utf-8") as source:
        for number, line in enumerate(source, 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            quoted, name = match.group(1) == '"', match.group(2)
            where = f"{path}:{number}: {layer} includes {name}"
            if not quoted:
                if TOOLKIT.search(name) and layer not in TOOLKIT_LAYERS:
                    yield f"{where}: only the desktop platform and the shell's Gtk/ views use the toolkit"
                elif GLIB.search(name) and layer not in GLIB_LAYERS:
                    yield f"{where}: GLib stays below the shell"
                continue
            target = resolve(path, name)
            if target is None:
                yield f"{where}: resolves to no file of ours"
                continue
            target_layer = layer_of(target)
            if target_layer in ALLOWED.get(layer, set()):
                continue
            if layer == "start-up" and target in COMPOSITIONS:
                continue
            yield f"{where}: {layer} may include only {', '.join(sorted(ALLOWED.get(layer, set())))}, not {target_layer}"


def main():
    found = []
    for folder in SOURCE_FOLDERS:
        for directory, _, files in os.walk(os.path.join(ROOT, folder)):
            for name in sorted(files):
                if name.endswith(EXTENSIONS):
                    path = os.path.relpath(os.path.join(directory, name), ROOT).replace(os.sep, "/")
                    found.extend(breaches(path))
    for breach in found:
        print(breach)
    if found:
        print(f"{len(found)} include(s) break the layering", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
