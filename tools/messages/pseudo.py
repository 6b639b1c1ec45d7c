"""A language that nobody speaks: every text of the catalogues is seen to come from them, and is longer than English."""

import re

import catalogue

ACCENTED = str.maketrans("AEIOUaeiounscyz", "ÀËÎÕÜàëîõüñşçýž")
# What stays as it is: placeholders, doubled apostrophes, and the number at the start.
KEPT = re.compile(r"(\{\d\}|''|^KTBNV\d{4}[EWI]: )")


def of(text):
    parts = KEPT.split(text)
    start = parts[1] if len(parts) > 1 and parts[0] == "" and parts[1].startswith("KTBNV") else ""
    rest = "".join(part if KEPT.fullmatch(part) else part.translate(ACCENTED) for part in KEPT.split(text[len(start):]))
    return f"{start}[{rest}{'·' * (len(rest) // 3)}]"


def write(folder):
    """A product folder with the pseudo-language in the place of English."""
    target = folder / "lib" / "messages"
    target.mkdir(parents=True, exist_ok=True)
    for bundle in catalogue.BUNDLES:
        lines = (f"{key}={of(text)}\n" for key, text in catalogue.english(bundle).items())
        (target / f"{bundle}.properties").write_text(catalogue.escaped("".join(lines)), "ascii", newline="\n")
