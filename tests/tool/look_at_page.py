#!/usr/bin/env python3
"""Looks at the page of the trace viewer as a user does: clicks, types, and reads what is shown.

usage: tests/tool/look_at_page.py PAGE EMPTY_PAGE [FOLDER]

PAGE shows the sample traces of tests/tool/data/trace, EMPTY_PAGE a trace without a record. Pictures of the first go to
FOLDER. Needs Chromium and its driver, and nothing of the network: a request of a page is a failure, as is any message
on the console.
"""
import pathlib
import sys
import tempfile

from browser import Browser, Failure, equal


class Page:
    """What the page shows."""

    def __init__(self, browser):
        self.browser = browser

    def rows(self):
        return self.browser.script("return [...document.querySelectorAll('.row')].map(row => row.querySelector('.label').textContent)")

    def shown(self):
        """Number of rows, in sight or not."""
        return self.browser.script("return state.shown.length")

    def row(self, label):
        """Selector of the first row whose text starts with the label."""
        node = self.browser.script(
            "return [...document.querySelectorAll('.row')].find(row => row.querySelector('.label').textContent"
            ".startsWith(arguments[0]))?.dataset.node ?? null", label)
        if node is None:
            raise Failure(f"no row {label!r} in {self.rows()}")
        return f".row[data-node='{node}']"

    def chosen(self):
        return self.browser.script("return document.querySelector('.row.chosen .label')?.textContent ?? null")

    def marks(self, label):
        return self.browser.script(
            "return [...document.querySelectorAll(arguments[0] + ' .mark')].map(mark => mark.textContent)", self.row(label))

    def search(self, text):
        self.browser.script("document.getElementById('search').value = ''")
        self.browser.type("#search", text)
        return self.browser.text("#hits")

    def view(self):
        return self.browser.script("return state.thread.view")


def check_first_sight(browser, page):
    equal("threads", ["0000000000000108", "000000000000010c", "00000000000001f4", "000000000000020c"],
          browser.script("return [...document.querySelectorAll('#thread option')].map(o => o.textContent.split(/[ ,]+/)[1])"))
    equal("rows", 30, page.shown())
    equal("first rows", [
        "IPCClientImpl.connect [greeter]",
        "NYXUtils.getenv [KTB_PROD] returns [C:/product] std::string",
        "IPCClientImpl.open [\\\\.\\pipe\\greeter] [\"\"] returns [true] bool",
        "IPCClientImpl.sendMessage [id 1] [1] returns [status 0] IPCMessage"], page.rows()[:4])
    equal("summary", "files: 4, records: 98, banner lines: 22, damaged lines: 2\n"
          "threads: 4, missing entries: 3, missing exits: 2, open at the end: 2", browser.text("#summary"))


def check_folding(browser, page):
    call = "IPCClientImpl.sendMessage [id 1]"
    inner = ["IPCMessage.getMessageBytes returns [21] int", "· IPCMessage.getMessageBytes [length] [21]",
             "IPCClientImpl.readReply [first line ⏎ second line ⏎   <b>third</b> & last] returns [status 0] IPCMessage"]
    before = page.rows()
    equal("inner rows", inner, before[4:7])
    browser.click(page.row(call) + " .fold")
    equal("rows of a folded call", 27, page.shown())
    equal("rows behind a folded call", before[7:12], page.rows()[4:9])
    equal("state", "false", browser.script("return document.querySelector(arguments[0]).ariaExpanded", page.row(call)))
    browser.click(page.row(call) + " .fold")
    equal("rows of an unfolded call", before, page.rows())
    browser.click("#fold")
    equal("all folded", ["IPCClientImpl.connect", "IPCClientImpl.sendMessage", "IPCClientImpl.session", "IPCClientImpl.disconnect"],
          [row.split(" ")[0] for row in page.rows()])
    browser.click("#unfold")
    equal("all unfolded", before, page.rows())


def check_search(browser, page):
    equal("hits", "1 of 20", page.search("GETmessageBYTES"))
    equal("first hit", "IPCMessage.getMessageBytes returns [21] int", page.chosen())
    browser.click("#next")
    equal("hits", "2 of 20", browser.text("#hits"))
    equal("second hit", "· IPCMessage.getMessageBytes [length] [21]", page.chosen())
    browser.click("#previous")
    browser.type("#search", "\ue008\ue007")
    equal("the hit before the first", "20 of 20", browser.text("#hits"))
    equal("no hit", "no hit", page.search("no such text"))
    browser.click("#fold")
    equal("a hit in a folded call", "1 of 1", page.search("[id 3]"))
    equal("chosen", "IPCClientImpl.sendMessage [id 3] [1] returns [status 0] IPCMessage", page.chosen())
    equal("a hit in another thread", "1 of 1", page.search("raw"))
    equal("thread", "1", browser.script("return document.getElementById('thread').value"))
    equal("chosen", "IPCServerImpl.onMessage [hello é€ \\xff\\xfe raw]", page.chosen())


