"""The mail host between a real mail server, mbsync, other clients and the panel.

After each step the server's mail is compared by Message-ID: a message that is lost or doubled, has
lost a flag or lies in the wrong folder fails the test, and so does a sync that reports anything.

Usage: mail_host_test.py PROGRAMS PLUGINS [TEST]…   (folders of the build; needs a session bus)
RACE_SECONDS says how long the race lasts.
"""

import collections
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
import threading
import time
import unittest
import urllib.parse

from gi.repository import Gio, GLib

from mail_server import ADDRESS, MailServer, Mirror

PROGRAMS, PLUGINS = (pathlib.Path(folder) for folder in sys.argv[1:3])
RACE_SECONDS = float(os.environ.get("RACE_SECONDS", "20"))
HOST = "it.tarno.quillet"
BUS = Gio.bus_get_sync(Gio.BusType.SESSION)

VERBATIM = "Path {mail}/\nInbox {mail}/INBOX\nSubFolders Verbatim"
Layout = collections.namedtuple("Layout", "store channel host archive trash",
                                defaults=("Patterns *", "", "Archive", "Trash"))
LAYOUTS = {
    "verbatim": Layout(VERBATIM),
    "AltMap": Layout(VERBATIM + "\nAltMap yes"),
    "Maildir++": Layout("Inbox {mail}\nSubFolders Maildir++", archive="Archive.2026",
                        host="archive = Archive/2026"),
    "legacy": Layout("Path {mail}/\nInbox {mail}/INBOX\nSubFolders Legacy",
                     archive="Post.Archive", host="layout = legacy\narchive = Post/Archive"),
    "names beyond ASCII": Layout(VERBATIM, trash="Gel&APY-schte Elemente"),
    "flattened": Layout(VERBATIM + "\nFlatten .", archive="B&APw-ro.Alt",
                        host="archive = Büro.Alt"),
    "the server's own store": Layout(None),
}


def eventually(condition, what, seconds=30):
    """Waits for the condition, with the bus alive; returns what it returned."""
    end = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain: {what}")
        GLib.MainContext.default().iteration(False)
        time.sleep(0.01)
    return value


class Host:
    """A running mail host; `fault` names a step of a move where it kills or stops itself."""

    def __init__(self, account, fault=None, launcher=()):
        self.account = account
        self.log = account.folder / "host.log"
        environment = account.environment | ({"QUILLET_FAULT_POINT": fault} if fault else {})
        with open(self.log, "wb") as log, open(account.folder / "host.errors", "ab") as errors:
            self.process = subprocess.Popen(
                [*launcher, PROGRAMS / "quillet-mail-host", "--log",
                 "--config", account.configuration, "--container", account.container],
                env=environment, stdout=log, stderr=errors)
        eventually(lambda: self.owns_name() or self.process.poll() is not None, "the host's name")

    def owns_name(self):
        call = ("GetConnectionUnixProcessID", GLib.Variant("(s)", (HOST,)))
        with contextlib.suppress(GLib.Error):
            return BUS.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", *call,
                                 None, 0, -1, None).unpack()[0] == self.process.pid
        return False

    def send(self, *commands):
        """Sends commands ("archive", subject) in one call, as the panel does."""
        urls = []
        for word, subject in commands:
            row = eventually(lambda name=subject: self.account.known_rows().get(name), subject)
            urls.append(f"quillet://{word}?mail={urllib.parse.quote(row['account'])}"
                        f"&messageid={row['messageId']}&folderstandardid={row['folderStid']}")
        background = {"x-quillet-background": GLib.Variant("b", True)}
        BUS.call(HOST, "/it/tarno/quillet", "org.freedesktop.Application", "Open",
                 GLib.Variant("(asa{sv})", (urls, background)), None, 0, -1, None, None)
        BUS.flush_sync(None)
        return urls

    def outcomes(self):
        """The lines of the commands so far: {URL: line}."""
        lines = self.log.read_text().split("\n")[:-1]
        return {line["url"]: line for line in map(json.loads, lines) if "url" in line}

    def follow(self, *commands):
        """Sends commands and waits; returns their lines."""
        urls = self.send(*commands)
        outcomes = eventually(lambda: (done := self.outcomes()).keys() >= set(urls) and done,
                              commands)
        return [outcomes[url] for url in urls]

    def moves(self, *commands):
        outcomes = [line["outcome"] for line in self.follow(*commands)]
        assert outcomes == ["moved"] * len(commands), (commands, outcomes)

    def state(self):
        status = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text()
        return status.rpartition(")")[2].split()[0]

    def kill(self):
        self.process.kill()
        self.process.wait()

    def __enter__(self):
        return self

    def __exit__(self, *error):
        with contextlib.suppress(ProcessLookupError):
            self.process.send_signal(signal.SIGCONT)
            self.process.terminate()
        status = self.process.wait(10)
        assert error[0] or status == 0, status


