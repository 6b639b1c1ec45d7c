#!/usr/bin/env python3
"""Looks at the reference of the messages as an operator does: opens the page of each language, searches, follows links.

usage: tests/tool/look_at_reference.py FOLDER [PICTURE]

Needs Chromium and its driver, and nothing of the network: a request of a page is a failure, as is any message on the
console. PICTURE is where a picture of the Japanese page goes.
"""
import pathlib
import sys
import tempfile

from browser import Browser, Failure, equal

# How each language names a queue manager: the words are in the messages about it, and in no others.
WORDS = {
    "en": "queue manager", "cs": "správc front", "de": "warteschlangen-manager", "es": "gestor colas",
    "fr": "gestionnaire files", "hu": "sorkezelő", "it": "gestore code", "ja": "キュー マネージャー",
    "ko": "큐 관리자", "pl": "menedżer kolejek", "pt_BR": "gerenciador filas", "ru": "менеджер очередей",
    "zh_CN": "队列管理器", "zh_TW": "佇列管理程式"}

SHOWN = "return [...document.querySelectorAll('article')].filter(node => node.offsetParent).map(node => node.id)"


def search(browser, text):
    browser.script("document.getElementById('search').value = ''; filter()")
    browser.type("#search", text)
    return browser.script(SHOWN)


def check_page(browser, language):
    equal("language", language.replace("_", "-"), browser.script("return document.documentElement.lang"))
    everything = browser.script(SHOWN)
    equal("order", sorted(everything), everything)
    equal("count", f"{len(everything)} / {len(everything)}", browser.text("#count"))
    equal("a number", ["KTBNV0087"], search(browser, "ktbnv0087"))
    equal("count of one", f"1 / {len(everything)}", browser.text("#count"))
    equal("nothing", [], search(browser, "no such words anywhere"))
    found = search(browser, WORDS[language])
    if "KTBNV0156" not in found or "KTBNV0087" in found:
        raise Failure(f"{language}: {WORDS[language]!r} is in {found}")
    equal("a word and a number", ["KTBNV0156"], search(browser, WORDS[language] + " ktbnv0156"))
    equal("parts of a message", 3, browser.script("return document.querySelectorAll('#KTBNV0087 dd').length"))
    equal("links to the languages", sorted(f"{code}.html" for code in WORDS),
          sorted(browser.script("return [...document.querySelectorAll('nav a')].map(node => node.getAttribute('href'))")))
    return len(everything)


def look(browser, folder, picture):
    browser.begin()
    addresses = [(folder / f"{language}.html").as_uri() for language in WORDS]
    counts = set()
    for language, address in zip(WORDS, addresses):
        browser.go_to(address)
        counts.add(check_page(browser, language))
        if picture and language == "ja":
            browser.script("document.getElementById('search').value = ''; filter()")
            browser.picture(picture)
    equal("languages with as many messages", 1, len(counts))
    browser.click("nav a[href='fr.html']")
    equal("the link leads to French", "fr", browser.script("return document.documentElement.lang"))
    browser.check_silence(addresses + [(folder / "fr.html").as_uri()])


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1]).resolve()
    picture = pathlib.Path(sys.argv[2]) if len(sys.argv) == 3 else None
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        browser = Browser(profile)
        try:
            look(browser, folder, picture)
        except Failure as failure:
            sys.exit(f"look_at_reference: {failure}")
        finally:
            browser.end()
    print("the reference is as it should be")


if __name__ == "__main__":
    main()