def check_marks(page):
    equal("marks", ["exit missing"], page.marks("NYXUtils.getLastErrorMessage"))
    equal("marks", ["entry missing"], page.marks("IPCServerImpl.reply"))
    equal("marks", ["open at the end"], page.marks("IPCClientRunnable.run"))
    equal("marks", [], page.marks("IPCServerImpl.onMessage"))


def check_keys(browser, page):
    browser.script("choose(0); document.getElementById('tree').focus()")
    browser.type("#tree", "\ue015")
    equal("down", "IPCServerImpl.onMessage [hello é€ \\xff\\xfe raw]", page.chosen())
    browser.type("#tree", "\ue012")
    equal("left folds", 4, page.shown())
    browser.type("#tree", "\ue012")
    equal("left again goes out", "IPCClientRunnable.run", page.chosen())
    browser.type("#tree", "\ue010")
    equal("end", "IPCClientRunnable.waitForRequest", page.chosen())
    browser.click("#unfold")


def check_details(browser, page):
    page.search("readReply")
    equal("title", "IPCClientImpl.readReply", browser.text("#details h2"))
    equal("text", "[first line\nsecond line\n  <b>third</b> & last]", browser.text("#details pre"))
    equal("markup of a text", 0, browser.script("return document.querySelectorAll('#tree b, #details b').length"))
    equal("place", "trace2.log, line 22", browser.script(
        "return [...document.querySelectorAll('#details dt')].find(t => t.textContent === 'Place').nextSibling.textContent"))


def check_picture(browser, page):
    browser.script("showThread(0)")
    whole = page.view()
    equal("whole picture", 0, whole[0])
    browser.click("#picture")
    chosen = page.chosen()
    equal("a click on a bar chooses its call", True, chosen is not None and "IPC" in chosen)
    browser.wheel("#picture", -200)
    view = page.view()
    equal("the wheel zooms", True, view[0] > whole[0] and view[1] < whole[1])
    browser.script("setView(0, 10); choose(29)")
    equal("the picture follows what is chosen", True, page.view()[1] > 50)
    browser.script("document.getElementById('picture').dispatchEvent(new MouseEvent('dblclick'))")
    equal("a double click shows all", whole, page.view())
    colors = browser.script(
        "const c = document.getElementById('picture'), d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;"
        "return new Set(new Uint32Array(d.buffer)).size")
    equal("the picture is drawn", True, colors > 20)


def check_long_text(browser):
    browser.script("state.thread.nodes[1][TEXT] = 'x'.repeat(30000); choose(1)")
    equal("a long text is cut in its row", True, len(browser.text(".row[data-node='1']")) < 1000)
    equal("a long text is cut", "x" * 20000 + "… show all 30000 characters", browser.text("#details pre"))
    browser.click("#details pre button")
    equal("a long text in full", "x" * 30000, browser.text("#details pre"))


def check_empty_page(browser):
    equal("empty page", "The trace has no record.", browser.text("#details"))
    equal("controls that work", 0, browser.script("return document.querySelectorAll('header :enabled').length"))
    browser.click("#tree")
    browser.type("#tree", "\ue015")


def check_that_requests_are_refused(browser):
    """Also shows that the console is heard."""
    refused = browser.call("POST", "/execute/async", {"args": [], "script":
        "fetch('http://127.0.0.1:9/').then(() => arguments[0](false), () => arguments[0](true))"})
    equal("a request of the page is refused", True, refused)
    equal("the refusal is on the console", True, any("Content Security Policy" in e["message"] for e in browser.log("browser")))


def look(browser, address, empty, folder):
    browser.begin()
    browser.dark(False)
    browser.go_to(address)
    page = Page(browser)
    check_first_sight(browser, page)
    check_folding(browser, page)
    check_search(browser, page)
    check_marks(page)
    check_keys(browser, page)
    check_details(browser, page)
    check_picture(browser, page)
    if folder:
        browser.script("document.getElementById('search').value = ''; search(); choose(8)")
        browser.picture(folder / "light.png")
        browser.dark(True)
        browser.script("showThread(1); choose(1)")
        browser.picture(folder / "dark.png")
    check_long_text(browser)
    browser.go_to(empty)
    check_empty_page(browser)
    browser.check_silence([address, empty])
    check_that_requests_are_refused(browser)


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    page, empty = (pathlib.Path(argument).resolve().as_uri() for argument in sys.argv[1:3])
    folder = pathlib.Path(sys.argv[3]) if len(sys.argv) == 4 else None
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        browser = Browser(profile)
        try:
            look(browser, page, empty, folder)
        except Failure as failure:
            sys.exit(f"look_at_page: {failure}")
        finally:
            browser.end()
    print("the page is as it should be")


if __name__ == "__main__":
    main()
