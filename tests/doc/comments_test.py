#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The headers' comments, held to what a caller has to know: comments_test.py SOURCE BUILD CASE.

Of every exported function its comment, the remark that it stands under or the head of its header says what it does, its
results, the codes that it leaves, the units of its arguments, and of five effects whether it has them. What it says is
held to what the compiled code reaches.
"""
import dataclasses
import functools
import pathlib
import re
import subprocess
import sys
import tempfile

SOURCE, BUILD, CASE = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "scripts"))
import header_comments  # noqa: E402


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(complaints))


# What each effect is called.
EFFECTS = {
    "lock": r"\b(?:un)?lock(?:ed|s)?\b",
    "save": r"\b(?:un)?sav(?:e|es|ed|ing)\b",
    "event": r"\bevents?\b",
    "signal": r"\bsignal(?:s|led)?\b",
    "kernel": r"\bkernel\b|\bprograms?\b",
}
DENIAL = re.compile(r"\b(?:no|not|none|never|nothing|nobody|neither|nor|unsaved)\b|\b(?:left|leaves?) .*alone\b",
                    re.IGNORECASE)

# What has to be said of a parameter: kind of its type, its name, and what tells its unit, its range or its numbering.
ADDRESS = r"address|addr|mask|netmask|broadcast|destination|gateway|oldDestination|oldNetmask"
ORDER = r"network (?:byte )?order"
NUMBERED = r"\bfrom 0\b|\b0 (?:is|to|means)\b|\(0 |\bposition\b|\bindex\b"
UNITS = (
    (r"uint32_t", ADDRESS, ORDER),
    (r"(?:const )?void\*", r"\w*16|oldDestination", r"\b16[ -]bytes?\b"),
    (r"(?:const )?void\*", r"out|record|area|block", r"\b\d+ bytes\b"),
    (r"char\*", r"\w+", r"\bbytes\b|\bcharacters\b|\bin place\b|\brewritten\b|\bfield\b"),
    (r"int|uint32_t", r"size|len|length|count", r"\bbytes?\b|\blength\b|\bcount\b|\blen\b"),
    (r"\w+", r"\w*[pP]refixLength", r"\bprefix length"),
    (r"\w+", r"timeout\w*", r"\bseconds\b|\btimeoutSeconds\b"),
    (r"const int32_t|time_t|const time_t\*", r"when", r"\bseconds\b|\btime\b"),
    (r"int|uint32_t", r"index|position|from|to", NUMBERED),
    (r"uint32_t", r"source", r"\bsource\b"),
    (r"const char\*", r"user", r"\buser\b"),
    (r"FILE\*", r"\w+", r"\bstream\b"),
    (r"int|uint32_t", r"op|which|kind|iface|number|item|id|event|layout|n|state|component|mode|task|component|changes",
     r"\b\d\b|SHM_"),
)


def sentences(text):
    return [part for part in re.split(r"(?<=[.;:])\s+|\n\n|[()]", text) if part]


def affirms(text, effect):
    return any(re.search(EFFECTS[effect], part, re.IGNORECASE) and not DENIAL.search(part) for part in sentences(text))


def mentions(text, effect):
    return re.search(EFFECTS[effect], text, re.IGNORECASE) is not None


@dataclasses.dataclass
class Said:
    """own: the comment, those of the functions that it refers to, and the remark above it; head: of the header."""
    own: str
    head: str

    @property
    def all(self):
        return f"{self.own}\n\n{self.head}"


def said_of(function, interface, seen=()):
    """A comment that says "as addUserRoute" or "the same as insertRule" says what that one's says."""
    own = [function.comment]
    for name in re.findall(r"\b[Aa]s (?:in |for |of )?(\w+)|, (\w+) and (\w+)\.", function.comment):
        for part in name:
            other = interface.functions.get(part)
            if other and other.name not in (function.name, *seen):
                own.append(said_of(other, interface, (*seen, function.name)).own)
    return Said("\n\n".join([*own, function.section]), interface.families[function.family].head)


VALUE = re.compile(r"(?:(?:^|[.;:,(]\s|\b(?:gives?|result|results are|or|always|becomes) )(?:0|1|-1)\b)|\bgives?\b|"
                   r"\b(?:number|count|position|index|length|status|state|name|value|text|counters?|results?) "
                   r"(?:of|or|as|is|are|given)\b|"
                   r"\bnull\b|\bwhose (?:\w+ )?result is given\b", re.IGNORECASE | re.MULTILINE)


