#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Makes pages that open with a double click from documents in Markdown.

    pages.py PROGRAM FOLDER DOCUMENT=PAGE…

PROGRAM stands in each title. Links between the documents become links between the pages. A link that leads
nowhere is an error: to a document that is no page, a file that is not in FOLDER, or a heading that is not there.
"""

import html
import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urldefrag, urlsplit

from markdown_it import MarkdownIt

STYLE = (Path(__file__).parent / "pages.css").read_text(encoding="utf-8")
MARKDOWN = MarkdownIt("commonmark").enable("table")


def text_of(heading):
    """The text of a heading without its marks."""
    return "".join(part.content for part in heading.children)


class Document:
    """A parsed document, whose headings have the anchors that GitHub gives them: links are written for those."""

    def __init__(self, source):
        self.source = source
        self.tokens = MARKDOWN.parse(source.read_text(encoding="utf-8"))
        self.title = ""
        self.sections = []  # anchor and text of each heading of the second level
        used = {}
        for token, heading in zip(self.tokens, self.tokens[1:]):
            if token.type != "heading_open":
                continue
            text = text_of(heading)
            anchor = re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-")
            used[anchor] = used.get(anchor, -1) + 1
            if used[anchor] > 0:
                anchor += f"-{used[anchor]}"
            token.attrSet("id", anchor)
            if token.tag == "h1":
                self.title = text
            elif token.tag == "h2":
                self.sections.append((anchor, text))

    def links(self):
        """The tokens of all links, each with the one that follows, which is its text."""
        for token in self.tokens:
            parts = token.children or []
            for part, text in zip(parts, parts[1:]):
                if part.type == "link_open":
                    yield part, text

    def lead_to(self, pages):
        """Turns links to documents into links to their pages."""
        for link, text in self.links():
            path, anchor = urldefrag(link.attrGet("href"))
            if urlsplit(path).scheme or not path.endswith(".md"):
                continue
            target = (self.source.parent / unquote(path)).resolve()
            if target not in pages:
                sys.exit(f"{self.source}: the link to {path} leads to no page")
            link.attrSet("href", pages[target] + (f"#{anchor}" if anchor else ""))
            if text.content == path:
                text.content = pages[target]

    def page(self, program, others):
        """The whole page. The others are the pages and titles that it begins with links to."""
        menu = "".join(f'<a href="{name}">{html.escape(title)}</a>\n' for name, title in others)
        contents = "".join(f'<li><a href="#{anchor}">{html.escape(text)}</a></li>\n'
                           for anchor, text in self.sections)
        body = MARKDOWN.renderer.render(self.tokens, MARKDOWN.options, {})
        if len(self.sections) > 3:
            body = body.replace("</h1>", f"</h1>\n<ul class=\"contents\">\n{contents}</ul>", 1)
        return (f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n'
                f'<meta name="viewport" content="width=device-width">\n'
                f"<title>{html.escape(self.title)} – {html.escape(program)}</title>\n"
                f"<style>\n{STYLE}</style>\n</head>\n<body>\n<nav>\n"
                f"<strong>{html.escape(program)}</strong>\n{menu}</nav>\n"
                f"<main>\n{body}</main>\n</body>\n</html>\n")


class Links(HTMLParser):
    """What a finished page links to, and what can be linked to in it."""

    def __init__(self, page):
        super().__init__()
        self.targets = []
        self.anchors = set()
        self.feed(page.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name == "id":
                self.anchors.add(value)
            elif name in ("href", "src"):
                self.targets.append(value)


def dead_links(folder):
    """A line for each link of the folder's pages that leads nowhere in the folder."""
    pages = {page: Links(page) for page in sorted(folder.glob("*.html"))}
    for page, links in pages.items():
        for target in links.targets:
            path, anchor = urldefrag(target)
            if urlsplit(path).scheme:  # out of the folder
                continue
            file = folder / unquote(path) if path else page
            if not file.is_file():
                yield f"{page.name}: there is no {path}"
            elif anchor and (file not in pages or unquote(anchor) not in pages[file].anchors):
                yield f"{page.name}: there is no {target}"


def main(program, folder, *arguments):
    folder = Path(folder)
    pages = {}  # the name of each document's page
    for argument in arguments:
        source, _, name = argument.rpartition("=")
        pages[Path(source).resolve()] = name
    documents = {name: Document(source) for source, name in pages.items()}
    for name, document in documents.items():
        document.lead_to(pages)
        others = [(other, documents[other].title) for other in documents if other != name]
        (folder / name).write_text(document.page(program, others), encoding="utf-8")
    sys.exit("\n".join(dead_links(folder)) or None)


main(*sys.argv[1:])
