"""The tasks of docs/rewriting.md.

As a script it writes two programs for the build: the document's own with the lines of its first task, and one
that does any task by its number.

    rewriting_document.py DOCUMENT PROGRAM TASKS
"""

import pathlib
import re
import sys

BLOCK = re.compile(r"^```(sh|cpp)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
HEADING = re.compile(r"^## (.*)$", re.MULTILINE)
PLACE = "    // The lines of a task.\n"


def read(document):
    """The program around the tasks, and for each task its heading, its command and its lines of C++."""
    text = pathlib.Path(document).read_text(encoding="utf-8")
    headings = [(found.start(), found.group(1)) for found in HEADING.finditer(text)]
    blocks = [(found.start(), found.group(1), found.group(2)) for found in BLOCK.finditer(text)]
    kinds = [kind for _, kind, _ in blocks]
    if kinds[0] != "cpp" or kinds[1:] != ["sh", "cpp"] * (len(kinds) // 2):
        raise ValueError("A program, and then a command and lines of C++ in turns, are expected")
    tasks = []
    for (place, _, command), (_, _, lines) in zip(blocks[1::2], blocks[2::2]):
        tasks.append(([heading for start, heading in headings if start < place][-1], command, lines))
    return blocks[0][2], tasks


def with_lines(program, lines):
    if program.count(PLACE) != 1:
        raise ValueError("The program has no place for the lines of a task")
    return program.replace(PLACE, "".join(f"    {line}\n" for line in lines.splitlines()))


def task_chooser(program, tasks):
    """The program with a function for each task; the number comes as its third argument."""
    cases = "".join(f"case {number}: {{\n{lines}break;\n}}\n" for number, (_, _, lines) in enumerate(tasks))
    chooser = with_lines(program, f"switch (chosenTask) {{\n{cases}default: std::abort();\n}}")
    chooser = chooser.replace("void change(", "static int chosenTask = -1;\n\nvoid change(")
    chooser = chooser.replace("int main(int, char** argv)\n{\n", "int main(int, char** argv)\n{\n    chosenTask = std::atoi(argv[3]);\n")
    return "#include <cstdlib>\n" + chooser


def main():
    document, program_path, tasks_path = sys.argv[1:]
    program, tasks = read(document)
    pathlib.Path(program_path).write_text(with_lines(program, tasks[0][2]), encoding="utf-8")
    pathlib.Path(tasks_path).write_text(task_chooser(program, tasks), encoding="utf-8")


if __name__ == "__main__":
    main()
