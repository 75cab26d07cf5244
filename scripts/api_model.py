"""The messages of the gallery as they are really sent: the catalogue, with api-behaviour.json applied to it.

A row of that table names a place and what is different there:

  definition  the catalogue's name of a request, notification or type
  in          "parameters" or "return"; without it, the type itself
  field       a dotted path inside; without it, the whole definition
  rename      the field's real name
  required    whether it is always there, or must be
  schema      members that replace those of the field's schema; null removes one
  add         the schema of a field that the catalogue does not declare
  absent      true for a field that is never sent or read, and for a request without a handler
  note        a sentence for readers
"""

import json
import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
CATALOGUE = ROOT / "src/plugin-modules/Gallery/plugin/ApiCatalogue.json"
BEHAVIOUR = ROOT / "scripts/api-behaviour.json"
REFERENCE = "#/definitions/"  # what a "$ref" begins with; the rest is the name of a type


def _renamed(properties, old, new):
    """The same properties in the same order, with one of them under its real name."""
    items = [(new if name == old else name, schema) for name, schema in properties.items()]
    properties.clear()
    properties.update(items)


def _require(parent, name, required):
    names = [other for other in parent.get("required", []) if other != name]
    parent["required"] = names + [name] if required else names


def _apply_to_field(parent, row):
    *path, name = row["field"].split(".")
    for step in path:
        parent = parent["properties"][step]
    properties = parent.setdefault("properties", {})
    if "add" in row:
        if name in properties:
            raise ValueError(f"{row['definition']} declares {row['field']}")
        properties[name] = dict(row["add"])
    if row.get("absent"):
        del properties[name]
        return _require(parent, name, False)
    field = properties[name]
    for key, value in row.get("schema", {}).items():
        if value is None:
            del field[key]
        else:
            field[key] = value
    if "note" in row:
        field["note"] = row["note"]
    required = row.get("required", name in parent.get("required", []))
    if "rename" in row:
        _renamed(properties, name, row["rename"])
        _require(parent, name, False)
    return _require(parent, row.get("rename", name), required)


def _apply(definitions, row):
    definition = definitions[row["definition"]]
    if "field" in row:
        return _apply_to_field(definition[row["in"]] if "in" in row else definition, row)
    definition.update({key: row[key] for key in ("absent", "note") if key in row})
    return None


def definitions():
    """The definitions of the catalogue, by name and in its order, with "note" and "absent" added to schemas. Raises
    KeyError for a row whose place the catalogue does not have."""
    found = json.loads(CATALOGUE.read_text(encoding="utf-8"))["definitions"]
    for row in json.loads(BEHAVIOUR.read_text(encoding="utf-8"))["rows"]:
        _apply(found, row)
    return found


def group(schema):
    """What a definition is: "Requests", "Notifications" or "Types"."""
    return "Notifications" if "persistent" in schema else "Requests" if "isCommand" in schema else "Types"


def meaning(schema):
    """Description and note in one text, or nothing."""
    description, note = schema.get("description", ""), schema.get("note", "")
    if description and note and not description.endswith("."):
        description += "."
    return f"{description} {note}".strip()
