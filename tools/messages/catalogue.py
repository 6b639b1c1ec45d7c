"""The message catalogues: where they lie, what stands in them, how they are written."""

import pathlib
import re

TOP = pathlib.Path(__file__).resolve().parents[2]
FOLDER = TOP / "resources" / "messages"
SOURCES = FOLDER / "src"
BUNDLES = ("KTBNVMessages", "KTBNVElements")
# Behind the name of the file; English has none.
LANGUAGES = ("cs", "de", "es", "fr", "hu", "it", "ja", "ko", "pl", "pt_BR", "ru", "zh_CN", "zh_TW")

ENTRY = re.compile(r"([^#=][^=]*)=(.*)")


def entries(text):
    """The keys and texts of a file, in its order."""
    found = (ENTRY.fullmatch(line) for line in text.split("\n"))
    return {match[1]: match[2] for match in found if match}


def english(bundle):
    return entries((FOLDER / f"{bundle}.properties").read_text("ascii"))


def translated(bundle, language):
    """The texts as people read and write them, without escapes."""
    return entries((SOURCES / f"{bundle}_{language}.properties").read_text("utf-8"))


def texts(bundle, language):
    return english(bundle) if language == "en" else translated(bundle, language)


def escaped(text):
    r"""Every character that is not ASCII as \uXXXX, two of them for one beyond the first 65,536."""
    units = text.encode("utf-16-be")
    codes = (units[i] << 8 | units[i + 1] for i in range(0, len(units), 2))
    return "".join(chr(code) if code < 0x80 else f"\\u{code:04x}" for code in codes)


def shown(text):
    """A text as it is shown when it has no inserts."""
    return text.replace("''", "'")
