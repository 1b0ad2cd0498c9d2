"""Measures what hostile message files, within the documented limits and beyond, cost the widget."""
import shutil
import struct

ACCOUNT = "account1@quillet.example"
FILE_SIZE = 64 * 1024 * 1024  # bytes: the most that a file may have
VALUES = 4 * 1024 * 1024  # the most values in a file
RECORDS = 50_000  # the most messages in a file
SHARED = 65536  # bytes: the longest text that counts once
# A file may cost ALLOWED_BASE milliseconds and ALLOWED_PER_MEGABYTE for each megabyte. The process
# may take ALLOWED_MEMORY MiB.
ALLOWED_BASE, ALLOWED_PER_MEGABYTE, ALLOWED_MEMORY = 300, 20, 512
DAY = 86400

HEAD, TAIL = b"<dict><key>folder</key><true/><key>account</key><true/><key>data</key>", b"</dict>"


def xml(elements):
    return HEAD + b"<array>" + elements + b"</array>" + TAIL


def padded(data, filler):
    """Fills the file up to the largest allowed size with `filler` before the last tag."""
    return data[:-len(TAIL)] + filler * ((FILE_SIZE - len(data)) // len(filler)) + TAIL


def full_messages(encoding):
    """Returns nearly as many messages as are allowed, with texts that fill the file."""
    keys = ("subject", "messageId", "from", "account", "folder")
    frame = "<dict>" + "".join(f"<key>{key}</key><string>00000</string>" for key in keys) + "</dict>"
    piece = "&lt;\u65e5"
    room = (FILE_SIZE // RECORDS - len(frame.encode(encoding))) // len(keys)
    text = piece * (room // len(piece.encode(encoding)))

    def message(number):
        return "<dict>" + "".join(f"<key>{key}</key><string>{number:05}{text}</string>"
                                  for key in keys) + "</dict>"

    return (HEAD.decode() + "<array>" + "".join(map(message, range(RECORDS - 10))) + "</array>" +
            TAIL.decode()).encode(encoding)


def different_days():
    return xml(b"".join(b"<dict><key>date</key><real>%d</real></dict>" % (day * DAY)
                        for day in range(-RECORDS // 2, RECORDS // 2)))


def dates_beyond_the_calendar():
    return xml(b"".join(b"<dict><key>date</key><real>%de9</real></dict>" % (10**6 + i)
                        for i in range(RECORDS)))


def many_keys():
    keys = b"".join(b"<key>%d</key><true/>" % i for i in range(RECORDS))
    return HEAD + b"<dict>" + keys + b"</dict>" + TAIL


def long_keys():
    references = b"&#65;" * (FILE_SIZE // RECORDS // 5 - 7)
    keys = b"".join(b"<key>%d%s</key><true/>" % (i, references) for i in range(RECORDS))
    return HEAD + b"<dict>" + keys + b"</dict>" + TAIL


def one_key():
    """Returns a dictionary with one key at all places, as long as the file's budget allows."""
    units = FILE_SIZE // RECORDS * 16 // 2 - 32
    key = b"\x6f\x12" + struct.pack(">I", units) + b"\0k" * units
    data = b"\xdf\x12" + struct.pack(f">I{2 * RECORDS}I", RECORDS, *[6] * RECORDS, *[4] * RECORDS)
    room = FILE_SIZE - len(key) - len(data) - 200
    unused = b"\x4f\x12" + struct.pack(">I", room) + bytes(room)
    root = b"\xd3" + struct.pack(">6I", 1, 2, 3, 4, 4, 5)
    return binary([root, b"\x56folder", b"\x57account", b"\x54data", b"\x09", data, key, unused], 4)


def binary(objects, width):
    """Returns a binary property list of encoded objects. The first object is the root."""
    table, at = [], 8
    for item in objects:
        table.append(at)
        at += len(item)
    return (b"bplist00" + b"".join(objects) + struct.pack(f">{len(table)}I", *table) + bytes(6) +
            bytes([4, width]) + struct.pack(">QQQ", len(objects), 0, at))


def binary_file(elements, objects):
    """Returns a message file whose "data" lists `elements`, the numbers of objects.

    The first of `objects` has the number 6.
    """
    reference = ">{}I".format
    root = b"\xd3" + struct.pack(reference(6), 1, 2, 3, 4, 4, 5)
    data = b"\xaf\x12" + struct.pack(">I", len(elements)) + struct.pack(reference(len(elements)),
                                                                        *elements)
    return binary([root, b"\x56folder", b"\x57account", b"\x54data", b"\x09", data, *objects], 4)


def shared_text(wide, length):
    """Every text of every message is one text. Numbers are made from it, too."""
    keys = [b"\x57subject", b"\x54from", b"\x56folder", b"\x54flip", b"\x54date"]
    text = (b"\x6f\x12" + struct.pack(">I", length // 2) + b"\x00 " * (length // 2) if wide else
            b"\x5f\x12" + struct.pack(">I", length) + b" " * length)
    message = b"\xd5" + struct.pack(">10I", *range(6, 11), *[11] * 5)
    return binary_file(list(range(12, 12 + RECORDS)), keys + [text] + [message] * RECORDS)


def many_objects():
    return binary_file([6], [b"\xd0"] * (VALUES - 6))


FILES = {
    "messages that fill the file": lambda: full_messages("utf-8"),
    "the same in UTF-16": lambda: full_messages("utf-16"),
    "wrong elements": lambda: xml(b"<true/>" * RECORDS),
    "wrong values": lambda: xml(b"<dict><key>idx</key><data/></dict>" * RECORDS),
    "a day for each message": different_days,
    "dates beyond the calendar": dates_beyond_the_calendar,
    "keys as messages": many_keys,
    "long keys as messages": long_keys,
    "one key at all places": one_key,
    "4 million values": lambda: xml(b"<dict>" + b"<key/><dict/>" * (VALUES // 2 - 50) + b"</dict>"),
    "more values than allowed": lambda: xml(b"<dict/>" * (FILE_SIZE // 7 - 20)),
    "more messages than allowed": lambda: xml(b"<dict/>" * (RECORDS + 1)),
    "white space": lambda: padded(xml(b""), b" " * 64),
    "comments": lambda: padded(xml(b""), b"<!---->"),
    "references": lambda: xml(b"<string>" + b"&#65;" * (FILE_SIZE // 5 - 40) + b"</string>"),
    "nested lists": lambda: xml((b"<array>" * 500 + b"</array>" * 500) * 8000),
    "4 million objects": many_objects,
    "one shared text": lambda: shared_text(wide=False, length=SHARED),
    "one shared text in UTF-16": lambda: shared_text(wide=True, length=SHARED),
    "a short one in UTF-16": lambda: shared_text(wide=True, length=254),
}


def print_limits(bench, empty, rounds):
    """Prints the table. Returns whether every file stays within its limits."""
    within = True
    print(f"{'one hostile file':<28}{'MB':>7}{'clock ms':>10}{'processor ms':>14}{'allowed ms':>12}"
          f"{'messages':>10}{'peak MiB':>10}")
    for name, make in FILES.items():
        container = bench.make_store("limits", "xml", 1, 0, 0)
        folder = container / "SharedData" / "Today" / ACCOUNT
        folder.mkdir()
        data = make()
        (folder / "hostile.plist").write_bytes(data)
        reads = [bench.read("quillet", container, empty, command="cost") for _ in range(rounds)]
        best = min(reads, key=lambda read: read.processor)
        megabytes = len(data) / 1e6
        allowed = ALLOWED_BASE + ALLOWED_PER_MEGABYTE * megabytes
        peak = max(read.peak for read in reads)
        over = best.processor > allowed or peak > ALLOWED_MEMORY
        within = within and not over
        print(f"{name:<28}{megabytes:>7.1f}{best.clock:>10.1f}{best.processor:>14.1f}"
              f"{allowed:>12.0f}{best.messages:>10}{peak:>10.1f}{'  over' if over else ''}")
        shutil.rmtree(container)
    return within
