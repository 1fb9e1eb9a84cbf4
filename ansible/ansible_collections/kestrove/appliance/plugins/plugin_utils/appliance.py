# SPDX-License-Identifier: Apache-2.0
"""What the actions share: kestrovectl on an appliance, which answers in JSON and needs no Python there."""
import json
import shlex

from ansible.errors import AnsibleActionFail
from ansible.plugins.action import ActionBase

# Exit statuses of kestrovectl that its own message does not explain to somebody who did not type the command.
MEANINGS = {
    3: "the appliance has no store; has it been started?",
    9: "only a part of it was applied",
    10: "it was not confirmed in time, and the former state is back",
    126: "kestrovectl cannot be run by this user",
    127: "the appliance has no kestrovectl",
}


class Answer:
    """What one command gave: its exit status, its JSON (None where there is none) and its complaints."""

    def __init__(self, done):
        self.status = done["rc"]
        self.complaints = done["stderr"].strip()
        try:
            self.data = json.loads(done["stdout"])
        except ValueError:
            self.data = None

    def message(self):
        """The reason of a failure, in words; each line of a script that was not taken is named."""
        data = self.data if isinstance(self.data, dict) else {}
        error = data.get("error")
        said = error.get("message") if isinstance(error, dict) else error
        lines = [f"line {one['line']}: {one['message']}" for one in data.get("complaints", [])]
        texts = [said or self.complaints, *lines, MEANINGS.get(self.status)]
        return "; ".join(str(text) for text in texts if text) or f"kestrovectl ended with {self.status}"


class ApplianceAction(ActionBase):
    """An action that runs kestrovectl on the appliance: its arguments, and the work that gives its result."""

    SPEC = {}
    RULES = {}
    _requires_connection = True
    _supports_check_mode = True
    _supports_async = False

    def run(self, tmp=None, task_vars=None):
        result = super().run(tmp, task_vars)
        args = self.validate_argument_spec(argument_spec=self.SPEC, **self.RULES)[1]
        try:
            result.update(self.work(args))
        except AnsibleActionFail as refused:
            result.update(refused.result)
            result.pop("exception", None)  # the message says all; a trace of this file would not
        return result

    def work(self, args):
        """What the action does; gives what the task's result holds."""
        raise NotImplementedError

    def ask(self, *words, script=None):
        """Runs a command, with a script as its standard input, and gives its answer."""
        command = shlex.join(["kestrovectl", *words, "--json"])
        data = None if script is None else script.encode("utf-8")
        return Answer(self._low_level_execute_command(command, in_data=data))

    def must(self, *words, accepted=(0,)):
        """The JSON of a command that may end with the accepted statuses only."""
        answer = self.ask(*words)
        if answer.status not in accepted or answer.data is None:
            raise AnsibleActionFail(f"kestrovectl {shlex.join(words)}: {answer.message()}",
                                    result={"rc": answer.status})
        return answer.data
