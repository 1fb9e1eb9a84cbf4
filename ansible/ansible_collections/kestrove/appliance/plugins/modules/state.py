# SPDX-License-Identifier: Apache-2.0
"""Describes kestrove.appliance.state; the action plugin of the same name does the work, on the controller."""

DOCUMENTATION = r"""
module: state
short_description: Save, fetch and restore the whole state of an appliance
description:
  - An appliance keeps one saved state, an archive of its configuration file, its agents' files and its password file,
    with a script of its settings beside it.
  - Each command first compares; what is equal is neither saved nor copied nor restored, and not reported as changed.
options:
  command:
    description:
      - C(save) saves the state on the appliance, in the place of the one saved before.
      - C(fetch) copies what is saved to the controller. The archive holds password hashes; the copies are readable by
        their owner only.
      - C(restore) brings the saved state back, builds the store anew from it and restarts the engine.
    type: str
    choices: [save, fetch, restore]
    required: true
  dest:
    description: For C(fetch), the folder on the controller; use one for each appliance.
    type: path
  src:
    description:
      - For C(restore), an archive on the controller that takes the place of the appliance's own. The user who logs in
        must be allowed to write C(/usr/local/apache2/htdocs).
    type: path
  force:
    description: Save or restore also where nothing differs.
    type: bool
    default: false
attributes:
  check_mode:
    support: full
    description: Saves, copies and restores nothing, and predicts whether it would.
  diff_mode:
    support: full
    description: Gives the files of the archive before and after, without the password file.
seealso:
  - module: kestrove.appliance.apply
author: the developers of libkestrove
"""

EXAMPLES = r"""
- name: Save
  kestrove.appliance.state:
    command: save

- name: Keep a copy of each appliance's state here
  kestrove.appliance.state:
    command: fetch
    dest: "saved/{{ inventory_hostname }}"

- name: Bring back what was saved on the appliance
  kestrove.appliance.state:
    command: restore
"""

RETURN = r"""
files:
  description: The files of the saved state, on the appliance for C(save), here for C(fetch).
  returned: for C(save) and C(fetch)
  type: list
  elements: str
"""
