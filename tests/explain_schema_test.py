#!/usr/bin/env python3
"""Applies docs/explain.schema.json to the JSON of each explanation in a test program.

  explain_schema_test.py EXPLANATION_TEST
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

SCHEMA = pathlib.Path(__file__).resolve().parent.parent / "docs/explain.schema.json"


def main():
    schema = json.loads(SCHEMA.read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "explanations")
        subprocess.run([sys.argv[1]], env={**os.environ, "DEVICEID_EXPLANATIONS": str(path)},
                       stdout=subprocess.DEVNULL, check=True)
        explanations = json.loads("[" + path.read_text().rstrip(",\n") + "]")
    for explanation in explanations:
        validator.validate(explanation)
    missing = set(schema["properties"]["verdict"]["enum"]) - {e["verdict"] for e in explanations}
    if missing:
        sys.exit(f"no explanation has the verdicts {missing}")


main()
