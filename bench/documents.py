"""How a table gets into a document."""

import re


def write_between_marks(document, name, text):
    """Puts the text where the document has room for that script's."""
    before, after = f"<!-- {name} -->\n", f"<!-- end of {name} -->"
    content = document.read_text()
    changed, places = re.subn(f"({re.escape(before)}).*?({re.escape(after)})",
        lambda match: match[1] + text + "\n" + match[2], content, flags=re.DOTALL)
    if places != 1:
        raise ValueError(f"{document} has {places} places for {name}")
    document.write_text(changed)
