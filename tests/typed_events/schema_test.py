"""Holds that the JSON Schema of data class files takes what orvel-analytics takes, and nothing else.

schema_test.py SCHEMA TOOL FILE...

The files are data classes that both are to take. What both are to refuse is made of them, by one
change at a time: of a member, its absence, its name, or a value of every other type.
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

from jsonschema import Draft202012Validator

OTHER_VALUES = [None, True, 1, 1.5, [], {}, ["text"], {"text": "text"}]


def tool_takes(tool, path):
    """Whether the tool reads the file. Any end but success and wrong usage is a failure of its own."""
    run = subprocess.run(
        [tool, "check", "--data-class", path, "-"], input=b"", capture_output=True, check=False
    )
    if run.returncode not in (0, 2):
        sys.exit(f"{path}: the tool ended with {run.returncode}: {run.stderr.decode()}")
    if run.returncode == 2 and not run.stderr.decode().startswith(f"orvel-analytics: {path}:"):
        sys.exit(f"{path}: refused without a place: {run.stderr.decode()}")
    return run.returncode == 0


def changes_of(value):
    """Copies of a JSON value with one change each, at any depth."""
    yield from (other for other in OTHER_VALUES if type(other) is not type(value))
    if isinstance(value, dict):
        yield {**value, "unknown": "text"}
        for name, member in value.items():
            rest = {other: value[other] for other in value if other != name}
            yield rest
            yield {**rest, name.upper(): member}
            for change in changes_of(member):
                yield {**value, name: change}
    elif isinstance(value, list) and value:
        for change in changes_of(value[0]):
            yield [change, *value[1:]]


def main(schema_file, tool, *files):
    schema = json.loads(Path(schema_file).read_text(encoding="utf-8"))
    Draft202012Validator.check_schema(schema)
    validator = Draft202012Validator(schema)
    differences = []
    refused = 0
    with tempfile.TemporaryDirectory() as folder:
        path = str(Path(folder) / "changed.json")
        for file in files:
            document = json.loads(Path(file).read_text(encoding="utf-8"))
            if not validator.is_valid(document) or not tool_takes(tool, file):
                differences.append(f"{file} is refused")
        for change in changes_of(json.loads(Path(files[0]).read_text(encoding="utf-8"))):
            Path(path).write_text(json.dumps(change), encoding="utf-8")
            by_schema = validator.is_valid(change)
            by_tool = tool_takes(tool, path)
            refused += not by_tool
            if by_schema != by_tool:
                differences.append(f"schema {by_schema}, tool {by_tool}: {json.dumps(change)}")
    if not files or refused < 50:
        differences.append(f"only {refused} files were refused: the changes are no test")
    if differences:
        sys.exit("\n".join(differences))
    print(f"{len(files)} files were taken, and {refused} refused, by both")


main(*sys.argv[1:])