def lacks_result(function, said):
    if function.result == "void":
        return []
    told = VALUE.search(function.comment) or VALUE.search(said.own) or re.search(r"\b(?:gives?|are|is) 0\b", said.head)
    failure = re.search(r"-1\b|\bnegative result\b|\b[Aa]lways 0\b|\b[Nn]ever fails\b|\bwhatever\b|\bnull\b|\belse 0\b|"
                        r"\bconstant\b", said.all)
    return [] if told and failure else ["results"]


def lacks_codes(function, said):
    return [] if re.search(r"\bSHM_E\w+|\bcodes?\b|\bshm_errno\b", said.all) else ["codes"]


def lacks_units(function, said):
    lacking = []
    for parameter in function.parameters:
        for kind, name, words in UNITS:
            if re.fullmatch(kind, parameter.type) and re.fullmatch(name, parameter.name):
                lacking += [] if re.search(words, said.all) else [f"the unit of {parameter.name}"]
                break
    return lacking


def lacks_effects(said):
    return [f"whether it has to do with: {effect}" for effect in EFFECTS if not mentions(said.all, effect)]


def lacks(function, interface):
    said = said_of(function, interface)
    what = [] if re.search(r"\w{2,}", function.comment) else ["what it does"]
    return what + lacks_result(function, said) + lacks_codes(function, said) + lacks_units(function, said) + \
        lacks_effects(said)


def exported(interface):
    return [function for function in interface.functions.values() if function.exported]


def complaints_about(interface):
    return [f"{function.family}.h: the comment of {function.name} lacks {what}"
            for function in exported(interface) for what in lacks(function, interface)]


@functools.cache
def headers():
    interface = header_comments.read(SOURCE)
    declared = {function.name for function in exported(interface)} | {*interface.variables}
    assert len(exported(interface)) > 260 and declared == {*interface.exports}, declared ^ {*interface.exports}
    return interface


def every_function_says_what_a_caller_has_to_know():
    none(complaints_about(headers()))


# The calls of the compiled library, by which a comment can be told to be wrong.
REACHED = {
    "lock": lambda name: "kestrove::StoreLock::" in name or name == "shm_lock",
    "save": lambda name: name in ("save_shared_memory", "write_shared_memory"),
    "event": lambda name: name == "logEvent",
    "signal": lambda name: name == "notifyKestrove",
    "kernel": lambda name: name in ("ioctl", "sendto", "system", "fork", "vfork", "execvp", "posix_spawn"),
}


def calls():
    """Function to the functions that it names, by the code's relocations."""
    graph, function = {}, None
    objects = sorted((BUILD / "CMakeFiles/kestrove_objects.dir").rglob("*.o"))
    text = subprocess.run(["objdump", "-drC", "--no-show-raw-insn", *objects], stdout=subprocess.PIPE, check=True,
                          encoding="utf-8").stdout
    for line in text.splitlines():
        begun = re.match(r"[0-9a-f]+ <(.*)>:$", line)
        called = re.search(r"R_X86_64_\w+\s+([^.].*?)(?:[-+]0x[0-9a-f]+)?$|(?:call|jmp)\s+[0-9a-f]+ <([^+]*)>$", line)
        if begun:
            function = begun.group(1)
        elif called and function:
            graph.setdefault(function, set()).add(called.group(1) or called.group(2))
    return graph


# Effects that a call could have, but not with what it is given here: items without a save or a signal, and an event of
# the operating modes that signals nobody.
NOT_SO = {("restoreFactoryDefaults", "signal"), ("restoreZELFactoryDefaults", "signal"), ("setSystemTime", "save"),
          ("setSystemTime", "signal"), ("changeDnsServerIp", "signal")}
# Calls that have no more to do with an effect: the restart of one product's engine, which its own comments tell of, and
# an item that is only stored.
CUT = {("notifyKestrove", "restart_kestrove"), ("restart_kestrove", "setKestroveConfigItem")}


def reached_from(name, graph):
    seen, ahead = set(), [name]
    while ahead:
        caller = ahead.pop()
        fresh = {called for called in graph.get(caller, set()) if (caller, called) not in CUT} - seen
        seen |= fresh
        ahead += fresh
    return seen


def told_otherwise(function, interface, reached):
    """The effects that the code has, where all that is said of them is that there are none."""
    said = said_of(function, interface)
    for effect, is_one in REACHED.items():
        if (function.name, effect) in NOT_SO or not any(map(is_one, reached)):
            continue
        text = said.own if mentions(said.own, effect) else said.head
        if not affirms(text, effect):
            yield f"{function.family}.h: {function.name} has to do with: {effect}, its comment says otherwise"


