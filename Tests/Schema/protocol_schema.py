"""The schema of the protocol, and the rules of the protocol that a schema cannot express."""

import base64
import decimal
import json
import os
import re

import jsonschema

# The middle of a long run of base64, left out by the tests that recorded the line: see RecordedLines.h.
_OMISSION = re.compile("\x01([0-9]+)\x01")

# The numbers of lines that differ in them only are equally right.
_NUMBER = re.compile(rb'"(request_id|sequence|expected_sequence)":[0-9]{1,15}(?=[,}])')


def shape(line):
    """Returns the same bytes for lines that the schema cannot tell apart."""
    return _NUMBER.sub(rb'"\1":0', line)


def decoded(line):
    """Returns the value of a line as bytes, with each number as it stands there. Raises ValueError if it is no JSON."""

    def refuse(constant):
        raise ValueError(constant)

    text = _OMISSION.sub(r"\\u0001\1\\u0001", line.decode())
    try:
        value = json.loads(text, parse_float=decimal.Decimal, parse_constant=refuse)
    except RecursionError as error:
        raise ValueError("nested too deeply") from error
    json.dumps(value, ensure_ascii=False, default=str).encode()  # fails with half a surrogate pair
    return value


def length(text):
    return len(_OMISSION.sub("", text)) + sum(int(number) for number in _OMISSION.findall(text))


def _max_length(validator, limit, instance, _schema):
    if validator.is_type(instance, "string") and length(instance) > limit:
        yield jsonschema.ValidationError(f"has {length(instance)} characters, more than {limit}")


def _min_length(validator, limit, instance, _schema):
    if validator.is_type(instance, "string") and length(instance) < limit:
        yield jsonschema.ValidationError(f"has {length(instance)} characters, less than {limit}")


def _pattern(validator, pattern, instance, _schema):
    # Python's "$" also stands before a line feed at the end, unlike that of JSON Schema.
    if validator.is_type(instance, "string") and not re.search(re.sub(r"\$$", r"\\Z", pattern),
                                                               _OMISSION.sub("", instance)):
        yield jsonschema.ValidationError(f"does not match {pattern}")


# An integer is what the agent writes for one: 7.0 is none.
_Validator = jsonschema.validators.extend(
    jsonschema.Draft202012Validator,
    {"maxLength": _max_length, "minLength": _min_length, "pattern": _pattern},
    type_checker=jsonschema.Draft202012Validator.TYPE_CHECKER.redefine(
        "integer", lambda _, value: type(value) is int).redefine(
        "number", lambda _, value: type(value) in (int, decimal.Decimal)))


class ProtocolSchema:
    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            self.document = json.load(file)
        # Subschemas are compared without an identifier, so that each "$ref" stays within the document.
        definitions = self.document["$defs"]
        self._validators = {name: _Validator({"$ref": f"#/$defs/{name}", "$defs": definitions}) for name in definitions}

    def check_itself(self):
        jsonschema.Draft202012Validator.check_schema(self.document)

    def error(self, name, value):
        """Returns why the value does not match the definition of that name, or None if it does."""
        error = jsonschema.exceptions.best_match(self._validators[name].iter_errors(value))
        return error and f"{'/'.join(map(str, error.absolute_path))}: {error.message[:300]}"

    def matches(self, name, value):
        return self._validators[name].is_valid(value)


def unsigned(number):
    """Returns the number as the agent reads it: without its fraction, and modulo 2 to the power of 64."""
    if isinstance(number, decimal.Decimal):
        if number.adjusted() < 0 or number.as_tuple().exponent >= 64:  # 2**64 divides 10**64
            return 0
        number = int(number)
    return number % 2**64


def base64_bytes(text):
    """Returns the bytes of base64 with or without padding. Raises ValueError. What the recording left out is A's."""
    text = _OMISSION.sub("AAAA", text)
    text += "=" * (-len(text) % 4)
    if text.endswith("==="):  # which Python accepts
        raise ValueError("too much padding")
    return base64.b64decode(text, validate=True)


def _is_too_long(marker):
    return len(marker.encode()) > 512


def _is_base64_of_text(text):
    try:
        content = base64_bytes(text)
        return bool(_OMISSION.search(text) or content.decode() is not None)
    except ValueError:  # of base64 or of UTF-8
        return False


def error_beyond_schema(message):
    """Returns what is wrong with a message of the agent that matches the schema, or None."""
    if _is_too_long(message.get("marker", "")):
        return "the marker has more than 512 bytes"
    if "text_b64" in message:
        if not _is_base64_of_text(message["text_b64"]):
            return "the text is not UTF-8 in base64"
        if length(message["text_b64"]) * 3 // 4 != message["bytes"]:
            return "the bytes are not those of the text"
    paths = message.get("paths", [])
    if sum(len(path.encode()) for path in paths) > 2097152:
        return "the paths have more than 2 MiB"
    if message.get("kind") == "formats":
        if paths != sorted(paths) or len({os.path.dirname(path) for path in paths}) != 1:
            return "the paths are not sorted, or not in one directory"
    return None


# The reasons with which a command that matches the schema may fail, because of what it cannot know.
_STATE_REASONS = {
    "write_text": {"Écriture NSPasteboard impossible"},
    "write_files": {"Le presse-papiers local a changé pendant le transfert", "Fichiers clipboard invalides"},
    "files": {"Écriture fichiers impossible"},
    "image": {"Image clipboard invalide ou trop grande", "Écriture image impossible"},
    "formats": {"Formats clipboard invalides", "Format clipboard refusé", "Écriture des formats impossible"},
    "write_image_data": {"Image historique invalide", "Écriture image impossible"},
    "configure_file_prompt": {
        "Renommage : autorise Tavel Bridge dans Accessibilité et Surveillance de l’entrée, puis réactive l’option."},
}


def may_be_refused(command, reason):
    """Whether a command that matches the schema may be refused with the reason."""
    if command["command"] == "write_text" and reason == "Texte clipboard invalide":
        return _is_too_long(command["marker"]) or not _is_base64_of_text(command["text_b64"])
    allowed = _STATE_REASONS.get(command["command"], set()) | _STATE_REASONS.get(command.get("kind"), set())
    return reason in allowed
