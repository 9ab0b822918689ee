#!/usr/bin/env python3
"""Shows that the staged schema files mean what the original ones mean.

    resources/same-meaning.py FOLDER [MUTATIONS]

Reads every message below FOLDER, and so many seeded mutations of each (40), twice with the tool of
build/dev: beside the staged schema files, and beside the originals. Verdicts, answers and the
descriptions of errors must be the same to the byte. Prints what was compared; status 1 when anything
differs.
"""

import collections
import json
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

BUILD = pathlib.Path(__file__).resolve().parent.parent / "build/dev"
BUNDLE = "share/com.norvane.Kestrelink.SAMLFramework"
ORIGINALS = [pathlib.Path("/usr/share/xml") / name for name in ("opensaml", "xmltooling")]

TAG = re.compile(rb"<(?P<end>/?)(?P<name>[A-Za-z_][^\s/>]*)[^<>]*?(?P<empty>/?)>")
ATTRIBUTE = re.compile(rb"\s(?P<name>[A-Za-z_:][^\s=/>]*)\s*=\s*(?P<value>\"[^\"]*\"|'[^']*')")
NAMES = [b"saml:Issuer", b"Assertion", b"samlp:Status", b"ds:Signature", b"Version", b"ID", b"New"]


def replaced(text, span, replacement=b""):
    return text[: span[0]] + replacement + text[span[1] :]


def some_element(text, chance):
    """The extent of an element; of the whole text when no tags match."""
    found, opened = [(0, len(text))], []
    for tag in TAG.finditer(text):
        if tag["empty"]:
            found.append(tag.span())
        elif not tag["end"]:
            opened.append(tag)
        elif opened and opened[-1]["name"] == tag["name"]:
            found.append((opened.pop().start(), tag.end()))
    return chance.choice(found[1:] or found)


def some_attribute(text, chance, part):
    """The extent of a part of an attribute; of nothing when there is none."""
    found = [each for tag in TAG.finditer(text) for each in ATTRIBUTE.finditer(text, *tag.span())]
    return chance.choice(found).span(part) if found else (0, 0)


def truncated(text, chance):
    return text[: chance.randrange(len(text))]


def byte_flipped(text, chance):
    place = chance.randrange(len(text))
    return replaced(text, (place, place + 1), bytes([text[place] ^ 1 << chance.randrange(8)]))


def element_dropped(text, chance):
    return replaced(text, some_element(text, chance))


def element_twice(text, chance):
    start, end = some_element(text, chance)
    return replaced(text, (end, end), text[start:end])


def element_moved(text, chance):
    start, end = some_element(text, chance)
    rest, element = replaced(text, (start, end)), text[start:end]
    place = chance.choice([tag.end() for tag in TAG.finditer(rest)] or [0])
    return replaced(rest, (place, place), element)


def element_renamed(text, chance):
    start, end = some_element(text, chance)
    tag, name = TAG.match(text, start), chance.choice(NAMES)
    if not tag:
        return text
    last = re.compile(rb"</" + re.escape(tag["name"]) + rb"(\s*>)$")
    return replaced(replaced(text, (start, end), last.sub(rb"</" + name + rb"\1", text[start:end])),
                    tag.span("name"), name)


def attribute_dropped(text, chance):
    return replaced(text, some_attribute(text, chance, 0))


def attribute_twice(text, chance):
    start, end = some_attribute(text, chance, 0)
    return replaced(text, (end, end), b" also" + text[start:end].strip())


def attribute_renamed(text, chance):
    return replaced(text, some_attribute(text, chance, "name"), chance.choice(NAMES))


def attribute_changed(text, chance):
    return replaced(text, some_attribute(text, chance, "value"), b'"no: such value"')


MUTATIONS = [truncated, byte_flipped, element_dropped, element_twice, element_moved,
             element_renamed, attribute_dropped, attribute_twice, attribute_renamed,
             attribute_changed]


def installed_beside(schemas, place):
    """A copy of tool and library with those schema files as their bundle."""
    for folder in ("bin", "lib", BUNDLE):
        (place / folder).mkdir(parents=True)
    shutil.copy(BUILD / "bin/ksaml", place / "bin")
    for library in (BUILD / "lib").glob("*.so*"):
        shutil.copy(library, place / "lib", follow_symlinks=False)
    for schema in schemas:
        shutil.copy(schema, place / BUNDLE)
    return place / "bin/ksaml"


def answers_of(tools, files):
    """What each tool says, a line for each file."""
    runs = [subprocess.Popen([tool, "read", "--json", "--cached", *files],
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) for tool in tools]
    answers = [run.communicate()[0].splitlines() for run in runs]
    if any(run.returncode not in (0, 1) for run in runs):
        sys.exit(f"the tool failed: {runs[0].args}")
    return zip(*answers, strict=True)


def main():
    folder, mutations = pathlib.Path(sys.argv[1]), int((sys.argv[2:] or [40])[0])
    staged = sorted((BUILD / BUNDLE).glob("*.xsd"))
    originals = [file for each in staged for place in ORIGINALS for file in place.glob(each.name)]
    if not staged or len(staged) != len(originals):
        sys.exit("build/dev, or an original of its schema files, is missing")
    counts, different = collections.Counter(), 0
    with tempfile.TemporaryDirectory() as work:
        work = pathlib.Path(work)
        tools = [installed_beside(staged, work / "staged"),
                 installed_beside(originals, work / "originals")]
        for message in sorted(path for path in folder.rglob("*") if path.is_file()):
            text, chance = message.read_bytes() or b" ", random.Random(message.name)
            texts = [text] + [MUTATIONS[n % len(MUTATIONS)](text, chance) for n in range(mutations)]
            files = [work / str(number) for number in range(len(texts))]
            for file, content in zip(files, texts):
                file.write_bytes(content)
            for number, (one, other) in enumerate(answers_of(tools, files)):
                error = json.loads(one)["error"]
                counts[f"{error['domain']} {error['code']}" if error else "no error"] += 1
                if one != other:
                    different += 1
                    print(f"{message}, mutation {number}:\n  {one}\n  {other}")
    outcomes = ", ".join(f"{count} {outcome}" for outcome, count in sorted(counts.items()))
    print(f"{sum(counts.values())} readings with each set ({outcomes}): {different} differ")
    return 1 if different else 0


if __name__ == "__main__":
    sys.exit(main())
