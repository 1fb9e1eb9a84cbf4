# SPDX-License-Identifier: Apache-2.0
"""Saves, fetches and restores the whole state of an appliance."""
import os
import shutil
import tempfile
import zipfile

from ansible.errors import AnsibleActionFail
from ansible_collections.kestrove.appliance.plugins.plugin_utils.appliance import ApplianceAction

FOLDER = "/usr/local/apache2/htdocs/"  # in which the appliance keeps its one saved state
PASSWORDS = "passwd.configSaved"  # the one member whose text is not shown
SNMP = {"snmpd.conf.configSaved": "/var/config/snmpd.conf", "varsnmpd.conf.configSaved": "/var/net-snmp/snmpd.conf"}


def members(path):
    """The files in an archive, by name."""
    try:
        with zipfile.ZipFile(path) as archive:
            return {name: archive.read(name) for name in archive.namelist()}
    except (OSError, zipfile.BadZipFile) as error:
        raise AnsibleActionFail(f"{path} is no saved state: {error}") from error


def read(path):
    """A file's bytes, None where there is no file."""
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def shown(files):
    """The files as text for a diff, passwords left out."""
    return "".join(f"==> {name}\n{files[name].decode('utf-8', 'replace')}"
                   for name in sorted(files) if name != PASSWORDS)


class ActionModule(ApplianceAction):
    """kestrovectl state."""

    SPEC = {
        "command": {"type": "str", "choices": ["save", "fetch", "restore"], "required": True},
        "dest": {"type": "path"},
        "src": {"type": "path"},
        "force": {"type": "bool", "default": False},
    }
    RULES = {"required_if": [["command", "fetch", ["dest"]]]}

    def work(self, args):
        self._scratch = tempfile.mkdtemp(prefix="kestrove-")
        try:
            return getattr(self, f"_{args['command']}")(args)
        finally:
            shutil.rmtree(self._scratch)

    def _save(self, args):
        saved = self._archive()
        before = members(self._bring(saved)) if saved else {}
        present = self._present()
        changed = args["force"] or before != present
        if changed and not self._task.check_mode:
            self.must("state", "save")
        return {"changed": changed, "files": self._files(), "diff": self._diff(before, present)}

    def _fetch(self, args):
        files = self._files()
        if not files:
            raise AnsibleActionFail("nothing is saved on the appliance")
        copies = {os.path.join(args["dest"], os.path.basename(file)): file for file in files}
        changed = [copy for copy, file in copies.items() if self._fetched(file, copy)]
        return {"changed": bool(changed), "files": [*copies]}

    def _fetched(self, file, copy):
        """True when the copy here had to be made or would have to be."""
        new = read(self._bring(file))
        if new == read(copy):
            return False
        if not self._task.check_mode:
            os.makedirs(os.path.dirname(copy), exist_ok=True)
            with open(os.open(copy, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "wb") as out:
                out.write(new)
        return True

    def _restore(self, args):
        saved = self._archive()
        source = self._find_needle("files", args["src"]) if args["src"] else saved and self._bring(saved)
        if not source:
            raise AnsibleActionFail("nothing is saved on the appliance, and no src is given")
        wanted, present = members(source), self._present()
        changed = args["force"] or wanted != {name: present.get(name) for name in wanted}
        if changed and not self._task.check_mode:
            if args["src"]:
                # In the place of the one that is there: the appliance keeps one saved state.
                self._connection.put_file(source, saved or FOLDER + os.path.basename(source))
            self.must("state", "load", "--now")
        return {"changed": changed, "diff": self._diff(present, wanted)}

    def _files(self):
        return [row["file"] for row in self.must("state", "list")]

    def _archive(self):
        return next((row["file"] for row in self.must("state", "list") if row["kind"] == "archive"), None)

    def _bring(self, file):
        copy = os.path.join(self._scratch, file.replace("/", "_"))
        self._connection.fetch_file(file, copy)
        return copy

    def _present(self):
        """What a save would put into the archive now."""
        configuration = self.must("status")["configurationFile"]
        files = {f"{os.path.basename(configuration)}.configSaved": configuration, PASSWORDS: "/etc/passwd"}
        files.update({name: file for name, file in SNMP.items() if self._remote_file_exists(file)})
        return {name: read(self._bring(file)) for name, file in files.items()}

    @staticmethod
    def _diff(before, after):
        return {"before": shown(before), "after": shown(after)}
