#!/usr/bin/env python3
"""What channels tell, received: receiver.py FOLDER

Serves HTTP, HTTPS with a certificate of each kind, and SMTP on ports of the loopback address, whose numbers are in
FOLDER/ports when all of them listen. FOLDER/requests and FOLDER/mails have a line of JSON for each that came. The name of a
file in FOLDER changes what is done: "up" ends /flaky's failures, "go" lets /slow answer, "mail-is-down" refuses mail."""
import email
import email.policy
import http.server
import json
import os
import socketserver
import ssl
import subprocess
import sys
import threading
import time
from pathlib import Path

FOLDER = Path(sys.argv[1])
LOCK = threading.Lock()


def note(name: str, what: dict) -> None:
    with LOCK, open(FOLDER / name, "a", encoding="utf-8") as file:
        file.write(json.dumps(what) + "\n")


def wait_for(name: str) -> None:
    while not (FOLDER / name).exists():
        time.sleep(0.002)


class Web(http.server.BaseHTTPRequestHandler):
    def log_message(self, *words):
        pass

    def answer(self, status: int, body: str = "", **headers: str) -> None:
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body.encode())))
        self.end_headers()
        self.wfile.write(body.encode())

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        note("requests", {"path": self.path, "headers": dict(self.headers.items()), "body": body.decode()})
        if self.path == "/fails":
            self.answer(500, "\n  the database is full\n")
        elif self.path == "/wordless":
            self.answer(404)
        elif self.path == "/moved":
            self.answer(307, Location="/ok")
        elif self.path == "/flaky":
            self.answer(204 if (FOLDER / "up").exists() else 503)
        elif self.path == "/token":
            right = self.headers["Authorization"] == "Bearer 0123"
            self.answer(*((200, "welcome") if right else (401, "who are you?")))
        elif self.path == "/slow":
            wait_for("go")
            self.answer(204)
        elif self.path == "/silent":
            wait_for("never")
        elif self.path == "/cut":
            self.send_response(200)
            self.send_header("Content-Length", "1000")
            self.end_headers()
            self.wfile.write(b"not all")
        elif self.path == "/endless":
            self.send_response(200)
            self.end_headers()
            try:
                while True:
                    self.wfile.write(b"on and on\n" * 1000)
            except OSError:
                pass
        else:
            self.answer(204)


class MailDrop(socketserver.StreamRequestHandler):
    def say(self, line: str) -> None:
        self.wfile.write(line.encode() + b"\r\n")

    def data(self) -> bytes:
        lines = []
        while (line := self.rfile.readline()) not in (b".\r\n", b""):
            lines.append(line[1:] if line.startswith(b".") else line)
        return b"".join(lines)

    def handle(self):
        if (FOLDER / "mail-is-down").exists():
            self.say("421 storage is full")
            return
        self.say("220 ready")
        sender, recipients = "", []
        while line := self.rfile.readline().decode().strip():
            verb = line.upper()
            if verb.startswith("MAIL FROM:"):
                sender = line[10:]
            elif verb.startswith("RCPT TO:"):
                recipients.append(line[8:])
            elif verb == "DATA":
                self.say("354 go on")
                note("mails", {"sender": sender, "recipients": recipients, **parsed(self.data())})
            self.say("221 bye" if verb == "QUIT" else "250 good")
            if verb == "QUIT":
                return


def parsed(raw: bytes) -> dict:
    mail = email.message_from_bytes(raw, policy=email.policy.default)
    return {"raw": raw.decode("ascii", "replace"), "text": mail.get_content().replace("\r\n", "\n"),
            "headers": [[name, str(value)] for name, value in mail.items()],
            "defects": [repr(each) for part in [mail, *mail.values()] for each in part.defects]}


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True


def openssl(*words: str) -> None:
    subprocess.run(["openssl", *words], cwd=FOLDER, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def make_certificates() -> None:
    key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
    for name in ("authority", "stranger"):
        openssl("req", "-x509", *key, "-keyout", f"{name}.key", "-out", f"{name}.crt", "-days", "3650", "-subj", f"/CN={name}",
                "-addext", "basicConstraints=critical,CA:TRUE")
    (FOLDER / "index").write_text("")
    (FOLDER / "ca.conf").write_text("[ca]\ndatabase=index\nrand_serial=yes\ndefault_md=sha256\npolicy=any\nnew_certs_dir=.\n"
                                    "copy_extensions=copy\nunique_subject=no\n[any]\ncommonName=supplied\n")
    for name, host, authority, end in (("good", "localhost", "authority", "20600101000000Z"),
                                       ("expired", "localhost", "authority", "20010101000000Z"),
                                       ("elsewhere", "elsewhere.example", "authority", "20600101000000Z"),
                                       ("unknown", "localhost", "stranger", "20600101000000Z")):
        openssl("req", *key, "-keyout", f"{name}.key", "-out", f"{name}.csr", "-subj", f"/CN={host}", "-addext",
                f"subjectAltName=DNS:{host}")
        openssl("ca", "-batch", "-notext", "-config", "ca.conf", "-name", "ca", "-cert", f"{authority}.crt", "-keyfile",
                f"{authority}.key", "-in", f"{name}.csr", "-out", f"{name}.crt", "-startdate", "20000101000000Z", "-enddate", end)


def serve(handler, certificate: str = "", newest=None) -> int:
    server = Server(("127.0.0.1", 0), handler)
    if certificate:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(FOLDER / f"{certificate}.crt", FOLDER / f"{certificate}.key")
        if newest:
            context.set_ciphers("DEFAULT@SECLEVEL=0")
            context.minimum_version = ssl.TLSVersion.TLSv1_1
            context.maximum_version = newest
        server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
        server.handle_error = lambda *_: None  # A client that trusts nobody hangs up.
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def main() -> None:
    make_certificates()
    ports = {name: serve(Web, name) for name in ("good", "expired", "elsewhere", "unknown")}
    ports |= {"old": serve(Web, "good", ssl.TLSVersion.TLSv1_1), "http": serve(Web), "smtp": serve(MailDrop)}
    (FOLDER / "ports.new").write_text("".join(f"{name} {port}\n" for name, port in ports.items()))
    os.rename(FOLDER / "ports.new", FOLDER / "ports")
    threading.Event().wait()


if __name__ == "__main__":
    main()
