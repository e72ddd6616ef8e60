#!/usr/bin/env python3
"""Renders the icon sources of the content resource and embeds them.

Every icon of VelmoraMac/Resources/content.json is drawn from an SVG source in
VelmoraMac/Resources/icons/:

    ui-<name>.svg      the interface icons ("uiIcons" in content.json)
    topic-<id>.svg     the icon of each topic ("icon" of each topic)

The sources draw black shapes on a transparent background: the icons are
template images, so only their alpha channel carries the shape and the colour
is applied when they are drawn.

Each source is rendered at 136 x 136 pixels with rsvg-convert (Debian package
librsvg2-bin, installed with apt-get when it is missing), normalised to a
small, deterministic 8-bit RGBA PNG, base64-encoded and written into
content.json. Everything else in content.json (texts, colours, palette) is
kept as it is; the file is written back pretty-printed with two-space
indentation and real UTF-8 characters.

Usage:
    scripts/generate-content-icons.py            rewrite content.json
    scripts/generate-content-icons.py --check    only report whether the
                                                 embedded icons are current
    scripts/generate-content-icons.py --png-dir DIR
                                                 also write the PNGs to DIR
"""

import argparse
import base64
import json
import os
import shutil
import struct
import subprocess
import sys
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RESOURCES = os.path.join(ROOT, "VelmoraMac", "Resources")
CONTENT = os.path.join(RESOURCES, "content.json")
ICONS = os.path.join(RESOURCES, "icons")

SIZE = 136
UI_ICONS = [
    "lotus",
    "settings",
    "lock",
    "privacy",
    "wifi",
    "language",
    "expand",
    "next",
    "guide",
    "checked",
    "unchecked",
    "back",
    "close",
]
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def fail(message):
    print(f"generate-content-icons: {message}", file=sys.stderr)
    sys.exit(1)


def ensure_rsvg_convert():
    tool = shutil.which("rsvg-convert")
    if tool:
        return tool
    if os.geteuid() != 0:
        fail("rsvg-convert is missing; install the Debian package librsvg2-bin "
             "(or run this script as root to install it)")
    print("generate-content-icons: installing librsvg2-bin", file=sys.stderr)
    env = dict(os.environ, DEBIAN_FRONTEND="noninteractive")
    subprocess.run(["apt-get", "update", "-qq"], check=True, env=env)
    subprocess.run(["apt-get", "install", "-y", "-qq", "--no-install-recommends",
                    "librsvg2-bin"], check=True, env=env)
    tool = shutil.which("rsvg-convert")
    if not tool:
        fail("rsvg-convert is still missing after installing librsvg2-bin")
    return tool


def render(tool, svg_path):
    if not os.path.isfile(svg_path):
        fail(f"missing icon source {os.path.relpath(svg_path, ROOT)}")
    result = subprocess.run(
        [tool, "--format", "png", "--width", str(SIZE), "--height", str(SIZE),
         svg_path],
        check=False, capture_output=True)
    if result.returncode != 0:
        fail(f"rsvg-convert failed for {svg_path}: "
             f"{result.stderr.decode(errors='replace').strip()}")
    return result.stdout


def read_chunks(data):
    if not data.startswith(PNG_SIGNATURE):
        raise ValueError("not a PNG file")
    position = len(PNG_SIGNATURE)
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        body = data[position + 8:position + 8 + length]
        position += 12 + length
        yield kind, body
        if kind == b"IEND":
            break


def paeth(a, b, c):
    p = a + b - c
    pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
    if pa <= pb and pa <= pc:
        return a
    return b if pb <= pc else c


def unfilter(raw, width, height, bpp):
    stride = width * bpp
    rows = []
    previous = bytearray(stride)
    position = 0
    for _ in range(height):
        kind = raw[position]
        line = bytearray(raw[position + 1:position + 1 + stride])
        position += 1 + stride
        for i in range(stride):
            left = line[i - bpp] if i >= bpp else 0
            up = previous[i]
            upper_left = previous[i - bpp] if i >= bpp else 0
            if kind == 1:
                line[i] = (line[i] + left) & 0xFF
            elif kind == 2:
                line[i] = (line[i] + up) & 0xFF
            elif kind == 3:
                line[i] = (line[i] + ((left + up) >> 1)) & 0xFF
            elif kind == 4:
                line[i] = (line[i] + paeth(left, up, upper_left)) & 0xFF
            elif kind != 0:
                raise ValueError(f"unknown PNG filter {kind}")
        rows.append(line)
        previous = line
    return rows


