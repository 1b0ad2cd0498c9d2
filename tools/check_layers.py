#!/usr/bin/env python3
"""Checks that each folder includes only what it may include. Usage: check_layers.py ROOT"""
import pathlib
import re
import sys

BASE, FILES, PLIST, URL = "platform/base", "platform/files", "platform/plist", "platform/url"
DATES, EXTENSION = "platform/dates", "platform/extension"
DESKTOP, PRESENTATION, UI = "platform/desktop", "platform/presentation", "platform/ui"
MAILDIR, ACCOUNTS, MAIL_HOST = "mailhost/maildir", "mailhost/accounts", "mailhost/host"
CLIENTS = "mailhost/clients"
SYSTEM = {BASE, FILES, PLIST, URL, DATES, EXTENSION}
MAY_INCLUDE = {
    BASE: {BASE},
    FILES: {FILES, BASE},
    PLIST: {PLIST, BASE},
    URL: {URL, BASE},
    DATES: {DATES, BASE},
    EXTENSION: SYSTEM - {DATES},
    DESKTOP: {DESKTOP, *SYSTEM},
    PRESENTATION: {PRESENTATION, BASE},
    UI: {UI, PRESENTATION, DESKTOP, EXTENSION, BASE},
    "util": {"util", BASE, URL},
    "model": {"model", "util", *SYSTEM},
    "handoff": {"handoff", "model", "util", *SYSTEM, DESKTOP},
    "widget": {"widget", "model", "util", *SYSTEM, DESKTOP, PRESENTATION},
    "views": {"views", "widget", "model", "util", *SYSTEM, DESKTOP, PRESENTATION, UI},
    "share": {"share", "handoff", "widget", "model", "util", *SYSTEM, DESKTOP},
    MAILDIR: {MAILDIR, *SYSTEM},
    ACCOUNTS: {ACCOUNTS, *SYSTEM},
    CLIENTS: {CLIENTS, MAILDIR, "handoff", "model", "util", *SYSTEM, DESKTOP},
    MAIL_HOST: {MAIL_HOST, CLIENTS, MAILDIR, ACCOUNTS, "handoff", "model", "util", *SYSTEM, DESKTOP},
    "message": {"message", "handoff", "model", "util", *SYSTEM, DESKTOP, UI, PRESENTATION},
    "app": {"app", "views", "widget", "model", "util", *SYSTEM, DESKTOP, PRESENTATION, UI},
}
# Folders beside src/, which nothing in src/ may include.
OUTSIDE = ("bench/", "tests/")
# Folders in which no file includes the toolkit, and folders in which no header does.
NO_QT = {"util", *SYSTEM, "model", "handoff", "widget", MAILDIR, ACCOUNTS, CLIENTS}
NO_QT_HEADERS = {DESKTOP, PRESENTATION}
# Folders whose headers include the C++ standard library only, and no type of the system or of
# another library.
NO_SYSTEM_HEADERS = {*SYSTEM, DESKTOP, PRESENTATION}
# Standard headers have neither a folder nor an extension. The compiler's vector types are allowed.
SYSTEM_HEADER = re.compile(r"<(?!\w*mmintrin\.h)[^>]*(/|\.h>)")
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]')


def folder_of(path):
    return next((folder for folder in MAY_INCLUDE if path.startswith(folder + "/")), None)


def problems(source, path):
    folder = folder_of(path)
    qt_free = folder in NO_QT or (folder in NO_QT_HEADERS and path.endswith(".h"))
    for number, line in enumerate(source.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        name = match.group(2)
        target = folder_of(name)
        if name.startswith(OUTSIDE):
            yield f"src/{path}:{number}: {name} is not part of the program"
        if folder in NO_SYSTEM_HEADERS and path.endswith(".h") and SYSTEM_HEADER.search(line):
            yield f"src/{path}:{number}: {name} brings in types of the system"
        if target and target not in MAY_INCLUDE[folder]:
            yield f"src/{path}:{number}: {folder} may not include {target}"
        if qt_free and re.match(r"Q[A-Za-z]|qt", name):
            yield f"src/{path}:{number}: {name} brings in the toolkit"


def main():
    root = pathlib.Path(sys.argv[1]) / "src"
    files = [file for file in root.rglob("*") if file.suffix in {".h", ".cpp"}]
    known = [(file, file.relative_to(root).as_posix()) for file in files]
    found = [f"src/{path}: not in a known folder" for _, path in known if not folder_of(path)]
    found += [line for file, path in known if folder_of(path) for line in problems(file, path)]
    print("\n".join(found) or f"{len(files)} files, all arrows point the right way")
    return 1 if found or not files else 0


if __name__ == "__main__":
    sys.exit(main())
