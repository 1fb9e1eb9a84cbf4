# SPDX-License-Identifier: Apache-2.0
"""Reads what an appliance is set to."""
from ansible_collections.kestrove.appliance.plugins.plugin_utils.appliance import ApplianceAction

FOUND = 4  # the status of a check that found something
# The last one is read only where it is asked for.
COMMANDS = {
    "status": ["status"],
    "settings": ["show"],
    "findings": ["check"],
    "interfaces": ["interface", "list"],
    "mode": ["mode", "show"],
    "addresses": ["address", "list"],
    "routes": ["route", "list"],
    "routes6": ["route6", "list"],
    "rules": ["rule", "list"],
    "users": ["user", "list"],
    "engine": ["engine", "status"],
    "history": ["history"],
}
# How an answer becomes a fact, where it is not one as it stands.
SHAPES = {
    "settings": lambda rows: {row["item"]: row["value"] for row in rows},
    "findings": lambda answer: answer["findings"],
}


class ActionModule(ApplianceAction):
    """kestrovectl show, list and the like."""

    SPEC = {"subset": {"type": "list", "elements": "str", "choices": [*COMMANDS], "default": [*COMMANDS][:-1]}}

    def work(self, args):
        facts = {name: self._fact(name) for name in args["subset"]}
        return {"changed": False, "ansible_facts": {"kestrove": facts}}

    def _fact(self, name):
        answer = self.must(*COMMANDS[name], accepted=(0, FOUND) if name == "findings" else (0,))
        return SHAPES[name](answer) if name in SHAPES else answer