def no_function_does_what_its_comment_denies():
    graph, interface = calls(), headers()
    reach = {function.name: reached_from(function.name, graph) for function in exported(interface)}
    assert any(map(REACHED["lock"], reach["addUserRoute"])) and len(graph) > 500, len(graph)
    none([complaint for function in exported(interface)
          for complaint in told_otherwise(function, interface, reach[function.name])])


def definitions():
    """The text of each function that stands at the beginning of a line of the library's sources."""
    whole = re.compile(r"^[\w:*& ]+?(\w+)\([^;{}]*\) \{(.*?)(?:^|(?<=; ))\}$", re.MULTILINE | re.DOTALL)
    for source in sorted((SOURCE / "src").rglob("*.cpp")):
        for found in whole.finditer(source.read_text(encoding="utf-8")):
            yield found.group(1), found.group(2)


def codes_named(text, codes):
    """By their names, and as numbers: "code 3", "with code 2 or 10", and then "9 when", "12 for"."""
    numbers = {number for run in re.findall(r"\b(?:codes?|with|or) ((?:\d+(?:, | or | and )?)+)", text)
               for number in re.findall(r"\d+", run)} | {*re.findall(r"\b(\d+) (?:when|for)\b", text)}
    return {code.name for code in codes if code.value in numbers or re.search(rf"\b{code.name}\b", text)}


def every_code_that_a_function_sets_itself_is_named():
    interface, failing, complaints = headers(), 0, []
    codes = [code for code in interface.constants.values() if code.family == "errors"]
    for name, body in definitions():
        set_here = {*re.findall(r"\bfail\((SHM_E\w+)\)|\bshm_errno = (SHM_E\w+)", body)}
        if name not in interface.functions or not set_here:
            continue
        failing += 1
        function = interface.functions[name]
        named = codes_named(said_of(function, interface).all, codes)
        complaints.extend(f"{function.family}.h: {name} can set {code}, which its comment does not name"
                          for pair in sorted(set_here) for code in pair if code and code not in named)
    assert failing > 60, failing
    none(complaints)


# A header of one function, a sentence a line, and what is lacking when that line is gone.
PLANTED = """\
/* SPDX-License-Identifier: Apache-2.0 */
/* A family.

   Every function takes the lock.
   None logs an event, signals the engine or touches the kernel. */

/* Puts an address into the table.
   Address in network byte order.
   0, or -1:
   SHM_EFULL when there is no room.
   Saves the store. */
int putAddress(uint32_t address);
"""
OMISSIONS = {"Every function takes the lock.": "lock", "None logs an event, signals": "event",
             "Puts an address into the table.\n   Address in network byte order.\n   0, or -1:\n   SHM_EFULL when there "
             "is no room.\n   Saves the store.": "what it does", "Address in network byte order.": "the unit of address",
             "0, or -1:": "results", "SHM_EFULL when there is no room.": "codes", "Saves the store.": "save"}


def planted(header):
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "include/kestrove").mkdir(parents=True)
        (root / "cmake").mkdir()
        (root / "include/kestrove/family.h").write_text(header, encoding="utf-8")
        (root / "cmake/kestrove.map").write_text("X {\n  global:\n    putAddress;\n};\n", encoding="utf-8")
        return complaints_about(header_comments.read(root))


def every_planted_omission_is_found():
    assert planted(PLANTED) == [], planted(PLANTED)
    for line, lacking in OMISSIONS.items():
        assert line in PLANTED, line
        found = planted(PLANTED.replace(line, ""))
        assert any(complaint.endswith(lacking) for complaint in found), (line, found)
    none([f"nothing is said to be lacking where {function.name} has no comment" for function in exported(headers())
          if not lacks(dataclasses.replace(function, comment="", section=""), headers())])


def a_planted_untruth_is_found():
    interface, function = headers(), headers().functions["addUserRoute"]
    graph = calls()
    reached = reached_from("addUserRoute", graph)
    assert [*told_otherwise(function, interface, reached)] == []
    lying = dataclasses.replace(function, comment=function.comment.replace("Saves.", "Saves nothing."))
    assert lying.comment != function.comment
    found = [*told_otherwise(lying, interface, reached)]
    assert len(found) == 1 and ": save," in found[0], found


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (every_function_says_what_a_caller_has_to_know, every_code_that_a_function_sets_itself_is_named,
                      no_function_does_what_its_comment_denies,
                      every_planted_omission_is_found, a_planted_untruth_is_found)}
if __name__ == "__main__":
    CASES[CASE]()
