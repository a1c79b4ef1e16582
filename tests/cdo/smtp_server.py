#!/usr/bin/python3
"""A real SMTP server on loopback that keeps what arrives.

usage: smtp_server.py FOLDER {plain|login|starttls|smtps} [CERTIFICATE KEY]

Prints its port. For mail number N it writes into FOLDER: N.envelope (sender, recipient), N.eml (as it came), and,
as Python's mail parser understands it, N.subject, N.from, N.to, N.body and for each attachment M its N.M.name,
N.M.type and N.M.data. N.done is written last. The file "connections" holds the number of connections so far.
Recipients that begin with "refused" are refused. The login is "user", "pass word".
"""
import asyncio
import email
import email.policy
import os
import ssl
import sys

from aiosmtpd.smtp import SMTP, AuthResult

folder, mode = sys.argv[1], sys.argv[2]
connections = 0
mails = 0


def keep(name, content):
    data = content if isinstance(content, bytes) else content.encode("utf-8")
    path = os.path.join(folder, name)
    with open(path + ".part", "wb") as file:
        file.write(data)
    os.rename(path + ".part", path)


class Handler:
    async def handle_RCPT(self, server, session, envelope, address, options):
        if address.startswith("refused"):
            return "550 5.1.1 no such mailbox"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        global mails
        mails += 1
        keep(f"{mails}.envelope", f"{envelope.mail_from}\n" + "\n".join(envelope.rcpt_tos))
        keep(f"{mails}.eml", envelope.original_content)
        mail = email.message_from_bytes(envelope.original_content, policy=email.policy.default)
        for header in ("subject", "from", "to"):
            keep(f"{mails}.{header}", mail[header])
        keep(f"{mails}.body", mail.get_body(("plain",)).get_payload(decode=True))
        for number, part in enumerate(mail.iter_attachments()):
            keep(f"{mails}.{number}.name", part.get_filename())
            keep(f"{mails}.{number}.type", part.get_content_type())
            keep(f"{mails}.{number}.data", part.get_payload(decode=True))
        keep(f"{mails}.done", "")
        return "250 taken"


def authenticate(server, session, envelope, mechanism, data):
    known = data.login == b"user" and data.password == b"pass word"
    return AuthResult(success=known, handled=known)


def connection():
    global connections
    connections += 1
    keep("connections", str(connections))
    options = {}
    if mode == "login":
        options = {"authenticator": authenticate, "auth_required": True, "auth_require_tls": False}
    if mode == "starttls":
        options = {"tls_context": tls, "require_starttls": True, "authenticator": authenticate,
                   "auth_required": True}
    return SMTP(Handler(), hostname="localhost", **options)


tls = None
if mode in ("starttls", "smtps"):
    tls = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
    tls.load_cert_chain(sys.argv[3], sys.argv[4])


async def serve():
    server = await asyncio.get_running_loop().create_server(
        connection, "127.0.0.1", 0, ssl=tls if mode == "smtps" else None)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


asyncio.run(serve())
