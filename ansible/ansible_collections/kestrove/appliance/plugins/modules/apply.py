# SPDX-License-Identifier: Apache-2.0
"""Describes kestrove.appliance.apply; the action plugin of the same name does the work, on the controller."""

DOCUMENTATION = r"""
module: apply
short_description: Apply a script of settings to an appliance
description:
  - Applies lines of the appliance's command language with C(kestrovectl apply). The whole script is checked before the
    first change; what is set already is not touched, so the second time nothing is changed, saved or logged.
  - In check mode nothing is changed and nothing is written; whether something would change, and what, is predicted.
  - With I(confirm) the change is tried. The task opens a new connection to the appliance and confirms; when that does
    not succeed in time, the appliance returns to its former state by itself and the task fails.
  - Only C(kestrovectl) runs on the appliance, which needs no Python.
options:
  script:
    description: A file on the controller, looked for in C(files) as other modules do. Either this or I(lines).
    type: path
  lines:
    description: The lines themselves.
    type: list
    elements: str
  state:
    description:
      - C(merged) adds and changes what the lines say.
      - C(replaced) also takes away what the lines do not name, as C(kestrovectl apply --replace) does.
    type: str
    choices: [merged, replaced]
    default: merged
  confirm:
    description:
      - Minutes after which the former state comes back unless this task could confirm the change; fractions are
        allowed. Without it a change stands at once.
      - No effect where nothing changes, and in check mode.
    type: float
  comment:
    description: Text that the appliance's history keeps with the change.
    type: str
attributes:
  check_mode:
    support: full
    description: Changes and writes nothing, and predicts what would change.
  diff_mode:
    support: full
    description: Gives the settings before and after.
notes:
  - Whoever is cut off must hear of it. C(ServerAliveInterval) and C(ServerAliveCountMax) among the options of ssh let a
    dead connection end in seconds.
seealso:
  - module: kestrove.appliance.facts
  - module: kestrove.appliance.state
author: the developers of libkestrove
"""

EXAMPLES = r"""
- name: Set the rate towards the wide area, and say why
  kestrove.appliance.apply:
    lines:
      - set rateLimit WAN 4096
      - set compression on
    comment: more bandwidth from the provider

- name: Make the branch office exactly what its file says, with three minutes to notice that it is cut off
  kestrove.appliance.apply:
    script: "{{ inventory_hostname }}.txt"
    state: replaced
    confirm: 3

- name: Find drift; run with --check --diff
  kestrove.appliance.apply:
    script: "{{ inventory_hostname }}.txt"
    state: replaced
  check_mode: true
  register: drift
"""

RETURN = r"""
diff:
  description: The settings before and after, as text.
  returned: always
  type: dict
  contains:
    before:
      description: What is set before the change.
      type: str
    after:
      description: What is set after it.
      type: str
answer:
  description: The rest of what C(kestrovectl apply --json) printed.
  returned: always
  type: dict
rc:
  description: Exit status of the command that decided.
  returned: always
  type: int
confirmed:
  description: Whether the change was confirmed over a new connection.
  returned: with I(confirm), when something changed
  type: bool
rolled_back:
  description: Whether the appliance has its former state back since it could not be reached in time.
  returned: when it has
  type: bool
"""
