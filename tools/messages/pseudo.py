"""A language that nobody speaks: every text of the catalogues is seen to come from them, and is longer than English."""

import re

import catalogue

ACCENTED = str.maketrans("AEIOUaeiounscyz", "ÀËÎÕÜàëîõüñşçýž")
# What stays as it is inside a text: placeholders and doubled apostrophes.
KEPT = re.compile(r"(\{\d\}|'')")
# The number of a message, and an insert at the end, which may bring several lines.
PARTS = re.compile(r"(KTBNV\d{4}[EWI]: )?(.*?)((?: \{\d\})?)")


def of(text):
    start, body, end = PARTS.fullmatch(text).groups("")
    accented = "".join(part if KEPT.fullmatch(part) else part.translate(ACCENTED) for part in KEPT.split(body))
    return f"{start}[{'·' * (len(body) // 3)}{accented}]{end}"


def write(folder):
    """A product folder with the pseudo-language in the place of English."""
    target = folder / "lib" / "messages"
    target.mkdir(parents=True, exist_ok=True)
    for bundle in catalogue.BUNDLES:
        lines = (f"{key}={of(text)}\n" for key, text in catalogue.english(bundle).items())
        (target / f"{bundle}.properties").write_text(catalogue.escaped("".join(lines)), "ascii", newline="\n")
