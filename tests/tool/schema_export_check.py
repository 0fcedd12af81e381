"""Holds the exported schema against an independent validator: schema_export_check.py TARNCTL"""
import json
import subprocess
import sys

import jsonschema

OBJECTS = {
    "tarn/services/syslog": {"localSeverity": "info", "targets": [{"name": "main", "host": "logs", "transport": "tls"}]},
    "tarn/network/resolver": {"servers": ["10.0.0.1"], "timeout": 9},
    "tarn/network/interfaces/nic0": {"device": "nic0", "mtu": 1500, "addresses": [
        {"id": "a", "family": "ipv4", "address": "10.0.0.1", "prefixLength": 24}]},
    "tarn/network/firewallRules/web": {"name": "web", "direction": "inbound", "ports": [443, "8000-8099"]},
    "tarn/power/policy": {"profile": "custom", "custom": {"loadThreshold": 0.25}},
    "tarn/tkernel/options": {"console": {"port": "com1", "baudRate": 115200}, "secureBoot": True},
    "test/tool/branches/b": {"id": "b", "either": {"left": 1, "flag": True}, "open": {"any": "x"}, "coded": {"code1": "x"}},
    "test/tool/vault": {"password": "top", "pin": 7, "keys": [{"key": "k"}], "token": {"user": "u"}},
    "test/tool/shapes/s": {
        "id": "s", "tree": {"label": "t", "below": [{"label": "u", "below": [{"label": "v"}]}]},
        "extended": {"a": 1, "b": "x"}, "alone": {"a": 1}, "branch": {"right": True},
        "kind": {"is": "x", "x": 1, "inner": {"p": 1, "q": 2}, "more": 1, "less": 2},
        "tuple": [{"t": 1}, 2, 3], "patterns": {"n1": 7, "other": {"z": 1}}, "odd": "odd", "serial": "s",
        "seen": {"at": "now", "vital": True}, "rules": [{"allow": {"cached": True}}], "parts": [{"name": "p", "n": 1}]},
}


def document(name, value):
    component, group, key, *instance = name.split("/")
    return {"format": 1, "config": {component: {group: {key: [value] if instance else value}}}}


def check_keywords(schema, known):
    """Only draft-07's own keywords stand where schemas do."""
    if isinstance(schema, bool):
        return
    assert set(schema) <= known, set(schema) - known
    for keyword, value in schema.items():
        if keyword in ("properties", "patternProperties", "definitions", "dependencies"):
            inner = [entry for entry in value.values() if not isinstance(entry, list)]
        elif keyword in ("allOf", "anyOf", "oneOf") or (keyword == "items" and isinstance(value, list)):
            inner = value
        else:
            inner = [value] if keyword in known and isinstance(value, dict) and keyword not in ("const", "default") else []
        for entry in inner:
            check_keywords(entry, known)


def main(tarnctl):
    schema = json.loads(subprocess.run([tarnctl, "schema", "export"], capture_output=True, check=True).stdout)
    validator = jsonschema.Draft7Validator(schema)
    validator.check_schema(schema)
    # The meta-schema had forgotten "writeOnly" at first, of which draft-07 speaks beside "readOnly".
    check_keywords(schema, {*jsonschema.Draft7Validator.META_SCHEMA["properties"], "writeOnly"})

    whole = {"format": 1, "config": {}}
    good = [whole, {**whole, "metadata": {"any": 1}, "staged": {"any": []}, "automatic": {}}]
    good += [document(name, value) for name, value in OBJECTS.items()]
    # What other parts of an object need is left to them.
    good.append(document("test/tool/shapes/s", {"id": "s"}))
    # Secrets may be masked.
    good.append(document("test/tool/vault", {"password": "***", "pin": "***", "keys": [{"key": "***"}], "token": "***"}))
    for each in good:
        assert validator.is_valid(each), list(validator.iter_errors(each))
    for name, value in OBJECTS.items():
        subprocess.run([tarnctl, "validate", name, "-"], input=json.dumps(value), text=True, check=True)
    bad = [[], {"format": 1}, {"config": {}}, {**whole, "format": 2}, {**whole, "conifg": {}}, {**whole, "metadata": []},
           {**whole, "config": {"tarn": {"netwrok": {}}}}, {**whole, "config": {"tarn": {"network": {"resovler": {}}}}},
           {**whole, "config": {"tarn": {"network": {"resolver": [{"servers": []}]}}}},
           {**whole, "config": {"tarn": {"network": {"interfaces": {"device": "nic0"}}}}},
           document("test/tool/vault", {"pin": "**"}), document("test/tool/vault", {"keys": "***"}),
           document("test/tool/vault", {"token": {"usr": "u"}}), document("tarn/network/interfaces/nic0", {"mtu": 1500}),
           document("test/tool/shapes/s", {"id": "s", "parts": [{"n": 1}]}),
           document("test/tool/shapes/s", {"id": "s", "seen": {}}),
           document("test/tool/shapes/s", {"id": "s", "tree": {"label": "t", "below": [{"label": "u", "x": 1}]}})]
    for each in bad:
        assert not validator.is_valid(each), each


main(sys.argv[1])
