#!/usr/bin/env python3
"""Checks the shipped content resource VelmoraMac/Resources/content.json.

Verifies what the catalog needs to load the file and what users will see:
the 17 topics with their groups, colours, names, descriptions and icons;
the language names; the seven text tables with every key; "{count}" where it
belongs and nowhere else; the interface icons; the palette. It also reports
the WCAG contrast ratios of the palette's text pairs and of the topic colours
on the pond.

Usage: scripts/check-content.py [path/to/content.json]
Exits with status 1 and lists every problem when a rule is broken.
"""

import base64
import binascii
import itertools
import json
import math
import os
import re
import struct
import sys
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DEFAULT_PATH = os.path.join(ROOT, "VelmoraMac", "Resources", "content.json")

TOPIC_IDS = [
    "alcohol", "smoking", "drugs", "sex", "porn", "overeating", "social_media",
    "doomscrolling", "phone", "shopping", "money", "control", "approval",
    "past_relationship", "craving", "aversion", "delusion",
]
POISONS = {"craving", "aversion", "delusion"}
LANGUAGES = ["ru", "en", "fr", "hi", "es", "pt", "pi"]
LANGUAGE_NAMES = {
    "ru": "Русский", "en": "English", "fr": "Français", "hi": "हिन्दी",
    "es": "Español", "pt": "Português", "pi": "Pāli",
}
TOP_LEVEL = ["topics", "languages", "strings", "palette", "uiIcons"]
TOPIC_KEYS = ["id", "group", "color", "names", "descriptions", "icon"]
TEXT_KEYS = [
    "groups", "loadError", "saveError", "permissionDenied", "dailyGentle", "days",
    "daysSuffix", "back", "settings", "notice", "noticed", "retry", "language",
    "systemLanguage", "cancel", "close", "chooseOne", "selected", "begin",
    "enterPond", "next", "save", "welcomeTitle", "welcomeBody", "welcomeFoot",
    "privacy", "selectionBody", "poisonsBody", "hintTitle", "hintBody", "wiltTitle",
    "wiltBody", "understood", "sounds", "waterSound", "waterSoundBody", "bellSound",
    "bellSoundBody", "topicsTitle", "retained", "guide", "reminder", "reminderBody",
    "time", "localOnly", "privacyPolicy",
]
COUNT_KEYS = {"days", "selected", "chooseOne"}
# Keys the library has built in; the built-in text always wins, so the
# catalog must not carry them.
NATIVE_KEYS = {
    "notificationSettings", "menuWelcome", "menuFind", "launchAtLogin",
    "launchAtLoginBody", "loginApproval", "loginSettings", "loginError", "quitApp",
    "stateOn", "stateOff", "startupError", "startupErrorBody", "okay",
}
# Texts that are whole sentences (they end with sentence punctuation).
SENTENCE_KEYS = {
    "loadError", "saveError", "permissionDenied", "dailyGentle", "chooseOne",
    "welcomeBody", "welcomeFoot", "privacy", "selectionBody", "poisonsBody",
    "hintBody", "wiltBody", "waterSoundBody", "bellSoundBody", "retained",
    "reminderBody",
}
UI_ICONS = [
    "lotus", "settings", "lock", "privacy", "wifi", "language", "expand", "next",
    "guide", "checked", "unchecked", "back", "close",
]
PALETTE_KEYS = [
    "paper", "ink", "muted", "gold", "primary", "onPrimary",
    "surfaceContainerHighest", "outline",
]
ICON_SIZE = 136
MAX_BYTES = 400 * 1024
POND = (14, 36, 34)
CARD = (0x19, 0x31, 0x2D)           # fixed card background of the panel
TOPIC_CARD = (0x2A, 0x40, 0x35)     # fixed background of a selected topic card
COLOUR = re.compile(r"^#[0-9A-F]{6}$")
SENTENCE_END = (".", "?", "!", "।")
PRODUCT = "Velmora"
# The letters of romanised Pāli (plus the product's name, which uses them).
PALI_LETTERS = set("aāiīuūeokgṅcjñṭḍṇtdnpbmyrlvshḷṃ")

