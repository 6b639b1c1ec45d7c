"""The files that the library reads, made from the translators' files."""

import catalogue


def files():
    """Path and content of each."""
    for bundle in catalogue.BUNDLES:
        for language in catalogue.LANGUAGES:
            name = f"{bundle}_{language}.properties"
            source = (catalogue.SOURCES / name).read_text("utf-8")
            note = f"# Written by scripts/messages from src/{name}: change that file.\n"
            yield catalogue.FOLDER / name, note + catalogue.escaped(source)
