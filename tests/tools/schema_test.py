#!/usr/bin/env python3
"""Holds benchex-report --json against its schema, both ways: it is valid, and has no member that is not described.

    schema_test.py REPORT-COMMAND... SCHEMA TABLE

Ends with status 77 (skipped) where Python's jsonschema is missing.
"""
import json
import pathlib
import subprocess
import sys

try:
    import jsonschema
except ImportError:
    print("skipped: Debian's package python3-jsonschema is needed")
    sys.exit(77)


def main():
    *command, schema_file, table = sys.argv[1:]
    schema = json.loads(pathlib.Path(schema_file).read_text())
    shown = subprocess.run([*command, "--json", "-o", "-", table], capture_output=True, text=True, check=True).stdout
    data = json.loads(shown)
    found = [error.message for error in jsonschema.Draft202012Validator(schema).iter_errors(data)]
    parts = {"run": data["runs"], "function": data["functions"], "row": data["rows"],
             "test": [test for run in data["runs"] for test in run["tests"]]}
    for name, objects in parts.items():
        if not objects:
            found.append(f"the table has no {name}")
        known = set(schema["$defs"][name]["properties"])
        found += [f"{name}: {key} is not described" for key in sorted({key for o in objects for key in o} - known)]
    print("\n".join(found) if found else "as described")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