problems = []
notes = []


def problem(message):
    problems.append(message)


def rgb(text):
    return tuple(int(text[i:i + 2], 16) for i in (1, 3, 5))


def luminance(colour):
    def channel(value):
        value /= 255
        return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4
    r, g, b = (channel(v) for v in colour)
    return 0.2126 * r + 0.7152 * g + 0.0722 * b


def contrast(first, second):
    a, b = sorted((luminance(first), luminance(second)), reverse=True)
    return (a + 0.05) / (b + 0.05)


def lab(colour):
    def channel(value):
        value /= 255
        return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4
    r, g, b = (channel(v) for v in colour)
    x = (0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.95047
    y = 0.2126 * r + 0.7152 * g + 0.0722 * b
    z = (0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.08883

    def f(t):
        return t ** (1 / 3) if t > 0.008856 else 7.787 * t + 16 / 116
    return (116 * f(y) - 16, 500 * (f(x) - f(y)), 200 * (f(y) - f(z)))


def reject_duplicates(pairs):
    keys = [key for key, _ in pairs]
    for key in set(keys):
        if keys.count(key) > 1:
            problem(f"duplicate JSON key {key!r}")
    return dict(pairs)


def paeth(a, b, c):
    p = a + b - c
    pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
    if pa <= pb and pa <= pc:
        return a
    return b if pb <= pc else c


def png_alpha_range(data, where):
    """Checks one icon's PNG data; returns (min alpha, max alpha) or None."""
    if not data.startswith(b"\x89PNG\r\n\x1a\n"):
        problem(f"{where}: not PNG data")
        return None
    position, header, compressed = 8, None, bytearray()
    while position + 8 <= len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        body = data[position + 8:position + 8 + length]
        crc = data[position + 8 + length:position + 12 + length]
        if len(body) != length or len(crc) != 4 or \
                struct.unpack(">I", crc)[0] != zlib.crc32(kind + body) & 0xFFFFFFFF:
            problem(f"{where}: damaged PNG chunk {kind!r}")
            return None
        position += 12 + length
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            compressed.extend(body)
        elif kind == b"IEND":
            break
    if header is None:
        problem(f"{where}: PNG without IHDR")
        return None
    width, height, depth, colour_type, _, _, interlace = header
    if colour_type != 6:
        problem(f"{where}: PNG colour type {colour_type}, expected 6 (RGBA)")
        return None
    if depth != 8 or interlace != 0:
        problem(f"{where}: PNG bit depth {depth}, interlace {interlace}; expected 8, 0")
        return None
    if (width, height) != (ICON_SIZE, ICON_SIZE):
        problem(f"{where}: {width}x{height} pixels, expected {ICON_SIZE}x{ICON_SIZE}")
    try:
        raw = zlib.decompress(bytes(compressed))
    except zlib.error as error:
        problem(f"{where}: PNG image data does not decompress ({error})")
        return None
    stride = width * 4
    if len(raw) != height * (stride + 1):
        problem(f"{where}: PNG image data has the wrong length")
        return None
    previous = bytearray(stride)
    low, high = 255, 0
    for row in range(height):
        kind = raw[row * (stride + 1)]
        line = bytearray(raw[row * (stride + 1) + 1:(row + 1) * (stride + 1)])
        for i in range(stride):
            left = line[i - 4] if i >= 4 else 0
            up = previous[i]
            corner = previous[i - 4] if i >= 4 else 0
            predictor = (0, left, up, (left + up) >> 1, paeth(left, up, corner))
            if kind > 4:
                problem(f"{where}: unknown PNG filter {kind}")
                return None
            line[i] = (line[i] + predictor[kind]) & 0xFF
        alpha = line[3::4]
        low, high = min(low, min(alpha)), max(high, max(alpha))
        previous = line
    return low, high


def check_icon(text, where):
    if not isinstance(text, str) or not text:
        problem(f"{where}: icon is not a non-empty string")
        return 0
    try:
        data = base64.b64decode(text, validate=True)
    except (binascii.Error, ValueError) as error:
        problem(f"{where}: icon is not valid base64 ({error})")
        return 0
    alpha = png_alpha_range(data, where)
    if alpha is not None:
        low, high = alpha
        if low != 0 or high != 255:
            problem(f"{where}: a template icon needs transparent and opaque pixels "
                    f"(alpha spans {low} to {high})")
    return len(data)


def check_text(value, where, language):
    if not isinstance(value, str):
        problem(f"{where}: expected a string, found {type(value).__name__}")
        return
    if not value.strip():
        problem(f"{where}: empty text")
        return
    if value != value.strip():
        problem(f"{where}: leading or trailing white space")
    if "  " in value or "\n" in value or "\t" in value:
        problem(f"{where}: double space or control character")
    if "'" in value or '"' in value:
        problem(f"{where}: straight quote; use typographic punctuation")
    if "\ufffd" in value:
        problem(f"{where}: replacement character")
    rest = value.replace(PRODUCT, "").replace("{count}", "")
    if language == "pi":
        odd = sorted({c for c in rest.lower() if c.isalpha() and c not in PALI_LETTERS})
        if odd:
            problem(f"{where}: letters outside romanised Pāli: {''.join(odd)}")
    elif language == "hi":
        if not any("\u0900" <= c <= "\u097f" for c in rest):
            problem(f"{where}: no Devanagari")
        if re.search(r"[A-Za-z]", rest):
            problem(f"{where}: Latin letters in Hindi text")
    elif language == "ru":
        if not any("\u0400" <= c <= "\u04ff" for c in rest):
            problem(f"{where}: no Cyrillic")
        if re.search(r"[A-Za-z]", rest):
            problem(f"{where}: Latin letters in Russian text")
    elif language == "fr":
        # French puts a no-break space before : ; ? ! and inside guillemets.
        if re.search(r" [:;?!»]|« ", value):
            problem(f"{where}: ordinary space where French needs a no-break space")
    if "{" in value.replace("{count}", "") or "}" in value.replace("{count}", ""):
        problem(f"{where}: stray brace")


def check_topics(content):
    topics = content.get("topics")
    if not isinstance(topics, list):
        problem("\"topics\" is not an array")
        return
    ids = [t.get("id") for t in topics if isinstance(t, dict)]
    if sorted(map(str, ids)) != sorted(TOPIC_IDS) or len(ids) != len(TOPIC_IDS):
        missing = sorted(set(TOPIC_IDS) - set(ids))
        extra = sorted(set(map(str, ids)) - set(TOPIC_IDS))
        problem(f"topic IDs differ from the fixed 17 (missing {missing}, unknown {extra}, "
                f"{len(ids)} topics)")
    colours = {}
    groups = []
    for index, topic in enumerate(topics):
        where = f"topics[{index}]"
        if not isinstance(topic, dict):
            problem(f"{where}: not an object")
            continue
        where = f"topic {topic.get('id', index)}"
        if list(topic) != TOPIC_KEYS:
            problem(f"{where}: members {list(topic)}, expected {TOPIC_KEYS}")
        if not isinstance(topic.get("id"), str):
            problem(f"{where}: \"id\" is not a string")
        group = topic.get("group")
        if not isinstance(group, int) or isinstance(group, bool) or not 0 <= group <= 4:
            problem(f"{where}: \"group\" {group!r} is not an integer from 0 to 4")
        else:
            groups.append(group)
            if (topic.get("id") in POISONS) != (group == 4):
                problem(f"{where}: group 4 must hold exactly craving, aversion, delusion")
        colour = topic.get("color")
        if not isinstance(colour, str) or not COLOUR.match(colour):
            problem(f"{where}: colour {colour!r} is not \"#\" and six uppercase hex digits")
        else:
            if colour in colours.values():
                problem(f"{where}: colour {colour} is already used")
            colours[topic.get("id")] = colour
        for member in ("names", "descriptions"):
            values = topic.get(member)
            if not isinstance(values, list) or len(values) != len(LANGUAGES):
                problem(f"{where}: \"{member}\" is not an array of {len(LANGUAGES)} strings")
                continue
            for language, value in zip(LANGUAGES, values):
                check_text(value, f"{where} {member} {language}", language)
                if not isinstance(value, str):
                    continue
                if "{count}" in value:
                    problem(f"{where} {member} {language}: \"{{count}}\" does not belong here")
                if member == "descriptions" and not value.endswith(SENTENCE_END):
                    problem(f"{where} description {language}: not a sentence")
                if member == "names" and value.endswith((".", "।")):
                    problem(f"{where} name {language}: a name takes no full stop")
        check_icon(topic.get("icon"), f"{where} icon")
    if groups != sorted(groups):
        problem("topics are not listed group by group (display order)")
    for group in range(5):
        if group not in groups:
            problem(f"group {group} has no topic")

    # Colours on the pond: readable, and distinct from one another.
    worst = min(((contrast(rgb(c), POND), t) for t, c in colours.items()), default=None)
    if worst:
        notes.append(f"topic colours on the pond {POND}: lowest contrast "
                     f"{worst[0]:.2f}:1 ({worst[1]})")
        for ratio, topic in sorted((contrast(rgb(c), POND), t) for t, c in colours.items()):
            if ratio < 4.5:
                problem(f"topic {topic}: colour contrast {ratio:.2f}:1 on the pond, "
                        "below 4.5:1")
    pairs = [(math.dist(lab(rgb(a)), lab(rgb(b))), x, y)
             for (x, a), (y, b) in itertools.combinations(colours.items(), 2)]
    if pairs:
        closest = min(pairs)
        notes.append(f"closest pair of topic colours: {closest[1]} and {closest[2]}, "
                     f"ΔE {closest[0]:.1f}")
        for distance, first, second in pairs:
            if distance < 12:
                problem(f"topics {first} and {second}: colours too alike (ΔE {distance:.1f})")


def check_strings(content):
    strings = content.get("strings")
    if not isinstance(strings, dict) or not all(isinstance(t, dict) for t in strings.values()):
        problem("\"strings\" is not an object of objects")
        return
    if list(strings) != LANGUAGES:
        problem(f"\"strings\" tables {list(strings)}, expected {LANGUAGES}")
    for language in LANGUAGES:
        table = strings.get(language)
        if not isinstance(table, dict):
            problem(f"strings: no table \"{language}\"")
            continue
        if list(table) != TEXT_KEYS:
            missing = [k for k in TEXT_KEYS if k not in table]
            extra = [k for k in table if k not in TEXT_KEYS]
            if missing or extra:
                problem(f"strings {language}: missing {missing}, unexpected {extra}")
            else:
                problem(f"strings {language}: keys out of the fixed order")
        native = sorted(NATIVE_KEYS & set(table))
        if native:
            problem(f"strings {language}: built-in keys {native} would never be shown")
        for key, value in table.items():
            where = f"strings {language} {key}"
            if key == "groups":
                if not isinstance(value, list) or len(value) != 5:
                    problem(f"{where}: not an array of 5 strings")
                    continue
                for index, name in enumerate(value):
                    check_text(name, f"{where}[{index}]", language)
                    if isinstance(name, str) and "{count}" in name:
                        problem(f"{where}[{index}]: \"{{count}}\" does not belong here")
                continue
            check_text(value, where, language)
            if not isinstance(value, str):
                continue
            occurrences = value.count("{count}")
            if key in COUNT_KEYS and occurrences != 1:
                problem(f"{where}: needs \"{{count}}\" exactly once, has {occurrences}")
            if key not in COUNT_KEYS and occurrences:
                problem(f"{where}: \"{{count}}\" does not belong here")
            if key in SENTENCE_KEYS and not value.endswith(SENTENCE_END):
                problem(f"{where}: a sentence should end with its punctuation")
            # "daysSuffix" may be an abbreviation such as "дн.".
            if key not in SENTENCE_KEYS | COUNT_KEYS | {"daysSuffix"} \
                    and value.endswith((".", "।")):
                problem(f"{where}: a label takes no full stop")


def check_palette(content):
    palette = content.get("palette")
    if not isinstance(palette, dict):
        problem("\"palette\" is not an object")
        return
    if list(palette) != PALETTE_KEYS:
        problem(f"palette keys {list(palette)}, expected {PALETTE_KEYS}")
    for key, value in palette.items():
        if not isinstance(value, str) or not COLOUR.match(value):
            problem(f"palette {key}: {value!r} is not \"#\" and six uppercase hex digits")
    if any(not isinstance(palette.get(k), str) or not COLOUR.match(palette[k])
           for k in PALETTE_KEYS):
        return
    c = {key: rgb(palette[key]) for key in PALETTE_KEYS}
    checks = [
        # (foreground, background, description, minimum)
        ("paper", c["ink"], "paper text on ink", 7.0),
        ("muted", c["ink"], "muted text on ink", 4.5),
        ("muted", CARD, "muted text on a card #19312D", 4.5),
        ("muted", TOPIC_CARD, "muted text on a selected topic card #2A4035", 4.5),
        ("gold", c["ink"], "gold accent on ink", 4.5),
        ("gold", CARD, "gold accent on a card #19312D", 4.5),
        ("onPrimary", c["primary"], "onPrimary label on primary", 4.5),
        ("primary", CARD, "primary switch track and check on a card", 3.0),
        ("primary", TOPIC_CARD, "primary check on a selected topic card", 3.0),
        ("outline", c["surfaceContainerHighest"], "outline knob on its switch track", 3.0),
        ("outline", CARD, "outline switch border on a card", 3.0),
    ]
    for foreground, background, description, minimum in checks:
        ratio = contrast(c[foreground], background)
        notes.append(f"contrast {description}: {ratio:.2f}:1 (at least {minimum}:1)")
        if ratio < minimum:
            problem(f"palette: {description} is {ratio:.2f}:1, below {minimum}:1")
    ratio = contrast(c["muted"], c["paper"])
    notes.append(f"contrast muted against paper (text hierarchy): {ratio:.2f}:1")
    if ratio < 1.3:
        problem("palette: muted is hardly distinguishable from paper")
    ink, pond = lab(c["ink"]), lab(POND)
    notes.append(f"ink against the pond chrome shade: ΔE {math.dist(ink, pond):.1f}")


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else DEFAULT_PATH
    with open(path, "rb") as source:
        data = source.read()
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError as error:
        print(f"check-content: {path} is not UTF-8 ({error})")
        return 1
    try:
        content = json.loads(text, object_pairs_hook=reject_duplicates)
    except json.JSONDecodeError as error:
        print(f"check-content: {path} is not valid JSON ({error})")
        return 1
    if not isinstance(content, dict):
        print(f"check-content: {path} does not hold a JSON object")
        return 1

    if "\\u" in text:
        problem("\\u escape found; write real UTF-8 characters")
    if text != json.dumps(content, ensure_ascii=False, indent=2) + "\n":
        problem("not pretty-printed with two-space indentation (as json.dumps(..., "
                "ensure_ascii=False, indent=2) plus a final newline)")
    if len(data) > MAX_BYTES:
        problem(f"file is {len(data)} bytes, more than {MAX_BYTES}")
    if list(content) != TOP_LEVEL:
        problem(f"top-level members {list(content)}, expected {TOP_LEVEL}")

    check_topics(content)
    if content.get("languages") != LANGUAGE_NAMES or \
            list(content.get("languages", {})) != LANGUAGES:
        problem(f"\"languages\" must be exactly {LANGUAGE_NAMES}, in that order")
    check_strings(content)

    icons = content.get("uiIcons")
    if not isinstance(icons, dict):
        problem("\"uiIcons\" is not an object")
    else:
        if list(icons) != UI_ICONS:
            problem(f"uiIcons {list(icons)}, expected {UI_ICONS}")
        for name, value in icons.items():
            check_icon(value, f"uiIcons {name}")
    check_palette(content)

    print(f"check-content: {os.path.relpath(path)} ({len(data)} bytes)")
    for note in notes:
        print(f"  {note}")
    if problems:
        print(f"check-content: {len(problems)} problem(s):")
        for message in problems:
            print(f"  - {message}")
        return 1
    print("check-content: all checks passed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
