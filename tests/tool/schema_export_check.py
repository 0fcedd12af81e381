"""Holds the exported schema against an independent validator, and against what tarnctl itself says of the same data.

usage: schema_export_check.py TARNCTL [SEED [ROUNDS [show]]]
"""
import copy
import json
import os
import random
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


def places(value, here=()):
    yield here
    items = value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ()
    for key, inner in items:
        yield from places(inner, (*here, key))


def at(value, place):
    for key in place:
        value = value[key]
    return value


def mutated(value):
    """The value with one thing changed, added or taken away, which mostly is wrong."""
    value = copy.deepcopy(value)
    place = random.choice(list(places(value)))
    target = at(value, place)
    other = random.choice([None, True, -1, 7, 1.5, "x", "1500", [], {}, [1], {"t": 1}])
    if isinstance(target, dict) and random.random() < 0.6:
        target[random.choice(["unknown", "a", "n1", "left", "x", "q", "label", "code2", "p"])] = other
    elif isinstance(target, list) and random.random() < 0.6:
        target.append(other)
    elif place:
        around = at(value, place[:-1])
        if random.random() < 0.3:
            del around[place[-1]]
        else:
            around[place[-1]] = other
    return value


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

    def allows(name, value):
        return validator.is_valid(document(name, value))

    def is_taken(name, value):
        run = subprocess.run([tarnctl, "validate", name, "-"], input=json.dumps(value), text=True, capture_output=True)
        assert run.returncode in (0, 4), run.stderr
        return run.returncode == 0, run.stdout

    whole = {"format": 1, "config": {}}
    good = [whole, {**whole, "metadata": {"any": 1}, "staged": {"any": []}, "automatic": {}}]
    good += [document(name, value) for name, value in OBJECTS.items()]
    # What other parts of an object need is left to them.
    good.append(document("test/tool/shapes/s", {"id": "s"}))
    # Secrets may be masked.
    good.append(document("test/tool/vault", {"password": "***", "pin": "***", "keys": [{"key": "***"}], "token": "***"}))
    for each in good:
        assert validator.is_valid(each), list(validator.iter_errors(each))
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

    seed = random.randrange(1 << 32) if len(sys.argv) < 3 else int(sys.argv[2])
    random.seed(seed)
    both = 0
    rounds = int(os.environ.get("TARN_TEST_ROUNDS", 150)) if len(sys.argv) < 4 else int(sys.argv[3])
    for _ in range(rounds):
        name, value = random.choice(list(OBJECTS.items()))
        value = mutated(value)
        if not isinstance(value, dict):
            continue
        if name.count("/") == 3 and value.get(next(iter(OBJECTS[name]))) != name.split("/")[3]:
            continue  # an instance of another name
        taken, why = is_taken(name, value)
        allowed = allows(name, value)
        # What is empty is left out by the one, and may be refused by the other.
        empty = any(at(value, place) in ({}, []) for place in places(value))
        assert allowed or not taken or empty, f"seed {seed}: {name} {value} is refused by the schema alone"
        both += not allowed and not taken
        if len(sys.argv) > 4 and allowed and not taken:
            print(name, value, why)
    assert both > rounds / 4, f"seed {seed}: {both} of {rounds} found"


main(sys.argv[1])