def decode_rgba(data):
    """Returns (width, height, rows of RGBA bytes) of an 8-bit RGBA PNG."""
    header = None
    compressed = bytearray()
    for kind, body in read_chunks(data):
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            compressed.extend(body)
    if header is None:
        raise ValueError("PNG without IHDR")
    width, height, depth, colour, _, _, interlace = header
    if depth != 8 or colour != 6 or interlace != 0:
        raise ValueError(f"expected 8-bit non-interlaced RGBA, got depth {depth}, "
                         f"colour type {colour}, interlace {interlace}")
    return width, height, unfilter(zlib.decompress(bytes(compressed)), width, height, 4)


def filtered(line, previous, kind, bpp=4):
    out = bytearray(len(line))
    for i, value in enumerate(line):
        left = line[i - bpp] if i >= bpp else 0
        up = previous[i]
        upper_left = previous[i - bpp] if i >= bpp else 0
        if kind == 0:
            predicted = 0
        elif kind == 1:
            predicted = left
        elif kind == 2:
            predicted = up
        elif kind == 3:
            predicted = (left + up) >> 1
        else:
            predicted = paeth(left, up, upper_left)
        out[i] = (value - predicted) & 0xFF
    return out


def chunk(kind, body):
    return (struct.pack(">I", len(body)) + kind + body
            + struct.pack(">I", zlib.crc32(kind + body) & 0xFFFFFFFF))


def encode_template(width, height, rows):
    """Encodes the shape as a compact 8-bit RGBA PNG with black colour.

    Only the alpha channel matters for a template image; setting the colour of
    every pixel to black keeps the file small and the result deterministic.
    """
    previous = bytearray(width * 4)
    raw = bytearray()
    for line in rows:
        shape = bytearray(width * 4)
        shape[3::4] = line[3::4]
        # The usual heuristic: the filter whose output has the smallest sum of
        # absolute signed values compresses best.
        candidates = [filtered(shape, previous, kind) for kind in range(5)]
        kind = min(range(5), key=lambda k: sum(v if v < 128 else 256 - v
                                               for v in candidates[k]))
        raw.append(kind)
        raw.extend(candidates[kind])
        previous = shape
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return (PNG_SIGNATURE + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + chunk(b"IEND", b""))


def icon_base64(tool, svg_path, png_dir):
    width, height, rows = decode_rgba(render(tool, svg_path))
    if (width, height) != (SIZE, SIZE):
        fail(f"{svg_path} rendered at {width}x{height}, expected {SIZE}x{SIZE}")
    png = encode_template(width, height, rows)
    if png_dir:
        name = os.path.splitext(os.path.basename(svg_path))[0] + ".png"
        with open(os.path.join(png_dir, name), "wb") as out:
            out.write(png)
    return base64.b64encode(png).decode("ascii")


def serialise(content):
    return json.dumps(content, ensure_ascii=False, indent=2) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true",
                        help="report whether content.json holds the current icons; "
                             "change nothing")
    parser.add_argument("--png-dir", help="also write every rendered PNG here")
    arguments = parser.parse_args()

    with open(CONTENT, encoding="utf-8") as source:
        text = source.read()
    content = json.loads(text)
    if arguments.png_dir:
        os.makedirs(arguments.png_dir, exist_ok=True)

    tool = ensure_rsvg_convert()
    for topic in content["topics"]:
        path = os.path.join(ICONS, f"topic-{topic['id']}.svg")
        topic["icon"] = icon_base64(tool, path, arguments.png_dir)
    content["uiIcons"] = {
        name: icon_base64(tool, os.path.join(ICONS, f"ui-{name}.svg"), arguments.png_dir)
        for name in UI_ICONS
    }

    known = {f"topic-{topic['id']}.svg" for topic in content["topics"]}
    known |= {f"ui-{name}.svg" for name in UI_ICONS}
    unused = sorted(set(f for f in os.listdir(ICONS) if f.endswith(".svg")) - known)
    if unused:
        fail(f"icon sources without a place in content.json: {', '.join(unused)}")

    result = serialise(content)
    if arguments.check:
        if result != text:
            fail("content.json does not hold the current icons; run "
                 "scripts/generate-content-icons.py")
        print("generate-content-icons: content.json is current")
        return
    if result != text:
        with open(CONTENT + ".tmp", "w", encoding="utf-8") as out:
            out.write(result)
        os.replace(CONTENT + ".tmp", CONTENT)
    total = sum(len(topic["icon"]) for topic in content["topics"])
    total += sum(len(value) for value in content["uiIcons"].values())
    print(f"generate-content-icons: {len(content['topics'])} topic icons and "
          f"{len(UI_ICONS)} interface icons, {total} base64 characters; "
          f"content.json is {len(result.encode('utf-8'))} bytes")


if __name__ == "__main__":
    main()
