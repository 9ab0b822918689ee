#!/usr/bin/env python3
"""Compiles every C++ block of the guides and of the public headers' comments, follows every link, and compares what
`describe` says with docs/rejected.md.

docs_test.py COMPILER KSAML
"""
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
GUIDES = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")])

# What the blocks take for granted.
PRELUDE = """
#include <chrono>
#include <cstdio>
#include <iostream>
#include <kestrelink/signin/SignIn.h>
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
namespace signin = kestrelink::signin;
void keep(std::string_view);
void show(std::string_view);
void use(const signin::Session&);
void welcome(std::string_view, SAMLDate);
"""
PARAMETERS = """[[maybe_unused]] const SAMLParserController& controller,
[[maybe_unused]] std::shared_ptr<SAMLResponse> response,
[[maybe_unused]] std::shared_ptr<SAMLAuthNRequest> request,
[[maybe_unused]] std::shared_ptr<SAMLSubject> subject, [[maybe_unused]] SharedBytes bytes,
[[maybe_unused]] std::string_view text, [[maybe_unused]] std::string_view xml,
[[maybe_unused]] std::string_view responseText, [[maybe_unused]] std::string_view name,
[[maybe_unused]] std::string_view address, [[maybe_unused]] std::string_view metadata,
[[maybe_unused]] std::string_view posted, [[maybe_unused]] std::string_view pending,
[[maybe_unused]] std::string pem, [[maybe_unused]] signin::Client client,
[[maybe_unused]] std::optional<signin::Provider> provider, [[maybe_unused]] signin::Policy policy,
[[maybe_unused]] std::optional<ErrorInfo> error"""


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


def differing_clients():
    client = (ROOT / "examples/client.cpp").read_text()
    if not re.search(r"```cpp\n(.*?)```", (ROOT / "README.md").read_text(), re.S)[1] in client:
        yield "README.md: its client is not examples/client.cpp"


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


# Prints the row of docs/rejected.md for each error that `describe` knows.
DESCRIBED = """
#include <iostream>
#include <kestrelink/saml/KestrelinkSAML.h>
using namespace kestrelink;
void print(const std::optional<ErrorInfo>& error) {
  const auto sentence = describe(error);
  if (sentence == "the error is unknown") return;
  if (error) std::cout << "`" << error->domain << "` " << error->code << "\\t" << sentence << "\\n";
  if (!error) std::cout << "null without an error\\t" << sentence << "\\n";
}
int main() {
  print(std::nullopt);
  for (const std::string_view domain : {kXMLWrapperErrorDomain, SAMLParserErrorDomain}) {
    for (std::int64_t code = 0; code < 1000; ++code) print(ErrorInfo{std::string(domain), code, {}});
  }
  for (const char* description : {"ERROR 1872:", "ERROR 1:"}) {
    print(ErrorInfo{std::string(kXMLWrapperErrorDomain), 100,
                    {{std::string(kLocalizedDescriptionKey), description}}});
  }
}
"""


def misdescribed(compiler, ksaml):
    library = pathlib.Path(ksaml).parents[1] / "lib"
    with tempfile.TemporaryDirectory() as folder:
        program = f"{folder}/described"
        subprocess.run([*shlex.split(compiler), "-std=c++20", "-I", ROOT, "-x", "c++", "-", "-x", "none", "-L", library,
                        "-lkestrelink-saml", f"-Wl,-rpath,{library}", "-o", program], input=DESCRIBED, text=True,
                       check=True)
        said = set(subprocess.run([program], capture_output=True, text=True, check=True).stdout.splitlines())
    page = (ROOT / "docs/rejected.md").read_text()
    rows = re.findall(r"^\| (`\w+` \d+|null without an error) \|.*\| (.*) \|$", page, re.M)
    for row in sorted(said ^ {"\t".join(row) for row in rows}):
        yield f"docs/rejected.md or describe lacks: {row}"


def main():
    compiler, ksaml = sys.argv[1:]
    found = list(blocks())
    wrong = [*differing_clients(), *broken_links(), *failing_commands(ksaml), *misdescribed(compiler, ksaml)]
    print("\n".join(wrong))
    print(f"{len(found)} blocks of C++ in {len({file for file, _ in found})} files")
    return 0 if compiles(compiler, found) and not wrong else 1


if __name__ == "__main__":
    sys.exit(main())
