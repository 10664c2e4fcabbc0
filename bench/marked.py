"""Results in the project's pages: each command writes between marks of its own, <!-- name --> and <!-- /name -->."""

import pathlib
import re

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"


def write(page, name, lines):
    """Puts lines between the marks of a page of docs/."""
    path = DOCS / page
    text, places = re.subn(rf"(<!-- {name} -->\n).*?(<!-- /{name} -->)", lambda m: m[1] + "\n".join(lines).rstrip() + "\n" + m[2],
                           path.read_text(), flags=re.S)
    if places != 1:
        raise SystemExit(f"{path}: {places} places with the marks {name}")
    path.write_text(text)
