"""docs/troubleshooting.md tells of what people can meet, in the very words, and of nothing else."""

import re
import shutil
import tempfile
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent.parent
SCRIPTS = ["setup", "package", "check-package", "demo"]

# Errors of a program with itself, of the stand-in on the simulator's wire, or whose words are shown without the name.
OF_NOBODY = {"alreadyStarted", "cancelled", "noData", "unusable", "notImplemented", "invalid_dataref_id",
             "dataref_is_readonly", "invalid_command_id", "invalid_value", "invalid_index"}
# What tells people of trouble, with the words in its arguments.
TELLING = re.compile(r"\b(ClientError|UsageError|StatusQueryError|Finding::amiss|notice|Notice|warn|warn_|remark|tell_|"
                     r"complain)[({]")
TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|\'(?:[^\'\\\n]|\\.)\'|'
                   r'(?<![0-9a-zA-Z])R"(\w*)\((.*?)\)\1"|"((?:[^"\\\n]|\\.)*)"',
                   re.DOTALL)


def sources(root):
    return sorted(path for path in (root / "Sources").rglob("*") if path.suffix in (".cpp", ".hpp"))


def literals_in(code):
    """The texts of C++ code, those that follow each other as one, as they are shown."""
    texts, end = [], None
    for token in TOKEN.finditer(code):
        raw, plain = token.group(2), token.group(3)
        between = "" if end is None else code[end:token.start()].strip()
        if raw is None and plain is None:
            end = token.end() if end is not None and not between else end
            continue
        text = raw if raw is not None else re.sub(r"\\(.)", lambda c: "\n" if c[1] == "n" else c[1], plain)
        if end is not None and between in ("", "u"):
            texts[-1] += text
        else:
            texts.append(text)
        end = token.end()
    return [" ".join(text.split()) for text in texts]


def quoted_in(page):
    """What the first columns quote, in pieces between what differs."""
    pieces = []
    for line in page.splitlines():
        if not line.startswith("| "):
            continue
        for quoted in re.findall(r"`([^`]+)`", line.split(" | ")[0]):
            pieces += [piece.strip() for piece in quoted.split("…") if piece.strip()]
    return pieces


def all_texts(root):
    texts = [text for path in sources(root) for text in literals_in(path.read_text())]
    texts += literals_in((root / "web/page/texts.ts").read_text())
    return texts + [" ".join((root / "scripts" / name).read_text().split()) for name in SCRIPTS]


def arguments_at(code, start):
    """From a parenthesis or brace to the one that closes it."""
    depth = 0
    for token in re.compile(TOKEN.pattern + r"|[(){}]", re.DOTALL).finditer(code, start):
        if token.group() in ("(", "{"):
            depth += 1
        elif token.group() in (")", "}"):
            depth -= 1
            if depth == 0:
                return code[start:token.end()]
    return code[start:]


def told_in(code):
    """Of each place that tells people of something its texts."""
    for call in TELLING.finditer(code):
        texts = literals_in(arguments_at(code, call.end() - 1))
        texts = [text for text in texts if len(text.split()) >= 3]
        if texts:
            yield texts


def stages(root):
    code = (root / "Sources/TarnlyCore/Flight/SimulatorStage.cpp").read_text()
    texts = [text.split(" for %1")[0] for text in literals_in(code) if text.startswith("Simulator: ")]
    return list(dict.fromkeys(texts))


def steps(root):
    doctor = "".join(path.read_text() for path in sorted((root / "Sources/TarnlyClient/Doctor").glob("*.cpp")))
    found = re.findall(r'(?:auto step = |Finding::\w+\()"([a-z ]+)"', doctor)
    return set(found) - {"troubleshooting"}


def cases(root):
    code = "".join(path.read_text() for path in sources(root) if path.name != "Error.hpp")
    names = re.findall(r"string_view, \d+> names\{(.*?)\}", code, re.DOTALL)
    return {name for text in names for name in re.findall(r'"(\w+)"', text)} - OF_NOBODY


def complaints(root, page):
    texts, pieces = all_texts(root), quoted_in(page)
    for piece in pieces:
        if not any(piece in text for text in texts) and piece not in steps(root):
            yield f"nobody says: {piece}"
    for wanted in [*stages(root), *cases(root), *steps(root)]:
        if wanted not in pieces:
            yield f"is missing: {wanted}"
    long_pieces = [piece for piece in pieces if len(piece) >= 8]
    for path in sources(root):
        for told in told_in(path.read_text()):
            if not any(piece in text for piece in long_pieces for text in told):
                yield f"is missing: {' … '.join(told)} ({path.relative_to(root)})"


def page():
    return (REPOSITORY / "docs/troubleshooting.md").read_text()


def test_the_page_has_what_people_meet_and_nothing_else():
    assert len(quoted_in(page())) > 100 and len(stages(REPOSITORY)) == 6 and len(cases(REPOSITORY)) > 15
    assert len(steps(REPOSITORY)) == 12
    assert list(complaints(REPOSITORY, page())) == []


def test_words_that_nobody_says_are_noticed():
    planted = page() + "| `the companion has flown away` | | |\n"
    assert list(complaints(REPOSITORY, planted)) == ["nobody says: the companion has flown away"]


def test_words_that_are_not_on_the_page_are_noticed():
    shorter = page()
    for words in ("`Simulator: at the main menu`", "`flightNotFound`", "`pairing`", "`1 step needs your attention`"):
        assert words in shorter
        shorter = shorter.replace(words, "that")
    assert list(complaints(REPOSITORY, shorter)) == [
        "is missing: Simulator: at the main menu", "is missing: flightNotFound", "is missing: pairing",
        "is missing: 1 step needs your attention (Sources/TarnlyClient/Commands/DoctorCommand.cpp)"]


def test_a_new_text_is_noticed():
    code = 'throw ClientError("the moon " + near() + " is"\n" too near, says " /* why */ "nobody");'
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as path:
        for folder in ("Sources", "scripts", "web/page"):
            shutil.copytree(REPOSITORY / folder, Path(path) / folder)
        (Path(path) / "Sources/Planted.cpp").write_text(code)
        assert list(complaints(Path(path), page())) == ["is missing: is too near, says nobody (Sources/Planted.cpp)"]
