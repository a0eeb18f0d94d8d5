"""A publisher of updates: keys and signatures made by openssl, a feed, and a web server on loopback."""

import base64
import http.server
import os
import ssl
import subprocess
import tempfile
import threading

NAMESPACE = "http://www.andymatuschak.org/xml-namespaces/sparkle"


def openssl(*arguments):
    return subprocess.run(["openssl", *arguments], check=True, capture_output=True).stdout


class Maker:
    """Signs packages with a key of its own."""

    def __init__(self, folder):
        self._folder = folder
        self._key = os.path.join(folder, "key.pem")
        openssl("genpkey", "-algorithm", "ed25519", "-out", self._key)

    def public_key(self):
        return base64.b64encode(openssl("pkey", "-in", self._key, "-pubout", "-outform", "DER")[-32:]).decode()

    def sign(self, content):
        path = os.path.join(self._folder, "content")
        with open(path, "wb") as file:
            file.write(content)
        return base64.b64encode(openssl("pkeyutl", "-sign", "-rawin", "-inkey", self._key, "-in", path)).decode()

    @staticmethod
    def feed(address, package, signature, version="2.0", notes=""):
        return f"""<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="{NAMESPACE}"><channel><title>Pelmora</title><item>
<sparkle:version>{version}</sparkle:version><description><![CDATA[{notes}]]></description>
<enclosure url="{address}" length="{len(package)}" type="application/octet-stream" sparkle:edSignature="{signature}"/>
</item></channel></rss>""".encode()


class WebServer:
    """Answers on 127.0.0.1 over HTTP, or over HTTPS with an untrusted certificate. A context manager."""

    def __init__(self, encrypted=False):
        self.answers = {}
        self.requests = []
        # A paused answer continues when this is set.
        self.go_on = threading.Event()
        owner = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                owner.requests.append((self.path, dict(self.headers)))
                kind, content, first = owner.answers[self.path]
                self.send_response(200)
                self.send_header("Content-Type", kind)
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                try:
                    self.wfile.write(content[:first])
                    if first < len(content):
                        owner.go_on.wait(60)
                        self.wfile.write(content[first:])
                except OSError:
                    pass

            def log_message(self, *_):
                pass

        class Server(http.server.ThreadingHTTPServer):
            def handle_error(self, *_):
                """No message: a test expects a client to refuse the certificate."""

        self._server = Server(("127.0.0.1", 0), Handler)
        if encrypted:
            self._server.socket = self._context().wrap_socket(self._server.socket, server_side=True,
                                                              do_handshake_on_connect=False)
        self._scheme = "https" if encrypted else "http"

    @staticmethod
    def _context():
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        with tempfile.TemporaryDirectory() as folder:
            key, certificate = os.path.join(folder, "key.pem"), os.path.join(folder, "certificate.pem")
            openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout",
                    key, "-out", certificate, "-days", "2", "-subj", "/CN=Server", "-addext",
                    "subjectAltName=IP:127.0.0.1")
            context.load_cert_chain(certificate, key)
        return context

    def __enter__(self):
        threading.Thread(target=self._server.serve_forever, args=(0.05,), daemon=True).start()
        return self

    def __exit__(self, *_):
        self.go_on.set()
        self._server.shutdown()
        self._server.server_close()

    def address(self, path):
        return f"{self._scheme}://127.0.0.1:{self._server.server_address[1]}{path}"

    def answer(self, path, kind, content, first=None):
        """Sets the answer for the path. With "first", only that many bytes are sent until go_on is set."""
        self.answers[path] = (kind, content, len(content) if first is None else first)
