"""A software delivery service as the agent and its host suite speak to it."""
import base64
import dataclasses
import http.client
import json
import ssl
import time
from urllib.parse import urlsplit

TIMEOUT_SECONDS = 30  # the reference host's requestTimeoutSeconds
LOOPBACK = ("localhost", "127.0.0.1", "::1")


@dataclasses.dataclass
class Reply:
    """What came back; json: the body, None when it is none."""
    status: int
    headers: dict
    body: bytes
    json: object = None

    @property
    def code(self):
        """The result's; None when the body has none."""
        result = self.json.get("result") if isinstance(self.json, dict) else None
        return result.get("code") if isinstance(result, dict) else None


class Service:
    """One device's view. Redirects are not followed; nothing is sent twice."""

    def __init__(self, base, token_url, session_token, device, authority=None):
        self.base, self.token_url, self.session_token, self.device = base.rstrip("/"), token_url, session_token, device
        self.context = ssl.create_default_context(cafile=authority)
        self.context.minimum_version = ssl.TLSVersion.TLSv1_2
        self.slowest = (0.0, "")

    def exchange(self, method, url, headers=None, body=None):
        """Also raises OSError and http.client.HTTPException, the latter for a body that is cut off."""
        parts = urlsplit(url)
        if parts.scheme == "https":
            connection = http.client.HTTPSConnection(parts.hostname, parts.port, timeout=TIMEOUT_SECONDS, context=self.context)
        elif parts.hostname in LOOPBACK:
            connection = http.client.HTTPConnection(parts.hostname, parts.port, timeout=TIMEOUT_SECONDS)
        else:
            raise OSError("plain http is for loopback hosts only")
        started = time.monotonic()
        try:
            connection.request(method, (parts.path or "/") + (f"?{parts.query}" if parts.query else ""), body, headers or {})
            answer = connection.getresponse()
            reply = Reply(answer.status, {name.title(): value for name, value in answer.getheaders()}, answer.read())
        finally:
            connection.close()
        self.slowest = max(self.slowest, (time.monotonic() - started, f"{method} {parts.path}"))
        try:
            reply.json = json.loads(reply.body)
        except ValueError:
            pass
        return reply

    def exchange_token(self, session_token):
        return self.exchange("POST", self.token_url, {"Content-Type": "application/json"},
                             json.dumps({"sessionToken": session_token}))

    def ask(self, kind, parameters, token, raw=None):
        """One of the five requests. raw: a body in the place of the one that belongs there."""
        body = json.dumps({"type": kind, "parameters": parameters}, ensure_ascii=False) if raw is None else raw
        return self.exchange("POST", f"{self.base}/mp/zlt/v2/{kind}?deviceId={self.device}",
                             {"Content-Type": "application/json", "token": token}, body.encode())


def claims_of(jwt):
    """A JWT's claims. Raises ValueError when it is none."""
    part = jwt.split(".")[1] if jwt.count(".") == 2 else ""
    return json.loads(base64.urlsafe_b64decode(part + "=" * (-len(part) % 4)))
