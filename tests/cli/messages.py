#!/usr/bin/env python3
"""The system's messages, read from the calls that show them, checked against po/en.po.

  messages.py list SRC_ROOT          print every message key, one per line (po-escaped)
  messages.py check SRC_ROOT PO      exit 1 naming every key the catalogue lacks

A key is the text a message call is given, with the values spliced into it (a variable,
another call) written as %s, and the line feeds and blanks around it left out: the form in
which the command-line host looks a message up. Only texts with Chinese characters are the
system's own messages; the program's English messages need no translation.
"""
import pathlib
import re
import sys

CALLS = ("ShowMessage", "Print", "Warn", "Tell", "Confirm", "GetPoint", "Drag", "Format", "Format2")
CALL_RE = re.compile(r"\b(" + "|".join(CALLS) + r")\s*\(")
CONSTANT_RE = re.compile(r"\bk\w*(?:Format|Message|Caption)\w*\s*=\s*((?:\"(?:[^\"\\]|\\.)*\"\s*)+);")
LITERAL_RE = re.compile(r'"((?:[^"\\]|\\.)*)"')
CJK_RE = re.compile("[\u4e00-\u9fff]")
ESCAPES = {"n": "\n", "t": "\t", "\\": "\\", '"': '"', "r": "\r"}


def unescape(body):
    return re.sub(r"\\(.)", lambda m: ESCAPES.get(m.group(1), m.group(1)), body)


def arguments(text, start):
    """The top-level arguments of the call whose '(' is at text[start - 1]."""
    depth, args, current, i = 0, [], "", start
    while i < len(text):
        c = text[i]
        if c == '"':
            end = LITERAL_RE.match(text, i).end()
            current += text[i:end]
            i = end
            continue
        if c == "'":
            end = text.index("'", i + 2 if text[i + 1] == "\\" else i + 1) + 1
            current += text[i:end]
            i = end
            continue
        if c in "([{":
            depth += 1
        elif c in ")]}":
            if depth == 0:
                args.append(current)
                return args
            depth -= 1
        elif c == "," and depth == 0:
            args.append(current)
            current = ""
            i += 1
            continue
        current += c
        i += 1
    return args


def split_plus(expr):
    """The operands of a top-level '+' chain."""
    parts, depth, current, i = [], 0, "", 0
    while i < len(expr):
        c = expr[i]
        if c == '"':
            end = LITERAL_RE.match(expr, i).end()
            current += expr[i:end]
            i = end
            continue
        if c in "([{":
            depth += 1
        elif c in ")]}":
            depth -= 1
        elif c == "+" and depth == 0:
            parts.append(current)
            current = ""
            i += 1
            continue
        current += c
        i += 1
    parts.append(current)
    return parts


def key_of(expr):
    key = ""
    for part in split_plus(expr):
        part = part.strip()
        if re.fullmatch(r'(?:"(?:[^"\\]|\\.)*"\s*)+', part):
            key += "".join(unescape(body) for body in LITERAL_RE.findall(part))
        else:
            key += "%s"
    return key.strip(" \r\n")


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r'//[^\n]*', "", text)


def message_keys(root):
    keys = set()
    for folder in ("src", "hosts"):
        for path in sorted((pathlib.Path(root) / folder).rglob("*")):
            # The drawing database reports in English only; the test is made on the path
            # inside the project, so a checkout under a folder named cad is still read.
            inside = path.relative_to(root).as_posix()
            if path.suffix not in (".cpp", ".h") or inside.startswith("src/cad/"):
                continue
            text = strip_comments(path.read_text(encoding="utf-8"))
            for match in CALL_RE.finditer(text):
                for arg in arguments(text, match.end()):
                    keys.add(key_of(arg))
            for match in CONSTANT_RE.finditer(text):
                keys.add(key_of(match.group(1)))
    return sorted(k for k in keys if CJK_RE.search(k))


def po_escape(text):
    return text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")


def po_msgids(path):
    ids, current, translated = {}, None, {}
    field = None
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        m = re.match(r'(msgid|msgstr)\s+"(.*)"$', line)
        if m:
            field = m.group(1)
            if field == "msgid":
                current = unescape(m.group(2))
                translated[current] = ""
            else:
                translated[current] = unescape(m.group(2))
            continue
        m = re.match(r'"(.*)"$', line)
        if m and field == "msgid":
            current += unescape(m.group(1))
        elif m and field == "msgstr":
            translated[current] += unescape(m.group(1))
    return translated


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "list":
        for key in message_keys(sys.argv[2]):
            print(po_escape(key))
        return 0
    if len(sys.argv) == 4 and sys.argv[1] == "check":
        keys = message_keys(sys.argv[2])
        catalogue = po_msgids(sys.argv[3])
        missing = [k for k in keys if not catalogue.get(k)]
        for key in missing:
            print("not in the catalogue (or untranslated): " + po_escape(key))
        if len(keys) < 10:
            print(f"only {len(keys)} messages found: the scan is broken")
            return 1
        print(f"{len(keys)} messages, {len(missing)} missing")
        return 1 if missing else 0
    print(__doc__)
    return 2


if __name__ == "__main__":
    sys.exit(main())
