#!/usr/bin/env python3
"""A small FTP server for the network library's tests, on 127.0.0.1.

  ftp_server.py --home DIR [--user NAME --password WORD] [--anonymous] [--log FILE]
                [--hooks FILE]

Prints "PORT <n>" on standard output once it listens on a free port. Every command it
receives is appended to --log as "COMMAND argument", one line each, before it runs.

--hooks names a JSON file read again before each command, so a test can change the
server's behaviour while it runs:
  {"drop": N, "drop_on": ["RETR"]}  close the control connection instead of running the
                                    next N commands named in drop_on (RETR by default)
  {"stall_on": ["RETR"]}            never answer those commands (the client must time out)
  {"stor_rate": BYTES}              take in each STOR's data at this many bytes a second
Counters written back to the file go down as the hooks fire.
"""
import argparse
import json
import logging
import os
import sys
import time

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler
from pyftpdlib.servers import FTPServer


def read_hooks(path):
    if not path or not os.path.exists(path):
        return {}
    try:
        with open(path, encoding="utf-8") as f:
            return json.load(f)
    except (OSError, ValueError):
        return {}


def write_hooks(path, hooks):
    tmp = path + ".tmp"
    with open(tmp, "w", encoding="utf-8") as f:
        json.dump(hooks, f)
    os.replace(tmp, path)


class HookedHandler(FTPHandler):
    log_path = None
    hooks_path = None
    dtp_handler = ThrottledDTPHandler

    def pre_process_command(self, line, cmd, arg):
        if self.log_path:
            with open(self.log_path, "a", encoding="utf-8") as log:
                log.write(f"{cmd} {arg}\n" if arg else f"{cmd}\n")
        hooks = read_hooks(self.hooks_path)
        if cmd in hooks.get("stall_on", []):
            return
        if hooks.get("drop", 0) > 0 and cmd in hooks.get("drop_on", ["RETR"]):
            hooks["drop"] -= 1
            write_hooks(self.hooks_path, hooks)
            self.close()
            return
        if cmd == "STOR":
            # Bytes per second the server takes in (0: as fast as they come).
            ThrottledDTPHandler.read_limit = hooks.get("stor_rate", 0)
        super().pre_process_command(line, cmd, arg)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--home", required=True)
    parser.add_argument("--user")
    parser.add_argument("--password", default="")
    parser.add_argument("--anonymous", action="store_true")
    parser.add_argument("--log")
    parser.add_argument("--hooks")
    args = parser.parse_args()

    logging.basicConfig(level=logging.CRITICAL)
    authorizer = DummyAuthorizer()
    if args.user:
        authorizer.add_user(args.user, args.password, args.home, perm="elradfmwMT")
    if args.anonymous:
        authorizer.add_anonymous(args.home, perm="elradfmwMT")
    HookedHandler.authorizer = authorizer
    HookedHandler.log_path = args.log
    HookedHandler.hooks_path = args.hooks
    HookedHandler.timeout = 60
    server = FTPServer(("127.0.0.1", 0), HookedHandler)
    print(f"PORT {server.address[1]}", flush=True)
    server.serve_forever(handle_exit=True)


if __name__ == "__main__":
    sys.exit(main())
