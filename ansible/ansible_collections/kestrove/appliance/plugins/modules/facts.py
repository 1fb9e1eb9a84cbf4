# SPDX-License-Identifier: Apache-2.0
"""Describes kestrove.appliance.facts; the action plugin of the same name does the work, on the controller."""

DOCUMENTATION = r"""
module: facts
short_description: Read what an appliance is set to and how it is
description:
  - Reads settings and state with C(kestrovectl) and sets the fact C(kestrove). Changes nothing.
  - Takes the place of C(gather_facts), which needs Python on the appliance.
options:
  subset:
    description:
      - What to read.
      - C(findings) is empty for a store that is sound; C(settings) is a dictionary of every item; the others are what
        C(kestrovectl --json) prints for the command.
    type: list
    elements: str
    choices: [status, settings, findings, interfaces, mode, addresses, routes, routes6, rules, users, engine, history]
    default: [status, settings, findings, interfaces, mode, addresses, routes, routes6, rules, users, engine]
attributes:
  check_mode:
    support: full
    description: Changes nothing anyway.
  diff_mode:
    support: none
    description: Changes nothing.
seealso:
  - module: kestrove.appliance.apply
author: the developers of libkestrove
"""

EXAMPLES = r"""
- name: Read everything
  kestrove.appliance.facts:

- name: Go on only with an appliance that works and is sound
  ansible.builtin.assert:
    that:
      - kestrove.status.stateName == "Operational"
      - not kestrove.findings
"""

RETURN = r"""
ansible_facts:
  description: The facts.
  returned: always
  type: dict
  contains:
    kestrove:
      description: One entry for each word of I(subset).
      type: dict
      sample: {"status": {"stateName": "Operational"}, "settings": {"wanLinkRate": 2048000}, "findings": []}
"""
