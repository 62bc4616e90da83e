"""What the module returns, refuses and writes is what the command does, to the byte."""

import json
import os
import random
import subprocess

import pytest
from conftest import TOOL, fill

import stmdcm

# Calls as the module takes them; `command_line` makes the same one for the command.
READS = [
    ("check", {}),
    ("check", {"severity": "error", "ignore": ["C-TORN-PAYLOAD", "O-MISSING"]}),
    ("check", {"portable": True}),
    ("check", {"as_": "settings"}),
    ("history", {}),
    ("history", {"prune": 0}),
    ("diff", {}),
]
VALUES = ["STM_ATB_Id=42", "STM_ATB_Id=7", "STM_DTC_target_clock_hz=1.25GHz", "HEAD_Present_1=yes", "STM_STP_Version=3"]
WRONG = ["STM_ATB_Id=many", "NO_PROPERTY=1", "STM_data_flip=2", "STM_ATB_Id"]
CHANGES = [
    *(("set", ["run7.tdf", value], {}) for value in VALUES + WRONG),
    ("set", ["run7.tdf", *VALUES[1:4]], {"dry_run": True}),
    ("set", ["run7.tdf", VALUES[0], VALUES[0]], {}),
    ("set", ["settings.txt", VALUES[0]], {}),
    ("set", ["settings-unknown-key.txt", VALUES[2]], {"force": True}),
    ("set", ["missing.tdf", VALUES[0]], {}),
    ("set", ["torn.tdf", VALUES[0]], {}),
    ("apply", ["settings.txt", "run7.tdf"], {}),
    ("apply", ["settings.txt", "run7.tdf"], {"only": ["properties", "usecases"], "dry_run": True}),
    ("apply", ["run7.tdf", "full.tdf"], {"except_": ["objects", "STM_ATB_Id"]}),
    ("apply", ["settings.txt", "full.tdf"], {"replace": True}),
    ("apply", ["settings.txt", "full.tdf"], {"replace": True, "only": ["properties"]}),
    ("apply", ["torn.tdf", "run7.tdf"], {}),
    ("apply", ["torn.tdf", "run7.tdf"], {"force": True}),
    ("apply", ["run7.tdf", "run7.tdf"], {}),
    ("apply", ["full.tdf", "torn.tdf"], {}),
    ("apply", ["full.tdf", "run7.tdf"], {"only": ["no-part"]}),
    *(("restore", ["run7.tdf", number], {}) for number in (1, 2, 3, 99)),
    ("restore", ["run7.tdf", 2], {"dry_run": True}),
    ("history", ["run7.tdf"], {"prune": 1, "output": "small.tdf"}),
    ("history", ["run7.tdf"], {"prune": 1, "output": "small.tdf", "force": True}),
    ("history", ["run7.tdf"], {"output": "small.tdf"}),
    ("history", ["run7.tdf"], {"prune": 1, "output": "small.txt"}),
    ("recover", ["torn.tdf"], {"plan": True}),
    ("recover", ["torn.tdf"], {"output": "good.tdf", "force": True}),
    ("recover", ["torn.tdf"], {"output": "good.tdf", "split": [20143]}),
    ("recover", ["torn.tdf"], {}),
    ("recover", ["missing.tdf"], {"output": "good.tdf"}),
]


def command_line(command, args, options):
    words = [TOOL, "--json", command, *map(os.fsencode, map(str, args))]
    for name, value in options.items():
        flag = "--" + name.rstrip("_").replace("_", "-")
        for each in value if isinstance(value, list) else [value]:
            words += [flag] if each is True else [flag, str(each)]
    return words


def of_command(command, args, options, folder):
    """What it says: a document, or a failure and whether the request made no sense."""
    done = subprocess.run(command_line(command, args, options), cwd=folder, capture_output=True, check=False)
    document = json.loads(done.stdout) if done.stdout else {"failure": None}
    if command == "apply" and "captures" in document and document["captures"][0]["failure"]:
        return document["captures"][0]["failure"], False
    return (document["failure"], done.returncode == 2) if "failure" in document else document


