"""Writes what is made from the message catalogues: the files that the library reads, and the operators' reference."""

import argparse
import pathlib
import sys

import catalogue
import convert
import pseudo
import reference


def files():
    yield from convert.files()
    yield from reference.files()


def write():
    for path, content in files():
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content, "utf-8", newline="\n")


def differing():
    """The files that are not as they would be written."""
    wanted = dict(files())
    present = set(catalogue.FOLDER.glob("*_*.properties")) | set(reference.FOLDER.glob("*"))
    changed = [path for path in wanted if not path.exists() or path.read_bytes() != wanted[path].encode("utf-8")]
    return sorted(changed) + sorted(present - set(wanted))


def check():
    """What is wrong, a line each."""
    for path in differing():
        yield f"{path.relative_to(catalogue.TOP)}: not as scripts/messages writes it"
    for key, place in reference.unknown_places():
        yield f"{key}: raised in {place}, which is no descriptor's class"


def main():
    parser = argparse.ArgumentParser(prog="scripts/messages", description=__doc__)
    parser.add_argument("--check", action="store_true", help="say what is wrong with the files instead of writing them")
    parser.add_argument("--pseudo", type=pathlib.Path, metavar="FOLDER",
                        help="write a product folder with the pseudo-language instead")
    arguments = parser.parse_args()
    if arguments.pseudo:
        pseudo.write(arguments.pseudo)
    elif arguments.check:
        findings = list(check())
        for finding in findings:
            print(finding)
        sys.exit(1 if findings else 0)
    else:
        write()


if __name__ == "__main__":
    main()
