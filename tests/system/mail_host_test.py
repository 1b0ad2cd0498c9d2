"""The mail host between a real mail server, mbsync, other clients and the panel.

After each step the server's mail is compared by Message-ID: a message that is lost or doubled, has
lost a flag or lies in the wrong folder fails the test, and so does a sync that reports anything.

Usage, on a session bus: [RACE_SECONDS=20] mail_host_test.py PROGRAMS PLUGINS [OPTION]…
"""

import collections
import concurrent.futures
import contextlib
import itertools
import json
import os
import pathlib
import plistlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from gi.repository import Gio, GLib

from mail_server import ADDRESS, MailServer, Mirror, eventually
from notification_service import NotificationService

PROGRAMS, PLUGINS = (pathlib.Path(folder) for folder in sys.argv[1:3])
RACE_SECONDS = float(os.environ.get("RACE_SECONDS", "20"))
HOST = "it.tarno.quillet"
BUS = Gio.bus_get_sync(Gio.BusType.SESSION)
NOTICES = NotificationService(BUS)
POSTED = []  # notifications; see heard()
BUS.signal_subscribe(None, HOST + ".DistributedNotifications", "Posted", None, None, 0,
                     lambda *signal: POSTED.append(signal[5].unpack()))
# Starts a program to which file permissions apply, also as root.
ORDINARY = ("setpriv", "--bounding-set=-dac_override,-dac_read_search") if os.geteuid() == 0 else ()

# The store and the channel of mbsync, lines for the host, and the server's folders.
Layout = collections.namedtuple("Layout", "store channel host archive trash",
                                defaults=("Patterns *", "", "Archive", "Trash"))
VERBATIM = "Path {mail}/\nInbox {mail}/INBOX\nSubFolders Verbatim"
LAYOUTS = {
    "verbatim": Layout(VERBATIM),
    "AltMap": Layout(VERBATIM + "\nAltMap yes"),
    "Maildir++": Layout("Inbox {mail}\nSubFolders Maildir++", archive="Archive.2026",
                        host="archive = Archive/2026"),
    "legacy": Layout("Path {mail}/\nInbox {mail}/INBOX\nSubFolders Legacy", archive="Post.Archive",
                     host="layout = legacy\narchive = Post/Archive"),
    "names beyond ASCII": Layout(VERBATIM, trash="&AMk-l&AOk-ments supprim&AOk-s"),
    "flattened": Layout(VERBATIM + "\nFlatten .", archive="B&APw-ro.1", host="archive = Büro.1"),
    "the server's own store": Layout(None),
}


def heard(notification=("k_today_widget_key", "k_today_widget_object")):
    """Whether the notification has come since POSTED was cleared."""
    GLib.MainContext.default().iteration(False)
    return notification in POSTED


class Account(contextlib.ExitStack):
    """A user with one account: server, local folders, container. Subjects name messages."""

    def __init__(self, layout=LAYOUTS["verbatim"], host_lines=""):
        super().__init__()
        self.folder = pathlib.Path(self.enter_context(tempfile.TemporaryDirectory()))
        self.folder.chmod(0o711)
        server = MailServer(self.folder / "server")
        self.put, self.mail, self.store = server.append, server.mail, server.store
        self.mail_folder = self.folder / "Mail" if layout.store else server.mail_folder
        self.mail_folder.mkdir(exist_ok=True)
        self.mirror = layout.store and Mirror(
            server, self.folder, layout.store.format(mail=self.mail_folder), layout.channel)
        self.rows_seen = {}
        (self.folder / "host.conf").write_text(
            f"[account {ADDRESS}]\nmaildir = {self.mail_folder}\n{layout.host}\n{host_lines}\n")
        self.environment = os.environ | {"HOME": str(self.folder), "QT_QPA_PLATFORM": "offscreen",
                                         "QUILLET_CONTAINER": str(self.folder / "container")}
        for name in ("RUNTIME_DIR", "STATE_HOME", "CONFIG_HOME", "CACHE_HOME"):
            (self.folder / name).mkdir(mode=0o700)
            self.environment["XDG_" + name] = str(self.folder / name)
        for folder, name in ((layout.archive, "old archived"), (layout.trash, "old deleted")):
            self.put(folder, name, flags="\\Seen")

    def sync(self):
        """mbsync waits until folders have been quiet for two seconds. They are quiet here."""
        past = time.time() - 10
        for folder, _, _ in os.walk(self.mail_folder, followlinks=True):
            os.utime(folder, (past, past))
        if self.mirror:
            self.mirror.sync()

    def names(self):
        return self.mail().names()

    def inbox_files(self):
        return [*self.mail_folder.glob("INBOX/cur/*"), *self.mail_folder.glob("INBOX/new/*")]

    def rows(self):
        """What the container shows of the Inbox: {subject: row}."""
        rows = {}
        for file in self.folder.glob(f"container/SharedData/Today/{ADDRESS}/[!.]*"):
            with contextlib.suppress(FileNotFoundError):
                data = plistlib.loads(file.read_bytes())["data"]
                rows |= {row["subject"]: row for row in data if row["folderStid"] == 1}
        self.rows_seen |= rows
        return rows

    def shows(self, *names):
        def is_shown():
            GLib.MainContext.default().iteration(False)
            return self.rows().keys() == set(names)
        eventually(is_shown, f"rows {names}")


