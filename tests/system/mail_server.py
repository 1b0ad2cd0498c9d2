"""A mail server without a port, and mbsync, which brings its mail to local folders.

Dovecot's IMAP program serves a folder over its standard input and output, as the user who runs it
(root: as nobody). Messages are known by their Message-ID, which is also their subject.
"""

import collections
import contextlib
import grp
import imaplib
import os
import pathlib
import pwd
import re
import subprocess
import time

ADDRESS = "anna@example.com"


def eventually(condition, what, seconds=30):
    """Waits for the condition; returns what it returned."""
    end = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain: {what}")
        time.sleep(0.01)
    return value


def message(identifier, subject=None, size=0):
    """The bytes of a message."""
    return (f"Message-ID: <{identifier}@example.com>\r\nSubject: {subject or identifier}\r\n"
            f"From: Bert <bert@example.com>\r\nTo: {ADDRESS}\r\n"
            "Date: Mon, 02 Mar 2026 10:00:00 +0000\r\n\r\nText of "
            f"{identifier}\r\n{'.' * 70}\r\n".ljust(size, "x")).encode()


class Mailboxes(collections.defaultdict):
    """Message-IDs of mail folders: {folder: {Message-ID: [flags of each copy]}}."""

    def __init__(self):
        super().__init__(lambda: collections.defaultdict(list))

    def names(self):
        """{folder: sorted Message-IDs}, without empty folders; a copy counts as a message."""
        return {folder: sorted(name for name, copies in mails.items() for _ in copies)
                for folder, mails in self.items() if mails}


class MailServer:
    """The server's mail lies below `folder`/mail, the Inbox there and others in ".NAME"."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.mail_folder = self.folder / "mail"
        self.mail_folder.mkdir(parents=True)
        user = pwd.getpwnam("nobody") if os.geteuid() == 0 else pwd.getpwuid(os.geteuid())
        os.chown(self.mail_folder, user.pw_uid, user.pw_gid)
        configuration = self.folder / "dovecot.conf"
        configuration.write_text(f"""
base_dir = {self.folder}
state_dir = {self.folder}
default_internal_user = {user.pw_name}
default_login_user = {user.pw_name}
default_internal_group = {grp.getgrgid(user.pw_gid).gr_name}
first_valid_uid = 1
first_valid_gid = 1
mail_location = maildir:{self.mail_folder}
mail_fsync = never
ssl = no
""")
        # Dovecot serves no mail of root and does not speak to a socket as root.
        switch = f"setpriv --reuid={user.pw_uid} --regid={user.pw_gid} --clear-groups"
        self.command = (f"exec 2>>{self.folder}/server.log; "
                        f"HOME={self.folder} USER={user.pw_name} "
                        f"{switch if os.geteuid() == 0 else ''} "
                        f"/usr/lib/dovecot/imap -c {configuration}")

    @contextlib.contextmanager
    def connection(self):
        imap = imaplib.IMAP4_stream(self.command)
        try:
            yield imap
        finally:
            imap.logout()

    def append(self, folder, *names, flags="", **options):
        with self.connection() as imap:
            imap.create(f'"{folder}"')  # refused where it is there
            for name in names:
                status = imap.append(f'"{folder}"', flags, None, message(name, **options))
                assert status[0] == "OK", status

    def store(self, folder, name, change, flag):
        """Changes a flag, as another client does."""
        with self.connection() as imap:
            imap.select(f'"{folder}"')
            for number in imap.search(None, "HEADER", "Message-ID", f'"<{name}@"')[1][0].split():
                imap.store(number, change, flag)

    def mail(self):
        boxes = Mailboxes()
        with self.connection() as imap:
            for line in imap.list('""', "*")[1]:
                folder = re.search(rb'"?([^"]*)"?$', line.split(b'" ', 1)[1])[1].decode()
                status, count = imap.select(f'"{folder}"', readonly=True)
                if status != "OK" or count == [b"0"]:  # a name with folders below it, or empty
                    continue
                for item in imap.fetch("1:*", "(FLAGS BODY.PEEK[HEADER.FIELDS (MESSAGE-ID)])")[1]:
                    if isinstance(item, tuple):
                        name = re.search(rb"<(.*)@", item[1])[1].decode()
                        flags = re.search(rb"FLAGS \((.*?)\)", item[0])[1].decode()
                        boxes[folder][name].append(set(flags.split()) - {"\\Recent"})
        return boxes


class Mirror:
    """Local folders that mbsync keeps equal to a server's, with `store` and `channel` lines."""

    def __init__(self, server, folder, store, channel):
        self.configuration = pathlib.Path(folder) / "mbsyncrc"
        self.configuration.write_text(f"""
FSync no

IMAPAccount work
Tunnel "{server.command}"

IMAPStore far
Account work

MaildirStore near
{store}

Channel work
Far :far:
Near :near:
Create Both
Expunge Both
SyncState *
{channel}
""")
        self.command = ["mbsync", "-c", str(self.configuration), "work"]

    def sync(self):
        run = subprocess.run(self.command, capture_output=True, text=True, timeout=60)
        if run.returncode != 0 or run.stderr:
            raise AssertionError(f"mbsync: {run.returncode}, {run.stderr}")
