#!/usr/bin/env python3
"""Compiles every C++ block of the guides and of the public headers' comments, and follows every link.

docs_test.py COMPILER KSAML
"""
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
GUIDES = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")])

# What the blocks take for granted.
PRELUDE = """
#include <chrono>
#include <cstdio>
#include <iostream>
#include <kestrelink/standard/StandardForms.h>
using namespace kestrelink;
using namespace kestrelink::standard;
using std::chrono::system_clock;
namespace standard = kestrelink::standard;
int giveUp(std::string_view);
void send(std::optional<std::string>);
void use(std::optional<std::string>);
void welcome(std::optional<std::string>);
void report(std::optional<ErrorInfo>);
void warn(std::string_view, std::string_view);
"""
PARAMETERS = """[[maybe_unused]] const SAMLParserController& controller,
[[maybe_unused]] std::shared_ptr<SAMLResponse> response,
[[maybe_unused]] std::shared_ptr<SAMLAuthNRequest> request,
[[maybe_unused]] std::shared_ptr<SAMLSubject> subject, [[maybe_unused]] SharedBytes bytes,
[[maybe_unused]] std::string_view text, [[maybe_unused]] std::string_view xml,
[[maybe_unused]] std::string_view responseText, [[maybe_unused]] std::string_view name,
[[maybe_unused]] std::string_view address, [[maybe_unused]] std::optional<ErrorInfo> error"""


def blocks():
    for guide in GUIDES:
        yield from ((guide, block) for block in re.findall(r"```cpp\n(.*?)```", guide.read_text(), re.S))
    for header in sorted((ROOT / "kestrelink").rglob("*.h")):
        for block in re.findall(r"(?:^ *///     .*\n)+", header.read_text(), re.M):
            yield header, re.sub(r"^ *///     ", "", block, flags=re.M)


def source_of(number, block):
    if re.search(r"^\w[\w:]* \w+\(.*\) \{$", block, re.M):  # declares functions
        return f"namespace block{number} {{\n{block.replace('int main', 'int program')}\n}}\n"
    ended = block.rstrip() + ("" if block.rstrip()[-1] in ";}" else ";")
    return f"int block{number}({PARAMETERS}) {{ {{\n{ended}\n}} return 0; }}\n"


def compiles(compiler, found):
    includes = {line for _, block in found for line in re.findall(r"^#include .*", block, re.M)}
    parts = [*sorted(includes), PRELUDE]
    for number, (file, block) in enumerate(found):
        parts.append(f'#line 1 "{file.relative_to(ROOT)}, a block"')
        parts.append(source_of(number, re.sub(r"^#include .*\n", "", block, flags=re.M)))
    command = [*shlex.split(compiler), "-std=c++20", "-Wall", "-Werror", "-fsyntax-only", "-I", ROOT,
               "-x", "c++", "-"]
    return subprocess.run(command, input="\n".join(parts), text=True, check=False).returncode == 0


def anchor_of(heading):
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def broken_links():
    for guide in GUIDES:
        for link in re.findall(r"\]\(([^)\s]+)\)", guide.read_text()):
            path, _, anchor = link.partition("#")
            target = guide.parent / path if path else guide
            headings = re.findall(r"^#+ (.*)", target.read_text(), re.M) if target.is_file() else []
            if not target.exists() or anchor and anchor not in map(anchor_of, headings):
                yield f"{guide.relative_to(ROOT)}: {link} leads nowhere"


def failing_commands(ksaml):
    for guide in GUIDES:
        text = re.sub(r"\\\n\s*", "", guide.read_text())
        for command in re.findall(r"^    ksaml (request .*)", text, re.M):
            if subprocess.run([ksaml, *shlex.split(command)], capture_output=True, check=False).returncode:
                yield f"{guide.relative_to(ROOT)}: ksaml {command} fails"
        for script in re.findall(r"^    (scripts/\w+)", text, re.M):
            if not (ROOT / script).exists():
                yield f"{guide.relative_to(ROOT)}: there is no {script}"


def main():
    compiler, ksaml = sys.argv[1:]
    found = list(blocks())
    wrong = [*broken_links(), *failing_commands(ksaml)]
    print("\n".join(wrong))
    print(f"{len(found)} blocks of C++ in {len({file for file, _ in found})} files")
    return 0 if compiles(compiler, found) and not wrong else 1


if __name__ == "__main__":
    sys.exit(main())
