"""The reference for operators: what each message means and what to do."""

import html
import re

import catalogue
from labels import LABELS

FOLDER = catalogue.TOP / "docs" / "messages"
KEY = re.compile(r'"(KTBNV\d{4}_[A-Z0-9_]+)"')
# What the column of the class shows in the log.
DESCRIPTOR = re.compile(r'\bRasDescriptor (?:\w+::)?rd\("([^"]+)"')
# Sources that have no descriptor of their own, and the classes that they work for.
WORKS_FOR = {
    "Guard": ["NativeJNI", "com.kelvo.tessel.ipc.IPCClient", "com.kelvo.tessel.ipc.IPCServer"],
    "NYXUtilsFileSecurity": ["NYXUtils"],
    "WindowsACLs": ["NYXUtils"],
}

STYLE = """
:root { color-scheme: light dark; font: 16px/1.5 system-ui, sans-serif; }
body { margin: 0 auto; max-width: 60rem; padding: 1rem; }
nav a { margin-right: .7rem; white-space: nowrap; }
#find { background: Canvas; padding: .8rem 0; position: sticky; top: 0; }
#search { box-sizing: border-box; font: inherit; padding: .4rem; width: 100%; }
article { border-top: 1px solid GrayText; padding: .6rem 0; }
h2 { font-size: 1rem; margin: 0; }
h2 a { color: inherit; text-decoration: none; }
dt { font-weight: 600; }
dd { margin: 0 0 .4rem; }
code { overflow-wrap: anywhere; }
"""

# Every word must be in the message; the number is one of its words.
SCRIPT = """
const articles = [...document.querySelectorAll('article')].map(node => [node, node.textContent.toLowerCase()]);
const search = document.getElementById('search');
function filter() {
  const words = search.value.toLowerCase().split(/\\s+/);
  let shown = 0;
  for (const [node, text] of articles) {
    node.hidden = !words.every(word => text.includes(word));
    if (!node.hidden) ++shown;
  }
  document.getElementById('count').textContent = shown + ' / ' + articles.length;
}
search.addEventListener('input', filter);
filter();
"""


def sources():
    """Name, text and classes of descriptors of each source."""
    for path in sorted((catalogue.TOP / "src").rglob("*.cpp")):
        text = path.read_text("utf-8")
        yield path.stem, text, DESCRIPTOR.findall(text)


def places():
    """For each key the classes that raise it, as the log names them."""
    found = {}
    for name, text, classes in sources():
        for key in KEY.findall(text):
            found.setdefault(key, set()).update(classes or WORKS_FOR.get(name, [name]))
    return {key: sorted(classes) for key, classes in found.items()}


def unknown_places():
    """Key and place where that is no class of a descriptor, so that no operator meets it in a log."""
    known = {name for _, _, classes in sources() for name in classes}
    return [(key, place) for key, classes in sorted(places().items()) for place in classes if place not in known]


def numbered(language):
    """Key, text, explanation and action of each message, in the order of their numbers."""
    texts = catalogue.texts("KTBNVMessages", language)
    for key in sorted(key for key in texts if "." not in key):
        yield key, *(catalogue.shown(texts[key + part]) for part in ("", ".explanation", ".useraction"))


def page(language, raised):
    labels = LABELS[language]
    articles = []
    for key, text, explanation, action in numbered(language):
        number, _, rest = text.partition(": ")
        where = " ".join(f"<code>{name}</code>" for name in raised[key])
        articles.append(
            f'<article id="{key[:9]}">\n<h2><a href="#{key[:9]}">{number}</a>: {html.escape(rest)}</h2>\n<dl>\n'
            f"<dt>{labels.explanation}</dt><dd>{html.escape(explanation)}</dd>\n"
            f"<dt>{labels.action}</dt><dd>{html.escape(action)}</dd>\n"
            f"<dt>{labels.raised}</dt><dd>{where}</dd>\n</dl>\n</article>\n")
    others = " ".join(f'<a href="{code}.html" lang="{code.replace("_", "-")}">{LABELS[code].language}</a>'
                      for code in LABELS)
    return (
        f'<!DOCTYPE html>\n<html lang="{language.replace("_", "-")}">\n<head>\n<meta charset="utf-8">\n'
        '<meta name="viewport" content="width=device-width">\n'
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
        "script-src 'unsafe-inline'\">\n"
        f"<title>{labels.title}</title>\n<style>{STYLE}</style>\n</head>\n<body>\n<nav>{others}</nav>\n"
        f'<h1>{labels.title}</h1>\n<div id="find"><input id="search" type="search" placeholder="{labels.search}" '
        f'aria-label="{labels.search}">\n<span id="count"></span> {labels.shown}</div>\n'
        f"{''.join(articles)}<script>{SCRIPT}</script>\n</body>\n</html>\n")


def markdown(raised):
    labels = LABELS["en"]
    pages = ", ".join(f"[{LABELS[code].language}]({code}.html)" for code in LABELS)
    parts = [f"# {labels.title}\n\nWritten by `scripts/messages` from the catalogues. To be searched: {pages}.\n"]
    for key, text, explanation, action in numbered("en"):
        where = ", ".join(f"`{name}`" for name in raised[key])
        parts.append(f"\n## {key[:9]}\n\n`{text}`\n\n{explanation}\n\n{labels.action}: {action}\n\n"
                     f"{labels.raised} {where}.\n")
    return "".join(parts)


def files():
    """Path and content of each page."""
    raised = places()
    yield FOLDER / "README.md", markdown(raised)
    for language in LABELS:
        yield FOLDER / f"{language}.html", page(language, raised)
