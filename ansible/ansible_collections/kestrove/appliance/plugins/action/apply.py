# SPDX-License-Identifier: Apache-2.0
"""Applies a script of settings, and confirms it over a new connection."""
import time

from ansible.errors import AnsibleActionFail, AnsibleConnectionFailure
from ansible_collections.kestrove.appliance.plugins.plugin_utils.appliance import ApplianceAction

DIFFERENT = 4  # the status of a check that found differences
BETWEEN_ATTEMPTS = 0.5  # seconds
AFTER_THE_DEADLINE = 30  # seconds in which an appliance that went back must be reachable again
OWN = ("changed", "diff")  # of an answer, what Ansible itself has a place for


class ActionModule(ApplianceAction):
    """kestrovectl apply."""

    SPEC = {
        "script": {"type": "path"},
        "lines": {"type": "list", "elements": "str"},
        "state": {"type": "str", "choices": ["merged", "replaced"], "default": "merged"},
        "confirm": {"type": "float"},
        "comment": {"type": "str"},
    }
    RULES = {"mutually_exclusive": [["script", "lines"]], "required_one_of": [["script", "lines"]]}

    def work(self, args):
        script = self._script(args)
        if self._task.check_mode:
            return self._predict(args, script)
        if args["confirm"] is None:
            return self._apply(args, script)
        return self._try_out(args, script)

    def _script(self, args):
        if args["lines"] is not None:
            return "".join(f"{line}\n" for line in args["lines"])
        path = self._loader.get_real_file(self._find_needle("files", args["script"]))
        with open(path, encoding="utf-8") as file:
            return file.read()

    @staticmethod
    def _words(args):
        return ["apply", "-", *(["--replace"] if args["state"] == "replaced" else [])]

    def _predict(self, args, script):
        answer = self.ask(*self._words(args), "--check", "--diff", script=script)
        return self._result(answer, accepted=(0, DIFFERENT))

    def _apply(self, args, script):
        words = self._words(args) + ["--diff"]
        if args["confirm"] is not None:
            words += ["--confirm", f"{args['confirm']:g}"]
        if args["comment"] is not None:
            words += ["--comment", args["comment"]]
        return self._result(self.ask(*words, script=script))

    @staticmethod
    def _result(answer, accepted=(0,)):
        data = answer.data if isinstance(answer.data, dict) else {}
        result = {"changed": bool(data.get("changed")), "rc": answer.status,
                  "answer": {key: value for key, value in data.items() if key not in OWN}}
        if "diff" in data:
            result["diff"] = data["diff"]
        if answer.complaints:
            result["stderr"] = answer.complaints
        if answer.status not in accepted or "changed" not in data:
            result.update(failed=True, msg=answer.message())
        return result

    # The change may take away the very way on which it came. So a connection that ends tells nothing yet: whether the
    # appliance can still be managed shows on a new one.
    def _try_out(self, args, script):
        try:
            result = self._apply(args, script)
        except AnsibleConnectionFailure as lost:
            result = {"changed": True, "warnings": [f"The connection ended during the change: {lost}"]}
        if result.get("failed") or not result["changed"]:
            return result  # what failed half-way goes back, since nobody confirms it
        deadline = time.monotonic() + 60 * args["confirm"] + AFTER_THE_DEADLINE
        answer = self._over_a_new_connection(deadline, "confirm")
        if answer.status == 0:
            result["confirmed"] = True
            return result
        return {**result, **self._not_confirmed(answer)}

    def _over_a_new_connection(self, deadline, *words):
        while True:
            try:
                self._connection.reset()
                return self.ask(*words)
            except AnsibleConnectionFailure:
                if time.monotonic() > deadline:
                    raise
                time.sleep(BETWEEN_ATTEMPTS)

    def _not_confirmed(self, answer):
        """An appliance that could not be reached in time has its former state back; anything else is a refusal."""
        pending = self.ask("confirm", "--status")
        if pending.status != 0 or not isinstance(pending.data, dict) or pending.data.get("pending"):
            raise AnsibleActionFail(f"kestrovectl confirm: {answer.message()}", result={"rc": answer.status})
        return {"failed": True, "changed": False, "confirmed": False, "rolled_back": True, "rc": answer.status,
                "msg": "The appliance could not be reached after the change, and has its former state back."}