class Host(contextlib.AbstractContextManager):
    """A running mail host; `fault` names a step of a move where it kills or stops itself."""

    def __init__(self, account, fault=None, launcher=()):
        self.account = account
        self.log, self.errors = account.folder / "host.log", account.folder / "host.errors"
        environment = account.environment | ({"QUILLET_FAULT_POINT": fault} if fault else {})
        with open(self.log, "wb") as log, open(self.errors, "wb") as errors:
            self.process = subprocess.Popen(
                [*launcher, PROGRAMS / "quillet-mail-host", "--log", "--config", "host.conf",
                 "--container", "container"],
                cwd=account.folder, env=environment, stdout=log, stderr=errors)
        eventually(lambda: self.owns_name() or self.process.poll() is not None, "the host's name")

    def owns_name(self):
        bus = "org.freedesktop.DBus"
        with contextlib.suppress(GLib.Error):
            return self.process.pid == BUS.call_sync(
                bus, "/", bus, "GetConnectionUnixProcessID", GLib.Variant("(s)", (HOST,)), None, 0,
                -1, None).unpack()[0]

    def send(self, *commands):
        """Sends commands ("archive", subject) in one call, as the panel does; returns the URLs."""
        urls = []
        for word, subject in commands:
            row = eventually(lambda name=subject: self.account.rows_seen.get(name)
                             or self.account.rows().get(name), f"row {subject}")
            urls.append(f"quillet://{word}?mail={GLib.Uri.escape_string(ADDRESS, None, False)}"
                        f"&messageid={row['messageId']}&folderstandardid={row['folderStid']}")
        data = GLib.Variant("(asa{sv})", (urls, {"x-quillet-background": GLib.Variant("b", True)}))
        BUS.call(HOST, "/it/tarno/quillet", "org.freedesktop.Application", "Open", data, None, 0,
                 -1, None, None)
        BUS.flush_sync(None)
        return urls

    def outcomes(self):
        """The lines of the commands so far: {URL: line}."""
        lines = map(json.loads, self.log.read_text().split("\n")[:-1])
        return {line["url"]: line for line in lines if "url" in line}

    def follow(self, *commands):
        """Sends commands and waits; returns their outcomes and reasons."""
        urls = self.send(*commands)
        lines = eventually(lambda: (all_lines := self.outcomes()).keys() >= set(urls) and all_lines,
                           commands)
        return [(lines[url]["outcome"], lines[url].get("reason", "")) for url in urls]

    def moves(self, *commands):
        outcomes = self.follow(*commands)
        assert outcomes == [("moved", "")] * len(commands), (commands, outcomes)

    def __exit__(self, *error):
        self.process.terminate()
        status, lines = self.process.wait(10), self.errors.read_text().splitlines()
        foreign = [line for line in lines if not line.startswith("MailHost ")]
        if error[0]:
            print(*lines, sep="\n", file=sys.stderr)
        else:
            assert (status, foreign) == (0, []), (status, foreign)


