"""The parts of a document in Markdown that tests look at."""

import re

import pipelines

_CODE = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
SHELLS = ("sh", "bash", "console")
# Calls of programs within sentences that count as commands. Most calls count only if they have arguments.
_IN_TEXT = re.compile(r"(?:build/bin/)?LuTestSuite(?:CLI|Runner)D?(?: .*)? (?:(?:-d|resume) |-h$)"
                      r"|cmake --install |find build |addr2line -e |gdb -p |pacman |Get-CimInstance "
                      r"|scripts/fuzz .*\w|ctest .*\w\w|review --"
                      r"|cmake --preset [\w-]+ && |cd build/|scripts/run-wine build/|benchmarks/[\w-]+(?: .*)?$")
_OUTPUT = re.compile(r"Fehler: |/")


def without_code(text):
    return _CODE.sub("", text)


def languages_of(text):
    return {language for language, _ in _CODE.findall(text)}


def snippets_of(text, language):
    """The code blocks of a language."""
    return [code for found, code in _CODE.findall(text) if found == language]


def anchors_of(text):
    for heading in re.findall(r"^#+ (.*)$", without_code(text), re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def _indented_blocks(prose):
    """Indented lines, with the empty lines between them."""
    block = []
    for line in [*prose.splitlines(), "end"]:
        if line.startswith("    "):
            block.append(line[4:].rstrip())
        elif not line.strip() and block:
            block.append("")
        elif block:
            yield block
            block = []


def consoles_of(text):
    """Pairs of the command after "$ " and the output that the document shows below the command."""
    for block in _indented_blocks(without_code(text)):
        if block[0].startswith("$ "):
            yield block[0][2:], "\n".join(block[1:]).strip("\n") + "\n"


def commands_of(text):
    """The commands in code blocks and indented blocks, then those in the text and in tables, without duplicates."""
    prose = without_code(text)
    shells = "\n".join(code for language, code in _CODE.findall(text) if language in SHELLS)
    found = [line.removeprefix("$ ") for line in shells.splitlines() if line and not line.startswith("#")]
    for block in _indented_blocks(prose):
        if block[0].startswith("$ "):
            found += [line[2:] for line in block if line.startswith("$ ")]
        else:
            found += [line.strip() for line in block if line.strip() and not _OUTPUT.match(line)]
    outside = "\n".join(line for line in prose.splitlines() if not line.startswith("    "))
    for code in re.findall(r"`([^`]*)`", outside):
        command = " ".join(code.split())
        if _IN_TEXT.match(command):
            found.append(command)
    return list(dict.fromkeys(re.sub(r"\s+# .*", "", command) for command in found))


def debugger_sessions_of(text):
    """Pairs of a command that starts a program in gdb, and the lines that the user then types, if the document shows
    them."""
    for command, lines in re.findall(r"^    (gdb --args .*)\n(?:\n```\n((?:\(gdb\) .*\n)+)```$)?", text, re.MULTILINE):
        yield command, re.findall(r"^\(gdb\) (.*)$", lines, re.MULTILINE)


def options_of(text):
    """The options with their values in the first column of tables."""
    return re.findall(r"^\| `(--[^`]*)` \|", text, re.MULTILINE)


def image_commands_of(text):
    """The commands of Dockerfiles."""
    return [" ".join(command.split()) for code in snippets_of(text, "dockerfile")
            for command in re.findall(r"^RUN (.*)", code.replace("\\\n", ""), re.MULTILINE)]


def pipelines_of(text):
    """The pipeline files of GitLab and GitHub, each a list of jobs."""
    return [pipelines.jobs_of(code) for code in snippets_of(text, "yaml")]


def recipes_of(text):
    """The commands of the pipelines for GitLab, GitHub and Jenkins (`sh`), in the order of the text."""
    for language, code in _CODE.findall(text):
        if language == "yaml":
            yield from (command for job in pipelines.jobs_of(code) for command in job.commands)
        elif language == "groovy":
            yield from commands_of_groovy(code)


def commands_of_groovy(code):
    """The commands of a pipeline file of Jenkins."""
    return re.findall(r"^\s*sh '(.*)'$", code, re.MULTILINE)
