"""Serves a folder by FTP to the user "farm".

Usage: pyftpd.py PORT FOLDER PASSWORD

A deletion of a file whose name begins with "hang-up" closes the connection without a reply, one that begins with
"stay-silent" gets no reply at all; a download of a file whose name begins with "break-off" ends after half of it; an
upload to one that begins with "disk-full" fails after some bytes. Nothing can be renamed to a name that begins with
"keep-name". A folder that holds a file "busy" is not listed for the moment (450).
"""
import logging
import os
import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer


class Handler(FTPHandler):
    use_sendfile = False

    def ftp_DELE(self, path):
        name = os.path.basename(path)
        if name.startswith("hang-up"):
            self.close()
            return None
        if name.startswith("stay-silent"):
            return None
        return super().ftp_DELE(path)

    def ftp_RNTO(self, path):
        if os.path.basename(path).startswith("keep-name"):
            self.respond("553 Not that name.")
            return None
        return super().ftp_RNTO(path)

    def ftp_STOR(self, file, mode="w"):
        if os.path.basename(file).startswith("disk-full"):
            with open(file, "wb") as content:
                content.write(b"half")
            self.respond("452 Insufficient storage space.")
            return None
        return super().ftp_STOR(file, mode)

    def ftp_LIST(self, path):
        if os.path.exists(os.path.join(path, "busy")):
            self.respond("450 Busy, come back later.")
            return None
        return super().ftp_LIST(path)

    def ftp_RETR(self, file):
        if os.path.basename(file).startswith("break-off"):
            self.respond("150 File status okay. About to open data connection.")
            with open(file, "rb") as content:
                data = content.read()
            self.push_dtp_data(data[: len(data) // 2], cmd="RETR")
            self.close_when_done()
            return file
        return super().ftp_RETR(file)


def main():
    port, folder, password = int(sys.argv[1]), sys.argv[2], sys.argv[3]
    logging.basicConfig(level=logging.WARNING)
    authorizer = DummyAuthorizer()
    authorizer.add_user("farm", password, folder, perm="elradfmwMT")
    Handler.authorizer = authorizer
    Handler.auth_failed_timeout = 0
    FTPServer(("127.0.0.1", port), Handler).serve_forever()


main()