def crash(account, step, end, name):
    """Archives a message with a host that dies at a step of the move, or stops there while mbsync
    runs. It goes on if mbsync has flagged the message."""
    host = Host(account, step if end == "dies" else step + ":stop")
    try:
        host.send(("archive", name))
        if end == "dies":
            eventually(lambda: host.process.poll() is not None, "the crash")
            return
        status = pathlib.Path(f"/proc/{host.process.pid}/stat")
        eventually(lambda: ") T " in status.read_text(), "the stop")
        if end == "flagged":
            account.store("INBOX", name, "+FLAGS", "\\Flagged")
        account.sync()
        if end == "flagged":
            eventually(lambda: host.process.send_signal(signal.SIGCONT) or host.outcomes(),
                       "the move")  # which tries again, and stops again, if its file is gone
    finally:
        host.process.kill()
        host.process.wait()


def read_only(folder):
    (folder / "cur").chmod(0o500)
    return contextlib.nullcontext()


@contextlib.contextmanager
def elsewhere(folder, size=None):
    """Puts the folder on another file system, with a link in its place. One of a `size` is full
    with the message that comes; only root may make it."""
    with (tempfile.TemporaryDirectory(dir=None if size else "/dev/shm") as place,
          contextlib.ExitStack() as stack):
        mount = ["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", place]
        if size and subprocess.run(mount, stderr=subprocess.DEVNULL).returncode == 0:
            stack.callback(subprocess.run, ["umount", "--lazy", place], check=True)
        if os.stat(place).st_dev == os.stat(folder).st_dev:
            raise unittest.SkipTest("there is no other file system")
        folder.symlink_to(shutil.move(folder, place))
        yield


class Race:
    """Syncs, mail that arrives, and clients that change flags on the server and beside it."""

    def __init__(self, account, seconds):
        self.account, self.arrived, self.syncs = account, set(), 0
        self.arrive(100)
        account.sync()
        self.arrive(500)
        self.end = time.monotonic() + seconds
        pool = concurrent.futures.ThreadPoolExecutor()
        self.tasks = [pool.submit(self.repeat, *action) for action in (
            (self.sync, 0, 0.3), (self.arrive, 0.1, 3), (self.flag_on_server, 0.05, 0.5),
            (self.flag_beside, 0.01, 0.1, 2.5))]

    def repeat(self, action, *pauses):
        while time.monotonic() < self.end:
            action()
            time.sleep(random.choice(pauses))

    def sync(self):
        self.account.mirror.sync()
        self.syncs += 1

    def arrive(self, count=40):
        names = [f"message {len(self.arrived) + number}" for number in range(count)]
        self.account.put("INBOX", *names)
        self.arrived |= set(names)

    def flag_on_server(self):
        name = random.choice(sorted(self.arrived))
        self.account.store("INBOX", name, random.choice("+-") + "FLAGS.SILENT", "\\Flagged")

    def flag_beside(self):
        for file in self.account.inbox_files()[::random.choice((1, 50))]:
            name, _, flags = file.name.partition(":2,")
            flags = "".join(sorted(set(flags) ^ {random.choice("FRS")}))
            with contextlib.suppress(FileNotFoundError):
                file.rename(file.parent.parent / "cur" / f"{name}:2,{flags}")


