#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The Ansible collection as text and as Ansible sees it: collection_test.py SOURCE CASE. With the Python of Ansible."""
import importlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import warnings

SOURCE = pathlib.Path(sys.argv[1])
COLLECTION = SOURCE / "ansible/ansible_collections/kestrove/appliance"
MODULES = {"apply", "facts", "state"}
SKIPPED = 77
sys.dont_write_bytecode = True
PEP8_WIDTH = 120  # as in the rest of this project


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(complaints))


def ansible(program, *words):
    """What one of Ansible's programs prints, with a home of its own."""
    if not shutil.which(program):
        print("ansible-core is not installed")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "ANSIBLE_CONFIG": str(SOURCE / "ansible/ansible.cfg"), "ANSIBLE_HOME": home,
                       "ANSIBLE_NOCOLOR": "1", "PYTHONDONTWRITEBYTECODE": "1"}
        done = subprocess.run([program, *words], capture_output=True, text=True, check=False, env=environment)
    if done.returncode != 0:
        sys.exit(f"FAILED: {program} {' '.join(map(str, words))}\n{done.stdout}{done.stderr}")
    return done.stdout


def documentation():
    names = [f"kestrove.appliance.{name}" for name in sorted(MODULES)]
    return {name.rsplit(".", 1)[1]: shown for name, shown in
            json.loads(ansible("ansible-doc", "--json", *names)).items()}


def complaints_about(path):
    text, name = path.read_text(encoding="utf-8"), path.relative_to(COLLECTION)
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        tree = compile(text, str(path), "exec", dont_inherit=True)
    yield from (f"{name}: {warning.message}" for warning in caught)
    if not tree.co_consts or not isinstance(tree.co_consts[0], str):
        yield f"{name} does not say what it is"
    for number, line in enumerate(text.split("\n"), 1):
        if len(line) > PEP8_WIDTH or line != line.rstrip() or "\t" in line:
            yield f"{name}:{number}: too long, a tab, or blanks at its end"
    for blanks in re.findall(r"(\n*)\n(?:class|def) ", text):
        if len(blanks) != 2:
            yield f"{name}: not two empty lines before a class or a function"


def python_is_clean():
    files = sorted(COLLECTION.rglob("*.py"))
    assert len(files) >= 2 * len(MODULES) + 1, files
    none([complaint for path in files for complaint in complaints_about(path)])


def documentation_names_every_option():
    shown = documentation()
    assert {*shown} == MODULES, shown
    os.environ["ANSIBLE_COLLECTIONS_PATH"] = str(SOURCE / "ansible")
    loader = importlib.import_module("ansible.plugins.loader")
    for name, entry in shown.items():
        taken = loader.action_loader.get(f"kestrove.appliance.{name}", class_only=True).SPEC
        options = entry["doc"]["options"]
        assert {*options} == {*taken}, (name, options)
        for option, rules in taken.items():
            for word in ("type", "choices", "default", "required", "elements"):
                told = options[option].get(word, False if word == "required" else None)
                assert told == rules.get(word, False if word == "required" else None), (name, option, word, told)
        assert entry["return"] and entry["doc"]["attributes"]["check_mode"]["support"] == "full", name


def examples_are_tasks():
    with tempfile.TemporaryDirectory() as folder:
        for name, entry in documentation().items():
            book = pathlib.Path(folder, f"{name}.yml")
            tasks = entry["examples"].strip().replace("\n", "\n    ")
            book.write_text(f"- hosts: localhost\n  tasks:\n    {tasks}\n", encoding="utf-8")
            told = ansible("ansible-playbook", "--list-tasks", "-i", "localhost,", str(book))
            assert told.count("TAGS:") == 1 + entry["examples"].count("- name:") > 2, told


def blocks(language):
    text = (SOURCE / "doc/fleet.md").read_text(encoding="utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def document_holds_plays_that_ansible_takes():
    plays, inventories = blocks("yaml"), blocks("ini")
    assert len(plays) >= 2 and len(inventories) == 1, (plays, inventories)
    with tempfile.TemporaryDirectory() as folder:
        inventory = pathlib.Path(folder, "inventory")
        inventory.write_text(inventories[0], encoding="utf-8")
        listed = json.loads(ansible("ansible-inventory", "-i", str(inventory), "--list"))
        assert listed["_meta"]["hostvars"], listed
        for number, play in enumerate(plays):
            book = pathlib.Path(folder, f"{number}.yml")
            book.write_text(play, encoding="utf-8")
            assert "TAGS:" in ansible("ansible-playbook", "--list-tasks", "-i", str(inventory), str(book)), play


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (python_is_clean, documentation_names_every_option, examples_are_tasks,
                      document_holds_plays_that_ansible_takes)}
CASES[sys.argv[2]]()