def of_module(command, args, options, folder):
    os.chdir(folder)
    try:
        return getattr(stmdcm, command)(*args, **options)
    except stmdcm.Error as error:
        if command == "apply" and not isinstance(error, stmdcm.RequestError) and error.file == args[1]:
            return str(error), False
        offset = None if error.offset is None else str(error.offset)
        failure = {"file": error.file, "offset": offset, "cause": error.cause}
        return failure, isinstance(error, stmdcm.RequestError)


def assert_same(command, args, options, of_the_module, of_the_command):
    if of_the_command == (None, True):  # words that the command's parser refuses have no document
        assert of_the_module[1], (command, args, options)
    else:
        assert of_the_module == of_the_command, (command, args, options)


def damaged(folder, count):
    """Captures with bytes changed, gone and added, whose names are bytes, too."""
    rng = random.Random(7)
    names = []
    for number in range(count):
        bytes_ = bytearray((folder / "run7.tdf").read_bytes())
        for _ in range(rng.randint(1, 4)):
            place = rng.randrange(20000, len(bytes_))
            bytes_[place : place + rng.choice([0, 1, 1, 4, 300])] = rng.randbytes(rng.choice([0, 1, 1, 4]))
        names.append(os.fsdecode(b"damaged-\xff%d.tdf" % number))
        (folder / names[-1]).write_bytes(bytes_)
    return names


@pytest.mark.parametrize("command,options", READS, ids=str)
def test_reads_what_the_command_reads(captures, command, options):
    files = sorted(path.name for path in captures.iterdir()) + ["missing.tdf", "."] + damaged(captures, 60)
    first = ["run7.tdf"] if command == "diff" else []
    done = subprocess.run(command_line(command, first + files, options), capture_output=True, check=False)
    documents = [json.loads(line) for line in done.stdout.splitlines()]
    assert len(documents) == len(files)
    for file, document in zip(files, documents):
        expected = (document["failure"], False) if "failure" in document else document
        found = of_module(command, [*first, file], options, captures)
        if isinstance(found, tuple):  # the file's name comes as Python has it, and the document's as JSON can
            found[0]["file"] = os.fsencode(found[0]["file"]).decode("utf-8", "replace")
        assert found == expected, (command, file)


def test_holds_what_the_command_shows(captures):
    for file in sorted(path.name for path in captures.iterdir()) + damaged(captures, 60):
        shown, sections = (of_command(command, [file], {}, captures) for command in ("show", "sections"))
        try:
            reading = stmdcm.read(file)
        except stmdcm.Error:
            assert isinstance(shown, tuple)
            continue
        configuration = shown["configuration"]
        properties = configuration["properties"] or []
        assert dict(reading.properties) == {each["name"]: each["value"] for each in properties}
        assert list(map(type, reading.properties.values())) == [type(each["value"]) for each in properties]
        assert dict(reading.defaults) == {each["name"]: each["default"] for each in properties}
        assert (reading.kind, reading.loads) == (shown["kind"], shown["loaded"])
        used = configuration["use_cases"] or {"sc": []}
        assert [each._asdict() for each in reading.use_cases.cpt] == used.get("cpt", [])
        assert [each.counters and each.counters[0].text for each in reading.use_cases.sc] == [
            each["counters"] and each["counters"][0]["text"] for each in used["sc"]
        ]
        images = configuration["object_files"] or []
        assert [str(image.recorded) for image in reading.images] == [image["recorded"] for image in images]
        if reading.kind == "capture":
            assert [str(each.offset) for each in reading.sections] == [each["offset"] for each in sections["sections"]]
        row = reading.row()
        assert row["images"] == len(reading.images) and row["sc"] == len(reading.use_cases.sc)
        assert row["errors"] >= sum(finding.severity == "error" for finding in reading.findings)


@pytest.mark.parametrize("seed", range(3))
def test_changes_as_the_command_does(tmp_path, seed):
    rng = random.Random(seed)
    own, other = fill(tmp_path / "own"), fill(tmp_path / "other")
    for command, args, options in CHANGES + rng.choices(CHANGES, k=40):
        found = of_module(command, args, options, own)
        assert_same(command, args, options, found, of_command(command, args, options, other))
        contents = [{path.name: path.read_bytes() for path in folder.iterdir()} for folder in (own, other)]
        assert contents[0] == contents[1], (command, args, options)