class MailHostTest(unittest.TestCase):
    def test_archive_and_delete_reach_the_server_in_every_layout(self):
        for name, layout in LAYOUTS.items():
            with self.subTest(name), Account(layout) as account:
                account.put("INBOX", "answered", flags="\\Seen \\Answered")
                account.put("INBOX", "flagged", flags="\\Flagged")
                account.put("INBOX", "unread", "stays")
                account.sync()
                with Host(account) as host:
                    account.shows("answered", "flagged", "unread", "stays")
                    host.moves(("archive", "answered"), ("delete", "flagged"))
                    account.shows("unread", "stays")
                    host.moves(("delete", "unread"))
                    account.put("INBOX", "late")
                    account.sync()
                    account.shows("stays", "late")
                    self.assertEqual(account.mail(), {
                        "INBOX": {"stays": [set()], "late": [set()]},
                        layout.archive: {"old archived": [{"\\Seen"}],
                                         "answered": [{"\\Seen", "\\Answered"}]},
                        layout.trash: {"old deleted": [{"\\Seen"}], "flagged": [{"\\Flagged"}],
                                       "unread": [set()]}})
                    host.moves(("archive", "late"))
                for _ in range(2):
                    account.sync()
                    self.assertEqual(account.names(), {
                        "INBOX": ["stays"], layout.archive: ["answered", "late", "old archived"],
                        layout.trash: ["flagged", "old deleted", "unread"]})

    def test_a_move_that_may_lose_mail_or_cannot_succeed_is_refused(self):
        inbox_only = {"channel": "Patterns INBOX"}
        for name, word, change, target in (
                ("not synced", "archive", inbox_only, contextlib.nullcontext),
                ("not synced, AltMap", "archive",
                 inbox_only | {"store": LAYOUTS["AltMap"].store}, contextlib.nullcontext),
                ("no Trash", "delete", inbox_only, contextlib.nullcontext),
                ("read-only", "archive", {}, read_only),
                ("full", "archive", {}, lambda folder: elsewhere(folder, "64k"))):
            with self.subTest(name), Account(LAYOUTS["verbatim"]._replace(**change)) as account:
                account.put("INBOX", "stays", size=200_000)
                account.sync()
                before, files = account.names(), account.inbox_files()
                archive = account.mail_folder / "Archive"
                POSTED.clear()
                for part in ("cur", "new", "tmp"):
                    (archive / part).mkdir(parents=True, exist_ok=True)
                with target(archive), Host(account, launcher=ORDINARY) as host:
                    account.shows("stays")
                    eventually(heard, "the first notification")
                    POSTED.clear()
                    [(outcome, reason)] = host.follow((word, "stays"))
                    self.assertEqual((outcome, bool(reason)), ("failed", True))
                    eventually(heard, "the notification that brings the row back")
                    account.shows("stays")
                    self.assertEqual(account.inbox_files(), files)
                    account.sync()
                    self.assertEqual(account.names(), before)

    def test_undo_brings_messages_back_once_before_and_after_a_sync(self):
        for (name, layout), is_synced in itertools.product(LAYOUTS.items(), (False, True)):
            with self.subTest(name, is_synced=is_synced), Account(layout) as account:
                account.put("INBOX", "one", flags="\\Flagged")
                account.put("INBOX", "two", "stays")
                account.sync()
                before = account.mail()
                with Host(account) as host:
                    account.shows("one", "two", "stays")
                    NOTICES.shown.clear()
                    host.moves(("archive", "one"), ("delete", "two"))
                    account.shows("stays")
                    if is_synced:
                        account.sync()
                        self.assertEqual(account.names()["INBOX"], ["stays"])
                    eventually(NOTICES.undo, "the notice with Undo")
                    account.rows_seen.clear()
                    account.shows("one", "two", "stays")
                for _ in range(2):
                    account.sync()
                    self.assertEqual(account.mail(), before)

    def test_a_crash_at_any_step_of_a_move_loses_and_doubles_nothing(self):
        ends = ("dies", "dies synced", "flagged")
        stays = ("journal", "copy")  # the message has not moved after these
        for place, steps in (
                (contextlib.nullcontext, ("journal", "rename", "sync", "done")),
                (elsewhere, ("journal", "copy", "link", "compare", "unlink", "done"))):
            cases = {f"{step}, {end}": (step, end) for step in steps for end in ends}
            with Account() as account:
                account.put("INBOX", "stays", *cases)
                account.sync()
                with place(account.mail_folder / "Archive"):
                    for name, (step, end) in cases.items():
                        with self.subTest(name, place=place.__name__):
                            expected = account.names()
                            if step not in stays or end == "flagged":
                                expected["INBOX"].remove(name)
                                expected["Archive"] = sorted(expected["Archive"] + [name])
                            crash(account, step, end, name)
                            with Host(account):
                                account.sync()
                            mail = account.mail()
                            self.assertEqual(mail.names(), expected)
                            if end == "flagged" and step in stays:
                                self.assertEqual(mail["Archive"][name], [{"\\Flagged"}])

    def test_a_race_of_moves_with_syncs_and_other_clients_loses_and_doubles_nothing(self):
        with Account() as account:
            race, words = Race(account, RACE_SECONDS), {}
            with Host(account) as host:
                while time.monotonic() < race.end:
                    rows = eventually(lambda: account.rows().keys() - words.keys(), "a row")
                    burst = [(random.choice(("archive", "delete")), name)
                             for name in sorted(rows)[:random.randint(1, 4)]]
                    host.moves(*burst)
                    words |= {name: word for word, name in burst}
                    time.sleep(random.choice((0.02, 0.2, 2.5)))
                for task in race.tasks:
                    task.result()
                account.sync()
                self.assertEqual(account.names(), {
                    "INBOX": sorted(race.arrived - words.keys()),
                    "Archive": sorted(["old archived"] + [n for n in words if words[n][0] == "a"]),
                    "Trash": sorted(["old deleted"] + [n for n in words if words[n][0] == "d"])})
                eventually(lambda: len(account.rows()) == 50, "the newest fifty")
            self.assertGreater(min(len(words), race.syncs * 5), RACE_SECONDS / 2, "hardly a race")

    def test_a_click_in_the_panel_ends_on_the_server(self):
        with Account(host_lines="after-change = mbsync -c ~/mbsyncrc work") as account:
            account.put("INBOX", "clicked", "stays")
            plugins = {"QT_PLUGIN_PATH": str(PLUGINS), "QT_QPA_GENERIC_PLUGINS": "windowdriver"}
            with Host(account), subprocess.Popen(
                    [PROGRAMS / "quillet-today"], env=account.environment | plugins, text=True,
                    stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                    stderr=subprocess.DEVNULL) as panel:
                def ask(command):
                    print(command, file=panel.stdin, flush=True)
                    return json.loads(panel.stdout.readline()).get("rows", [])

                def row_of(name):
                    return next((i for i, row in enumerate(ask("state")) if name in row), -1)

                account.sync()  # the first one; the host was there before its folders
                eventually(lambda: row_of("clicked") >= 0, "the panel's row")
                ask(f"click {row_of('clicked')} Archive")
                eventually(lambda: account.names() == {
                    "INBOX": ["stays"], "Archive": ["clicked", "old archived"],
                    "Trash": ["old deleted"]}, "the sync after the change")
                eventually(lambda: len(ask("state")) == 1 and row_of("stays") == 0, "one row")
                panel.stdin.close()
                self.assertEqual(panel.wait(10), 0)

    def test_hostile_files_and_a_folder_that_vanishes_do_no_harm(self):
        with Account() as account:
            account.put("INBOX", "moves", "stays")
            account.put("INBOX", "long", subject="long " + "x" * 30_000)
            account.sync()
            cur = account.mail_folder / "INBOX" / "cur"
            subprocess.run("mkfifo 1.fifo:2,; mkdir 2.folder:2,; ln -s 3.loop:2, 3.loop:2,;"
                           "for file in ../new/*; do ln -s $file 4.link:2,; break; done",
                           cwd=cur, shell=True, check=True)
            with Host(account) as host:
                rows = eventually(lambda: len(account.rows()) == 3 and account.rows(), "the rows")
                long = max(rows, key=len)
                self.assertLessEqual(len(long), 1000)
                host.moves(("archive", "moves"), ("delete", long))
                account.shows("stays")
                subprocess.run("rm -r [1-4].*", cwd=cur, shell=True, check=True)
                shutil.copytree(account.mail_folder, account.folder / "back")
                shutil.rmtree(account.mail_folder)
                [(outcome, reason)] = host.follow(("archive", "stays"))
                self.assertEqual((outcome, bool(reason)), ("failed", True))
                account.shows("stays")
                (account.folder / "back").rename(account.mail_folder)
                account.put("INBOX", "late")
                account.sync()
                account.shows("stays", "late")
                host.moves(("archive", "late"))
            account.sync()
            self.assertEqual(account.names(), {
                "INBOX": ["stays"], "Archive": ["late", "moves", "old archived"],
                "Trash": ["long", "old deleted"]})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
