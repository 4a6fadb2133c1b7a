"""What a person needs to be told in each of the first minutes' cases, and whether the words shown tell it.

The tables say what is needed, not what the programs happen to say: the cause in words that a person knows, and the one
thing to do about it. Both have to stand in the same line, or finding, as nobody puts them together from two.
"""

import dataclasses
import re


@dataclasses.dataclass(frozen=True)
class Need:
    """Regular expressions, in any case of letters, for the cause and for the cure; no cure where nothing is amiss."""

    cause: str
    cure: str = ""


NOT_RUNNING = Need(r"(simulator|X-Plane)\b.*(not running|does not run)", r"start X-Plane")
REFUSING = Need(r"(simulator|X-Plane)\b.*(refuses|does not allow|disabled)",
                r"(allow|enable|accept) incoming traffic.*network settings")
TOO_OLD = Need(r"(simulator|X-Plane)\b.*too old", r"(update|12\.1\.4 or later)")
MAIN_MENU = Need(r"main menu", r"load a flight")
NO_COMPANION = Need(r"no companion runs", r"start tarnly\b")
NOT_STAYING = Need(r"no companion runs", r"journalctl --user -u tarnlyd")
NOT_FOUND = Need(r"no companion (is )?found", r"\brunning\b.*--host HOST --port PORT")
NO_ANSWER = Need(r"no connection to the companion.*refused", r"\brunning\b.*port|port.*\brunning\b")
NO_DAEMON = Need(r"no DNS-SD daemon|DNS-SD daemon.*(not running|cannot be reached)", r"(install|start)\b.*avahi-daemon")
PORT_TAKEN = Need(r"port 28090 is (taken|in use)|28090.*in use", r"(end|stop)\b.*program|(choose|name|set) another")
NOT_A_COMPANION = Need(r"10\.77\.0\.1:280\d\d\b.*(is no companion|not as a companion|another program)",
                       r"\bport\b.*\bshow")
# The companion is well there, on the next port: what a typed address needs is that.
STATUS_OF_NEXT_PORT = Need(r"^Addresses: .*\bws://10\.77\.0\.1:28087\b")
DOCTOR_OF_NEXT_PORT = Need(r"^ok +reachable: 10\.77\.0\.1:28087 answers")
NO_PASSWORD = Need(r"(wants|needs|asks for) a password", r"--password-file FILE")
WRONG_PASSWORD = Need(r"password.*(wrong|not (the )?right|refused|not accepted)|(wrong|incorrect) password", r"\bsettings\b")
UNWRITABLE = Need(r"/home/pilot/\S+.*(read-only|cannot be (made|written|locked))",
                  r"writ(e to|able)\b.*--data-dir|--data-dir.*writ(e to|able)\b")
VALUE = Need(r"^sim/flightmodel/position/latitude=-?\d+\.\d+$")

# Of a case without trouble: what shows that.
STATUS_OF_FLIGHT = Need(r"^Simulator: flight loaded")
DOCTOR_OF_FLIGHT = Need(r"^ok +values: ")


@dataclasses.dataclass(frozen=True)
class Expected:
    """Of a case: who pairs, and what each source has to tell; a source that cannot know is None.

    `others` are findings of the doctor that come with this trouble, beside its own.
    """

    pairs_by_discovery: bool
    pairs_by_address: bool
    by_discovery: Need | None
    by_address: Need | None
    status: Need | None
    doctor: Need | None
    journal: Need | None = None
    others: str = ""

    def pairs(self, way):
        return self.pairs_by_discovery if way == "discovery" else self.pairs_by_address

    def attempt(self, way):
        return self.by_discovery if way == "discovery" else self.by_address


def everywhere(need):
    """A trouble with the simulator: a client pairs all the same, and everybody tells."""
    return Expected(True, True, need, need, need, need)


FLIGHT = Expected(True, True, VALUE, VALUE, STATUS_OF_FLIGHT, DOCTOR_OF_FLIGHT)

