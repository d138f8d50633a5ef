"""The translators' gallery: every page of ord8-setup and its cancel question in all
sixteen interface languages, as OUT/<lang>-<page>.png (default OUT: build/screenshots),
with OUT/index.html showing them side by side, a row per page and a column per
language. Usage: window_gallery.py [OUT]
"""

import html
import sys
from pathlib import Path

import window_driver as h

LANGUAGES = "ru uk en lv lt ro de bg ka kk vi tr el es hy it".split()
PAGES = ["welcome", "directory", "progress", "success", "error", "cancel"]


def write_index(out, titles):
    head = "".join(f"<th>{lang}<br>{html.escape(titles[lang])}</th>" for lang in LANGUAGES)
    rows = "".join(
        f"<tr><th>{page}</th>" + "".join(
            f'<td><a href="{lang}-{page}.png"><img src="{lang}-{page}.png" width="250">'
            "</a></td>" for lang in LANGUAGES) + "</tr>\n" for page in PAGES)
    (out / "index.html").write_text(
        '<!DOCTYPE html>\n<meta charset="utf-8"><title>ord8-setup in every language</title>\n'
        "<style>td,th{vertical-align:top;font:12px sans-serif}</style>\n"
        f"<table>\n<tr><th></th>{head}</tr>\n{rows}</table>\n", encoding="utf-8")


def main():
    out = Path(sys.argv[1]) if len(sys.argv) > 1 else h.BUILD / "screenshots"
    out.mkdir(parents=True, exist_ok=True)
    titles = {}
    with h.Display() as display:
        for lang in LANGUAGES:
            def shoot(page, wid):
                titles.setdefault(lang, display.windows()[wid][0])
                display.shot(wid, out / f"{lang}-{page}.png")
            h.walk(display, h.Sandbox(display), shoot, lang)
            print(f"{lang}: {titles[lang]}", flush=True)
    write_index(out, titles)
    print(f"{len(LANGUAGES) * len(PAGES)} screenshots: {out / 'index.html'}")


if __name__ == "__main__":
    main()
