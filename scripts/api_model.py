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
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
CATALOGUE = ROOT / "src/plugin-modules/Gallery/plugin/ApiCatalogue.json"
BEHAVIOUR = ROOT / "scripts/api-behaviour.json"
REFERENCE = "#/definitions/"  # what a "$ref" begins with; the rest is the name of a type

# What the plug-in's validator understands; it would ignore another keyword silently.
KEYWORDS = {"type", "enum", "required", "minimum", "minLength", "minItems", "properties", "items", "$ref",
            "description", "descritpion", "default"}
TYPES = {"array", "boolean", "integer", "number", "object", "string"}

ENDPOINTS = ROOT / "src/plugin-modules/Gallery/plugin/EndpointTable.cpp"
# The rows of the table: a task's class and its request, or a request and its function.
ENDPOINT = re.compile(r'RegisterTask<(\w+)>\("(\w+)"\)|RegisterSyncMethod\(\s*"(\w+)",\s*&\w+,\s*&\w+::(\w+)\)')
# The handlers that have another name than their request.
HANDLERS = {
    "RemoveGalleryItem": "Remove",
    "GetFileMetadata": "GetMetaData",
    "GetImageFileDimensions": "GetImageDimensions",
    "CopyFile": "GalleryCopyFile",
    "MoveFile": "GalleryMoveFile",
    "IsDirectoryWriteable": "IsDirectoryWritable",
    "PreviewPathInfo": "PopulatePreviewPath",
    "Trim": "TrimVideo",
}
UNHANDLED = {"MigrateHighlightsTracker"}  # of an earlier version; answered as unknown


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


def _check_schema(path, schema, references):
    """Raises ValueError where the validator would not do what the schema says."""
    if unknown := schema.keys() - KEYWORDS:
        raise ValueError(f"{path}: unknown keywords {unknown}")
    if ("type" in schema) == ("$ref" in schema):
        raise ValueError(f"{path}: needs either a type or a reference")
    if "$ref" in schema and schema["$ref"] not in references:
        raise ValueError(f"{path}: there is no type {schema['$ref']}")
    if "type" in schema and schema["type"] not in TYPES:
        raise ValueError(f"{path}: unknown type {schema['type']}")
    for keyword, kind in ("properties", "object"), ("items", "array"):
        if keyword in schema and schema.get("type") != kind:
            raise ValueError(f"{path}: {keyword} of something else than an {kind}")
    for name, field in schema.get("properties", {}).items():
        _check_schema(f"{path}.{name}", field, references)
    if "items" in schema:
        _check_schema(f"{path}[]", schema["items"], references)


def _check_catalogue(found):
    references = {REFERENCE + name for name, definition in found.items() if "isCommand" not in definition}
    for name, definition in found.items():
        if "isCommand" not in definition:
            _check_schema(name, definition, references)
        for part in "parameters", "return":
            if part in definition:
                _check_schema(f"{name}.{part}", definition[part], references)


def _check_endpoints(found):
    """A request without an entry is refused before its handler runs, and one without a row has no handler."""
    rows = [(match[2] or match[3], match[1] or match[4]) for match in ENDPOINT.finditer(ENDPOINTS.read_text("utf-8"))]
    requests = [name for name, each in found.items() if "isCommand" in each and "persistent" not in each]
    wanted = [(name, HANDLERS.get(name, name)) for name in requests if name not in UNHANDLED]
    if sorted(rows) != sorted(wanted):
        raise ValueError(f"the endpoints are not those of the catalogue: {sorted(set(rows) ^ set(wanted))}")


def _without_repetition(pairs):
    if len({name for name, _ in pairs}) < len(pairs):
        raise ValueError(f"a name twice: {[name for name, _ in pairs]}")
    return dict(pairs)


def definitions():
    """The definitions of the catalogue, by name and in its order, with "note" and "absent" added to schemas. Raises
    KeyError for a row whose place the catalogue does not have, and ValueError for a catalogue that contradicts itself,
    its validator or the table of endpoints."""
    text = CATALOGUE.read_text(encoding="utf-8")
    found = json.loads(text, object_pairs_hook=_without_repetition)["definitions"]
    _check_catalogue(found)
    _check_endpoints(found)
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