class Account:
    """A user with one account: server, local folders, container."""

    def __init__(self, layout=LAYOUTS["verbatim"], host_lines=""):
        self.layout = layout
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.folder.chmod(0o711)
        self.server = MailServer(self.folder / "server")
        self.put = self.server.append
        self.mail_folder = self.folder / "Mail" if layout.store else self.server.mail_folder
        self.mail_folder.mkdir(exist_ok=True)
        self.mirror = layout.store and Mirror(
            self.server, self.folder, layout.store.format(mail=self.mail_folder), layout.channel)
        self.container = self.folder / "container"
        self.store = self.container / "SharedData" / "Today" / ADDRESS
        self.rows_seen = {}
        self.configuration = self.folder / "mail-host.conf"
        self.configuration.write_text(f"[account {ADDRESS}]\n"
                                      f"maildir = {self.mail_folder}\n{layout.host}\n{host_lines}\n")
        self.environment = os.environ | {"HOME": str(self.folder), "QT_QPA_PLATFORM": "offscreen",
                                         "QUILLET_CONTAINER": str(self.container)}
        for name in ("runtime", "state", "config", "cache"):
            (self.folder / name).mkdir(mode=0o700)
            variable = {"runtime": "XDG_RUNTIME_DIR"}.get(name, f"XDG_{name.upper()}_HOME")
            self.environment[variable] = str(self.folder / name)
        self.put(layout.archive, "old archived", flags="\\Seen")
        self.put(layout.trash, "old deleted", flags="\\Seen")

    def sync(self):
        """mbsync waits until folders have been quiet for two seconds; they are quiet here."""
        if self.mirror:
            past = time.time() - 10
            for folder in (*self.mail_folder.rglob("cur"), *self.mail_folder.rglob("new")):
                os.utime(folder, (past, past))
            self.mirror.sync()

    def names(self):
        return self.server.mail().names()

    def local(self, folder="INBOX"):
        """The files of a local folder of the layout "verbatim"."""
        return [file for part in ("cur", "new") for file in (self.mail_folder / folder / part).iterdir()]

    def rows(self):
        """What the container shows of the Inbox: {subject: row}."""
        rows = {}
        for file in self.store.glob("[!.]*"):
            with contextlib.suppress(FileNotFoundError):
                data = plistlib.loads(file.read_bytes())["data"]
                rows |= {row["subject"]: row for row in data if row["folderStid"] == 1}
        return rows

    def known_rows(self):
        """Also those that were shown before."""
        self.rows_seen |= self.rows()
        return self.rows_seen

    def shows(self, *names):
        eventually(lambda: self.rows().keys() == set(names), names)

    def __enter__(self):
        return self

    def __exit__(self, *error):
        if error[0]:
            print((self.folder / "host.errors").read_text()[-3000:], file=sys.stderr)
        shutil.rmtree(self.folder)


# Starts a program to which file permissions apply, also as root.
ORDINARY = ("setpriv", "--bounding-set=-dac_override,-dac_read_search") if os.geteuid() == 0 else ()


@contextlib.contextmanager
def unsynced(folder):
    for part in ("cur", "new", "tmp"):
        (folder / part).mkdir(parents=True)
    yield


@contextlib.contextmanager
def read_only(folder):
    (folder / "cur").chmod(0o500)
    yield
    (folder / "cur").chmod(0o700)


@contextlib.contextmanager
def full(folder):
    """A file system of 64 KiB in place of the folder; only root may mount one."""
    beside = folder.with_name("beside")
    shutil.copytree(folder, beside)
    if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder],
                      stderr=subprocess.DEVNULL).returncode != 0:
        raise unittest.SkipTest("no file system can be mounted")
    try:
        shutil.copytree(beside, folder, dirs_exist_ok=True)
        shutil.rmtree(beside)
        yield
    finally:
        subprocess.run(["umount", folder], check=True)


@contextlib.contextmanager
def on_another_file_system(folder):
    """Puts the folder there, with a link in its place; says whether there is one."""
    with tempfile.TemporaryDirectory(dir="/dev/shm") as place:
        differs = os.stat(place).st_dev != os.stat(folder).st_dev
        if differs:
            folder.symlink_to(shutil.move(folder, place))
        yield differs


def crash(account, step, end, name):
    """Archives a message with a host that dies or stops at a step of the move."""
    with Host(account, step if end == "dies" else step + ":stop") as host:
        host.send(("archive", name))
        if end == "dies":
            eventually(lambda: host.process.poll() is not None, "the crash")
            host.process.returncode = 0
            return
        eventually(lambda: host.state() == "T", "the stop")
        account.sync()
        if end == "goes on":
            host.process.send_signal(signal.SIGCONT)
            eventually(host.outcomes, "the move")
        else:
            host.kill()
            host.process.returncode = 0


