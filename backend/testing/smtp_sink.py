#!/usr/bin/python3 -I
# SPDX-License-Identifier: GPL-3.0-or-later
"""smtp_sink FOLDER MODE: a mail server for tests. Keeps each letter as FOLDER/letter-N with the envelope in its first
lines, and writes its port to FOLDER/port once it listens. MODE: tls (STARTTLS wanted before mail, certificate in
FOLDER/cert.pem), login (the same, and the user "lorvane" with the password "secret"), plain (no TLS), refuse (every
receiver unknown), hang (takes the connection and says nothing). Ends by a signal; who starts it sees to one."""
import pathlib
import signal
import socket
import ssl
import subprocess
import sys

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import SMTP, AuthResult

folder, mode = pathlib.Path(sys.argv[1]), sys.argv[2]


class Keep:
    count = 0

    async def handle_RCPT(self, server, session, envelope, address, options):
        if mode == "refuse":
            return "550 5.1.1 unknown"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        head = f"from={envelope.mail_from} to={','.join(envelope.rcpt_tos)} tls={session.ssl is not None} " \
               f"user={session.authenticated}\n"
        fresh = folder / f".letter-{self.count}"
        fresh.write_bytes(head.encode() + envelope.original_content)
        fresh.rename(folder / f"letter-{self.count}")
        self.count += 1
        return "250 OK"


def authenticate(server, session, envelope, mechanism, data):
    return AuthResult(success=data.login == b"lorvane" and data.password == b"secret")


class Sink(Controller):
    def factory(self):
        context = None
        if mode in ("tls", "login", "refuse"):
            context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
            context.load_cert_chain(folder / "cert.pem", folder / "key.pem")
        return SMTP(self.handler, tls_context=context, require_starttls=context is not None,
                    authenticator=authenticate, auth_required=mode == "login")


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-keyout",
                folder / "key.pem", "-out", folder / "cert.pem", "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                "subjectAltName=IP:127.0.0.1"], check=True, capture_output=True)
if mode == "hang":
    silent = socket.create_server(("127.0.0.1", 0))
    port = silent.getsockname()[1]
else:
    port = free_port()
    Sink(Keep(), hostname="127.0.0.1", port=port).start()
(folder / "port.new").write_text(str(port))
(folder / "port.new").rename(folder / "port")
signal.pause()
