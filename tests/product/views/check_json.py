#!/usr/bin/env python3
"""Checks a JSON view against its schema, and its items against the XML documents that they come from.

    check_json.py SCHEMA JSON                      the schema alone
    check_json.py SCHEMA JSON MAIN.xml DRIVE.xml...  and all items, one by one

Prints what is wrong and ends with status 1.
"""

import json
import sys
import xml.etree.ElementTree as ElementTree

import jsonschema


def from_xml(element):
    """An XML item as the JSON view writes it."""
    item = {
        "name": element.get("Name"),
        "value": element.get("Value"),
        "valid": element.get("Valid") == "TRUE",
    }
    if element.get("Parent") is not None:
        item["parent"] = element.get("Parent")
    item["items"] = [from_xml(child) for child in element]
    return item


def items_of(path):
    return [from_xml(item) for item in ElementTree.parse(path).getroot()]


def count(items):
    return sum(1 + count(item["items"]) for item in items)


def compare(what, told, expected):
    if count(told) != count(expected):
        sys.exit(f"{what} has {count(told)} items, and the document {count(expected)}")
    if told != expected:
        sys.exit(f"{what} is not what the document says")


def main():
    schema_path, view_path, *documents = sys.argv[1:]
    with open(schema_path, "rb") as file:
        schema = json.loads(file.read().decode("utf-8"))
    with open(view_path, "rb") as file:
        view = json.loads(file.read().decode("utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    for error in jsonschema.Draft202012Validator(schema).iter_errors(view):
        sys.exit(f"the schema refuses it: {error.json_path}: {error.message[:300]}")
    if documents:
        compare("items", view["items"], items_of(documents[0]))
        if len(view["drive_documents"]) != len(documents) - 1:
            sys.exit("drive_documents is not one for each document")
        for answer, document in zip(view["drive_documents"], documents[1:]):
            compare(f"drive_documents of slot {answer['slot']}", answer["items"], items_of(document))


main()