class Race:
    """Syncs, mail that arrives, and clients that change flags on the server and beside it."""

    def __init__(self, account, end):
        self.account, self.end = account, end
        self.arrived = {f"early {number}" for number in range(100)}
        self.syncs, self.errors = 0, []
        self.threads = [threading.Thread(target=self.run, args=(action, pauses))
                        for action, pauses in ((self.sync, (0, 0.3)), (self.arrive, (0.1, 3)),
                                               (self.flag_on_server, (0.05, 0.5)),
                                               (self.flag_beside, (0.01, 0.1, 2.5)))]
        for thread in self.threads:
            thread.start()

    def run(self, action, pauses):
        while time.monotonic() < self.end and not self.errors:
            try:
                action()
            except Exception as error:  # goes to the main thread
                self.errors.append(error)
            time.sleep(random.choice(pauses))

    def sync(self):
        self.account.mirror.sync()
        self.syncs += 1

    def arrive(self):
        names = [f"late {len(self.arrived)} {number}" for number in range(40)]
        self.account.put("INBOX", *names)
        self.arrived |= set(names)

    def flag_on_server(self):
        name = random.choice(sorted(self.arrived))
        self.account.server.store("INBOX", name, random.choice("+-"), "\\Flagged")

    def flag_beside(self):
        for file in random.sample(self.account.local(), 3):
            name, _, flags = file.name.partition(":2,")
            flags = "".join(sorted(set(flags) ^ {random.choice("FRS")}))
            with contextlib.suppress(FileNotFoundError):
                file.rename(file.parent.parent / "cur" / f"{name}:2,{flags}")

    def join(self):
        for thread in self.threads:
            thread.join()
        if self.errors:
            raise self.errors[0]


class MailHostTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.posted = []
        center = "it.tarno.quillet.DistributedNotifications"
        subscription = BUS.signal_subscribe(None, center, "Posted", None, None, 0,
                                            lambda *signal: self.posted.append(signal[5].unpack()))
        self.addCleanup(BUS.signal_unsubscribe, subscription)

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
                    self.assertEqual(account.server.mail(), {
                        "INBOX": {"stays": [set()], "late": [set()]},
                        layout.archive: {"old archived": [{"\\Seen"}],
                                         "answered": [{"\\Seen", "\\Answered"}]},
                        layout.trash: {"old deleted": [{"\\Seen"}], "flagged": [{"\\Flagged"}],
                                       "unread": [set()]}})
                    host.moves(("archive", "late"))
                account.sync()
                account.sync()
                self.assertEqual(account.names(), {
                    "INBOX": ["stays"], layout.archive: ["answered", "late", "old archived"],
                    layout.trash: ["flagged", "old deleted", "unread"]})

    def test_a_move_that_cannot_be_safe_is_refused(self):
        inbox_only = {"channel": "Patterns INBOX"}
        for name, word, change, target in (
                ("not synced", "archive", inbox_only, unsynced),
                ("not synced, AltMap", "archive", {"store": LAYOUTS["AltMap"].store} | inbox_only,
                 unsynced),
                ("no Trash", "delete", inbox_only, contextlib.nullcontext),
                ("read-only", "archive", {}, read_only), ("full", "archive", {}, full)):
            with self.subTest(name), Account(LAYOUTS["verbatim"]._replace(**change)) as account:
                account.put("INBOX", "stays", size=200_000)
                account.sync()
                before, files = account.names(), account.local()
                with target(account.mail_folder / "Archive"), Host(account, launcher=ORDINARY) as host:
                    account.shows("stays")
                    eventually(lambda: self.posted, "the first notification")
                    self.posted.clear()
                    outcome = host.follow((word, "stays"))[0]
                    self.assertEqual(outcome["outcome"], "failed")
                    self.assertTrue(outcome["reason"])
                    eventually(lambda: ("k_today_widget_key", "k_today_widget_object")
                               in self.posted, "the notification that brings the row back")
                    account.shows("stays")
                    self.assertEqual(account.local(), files)
                account.sync()
                self.assertEqual(account.names(), before)

    def test_a_crash_at_any_step_of_a_move_loses_and_doubles_nothing(self):
        same = ("journal", "rename", "sync", "done")
        other = ("journal", "copy", "link", "compare", "unlink", "done")
        stays = {"journal", "copy"}  # where the message stays in the Inbox
        for elsewhere, steps in ((False, same), (True, other)):
            with Account() as account, contextlib.ExitStack() as stack:
                cases = list(itertools.product(steps, ("dies", "dies beside a sync", "goes on")))
                names = [" ".join(case) for case in cases]
                account.put("INBOX", *names)
                account.sync()
                if elsewhere and not stack.enter_context(
                        on_another_file_system(account.mail_folder / "Archive")):
                    self.skipTest("there is one file system only")
                for (step, end), name in zip(cases, names):
                    expected = account.names()
                    with self.subTest(name, elsewhere=elsewhere):
                        if end == "goes on" or step not in stays:
                            expected["INBOX"].remove(name)
                            expected["Archive"] = sorted(expected["Archive"] + [name])
                        crash(account, step, end, name)
                        with Host(account):
                            account.sync()
                        self.assertEqual(account.names(), expected)

    def test_a_race_of_moves_with_syncs_and_other_clients_loses_and_doubles_nothing(self):
        with Account() as account, contextlib.ExitStack() as stack:
            account.put("INBOX", *(f"early {number}" for number in range(100)))
            account.sync()
            host = stack.enter_context(Host(account))
            end = time.monotonic() + RACE_SECONDS
            race = Race(account, end)
            words = {}
            while time.monotonic() < end:
                rows = eventually(lambda: [row for row in account.rows() if row not in words],
                                  "a row")
                burst = {name: random.choice(("archive", "delete"))
                         for name in random.sample(rows, min(len(rows), random.randint(1, 4)))}
                host.moves(*((word, name) for name, word in burst.items()))
                words |= burst
                time.sleep(random.choice((0.02, 0.2, 2.5)))
            race.join()
            account.sync()
            self.assertEqual(account.names(), {
                "INBOX": sorted(race.arrived - words.keys()),
                "Archive": sorted(["old archived"] + [n for n in words if words[n] == "archive"]),
                "Trash": sorted(["old deleted"] + [n for n in words if words[n] == "delete"])})
            eventually(lambda: len(account.rows()) == 50, "the newest fifty")
            print(len(words), race.syncs, len(race.arrived))
            self.assertGreater(min(len(words), race.syncs * 5), 15, "hardly a race")

    def test_a_click_in_the_panel_ends_on_the_server(self):
        with Account(host_lines="after-change = mbsync -c ~/mbsyncrc work") as account:
            account.put("INBOX", "clicked", "stays")
            account.sync()
            plugins = {"QT_PLUGIN_PATH": str(PLUGINS), "QT_QPA_GENERIC_PLUGINS": "windowdriver"}
            with Host(account) as host, subprocess.Popen(
                    [PROGRAMS / "quillet-today"], env=account.environment | plugins, text=True,
                    stdin=subprocess.PIPE, stdout=subprocess.PIPE) as panel:
                def ask(command):
                    print(command, file=panel.stdin, flush=True)
                    return json.loads(panel.stdout.readline()).get("rows", [])

                def row_of(name):
                    return next((i for i, row in enumerate(ask("state")) if name in row), None)

                eventually(lambda: row_of("clicked") is not None, "the panel's row")
                ask(f"click {row_of('clicked')} Archive")
                eventually(host.outcomes, "the panel's command")
                eventually(lambda: account.names() == {
                    "INBOX": ["stays"], "Archive": ["clicked", "old archived"],
                    "Trash": ["old deleted"]}, "the sync after the change")
                eventually(lambda: len(ask("state")) == 1 and row_of("stays") == 0, "one row")
                panel.stdin.close()

    def test_hostile_files_and_a_folder_that_vanishes_do_no_harm(self):
        with Account() as account:
            account.put("INBOX", "moves", "stays")
            account.put("INBOX", "long", subject="long " + "x" * 30_000)
            account.sync()
            cur = account.mail_folder / "INBOX" / "cur"
            hostile = [cur / name for name in ("1.fifo:2,", "2.link:2,", "3.loop:2,", "4.folder:2,")]
            os.mkfifo(hostile[0])
            hostile[1].symlink_to(account.local()[0])
            hostile[2].symlink_to(hostile[2])
            hostile[3].mkdir()
            with Host(account) as host:
                rows = eventually(lambda: len(account.rows()) == 3 and account.rows(), "the rows")
                long = next(name for name in rows if name.startswith("long "))
                self.assertLess(len(long), 2000)
                host.moves(("archive", "moves"), ("delete", long))
                for file in hostile:
                    self.assertTrue(os.path.lexists(file))
                    file.rmdir() if file.is_dir() else file.unlink()
                account.shows("stays")
                gone = account.folder / "gone"
                shutil.copytree(account.mail_folder, gone)
                shutil.rmtree(account.mail_folder)
                self.assertEqual(host.follow(("archive", "stays"))[0]["outcome"], "failed")
                account.shows("stays")
                gone.rename(account.mail_folder)
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
