#!/usr/bin/env python3
"""Applies docs/explain.schema.json to the JSON of each explanation in the stories of PCs.

  explain_schema_test.py PLAYER
"""
import json
import os
import pathlib
import sys
import tempfile

import jsonschema

sys.path.insert(0, str(pathlib.Path(__file__).parent / "pc"))
from play import play  # pylint: disable=wrong-import-position
from story import read_stories  # pylint: disable=wrong-import-position

SCHEMA = pathlib.Path(__file__).resolve().parent.parent / "docs/explain.schema.json"


def main():
    schema = json.loads(SCHEMA.read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "explanations")
        os.environ["DEVICEID_EXPLANATIONS"] = str(path)
        play([story for story in read_stories() if "explained" in story.text], sys.argv[1:])
        explanations = json.loads("[" + path.read_text().rstrip(",\n") + "]")
    for explanation in explanations:
        validator.validate(explanation)
    missing = set(schema["properties"]["verdict"]["enum"]) - {e["verdict"] for e in explanations}
    if missing:
        sys.exit(f"no explanation has the verdicts {missing}")


main()