EXPECTED = {
    "no simulator": everywhere(NOT_RUNNING),
    "traffic disabled": everywhere(REFUSING),
    "too old": everywhere(TOO_OLD),
    "main menu": everywhere(MAIN_MENU),
    "flight": FLIGHT,
    "flight, no password given": dataclasses.replace(
        FLIGHT, pairs_by_discovery=False, pairs_by_address=False, by_discovery=NO_PASSWORD, by_address=NO_PASSWORD),
    "flight, wrong password given": dataclasses.replace(
        FLIGHT, pairs_by_discovery=False, pairs_by_address=False, by_discovery=WRONG_PASSWORD,
        by_address=WRONG_PASSWORD),
    "usual port taken": Expected(True, False, VALUE, NOT_A_COMPANION, STATUS_OF_NEXT_PORT, DOCTOR_OF_NEXT_PORT),
    "chosen port taken": Expected(False, False, NOT_FOUND, NOT_A_COMPANION, NOT_STAYING, NOT_STAYING, PORT_TAKEN),
    "no DNS-SD daemon": Expected(False, True, NOT_FOUND, VALUE, NO_DAEMON, NO_DAEMON),
    "read-only home": Expected(True, True, VALUE, VALUE, UNWRITABLE, UNWRITABLE, UNWRITABLE),
    "companion not started": Expected(False, False, NOT_FOUND, NO_ANSWER, NO_COMPANION, NO_COMPANION),
}


@dataclasses.dataclass(frozen=True)
class Judged:
    cause: bool
    cure: bool
    shown: str


def entries(text):
    """Lines, with those that are indented, as the doctor's cures are, joined to the one before them."""
    joined = []
    for line in text.splitlines():
        if joined and line.startswith(" "):
            joined[-1] += " " + line.strip()
        elif line.strip():
            joined.append(line.strip())
    return joined


def found(pattern, text):
    return re.search(pattern, text, re.IGNORECASE) is not None


def judge(need, text):
    """Whether the words name the cause, and the cure beside it; shown is what does, or all where nothing does."""
    named = [entry for entry in entries(text) if found(need.cause, entry)]
    cured = [entry for entry in named if found(need.cure, entry)]
    shown = (cured or named)[:1] or entries(text)
    return Judged(bool(named), bool(cured), " ⏎ ".join(shown) or "nothing")


def false_alarms(expected, doctor):
    """What the doctor complains of beside the trouble that there is."""
    complaints = [entry for entry in entries(doctor) if entry.startswith("!!")]
    known = [pattern for pattern in (expected.doctor and expected.doctor.cause, expected.others) if pattern]
    return [entry for entry in complaints if not any(found(pattern, entry) for pattern in known)]


@dataclasses.dataclass
class Row:
    case: str
    password: bool
    way: str
    paired: bool
    shown: list
    without_cause: list
    without_cure: list
    wrong: list

    def cells(self):
        def answer(missing):
            return "no: " + ", ".join(missing) if missing else "yes"
        shown = "<br>".join(f"{source}: {words}" for source, words in self.shown).replace("|", "\\|")
        return [self.case, "yes" if self.password else "no", self.way, "yes" if self.paired else "no", shown,
                answer(self.without_cause), answer(self.without_cure)]


def row_of(case, password, way, paired, texts):
    """A row of the table. `texts` are the words of each source: status, doctor, journal, attempt."""
    expected = EXPECTED[case]
    needs = {"status": expected.status, "doctor": expected.doctor, "journal": expected.journal,
             "attempt": expected.attempt(way)}
    row = Row(case, password, way, paired, [], [], [], [])
    for source, need in needs.items():
        if need is None:
            continue
        judged = judge(need, texts[source])
        row.shown.append((source, judged.shown))
        if not judged.cause:
            row.without_cause.append(source)
        if not judged.cure:
            row.without_cure.append(source)
    if paired != expected.pairs(way):
        row.wrong.append("pairs, and should not" if paired else "does not pair: " + texts["attempt"].strip())
    row.wrong += [f"the doctor complains of what is well: {entry}" for entry in
                  false_alarms(expected, texts["doctor"])]
    row.wrong += [f"{source} does not name the cause" for source in row.without_cause]
    row.wrong += [f"{source} does not name the cure" for source in row.without_cure]
    return row


HEAD = ["State", "Password", "Found by", "Paired", "Words shown", "Names the cause", "Names the cure"]


def table(rows):
    lines = [HEAD, ["---"] * len(HEAD), *(row.cells() for row in rows)]
    return "".join("| " + " | ".join(cells) + " |\n" for cells in lines)
